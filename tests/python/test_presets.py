"""Presets against the formulas of their toolkits, and against torchaudio itself."""
import dataclasses
import unittest
import warnings

import numpy as np

import references
from sorvo_audio import MelStream, melspectrogram, presets


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
