# SPDX-License-Identifier: GPL-2.0-or-later
import math
import warnings

import numpy as np
import pytest

from tolvik import units
from tolvik.errors import DataError, DataWarning
from tolvik.formats import read

FWHM = 2 * math.sqrt(2 * math.log(2))


@pytest.fixture
def columns(tmp_path):
    def make(text, name="scan.dat", encoding="utf-8", **options):
        path = tmp_path / name
        path.write_bytes(text.encode(encoding))
        (data,) = read(path, **options)
        return data

    return make


EXPECTED_Q, EXPECTED_R, EXPECTED_DR = [0.01, 0.02, 0.03], [1.0, 0.5, 0.25], [0.1, 0.05, 0.025]
SAME_FILE = {
    "blanks": "0.01 1.0 0.1\n0.02 0.5 0.05\n0.03 0.25 0.025\n",
    "tabs": "0.01\t1.0\t0.1\n0.02\t0.5\t0.05\n0.03\t0.25\t0.025\n",
    "commas": "0.01,1.0,0.1\n0.02,0.5,0.05\n0.03,0.25,0.025\n",
    "commas and blanks": "0.01, 1.0, 0.1\n0.02, 0.5, 0.05\n0.03, 0.25, 0.025\n",
    "a comma at each end": "0.01,1.0,0.1,\n0.02,0.5,0.05,\n0.03,0.25,0.025,\n",
    "semicolons": "0.01;1.0;0.1\n0.02;0.5;0.05\n0.03;0.25;0.025\n",
    "semicolons and decimal commas": "0,01;1,0;0,1\n0,02;0,5;0,05\n0,03;0,25;0,025\n",
    "tabs and decimal commas": "0,01\t1,0\t0,1\n0,02\t0,5\t0,05\n0,03\t0,25\t0,025\n",
    "blanks and decimal commas": "0,01 1,0 0,1\n0,02 0,5 0,05\n0,03 0,25 0,025\n",
    "exponents": "1e-2 1E0 1d-1\n2.e-2 .5 5D-02\n+3e-2 25e-2 0.25e-1\n",
    "a header": "# q R dR\n0.01 1.0 0.1\n0.02 0.5 0.05\n0.03 0.25 0.025\n",
    "a header without sign": "my scan of 3 points\nq R dR\n0.01 1.0 0.1\n0.02 0.5 0.05\n0.03 0.25 0.025\n",
    "a count of points": "3\n0.01 1.0 0.1\n0.02 0.5 0.05\n0.03 0.25 0.025\n",
    "comments inside": "0.01 1.0 0.1\n# masked\n0.02 0.5 0.05\n\n0.03 0.25 0.025\n% end\n",
    "Windows": "q,R,dR\r\n0.01,1.0,0.1\r\n0.02,0.5,0.05\r\n0.03,0.25,0.025\r\n",
    "old Macintosh": "0.01 1.0 0.1\r0.02 0.5 0.05\r0.03 0.25 0.025\r",
    "another order": "dR;q;R\n0.1;0.01;1\n0.05;0.02;0.5\n0.025;0.03;0.25\n",
    "nanometres": "q[1/nm] R dR\n0.1 1.0 0.1\n0.2 0.5 0.05\n0.3 0.25 0.025\n",
    "units in brackets": "Qz (1/Å), Reflectivity (%), Error (%)\n0.01, 100.0, 10\n0.02, 50, 5\n0.03, 25, 2.5\n",
    "quoted labels": '"Q [1/A]","R","dR"\n0.01,1.0,0.1\n0.02,0.5,0.05\n0.03,0.25,0.025\n',
    "indented": "   0.01   1.0   0.1\n   0.02   0.5   0.05\n   0.03   0.25   0.025\n",
}


@pytest.mark.parametrize("encoding", ["utf-8", "utf-8-sig", "utf-16", "utf-16-le", "latin-1", "utf-32"])
@pytest.mark.parametrize("case", SAME_FILE)
def test_the_same_file_in_many_forms(columns, case, encoding):
    data = columns(SAME_FILE[case], encoding=encoding)
    assert data.q == pytest.approx(EXPECTED_Q) and data.r == pytest.approx(EXPECTED_R)
    assert data.dr == pytest.approx(EXPECTED_DR) and data.dq is None


