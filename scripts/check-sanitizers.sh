#!/bin/sh
# The test suite under AddressSanitizer, LeakSanitizer and UndefinedBehaviorSanitizer, then the tests with
# threads under ThreadSanitizer.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh clang libclang-rt-14-dev
cmake --preset asan >/dev/null
cmake --build --preset asan
ctest --preset asan -j2
cmake --preset tsan -DSORVO_AUDIO_BUILD_TOOLS=OFF >/dev/null
cmake --build --preset tsan --target robustness_threads_test fft_engine_test util_test
ctest --preset tsan -R 'threads|fft_engine|util'
