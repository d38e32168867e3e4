#!/bin/sh
# Builds the command-line tool and makes the mel spectrogram of a short recording with it.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086
scripts/install-packages.sh $build_packages

# A build of its own, without the tests and what they need.
build=build/demo
mkdir -p $build
echo "Building sorvo-audio (output in $build/build.log) ..."
{
    cmake --preset release -B $build -DSORVO_AUDIO_BUILD_TESTS=OFF
    cmake --build $build --target sorvo-audio
} >$build/build.log 2>&1 || {
    tail -n 40 $build/build.log >&2
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
