"""Audio feature extraction for neural-network models: libsorvo_audio for numpy arrays.

Signals are [..., samples], spectrograms [..., bins, frames]; leading dimensions are batch dimensions.
"""
from . import native, presets
from ._digest import digest
from ._warnings import SorvoAudioWarning
from .features import deltas, kaldi_fbank, mfcc
from .filters import filtfilt, lfilter, lfilter_zi, resample, sosfilt, sosfilt_zi, sosfiltfilt
from .measures import log1p, power_to_db, standardize, trim
from .spectra import (fft, frame_count, get_window, ifft, istft, magphase, mel_filterbank,
                      melspectrogram, stft)
from .streams import FilterStream, MelStream, ResampleStream, StftStream

__version__ = "0.1.0"

__all__ = [
    "fft", "ifft", "stft", "istft", "melspectrogram", "mel_filterbank", "magphase", "frame_count",
    "mfcc", "deltas", "kaldi_fbank",
    "get_window", "lfilter", "lfilter_zi", "filtfilt", "sosfilt", "sosfilt_zi", "sosfiltfilt", "resample",
    "power_to_db", "log1p", "standardize", "trim", "StftStream", "MelStream", "ResampleStream", "FilterStream",
    "presets", "native", "digest", "SorvoAudioWarning"
]
