"""Features composed of functions of the library, for numpy arrays."""
from __future__ import annotations

import math
from typing import Any, Literal

import numpy as np
import numpy.typing as npt

from . import _compression
from ._arguments import apply, choice, count, number, real
from ._types import Center, Floats, MelNorm, PadMode, Reals, SpectrumNorm, Window
from .filters import lfilter
from .native import sorvoAudioConvertToMel
from .spectra import fft, melspectrogram

DeltaMode = Literal["interp", "nearest"]


def mfcc(y: Reals | None = None, *, sr: int | None = None, S: Reals | None = None, n_mfcc: int = 20,
         lifter: float = 0.0, n_fft: int = 2048, hop_length: int | None = None, win_length: int | None = None,
         window: Window = "hann", center: Center = True, pad_mode: PadMode = "reflect", power: float = 2.0,
         fft_norm: SpectrumNorm = None, n_mels: int = 128, fmin: float = 0.0, fmax: float | None = None,
         htk: bool = False, norm: MelNorm = "slaney") -> Floats:
    """Mel-frequency cepstral coefficients; by default the ends of y are reflected (librosa: zeros).

    y [..., samples] or S [..., n_mels, frames] -> [..., n_mfcc, frames]: the orthonormal cosine transform (type 2)
    of the mel bands in decibels, of which none lies lower than 80 below the largest of its spectrogram

    S       mel bands in decibels in place of y; of the other parameters, only n_mfcc and lifter matter
    n_mfcc  at most n_mels
    lifter  coefficient k is multiplied by 1 + lifter / 2 * sin(pi (k + 1) / lifter); 0: by 1

    The other parameters are those of `melspectrogram`.
    """
    if (y is None) == (S is None):
        raise ValueError("mfcc takes either y, a signal, or S, mel bands in decibels")
    if y is not None:
        if sr is None:
            raise ValueError("sr is None; with y it must be the sample rate")
        levels = _compression.levels(melspectrogram(
            y, sr=sr, n_fft=n_fft, hop_length=hop_length, win_length=win_length, window=window, center=center,
            pad_mode=pad_mode, power=power, fft_norm=fft_norm, n_mels=n_mels, fmin=fmin, fmax=fmax, htk=htk,
            norm=norm))
    else:
        levels = real("S", S, 2)
    band_n, frame_n = levels.shape[-2:]
    coefficient_n = count("n_mfcc", n_mfcc)
    if coefficient_n > band_n:
        raise ValueError(f"n_mfcc is {n_mfcc}; it must be at most n_mels = {band_n}")
    lifter = number("lifter", lifter, minimum=0.0)
    # The library projects on fewer rows than it is given, so a band of zeros, with no weight, is added.
    basis = np.pad(_cosines(coefficient_n, band_n), [(0, 0), (0, 1)])
    levels = np.pad(levels, [(0, 0)] * (levels.ndim - 2) + [(0, 1), (0, 0)])
    result = apply(
        lambda dst, src: sorvoAudioConvertToMel(dst, src, basis, band_n + 1, frame_n, coefficient_n),
        levels, 2, (coefficient_n, frame_n))
    if lifter > 0:
        position = np.arange(1, coefficient_n + 1)
        result *= (1 + lifter / 2 * np.sin(np.pi * position / lifter)).astype(np.float32)[:, None]
    return result


def _cosines(coefficient_n: int, band_n: int) -> Floats:
    """The orthonormal cosine transform, [coefficient_n, band_n], with the bits of the library's transform.

    Bin k of a single 1 at sample 2 i + 1 of 4 n is the cosine of 2 pi k (2 i + 1) / (4 n).
    """
    impulses = np.zeros((band_n, 4 * band_n), np.float32)
    impulses[np.arange(band_n), 2 * np.arange(band_n) + 1] = 1
    scale = np.full((coefficient_n, 1), math.sqrt(2 / band_n), np.float32)
    scale[0] = math.sqrt(1 / band_n)
    return np.ascontiguousarray(fft(impulses).real[:, :coefficient_n].T * scale)


def deltas(x: Reals, *, width: int = 9, order: int = 1, mode: DeltaMode = "interp") -> Floats:
    """Slopes along the last axis, or curvatures: derivatives of a polynomial fitted to each ``width`` frames.

    x [..., frames] -> [..., frames]

    width  odd, at least 3
    order  1: slope of a line; 2: second derivative of a parabola. Kaldi and torchaudio instead take the slopes
           of slopes, with width 5 and "nearest".
    mode   at both ends: "interp" takes the polynomial of the outermost ``width`` frames, "nearest" repeats the
           outermost frame
    """
    x = real("x", x)
    half = count("width", width, 3) // 2
    if width % 2 == 0:
        raise ValueError(f"width is {width}; it must be odd")
    at = np.arange(half, -half - 1, -1.0)
    taps = choice("order", order, {
        1: 3 * at / (half * (half + 1) * (2 * half + 1)),
        2: 30 * (3 * at**2 - half * (half + 1)) / (half * (half + 1) * (4 * half**2 - 1) * (2 * half + 3))})
    around = [(0, 0)] * (x.ndim - 1) + [(half, half)]
    if choice("mode", mode, {"interp": False, "nearest": True}):
        x = np.pad(x, around, "edge")
    elif x.shape[-1] < width:
        raise ValueError(f'x has {x.shape[-1]} frames; it must have at least width = {width}, or mode "nearest"')
    result = lfilter(taps, [1.0], x)[..., 2 * half:]
    return np.ascontiguousarray(result) if mode == "nearest" else np.pad(result, around, "edge")


