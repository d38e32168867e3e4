#!/usr/bin/python3
"""Mel features of all recordings in a folder, on the threads of this machine or on a Dask cluster.

    corpus_dask.py recordings features --preset whisper
    corpus_dask.py recordings features --preset hifigan --scheduler tcp://10.0.0.1:8786
    corpus_dask.py recordings features --shard-size 1000

Every file that libsndfile can read is a recording; of the others, those with the suffix of a sound file fail, and the
rest is skipped and counted. recordings/a/b.wav becomes features/a/b.wav.npy, or the member a/b.wav.npy of a shard,
features/shard-00000.tar: float32 [bands, frames] of all channels' mean at the preset's rate.

features/manifest.jsonl has a line for each: {"file": "a/b.wav", "preset": "whisper", "output": "a/b.wav.npy",
"shape": [80, 3000], "digest": "sha256:..."}, the digest being that of the numbers' bytes. What it lists and is there is
kept, so an interrupted run is continued by repeating it.

On a cluster, both folders are on a file system that all workers see, and sorvo_audio, numpy and soundfile are
installed there. Here, distributed and tqdm are needed too (Debian: python3-distributed, python3-soundfile,
python3-tqdm).

Status: 0 all done, 1 some recordings failed or none was found (named at the end), 2 usage.
"""
import argparse
import collections
import contextlib
import hashlib
import io
import itertools
import json
import os
import pathlib
import queue
import sys
import tarfile
import tempfile
import time

import numpy as np

from sorvo_audio import presets, resample

MANIFEST = "manifest.jsonl"
PRESETS = sorted(name for name, value in vars(presets).items() if isinstance(value, presets.Preset))
# Further suffixes of the formats that libsndfile knows, and of sound files that it does not read.
SOUND_SUFFIXES = {"aac", "aif", "aifc", "ape", "m4a", "oga", "opus", "snd", "sph", "wave", "wma", "wv"}


class NotSound(Exception):
    """A file that does not claim to be a recording."""


class NoWorker(Exception):
    """Nobody is there to do the rest."""


def read(path):
    """Samples [channels, n] and sample rate."""
    import soundfile
    from dask.utils import SerializableLock
    suffixes = SOUND_SUFFIXES.union(map(str.lower, soundfile.available_formats()))
    try:
        with SerializableLock("libsndfile"):  # it has one place for the reason why a file does not open
            sound = soundfile.SoundFile(path)
    except soundfile.LibsndfileError as error:
        if error.code == 1 and path.suffix[1:].lower() not in suffixes:  # SF_ERR_UNRECOGNISED_FORMAT
            raise NotSound from None
        raise
    except TypeError:
        raise ValueError("samples without a header: their rate and format are not known") from None
    with sound:
        samples = sound.read(dtype="float32", always_2d=True)
        if len(samples) < sound.frames:
            raise ValueError(f"ends after {len(samples)} of {sound.frames} samples")
        return samples.T, sound.samplerate


def at_rate(y, orig_sr, target_sr):
    """In steps where the ratio is too large for the resampler's filter."""
    if orig_sr > 4 * target_sr:
        y, orig_sr = at_rate(y, orig_sr, 2 * target_sr), 2 * target_sr
    return y if orig_sr == target_sr else resample(y, orig_sr=orig_sr, target_sr=target_sr, tail="same")


def features_of(path, preset):
    """Features of one recording and its length in seconds."""
    samples, sample_rate = read(path)
    if samples.shape[-1] == 0:
        raise ValueError("no samples")
    if not np.isfinite(samples).all():
        raise ValueError("some samples are infinite or not numbers")
    features = preset.features(at_rate(samples.mean(0), sample_rate, preset.sr))
    return features, samples.shape[-1] / sample_rate


@contextlib.contextmanager
def replaced(target):
    """A file that becomes ``target`` at the end: a reader never sees half of it, nor does an interruption leave it."""
    target.parent.mkdir(parents=True, exist_ok=True)
    part = tempfile.NamedTemporaryFile(dir=target.parent, suffix=".part", delete=False)
    try:
        with part:
            yield part
        os.chmod(part.name, 0o644)
        os.replace(part.name, target)
    except BaseException:
        os.unlink(part.name)
        raise


