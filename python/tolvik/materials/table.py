# SPDX-License-Identifier: GPL-2.0-or-later
"""Tables of optical constants as objects and as the files that the program reads."""
from __future__ import annotations

import os
from dataclasses import dataclass
from typing import Optional, Sequence, Union

import numpy as np
import numpy.typing as npt

from ..errors import MaterialError
from ..formats.ort_writer import write_text
from . import factors
from .constants import as_energies, delta_beta
from .formula import Material, parse

Array = npt.NDArray[np.float64]

_HEADINGS = {".db": "energy (eV), delta, beta", ".m": "energy (eV), deltam, betam", ".ff": "energy (eV), f1, f2"}


@dataclass(frozen=True)
class OpticalTable:
    """Two constants over the photon energy.

    Attributes
    ----------
    energy : ndarray, shape (n,)
        Ascending, eV.
    delta, beta : ndarray, shape (n,)
        n = 1 - delta + i beta; of a magnetic table their magnetic parts.
    origin : str
        One line that says where the numbers come from.
    """

    energy: Array
    delta: Array
    beta: Array
    origin: str

    def save(self, path: Union[str, "os.PathLike[str]"]) -> None:
        """Writes the file of a table; its suffix, .db or .m, gives the heading. Raises DataFileError."""
        _write(os.fspath(path), self.origin, (self.energy, self.delta, self.beta))


def _write(path: str, origin: str, columns: Sequence[Array]) -> None:
    heading = _HEADINGS.get(os.path.splitext(path)[1])
    if heading is None:
        raise MaterialError(f"{path}: a table ends in .db, .m or .ff; name it so")
    lines = [f"# {origin}", f"# {heading}"]
    lines += [f"{energy:.10g} {one:.9e} {two:.9e}" for energy, one, two in zip(*columns)]
    write_text(path, "\n".join(lines) + "\n")


def grid(first: float, last: float, step: float) -> Array:
    """Energies from first to last, both included where the step meets them, eV; raises MaterialError."""
    try:
        first, last, step = float(first), float(last), float(step)
        count = int(np.floor((last - first) / step + 1e-9)) + 1 if step > 0 else 0
    except (TypeError, ValueError, OverflowError):
        count = 0
    if not 0 < first <= last < float("inf") or not 1 <= count <= 1_000_000:
        raise MaterialError(f"energies {first}:{last}:{step} are no range; give first:last:step in eV, as 770:800:0.25")
    return np.asarray(first + step * np.arange(count))


def write_tables(
    stem: Union[str, "os.PathLike[str]"],
    formula: Union[str, Material],
    density: Optional[float] = None,
    energy: Optional[npt.ArrayLike] = None,
    *,
    source: str = "henke",
    suffixes: Sequence[str] = (".db",),
) -> list[str]:
    """Writes the tables of a material from tabulated scattering factors.

    Parameters
    ----------
    stem : str or path-like
        Path of the files without suffix; what `layer_db` of a state names.
    formula, density
        As for `delta_beta`.
    energy : array_like, shape (n,)
        Energies of the rows, eV; sorted. The program interpolates linearly between rows.
    source : {"henke", "chantler"}
        Table of the scattering factors.
    suffixes : sequence of {".db", ".m", ".ff"}
        ".db" delta and beta, ".m" zeros (a material without moment), ".ff" f1 and f2 of an element.

    Returns
    -------
    list of str
        Paths of the written files.

    Raises
    ------
    MaterialError
        As `delta_beta`; for ".ff" of a compound.
    DataFileError
        If a file cannot be written.

    Warns
    -----
    MaterialWarning
        Where the rows come near an edge.
    """
    material = parse(formula, density)
    energies = np.unique(np.atleast_1d(as_energies(energy)))
    unknown = [suffix for suffix in suffixes if suffix not in _HEADINGS]
    if unknown or not suffixes:
        raise MaterialError(f"suffix {unknown[0] if unknown else ''!r} of a table is unknown; give .db, .m or .ff")
    if ".ff" in suffixes and material.element is None:
        raise MaterialError(f"{material.formula} is no element, and a .ff table belongs to one; write .db instead")
    factors.check_source(source)
    delta, beta = delta_beta(material, None, energies, source)
    zeros = np.zeros_like(energies)
    columns = {".db": (energies, delta, beta), ".m": (energies, zeros, zeros)}
    origins = {".db": origin_of(material, source), ".m": f"{material.formula}: no magnetic part, {_author()}"}
    if ".ff" in suffixes and material.element is not None:
        columns[".ff"] = (energies, *factors.interpolate(material.element, source, energies))
        origins[".ff"] = f"{material.element}: {factors.CITATIONS[source]}; {_author()}"
    paths = []
    for suffix in suffixes:
        paths.append(os.fspath(stem) + suffix)
        _write(paths[-1], origins[suffix], columns[suffix])
    return paths


def origin_of(material: Material, source: str) -> str:
    """The line that names the origin of tabulated constants."""
    if not material.atoms:
        return f"vacuum: delta = beta = 0; {_author()}"
    return (
        f"{material.formula}, {material.density:g} g/cm3 ({material.density_source}): {factors.CITATIONS[source]}; "
        f"{_author()}"
    )


def _author() -> str:
    from .. import __version__

    return f"written by tolvik {__version__}"
