#!/bin/sh
# The tests with threads under ThreadSanitizer.
set -eu
cd "$(dirname "$0")/.."
cmake --preset tsan -DSORVO_AUDIO_BUILD_TOOLS=OFF >/dev/null
cmake --build --preset tsan --target robustness_threads_test fft_engine_test util_test
ctest --preset tsan -R 'threads|fft_engine|util'
