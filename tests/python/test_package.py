"""The package installs without a network or a compiler, and its types hold."""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

PYTHON = pathlib.Path(__file__).parents[2] / "python"


def run(*command, **options):
    return subprocess.run([str(word) for word in command], text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, **options)


def has(module):
    return run(sys.executable, "-c", f"import {module}").returncode == 0


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):  # what the first run of mypy finds out about numpy, the second one needs too
        cache = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cache.cleanup)
        cls.mypy = (sys.executable, "-m", "mypy", "--strict", "--python-version", "3.9", "--cache-dir", cache.name)

    @unittest.skipUnless(has("mypy"), "mypy is not installed")
    def test_types(self):
        done = run(*self.mypy, cwd=PYTHON)
        self.assertEqual(done.returncode, 0, done.stdout)

    @unittest.skipUnless(has("mypy"), "mypy is not installed")
    def test_types_of_calls(self):
        """What a user writes is typed as it behaves: `error` marks the lines that are refused."""
        program = PYTHON.parent / "tests" / "python" / "typed_calls.py"
        done = run(*self.mypy, program, cwd=program.parent, env={**os.environ, "MYPYPATH": str(PYTHON)})
        refused = {int(line) for line in re.findall(r"typed_calls\.py:(\d+): error", done.stdout)}
        marked = {i for i, line in enumerate(program.read_text().splitlines(), 1) if line.endswith("# error")}
        self.assertTrue(marked)
        self.assertEqual(refused, marked, done.stdout)

    def test_code_of_the_read_me(self):
        blocks = re.findall(r"^```python\n(.*?)^```", (PYTHON / "README.md").read_text(), re.M | re.S)
        self.assertTrue(blocks)
        for block in blocks:
            exec(block, {})

    @unittest.skipUnless(has("pip"), "pip is not installed")
    def test_install_and_search_for_the_library(self):
        with tempfile.TemporaryDirectory(prefix="with space ") as folder:
            done = run(sys.executable, "-m", "pip", "install", "--no-index", "--no-deps", "--no-compile",
                       "--target", folder, PYTHON)
            self.assertEqual(done.returncode, 0, done.stdout)
            package = pathlib.Path(folder, "sorvo_audio")
            for data in ("py.typed", "digest_calls.txt"):
                self.assertTrue((package / data).exists(), data)
            program = ("import sorvo_audio; print(sorvo_audio.__file__, sorvo_audio.native._library._name, "
                       "*sorvo_audio.get_window('hann', 4))")
            library = os.environ["SORVO_AUDIO_LIBRARY"]
            environment = {**os.environ, "PYTHONPATH": folder}
            expected = [str(package / "__init__.py"), library, "0.0", "0.5", "1.0", "0.5"]

            def printed(**extra):
                return run(sys.executable, "-c", program, cwd=folder, env={**environment, **extra}).stdout

            self.assertEqual(printed(), " ".join(expected) + "\n")
            self.assertIn("set SORVO_AUDIO_LIBRARY", printed(SORVO_AUDIO_LIBRARY="/nowhere.so"))
            beside = package / "libsorvo_audio.so.0"
            beside.symlink_to(library)
            expected[1] = str(beside)
            self.assertEqual(printed(SORVO_AUDIO_LIBRARY="/nowhere.so"), " ".join(expected) + "\n")


if __name__ == "__main__":
    unittest.main()
