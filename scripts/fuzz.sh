#!/usr/bin/env bash
# Runs each libFuzzer target briefly (FUZZ_SECONDS, default 20). A crash, a
# leak or memory past the limit fails the run; findings are left in the build.
set -euo pipefail
build=${1:-build-fuzz}
seconds=${FUZZ_SECONDS:-20}
here=$(cd "$(dirname "$0")/.." && pwd)
# A small quarantine keeps freed memory from counting against the limit;
# no single allocation may come near it either.
export ASAN_OPTIONS=${ASAN_OPTIONS:-quarantine_size_mb=16}
status=0
for target in "$build"/fuzz/fuzz_*; do
    [ -f "$target" ] && [ -x "$target" ] || continue
    name=$(basename "$target")
    corpus="$build/fuzz/corpus/$name"
    mkdir -p "$corpus" "$build/fuzz/findings"
    echo "== $name"
    "$target" -max_total_time="$seconds" -rss_limit_mb=256 -malloc_limit_mb=64 -max_len=65536 \
        -artifact_prefix="$build/fuzz/findings/$name-" "$corpus" "$here/fuzz/seeds/$name" || status=1
done
exit $status
