"""Sound through pipes, in blocks, and cut short."""
import contextlib
import io
import os
import re
import struct
import subprocess
import sys
import unittest

import numpy as np
import scipy.io.wavfile
import scipy.signal
from support import SOURCE, TOOL, ToolTest, read_wav, write_wav

sys.path.insert(0, f"{SOURCE}/python")
import sorvo_audio  # noqa: E402

RNG = np.random.default_rng(5)
UNKNOWN = 0xFFFFFFFF


def wav_bytes(samples, rate=16000, data_n=None, chunk=b""):
    """A WAV of samples [n, channels], with `chunk` before the samples and any length in its header."""
    buffer = io.BytesIO()
    scipy.io.wavfile.write(buffer, rate, samples)
    data = buffer.getvalue()
    at = data.index(b"data") + 4
    return data[:at - 4] + chunk + b"data" + struct.pack("<I", data_n or len(data) - at - 4) + data[at + 4:]


def noise(n, channel_n=1, dtype=np.int16):
    samples = RNG.uniform(-0.9, 0.9, (n, channel_n))
    return (samples * 32767).astype(np.int16) if dtype == np.int16 else samples.astype(dtype)


class StreamTest(ToolTest):
    def pipe(self, arguments, data, expect=0):
        """Gives bytes to the program; the bytes that it writes, and its errors."""
        result = subprocess.run([TOOL, *arguments.split()], input=data, capture_output=True, timeout=300)
        self.assertEqual(result.returncode, expect, f"{arguments}\n{result.stderr.decode()}")
        return result.stdout, result.stderr.decode()

    def pipe_array(self, arguments, data):
        return np.load(io.BytesIO(self.pipe(arguments + " -o -", data)[0]))


class Blocks(StreamTest):
    """The program works in blocks; the library, called here by the Python package, on the whole."""
    N = 300_007  # several blocks of any command

    def setUp(self):
        super().setUp()
        self.stereo = noise(self.N, 2)
        scipy.io.wavfile.write("stereo.wav", 16000, self.stereo)
        channels = (self.stereo.astype(np.float32) / 32768).T
        self.channels = np.ascontiguousarray(channels)
        self.mono = channels.astype(float).mean(axis=0).astype(np.float32)

    def test_spectra_are_those_of_the_whole(self):
        for fft_n, hop, center in [(512, 128, "reflect"), (400, 160, "zeros"), (399, 77, "none"), (64, 1000, "reflect"),
                                   (40_000, 70_001, "zeros"), (200_000, 40_000, "reflect"), (16, 1, "none")]:
            keywords = dict(n_fft=fft_n, hop_length=hop, center=center != "none",
                            pad_mode="constant" if center == "zeros" else "reflect")
            options = f"--n-fft {fft_n} --hop-length {hop} --center {center}".split()
            with self.subTest(options):
                whole = sorvo_audio.stft(self.mono, **keywords)
                np.testing.assert_array_equal(self.make("stft", "stereo.wav", "s.npy", *options), whole)
                powers = sorvo_audio.stft(self.mono, **keywords, power=2)
                np.testing.assert_array_equal(
                    self.make("stft", "stereo.wav", "p.npy", *options, "--power", 2), powers)
                np.testing.assert_array_equal(
                    self.make("stft", "stereo.wav", "d.npy", *options, "--db", "--top-db", 30),
                    sorvo_audio.power_to_db(powers, ref="max", top_db=30))
                bands = sorvo_audio.melspectrogram(self.mono, sr=16000, n_mels=7, **keywords)
                np.testing.assert_array_equal(
                    self.make("mel", "stereo.wav", "m.npy", *options, "--n-mels", 7), bands)
        padded = np.pad(self.mono, 70_000, "reflect")
        np.testing.assert_array_equal(
            self.make("mel", "stereo.wav", "m.npy", "--pad", 70_000, "--center", "none"),
            sorvo_audio.melspectrogram(padded, sr=16000, n_fft=512, n_mels=80, center=False))

    def test_what_does_not_fit_into_memory_is_the_same(self):
        long = noise(2_700_000)
        scipy.io.wavfile.write("long.wav", 16000, long)
        whole = sorvo_audio.stft(long[:, 0].astype(np.float32) / 32768, n_fft=512, hop_length=100)
        self.assertGreater(whole.nbytes, 3 * 2**24)
        np.testing.assert_array_equal(
            self.make("stft", "long.wav", "s.npy", "--n-fft", 512, "--hop-length", 100), whole)

    def test_sounds_are_those_of_the_whole(self):
        for rate in (8000, 48000, 44100, 16001, 300):
            with self.subTest(rate):
                whole = sorvo_audio.resample(self.channels, orig_sr=16000, target_sr=rate, tail="same")
                np.testing.assert_array_equal(
                    self.make("resample", "stereo.wav", "r.npy", "--sample-rate", rate), whole)
        np.testing.assert_array_equal(self.make("filter", "stereo.wav", "f.npy", "--b", "0.2,0.1", "--a", "1,-0.7"),
                                      sorvo_audio.lfilter([0.2, 0.1], [1, -0.7], self.channels))
        sos = scipy.signal.butter(5, 0.1, output="sos")
        np.save("sos.npy", sos)
        words = [word for row in sos for word in ("--sos", ",".join(map(repr, row.tolist())))]
        zi = sorvo_audio.sosfilt_zi(sos)[:, None] * self.channels[:, :1]
        cases = [("filter", [], sorvo_audio.sosfilt(sos, self.channels)),
                 ("filter", ["--settled"], sorvo_audio.sosfilt(sos, self.channels, zi=zi)[0])]
        for pad in ("odd", "even", "constant", None):
            cases.append(("filtfilt", ["--pad-type", str(pad).lower()],
                          sorvo_audio.sosfiltfilt(sos, self.channels, padtype=pad)))
        for command, options, whole in cases:
            for given in (words, ["--sos", "sos.npy"]):
                with self.subTest(command=command, options=options, given=given[1]):
                    np.testing.assert_array_equal(self.make(command, "stereo.wav", "f.npy", *given, *options), whole)


