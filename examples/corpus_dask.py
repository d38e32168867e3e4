#!/usr/bin/python3
"""Mel features of all recordings in a folder, on the threads of this machine or on a Dask cluster.

    corpus_dask.py recordings features --preset whisper
    corpus_dask.py recordings features --preset hifigan --scheduler tcp://10.0.0.1:8786

recordings/a/b.wav becomes features/a/b.wav.npy: float32 [bands, frames] of all channels' mean at the
preset's rate. What exists already is kept, so an interrupted run is continued by repeating it. On a cluster,
both folders are on a file system that all workers see, and sorvo_audio is installed there.

Status: 0 all done, 1 some recordings failed (they are named at the end), 2 usage.
"""
import argparse
import os
import pathlib
import sys
import tempfile
import time
import wave

import numpy as np

from sorvo_audio import presets, resample

SUFFIXES = (".wav", ".flac", ".ogg", ".aiff")
PRESETS = sorted(name for name, value in vars(presets).items() if isinstance(value, presets.Preset))


def read(path):
    """Samples [channels, n] and sample rate. Without python3-soundfile, 16-bit WAV files only."""
    try:
        import soundfile
    except ImportError:
        with wave.open(str(path)) as recording:
            if recording.getsampwidth() != 2:
                raise ValueError("not 16 bits a sample; install python3-soundfile to read it") from None
            samples = np.frombuffer(recording.readframes(recording.getnframes()), "<i2")
            channels = samples.reshape(-1, recording.getnchannels()).T
            return np.float32(channels) / 32768, recording.getframerate()
    samples, sample_rate = soundfile.read(path, dtype="float32", always_2d=True)
    return samples.T, sample_rate


def extract(source, target, preset_name):
    """Writes the features of one recording; returns its length in seconds."""
    preset = getattr(presets, preset_name)
    samples, sample_rate = read(source)
    if samples.shape[-1] == 0:
        raise ValueError("no samples")
    y = samples.mean(0)
    if sample_rate != preset.sr:
        y = resample(y, orig_sr=sample_rate, target_sr=preset.sr)
    features = preset.features(y)
    # A reader never sees half a file, nor is half a file taken for a result after an interruption.
    target.parent.mkdir(parents=True, exist_ok=True)
    with tempfile.NamedTemporaryFile(dir=target.parent, suffix=".part", delete=False) as part:
        try:
            np.save(part, features)
            part.close()
            os.chmod(part.name, 0o644)
            os.replace(part.name, target)
        except BaseException:
            os.unlink(part.name)
            raise
    return samples.shape[-1] / sample_rate


class Progress:
    """One line that is rewritten on a terminal, else a line for each tenth."""

    def __init__(self, total):
        self.total, self.done, self.seconds, self.failures = total, 0, 0.0, []
        self.begin = time.monotonic()

    def add(self, seconds):
        self.done += 1
        self.seconds += seconds
        terminal = sys.stderr.isatty()
        if terminal or self.done * 10 // self.total > (self.done - 1) * 10 // self.total:
            elapsed = max(time.monotonic() - self.begin, 1e-3)
            left = elapsed / self.done * (self.total - self.done)
            print(f"{self.done}/{self.total}, {self.seconds / elapsed:.0f} times real time, "
                  f"{left:.0f} s left, {len(self.failures)} failed",
                  end="\r" if terminal and self.done < self.total else "\n", file=sys.stderr, flush=True)


def run(client, jobs, preset_name):
    """Keeps the workers busy without listing a whole corpus to the scheduler at once."""
    from distributed import as_completed
    progress = Progress(len(jobs))
    waiting = iter(jobs)
    source_of = {}
    completed = as_completed()

    def submit():
        job = next(waiting, None)
        if job is not None:
            future = client.submit(extract, *job, preset_name, pure=False)
            source_of[future.key] = job[0]
            completed.add(future)

    for _ in range(4 * max(1, sum(client.nthreads().values()))):
        submit()
    for future in completed:
        source, error = source_of.pop(future.key), future.exception()
        if error:
            progress.failures.append((source, error))
        progress.add(0.0 if error else future.result())
        submit()
    return progress.failures


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("recordings", type=pathlib.Path)
    parser.add_argument("features", type=pathlib.Path)
    parser.add_argument("--preset", choices=PRESETS, default="whisper")
    parser.add_argument("--scheduler", help="address of a Dask scheduler; else threads of this machine")
    parser.add_argument("--threads", type=int, default=os.cpu_count())
    options = parser.parse_args()
    recordings, features = options.recordings.resolve(), options.features.resolve()
    if not recordings.is_dir():
        parser.error(f"{recordings} is not a folder")
    sources = sorted(path for path in recordings.rglob("*") if path.suffix.lower() in SUFFIXES)
    targets = [features / path.relative_to(recordings).with_name(path.name + ".npy") for path in sources]
    jobs = [(source, target) for source, target in zip(sources, targets) if not target.exists()]
    print(f"{len(sources)} recordings, {len(sources) - len(jobs)} done before", file=sys.stderr)

    from distributed import Client
    where = ({"address": options.scheduler} if options.scheduler else
             {"processes": False, "n_workers": 1, "threads_per_worker": options.threads,
              "dashboard_address": None})
    with Client(**where) as client:
        failures = run(client, jobs, options.preset) if jobs else []
    for source, error in failures:
        print(f"{source}: {error}", file=sys.stderr)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
