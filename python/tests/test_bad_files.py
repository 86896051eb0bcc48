# SPDX-License-Identifier: GPL-2.0-or-later
"""Bad files: each gives one line that names the file, the line and the value, and says what to do."""
import os

import pytest
from ort_files import COLUMNS, FIRST, HEADER, ROWS, ort

from tolvik.errors import DataError, DataFileError, TolvikError
from tolvik.formats import read

TWO = "0.01 1\n0.02 0.5\n"
# name of the file, content, options, line, and a part of the message
BAD = [
    ("a.dat", "", {}, None, "is empty"),
    ("a.dat", " \n\t\n", {}, None, "is empty"),
    ("a.dat", "# only a header\n", {}, None, "no line of two or more numbers"),
    ("a.dat", "one\ntwo\n", {}, None, "no line of two or more numbers"),
    ("a.dat", "1\n2\n3\n", {}, None, "no line of two or more numbers"),
    ("a.dat", "energy = 8048\nlayerversion = 3\n", {}, None, "no line of two or more numbers"),
    ("a.dat", TWO + "0.03\n", {}, 3, "has 1 columns, the lines before have 2"),
    ("a.dat", TWO + "0.03 0.2 0.1\n", {}, 3, "has 3 columns"),
    ("a.dat", "# h\n\n" + TWO + "0.03 abc\n", {}, 5, "'abc' is no number"),
    ("a.dat", TWO + "0.03 1_0\n", {}, 3, "'1_0' is no number"),
    ("a.dat", TWO + "0.03 0x10\n", {}, 3, "'0x10' is no number"),
    ("a.dat", TWO + "0.03 20nm\n", {}, 3, "'20nm' is no number"),
    ("a.dat", TWO + "0.03 1e\n", {}, 3, "'1e' is no number"),
    ("a.dat", TWO + "the end\n", {}, 3, "'the' is no number"),
    ("a.dat", "0.01 1\n0,02 0,5\n", {}, 2, "'0,02 0,5' has commas"),
    ("a.dat", "0,01,0,5\n0,02,0,4\n", {}, 1, "cannot be told apart"),
    ("a.dat", "0.01 1 -0.1\n", {}, 1, "dr is -0.1"),
    ("a.dat", "0.01 1 0.1 0.1\n0.02 1 0.1 -0.1\n", {}, 2, "sigma"),
    ("a.dat", "0.01 nan\n", {}, None, "none of 1 points is usable"),
    ("a.dat", "0.01 0\n0.02 0\n", {}, None, "2 with R = 0"),
    ("a.dat", "1 2 3 4 5\n", {}, 1, "5 columns without names"),
    ("a.dat", TWO, {"columns": "q,R,dR"}, 1, "2 columns, but 3 names"),
    ("a.dat", TWO, {"columns": "q,elephant"}, None, "'elephant' is unknown"),
    ("a.dat", TWO, {"columns": "q,q"}, None, "q is there twice"),
    ("a.dat", TWO, {"columns": "q,dR"}, None, "column of R or of counts"),
    ("a.dat", TWO, {"columns": "R,dR"}, None, "no column of q"),
    ("a.dat", TWO, {"columns": "2theta,R"}, None, "give energy in eV"),
    ("a.dat", TWO, {"columns": "q[furlong],R"}, None, "unit 'furlong' of q is unknown"),
    ("a.dat", TWO, {"columns": "q,R[barn]"}, None, "unit 'barn' of a reflectivity is unknown"),
    ("a.dat", "q[1/parsec] R\n" + TWO, {}, None, "unit '1/parsec' of q is unknown"),
    ("a.dat", "0.01 -5\n", {"columns": "q,counts"}, 1, "counts are -5"),
    ("a.dat", TWO, {"format": "nexus"}, None, "format 'nexus' is unknown"),
    ("a.dat", TWO, {"dq_is": "hwhm"}, None, "dq_is = 'hwhm' is unknown"),
    ("a.dat", TWO, {"energy": -1}, None, "energy -1"),
    ("a.xyz", TWO, {}, None, "suffix '.xyz' is unknown"),
    ("a", TWO, {}, None, "suffix '' is unknown"),
    ("a.dat", b"\x00\x00\x01\x02\x03" * 20, {}, None, "zero bytes"),
    ("a.dat", b"\xff\xfe0\x00.", {}, None, "is no utf-16 text"),
    ("a.dat", b"\x89PNG\r\n\x1a\n\x00\x00", {}, None, "zero bytes"),
    ("a.ort", TWO, {}, 1, "is not the first line of an ORSO file"),
    ("a.ort", FIRST.format("2.0") + TWO, {}, 1, "version 2.0 of the standard is unknown"),
    ("a.ort", FIRST.format("1.0"), {}, 2, "has no header"),
    ("a.ort", FIRST.format("1.0") + TWO, {}, 2, "has no header"),
    ("a.ort", ort(rows=""), {}, 2, "without points"),
    ("a.ort", ort(columns=COLUMNS + "# - [\n"), {}, 19, "header is not YAML"),
    ("a.ort", FIRST.format("1.0") + "# - a\n# - b\n" + TWO, {}, 2, "header is no mapping"),
    ("a.ort", FIRST.format("1.0") + "# x: &a [1]\n# y: *a\n" + TWO, {}, 2, "alias *a"),
    ("a.ort", FIRST.format("1.0") + "# x: " + "[" * 60 + "]" * 60 + "\n" + TWO, {}, 2, "nested deeper"),
    ("a.ort", FIRST.format("1.0") + "# x: !!python/name:os.system\n" + TWO, {}, 2, "is not YAML"),
    ("a.ort", FIRST.format("1.0") + "# x: !!python/name:os.system 3\n" + TWO, {}, 2, "is not YAML"),
    ("a.ort", FIRST.format("1.0") + "# data_set: a\n" + TWO, {}, 2, "no list columns"),
    ("a.ort", FIRST.format("1.0") + "# columns: Qz\n" + TWO, {}, 2, "no list columns"),
    ("a.ort", FIRST.format("1.0") + "# columns: [3, 4]\n" + TWO, {}, 2, "column 1 is 3"),
    ("a.ort", FIRST.format("1.0") + "# columns: [{unit: 1/nm}]\n0.1\n", {}, 2, "neither name nor error_of"),
    ("a.ort", FIRST.format("1.0") + "# columns: [{name: Qz}, {name: T}]\n" + TWO, {}, 2, "column of R"),
    ("a.ort", FIRST.format("1.0") + "# columns: [{name: P}, {name: R}]\n" + TWO, {}, 2, "no column of q"),
    ("a.ort", ort(columns=COLUMNS.replace("1/angstrom", "1/fathom")), {}, 2, "unit '1/fathom' of q is unknown"),
    ("a.ort", ort(columns=COLUMNS.replace("1/angstrom", "[1]")), {}, 2, "of q is unknown"),
    ("a.ort", ort(columns=COLUMNS.replace("value_is: sigma", "value_is: HWHM")), {}, 2, "give sigma or FWHM"),
    (
        "a.ort",
        ort(
            columns=COLUMNS.replace(
                "resolution, value_is: sigma", "resolution, value_is: FWHM, distribution: lorentzian"
            )
        ),
        {},
        2,
        "has no standard deviation",
    ),
    ("a.ort", ort(columns=COLUMNS.replace("error_of: Qz", "error_of: sR")), {}, 2, "error of an error"),
    ("a.ort", ort(polarization="elliptical"), {}, 2, "polarization 'elliptical' is unknown"),
    ("a.ort", ort().replace("unit: nm", "unit: ell"), {}, 2, "unit 'ell' of a length is unknown"),
    ("a.ort", ort().replace("0.15406,", "long,"), {}, 2, "wavelength 'long' is no number"),
    ("a.ort", ort().replace("0.15406,", "-1,"), {}, 2, "wavelength -1 is not positive"),
    ("a.ort", ort(rows="0.01 1 0.1\n"), {}, 19, "has 3 columns, the header names 4"),
    ("a.ort", ort(rows="0.01 1 0.1 x\n"), {}, 19, "'x' is no number"),
    ("a.ort", ort(rows="0.01 1 0.1 0\n0.02 1 -0.1 0\n"), {}, 20, "dr is -0.1"),
    ("a.ort", ort(more="# columns: []\n" + ROWS), {}, 22, "begins with '# data_set: NAME'"),
    ("a.ort", ort(more="# data_set: b\n"), {}, 22, "without points"),
    ("a.ort", ort(more="# data_set: b\n# columns: {}\n" + ROWS), {}, 22, "no list columns"),
    ("a.ort", ort(), {"columns": "q,R"}, None, "names its columns itself"),
    ("a.ort", ort(), {"format": "orb"}, None, "is no readable HDF5 file"),
    ("a.orb", b"\x89HDF\r\n\x1a\n" + b"\x00" * 200, {}, None, "is no readable HDF5 file"),
    ("a.orb", TWO, {}, None, "is no readable HDF5 file"),
    ("a.xrdml", "<xml", {}, None, "is no readable .xrdml file"),
    ("a.xrdml", "<a></a>", {}, None, "holds no data set"),
    ("a.ras", "*RAS_DATA_START\n*RAS_HEADER_START\n", {}, None, "is no readable .ras file"),
    ("a.ras", TWO, {}, None, "holds no data set"),
    ("a.spec", TWO, {}, None, "is no readable .spec file"),
    ("a.spec", "#S 1 ascan\n#D now\n#N 1\n#L a\n", {}, None, "spec"),
]
assert HEADER.count("\n") + COLUMNS.count("\n") == 17, "lines 19 to 21 are the rows"


