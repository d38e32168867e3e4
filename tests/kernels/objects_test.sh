#!/bin/sh
# What compilers may make of code that is compiled once per level: objects_test.sh NM OBJDUMP OBJECT...
#
# A function that is in several objects, such as an instance of std::min, is kept once for the whole program by
# the linker. In kernels' objects each must be of the level's own namespace, so that none with instructions of a
# level runs on a processor without it. And no object may fuse a multiplication with an addition, which g++ does
# to products of complex doubles in spite of -ffp-contract=off (-fno-tree-slp-vectorize on the file prevents it);
# the files below do so themselves, where the result is proved not to show it. The instructions are those of x86-64,
# of 64-bit ARM and of RISC-V.
set -eu
nm=$1
objdump=$2
shift 2
may_fuse="math/root_kernels math/function_kernels elementwise/decibel_kernels stft/frame_kernels"

failed=0
fail() {
    echo "$1"
    echo "$2" | sort | uniq -c | sort -rn | head -n 5
    failed=1
}
for object in "$@"; do
    [ -r "$object" ] || fail "$object cannot be read" ""
    case $object in
    *sorvo_kernels_*.dir/*)
        level=${object##*sorvo_kernels_}
        level=${level%%.dir/*}
        shared=$("$nm" -C --defined-only "$object" | sed -n 's/^[0-9a-f]* [TW] //p' |
            grep -v "sorvo::audio::$level::" || true)
        [ -z "$shared" ] || fail "$object has functions that other objects may have too:" "$shared"
        ;;
    esac
    fused='v?fn?m(add|sub)|fml[as]|fcmla'
    for file in $may_fuse; do
        case $object in
        */sorvo_kernels_generic.dir/*) ;;
        */sorvo_kernels_*/"$file".cpp.o*) fused='vfmaddsub|vfmsubadd|fcmla' ;;
        esac
    done
    found=$("$objdump" -d --no-show-raw-insn "$object" | grep -oE "$fused" || true)
    [ -z "$found" ] || fail "$object fuses multiplications with additions:" "$found"
done
exit $failed
