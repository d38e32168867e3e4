#!/usr/bin/python3
"""Measures how far the calls of other toolkits are from those of this package.

Both sides of a row are evaluated as they are printed. Where a toolkit is not in Debian, its formula, written
out in double precision, takes its place. Rows whose toolkit is not installed have no figure, and are left out
of a check.
"""
import sys
import warnings
import wave

import page

page.require("numpy", "scipy")
import numpy as np
import scipy.signal

try:
    import torch
    import torchaudio
except ImportError:
    torch = None

import references
import sorvo_audio

TABLES = {
    "Transforms and windows": [
        ("numpy.fft.fft(y)", "fft(y)"),
        ("numpy.fft.ifft(Y)", "ifft(Y)"),
        ("torch.fft.fft(y)", "fft(y)"),
        ('scipy.signal.get_window("hann", 400)', 'get_window("hann", 400)'),
        ("torch.hann_window(400)", 'get_window("hann", 400)'),
        ("torch.hamming_window(400)", 'get_window("hamming", 400)'),
        ("torch.hann_window(400, periodic=False)[:399]", 'get_window("hann", 399)'),
    ],
    "Spectrograms": [
        ("torch.stft(y, 400, 160, window=torch.hann_window(400), return_complex=True)",
         "stft(y, n_fft=400, hop_length=160)"),
        ("torch.stft(y, 512, 160, 400, torch.hann_window(400), return_complex=True)",
         "stft(y, n_fft=512, hop_length=160, win_length=400)"),
        ("torch.stft(y, 400, 160, window=torch.hann_window(400), center=False, return_complex=True)",
         "stft(y, n_fft=400, hop_length=160, center=False)"),
        ('torch.stft(y, 400, 160, window=torch.hann_window(400), pad_mode="constant", return_complex=True)',
         'stft(y, n_fft=400, hop_length=160, pad_mode="constant")[..., :1 + n // 160]'),
        ("torchaudio.transforms.Spectrogram(400, hop_length=160)(y)",
         "stft(y, n_fft=400, hop_length=160, power=2)"),
        ("torchaudio.transforms.Spectrogram(400, hop_length=160, power=1, normalized=True)(y)",
         'stft(y, n_fft=400, hop_length=160, power=1, norm="window")'),
        ("scipy.signal.stft(y, nperseg=400, noverlap=240)[2]",
         'stft(y, n_fft=400, hop_length=160, pad_mode="constant", norm="length")'),
        ('librosa.stft(y, n_fft=400, hop_length=160, pad_mode="reflect")',
         "stft(y, n_fft=400, hop_length=160)", "spectra(y, 400, 160)"),
        ("librosa.stft(y, n_fft=400, hop_length=160)",
         'stft(y, n_fft=400, hop_length=160, pad_mode="constant")[..., :1 + n // 160]',
         'spectra(y, 400, 160, "constant")'),
        ("torch.istft(S, 400, 160, window=torch.hann_window(400))", "istft(S, hop_length=160)"),
        ("scipy.signal.istft(S, nperseg=400, noverlap=240)[1]",
         'istft(S, hop_length=160, norm="length")'),
        ("torch.abs(S)", "magphase(S)[0]"),
        ("torch.angle(S)", 'magphase(S, phase="angle")[1]'),
    ],
    "Mel": [
        ('torchaudio.functional.melscale_fbanks(201, 0, 8000, 80, 16000, "slaney", "slaney").T',
         "mel_filterbank(sr=16000, n_fft=400, n_mels=80)"),
        ('torchaudio.functional.melscale_fbanks(201, 0, 8000, 80, 16000, None, "htk").T',
         "mel_filterbank(sr=16000, n_fft=400, n_mels=80, htk=True, norm=None)"),
        ("librosa.filters.mel(sr=22050, n_fft=2048)", "mel_filterbank(sr=22050, n_fft=2048)",
         "mel_bank(22050, 2048, 128)"),
        ("torchaudio.transforms.MelSpectrogram()(y)", "presets.torchaudio.features(y)"),
        ("librosa.feature.melspectrogram(y=y, sr=22050)", "presets.librosa.features(y)", "librosa_mel(y)"),
        ("librosa.feature.melspectrogram(S=numpy.abs(S), sr=16000, n_mels=40)",
         "melspectrogram(S=numpy.abs(S), sr=16000, n_mels=40)", "mel_bank(16000, 400, 40) @ numpy.abs(S)"),
        ("whisper.log_mel_spectrogram(y)", "presets.whisper.features(y)", "whisper(y, 80)"),
        ("whisper.log_mel_spectrogram(y, n_mels=128)", "presets.whisper_128.features(y)", "whisper(y, 128)"),
        ("TacotronSTFT().mel_spectrogram(y)", "presets.tacotron2.features(y)", "tacotron2(y)"),
        ("mel_spectrogram(y, 1024, 80, 22050, 256, 1024, 0, 8000) of HiFi-GAN",
         "presets.hifigan.features(y)", "hifigan(y)"),
        ("torchaudio.functional.amplitude_to_DB(P, 10, 1e-10, torch.log10(P.max()), 80.0)", 'power_to_db(P, ref="max")'),
        ("librosa.power_to_db(P)", "power_to_db(P)", "decibels(P)"),
        ("librosa.power_to_db(P, ref=numpy.max, amin=1e-6)", "power_to_db(P, ref=numpy.max, amin=1e-6)",
         "decibels(P, numpy.max, 1e-6)"),
    ],
    "Features made of several functions": [
        ('torchaudio.transforms.MFCC(16000, 20, melkwargs={"n_fft": 400, "hop_length": 160, "n_mels": 40})(y)',
         "mfcc(y, sr=16000, n_mfcc=20, n_fft=400, hop_length=160, n_mels=40, htk=True, norm=None)"),
        ("librosa.feature.mfcc(y=y, sr=22050)", 'mfcc(y, sr=22050, pad_mode="constant")[..., :1 + n // 512]',
         'scipy.fft.dct(decibels(librosa_mel(y)), axis=0, norm="ortho")[:20]'),
        ("torchaudio.compliance.kaldi.fbank(y[None], num_mel_bins=80).T", "kaldi_fbank(y)"),
        ("torchaudio.functional.compute_deltas(P)", 'deltas(P, width=5, mode="nearest")'),
        ("librosa.feature.delta(P)", "deltas(P)", "scipy.signal.savgol_filter(P, 9, 1, deriv=1)"),
        ("librosa.feature.delta(P, order=2)", "deltas(P, order=2)", "scipy.signal.savgol_filter(P, 9, 2, deriv=2)"),
    ],
    "Filters": [
        ("scipy.signal.lfilter(b, a, y)", "lfilter(b, a, y)"),
        ("scipy.signal.lfilter(b, a, y, zi=zi)[0]", "lfilter(b, a, y, zi=zi)[0]"),
        ("scipy.signal.lfilter_zi(b, a)", "lfilter_zi(b, a)"),
        ("scipy.signal.filtfilt(b, a, y)", "filtfilt(b, a, y)"),
        ('scipy.signal.filtfilt(b, a, y, padtype="even", padlen=50)',
         'filtfilt(b, a, y, padtype="even", padlen=50)'),
        ('scipy.signal.filtfilt(b, a, y, padtype="constant")', 'filtfilt(b, a, y, padtype="constant")'),
        ("scipy.signal.filtfilt(b, a, y, padtype=None)", "filtfilt(b, a, y, padtype=None)"),
        ("scipy.signal.sosfilt(sos, y)", "sosfilt(sos, y)"),
        ("scipy.signal.sosfilt_zi(sos)", "sosfilt_zi(sos)"),
        ("scipy.signal.sosfiltfilt(sos, y)", "sosfiltfilt(sos, y)"),
        ("torchaudio.functional.lfilter(y, a, b, clamp=False)", "lfilter(b, a, y)"),
    ],
    "Sample rate: other filters, so not the same numbers": [
        ("scipy.signal.resample_poly(y, 1, 2)", "resample(y, orig_sr=16000, target_sr=8000)"),
        ("scipy.signal.resample_poly(y, 441, 160)", "resample(y, orig_sr=16000, target_sr=44100)"),
        ("scipy.signal.resample_poly(y, 3, 1)", "resample(y, orig_sr=16000, target_sr=48000)"),
        ("torchaudio.functional.resample(y, 16000, 8000)", "resample(y, orig_sr=16000, target_sr=8000)"),
        ("torchaudio.functional.resample(y, 16000, 48000)", "resample(y, orig_sr=16000, target_sr=48000)"),
    ],
    "Values": [
        ("numpy.log1p(P)", "log1p(P)"),
        ("(y - y.mean()) / y.std()", "standardize(y)"),
    ],
}


