# SPDX-License-Identifier: GPL-2.0-or-later
import math
import os
import pathlib
import stat
import warnings

import numpy as np
import pytest
import yaml
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st
from ort_files import COLUMNS, ROWS, check_schema, ort

from tolvik.data import Data
from tolvik.errors import DataError, DataFileError, DataWarning
from tolvik.formats import read, write_ort

# A copy of the public examples beside the checkout, or in the folder that TOLVIK_VALIDATION names.
PUBLIC = (
    pathlib.Path(os.environ.get("TOLVIK_VALIDATION", pathlib.Path(__file__).parents[3] / "shared" / "validation"))
    / "ort"
)
FWHM = 2 * math.sqrt(2 * math.log(2))


@pytest.fixture
def write(tmp_path):
    def make(text, name="film.ort", encoding="utf-8"):
        path = tmp_path / name
        path.write_bytes(text if isinstance(text, bytes) else text.encode(encoding))
        return path

    return make


def test_one_data_set(write):
    (data,) = read(write(ort()))
    assert data.q.tolist() == [0.01, 0.02, 0.03] and data.r.tolist() == [1, 0.5, 0.25]
    assert data.dr.tolist() == [0.01, 0.005, 0.0025] and data.dq.tolist() == [0.001, 0.001, 0.0015]
    assert data.energy == pytest.approx(12398.326 / 1.5406)
    assert data.polarization == "sigma" and data.name == "first"
    assert data.metadata["data_source"]["experiment"]["start_date"] == "2024-05-06T07:08:09"


@pytest.mark.parametrize("version", ["0.1", "1.0", "1.1", "1.2"])
@pytest.mark.parametrize("encoding", ["utf-8", "utf-8-sig", "utf-16", "utf-16-le", "utf-16-be", "latin-1"])
def test_versions_and_encodings(write, version, encoding):
    text = ort(version=version).replace("Film", "Filmé")
    assert read(write(text, encoding=encoding))[0].metadata["data_source"]["sample"]["name"] == "Filmé"


def test_later_headers_carry_differences(write):
    more = (
        "# data_set: second\n# data_source:\n#   measurement:\n#     instrument_settings:\n#       polarization: pi\n"
        + ROWS
        + "# # a comment\n"
        + "# data_set: third\n# columns:\n# - {name: Qz, unit: 1/nm}\n# - {name: R}\n0.1 1\n"
    )
    first, second, third = read(write(ort(more=more)))
    assert [d.name for d in (first, second, third)] == ["first", "second", "third"]
    assert [d.polarization for d in (first, second, third)] == ["sigma", "pi", "sigma"], "each differs from the first"
    assert second.energy == first.energy and second.metadata["data_source"]["owner"]["name"] == "A. Physicist"
    assert len(second) == 3 and third.q == pytest.approx([0.01]) and third.dq is None and third.dr is None


@pytest.mark.parametrize(
    "unit, factor", [("1/angstrom", 1), ("1/nm", 0.1), ("nm^-1", 0.1), ("1/Å", 1), ("Å⁻¹", 1), ("1/m", 1e-10)]
)
def test_units_are_converted_and_an_error_has_the_unit_of_its_column(write, unit, factor):
    (data,) = read(write(ort(columns=COLUMNS.replace("1/angstrom", unit))))
    assert data.q == pytest.approx(factor * np.array([0.01, 0.02, 0.03]))
    assert data.dq == pytest.approx(factor * np.array([0.001, 0.001, 0.0015]))


def test_an_error_may_have_a_unit_of_its_own(write):
    columns = COLUMNS.replace("error_of: Qz,", "error_of: Qz, unit: 1/nm,")
    assert read(write(ort(columns=columns)))[0].dq == pytest.approx([1e-4, 1e-4, 1.5e-4])


@pytest.mark.parametrize(
    "distribution, fwhm", [(None, FWHM), ("gaussian", FWHM), ("triangular", math.sqrt(6)), ("uniform", math.sqrt(12))]
)
def test_full_widths_become_sigma(write, distribution, fwhm):
    says = f", distribution: {distribution}" if distribution else ""
    columns = COLUMNS.replace("resolution, value_is: sigma", f"resolution, value_is: FWHM{says}")
    assert read(write(ort(columns=columns)))[0].dq == pytest.approx(np.array([0.001, 0.001, 0.0015]) / fwhm)


