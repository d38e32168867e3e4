#!/bin/sh
# usage: install_test.sh CMAKE BUILD_DIR SOURCE_DIR
# Installs into a path with a space, moves the tree, and builds consumers in C99 and C++ by CMake package
# (shared and static), pkg-config (shared and static) and add_subdirectory.
set -eu
cmake=$1 build=$2 source=$3
here=$source/tests/install
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$cmake" --install "$build" --prefix "$work/first place" >/dev/null
mv "$work/first place" "$work/second place"
prefix="$work/second place"
libdir=$(dirname "$(find "$prefix" -name libsorvo_audio.so)")

run() {
    name=$1
    shift
    if ! output=$(LD_LIBRARY_PATH="$libdir" "$@"); then
        echo "$name: failed" >&2
        exit 1
    fi
    [ "$output" = "frames 101, bands 80" ] || { echo "$name printed: $output" >&2; exit 1; }
    echo "$name: $output"
}

"$cmake" -S "$here/consumer" -B "$work/package" "-DCMAKE_PREFIX_PATH=$prefix" >/dev/null
"$cmake" --build "$work/package" >/dev/null
for target in c_shared cpp_shared c_static cpp_static; do
    run "find_package $target" "$work/package/$target"
done

# The example, which is the program that the first page shows.
# shellcheck disable=SC2016
sed -n '/^```c$/,/^```$/{/^```/!p}' "$source/README.md" | diff "$source/examples/c/loudest_band.c" - || {
    echo "README.md and examples/c show different programs" >&2
    exit 1
}
"$cmake" -S "$source/examples/c" -B "$work/example" "-DCMAKE_PREFIX_PATH=$prefix" >/dev/null
"$cmake" --build "$work/example" >/dev/null
LD_LIBRARY_PATH=$libdir "$work/example/loudest_band"

"$cmake" -S "$here/consumer" -B "$work/subdirectory" "-DSORVO_AUDIO_SOURCE=$source" >/dev/null
"$cmake" --build "$work/subdirectory" -j2 >/dev/null
for target in c_shared cpp_shared c_static cpp_static; do
    run "add_subdirectory $target" "$work/subdirectory/$target"
done

# pkg-config escapes the space of its paths for a shell, hence the eval.
export PKG_CONFIG_PATH="$libdir/pkgconfig"
eval "cc -std=c99 -pedantic -Werror '$here/consumer/consumer.c' -o '$work/pc_shared' \
    $(pkg-config --cflags --libs sorvo_audio)"
run "pkg-config shared" "$work/pc_shared"
eval "cc -std=c99 '$here/consumer/consumer.c' -o '$work/pc_static' \
    $(pkg-config --cflags sorvo_audio) -static $(pkg-config --static --libs sorvo_audio)"
run "pkg-config static" "$work/pc_static"
