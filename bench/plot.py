#!/usr/bin/python3
"""Draws the ratios of a result file: plot.py RESULT.json OUT.svg (or .png).

One bar a row, at the highest processor level; marks show the lower levels. To the right of 1 the
library is faster than the fastest variant of the opponent.
"""
import sys
from pathlib import Path

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt

import report

GROUPS = ("fft", "spectrogram", "mel", "inverse", "resample", "torchaudio", "scipy")
COLORS = {"fftw": "#4878a8", "soxr": "#5f9e6e", "torchaudio": "#b55d60", "scipy": "#857aab"}
LEVEL_MARKS = {"avx2": "|", "sse2": "."}


def main():
    source, target = sys.argv[1:]
    result = report.load(source)
    bars = []
    for row, times in result["rows"].items():
        if row.split("/")[0] in GROUPS:
            opponent = report.opponent_of(row)
            bars.append((row, opponent, report.fastest(times, opponent)[0], times))

    matplotlib.rcParams.update({"svg.hashsalt": "ratios", "svg.fonttype": "none", "font.size": 8})
    figure, axes = plt.subplots(figsize=(8, 0.17 * len(bars) + 1.2))
    labels = set()
    for y, (row, opponent, best, times) in enumerate(bars):
        label = opponent if opponent not in labels else None
        labels.add(opponent)
        axes.barh(y, best / report.ours(times) - 1, left=1, color=COLORS[opponent], label=label)
        for level, mark in LEVEL_MARKS.items():
            time = report.ours(times, level)
            if time:
                name = f"at {level}" if f"at {level}" not in labels else None
                labels.add(f"at {level}")
                axes.plot(best / time, y, mark, color="black", markersize=5, label=name)
    axes.axvline(1, color="black", linewidth=0.8)
    axes.set_xscale("log")
    ticks = [0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 20]
    axes.set_xticks(ticks, [str(t) for t in ticks])
    axes.set_yticks(range(len(bars)), [row for row, *_ in bars])
    axes.set_ylim(len(bars) - 0.4, -0.6)
    axes.grid(axis="x", alpha=0.3)
    axes.set_xlabel("time of the fastest other / time of this library")
    context = result["context"]
    axes.set_title(f"{context['processor']}, {context['level']}, {context['compiler']}")
    axes.legend(loc="lower right")
    figure.tight_layout()
    metadata = {"Date": None} if Path(target).suffix == ".svg" else None
    figure.savefig(target, metadata=metadata)


if __name__ == "__main__":
    main()