def recording():
    with wave.open(str(page.FOLDER.parent / "examples/data/speech.wav")) as file:
        return np.frombuffer(file.readframes(file.getnframes()), "<i2").astype(np.float32) / 32768


def names(y):
    """What the expressions may use: double precision for scipy, float32 for torch and for this package."""
    b, a = scipy.signal.butter(4, 0.2)
    inputs = {"y": y, "b": np.float32(b), "a": np.float32(a), "sos": np.float32(scipy.signal.butter(8, 0.1, output="sos")),
              "zi": np.float32([0.1, -0.2, 0.3, 0.1]),
              "Y": np.fft.fft(y).astype(np.complex64), "S": sorvo_audio.stft(y, n_fft=400, hop_length=160),
              "P": sorvo_audio.melspectrogram(y, sr=16000, n_fft=400, n_mels=80)}
    ours = {"n": len(y), "numpy": np, **inputs, **vars(sorvo_audio)}
    double = {name: value.astype(complex if np.iscomplexobj(value) else float)
              for name, value in inputs.items()}
    double.update(vars(references), numpy=np, scipy=scipy)
    tensors = None
    if torch:
        tensors = {name: torch.from_numpy(value) for name, value in inputs.items()}
        tensors.update(torch=torch, torchaudio=torchaudio)
    return ours, double, tensors


def difference(theirs, ours):
    theirs, ours = np.asarray(theirs), np.asarray(ours)
    if theirs.shape != ours.shape:
        raise ValueError(f"shapes {theirs.shape} and {ours.shape}")
    return float(np.abs(theirs - ours).max() / np.abs(theirs).max())


def difference_of(variables, their_call, our_call, formula=None):
    """As text; empty where the toolkit is not installed."""
    ours, double, tensors = variables
    their_variables = tensors if their_call.startswith("torch") else double
    if not their_variables:
        return ""
    return page.rounded_up(difference(eval(formula or their_call, their_variables), eval(our_call, ours)))


def measure():
    lines = []
    signals = [names(references.speech_like(22051)), names(recording())]
    for name, calls in TABLES.items():
        rows = [[f"`{call[0]}`" + " †" * len(call[2:]), f"`{call[1]}`",
                 *(difference_of(variables, *call) for variables in signals)] for call in calls]
        lines += [f"### {name}", "", *page.table(["theirs", "`sorvo_audio`", "synthetic", "recording"], rows)]
    return lines


def agree(old, new):
    """The figure varies with the processor for which the other toolkit chooses its code."""
    return new <= 3 * old


if __name__ == "__main__":
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # torchaudio names bands without bins
        sys.exit(page.serve("equivalences", measure, agree))
