#!/bin/bash
# usage: ports.sh [PRESET...]
# Builds and tests the library for other systems and processors, and prints a table of what came of it.
# docs/platforms.md tells what the rows mean.
set -uo pipefail
cd "$(dirname "$0")/.." || exit
. scripts/packages.sh
# shellcheck disable=SC2086,SC2154
scripts/install-packages.sh $port_packages || exit 1
# Some targets compile the same for another C library.
export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache

row() {
    printf '%-8s  %-16s  %-35s  %-7s  %s\n' "$@"
}

# Prints the row of a preset; fails where a test does.
build_and_test() {
    local preset=$1 log=build/$1 status=0
    mkdir -p "$log"
    {
        cmake --preset "$preset" >"$log/configure.log" 2>&1 &&
            cmake --build --preset "$preset" >"$log/build.log" 2>&1
    } || {
        tail -n 30 "$log"/*.log >&2
        row "$preset" - - "not built" -
        return 1
    }
    ctest --preset "$preset" --parallel "$(nproc)" >"$log/tests.log" 2>&1 || {
        cat "$log/tests.log" >&2
        status=1
    }
    local levels compiler passed digest
    levels=$(sed -n 's/^-- levels: //p' "$log/configure.log")
    compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[^=]*=//p' "$log/CMakeCache.txt")
    compiler="$(basename "$compiler") $("$compiler" -dumpfullversion)"
    passed=$(grep -c ' Passed ' "$log/tests.log")/$(grep -cE '^ *[0-9]+/[0-9]+ Test' "$log/tests.log")
    grep -q ' digest_test .* Passed ' "$log/tests.log" && digest=equal || digest=DIFFERS
    row "$preset" "$levels" "$compiler" "$passed" "$digest"
    return "$status"
}

status=0
row target levels compiler tests digest
[ $# -gt 0 ] || set -- own generic aarch64 riscv64 windows musl
for preset in "$@"; do
    build_and_test "$preset" || status=1
done
exit "$status"
