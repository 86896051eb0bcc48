# SPDX-License-Identifier: GPL-2.0-or-later
"""Meaning of an ORSO header: columns with units and kinds of widths, photon energy, polarisation."""
from __future__ import annotations

import warnings
from typing import TYPE_CHECKING, Any, Mapping, Optional

import numpy as np
import numpy.typing as npt

from .. import polarization as _polarization
from .. import resolution
from ..data import Data
from ..errors import DataError, DataWarning
from . import quantities
from .quantities import Column

if TYPE_CHECKING:
    from .reader import ReadOptions

Array = npt.NDArray[np.float64]

_NAMES = {"qz": "q", "q": "q", "r": "R", "rqz": "R", "sr": "dR", "sqz": "dq", "sq": "dq", "dr": "dR", "dq": "dq"}
# Further keys of the standard; silently ignored.
_KINDS = {"sigma": "sigma", "fwhm": "fwhm"}
_ERRORS = {"q": "dq", "R": "dR"}


def merge(first: Mapping[str, Any], own: Mapping[str, Any]) -> dict[str, Any]:
    """Header of a later data set: the first header, with the mappings of `own` laid over it; lists are replaced."""
    result = dict(first)
    for key, value in own.items():
        before = result.get(key)
        result[key] = merge(before, value) if isinstance(value, dict) and isinstance(before, dict) else value
    return result


def columns(header: Mapping[str, Any], version: tuple[int, ...] = (1, 2)) -> list[Column]:
    """Columns of a header, in the order of the table.

    Parameters
    ----------
    header : mapping
        With a list ``columns``.
    version : tuple of int
        Of the standard. Before 1.0 a column may be a plain text.

    Returns
    -------
    list of Column
        Quantities that are not a curve's own ("2theta", "lambda") are marked to be skipped.

    Raises
    ------
    DataError
        If the list is missing, an entry is no column, a unit or a kind of width is unknown.
    """
    listed = header.get("columns")
    if not isinstance(listed, list) or not listed:
        raise DataError(
            "header has no list columns:; write '# columns:' and '# - {name: Qz, unit: 1/angstrom}' and so on"
        )
    return [_column(entry, number) for number, entry in enumerate(listed, 1)]


def _column(entry: Any, number: int) -> Column:
    if isinstance(entry, str):
        entry = {"name": entry}
    if not isinstance(entry, dict):
        raise DataError(f"column {number} is {entry!r}; write {{name: ..., unit: ...}} or {{error_of: ...}}")
    unit = "" if entry.get("unit") is None else str(entry["unit"])
    if "error_of" in entry:
        return _error_column(entry, unit, number)
    name = str(entry.get("name", "")).strip()
    if not name:
        raise DataError(f"column {number} has neither name nor error_of")
    column = Column(_NAMES.get(name.lower(), "-"), unit, _width_kind(entry, number), _distribution(entry))
    quantities.factor_of(column)
    return column


def _error_column(entry: Mapping[str, Any], unit: str, number: int) -> Column:
    of = _NAMES.get(str(entry["error_of"]).strip().lower(), "-")
    if of != "-" and of not in _ERRORS:
        raise DataError(f"column {number} is the error of an error, {entry['error_of']!r}")
    column = Column(_ERRORS.get(of, "-"), unit, _width_kind(entry, number), _distribution(entry))
    quantities.factor_of(column)
    if column.quantity != "-":
        resolution.sigma_per_width(column.width_kind, column.distribution)
    return column


def _width_kind(entry: Mapping[str, Any], number: int) -> str:
    says = entry.get("value_is")
    kind = _KINDS.get(str("sigma" if says is None else says).strip().lower())
    if kind is None:
        raise DataError(
            f"column {number} has value_is: {says!r}; give sigma or FWHM (sigma = FWHM / 2.3548 for a gaussian)"
        )
    return kind


def _distribution(entry: Mapping[str, Any]) -> str:
    says = entry.get("distribution")
    return "gaussian" if says is None else str(says)


def data_set(header: Mapping[str, Any], listed: list[Column], table: Array, path: str, options: "ReadOptions") -> Data:
    """The data set of a header and its table; raises DataError as `quantities.assemble` does."""
    columns = list(listed)
    for index, column in enumerate(columns):
        taken = any(other.quantity == column.quantity for other in columns[:index])
        if column.quantity == "dR":
            table = _with_sigma(table, index, column)
        columns[index] = Column("-") if taken else column
    name = header.get("data_set")
    name = "" if name is None else str(name)
    settings = _settings(header)
    energy = options.energy if options.energy is not None else _energy(settings)
    return quantities.assemble(
        columns,
        table,
        energy=energy,
        dq_is=options.dq_is,
        source=path,
        name=name,
        polarization=_polarization_of(header, settings, path, name),
        metadata=header,
    )


def _with_sigma(table: Array, index: int, column: Column) -> Array:
    """The table with the errors of R as standard deviations, converted from the form that value_is gives."""
    result = table.copy()
    result[:, index] *= resolution.sigma_per_width(column.width_kind, column.distribution)
    return result


def _settings(header: Mapping[str, Any]) -> Mapping[str, Any]:
    node: Any = header
    for key in ("data_source", "measurement", "instrument_settings"):
        node = node.get(key) if isinstance(node, dict) else None
    return node if isinstance(node, dict) else {}


def _energy(settings: Mapping[str, Any]) -> Optional[float]:
    """Photon energy of a fixed wavelength (or energy); None for a range, which is a white beam."""
    for key in ("energy", "wavelength"):
        entry = settings.get(key)
        if isinstance(entry, dict) and ("magnitude" in entry or "value" in entry):
            value, unit = entry.get("magnitude", entry.get("value")), entry.get("unit")
        elif isinstance(entry, (int, float)):
            value, unit = entry, None
        else:
            continue
        if isinstance(value, bool) or not isinstance(value, (int, float)):
            raise DataError(f"{key} {value!r} is no number; write {{magnitude: ..., unit: ...}}")
        return quantities.energy_of(key, float(value), "" if unit is None else str(unit))
    return None


def _polarization_of(header: Mapping[str, Any], settings: Mapping[str, Any], path: str, name: str) -> Optional[str]:
    says = settings.get("polarization")
    if any(isinstance(entry, dict) and entry.get("physical_quantity") == "asymmetry" for entry in header["columns"]):
        return "asymmetry"
    if says is None or str(says).strip().lower() in ("unpolarized", "unpolarised", "none"):
        return None
    text = str(says).strip().lower()
    if text in _polarization.NEUTRON_NAMES:
        warnings.warn(
            (
                f"{path}: {name + ': ' if name else ''}polarization {text} is one of neutrons and is left out; set "
                "polarization to sigma, pi, left or right for X-rays"
            ),
            DataWarning,
            stacklevel=6,
        )
        return None
    return _polarization.canonical(text)
