# SPDX-License-Identifier: GPL-2.0-or-later
"""HDF5 files in the layout of the standard, written here by h5py alone."""
import math

import pytest

from tolvik.errors import DataError
from tolvik.formats import read

h5py = pytest.importorskip("h5py")
FWHM = 2 * math.sqrt(2 * math.log(2))
INFO = {
    "data_source": {
        "measurement": {
            "instrument_settings": {"wavelength": {"magnitude": 1.5406, "unit": "angstrom"}, "polarization": "left"},
            "data_files": ["a", "b"],
        }
    },
    "columns": [
        {"name": "Qz", "unit": "1/nm"},
        {"name": "R"},
        {"error_of": "R"},
        {"error_of": "Qz", "value_is": "FWHM"},
    ],
}
ARRAYS = {"Qz": [0.1, 0.2], "R": [1.0, 0.5], "R_errors": [0.1, 0.05], "Qz_errors": [0.01, 0.02]}


def put(group, name, value):
    """A header as a tree: mappings and lists as groups, a list with the attribute sequence."""
    if isinstance(value, (dict, list)):
        inner = group.create_group(name)
        items = value.items() if isinstance(value, dict) else [(str(i), v) for i, v in enumerate(value)]
        for key, member in items:
            put(inner, key, member)
        if isinstance(value, list):
            inner.attrs["sequence"] = [str(i) for i in range(len(value))]
    else:
        group.create_dataset(name, data=h5py.Empty("f") if value is None else value)


def orb(path, names=("up",), info=INFO, arrays=ARRAYS, data_class="NXentry"):
    with h5py.File(path, "w") as file:
        for name in names:
            entry = file.create_group(name)
            entry.attrs["NX_class"] = data_class
            if info is not None:
                put(entry, "info", {**info, "data_set": name})
            data = entry.create_group("data", track_order=True)
            for key, values in arrays.items():
                data.create_dataset(key, data=values)
    return path


def test_all_data_sets_with_units_widths_and_rays(tmp_path):
    up, down = read(orb(tmp_path / "a.orb", ("up", "down")))
    assert {up.name, down.name} == {"up", "down"} and up.polarization == "left"
    assert up.q == pytest.approx([0.01, 0.02]) and up.r.tolist() == [1, 0.5] and up.dr.tolist() == [0.1, 0.05]
    assert up.dq == pytest.approx([0.001 / FWHM, 0.002 / FWHM]) and up.energy == pytest.approx(12398.326 / 1.5406)
    assert up.metadata["data_source"]["measurement"]["data_files"] == ["a", "b"]


def test_arrays_by_place_and_without_header(tmp_path):
    arrays = {"q_values": [0.1, 0.2], "reflected": [1.0, 0.5], "c": [0.1, 0.05], "d": [0.01, 0.02]}
    assert read(orb(tmp_path / "a.orb", arrays=arrays))[0].q == pytest.approx([0.01, 0.02])
    assert read(orb(tmp_path / "b.orb", info=None, arrays={"Qz": [0.1], "R": [1.0]}))[0].q.tolist() == [0.1]


def test_an_hdf5_file_is_known_by_its_content(tmp_path):
    assert len(read(orb(tmp_path / "a.dat"))) == 1


@pytest.mark.parametrize(
    "change, message",
    [
        ({"names": ()}, "no group of NX_class NXentry"),
        ({"data_class": "NXnote"}, "no group of NX_class NXentry"),
        ({"arrays": {"Qz": [0.1]}}, "no array for column 2"),
        ({"arrays": {**ARRAYS, "R": [1.0]}}, "all need the same number"),
        ({"arrays": {**ARRAYS, "R": [["a"], ["b"]]}}, "no one-dimensional array of numbers"),
        ({"arrays": {**ARRAYS, "R_errors": [0.1, -1.0]}}, "dr is -1"),
        ({"info": {"columns": [1, 2]}}, "column 1 is 1"),
        ({"info": {"columns": [{"name": "Qz", "unit": "1/ell"}, {"name": "R"}]}}, "unit '1/ell'"),
    ],
)
def test_wrong_trees(tmp_path, change, message):
    with pytest.raises(DataError, match=message) as caught:
        read(orb(tmp_path / "a.orb", **change))
    assert str(caught.value).startswith(f"{tmp_path}/a.orb: ") and "\n" not in str(caught.value)
