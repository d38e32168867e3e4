#!/bin/sh
# The test suite under AddressSanitizer, LeakSanitizer and UndefinedBehaviorSanitizer, then the tests with
# threads under ThreadSanitizer.
set -eu
cd "$(dirname "$0")/.."
cmake --preset asan -DSORVO_AUDIO_BUILD_TOOLS=OFF >/dev/null
cmake --build --preset asan
ctest --preset asan
cmake --preset tsan -DSORVO_AUDIO_BUILD_TOOLS=OFF >/dev/null
cmake --build --preset tsan --target robustness_threads_test fft_engine_test
ctest --preset tsan -R 'threads|fft_engine'
