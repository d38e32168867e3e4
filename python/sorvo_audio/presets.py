"""The mel features that well-known models and toolkits take, as values.

>>> from sorvo_audio import presets
>>> presets.whisper.hop_length
160

``whisper`` and ``whisper_128`` (large-v3), ``librosa`` (defaults of 0.10), ``torchaudio`` (defaults of its
MelSpectrogram), ``tacotron2``, ``hifigan`` (its V1 to V3). For other settings:
``dataclasses.replace(presets.hifigan, fmax=None)``.
"""
from __future__ import annotations

import json
import math
import pathlib
from collections.abc import Callable
from dataclasses import dataclass
from typing import Any

import numpy as np

from . import _compression
from ._arguments import choice, count, number, real
from ._types import Center, Floats, MelNorm, PadMode, Reals, SpectrumNorm, Window
from .spectra import melspectrogram, stft


@dataclass(frozen=True)
class Preset:
    """All that determines a model's mel features."""

    sr: int
    n_fft: int
    hop_length: int
    n_mels: int
    fmin: float = 0.0
    fmax: float | None = None
    win_length: int | None = None
    window: Window = "hann"
    fft_norm: SpectrumNorm = None
    power: float = 2.0
    htk: bool = False
    norm: MelNorm = "slaney"
    center: Center = True
    pad_mode: PadMode = "reflect"
    pad: int = 0
    """Samples by which both ends are reflected before all else."""
    extra_frames: int = 1
    """There are at most samples // hop_length + extra_frames frames."""
    power_offset: float = 0.0
    """Added to the squared magnitudes; needs ``power`` 1."""
    compression: str | None = None
    """None; "log": log(max(mel, 1e-5)); "whisper": log10, the 8 decades below the maximum, (x + 4) / 4."""

    @property
    def keywords(self) -> dict[str, Any]:
        """Those of `melspectrogram` and `MelStream`; pad, extra_frames, power_offset, compression are not."""
        names = ("sr", "n_fft", "hop_length", "win_length", "window", "n_mels", "fmin", "fmax", "power", "htk",
                 "norm", "fft_norm", "center", "pad_mode")
        return {name: getattr(self, name) for name in names}

    def features(self, y: Reals, *, pad_to_seconds: float | None = None) -> Floats:
        """What the model takes; a signal that is too short for a frame raises ValueError.

        y [..., samples at sr] -> [..., n_mels, frames]

        pad_to_seconds  zeros behind the signal up to this length, such as the 30 of Whisper; it must not be longer
        """
        y = real("y", y)
        compress = choice("compression", self.compression, _COMPRESSIONS)
        if pad_to_seconds is not None:
            y = self._padded(y, number("pad_to_seconds", pad_to_seconds, above=0.0))
        sample_n, pad = y.shape[-1], count("pad", self.pad, 0)
        least = max(self.n_fft - 2 * pad, pad + 1, self.hop_length * (1 - self.extra_frames))
        if sample_n < least:
            raise ValueError(f"y has {sample_n} samples; these features need at least {least}: give a longer "
                             "signal, or append zeros by pad_to_seconds")
        if pad:
            y = np.pad(y, [(0, 0)] * (y.ndim - 1) + [(pad, pad)], "reflect")
        mel = self._offset_mel(y) if self.power_offset else melspectrogram(y, **self.keywords)
        return compress(np.ascontiguousarray(mel[..., :sample_n // self.hop_length + self.extra_frames]))

    def _padded(self, y: Floats, seconds: float) -> Floats:
        sample_n, wanted_n = y.shape[-1], math.floor(seconds * self.sr + 0.5)
        if sample_n > wanted_n:
            raise ValueError(f"y has {sample_n} samples; pad_to_seconds={seconds:g} leaves room for {wanted_n}: "
                             "split the signal")
        return np.pad(y, [(0, 0)] * (y.ndim - 1) + [(0, wanted_n - sample_n)])

    def _offset_mel(self, y: Floats) -> Floats:
        if self.power != 1.0:
            raise ValueError(f"power is {self.power}; with a power_offset it must be 1")
        powers = stft(y, n_fft=self.n_fft, hop_length=self.hop_length, win_length=self.win_length,
                      window=self.window, center=self.center, pad_mode=self.pad_mode, power=2.0,
                      norm=self.fft_norm)
        magnitudes = np.sqrt(powers + np.float32(self.power_offset))
        return melspectrogram(S=magnitudes, sr=self.sr, n_mels=self.n_mels, fmin=self.fmin, fmax=self.fmax,
                              htk=self.htk, norm=self.norm)


_COMPRESSIONS: dict[str | None, Callable[[Floats], Floats]] = {
    None: lambda mel: mel,
    "log": lambda mel: _compression.logarithms(mel, 1e-5),
    "whisper": _compression.whisper,
}


def _table() -> dict[str, Preset]:
    """The presets of the command line, which reads the same file."""
    rows = json.loads(pathlib.Path(__file__).with_name("presets.json").read_text(encoding="utf-8"))
    return {row.pop("name"): Preset(**{key: row[key] for key in row if key != "about"}) for row in rows}


_presets = _table()
whisper = _presets["whisper"]
whisper_128 = _presets["whisper_128"]
librosa = _presets["librosa"]
torchaudio = _presets["torchaudio"]
tacotron2 = _presets["tacotron2"]
hifigan = _presets["hifigan"]
