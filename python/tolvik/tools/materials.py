# SPDX-License-Identifier: GPL-2.0-or-later
"""tolvik-materials: optical constants of a formula, both tables side by side, and files of tables."""
from __future__ import annotations

import argparse
import os
from typing import Any, Optional, Sequence

from . import common

_EPILOG = """examples:
  tolvik-materials SiO2 --energy CuKa
  tolvik-materials Co:8.9 --energy 770:800:0.5 --source chantler --write Co
  tolvik-materials Co:8.9 --kk absorption.txt --write Co
  tolvik-materials Co:8.9 --magnetic helicities.txt --write Co
  tolvik-materials list"""


def parser() -> common.Parser:
    """The options of the command."""
    made = common.Parser(
        "tolvik-materials",
        "Optical constants n = 1 - delta + i beta of a material, and their tables.",
        epilog=_EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    common.add_common(made)
    made.add_argument(
        "formula", metavar="FORMULA", help="SiO2, Co:8.9 (density in g/cm3), or list for the known densities"
    )
    made.add_argument("--density", type=float, metavar="D", help="density in g/cm3")
    made.add_argument(
        "--energy",
        type=common.energies,
        metavar="E|E1:E2:dE",
        help="photon energy in eV, a range of them, or a line as CuKa (default: CuKa)",
    )
    made.add_argument(
        "--source",
        choices=("henke", "chantler", "both"),
        default="both",
        help="table of scattering factors (default: both; for files henke, for measured spectra chantler)",
    )
    made.add_argument("--edges", action="store_true", help="list the absorption edges")
    made.add_argument(
        "--kk", metavar="FILE", help="measured absorption, columns energy and mu: delta by Kramers-Kronig"
    )
    made.add_argument(
        "--magnetic",
        metavar="FILE",
        help="measured dichroism, columns energy, mu of left and of right circular light along the magnetisation",
    )
    made.add_argument("--as-is", action="store_true", help="the measured columns are beta itself and are not scaled")
    made.add_argument(
        "--write", metavar="STEM", help="write STEM.db (and STEM.ff of an element, STEM.m with --magnetic)"
    )
    return made


def work(arguments: argparse.Namespace) -> Optional[int]:
    """Runs the command."""
    from .. import materials
    from ..errors import MaterialError

    if arguments.formula == "list":
        _list(arguments)
        return None
    if arguments.kk and arguments.magnetic:
        raise MaterialError("--kk and --magnetic are there together; the mean of --magnetic is the absorption of --kk")
    material = materials.parse(arguments.formula, arguments.density)
    if arguments.edges:
        _edges(arguments, material)
    elif arguments.kk or arguments.magnetic:
        _measured(arguments, material)
    elif arguments.write:
        _write(arguments, material)
    else:
        _constants(arguments, material)
    return None


def _energies(arguments: argparse.Namespace) -> Any:
    from ..materials.table import grid

    given = arguments.energy if arguments.energy is not None else common.LINES["cuka"]
    return grid(*given) if isinstance(given, tuple) else [given]


def _constants(arguments: argparse.Namespace, material: Any) -> None:
    from .. import materials

    energy = _energies(arguments)
    record: dict[str, Any] = {
        "formula": material.formula,
        "density": material.density,
        "density_source": material.density_source,
    }
    if arguments.source == "both":
        found = materials.compare(material, None, energy)
        record.update(
            energy=list(found.energy),
            ranges=found.ranges,
            spread_delta=common.without_nan(found.spread("delta")),
            spread_beta=common.without_nan(found.spread("beta")),
            edge=[str(edge) if edge else None for edge in found.nearest],
            distance=common.without_nan(found.distance),
            constants={
                s: {"delta": common.without_nan(found.delta[s]), "beta": common.without_nan(found.beta[s])}
                for s in found.delta
            },
        )
        record["energy"] = common.without_nan(found.energy)
        common.show(arguments, str(found), record)
        return
    delta, beta = materials.delta_beta(material, None, energy, arguments.source)
    record.update(source=arguments.source, energy=list(energy), delta=delta, beta=beta)
    lines = [
        f"# {material.formula}, {material.density:g} g/cm3 ({material.density_source}), {arguments.source}",
        "# energy (eV), delta, beta",
    ]
    common.show(
        arguments, "\n".join(lines + [f"{e:.10g} {d:.9e} {b:.9e}" for e, d, b in zip(energy, delta, beta)]), record
    )


def _write(arguments: argparse.Namespace, material: Any) -> None:
    from .. import materials

    source = "henke" if arguments.source == "both" else arguments.source
    suffixes = [".db", ".ff"] if material.element else [".db"]
    paths = materials.write_tables(
        arguments.write, material, None, _energies(arguments), source=source, suffixes=suffixes
    )
    common.show(arguments, "\n".join(paths), {"files": paths, "source": source})


def _measured(arguments: argparse.Namespace, material: Any) -> None:
    from .. import materials

    source = "chantler" if arguments.source == "both" else arguments.source
    scale = not arguments.as_is
    if arguments.magnetic:
        tables = dict(zip((".db", ".m"), materials.dichroism(arguments.magnetic, material, source=source, scale=scale)))
    else:
        tables = {".db": materials.kramers_kronig(arguments.kk, material, source=source, scale=scale)}
    if arguments.write:
        paths = [os.fspath(arguments.write) + suffix for suffix in tables]
        for path, table in zip(paths, tables.values()):
            table.save(path)
        common.show(arguments, "\n".join(paths), {"files": paths, "source": source})
        return
    lines, record = [], {}
    for suffix, table in tables.items():
        record[suffix] = {"energy": table.energy, "delta": table.delta, "beta": table.beta, "origin": table.origin}
        lines += [f"# {table.origin}"] + [
            f"{e:.10g} {d:.9e} {b:.9e}" for e, d, b in zip(table.energy, table.delta, table.beta)
        ]
    common.show(arguments, "\n".join(lines), record)


def _edges(arguments: argparse.Namespace, material: Any) -> None:
    from .. import materials

    found = materials.edges(material)
    common.show(
        arguments,
        "\n".join(f"{edge.energy:>10.1f} {edge.element} {edge.name}" for edge in found) or "no edges",
        [{"element": edge.element, "name": edge.name, "energy": edge.energy} for edge in found],
    )


def _list(arguments: argparse.Namespace) -> None:
    from ..materials.formula import known_densities

    known = known_densities()
    common.show(
        arguments,
        "\n".join(f"{name:<8} {density:>8.4g} g/cm3  {source}" for name, density, source in known),
        [{"formula": name, "density": density, "source": source} for name, density, source in known],
    )


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Entry point; returns the exit value."""
    return common.run(parser(), work, arguments)


if __name__ == "__main__":
    common.main_of(main)