def test_full_widths_of_the_reflectivity_become_sigma(write):
    columns = COLUMNS.replace("uncertainty, value_is: sigma", "uncertainty, value_is: FWHM")
    assert read(write(ort(columns=columns)))[0].dr == pytest.approx(np.array([0.01, 0.005, 0.0025]) / FWHM)


def test_the_caller_overrides_the_kind_of_width(write):
    assert read(write(ort()), dq_is="fwhm")[0].dq[0] == pytest.approx(0.001 / FWHM)
    assert read(write(ort()), dq_is="half")[0].dq[0] == 0.0005


def test_columns_in_any_order_and_unknown_ones_skipped(write):
    columns = (
        "# - {name: R}\n# - {name: lambda, unit: nm}\n# - {error_of: lambda}\n# - {error_of: Qz, value_is: FWHM}\n"
        "# - {name: Qz, unit: 1/nm}\n"
    )
    (data,) = read(write(ort(columns=columns, rows="1 0.15 0.01 0.02 0.1\n0.5 0.15 0.01 0.02 0.2\n")))
    assert data.q == pytest.approx([0.01, 0.02]) and data.r.tolist() == [1, 0.5]
    assert data.dq == pytest.approx([0.002 / FWHM] * 2) and data.dr is None


@pytest.mark.parametrize(
    "name, expected",
    [("sigma", "sigma"), ("pi", "pi"), ("left", "left"), ("right", "right"), ("unpolarized", None), ("null", None)],
)
def test_polarizations_of_x_rays(write, name, expected):
    assert read(write(ort(polarization=name)))[0].polarization == expected


def test_polarizations_of_neutrons_are_left_out_with_a_warning(write):
    with pytest.warns(DataWarning, match="polarization po is one of neutrons"):
        assert read(write(ort(polarization="po")))[0].polarization is None


def test_a_white_beam_has_no_energy(write):
    text = ort().replace("{magnitude: 0.15406, unit: nm}", "{min: 3, max: 12, unit: angstrom}")
    assert read(write(text))[0].energy is None
    assert read(write(text), energy=8000)[0].energy == 8000


def test_masked_points_of_a_file_give_one_warning(write):
    with pytest.warns(DataWarning) as caught:
        (data,) = read(write(ort(rows="0.01 1 0.1 0.001\n0.02 0 0.1 0.001\n0.03 0.1 0 0.001\n0.04 nan 1 0.001\n")))
    assert len(caught) == 1 and data.n_masked == 3
    assert str(caught[0].message).endswith(
        "first: 3 of 4 points masked: 1 not a finite number, 1 with R = 0, 1 with dR = 0"
    )


@pytest.mark.skipif(not PUBLIC.is_dir(), reason="the public examples are not here")
@pytest.mark.filterwarnings("ignore::tolvik.errors.DataWarning")
def test_public_examples():
    sizes = {
        name: [(d.name, len(d)) for d in read(PUBLIC / name)]
        for name in ("test_example.ort", "test_example2.ort", "test_example3.ort")
    }
    assert sizes["test_example.ort"] == [("spin_up", 2)]
    assert sizes["test_example2.ort"] == [("spin_up", 2), ("spin_down", 4)]
    assert sizes["test_example3.ort"] == [("spin_up", 2), ("spin_down", 2), ("spin_three", 4)]
    down = read(PUBLIC / "test_example3.ort")[1]
    assert down.r[0] == 4.88100068 and down.dr[0] == 4.73909068 and down.dq[0] == 5.17816478e-05
    with pytest.raises(DataError, match="not_orso.ort:1: .*format='columns'"):
        read(PUBLIC / "not_orso.ort")
    assert read(PUBLIC / "not_orso.ort", format="columns")[0].r.tolist() == [2, 3, 4]


def headers_of(path):
    """Headers of a written file by PyYAML's own loader, later ones laid over the first."""
    blocks, text = [], []
    for line in path.read_text().splitlines()[1:]:
        if line.startswith("#"):
            text.append(line[2:])
        elif text:
            blocks.append(yaml.safe_load("\n".join(text)))
            text = []

    def over(first, own):
        return {
            **first,
            **{
                k: over(first[k], v) if isinstance(v, dict) and isinstance(first.get(k), dict) else v
                for k, v in own.items()
            },
        }

    return [blocks[0]] + [over(blocks[0], block) for block in blocks[1:]]


