#!/bin/sh
# The test suite under AddressSanitizer, LeakSanitizer and UndefinedBehaviorSanitizer.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh clang libclang-rt-14-dev
cmake --preset asan >/dev/null
cmake --build --preset asan
# The levels share their sources: the widest vectors and those of half the width show what there is to see.
ctest --preset asan -j2 -E sse2
