"""``python3 -m sorvo_audio``: which package and library are in use, and what bits the library gives."""
from __future__ import annotations

import platform
import re

import numpy

from . import __version__, digest, native


def level() -> str:
    """The vector instructions that the library takes on this processor."""
    machine = platform.machine()
    if machine in ("aarch64", "arm64"):
        return "neon"
    if machine not in ("x86_64", "AMD64"):
        return "generic"
    try:
        with open("/proc/cpuinfo") as file:
            line = re.search(r"^flags\s*:(.*)", file.read(), re.M)
    except OSError:
        line = None
    flags = set(line[1].split()) if line else set()
    for name, needed in (("avx512", {"avx512f", "avx512bw", "avx512dq", "avx512vl"}), ("avx2", {"avx2", "fma"})):
        if needed <= flags:
            return name
    return "sse2" if flags else "not known"


def main() -> None:
    print(f"sorvo_audio {__version__}, Python {platform.python_version()}, NumPy {numpy.__version__}")
    print(f"library: {native._library._name} on {platform.machine()}")
    print(f"level: {level()}")
    print(f"digest of its results: {digest()['all']}")


if __name__ == "__main__":
    main()