def test_written_files_meet_the_schema_and_read_back(tmp_path):
    q = np.linspace(0.01, 0.3, 7)
    up = Data(q, q**-4, 0.1 * q, 0.001 * q, energy=778.2, polarization="left", name="plus")
    down = Data(q[:4], q[:4] ** -3, energy=778.2, polarization="right", name="minus")
    plain = Data(q, q, None, 0.002, energy=700, name="no errors")
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", DataWarning)
        write_ort(tmp_path / "a.ort", [up, down], model="vacuum | SiO2 1.5 | Si")
        write_ort(tmp_path / "b.ort", plain)
        again = read(tmp_path / "a.ort")
    for header in headers_of(tmp_path / "a.ort") + headers_of(tmp_path / "b.ort"):
        check_schema(header)
    assert headers_of(tmp_path / "a.ort")[1]["data_source"]["sample"]["model"] == {"stack": "vacuum | SiO2 1.5 | Si"}
    for one, two in zip((up, down), again):
        assert (one.q == two.q).all() and (one.r == two.r).all(), "every bit"
        assert (one.name, one.polarization) == (two.name, two.polarization) and two.energy == pytest.approx(
            one.energy, rel=1e-15
        )
    assert (again[0].dr == up.dr).all() and (again[0].dq == up.dq).all() and again[1].dr is None and again[1].dq is None


def test_an_asymmetry_comes_back_as_one(tmp_path):
    write_ort(tmp_path / "a.ort", Data([0.1, 0.2], [0.0, -0.5], polarization="asymmetry"))
    (data,) = read(tmp_path / "a.ort")
    assert data.polarization == "asymmetry" and data.r.tolist() == [0, -0.5] and data.n_masked == 0


def test_metadata_of_a_file_survives(write, tmp_path):
    write_ort(tmp_path / "copy.ort", read(write(ort())))
    header = headers_of(tmp_path / "copy.ort")[0]
    check_schema(header)
    assert (
        header["data_source"]["owner"]["affiliation"] == "A university"
        and header["reduction"]["software"]["name"] == "hand"
    )
    assert header["data_source"]["measurement"]["instrument_settings"]["incident_angle"]["max"] == 5


def test_an_unknown_error_beside_a_known_width_is_nan_and_comes_back_as_none(tmp_path):
    write_ort(tmp_path / "a.ort", Data([0.1, 0.2], [1, 0.5], None, 0.001))
    assert "nan" in (tmp_path / "a.ort").read_text()
    (data,) = read(tmp_path / "a.ort")
    assert data.dr is None and data.dq.tolist() == [0.001] * 2 and data.n_masked == 0


@given(
    st.lists(
        st.tuples(st.floats(1e-6, 3), st.floats(1e-300, 1e6), st.floats(1e-300, 1e5), st.floats(0, 1)),
        min_size=1,
        max_size=20,
    )
)
@settings(max_examples=40, deadline=None, suppress_health_check=[HealthCheck.function_scoped_fixture])
def test_any_numbers_come_back_bit_for_bit(tmp_path, rows):
    q, r, dr, dq = np.array(rows).T
    write_ort(tmp_path / "a.ort", Data(q, r, dr, dq))
    (data,) = read(tmp_path / "a.ort")
    for one, two in ((q, data.q), (r, data.r), (dr, data.dr), (dq, data.dq)):
        assert (one == two).all()


def test_a_failed_write_leaves_the_old_file(tmp_path):
    path = tmp_path / "a.ort"
    path.write_text("old")
    one = Data([0.1], [1.0], name="x")
    with pytest.raises(DataError, match="two data sets are called 'x'"):
        write_ort(path, [one, one])
    with pytest.raises(DataError, match="no data set"):
        write_ort(path, [])
    assert path.read_text() == "old" and os.listdir(tmp_path) == ["a.ort"]
    for target, reason in (
        (tmp_path / "none" / "a.ort", "No such file"),
        (tmp_path, "folder"),
        ("/dev/full", "No space left"),
    ):
        with pytest.raises(DataFileError, match=f"cannot be written: .*{reason}") as caught:
            write_ort(target, one)
        assert isinstance(caught.value, OSError)
    assert os.listdir(tmp_path) == ["a.ort"]


def test_a_new_file_keeps_rights_and_links(tmp_path):
    target, link = tmp_path / "a.ort", tmp_path / "link.ort"
    target.write_text("old")
    target.chmod(0o640)
    link.symlink_to(target)
    write_ort(link, Data([0.1], [1.0]))
    assert (
        link.is_symlink() and target.read_text().startswith("# # ORSO") and stat.S_IMODE(target.stat().st_mode) == 0o640
    )
