"""Builds the shared library by CMake and packs it beside the Python modules; pyproject.toml has all the rest."""
import os
import pathlib
import shutil
import subprocess
import sys

from setuptools import Command, Distribution, setup
from setuptools.command.build import build

try:
    from setuptools.command.bdist_wheel import bdist_wheel
except ImportError:  # setuptools before 70.1
    from wheel.bdist_wheel import bdist_wheel

# As sorvo_audio/native.py looks for it.
LIBRARY = {"win32": "libsorvo_audio.dll", "darwin": "libsorvo_audio.0.dylib"}.get(sys.platform, "libsorvo_audio.so.0")


class BuildLibrary(Command):
    """Follows CMake's own variables: CXX, CXXFLAGS, CMAKE_GENERATOR, CMAKE_TOOLCHAIN_FILE."""

    description = "build the shared library by CMake"
    user_options = []
    editable_mode = False

    def initialize_options(self):
        self.build_lib = self.build_base = None

    def finalize_options(self):
        self.set_undefined_options("build", ("build_lib", "build_lib"), ("build_base", "build_base"))

    def run(self):
        source = pathlib.Path(__file__).parent.resolve()
        folder = pathlib.Path(self.build_base, "python").resolve()  # kept: an editable installation is rebuilt often
        configure = ["cmake", "-S", source, "-B", folder, "-DCMAKE_BUILD_TYPE=Release", "-DBUILD_SHARED_LIBS=ON",
                     f"-DSORVO_AUDIO_PORTABLE_BINARY={'ON' if sys.platform == 'linux' else 'OFF'}",
                     "-DSORVO_AUDIO_MATH=own", "-DSORVO_AUDIO_BUILD_TESTS=OFF", "-DSORVO_AUDIO_BUILD_TOOLS=OFF"]
        if "CMAKE_GENERATOR" not in os.environ and shutil.which("ninja"):
            configure += ["-G", "Ninja"]
        subprocess.run(configure, check=True)
        subprocess.run(["cmake", "--build", folder, "--parallel", str(os.cpu_count())], check=True)
        target = pathlib.Path(self.get_outputs()[0])
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(next(folder.rglob(LIBRARY)), target)

    def get_outputs(self):
        packages = "python" if self.editable_mode else self.build_lib
        return [os.path.join(packages, "sorvo_audio", LIBRARY)]

    def get_output_mapping(self):
        return {}

    def get_source_files(self):
        return []  # MANIFEST.in has them


class Build(build):
    sub_commands = [*build.sub_commands, ("build_library", None)]


class Binary(Distribution):
    """What is installed belongs to a platform, though setuptools compiles nothing."""

    def has_ext_modules(self):
        return True


class Wheel(bdist_wheel):
    """One wheel for every Python of a platform: the library is loaded by ctypes."""

    def get_tag(self):
        return "py3", "none", super().get_tag()[2]


setup(distclass=Binary, cmdclass={"build": Build, "build_library": BuildLibrary, "bdist_wheel": Wheel})
