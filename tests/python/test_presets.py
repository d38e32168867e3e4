"""Presets against the formulas of their toolkits, and against torchaudio itself."""
import dataclasses
import unittest
import warnings

import numpy as np

import references
from sorvo_audio import MelStream, _compression, melspectrogram, presets


def relative(actual, expected):
    return np.abs(actual - expected).max() / np.abs(expected).max()


class Presets(unittest.TestCase):
    def test_formula(self):
        # Measured: at most 1.3e-5, of narrow bands whose corners are rounded, and 2e-5 for logarithms.
        for name, reference in references.PRESETS.items():
            preset = getattr(presets, name)
            for n in (preset.n_fft, 22050, 22051, 29999):
                y = references.speech_like(n, seed=n)
                expected = reference(y)
                with self.subTest(preset=name, samples=n):
                    actual = preset.features(np.stack([y, -y]))
                    self.assertEqual(actual.shape, (2, *expected.shape))
                    self.assertLess(relative(actual[0], expected), 6e-5)
                    self.assertLess(relative(actual[1], expected), 6e-5)

    def test_too_short_a_signal_raises_or_is_padded(self):
        for name, least in (("whisper", 400), ("librosa", 2048), ("hifigan", 385)):
            preset = getattr(presets, name)
            y = references.speech_like(least)
            with self.subTest(preset=name), self.assertRaisesRegex(ValueError, f"{least - 1} samples.*{least}:"):
                preset.features(y[1:])
            self.assertGreater(preset.features(y).shape[-1], 0)
            padded = np.pad(y, (0, 2 * preset.sr - least))
            np.testing.assert_array_equal(preset.features(y, pad_to_seconds=2), preset.features(padded))
        with self.assertRaisesRegex(ValueError, "16001 samples; pad_to_seconds=1 .*16000"):
            presets.whisper.features(np.zeros(16001, np.float32), pad_to_seconds=1)

    def test_logarithms_are_the_models_within_1e_6(self):
        # Measured: at most 5.5e-7 for "log", 3.7e-7 for "whisper".
        bands = 10 ** np.random.default_rng(0).uniform(-11, 4, (80, 5000))
        bands = np.stack([bands, bands * 1e-6]).astype(np.float32)
        bands[:, 0, :5] = 0, 1e-5, 1e-10, 1, np.nextafter(np.float32(1), np.float32(0))
        exact = bands.astype(float)
        decades = np.log10(np.maximum(exact, 1e-10))
        self.assertLess(np.abs(_compression.logarithms(bands, 1e-5) - np.log(np.maximum(exact, 1e-5))).max(), 1e-6)
        whisper = (np.maximum(decades, decades.max((-2, -1), keepdims=True) - 8) + 4) / 4
        self.assertLess(np.abs(_compression.whisper(bands) - whisper).max(), 1e-6)

    def test_nan_is_not_hidden(self):
        y = references.speech_like(16000)
        y[5000] = np.nan
        features = presets.whisper.features(np.stack([y, references.speech_like(16000)]))
        np.testing.assert_array_equal(np.isnan(features).all((-2, -1)), np.isnan(features).any((-2, -1)))
        np.testing.assert_array_equal(np.isnan(features[:, 0, 0]), [True, False])
        at = np.flatnonzero(np.isnan(presets.tacotron2.features(y)).all(0))
        np.testing.assert_array_equal(at, np.arange(18, 22))  # the frames that hold sample 5000

    def test_torchaudio(self):
        try:
            import torch
            import torchaudio
        except ImportError:
            self.skipTest("torchaudio is not installed")
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")  # about bands without bins
            transform = torchaudio.transforms.MelSpectrogram()
        y = references.speech_like(20001)
        expected = transform(torch.from_numpy(y)).numpy()
        self.assertLess(relative(presets.torchaudio.features(y), expected), 1e-5)

    def test_is_a_value(self):
        with self.assertRaises(dataclasses.FrozenInstanceError):
            presets.whisper.sr = 8000
        self.assertEqual(eval(repr(presets.hifigan), {"Preset": presets.Preset}), presets.hifigan)
        self.assertEqual(dataclasses.replace(presets.whisper, n_mels=128), presets.whisper_128)

    def test_keywords_are_those_of_function_and_stream(self):
        y = references.speech_like(5000)
        stream = MelStream(**presets.whisper.keywords)
        joined = np.concatenate([stream.push(y), stream.flush()], axis=-1)
        np.testing.assert_array_equal(joined, melspectrogram(y, **presets.whisper.keywords))
        np.testing.assert_array_equal(
            dataclasses.replace(presets.whisper, compression=None).features(y), joined[:, :-1])


if __name__ == "__main__":
    unittest.main()
