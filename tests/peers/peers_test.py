"""Compares the shared library with SciPy on random data.

Usage: peers_test.py LIBRARY

Prints for every comparison the largest difference, relative to the largest expected value, beside
its limit. Exit code 77: NumPy or SciPy is not installed.
"""

import ctypes
import sys

try:
    import numpy as np
    from scipy import signal
except ImportError as missing:
    print(f"skipped: {missing} (Debian: apt-get install python3-numpy python3-scipy)")
    sys.exit(77)

library = ctypes.CDLL(sys.argv[1])
random = np.random.default_rng(1)
failures = 0

# Limits, and what was measured.
LFILTER = 2.5e-7  # 1.4e-7
LFILTER_RESONANT = 2e-5  # 1.3e-5: the state is float here and double there
ZI = 8e-8  # 5.1e-8
FILTFILT = 7e-8  # 4.7e-8
STFT = 8e-7  # 5.4e-7
FFT = 1.6e-6  # 1.1e-6, for the prime length
RESAMPLE = 6e-8  # 4.1e-8


def call(name, *arguments):
    """Arrays are passed as pointers, Python floats as floats, integers as ints."""

    def convert(argument):
        if isinstance(argument, np.ndarray):
            assert argument.flags.c_contiguous and argument.dtype in (np.float32, np.intc)
            return ctypes.c_void_p(argument.ctypes.data)
        return ctypes.c_float(argument) if isinstance(argument, float) else argument

    status = getattr(library, "sorvoAudio" + name)(*map(convert, arguments))
    if status != 0:
        sys.exit(f"sorvoAudio{name} returned {status}")


def number(name, *arguments):
    result = np.zeros(1, np.intc)
    call(name, result, *arguments)
    return int(result[0])


def compare(what, actual, expected, limit):
    global failures
    if actual.shape != expected.shape:
        error = np.inf
    else:
        error = np.max(np.abs(actual - expected)) / np.max(np.abs(expected))
    good = error <= limit
    failures += not good
    print(f"{'' if good else 'FAILED: '}{what}: {error:.2g} (limit {limit:g})")


def noise(n):
    return random.uniform(-1, 1, n).astype(np.float32)


def designs():
    """Coefficients rounded to float, as both sides get them."""
    for name, (b, a) in {
        "butter 4": signal.butter(4, 0.3),
        "cheby1 7": signal.cheby1(7, 1, 0.4),
        "ellip 2 highpass": signal.ellip(2, 1, 40, 0.2, "high"),
        "fir 9": (signal.firwin(9, 0.3), [1.0]),
        "gain": ([0.5], [2.0]),
        "scaled": (signal.butter(3, 0.25)[0] * 3, signal.butter(3, 0.25)[1] * 3),
    }.items():
        yield name, np.asarray(b, np.float32), np.asarray(a, np.float32)


def filters():
    x = noise(1000)
    for name, b, a in designs():
        wide_b, wide_a = b.astype(float), a.astype(float)
        state_n = max(len(b), len(a)) - 1
        limit = LFILTER_RESONANT if name.startswith("cheby1") else LFILTER
        y = np.zeros_like(x)
        call("LinerFilter", y, x, b, a, None, len(y), len(x), len(b), len(a), 0)
        compare(f"lfilter, {name}", y, signal.lfilter(wide_b, wide_a, x), limit)
        start = noise(state_n)
        state = start.copy()
        call("LinerFilter", y, x, b, a, state, len(y), len(x), len(b), len(a), state_n)
        if state_n > 0:
            expected, final = signal.lfilter(wide_b, wide_a, x, zi=start.astype(float))
            compare(f"lfilter with state, {name}", y, expected, limit)
            compare(f"lfilter, final state, {name}", state, final, limit)
            zi = np.zeros(state_n, np.float32)
            call("GetLinerFilterZiCoef", zi, b, a, state_n, len(b), len(a))
            compare(f"lfilter_zi, {name}", zi, signal.lfilter_zi(wide_b, wide_a), ZI)
        if state_n == 0:
            continue  # SciPy's filtfilt wants a state
        for pad_type, padtype in enumerate([None, "odd", "even", "constant"]):
            for pad_len in (0, 30):
                call("FilterFilter", y, x, b, a, len(y), len(x), len(b), len(a), pad_type, pad_len)
                expected = signal.filtfilt(wide_b, wide_a, x, padtype=padtype, padlen=pad_len)
                compare(f"filtfilt {padtype} {pad_len}, {name}", y, expected, FILTFILT)


