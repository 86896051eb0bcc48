# SPDX-License-Identifier: GPL-2.0-or-later
"""Names of polarisations, and the eight numbers of their two rays.

A ray is a complex sigma and a complex pi amplitude, held as four numbers: sigma real, sigma imaginary, pi real, pi
imaginary. A curve R is that of the first ray; an asymmetry (R1 - R2) / (R1 + R2) needs both. "left" is
(1, i)/sqrt(2): with exp(-i omega t) the field turns counter-clockwise for an eye that looks into the beam (positive
helicity).
"""
from __future__ import annotations

import math
from typing import Optional, Sequence, Union

import numpy as np
import numpy.typing as npt

from .errors import DataError

Array = npt.NDArray[np.float64]
Polarization = Union[str, Sequence[str], npt.ArrayLike]

_C = math.sqrt(0.5)
_RAYS = {
    "sigma": (1.0, 0.0, 0.0, 0.0),
    "pi": (0.0, 0.0, 1.0, 0.0),
    "left": (_C, 0.0, 0.0, _C),
    "right": (_C, 0.0, 0.0, -_C),
}
_PARTNER = {"sigma": "pi", "pi": "sigma", "left": "right", "right": "left"}
_ALIASES = {
    "sigma": ("s", "σ", "vertical", "te"),
    "pi": ("p", "π", "horizontal", "tm"),
    "left": ("l", "left circular", "left_circular", "circ+", "cp+", "lcp"),
    "right": ("r", "right circular", "right_circular", "circ-", "cp-", "rcp"),
    "asymmetry": ("dichroism", "xrms"),
}
_CANONICAL = {alias: name for name, aliases in _ALIASES.items() for alias in (name, *aliases)}
_TOLERANCE = 1e-4  # of the circular amplitudes, as where the program names a ray

#: Polarisations of neutrons by the names of ORSO; they have no rays of light.
NEUTRON_NAMES = frozenset({"p", "m", "po", "mo", "op", "om", "pp", "pm", "mp", "mm"})


def canonical(name: str) -> str:
    """``"sigma"``, ``"pi"``, ``"left"``, ``"right"`` or ``"asymmetry"`` from any accepted spelling.

    Parameters
    ----------
    name : str
        One of these names, a letter s, p, l or r, or a name as "circ+", "TE", "left circular"; case does not matter.

    Returns
    -------
    str

    Raises
    ------
    DataError
        If the name is unknown.
    """
    found = _CANONICAL.get(str(name).strip().lower().replace("-circular", " circular"))
    if found is None:
        raise DataError(
            f"polarization {name!r} is unknown; give sigma, pi, left, right, asymmetry or the eight numbers of two rays"
        )
    return found


def rays(polarization: Polarization) -> Array:
    """The two rays of a polarisation.

    Parameters
    ----------
    polarization : str, pair of str, or array_like, shape (2, 4) or (8,)
        A name (the second ray is then the orthogonal partner), a pair of names, or the numbers themselves, which are
        taken as they are. ``"asymmetry"`` means ("left", "right").

    Returns
    -------
    ndarray, shape (2, 4)
        One row per ray: sigma real, sigma imaginary, pi real, pi imaginary.

    Raises
    ------
    DataError
        If a name is unknown, a number is not finite, or a ray is zero.
    """
    if isinstance(polarization, str):
        name = canonical(polarization)
        first = "left" if name == "asymmetry" else name
        return np.array([_RAYS[first], _RAYS[_PARTNER[first]]])
    if isinstance(polarization, (tuple, list)) and polarization and all(isinstance(p, str) for p in polarization):
        names = [canonical(str(p)) for p in polarization]
        if len(names) != 2 or "asymmetry" in names:
            raise DataError(
                f"polarization {tuple(polarization)!r} is not a pair of rays; give two of sigma, pi, left, right"
            )
        return np.array([_RAYS[name] for name in names])
    try:
        values = np.array(polarization, dtype=np.float64)
    except (TypeError, ValueError):
        values = np.empty(0)
    if values.size != 8 or values.shape not in ((8,), (2, 4)):
        raise DataError(f"polarization {polarization!r} is no name and not the eight numbers of two rays, (2, 4)")
    values = values.reshape(2, 4)
    if not np.all(np.isfinite(values)) or not np.all(np.any(values != 0, axis=1)):
        raise DataError(f"polarization {values.ravel().tolist()} holds a zero ray or a number that is not finite")
    return values


def name_of_ray(ray: npt.ArrayLike) -> Optional[str]:
    """Name of one ray.

    Parameters
    ----------
    ray : array_like, shape (4,)
        Sigma real, sigma imaginary, pi real, pi imaginary.

    Returns
    -------
    str or None
        ``"sigma"``, ``"pi"``, ``"left"``, ``"right"``; None for any other ray. Circular amplitudes count within 1e-4.
    """
    values = np.asarray(ray, dtype=np.float64)
    for name, numbers in _RAYS.items():
        tolerance = _TOLERANCE if name in ("left", "right") else 0.0
        if np.all(np.abs(values - numbers) <= tolerance) and np.all(values[np.array(numbers) == 0] == 0):
            return name
    return None


def name_of(polarization: Polarization) -> Optional[str]:
    """Shortest name for the first ray of a polarisation.

    Parameters
    ----------
    polarization : str, pair of str, or array_like, shape (2, 4) or (8,)
        As for `rays`.

    Returns
    -------
    str or None
        One of the names of `canonical`; None when the first ray has no name.
    """
    if isinstance(polarization, str):
        return canonical(polarization)
    return name_of_ray(rays(polarization)[0])
