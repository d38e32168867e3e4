#!/usr/bin/python3
"""Makes ratios of measured times: prints them, keeps them as JSON, writes them into a document.

    report.py RAW.json ...                      print the tables
    report.py RAW.json ... --save RESULT.json   and keep the medians
    report.py RESULT.json --document FILE.md    write the tables between the markers of a document

A ratio is the other's time divided by ours: above 1, we are faster. Of each family of variants
("fftw:pairs" and "fftw:r2c-many" are two of FFTW) the fastest counts.
"""
import argparse
import json
import re
from pathlib import Path

LEVELS = ("avx512", "avx2", "sse2")
MARKERS = ("<!-- measured: begin -->", "<!-- measured: end -->")

# With which family the rows of a group are compared.
OPPONENTS = {"fft": "fftw", "spectrogram": "fftw", "mel": "fftw", "log-mel": "fftw",
             "inverse": "fftw", "resample": "soxr", "functions": "libmvec",
             "torchaudio": "torchaudio", "torch": "torch", "scipy": "scipy", "numpy": "numpy"}


def load(path):
    """A file of medians as it is; raw measurements reduced to their medians."""
    data = json.loads(Path(path).read_text())
    if "benchmarks" not in data:
        return {"context": {}, "rows": {}, "memory": [], **data}
    rows = {}
    for entry in data["benchmarks"]:
        group, task, variant = entry["run_name"].split("/", 2)
        times = rows.setdefault(f"{group}/{task}", {}).setdefault(variant, {})
        if entry["aggregate_name"] == "median":
            times["ns"] = round(entry["cpu_time"], 1)
        elif entry["aggregate_name"] == "cv":
            times["cv"] = round(entry["cpu_time"], 3)
    rows = {row: dict(sorted(times.items())) for row, times in rows.items()}
    kept = ("date", "processor", "level", "compiler", "peers", "python")
    context = {key: data["context"][key] for key in kept if key in data["context"]}
    return {"context": context, "rows": rows, "memory": []}


def merge(parts):
    result = {"context": {}, "rows": {}, "memory": []}
    for part in parts:
        result["context"].update(part["context"])
        result["rows"].update(part["rows"])
        result["memory"] += part["memory"]
    return result


def save(path, result):
    """One line a row, so that changes can be read."""
    def lines(items):
        return "{\n" + ",\n".join(f"  {json.dumps(k)}: {json.dumps(v)}" for k, v in items) + "\n}"
    text = ",\n".join(f'"{key}": {lines(result[key].items())}' for key in ("context", "rows"))
    Path(path).write_text(f'{{\n{text},\n"memory": {json.dumps(result["memory"])}\n}}\n')


def family(variant):
    return variant.split(":")[0]


def ours(times, level=None):
    """Our time at a level, by default the highest that was measured."""
    for name in [level] if level else [*LEVELS, ""]:
        entry = times.get(f"ours:{name}" if name else "ours")
        if entry:
            return entry["ns"]
    return None


def fastest(times, name, level=None):
    """Of a family, without the variants of higher levels than the given one."""
    too_high = LEVELS[:LEVELS.index(level)] if level else ()
    candidates = [(t["ns"], v) for v, t in times.items()
                  if family(v) == name and v.partition(":")[2] not in too_high]
    return min(candidates, default=(None, None))


def opponent_of(row):
    return OPPONENTS.get(row.split("/")[0], "plain")


def ratio(time, our_time):
    return f"{time / our_time:.2f}" if time and our_time else ""


def ratio_rows(rows):
    """The ratio tables, one a group: (group, header, lines)."""
    groups = {}
    for row in rows:
        groups.setdefault(row.split("/")[0], []).append(row)
    for group, names in groups.items():
        if group == "growth":
            continue
        opponent = opponent_of(names[0])
        present = {v for row in names for v in rows[row]}
        others = sorted({family(v) for v in present} - {"ours", opponent})
        levels = [level for level in LEVELS[1:] if f"ours:{level}" in present]
        header = [group, opponent, *(f"{opponent} at {level}" for level in levels), *others,
                  "fastest"]
        lines = []
        for row in names:
            times = rows[row]
            best, variant = fastest(times, opponent)
            lines.append([
                row.split("/")[1], ratio(best, ours(times)),
                *(ratio(fastest(times, opponent, level)[0], ours(times, level))
                  for level in levels),
                *(ratio(fastest(times, name)[0], ours(times)) for name in others),
                (variant or "").partition(":")[2]])
        if all(not line[-1] for line in lines):
            header, lines = header[:-1], [line[:-1] for line in lines]
        yield group, header, lines


def growth_rows(rows):
    lines = []
    for row, times in rows.items():
        if row.startswith("growth/"):
            cost = {v: t["ns"] / 1e3 / int(v.rstrip("s")) for v, t in times.items()}
            cost = dict(sorted(cost.items(), key=lambda item: int(item[0].rstrip("s"))))
            lines.append([row.split("/")[1], *(f"{c:.1f}" for c in cost.values()),
                          f"{max(cost.values()) / min(cost.values()):.2f}"])
    header = ["µs per second of sound", "1 s", "30 s", "600 s", "largest / smallest"]
    return header, lines


def memory_rows(memory):
    return (["working memory, one hour of sound", "KiB"],
            [[entry["name"], entry["peak_kib"]] for entry in memory])


def time_rows(rows):
    lines = [[row, variant, f"{t['ns'] / 1e3:.4g}", f"{100 * t['cv']:.0f} %"]
             for row, times in rows.items() for variant, t in sorted(times.items())]
    return ["row", "variant", "µs", "spread"], lines


def tables(result, with_times):
    """Ratios first, then growth and memory, then the times behind them."""
    for _, header, lines in ratio_rows(result["rows"]):
        yield header, lines
    extra = [growth_rows(result["rows"]), memory_rows(result["memory"])]
    if with_times:
        extra.append(time_rows(result["rows"]))
    for header, lines in extra:
        if lines:
            yield header, lines


def as_text(header, lines):
    cells = [[str(c) for c in line] for line in [header, *lines]]
    widths = [max(len(line[i]) for line in cells) for i in range(len(header))]
    return "\n".join("  ".join([line[0].ljust(widths[0]),
                                *(c.rjust(w) for c, w in zip(line[1:], widths[1:]))])
                     for line in cells)


def as_markdown(header, lines):
    rule = ["---", *["---:"] * (len(header) - 1)]
    return "\n".join("| " + " | ".join(str(c) for c in line) + " |"
                     for line in [header, rule, *lines])


def write_document(path, result):
    text = Path(path).read_text()
    begin, end = (text.index(marker) for marker in MARKERS)
    machine = "\n".join(f"- {key}: {value}" for key, value in result["context"].items())
    blocks = [machine, *(as_markdown(*table) for table in tables(result, with_times=False))]
    middle = "\n\n".join([MARKERS[0], *blocks, ""])
    Path(path).write_text(text[:begin] + middle + text[end:])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("files", nargs="+")
    parser.add_argument("--save", help="file for the medians")
    parser.add_argument("--document", help="Markdown file whose tables are replaced")
    options = parser.parse_args()
    result = merge(load(path) for path in options.files)
    print("\n\n".join(as_text(*table) for table in tables(result, with_times=True)))
    if options.save:
        save(options.save, result)
    if options.document:
        write_document(options.document, result)


if __name__ == "__main__":
    main()
