#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Writes the files of this folder: tables of optical constants, a state and Map.dat, an energy series over an edge.

    write_series.py            writes them beside this script
    write_series.py FOLDER     writes them into FOLDER

Nothing here is measured. The film is a made-up material, a free-electron background, one damped oscillator at 709 eV
and a constant absorption of other shells:  n = 1 - delta + i beta,
n - 1 = (-A + f w^2 / (w0^2 - w^2 - i g w)) / w^2 + 4e-4 i;  the substrate has one delta and one beta at all energies.
Map.dat is the reflectivity of 306 A of it, roughness 6 A, by the plain Parratt recursion of textbook.py, with noise
of 3 % (random.Random(709)). The state begins at 300 A and 4 A.
"""
import pathlib
import random
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))
import textbook  # noqa: E402

ELECTRONS, STRENGTH, CENTRE, WIDTH = 1900.0, 9.0, 709.0, 3.0  # eV^2, eV^2, eV, eV
SUBSTRATE = (1.2e-3, 6e-4)


def film(energy):
    chi = (-ELECTRONS + STRENGTH * energy**2 / (CENTRE**2 - energy**2 - 1j * WIDTH * energy)) / energy**2
    return -chi.real, chi.imag + 4e-4  # other shells absorb too


def table(rows):
    return "# photon energy (eV), delta, beta\n" + "".join(f"{e:.2f} {d:.6e} {b:.6e}\n" for e, (d, b) in rows)


def measured():
    noise = random.Random(709)
    lines = ["# energy (eV), qz (1/A), reflectivity, polarisation"]
    for energy in range(700, 721, 2):
        delta, beta = film(energy)
        layers = [{"d": 0.0, "delta": SUBSTRATE[0], "beta": SUBSTRATE[1], "sigma": 3.0},
                  {"d": 306.0, "delta": delta, "beta": beta, "sigma": 6.0},
                  {"d": 0.0, "delta": 0.0, "beta": 0.0, "sigma": 0.0}]
        for i in range(60):
            qz = 0.02 + 0.004 * i
            r = textbook.reflectivity(layers, energy, qz) * noise.gauss(1, 0.03)
            lines.append(f"{energy} {qz:.3f} {r:.6e} s")
    return "\n".join(lines) + "\n"


STATE = """# A film over an absorption edge, to be fitted at each energy of Map.dat; optical constants from the .db tables
fileversion = 1
energy = 700
layerversion = 3
 layer = 0
  layer_db = substrate
  layer_sigma = 3
 layer = 1
  layer_db = film
  layer_d = 300
  layer_sigma = 4
 layer = 2
  layer_db = vacuum
ocautomatic = 1
fitalgorithm = 1
fitqzmin = 0.02
fitqzmax = 0.3
fitvariableversion = 1
 fit_variable = 1
  fit_id = 0
  fit_additional_id = 1
  fit_value = 300
  fit_delta = 1
  fit_lower_boundary = 280
  fit_upper_boundary = 330
 fit_variable = 2
  fit_id = 3
  fit_additional_id = 1
  fit_value = 4
  fit_delta = 0.5
  fit_lower_boundary = 0
  fit_upper_boundary = 15
"""


def main(folder):
    energies = [690 + 0.25 * i for i in range(161)]
    files = {"film.db": table((e, film(e)) for e in energies), "substrate.db": table((e, SUBSTRATE) for e in (690, 730)),
             "vacuum.db": table((e, (0, 0)) for e in (690, 730)), "Map.dat": measured(), "film.state": STATE}
    for name, text in files.items():
        (folder / name).write_text(text, encoding="ascii")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else HERE)
