# SPDX-License-Identifier: GPL-2.0-or-later
"""Checks of the arguments of `Data`, and the reasons to mask a point."""
from __future__ import annotations

from typing import Any, Optional, Tuple, Union

import numpy as np
import numpy.typing as npt

from . import polarization as _polarization
from .errors import DataError

Array = npt.NDArray[np.float64]
Mask = npt.NDArray[np.bool_]


def column(name: str, values: Any, size: Optional[int]) -> Array:
    """The values as a new column of floats; dr and dq may be one number for all points. Raises DataError."""
    try:
        column = np.array(values, dtype=np.float64)
    except (TypeError, ValueError, OverflowError):
        raise DataError(f"{name} is not an array of numbers; give one number per point") from None
    if column.ndim == 0 and size is not None and name in ("dr", "dq"):
        return np.full(size, float(column))
    if column.ndim != 1 or column.size == 0:
        raise DataError(f"{name} has shape {column.shape}; give a one-dimensional array with at least one point")
    if size is not None and column.size != size:
        raise DataError(f"{name} has {column.size} points, q has {size}; give one number per point")
    return column


def refuse_negative(name: str, values: Optional[Array], meaning: str) -> None:
    """Raises a DataError that names the first index where a value is negative."""
    if values is not None and np.any(values < 0):
        index = int(np.flatnonzero(values < 0)[0])
        raise DataError(f"{name} is {values[index]:g} at index {index}; {meaning}: give numbers of at least 0")


def frozen_rays(polarization: Any) -> Array:
    """The two rays, shape (2, 4), as an array that cannot be written."""
    values = _polarization.rays(polarization)
    values.setflags(write=False)
    return values


def mask_of(mask: Any, size: int) -> Mask:
    """The mask of the caller, or one that masks nothing; shape (size,)."""
    if mask is None:
        return np.zeros(size, dtype=np.bool_)
    given = np.asarray(mask)
    if given.dtype != np.bool_ or given.shape != (size,):
        raise DataError(
            f"mask has shape {given.shape} and type {given.dtype}; give {size} bools, True where a point is left out"
        )
    return given


def energy_of(energy: Any, size: int) -> Union[float, Array, None]:
    """One energy, or a frozen array of shape (size,), eV; None where it is not known."""
    if energy is None:
        return None
    try:
        values = np.array(energy, dtype=np.float64)
    except (TypeError, ValueError):
        values = np.empty(0)
    if values.shape not in ((), (size,)) or not np.all((values > 0) & np.isfinite(values)):
        raise DataError(f"energy {energy!r} is no positive number; give eV, one for all points or one per point")
    if values.ndim == 0:
        return float(values)
    values.setflags(write=False)
    return values


def reasons_to_mask(
    q: Array, r: Array, dr: Optional[Array], dq: Optional[Array], *, zero_is_empty: bool
) -> list[Tuple[str, Mask]]:
    """(reason, points of shape (n,)) for each reason; a point has at most one."""
    finite = np.isfinite(q) & np.isfinite(r)
    for values in (dr, dq):
        if values is not None:
            finite &= np.isfinite(values)
    reasons = [("not a finite number", ~finite)]
    if zero_is_empty:
        reasons.append(("R = 0", finite & (r == 0)))
    if dr is not None:
        rest = finite & (r != 0) if zero_is_empty else finite
        reasons.append(("dR = 0", rest & (dr == 0)))
    return reasons


def tally(reasons: list[Tuple[str, Mask]], given: Optional[Mask]) -> str:
    """Text as "1 not a finite number, 5 with R = 0"; points of the given mask do not count."""
    counts = [(int(np.count_nonzero(points if given is None else points & ~given)), text) for text, points in reasons]
    return ", ".join(f"{count} with {text}" if "=" in text else f"{count} {text}" for count, text in counts if count)
