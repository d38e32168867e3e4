"""What the tests of the command line share: a folder to work in, and a way to run the program."""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
import warnings

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
