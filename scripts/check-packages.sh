#!/bin/sh
# Builds the Debian packages and uses them: installed into an empty root, as the loader, a compiler and the
# Python interpreter find them there.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086,SC2154
scripts/install-packages.sh $build_packages dpkg-dev fakeroot python3 python3-numpy
cmake --preset release -DSORVO_AUDIO_BUILD_TOOLS=ON >/dev/null
cmake --build --preset release
build=$PWD/build/packages
rm -rf "$build"
mkdir -p "$build"
(cd build/release && cpack -G DEB -B "$build/debs" >/dev/null)

for package in "$build"/debs/*.deb; do
    dpkg-deb --field "$package" Package Version Depends
    dpkg-deb --extract "$package" "$build/root"
done
root=$build/root/usr
PATH=$root/bin:$PATH LD_LIBRARY_PATH=$(dirname "$(find "$root" -name 'libsorvo_audio.so.0')")
export PATH LD_LIBRARY_PATH
cc -std=c99 -I"$root/include" tests/install/consumer/consumer.c -L"$LD_LIBRARY_PATH" -lsorvo_audio \
    -o "$build/consumer"
"$build/consumer"
sorvo-audio --version
PYTHONPATH=$root/lib/python3/dist-packages /usr/bin/python3 -c '
import numpy
import sorvo_audio
print("python:", sorvo_audio.fft(numpy.ones(4, numpy.float32)))'
echo "packages: built, and used from an empty root"
