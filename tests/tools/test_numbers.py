"""The numbers that sorvo-audio writes, against NumPy, SciPy and properties of the operations."""
import dataclasses
import json
import sys
import unittest

import numpy as np
import scipy.signal
from support import SOURCE, ToolTest, read_wav, sine, write_wav

sys.path[1:1] = [f"{SOURCE}/docs/measured", f"{SOURCE}/python"]
import sorvo_audio  # noqa: E402
from digests import published  # noqa: E402

EPS = np.finfo(np.float32).eps


def reference_mel(y, rate, n_fft, hop, n_mels, *, win=None, center="reflect", pad=0, power=2, fmin=0,
                  fmax=None, scale="slaney", norm="slaney", end=None):
    """The textbook in double: pad, cut, window, transform, weigh."""
    win, fmax = win or n_fft, fmax or rate / 2
    y = np.pad(y, pad, "reflect")
    if center != "none":
        y = np.pad(y, n_fft // 2, "reflect" if center == "reflect" else "constant")
    window = np.zeros(n_fft)
    window[(n_fft - win) // 2:][:win] = scipy.signal.get_window("hann", win)
    frames = np.lib.stride_tricks.sliding_window_view(y, n_fft)[::hop]
    spectrum = np.abs(np.fft.rfft(frames * window)).T ** power
    if scale == "htk":
        to_mel, to_hz = lambda f: 2595 * np.log10(1 + f / 700), lambda m: 700 * (10 ** (m / 2595) - 1)
    else:
        # 200/3 Hz a mel up to 1 kHz, then 27 mel for each factor of 6.4; tabulated for the inverse.
        hz = np.concatenate([np.arange(0, 1000, 0.5), np.geomspace(1000, 30000, 200001)])
        mel = np.where(hz < 1000, hz * 3 / 200, 15 + np.log(np.maximum(hz, 1) / 1000) * 27 / np.log(6.4))
        to_mel, to_hz = lambda f: np.interp(f, hz, mel), lambda m: np.interp(m, mel, hz)
    corners = to_hz(np.linspace(to_mel(fmin), to_mel(fmax), n_mels + 2))
    bins = np.arange(n_fft // 2 + 1) * rate / n_fft
    bank = np.array([np.interp(bins, corners[m:m + 3], [0, 1, 0], 0, 0) for m in range(n_mels)])
    if norm == "slaney":
        bank *= (2 / (corners[2:] - corners[:-2]))[:, None]
    return (bank @ spectrum)[:, :end]


class Features(ToolTest):
    CASES = [
        # options, the same as keywords of the reference, rate of the sound
        ("--n-fft 512 --hop-length 128", dict(n_fft=512, hop=128, n_mels=80), 16000),
        ("--n-fft 600 --win-length 401 --hop-length 77 --n-mels 30 --fmin 50 --fmax 3000 --mel-norm none",
         dict(n_fft=600, win=401, hop=77, n_mels=30, fmin=50, fmax=3000, norm="none"), 44100),
        ("--n-fft 512 --hop-length 150 --center zeros", dict(n_fft=512, hop=150, n_mels=80, center="zeros"), 16000),
        ("--preset whisper --linear", dict(n_fft=400, hop=160, n_mels=80, fmax=8000, end=-1), 16000),
        ("--preset whisper_128 --linear", dict(n_fft=400, hop=160, n_mels=128, fmax=8000, end=-1), 16000),
        ("--preset librosa", dict(n_fft=2048, hop=512, n_mels=128, center="zeros"), 22050),
        ("--preset torchaudio", dict(n_fft=400, hop=200, n_mels=128, scale="htk", norm="none"), 16000),
        ("--preset tacotron2 --linear", dict(n_fft=1024, hop=256, n_mels=80, fmax=8000, power=1), 22050),
        ("--preset hifigan --n-mels 40 --linear",
         dict(n_fft=1024, hop=256, n_mels=40, fmax=8000, power=1, center="none", pad=384), 22050),
    ]

    def test_mel_is_the_textbook_formula(self):
        rng = np.random.default_rng(1)
        for options, keywords, rate in self.CASES:
            with self.subTest(options):
                write_wav("noise.wav", 0.3 * rng.standard_normal(rate), rate)
                mel = self.make("mel", "noise.wav", "mel.npy", *options.split())
                expected = reference_mel(read_wav("noise.wav")[1], rate, **keywords)
                # Zero-padding counts one frame more where the hop does not divide the length.
                spare = keywords.get("center") == "zeros" and "--preset" not in options
                self.assertEqual(mel.shape[1] - expected.shape[1], spare)
                mel = mel[:, :expected.shape[1]]
                error = np.linalg.norm(mel - expected) / np.linalg.norm(expected)
                self.assertEqual(mel.dtype, np.float32)
                self.assertLess(error, 2e-5)  # measured: at most 7.2e-6, in float

    def test_presets_are_the_features_of_the_python_package(self):
        y = read_wav("speech.wav")[1].astype(np.float32)
        for name, *options in [["whisper"], ["whisper", "--pad-to-seconds", 30], ["whisper_128"], ["librosa"],
                               ["torchaudio"], ["tacotron2"], ["hifigan"], ["hifigan", "--pad-to-seconds", 5.00001]]:
            preset = getattr(sorvo_audio.presets, name)
            seconds = options[1] if options else None
            x = y
            if preset.sr != 16000:
                x = sorvo_audio.resample(y, orig_sr=16000, target_sr=preset.sr, tail="same")
            for linear in ([], ["--linear"]):
                with self.subTest([name, *options, *linear]):
                    if linear:
                        preset = dataclasses.replace(preset, compression=None)
                    made = self.make("mel", "speech.wav", "mel.npy", "--preset", name, *options, *linear)
                    np.testing.assert_array_equal(made, preset.features(x, pad_to_seconds=seconds))

    def test_the_digest_is_that_of_the_python_package_and_of_these_values_in_this_order(self):
        digest = json.loads(self.run_tool("mel", "speech.wav", "-o", "mel.npy", "--json")[0])["digest"]
        mel = np.load("mel.npy")
        self.assertEqual(digest, sorvo_audio.digest(mel))
        changed = mel.copy()
        changed[3, 7] = np.nextafter(mel[3, 7], np.float32(1))
        self.assertEqual(len({digest, sorvo_audio.digest(changed), sorvo_audio.digest(mel[:, ::-1])}), 3)

    def test_mfcc_are_those_of_the_python_package(self):
        y = read_wav("speech.wav")[1].astype(np.float32)
        for options, keywords in [("", dict(n_fft=512, n_mels=80)),
                                  ("--n-fft 400 --hop-length 160 --n-mels 23 --n-mfcc 23 --mel-scale htk",
                                   dict(n_fft=400, hop_length=160, n_mels=23, n_mfcc=23, htk=True))]:
            with self.subTest(options):
                made = self.make("mfcc", "speech.wav", "mfcc.npy", *options.split())
                np.testing.assert_array_equal(made, sorvo_audio.mfcc(y, sr=16000, **keywords))

    def test_decibels_files_and_raw_pictures_show_the_same_array(self):
        for power in (1, 2):
            linear = self.make("mel", "speech.wav", "a.npy", "--power", power)
            decibels = self.make("mel", "speech.wav", "b.npy", "--power", power, "--db", "--top-db", 50)
            expected = np.maximum(20 / power * np.log10(linear / linear.max() + 1e-20), -50)
            np.testing.assert_allclose(decibels, expected, atol=5e-5)
        table = self.make("mel", "speech.wav", "c.csv", "--db", "--top-db", 50)
        np.testing.assert_array_equal(table.real.astype(np.float32), decibels)

        self.run_tool("mel", "speech.wav", "-o", "raw.png", "--raw", "--top-db", 50)
        with open("raw.png", "rb") as file:
            header = file.read(24)
        size = int.from_bytes(header[16:20], "big"), int.from_bytes(header[20:24], "big")
        self.assertEqual(size, decibels.shape[::-1])

    def test_stft_is_that_of_scipy_and_its_csv_is_complex(self):
        y = read_wav("speech.wav")[1]
        options = "--n-fft 256 --hop-length 64 --center zeros".split()
        spectrum = self.make("stft", "speech.wav", "s.npy", *options)
        expected = scipy.signal.stft(y, window="hann", nperseg=256, noverlap=192)[2] * 128
        n = min(spectrum.shape[1], expected.shape[1])
        self.assertLess(np.abs(spectrum[:, :n] - expected[:, :n]).max(), 40 * EPS * np.abs(expected).max())
        np.testing.assert_array_equal(
            self.make("stft", "speech.wav", "s.csv", *options).astype(np.complex64), spectrum)
        power = self.make("stft", "speech.wav", "p.npy", *options, "--power", 2)
        np.testing.assert_allclose(power, np.abs(spectrum.astype(complex)) ** 2, rtol=4 * EPS, atol=1e-12)

    def test_istft_of_stft_reproduces_the_recording(self):
        original = read_wav("speech.wav")[1]
        for options in ("", "--n-fft 400 --window hamming --norm length", "--hop-length 100 --center zeros",
                        "--n-fft 1024 --win-length 800 --hop-length 200"):
            with self.subTest(options):
                options = options.split()
                self.make("stft", "speech.wav", "s.npy", *options)
                if "--n-fft" in options:  # istft knows it from the bins
                    at = options.index("--n-fft")
                    del options[at:at + 2]
                again = self.make("istft", "s.npy", "again.wav", *options, "--sample-rate", 16000,
                                  "--length", len(original))
                np.testing.assert_array_equal(again, original)  # 16 bits hide the float's rounding


class Digests(ToolTest):
    def test_every_function_has_the_published_bits(self):
        printed = dict(line.split() for line in self.run_tool("digest")[0].splitlines())
        self.assertEqual(printed, published())


class Sounds(ToolTest):
    def test_resampling_keeps_frequency_level_and_channels(self):
        tones = np.stack([sine(440, rate=48000), sine(1000, rate=48000, level=0.25)], axis=1)
        write_wav("stereo.wav", tones, 48000)
        for rate in (16000, 44100, 8000, 96000):
            self.run_tool("resample", "stereo.wav", "-o", f"{rate}.wav", "--sample-rate", rate)
            got_rate, got = read_wav(f"{rate}.wav")
            self.assertEqual((got_rate, got.shape), (rate, (rate, 2)))
            for channel, (hz, level) in enumerate([(440, 0.5), (1000, 0.25)]):
                # The tone fitted to the middle: level and what is left over beside it.
                middle = slice(rate // 10, -rate // 10)
                at = 2 * np.pi * hz * np.arange(rate)[middle] / rate
                basis = np.stack([np.sin(at), np.cos(at)], axis=1)
                fit, *_ = np.linalg.lstsq(basis, got[middle, channel], rcond=None)
                rest = got[middle, channel] - basis @ fit
                self.assertAlmostEqual(np.hypot(*fit), level, delta=2e-4 * level)
                self.assertLess(np.abs(rest).max(), 1e-4 * level + 1 / 32768)

    def test_the_end_of_a_resampled_sound_is_not_cut(self):
        write_wav("level.wav", np.full(1000, 0.5), 8000)
        for rate in (4000, 7000, 11025, 16000, 24000, 44100):
            got = self.make("resample", "level.wav", "x.npy", "--sample-rate", rate)
            self.assertEqual(len(got), -(-rate // 8))
            self.assertGreater(abs(got[-1]), 0.01, rate)  # exactly 0 where it was not computed

    def test_filters_are_those_of_scipy(self):
        y = np.stack([read_wav("speech.wav")[1], read_wav("speech.wav")[1][::-1]], axis=1)
        write_wav("stereo.wav", y)
        b, a = scipy.signal.butter(2, 0.3)
        given = ["--b", ",".join(map(str, b)), "--a", ",".join(map(str, a))]
        b, a = b.astype(np.float32).astype(float), a.astype(np.float32).astype(float)
        zi = scipy.signal.lfilter_zi(b, a)
        cases = [("filter", [], scipy.signal.lfilter(b, a, y, axis=0)),
                 ("filter", ["--settled"],
                  scipy.signal.lfilter(b, a, y, axis=0, zi=zi[:, None] * y[:1])[0])]
        for pad in ("odd", "even", "constant"):
            cases.append(("filtfilt", ["--pad-type", pad, "--pad-len", 30],
                          scipy.signal.filtfilt(b, a, y, axis=0, padtype=pad, padlen=30)))
        cases += [("filtfilt", [], scipy.signal.filtfilt(b, a, y, axis=0)),
                  ("filtfilt", ["--pad-type", "none"], scipy.signal.filtfilt(b, a, y, axis=0, padtype=None))]
        for command, options, expected in cases:
            with self.subTest(command=command, options=options):
                got = self.make(command, "stereo.wav", "f.npy", *given, *options)
                self.assertLess(np.abs(got.T - expected).max(), 2 * EPS)

    def test_trim_finds_the_burst_and_cuts_all_channels_alike(self):
        silence = np.zeros(16000)
        left = np.concatenate([silence, sine(300), silence])
        write_wav("burst.wav", np.stack([left, 0.5 * left], axis=1))
        got = self.make("trim", "burst.wav", "t.wav", "--frame-length", 512, "--hop-length", 128)
        self.assertAlmostEqual(len(got), 16000, delta=512 + 128)
        np.testing.assert_allclose(got[:, 1], 0.5 * got[:, 0], atol=1 / 32768)
        self.assertGreater(np.abs(got[:640]).max(), 0.4)

    def test_sample_formats_and_clipping(self):
        y = sine(100, 0.1, level=1.5)
        write_wav("loud.wav", y, dtype=np.float32)
        same = ["--b", "1"]
        np.testing.assert_array_equal(self.make("filter", "loud.wav", "f.wav", *same), y.astype(np.float32))
        clipped = self.make("filter", "loud.wav", "c.wav", *same, "--sample-format", "pcm16")
        np.testing.assert_allclose(clipped, y.clip(-1, 32767 / 32768), atol=0.5001 / 32768)
        out, _ = self.run_tool("filter", "loud.wav", "-o", "d.flac", *same)
        beyond = int((np.abs(y) >= 1).sum())
        self.assertIn(f"{beyond} samples beyond full scale clipped", out)
        for kind, step in (("pcm24", 2.0 ** -23), ("pcm16", 2.0 ** -15)):
            self.run_tool("filter", "speech.wav", "-o", "a.flac", "--b", "0.1", "--sample-format", kind, "--force")
            flac = self.make("filter", "a.flac", "b.npy", *same)
            exact = self.make("filter", "speech.wav", "e.npy", "--b", "0.1")
            np.testing.assert_allclose(flac, exact, atol=0.5001 * step)


if __name__ == "__main__":
    unittest.main()
