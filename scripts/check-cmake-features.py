#!/usr/bin/env python3
"""Checks that the build needs no CMake newer than the version it asks for. CMake's own manual says when each
command, variable, property, policy and option came in; none of those that came later may be named."""
import json
import pathlib
import re
import subprocess
import sys

# Options that came in late at one command and are older at others.
OLDER_ELSEWHERE = {"GLOBAL", "PATHS"}


def options(text):
    return {name for pair in re.findall(r"``(?:\$<)?([A-Z][A-Z_]{3,})|genex:: \$<(\w+)", text)
            for name in pair if name}


def indentation(line):
    return len(line) - len(line.lstrip())


def names_after(minor, page):
    """What a page of the manual says to be newer than 3.<minor>."""
    names = set()
    lines = [line for line in page.read_text(errors="replace").split("\n") if line.strip()]
    for i, line in enumerate(lines):
        added = re.match(r" *\.\. versionadded:: 3\.(\d+)", line)
        if not added or int(added[1]) <= minor:
            continue
        if i < 4 and page.suffix == ".rst":  # under the title: all of the page
            return {page.stem}
        # The entry above, to which the remark belongs, and what is described below, indented further.
        names |= options(lines[i - 1])
        for text in lines[i + 1:]:
            if indentation(text) <= indentation(line):
                break
            names |= options(text)
    return names


def main():
    minor = int(re.search(r"VERSION 3\.(\d+)", pathlib.Path("CMakeLists.txt").read_text())[1])
    manual = max(pathlib.Path("/usr/share").glob("cmake-3.*"), key=lambda path: int(path.name[8:]))
    later = set()
    for page in (*manual.glob("Help/*/*.rst"), *manual.glob("Modules/*.cmake")):
        if page.parent.name not in ("release", "cpack_gen"):
            later |= names_after(minor, page)
    later -= OLDER_ELSEWHERE
    if len(later) < 100:
        sys.exit(f"check-cmake-features: only {len(later)} newer names found under {manual}: cannot check")

    files = subprocess.check_output(
        ["git", "ls-files", "*CMakeLists.txt", "*.cmake", "*.cmake.in", "CMakePresets.json"], text=True).split()
    failed = False
    for file in map(pathlib.Path, files):
        used = set(re.findall(r"\w+", re.sub(r"#.*", "", file.read_text()))) & later
        if used:
            print(f"{file}: newer than CMake 3.{minor}: {', '.join(sorted(used))}", file=sys.stderr)
            failed = True
    presets = json.loads(pathlib.Path("CMakePresets.json").read_text())
    needs = presets["cmakeMinimumRequired"]["minor"]
    if needs > minor or presets["version"] > 3:  # 3 is what CMake 3.21 and 3.22 read
        print(f"CMakePresets.json: version {presets['version']} for CMake 3.{needs}, not 3.{minor}", file=sys.stderr)
        failed = True
    if failed:
        sys.exit(1)
    print(f"cmake: {len(files)} files name none of {len(later)} things newer than CMake 3.{minor}")


main()
