# SPDX-License-Identifier: GPL-2.0-or-later
"""Optical constants from measured absorption: beta as measured, delta by the Kramers-Kronig relation.

The measured beta replaces that of the tables inside its range; outside, the tables serve. The transform of
`optics/kramers_kronig.h` runs over the joined beta. The absorption beyond the ends of the tables, and the number of
electrons, enter delta E² as a constant nearly independent of E: it is chosen so that delta meets the tables where they
are valid, away from the measured range and from all edges (see B. L. Henke, E. M. Gullikson and J. C. Davis, At. Data
Nucl. Data Tables 54, 181 (1993), for the relation, and B. Watts, Opt. Express 22, 23628 (2014), for measured spectra).
"""
from __future__ import annotations

import os
import warnings
from typing import Optional, Union

import numpy as np
import numpy.typing as npt

from ..errors import MaterialError, MaterialWarning
from . import factors
from .constants import delta_beta, range_of
from .edges import edges
from .formula import Material, parse
from .table import OpticalTable

Array = npt.NDArray[np.float64]
Spectrum = Union[str, "os.PathLike[str]", npt.ArrayLike]

_FINE_STEP = 0.5  # eV between rows around the measured range; the transform takes nearby rows as triangles
_FINE_MARGIN = 100.0  # eV beyond the measured range with rows as fine as that
_COARSE_RATIO = 0.01  # distance of neighbouring rows over their distance from the measured range
_END_WINDOW = 0.1  # part of the measured range at each end whose level is scaled to the tables
_ANCHOR_DISTANCE = 30.0  # eV from any edge where the tables of delta hold
_LARGEST_MISMATCH = 0.1


def kramers_kronig(
    beta_table: Spectrum,
    formula: Union[str, Material],
    density: Optional[float] = None,
    *,
    source: str = "chantler",
    scale: bool = True,
) -> OpticalTable:
    """delta and beta of a measured absorption spectrum.

    Parameters
    ----------
    beta_table : array_like, shape (n, 2), or path
        Photon energy, eV, and beta, or with ``scale`` any quantity that goes with the absorption as a + b mu.
    formula, density
        As for `delta_beta`; gives the constants outside the measured range.
    source : {"henke", "chantler"}
        Table outside the measured range; chantler reaches farther.
    scale : bool
        True scales the spectrum, as absorption mu = 4 pi beta / lambda with an offset, to meet the table at both ends.
        False takes beta as it is.

    Returns
    -------
    OpticalTable
        At the measured energies.

    Raises
    ------
    MaterialError
        If the spectrum is no such table or does not lie inside the table of the source.

    Warns
    -----
    MaterialWarning
        If an unscaled beta misses the table at an end by more than 10 %: the step there is seen in delta.

    Notes
    -----
    The transform takes delta 0.01 eV above the energy of each row, off its own logarithm. A spectrum whose ends are
    not beyond the fine structure of its edge, some 30 eV on both sides, scales badly.
    """
    material = parse(formula, density)
    energy, columns = _spectrum(beta_table, 1)
    offset, factor = _fit_ends(material, source, energy, columns[0]) if scale else (0.0, None)
    beta = columns[0] if factor is None else (offset + factor * columns[0]) / energy
    if factor is None:
        _warn_of_steps(material, source, energy, beta)
    delta = _delta(material, source, energy, beta)
    says = "scaled at both ends" if scale else "as given"
    return OpticalTable(
        energy,
        delta,
        beta,
        (
            f"{material.formula}, {material.density:g} g/cm3: measured absorption {says}, delta by "
            f"Kramers-Kronig, outside {factors.CITATIONS[source]}"
        ),
    )