@pytest.mark.parametrize("name, content, options, line, message", BAD)
def test_bad_file(tmp_path, name, content, options, line, message):
    if name.endswith((".xrdml", ".ras", ".spec")):
        pytest.importorskip("xrayutilities")
    path = tmp_path / name
    path.write_bytes(content if isinstance(content, bytes) else content.encode())
    with pytest.raises(DataError) as caught:
        read(path, **options)
    text = str(caught.value)
    assert message in text and "\n" not in text and len(text) < 600
    if not set(options) & {"format", "dq_is", "energy"} and "columns itself" not in text:
        assert text.startswith(f"{path}:{line}: " if line else f"{path}: "), text


def test_files_that_cannot_be_opened(tmp_path):
    (tmp_path / "shut.dat").write_text(TWO)
    (tmp_path / "shut.dat").chmod(0)
    paths = [
        (tmp_path / "none.dat", "No such file"),
        (tmp_path, "is a folder"),
        ("zero\0.dat", "no name of a file"),
        ("x" * 5000, "File name too long"),
    ]
    if os.geteuid() != 0:  # root may read everything
        paths.append((tmp_path / "shut.dat", "Permission denied"))
    for path, message in paths:
        with pytest.raises(DataFileError, match=message) as caught:
            read(path)
        assert isinstance(caught.value, (TolvikError, OSError)) and "\n" not in str(caught.value)


def test_a_file_too_large_is_not_read(tmp_path):
    path = tmp_path / "a.dat"
    with open(path, "wb") as stream:
        stream.truncate(300 * 1024 * 1024)  # a sparse file: no space is used
    with pytest.raises(DataError, match="314572800 bytes"):
        read(path)
