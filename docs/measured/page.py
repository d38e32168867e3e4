"""What the scripts of this folder do with the tables that they measure.

    SCRIPT            prints them
    SCRIPT --update   writes them into the script's page
    SCRIPT --check    compares them with those of the page
"""
import argparse
import importlib.util
import math
import os
import pathlib
import re
import sys

FOLDER = pathlib.Path(__file__).resolve().parents[1]
# The package of this tree with the library of `make test`, and the toolkits' formulas.
sys.path[1:1] = [str(FOLDER.parent / "python"), str(FOLDER.parent / "tests" / "python")]
os.environ.setdefault("SORVO_AUDIO_LIBRARY", str(FOLDER.parent / "build/release/src/libsorvo_audio.so"))

NUMBER = re.compile(r"[-+]?\d+(\.\d+)?(e[-+]?\d+)?$")


def require(*packages):
    """Ends as a skipped test where one of them is not installed."""
    missing = [name for name in packages if importlib.util.find_spec(name) is None]
    if missing:
        print(f"skipped: {', '.join(missing)} not installed")
        sys.exit(77)


def table(head, rows):
    """Lines of a table; cells are text, columns of numbers are set to the right."""
    rules = ["---:" if all(not cell or NUMBER.match(cell) for cell in column) else "---" for column in zip(*rows)]
    return ["| " + " | ".join(head) + " |", "|" + "|".join(rules) + "|",
            *("| " + " | ".join(row) + " |" for row in rows), ""]


def rounded_up(value):
    """An error as text, rounded up to one digit."""
    if not value:
        return "0"
    unit = 10.0 ** math.floor(math.log10(value))
    return f"{math.ceil(value / unit - 1e-9) * unit:.0e}"


def serve(name, measure, agree, draw=None):
    """Does what the options say with ``name``.py and ``name``.md.

    ``measure()`` gives the lines, ``agree(page, now)`` compares two numbers, ``draw(folder)`` plots.

    Numbers are compared where a cell is nothing else; all other text has to be the same. A cell that
    is empty now could not be measured here.
    """
    parser = argparse.ArgumentParser(prog=name + ".py", description=__doc__,
                                     formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--check", action="store_true")
    options = parser.parse_args()
    page = FOLDER / f"{name}.md"
    begin, end = f"<!-- measured by docs/measured/{name}.py -->\n", "<!-- end -->\n"
    lines = measure()
    if not (options.update or options.check):
        print("\n".join(lines))
        return 0
    before, rest = page.read_text().split(begin)
    printed, after = rest.split(end)
    if options.update:
        page.write_text(before + begin + "\n".join(["", *lines]) + "\n" + end + after)
        if draw:
            draw(FOLDER)
        return 0
    return 0 if _same(printed.strip(), "\n".join(lines).strip(), agree) else 1


def _same(printed, measured, agree):
    printed, measured = printed.splitlines(), measured.splitlines()
    good = len(printed) == len(measured)
    if not good:
        print(f"the page has {len(printed)} measured lines, and now there are {len(measured)}")
    for old, new in zip(printed, measured):
        if not _same_line(old.split(" | "), new.split(" | "), agree):
            print(f"page {old}\nnow  {new}")
            good = False
    return good


def _same_line(old, new, agree):
    def same(a, b):
        a, b = a.strip(" |"), b.strip(" |")
        return a == b or not b or bool(NUMBER.match(a) and NUMBER.match(b) and agree(float(a), float(b)))
    return len(old) == len(new) and all(map(same, old, new))
