# SPDX-License-Identifier: GPL-2.0-or-later
"""Absorption edges, near which tabulated constants are not valid."""
from __future__ import annotations

import functools
import warnings
from dataclasses import dataclass
from typing import Optional, Union

import numpy as np
import numpy.typing as npt

from ..errors import MaterialWarning
from .formula import Material, parse
from .libraries import xraydb_rows

Array = npt.NDArray[np.float64]

#: Below this distance from an edge neighbours and bonds move the constants, which no table of atoms knows; eV.
NEAR_EDGE = 20.0
_LOWEST_EDGE = 30.0  # eV; below, there are no tables or they are unusable


@dataclass(frozen=True)
class Edge:
    """Absorption edge: symbol of the element, name (K, L3, ...) and energy in eV."""

    element: str
    name: str
    energy: float

    def __str__(self) -> str:
        return f"{self.element} {self.name} ({self.energy:g} eV)"


@functools.lru_cache(maxsize=None)
def _edges_of(symbol: str) -> tuple[Edge, ...]:
    found = xraydb_rows("SELECT iupac_symbol, absorption_edge FROM xray_levels WHERE element = ?", symbol)
    every = (Edge(symbol, str(name), float(energy)) for name, energy in found if energy >= _LOWEST_EDGE)
    return tuple(sorted(every, key=lambda edge: edge.energy))


def edges(formula: Union[str, Material], density: Optional[float] = None) -> list[Edge]:
    """All absorption edges of a material above 30 eV, by energy.

    Parameters
    ----------
    formula : str or Material
        As for `parse`.
    density : float, optional
        g/cm³; without meaning for the edges.

    Returns
    -------
    list of Edge
        From the table of W. T. Elam, B. D. Ravel and J. R. Sieber, Radiat. Phys. Chem. 63, 121 (2002), by xraydb.
    """
    material = parse(formula, density)
    return sorted((edge for symbol in material.atoms for edge in _edges_of(symbol)), key=lambda edge: edge.energy)


def nearest_edge(formula: Union[str, Material], energy: float) -> Optional[Edge]:
    """The absorption edge of a material that is nearest to an energy in eV; None where it has none."""
    found = edges(formula)
    return min(found, key=lambda edge: abs(edge.energy - energy)) if found else None


def warn_near_edges(material: Material, energy: Array) -> None:
    """One MaterialWarning when an energy lies within `NEAR_EDGE` of an edge; energy (n,) in eV."""
    near = [(float(np.min(np.abs(energy - edge.energy))), edge) for edge in edges(material)]
    near = sorted(((distance, edge) for distance, edge in near if distance <= NEAR_EDGE), key=lambda pair: pair[0])
    if not near:
        return
    distance, edge = near[0]
    more = f" and {len(near) - 1} more" if len(near) > 1 else ""
    warnings.warn(
        (
            f"{material.formula}: {distance:.3g} eV from the edge {edge}{more}: tables of free atoms do not hold within"
            f" {NEAR_EDGE:g} eV of an edge; use a measured table"
        ),
        MaterialWarning,
        stacklevel=3,
    )
