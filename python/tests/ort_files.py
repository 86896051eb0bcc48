# SPDX-License-Identifier: GPL-2.0-or-later
"""Texts of .ort files for the tests, and a check of what the schema of the standard requires."""
FIRST = "# # ORSO reflectivity data file | {} standard | YAML encoding | https://www.reflectometry.org/\n"

HEADER = """# data_source:
#   owner: {{name: A. Physicist, affiliation: A university}}
#   experiment: {{title: Films, instrument: beamline, start_date: 2024-05-06T07:08:09, probe: x-ray}}
#   sample: {{name: Film}}
#   measurement:
#     instrument_settings:
#       incident_angle: {{min: 0.1, max: 5, unit: deg}}
#       wavelength: {{magnitude: 0.15406, unit: nm}}
#       polarization: {polarization}
#     data_files: [film.raw]
# reduction: {{software: {{name: hand}}}}
# data_set: {name}
# columns:
"""
COLUMNS = """# - {name: Qz, unit: 1/angstrom, physical_quantity: wavevector transfer}
# - {name: R, physical_quantity: reflectivity}
# - {error_of: R, error_type: uncertainty, value_is: sigma}
# - {error_of: Qz, error_type: resolution, value_is: sigma}
"""
ROWS = "0.01 1.0 0.01 0.001\n0.02 0.5 0.005 0.001\n0.03 0.25 0.0025 0.0015\n"


def ort(columns=COLUMNS, rows=ROWS, version="1.1", name="first", polarization="sigma", more=""):
    return FIRST.format(version) + HEADER.format(name=name, polarization=polarization) + columns + rows + more


def check_schema(header, allowed=("data_source", "reduction", "columns", "data_set")):
    """Asserts the required keys, types and column order of the header schema of the standard (versions 1.0 and 1.1)."""
    assert set(header) <= set(allowed) and {"data_source", "reduction", "columns"} <= set(header)
    source = header["data_source"]
    assert {"owner", "experiment", "sample", "measurement"} <= set(source)
    assert {"name", "affiliation"} <= set(source["owner"])
    assert {"title", "instrument", "start_date", "probe"} <= set(source["experiment"])
    assert source["experiment"]["probe"] in ("neutron", "x-ray", None)
    assert "name" in source["sample"]
    measurement = source["measurement"]
    assert {"instrument_settings", "data_files"} <= set(measurement) and isinstance(measurement["data_files"], list)
    settings = measurement["instrument_settings"]
    assert {"incident_angle", "wavelength"} <= set(settings)
    wavelength = settings["wavelength"]
    assert (
        wavelength is None or isinstance(wavelength.get("magnitude"), (int, float)) or {"min", "max"} <= set(wavelength)
    )
    assert "name" in header["reduction"]["software"]
    columns = header["columns"]
    assert 2 <= len(columns)
    assert columns[0]["name"] == "Qz" and columns[0]["unit"] in ("1/angstrom", "1/nm", "1", "1/s")
    assert columns[1]["name"] == "R"
    for column, of in zip(columns[2:], ("R", "Qz")):
        assert column["error_of"] == of and column["value_is"] in ("sigma", "FWHM")
        assert column["error_type"] in ("uncertainty", "resolution")