def extract(recordings, features, names, preset_name, shard):
    """Writes the features of the named recordings, and returns a line for each: of the manifest, or why not."""
    preset, lines = getattr(presets, preset_name), []
    with contextlib.ExitStack() as stack:
        tar = None
        for name in names:
            try:
                array, seconds = features_of(recordings / name, preset)
            except NotSound:
                lines.append({"file": name, "skipped": pathlib.Path(name).suffix.lower() or "no suffix"})
                continue
            except Exception as error:
                lines.append({"file": name, "error": str(error) or repr(error)})
                continue
            content = io.BytesIO()
            np.save(content, array)
            if shard:
                if tar is None:
                    file = stack.enter_context(replaced(features / shard))
                    tar = stack.enter_context(tarfile.open(fileobj=file, mode="w"))
                member = tarfile.TarInfo(name + ".npy")
                member.size = content.tell()
                content.seek(0)
                tar.addfile(member, content)
            else:
                with replaced(features / (name + ".npy")) as file:
                    file.write(content.getbuffer())
            lines.append({"file": name, "preset": preset_name, "output": shard or name + ".npy",
                          "shape": list(array.shape), "seconds": seconds,
                          "digest": "sha256:" + hashlib.sha256(array.tobytes()).hexdigest()})
    return lines


def listed(features):
    """The lines of the manifest whose output exists, by file; an interruption may have cut the end of it."""
    lines = {}
    with contextlib.suppress(FileNotFoundError), open(features / MANIFEST) as manifest:
        for text in manifest:
            with contextlib.suppress(json.JSONDecodeError):
                line = json.loads(text)
                lines[line["file"]] = line
    lines = {name: line for name, line in lines.items() if (features / line["output"]).is_file()}
    last = next((line["output"] for line in reversed(lines.values())), "")
    if last.endswith(".tar"):
        with tarfile.open(features / last) as tar:
            if len(tar.getnames()) > sum(line["output"] == last for line in lines.values()):
                return {name: line for name, line in lines.items() if line["output"] != last}
    return lines


def jobs_of(names, shard_size, taken):
    """Names that one task takes, and the shard that it writes; shards that are not ``taken`` may be overwritten."""
    shards = (shard for i in itertools.count() if (shard := f"shard-{i:05}.tar") not in taken)
    for begin in range(0, len(names), shard_size or 1):
        yield names[begin:begin + (shard_size or 1)], next(shards) if shard_size else None


def results(client, jobs, submit, patience):
    """Names of each job as it ends, and its lines or an error.

    Keeps the workers busy without listing the whole corpus to the scheduler at once. Raises NoWorker where
    none is there for ``patience`` seconds.
    """
    ended, names_of = queue.Queue(), {}
    asked = seen = time.monotonic()
    thread_n = sum(client.nthreads().values())
    while True:
        now = time.monotonic()
        if now - asked > 1:
            asked, thread_n = now, sum(client.nthreads().values())
        if thread_n:
            seen = now
        elif now - seen > patience:
            raise NoWorker("no worker is left")
        for names, shard in itertools.islice(jobs, max(0, 4 * max(1, thread_n) - len(names_of))):
            future = submit(names, shard)
            names_of[future.key] = names
            future.add_done_callback(ended.put)
        if not names_of:
            return
        with contextlib.suppress(queue.Empty):
            future = ended.get(timeout=1)
            while True:
                yield names_of.pop(future.key), outcome(future, patience)
                future = ended.get_nowait()


def outcome(future, patience):
    if future.cancelled():
        return RuntimeError("the scheduler has lost it")
    try:
        return future.result(timeout=max(patience, 10))
    except Exception as error:
        return error


