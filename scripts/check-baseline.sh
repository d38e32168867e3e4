#!/bin/sh
# The library on a processor without AVX, which QEMU stands in for: its qemu64 has SSE3 and nothing later, and
# refuses what it has not. The tests pass on it but for their longest sweeps, a consumer of an installation
# runs, and what the command line computes there has the same bits as on this machine.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086,SC2154
scripts/install-packages.sh $build_packages gcc libgtest-dev qemu-user
cmake --preset release -DSORVO_AUDIO_BUILD_TESTS=ON -DSORVO_AUDIO_BUILD_TOOLS=ON >/dev/null
cmake --build --preset release

build=$PWD/build/release
work=$PWD/build/baseline
rm -rf "$work"
mkdir -p "$work"
on_baseline() { qemu-x86_64 -cpu qemu64 "$@"; }

echo 'int main(void) { __asm__ volatile("vpxor %xmm0, %xmm0, %xmm0"); return 0; }' >"$work/avx.c"
cc "$work/avx.c" -o "$work/avx"
if on_baseline "$work/avx" 2>/dev/null; then
    echo "check-baseline: this QEMU runs AVX on a processor that has none, so that nothing would be checked" >&2
    exit 1
fi

longest='*.MatchesTheDefinition*:*FilterLevels*:*RaiseToPower.EqualsTheLibraryFunction*:*SpectrogramAt.*OddShapes*'
longest="$longest:*OneTransform.*EveryLength*:*OneTransform.*Threads*"
for test in util/util api/api elementwise/elementwise fft/fft stft/stft mel/mel filter/filter \
    resample/resample robustness/robustness_threads; do
    GTEST_FILTER=-$longest on_baseline "$build/tests/${test}_test" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        exit 1
    }
    sed -n "s,^\[ *\(PASSED\|SKIPPED\) *\],$test: \1,p" "$work/log" | sort -u
done
on_baseline "$build/tests/api/c99_test"

cmake --install "$build" --prefix "$work/installed" >/dev/null
libdir=$(dirname "$(find "$work/installed" -name libsorvo_audio.so)")
# shellcheck disable=SC2046
cc -std=c99 tests/install/consumer/consumer.c $(PKG_CONFIG_PATH="$libdir/pkgconfig" \
    pkg-config --cflags --libs sorvo_audio) -o "$work/consumer"
LD_LIBRARY_PATH=$libdir on_baseline "$work/consumer"

# Every function, and the C library's own choice by processor.
"$build/tools/sorvo-audio" digest >"$work/native"
on_baseline "$build/tools/sorvo-audio" digest | diff "$work/native" -
echo "baseline: tests and consumer run without AVX, and every result has the same bits"
