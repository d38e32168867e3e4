"""docs/digests.txt, what sorvo_audio.digest() gives, with a column for each kind of C library.

    digests.py            prints the digests that this library gives with this C library
    digests.py --update   writes them into their column
    digests.py --check    compares them with their column

With --own, the library's elementary functions are its own, which round as those of glibc from 2.41 on.
"""
import os
import pathlib
import sys

import page

FILE = pathlib.Path(__file__).resolve().parents[1] / "digests.txt"


def column():
    """The column of the C library that this process uses: 0 is that before glibc 2.41, 1 the other."""
    if "--own" in sys.argv[1:]:
        return 1
    try:
        name, version = os.confstr("CS_GNU_LIBC_VERSION").split()
    except (AttributeError, ValueError):
        print("skipped: the C library is not glibc")
        sys.exit(77)
    assert name == "glibc"
    return int(tuple(map(int, version.split("."))) >= (2, 41))


def published():
    """The digests that this machine should give, by name."""
    rows = [line.split() for line in FILE.read_text().splitlines() if not line.startswith("#")]
    return {name: digests[column()] for name, *digests in rows}


def update(now):
    """Rewrites one column; a function that is new has no digest in the other."""
    lines = FILE.read_text().splitlines()
    head = [line for line in lines if line.startswith("#")]
    old = {name: digests for name, *digests in map(str.split, lines[len(head):])}
    for name, digest in now.items():
        old.setdefault(name, ["?" * 16, "?" * 16])[column()] = digest
    rows = [f"{name:<31} {old[name][0]}  {old[name][1]}" for name in now]
    FILE.write_text("\n".join([*head, *rows]) + "\n")


def main():
    page.require("numpy")
    import sorvo_audio
    now = sorvo_audio.digest()
    if "--update" in sys.argv[1:]:
        update(now)
    elif "--check" in sys.argv[1:]:
        expected = published()
        for name in sorted({*now, *expected}):
            if now.get(name) != expected.get(name):
                print(f"{name}: {now.get(name)}, published is {expected.get(name)}")
        return int(now != expected)
    else:
        print("\n".join(f"{name:<31} {digest}" for name, digest in now.items()))
    return 0


if __name__ == "__main__":
    sys.exit(main())
