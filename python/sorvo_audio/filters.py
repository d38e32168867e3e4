"""Linear filters and sample-rate conversion of numpy arrays, [..., samples] -> [..., samples].

Coefficients and states are rounded to float32; the arithmetic is double. Where rounded coefficients make a filter
unstable, or its response more than 1 % of the largest gain off, a warning says so.
"""
from __future__ import annotations

import ctypes
from typing import Any, overload

import numpy as np
import numpy.typing as npt

from . import native
from ._arguments import apply, choice, count, real
from ._coefficients import polynomials, sections
from ._types import Floats, PadType, Reals, Tail
from ._warnings import warn

_PAD_MODES: dict[PadType, Any] = {
    "odd": {"mode": "reflect", "reflect_type": "odd"}, "even": {"mode": "reflect"}, "constant": {"mode": "edge"},
    None: None}


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
    (b, a), x = polynomials(b, a), real("x", x)
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
    b, a = polynomials(b, a)
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
    (b, a), x = polynomials(b, a), real("x", x)
    b_n, a_n = len(b), len(a)
    n = x.shape[-1]
    pad_type = choice("padtype", padtype, {"odd": native.PAD_ODD, "even": native.PAD_REFLECT,
                                           "constant": native.PAD_CONSTANT, None: native.PAD_NONE})
    pad_len = _pad_length(padlen, 3 * max(a_n, b_n), padtype, n)
    return apply(
        lambda dst, src: native.sorvoAudioFilterFilter(
            dst, src, b, a, n, n, b_n, a_n, pad_type, pad_len),
        x, 1, (n,))


@overload
def sosfilt(sos: npt.ArrayLike, x: Reals, *, zi: None = None) -> Floats: ...


@overload
def sosfilt(sos: npt.ArrayLike, x: Reals, *, zi: npt.ArrayLike) -> tuple[Floats, Floats]: ...


def sosfilt(sos: npt.ArrayLike, x: Reals, *, zi: Any = None) -> Any:
    """Filters along the last axis by second-order sections, one after the other.

    x [..., samples] -> [..., samples]; with ``zi``, also the final states

    sos  [sections, 6]: b[0], b[1], b[2], 1, a[1], a[2] of each, as scipy's designs give with output="sos"
    zi   initial states, [sections, ..., 2]; from rest unless given. `sosfilt_zi` times the first sample
         starts without a transient.

    The signal between two sections is float32.
    """
    cascade, x = sections(sos), real("x", x)
    if zi is None:
        for b, a in cascade:
            x = lfilter(b, a, x)
        return x
    shape = (len(cascade), *x.shape[:-1], 2)
    if np.shape(zi) != shape:
        raise ValueError(f"zi has shape {np.shape(zi)}; it must have shape {shape}: the sections, the batch, then 2")
    states = []
    for (b, a), state in zip(cascade, zi):
        x, state = lfilter(b, a, x, zi=state)
        states.append(state)
    return x, np.stack(states)


def sosfilt_zi(sos: npt.ArrayLike) -> Floats:
    """States of sections that have settled on a constant input of 1, for `sosfilt`.

    -> [sections, 2]
    """
    states, gain = [], 1.0
    for b, a in sections(sos):
        states.append(np.float32(gain) * lfilter_zi(b, a))
        gain *= float(b.sum(dtype=np.float64) / a.sum(dtype=np.float64))
    return np.stack(states)


def sosfiltfilt(sos: npt.ArrayLike, x: Reals, *, padtype: PadType = "odd", padlen: int | None = None) -> Floats:
    """Zero-phase filtering along the last axis by second-order sections: all forward, then all backward.

    x [..., samples] -> [..., samples]

    padtype, padlen  as those of `filtfilt`; padlen is 3 * (1 + the order of the filter) unless given
    """
    cascade, x = np.array([np.concatenate(section) for section in sections(sos)]), real("x", x)
    # A section of order 1 has a 0 at the end of both.
    order = 2 * len(cascade) - min(np.count_nonzero(cascade[:, 2] == 0), np.count_nonzero(cascade[:, 5] == 0))
    mode = choice("padtype", padtype, _PAD_MODES)
    pad_n = 0 if mode is None else _pad_length(padlen, 3 * (1 + order), padtype, x.shape[-1])
    n = x.shape[-1]
    if pad_n:
        x = np.pad(x, [(0, 0)] * (x.ndim - 1) + [(pad_n, pad_n)], **mode)
    settled = sosfilt_zi(cascade).reshape(len(cascade), *[1] * (x.ndim - 1), 2)
    for _ in ("forward", "backward"):
        x = sosfilt(cascade, x, zi=settled * x[..., :1])[0][..., ::-1]
    return np.ascontiguousarray(x[..., pad_n:pad_n + n])


def _pad_length(padlen: int | None, default: int, padtype: PadType, n: int) -> int:
    length = default if padlen is None else count("padlen", padlen, 0)
    if padtype in ("odd", "even") and length >= n:
        raise ValueError(f"padlen is {length}; it must be less than the {n} samples of x")
    return length


def resample(y: Reals, *, orig_sr: int, target_sr: int, tail: Tail = "zeros") -> Floats:
    """Converts the sample rate by a sinc of 65 taps; the last outputs are 0 by default (librosa: computed).

    y [..., samples] -> [..., ceil(target_sr / orig_sr * samples)]

    tail  "zeros": outputs later than half an input sample before the last input sample are 0; "same": they are
          computed; "full": also what rings behind the end, so the length is that of samples + 32

    With target_sr / orig_sr = up / down in lowest terms and an even ``up``, everything lies 0.5 / up of an
    input sample early. Warns where orig_sr is more than 4 * target_sr: the filter is too short for that.
    """
    y = real("y", y)
    orig_sr, target_sr = sample_rates(orig_sr, target_sr)
    zero_n, ringing_n = tail_lengths(tail)
    n = y.shape[-1]
    target_n = resample_count(n + ringing_n, orig_sr, target_sr)
    padded_n = count("the number of samples with the tail", n + zero_n)
    y = np.pad(y, [(0, 0)] * (y.ndim - 1) + [(0, zero_n)]) if zero_n else y
    return apply(
        lambda dst, src: native.sorvoAudioResample(dst, src, target_sr, target_n, orig_sr, padded_n),
        y, 1, (target_n,))


def sample_rates(orig_sr: int, target_sr: int) -> tuple[int, int]:
    orig_sr, target_sr = count("orig_sr", orig_sr), count("target_sr", target_sr)
    if orig_sr > 4 * target_sr:
        warn(f"from {orig_sr} to {target_sr} Hz, 65 taps are too few: above 4 to 1, what lies above the new "
             f"Nyquist frequency folds back. Convert in steps, the last one from {2 * target_sr} Hz")
    return orig_sr, target_sr


def tail_lengths(tail: Tail) -> tuple[int, int]:
    """Zeros behind the source, and source samples by which the outputs outlast it."""
    return choice("tail", tail, {"zeros": (0, 0), "same": (2, 0), "full": (33, 32)})


def resample_count(n: int, orig_sr: int, target_sr: int) -> int:
    result = ctypes.c_int()
    status = native.sorvoAudioGetResampleLen(result, target_sr, n, orig_sr)
    if status == native.ERROR_INTERNAL:
        raise ValueError(f"y has {n} samples; at {target_sr} / {orig_sr} of the rate they are more than "
                         f"{native.INT_MAX}")
    native.check(status)
    return result.value
