#!/bin/sh
# Formatting of sources and scripts, and the header's pages.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh clang-format doxygen shellcheck

# shellcheck disable=SC2046
clang-format --dry-run --Werror $(git ls-files '*.c' '*.h' '*.cpp' '*.inl')
# shellcheck disable=SC2046
shellcheck -x $(git ls-files '*.sh' .ci/run)

# Every function and parameter is described, and no other.
mkdir -p build
doxygen docs/doxygen/Doxyfile
