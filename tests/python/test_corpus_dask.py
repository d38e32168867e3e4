"""The corpus example on a cluster of two workers and on threads: results, resumption, bad files."""
import importlib.util
import pathlib
import subprocess
import sys
import tempfile
import unittest
import unittest.mock
import wave

import numpy as np

from sorvo_audio import presets, resample

EXAMPLE = pathlib.Path(__file__).parents[2] / "examples" / "corpus_dask.py"
MISSING = [name for name in ("dask", "distributed") if importlib.util.find_spec(name) is None]


def write_wav(path, channels, sample_rate):
    path.parent.mkdir(parents=True, exist_ok=True)
    with wave.open(str(path), "wb") as recording:
        recording.setnchannels(len(channels))
        recording.setsampwidth(2)
        recording.setframerate(sample_rate)
        recording.writeframes(np.ascontiguousarray(channels.T).astype("<i2").tobytes())


@unittest.skipIf(MISSING, f"not installed: {', '.join(MISSING)}")
class Corpus(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="with space ")
        self.addCleanup(folder.cleanup)
        self.recordings, self.features = pathlib.Path(folder.name, "in"), pathlib.Path(folder.name, "out")
        rng = np.random.default_rng(3)
        self.expected = {}
        for i in range(12):
            sample_rate, channel_n = (16000, 1) if i % 3 else (44100, 2)
            samples = rng.integers(-9000, 9000, (channel_n, 5000 + 100 * i))
            name = f"{'abc'[i % 3]}/take {i}.wav"
            write_wav(self.recordings / name, samples, sample_rate)
            y = (samples / 32768).astype(np.float32).mean(0)
            if sample_rate != 16000:
                y = resample(y, orig_sr=sample_rate, target_sr=16000)
            self.expected[name + ".npy"] = presets.whisper.features(y)
        (self.recordings / "bad.wav").write_bytes(b"RIFF and nothing else")

    def run_example(self, *options):
        return subprocess.run([sys.executable, EXAMPLE, self.recordings, self.features, *options], text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=50)

    def check(self, *options):
        first = self.run_example(*options)
        self.assertEqual(first.returncode, 1, first.stdout)
        self.assertIn("13/13", first.stdout)
        self.assertIn("1 failed", first.stdout)
        self.assertRegex(first.stdout, r"in/bad\.wav: \S")
        found = {str(path.relative_to(self.features)) for path in self.features.rglob("*") if path.is_file()}
        self.assertEqual(found, set(self.expected))  # no partial file is left
        for name, expected in self.expected.items():
            np.testing.assert_array_equal(np.load(self.features / name), expected)

        kept, removed = sorted(self.expected)[:2]
        (self.features / kept).write_bytes(b"mine")
        (self.features / removed).unlink()
        (self.recordings / "bad.wav").unlink()
        second = self.run_example(*options)
        self.assertEqual(second.returncode, 0, second.stdout)
        self.assertIn("12 recordings, 11 done before", second.stdout)
        self.assertEqual((self.features / kept).read_bytes(), b"mine")
        np.testing.assert_array_equal(np.load(self.features / removed), self.expected[removed])

    def test_cluster_of_two_workers(self):
        from distributed import Client, LocalCluster
        with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster:
            self.check("--scheduler", cluster.scheduler_address)
            with Client(cluster) as client:  # the example has left the cluster running
                self.assertEqual(len(client.nthreads()), 2)

    def test_threads(self):
        self.check("--threads", "2")

    def test_reads_without_soundfile(self):
        spec = importlib.util.spec_from_file_location("corpus_dask", EXAMPLE)
        example = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(example)
        samples = np.int16([[0, 1, -32768], [5, 32767, -1]])
        write_wav(self.recordings / "d.wav", samples, 8000)
        with unittest.mock.patch.dict(sys.modules, soundfile=None):
            read, sample_rate = example.read(self.recordings / "d.wav")
        self.assertEqual((sample_rate, read.dtype), (8000, np.float32))
        np.testing.assert_array_equal(read * 32768, samples)

    def test_usage(self):
        self.recordings = self.recordings / "missing"
        done = self.run_example()
        self.assertEqual(done.returncode, 2)
        self.assertIn("missing is not a folder", done.stdout)


if __name__ == "__main__":
    unittest.main()
