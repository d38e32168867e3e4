# shellcheck shell=sh disable=SC2034
# The Debian packages of each purpose; read by the other scripts.

build_packages="g++ cmake ninja-build pkg-config libsndfile1-dev libcli11-dev libpng-dev libcairo2-dev"
# What builds wheels; pip is not to ask for anything else.
wheel_packages="g++ cmake ninja-build binutils python3-pip python3-setuptools python3-wheel python3-venv"
test_packages="$build_packages gcc libgtest-dev mypy python3 python3-dask python3-distributed python3-numpy
python3-scipy python3-soundfile python3-torchaudio python3-tqdm"
# What builds and runs the tests of other systems and processors.
port_packages="g++ cmake ccache ninja-build libgtest-dev googletest g++-aarch64-linux-gnu g++-riscv64-linux-gnu qemu-user
g++-mingw-w64-x86-64-posix wine64 musl-tools"
recording_packages="espeak-ng sox"
# The npm package and the web page; npm is in Node.js' package where that is not Debian's own.
js_packages="$build_packages emscripten nodejs chromium python3 python3-numpy python3-soundfile"
