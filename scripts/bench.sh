#!/usr/bin/env bash
# Runs every benchmark; each reports its own speed and memory figures.
set -euo pipefail
build=${1:-build}
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
export XDG_RUNTIME_DIR=${XDG_RUNTIME_DIR:-$(mktemp -d)}
status=0
for b in "$build"/bench/bench_*; do
    [ -f "$b" ] && [ -x "$b" ] || continue
    echo "== $(basename "$b")"
    "$b" --benchmark_counters_tabular=true || status=1
done
exit $status
