# SPDX-License-Identifier: GPL-2.0-or-later
"""What the tests of the package share."""
import pathlib

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]


@pytest.fixture(scope="session")
def examples() -> pathlib.Path:
    """The folder of the example states."""
    return ROOT / "examples"
