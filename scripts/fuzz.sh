#!/usr/bin/env bash
# Runs each libFuzzer target for FUZZ_SECONDS (default 20) with AddressSanitizer
# and a memory limit. It starts from the corpus kept in fuzz/corpus/<target>
# and works in the build folder; with FUZZ_KEEP=1 the inputs that reached new
# code are merged back into fuzz/corpus. A crash, a leak or memory past the
# limit fails the run; findings are left in <build>/fuzz/findings.
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
    kept="$here/fuzz/corpus/$name"
    work="$build/fuzz/work/$name"
    mkdir -p "$kept" "$work" "$build/fuzz/findings"
    echo "== $name"
    "$target" -max_total_time="$seconds" -rss_limit_mb=256 -malloc_limit_mb=64 -max_len=65536 \
        -print_final_stats=1 -artifact_prefix="$build/fuzz/findings/$name-" "$work" "$kept" || status=1
    if [ "${FUZZ_KEEP:-0}" = 1 ]; then
        "$target" -merge=1 -rss_limit_mb=256 -max_len=65536 "$kept" "$work" || status=1
    fi
done
exit $status
