#!/usr/bin/python3
"""Measures the errors of every subsystem against the same formulas in double precision."""
import math
import sys

import page

page.require("numpy", "scipy")
import numpy as np
import scipy.signal

import references
import resampler
import sorvo_audio as sa

RNG = np.random.default_rng(0)


def noise(n):
    return RNG.uniform(-1, 1, n).astype(np.float32)


def norm_error(actual, expected):
    """Root of the summed squares of the error, relative to that of the values."""
    return np.linalg.norm(np.ravel(actual - expected)) / np.linalg.norm(np.ravel(expected))


def largest_error(actual, expected):
    """Relative to the largest value."""
    return np.abs(actual - expected).max() / np.abs(expected).max()


def errors(actual, expected):
    if actual.shape != expected.shape:
        raise ValueError(f"shapes {actual.shape} and {expected.shape}")
    return [f"{norm_error(actual, expected):.1e}", f"{largest_error(actual, expected):.1e}"]


def decibels(actual, expected):
    return f"{-20 * np.log10(norm_error(actual, expected)):.1f}"


def transform(x, roots):
    """The transform by the library's factors, in double; the ``roots`` of unity are all that is inexact."""
    n = len(x)
    k = np.arange(n)
    if n & (n - 1) == 0:
        if n <= 4:
            return np.fft.fft(x)
        m = n // 4
        return sum(transform(x[s::4], roots[::4])[k % m] * roots[s * (k % m)] * (-1j) ** (s * (k // m) % 4)
                   for s in range(4))
    factor = next((d for d in (2, *range(3, math.isqrt(n) + 1, 2)) if n % d == 0), n)
    parts = x if factor == n else [transform(x[s::factor], roots[::factor])[k % (n // factor)]
                                   for s in range(factor)]
    return sum(part * roots[s * k % n] for s, part in enumerate(parts))


def transforms():
    rows = []
    for n in (256, 512, 1024, 4096, 65536, 400, 480, 441, 1200, 44100, 97, 1009, 10007):
        x = noise(n)
        exact = np.fft.fft(np.float64(x))
        spectrum = exact.astype(np.complex64)
        angle = (-2 * np.pi / n * np.arange(n)).astype(np.float32)
        rounded = (np.cos(angle) + 1j * np.sin(angle)).astype(np.complex128)
        rows.append([str(n), *errors(sa.fft(x), exact),
                     *errors(sa.ifft(spectrum), np.fft.ifft(np.complex128(spectrum))),
                     f"{norm_error(transform(np.float64(x), rounded), exact):.1e}"])
    return page.table(["length", "`fft`, norm", "`fft`, largest", "`ifft`, norm", "`ifft`, largest",
                       "from the twiddle factors alone, norm"], rows)


def frames():
    y = references.speech_like(22050)
    rows = [["`get_window(\"hann\", 400)`", *errors(sa.get_window("hann", 400), references.hann(400))],
            ["`get_window(\"hamming\", 400)`",
             *errors(sa.get_window("hamming", 400), 0.08 + 0.92 * references.hann(400))]]
    for n_fft, hop in ((400, 160), (512, 128), (1024, 256), (2048, 512)):
        exact = references.spectra(y, n_fft, hop)
        spectrum = sa.stft(y, n_fft=n_fft, hop_length=hop)
        call = f"y, n_fft={n_fft}, hop_length={hop}"
        rows += [[f"`stft({call})`", *errors(spectrum, exact)],
                 [f"`stft({call}, power=2)`",
                  *errors(sa.stft(y, n_fft=n_fft, hop_length=hop, power=2), np.abs(exact)**2)],
                 [f"`istft(stft({call}))`, the round trip",
                  *errors(*(z[hop:20000] for z in (sa.istft(spectrum, hop_length=hop), y)))]]
    magnitude, phase = sa.magphase(spectrum, phase="angle")
    exact = np.complex128(spectrum)
    rows += [["`magphase(S)`, magnitudes", *errors(magnitude, np.abs(exact))],
             ["`magphase(S, phase=\"angle\")`, angles", *errors(phase, np.angle(exact))]]
    return page.table(["call", "norm", "largest"], rows)


def mel():
    y = references.speech_like(22050)
    rows = []
    for sr, n_fft, hop, n_mels, options in ((16000, 400, 160, 80, {}), (22050, 1024, 256, 80, {}),
                                            (22050, 2048, 512, 128, {}),
                                            (16000, 400, 200, 128, {"htk": True, "norm": None})):
        bank = sa.mel_filterbank(sr=sr, n_fft=n_fft, n_mels=n_mels, **options)
        exact = references.mel_bank(sr, n_fft, n_mels, **options)
        powers = np.abs(references.spectra(y, n_fft, hop))**2
        features = sa.melspectrogram(y, sr=sr, n_fft=n_fft, hop_length=hop, n_mels=n_mels, **options)
        rows.append([f"{sr} Hz, {n_fft}, {n_mels} {'HTK' if options else 'Slaney'} bands",
                     *errors(bank, exact), *errors(features, exact @ powers),
                     f"{norm_error(features, np.float64(bank) @ powers):.1e}"])
    return page.table(["features", "bank, norm", "bank, largest", "mel spectrogram, norm",
                       "mel spectrogram, largest", "with the library's bank in both, norm"], rows)


def filters():
    y = references.speech_like(22050)
    rows = []
    for order, cutoff in ((2, 0.2), (4, 0.2), (8, 0.2), (2, 0.02), (4, 0.02)):
        b, a = scipy.signal.butter(order, cutoff)
        rounded = [np.float64(np.float32(c)) for c in (b, a)]
        state = scipy.signal.lfilter_zi(*rounded)
        rows.append([f"Butterworth, order {order}, {cutoff} of Nyquist",
                     *(f"{norm_error(*pair):.1e}" for pair in (
                         (sa.lfilter(b, a, y), scipy.signal.lfilter(*rounded, y)),
                         (sa.lfilter(b, a, y), scipy.signal.lfilter(b, a, y)),
                         (sa.lfilter_zi(b, a), state),
                         (sa.filtfilt(b, a, y), scipy.signal.filtfilt(*rounded, y))))])
    return page.table(["filter", "`lfilter`", "`lfilter` against coefficients not rounded", "`lfilter_zi`",
                       "`filtfilt`"], rows)


def exact_resample(x, orig_sr, target_sr):
    """The 65 taps of the definition, in double, for every output whose taps lie within ``x``."""
    up, down = resampler.ratio(orig_sr, target_sr)
    cutoff = min(1.0, up / down)
    phase = (up - 1) // 2 + np.arange(len(x) * up // down) * down
    offset = (phase % up - (up - 1) / 2) / up
    result = np.zeros(len(phase))
    for k in range(-32, 33):
        t = offset - k
        window = 0.42 + 0.5 * np.cos(2 * np.pi * t / 65) + 0.08 * np.cos(4 * np.pi * t / 65)
        result += np.float64(x)[np.clip(phase // up + k, 0, len(x) - 1)] * window * cutoff * np.sinc(cutoff * t)
    return result, (phase // up + offset) / orig_sr


def resampling():
    rows = []
    for rates in resampler.RATES:
        row = [resampler.name(*rates)]
        for frequency in (1000.0, 0.4 * min(rates)):
            n = rates[0] // 2
            tone = np.sin(2 * np.pi * frequency * np.arange(n) / rates[0]).astype(np.float32)
            actual = sa.resample(tone, orig_sr=rates[0], target_sr=rates[1])
            filtered, time = exact_resample(tone, *rates)
            inside = slice(400, min(len(actual), len(time)) - 400)
            if len(row) == 1:
                row.append(f"{norm_error(actual[inside], filtered[inside]):.1e}")
            row.append(decibels(actual[inside], np.sin(2 * np.pi * frequency * time)[inside]))
        rows.append(row)
    return page.table(["rates", "rounding, norm", "1 kHz tone, dB", "tone at 0.8 of the lower Nyquist, dB"], rows)


def values():
    rows = []
    powers = sa.melspectrogram(references.speech_like(22050), sr=16000, n_fft=400, n_mels=80)
    exact = np.float64(powers)
    reference = 10 * np.log10(np.maximum(exact, 1e-10)) - 10 * np.log10(exact.max())
    rows += [['`power_to_db(P, ref="max", top_db=None)`',
              *errors(sa.power_to_db(powers, ref="max", top_db=None), reference)],
             ["`log1p(P)`", *errors(sa.log1p(powers), np.log1p(exact))]]
    for n in (1000, 100000, 1000000):
        for mean in (0, 1):
            x = noise(n) + np.float32(mean)
            exact = (np.float64(x) - x.mean(dtype=float)) / x.std(dtype=float)
            rows.append([f"`standardize(x)`, {n} values from {mean - 1} to {mean + 1}",
                         *errors(sa.standardize(x), exact)])
    return page.table(["call", "norm", "largest"], rows)


def measure():
    parts = {"Transforms": transforms, "Windows, spectrograms and the inverse": frames, "Mel": mel,
             "Filters": filters, "Resampler": resampling, "Values": values}
    return [line for name, lines in parts.items() for line in (f"### {name}", "", *lines())]


def agree(old, new):
    """The library's bits are the same everywhere; those of the double-precision side are not quite."""
    return abs(old - new) <= 0.2 * abs(old)


if __name__ == "__main__":
    sys.exit(page.serve("accuracy", measure, agree))
