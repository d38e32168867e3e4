"""Processes that multiprocessing forks while threads of their parent are in the library."""
import itertools
import multiprocessing
import threading
import unittest

import numpy as np

from sorvo_audio import native

CHILDREN = 1000
AT_ONCE = 20
PATIENCE = 60  # seconds
KNOWN = 50
SIGNAL = np.ones(1000, np.float32)


def use_tables(key):
    """Calls that need tables of this key, which take a fraction of a millisecond to build."""
    out = np.empty(300, np.float32)
    native.check(native.sorvoAudioFFT(out, SIGNAL, 1 + key % 150))
    native.check(native.sorvoAudioGetFBMatrix(out, 100, key, key + 900, 2, 8000, 0, 0))
    native.check(native.sorvoAudioResample(out, SIGNAL, 47, 10, 48 + key, SIGNAL.size))


class Fork(unittest.TestCase):
    def test_children_of_a_busy_process(self):
        """Every other child needs tables that the parent has, the others need new ones."""
        context = multiprocessing.get_context("fork")
        for key in range(KNOWN):
            use_tables(key)
        keys = itertools.count()
        allowed = threading.Semaphore(0)
        stop = threading.Event()

        def work():
            while allowed.acquire() and not stop.is_set():
                key = next(keys)
                use_tables(KNOWN + key if key % 2 else key // 2 % KNOWN)

        threads = [threading.Thread(target=work) for _ in range(3)]
        for thread in threads:
            thread.start()
        try:
            for first in range(0, CHILDREN, AT_ONCE):
                children = [context.Process(target=use_tables, args=(100000 + i if i % 2 else i % KNOWN,))
                            for i in range(first, first + AT_ONCE)]
                for child in children:
                    allowed.release(6)
                    child.start()
                for child in children:
                    child.join(PATIENCE)
                    child.kill()
                self.assertEqual([child.exitcode for child in children], [0] * AT_ONCE)
        finally:
            stop.set()
            allowed.release(len(threads))
            for thread in threads:
                thread.join()
