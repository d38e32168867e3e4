"""The numpy layer: its functions against references in double precision, batches, and errors."""
import inspect
import unittest
import warnings

import numpy as np

import references
import sorvo_audio as sa

RNG = np.random.default_rng(1)


def noise(*shape):
    return RNG.standard_normal(shape).astype(np.float32)


class Values(unittest.TestCase):
    def assert_near(self, actual, expected, tolerance):
        self.assertEqual(np.shape(actual), np.shape(expected))
        self.assertLess(np.abs(actual - expected).max(), tolerance * np.abs(expected).max())

    def test_transforms(self):  # measured: 2e-7
        for n in (1, 30, 64, 97):
            x = noise(2, n)
            self.assert_near(sa.fft(x), np.fft.fft(x), 1e-6)
            self.assert_near(sa.ifft(np.fft.fft(x)), x, 1e-6)

    def test_stft(self):  # measured: 3e-7
        y = noise(3000)
        for n_fft, hop_length, pad_mode in ((256, 100, "reflect"), (400, 160, "reflect"),
                                            (400, 250, "constant")):
            expected = references.spectra(y, n_fft, hop_length, pad_mode)
            options = dict(n_fft=n_fft, hop_length=hop_length, pad_mode=pad_mode)
            self.assert_near(sa.stft(y, **options), expected, 1e-6)
            self.assert_near(sa.stft(y, **options, power=2), np.abs(expected)**2, 2e-6)
            self.assert_near(sa.stft(y, **options, norm="length"), expected * 2 / n_fft, 1e-6)
            energy = np.sum(references.hann(n_fft)**2)
            self.assert_near(sa.stft(y, **options, norm="window"), expected / np.sqrt(energy), 1e-6)
        expected = references.spectra(y, 512, 128, pad=0)
        self.assert_near(sa.stft(y, n_fft=512, center=False), expected, 1e-6)
        self.assert_near(sa.get_window("hamming", 9), 0.08 + 0.92 * references.hann(9), 1e-6)

    def test_istft_undoes_stft(self):  # measured: 4e-7
        y = noise(2, 4000)
        for options in (dict(), dict(norm="length"), dict(center=False),
                        dict(window="hamming", win_length=200)):
            spectrum = sa.stft(y, n_fft=256, hop_length=50, **options)
            signal = sa.istft(spectrum, hop_length=50, **options)
            n = (spectrum.shape[-1] - 1) * 50 + (0 if options.get("center", True) else 256)
            self.assertEqual(signal.shape, (2, n))
            inside = slice(50, n - 50)  # the weights of the first and the last window are close to 0
            self.assert_near(signal[:, inside], y[:, inside], 2e-6)
        longer = sa.istft(sa.stft(y, n_fft=256), length=5000)
        self.assertEqual(longer.shape, (2, 5000))
        np.testing.assert_array_equal(longer[:, 4500:], 0)

    def test_mel(self):  # measured: 5e-5 in narrow bands, 5e-7 in the sums
        for options in (dict(), dict(htk=True, norm=None), dict(fmax=5000.0)):
            bank = sa.mel_filterbank(sr=16000, n_fft=512, n_mels=40, **options)
            self.assert_near(bank, references.mel_bank(16000, 512, 40, **options), 1e-4)
            y = noise(2000)
            mel = sa.melspectrogram(y, sr=16000, n_fft=512, n_mels=40, **options)
            powers = sa.stft(y, n_fft=512, power=2)
            self.assert_near(mel, bank @ powers, 2e-6)
            self.assert_near(sa.melspectrogram(S=np.sqrt(powers), sr=16000, n_mels=40, **options),
                             bank @ np.sqrt(powers), 2e-6)

    def test_empty_mel_bands_are_told(self):
        for call in (lambda: sa.mel_filterbank(sr=16000, n_fft=400, n_mels=128, htk=True),
                     lambda: sa.melspectrogram(noise(400), sr=16000, n_fft=400, htk=True),
                     lambda: sa.presets.torchaudio.features(noise(400)),
                     lambda: sa.melspectrogram(S=np.ones((201, 2)), sr=16000, htk=True),
                     lambda: sa.MelStream(sr=16000, n_fft=400, htk=True)):
            with self.assertWarnsRegex(sa.SorvoAudioWarning, "4 of 128 mel bands .* larger n_fft") as caught:
                call()
            self.assertEqual(caught.filename, __file__)
        empty = np.flatnonzero(~references.mel_bank(16000, 400, 128, htk=True).any(1))
        self.assertEqual(len(empty), 4)
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            sa.presets.whisper_128.features(noise(400))

    def test_frame_count_is_the_number_of_frames(self):
        self.assertEqual(sa.frame_count(255, n_fft=256), 0)
        for n in (256, 257, 1000, 1001):
            for options in (dict(center=False), dict(pad_mode="reflect"), dict(pad_mode="constant")):
                options.update(n_fft=256, hop_length=100)
                self.assertEqual(sa.frame_count(n, **options), sa.stft(noise(n), **options).shape[-1])

    def test_filters(self):
        try:
            from scipy import signal as scipy_signal
        except ImportError:
            self.skipTest("scipy is not installed")
        for b, a in (([0.25, 0.5, 0.25], [1]), ([2], [4, -1.0]), ([0.1, 0.2], [1, -1.2, 0.5])):
            x = noise(2, 300)  # measured: 1e-7
            self.assert_near(sa.lfilter(b, a, x), scipy_signal.lfilter(b, a, x), 1e-6)
            for padtype in ("odd", "even", "constant", None):
                self.assert_near(sa.filtfilt(b, a, x, padtype=padtype),
                                 scipy_signal.filtfilt(b, a, x, padtype=padtype), 1e-6)
            self.assert_near(sa.lfilter_zi(b, a), scipy_signal.lfilter_zi(b, a), 1e-6)
            zi = noise(2, max(len(a), len(b)) - 1)
            for actual, expected in zip(sa.lfilter(b, a, x, zi=zi), scipy_signal.lfilter(b, a, x, zi=zi)):
                self.assert_near(actual, expected, 1e-6)
        self.assertEqual(sa.lfilter_zi([1], [2]).shape, (0,))
        for design in (dict(N=4, Wn=0.1), dict(N=5, Wn=[0.2, 0.4], btype="bandstop"), dict(N=1, Wn=0.3)):
            sos, x = scipy_signal.butter(output="sos", **design), noise(2, 300) + np.float32(1)
            self.assert_near(sa.sosfilt(sos, x), scipy_signal.sosfilt(sos, x), 4e-6)  # measured: 1e-6
            self.assert_near(sa.sosfilt_zi(sos), scipy_signal.sosfilt_zi(sos), 4e-6)
            zi = noise(len(sos), 2, 2)
            for actual, expected in zip(sa.sosfilt(sos, x, zi=zi), scipy_signal.sosfilt(sos, x, zi=zi)):
                self.assert_near(actual, expected, 4e-6)
            for options in (dict(padtype="odd"), dict(padtype="even"), dict(padtype="constant", padlen=7),
                            dict(padtype=None), dict(padlen=0)):
                self.assert_near(sa.sosfiltfilt(sos, x, **options),
                                 scipy_signal.sosfiltfilt(sos, x, **options), 4e-6)

    def test_filters_that_float32_spoils_are_told(self):
        def low_pass(order, cutoff):
            """Butterworth's, as one filter and as sections."""
            w = np.pi * cutoff
            sos = []
            for k in range(order // 2):
                alpha = np.sin(w) * np.cos(np.pi * (2 * k + 1) / (2 * order))
                sos.append(np.r_[np.array([0.5, 1, 0.5]) * (1 - np.cos(w)), 1 + alpha, -2 * np.cos(w), 1 - alpha])
                sos[-1] /= 1 + alpha
            b = a = np.ones(1)
            for row in sos:
                b, a = np.convolve(b, row[:3]), np.convolve(a, row[3:])
            return b, a, np.array(sos)

        x = np.ones(20000, np.float32)
        for order, cutoff, message in ((4, 0.005, r"22\d% off: .*sosfilt"), (8, 0.1, "4% off: .*sosfilt"),
                                       (6, 0.02, "unstable: .*sosfilt"), (8, 0.02, "unstable: .*sosfilt"),
                                       (2, 0.0002, "5% off: filter at a lower")):
            b, a, sos = low_pass(order, cutoff)
            for call in (lambda: sa.lfilter(b, a, x[:9]), lambda: sa.filtfilt(b, a, x),
                         lambda: sa.FilterStream(b, a)):
                with self.assertWarnsRegex(sa.SorvoAudioWarning, message) as caught:
                    call()
                self.assertEqual(caught.filename, __file__)
            if order > 2:
                with warnings.catch_warnings():
                    warnings.simplefilter("error")
                    self.assertLess(abs(sa.sosfilt(sos, x)[-1] - 1), 1e-3)
        with self.assertWarnsRegex(sa.SorvoAudioWarning, "5% off"):
            sa.sosfilt(sos, x)
        radius = 1 - 1e-6  # a resonance that is a thousandth of the distance between two points of a grid
        with self.assertWarnsRegex(sa.SorvoAudioWarning, r"\d% off"):
            sa.lfilter([1 - radius], [1, -2 * radius * np.cos(1), radius**2], x)
        with warnings.catch_warnings():  # harmless roundings, and designs that are not stable themselves
            warnings.simplefilter("error")
            for b, a in (low_pass(4, 0.05)[:2], ([1], [1, -1]), ([1], [1, -2.1, 1.3]), (noise(50) / 3.0, [0.7]),
                         ([np.nan, 0.1], [1, 0.1])):
                sa.lfilter(b, a, x[:9])

    def test_resample(self):  # measured: 3e-4 of a tone at a tenth of the rate
        tone = np.sin(0.2 * np.pi * np.arange(4000))
        y = sa.resample(tone, orig_sr=48000, target_sr=16000)
        self.assertEqual(y.shape, (1334,))
        self.assert_near(y[50:-50], tone[::3][50:-50], 1e-3)

    def test_tail_of_resample(self):
        for orig_sr, target_sr in ((16, 48), (48, 16), (441, 160), (160, 441), (2, 1), (1, 2)):
            x = noise(2, 211)
            n = -(-211 * target_sr // orig_sr)
            everything = sa.resample(np.pad(x, ((0, 0), (0, 200))), orig_sr=orig_sr, target_sr=target_sr)
            zeros, same, full = (sa.resample(x, orig_sr=orig_sr, target_sr=target_sr, tail=tail)
                                 for tail in ("zeros", "same", "full"))
            self.assertEqual((zeros.shape, same.shape), ((2, n), (2, n)))
            self.assertEqual(full.shape, (2, -(-243 * target_sr // orig_sr)))
            computed = np.count_nonzero(zeros[0])
            self.assertTrue((target_sr > orig_sr) <= n - computed < 2 + target_sr / orig_sr)
            np.testing.assert_array_equal(zeros[:, :computed], same[:, :computed])
            np.testing.assert_array_equal(same, everything[:, :n])
            np.testing.assert_array_equal(full, everything[:, :full.shape[-1]])
            self.assertFalse(everything[:, full.shape[-1]:].any())

    def test_ratio_beyond_the_filter_is_told(self):
        for call in (lambda: sa.resample(noise(99), orig_sr=65, target_sr=16),
                     lambda: sa.ResampleStream(orig_sr=65, target_sr=16)):
            with self.assertWarnsRegex(sa.SorvoAudioWarning, "65 to 16 Hz, .* the last one from 32 Hz"):
                call()
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            sa.resample(noise(99), orig_sr=64, target_sr=16)

    def test_measures(self):
        powers = np.float32(10 ** RNG.uniform(-14, 4, (3, 50)))  # measured: 2e-5 at 170 dB
        for options in ({}, dict(ref=np.max), dict(ref=0.007, top_db=None), dict(ref=0, amin=1e-3, top_db=20),
                        dict(ref=np.median, amin=1e-13, top_db=200), dict(ref=-2.5, amin=1e-20, top_db=None)):
            np.testing.assert_allclose(sa.power_to_db(powers, **options),
                                       references.decibels(powers, **options), atol=5e-5)
        np.testing.assert_allclose(sa.power_to_db(np.float32([np.nan, 0.1, 1e-3]), ref="max"), [-80, 0, -20],
                                   atol=1e-5)
        np.testing.assert_allclose(sa.power_to_db([-1.0], ref=np.max), [0])  # a function's value is not |ref|
        rows = np.stack([references.decibels(row, np.max) for row in powers])
        np.testing.assert_allclose(sa.power_to_db(powers, ref="max", axis=-1), rows, atol=5e-5)
        exported = np.empty_like(powers)
        sa.native.sorvoAudioConvertPowerToDB(exported, powers, powers.size, 30.0)
        np.testing.assert_array_equal(sa.power_to_db(powers, ref="max", top_db=30), exported)
        np.testing.assert_allclose(sa.log1p(np.float32(1e-6)), 1e-6, rtol=1e-6)
        y = noise(2, 3, 50)
        for axis in (None, -1, (-2, -1)):
            expected = (y - y.mean(axis, keepdims=True)) / y.std(axis, keepdims=True)
            self.assert_near(sa.standardize(y, axis=axis), expected, 1e-5)
        magnitude, phase = sa.magphase(spectrum := sa.stft(y[0], n_fft=16))
        self.assert_near(magnitude * phase, spectrum, 1e-6)
        self.assert_near(sa.magphase(spectrum, phase="angle")[1], np.angle(spectrum), 1e-6)
        self.assert_near(sa.magphase(spectrum, power=2)[0], np.abs(spectrum)**2, 1e-6)
        loud = np.concatenate([np.zeros(5000), np.ones(3000), np.zeros(5000)])
        trimmed, (begin, end) = sa.trim(loud, frame_length=512, hop_length=100)
        np.testing.assert_array_equal(trimmed, loud[begin:end])
        self.assertTrue(4700 <= begin <= 5000 and 8000 <= end <= 8400, (begin, end))
        np.testing.assert_array_equal(sa.trim(loud, top_db=0)[1], [0, 0])

    def test_batch_is_a_loop_and_layout_does_not_matter(self):
        y = noise(5, 4, 600)[:, ::2].transpose(1, 0, 2)  # [2, 5, 600], not contiguous
        spectrum = sa.stft(y, n_fft=64)
        b, a = [0.5, 0.5], [1, -0.3]
        for function, x in ((sa.fft, y), (sa.ifft, spectrum), (sa.magphase, spectrum), (sa.log1p, np.abs(y)),
                            (lambda x: sa.stft(x, n_fft=64, power=1), y), (sa.istft, spectrum),
                            (lambda x: sa.melspectrogram(x, sr=8000, n_fft=64, n_mels=8), y),
                            (lambda x: sa.lfilter(b, a, x), y), (lambda x: sa.filtfilt(b, a, x), y),
                            (lambda x: sa.sosfiltfilt([[0.5, 0.5, 0, 1, -0.3, 0]] * 2, x), y),
                            (lambda x: sa.resample(x, orig_sr=3, target_sr=2), y),
                            (lambda x: sa.standardize(x, axis=-1), y)):
            whole = function(x)
            whole = whole if isinstance(whole, tuple) else (whole,)
            for i in np.ndindex(2, 5):
                item = function(x[i].copy())
                for actual, expected in zip(whole, item if isinstance(item, tuple) else (item,)):
                    np.testing.assert_array_equal(actual[i], expected)
        self.assertEqual(sa.stft(np.zeros((0, 3, 100)), n_fft=64).shape, (0, 3, 33, 7))


class Errors(unittest.TestCase):
    def test_names_parameter_value_and_rule(self):
        y = np.zeros(4000, np.float32)
        huge = np.broadcast_to(np.float32(0), 2**31)
        cases = (
            (lambda: sa.stft(huge), ValueError, r"y.shape\[0\] is 2147483648; .* 1 to 2147483647"),
            (lambda: sa.log1p(huge.reshape(2, 2**30)), ValueError, "values of x is 2147483648; .* 1 to"),
            (lambda: sa.resample(y, orig_sr=1, target_sr=2, tail=True), ValueError, "tail is True; .*'full'"),
            (lambda: sa.resample(y, orig_sr=1, target_sr=2**31 - 1), ValueError, "y has 4000 .* more"),
            (lambda: sa.stft(y, n_fft=2**31), ValueError, "n_fft is 2147483648; .* 1 to 2147483647"),
            (lambda: sa.stft(y, hop_length=0), ValueError, "hop_length is 0; .* from 1"),
            (lambda: sa.stft(y, n_fft=400.0), TypeError, "n_fft is 400.0; it must be an integer"),
            (lambda: sa.stft(y, power=float("nan")), ValueError, "power is nan; .* greater than 0"),
            (lambda: sa.stft(y, window="kaiser"), ValueError, "window is 'kaiser'; .* 'hann', 'hamming'"),
            (lambda: sa.stft(y, center="constant"), ValueError, "center is 'constant'; .* True, False"),
            (lambda: sa.melspectrogram(y, sr=1, S=y), ValueError, "either y, a signal, or S"),
            (lambda: sa.melspectrogram(sr=1), ValueError, "either y, a signal, or S"),
            (lambda: sa.melspectrogram(S=y, sr=1), ValueError, "S has shape .* at least 2 dimensions"),
            (lambda: sa.melspectrogram(S=[[0.5]] * 33, sr=1), ValueError, "n_mels is 128; .* = 32"),
            (lambda: sa.stft(y, pad_mode=["reflect"]), ValueError, "pad_mode is .*'reflect', 'constant'"),
            (lambda: sa.melspectrogram(y, sr=8000, fft_norm="x"), ValueError, "fft_norm is 'x'"),
            (lambda: sa.melspectrogram(y, sr=8000, n_fft=64), ValueError, "n_mels is 128; .* at most .* 32"),
            (lambda: sa.mel_filterbank(sr=8000, n_fft=512, fmin=4000), ValueError, "fmax is 4000; .* fmin"),
            (lambda: sa.stft(y.astype(np.int16)), TypeError, r"y.astype\(numpy.float32\) / 32768"),
            (lambda: sa.log1p(np.arange(3, dtype=np.uint8)), TypeError, r"x.astype\(numpy.float32\)"),
            (lambda: sa.fft(y + 1j), TypeError, "x has dtype complex64; .* real"),
            (lambda: sa.istft(np.zeros((3, 3))), TypeError, r"stft_matrix.astype\(numpy.complex64\)"),
            (lambda: sa.istft(np.zeros(3, complex)), ValueError, "at least 2 dimensions"),
            (lambda: sa.fft(1.0), ValueError, "x has shape .* at least 1 dimension"),
            (lambda: sa.filtfilt([1], [1], y[:3]), ValueError, "padlen is 3; .* less than the 3 samples"),
            (lambda: sa.lfilter([1, 2], [1], y, zi=[1, 2]), ValueError, r"zi has shape \(2,\); .* \(1,\)"),
            (lambda: sa.sosfilt(np.zeros((2, 5)), y), ValueError, r"sos has shape \(2, 5\)"),
            (lambda: sa.sosfilt([[1, 0, 0, 2, 0, 0]], y), ValueError, r"sos\[:, 3\] is \[2\]; .* must be 1"),
            (lambda: sa.sosfilt([[1, 0, 0, 1, 0, 0]], y, zi=[1, 2]), ValueError, r"zi has .* \(1, 2\)"),
            (lambda: sa.sosfiltfilt([[1, 0, 1, 1, 0, 0]], y[:9]), ValueError, "padlen is 9; .* the 9 samples"),
            (lambda: sa.lfilter([], [1], y), ValueError, r"b has shape \(0,\)"),
            (lambda: sa.power_to_db(y, ref="mean"), ValueError, "ref is 'mean'; .* \"max\" or a function"),
            (lambda: sa.power_to_db(y, ref=[1, 2]), TypeError, r"ref is \[1, 2\]; it must be a number"),
            (lambda: sa.power_to_db([1e30], amin=1e-30), ValueError, r"amin is 1e-30; .* 6e-19"),
            (lambda: sa.stft(y[:300], n_fft=400), ValueError, r"y has 300 samples; .* n_fft = 400.*\(0, 100\)"),
            (lambda: sa.melspectrogram(y[:300], sr=8000), ValueError, "y has 300 samples; .* n_fft = 2048"),
            (lambda: sa.presets.whisper.features(y[:300]), ValueError, "y has 300 samples; .* at least .*400"),
            (lambda: sa.trim(y[:300]), ValueError, "y has 300 samples; .* frame_length = 2048"),
            (lambda: sa.istft(np.zeros((3, 1), complex)), ValueError, "stft_matrix has 1 frame, .* length, 2 "),
            (lambda: sa.standardize(np.zeros((2, 2)), axis=0), ValueError, "axis is 0; "),
            (lambda: sa.trim(np.zeros((2, 9))), ValueError, r"y has shape \(2, 9\); .* one signal"),
        )
        for i, (call, exception, message) in enumerate(cases):
            with self.subTest(i, message=message), self.assertRaisesRegex(exception, message):
                call()

    def test_standardize_says_that_it_lost_the_values(self):
        quiet = noise(3, 1000)
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            sa.standardize(quiet, axis=-1)
            self.assertTrue(np.isnan(sa.standardize(np.float32([1, np.nan]))).all())
        offset = np.float32(300 + 1e-3 * np.random.default_rng(0).random((40, 50)))
        with self.assertWarnsRegex(sa.SorvoAudioWarning, r" \d+ of 5000 values are NaN.*x - x.mean") as caught:
            result = sa.standardize(np.concatenate([offset, quiet.reshape(-1, 50)]), axis=-1)
        self.assertIn(f" {np.isnan(result).sum()} of 5000", str(caught.warning))
        self.assertEqual(caught.filename, __file__)
        self.assertFalse(np.isnan(result[40:]).any())

    def test_every_function_says_its_shapes(self):
        for name in sa.__all__:
            item = getattr(sa, name)
            if inspect.isfunction(item) or inspect.isclass(item) and not issubclass(item, Warning):
                self.assertRegex(inspect.getdoc(item), r"-> .*(\[|frames)|Number of frames", name)
                pad_mode = inspect.signature(item).parameters.get("pad_mode")
                if pad_mode and pad_mode.default != "constant":  # librosa's default since 0.10
                    self.assertRegex(inspect.getdoc(item).splitlines()[0], "librosa: zeros", name)


if __name__ == "__main__":
    unittest.main()