def dichroism(
    spectrum: Spectrum,
    formula: Union[str, Material],
    density: Optional[float] = None,
    *,
    source: str = "chantler",
    scale: bool = True,
) -> tuple[OpticalTable, OpticalTable]:
    """The .db and the .m table of a spectrum in both helicities.

    Parameters
    ----------
    spectrum : array_like, shape (n, 3), or path
        Photon energy, eV, and the absorption of left and of right circular light that runs along the magnetisation.
        Left is (1, i)/sqrt(2), positive helicity.
    formula, density, source, scale
        As for `kramers_kronig`; their mean is scaled, and the difference by the same factor.

    Returns
    -------
    constants, magnetic : OpticalTable
        At the measured energies. betam = (beta_right - beta_left) / 2: left circular light along the magnetisation has
        the index n (1 + deltam - i betam). The difference is taken as zero outside the measured range.

    Raises
    ------
    MaterialError
        As `kramers_kronig`.
    """
    material = parse(formula, density)
    energy, (left, right) = _spectrum(spectrum, 2)
    mean = (left + right) / 2
    constants = kramers_kronig(np.column_stack([energy, mean]), material, source=source, scale=scale)
    betam = (right - left) / 2
    if scale:
        betam = _fit_ends(material, source, energy, mean)[1] * betam / energy
    return constants, OpticalTable(
        energy,
        _delta_of_difference(energy, betam),
        betam,
        f"{material.formula}, {material.density:g} g/cm3: measured dichroism, deltam by Kramers-Kronig",
    )


def _spectrum(table: Spectrum, count: int) -> tuple[Array, list[Array]]:
    """Energies in ascending order and `count` columns of values."""
    wanted = (
        f"a table of {count + 1} columns: energy in eV and"
        f" {'absorption' if count == 1 else 'absorption of left and right'}"
    )
    if isinstance(table, (str, os.PathLike)):
        from ..formats.columns import read_table

        values, place = read_table(os.fspath(table)), f"{os.fspath(table)}: "
    else:
        try:
            values, place = np.array(table, dtype=np.float64), ""
        except (TypeError, ValueError):
            values, place = np.empty(0), ""
    if values.ndim != 2 or values.shape[1] != count + 1 or values.shape[0] < 5:
        raise MaterialError(f"{place}spectrum has shape {values.shape}; give {wanted}, at least five rows")
    if not np.all(np.isfinite(values)) or not np.all(values[:, 0] > 0):
        raise MaterialError(
            f"{place}spectrum holds a number that is not finite, or an energy that is not positive; give {wanted}"
        )
    values = values[np.argsort(values[:, 0], kind="stable")]
    twice = np.flatnonzero(np.diff(values[:, 0]) <= 0)
    if twice.size:
        raise MaterialError(f"{place}spectrum has {values[twice[0], 0]:g} eV twice; merge the rows")
    return values[:, 0], [values[:, i + 1] for i in range(count)]


def _fit_ends(material: Material, source: str, energy: Array, mu: Array) -> tuple[float, float]:
    """Offset and factor (a, b) that bring a + b mu to E beta of the table at both ends, by least squares."""
    width = _END_WINDOW * (energy[-1] - energy[0])
    ends = [energy <= energy[0] + width, energy >= energy[-1] - width]
    target = energy * _table(material, source, energy)[1]
    x, y = np.array([mu[end].mean() for end in ends]), np.array([target[end].mean() for end in ends])
    if not abs(x[1] - x[0]) > 1e-6 * np.max(np.abs(mu)):
        raise MaterialError(
            "spectrum has the same absorption at both ends, so it cannot be scaled to the step of the table; "
            "measure across the edge, or give beta itself and scale=False"
        )
    factor = float((y[1] - y[0]) / (x[1] - x[0]))
    return float(y[0] - factor * x[0]), factor


def _warn_of_steps(material: Material, source: str, energy: Array, beta: Array) -> None:
    table = _table(material, source, energy)[1]
    for i in (0, -1):
        if abs(beta[i] - table[i]) > _LARGEST_MISMATCH * table[i]:
            warnings.warn(
                (
                    f"{material.formula}: measured beta {beta[i]:.3g} at {energy[i]:g} eV, the {source} table has"
                    f" {table[i]:.3g}; the step disturbs delta there: scale the spectrum"
                ),
                MaterialWarning,
                stacklevel=3,
            )


