"""The formulas of the toolkits, written out in double precision."""
import numpy as np


def hann(n):
    return 0.5 - 0.5 * np.cos(2 * np.pi * np.arange(n) / n)


def spectra(y, n_fft, hop, pad_mode="reflect", pad=None):
    """Complex spectra [bins, frames] of Hann-windowed frames; by default centred."""
    y = np.pad(np.float64(y), n_fft // 2 if pad is None else pad, mode=pad_mode)
    frames = np.lib.stride_tricks.sliding_window_view(y, n_fft)[::hop]
    return np.fft.rfft(frames * hann(n_fft)).T


def mel_bank(sr, n_fft, n_mels, fmax=None, htk=False, norm="slaney"):
    """Triangles [n_mels, bins] equally spaced on the mel scale from 0 Hz to fmax."""
    step = np.log(6.4) / 27
    if htk:
        to_mel, to_hz = (lambda f: 2595 * np.log10(1 + f / 700)), (lambda m: 700 * (10 ** (m / 2595) - 1))
    else:
        def to_mel(f):
            return np.where(f < 1000, f * 3 / 200, 15 + np.log(np.maximum(f, 1) / 1000) / step)

        def to_hz(m):
            return np.where(m < 15, m * 200 / 3, 1000 * np.exp((m - 15) * step))
    corners = to_hz(np.linspace(0, to_mel(sr / 2 if fmax is None else fmax), n_mels + 2))[:, None]
    bins = np.linspace(0, sr / 2, n_fft // 2 + 1)
    rising = (bins - corners[:-2]) / (corners[1:-1] - corners[:-2])
    falling = (corners[2:] - bins) / (corners[2:] - corners[1:-1])
    weights = np.maximum(0, np.minimum(rising, falling))
    return weights * 2 / (corners[2:] - corners[:-2]) if norm == "slaney" else weights


def decibels(S, ref=1.0, amin=1e-10, top_db=80.0):
    """librosa's power_to_db."""
    S = np.float64(S)
    reference = ref(S) if callable(ref) else abs(ref)
    result = 10 * np.log10(np.maximum(amin, S)) - 10 * np.log10(np.maximum(amin, reference))
    return result if top_db is None else np.maximum(result, result.max() - top_db)


def whisper(y, n_mels):
    mel = mel_bank(16000, 400, n_mels) @ np.abs(spectra(y, 400, 160)[:, :-1]) ** 2
    decades = np.log10(np.maximum(mel, 1e-10))
    return (np.maximum(decades, decades.max() - 8) + 4) / 4


def librosa_mel(y):
    return mel_bank(22050, 2048, 128) @ np.abs(spectra(y, 2048, 512, "constant")) ** 2


def torchaudio_mel(y):
    return mel_bank(16000, 400, 128, htk=True, norm=None) @ np.abs(spectra(y, 400, 200)) ** 2


def tacotron2(y):
    return np.log(np.maximum(mel_bank(22050, 1024, 80, 8000) @ np.abs(spectra(y, 1024, 256)), 1e-5))


def hifigan(y):
    powers = np.abs(spectra(y, 1024, 256, pad=(1024 - 256) // 2)) ** 2
    return np.log(np.maximum(mel_bank(22050, 1024, 80, 8000) @ np.sqrt(powers + 1e-9), 1e-5))


PRESETS = {
    "whisper": lambda y: whisper(y, 80),
    "whisper_128": lambda y: whisper(y, 128),
    "librosa": librosa_mel,
    "torchaudio": torchaudio_mel,
    "tacotron2": tacotron2,
    "hifigan": hifigan,
}


def speech_like(n, seed=0):
    """Harmonics that swell and fade, some noise, and a second part of digital silence."""
    rng = np.random.default_rng(seed)
    t = np.arange(n) / 16000
    y = sum(np.sin(2 * np.pi * 140 * k * t + k) / k for k in range(1, 30)) * np.sin(7 * t) ** 2
    y = 0.1 * y + 0.003 * rng.standard_normal(n)
    y[n * 3 // 4:] = 0
    return y.astype(np.float32)
