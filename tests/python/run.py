"""Runs one test module. Status 77, skipped: numpy is missing, or a package that all of its tests need."""
import importlib.util
import sys
import unittest

if importlib.util.find_spec("numpy") is None:
    print("skipped: numpy is not installed")
    sys.exit(77)
result = unittest.main(module=sys.argv.pop(1), exit=False, verbosity=2).result
if not result.wasSuccessful():
    sys.exit(1)
sys.exit(77 if result.testsRun == len(result.skipped) else 0)
