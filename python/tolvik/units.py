# SPDX-License-Identifier: GPL-2.0-or-later
"""Units of columns and headers, converted to those of the package: 1/Å, Å, eV, degrees."""
from __future__ import annotations

import math
import re
from typing import Mapping

import numpy as np
import numpy.typing as npt

from .errors import DataError

Array = npt.NDArray[np.float64]

#: Planck's constant times the speed of light, eV Å, as the program uses it to turn a wavelength into an energy.
ENERGY_TIMES_LAMBDA = 12398.326

_LENGTH_NAMES = {
    "angstrom": 1.0,
    "angstroms": 1.0,
    "ang": 1.0,
    "å": 1.0,
    "a": 1.0,
    "aa": 1.0,
    "nm": 10.0,
    "nanometer": 10.0,
    "pm": 0.01,
    "um": 1e4,
    "µm": 1e4,
    "mm": 1e7,
    "cm": 1e8,
    "m": 1e10,
}
_ANGLES = {
    "deg": 1.0,
    "degree": 1.0,
    "degrees": 1.0,
    "°": 1.0,
    "rad": 180 / math.pi,
    "radian": 180 / math.pi,
    "radians": 180 / math.pi,
    "mrad": 0.18 / math.pi,
}
_ENERGIES = {"ev": 1.0, "kev": 1e3, "mev": 1e-3, "j": 1 / 1.602176634e-19}
_NUMBERS = {
    "": 1.0,
    "1": 1.0,
    "none": 1.0,
    "null": 1.0,
    "dimensionless": 1.0,
    "a.u.": 1.0,
    "au": 1.0,
    "arb. u.": 1.0,
    "counts": 1.0,
    "cps": 1.0,
    "%": 0.01,
    "percent": 0.01,
}
_SUPERSCRIPTS = str.maketrans("⁻¹−", "-1-")
_INVERSE = (
    re.compile(r"^1\s*/\s*(.+)$"),
    re.compile(r"^(.+?)\s*(?:\*\*|\^)?\s*\(?-1\)?$"),
    re.compile(r"^inv(?:erse)?[ _]?(.+)$"),
)


def q_factor(unit: str) -> float:
    """Factor from a unit of momentum transfer, as "1/nm", "nm^-1" or "Å⁻¹", to 1/Å.

    Raises
    ------
    DataError
        If the unit is unknown.
    """
    text = _plain(unit)
    for pattern in _INVERSE:
        match = pattern.match(text)
        length = match and _LENGTH_NAMES.get(match.group(1).strip(" ()"))
        if length:
            return 1 / length
    raise DataError(f"unit {unit!r} of q is unknown; use 1/angstrom, 1/nm or 1/m")


def length_factor(unit: str) -> float:
    """Factor from a unit of length to Å; raises DataError for an unknown unit."""
    return _factor(unit, _LENGTH_NAMES, "a length", "angstrom, nm, pm, um, mm or m")


def angle_factor(unit: str) -> float:
    """Factor from a unit of angle to degrees; raises DataError for an unknown unit."""
    return _factor(unit, _ANGLES, "an angle", "deg, rad or mrad")


def energy_factor(unit: str) -> float:
    """Factor from a unit of photon energy to eV; raises DataError for an unknown unit."""
    return _factor(unit, _ENERGIES, "an energy", "eV or keV")


def number_factor(unit: str) -> float:
    """Factor from a unit of a reflectivity ("", "1", "%") to 1; raises DataError for an unknown unit."""
    return _factor(unit, _NUMBERS, "a reflectivity", "1 or %")


def energy_from_wavelength(wavelength: float) -> float:
    """Photon energy in eV of a wavelength in Å, with the constant of the program."""
    return ENERGY_TIMES_LAMBDA / wavelength


def wavelength_from_energy(energy: float) -> float:
    """Wavelength in Å of a photon energy in eV, with the constant of the program."""
    return ENERGY_TIMES_LAMBDA / energy


def q_from_two_theta(two_theta: npt.ArrayLike, energy: npt.ArrayLike) -> Array:
    """Momentum transfer of the scattering angle: q = 4 pi sin(theta) / lambda.

    Parameters
    ----------
    two_theta : array_like, shape (n,)
        Angle between the incident and the reflected beam, degrees.
    energy : float or array_like, shape (n,)
        Photon energy, eV.

    Returns
    -------
    ndarray, shape (n,)
        q, 1/Å.
    """
    theta = np.radians(np.asarray(two_theta, dtype=np.float64)) / 2
    return np.asarray(4 * np.pi * np.sin(theta) * np.asarray(energy, dtype=np.float64) / ENERGY_TIMES_LAMBDA)


def dq_from_two_theta(two_theta: npt.ArrayLike, width: npt.ArrayLike, energy: npt.ArrayLike) -> Array:
    """Width of q of a width of the scattering angle: dq = 2 pi cos(theta) / lambda d(2 theta).

    Parameters
    ----------
    two_theta, width : array_like, shape (n,)
        Scattering angle and its width, degrees.
    energy : float or array_like, shape (n,)
        Photon energy, eV.

    Returns
    -------
    ndarray, shape (n,)
        Width of q by the same convention as ``width``, 1/Å.
    """
    theta = np.radians(np.asarray(two_theta, dtype=np.float64)) / 2
    k = 2 * np.pi * np.asarray(energy, dtype=np.float64) / ENERGY_TIMES_LAMBDA
    return np.asarray(k * np.cos(theta) * np.radians(np.asarray(width, dtype=np.float64)))


def _plain(unit: str) -> str:
    return str(unit).strip().translate(_SUPERSCRIPTS).replace("Å", "å").replace("μ", "µ").lower().replace("å", "å")


def _factor(unit: str, table: Mapping[str, float], what: str, known: str) -> float:
    factor = table.get(_plain(unit))
    if factor is None:
        raise DataError(f"unit {unit!r} of {what} is unknown; use {known}")
    return factor
