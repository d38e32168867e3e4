"""The package finds its library, its types hold, and what its page shows runs."""
import os
import pathlib
import platform
import re
import shutil
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
        done = run(*self.mypy, cwd=PYTHON.parent)
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

    @unittest.skipUnless(platform.machine() == "x86_64" and shutil.which("cc"), "for x86-64, with a compiler")
    def test_says_what_is_in_use(self):
        with tempfile.TemporaryDirectory() as folder:
            program = ("#include <stdio.h>\n#define HAS __builtin_cpu_supports\nint main(void) { puts("
                       'HAS("avx512f") && HAS("avx512bw") && HAS("avx512dq") && HAS("avx512vl") ? "avx512" :'
                       'HAS("avx2") && HAS("fma") ? "avx2" : "sse2"); }')
            subprocess.run(["cc", "-x", "c", "-", "-o", f"{folder}/level"], input=program, text=True, check=True)
            level = run(f"{folder}/level").stdout.strip()
        said = run(sys.executable, "-m", "sorvo_audio", env={**os.environ, "PYTHONPATH": str(PYTHON)}).stdout
        library = re.escape(os.environ["SORVO_AUDIO_LIBRARY"])
        self.assertRegex(said, rf"^sorvo_audio \d.*\nlibrary: {library} on x86_64\nlevel: {level}\ndigest .*: \w+\n$")

    def test_search_for_the_library(self):
        with tempfile.TemporaryDirectory(prefix="with space ") as folder:
            package = pathlib.Path(folder, "sorvo_audio")
            shutil.copytree(PYTHON / "sorvo_audio", package, ignore=shutil.ignore_patterns("*.so.0"))
            program = ("import sorvo_audio; print(sorvo_audio.__file__, sorvo_audio.native._library._name, "
                       "*sorvo_audio.get_window('hann', 4))")
            library = os.environ["SORVO_AUDIO_LIBRARY"]

            def printed(environment):
                return run(sys.executable, "-c", program, cwd=folder,
                           env={**os.environ, "PYTHONPATH": folder, **environment}).stdout

            def loaded(path):
                return f"{package / '__init__.py'} {path} 0.0 0.5 1.0 0.5\n"

            beside = package / "libsorvo_audio.so.0"
            beside.symlink_to(library)
            self.assertEqual(printed({"SORVO_AUDIO_LIBRARY": library}), loaded(library))
            self.assertEqual(printed({"SORVO_AUDIO_LIBRARY": ""}), loaded(beside))
            self.assertIn("set SORVO_AUDIO_LIBRARY", printed({"SORVO_AUDIO_LIBRARY": "/nowhere.so"}))


if __name__ == "__main__":
    unittest.main()
