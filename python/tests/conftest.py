# SPDX-License-Identifier: GPL-2.0-or-later
"""Common fixtures of the tests of the package."""
import pathlib

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]


@pytest.fixture(scope="session")
def examples() -> pathlib.Path:
    """The folder of the example states."""
    return ROOT / "examples"
