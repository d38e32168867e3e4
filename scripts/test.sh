#!/bin/sh
# Builds everything and runs every test. Arguments are handed to ctest.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086
scripts/install-packages.sh $test_packages

cmake --preset release -DSORVO_AUDIO_BUILD_TESTS=ON
cmake --build --preset release
ctest --preset release --parallel 2 "$@"
