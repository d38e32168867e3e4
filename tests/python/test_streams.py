"""Joined results of a stream are those of one call over the whole signal, bit for bit."""
import unittest
import warnings

import numpy as np

from sorvo_audio import (FilterStream, MelStream, ResampleStream, StftStream, lfilter, lfilter_zi,
                         melspectrogram, resample, stft)


class Streams(unittest.TestCase):
    def setUp(self):
        self.rng = np.random.default_rng(7)

    def blocks(self, x, count=12):
        """x cut at random places; some blocks are empty."""
        cuts = np.sort(self.rng.integers(0, x.shape[-1] + 1, self.rng.integers(0, count)))
        return np.split(x, cuts, axis=-1)

    def assert_joined(self, stream, x, whole):
        for signal in ("first", "second"):  # flush() makes the stream ready for another one
            parts = [stream.push(block) for block in self.blocks(x)]
            joined = np.concatenate([*parts, stream.flush()], axis=-1)
            with self.subTest(stream=vars(stream), samples=x.shape, signal=signal):
                self.assertEqual((joined.shape, joined.dtype), (whole.shape, whole.dtype))
                self.assertEqual(joined.tobytes(), whole.tobytes())

    def signal(self):
        x = self.rng.standard_normal((*[(), (2,), (2, 3)][self.rng.integers(3)], self.rng.integers(1, 600)))
        if self.rng.random() < 0.1:
            x[..., self.rng.integers(x.shape[-1])] = np.nan
        return x.astype(np.float32)

    def test_frames(self):
        pick, between = self.rng.choice, self.rng.integers
        for _ in range(300):
            x = self.signal()
            x = np.concatenate([x, x], axis=-1)  # no shorter than the shortest frame
            framing = dict(n_fft=between(2, min(100, x.shape[-1] + 1)), hop_length=between(1, 150),
                           win_length=between(1, 120),
                           window=pick(["hann", "hamming"]), center=bool(between(4)),
                           pad_mode=pick(["reflect", "constant"]))
            options = dict(framing, power=pick([None, 1.0, 2.0]), norm=pick([None, "window", "length"]))
            self.assert_joined(StftStream(**options), x, stft(x, **options))
            options = dict(framing, sr=8000, n_mels=between(1, framing["n_fft"] // 2 + 1), htk=True)
            self.assert_joined(MelStream(**options), x, melspectrogram(x, **options))

    def test_shortest_frame(self):
        for n in range(1, 5):
            for options in (dict(pad_mode="reflect"), dict(pad_mode="constant"), dict(center=False)):
                x = np.arange(1, n + 1, dtype=np.float32)
                for hop_length in (1, 2, 3):
                    options.update(n_fft=1, hop_length=hop_length)
                    self.assert_joined(StftStream(**options), x, stft(x, **options))

    def test_frame_count_that_single_precision_rounds_up(self):
        x = self.rng.standard_normal(2**24 + 1023, np.float32)
        for options in (dict(pad_mode="reflect"), dict(pad_mode="constant"), dict(center=False)):
            options.update(n_fft=16, hop_length=1024)
            whole = stft(x, **options)
            if options.get("center", True):
                self.assertEqual(whole.shape[-1], 2**14 + 2)
            self.assert_joined(StftStream(**options), x, whole)

    def test_resample(self):
        rates = [(44100, 16000), (16000, 48000), (8000, 22050), (16000, 16000), (1, 97), (97, 1)]
        rates += self.rng.integers(1, 60, (60, 2)).tolist()
        for orig_sr, target_sr in rates:
            for tail in ("zeros", "same", "full"):
                x, options = self.signal(), dict(orig_sr=orig_sr, target_sr=target_sr, tail=tail)
                with warnings.catch_warnings():
                    warnings.simplefilter("ignore")  # about ratios beyond 4
                    self.assert_joined(ResampleStream(**options), x, resample(x, **options))

    def test_filter(self):
        for _ in range(60):
            x = self.signal()
            b = self.rng.standard_normal(self.rng.integers(1, 6))
            a = np.r_[1, 0.2 * self.rng.standard_normal(self.rng.integers(0, 5))]
            self.assert_joined(FilterStream(b, a), x, lfilter(b, a, x))
            zi = lfilter_zi(b, a) * x[..., :1]
            self.assert_joined(FilterStream(b, a, zi=zi), x, lfilter(b, a, x, zi=zi)[0])

    def test_returns_what_is_determined(self):
        """The delay is that of the method, and the memory does not grow with the signal."""
        frames = StftStream(n_fft=64, hop_length=16)
        rate = ResampleStream(orig_sr=2, target_sr=1)
        frame_n = output_n = 0
        for n in range(1, 2000):
            sample = np.zeros(1, np.float32)
            frame_n += frames.push(sample).shape[-1]
            output_n += rate.push(sample).shape[-1]
            self.assertEqual(frame_n, 0 if n < 64 else (n - 32) // 16 + 1)
            self.assertEqual(output_n, max(0, (n - 32 + 1) // 2))
            self.assertLess(frames._signal._samples.size + rate._signal._samples.size, 64 + 16 + 3 + 66)

    def test_refuses(self):
        stream = MelStream(sr=16000)
        stream.push(np.zeros((2, 100), np.float32))
        with self.assertRaisesRegex(ValueError, r"block has shape \(3, 100\).*must be \(2,\)"):
            stream.push(np.zeros((3, 100), np.float32))
        with self.assertRaisesRegex(TypeError, "block has dtype int16"):
            stream.push(np.zeros((2, 100), np.int16))
        with self.assertRaisesRegex(ValueError, "signal has 100 samples; .* n_fft = 2048"):
            stream.flush()
        self.assertEqual(stream.flush().shape, (128, 0))  # of no signal
        with self.assertRaisesRegex(ValueError, "hop_length is 0"):
            StftStream(hop_length=0)


if __name__ == "__main__":
    unittest.main()
