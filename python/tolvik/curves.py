# SPDX-License-Identifier: GPL-2.0-or-later
"""Curves of a state over qz, and scans over the energy. None of them changes the state."""
from __future__ import annotations

import math
from dataclasses import dataclass
from typing import Any, Optional, Union

import numpy as np
import numpy.typing as npt

from . import _core, records, resolution
from .errors import DataError
from .state import State, require_tables

__all__ = ["Curve", "Dichroism", "EnergyScan", "curve", "dichroism", "energy_scan"]

Array = npt.NDArray[np.float64]
Width = Union[str, float, npt.ArrayLike]


@dataclass(frozen=True, eq=False)
class Curve:
    """A reflectivity curve.

    Attributes
    ----------
    q : ndarray, shape (n,)
        Momentum transfer, 1/Å.
    R : ndarray, shape (n,)
        Reflectivity of the first ray.
    """

    q: Array
    R: Array

    def _repr_html_(self) -> str:
        return _html("reflectivity", ["q / (1/Å)", "R"], [self.q, self.R])


@dataclass(frozen=True, eq=False)
class Dichroism:
    """The curves of both rays of a state.

    Attributes
    ----------
    q : ndarray, shape (n,)
        Momentum transfer, 1/Å.
    Rp, Rm : ndarray, shape (n,)
        Reflectivity of the first and of the second ray; the second one sees the magnetisation reversed where the
        algorithm takes it to first order (algorithm 0).
    A : ndarray, shape (n,)
        Asymmetry (Rp - Rm) / (Rp + Rm).
    """

    q: Array
    Rp: Array
    Rm: Array
    A: Array

    def _repr_html_(self) -> str:
        return _html("dichroism", ["q / (1/Å)", "Rp", "Rm", "A"], [self.q, self.Rp, self.Rm, self.A])


@dataclass(frozen=True, eq=False)
class EnergyScan:
    """Reflectivity at pairs of energy and qz.

    Attributes
    ----------
    energies : ndarray, shape (n,)
        Photon energy, eV.
    q : ndarray, shape (n,)
        Momentum transfer, 1/Å.
    R : ndarray, shape (n,)
        Reflectivity of the first ray; NaN where a table does not reach the energy.
    """

    energies: Array
    q: Array
    R: Array

    def __array__(self, dtype: Any = None) -> Array:
        return np.asarray(self.R, dtype=dtype)

    def _repr_html_(self) -> str:
        return _html("energy scan", ["E / eV", "q / (1/Å)", "R"], [self.energies, self.q, self.R])


def curve(state: State, q: npt.ArrayLike, *, dq: Width = "state", energy: Optional[float] = None,
          threads: Optional[int] = None) -> Curve:
    """Reflectivity of the first ray of a state, by its algorithm, at its energy.

    Parameters
    ----------
    state : State
        The sample and its options; it is not changed.
    q : array_like, shape (n,)
        Momentum transfer, 1/Å.
    dq : "state", float, array_like of shape (n,) or str, optional
        Resolution, sigma: that of the state (half of `State.resolution`), a number in 1/Å, one per point, or a text as
        ``"3%"``, sigma = 0.03 q.
    energy : float, optional
        Photon energy, eV, instead of that of the state.
    threads : int, optional
        Most threads that the calculation may use; as many as `set_threads` says by default. The result does not depend
        on it.

    Returns
    -------
    Curve

    Raises
    ------
    OutOfReachError
        If a point is not finite or, with its resolution, not below 2 k0.
    ScriptError
        If the script of the state fails.
    TablesError
        If the constants come from tables that are not loaded.
    CalculationError
        If the calculation ends early.

    References
    ----------
    L. G. Parratt, Phys. Rev. 95, 359 (1954).
    """
    points = _points(q)
    width, sigma = _widths(dq, points)
    energy = _condition(state, energy)
    if sigma is not None:
        return Curve(points, _core.curve_points(state, points, sigma, energy))
    return Curve(points, _core.curve(state, points, width, energy, threads or 0))


