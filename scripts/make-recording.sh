#!/bin/sh
# Makes examples/data/speech.wav anew: a sentence spoken by espeak-ng, as mono 16 kHz, 16 bit.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086
scripts/install-packages.sh $recording_packages

spoken=$(mktemp --suffix=.wav)
trap 'rm -f "$spoken"' EXIT
espeak-ng -v en-gb -s 150 -w "$spoken" "Why were you all away a year ago? She sells sea shells."
# No dither, so that the same programs make the same file; a little silence at both ends to trim.
sox -D "$spoken" -b 16 -c 1 examples/data/speech.wav rate 16000 pad 0.25 0.25
