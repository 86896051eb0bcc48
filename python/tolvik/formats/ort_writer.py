# SPDX-License-Identifier: GPL-2.0-or-later
"""Writer of .ort files, version 1.1 of the standard.

Model and polarisation of X-rays need the later header keys; all keys of 1.0 are written as there.
"""
from __future__ import annotations

import datetime
import os
import tempfile
from typing import Any, Mapping, Optional, Sequence, Union

import numpy as np

from .. import polarization as _polarization
from .. import units
from ..data import Data
from ..errors import DataError, DataFileError
from . import orso_header, orso_yaml, source

_FIRST_LINE = "# # ORSO reflectivity data file | 1.1 standard | YAML encoding | https://www.reflectometry.org/"


def write_ort(
    path: source.Path, data: Union[Data, Sequence[Data]], model: Union[str, Mapping[str, Any], None] = None
) -> None:
    """Writes data sets as an .ort file; later headers carry the differences to the first one only.

    Metadata of a data set in the terms of the standard is kept; the columns, the wavelength and the polarisation are
    those of the data. Masked points are written as well.

    Parameters
    ----------
    path : str or path-like
        Replaced as a whole: after a failure the old file is there, or none.
    data : Data or sequence of Data
        dq is written as sigma.
    model : str or mapping, optional
        Sample model of the standard, or its stack as text: "vacuum | SiO2 1.5 | Si" (nm, beam side first).

    Raises
    ------
    DataError
        If there is no data set, or two have the same name.
    DataFileError
        If the file cannot be written.
    """
    sets = [data] if isinstance(data, Data) else list(data)
    if not sets:
        raise DataError("no data set to write; give at least one")
    names = _names(sets)
    first: Optional[dict[str, Any]] = None
    lines = [_FIRST_LINE]
    for one, name in zip(sets, names):
        header = _header(one, name, model)
        own = header if first is None else {"data_set": name, **_difference(first, header)}
        first = header if first is None else first
        lines += orso_yaml.dump(own) + ["# # " + " ".join(f"{label:<22}" for label, _ in _table(one)).rstrip()]
        lines += [
            " ".join(f"{value:<22.16e}" for value in row).rstrip()
            for row in zip(*(column for _, column in _table(one)))
        ]
    write_text(path, "\n".join(lines) + "\n")


def write_text(path: source.Path, text: str) -> None:
    """Writes a text file aside and renames it over the old one; devices and pipes are written in place.

    Raises
    ------
    DataFileError
        If it cannot be written; the old file is then untouched.
    """
    name = os.fspath(path)
    aside = None
    try:
        target = os.path.realpath(name)
        if os.path.exists(target) and not os.path.isfile(target):
            if os.path.isdir(target):
                raise IsADirectoryError(21, "is a folder")
            with open(target, "w", encoding="utf-8") as stream:
                stream.write(text)
            return
        handle, aside = tempfile.mkstemp(prefix=".", suffix=".part", dir=os.path.dirname(target) or ".")
        with os.fdopen(handle, "w", encoding="utf-8") as stream:
            stream.write(text)
            stream.flush()
            os.fsync(stream.fileno())
        mode = os.stat(target).st_mode & 0o777 if os.path.exists(target) else 0o666 & ~_umask()
        os.chmod(aside, mode)
        os.replace(aside, target)
    except (OSError, ValueError) as error:
        if aside is not None and os.path.exists(aside):
            os.unlink(aside)
        reason = getattr(error, "strerror", None) or source.one_line(error)
        raise DataFileError(
            f"{name}: cannot be written: {reason}; see that the folder exists, is writable and has room"
        ) from None


def _umask() -> int:
    mask = os.umask(0o077)
    os.umask(mask)
    return mask


def _names(sets: Sequence[Data]) -> list[str]:
    names = [one.name or (str(index) if len(sets) > 1 else "0") for index, one in enumerate(sets)]
    twice = {name for name in names if names.count(name) > 1}
    if twice:
        raise DataError(f"two data sets are called {sorted(twice)[0]!r}; give each a name of its own")
    return names


def _table(one: Data) -> list[tuple[str, Any]]:
    columns = [("Qz", one.q), ("R", one.r)]
    if one.dr is not None or one.dq is not None:  # the third column of the standard is sR, whether known or not
        columns.append(("sR", one.dr if one.dr is not None else np.full(len(one), np.nan)))
    if one.dq is not None:
        columns.append(("sQz", one.dq))
    return columns


def _header(one: Data, name: str, model: Union[str, Mapping[str, Any], None]) -> dict[str, Any]:
    given = orso_header.merge(
        _skeleton(name), {key: value for key, value in one.metadata.items() if key in ("data_source", "reduction")}
    )
    header: dict[str, Any] = {"data_source": given["data_source"], "reduction": given["reduction"], "data_set": name}
    settings = _settings_of(given)
    if isinstance(one.energy, float):
        settings["wavelength"] = {"magnitude": units.wavelength_from_energy(one.energy), "unit": "angstrom"}
    says = None if one.polarization is None else _polarization.name_of(one.polarization)
    if says in ("sigma", "pi", "left", "right"):
        settings["polarization"] = says
    if model is not None:
        header["data_source"]["sample"]["model"] = {"stack": model} if isinstance(model, str) else dict(model)
    columns = [
        {"name": "Qz", "unit": "1/angstrom", "physical_quantity": "wavevector transfer"},
        {"name": "R", "physical_quantity": "asymmetry" if says == "asymmetry" else "reflectivity"},
        {"error_of": "R", "error_type": "uncertainty", "value_is": "sigma"},
        {"error_of": "Qz", "error_type": "resolution", "value_is": "sigma"},
    ]
    header["columns"] = columns[: len(_table(one))]
    return header


def _settings_of(given: Mapping[str, Any]) -> dict[str, Any]:
    settings: dict[str, Any] = given["data_source"]["measurement"]["instrument_settings"]
    return settings


def _skeleton(name: str) -> dict[str, Any]:
    """The keys that the schema requires; null means that a value is not known."""
    now = datetime.datetime.now().replace(microsecond=0).isoformat()
    return {
        "data_source": {
            "owner": {"name": None, "affiliation": None},
            "experiment": {"title": None, "instrument": None, "start_date": None, "probe": "x-ray"},
            "sample": {"name": name},
            "measurement": {"instrument_settings": {"incident_angle": None, "wavelength": None}, "data_files": []},
        },
        "reduction": {"software": {"name": "Tolvik"}, "timestamp": now},
    }


def _difference(first: Mapping[str, Any], own: Mapping[str, Any]) -> dict[str, Any]:
    result: dict[str, Any] = {}
    for key, value in own.items():
        before = first.get(key)
        if isinstance(value, dict) and isinstance(before, dict):
            inner = _difference(before, value)
            if inner:
                result[key] = inner
        elif key not in first or value != before:
            result[key] = value
    for key in first:
        if key not in own:
            result[key] = None  # a null overrides the entry of the first header
    return result
