#!/usr/bin/python3
"""Times the library beside the Python packages that do the same, one thread each.

    python_peers.py LIBRARY.so OUT.json [--rows REGEX] [--repetitions N] [--sample-ms N]

The library is called through ctypes on prepared arrays. Variants of a row take turns in random
order; the medians of their CPU times go to a file of the form that Google Benchmark writes.
"""
import argparse
import ctypes
import json
import os
import platform
import random
import re
import statistics
import sys
import time

for variable in ("OMP_NUM_THREADS", "MKL_NUM_THREADS", "OPENBLAS_NUM_THREADS"):
    os.environ[variable] = "1"  # read when the packages are loaded

import numpy
import scipy
import scipy.fft
import scipy.signal
import torch
import torchaudio

torch.set_num_threads(1)
torch.set_grad_enabled(False)

SECONDS = 30


def pointer(array):
    return array.ctypes.data_as(ctypes.c_void_p)


def signal(sample_rate):
    t = numpy.arange(SECONDS * sample_rate) / sample_rate
    noise = numpy.random.default_rng(1).uniform(-0.001, 0.001, len(t))
    chord = sum(0.3 * numpy.sin(2 * numpy.pi * f * t) for f in (220.0, 587.3, 1318.5))
    return (chord + noise).astype(numpy.float32)


