"""What the tests of the command line share: a folder to work in, and a way to run the program."""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
import warnings
import zlib

try:
    import numpy as np
    import scipy.io.wavfile
    import scipy.signal  # noqa: F401
except ImportError as missing:
    print(f"skipped: {missing} (Debian: python3-numpy, python3-scipy)")
    sys.exit(77)

TOOL = os.environ["SORVO_AUDIO_TOOL"]
SOURCE = os.environ["SORVO_AUDIO_SOURCE"]


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="sorvo audio ")  # a space, as people have
        self.addCleanup(shutil.rmtree, self.folder)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(self.folder)
        shutil.copy(f"{SOURCE}/examples/data/speech.wav", "speech.wav")

    def run_tool(self, *arguments, expect=0, **options):
        """Runs the program, checks its exit code, and returns what it printed on both channels."""
        result = subprocess.run([TOOL, *map(str, arguments)], capture_output=True, text=True,
                                timeout=100, **options)
        self.assertEqual(result.returncode, expect, f"{arguments}\n{result.stdout}{result.stderr}")
        return result.stdout, result.stderr

    def make(self, command, source, output, *arguments):
        """Runs a command and reads what it wrote."""
        self.run_tool(command, source, "-o", output, "--force", *arguments)
        if output.endswith(".npy"):
            return np.load(output)
        if output.endswith(".csv"):
            return np.loadtxt(output, delimiter=",", ndmin=2, dtype=complex)
        return read_wav(output)[1]


def read_wav(path):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # of chunks that SciPy does not know
        rate, samples = scipy.io.wavfile.read(path)
    return rate, samples / 32768 if samples.dtype == np.int16 else samples


def write_wav(path, samples, rate=16000, dtype=np.int16):
    """Writes [samples] or [samples, channels]; full scale is 1."""
    samples = np.asarray(samples)
    if dtype == np.int16:
        samples = np.round(samples * 32768).clip(-32768, 32767)
    scipy.io.wavfile.write(path, rate, samples.astype(dtype))


def sine(hz, seconds=1.0, rate=16000, level=0.5):
    return level * np.sin(2 * np.pi * hz * np.arange(int(seconds * rate)) / rate)


def read_png(path):
    """Pixels [height, width, 3] of an RGB picture."""
    with open(path, "rb") as file:
        data = file.read()
    width, height = int.from_bytes(data[16:20], "big"), int.from_bytes(data[20:24], "big")
    packed, at = b"", 8
    while at < len(data):
        size = int.from_bytes(data[at:at + 4], "big")
        packed += data[at + 8:at + 8 + size] * (data[at + 4:at + 8] == b"IDAT")
        at += size + 12
    lines = np.frombuffer(zlib.decompress(packed), np.uint8).reshape(height, 1 + 3 * width)
    pixels = np.zeros((height + 1, width + 1, 3), int)  # with a row and a column of zeros before
    for y, (kind, *line) in enumerate(lines.tolist(), 1):
        for x, value in enumerate(np.reshape(line, (width, 3)), 1):
            left, up, corner = pixels[y, x - 1], pixels[y - 1, x], pixels[y - 1, x - 1]
            if kind == 4:
                near = [np.abs(up - corner), np.abs(left - corner), np.abs(left + up - 2 * corner)]
                guess = np.choose(np.argmin(near, 0), [left, up, corner])
            else:
                guess = [0, left, up, (left + up) // 2][kind]
            pixels[y, x] = (value + guess) % 256
    return pixels[1:, 1:]
