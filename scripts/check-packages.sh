#!/bin/sh
# Builds the Debian packages, reads them over with lintian, and uses them: installed into an empty root, as the
# loader, a compiler and the Python interpreter find them there.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086,SC2154
scripts/install-packages.sh $build_packages debhelper dh-python lintian python3 python3-numpy
build=$PWD/build/packages
rm -rf "$build"
mkdir -p "$build/source" "$build/debs"

# What is committed; dpkg builds in the source folder and writes beside it.
git archive HEAD | tar --extract --directory "$build/source"
# Debug information would be thrown away.
(cd "$build/source" && DEB_CXXFLAGS_STRIP=-g DEB_BUILD_OPTIONS="parallel=$(nproc) noautodbgsym" \
    dpkg-buildpackage --build=binary -us -uc) >"$build/log" 2>&1 || {
    tail -n 60 "$build/log" >&2
    exit 1
}
mv "$build"/*.deb "$build"/*.changes "$build"/*.buildinfo "$build/debs"
# Nobody uploads this, so that it closes no request for packaging.
lintian --allow-root --fail-on error --suppress-tags initial-upload-closes-no-bugs "$build"/debs/*.changes

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
echo "packages: built, without an error of lintian, and used from an empty root"
