"""How sorvo-audio behaves: help, errors and exit codes, batches, files that are kept or replaced."""
import contextlib
import dataclasses
import glob
import json
import os
import pty
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import unittest
import zlib

import numpy as np
import scipy.signal
from support import SOURCE, TOOL, ToolTest, read_png, read_wav, sine, write_wav

COMMANDS = "info stft istft mel mfcc resample filter filtfilt trim presets explain digest".split()


def read_text(path):
    with open(path) as file:
        return file.read()


class CommandLineTest(ToolTest):
    def make_examples_folder(self):
        """The files that the examples of the help name."""
        write_wav("stereo.wav", np.stack([sine(440), sine(1000)], axis=1))
        self.run_tool("filter", "stereo.wav", "-o", "stereo.flac", "--b", "1")
        os.makedirs("recordings/deeper")
        for name in ("recordings/a.wav", "recordings/b.wav", "recordings/deeper/a.wav"):
            write_wav(name, sine(300, 0.5))

    def files(self):
        return sorted(glob.glob("**", recursive=True) + glob.glob("**/.*", recursive=True))


class Help(CommandLineTest):
    def test_every_example_of_the_help_runs(self):
        self.make_examples_folder()
        before = set(self.files())
        for command in COMMANDS:
            if command == "istft":
                self.run_tool("stft", "speech.wav", "-o", "spectrum.npy")
                self.run_tool("stft", "recordings", "-o", "spectra/")
            text, _ = self.run_tool(command, "--help")
            examples = re.findall(r"^  sorvo-audio (.*)$", text.split("Examples:")[1], re.M)
            self.assertEqual(len(examples), 1 if command == "digest" else 3, command)
            for example in examples:
                with self.subTest(example):
                    self.run_tool(*shlex.split(example))
            for new in sorted(set(self.files()) - before, reverse=True):
                os.rmdir(new) if os.path.isdir(new) else os.remove(new)

    def test_the_manual_page_names_every_command_and_option(self):
        page = read_text(f"{SOURCE}/docs/man/sorvo-audio.1").replace("\\-", "-")
        for command in COMMANDS:
            self.assertRegex(page, rf"(?m)^\.(SS|B|TP|BR?) ?{command}\b", command)
            text, _ = self.run_tool(command, "--help")
            for option in set(re.findall(r"--[a-z][a-z-]*", text.split("Examples:")[0])):
                self.assertIn(option, page, f"{command} {option}")
        self.assertIn(self.run_tool("--version")[0].split()[1], page)