class Tally:
    """What became of the recordings; the manifest gets a line for each that is done."""

    def __init__(self, manifest, progress):
        self.manifest, self.progress, self.begin = manifest, progress, time.monotonic()
        self.done, self.seconds, self.failed, self.skipped = 0, 0.0, {}, collections.Counter()

    def add(self, names, lines):
        if isinstance(lines, Exception):
            lines = [{"file": name, "error": str(lines) or repr(lines)} for name in names]
        for line in lines:
            if "error" in line:
                self.failed[line["file"]] = line["error"]
            elif "skipped" in line:
                self.skipped[line["skipped"]] += 1
            else:
                self.done += 1
                self.seconds += line.pop("seconds")
                print(json.dumps(line), file=self.manifest, flush=True)
        elapsed = time.monotonic() - self.begin
        self.progress.set_postfix_str(f"{self.seconds / elapsed:.0f} times real time, {len(self.failed)} failed",
                                      refresh=False)
        self.progress.update(len(names))

    def report(self, kept_n, total, trouble):
        skips = ", ".join(f"{n} {suffix}" for suffix, n in self.skipped.most_common())
        skipped_n = sum(self.skipped.values())
        print(f"{self.done} done, {kept_n} done before, {len(self.failed)} failed, {skipped_n} skipped"
              + f" ({skips})" * bool(skips), file=sys.stderr)
        for name, error in self.failed.items():
            print(f"{name}: {error}", file=sys.stderr)
        if trouble:
            waiting_n = total - kept_n - self.done - len(self.failed) - skipped_n
            print(f"{trouble}: {waiting_n} files are not done; repeat the command to go on", file=sys.stderr)
        elif total == skipped_n:
            trouble = "no recording was found"
            print(trouble, file=sys.stderr)
        return 1 if self.failed or trouble else 0


def positive(text):
    number = int(text)
    if number < 1:
        raise ValueError
    return number


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("recordings", type=pathlib.Path)
    parser.add_argument("features", type=pathlib.Path)
    parser.add_argument("--preset", choices=PRESETS, default="whisper")
    parser.add_argument("--shard-size", type=positive, help="recordings in a tar file; else a .npy file for each")
    parser.add_argument("--scheduler", help="address of a Dask scheduler; else threads of this machine")
    parser.add_argument("--threads", type=positive, default=os.cpu_count())
    parser.add_argument("--patience", type=float, default=60, help="seconds to wait for a worker where none is left")
    options = parser.parse_args()
    options.recordings, options.features = options.recordings.resolve(), options.features.resolve()
    if not options.recordings.is_dir():
        parser.error(f"{options.recordings} is not a folder")
    kept = listed(options.features)
    others = {line["preset"] for line in kept.values()} - {options.preset}
    if others:
        parser.error(f"{options.features} holds features of another preset: {', '.join(others)}")
    names = sorted(str(path.relative_to(options.recordings)) for path in options.recordings.rglob("*")
                   if path.is_file() and options.features not in path.parents)
    left = [name for name in names if name not in kept]
    jobs = jobs_of(left, options.shard_size, {line["output"] for line in kept.values()})

    from distributed import Client
    from tqdm import tqdm
    where = ({"address": options.scheduler} if options.scheduler else
             {"processes": False, "n_workers": 1, "threads_per_worker": options.threads,
              "dashboard_address": None})
    with replaced(options.features / MANIFEST) as file:
        file.writelines(json.dumps(line).encode() + b"\n" for line in kept.values())
    trouble = None
    with open(options.features / MANIFEST, "a") as manifest, \
            tqdm(total=len(names), initial=len(names) - len(left), unit="file",
                 mininterval=0.1 if sys.stderr.isatty() else 10) as progress:
        tally = Tally(manifest, progress)
        try:
            with Client(**where) as client:
                def submit(names, shard):
                    return client.submit(extract, options.recordings, options.features, names, options.preset, shard,
                                         pure=False)

                for ended, lines in results(client, jobs, submit, options.patience):
                    tally.add(ended, lines)
        except NoWorker as error:
            trouble = error
        except OSError as error:
            trouble = f"the scheduler does not answer ({error})"
    return tally.report(len(names) - len(left), len(names), trouble)


if __name__ == "__main__":
    sys.exit(main())
