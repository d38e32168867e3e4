"""The options that spectrograms of every kind share."""
from __future__ import annotations

import ctypes
from dataclasses import dataclass
from functools import lru_cache
from typing import Any

import numpy as np

from . import native
from ._arguments import choice, count, number
from ._types import Center, Floats, MelNorm, PadMode, SpectrumNorm, Window
from ._warnings import warn

WINDOWS = {"hann": native.WINDOW_HANN, "hamming": native.WINDOW_HAMMING}
NORMS = {None: native.NORM_NONE, "window": native.NORM_WINDOW, "length": native.NORM_LENGTH}
CENTERS = {"reflect": native.CENTER_REFLECT, "constant": native.CENTER_ZEROS}


@dataclass(frozen=True)
class Framing:
    """Checked options in the library's own terms."""

    fft_n: int
    hop_n: int
    win_n: int
    win_type: int
    center: int
    power: float
    norm_type: int

    @classmethod
    def of(cls, n_fft: int, hop_length: int | None, win_length: int | None, window: Window, center: Center,
           pad_mode: PadMode, power: float | None, norm: SpectrumNorm, norm_name: str = "norm") -> Framing:
        fft_n = count("n_fft", n_fft)
        mode = choice("pad_mode", pad_mode, CENTERS)
        win_n = fft_n if win_length is None else count("win_length", win_length)
        return cls(
            fft_n=fft_n,
            hop_n=max(1, win_n // 4) if hop_length is None else count("hop_length", hop_length),
            win_n=win_n,
            win_type=choice("window", window, WINDOWS),
            center=choice("center", center, {True: mode, False: native.CENTER_NONE}),
            power=0.0 if power is None else number("power", power, above=0.0),
            norm_type=choice(norm_name, norm, NORMS))

    @property
    def freq_n(self) -> int:
        return self.fft_n // 2 + 1

    def frame_count(self, sample_n: int) -> int:
        result = ctypes.c_int()
        native.check(native.sorvoAudioGetFrameLen(result, sample_n, self.fft_n, self.hop_n, self.center))
        if result.value < 0:
            raise ValueError(f"hop_length is {self.hop_n}; {sample_n} samples then have more than "
                             f"{native.INT_MAX} frames")
        return result.value

    def spectrogram(self, dst: Any, src: Any, sample_n: int, frame_n: int, center: int) -> int:
        return native.sorvoAudioGetSpectrogram(
            dst, src, sample_n, self.fft_n, self.hop_n, self.win_n, self.win_type, frame_n, center,
            self.power, self.norm_type)


@dataclass(frozen=True)
class MelBands:
    """Checked options of a mel filter bank in the library's own terms."""

    sample_rate: int
    f_min: float
    f_max: float
    mel_n: int
    mel_norm: int
    mel_formula: int

    @classmethod
    def of(cls, sr: int, fft_n: int, n_mels: int, fmin: float, fmax: float | None, htk: bool,
           norm: MelNorm) -> MelBands:
        sample_rate = count("sr", sr)
        f_min = number("fmin", fmin, minimum=0.0)
        mel_n = count("n_mels", n_mels)
        if mel_n > fft_n // 2:
            raise ValueError(f"n_mels is {mel_n}; it must be at most n_fft // 2 = {fft_n // 2}")
        f_max = sample_rate / 2 if fmax is None else number("fmax", fmax)
        if not f_max > f_min:
            raise ValueError(f"fmax is {f_max:g}; it must be greater than fmin = {f_min:g}")
        bands = cls(
            sample_rate=sample_rate,
            f_min=f_min,
            f_max=f_max,
            mel_n=mel_n,
            mel_norm=choice("norm", norm,
                            {None: native.MEL_NORM_NONE, "slaney": native.MEL_NORM_AREA}),
            mel_formula=native.MEL_HTK if htk else native.MEL_SLANEY)
        empty_n = bands._empty_count(fft_n // 2 + 1)
        if empty_n:
            warn(f"{empty_n} of {mel_n} mel bands hold no frequency bin and are always 0: take a larger n_fft, "
                 "a smaller n_mels, or an fmax not above sr / 2")
        return bands

    def bank(self, freq_n: int) -> Floats:
        result = np.empty((self.mel_n, freq_n), np.float32)
        native.check(native.sorvoAudioGetFBMatrix(
            result, freq_n, self.f_min, self.f_max, self.mel_n, self.sample_rate, self.mel_norm,
            self.mel_formula))
        return result

    @lru_cache(maxsize=64)
    def _empty_count(self, freq_n: int) -> int:
        return int(np.count_nonzero(~self.bank(freq_n).any(axis=1)))

    def spectrogram(self, dst: Any, src: Any, sample_n: int, framing: Framing, frame_n: int,
                    center: int) -> int:
        return native.sorvoAudioGetMelSpectrogram(
            dst, src, sample_n, self.sample_rate, framing.fft_n, framing.hop_n, framing.win_n,
            framing.win_type, frame_n, center, framing.power, framing.norm_type, self.f_min, self.f_max,
            self.mel_n, self.mel_norm, self.mel_formula)