class Errors(CommandLineTest):
    def test_say_what_is_wrong_and_end_with_the_right_code(self):
        write_wav("short.wav", sine(300, 0.01))
        open("empty.wav", "w").close()
        with open("noise.wav", "wb") as file:
            file.write(b"RIFF no sound at all" * 20)
        np.save("real.npy", np.zeros((3, 4)))
        np.save("columns.npy", np.asfortranarray(np.zeros((3, 4), np.complex64)))
        np.save("whole.npy", np.zeros((3, 4), np.complex64))
        shutil.copy("whole.npy", "cut.npy")
        os.truncate("cut.npy", os.path.getsize("cut.npy") - 8)
        open("kept.npy", "w").close()
        cases = [
            # Usage: the option, the value or limit.
            (2, "", ": no command is given"),
            (2, "melt speech.wav", "melt is no command; did you mean mel[?]"),
            (2, "--verson", "--verson is no option here; did you mean --version[?]"),
            (2, "mel speech.wav --n_ftt=400", "mel: --n_ftt is no option here; did you mean --n-fft[?]"),
            (2, "mel speech.wav --hop 400", "--hop is no option here; did you mean --hop-length[?]"),
            (2, "filter speech.wav --settle", "--settle is no option here; did you mean --settled[?]"),
            (2, "explain stft --centre none", "explain: --centre .* --center[?]"),
            (2, "stft speech.wav --bananas", "--bananas is no option here; see"),
            (2, "mel", " mel: INPUT is required"),
            (2, "mel speech.wav", "mel: -o: no output"),
            (2, "mel speech.wav -o x.mp4", r"-o: x\.mp4 .*\.npy \.csv \.png"),
            (2, "mel speech.wav -o x.npy --picture x.jpg", r"--picture: x\.jpg .*\.png"),
            (2, "mel speech.wav -o x.npy --n-fft 0", "--n-fft: 0 .*at least 1"),
            (2, "mel speech.wav -o x.npy --n-fft many", "--n-fft"),
            (2, "mel speech.wav -o x.npy --n-fft 99999999999", "--n-fft"),
            (2, "mel speech.wav -o x.npy --window kaiser", r"--window: kaiser .*hann\|hamming"),
            (2, "mel speech.wav -o x.npy --n-mels 300", "--n-mels: 300 .*at most 256"),
            (2, "mel speech.wav -o x.npy --fmin 9000", "--fmin: 9000 .*--fmax 8000"),
            (2, "mel speech.wav -o x.npy --power 0 --db", "--power"),
            (2, "mel speech.wav -o x.npy --preset nobody", "--preset"),
            (2, "mel speech.wav -o x.png --raw --width 400", "--width"),
            (2, "stft speech.wav -o x.png --height 100", "--height: .*at least 200"),
            (2, "mfcc speech.wav -o x.npy --n-mfcc 81", "--n-mfcc: 81 .*80"),
            (2, "mel speech.wav -o x.npy --force --skip-existing", "--force.*--skip-existing"),
            (2, "mel speech.wav short.wav -o x.npy", r"x\.npy: .*2 inputs.*folder"),
            (2, "mel speech.wav ./speech.wav -o x/", "speech.wav and of ./speech.wav"),
            (2, "mel . -o x/ --format wav", "--format"),
            (2, "istft whole.npy -o x.wav", "--sample-rate"),
            (2, "filter speech.wav -o x.wav", "--b"),
            (2, "filter speech.wav -o x.wav --b 1,two", "--b: 'two'"),
            (2, "filter speech.wav -o x.wav --b 1 --a 0,1", "--a: .*0"),
            (2, "filter speech.wav -o x.wav --sos 1,2,1,1,0", "--sos: 1,2,1,1,0 has 5 .*6 in each"),
            (2, "filter speech.wav -o x.wav --sos 1,2,1,0,1,0", "--sos: .*0"),
            (2, "filtfilt speech.wav -o x.wav --sos real.npy", "--sos: real.npy is no .*6"),
            (2, "filtfilt speech.wav -o x.wav --b 1 --sos 1,0,0,1,0,0", "--sos: contradicts --b"),
            # Inputs: the file.
            (1, "mel none.wav -o x.npy", "mel: none.wav: .*no such file"),
            (1, "mel empty.wav -o x.npy", "empty.wav: "),
            (1, "mel noise.wav -o x.npy", "noise.wav: cannot be read as sound"),
            (2, "mel speech.wav -o x.npy --preset hifigan --power 2", "--power: .*hifigan .*--power 1"),
            (2, "mel speech.wav -o x.npy --preset whisper --db --linear", "--db: .*--linear"),
            (1, "mel short.wav -o x.npy", r"short.wav: .*160 samples .*need 512.*--n-fft"),
            (1, "mel short.wav -o x.npy --preset whisper", "short.wav: .*160 samples .*need 400.*--pad-to-seconds"),
            (1, "mel short.wav -o x.npy --preset hifigan", "short.wav: .*221 samples .*need 385"),
            (1, "mel speech.wav -o x.npy --pad-to-seconds 3", "speech.wav: .*more than 48000 .*--pad-to-seconds 3"),
            (1, "filtfilt short.wav -o x.wav --b 1 --pad-len 160", "short.wav: .*--pad-len"),
            (1, "trim short.wav -o x.wav", "short.wav: .*--frame-length"),
            (1, "filter speech.wav -o x.wav --b 1 --a 1,-2", "infinite"),
            (1, "istft real.npy -o x.wav --sample-rate 8000", "real.npy: is no complex"),
            (1, "istft columns.npy -o x.wav --sample-rate 8000", "columns.npy: .*ascontiguousarray"),
            (1, "istft cut.npy -o x.wav --sample-rate 8000", "cut.npy: .*header"),
            (1, "istft short.wav -o x.wav --sample-rate 8000", "short.wav: is no .npy"),
            (1, "info none.wav speech.wav", "info: none.wav"),
            # Outputs.
            (3, "mel speech.wav -o kept.npy", "kept.npy: exists .*--force"),
            (3, "mel speech.wav -o speech.wav/x.npy", "speech.wav/x.npy: cannot be written"),
            (3, "mel speech.wav -o /proc/none/x.npy", "/proc/none/x.npy: cannot be written"),
        ]
        before = self.files()
        for code, arguments, message in cases:
            with self.subTest(arguments):
                _, errors = self.run_tool(*shlex.split(arguments), expect=code)
                self.assertRegex(errors, r"^sorvo-audio" + ".*" + message)
                self.assertEqual(self.files(), before)

    def test_what_cannot_be_printed_is_an_error(self):
        for arguments in ("--help", "presets", "info speech.wav", "mel speech.wav -o x.npy --force"):
            with open("/dev/full", "w") as full, self.subTest(arguments):
                result = subprocess.run([TOOL, *arguments.split()], stdout=full, stderr=subprocess.PIPE, text=True)
                self.assertEqual(result.returncode, 3)
                self.assertRegex(result.stderr, "standard output: cannot be written")

    def test_a_disk_that_fills_leaves_nothing_behind(self):
        def limit_files():
            resource.setrlimit(resource.RLIMIT_FSIZE, (20000, 20000))
        for name in ("x.npy", "x.csv"):
            self.run_tool("mel", "speech.wav", "-o", name, expect=3, preexec_fn=limit_files)
        for name in ("x.wav", "x.flac"):
            self.run_tool("filter", "speech.wav", "-o", name, "--b", 1, expect=3, preexec_fn=limit_files)
        self.assertEqual(self.files(), ["speech.wav"])


