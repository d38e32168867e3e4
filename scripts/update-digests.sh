#!/bin/sh
# Writes docs/digests.txt anew: with this machine's C library, and with that of Debian 13, glibc 2.41, which is
# unpacked below build/ and started by its own loader. With --check, compares instead.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086,SC2154
scripts/install-packages.sh $build_packages python3 python3-numpy
cmake --preset release >/dev/null
cmake --build --preset release --target sorvo_audio

root=$(scripts/unpack-debian.sh trixie amd64 libc6)
libdir=usr/lib/x86_64-linux-gnu

mode=${1:---update}
/usr/bin/python3 -B docs/measured/digests.py "$mode"
"$root/$libdir/ld-linux-x86-64.so.2" --library-path "$root/$libdir:/$libdir" \
    /usr/bin/python3 -B docs/measured/digests.py "$mode"
