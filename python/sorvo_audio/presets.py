"""The mel features that well-known models and toolkits take, as values.

>>> from sorvo_audio import presets
>>> presets.whisper.hop_length
160

``whisper`` and ``whisper_128`` (large-v3), ``librosa`` (defaults of 0.10), ``torchaudio`` (defaults of its
MelSpectrogram), ``tacotron2``, ``hifigan`` (its V1 to V3). For other settings:
``dataclasses.replace(presets.hifigan, fmax=None)``.
"""
from __future__ import annotations

from collections.abc import Callable
from dataclasses import dataclass
from typing import Any

import numpy as np

from ._arguments import choice, real
from ._types import Floats, MelNorm, PadMode, Reals
from .spectra import melspectrogram, stft


@dataclass(frozen=True)
class Preset:
    """All that determines a model's mel features."""

    sr: int
    n_fft: int
    hop_length: int
    n_mels: int
    fmax: float | None = None
    power: float = 2.0
    htk: bool = False
    norm: MelNorm = "slaney"
    center: bool = True
    pad_mode: PadMode = "reflect"
    pad: int = 0
    """Samples by which both ends are reflected before all else."""
    extra_frames: int = 1
    """There are samples // hop_length + extra_frames frames."""
    power_offset: float = 0.0
    """Added to the squared magnitudes; needs ``power`` 1."""
    compression: str | None = None
    """None; "log": log(max(mel, 1e-5)); "whisper": log10, the 8 decades below the maximum, (x + 4) / 4."""

    @property
    def keywords(self) -> dict[str, Any]:
        """Those of `melspectrogram` and `MelStream`; pad, extra_frames, power_offset, compression are not."""
        names = ("sr", "n_fft", "hop_length", "n_mels", "fmax", "power", "htk", "norm", "center", "pad_mode")
        return {name: getattr(self, name) for name in names}

    def features(self, y: Reals) -> Floats:
        """What the model takes.

        y [..., samples at sr] -> [..., n_mels, frames]
        """
        y = real("y", y)
        frame_n = y.shape[-1] // self.hop_length + self.extra_frames
        if self.pad:
            y = np.pad(y, [(0, 0)] * (y.ndim - 1) + [(self.pad, self.pad)], "reflect")
        mel = self._offset_mel(y) if self.power_offset else melspectrogram(y, **self.keywords)
        return choice("compression", self.compression, _COMPRESSIONS)(mel[..., :frame_n])

    def _offset_mel(self, y: Floats) -> Floats:
        if self.power != 1.0:
            raise ValueError(f"power is {self.power}; with a power_offset it must be 1")
        powers = stft(y, n_fft=self.n_fft, hop_length=self.hop_length, center=self.center,
                      pad_mode=self.pad_mode, power=2.0)
        magnitudes = np.sqrt(powers + np.float32(self.power_offset))
        return melspectrogram(S=magnitudes, sr=self.sr, n_mels=self.n_mels, fmax=self.fmax, htk=self.htk,
                              norm=self.norm)


def _linear(mel: Floats) -> Floats:
    return np.ascontiguousarray(mel)


def _log(mel: Floats) -> Floats:
    result: Floats = np.log(np.maximum(mel, np.float32(1e-5)))
    return result


def _whisper(mel: Floats) -> Floats:
    decades: Floats = np.log10(np.maximum(mel, np.float32(1e-10)))
    maximum = decades.max((-2, -1), keepdims=True, initial=-10.0)
    result: Floats = (np.maximum(decades, maximum - np.float32(8)) + np.float32(4)) / np.float32(4)
    return result


_COMPRESSIONS: dict[str | None, Callable[[Floats], Floats]] = {
    None: _linear, "log": _log, "whisper": _whisper
}

whisper = Preset(sr=16000, n_fft=400, hop_length=160, n_mels=80, extra_frames=0, compression="whisper")
whisper_128 = Preset(sr=16000, n_fft=400, hop_length=160, n_mels=128, extra_frames=0,
                     compression="whisper")
librosa = Preset(sr=22050, n_fft=2048, hop_length=512, n_mels=128, pad_mode="constant")
torchaudio = Preset(sr=16000, n_fft=400, hop_length=200, n_mels=128, htk=True, norm=None)
tacotron2 = Preset(sr=22050, n_fft=1024, hop_length=256, n_mels=80, fmax=8000.0, power=1.0,
                   compression="log")
hifigan = Preset(sr=22050, n_fft=1024, hop_length=256, n_mels=80, fmax=8000.0, power=1.0, center=False,
                 pad=384, extra_frames=0, power_offset=1e-9, compression="log")