def dichroism(state: State, q: npt.ArrayLike, *, dq: Width = "state", energy: Optional[float] = None,
              threads: Optional[int] = None) -> Dichroism:
    """Reflectivity of both rays of a state, and their asymmetry.

    Parameters
    ----------
    state : State
        The sample and its options; it is not changed. ``state.polarization = "left"`` sets left and right light.
    q : array_like, shape (n,)
        Momentum transfer, 1/Å.
    dq : "state", float, array_like of shape (n,) or str, optional
        Resolution, sigma, as for `curve`.
    energy : float, optional
        Photon energy, eV, instead of that of the state.
    threads : int, optional
        As for `curve`.

    Returns
    -------
    Dichroism

    Raises
    ------
    OutOfReachError, ScriptError, TablesError, CalculationError
        As for `curve`.
    """
    points = _points(q)
    width, sigma = _widths(dq, points)
    energy = _condition(state, energy)
    if sigma is not None:
        first, second = _core.dichroism_points(state, points, sigma, energy)
        total = first + second
        asymmetry = np.divide(first - second, total, out=np.zeros_like(total), where=total != 0)
        return Dichroism(points, first, second, asymmetry)
    return Dichroism(points, *_core.dichroism(state, points, width, energy, threads or 0))


def energy_scan(state: State, energies: npt.ArrayLike, q: npt.ArrayLike) -> EnergyScan:
    """Reflectivity over the photon energy, with the optical constants of the tables at each energy.

    Parameters
    ----------
    state : State
        The sample and its options, its tables loaded; it is not changed.
    energies : array_like, shape (n,)
        Photon energies, eV.
    q : float or array_like, shape (n,)
        Momentum transfer, 1/Å: one for all energies or one per energy.

    Returns
    -------
    EnergyScan

    Raises
    ------
    OutOfReachError, ScriptError, TablesError, CalculationError
        As for `curve`.

    Warns
    -----
    TableRangeWarning
        If an energy is beyond a table; its reflectivity is NaN.
    """
    grid = checked_energies(energies)
    points = np.array(np.broadcast_to(np.asarray(q, dtype=np.float64), grid.shape))
    warn_of_ranges(state, grid)
    return EnergyScan(grid, points, _core.energy_scan(state, grid, points))


def checked_energies(energies: npt.ArrayLike) -> Array:
    """Photon energies as an array.

    Parameters
    ----------
    energies : array_like, shape (n,)
        Photon energies, eV.

    Returns
    -------
    ndarray, shape (n,)

    Raises
    ------
    DataError
        If one is not a finite number above 0.
    """
    grid = np.array(energies, dtype=np.float64)
    if grid.ndim != 1 or not np.all(np.isfinite(grid) & (grid > 0)):
        raise DataError("energies: expected a one-dimensional array of finite energies above 0 eV")
    return grid


def warn_of_ranges(state: State, energies: Array) -> None:
    """Check the tables of a state at the lowest and the highest energy.

    Parameters
    ----------
    state : State
        The sample.
    energies : ndarray, shape (n,)
        Photon energies, eV.

    Raises
    ------
    TablesError
        If a table is not loaded.

    Warns
    -----
    TableRangeWarning
        If an energy is beyond a table.
    """
    for energy in ({float(energies.min()), float(energies.max())} if energies.size else ()):
        require_tables(state, energy)


def _points(q: npt.ArrayLike) -> Array:
    points = np.array(q, dtype=np.float64)  # a copy: the curve keeps it
    if points.ndim != 1:
        raise DataError(f"q has shape {points.shape}: expected a one-dimensional array of qz in 1/Å")
    return points


def _widths(dq: Width, points: Array) -> tuple[Optional[float], Optional[Array]]:
    """Half width for the rule of the program, or sigma per point."""
    if isinstance(dq, str) and dq == "state":
        return None, None
    if isinstance(dq, (int, float)):
        if not 0 <= dq < math.inf:
            raise DataError(f"dq = {dq}: dq is sigma in 1/Å, a finite number of at least 0")
        return 2.0 * dq, None
    return None, resolution.sigma_of_points(dq, points)


def _condition(state: State, energy: Optional[float]) -> Optional[float]:
    if energy is not None and not 0 < energy < math.inf:
        raise DataError(f"energy = {energy}: expected a finite photon energy above 0 eV")
    if state.ocautomatic:
        require_tables(state, state.energy if energy is None else energy)
    return energy


def _html(name: str, head: list[str], columns: list[Array]) -> str:
    count = columns[0].size
    chosen = np.unique(np.linspace(0, count - 1, min(count, 8)).round().astype(int)) if count else []
    rows = [[f"{column[i]:.5g}" for column in columns] for i in chosen]
    return records.html_table(f"{name}, {count} points", head, rows)
