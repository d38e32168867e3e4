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

LEVELS = ("avx512", "avx2", "baseline")
MARKERS = ("<!-- measured: begin -->", "<!-- measured: end -->")

# Row pattern, family to be compared with, ratio aimed at. The first match decides.
GOALS = [
    (r"fft/(256|512|1024|2048|4096)", "fftw", 1.1),
    (r"fft/(400|480|1200)", "fftw", 0.7),
    (r"fft/441", "fftw", 1.5),
    (r"fft/97", "fftw", 1.15),
    (r"fft/.*", "fftw", None),
    (r"spectrogram/512-.*", "fftw", 1.3),
    (r"spectrogram/.*", "fftw", 1.0),
    (r"mel/400-.*", "fftw", 1.5),
    (r"mel/1024-.*", "fftw", 1.1),
    (r"mel/2048-.*", "fftw", 1.25),
    (r"log-mel/400-.*", "fftw", 1.0),
    (r"log-mel/1024-.*", "fftw", 1.0),
    (r"log-mel/2048-.*", "fftw", 1.15),
    (r"inverse/400-.*", "fftw", 1.0),
    (r"inverse/1024-.*", "fftw", 1.1),
    (r"resample/44\.1-16", "soxr", 3.3),
    (r"resample/(48-16|44\.1-48)", "soxr", 2.5),
    (r"resample/.*", "soxr", 1.4),
    (r"functions/(decibels|log1p)", "libmvec", 0.7),
    (r"functions/angle", "libmvec", 0.6),
    (r"functions/unit-numbers", "libmvec", 0.3),
    (r"(filter|filtfilt|elementwise)/.*", "plain", None),
    (r"frame/.*", "plain", 1.0),
    (r"torchaudio/.*", "torchaudio", 10.0),
    (r"torch/.*", "torch", 1.2),
    (r"scipy/lfilter-order2", "scipy", 8.0),
    (r"scipy/lfilter-order8", "scipy", 1.3),
    (r"scipy/lfilter-fir32", "scipy", 5.0),
    (r"scipy/filtfilt-order2", "scipy", 6.0),
    (r"scipy/filtfilt-order8", "scipy", 2.3),
    (r"scipy/.*", "scipy", None),
    (r"numpy/.*", "numpy", None),
]
GROWTH_GOAL = 1.3
MEMORY_GOAL_KIB = 2048


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


def goal_of(row):
    for pattern, opponent, goal in GOALS:
        if re.fullmatch(pattern, row):
            return opponent, goal
    return "plain", None


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
        opponent = goal_of(names[0])[0]
        present = {v for row in names for v in rows[row]}
        others = sorted({family(v) for v in present} - {"ours", opponent})
        levels = [level for level in LEVELS[1:] if f"ours:{level}" in present]
        header = [group, opponent, "goal", *(f"{opponent} at {level}" for level in levels),
                  *others, "fastest"]
        lines = []
        for row in names:
            times = rows[row]
            best, variant = fastest(times, opponent)
            goal = goal_of(row)[1]
            lines.append([
                row.split("/")[1], ratio(best, ours(times)), goal or "",
                *(ratio(fastest(times, opponent, level)[0], ours(times, level))
                  for level in levels),
                *(ratio(fastest(times, name)[0], ours(times)) for name in others),
                (variant or "").partition(":")[2]])
        if all(not line[-1] for line in lines):
            header, lines = header[:-1], [line[:-1] for line in lines]
        if all(not line[2] for line in lines):
            header, lines = header[:2] + header[3:], [line[:2] + line[3:] for line in lines]
        yield group, header, lines


def growth_rows(rows):
    lines = []
    for row, times in rows.items():
        if row.startswith("growth/"):
            cost = {v: t["ns"] / 1e3 / int(v.rstrip("s")) for v, t in times.items()}
            cost = dict(sorted(cost.items(), key=lambda item: int(item[0].rstrip("s"))))
            lines.append([row.split("/")[1], *(f"{c:.1f}" for c in cost.values()),
                          f"{max(cost.values()) / min(cost.values()):.2f}", GROWTH_GOAL])
    header = ["µs per second of sound", "1 s", "30 s", "600 s", "largest / smallest", "at most"]
    return header, lines


def memory_rows(memory):
    return (["working memory, one hour of sound", "KiB", "at most"],
            [[entry["name"], entry["peak_kib"], MEMORY_GOAL_KIB] for entry in memory])


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
