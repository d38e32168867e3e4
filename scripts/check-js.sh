#!/bin/sh
# The npm package: builds both WebAssembly modules, runs the tests in Node.js, and those of the page of examples/web in
# Chromium, beside a native library whose elementary functions are its own.
#
#   scripts/check-js.sh           everything
#   scripts/check-js.sh build     the package and the page alone
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086,SC2154
scripts/install-packages.sh $js_packages
command -v npm >/dev/null || scripts/install-packages.sh npm  # some packages of Node.js have it inside

for preset in wasm wasm-plain; do
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" --target sorvo_audio_module
done
(cd js && npm install --no-package-lock --no-audit --no-fund --loglevel=error && npm run --silent build)
node examples/web/build.mjs
[ "${1-}" != build ] || exit 0

cmake -S . -B build/js-native -G Ninja -DSORVO_AUDIO_MATH=own -DSORVO_AUDIO_BUILD_TESTS=OFF >/dev/null
cmake --build build/js-native --target sorvo_audio sorvo-audio
export SORVO_AUDIO_TOOL="$PWD/build/js-native/tools/sorvo-audio"
export SORVO_AUDIO_LIBRARY="$PWD/build/js-native/src/libsorvo_audio.so.0"
results=$PWD/build/js-tests.tap
status=0
(cd js && npm test --silent) >"$results" || status=$?
grep -E "^ *((not )?ok|# (tests|pass|fail|skipped)) " "$results"
[ "$status" -eq 0 ] || cat "$results" >&2

# As the rows of the other ports: target, level, compiler, tests of this level, digest.
for level in simd128 plain; do
    digest=DIFFERS
    ! grep -q "^ *ok .* digests of $level\$" "$results" || digest=equal
    printf '%-8s  %-16s  %-35s  %-7s  %s\n' wasm32 "$level" "emscripten $(emcc -dumpversion)" \
        "$(grep -c "^ *ok .*$level\$" "$results")/$(grep -cE "^ *(not )?ok .*$level\$" "$results")" "$digest"
done
exit "$status"
