"""Element-wise operations and measures of numpy arrays."""
from __future__ import annotations

import ctypes
import math
import warnings
from collections.abc import Callable, Sequence
from typing import Any

import numpy as np

from . import native
from ._arguments import Floats, apply, count, number, real


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


def power_to_db(S: Any, *, ref: Any = np.max, top_db: float | None = 80.0,
                axis: int | Sequence[int] | None = None) -> Floats:
    """Powers in decibels relative to their maximum, with a floor.

    S [...] -> [...]: 10 log10(max(S, 1e-10)) - 10 log10(max(maximum, 1e-10)), and not below -top_db

    ref     numpy.max; no other reference exists
    top_db  dynamic range to keep; None keeps all
    axis    over which the maximum is taken: None all of S; (-2, -1) each spectrogram of a batch
    """
    if ref is not np.max and ref != "max":
        raise ValueError(f"ref is {ref!r}; it must be numpy.max. Decibels relative to 1: add "
                         "10 * numpy.log10(max(S.max(), 1e-10))")
    floor = -1.0 if top_db is None else number("top_db", top_db, minimum=0.0)
    return _items(lambda dst, src, n: native.sorvoAudioConvertPowerToDB(dst, src, n, floor), "S", S, axis)[1]


def log1p(x: Any) -> Floats:
    """log(1 + x), accurate near 0.

    x [...] -> [...]
    """
    return _items(native.sorvoAudioLog1p, "x", x, None)[1]


def standardize(x: Any, *, axis: int | Sequence[int] | None = None) -> Floats:
    """To zero mean and unit variance.

    x [...] -> [...]

    axis  what is one population: None all of x; -1 each row; (-2, -1) each spectrogram of a batch

    Sums are kept in float32. Where the variance comes out negative by rounding (a large mean beside a small
    variance), all values of that population are NaN, and a RuntimeWarning says so.
    """
    x, result = _items(native.sorvoAudioStandardize, "x", x, axis)
    over = axis if axis is None or isinstance(axis, int) else tuple(axis)
    lost = np.isnan(result) & np.isfinite(x).all(over, keepdims=True)
    if lost.any():
        warnings.warn(
            f"standardize: {np.count_nonzero(lost)} of {x.size} values are NaN: the mean is so large beside "
            "the variance that rounding made the variance negative. Subtract the mean first: x - x.mean()",
            RuntimeWarning, stacklevel=2)
    return result


def trim(y: Any, *, top_db: float = 60.0, frame_length: int = 2048,
         hop_length: int = 512) -> tuple[Floats, np.ndarray[Any, np.dtype[np.int64]]]:
    """Cuts silence off both ends.

    y [samples] -> the span [n], its first and end position [2]

    top_db  frames whose mean square is less than this below that of the loudest frame are kept, with all
            between the first and the last of them. With 0, or for fewer samples than frame_length, the span
            is empty.
    """
    y = real("y", y)
    if y.ndim != 1:
        raise ValueError(f"y has shape {y.shape}; it must be one signal [samples], since spans differ "
                         "in length")
    pos, length = ctypes.c_int(), ctypes.c_int()
    native.check(native.sorvoAudioGetNonSilentPos(
        pos, length, y, y.shape[-1], count("frame_length", frame_length), count("hop_length", hop_length),
        number("top_db", top_db, minimum=0.0)))
    start = max(pos.value, 0)
    return y[start:start + length.value], np.array([start, start + length.value])