class Batches(CommandLineTest):
    def make_recordings(self, count, seconds=0.5):
        for i in range(count):
            os.makedirs(f"in/{i % 3}", exist_ok=True)
            write_wav(f"in/{i % 3}/{i}.wav", sine(200 + 10 * i, seconds))

    def test_many_threads_make_what_one_call_each_makes(self):
        self.make_recordings(20)
        _, errors = self.run_tool("mel", "in", "-o", "out", "-j", 4, "--picture", "pictures")
        tenths = re.findall(r"^mel: (\d+)/20 done, \d+ x real time, 0 failed$", errors, re.M)
        self.assertEqual(list(map(int, tenths)), list(range(2, 21, 2)))
        self.assertRegex(errors, "mel: 20 done, 0 skipped, 0 failed in ")
        for i in range(20):
            single = self.make("mel", f"in/{i % 3}/{i}.wav", "one.npy")
            np.testing.assert_array_equal(np.load(f"out/{i % 3}/{i}.npy"), single)
            self.assertTrue(os.path.exists(f"pictures/{i % 3}/{i}.png"))

    def test_bad_files_do_not_stop_the_rest_and_are_named(self):
        self.make_recordings(8)
        for name in ("in/0/bad.wav", "in/2/worse.wav"):
            with open(name, "w") as file:
                file.write("no sound")
        out, errors = self.run_tool("stft", "in", "-o", "out", "-j", 2, "--json", expect=1)
        self.assertRegex(errors, "8 done, 0 skipped, 2 failed")
        for name in ("in/0/bad.wav", "in/2/worse.wav"):
            self.assertRegex(errors, f"(?m)^sorvo-audio stft: {name}: cannot be read")
        reports = [json.loads(line) for line in out.splitlines()]
        failed = {report["input"] for report in reports if report["status"] == "failed"}
        self.assertEqual(failed, {"in/0/bad.wav", "in/2/worse.wav"})
        for report in reports:
            if report["status"] == "done":
                self.assertEqual(list(np.load(report["output"]).shape), report["shape"])

    def test_an_empty_folder_does_not_stop_the_rest(self):
        self.make_recordings(3)
        os.makedirs("empty")
        out, errors = self.run_tool("mel", "empty", "in", "-o", "out", "--json", expect=1)
        self.assertRegex(errors, "3 done, 0 skipped, 1 failed")
        self.assertRegex(errors, "(?m)^sorvo-audio mel: empty: holds no sound file")
        self.assertEqual([json.loads(line)["status"] for line in out.splitlines()], ["failed"] + 3 * ["done"])

    def test_what_repeats_is_counted_and_quiet_prints_errors_alone(self):
        for i in range(5):
            write_wav(f"{i}.wav", np.zeros((8000, 2)))
        _, errors = self.run_tool("mel", *[f"{i}.wav" for i in range(5)], "speech.wav", "-o", "out")
        self.assertIn("note: 5 inputs: 2 channels mixed down to one\n", errors)
        self.assertEqual(errors.count("silent"), 1)
        self.assertEqual(self.run_tool("mel", "0.wav", "speech.wav", "-o", "out", "--force", "-q"), ("", ""))
        self.assertEqual(self.run_tool("mel", "speech.wav", "-o", "x.npy", "-q"), ("", ""))
        _, errors = self.run_tool("mel", "none.wav", "speech.wav", "-o", "out", "--force", "-q", expect=1)
        self.assertRegex(errors, r"\Asorvo-audio mel: none.wav: .*\n\Z")

    def test_json_is_valid_for_any_name(self):
        names = [b'q"uo\\te\n\x01\x7f.wav', b"\xff\xc0\x80\xed\xa0\x80\xf4\x90\x80\x80 \xe2.wav",
                 "grüße 🎵.wav".encode()]
        for name in names:
            shutil.copy("speech.wav", name)
        result = subprocess.run([TOOL, "info", "--json", *names], capture_output=True, check=True)
        got = [json.loads(line)["input"] for line in result.stdout.decode("utf-8").splitlines()]
        self.assertEqual(got, [name.decode("utf-8", "replace") for name in names])

    def test_existing_files_are_kept_skipped_or_replaced(self):
        self.make_recordings(3)
        os.makedirs("out/1")
        with open("out/1/1.npy", "w") as file:
            file.write("mine")
        _, errors = self.run_tool("mel", "in", "-o", "out", expect=3)
        self.assertRegex(errors, "out/1/1.npy: exists already")
        self.assertEqual(read_text("out/1/1.npy"), "mine")
        self.assertEqual(np.load("out/0/0.npy").shape[0], 80)

        _, errors = self.run_tool("mel", "in", "-o", "out", "--skip-existing", "--picture", "out")
        self.assertRegex(errors, "3 done, 0 skipped")  # for the pictures' sake
        self.assertEqual(read_text("out/1/1.npy"), "mine")
        _, errors = self.run_tool("mel", "in", "-o", "out", "--skip-existing", "--picture", "out")
        self.assertRegex(errors, "0 done, 3 skipped")
        self.run_tool("mel", "in", "-o", "out", "--force")
        self.assertEqual(np.load("out/1/1.npy").shape[0], 80)

    def test_an_interrupted_batch_ends_cleanly_and_goes_on(self):
        self.make_recordings(60, seconds=10)
        arguments = ["mel", "in", "-o", "out", "--hop-length", "16"]
        running = subprocess.Popen([TOOL, *arguments], stderr=subprocess.PIPE, text=True)
        running.stderr.readline()  # the first tenth
        running.send_signal(signal.SIGINT)
        _, errors = running.communicate(timeout=100)
        self.assertEqual(running.returncode, 1)
        self.assertRegex(errors, "interrupted, [0-9]+ inputs? not begun; .*--skip-existing")
        self.assertFalse([name for name in self.files() if name.endswith(".part")])
        done = len(glob.glob("out/*/*.npy"))
        _, errors = self.run_tool(*arguments, "--skip-existing", "-j", 2)
        self.assertRegex(errors, f"{60 - done} done, {done} skipped")

    def test_a_terminal_shows_a_bar(self):
        self.make_recordings(5)
        terminal, end = pty.openpty()
        subprocess.run([TOOL, "mel", "in", "-o", "out"], stderr=end, check=True)
        os.close(end)
        shown = b""
        with contextlib.suppress(OSError):  # the end of what a terminal holds is an error
            while part := os.read(terminal, 65536):
                shown += part
        shown = shown.decode()
        self.assertRegex(shown, r"mel \[#{24}\] 5/5  \d+ x real time  00:00 left  0 failed")