def _table(material: Material, source: str, energy: Array) -> tuple[Array, Array]:
    if not material.atoms:
        raise MaterialError("vacuum absorbs nothing; give the formula of the sample")
    delta, beta = delta_beta(material, None, energy, source, warn=False)
    return delta, beta


def _delta(material: Material, source: str, energy: Array, beta: Array) -> Array:
    """delta at the measured energies."""
    from .. import _core

    rows = _rows(material, source, energy)
    delta_of_table, joined = _table(material, source, rows)
    inside = (rows >= energy[0]) & (rows <= energy[-1])
    joined[inside] = np.interp(rows[inside], energy, beta)
    transform = _core._kramers_kronig(rows, joined)
    anchor = ~inside & (rows > energy[0] / 2) & (rows < 2 * energy[-1])
    for edge in edges(material):
        anchor &= np.abs(rows - edge.energy) > _ANCHOR_DISTANCE
    anchor &= (rows < energy[0] - _ANCHOR_DISTANCE) | (rows > energy[-1] + _ANCHOR_DISTANCE)
    if not np.any(anchor):
        raise MaterialError(
            f"no energy near {energy[0]:g} to {energy[-1]:g} eV is {_ANCHOR_DISTANCE:g} eV away from all edges of "
            f"{material.formula}, so delta cannot be anchored"
        )
    # Each row is weighted by its interval in the logarithm of energy.
    weight = np.gradient(np.log(rows))[anchor]
    offset = np.average((delta_of_table * rows**2 - transform)[anchor], weights=weight)
    return np.asarray(np.interp(energy, rows, (transform + offset) / rows**2))


def _rows(material: Material, source: str, energy: Array) -> Array:
    """Energies of the joined table: of the source, measured, and as many between as the transform needs."""
    low, high = range_of(material, source)
    if energy[0] <= low or energy[-1] >= high:
        raise MaterialError(
            f"spectrum from {energy[0]:g} to {energy[-1]:g} eV does not lie inside the {source} table of "
            f"{material.formula}, {low:g} to {high:g} eV"
        )
    known = [factors.rows(symbol, source)[0] for symbol in material.atoms]
    fine = np.arange(max(low, energy[0] - _FINE_MARGIN), min(high, energy[-1] + _FINE_MARGIN), _FINE_STEP)
    reach = np.geomspace(_FINE_MARGIN, high, int(np.log(high / _FINE_MARGIN) / _COARSE_RATIO))
    every = np.concatenate([*known, energy, fine, energy[0] - reach, energy[-1] + reach])
    return _without_crowding(np.unique(every[(every >= low) & (every <= high)]), energy)


def _without_crowding(rows: Array, keep: Array) -> Array:
    """Rows at least 0.02 eV apart, so that none meets the shift of 0.01 eV of the transform; those to keep stay."""
    near = np.searchsorted(keep, rows)
    distance = np.minimum(
        np.abs(rows - keep[np.clip(near, 0, keep.size - 1)]), np.abs(rows - keep[np.clip(near - 1, 0, keep.size - 1)])
    )
    rows = rows[(distance == 0) | (distance > 0.02)]
    return np.asarray(rows[np.concatenate([[True], (np.diff(rows) > 0.02) | np.isin(rows[1:], keep)])])


def _delta_of_difference(energy: Array, beta: Array) -> Array:
    """delta of a beta that is zero outside its range, so that the constant is 2/pi of the integral of E beta."""
    from .. import _core

    step = _FINE_STEP
    fine = np.arange(energy[0], energy[-1], step)
    rows = _without_crowding(np.unique(np.concatenate([energy, fine])), energy)
    rows = np.concatenate([[rows[0] - step], rows, [rows[-1] + step]])
    values = np.concatenate([[0.0], np.interp(rows[1:-1], energy, beta), [0.0]])
    transform = _core._kramers_kronig(rows, values)
    moment = np.trapz(rows * values, rows)
    return np.asarray(np.interp(energy, rows, (transform + 2 / np.pi * moment) / rows**2))
