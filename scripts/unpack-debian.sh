#!/bin/sh
# usage: unpack-debian.sh RELEASE PROCESSOR PACKAGE...
# Unpacks packages of another Debian release or for another processor, with what they need, and prints the folder. An
# apt of its own leaves the machine's sources and lists alone; what was unpacked before stays.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh debian-archive-keyring >&2
folder=$PWD/build/debian-$1-$2
release=$1
processor=$2
shift 2
if [ ! -d "$folder/root" ]; then
    mkdir -p "$folder/lists/partial" "$folder/archives/partial"
    keys=/usr/share/keyrings/debian-archive-keyring.gpg
    echo "deb [signed-by=$keys] http://deb.debian.org/debian $release main" >"$folder/sources.list"
    apt_get() {
        apt-get -qq -o Dir::Etc::SourceList="$folder/sources.list" -o Dir::Etc::SourceParts=/dev/null \
            -o Dir::State::Lists="$folder/lists" -o Dir::Cache="$folder" -o Dir::State::status=/dev/null \
            -o APT::Architecture="$processor" -o APT::Architectures="$processor" -o APT::Sandbox::User=root "$@" >&2
    }
    apt_get update
    apt_get install --yes --download-only --no-install-recommends "$@"
    for package in "$folder"/archives/*.deb; do
        dpkg-deb --extract "$package" "$folder/root.part"
    done
    mv "$folder/root.part" "$folder/root"
fi
echo "$folder/root"
