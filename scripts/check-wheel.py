#!/usr/bin/env python3
"""usage: check-wheel.py WHEEL
Checks what a wheel holds, and that its library needs nothing which the platform in the wheel's name does not have:
no other objects than the C runtime's, and no symbol versions of a later glibc."""
import pathlib
import re
import subprocess
import sys
import tempfile
import zipfile

wheel = pathlib.Path(sys.argv[1])
OBJECTS = {"libc.so.6", "libm.so.6", "libgcc_s.so.1", "ld-linux-x86-64.so.2", "ld-linux-aarch64.so.1"}
MACHINES = {"x86_64": 62, "aarch64": 183}  # e_machine of an ELF file
CONTENTS = {"sorvo_audio/libsorvo_audio.so.0", "sorvo_audio/__init__.py", "sorvo_audio/__main__.py",
            "sorvo_audio/py.typed", "sorvo_audio/digest_calls.txt", "sorvo_audio/presets.json",
            "dist-info/LICENSE", "dist-info/METADATA", "dist-info/RECORD"}
GCC = (8,)  # whose unwinder every system of the platform has


def number(version):
    return tuple(int(part) for part in version.split("."))


def main():
    problems = []
    platform = re.fullmatch(r"sorvo_audio-[\d.]+-py3-none-manylinux_(\d+)_(\d+)_(x86_64|aarch64)\.whl", wheel.name)
    if platform is None:
        sys.exit(f"check-wheel: the name {wheel.name} says no glibc and processor")
    promised = int(platform[1]), int(platform[2])
    with zipfile.ZipFile(wheel) as archive, tempfile.TemporaryDirectory() as folder:
        names = {re.sub(r"^sorvo_audio-[\d.]+\.dist-info", "dist-info", name) for name in archive.namelist()}
        problems += [f"{name} is missing" for name in CONTENTS - names]
        metadata = next(archive.read(name).decode() for name in archive.namelist() if name.endswith("/METADATA"))
        for field in ("License:", "Requires-Dist: numpy", "# sorvo-audio for Python"):
            if field not in metadata:
                problems.append(f"the metadata have no '{field}'")
        library = archive.extract("sorvo_audio/libsorvo_audio.so.0", folder)
        machine = int.from_bytes(pathlib.Path(library).read_bytes()[18:20], "little")
        output = subprocess.check_output(["objdump", "-p", "-T", library], text=True)

    if machine != MACHINES[platform[3]]:
        problems.append(f"the library is not one for {platform[3]}")
    needed = set(re.findall(r"NEEDED +(\S+)", output))
    problems += [f"needs {name}" for name in needed - OBJECTS]
    wanted = set(re.findall(r"\*UND\*.*?\(?\b((?:GLIBC|GLIBCXX|CXXABI|GCC)_[\d.]+)", output))
    glibc = {name[6:] for name in wanted if name.startswith("GLIBC_")}
    gcc = {name[4:] for name in wanted if name.startswith("GCC_")}
    if not glibc:
        problems.append("no symbol of glibc was found, so that nothing would be checked")
    problems += [f"needs {name}" for name in wanted if name.startswith(("GLIBCXX_", "CXXABI_"))]
    problems += [f"needs glibc {version}" for version in sorted(glibc, key=number) if number(version) > promised]
    problems += [f"needs GCC {version}" for version in gcc if number(version) > GCC]
    exported = set(re.findall(r"^\S+ g +DF \.text\s.* (\w+)$", output, re.M))
    if len(exported) != 22:
        problems.append(f"exports {len(exported)} names: {sorted(exported)}")
    if problems:
        sys.exit("\n".join(f"check-wheel: {wheel.name}: {problem}" for problem in problems))
    print(f"{wheel.name}: {wheel.stat().st_size // 1024} KiB, needs glibc {max(glibc, key=number)}")


main()