class Words(CommandLineTest):
    def test_what_is_not_finite_is_written_and_an_error(self):
        bad = sine(440).astype(np.float32)
        bad[100:103] = np.nan, np.inf, -np.inf
        write_wav("bad.wav", bad, dtype=np.float32)
        write_wav("loud.wav", np.full(16000, 3e38), dtype=np.float32)
        for source, count, command in [
                ("bad.wav", "3 samples read", "mel -o x.npy"), ("bad.wav", "3 samples read", "stft -o x.npy"),
                ("bad.wav", "3 samples read", "filter -o x.wav --b 1"),
                ("bad.wav", "3 samples read", "resample -o x.npy --sample-rate 8000"),
                ("bad.wav", "3 samples read", "trim -o x.wav"),
                ("loud.wav", r"\d+ values written", "stft -o x.npy"),
                ("loud.wav", r"\d+ values written", "mel -o x.npy"),
                ("loud.wav", r"1599\d samples written", "filter -o x.wav --b 1,1")]:
            with self.subTest(source=source, command=command):
                out, errors = self.run_tool(*command.split(), source, "--force", "--json", expect=1)
                self.assertRegex(errors, f"{source}: its output holds infinite values or NaN: {count}")
                self.assertEqual(json.loads(out)["status"], "not_finite")
                self.assertTrue(os.path.exists(json.loads(out)["output"]))

    def test_changes_to_the_sound_are_said(self):
        self.make_examples_folder()
        out, _ = self.run_tool("mel", "stereo.wav", "-o", "x.npy", "--sample-rate", 8000,
                               "--n-fft", 256, "--n-mels", 128, "--mel-scale", "htk")
        self.assertIn("note: 2 channels mixed down to one", out)
        self.assertIn("note: converted from 16000 to 8000 Hz", out)
        self.assertRegex(out, r"note: \d+ of 128 bands hold no bin and are all zero")
        mixed = self.make("filter", "stereo.wav", "m.npy", "--b", 1, "--mono")
        self.assertLess(np.abs(mixed - read_wav("stereo.wav")[1].mean(axis=1)).max(), 1e-7)

    def test_a_filter_that_rounding_spoils_is_said(self):
        def note(design, **keywords):
            given = scipy.signal.butter(*design, **keywords)
            words = (["--b", ",".join(map(repr, given[0].tolist())), "--a", ",".join(map(repr, given[1].tolist()))]
                     if len(given) == 2 and "output" not in keywords else
                     [word for row in given for word in ("--sos", ",".join(map(repr, row.tolist())))])
            out, _ = self.run_tool("filter", "speech.wav", "-o", "x.npy", "--force", *words)
            found = re.search("note: with its coefficients rounded to single precision, the filter (.*)", out)
            return found and found[1]
        self.assertRegex(note((4, 0.005)), r"has a response that is \d+ % off; give it in sections, by --sos")
        for cutoff in (0.001, 0.0005):  # poles beyond the unit circle, and one on it
            self.assertRegex(note((3, cutoff)), r"is not stable; give it in sections, by --sos")
        self.assertRegex(note((2, 1e-4)), r"filter at a lower sample rate")
        self.assertRegex(note((2, (0.3, 0.3003)), btype="bandpass"), "give it in sections")
        for design in ((4, 0.1), (2, 0.05)):
            self.assertIsNone(note(design))
        self.assertIsNone(note((8, 0.01), output="sos"))

    def test_silence_is_said_and_dark(self):
        write_wav("silent.wav", np.zeros(8000))
        out, _ = self.run_tool("mel", "silent.wav", "-o", "silent.png", "--raw")
        self.assertIn("note: silent: every sample is 0", out)
        with open("silent.png", "rb") as file:
            pixels = zlib.decompressobj().decompress(file.read().split(b"IDAT")[1])
        self.assertLess(max(pixels), 5)  # the darkest colour is (0, 0, 4)

    def test_pictures_have_the_size_colours_and_frequencies_asked_for(self):
        write_wav("tone.wav", sine(1000, 0.2))
        options = "--n-fft 512 --power 2 --colormap gray --width 360 --height 300".split()
        for scale, share in (("", (32 + 0.5) / 257), ("--log-frequency", np.log(32) / np.log(256))):
            self.run_tool("stft", "tone.wav", "-o", "x.png", "--force", *options, *scale.split())
            picture = read_png("x.png")
            self.assertEqual(picture.shape, (300, 360, 3))
            self.assertTrue((picture == picture[:, :, :1]).all())
            middle = picture[44:-54, 90 + 80, 0]  # between the title and the time axis
            self.assertAlmostEqual(1 - middle.argmax() / len(middle), share, delta=4 / len(middle))
        raw = "--raw --top-db 50 --colormap".split()
        levels = self.make("mel", "speech.wav", "x.npy", "--db", "--top-db", 50, "--sample-rate", 2000)
        for colormap, ends in (("gray", [(0, 0, 0), (255, 255, 255)]), ("magma", [(0, 0, 4), (252, 253, 191)]),
                               ("viridis", [(68, 1, 84), (253, 231, 37)])):
            self.run_tool("mel", "speech.wav", "-o", "r.png", "--force", *raw, colormap, "--sample-rate", 2000)
            picture = read_png("r.png")[::-1]
            for end, cell in zip(ends, (levels.argmin(), levels.argmax())):
                self.assertEqual(tuple(picture.reshape(-1, 3)[cell]), end)
            lightness = picture @ [0.2, 0.7, 0.1]
            order = np.argsort(levels, axis=None)
            self.assertGreater(np.diff(lightness.reshape(-1)[order]).min(), -1)  # brighter is louder

    def test_info_and_presets_as_json(self):
        write_wav("stereo.wav", np.stack([sine(440), sine(1000)], axis=1), 44100)
        info = json.loads(self.run_tool("info", "--json", "stereo.wav")[0])
        self.assertEqual((info["sample_rate"], info["channels"], info["samples"]), (44100, 2, 16000))
        for name in ("whisper", "tacotron2", "librosa", "hifigan"):
            made = self.make("mel", "stereo.wav", "x.npy", "--preset", name)
            self.assertEqual(info[f"frames_{name}"], made.shape[1])
        self.assertAlmostEqual(info["peak_db"], 20 * np.log10(0.5), places=3)
        self.assertAlmostEqual(info["rms_db"], 20 * np.log10(0.5 / np.sqrt(2)), places=3)
        # The bands of a preset are those of its options.
        sample_n = len(read_wav("speech.wav")[1])
        for line in self.run_tool("presets", "--json")[0].splitlines():
            preset = json.loads(line)
            if preset.pop("power_offset") > 0:
                continue
            name, _, extra_n, _ = map(preset.pop, ("name", "about", "extra_frames", "compression"))
            options = [word for key, value in preset.items() for word in ("--" + key.replace("_", "-"), value)]
            frame_n = -(-sample_n * preset["sample_rate"] // 16000) // preset["hop_length"] + extra_n
            np.testing.assert_array_equal(
                self.make("mel", "speech.wav", "a.npy", *options)[:, :frame_n],
                self.make("mel", "speech.wav", "b.npy", "--preset", name, "--linear"))

    def test_explained_calls_give_the_same_numbers(self):
        y = read_wav("speech.wav")[1].astype(np.float32)
        self.make("stft", "speech.wav", "spectrum.npy")
        modules = {"np": np, "scipy": scipy, "dataclasses": dataclasses}
        sys.path.insert(0, f"{SOURCE}/python")
        import sorvo_audio
        modules["sorvo_audio"] = sorvo_audio
        try:
            import torch
            import torchaudio
            modules.update(torch=torch, torchaudio=torchaudio)
        except ImportError:
            print("skipped: torch and torchaudio (Debian: python3-torchaudio)")
        cases = [  # command, its options, those that only explain takes
            ("stft", "--n-fft 512", ""),
            ("stft", "--n-fft 400 --win-length 301 --norm window --power 2 --center none", ""),
            ("stft", "--n-fft 300 --win-length 333 --window hamming --norm length --power 1", ""),
            ("stft", "--n-fft 500 --hop-length 200 --center zeros", ""),
            ("istft", "--sample-rate 16000 --length 71000", "--n-fft 512"),
            ("mel", "--preset torchaudio", ""),
            ("mel", "--preset whisper --pad-to-seconds 5", ""),
            ("mel", "--preset whisper_128 --norm window --n-mels 90 --fmin 50 --win-length 300 --db", ""),
            ("mel", "--preset tacotron2 --sample-rate 16000 --center none --pad 300", ""),
            ("mel", "--preset hifigan --sample-rate 16000 --window hamming --mel-scale htk --mel-norm none", ""),
            ("mfcc", "", ""),
            ("mfcc", "--preset librosa --sample-rate 16000 --n-mfcc 13", ""),
            ("resample", "--sample-rate 8000", "--from 16000"),
            ("resample", "--sample-rate 48000", "--from 16000"),
            ("resample", "--sample-rate 44100", "--from 16000"),
            ("resample", "--sample-rate 24000", "--from 16000"),
            ("filter", "--b 0.2,0.1 --a 1,-0.7", ""),
            ("filter", "--b 0.2 --a 1,-0.7 --settled", ""),
            ("filtfilt", "--b 0.2 --a 1,-0.7 --pad-type even --pad-len 50", ""),
            ("filtfilt", "--b 0.5,0.5 --pad-type none", ""),
            ("filter", "--sos 0.2,0.4,0.2,1,-0.4,0.2 --sos 1,1,0,1,-0.5,0 --settled", ""),
            ("filtfilt", "--sos 0.2,0.4,0.2,1,-0.4,0.2 --sos 1,1,0,1,-0.5,0 --pad-type even", ""),
        ]
        ran = 0
        for command, options, explained in cases:
            source = "spectrum.npy" if command == "istft" else "speech.wav"
            got = self.make(command, source, "got.npy", *options.split())
            text, _ = self.run_tool("explain", command, "--json", *options.split(), *explained.split())
            for line in text.splitlines():
                peer = json.loads(line)
                if peer["name"] not in (*modules, "Python") or "another filter" in peer["difference"]:
                    continue
                with self.subTest(f"{command} {options}: {peer['name']}"):
                    names = {**modules, "y": y, "stft": np.load("spectrum.npy")}
                    exec(peer["code"], names)
                    result = names[{"stft": "stft", "istft": "y", "mel": "mel", "mfcc": "mfcc"}.get(command, "z")]
                    self.assertLessEqual(abs(result.shape[-1] - got.shape[-1]), "--center zeros" in options)
                    n = min(result.shape[-1], got.shape[-1])
                    error = np.linalg.norm(result[..., :n] - got[..., :n]) / np.linalg.norm(got)
                    # Measured: at most 7e-6, in mel of torchaudio.
                    self.assertLessEqual(error, 0 if peer["name"] == "Python" else 2e-5)
                    ran += 1
        self.assertGreaterEqual(ran, 2 * len(cases) - 6)  # scipy has no mel


if __name__ == "__main__":
    unittest.main()
