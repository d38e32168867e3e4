#!/bin/sh
# Builds the command-line tool and makes the mel spectrogram of a short recording with it.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086
scripts/install-packages.sh $build_packages

build=build/release
log=build/demo-build.log
mkdir -p build
echo "Building sorvo-audio (output in $log) ..."
# Only the tool: a build directory that the tests share keeps what it has.
{ cmake --preset release -DSORVO_AUDIO_BUILD_TESTS=OFF && cmake --build --preset release --target sorvo-audio; } >"$log" 2>&1 || {
    tail -n 40 "$log" >&2
    exit 1
}

run() {
    echo
    echo "\$ sorvo-audio $*"
    "$build/tools/sorvo-audio" "$@"
}
recording=examples/data/speech.wav
run info "$recording"
run mel "$recording" -o build/demo/mel.npy --picture build/demo/mel.png \
    --n-fft 512 --win-length 400 --hop-length 80 --n-mels 80 --db --force
echo
echo "Open build/demo/mel.png: time runs to the right, frequency upwards."
