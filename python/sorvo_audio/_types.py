"""Types of arguments and results."""
from __future__ import annotations

from collections.abc import Sequence
from typing import Any, Literal, Optional, Protocol, Union

import numpy as np
import numpy.typing as npt

Floats = npt.NDArray[np.float32]
Complexes = npt.NDArray[np.complex64]


class RealArray(Protocol):
    """An array of floating-point numbers, of numpy or of who can make one of it."""

    def __array__(self) -> npt.NDArray[np.floating[Any]]: ...


class ComplexArray(Protocol):
    def __array__(self) -> npt.NDArray[np.complexfloating[Any, Any]]: ...


Reals = Union[RealArray, float, Sequence[Any]]

Window = Literal["hann", "hamming"]
Center = Literal[True, False]
PadMode = Literal["reflect", "constant"]
SpectrumNorm = Optional[Literal["window", "length"]]
MelNorm = Optional[Literal["slaney"]]
Tail = Literal["zeros", "same", "full"]
Phase = Literal["complex", "angle"]
PadType = Optional[Literal["odd", "even", "constant"]]
