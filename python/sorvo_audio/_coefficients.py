"""Coefficients of filters, and what becomes of a filter when they are rounded to float32."""
from __future__ import annotations

import math
from collections.abc import Sequence
from functools import lru_cache
from typing import Any

import numpy as np
import numpy.typing as npt

from ._arguments import coefficients
from ._types import Floats
from ._warnings import warn

Filter = tuple[Floats, Floats]
Polynomial = tuple[float, ...]

# Of the largest gain; 0.09 dB.
_TOLERATED = 0.01


def polynomials(b: Any, a: Any) -> Filter:
    """Numerator and denominator of one filter as the library takes them."""
    exact = coefficients("b", b), coefficients("a", a)
    _warn([exact], "use second-order sections, sosfilt or sosfiltfilt" if len(exact[1]) > 3 else
          "filter at a lower sample rate")
    return exact[0].astype(np.float32), exact[1].astype(np.float32)


def sections(sos: Any) -> list[Filter]:
    """A cascade [sections, 6] of filters of order 2 as the library takes them."""
    array = np.asarray(sos)
    if array.ndim != 2 or array.shape[1] != 6 or len(array) == 0 or array.dtype.kind not in "iuf":
        raise ValueError(f"sos has shape {array.shape} and dtype {array.dtype}; it must have shape (sections, 6) and "
                         "hold real numbers")
    if not (array[:, 3] == 1).all():
        raise ValueError(f"sos[:, 3] is {array[:, 3]}; all of it must be 1")
    exact = np.asarray(array, np.float64)
    _warn([(row[:3], row[3:]) for row in exact], "filter at a lower sample rate")
    return [(row[:3].copy(), row[3:].copy()) for row in exact.astype(np.float32)]


def _warn(exact: Sequence[tuple[npt.NDArray[Any], npt.NDArray[Any]]], remedy: str) -> None:
    error = _rounding_error(tuple((tuple(b.tolist()), tuple(a.tolist())) for b, a in exact))
    if error > _TOLERATED:
        what = "is unstable" if error == math.inf else f"has a response that is {error:.0%} off"
        warn(f"with its coefficients rounded to float32, the filter {what}: {remedy}")


@lru_cache(maxsize=128)
def _rounding_error(exact: tuple[tuple[Polynomial, Polynomial], ...]) -> float:
    """Largest deviation of the response from the exact one, relative to its largest gain.

    Infinite if only rounding makes the filter unstable; 0 without feedback, and if it is not stable anyway.
    """
    rounded = tuple((_rounded(b), _rounded(a)) for b, a in exact)
    if rounded == exact or all(len(a) == 1 for _, a in exact) or not all(_is_stable(a) for _, a in exact):
        return 0.0
    if not all(_is_stable(a) for _, a in rounded):
        return math.inf
    # The response is farthest off where poles are, and those of a narrow filter are close to 0 or pi.
    poles = np.concatenate([np.roots(a) for _, a in (*exact, *rounded)])
    grid = np.geomspace(1e-6, np.pi, 1000)
    z = np.exp(-1j * np.concatenate([[0], grid, np.pi - grid, np.angle(poles)]))
    with np.errstate(all="ignore"):
        design = _response(exact, z)
        error = np.abs(_response(rounded, z) - design).max() / np.abs(design).max()
    if not np.isfinite(design).all():
        return 0.0
    return float(error) if np.isfinite(error) else math.inf  # a pole on the unit circle


def _rounded(polynomial: Polynomial) -> Polynomial:
    return tuple(np.array(polynomial, np.float32).tolist())


def _response(filters: tuple[tuple[Polynomial, Polynomial], ...],
              z: npt.NDArray[np.complex128]) -> npt.NDArray[np.complex128]:
    """Of filters one after the other, at 1 / z."""
    result = np.ones_like(z)
    for b, a in filters:
        result *= np.polyval(b[::-1], z) / np.polyval(a[::-1], z)
    return result


def _is_stable(a: Polynomial) -> bool:
    """Schur and Cohn: all reflection coefficients of the polynomial are below 1."""
    polynomial = np.array(a)
    if not (polynomial[0] != 0 and np.isfinite(polynomial).all()):
        return False
    polynomial /= polynomial[0]
    while len(polynomial) > 1:
        reflection = polynomial[-1]
        if not abs(reflection) < 1:
            return False
        polynomial = (polynomial[:-1] - reflection * polynomial[:0:-1]) / (1 - reflection * reflection)
    return True
