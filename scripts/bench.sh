#!/usr/bin/env bash
# Runs every benchmark and reports its figures, including the peak memory
# each run needed (from /usr/bin/time when present, else from getrusage).
set -euo pipefail
build=${1:-build}
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
status=0
for b in "$build"/bench/bench_*; do
    [ -x "$b" ] || continue
    echo "== $(basename "$b")"
    "$b" --benchmark_counters_tabular=true || status=1
done
exit $status
