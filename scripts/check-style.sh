#!/bin/sh
# Formatting, static analysis, the header's pages, and a build with both compilers in which a warning is an
# error.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh clang clang-format clang-tidy doxygen python3 shellcheck

# shellcheck disable=SC2046
clang-format --dry-run --Werror $(git ls-files '*.c' '*.h' '*.cpp' '*.inl')
# shellcheck disable=SC2046
shellcheck -x $(git ls-files '*.sh' .ci/run)

# Every function and parameter is described, and no other.
mkdir -p build
doxygen docs/doxygen/Doxyfile

cmake --preset clang -DSORVO_AUDIO_BUILD_TOOLS=OFF >/dev/null
cmake --build --preset clang
ctest --preset clang -E 'robustness|install|docs|python'
run-clang-tidy -quiet -p build/clang "$PWD/src/.*" >build/clang/tidy.log 2>&1 || {
    grep -E 'warning:|error:' build/clang/tidy.log >&2
    exit 1
}
echo "style: formatted, no warning from g++, clang++, clang-tidy or Doxygen"
