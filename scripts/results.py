"""Prints a digest of what each routine of the library gives for noise, silence, tiny and special values."""
import hashlib

import numpy as np
import sorvo_audio as sa


def signals():
    noise = np.random.default_rng(1).standard_normal(4000).astype(np.float32)
    special = noise.copy()
    special[[100, 2000]] = np.nan, np.inf
    yield "noise", noise
    yield "tiny", noise * np.float32(1e-39)
    yield "silence", np.zeros_like(noise)
    yield "special", special


def results(x):
    yield sa.fft(x[:400])
    spectrum = sa.stft(x, n_fft=512, hop_length=160)
    yield spectrum
    yield sa.istft(spectrum, hop_length=160)
    power = sa.melspectrogram(x, sr=16000, n_fft=400, hop_length=160, n_mels=80)
    yield power
    yield sa.power_to_db(power)
    yield sa.log1p(np.abs(x))
    yield sa.standardize(x)
    yield from sa.magphase(spectrum)
    yield sa.lfilter([0.2, 0.2], [1, -0.6], x)
    yield sa.filtfilt([0.2, 0.2], [1, -0.6], x)
    yield sa.resample(x, orig_sr=44100, target_sr=16000)


for name, signal in signals():
    for i, result in enumerate(results(signal)):
        result = np.ascontiguousarray(result)
        result = np.where(np.isnan(result), result.dtype.type(np.nan), result)  # one NaN is as good as another
        print(name, i, hashlib.sha256(result.tobytes()).hexdigest()[:16])
