"""``python3 -m sorvo_audio``: which package and library are in use, and what bits the library gives."""
import platform

import numpy

from . import __version__, digest, native


def main() -> None:
    print(f"sorvo_audio {__version__}, Python {platform.python_version()}, NumPy {numpy.__version__}")
    print(f"library: {native._library._name} on {platform.machine()}")
    print(f"digest of its results: {digest()['all']}")


if __name__ == "__main__":
    main()
