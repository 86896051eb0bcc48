# SPDX-License-Identifier: GPL-2.0-or-later
"""Widths of the q resolution: the one place that converts between their conventions.

Everywhere else in this package ``dq`` is sigma, the standard deviation of the resolution, in 1/Å. Other conventions
enter and leave here only:

==================  ============================================  ==============================================
kind                width                                         sigma
==================  ============================================  ==============================================
``"sigma"``         standard deviation, 1/Å                       width
``"fwhm"``          full width at half maximum, 1/Å               width / 2.3548 (gaussian)
``"half"``          resolution r of a state file, 1/Å             width / 2
``"percent"``       standard deviation in percent of q            width q / 100
``"percent_fwhm"``  full width at half maximum in percent of q    width q / 235.48 (gaussian)
==================  ============================================  ==============================================

The full width of a triangular distribution is sqrt(6) sigma, that of a uniform one sqrt(12) sigma.
"""
from __future__ import annotations

import math
from typing import Optional, Union

import numpy as np
import numpy.typing as npt

from .errors import DataError

Array = npt.NDArray[np.float64]

KINDS = ("sigma", "fwhm", "half", "percent", "percent_fwhm")
#: Full width at half maximum over sigma, for each shape that has both.
FWHM_PER_SIGMA = {"gaussian": 2 * math.sqrt(2 * math.log(2)), "triangular": math.sqrt(6), "uniform": math.sqrt(12)}

_FORMULAS = {
    "sigma": "sigma = width",
    "fwhm": "sigma = FWHM / 2.3548 for a gaussian",
    "half": "sigma = r / 2",
    "percent": "sigma = percent / 100 * q",
    "percent_fwhm": "sigma = percent / 235.48 * q for a gaussian",
}


def sigma_per_width(kind: str = "sigma", distribution: str = "gaussian") -> float:
    """Factor from a width of that kind to sigma; percentages count in units of q.

    Parameters
    ----------
    kind : str
        One of ``KINDS``; case does not matter.
    distribution : str
        ``"gaussian"``, ``"triangular"`` or ``"uniform"``; matters for full widths only.

    Returns
    -------
    float
        sigma / width; for percentages sigma / (width q).

    Raises
    ------
    DataError
        If the kind is unknown or the distribution has no standard deviation.
    """
    name = kind.strip().lower()
    shape = distribution.strip().lower()
    if name not in KINDS:
        raise DataError(
            f"width of kind {kind!r} is unknown; give one of {', '.join(KINDS)} (sigma = FWHM / 2.3548 for a gaussian)"
        )
    if shape not in FWHM_PER_SIGMA:
        reason = "has no standard deviation" if shape.startswith("lorentz") else "is unknown"
        raise DataError(
            f"distribution {distribution!r} {reason}; sigma = FWHM / 2.3548 (gaussian), FWHM / 2.4495 "
            "(triangular) or FWHM / 3.4641 (uniform): give sigma with dq_is='sigma'"
        )
    factor = {"half": 0.5, "percent": 0.01, "percent_fwhm": 0.01}.get(name, 1.0)
    return factor / FWHM_PER_SIGMA[shape] if name.endswith("fwhm") else factor


def to_sigma(
    width: npt.ArrayLike, kind: str = "sigma", *, distribution: str = "gaussian", q: Optional[npt.ArrayLike] = None
) -> Array:
    """Sigma of widths that are given by another convention.

    Parameters
    ----------
    width : array_like, shape (n,) or ()
        Widths, 1/Å or percent.
    kind, distribution : str
        See `sigma_per_width`.
    q : array_like, shape (n,), optional
        Momentum transfer, 1/Å; needed for percentages.

    Returns
    -------
    ndarray, shape (n,) or ()
        sigma, 1/Å. NaN stays NaN.

    Raises
    ------
    DataError
        If a width is negative or infinite, or percentages come without q.
    """
    values = np.asarray(width, dtype=np.float64)
    factor = sigma_per_width(kind, distribution)
    wrong = (values < 0) | np.isinf(values)
    if np.any(wrong):
        raise DataError(
            f"width {float(values[wrong].flat[0]):g} at index {int(np.flatnonzero(wrong)[0])} is not a finite "
            f"number of at least 0 ({_FORMULAS[kind.strip().lower()]})"
        )
    if kind.strip().lower().startswith("percent"):
        return np.asarray(values * factor * np.abs(_needed_q(q)))
    return np.asarray(values * factor)


def from_sigma(
    dq: npt.ArrayLike, kind: str, *, distribution: str = "gaussian", q: Optional[npt.ArrayLike] = None
) -> Array:
    """Widths by another convention from sigma; the inverse of `to_sigma`.

    Parameters
    ----------
    dq : array_like, shape (n,) or ()
        sigma, 1/Å.
    kind, distribution : str
        See `sigma_per_width`.
    q : array_like, shape (n,), optional
        Momentum transfer, 1/Å; needed for percentages.

    Returns
    -------
    ndarray, shape (n,) or ()
        Widths, 1/Å or percent. At q = 0 a percentage is infinite, or NaN for sigma = 0.
    """
    values = np.asarray(dq, dtype=np.float64) / sigma_per_width(kind, distribution)
    if kind.strip().lower().startswith("percent"):
        with np.errstate(divide="ignore", invalid="ignore"):
            return np.asarray(values / np.abs(_needed_q(q)))
    return np.asarray(values)


def sigma_of_points(dq: Union[str, float, npt.ArrayLike], q: npt.ArrayLike) -> Array:
    """Sigma at every point from what a caller may pass as ``dq``.

    Parameters
    ----------
    dq : float, str or array_like, shape (n,)
        sigma in 1/Å: one for all points, one per point, or a text as ``"3%"``, which is sigma = 0.03 q.
    q : array_like, shape (n,)
        Momentum transfer, 1/Å.

    Returns
    -------
    ndarray, shape (n,)
        sigma, 1/Å.

    Raises
    ------
    DataError
        If dq is none of these, negative, not finite, or of another length than q.
    """
    points = np.asarray(q, dtype=np.float64)
    hint = "dq is sigma: a number in 1/Å, one number per point, or a text as '3%' (sigma = 0.03 q)"
    if isinstance(dq, str):
        text = dq.strip()
        try:
            percent = float(text[:-1]) if text.endswith("%") else math.nan
        except ValueError:
            percent = math.nan
        if not (0 <= percent < math.inf):
            raise DataError(f"dq = {dq!r}; {hint}")
        return to_sigma(percent, "percent", q=points)
    try:
        values = np.asarray(dq, dtype=np.float64)
    except (TypeError, ValueError):
        raise DataError(f"dq of type {type(dq).__name__} is no number; {hint}") from None
    if values.ndim > 1 or (values.ndim == 1 and values.shape != points.shape):
        raise DataError(f"dq has shape {values.shape}, q has shape {points.shape}; {hint}")
    if not np.all(np.isfinite(values)):
        raise DataError(f"dq is not finite; {hint}")
    return np.array(np.broadcast_to(to_sigma(values), points.shape))


def _needed_q(q: Optional[npt.ArrayLike]) -> Array:
    if q is None:
        raise DataError("a width in percent needs q (sigma = percent / 100 * q); pass q=")
    return np.asarray(q, dtype=np.float64)
