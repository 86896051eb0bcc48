#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Writes the state files of this folder, with the source of every optical constant in their comment lines.

    write_examples.py            writes them beside this script
    write_examples.py FOLDER     writes them into FOLDER (the test compares)

Optical constants at 8048 eV (Cu K-alpha1, 1.5405 angstrom), from the scattering factors f1 = Z + f' and f2 = f'':

    delta = r_e lambda^2 n_a f1 / (2 pi)        beta = r_e lambda^2 n_a f2 / (2 pi)

with the classical electron radius r_e = 2.8179403e-5 angstrom and the atoms per volume n_a = rho N_A / A. f' and f''
for Cu K-alpha are those of International Tables for Crystallography, Vol. C (1992), table 4.2.6.8.
"""
import math
import pathlib
import random
import sys

import textbook

ENERGY = 8048.0
R_E = 2.8179403e-5  # angstrom
AVOGADRO = 0.602214076  # per mol, in units of 1e24: g/cm^3 over g/mol gives atoms per cubic angstrom
# symbol: Z, atomic weight, f', f''
ATOMS = {"O": (8, 15.999, 0.0492, 0.0322), "Si": (14, 28.0855, 0.2541, 0.3302), "Ni": (28, 58.6934, -3.0029, 0.5091),
         "Mo": (42, 95.95, -0.0483, 2.7339)}
# material: atoms of the formula, density in g/cm^3
MATERIALS = {"Si": ({"Si": 1}, 2.329), "SiO2": ({"Si": 1, "O": 2}, 2.20), "Ni": ({"Ni": 1}, 8.908),
             "Mo": ({"Mo": 1}, 10.22)}


class Material:
    def __init__(self, name):
        formula, self.density = MATERIALS[name]
        weight = sum(count * ATOMS[atom][1] for atom, count in formula.items())
        self.f1 = sum(count * (ATOMS[atom][0] + ATOMS[atom][2]) for atom, count in formula.items())
        self.f2 = sum(count * ATOMS[atom][3] for atom, count in formula.items())
        self.per_volume = self.density * AVOGADRO / weight
        wavelength = textbook.ENERGY_TIMES_LAMBDA / ENERGY
        factor = R_E * wavelength**2 * self.per_volume / (2 * math.pi)
        self.name, self.delta, self.beta = name, float(f"{factor * self.f1:.4e}"), float(f"{factor * self.f2:.4e}")

    def source(self):
        return (f"# {self.name}: rho = {self.density} g/cm^3, n = {self.per_volume:.5f} formula units per A^3, "
                f"f1 = {self.f1:.4f}, f2 = {self.f2:.4f}: delta = {self.delta:g}, beta = {self.beta:g}")


def layer_lines(stack):
    """stack: (material or None, thickness, sigma of the upper interface), substrate first, ambient last."""
    lines = ["", "# layers from the substrate to the ambient; layer_sigma is the roughness of a layer's upper interface",
             "layerversion = 3"]
    for index, (material, thickness, sigma) in enumerate(stack):
        lines += [f" layer = {index}", f"  layer_d = {thickness:g}",
                  f"  layer_db = {material.name if material else 'vacuum'}",
                  f"  layer_delta = {material.delta if material else 0:g}",
                  f"  layer_beta = {material.beta if material else 0:g}", f"  layer_sigma = {sigma:g}"]
    return lines


def head(title, stack, qzmax, points):
    lines = [f"# {title}", "#",
             "# Optical constants at 8048 eV: delta = r_e lambda^2 n f1 / (2 pi), beta likewise with f2, r_e = 2.8179403e-5 A,",
             "# lambda = 12398.326 / 8048 = 1.540547 A; f1 = Z + f' and f2 = f'' from International Tables for",
             "# Crystallography, Vol. C (1992), table 4.2.6.8 (Cu K-alpha)."]
    lines += sorted({material.source() for material, _, _ in stack if material})
    lines += ["", "fileversion = 1", f"energy = {ENERGY:g}", "resolution = 0", f"qzmax = {qzmax:g}",
              f"numberofpoints = {points}"]
    return lines + layer_lines(stack)


def measured_lines(true_stack, count=120, qzmax=0.36):
    """Counts of a detector: Poisson-like noise (normal, standard deviation the root of the mean) on 1e7 R + 2."""
    beam, background = 1e7, 2.0
    noise = random.Random(1754)
    layers = [{"d": d, "sigma": s, "delta": m.delta if m else 0.0, "beta": m.beta if m else 0.0}
              for m, d, s in true_stack]
    lines = ["", "# Not measured: calculated by textbook.py for a film of 212 A with roughness 5.5 A on the film and 3 A below,",
             f"# as counts = {beam:g} R + {background:g} with counting noise (random.Random(1754)), divided by {beam:g}.",
             "activedatasetindex = 1", "measurementdataversion = 2", "datasetnumber = 1", " datasettitle = nickel",
             f" datasetenergy = {ENERGY:g}", " datasetactive = 1", f" datasetpoints = {count}"]
    for i in range(count):
        qz = 0.01 + i * (qzmax - 0.01) / (count - 1)
        mean = beam * textbook.reflectivity(layers, ENERGY, qz) + background
        counts = max(1, round(noise.gauss(mean, math.sqrt(mean))))
        lines += [f"  dataset_qz = {qz:.5f}", f"  dataset_R0 = {counts / beam:.7e}"]
    return lines


def fit_lines():
    lines = ["", "# what a fit may change: thickness, delta and roughness of the film, roughness of the substrate",
             "fitqzmin = 0.04", "fitqzmax = 0.36", "evo_random = 1", "fitvariableversion = 1"]
    variables = [(0, 1, 205, 1, 180, 240), (1, 1, 2.4e-05, 1e-07, 2e-05, 3e-05), (3, 1, 4, 0.2, 0, 12),
                 (3, 0, 4, 0.2, 0, 12)]
    for number, (kind, layer, value, step, low, high) in enumerate(variables, 1):
        lines += [f" fit_variable = {number}", f"  fit_id = {kind}", f"  fit_additional_id = {layer}",
                  f"  fit_value = {value:g}", f"  fit_delta = {step:g}", f"  fit_lower_boundary = {low:g}",
                  f"  fit_upper_boundary = {high:g}"]
    return lines


def examples():
    si, oxide, nickel, molybdenum = (Material(name) for name in ("Si", "SiO2", "Ni", "Mo"))
    yield "silicon", head("A bare silicon wafer", [(si, 0, 3), (None, 0, 0)], 0.5, 501)
    yield "oxide_on_silicon", head("SiO2, 300 A, on silicon", [(si, 0, 2), (oxide, 300, 4), (None, 0, 0)], 0.4, 801)
    mirror = [(si, 0, 3)] + [(molybdenum, 28, 3.5), (si, 41, 4.5)] * 40 + [(None, 0, 0)]
    yield "mo_si_mirror", head("A Mo/Si multilayer mirror: 40 periods of 28 A Mo and 41 A Si", mirror, 0.6, 1201)
    lines = head("A nickel film of about 200 A on silicon, with a dataset to fit", [(si, 0, 4), (nickel, 205, 4), (None, 0, 0)],
                 0.36, 361)
    true_stack = [(si, 0, 3), (nickel, 212, 5.5), (None, 0, 0)]
    yield "nickel_film", lines + fit_lines() + measured_lines(true_stack)


if __name__ == "__main__":
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent
    for name, content in examples():
        (folder / f"{name}.state").write_text("\n".join(content) + "\n", encoding="utf-8")