def transforms():
    for fft_n, hop_n, sample_n in ((256, 128, 3000), (400, 200, 4000), (512, 128, 4096),
                                   (300, 75, 2011)):
        # SciPy's defaults: a periodic Hann window, zeros at both ends, and zeros at the end until
        # whole frames fill the signal. Spectra are divided by the sum of the window, which is
        # fft_n / 2: this is what norm 2 does.
        x = noise(sample_n)
        frame_n = number("GetFrameLen", sample_n, fft_n, hop_n, 2)
        _, _, expected = signal.stft(x.astype(float), nperseg=fft_n, noverlap=fft_n - hop_n)
        out = np.zeros((fft_n // 2 + 1, frame_n, 2), np.float32)
        call("GetSpectrogram", out, x, sample_n, fft_n, hop_n, fft_n, 1, frame_n, 2, 0.0, 2)
        compare(f"stft {fft_n}/{hop_n}", out[..., 0] + 1j * out[..., 1], expected, STFT)

        _, expected = signal.istft(expected, nperseg=fft_n, noverlap=fft_n - hop_n)
        n = number("GetSampleLen", frame_n, fft_n // 2 + 1, hop_n, 2)
        y = np.zeros(n, np.float32)
        call("GetInverseSpectrogram", y, out, frame_n, fft_n // 2 + 1, hop_n, fft_n, 1, n, 2, 2)
        compare(f"istft {fft_n}/{hop_n}", y, expected, STFT)
    for n in (1, 2, 7, 64, 360, 1009, 4096):
        x = noise(n)
        out = np.zeros((n, 2), np.float32)
        call("FFT", out, x, n)
        compare(f"fft {n}", out[:, 0] + 1j * out[:, 1], np.fft.fft(x.astype(float)), FFT)


def prototype(up, down):
    """The filters of the library as one prototype of 65 up taps: phase p of tap k is at
    t = k - 32 + (p - (up - 1) / 2) / up input samples from the centre."""
    cutoff = min(1.0, up / down)
    t = (np.arange(65 * up) - (65 * up - 1) / 2) / up
    window = 0.42 + 0.5 * np.cos(2 * np.pi * t / 65) + 0.08 * np.cos(4 * np.pi * t / 65)
    return cutoff * np.sinc(cutoff * t) * window


def resampling():
    # With even `up` outputs lie half a phase early, which resample_poly has no equivalent for.
    # Outputs next to the last input sample are zero. One zero behind it brings back those at it; two
    # bring back those that are nearer to the sample that would follow.
    for dst_rate, src_rate in ((8000, 16000), (16000, 16000), (48000, 32000), (3, 7), (7, 3),
                               (11025, 48000), (44100, 32000)):
        up, down = np.array([dst_rate, src_rate]) // np.gcd(dst_rate, src_rate)
        if up % 2 == 0:
            continue
        x = noise(900)
        n = number("GetResampleLen", dst_rate, len(x), src_rate)
        y = np.zeros(n, np.float32)
        longer = np.append(x, np.zeros(2, np.float32))
        call("Resample", y, longer, dst_rate, n, src_rate, len(longer))
        # resample_poly multiplies its filter by up.
        expected = signal.resample_poly(x.astype(float), up, down, window=prototype(up, down) / up)
        compare(f"resample_poly {up}/{down}", y, expected, RESAMPLE)


def main():
    filters()
    transforms()
    resampling()
    sys.exit(f"{failures} comparisons failed" if failures else 0)


if __name__ == "__main__":
    main()
