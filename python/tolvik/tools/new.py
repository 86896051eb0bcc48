# SPDX-License-Identifier: GPL-2.0-or-later
"""tolvik-new: a state file from a stack of formulas."""
from __future__ import annotations

import argparse
import os
import re
import sys
from typing import Any, Optional, Sequence

from . import common, stack

_EPILOG = """examples:
  tolvik-new "Si 3 | SiO2 15 3 | [Co 8 3 | Pt 12 3]*20" --energy CuKa -o film.state
  tolvik-new "Si | Co:8.7 200 5 | Al 20 4" --energy 778 --tables 740:840:0.25 -o co/film.state
  tolvik-new --orso "vacuum | 40 ( Si 4.1 | Mo 2.8 ) | Si" -o mirror.state

The stack runs from the substrate up: formula (Co:8.9 with a density in g/cm3), thickness and roughness of the upper
interface in angstrom. The ambient is vacuum, or a last formula without thickness."""
_LARGEST_Q = 0.5  # 1/Å, or what the energy reaches


def parser() -> common.Parser:
    """The options of the command."""
    made = common.Parser(
        "tolvik-new",
        "Writes a state file from a stack of formulas.",
        epilog=_EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    common.add_common(made)
    made.add_argument("stack", metavar="STACK", nargs="?", help="layers from the substrate up")
    made.add_argument("--orso", metavar="MODEL", help="a model of ORSO instead: nm, beam side first")
    made.add_argument(
        "--roughness",
        type=float,
        metavar="S",
        help="roughness of all interfaces that name none, angstrom (default: 0, with --orso 3)",
    )
    made.add_argument(
        "--energy",
        type=common.energy,
        default="CuKa",
        metavar="E",
        help="photon energy in eV, or a line as CuKa (default: CuKa)",
    )
    made.add_argument(
        "--source", choices=("henke", "chantler"), default="henke", help="table of scattering factors (default: henke)"
    )
    made.add_argument(
        "--tables", type=common.energies, metavar="E1:E2:dE", help="write the .db and .m of every layer as well"
    )
    made.add_argument("--qmax", type=float, metavar="Q", help="last q of the curve, 1/angstrom")
    made.add_argument("-o", "--output", metavar="FILE", help="the state file (default: standard output)")
    made.add_argument("--force", action="store_true", help="write over an existing state file")
    return made


def work(arguments: argparse.Namespace) -> Optional[int]:
    """Runs the command."""
    from ..errors import DataFileError, MaterialError
    from ..formats.ort_writer import write_text

    if (arguments.stack is None) == (arguments.orso is None):
        raise MaterialError("give one stack: STACK, or --orso MODEL")
    layers = _layers(arguments)
    if (
        arguments.output
        and os.path.lexists(arguments.output)
        and not arguments.force
        and os.path.isfile(arguments.output)
    ):
        raise DataFileError(f"{arguments.output}: is there already; take another name or give --force")
    found = _materials(layers, arguments)
    text = _state(arguments, layers, found)
    _check(text)
    tables = _write_tables(arguments, found) if arguments.tables is not None else []
    if not arguments.output:
        if not arguments.json:
            sys.stdout.write(text)
            return None
    else:
        write_text(arguments.output, text)
    record = {
        "file": arguments.output,
        "energy": arguments.energy,
        "tables": tables,
        "layers": [
            {
                "formula": layer.formula,
                "d": layer.thickness,
                "sigma": layer.roughness,
                "db": found[layer.formula]["stem"],
                "delta": found[layer.formula]["delta"],
                "beta": found[layer.formula]["beta"],
            }
            for layer in layers
        ],
    }
    if arguments.json:
        common.show(arguments, "", record if arguments.output else {**record, "state": text})
    else:
        common.say(
            arguments,
            f"tolvik-new: {arguments.output}: {len(layers)} layers at {arguments.energy:g} eV"
            + (f", {len(tables)} tables" if tables else ""),
        )
    return None


def _layers(arguments: argparse.Namespace) -> list[stack.Layer]:
    from ..errors import MaterialError

    sigma = arguments.roughness
    if sigma is not None and not 0 <= sigma < 1e6:
        raise MaterialError(f"roughness {sigma:g} is no length of at least 0; give angstrom")
    if arguments.orso is not None:
        return stack.parse_orso(arguments.orso, 3.0 if sigma is None else sigma)
    return stack.parse(arguments.stack, sigma or 0.0)


def _materials(layers: Sequence[stack.Layer], arguments: argparse.Namespace) -> dict[str, dict[str, Any]]:
    """Material, constants and stem of the tables for each formula of the stack, in their order."""
    from .. import materials

    found: dict[str, dict[str, Any]] = {}
    taken: dict[str, tuple[str, float]] = {}
    for formula in dict.fromkeys(layer.formula for layer in layers):
        material = materials.parse(formula)
        delta, beta = materials.delta_beta(material, None, arguments.energy, arguments.source)
        stem = re.sub(r"[^A-Za-z0-9._-]", "_", material.formula)
        if taken.get(stem, (material.formula, material.density)) != (material.formula, material.density):
            stem = f"{stem}_{material.density:g}"
        taken[stem] = (material.formula, material.density)
        found[formula] = {"material": material, "delta": delta, "beta": beta, "stem": stem}
    return found


def _state(arguments: argparse.Namespace, layers: Sequence[stack.Layer], found: dict[str, dict[str, Any]]) -> str:
    import math

    from ..errors import MaterialError
    from ..materials.factors import CITATIONS
    from ..units import wavelength_from_energy

    reach = 4 * math.pi / wavelength_from_energy(arguments.energy)
    qmax = min(_LARGEST_Q, math.floor(90 * reach) / 100) if arguments.qmax is None else arguments.qmax
    if not 0 < qmax < reach:
        raise MaterialError(
            f"q of {qmax:g} 1/angstrom is out of reach: at {arguments.energy:g} eV it ends at {reach:.4g}"
        )
    given = arguments.stack if arguments.orso is None else f"--orso {arguments.orso}"
    lines = [
        f"# {' '.join(given.split())}",
        "#",
        f"# Optical constants at {arguments.energy:g} eV: {CITATIONS[arguments.source]}",
    ]
    for entry in found.values():
        material = entry["material"]
        if material.atoms:
            lines.append(
                f"# {entry['stem']}: {material.formula}, {material.density:g} g/cm3 ({material.density_source})"
            )
    lines += ["", "fileversion = 1", f"energy = {arguments.energy:.10g}", f"qzmax = {qmax:g}", "numberofpoints = 501"]
    if arguments.tables is not None:
        lines += ["ocautomatic = 1"]
    lines += [
        "",
        "# layers from the substrate to the ambient; layer_sigma is the roughness of a layer's upper interface",
        "layerversion = 3",
    ]
    for index, layer in enumerate(layers):
        entry = found[layer.formula]
        lines += [f"layer = {index}"] + ([f"  layer_d = {layer.thickness:.10g}"] if layer.thickness else [])
        lines += [f"  layer_db = {entry['stem']}"]
        if entry["material"].atoms:
            lines += [f"  layer_density = {entry['material'].density:.10g}"]
        lines += [
            f"  layer_delta = {entry['delta']:.6e}",
            f"  layer_beta = {entry['beta']:.6e}",
            f"  layer_sigma = {layer.roughness:.10g}",
        ]
    return "\n".join(lines) + "\n"


def _check(text: str) -> None:
    """Reads the text back by the reader of the program."""
    from .. import State

    State.from_text(text)


def _write_tables(arguments: argparse.Namespace, found: dict[str, dict[str, Any]]) -> list[str]:
    import warnings

    from .. import materials
    from ..errors import MaterialError, MaterialWarning
    from ..materials.table import grid

    if not isinstance(arguments.tables, tuple):
        raise MaterialError(f"--tables {arguments.tables:g} is one energy; give first:last:step, as 740:840:0.25")
    energy = grid(*arguments.tables)
    folder = os.path.dirname(arguments.output or "")
    written: list[str] = []
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always", MaterialWarning)
        for entry in {entry["stem"]: entry for entry in found.values()}.values():
            written += materials.write_tables(
                os.path.join(folder, entry["stem"]),
                entry["material"],
                None,
                energy,
                source=arguments.source,
                suffixes=(".db", ".m"),
            )
    for message in dict.fromkeys(str(one.message) for one in caught):
        warnings.warn(message, MaterialWarning, stacklevel=2)
    return written


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Entry point; returns the exit value."""
    return common.run(parser(), work, arguments)


if __name__ == "__main__":
    common.main_of(main)
