# SPDX-License-Identifier: GPL-2.0-or-later
"""delta and beta of a formula and a density, from either table, and both side by side.

    delta - i beta = r_e lambda² / (2 pi) n sum_j N_j (f1_j - i f2_j)

with the classical electron radius r_e and n formula units per volume (R. W. James, The Optical Principles of the
Diffraction of X-rays (1948), chapter II). r_e and hc are those of CODATA 2018; hc differs by 7.6e-6 from the constant
by which the program turns an energy into a wavelength.
"""
from __future__ import annotations

import warnings
from dataclasses import dataclass
from typing import Any, Optional, Union

import numpy as np
import numpy.typing as npt

from ..errors import MaterialError, MaterialWarning
from . import factors
from .edges import Edge, nearest_edge, warn_near_edges
from .formula import Material, parse

Array = npt.NDArray[np.float64]

ELECTRON_RADIUS = 2.8179403262e-5  # Å, CODATA 2018
PLANCK_TIMES_LIGHT = 12398.419843320026  # eV Å, exact since 2019


def as_energies(energy: Optional[npt.ArrayLike]) -> Array:
    """Energies as an array (n,) or (), positive and finite, or a MaterialError."""
    try:
        values = np.asarray(energy, dtype=np.float64)  # of None it makes NaN
    except (TypeError, ValueError):
        values = np.empty((0, 0))
    if values.ndim > 1 or values.size == 0 or not np.all((values > 0) & np.isfinite(values)):
        raise MaterialError(
            f"energy {np.array2string(np.asarray(energy), threshold=6)} is no positive number or list of them; give eV"
        )
    return values


def delta_beta(
    formula: Union[str, Material],
    density: Optional[float] = None,
    energy: Optional[npt.ArrayLike] = None,
    source: str = "henke",
    *,
    warn: bool = True,
) -> tuple[Any, Any]:
    """Optical constants of a material.

    Parameters
    ----------
    formula : str or Material
        As for `parse`: "SiO2", "Co:8.9".
    density : float, optional
        g/cm³; by default that of the formula or of the tables.
    energy : float or array_like, shape (n,)
        Photon energy, eV.
    source : {"henke", "chantler"}
        Table of the scattering factors.
    warn : bool
        False keeps silent near edges.

    Returns
    -------
    delta, beta : float or ndarray, shape (n,)
        n = 1 - delta + i beta.

    Raises
    ------
    MaterialError
        If formula, density or energy cannot be used, or an energy lies outside the tables; it says their range.

    Warns
    -----
    MaterialWarning
        Within 20 eV of an absorption edge.
    """
    material = parse(formula, density)
    energies = as_energies(energy)
    factors.check_source(source)
    flat = np.atleast_1d(energies)
    low, high = range_of(material, source)
    outside = flat[(flat < low) | (flat > high)]
    if outside.size:
        raise MaterialError(
            f"energy {outside[0]:g} eV is outside the {source} table of {material.formula}, {low:g} to "
            f"{high:g} eV; use another source or a measured table"
        )
    f1, f2 = np.zeros_like(flat), np.zeros_like(flat)
    for symbol, count in material.atoms.items():
        one, two = factors.interpolate(symbol, source, flat)
        f1 += count * one
        f2 += count * two
    if warn:
        warn_near_edges(material, flat)
    scale = scale_of(material, flat)
    delta, beta = scale * f1, scale * f2
    return (float(delta[0]), float(beta[0])) if energies.ndim == 0 else (delta, beta)


def scale_of(material: Material, energy: Array) -> Array:
    """delta of one electron per formula unit: r_e lambda² n / (2 pi), shape (n,)."""
    return np.asarray(ELECTRON_RADIUS * (PLANCK_TIMES_LIGHT / energy) ** 2 * material.units_per_volume / (2 * np.pi))


def range_of(formula: Union[str, Material], source: str = "henke") -> tuple[float, float]:
    """First and last energy, eV, that the table has for all elements of a material; 0 to infinity for vacuum."""
    tables = [factors.rows(symbol, source)[0] for symbol in parse(formula).atoms]
    return max((float(t[0]) for t in tables), default=0.0), min((float(t[-1]) for t in tables), default=float("inf"))


