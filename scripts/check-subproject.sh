#!/bin/sh
# The library inside another project: that project's -ffast-math changes no bit of the results, the build stops
# where that flag cannot be taken back, nothing is installed unasked, and BUILD_SHARED_LIBS is followed.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086,SC2154
scripts/install-packages.sh $build_packages python3 python3-numpy
cmake --preset release >/dev/null
cmake --build --preset release --target sorvo_audio

work=$PWD/build/subproject
rm -rf "$work/installed"
parent() { # further arguments are handed to CMake
    cmake -S tests/install/consumer -B "$work" -G Ninja "-DSORVO_AUDIO_SOURCE=$PWD" -DCMAKE_BUILD_TYPE=Release \
        "-DCMAKE_INSTALL_PREFIX=$work/installed" "$@" >/dev/null
    cmake --build "$work"
}
fail() {
    echo "check-subproject: $1" >&2
    exit 1
}

parent "-DCMAKE_C_FLAGS=-Ofast" "-DCMAKE_CXX_FLAGS=-Ofast -ffast-math" -UBUILD_SHARED_LIBS
"$work/c_shared"
"$work/c_static"
digest() {
    SORVO_AUDIO_LIBRARY=$1 PYTHONPATH=python /usr/bin/python3 -B -c \
        'import sorvo_audio; print(*sorvo_audio.digest().items(), sep="\n")'
}
digest "$PWD/build/release/src/libsorvo_audio.so" >"$work/alone"
digest "$work/sorvo_audio/src/libsorvo_audio.so" | diff "$work/alone" - || fail "a parent's -ffast-math changes results"

parent -DBUILD_SHARED_LIBS=OFF
ldd "$work/c_shared" | grep -q sorvo && fail "BUILD_SHARED_LIBS=OFF links the shared library"
"$work/c_shared"

cmake --install "$work" >/dev/null
[ -z "$(find "$work/installed" -type f 2>/dev/null)" ] || fail "a subproject installs files unasked"
parent -UBUILD_SHARED_LIBS -DSORVO_AUDIO_INSTALL=ON
cmake --install "$work" >/dev/null
[ -f "$work/installed/include/sorvo_audio.h" ] || fail "SORVO_AUDIO_INSTALL=ON installs nothing"

for flag in -ffast-math -Ofast -fassociative-math\ -fno-signed-zeros\ -fno-trapping-math -ffinite-math-only; do
    # shellcheck disable=SC2086
    if g++ -std=c++17 $flag -Isrc -fsyntax-only src/util/exceptions.cpp 2>"$work/log"; then
        fail "compiles with $flag"
    fi
    grep -q 'gives defined bits' "$work/log" || fail "no clear message about $flag"
done
echo "subproject: same bits under -ffast-math, installs on request, one kind of library on request"
