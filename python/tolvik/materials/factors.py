# SPDX-License-Identifier: GPL-2.0-or-later
"""Atomic scattering factors f1 and f2 of both tables, over the photon energy."""
from __future__ import annotations

import functools
import json
from typing import Callable

import numpy as np
import numpy.typing as npt

from ..errors import MaterialError
from .libraries import periodictable, xraydb_rows

Array = npt.NDArray[np.float64]
#: Energies of the rows, eV, f1 (electrons, the number Z at high energy) and f2.
Factors = tuple[Array, Array, Array]

CITATIONS = {
    "henke": "Henke, Gullikson and Davis, At. Data Nucl. Data Tables 54, 181 (1993), by periodictable",
    "chantler": "Chantler, J. Phys. Chem. Ref. Data 24, 71 (1995) and 29, 597 (2000), by xraydb",
}


def check_source(source: str) -> str:
    """The source itself, or a MaterialError."""
    if source not in CITATIONS:
        raise MaterialError(f"source {source!r} is unknown; give 'henke' or 'chantler'")
    return source


@functools.lru_cache(maxsize=None)
def rows(symbol: str, source: str) -> Factors:
    """Rows of the table of an element.

    Parameters
    ----------
    symbol : str
        Element.
    source : {"henke", "chantler"}
        Table.

    Returns
    -------
    energy, f1, f2 : ndarray, shape (k,)
        In ascending energy, eV; rows without f1 are left out.

    Raises
    ------
    MaterialError
        If the table does not know the element, or its library is not installed.
    """
    reader: dict[str, Callable[[str], Factors]] = {"henke": _henke, "chantler": _chantler}
    energy, f1, f2 = reader[check_source(source)](symbol)
    known = np.isfinite(f1) & np.isfinite(f2) & (f2 > 0)
    columns = energy[known], f1[known], f2[known]
    for column in columns:
        column.setflags(write=False)
    return columns


def interpolate(symbol: str, source: str, energy: Array) -> tuple[Array, Array]:
    """f1, linear in log E, and f2, linear in log-log, at energies (n,) in eV; NaN outside the table."""
    at, f1, f2 = rows(symbol, source)
    x, known = np.log(energy), np.log(at)
    inside = (energy >= at[0]) & (energy <= at[-1])
    return (
        np.where(inside, np.interp(x, known, f1), np.nan),
        np.where(inside, np.exp(np.interp(x, known, np.log(f2))), np.nan),
    )


def _henke(symbol: str) -> Factors:
    table = periodictable().elements.symbol(symbol).xray.sftable
    if table is None:
        raise MaterialError(f"henke has no table of {symbol}; it ends with uranium: measure, or give delta and beta")
    return 1000.0 * np.asarray(table[0]), np.asarray(table[1]), np.asarray(table[2])


def _chantler(symbol: str) -> Factors:
    found = xraydb_rows("SELECT energy, f1, f2 FROM Chantler WHERE element = ?", symbol)
    if not found:
        raise MaterialError(f"chantler has no table of {symbol}; it ends with uranium: measure, or give delta and beta")
    energy, f1, f2 = (np.array(json.loads(column), dtype=np.float64) for column in found[0])
    return energy, f1 + periodictable().elements.symbol(symbol).number, f2  # the file has f1 less the Z electrons
