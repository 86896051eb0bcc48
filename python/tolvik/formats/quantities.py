# SPDX-License-Identifier: GPL-2.0-or-later
"""Names and units of columns, and the data set that a table of them makes."""
from __future__ import annotations

import re
from dataclasses import dataclass
from typing import Any, Mapping, Optional, Sequence

import numpy as np
import numpy.typing as npt

from .. import reduction, resolution, units
from ..data import Data
from ..errors import DataError

Array = npt.NDArray[np.float64]

_ALIASES = {
    "q": ("q", "qz", "q_z", "qvec", "momentum transfer", "wavevector transfer"),
    "2theta": ("2theta", "2th", "2θ", "twotheta", "two theta", "tth", "2theta-omega", "2-theta", "ttheta"),
    "theta": ("theta", "th", "θ", "omega", "angle", "incidence", "incident angle"),
    "R": ("r", "refl", "reflectivity", "reflectance", "rqz", "r(q)", "r(qz)", "intensity", "int", "i", "y"),
    "counts": ("counts", "count", "cts", "detector", "n"),
    "dR": (
        "dr",
        "sr",
        "r_err",
        "err",
        "error",
        "error r",
        "sigma_r",
        "sigma r",
        "sigmar",
        "r_sigma",
        "delta r",
        "e",
        "ye",
        "drefl",
        "dreflectivity",
        "uncertainty",
        "di",
        "dy",
        "errors",
        "dcounts",
        "s_r",
    ),
    "dq": ("dq", "dqz", "sq", "sqz", "q_err", "sigma_q", "sigma q", "sigmaq", "delta q", "res", "resolution", "s_qz"),
    "d2theta": ("d2theta", "d2th", "dtth", "dtwotheta"),
    "-": ("-", "_", "skip"),
}
_NAMES = {alias: name for name, aliases in _ALIASES.items() for alias in aliases}
_WITH_UNIT = re.compile(r"^(.*?)\s*(?:\[([^\]]*)\]|\(([^)]*)\)|/\s*(\S+))\s*$")
_NAME_AND_NUMBER = re.compile(r"^\d+[:.]\s*")


@dataclass(frozen=True)
class Column:
    """One column: its quantity, its unit ("" is the unit of the package), the kind and shape of a width."""

    quantity: str
    unit: str = ""
    width_kind: str = "sigma"
    distribution: str = "gaussian"


def parse(label: str) -> Column:
    """Column of a label as "q", "Qz (1/nm)", "2Theta [deg]" or "R"; raises DataError for an unknown name or unit."""
    text = _NAME_AND_NUMBER.sub("", label.strip().strip('"'))
    if text.lower() in _NAMES:
        return Column(_NAMES[text.lower()])
    match = _WITH_UNIT.match(text)
    if match and match.group(1).strip().lower() in _NAMES:
        unit = next((group for group in match.groups()[1:] if group is not None), "").strip()
        column = Column(_NAMES[match.group(1).strip().lower()], unit)
        factor_of(column)
        return column
    raise DataError(f"column {label[:40]!r} is unknown; name it q, 2theta, theta, R, counts, dR, dq, d2theta or -")


def is_name(label: str) -> bool:
    """Whether the label names a quantity; its unit may be unknown."""
    text = _NAME_AND_NUMBER.sub("", label.strip().strip('"')).lower()
    match = _WITH_UNIT.match(text)
    return text in _NAMES or bool(match and match.group(1).strip() in _NAMES)


def factor_of(column: Column) -> float:
    """Factor from the unit of the column to that of the package (1/Å, degrees, 1); raises DataError."""
    if not column.unit:
        return 1.0
    if column.quantity == "q" or (column.quantity == "dq" and not column.width_kind.startswith("percent")):
        return units.q_factor(column.unit)
    if column.quantity in ("2theta", "theta", "d2theta"):
        return units.angle_factor(column.unit)
    return 1.0 if column.quantity in ("-", "dq") else units.number_factor(column.unit)


