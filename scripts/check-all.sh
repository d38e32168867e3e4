#!/bin/sh
# What a release is checked by beyond .ci/run: a build by clang++ with static analysis, sanitizers, other
# processors, the fuzzer, and all kinds of packages.
set -eu
cd "$(dirname "$0")/.."
for check in style subproject sanitizers memory baseline fuzz shared-object packages wheel js; do
    echo "=== scripts/check-$check.sh"
    "scripts/check-$check.sh"
done
