#!/usr/bin/python3
"""Measures the response of the resampler from its answers to single impulses."""
import sys
from math import gcd

import page

page.require("numpy")
import numpy as np

import sorvo_audio

RATES = [(44100, 16000), (48000, 16000), (24000, 16000), (22050, 16000), (16000, 8000), (48000, 8000),
         (48000, 44100), (8000, 16000), (16000, 22050), (16000, 44100), (16000, 48000), (44100, 48000)]
REACH = 33  # input samples on each side of an impulse within which all of its answer lies


def name(orig_sr, target_sr):
    return f"{orig_sr / 1000:g} → {target_sr / 1000:g} kHz"


def ratio(orig_sr, target_sr):
    divisor = gcd(orig_sr, target_sr)
    return target_sr // divisor, orig_sr // divisor


def impulse_response(orig_sr, target_sr):
    """Times in input samples, a multiple of 1 / up apart, and the filter's values there.

    Outputs lie down / up input samples apart; impulses at ``down`` positions one after the other give
    all that lies between.
    """
    up, down = ratio(orig_sr, target_sr)
    positions = 2 * REACH + np.arange(down)
    impulses = np.zeros((down, positions[-1] + 2 * REACH), np.float32)
    impulses[np.arange(down), positions] = 1
    outputs = sorvo_audio.resample(impulses, orig_sr=orig_sr, target_sr=target_sr)
    ticks = np.arange(outputs.shape[-1]) * down - positions[:, None] * up  # of 1 / up input samples
    response = np.zeros(2 * REACH * up)
    inside = np.abs(ticks) < REACH * up
    assert not outputs[~inside].any()
    response[ticks[inside] + REACH * up] = outputs[inside]
    return (np.arange(len(response)) - REACH * up) / up, response


def gains(orig_sr, target_sr):
    """Frequencies in Hz and gains in dB. Above the lower Nyquist frequency lies what becomes images."""
    up, _ = ratio(orig_sr, target_sr)
    _, response = impulse_response(orig_sr, target_sr)
    spectrum = np.fft.rfft(response, 64 * len(response)) / up
    frequencies = np.linspace(0, orig_sr * up / 2, len(spectrum))
    return frequencies, 20 * np.log10(np.maximum(np.abs(spectrum), 1e-12))


def crossing(frequencies, decibels, level, last=False):
    """The first frequency behind which the gain is below ``level``; or the last."""
    above = np.flatnonzero(decibels >= level) if last else np.arange(np.argmax(decibels < level))
    i = above[-1]
    part = (decibels[i] - level) / (decibels[i] - decibels[i + 1])
    return frequencies[i] + part * (frequencies[i + 1] - frequencies[i])


def response_row(orig_sr, target_sr):
    frequencies, decibels = gains(orig_sr, target_sr)
    nyquist = min(orig_sr, target_sr) / 2
    edges = [crossing(frequencies, decibels, level) for level in (-0.1, -3, -6)]
    stop = crossing(frequencies, decibels, -60, last=True)
    beyond = decibels[frequencies > stop]
    side_lobes = beyond[np.argmax(np.diff(beyond) > 0):]
    ripple = np.abs(decibels[frequencies <= nyquist / 2]).max()
    up, down = ratio(orig_sr, target_sr)
    return [name(orig_sr, target_sr), f"{up} / {down}", *(f"{edge:.0f}" for edge in edges),
            f"{100 * edges[0] / nyquist:.0f}", f"{stop:.0f}", f"{-side_lobes.max():.1f}",
            page.rounded_up(ripple)]


def last_output(y, rates):
    """Position behind the last output that is not 0."""
    return int(np.flatnonzero(sorvo_audio.resample(y, orig_sr=rates[0], target_sr=rates[1]))[-1]) + 1


def time_row(*rates):
    orig_sr, target_sr = rates
    up, down = ratio(*rates)
    times, response = impulse_response(*rates)
    delay = round(times @ response / response.sum(), 6) + 0.0  # of a linear-phase filter: at every frequency
    missing = tail = 0
    for n in range(200, 200 + down):  # where the last sample lies between two outputs depends on the length
        plain_n = sorvo_audio.filters.resample_count(n, *rates)
        missing = max(missing, plain_n - last_output(np.ones(n), rates))
        last = np.pad([1.0], (n - 1, REACH))
        tail = max(tail, last_output(last, rates) - plain_n)
        # What the page says of zeros behind the signal.
        assert last_output(np.pad(np.ones(n), (0, 2)), rates) >= plain_n
        assert last_output(np.pad(last, (0, REACH)), rates) == last_output(last, rates)
    return [name(*rates), f"{delay:.4f}", f"{delay * up / down:.4f}", f"{delay / orig_sr * 1e6:.2f}",
            f"{1000 * np.abs(times[response != 0]).max() / orig_sr:.2f}", str(missing), str(tail)]


def measure():
    return [
        "### Frequency response", "",
        *page.table(["rates", "up / down", "−0.1 dB at Hz", "−3 dB at Hz", "−6 dB at Hz",
                     "−0.1 dB at % of the lower Nyquist", "−60 dB from Hz", "side lobes, dB down",
                     "ripple, dB"], [response_row(*rates) for rates in RATES]),
        "### Delay and tail", "",
        *page.table(["rates", "delay, input samples", "delay, output samples", "delay, µs",
                     "reach to each side, ms", "outputs missing, at most", "tail in outputs, at most"],
                    [time_row(*rates) for rates in RATES])]


def draw(folder):
    import matplotlib
    matplotlib.use("Agg")
    import matplotlib.pyplot as plt
    matplotlib.rcParams.update({"svg.hashsalt": "resampler", "svg.fonttype": "none", "font.size": 9})
    figure, (whole, passband) = plt.subplots(1, 2, figsize=(9, 3.6))
    for rates in [(16000, 48000), (48000, 44100), (16000, 8000), (44100, 16000), (48000, 8000)]:
        frequencies, decibels = gains(*rates)
        relative = frequencies / (min(rates) / 2)
        for axes, until in ((whole, 3), (passband, 1.2)):
            shown_n = int(np.searchsorted(relative, until))
            shown = slice(0, shown_n, max(1, shown_n // 700))
            axes.plot(relative[shown], decibels[shown], linewidth=1, label=name(*rates))
    for axes in (whole, passband):
        axes.axvline(1, color="black", linewidth=0.6, linestyle=":")
        axes.set_xlabel("frequency / lower Nyquist frequency")
        axes.grid(alpha=0.3)
    whole.set(ylim=(-120, 5), xlim=(0, 3), ylabel="gain, dB", title="whole")
    passband.set(ylim=(-8, 0.5), xlim=(0.4, 1.1), title="end of the passband")
    passband.legend(loc="lower left")
    figure.tight_layout()
    figure.savefig(folder / "resampler.svg", metadata={"Date": None})


def agree(old, new):
    """Results have the same bits everywhere; only the last printed digit may turn over."""
    return abs(old - new) <= 0.002 * abs(old) + 1e-4


if __name__ == "__main__":
    sys.exit(page.serve("resampler", measure, agree, draw))
