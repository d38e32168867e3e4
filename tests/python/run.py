"""Runs one test module. Status 77, skipped: numpy is missing, or a package that all of its tests need."""
import importlib.util
import sys
import unittest


def main():
    if importlib.util.find_spec("numpy") is None:
        print("skipped: numpy is not installed")
        return 77
    result = unittest.main(module=sys.argv.pop(1), exit=False, verbosity=2).result
    if not result.wasSuccessful():
        return 1
    return 77 if result.testsRun == len(result.skipped) else 0


if __name__ == "__main__":  # the processes of a Dask cluster import this module again
    sys.exit(main())
