"""Checks of arguments: every error names the parameter, its value and the rule."""
from __future__ import annotations

import math
from collections.abc import Callable, Mapping, Sequence
from operator import index
from typing import Any, TypeVar

import numpy as np
import numpy.typing as npt

from . import native
from ._types import Complexes, Floats

Value = TypeVar("Value")


def count(name: str, value: Any, minimum: int = 1) -> int:
    """An integer that C can take."""
    rule = f"it must be an integer from {minimum} to {native.INT_MAX}"
    try:
        number = index(value)
    except TypeError:
        raise TypeError(f"{name} is {value!r}; {rule}") from None
    if not minimum <= number <= native.INT_MAX:
        raise ValueError(f"{name} is {number}; {rule}")
    return number


def number(name: str, value: Any, *, above: float = -math.inf, minimum: float = -math.inf) -> float:
    """A real number, not NaN, greater than ``above`` and at least ``minimum``."""
    rule = ("a number" + (f" greater than {above:g}" if above > -math.inf else "")
            + (f" not less than {minimum:g}" if minimum > -math.inf else ""))
    try:
        result = float(value)
    except (TypeError, ValueError):
        raise TypeError(f"{name} is {value!r}; it must be {rule}") from None
    if not (result > above and result >= minimum):
        raise ValueError(f"{name} is {value!r}; it must be {rule}")
    return result


def choice(name: str, value: Any, values: Mapping[Any, Value]) -> Value:
    """The library's value of a named option."""
    try:
        return values[value]
    except (KeyError, TypeError):
        raise ValueError(f"{name} is {value!r}; it must be one of "
                         + ", ".join(map(repr, values))) from None


def real(name: str, value: Any, minimum_ndim: int = 1, minimum_n: int = 1) -> Floats:
    """An array of samples or features as float32 in C order; not copied if it is that already."""
    array = np.asarray(value)
    if array.dtype.kind in "iub":
        full_scale = np.iinfo(array.dtype).max + 1 if array.dtype.kind == "i" else 1
        raise TypeError(
            f"{name} has dtype {array.dtype}; it must hold floating-point numbers. "
            f"Samples of full scale {full_scale}: {name}.astype(numpy.float32) / {full_scale}")
    if array.dtype.kind != "f":
        raise TypeError(f"{name} has dtype {array.dtype}; it must hold real floating-point numbers")
    return _shaped(name, array, minimum_ndim, np.float32, minimum_n)


def long_enough(name: str, array: Floats, frame_name: str, frame_n: int) -> None:
    """Refuses a signal that is shorter than a frame, as there would be no result."""
    n = array.shape[-1]
    if n < frame_n:
        widths = "(0, 0), " * (array.ndim - 1) + f"(0, {frame_n - n})"
        raise ValueError(
            f"{name} has {n} samples; it must have at least {frame_name} = {frame_n}. Zeros at the end make it a "
            f"frame long: numpy.pad({name}, {widths if array.ndim == 1 else '[' + widths + ']'})")


def complex_(name: str, value: Any, minimum_ndim: int = 1) -> Complexes:
    """An array of complex numbers as complex64 in C order; not copied if it is that already."""
    array = np.asarray(value)
    if array.dtype.kind != "c":
        raise TypeError(f"{name} has dtype {array.dtype}; it must hold complex numbers. "
                        f"Real numbers: {name}.astype(numpy.complex64)")
    return _shaped(name, array, minimum_ndim, np.complex64)


def coefficients(name: str, value: Any) -> npt.NDArray[np.float64]:
    """Filter coefficients [n]; integers are welcome here."""
    array = np.asarray(value)
    if array.dtype.kind not in "iuf" or array.ndim > 1 or array.size == 0:
        raise ValueError(f"{name} has shape {array.shape} and dtype {array.dtype}; it must be a "
                         "non-empty sequence of real numbers")
    return np.asarray(array.reshape(-1), np.float64)


def _shaped(name: str, array: npt.NDArray[Any], minimum_ndim: int, dtype: Any,
            minimum_n: int = 1) -> npt.NDArray[Any]:
    if array.ndim < minimum_ndim:
        raise ValueError(f"{name} has shape {array.shape}; it must have at least {minimum_ndim} "
                         f"dimension{'s' * (minimum_ndim > 1)}")
    for axis in range(array.ndim - minimum_ndim, array.ndim):
        count(f"{name}.shape[{axis}]", array.shape[axis], minimum_n)
    return np.asarray(array, dtype, order="C")


def apply(function: Callable[[Any, Any], int], source: npt.NDArray[Any], ndim: int,
          shape: Sequence[int], dtype: Any = np.float32) -> npt.NDArray[Any]:
    """Calls ``function(output, item)`` for every item of a batch.

    The items are the last ``ndim`` axes of ``source``, the output of each has ``shape``; complex arrays
    are handed over as pairs of floats.
    """
    batch = source.shape[:source.ndim - ndim]
    item_n = math.prod(batch)
    result = np.zeros((*batch, *shape), dtype)
    outputs = result.reshape(item_n, math.prod(shape)).view(np.float32)
    items = source.reshape(item_n, math.prod(source.shape[len(batch):])).view(np.float32)
    for output, item in zip(outputs, items):
        native.check(function(output, item))
    return result
