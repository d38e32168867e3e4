#!/bin/sh
# Builds everything, runs every test, and says at the end what was left out and why. Arguments are handed to ctest.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086,SC2154
scripts/install-packages.sh $test_packages

mkdir -p build/release
cmake --preset release -DSORVO_AUDIO_BUILD_TESTS=ON >build/release/configure.log 2>&1 || {
    cat build/release/configure.log >&2
    exit 1
}
cmake --build --preset release
status=0
ctest --preset release --parallel 2 "$@" || status=$?

# GoogleTest, unittest and the tests' own scripts each have a way to say it.
left_out=$(
    sed -n 's/^-- \(.*left out: .*\)/\1/p' build/release/configure.log
    awk '
        / Testing: / { program = $NF }
        /: Skipped$/ { getline; print program ": " $0 }
        / \.\.\. skipped / { reason = $0; sub(/.* \.\.\. skipped /, "", reason); print program ": " $1 ": " reason }
        /^skipped: / { print program ": not installed: " substr($0, 10) }
    ' build/release/Testing/Temporary/LastTest.log | sort | uniq -c | sed 's/^ *1 //; s/^ *\([0-9]*\) \(.*\)/\2 (\1 times)/'
)
if [ -n "$left_out" ]; then
    printf 'Left out:\n%s\n' "$left_out"
else
    echo "No test was left out."
fi
exit "$status"
