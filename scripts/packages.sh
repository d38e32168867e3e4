# shellcheck shell=sh disable=SC2034
# The Debian packages of each purpose; read by the other scripts.

build_packages="g++ cmake ninja-build pkg-config libsndfile1-dev libcli11-dev libpng-dev libcairo2-dev"
test_packages="$build_packages gcc libgtest-dev python3 python3-numpy python3-scipy"
recording_packages="espeak-ng sox"
# What the remaining tests need; without these packages they say that they were skipped.
all_test_packages="$test_packages mypy python3-dask python3-distributed python3-pip python3-soundfile python3-torchaudio python3-tqdm"
