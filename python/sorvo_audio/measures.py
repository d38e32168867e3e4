"""Element-wise operations and measures of numpy arrays."""
from __future__ import annotations

import ctypes
import math
from collections.abc import Callable, Sequence
from typing import Any, Literal

import numpy as np
import numpy.typing as npt

from . import native
from ._arguments import apply, count, long_enough, number, real
from ._types import Floats, Reals
from ._warnings import warn


def _items(function: Callable[[Any, Any, int], int], name: str, value: Any,
           axis: int | Sequence[int] | None) -> tuple[Floats, Floats]:
    """``value`` as an array, and ``function`` of its items, each one flat array for the library."""
    ndim = np.ndim(value)
    if axis is None:
        item_ndim = ndim
    else:
        axes = sorted(a % ndim if -ndim <= a < ndim else -1
                      for a in ([axis] if isinstance(axis, int) else axis))
        item_ndim = len(axes)
        if axes != list(range(ndim - item_ndim, ndim)) or not axes:
            raise ValueError(f"axis is {axis!r}; it must be None, -1, or a tuple of the last axes such as "
                             "(-2, -1)")
    shape = np.shape(value)[ndim - item_ndim:]
    n = count(f"the number of values of {name}", math.prod(shape))
    x = real(name, value, 0)
    return x, apply(lambda dst, src: function(dst, src, n), x, item_ndim, shape)


def power_to_db(S: Reals, *, ref: float | Literal["max"] | Callable[[Floats], Any] = 1.0,
                amin: float = 1e-10, top_db: float | None = 80.0,
                axis: int | Sequence[int] | None = None) -> Floats:
    """Powers in decibels relative to a reference, with a floor.

    S [...] -> [...]: 10 log10(max(S, amin)) - 10 log10(max(ref, amin)), and not below the maximum of that
    less top_db

    ref     a power, "max", or a function that makes one of an array, such as numpy.max
    amin    the least power; NaN counts as this
    top_db  dynamic range to keep; None keeps all
    axis    over which maximum and reference are taken: None all of S; (-2, -1) each spectrogram of a batch
    """
    if isinstance(ref, str) and ref != "max":
        raise ValueError(f'ref is {ref!r}; it must be a number, "max" or a function')
    amin = number("amin", amin, minimum=float(np.finfo(np.float32).tiny))
    dynamic_range = None if top_db is None else np.float32(number("top_db", top_db, minimum=0.0))
    # The library's least power is 1e-10: what shall be less is scaled up by a power of two, which is exact.
    scale = np.float32(2.0 ** max(0, math.ceil(math.log2(1e-10 / amin))))

    def decibels(dst: Any, src: Any, n: int) -> int:
        if isinstance(ref, str):
            reference = np.fmax.reduce(src)
        else:
            reference = number("ref", ref(src)) if callable(ref) else abs(number("ref", ref))
        powers = np.fmax(np.append(src, np.float32(reference)), np.float32(amin))
        if scale > 1 and powers.max() > np.finfo(np.float32).max / scale:
            raise ValueError(f"amin is {amin:g}; beside powers up to {powers.max():g} it must be a number not "
                             f"less than {6e-49 * float(powers.max()):.1g}")
        powers *= scale
        # The library's reference is the maximum; the difference to the last value is relative to ref.
        status = native.sorvoAudioConvertPowerToDB(powers, powers, n + 1, -1.0)
        np.subtract(powers[:-1], powers[-1], out=dst)
        if dynamic_range is not None:
            np.maximum(dst, dst.max() - dynamic_range, out=dst)
        return status

    return _items(decibels, "S", S, axis)[1]


def log1p(x: Reals) -> Floats:
    """log(1 + x), accurate near 0.

    x [...] -> [...]
    """
    return _items(native.sorvoAudioLog1p, "x", x, None)[1]


def standardize(x: Reals, *, axis: int | Sequence[int] | None = None) -> Floats:
    """To zero mean and unit variance.

    x [...] -> [...]

    axis  what is one population: None all of x; -1 each row; (-2, -1) each spectrogram of a batch

    Sums are kept in float32. Where the variance comes out negative by rounding (a large mean beside a small
    variance), all values of that population are NaN, and a warning says so.
    """
    x, result = _items(native.sorvoAudioStandardize, "x", x, axis)
    over = axis if axis is None or isinstance(axis, int) else tuple(axis)
    lost = np.isnan(result) & np.isfinite(x).all(over, keepdims=True)
    if lost.any():
        warn(f"standardize: {np.count_nonzero(lost)} of {x.size} values are NaN: the mean is so large beside "
             "the variance that rounding made the variance negative. Subtract the mean first: x - x.mean()")
    return result


def trim(y: Reals, *, top_db: float = 60.0, frame_length: int = 2048,
         hop_length: int = 512) -> tuple[Floats, npt.NDArray[np.int64]]:
    """Cuts silence off both ends; frames at the ends are reflected (librosa: zeros).

    y [samples] -> the span [n], its first and end position [2]

    top_db  frames whose mean square is less than this below that of the loudest frame are kept, with all
            between the first and the last of them. With 0, the span is empty.
    """
    y = real("y", y)
    if y.ndim != 1:
        raise ValueError(f"y has shape {y.shape}; it must be one signal [samples], since spans differ "
                         "in length")
    frame_n = count("frame_length", frame_length)
    long_enough("y", y, "frame_length", frame_n)
    pos, length = ctypes.c_int(), ctypes.c_int()
    native.check(native.sorvoAudioGetNonSilentPos(
        pos, length, y, y.shape[-1], frame_n, count("hop_length", hop_length),
        number("top_db", top_db, minimum=0.0)))
    start = max(pos.value, 0)
    return y[start:start + length.value], np.array([start, start + length.value])
