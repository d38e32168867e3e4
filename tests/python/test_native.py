"""The binding agrees with the header, and lets nothing through that ctypes would bend."""
import ctypes
import doctest
import pathlib
import re
import threading
import unittest

import numpy as np

import sorvo_audio
from sorvo_audio import native

HEADER = (pathlib.Path(__file__).parents[2] / "include" / "sorvo_audio.h").read_text()
KINDS = {"float*": native._Output, "const float*": native._Input, "int*": ctypes.POINTER(ctypes.c_int),
         "int": native._Int, "float": ctypes.c_float}


class Native(unittest.TestCase):
    def test_functions_of_the_header(self):
        declared = re.findall(r"SORVO_AUDIO_API int (\w+)\(([^)]*)\);", HEADER)
        self.assertEqual(len(declared), 22)
        for name, parameters in declared:
            kinds = [KINDS[" ".join(p.split()[:-1])] for p in parameters.split(",")]
            with self.subTest(function=name):
                self.assertEqual(list(getattr(native, name).argtypes), kinds)
                self.assertEqual(getattr(native, name).restype, ctypes.c_int)

    def test_values_of_the_header(self):
        declared = re.findall(r"^ +SORVO_AUDIO_(\w+) = (-?\d+)", HEADER, re.M)
        self.assertGreater(len(declared), 20)
        for name, value in declared:
            self.assertEqual(getattr(native, name), int(value), name)

    def test_version_of_the_header(self):
        version = re.findall(r"#define SORVO_AUDIO_VERSION_\w+ (\d+)", HEADER)
        self.assertEqual(sorvo_audio.__version__, ".".join(version))

    def test_examples(self):
        self.assertEqual(doctest.testmod(native).failed, 0)

    def test_status_is_returned_and_means_an_exception(self):
        out = np.full(4, 7, np.float32)
        self.assertEqual(native.sorvoAudioGetWindow(out, 4, 3), native.ERROR_ARGUMENT)
        self.assertEqual(native.sorvoAudioGetWindow(None, 4, 1), native.ERROR_ARGUMENT)
        np.testing.assert_array_equal(out, 7)
        native.check(native.OK)
        for status, exception in ((native.ERROR_ARGUMENT, ValueError), (native.ERROR_MEMORY, MemoryError),
                                  (native.ERROR_INTERNAL, RuntimeError)):
            with self.assertRaises(exception):
                native.check(status)

    def test_interpreter_lock_is_free_during_a_call(self):
        n = 40009  # prime, so the transform takes n^2 steps
        x, spectrum = np.zeros(n, np.float32), np.empty(2 * n, np.float32)
        ticks, stop = [0], threading.Event()

        def tick():
            while not stop.wait(0.001):
                ticks[0] += 1

        def ticks_of_a_call():
            before = ticks[0]
            native.sorvoAudioFFT(spectrum, x, n)
            return ticks[0] - before

        clock = threading.Thread(target=tick)
        clock.start()
        try:  # With the lock held it is one tick at each end at most; a busy machine may spare few.
            self.assertTrue(any(ticks_of_a_call() > 5 for _ in range(20)))
        finally:
            stop.set()
            clock.join()

    def test_refuses(self):
        x = np.zeros(8, np.float32)
        read_only = x.copy()
        read_only.flags.writeable = False
        self.assertEqual(native.sorvoAudioFFT(np.empty(16, np.float32), read_only, 8), native.OK)
        for dst, src in ((x[::2], x), (x, x[::2]), (x.astype(np.float64), x), (x, [0.0] * 8), (read_only, x)):
            with self.assertRaises(ctypes.ArgumentError):
                native.sorvoAudioLog1p(dst, src, 4)
        for n in (2**31, -2**31 - 1, 4.0, 2**32 + 4):
            with self.assertRaises(ctypes.ArgumentError):
                native.sorvoAudioLog1p(x, x, n)


if __name__ == "__main__":
    unittest.main()
