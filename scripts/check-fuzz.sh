#!/bin/sh
# usage: check-fuzz.sh [SECONDS]
# Fuzzes every exported function with sanitizers, from the seed corpus, for a bounded time (60 s).
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh clang libclang-rt-14-dev
cmake --preset asan >/dev/null
cmake --build --preset asan --target fuzz_exports
mkdir -p build/fuzz/corpus
build/asan/fuzz_exports -max_total_time="${1:-60}" -max_len=400 -rss_limit_mb=4096 -print_final_stats=1 \
    -artifact_prefix=build/fuzz/ build/fuzz/corpus tests/robustness/corpus >build/fuzz/log 2>&1 || {
    tail -n 40 build/fuzz/log >&2
    exit 1
}
grep -E 'number_of_executed_units|^Done' build/fuzz/log
