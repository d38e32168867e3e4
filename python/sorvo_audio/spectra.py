"""Transforms, spectrograms and mel spectrograms of numpy arrays.

Signals are [..., samples] and spectrograms [..., bins, frames]; every leading dimension is a batch
dimension. Results are float32 or complex64. Keywords are those of librosa 0.10, and besides them ``norm`` of
`stft`, called ``fft_norm`` where ``norm`` is that of the mel bank. Where a default is not librosa's, the first
line of a description says so.
"""
from __future__ import annotations

import ctypes
from typing import Any, Literal, overload

import numpy as np
import numpy.typing as npt

from . import native
from ._arguments import apply, choice, complex_, count, long_enough, number, real
from ._framing import WINDOWS, Framing, MelBands
from ._types import (Center, ComplexArray, Complexes, Floats, MelNorm, PadMode, Phase, Reals, SpectrumNorm,
                     Window)


def fft(x: Reals) -> Complexes:
    """Discrete Fourier transform of a real signal; all n bins, unscaled.

    x [..., n] real -> [..., n] complex
    """
    x = real("x", x)
    n = x.shape[-1]
    return apply(lambda dst, src: native.sorvoAudioFFT(dst, src, n), x, 1, (n,), np.complex64)


def ifft(x: ComplexArray) -> Complexes:
    """Inverse discrete Fourier transform, scaled by 1 / n.

    x [..., n] complex -> [..., n] complex
    """
    x = complex_("x", x)
    n = x.shape[-1]
    return apply(lambda dst, src: native.sorvoAudioIFFT(dst, src, n), x, 1, (n,), np.complex64)


def get_window(window: Window, n: int) -> Floats:
    """Periodic analysis window, "hann" or "hamming".

    -> [n]
    """
    n = count("n", n)
    result = np.empty(n, np.float32)
    native.check(native.sorvoAudioGetWindow(result, n, choice("window", window, WINDOWS)))
    return result


def frame_count(n_samples: int, *, n_fft: int = 2048, hop_length: int | None = None,
                center: Center = True, pad_mode: PadMode = "reflect") -> int:
    """Number of frames of `stft` and `melspectrogram`; by default the ends are reflected (librosa: zeros).

    0 for fewer than n_fft samples; else, in single precision, floor((n - n_fft) / hop + 1) without
    centring, floor(n / hop + 1) with "reflect", ceil(n / hop) + 1 with "constant". hop_length is
    n_fft // 4 unless given.
    """
    return Framing.of(n_fft, hop_length, None, "hann", center, pad_mode, None, None).frame_count(
        count("n_samples", n_samples))


@overload
def stft(y: Reals, *, n_fft: int = 2048, hop_length: int | None = None, win_length: int | None = None,
         window: Window = "hann", center: Center = True, pad_mode: PadMode = "reflect",
         power: None = None, norm: SpectrumNorm = None) -> Complexes: ...


@overload
def stft(y: Reals, *, n_fft: int = 2048, hop_length: int | None = None, win_length: int | None = None,
         window: Window = "hann", center: Center = True, pad_mode: PadMode = "reflect",
         power: float, norm: SpectrumNorm = None) -> Floats: ...


def stft(y: Reals, *, n_fft: int = 2048, hop_length: int | None = None, win_length: int | None = None,
         window: Window = "hann", center: Center = True, pad_mode: PadMode = "reflect",
         power: float | None = None, norm: SpectrumNorm = None) -> npt.NDArray[Any]:
    """Short-time Fourier transform; by default the ends are reflected (librosa: zeros).

    y [..., samples] -> [..., n_fft // 2 + 1, frames], complex64; with ``power``, float32

    hop_length  samples between frames; win_length // 4 unless given
    win_length  length of the window, centred in the frame; n_fft unless given
    window      "hann" or "hamming", periodic
    center      frame t lies around sample t * hop_length; False: it starts there
    pad_mode    beyond the ends of a centred signal: "reflect" or "constant" (zeros)
    power       exponent of the magnitude: 1 magnitudes, 2 powers; None: complex numbers
    norm        None, "window" (divide by the root of the window's energy), "length" (times 2 / n_fft)

    A signal shorter than n_fft is refused: it has no frames.
    """
    y = real("y", y)
    framing = Framing.of(n_fft, hop_length, win_length, window, center, pad_mode, power, norm)
    long_enough("y", y, "n_fft", framing.fft_n)
    sample_n = y.shape[-1]
    frame_n = framing.frame_count(sample_n)
    result = apply(
        lambda dst, src: framing.spectrogram(dst, src, sample_n, frame_n, framing.center),
        y, 1, (framing.freq_n, frame_n), np.complex64)
    return result if power is None else np.ascontiguousarray(result.real)


