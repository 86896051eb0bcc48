# SPDX-License-Identifier: GPL-2.0-or-later
"""Common fixtures of the tests of the package."""
import pathlib

import pytest

import tolvik

ROOT = pathlib.Path(__file__).resolve().parents[2]


@pytest.fixture(scope="session")
def examples() -> pathlib.Path:
    """The folder of the example states."""
    return ROOT / "examples"


@pytest.fixture(scope="session")
def program() -> pathlib.Path:
    """The program, built beside the package."""
    path = pathlib.Path(tolvik.__file__).parents[2] / "Tolvik"
    if not path.exists():
        pytest.skip("the program is not built beside the package")
    return path
