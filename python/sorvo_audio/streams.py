"""Signals in blocks of any length.

Each stream is given blocks [..., samples] by ``push``, which returns all results that are determined by now,
along the last axis, possibly none. ``flush`` returns the rest and makes the stream ready for another
signal. Joined, the results are those of the whole signal in one call, bit for bit. All blocks of a signal
have the same batch dimensions; a signal has at most 2^31 - 1 samples.
"""
from __future__ import annotations

from collections.abc import Sequence
from math import gcd
from typing import Any, Generic, TypeVar

import numpy as np
import numpy.typing as npt

from . import native
from ._arguments import apply, count, long_enough, number, real
from ._coefficients import polynomials
from ._framing import Framing, MelBands
from ._types import Center, Floats, MelNorm, PadMode, Reals, SpectrumNorm, Tail, Window
from .filters import lfilter, resample_count, sample_rates, tail_lengths

Scalar = TypeVar("Scalar", bound=np.generic)

__all__ = ["StftStream", "MelStream", "ResampleStream", "FilterStream"]


def _check_batch(block: Floats, batch: tuple[int, ...]) -> None:
    if block.shape[:-1] != batch:
        raise ValueError(f"block has shape {block.shape}; its leading dimensions must be {batch}, as in the "
                         "blocks before")


class _Signal:
    """The last part of a signal whose length is not known yet."""

    def __init__(self) -> None:
        self.sample_n = 0  # of the whole signal so far
        self._first = 0  # position of samples[..., 0]
        self._samples = np.zeros(0, np.float32)

    def append(self, value: Any) -> None:
        block = real("block", value, minimum_n=0)
        if self.sample_n == 0:
            self._samples = np.zeros((*block.shape[:-1], 0), np.float32)
        _check_batch(block, self.batch)
        self.sample_n = count("the number of samples since the start", self.sample_n + block.shape[-1], 0)
        self._samples = np.concatenate([self._samples, block], axis=-1)

    @property
    def batch(self) -> tuple[int, ...]:
        return self._samples.shape[:-1]

    def part(self, begin: int, end: int, reflect: bool = False) -> Floats:
        """Samples begin ... end - 1, with reflection or zeros beyond the ends."""
        if 0 <= begin and end <= self.sample_n:
            return np.ascontiguousarray(self._samples[..., begin - self._first:end - self._first])
        position = np.arange(begin, end)
        if reflect:
            period = max(2 * (self.sample_n - 1), 1)
            position %= period
            position = np.minimum(position, period - position) % period
            return np.ascontiguousarray(self._samples[..., position - self._first])
        result = np.zeros((*self.batch, end - begin), np.float32)
        inside = (position >= 0) & (position < self.sample_n)
        result[..., inside] = self._samples[..., position[inside] - self._first]
        return result

    def forget_before(self, position: int) -> None:
        position = min(max(position, self._first), self.sample_n)
        self._samples = self._samples[..., position - self._first:]
        self._first = position


