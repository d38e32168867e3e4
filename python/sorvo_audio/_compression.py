"""Logarithms of mel bands, as models take them.

Each is one sequence of float operations and calls of the library, which the command line repeats, so that both
give the same bits.
"""
from __future__ import annotations

import numpy as np

from . import native
from ._types import Floats
from .measures import power_to_db


def logarithms(x: Floats, floor: float) -> Floats:
    """log(max(x, floor)); NaN stays.

    log(1 + x) is accurate near 0, so log(x) is computed from 1 on, and below as -log(1 / x).
    """
    held = np.maximum(x, np.float32(floor))
    below = held < 1
    result = np.where(below, 1 / held, held) - 1
    native.check(native.sorvoAudioLog1p(result, result, result.size))
    return np.where(below, -result, result)


def levels(powers: Floats) -> Floats:
    """10 log10(max(x, 1e-10)), not lower than 80 below the largest; all NaN if one is NaN.

    powers [..., bands, frames] -> [..., bands, frames], each item with a maximum of its own
    """
    result = power_to_db(powers, axis=(-2, -1))
    result[np.isnan(powers).any((-2, -1))] = np.nan
    return result


def whisper(bands: Floats) -> Floats:
    """(max(log10(max(x, 1e-10)), the largest - 8) + 4) / 4"""
    result: Floats = (levels(bands) + np.float32(40)) / np.float32(40)
    return result
