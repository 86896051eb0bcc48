# SPDX-License-Identifier: GPL-2.0-or-later
"""The sessions of the documents give what the documents say."""
import doctest
import pathlib

import pytest

DOCS = pathlib.Path(__file__).resolve().parents[2] / "docs"


@pytest.mark.parametrize("name, needs", [("data.md", ()), ("materials.md", ("periodictable", "xraydb"))])
def test_sessions(name, needs):
    for module in needs:
        pytest.importorskip(module)
    result = doctest.testfile(str(DOCS / name), module_relative=False, encoding="utf-8")
    assert result.attempted > 5 and result.failed == 0
