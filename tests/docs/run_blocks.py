"""Runs the code blocks of README.md and docs/*.md.

A ```c block is compiled as C99 against the shared library and run; ```python is run with the package of
this tree; of ```console, the lines behind "$ " are run by a shell at the top of a scratch folder that holds
the recording of the examples as speech.wav. A ```text block right behind a c or python block is its
output; the lines behind a "$ " line are that command's output. "..." as a line stands for any lines.
```cmake and ```sh blocks, and text blocks of their own, are not run.
"""
import argparse
import fnmatch
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.M | re.S)
# Commands of the repository itself, which are tested as what they are.
NOT_RUN = ("make ", "git ", "cmake ", "apt", "sudo ", "pip ", "doxygen")


def matches(expected, actual):
    pattern = "\n".join("*" if line.strip() == "..." else re.sub(r"([\[\]?*])", r"[\1]", line.rstrip())
                        for line in expected.strip().splitlines())
    actual = "\n".join(line.rstrip() for line in actual.strip().splitlines())
    return fnmatch.fnmatchcase(actual, pattern)


class Runner:
    def __init__(self, source, build, compiler, scratch):
        self.scratch = scratch
        self.compile = [compiler, "-std=c99", "-pedantic", "-Wall", "-Werror",
                        "-I" + str(source / "include")]
        self.link = ["-L" + str(build / "src"), "-lsorvo_audio", "-lm"]
        self.env = dict(os.environ,
                        LD_LIBRARY_PATH=str(build / "src"),
                        SORVO_AUDIO_LIBRARY=str(build / "src" / "libsorvo_audio.so"),
                        PYTHONPATH=str(source / "python"),
                        PATH=f"{build / 'tools'}:/usr/bin:{os.environ['PATH']}")
        for recording in (source / "examples" / "data").glob("speech*.wav"):
            shutil.copy(recording, scratch / "speech.wav")

    def run(self, command, **options):
        done = subprocess.run(command, cwd=self.scratch, env=self.env, text=True, timeout=300,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
        return done.returncode, done.stdout

    def c(self, code):
        (self.scratch / "block.c").write_text(code)
        status, output = self.run(self.compile + ["block.c", "-o", "block"] + self.link)
        return (status, output) if status else self.run(["./block"])

    def python(self, code):
        return self.run(["/usr/bin/python3", "-c", code])

    def console(self, block):
        """Problems of the commands of a block, each with its printed output."""
        for part in re.split(r"^\$ ", block, flags=re.M)[1:]:
            command, _, expected = part.partition("\n")
            command = command.split("  # ")[0]
            if command.startswith(NOT_RUN):
                continue
            status, output = self.run(command, shell=True)
            if status or (expected.strip() and not matches(expected, output)):
                yield f"$ {command}\nstatus {status}, output:\n{output}"


def check(path, runner):
    text = path.read_text()
    blocks = list(BLOCK.finditer(text))
    count = 0
    for i, block in enumerate(blocks):
        language, code = block.groups()
        where = f"{path.name}:{text[:block.start()].count(chr(10)) + 1}"
        if language == "console":
            problems = list(runner.console(code))
        elif language in ("c", "python"):
            status, output = getattr(runner, language)(code)
            after = blocks[i + 1] if i + 1 < len(blocks) else None
            shown = (after and after[1] == "text" and not text[block.end():after.start()].strip())
            good = status == 0 and (not shown or matches(after[2], output))
            problems = [] if good else [f"status {status}, output:\n{output}"]
        else:
            continue
        count += 1
        for problem in problems:
            print(f"{where}: {problem}")
        yield not problems
    print(f"{path.name}: {count} blocks run")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--source", type=pathlib.Path, required=True)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--compiler", required=True)
    options = parser.parse_args()
    documents = [options.source / "README.md", *sorted((options.source / "docs").glob("*.md"))]
    with tempfile.TemporaryDirectory() as scratch:
        runner = Runner(options.source, options.build, options.compiler, pathlib.Path(scratch))
        results = [good for document in documents for good in check(document, runner)]
    if not results or not all(results):
        sys.exit(f"{results.count(False)} of {len(results)} blocks failed")


if __name__ == "__main__":
    main()