@pytest.mark.parametrize("suffix", ["dat", "txt", "csv", "refl", "xy", "DAT"])
def test_suffixes(columns, suffix):
    assert columns(SAME_FILE["commas"], name=f"scan.{suffix}").q == pytest.approx(EXPECTED_Q)


def test_the_fourth_column_is_sigma_unless_somebody_says_otherwise(columns):
    text = "0.01 1 0.1 0.001\n0.02 0.5 0.1 0.002\n"
    assert columns(text).dq == pytest.approx([0.001, 0.002])
    assert columns(text, dq_is="FWHM").dq == pytest.approx(np.array([0.001, 0.002]) / FWHM)
    assert columns(text, dq_is="percent").dq == pytest.approx([0.01 * 0.001 / 100, 0.02 * 0.002 / 100])
    assert columns("1 2 3 4\n", columns="q[1/nm],-,R,dq").dq == pytest.approx(
        [0.4]
    ), "an error has the unit of its column"


def test_angles_need_an_energy_and_counts_get_errors(columns):
    text = "# 2theta counts\n0.4 10000\n0.8 400\n"
    with pytest.raises(DataError, match="angles need the photon energy"):
        columns(text)
    data = columns(text, energy=8048)
    wavelength = 12398.326 / 8048
    assert data.q == pytest.approx(4 * math.pi / wavelength * np.sin(np.radians([0.2, 0.4])))
    assert data.r.tolist() == [10000, 400] and data.dr.tolist() == [100, 20]
    assert columns("0.2 10000\n0.4 400\n", columns=["theta", "counts"], energy=8048).q == pytest.approx(data.q)


@pytest.mark.parametrize(
    "line, energy",
    [
        ("# energy = 778.2", 778.2),
        ("# Energy (eV): 778.2", 778.2),
        ("energy 0.7782 keV", 778.2),
        ("# wavelength = 1.54056 Å", 12398.326 / 1.54056),
        ("# Wavelength [nm]: 0.154056", 12398.326 / 1.54056),
        ("% lambda=1.54056", 12398.326 / 1.54056),
    ],
)
def test_an_energy_in_the_header(columns, line, energy):
    text = f"{line}\n2theta counts\n0.4 10000\n"
    assert columns(text).energy == pytest.approx(energy)
    assert columns(text, energy=900).energy == 900, "the caller has the last word"


@pytest.mark.parametrize("line", ["# the energy of 10 photons", "# energy: high", "# wavelength -3", "# energy = 0"])
def test_a_sentence_is_no_energy(columns, line):
    assert columns(f"{line}\n0.4 1\n").energy is None


def test_widths_of_angles(columns):
    data = columns("2theta R d2theta\n1.0 1 0.02\n", energy=8048)
    assert data.dq == pytest.approx(units.dq_from_two_theta([1.0], [0.02], 8048))


def test_doubtful_columns_are_warned_about(columns):
    with pytest.warns(DataWarning, match="column 1 reaches 8 and is taken as q"):
        columns("0.4 1\n8.0 0.1\n")
    with pytest.warns(DataWarning, match="column 2 reaches 10000 and is taken as R"):
        columns("0.04 10000\n0.08 400\n")
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        columns("q counts\n0.04 10000\n8 400\n")


def test_empty_fields_and_nan_are_masked(columns):
    with pytest.warns(DataWarning, match="2 of 3 points masked: 2 not a finite number"):
        data = columns("0.01,1.0,0.1\n0.02,,0.05\n0.03,NaN,0.025\n")
    assert data.mask.tolist() == [False, True, True]


def test_five_columns_with_names(columns):
    data = columns("0.5 0.01 1 0.1 7\n0.6 0.02 2 0.1 8\n", columns="-,q,R,dR,-")
    assert data.q.tolist() == [0.01, 0.02] and data.dr.tolist() == [0.1, 0.1]
