"""Cepstra, deltas and Kaldi's filter banks against their formulas in double precision, and against torchaudio."""
import contextlib
import io
import unittest
import wave
from pathlib import Path

import numpy as np

import references
from sorvo_audio import deltas, kaldi_fbank, melspectrogram, mfcc


def recording():
    with wave.open(str(Path(__file__).parents[2] / "examples/data/speech.wav")) as file:
        return np.frombuffer(file.readframes(file.getnframes()), "<i2").astype(np.float32)


def torchaudio_or_skip(test):
    try:
        import torch
        import torchaudio
    except ImportError:
        test.skipTest("torchaudio is not installed")
    return torch, torchaudio


def kaldi(y, sr, bands, low, high, snip):
    """The formula as it is published, frame by frame."""
    length, shift = sr * 25 // 1000, sr // 100
    padded = 1
    while padded < length:
        padded *= 2

    def sample(i):  # mirrored beyond the ends
        while not 0 <= i < len(y):
            i = -i - 1 if i < 0 else 2 * len(y) - 1 - i
        return float(y[i])

    def mel(hz):
        return 1127 * np.log(1 + hz / 700)
    count = 1 + (len(y) - length) // shift if snip else (len(y) + shift // 2) // shift
    low, step = mel(low), (mel(high) - mel(low)) / (bands + 1)
    bank = np.zeros((bands, padded // 2))
    for b in range(bands):
        left, centre, right = (low + (b + i) * step for i in range(3))
        for k in range(padded // 2):
            m = mel(k * sr / padded)
            if left < m < right:
                bank[b, k] = (m - left) / (centre - left) if m <= centre else (right - m) / (right - centre)
    i = np.arange(length)
    povey = (0.5 - 0.5 * np.cos(2 * np.pi * i / (length - 1))) ** 0.85
    result = []
    for t in range(count):
        begin = t * shift if snip else t * shift + shift // 2 - length // 2
        x = np.array([sample(begin + j) for j in i])
        x -= x.mean()
        x = (x - 0.97 * np.concatenate([x[:1], x[:-1]])) * povey
        power = np.abs(np.fft.rfft(x, padded)[:-1]) ** 2
        result.append(np.log(np.maximum(bank @ power, np.finfo(np.float32).eps)))
    return np.array(result).T


class KaldiFbank(unittest.TestCase):
    def test_is_the_published_formula(self):
        # Measured: at most 1.2e-6.
        y = recording()
        for sr, y, bands, low, fmax, snip in [
                (16000, y, 80, 20, 0, True), (16000, y / 32768, 80, 20, 0, True),
                (16000, y[-20011:] / 32768, 40, 20, -400, False), (8000, y[:9000], 23, 100, 3800, True),
                (22050, y[-15000:] / 32768, 64, 0, 0, False)]:
            with self.subTest(sr=sr, bands=bands, snip=snip, scale=np.abs(y).max()):
                expected = kaldi(y, sr, bands, low, fmax if fmax > 0 else sr / 2 + fmax, snip)
                actual = kaldi_fbank(np.stack([y, np.zeros(len(y), np.float32)]), sr=sr, n_mels=bands, fmin=low,
                                     fmax=fmax, snip_edges=snip)
                self.assertEqual(actual.shape, (2, *expected.shape))
                self.assertLess(np.abs(actual[0] - expected).max(), 4e-6)
                self.assertLess(np.abs(actual[1] - np.log(np.finfo(np.float32).eps)).max(), 1e-6)

    def test_is_that_of_torchaudio(self):
        torch, torchaudio = torchaudio_or_skip(self)
        y = recording()
        for options in ({}, {"snip_edges": False}):
            expected = torchaudio.compliance.kaldi.fbank(torch.from_numpy(y)[None], num_mel_bins=80, **options)
            self.assertLess(np.abs(kaldi_fbank(y, **options) - expected.numpy().T).max(), 5e-3)  # single precision

    def test_refuses_what_has_no_result(self):
        for message, options in [("y has 399 samples.* 400", {}), ("fmax 9000.*8000", {"fmax": 9000.0}),
                                 ("n_mels is 257", {"n_mels": 257}),
                                 ("frame_length is 0.05", {"frame_length": 0.05})]:
            with self.subTest(message), self.assertRaisesRegex(ValueError, message):
                kaldi_fbank(np.zeros(399 if not options else 16000, np.float32), **options)


class Mfcc(unittest.TestCase):
    def test_is_the_cosine_transform_of_decibels(self):
        y = references.speech_like(22051)
        for bands, n, lifter in [(128, 20, 0), (40, 40, 22), (80, 13, 0), (23, 1, 0)]:
            mel = melspectrogram(y, sr=16000, n_fft=1024, n_mels=bands).astype(float)
            decibels = 10 * np.log10(np.maximum(mel, 1e-10))
            decibels = np.maximum(decibels, decibels.max() - 80)
            k, i = np.arange(n)[:, None], np.arange(bands)
            basis = np.sqrt(np.where(k == 0, 1, 2) / bands) * np.cos(np.pi * k * (2 * i + 1) / (2 * bands))
            expected = basis @ decibels
            if lifter:
                expected *= 1 + lifter / 2 * np.sin(np.pi * (k + 1) / lifter)
            with self.subTest(bands=bands, n=n, lifter=lifter):
                actual = mfcc(np.stack([y, 0.1 * y]), sr=16000, n_fft=1024, n_mels=bands, n_mfcc=n, lifter=lifter)
                # Measured: at most 1.2e-6 of the largest.
                self.assertLess(np.abs(actual[0] - expected).max(), 3e-6 * np.abs(expected).max())
                again = mfcc(S=np.float32(decibels), n_mfcc=n, lifter=lifter)
                self.assertLess(np.abs(again - expected).max(), 3e-6 * np.abs(expected).max())
        with self.assertRaisesRegex(ValueError, "n_mfcc is 24; .* 23"):
            mfcc(y, sr=16000, n_mels=23, n_mfcc=24)

    def test_is_that_of_torchaudio(self):
        torch, torchaudio = torchaudio_or_skip(self)
        y = references.speech_like(22051)
        with contextlib.redirect_stderr(io.StringIO()):
            transform = torchaudio.transforms.MFCC(
                16000, 20, melkwargs={"n_fft": 400, "n_mels": 40, "hop_length": 160})
        expected = transform(torch.from_numpy(y)).numpy()
        actual = mfcc(y, sr=16000, n_mfcc=20, n_fft=400, hop_length=160, n_mels=40, htk=True, norm=None)
        self.assertLess(np.abs(actual - expected).max(), 1e-5 * np.abs(expected).max())


class Deltas(unittest.TestCase):
    def test_are_derivatives_of_fitted_polynomials(self):
        x = np.random.default_rng(0).standard_normal((2, 3, 50)).astype(np.float32)
        for width, order, mode in [(9, 1, "interp"), (5, 1, "nearest"), (3, 2, "interp"), (11, 2, "nearest")]:
            half = width // 2
            wide = np.pad(x, [(0, 0), (0, 0), (half, half)], "edge") if mode == "nearest" else x
            expected = np.empty(x.shape)
            for t in range(50):
                first = t if mode == "nearest" else min(max(t - half, 0), 50 - width)
                frames = wide[..., first:first + width].reshape(6, -1).T
                fit = np.polynomial.polynomial.polyfit(np.arange(width), frames, order)
                expected[..., t] = (fit[order] * order).reshape(2, 3)
            with self.subTest(width=width, order=order, mode=mode):
                self.assertLess(np.abs(deltas(x, width=width, order=order, mode=mode) - expected).max(), 1e-6)
        for message, options in [("width is 4", {"width": 4}), ("x has 50 frames.*51", {"width": 51}),
                                 ("order is 3", {"order": 3}), ("mode is 'wrap'", {"mode": "wrap"})]:
            with self.subTest(message), self.assertRaisesRegex(ValueError, message):
                deltas(x, **options)


if __name__ == "__main__":
    unittest.main()
