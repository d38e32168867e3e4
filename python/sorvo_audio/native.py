"""The 22 C functions of libsorvo_audio, one to one.

Names, order of parameters, and status codes are those of the header ``sorvo_audio.h``, which is the manual.
Arrays are C-contiguous ``numpy.float32``; complex values are pairs of floats, so pass
``spectrum.view(numpy.float32)``. ``int*`` results are written into a ``ctypes.c_int``. Nothing is
converted or allocated, and the caller sizes every output. The interpreter lock is free during a call.

>>> import numpy as np
>>> from sorvo_audio import native
>>> window = np.empty(4, np.float32)
>>> native.sorvoAudioGetWindow(window, 4, native.WINDOW_HANN)
0
>>> window
array([0. , 0.5, 1. , 0.5], dtype=float32)
"""
from __future__ import annotations

import ctypes
import os
import pathlib
import sys
from collections.abc import Callable
from operator import index
from typing import Any

import numpy as np

OK = 0
ERROR_ARGUMENT = -1
ERROR_MEMORY = -5
ERROR_INTERNAL = -128

WINDOW_HANN = 1
WINDOW_HAMMING = 2
CENTER_NONE = 0
CENTER_REFLECT = 1
CENTER_ZEROS = 2
NORM_NONE = 0
NORM_WINDOW = 1
NORM_LENGTH = 2
MEL_SLANEY = 0
MEL_HTK = 1
MEL_NORM_NONE = 0
MEL_NORM_AREA = 1
PHASE_ANGLE = 0
PHASE_COMPLEX = 1
PAD_NONE = 0
PAD_ODD = 1
PAD_REFLECT = 2
PAD_CONSTANT = 3

INT_MAX = 2**31 - 1


def _library_name(platform: str) -> str:
    return {"win32": "libsorvo_audio.dll", "darwin": "libsorvo_audio.0.dylib"}.get(platform, "libsorvo_audio.so.0")


def _load() -> ctypes.CDLL:
    """The library of SORVO_AUDIO_LIBRARY, else the one beside this file, else the system's."""
    beside = pathlib.Path(__file__).with_name(_library_name(sys.platform))
    path = os.environ.get("SORVO_AUDIO_LIBRARY") or (str(beside) if beside.exists() else beside.name)
    try:
        return ctypes.CDLL(path)
    except OSError as error:
        raise ImportError(
            f"{beside.name} was not found ({error}): install the library, or set SORVO_AUDIO_LIBRARY "
            "to the path of the shared object") from error


_library = _load()


class _Input:
    """const float*"""

    writes = False

    @classmethod
    def from_param(cls, value: Any) -> ctypes.c_void_p:
        if value is None:
            return ctypes.c_void_p(None)
        if (not isinstance(value, np.ndarray) or value.dtype != np.float32
                or not value.flags.c_contiguous or (cls.writes and not value.flags.writeable)):
            raise TypeError("a C-contiguous numpy.float32 array is needed"
                            + (", writeable for an output" if cls.writes else ""))
        return ctypes.c_void_p(value.ctypes.data)


class _Output(_Input):
    """float*"""

    writes = True


class _Int:
    """int; ctypes alone would cut larger values to 32 bits without a word."""

    @classmethod
    def from_param(cls, value: Any) -> ctypes.c_int:
        number = index(value)
        if not -INT_MAX - 1 <= number <= INT_MAX:
            raise OverflowError(f"{number} does not fit a 32-bit int")
        return ctypes.c_int(number)


_Result = ctypes.POINTER(ctypes.c_int)


def _bind(name: str, *argtypes: Any) -> Callable[..., int]:
    function: Any = getattr(_library, name)
    function.argtypes = argtypes
    function.restype = ctypes.c_int
    bound: Callable[..., int] = function
    return bound


_float = ctypes.c_float
_filter = (_Input, _Input)

sorvoAudioFFT = _bind("sorvoAudioFFT", _Output, _Input, _Int)
sorvoAudioIFFT = _bind("sorvoAudioIFFT", _Output, _Input, _Int)
sorvoAudioGetWindow = _bind("sorvoAudioGetWindow", _Output, _Int, _Int)
sorvoAudioGetFrameLen = _bind("sorvoAudioGetFrameLen", _Result, *[_Int] * 4)
sorvoAudioGetSpectrogram = _bind(
    "sorvoAudioGetSpectrogram", _Output, _Input, *[_Int] * 7, _float, _Int)
sorvoAudioGetInverseSpectrogram = _bind(
    "sorvoAudioGetInverseSpectrogram", _Output, _Input, *[_Int] * 8)
sorvoAudioGetSampleLen = _bind("sorvoAudioGetSampleLen", _Result, *[_Int] * 4)
sorvoAudioGetFBMatrix = _bind(
    "sorvoAudioGetFBMatrix", _Output, _Int, _float, _float, *[_Int] * 4)
sorvoAudioGetMelSpectrogram = _bind(
    "sorvoAudioGetMelSpectrogram", _Output, _Input, *[_Int] * 8, _float, _Int, _float, _float,
    *[_Int] * 3)
sorvoAudioConvertToMel = _bind("sorvoAudioConvertToMel", _Output, _Input, _Input, *[_Int] * 3)
sorvoAudioLinerFilter = _bind(
    "sorvoAudioLinerFilter", _Output, _Input, *_filter, _Output, *[_Int] * 5)
sorvoAudioGetLinerFilterZiCoef = _bind(
    "sorvoAudioGetLinerFilterZiCoef", _Output, *_filter, *[_Int] * 3)
sorvoAudioFilterFilter = _bind("sorvoAudioFilterFilter", _Output, _Input, *_filter, *[_Int] * 6)
sorvoAudioResample = _bind("sorvoAudioResample", _Output, _Input, *[_Int] * 4)
sorvoAudioGetResampleLen = _bind("sorvoAudioGetResampleLen", _Result, *[_Int] * 3)
sorvoAudioComplexNorm = _bind("sorvoAudioComplexNorm", _Output, _Input, _Int, _float)
sorvoAudioMagPhase = _bind(
    "sorvoAudioMagPhase", _Output, _Output, _Input, *[_Int] * 3, _float)
sorvoAudioConvertPowerToDB = _bind("sorvoAudioConvertPowerToDB", _Output, _Input, _Int, _float)
sorvoAudioLog1p = _bind("sorvoAudioLog1p", _Output, _Input, _Int)
sorvoAudioStandardize = _bind("sorvoAudioStandardize", _Output, _Input, _Int)
sorvoAudioGetNonSilentPos = _bind(
    "sorvoAudioGetNonSilentPos", _Result, _Result, _Input, *[_Int] * 3, _float)
sorvoAudioFixFrameLen = _bind("sorvoAudioFixFrameLen", _Output, _Input, *[_Int] * 3, _float)


def check(status: int) -> None:
    """Raises what a status code stands for."""
    if status == ERROR_MEMORY:
        raise MemoryError("libsorvo_audio could not obtain memory")
    if status == ERROR_ARGUMENT:
        raise ValueError("libsorvo_audio refused an argument")
    if status != OK:
        raise RuntimeError(f"libsorvo_audio failed with status {status}: a length does not fit an int, "
                           "or an internal error")
