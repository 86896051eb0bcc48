# SPDX-License-Identifier: GPL-2.0-or-later
"""tolvik-ort: measured data into a state file and out of it, and a look into a file."""
from __future__ import annotations

import argparse
import os
from typing import TYPE_CHECKING, Any, Optional, Sequence

from . import common

if TYPE_CHECKING:
    from ..data import Data

_WIDTHS = ("sigma", "fwhm", "half", "percent", "percent_fwhm")


def parser() -> common.Parser:
    """The options of the command."""
    made = common.Parser(
        "tolvik-ort", "Reads and writes files of measured data: .ort, .orb, columns of text, .xrdml, .ras, .spec."
    )
    commands = made.add_subparsers(metavar="COMMAND", required=True, parser_class=common.PlainParser)
    shown = _command(commands, "show", "list the data sets of files", _show)
    _add_reading(shown)
    shown.add_argument("files", metavar="FILE", nargs="+", help="files of data")
    taken = _command(commands, "in", "put data sets into a copy of a state", _in)
    _add_reading(taken)
    taken.add_argument("state", metavar="STATE", help="state file; it is not changed")
    taken.add_argument("files", metavar="FILE", nargs="+", help="files of data")
    taken.add_argument(
        "--match", choices=("polarization",), help="take only data sets of the polarization of the state"
    )
    taken.add_argument("-o", "--output", metavar="NEW", required=True, help="state file to write")
    given = _command(commands, "out", "write the curve or the data sets of a state as .ort", _out)
    given.add_argument("state", metavar="STATE", help="state file")
    which = given.add_mutually_exclusive_group()
    which.add_argument("--curve", action="store_true", help="the calculated curve (default)")
    which.add_argument("--data", action="store_true", help="the measured data sets")
    given.add_argument("--model", action="store_true", help="add the layers as a sample model")
    given.add_argument("-o", "--output", metavar="F.ort", required=True, help="file to write")
    return made


def _command(commands: Any, name: str, text: str, work: Any) -> common.PlainParser:
    made: common.PlainParser = commands.add_parser(
        name, help=text, description=text.capitalize() + ".", allow_abbrev=False
    )
    common.add_common(made)
    made.set_defaults(work=work, prog="tolvik-ort")
    return made


def _add_reading(made: common.PlainParser) -> None:
    made.add_argument(
        "--format",
        choices=("ort", "orb", "columns", "xrdml", "ras", "spec"),
        help="format, if the suffix does not say it",
    )
    made.add_argument(
        "--dq-is", choices=_WIDTHS, help="convention of the width of q in the file (default: what it says, else sigma)"
    )
    made.add_argument("--columns", metavar="NAMES", help="names of the columns of a text, as 2theta,counts")
    made.add_argument("--energy", type=common.energy, metavar="E", help="photon energy in eV, or a line as CuKa")
    made.add_argument(
        "--footprint",
        nargs=2,
        type=float,
        metavar=("LENGTH", "BEAM"),
        help="correct for a short sample; lengths in one unit",
    )
    made.add_argument("--background", metavar="VALUE", help="subtract a constant, or auto")
    made.add_argument("--normalise", action="store_true", help="divide by the intensity of total reflection")


def work(arguments: argparse.Namespace) -> Optional[int]:
    """Runs the command."""
    result: Optional[int] = arguments.work(arguments)
    return result


def _read(arguments: argparse.Namespace) -> list["Data"]:
    from ..formats import read

    found = []
    for path in arguments.files:
        for data in read(path, arguments.format, arguments.dq_is, columns=arguments.columns, energy=arguments.energy):
            if arguments.footprint:
                data = data.footprint(*arguments.footprint)
            if arguments.background is not None:
                data = data.background(arguments.background)
            found.append(data.normalise() if arguments.normalise else data)
    return found


def _record(data: "Data") -> dict[str, Any]:
    said = data.polarization
    return {
        "file": data.source,
        "name": data.name,
        "points": len(data),
        "masked": data.n_masked,
        "q": [float(data.x.min()), float(data.x.max())],
        "r": [float(data.y.min()), float(data.y.max())],
        "errors": data.dr is not None,
        "sigma_q": None if data.dq is None else [float(data.dq[~data.mask].min()), float(data.dq[~data.mask].max())],
        "energy": data.energy if data.energy is None or isinstance(data.energy, float) else data.energy.tolist(),
        "polarization": said if said is None or isinstance(said, str) else said.ravel().tolist(),
    }


