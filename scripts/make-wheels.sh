#!/bin/sh
# usage: make-wheels.sh FOLDER
# Puts the source archive, and wheels made from that archive, into FOLDER: one for this processor, and one for
# 64-bit ARM by Debian's cross compiler. Sources and builds stay under build/wheel.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086,SC2154
scripts/install-packages.sh $wheel_packages g++-aarch64-linux-gnu
mkdir -p "$1"
dist=$(cd "$1" && pwd)
root=$PWD
python=/usr/bin/python3

# The archive is made by the backend itself: pip has no command for it.
rm -f "$dist"/*.tar.gz "$dist"/*.whl
$python -c "from setuptools import build_meta; build_meta.build_sdist('$dist')"

wheel() {
    source=$root/build/wheel/$1
    rm -rf "$source"
    mkdir -p "$source"
    tar --extract --strip-components 1 --directory "$source" --file "$dist"/*.tar.gz
    # glibc 2.28: sinf and cosf, which spectra hang on, compute since then as they do today.
    $python -m pip wheel --no-cache-dir --no-index --no-deps --no-build-isolation --wheel-dir "$dist" \
        --config-settings="--build-option=--plat-name=manylinux_2_28_$1" "$source"
}
here=$(uname -m)
wheel "$here"
[ "$here" = aarch64 ] || CMAKE_TOOLCHAIN_FILE=$root/cmake/toolchains/aarch64-linux-gnu.cmake wheel aarch64
ls -l "$dist"