def istft(stft_matrix: ComplexArray, *, hop_length: int | None = None, win_length: int | None = None,
          window: Window = "hann", center: Center = True, norm: SpectrumNorm = None,
          length: int | None = None) -> Floats:
    """Signal of a complex spectrogram: overlap-add, divided by the overlap-added squared window.

    stft_matrix [..., bins, frames] complex -> [..., samples]; n_fft is 2 * bins - 2

    length  samples of the result; else (frames - 1) * hop_length, plus n_fft without centring. Samples
            behind the last frame are zero.
    norm    that of the `stft`; "length" is undone, "window" is not: scale the result yourself

    The other parameters are those of `stft`.
    """
    stft_matrix = complex_("stft_matrix", stft_matrix, 2)
    freq_n, frame_n = stft_matrix.shape[-2:]
    if freq_n < 2:
        raise ValueError(f"stft_matrix has {freq_n} bins; it must have at least 2")
    framing = Framing.of(2 * freq_n - 2, hop_length, win_length, window, center, "reflect", None, norm)
    if length is None:
        result = ctypes.c_int()
        native.check(native.sorvoAudioGetSampleLen(result, frame_n, freq_n, framing.hop_n, framing.center))
        sample_n = result.value
    else:
        sample_n = count("length", length)
    if sample_n == 0:
        raise ValueError("stft_matrix has 1 frame, and length is None; a centred frame alone stands for no "
                         f"samples: give length, {framing.fft_n // 2} for those behind its middle")
    return apply(
        lambda dst, src: native.sorvoAudioGetInverseSpectrogram(
            dst, src, frame_n, freq_n, framing.hop_n, framing.win_n, framing.win_type, sample_n,
            framing.center, framing.norm_type),
        stft_matrix, 2, (sample_n,))


def mel_filterbank(*, sr: int, n_fft: int, n_mels: int = 128, fmin: float = 0.0,
                   fmax: float | None = None, htk: bool = False, norm: MelNorm = "slaney") -> Floats:
    """Mel filter bank.

    -> [n_mels, n_fft // 2 + 1]

    n_mels  at most n_fft // 2
    fmax    highest frequency; sr / 2 unless given
    htk     mel scale 2595 log10(1 + f / 700); False: Slaney's, linear below 1 kHz
    norm    "slaney": triangles of equal area; None: of height 1
    """
    fft_n = count("n_fft", n_fft)
    bands = MelBands.of(sr, fft_n, n_mels, fmin, fmax, htk, norm)
    return bands.bank(fft_n // 2 + 1)


def melspectrogram(y: Reals | None = None, *, sr: int, S: Reals | None = None, n_fft: int = 2048,
                   hop_length: int | None = None, win_length: int | None = None, window: Window = "hann",
                   center: Center = True, pad_mode: PadMode = "reflect", power: float = 2.0,
                   fft_norm: SpectrumNorm = None, n_mels: int = 128, fmin: float = 0.0,
                   fmax: float | None = None, htk: bool = False, norm: MelNorm = "slaney") -> Floats:
    """Mel spectrogram, linear; by default the ends of y are reflected (librosa: zeros).

    y [..., samples] or S [..., bins, frames] -> [..., n_mels, frames]; for logarithms `power_to_db`, `log1p`

    S         a spectrogram in place of y, summed up in bands as it is; of the other parameters, only those of
              the bank matter, and n_fft is 2 * (bins - 1)
    power     exponent of the magnitudes before they are summed up in bands
    fft_norm  normalisation of the spectrum, ``norm`` of `stft`
    norm      that of `mel_filterbank`

    The other parameters are those of `stft` and of `mel_filterbank`. Warns where bands hold no bin.
    """
    if (y is None) == (S is None):
        raise ValueError("melspectrogram takes either y, a signal, or S, a spectrogram")
    if S is not None:
        S = real("S", S, 2)
        return _project(S, MelBands.of(sr, 2 * S.shape[-2] - 2, n_mels, fmin, fmax, htk, norm))
    y = real("y", y)
    framing = Framing.of(n_fft, hop_length, win_length, window, center, pad_mode,
                         number("power", power, above=0.0), fft_norm, "fft_norm")
    bands = MelBands.of(sr, framing.fft_n, n_mels, fmin, fmax, htk, norm)
    long_enough("y", y, "n_fft", framing.fft_n)
    sample_n = y.shape[-1]
    frame_n = framing.frame_count(sample_n)
    return apply(
        lambda dst, src: bands.spectrogram(dst, src, sample_n, framing, frame_n, framing.center),
        y, 1, (bands.mel_n, frame_n))


def _project(spectrogram: Floats, bands: MelBands) -> Floats:
    freq_n, frame_n = spectrogram.shape[-2:]
    bank = bands.bank(freq_n)
    return apply(
        lambda dst, src: native.sorvoAudioConvertToMel(dst, src, bank, freq_n, frame_n, bands.mel_n),
        spectrogram, 2, (bands.mel_n, frame_n))


@overload
def magphase(D: ComplexArray, *, power: float = 1.0,
             phase: Literal["complex"] = "complex") -> tuple[Floats, Complexes]: ...


@overload
def magphase(D: ComplexArray, *, power: float = 1.0, phase: Literal["angle"]) -> tuple[Floats, Floats]: ...


def magphase(D: ComplexArray, *, power: float = 1.0,
             phase: Phase = "complex") -> tuple[Floats, npt.NDArray[Any]]:
    """Magnitudes, to a power, and phases.

    D [...] complex -> magnitudes [...], phases [...]

    phase  "complex": unit numbers e^(i angle), complex64; "angle": radians, float32
    """
    D = complex_("D", D)
    power = number("power", power, minimum=0.0)
    form, dtype = choice("phase", phase, {"complex": (native.PHASE_COMPLEX, np.complex64),
                                          "angle": (native.PHASE_ANGLE, np.float32)})
    n = D.shape[-1]
    phases = np.zeros(D.shape, dtype)
    rows = iter(phases.reshape(-1, n))
    magnitudes = apply(
        lambda dst, src: native.sorvoAudioMagPhase(dst, next(rows).view(np.float32), src, 1, n, form, power),
        D, 1, (n,))
    return magnitudes, phases
