"""One short number for what each function of the library computes."""
from __future__ import annotations

import ctypes
import pathlib
from typing import Any, overload

import numpy as np
import numpy.typing as npt

from . import native
from ._arguments import real
from ._types import Reals

Hashes = npt.NDArray[np.uint64]

_SPECIALS = np.array([0x7FC00000, 0x7F800000, 0xFF800000, 0, 0x80000000, 0x7F7FFFFF, 0x00800000, 0x80000001],
                     np.uint32).view(np.float32)
_BURST_LEVELS = np.array([1, 2**-5, 2**-12, 0], np.float32)


@overload
def digest(x: Reals) -> str: ...


@overload
def digest() -> dict[str, str]: ...


def digest(x: Reals | None = None) -> str | dict[str, str]:
    """Sums up the bits of an array in 16 digits; without one, the results of a fixed set of calls of every function.

    digest(x) -> digits; digest() -> digits[function]. Equal digits mean equal bits, where any NaN equals any other.

    ``sorvo-audio mel`` and the other commands that write features report the digits of what they write, and the npm
    package has the same function. Of the functions', the key ``"all"`` has one digest over the others, ``sorvo-audio
    digest`` prints the same, and ``docs/digests.txt`` says what they should be.
    """
    if x is not None:
        total = _Sum()
        total.add_floats(real("x", x, 0).ravel())
        return f"{total.value:016x}"
    sums: dict[str, _Sum] = {}
    calls = pathlib.Path(__file__).with_name("digest_calls.txt").read_text()
    for line in calls.splitlines():
        if line and not line.startswith("#"):
            name, *words = line.split()
            _add_call(sums.setdefault(f"sorvoAudio{name}", _Sum()), f"sorvoAudio{name}", words)
    over_all = 0
    for total in sums.values():
        over_all = int(_mix(np.array([over_all ^ total.value], np.uint64))[0])
    return {name: f"{value:016x}" for name, value in
            [*((name, total.value) for name, total in sums.items()), ("all", over_all)]}


class _Sum:
    """The sum over all values of a function's calls, each mixed with its position."""

    def __init__(self) -> None:
        self.value = 0
        self.position = 0

    def add(self, bits: Any) -> None:
        positions = np.arange(self.position, self.position + len(bits), dtype=np.uint64)
        mixed = _mix(positions << np.uint64(32) | bits.astype(np.uint64))
        self.value = (self.value + int(mixed.sum(dtype=np.uint64))) % 2**64
        self.position += len(bits)

    def add_int(self, value: int) -> None:
        self.add(np.array([value], np.int32).view(np.uint32))

    def add_floats(self, values: npt.NDArray[np.float32]) -> None:
        self.add(np.where(np.isnan(values), np.uint32(0x7FC00000), values.view(np.uint32)))


def _add_call(total: _Sum, name: str, words: list[str]) -> None:
    function: Any = getattr(native, name)
    arguments: list[Any] = []
    outputs: list[Any] = []
    for word, parameter in zip(words, function.argtypes):
        if word == "same":
            argument = arguments[0]
        elif word == "null":
            argument = None
        elif word == "int":
            argument = ctypes.c_int(0)
        elif word[0] == "[":
            argument = np.array([float(value) for value in word[1:-1].split(",")], np.float32)
        elif ":" in word:
            argument = _array(word)
        elif parameter is ctypes.c_float:
            argument = float(word)
        else:
            argument = int(word)
        arguments.append(argument)
        if word == "int" or word.startswith(("out:", "inout:")):
            outputs.append(argument)
    total.add_int(function(*arguments))
    for output in outputs:
        if isinstance(output, ctypes.c_int):
            total.add_int(output.value)
        else:
            total.add_floats(output)


def _array(word: str) -> Any:
    role, _, rest = word.partition(":")
    kind, _, n = (f"fill:0.25:{rest}" if role == "out" else rest if role == "inout" else word).rpartition(":")
    return np.ascontiguousarray(_elements(kind, int(n)), np.float32)


def _elements(kind: str, n: int) -> Any:
    """See digest_calls.txt. Products with powers of two, so that every element is exact."""
    i = np.arange(n, dtype=np.uint64)
    h = _mix(i)
    noise = np.ldexp(((h >> np.uint64(40)).astype(np.int32) - 2**23).astype(np.float32), -23)

    def low_bits(mask: int, hashes: Hashes = h) -> npt.NDArray[np.int32]:
        return (hashes & np.uint64(mask)).astype(np.int32)

    if kind == "power":
        return np.ldexp(np.abs(noise), -low_bits(31))
    if kind == "spread":
        return np.ldexp(noise, -low_bits(63))
    if kind == "bursts":
        return noise * _BURST_LEVELS[low_bits(3, _mix(i // np.uint64(1024)))]
    if kind == "holes":
        return np.where(low_bits(1, _mix(i // np.uint64(16))) != 0, np.float32(0), noise)
    if kind == "huge":
        return noise * np.float32(2.0**127)
    if kind == "tiny":
        return noise * np.float32(2.0**-126)
    if kind == "special":
        return np.where(low_bits(31) == 0, _SPECIALS[low_bits(7, h >> np.uint64(5))], noise)
    if kind == "bits":
        return (h >> np.uint64(32)).astype(np.uint32).view(np.float32)
    if kind == "ramp":
        return np.ldexp(i.astype(np.float32), -10)
    if kind == "impulse":
        return np.where(i == n // 3, np.float32(1), np.float32(0))
    if kind.startswith("fill:"):
        return np.full(n, float(kind[5:]), np.float32)
    if kind != "noise":
        raise ValueError(f"no kind of array: {kind}")
    return noise


def _mix(x: Hashes) -> Hashes:
    """The finaliser of SplitMix64; arrays of uint64 wrap around."""
    x = x + np.uint64(0x9E3779B97F4A7C15)
    x = (x ^ (x >> np.uint64(30))) * np.uint64(0xBF58476D1CE4E5B9)
    x = (x ^ (x >> np.uint64(27))) * np.uint64(0x94D049BB133111EB)
    return x ^ (x >> np.uint64(31))