class _FrameStream(Generic[Scalar]):
    """Cuts a signal into the frames of its final framing, and has them computed without centring."""

    def __init__(self, framing: Framing, shape: Sequence[int], dtype: Any) -> None:
        self._framing = framing
        self._shape = shape
        self._dtype = dtype
        self._begin()

    def _begin(self) -> None:
        self._signal = _Signal()
        self._frame_n = 0  # that have been returned

    def _compute(self, dst: Any, src: Any, sample_n: int, frame_n: int) -> int:
        raise NotImplementedError

    def push(self, block: Reals) -> npt.NDArray[Scalar]:
        self._signal.append(block)
        framing, sample_n = self._framing, self._signal.sample_n
        # The count is rounded to single precision; as it never falls, no frame is returned too early.
        frame_n = min(framing.frame_count(sample_n), self._complete_frames()) if sample_n else 0
        result = self._frames(frame_n)
        # Behind the end, a reflection needs half a frame, and what a rounded count can exceed the length by.
        reflected_n = framing.fft_n // 2 + 3 + (sample_n >> 21)
        self._signal.forget_before(min(self._frame_begin(self._frame_n), sample_n - reflected_n))
        return result

    def flush(self) -> npt.NDArray[Scalar]:
        signal = self._signal
        if 0 < signal.sample_n < self._framing.fft_n:
            self._begin()
            long_enough("signal", signal.part(0, signal.sample_n), "n_fft", self._framing.fft_n)
        result = self._frames(self._framing.frame_count(signal.sample_n) if signal.sample_n else 0)
        self._begin()
        return result

    def _frame_begin(self, t: int) -> int:
        centered = self._framing.center != native.CENTER_NONE
        return t * self._framing.hop_n - (self._framing.fft_n // 2 if centered else 0)

    def _complete_frames(self) -> int:
        last_begin = self._signal.sample_n - self._framing.fft_n
        return max(0, (last_begin - self._frame_begin(0)) // self._framing.hop_n + 1)

    def _frames(self, end: int) -> npt.NDArray[Scalar]:
        """Frames from the first that has not been returned up to ``end``."""
        framing = self._framing
        results: list[npt.NDArray[Scalar]] = [np.zeros((*self._signal.batch, *self._shape, 0), self._dtype)]
        # Short enough for a frame count that is exact in single precision.
        frames_at_once = max(1, 2**22 // framing.hop_n)
        while self._frame_n < end:
            frame_n = min(frames_at_once, end - self._frame_n)
            sample_n = (frame_n - 1) * framing.hop_n + framing.fft_n
            begin = self._frame_begin(self._frame_n)
            part = self._signal.part(begin, begin + sample_n, framing.center == native.CENTER_REFLECT)
            results.append(apply(lambda dst, src: self._compute(dst, src, sample_n, frame_n), part, 1,
                                 (*self._shape, frame_n), self._dtype))
            self._frame_n += frame_n
        return np.concatenate(results, axis=-1)


class StftStream(_FrameStream[Any]):
    """`stft` in blocks, with its parameters; by default the ends are reflected (librosa: zeros).

    push(block [..., samples]), flush() -> [..., n_fft // 2 + 1, frames]
    """

    def __init__(self, *, n_fft: int = 2048, hop_length: int | None = None, win_length: int | None = None,
                 window: Window = "hann", center: Center = True, pad_mode: PadMode = "reflect",
                 power: float | None = None, norm: SpectrumNorm = None) -> None:
        framing = Framing.of(n_fft, hop_length, win_length, window, center, pad_mode, power, norm)
        super().__init__(framing, (framing.freq_n,), np.complex64)

    def _compute(self, dst: Any, src: Any, sample_n: int, frame_n: int) -> int:
        return self._framing.spectrogram(dst, src, sample_n, frame_n, native.CENTER_NONE)

    def _frames(self, end: int) -> npt.NDArray[Any]:
        result = super()._frames(end)
        return np.ascontiguousarray(result.real) if self._framing.power else result


class MelStream(_FrameStream[np.float32]):
    """`melspectrogram` in blocks, with its parameters; by default the ends are reflected (librosa: zeros).

    push(block [..., samples]), flush() -> [..., n_mels, frames]
    """

    def __init__(self, *, sr: int, n_fft: int = 2048, hop_length: int | None = None,
                 win_length: int | None = None, window: Window = "hann", center: Center = True,
                 pad_mode: PadMode = "reflect", power: float = 2.0, fft_norm: SpectrumNorm = None,
                 n_mels: int = 128, fmin: float = 0.0, fmax: float | None = None, htk: bool = False,
                 norm: MelNorm = "slaney") -> None:
        framing = Framing.of(n_fft, hop_length, win_length, window, center, pad_mode,
                             number("power", power, above=0.0), fft_norm, "fft_norm")
        self._bands = MelBands.of(sr, framing.fft_n, n_mels, fmin, fmax, htk, norm)
        super().__init__(framing, (self._bands.mel_n,), np.float32)

    def _compute(self, dst: Any, src: Any, sample_n: int, frame_n: int) -> int:
        return self._bands.spectrogram(dst, src, sample_n, self._framing, frame_n, native.CENTER_NONE)


class ResampleStream:
    """`resample` in blocks, with its parameters; the last outputs are 0 by default (librosa: computed).

    push(block [..., samples]), flush() -> [..., samples at target_sr]

    An output needs the 32 input samples behind it. With target_sr / orig_sr = up / down in lowest terms, each
    push begins at a multiple of ``down`` input samples and so repeats up to ``up`` outputs and those of 32
    input samples: give long blocks where ``up`` is large.
    """

    def __init__(self, *, orig_sr: int, target_sr: int, tail: Tail = "zeros") -> None:
        self._orig_sr, self._target_sr = sample_rates(orig_sr, target_sr)
        self._zero_n, self._ringing_n = tail_lengths(tail)
        divisor = gcd(self._orig_sr, self._target_sr)
        self._up, self._down = self._target_sr // divisor, self._orig_sr // divisor
        self._begin()

    def _begin(self) -> None:
        self._signal = _Signal()
        self._output_n = 0  # that have been returned

    def push(self, block: Reals) -> Floats:
        self._signal.append(block)
        # Outputs whose 65 taps, 32 on each side of their position, lie before the end of the signal.
        complete = -((self._phase - (self._signal.sample_n - 32) * self._up) // self._down)
        result = self._outputs(max(complete, 0))
        self._signal.forget_before(self._first_period() * self._down)
        return result

    def flush(self) -> Floats:
        sample_n, end = self._signal.sample_n, 0
        if sample_n:
            self._signal.append(np.zeros((*self._signal.batch, self._zero_n), np.float32))
            end = resample_count(sample_n + self._ringing_n, self._orig_sr, self._target_sr)
        result = self._outputs(end)
        self._begin()
        return result

    @property
    def _phase(self) -> int:
        """Output i lies at input position (phase + i * down) // up."""
        return (self._up - 1) // 2

    def _first_period(self) -> int:
        """The last period of the phases that begins 32 samples before the next output, or earlier."""
        position = (self._phase + self._output_n * self._down) // self._up
        return max(0, (position - 32) // self._down)

    def _outputs(self, end: int) -> Floats:
        """Outputs from the first that has not been returned up to ``end``."""
        if end <= self._output_n:
            return np.zeros((*self._signal.batch, 0), np.float32)
        period = self._first_period()
        src = self._signal.part(period * self._down, self._signal.sample_n)
        src_n, dst_n = src.shape[-1], end - period * self._up
        repeated_n = self._output_n - period * self._up
        self._output_n = end
        result: Floats = apply(
            lambda dst, item: native.sorvoAudioResample(
                dst, item, self._target_sr, dst_n, self._orig_sr, src_n),
            src, 1, (dst_n,))[..., repeated_n:].copy()
        return result


class FilterStream:
    """`lfilter` in blocks, with its parameters.

    push(block [..., samples]) -> [..., samples], flush() -> [..., 0]
    """

    def __init__(self, b: npt.ArrayLike, a: npt.ArrayLike, *, zi: Any = None) -> None:
        self._b, self._a = polynomials(b, a)
        self._start = zi
        self._state: Floats | None = None

    def push(self, block: Reals) -> Floats:
        x = real("block", block, minimum_n=0)
        if self._state is None:
            shape = (*x.shape[:-1], max(len(self._a), len(self._b)) - 1)
            self._state = np.zeros(shape, np.float32) if self._start is None else self._start
        else:
            _check_batch(x, np.shape(self._state)[:-1])
        if x.shape[-1] == 0:
            return x
        y, self._state = lfilter(self._b, self._a, x, zi=self._state)
        return y

    def flush(self) -> Floats:
        batch = () if self._state is None else np.shape(self._state)[:-1]
        self._state = None
        return np.zeros((*batch, 0), np.float32)
