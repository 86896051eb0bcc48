# SPDX-License-Identifier: GPL-2.0-or-later
"""From the counts of a detector to a reflectivity: errors of counting, footprint, background, scale."""
from __future__ import annotations

import math
from typing import Any

import numpy as np
import numpy.typing as npt

from . import units
from .errors import DataError

Array = npt.NDArray[np.float64]

_PLATEAU_POINTS = 5
_FEWEST_BACKGROUND_POINTS = 3


def number(name: str, value: Any) -> float:
    """A finite float from what a caller gave, or a DataError that names it."""
    try:
        result = float(value)
    except (TypeError, ValueError):
        result = math.nan
    if not math.isfinite(result):
        raise DataError(f"{name} {value!r} is no finite number")
    return result


def poisson_errors(counts: npt.ArrayLike) -> Array:
    """Standard deviation of counts: their root.

    Parameters
    ----------
    counts : array_like, shape (n,)
        Numbers of photons, before any scaling.

    Returns
    -------
    ndarray, shape (n,)
        sqrt(counts); 0 for 0 counts, which `Data` masks.

    Raises
    ------
    DataError
        If a count is negative.
    """
    values = np.asarray(counts, dtype=np.float64)
    if np.any(values < 0):
        raise DataError(
            f"counts are {float(values[values < 0].flat[0]):g} at index {int(np.flatnonzero(values < 0)[0])}; "
            "errors of counting need the counts before the background is subtracted"
        )
    return np.asarray(np.sqrt(values))


def footprint_factor(
    q: npt.ArrayLike, energy: npt.ArrayLike, length: float, beam: float, profile: str = "box"
) -> Array:
    """Part of the beam that hits the sample at each q; the measured intensity is R times this factor.

    Parameters
    ----------
    q : array_like, shape (n,)
        Momentum transfer, 1/Å.
    energy : float or array_like, shape (n,)
        Photon energy, eV.
    length, beam : float
        Length of the sample along the beam and height of the beam, both in the same unit; the height is the full width
        of a box and the full width at half maximum of a gaussian.
    profile : {"box", "gaussian"}
        Shape of the beam across its height, centred on the sample.

    Returns
    -------
    ndarray, shape (n,)
        min(1, L sin(theta) / h) for the box, erf(sqrt(ln 2) L sin(theta) / h) for the gaussian; A. Gibaud, G. Vignaud
        and S. K. Sinha, Acta Cryst. A49, 642 (1993). NaN where |q| exceeds 2 k0.

    Raises
    ------
    DataError
        If a length is not positive or the profile is unknown.
    """
    size, height = number("length", length), number("beam", beam)
    if not (size > 0 and height > 0):
        raise DataError(f"footprint of length {size:g} and beam {height:g}; give positive numbers in the same unit")
    sine = np.abs(np.asarray(q, dtype=np.float64)) * units.ENERGY_TIMES_LAMBDA / (4 * np.pi * np.asarray(energy))
    ratio = np.where(sine <= 1, sine, np.nan) * size / height
    if profile == "box":
        return np.asarray(np.minimum(1.0, ratio))
    if profile == "gaussian":
        return np.array([math.erf(math.sqrt(math.log(2)) * value) for value in np.atleast_1d(ratio)]).reshape(
            ratio.shape
        )
    raise DataError(f"profile {profile!r} of the beam is unknown; give 'box' or 'gaussian'")


def background_level(q: Array, r: Array) -> float:
    """Median of r over the tenth of the points at the largest q, at least three.

    Parameters
    ----------
    q, r : ndarray, shape (n,)
        Finite momentum transfer, 1/Å, and intensity.

    Returns
    -------
    float

    Raises
    ------
    DataError
        If there are fewer than three points.
    """
    if q.size < _FEWEST_BACKGROUND_POINTS:
        raise DataError(f"{q.size} points are too few to estimate a background; give its value")
    count = max(_FEWEST_BACKGROUND_POINTS, q.size // 10)
    return float(np.median(r[np.argsort(q, kind="stable")[-count:]]))


def plateau_level(q: Array, r: Array) -> float:
    """Largest median of five neighbouring points in q, so that a lone spike does not count.

    Parameters
    ----------
    q, r : ndarray, shape (n,)
        Finite momentum transfer, 1/Å, and intensity.

    Returns
    -------
    float
        The maximum itself when there are fewer than five points.
    """
    ordered = r[np.argsort(q, kind="stable")]
    if ordered.size < _PLATEAU_POINTS:
        return float(np.max(ordered))
    windows = np.lib.stride_tricks.sliding_window_view(ordered, _PLATEAU_POINTS)
    return float(np.max(np.median(windows, axis=1)))