class Rows:
    """Makers of rows: a name, then variants as functions that return their output."""

    def __init__(self, library):
        self.library = library
        self.makers = {}
        for fft_n, hop_n, rate in ((400, 160, 16000), (512, 160, 16000), (1024, 256, 22050),
                                   (2048, 512, 22050)):
            for name, power in (("power", 2.0), ("magnitude", 1.0), ("complex", None)):
                self.add(f"torchaudio/spectrogram-{fft_n}-{hop_n}-{name}", self.spectrogram,
                         fft_n, hop_n, rate, power)
        for fft_n, hop_n, rate, mel_n, power in ((400, 160, 16000, 80, 2.0),
                                                 (1024, 256, 22050, 80, 1.0),
                                                 (2048, 512, 22050, 128, 2.0)):
            self.add(f"torchaudio/mel-{fft_n}-{hop_n}-{mel_n}", self.mel, fft_n, hop_n, rate, mel_n,
                     power)
        for task in ("decibels", "log1p", "angle", "unit-numbers"):
            self.add(f"torch/{task}", self.elementwise, task)
        filters = {"order2": scipy.signal.butter(2, 0.25), "order8": scipy.signal.butter(8, 0.25),
                   "fir32": (scipy.signal.firwin(32, 0.25), numpy.ones(1))}
        for name, (b, a) in filters.items():
            self.add(f"scipy/lfilter-{name}", self.lfilter, b, a)
        for name in ("order2", "order8"):
            self.add(f"scipy/filtfilt-{name}", self.filtfilt, *filters[name])
        self.add("scipy/stft-400-160", self.scipy_stft, 400, 160, 16000)
        for fft_n in (400, 512, 1024, 4096):
            self.add(f"numpy/fft-{fft_n}", self.fft, fft_n)

    def add(self, name, make, *parameters):
        self.makers[name] = lambda: make(*parameters)

    def call(self, function, dst, *arguments):
        """A call with arguments that ctypes needs not look at again."""
        function = getattr(self.library, function)
        prepared = [pointer(dst)]
        for value in arguments:
            if isinstance(value, numpy.ndarray):
                prepared.append(pointer(value))
            elif isinstance(value, float):
                prepared.append(ctypes.c_float(value))
            else:
                prepared.append(ctypes.c_int(value) if value is not None else None)
        keep = arguments  # the arrays live as long as the function

        def run():
            if function(*prepared) != 0:
                raise RuntimeError(f"{function.__name__} failed, {len(keep)} arguments")
            return dst
        return run

    def spectrogram(self, fft_n, hop_n, rate, power):
        x = signal(rate)
        frame_n = len(x) // hop_n + 1
        freq_n = fft_n // 2 + 1
        dst = numpy.zeros((freq_n, frame_n, 2), numpy.float32)
        transform = torchaudio.transforms.Spectrogram(n_fft=fft_n, hop_length=hop_n, power=power)
        tensor = torch.from_numpy(x)

        def comparable(output):
            if isinstance(output, torch.Tensor):
                return torch.view_as_real(output).numpy() if power is None else output.numpy()
            return output if power is None else output[:, :, 0]
        return {"ours": self.call("sorvoAudioGetSpectrogram", dst, x, len(x), fft_n, hop_n, fft_n,
                                  1, frame_n, 1, power or 0.0, 0),
                "torchaudio": lambda: transform(tensor)}, comparable

    def mel(self, fft_n, hop_n, rate, mel_n, power):
        x = signal(rate)
        frame_n = len(x) // hop_n + 1
        dst = numpy.zeros((mel_n, frame_n), numpy.float32)
        transform = torchaudio.transforms.MelSpectrogram(
            rate, n_fft=fft_n, hop_length=hop_n, n_mels=mel_n, power=power, norm="slaney",
            mel_scale="slaney")
        tensor = torch.from_numpy(x)
        return {"ours": self.call("sorvoAudioGetMelSpectrogram", dst, x, len(x), rate, fft_n, hop_n,
                                  fft_n, 1, frame_n, 1, power, 0, 0.0, rate / 2.0, mel_n, 1, 0),
                "torchaudio": lambda: transform(tensor)}, numpy.asarray

    def elementwise(self, task):
        """On 30 s of sound, or the complex numbers that its pairs of samples are."""
        x = signal(16000) ** 2 if task in ("decibels", "log1p") else signal(16000)
        n = len(x)
        tensor = torch.from_numpy(x)
        if task == "decibels":
            dst = numpy.zeros_like(x)
            transform = torchaudio.transforms.AmplitudeToDB("power", 80.0)
            return {"ours": self.call("sorvoAudioConvertPowerToDB", dst, x, n, 80.0),
                    "torch": lambda: transform(tensor)}, \
                lambda output: output if output is dst else numpy.asarray(output) - output.max().item()
        if task == "log1p":
            dst = numpy.zeros_like(x)
            return {"ours": self.call("sorvoAudioLog1p", dst, x, n),
                    "torch": lambda: torch.log1p(tensor)}, numpy.asarray
        z = torch.view_as_complex(tensor.view(-1, 2))
        unit = task == "unit-numbers"
        mag = numpy.zeros(n // 2, numpy.float32)
        phase = numpy.zeros(n if unit else n // 2, numpy.float32)
        ours = self.call("sorvoAudioMagPhase", mag, phase, x, n // 2000, 1000, int(unit), 1.0)

        def theirs():
            angle = torch.angle(z)
            return z.abs(), torch.polar(torch.ones_like(angle), angle) if unit else angle

        def comparable(output):
            if output is mag:
                return numpy.concatenate((mag, phase))
            parts = (output[0], torch.view_as_real(output[1]).flatten() if unit else output[1])
            return numpy.concatenate([part.numpy() for part in parts])
        return {"ours": ours, "torch": theirs}, comparable

    def lfilter(self, b, a):
        x = signal(16000)
        dst = numpy.zeros_like(x)
        single = [c.astype(numpy.float32) for c in (b, a)]
        wide = x.astype(numpy.float64)
        return {"ours": self.call("sorvoAudioLinerFilter", dst, x, *single, None, len(x), len(x),
                                  len(b), len(a), 0),
                "scipy:float32": lambda: scipy.signal.lfilter(*single, x),
                "scipy:float64": lambda: scipy.signal.lfilter(b, a, wide)}, numpy.asarray

    def filtfilt(self, b, a):
        x = signal(16000)
        dst = numpy.zeros_like(x)
        single = [c.astype(numpy.float32) for c in (b, a)]
        wide = x.astype(numpy.float64)
        return {"ours": self.call("sorvoAudioFilterFilter", dst, x, *single, len(x), len(x), len(b),
                                  len(a), 1, 3 * len(b)),
                "scipy:float64": lambda: scipy.signal.filtfilt(b, a, wide)}, numpy.asarray

    def scipy_stft(self, fft_n, hop_n, rate):
        x = signal(rate)
        frame_n = len(x) // hop_n + 1
        dst = numpy.zeros((fft_n // 2 + 1, frame_n, 2), numpy.float32)
        scale = numpy.float32(fft_n / 2)  # its spectra are divided by the sum of the window

        def comparable(output):
            if output is dst:
                return output
            spectra = numpy.ascontiguousarray(output[2][:, :frame_n])
            return spectra.view(numpy.float32).reshape(dst.shape) * scale
        return {"ours": self.call("sorvoAudioGetSpectrogram", dst, x, len(x), fft_n, hop_n, fft_n,
                                  1, frame_n, 2, 0.0, 0),
                "scipy:stft": lambda: scipy.signal.stft(
                    x, rate, "hann", fft_n, fft_n - hop_n, padded=True, boundary="zeros")
                }, comparable

    def fft(self, fft_n):
        x = signal(16000)[:fft_n].copy()
        dst = numpy.zeros(2 * fft_n, numpy.float32)

        def comparable(output):
            return numpy.asarray(output, numpy.complex64).view(numpy.float32) \
                if numpy.iscomplexobj(output) else output
        return {"ours": self.call("sorvoAudioFFT", dst, x, fft_n),
                "numpy:fft": lambda: numpy.fft.fft(x),
                "scipy:fft": lambda: scipy.fft.fft(x)}, comparable


def difference(output, reference):
    return numpy.linalg.norm(output - reference) / numpy.linalg.norm(reference)


def cpu_time(run, count):
    start = time.process_time_ns()
    for _ in range(count):
        run()
    return (time.process_time_ns() - start) / count


def measure(variants, repetitions, sample_ns):
    """CPU times per call in nanoseconds, by variant; a repetition takes sample_ns or one call."""
    counts = {}
    for name, run in variants.items():
        run()
        counts[name] = max(1, round(sample_ns / max(cpu_time(run, 3), 1.0)))
    times = {name: [] for name in variants}
    for _ in range(repetitions):
        for name in random.sample(list(variants), len(variants)):
            times[name].append(cpu_time(variants[name], counts[name]))
    return times


def aggregates(run_name, times):
    median = statistics.median(times)
    spread = statistics.stdev(times) / statistics.mean(times) if len(times) > 1 else 0.0
    return [{"run_name": run_name, "aggregate_name": "median", "cpu_time": median},
            {"run_name": run_name, "aggregate_name": "cv", "cpu_time": spread}]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("library")
    parser.add_argument("out")
    parser.add_argument("--rows", default="")
    parser.add_argument("--repetitions", type=int, default=15)
    parser.add_argument("--sample-ms", type=float, default=30.0, help="CPU time of a repetition")
    options = parser.parse_args()

    random.seed(1)
    makers = Rows(ctypes.CDLL(options.library)).makers
    benchmarks = []
    for row, make in makers.items():
        if not re.search(options.rows, row):
            continue
        print(row, file=sys.stderr)
        variants, comparable = make()
        reference = comparable(variants["ours"]()).copy()
        for name, run in variants.items():
            if not difference(comparable(run()), reference) < 1e-4:
                sys.exit(f"{row}: {name} differs by {difference(comparable(run()), reference):.2g}")
        measured = measure(variants, options.repetitions, 1e6 * options.sample_ms)
        for name, times in measured.items():
            benchmarks += aggregates(f"{row}/{name}", times)
    versions = (f"python {platform.python_version()}, numpy {numpy.__version__}, "
                f"scipy {scipy.__version__}, torch {torch.__version__}, "
                f"torchaudio {torchaudio.__version__}")
    with open(options.out, "w", encoding="utf-8") as file:
        json.dump({"context": {"python": versions}, "benchmarks": benchmarks}, file)


if __name__ == "__main__":
    main()
