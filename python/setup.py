# SPDX-License-Identifier: GPL-2.0-or-later
"""Builds the module tolvik._core with the CMake of this repository; all else is in pyproject.toml."""
import os
import pathlib
import re
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parent.parent


def project_version():
    """The version of the CMake project."""
    return re.search(r"project\(Tolvik VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"))[1]


class CMakeBuild(build_ext):
    """Configures the project for this interpreter, builds the one target and takes its module."""

    def build_extension(self, ext):
        build = pathlib.Path(self.build_temp).resolve() / "cmake"
        jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", str(os.cpu_count() or 1))
        options = ["-DCMAKE_BUILD_TYPE=Release", "-DTOLVIK_TESTS=OFF", "-DTOLVIK_BENCH=OFF", "-DTOLVIK_PYTHON=ON",
                   f"-DPython_EXECUTABLE={sys.executable}"]
        subprocess.run(["cmake", "-S", ROOT, "-B", build, "-G", "Ninja", *options], check=True)
        subprocess.run(["cmake", "--build", build, "--target", "tolvik_core", "--parallel", jobs], check=True)
        (module,) = (build / "python" / "tolvik").glob("_core.*")
        target = pathlib.Path(self.get_ext_fullpath(ext.name))
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(module, target)


setup(version=project_version(), ext_modules=[Extension("tolvik._core", [])], cmdclass={"build_ext": CMakeBuild})
