"""Calls for a type checker; it has to refuse the lines that end in "error", and no other."""
from __future__ import annotations

import numpy as np
import numpy.typing as npt

import sorvo_audio as sa

Floats = npt.NDArray[np.float32]
Complexes = npt.NDArray[np.complex64]


def right(y: npt.NDArray[np.float64], center: bool) -> None:
    spectrum: Complexes = sa.stft(y, center=center, window="hamming")
    powers: Floats = sa.stft(y[::2], power=2)
    mel: Floats = sa.melspectrogram(S=powers, sr=16000, norm=None)
    decibels: Floats = sa.power_to_db(mel, ref=np.median)
    phases: Complexes = sa.magphase(spectrum)[1]
    angles: Floats = sa.magphase(spectrum, phase="angle")[1]
    filtered: Floats = sa.lfilter([1, 2], np.ones(3), [0.5, 1.0])
    state: Floats = sa.lfilter([1], [1], y, zi=[])[1]
    block: Floats = sa.MelStream(sr=16000).push(y)
    sa.log1p(0.5)


def wrong(y: npt.NDArray[np.float64], pcm: npt.NDArray[np.int16]) -> None:
    sa.stft(pcm)  # error
    sa.stft(y, center="reflect")  # error
    sa.stft(y, window="kaiser")  # error
    sa.stft(y, pad_mode="edge")  # error
    sa.istft(y)  # error
    sa.melspectrogram(y, sr=16000, norm="slany")  # error
    sa.magphase(y)  # error
    sa.power_to_db(y, ref="mean")  # error
    sa.filtfilt([1], [1], y, padtype="zeros")  # error
    spectrum: Floats = sa.stft(y)  # error