class Pipes(StreamTest):
    LIST = b"LIST\x1a\0\0\0INFOISFT\x0e\0\0\0Lavf59.27.100\0"

    def test_sound_of_every_kind_is_read(self):
        mono, stereo = noise(100_001), noise(100_001, 2)
        floats = stereo.astype(np.float32) / 32768
        scipy.io.wavfile.write("m.wav", 16000, mono)
        scipy.io.wavfile.write("s.wav", 16000, stereo)
        self.run_tool("filter", "s.wav", "-o", "s.flac", "--b", "1")
        arrays = {name: io.BytesIO() for name in ("1d", "2d", "double")}
        np.save(arrays["1d"], mono[:, 0].astype(np.float32) / 32768)
        np.save(arrays["2d"], floats.T.copy(order="C"))
        np.save(arrays["double"], floats.T.astype(float, order="C"))
        with open("s.flac", "rb") as file:
            flac = file.read()
        cases = [("m", "", wav_bytes(mono)), ("s", "", wav_bytes(stereo)), ("s", "", wav_bytes(floats)),
                 ("s", "", wav_bytes(floats.astype(float))), ("s", "", wav_bytes(stereo.astype(np.int32) * 65536)),
                 ("s", "", wav_bytes(stereo, data_n=UNKNOWN, chunk=self.LIST)),
                 ("s", "", wav_bytes(stereo, data_n=0x7FFFF000)),
                 ("s", "", b"RF64\xff\xff\xff\xffWAVEds64\x1c\0\0\0" + bytes(28)
                  + wav_bytes(stereo, data_n=UNKNOWN)[12:]),
                 ("s", "", wav_bytes(stereo) + self.LIST),
                 ("s", "--rate 16000 --channels 2", floats.tobytes()),
                 ("m", "--rate 16000", arrays["1d"].getvalue()), ("s", "--rate 16000", arrays["2d"].getvalue()),
                 ("s", "--rate 16000", arrays["double"].getvalue()), ("s", "", flac)]
        expected = {name: self.make("resample", f"{name}.wav", f"{name}.npy", "--sample-rate", 8000) for name in "ms"}
        for i, (name, options, data) in enumerate(cases):
            with self.subTest(i):
                np.testing.assert_array_equal(
                    self.pipe_array(f"resample - --sample-rate 8000 --format npy {options}", data), expected[name])
        mel = self.make("mel", "s.wav", "mel.npy", "--db")
        np.testing.assert_array_equal(self.pipe_array("mel - --db", wav_bytes(stereo, data_n=UNKNOWN)), mel)
        floats.tofile("s.f32")
        np.testing.assert_array_equal(
            self.make("mel", "s.f32", "x.npy", "--db", "--rate", 16000, "--channels", 2), mel)
        spectrum = self.make("stft", "m.wav", "spectrum.npy")
        with open("spectrum.npy", "rb") as file:
            again, _ = self.pipe("istft - -o - --sample-rate 16000 --length 100001 --sample-format float", file.read())
        self.assertEqual(spectrum.dtype, np.complex64)
        np.testing.assert_allclose(scipy.io.wavfile.read(io.BytesIO(again))[1], mono[:, 0] / 32768, atol=1e-6)

    def test_output_is_that_of_a_file(self):
        stereo = noise(70_001, 2)
        scipy.io.wavfile.write("s.wav", 16000, stereo)
        with open("s.wav", "rb") as file:
            data = file.read()
        for kind in ("npy", "csv", "flac", "wav"):
            for word in ("pcm16", "pcm24", "float"):
                made = f"x.{kind}"
                command = f"filter --b 0.5 --sample-format {word}"
                self.run_tool(*command.split(), "s.wav", "-o", made, "--force")
                with open(made, "rb") as file:
                    expected = file.read()
                got, _ = self.pipe(f"{command} s.wav -o - --format {kind}", b"")
                with self.subTest(kind=kind, word=word):
                    if kind == "wav" and word == "float":  # libsndfile adds a chunk
                        np.testing.assert_array_equal(scipy.io.wavfile.read(io.BytesIO(got))[1], read_wav(made)[1])
                    else:
                        self.assertEqual(got, expected)
        raw = np.frombuffer(self.pipe("filter - -o - --b 0.5 --format raw", data)[0], np.float32)
        np.testing.assert_array_equal(raw.reshape(-1, 2), stereo.astype(np.float32) / 65536)
        png, _ = self.pipe("stft s.wav -o - --format png", b"")
        self.assertEqual(png[:4], b"\x89PNG")
        # Of a sound whose length is not known, the length is left open, and read again as such.
        chain = f"'{TOOL}' filter - -o - --b 1,-0.9 | '{TOOL}' mel - -o -"
        got = subprocess.run(["/bin/sh", "-c", chain], input=wav_bytes(stereo, data_n=UNKNOWN), capture_output=True,
                             check=True)
        self.run_tool("filter", "s.wav", "-o", "e.wav", "--b", "1,-0.9")
        np.testing.assert_array_equal(np.load(io.BytesIO(got.stdout)), self.make("mel", "e.wav", "e.npy"))
        # A device is written into, not replaced.
        self.run_tool("mel", "s.wav", "-o", "/dev/null", "--force")
        self.assertFalse(os.path.isfile("/dev/null"))

    def test_errors(self):
        stereo = noise(5000, 2)
        data = wav_bytes(stereo)
        np.save("cube.npy", np.zeros((2, 3, 4), np.float32))
        for code, arguments, given, message in [
                (2, "mel - speech.wav -o x/", b"", "-: stands beside other inputs"),
                (1, "mel cube.npy -o -", b"", "cube.npy: is no array of samples"),
                (2, "mel x.f32 -o -", b"", "--rate: is missing, and x.f32"),
                (1, "mel - -o -", b"", "-: cannot be read as sound"),
                (1, "mel - -o -", b"no sound, but long enough to be looked at", "-: cannot be read as sound"),
                (1, "mel - -o - --rate 8000", b"", "-: holds no samples"),
                (1, "mel - -o - --rate 8000", np.zeros(999, np.float32).tobytes()[:-1], "cut short .* within a sample"),
                (3, "mel speech.wav -o /dev/full", b"", "/dev/full: cannot be written"),
                (3, "filter speech.wav -o /dev/full --b 1", b"", "/dev/full: cannot be written"),
                (3, "stft speech.wav --picture /dev/full", b"", "/dev/full: cannot be written")]:
            open("x.f32", "wb").close()
            with self.subTest(arguments):
                _, errors = self.pipe(arguments, given, code)
                self.assertRegex(errors, message)
        # A reader that goes away is an error of writing, not the program's end by a signal.
        running = subprocess.Popen([TOOL, *"filter - -o - --b 1".split()], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        running.stdout.close()
        with contextlib.suppress(BrokenPipeError):
            running.stdin.write(data * 100)
        with contextlib.suppress(BrokenPipeError):
            running.stdin.close()
        self.assertRegex(running.stderr.read().decode(), "standard output: cannot be written")
        running.stderr.close()
        self.assertEqual(running.wait(), 3)


class CutShort(StreamTest):
    def test_less_than_the_header_promises_is_an_error_unless_allowed(self):
        write_wav("a.wav", noise(20_000)[:, 0] / 32768)
        self.run_tool("filter", "a.wav", "-o", "a.flac", "--b", "1")
        with open("a.wav", "rb") as file:
            wav = file.read()
        with open("a.flac", "rb") as file:
            flac = file.read()
        samples = np.frombuffer(wav[44:], "<i2")
        au = b".snd" + struct.pack(">5I", 24, 40_000, 3, 16000, 1) + samples.astype(">i2").tobytes()
        for name, data in (("cut.wav", wav[:20_044]), ("cut.flac", flac[:len(flac) // 2]), ("cut.au", au[:20_024])):
            with open(name, "wb") as file:
                file.write(data)
            with self.subTest(name):
                _, errors = self.run_tool("filter", name, "-o", "x.npy", "--b", "1", expect=1)
                self.assertRegex(errors, rf"{name}: is cut short or damaged after \d+ samples: .*--allow-truncated")
                self.assertFalse(os.path.exists("x.npy"))
                got = self.make("filter", name, "y.npy", "--b", "1", "--allow-truncated")
                np.testing.assert_array_equal(got, samples[:len(got)] / 32768)
                if name != "cut.flac":
                    self.assertEqual(len(got), 10_000)
        self.pipe("mel - -o -", wav[:20_044], expect=1)
        self.assertEqual(self.pipe("mel - -o -", wav[:20_044], expect=1)[0], b"")
        self.pipe("mel - -o - --allow-truncated", wav[:20_044])
        # A chunk that the whole promises and that does not come is not the sound's end.
        with open("short-riff.wav", "wb") as file:
            file.write(wav[:4] + struct.pack("<I", len(wav) + 100) + wav[8:])
        self.make("mel", "short-riff.wav", "x.npy")

    def test_a_rate_far_from_the_wanted_one_is_refused_unless_allowed(self):
        write_wav("slow.wav", noise(3000)[:, 0] / 32768, rate=1)
        write_wav("fast.wav", noise(3000)[:, 0] / 32768, rate=2_000_000_011)
        for command in ("resample --sample-rate 16000", "mel --sample-rate 16000"):
            for name in ("slow.wav", "fast.wav"):
                _, errors = self.run_tool(*command.split(), name, "-o", "x.npy", expect=1)
                self.assertRegex(errors, f"{name}: has a rate of .*at most 64, --max-ratio.*--rate")
        self.assertEqual(len(self.make("resample", "slow.wav", "x.npy", "--sample-rate", 100, "--max-ratio", 100)),
                         300_000)
        out, _ = self.run_tool("resample", "speech.wav", "-o", "z.npy", "--sample-rate", 3999)
        self.assertIn("note: from 16000 to 3999 Hz, what lies above the new Nyquist frequency folds back", out)
        out, _ = self.run_tool("resample", "slow.wav", "-o", "y.npy", "--rate", 8000, "--sample-rate", 16000)
        self.assertIn("note: taken as 8000 Hz, against its header's 1", out)
        self.assertEqual(len(np.load("y.npy")), 6000)


@unittest.skipIf(b"__asan_init" in open(TOOL, "rb").read() or b"__tsan_init" in open(TOOL, "rb").read(),
                 "sanitizers take memory of their own")
class Memory(StreamTest):
    MOST = 100e6

    def peak_bytes(self, arguments, blocks):
        """Runs the program on `blocks`; the largest memory that it had, which a small process measures: that of
        a child counts from the memory of its parent on."""
        measure = ("import resource, subprocess, sys; code = subprocess.call(sys.argv[1:]);"
                   "print('peak', resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss, file=sys.stderr); sys.exit(code)")
        with open("errors", "w+") as errors, open("out", "wb") as out:
            running = subprocess.Popen([sys.executable, "-c", measure, TOOL, *arguments.split()],
                                       stdin=subprocess.PIPE, stdout=out, stderr=errors)
            with contextlib.suppress(BrokenPipeError):  # the program's own words tell more
                for block in blocks:
                    running.stdin.write(block)
            with contextlib.suppress(BrokenPipeError):
                running.stdin.close()
            code = running.wait()
            errors.seek(0)
            said = errors.read()
            self.assertEqual(code, 0, said)
        return int(re.search(r"^peak (\d+)", said, re.M)[1]) * 1024

    def test_is_bounded_for_any_length(self):
        minutes, rate = 6, 48000
        head = wav_bytes(noise(1, 2), rate, data_n=UNKNOWN)[:44]
        second = noise(rate, 2).tobytes()
        for arguments in ("mel - -o - --db", "stft - -o - --power 2 --hop-length 512",
                          "resample - -o - --sample-rate 16000", "filter - -o - --b 1,-0.97",
                          "resample - -o - --sample-rate 16000 --format npy",
                          "mfcc - -o - --n-mfcc 40 --hop-length 80", "stft - -o - --power 2 --picture x.png --force"):
            with self.subTest(arguments):
                peak = self.peak_bytes(arguments, [head] + minutes * 60 * [second])
                self.assertLess(peak, self.MOST)  # measured: 10 to 31 MB; the samples alone are 138 MB as floats
                self.assertGreater(os.path.getsize("out"), 2e7)


if __name__ == "__main__":
    unittest.main()
