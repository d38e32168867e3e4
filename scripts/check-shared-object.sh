#!/bin/sh
# usage: check-shared-object.sh [--update-abi]
# Checks what the built shared object promises to those who load it: nothing but the public functions is
# exported, nothing but the C and C++ runtime is needed, memory protections are on, and the binary interface
# is the one described in cmake/sorvo_audio.abi (--update-abi writes that description anew).
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh abigail-tools binutils

cmake --preset release >/dev/null
cmake --build --preset release --target sorvo_audio sorvo-audio
library=build/release/src/libsorvo_audio.so
mkdir -p build/abi
failed=0
fail() {
    echo "check-shared-object: $1" >&2
    failed=1
}

nm -D --defined-only "$library" | awk '{ print $3 }' | sort >build/abi/exported
grep -o 'sorvoAudio[A-Za-z0-9]*(' include/sorvo_audio.h | tr -d '(' | sort -u >build/abi/declared
diff build/abi/declared build/abi/exported || fail "exported names differ from the header's"
[ "$(wc -l <build/abi/exported)" -eq 22 ] || fail "there are not 22 exported names"

needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
for object in $needed; do
    case $object in
        libstdc++.so.6 | libm.so.6 | libc.so.6 | libgcc_s.so.1 | ld-linux-x86-64.so.2) ;;
        *) fail "needs $object" ;;
    esac
done
ldd -r "$library" 2>&1 | grep 'undefined symbol' && fail "has undefined symbols"

readelf -lW "$library" | grep 'GNU_STACK' | grep -q 'RWE' && fail "its stack is executable"
readelf -lW "$library" | grep -q 'GNU_RELRO' || fail "no RELRO"
readelf -d "$library" | grep -q 'BIND_NOW' || fail "symbols are bound lazily, so RELRO is partial"
nm -D "$library" | grep -q '__stack_chk_fail' || fail "no stack protector"
for flag in -D_FORTIFY_SOURCE=2 -fstack-clash-protection -fcf-protection; do
    grep -q -e "$flag" build/release/build.ninja || fail "built without $flag"
done

readelf -dW build/release/tools/sorvo-audio | grep -q 'FLAGS_1.*NOW.*PIE' ||
    fail "the tool is at a fixed address, or binds symbols lazily"

# Types are read from debug information, and do not depend on the level.
cmake --preset debug -B build/abi "-DCMAKE_CXX_FLAGS=-ffile-prefix-map=$PWD=." -DSORVO_AUDIO_GENERIC=ON \
    -DSORVO_AUDIO_BUILD_TESTS=OFF -DSORVO_AUDIO_BUILD_TOOLS=OFF >/dev/null
cmake --build build/abi
abi=cmake/sorvo_audio.abi
abidw --no-corpus-path --no-comp-dir-path --no-show-locs --exported-interfaces-only \
    --drop-private-types --headers-dir include \
    --out-file build/abi/sorvo_audio.abi build/abi/src/libsorvo_audio.so
if [ "${1-}" = --update-abi ]; then
    cp build/abi/sorvo_audio.abi "$abi"
fi
abidiff "$abi" build/abi/sorvo_audio.abi || fail "the binary interface is not the one in $abi"

[ "$failed" -eq 0 ] && echo "shared object: 22 functions, interface and protections as promised"
exit "$failed"
