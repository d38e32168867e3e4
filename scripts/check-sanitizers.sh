#!/bin/sh
# The test suite under AddressSanitizer, LeakSanitizer and UndefinedBehaviorSanitizer, then the tests with
# threads under ThreadSanitizer.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh clang libclang-rt-14-dev
cmake --preset asan >/dev/null
cmake --build --preset asan
# The levels share their sources: the widest vectors and those of half the width show what there is to see.
ctest --preset asan -j2 -E sse2
cmake --preset tsan -DSORVO_AUDIO_BUILD_TOOLS=OFF >/dev/null
cmake --build --preset tsan --target robustness_threads_test fft_engine_test util_test
ctest --preset tsan -R 'threads|fft_engine|util'
