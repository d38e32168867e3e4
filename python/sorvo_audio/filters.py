"""Linear filters and sample-rate conversion of numpy arrays, [..., samples] -> [..., samples].

Coefficients and states are rounded to float32; the arithmetic is double.
"""
from __future__ import annotations

import ctypes
from typing import Any, overload

import numpy as np
import numpy.typing as npt

from . import native
from ._arguments import apply, choice, coefficients, count, real
from ._types import Floats, PadType, Reals


@overload
def lfilter(b: npt.ArrayLike, a: npt.ArrayLike, x: Reals, *, zi: None = None) -> Floats: ...


@overload
def lfilter(b: npt.ArrayLike, a: npt.ArrayLike, x: Reals, *, zi: npt.ArrayLike) -> tuple[Floats, Floats]: ...


def lfilter(b: npt.ArrayLike, a: npt.ArrayLike, x: Reals, *, zi: Any = None) -> Any:
    """Filters along the last axis: a[0] y[n] = b[0] x[n] + b[1] x[n-1] + ... - a[1] y[n-1] - ...

    x [..., samples] -> [..., samples]; with ``zi``, also the final state

    zi  initial state, [..., max(len(a), len(b)) - 1]; from rest unless given. `lfilter_zi` times the
        first sample starts without a transient.
    """
    b, a, x = coefficients("b", b), coefficients("a", a), real("x", x)
    b_n, a_n = len(b), len(a)
    n, state_n = x.shape[-1], max(a_n, b_n) - 1
    shape = (*x.shape[:-1], state_n)
    if zi is None:
        state = np.zeros(shape, np.float32)
    else:
        state = np.array(zi, np.float32)
        if state.shape != shape:
            raise ValueError(f"zi has shape {state.shape}; it must have shape {shape}: "
                             "the batch, then max(len(a), len(b)) - 1")
    states = (state[position] for position in np.ndindex(*shape[:-1]))
    y = apply(
        lambda dst, src: native.sorvoAudioLinerFilter(
            dst, src, b, a, next(states), n, n, b_n, a_n, state_n),
        x, 1, (n,))
    return y if zi is None else (y, state)


def lfilter_zi(b: npt.ArrayLike, a: npt.ArrayLike) -> Floats:
    """State of a filter that has settled on a constant input of 1, for `lfilter`.

    -> [max(len(a), len(b)) - 1]

    Infinite or NaN if the coefficients ``a`` sum to 0: such a filter does not settle.
    """
    b, a = coefficients("b", b), coefficients("a", a)
    result = np.zeros(max(len(a), len(b)) - 1, np.float32)
    if len(result):
        native.check(native.sorvoAudioGetLinerFilterZiCoef(result, b, a, len(result), len(b), len(a)))
    return result


def filtfilt(b: npt.ArrayLike, a: npt.ArrayLike, x: Reals, *, padtype: PadType = "odd",
             padlen: int | None = None) -> Floats:
    """Zero-phase filtering along the last axis: forward, then backward.

    x [..., samples] -> [..., samples]

    padtype  extension of both ends: "odd", "even" (reflected), "constant" or None
    padlen   its length; 3 * max(len(a), len(b)) unless given. "odd" and "even" need a longer signal.
    """
    b, a, x = coefficients("b", b), coefficients("a", a), real("x", x)
    b_n, a_n = len(b), len(a)
    n = x.shape[-1]
    pad_type = choice("padtype", padtype, {"odd": native.PAD_ODD, "even": native.PAD_REFLECT,
                                           "constant": native.PAD_CONSTANT, None: native.PAD_NONE})
    pad_len = 3 * max(a_n, b_n) if padlen is None else count("padlen", padlen, 0)
    if padtype in ("odd", "even") and pad_len >= n:
        raise ValueError(f"padlen is {pad_len}; it must be less than the {n} samples of x")
    return apply(
        lambda dst, src: native.sorvoAudioFilterFilter(
            dst, src, b, a, n, n, b_n, a_n, pad_type, pad_len),
        x, 1, (n,))


def resample(y: Reals, *, orig_sr: int, target_sr: int) -> Floats:
    """Converts to another sample rate by windowed-sinc interpolation with 65 taps.

    y [..., samples] -> [..., ceil(target_sr / orig_sr * samples)]

    Outputs later than half an input sample before the last input sample are 0; two zeros behind the source
    get them. With target_sr / orig_sr = up / down in lowest terms and an even ``up``, everything lies
    0.5 / up of an input sample early.
    """
    y = real("y", y)
    orig_sr, target_sr = count("orig_sr", orig_sr), count("target_sr", target_sr)
    n = y.shape[-1]
    target_n = resample_count(n, orig_sr, target_sr)
    return apply(
        lambda dst, src: native.sorvoAudioResample(dst, src, target_sr, target_n, orig_sr, n),
        y, 1, (target_n,))


def resample_count(n: int, orig_sr: int, target_sr: int) -> int:
    result = ctypes.c_int()
    status = native.sorvoAudioGetResampleLen(result, target_sr, n, orig_sr)
    if status == native.ERROR_INTERNAL:
        raise ValueError(f"y has {n} samples; at {target_sr} / {orig_sr} of the rate they are more than "
                         f"{native.INT_MAX}")
    native.check(status)
    return result.value
