#!/bin/sh
# Formatting, static analysis, the header's pages, and a build with both compilers in which a warning is an
# error.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh clang clang-format clang-tidy doxygen python3 shellcheck

scripts/check-format.sh
cmake --preset clang -DSORVO_AUDIO_BUILD_TOOLS=OFF >/dev/null
cmake --build --preset clang
ctest --preset clang -E 'robustness|install|docs|python'
run-clang-tidy -quiet -p build/clang "$PWD/src/.*" >build/clang/tidy.log 2>&1 || {
    grep -E 'warning:|error:' build/clang/tidy.log >&2
    exit 1
}
echo "style: formatted, no warning from g++, clang++, clang-tidy or Doxygen"
