"""The corpus example on a cluster of two workers and on threads: results, resumption, what is no recording."""
import hashlib
import importlib.util
import io
import json
import pathlib
import subprocess
import sys
import tarfile
import tempfile
import unittest

import numpy as np

from sorvo_audio import presets, resample

EXAMPLE = pathlib.Path(__file__).parents[2] / "examples" / "corpus_dask.py"
MISSING = [name for name in ("dask", "distributed", "soundfile", "tqdm") if importlib.util.find_spec(name) is None]
FORMATS = {"wav": "WAV", "WAV": "WAV", "flac": "FLAC", "ogg": "OGG", "aif": "AIFF", "au": "AU", "caf": "CAF",
           "w64": "W64", "voc": "VOC", "nist": "NIST", "mp3": "MP3", "unknown": "WAV"}


@unittest.skipIf(MISSING, f"not installed: {', '.join(MISSING)}")
class Corpus(unittest.TestCase):
    def setUp(self):
        import soundfile
        folder = tempfile.TemporaryDirectory(prefix="with space ")
        self.addCleanup(folder.cleanup)
        self.recordings, self.features = pathlib.Path(folder.name, "in"), pathlib.Path(folder.name, "out")
        rng = np.random.default_rng(3)
        self.expected = {}
        for i, (suffix, file_format) in enumerate(FORMATS.items()):
            sample_rate, channel_n = (16000, 1) if i % 3 else (44100, 2)
            name = f"{'abc'[i % 3]}/take {i}.{suffix}"
            (self.recordings / name).parent.mkdir(parents=True, exist_ok=True)
            soundfile.write(self.recordings / name, rng.uniform(-0.3, 0.3, (5000 + 100 * i, channel_n)), sample_rate,
                            format=file_format)
            with soundfile.SoundFile(self.recordings / name) as sound:
                y = sound.read(dtype="float32", always_2d=True).T.mean(0)
            if sample_rate != 16000:
                y = resample(y, orig_sr=sample_rate, target_sr=16000, tail="same")
            self.expected[name] = presets.whisper.features(y)
        (self.recordings / "bad.wav").write_bytes(b"RIFF and nothing else")
        soundfile.write(self.recordings / "short.wav", np.zeros(100), 16000)
        for name in ("a/notes.txt", "a/take 3.txt", "README"):
            (self.recordings / name).write_text("no sound")

    def run_example(self, *options):
        return subprocess.run([sys.executable, EXAMPLE, self.recordings, self.features, *options], text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300)

    def arrays(self):
        """What is in the folder, by the names of the recordings."""
        for path in self.features.rglob("*"):
            if path.suffix == ".tar":
                with tarfile.open(path) as tar:
                    for member in tar:
                        yield member.name[:-4], np.load(io.BytesIO(tar.extractfile(member).read()))
            elif path.is_file() and path.name != "manifest.jsonl":
                yield str(path.relative_to(self.features))[:-4], np.load(path)

    def check_features(self):
        arrays = list(self.arrays())
        self.assertEqual(sorted(name for name, _ in arrays), sorted(self.expected))  # no partial file, none twice
        for name, array in arrays:
            np.testing.assert_array_equal(array, self.expected[name])
        lines = list(map(json.loads, (self.features / "manifest.jsonl").read_text().splitlines()))
        self.assertEqual(sorted(line["file"] for line in lines), sorted(self.expected))
        for line in lines:
            array = self.expected[line["file"]]
            digest = hashlib.sha256(array.tobytes()).hexdigest()
            self.assertEqual((line["shape"], line["digest"]), (list(array.shape), "sha256:" + digest))
            self.assertTrue((self.features / line["output"]).is_file())
        return lines

    def check(self, *options):
        first = self.run_example(*options)
        self.assertEqual(first.returncode, 1, first.stdout)
        self.assertIn("17/17", first.stdout)
        self.assertIn("12 done, 0 done before, 2 failed, 3 skipped (2 .txt, 1 no suffix)", first.stdout)
        self.assertRegex(first.stdout, r"bad\.wav: .*not recognised")
        self.assertRegex(first.stdout, r"short\.wav: y has 100 samples; .* at least .*400")
        lines = self.check_features()

        # An interruption: an output is gone, the line of another was cut.
        kept = lines[0]["output"]
        (self.features / kept).touch()
        time = (self.features / kept).stat().st_mtime_ns
        gone = next(line["output"] for line in lines[:-1] if line["output"] not in (kept, lines[-1]["output"]))
        (self.features / gone).unlink()
        manifest = self.features / "manifest.jsonl"
        manifest.write_text(manifest.read_text()[:-9])
        (self.recordings / "bad.wav").unlink()
        (self.recordings / "short.wav").unlink()
        second = self.run_example(*options)
        self.assertEqual(second.returncode, 0, second.stdout)
        self.assertIn("0 failed, 3 skipped", second.stdout)
        self.assertEqual((self.features / kept).stat().st_mtime_ns, time)
        return second.stdout

    def test_cluster_of_two_workers(self):
        from distributed import Client, LocalCluster
        with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster:
            self.assertIn("2 done, 10 done before", self.check("--scheduler", cluster.scheduler_address))
            self.check_features()
            with Client(cluster) as client:  # the example has left the cluster running
                self.assertEqual(len(client.nthreads()), 2)

    def test_cluster_without_a_worker(self):
        from distributed import LocalCluster
        with LocalCluster(n_workers=0, dashboard_address=None) as cluster:
            done = self.run_example("--scheduler", cluster.scheduler_address, "--patience", "0.1")
        self.assertEqual(done.returncode, 1)
        self.assertIn("no worker is left: 17 files are not done", done.stdout)

    def test_shards_on_threads(self):
        self.check("--threads", "2", "--shard-size", "4")
        self.check_features()

    def test_usage(self):
        done = self.run_example("--preset", "whisper_128")
        self.assertIn("12 done", done.stdout)
        done = self.run_example()
        self.assertEqual(done.returncode, 2)
        self.assertIn("another preset: whisper_128", done.stdout)
        self.recordings = self.recordings / "missing"
        done = self.run_example()
        self.assertEqual(done.returncode, 2)
        self.assertIn("missing is not a folder", done.stdout)
        self.recordings = self.features / "empty"
        self.recordings.mkdir()
        self.assertIn("no recording was found", self.run_example("--preset", "whisper_128").stdout)


if __name__ == "__main__":
    unittest.main()