def _show(arguments: argparse.Namespace) -> None:
    found = _read(arguments)
    lines = []
    for data in found:
        width = (
            "none" if data.dq is None else f"{data.dq[~data.mask].min():.3g} to {data.dq[~data.mask].max():.3g} (sigma)"
        )
        energy = (
            "unknown"
            if data.energy is None
            else f"{data.energy:g} eV" if isinstance(data.energy, float) else "one per point"
        )
        lines += [
            f"{data.source}: {data.name or 'data'}",
            f"  points  {len(data)}, {data.n_masked} masked",
            f"  q       {data.x.min():.5g} to {data.x.max():.5g} 1/angstrom",
            f"  R       {data.y.min():.4g} to {data.y.max():.4g}{'' if data.dr is None else ', with errors'}",
            f"  dq      {width}",
            f"  energy  {energy}",
            f"  rays    {'unknown' if data.polarization is None else data.polarization}",
        ]
    common.show(arguments, "\n".join(lines), [_record(data) for data in found])


def _in(arguments: argparse.Namespace) -> None:
    from .. import load, polarization
    from ..errors import DataError, DataFileError

    if os.path.realpath(arguments.output) == os.path.realpath(arguments.state):
        raise DataFileError(f"{arguments.output}: is the state itself; write to another name")
    state = load(arguments.state)
    found = _read(arguments)
    if arguments.match:
        wanted = polarization.name_of_ray(state.rays[0])
        found = [data for data in found if data.rays is not None and polarization.name_of_ray(data.rays[0]) == wanted]
        if not found:
            raise DataError(f"no data set of polarization {wanted}; leave --match away or set the rays of the state")
    for data in found:
        state.attach(data)
    state.save(arguments.output, exact=True)  # measured numbers keep all their digits
    common.show(
        arguments,
        f"{arguments.output}: {len(found)} data sets",
        {"file": arguments.output, "data": [_record(data) for data in found]},
    )


def _out(arguments: argparse.Namespace) -> None:
    from .. import load
    from ..formats import write_ort

    state = load(arguments.state)
    found = _measured(state, arguments.state) if arguments.data else [_calculated(state, arguments.state)]
    write_ort(arguments.output, found, _model(state) if arguments.model else None)
    common.show(
        arguments,
        f"{arguments.output}: {len(found)} data sets",
        {"file": arguments.output, "data": [_record(data) for data in found]},
    )


def _calculated(state: Any, path: str) -> "Data":
    import numpy as np

    from .. import curve
    from ..data import Data

    q = np.arange(state.numberofpoints) * (state.qzmax / max(state.numberofpoints - 1, 1))
    found = curve(state, q)
    width = state.resolution / 2  # a half width r of the file is two sigma
    return Data(
        found.q,
        found.R,
        None,
        width if width > 0 else None,
        energy=float(state.energy),
        polarization=state.rays,
        name="calculated",
        source=path,
    )


def _measured(state: Any, path: str) -> list["Data"]:
    from ..data import Data
    from ..errors import DataError

    found = []
    for index, dataset in enumerate(state.datasets):
        asymmetry = len(dataset.dataset_R0) == 0 and len(dataset.dataset_A) > 0
        values = dataset.dataset_A if asymmetry else dataset.dataset_R0
        if len(dataset.dataset_qz) == 0 or len(values) != len(dataset.dataset_qz):
            continue
        rays = [
            [getattr(dataset, f"datasetray{i}{name}") for name in ("sigmare", "sigmaim", "pire", "piim")]
            for i in (1, 2)
        ]
        width = dataset.datasetresolution / 2
        found.append(
            Data(
                dataset.dataset_qz,
                values,
                None,
                width if width > 0 else None,
                energy=dataset.datasetenergy or state.energy,
                polarization="asymmetry" if asymmetry else rays,
                name=dataset.datasettitle or f"dataset {index}",
                source=path,
            )
        )
    if not found:
        raise DataError(f"{path}: no dataset with points; write the curve with --curve")
    return found


def _model(state: Any) -> dict[str, Any]:
    """The layers as a sample model of ORSO, beam side first, with the constants at the energy of the state."""
    import math

    from ..units import wavelength_from_energy

    layers = list(state.layers)
    names = [f"{layer.layer_db or 'layer'}_{index}" for index, layer in enumerate(layers)]
    wave = 2 * math.pi / wavelength_from_energy(state.energy) ** 2  # SLD = 2 pi (delta + i beta) / lambda²
    described = {
        name: {
            "thickness": {"magnitude": float(layer.layer_d), "unit": "angstrom"},
            "roughness": {"magnitude": float(layer.layer_sigma), "unit": "angstrom"},
            "material": {
                "sld": {
                    "real": float(wave * layer.layer_delta),
                    "imag": float(wave * layer.layer_beta),
                    "unit": "1/angstrom^2",
                }
            },
        }
        for name, layer in zip(names, layers)
    }
    return {"stack": " | ".join(reversed(names)), "origin": "Tolvik", "layers": described}


def main(arguments: Optional[Sequence[str]] = None) -> int:
    """Entry point; returns the exit value."""
    return common.run(parser(), work, arguments)


if __name__ == "__main__":
    common.main_of(main)
