# SPDX-License-Identifier: GPL-2.0-or-later
"""A material: chemical formula and mass density."""
from __future__ import annotations

import functools
import math
import re
from dataclasses import dataclass
from typing import Any, Mapping, Optional, Union

from ..errors import MaterialError
from .libraries import periodictable

AVOGADRO = 0.602214076  # 1e24 per mol (exact since 2019): g/cm³ over g/mol gives units per Å³

#: Names of a medium without matter.
VACUUM = frozenset({"vacuum", "air"})

_SYMBOLS = re.compile(r"[A-Z][a-z]?")

# Densities of compounds at room temperature, g/cm³: CRC Handbook of Chemistry and Physics, 97th ed. (2016), section 4,
# "Physical Constants of Inorganic Compounds". Films are often a few percent less dense: give the density you know.
_COMPOUNDS = {
    "Al2O3": 3.99,
    "AlN": 3.255,
    "B4C": 2.50,
    "BN": 2.18,
    "BaTiO3": 6.02,
    "CaF2": 3.18,
    "CoO": 6.44,
    "Co3O4": 6.11,
    "Cr2O3": 5.22,
    "CuO": 6.31,
    "Cu2O": 6.0,
    "Fe2O3": 5.25,
    "Fe3O4": 5.17,
    "FeO": 6.0,
    "GaAs": 5.3176,
    "GaN": 6.1,
    "H2O": 0.997,
    "HfO2": 9.68,
    "InP": 4.81,
    "La2O3": 6.51,
    "LiF": 2.640,
    "MgO": 3.6,
    "MnO": 5.37,
    "MoO3": 4.70,
    "NaCl": 2.17,
    "NiO": 6.72,
    "Si3N4": 3.17,
    "SiC": 3.16,
    "SiO2": 2.196,
    "SrTiO3": 5.1,
    "Ta2O5": 8.24,
    "TiN": 5.21,
    "TiO2": 4.17,
    "WC": 15.6,
    "WO3": 7.2,
    "Y2O3": 5.03,
    "ZnO": 5.6,
    "ZrO2": 5.68,
}
_COMPOUND_SOURCE = "CRC Handbook of Chemistry and Physics, 97th ed."


@dataclass(frozen=True)
class Material:
    """A formula with its density.

    Attributes
    ----------
    formula : str
        As it was given, without the density.
    density : float
        g/cm³; 0 for vacuum.
    density_source : str
        Where the density comes from.
    atoms : mapping of str to float
        Number of atoms of each element in one formula unit.
    mass : float
        Molar mass of one formula unit, g/mol.
    """

    formula: str
    density: float
    density_source: str
    atoms: Mapping[str, float]
    mass: float

    @property
    def units_per_volume(self) -> float:
        """Formula units per Å³."""
        return AVOGADRO * self.density / self.mass if self.atoms else 0.0

    @property
    def element(self) -> Optional[str]:
        """Symbol, if the material is one element."""
        return next(iter(self.atoms)) if len(self.atoms) == 1 else None


def parse(formula: Union[str, Material], density: Optional[float] = None) -> Material:
    """The material of a formula.

    Parameters
    ----------
    formula : str or Material
        "SiO2", "La0.7Sr0.3MnO3", "Co:8.9" (density in g/cm³ after the colon), "vacuum".
    density : float, optional
        g/cm³; overrides all others. Without any, elements have that of periodictable and common compounds one of a
        handbook.

    Returns
    -------
    Material

    Raises
    ------
    MaterialError
        If the formula cannot be read, or the density is missing or not positive.
    """
    if isinstance(formula, Material):
        return formula if density is None else _with_density(formula, density)
    text, colon, behind = str(formula).strip().replace("@", ":").partition(":")
    text = text.strip()
    if text.lower() in VACUUM:
        return Material("vacuum", 0.0, "vacuum", {}, 0.0)
    atoms, mass, element_density = _atoms(text)
    if density is not None:
        return Material(text, _positive(density, text), "given", atoms, mass)
    if colon:
        return Material(text, _positive(behind.strip(), text), "given", atoms, mass)
    if text in _COMPOUNDS:
        return Material(text, _COMPOUNDS[text], _COMPOUND_SOURCE, atoms, mass)
    if element_density is not None:
        return Material(text, element_density, "periodictable", atoms, mass)
    raise MaterialError(f"formula {text!r} has no density in the tables; give it in g/cm³, as {text}:5.2")


def _with_density(material: Material, density: float) -> Material:
    return Material(material.formula, _positive(density, material.formula), "given", material.atoms, material.mass)


def _positive(value: Any, formula: str) -> float:
    try:
        number = float(value)
    except (TypeError, ValueError):
        number = math.nan
    if not 0 < number < 100:
        raise MaterialError(
            f"density {value!r} of {formula} is no number between 0 and 100; give g/cm³, as {formula}:8.9"
        )
    return number


@functools.lru_cache(maxsize=1024)
def _atoms(text: str) -> tuple[Mapping[str, float], float, Optional[float]]:
    """Atoms of each element, molar mass, and the density of a lone element."""
    library = periodictable()
    if not text or len(text) > 200:
        raise MaterialError(f"formula {text[:40]!r} is empty or too long; write it as SiO2, Co:8.9 or La0.7Sr0.3MnO3")
    try:
        compound = library.formula(text)
        atoms: dict[str, float] = {}
        for atom, count in compound.atoms.items():
            atoms[atom.symbol] = atoms.get(atom.symbol, 0.0) + float(count)
        mass = float(compound.mass)
        density = compound.density if len(atoms) == 1 else None
    except Exception:  # its parser has exceptions of its own kind
        raise MaterialError(f"formula {text!r} cannot be read; {_remedy(text)}") from None
    if not atoms or not 0 < mass < math.inf or "n" in atoms or any(count <= 0 for count in atoms.values()):
        raise MaterialError(f"formula {text!r} names no amount of matter; write it as SiO2, Co:8.9 or La0.7Sr0.3MnO3")
    return {"H" if symbol in ("D", "T") else symbol: count for symbol, count in atoms.items()}, mass, density


def _remedy(text: str) -> str:
    if text[:1].islower() and _SYMBOLS.match(text.capitalize()) and text.capitalize() != text:
        return f"symbols begin with a capital: is {text.capitalize()!r} meant?"
    return "write it as SiO2, Co:8.9 or La0.7Sr0.3MnO3"


def known_densities() -> list[tuple[str, float, str]]:
    """(formula, g/cm³, source) of every formula whose density need not be given: elements, then compounds."""
    source = "periodictable"
    elements = [
        (element.symbol, float(element.density), source)
        for element in periodictable().elements
        if element.number and element.density
    ]
    return elements + [(name, density, _COMPOUND_SOURCE) for name, density in sorted(_COMPOUNDS.items())]