@dataclass(frozen=True)
class Comparison:
    """Both tables side by side.

    Attributes
    ----------
    material : Material
    energy : ndarray, shape (n,)
        eV.
    delta, beta : dict of str to ndarray, shape (n,)
        By source; NaN outside its range.
    ranges : dict of str to (float, float)
        First and last energy of each source, eV.
    nearest : list of Edge or None, length n
        The nearest edge at each energy.
    """

    material: Material
    energy: Array
    delta: dict[str, Array]
    beta: dict[str, Array]
    ranges: dict[str, tuple[float, float]]
    nearest: list[Optional[Edge]]

    @property
    def distance(self) -> Array:
        """Distance to the nearest edge, eV, shape (n,); infinite where there is none."""
        return np.array([abs(edge.energy - e) if edge else np.inf for edge, e in zip(self.nearest, self.energy)])

    def spread(self, quantity: str) -> Array:
        """|henke - chantler| over the larger magnitude, shape (n,), of "delta" or "beta"."""
        one, two = (getattr(self, quantity)[source] for source in factors.CITATIONS)
        with np.errstate(invalid="ignore", divide="ignore"):
            return np.asarray(np.abs(one - two) / np.maximum(np.abs(one), np.abs(two)))

    def __str__(self) -> str:
        lines = [f"{self.material.formula}, {self.material.density:g} g/cm3 ({self.material.density_source})"]
        lines += [
            f"{source}: {low:g} to {high:g} eV, {factors.CITATIONS[source]}"
            for source, (low, high) in self.ranges.items()
        ]
        lines.append(f"{'energy/eV':>10} {'source':<9} {'delta':>12} {'beta':>12}  nearest edge")
        for i, energy in enumerate(self.energy):
            edge = self.nearest[i]
            place = f"{edge}, {self.distance[i]:.4g} eV away" if edge else "none"
            for source in self.ranges:
                lines.append(
                    f"{energy:>10.6g} {source:<9} {self.delta[source][i]:>12.5e} {self.beta[source][i]:>12.5e}  {place}"
                )
            lines.append(f"{'':>10} {'spread':<9} {self.spread('delta')[i]:>12.2%} {self.spread('beta')[i]:>12.2%}")
        return "\n".join(lines)


def compare(
    formula: Union[str, Material], density: Optional[float] = None, energy: Optional[npt.ArrayLike] = None
) -> Comparison:
    """Both tables side by side, with their ranges, the nearest edges and the spread.

    Parameters
    ----------
    formula, density, energy
        As for `delta_beta`.

    Returns
    -------
    Comparison

    Raises
    ------
    MaterialError
        As `delta_beta`; an energy outside both tables.

    Warns
    -----
    MaterialWarning
        Near an edge, and where an energy is outside one of the tables.
    """
    material = parse(formula, density)
    energies = np.atleast_1d(as_energies(energy))
    delta, beta, ranges = {}, {}, {}
    for source in factors.CITATIONS:
        low, high = ranges[source] = range_of(material, source)
        inside = (energies >= low) & (energies <= high)
        delta[source], beta[source] = np.full(energies.shape, np.nan), np.full(energies.shape, np.nan)
        if np.any(inside):
            delta[source][inside], beta[source][inside] = delta_beta(
                material, None, energies[inside], source, warn=False
            )
        if not np.all(inside):
            warnings.warn(
                (
                    f"{material.formula}: {np.count_nonzero(~inside)} of {energies.size} energies outside the {source} "
                    f"table, {low:g} to {high:g} eV"
                ),
                MaterialWarning,
                stacklevel=2,
            )
    lost = np.all([np.isnan(column) for column in delta.values()], axis=0)
    if np.any(lost):
        raise MaterialError(
            f"energy {energies[lost][0]:g} eV is outside both tables of {material.formula}; use a measured table"
        )
    warn_near_edges(material, energies)
    return Comparison(material, energies, delta, beta, ranges, [nearest_edge(material, float(e)) for e in energies])
