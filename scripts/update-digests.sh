#!/bin/sh
# Writes docs/digests.txt anew: with this machine's C library, and with that of Debian 13, glibc 2.41, which is
# unpacked below build/ and started by its own loader. With --check, compares instead.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086,SC2154
scripts/install-packages.sh $build_packages python3 python3-numpy debian-archive-keyring
cmake --preset release >/dev/null
cmake --build --preset release --target sorvo_audio

# An apt of its own, which leaves the machine's sources and lists alone.
newer=$PWD/build/debian-13
if [ ! -d "$newer/root" ]; then
    mkdir -p "$newer/lists/partial" "$newer/cache/archives/partial"
    keys=/usr/share/keyrings/debian-archive-keyring.gpg
    echo "deb [signed-by=$keys] http://deb.debian.org/debian trixie main" >"$newer/sources.list"
    apt_get() {
        apt-get -q -o Dir::Etc::sourcelist="$newer/sources.list" -o Dir::Etc::sourceparts=/dev/null \
            -o Dir::State::lists="$newer/lists" -o Dir::Cache="$newer/cache" "$@"
    }
    apt_get update
    (cd "$newer" && apt_get download libc6 && dpkg-deb -x libc6_*.deb root.part && mv root.part root)
fi
libdir=usr/lib/x86_64-linux-gnu

mode=${1:---update}
/usr/bin/python3 -B docs/measured/digests.py "$mode"
"$newer/root/$libdir/ld-linux-x86-64.so.2" --library-path "$newer/root/$libdir:/$libdir" \
    /usr/bin/python3 -B docs/measured/digests.py "$mode"
