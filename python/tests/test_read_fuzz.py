# SPDX-License-Identifier: GPL-2.0-or-later
"""From any change of a good file, `read` returns data sets or raises a DataError of one line, and nothing else."""
import warnings

import numpy as np
import pytest
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st
from ort_files import ROWS, ort
from test_columns import SAME_FILE
from test_lab import RAS, SPEC, XRDML
from test_orb import orb

from tolvik.data import Data
from tolvik.errors import DataError
from tolvik.formats import read

SETTINGS = settings(max_examples=150, deadline=None, suppress_health_check=[HealthCheck.function_scoped_fixture])
GOOD = [("a.dat", text.encode()) for text in SAME_FILE.values()] + [
    ("a.dat", SAME_FILE["tabs"].encode("utf-16")),
    ("a.ort", ort().encode()),
    (
        "a.ort",
        ort(
            more="# data_set: b\n# columns: [{name: Qz, unit: 1/nm}, {name: R}]\n0.1 1\n# data_set: c\n" + ROWS
        ).encode(),
    ),
]
NASTY = [
    b"",
    b"\n",
    b"#",
    b"# ",
    b":",
    b"- ",
    b"{",
    b"[",
    b"]",
    b"'",
    b'"',
    b",",
    b";",
    b"\t",
    b"nan",
    b"inf",
    b"-",
    b"1e999",
    b"\x00",
    b"\xff",
    b"\xfe",
    b"&a ",
    b"*a",
    b"!!",
    b"|",
    b">",
    b"%",
    b"1/nm",
    b"null",
    b"~",
    b"0",
    b"data_set:",
    b"9" * 400,
    b"\xe2\x84\xab",
]


def check(path, **options):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        try:
            found = read(path, **options)
        except DataError as error:
            assert "\n" not in str(error) and str(path) in str(error)
            return
    assert found and all(
        isinstance(data, Data) and np.all(np.isfinite(data.x)) and np.all(data.y != 0) for data in found
    )
    for data in found:
        assert data.dr is None or np.all(data.y_err > 0)
        assert data.dq is None or np.all(data.x_err >= 0)


@st.composite
def mutations(draw, good):
    name, content = draw(st.sampled_from(good))
    for _ in range(draw(st.integers(1, 4))):
        start = draw(st.integers(0, len(content)))
        length = draw(st.integers(0, 12))
        piece = draw(st.sampled_from(NASTY) | st.binary(max_size=4))
        content = content[:start] + piece + content[start + length:]
    return name, content


@given(mutations(GOOD), st.sampled_from([None, "fwhm", "percent"]), st.sampled_from([None, 8048.0]))
@SETTINGS
def test_mutated_texts(tmp_path, case, dq_is, energy):
    name, content = case
    (tmp_path / name).write_bytes(content)
    check(tmp_path / name, dq_is=dq_is, energy=energy)


@given(st.binary(max_size=300), st.sampled_from(["a.dat", "a.ort", "a.orb"]))
@SETTINGS
def test_random_bytes(tmp_path, content, name):
    (tmp_path / name).write_bytes(content)
    check(tmp_path / name)


@given(st.lists(st.text(alphabet="0123456789.,;eE+-# \tqRnaif\n", max_size=30), max_size=6))
@SETTINGS
def test_random_tables(tmp_path, lines):
    (tmp_path / "a.csv").write_text("\n".join(lines))
    check(tmp_path / "a.csv")


@given(mutations([("a.xrdml", XRDML.encode()), ("a.ras", RAS.encode()), ("a.spec", SPEC.encode())]))
@settings(SETTINGS, max_examples=80)
def test_mutated_laboratory_files(tmp_path, case):
    pytest.importorskip("xrayutilities")
    name, content = case
    (tmp_path / name).write_bytes(content)
    check(tmp_path / name, energy=8048)


@given(st.data())
@settings(SETTINGS, max_examples=60)
def test_mutated_hdf5(tmp_path, data):
    content = orb(tmp_path / "good.orb").read_bytes()
    for _ in range(data.draw(st.integers(1, 5))):
        start = data.draw(st.integers(0, len(content) - 1))
        content = content[:start] + data.draw(st.binary(min_size=1, max_size=8)) + content[start + 1:]
    (tmp_path / "bad.orb").write_bytes(content[: data.draw(st.integers(1, len(content)))])
    check(tmp_path / "bad.orb")
