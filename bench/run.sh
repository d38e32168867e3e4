#!/bin/bash
# Benchmarks of the library beside its peers: installs what is missing, builds, runs, prints ratios
# first (other's time / ours: above 1, we are faster).
#
#   bench/run.sh            everything; the medians are kept in bench/results/
#   bench/run.sh REGEX      only the rows whose names match ("^mel", "fft/4", "torchaudio"), fewer
#                           repetitions, nothing kept
#   bench/run.sh --publish  everything, and docs/performance.md with its plot is made from it
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/bench
rows=
publish=
case "${1:-}" in
    --publish) publish=yes ;;
    *) rows=${1:-} ;;
esac

packages=(g++ cmake ninja-build pkg-config libbenchmark-dev libfftw3-dev libkissfft-dev libsoxr-dev
    libsamplerate0-dev libspeexdsp-dev python3-numpy python3-scipy python3-torch python3-torchaudio
    python3-matplotlib)
missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
        missing+=("$package")
done
if ((${#missing[@]})); then
    if ((EUID)); then sudo=sudo; else sudo=; fi
    $sudo apt-get update
    $sudo apt-get install -y --no-install-recommends "${missing[@]}"
fi

cmake --preset release -B "$build" -DSORVO_AUDIO_BUILD_BENCH=ON -DSORVO_AUDIO_BUILD_TESTS=OFF \
    -DSORVO_AUDIO_BUILD_TOOLS=OFF >"$build.log" 2>&1 || { cat "$build.log"; exit 1; }
cmake --build "$build" -j2 --target sorvo_audio library_bench memory_peak >"$build.log" 2>&1 ||
    { cat "$build.log"; exit 1; }

programs=$build/bench/library
library=$build/src/libsorvo_audio.so
if [[ -n $rows ]]; then
    "$programs/library_bench" --rows="$rows" --benchmark_repetitions=7 \
        --benchmark_min_time=0.02 --out="$build/library.json"
    bench/python_peers.py "$library" "$build/python.json" --rows "$rows" --repetitions 7
    bench/report.py "$build/library.json" "$build/python.json"
    exit
fi

"$programs/library_bench" --out="$build/library.json"
"$programs/memory_peak" >"$build/memory.json"
bench/python_peers.py "$library" "$build/python.json"
bench/report.py "$build/library.json" "$build/python.json" "$build/memory.json" \
    --save "$build/result.json"
# One file for each kind of processor.
name=$(/usr/bin/python3 -c 'import json, re, sys
context = json.load(open(sys.argv[1]))["context"]
text = context["processor"] + " " + context["level"]
print(re.sub("[^a-z0-9]+", "-", text.lower()).strip("-"))' "$build/result.json")
mkdir -p bench/results
cp "$build/result.json" "bench/results/$name.json"
echo "kept in bench/results/$name.json"
if [[ -n $publish ]]; then
    bench/report.py "bench/results/$name.json" --document docs/performance.md >"$build.log"
    bench/plot.py "bench/results/$name.json" docs/performance.svg
fi