def energy_of(key: str, value: float, unit: str) -> float:
    """Photon energy in eV of an energy or a wavelength with its unit (eV and Å when empty)."""
    if not 0 < value < float("inf"):
        raise DataError(f"{key} {value:g} is not positive")
    if key == "energy":
        return value * units.energy_factor(unit or "eV")
    return units.energy_from_wavelength(value * units.length_factor(unit or "angstrom"))


def assemble(
    columns: Sequence[Column],
    table: Array,
    *,
    energy: Optional[float],
    dq_is: Optional[str],
    source: str,
    name: str = "",
    polarization: Any = None,
    metadata: Optional[Mapping[str, Any]] = None,
) -> Data:
    """The data set of a table.

    Parameters
    ----------
    columns : sequence of Column, length k
        In the order of the table; those with quantity "-" are skipped.
    table : ndarray, shape (n, k)
        The numbers.
    energy : float or None
        Photon energy, eV; angles need it.
    dq_is : str or None
        Overrides the kind of the widths.
    source, name, polarization, metadata
        As for `Data`.

    Returns
    -------
    Data

    Raises
    ------
    DataError
        If a quantity is missing or there twice, an angle has no energy, a number is impossible.
    """
    found: dict[str, tuple[Column, Array]] = {}
    for index, column in enumerate(columns):
        if column.quantity == "-":
            continue
        if column.quantity in found:
            raise DataError(f"column {column.quantity} is there twice; skip one with '-'")
        if column.quantity in ("dq", "d2theta") and not column.unit:  # an error has the unit of its column
            column = Column(column.quantity, _unit_of(columns, column.quantity), column.width_kind, column.distribution)
        if dq_is is not None and column.quantity in ("dq", "d2theta"):
            column = Column(column.quantity, column.unit, dq_is.strip().lower(), column.distribution)
        values = table[:, index] * factor_of(column)
        if column.quantity in ("dR", "dq", "d2theta") and np.all(np.isnan(values)):
            continue  # a column that only keeps the place of an unknown quantity
        found[column.quantity] = (column, values)
    q = _q(found, energy)
    if ("R" in found) == ("counts" in found):
        raise DataError("a column of R or of counts is needed, and only one of them")
    errors = found["dR"][1] if "dR" in found else None
    if "counts" in found:
        r = found["counts"][1]
        errors = reduction.poisson_errors(r) if errors is None else errors
    else:
        r = found["R"][1]
    return Data(
        q,
        r,
        errors,
        _dq(found, q, energy),
        energy=energy,
        polarization=polarization,
        name=name,
        source=source,
        metadata=dict(metadata or {}),
    )


def _unit_of(columns: Sequence[Column], width: str) -> str:
    of = ("q",) if width == "dq" else ("2theta", "theta")
    return next((column.unit for column in columns if column.quantity in of), "")


def _q(found: Mapping[str, tuple[Column, Array]], energy: Optional[float]) -> Array:
    there = [name for name in ("q", "2theta", "theta") if name in found]
    if not there:
        raise DataError("no column of q, 2theta or theta; name the columns with columns='q,R,dR,dq'")
    if "q" in there:
        return found["q"][1]
    if energy is None:
        raise DataError("angles need the photon energy; give energy in eV")
    angle = found["2theta"][1] if "2theta" in there else 2 * found["theta"][1]
    return units.q_from_two_theta(angle, energy)


def _dq(found: Mapping[str, tuple[Column, Array]], q: Array, energy: Optional[float]) -> Optional[Array]:
    if "dq" in found:
        column, width = found["dq"]
    elif "d2theta" in found and ("2theta" in found or "theta" in found) and energy is not None:
        column, width = found["d2theta"]
        angle = found["2theta"][1] if "2theta" in found else 2 * found["theta"][1]
        if column.width_kind.startswith("percent"):
            raise DataError("a width of the angle in percent has no meaning here; sigma = FWHM / 2.3548 in degrees")
        width = np.where(width < 0, width, units.dq_from_two_theta(angle, width, energy))
    else:
        return None
    finite = np.where(np.isfinite(width), width, np.nan)
    return resolution.to_sigma(finite, column.width_kind, distribution=column.distribution, q=q)