def kaldi_fbank(y: Reals, *, sr: int = 16000, n_mels: int = 80, frame_length: float = 25.0,
                frame_shift: float = 10.0, preemphasis: float = 0.97, fmin: float = 20.0, fmax: float = 0.0,
                snip_edges: bool = True) -> Floats:
    """Kaldi's logarithms of mel filter-bank energies, without dither (Kaldi: 23 bands, [frames, bands]).

    y [..., samples] -> [..., n_mels, frames]

    y             Kaldi's samples are integers: multiply by 32768 where full scale is 1
    frame_length  in milliseconds, as frame_shift
    fmax          up to 0: as much below sr / 2
    snip_edges    True: frames lie within the signal; False: they are centred, and the ends are mirrored

    Frames lose their mean, are pre-emphasised, weighted by Kaldi's window ("povey") and transformed with zeros up
    to a power of two; energies are not less than 1.2e-7.
    """
    y = real("y", y)
    sr, band_n = count("sr", sr), count("n_mels", n_mels)
    window_n = int(sr * number("frame_length", frame_length, above=0.0) / 1000)
    shift_n = int(sr * number("frame_shift", frame_shift, above=0.0) / 1000)
    emphasis = number("preemphasis", preemphasis, minimum=0.0)
    if window_n < 2 or shift_n < 1:
        raise ValueError(f"frame_length is {frame_length:g} and frame_shift {frame_shift:g}; they must be at least "
                         f"{2000 / sr:g} and {1000 / sr:g}")
    sample_n = y.shape[-1]
    frame_n = (sample_n - window_n) // shift_n + 1 if snip_edges else (sample_n + shift_n // 2) // shift_n
    if frame_n < 1:
        raise ValueError(f"y has {sample_n} samples; it must have at least {window_n if snip_edges else shift_n}")
    fft_n = 1 << (window_n - 1).bit_length()
    bank = _kaldi_bank(sr, fft_n, band_n, number("fmin", fmin, minimum=0.0), number("fmax", fmax))
    window = (0.5 - 0.5 * np.cos(2 * np.pi * np.arange(window_n) / (window_n - 1))) ** 0.85

    def energies(dst: Any, src: Any) -> int:
        signal = src.astype(float)
        if not snip_edges:
            before = window_n // 2 - shift_n // 2
            after = max(0, (frame_n - 1) * shift_n + window_n - before - sample_n)
            signal = np.pad(signal, (max(before, 0), after), "symmetric")[max(-before, 0):]
        frames = np.lib.stride_tricks.sliding_window_view(signal, window_n)[::shift_n]
        for begin in range(0, frame_n, 1024):
            part = frames[begin:min(begin + 1024, frame_n)]
            part = part - part.mean(-1, keepdims=True)
            part = (part - emphasis * np.concatenate([part[:, :1], part[:, :-1]], -1)) * window
            # In double: beside a loud hiss, single precision has too few digits for weak bands.
            spectra = np.fft.rfft(part, fft_n)
            powers = np.ascontiguousarray((spectra.real**2 + spectra.imag**2).T, np.float32)
            bands = np.empty((band_n, len(part)), np.float32)
            status = sorvoAudioConvertToMel(bands, powers, bank, len(powers), len(part), band_n)
            dst.reshape(band_n, frame_n)[:, begin:begin + len(part)] = bands
            if status:
                return status
        return 0

    return _compression.logarithms(apply(energies, y, 1, (band_n, frame_n)), float(np.finfo(np.float32).eps))


def _kaldi_bank(sr: int, fft_n: int, band_n: int, fmin: float, fmax: float) -> Floats:
    """Triangles [band_n, fft_n // 2 + 1] that are straight, and equally wide, over mel and not over Hz."""
    highest = fmax + sr / 2 if fmax <= 0 else fmax
    if not fmin < highest <= sr / 2:
        raise ValueError(f"fmin is {fmin:g} and fmax {fmax:g}, which is {highest:g} Hz; fmin must be less, and "
                         f"that at most sr / 2 = {sr / 2:g}")
    if band_n > fft_n // 2:
        raise ValueError(f"n_mels is {band_n}; it must be at most half of the transform's {fft_n} samples")
    mel = 1127 * np.log1p(np.arange(fft_n // 2 + 1) * (sr / fft_n) / 700)
    corners = np.linspace(1127 * math.log1p(fmin / 700), 1127 * math.log1p(highest / 700), band_n + 2)[:, None]
    width = corners[1] - corners[0]
    weights = np.maximum(0, np.minimum((mel - corners[:-2]) / width, (corners[2:] - mel) / width))
    weights[:, -1] = 0
    return np.ascontiguousarray(weights, np.float32)
