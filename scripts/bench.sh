#!/bin/sh
# Builds and runs the benchmarks. Arguments are handed to bench/run.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086
scripts/install-packages.sh $build_packages
[ ! -x bench/install-packages ] || bench/install-packages

cmake --preset release -DSORVO_AUDIO_BUILD_BENCH=ON
cmake --build --preset release
bench/run "$@"
