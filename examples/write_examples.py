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


def slice_lines(step):
    return ["", "# every interface as an error function, in even slices", "layersegmentationmode = 1", "segmentationmodel = 2",
            f"minlayerthickness = {step:g}", f"maxlayerthickness = {step:g}", "gradientscale = 0"]


def circular_light():
    """Both rays of circular light, left and right."""
    half = 0.7071067811865475
    return ["", "# left and right circular: sigma and pi part, real and imaginary",
            f"ray1sigmare = {half}", "ray1sigmaim = 0", "ray1pire = 0", f"ray1piim = {half}",
            f"ray2sigmare = {half}", "ray2sigmaim = 0", "ray2pire = 0", f"ray2piim = {-half}"]


def magnetic_layers(stack):
    """stack: (name, thickness, delta, beta, deltam, betam, roughness), from the substrate up."""
    lines = ["", "# layers from the substrate to the ambient", "layerversion = 3"]
    for index, (name, d, delta, beta, deltam, betam, sigma) in enumerate(stack):
        lines += [f" layer = {index}", f"  layer_d = {d:g}", f"  layer_db = {name}", f"  layer_delta = {delta:g}",
                  f"  layer_beta = {beta:g}", f"  layer_ddelta = {deltam:g}", f"  layer_dbeta = {betam:g}",
                  f"  layer_sigma = {sigma:g}"]
    return lines


def magnetic_head(title, points):
    return [f"# {title}", "#",
            "# All optical constants are made up for illustration; their size is that of a 3d metal near its L3 edge.",
            "# Algorithm 0 takes the magnetisation along the beam as a shift of the index: ray 1 is left circular light.",
            "", "fileversion = 1", "energy = 707", "resolution = 0", "qzmax = 0.5", f"numberofpoints = {points}",
            "algorithm = 0"] + circular_light()


def magnetic_lines():
    """A film with a dead layer at its top. The constants are made up; only their size is that of a 3d metal."""
    stack = [("vacuum", 0, 0.0012, 0.0004, 0, 0, 3), ("vacuum", 80, 0.0025, 0.0021, 0.0006, -0.0008, 4),
             ("vacuum", 20, 0.0016, 0.0006, 0, 0, 3), ("vacuum", 0, 0, 0, 0, 0, 0)]
    lines = magnetic_head("A magnetic film of 80 A under a cap of 20 A, for circular light, with a dead layer at the top "
                          "of the film", 251)
    return lines + magnetic_layers(stack) + slice_lines(1) + [
        "", "# 2: the gauss functions act; the magnetisation points along the beam", "magnetizationmode = 2",
        "maggamma = 90", "magphi = 90", "", "# nine tenths of the moment are gone at 78 A, 37 % at 8 A from there",
        "magneticversion = 4", " gauss_function = 1", " gauss_delta = -0.9", " gauss_beta = -0.9",
        " gauss_variance = 6", " gauss_z = 78", " gauss_bindtolayer = -1"]


def trilayer_lines():
    """A few atomic planes of a magnet between two thin layers: small enough for one screen of the page."""
    stack = [("substrate", 0, 0.0012, 0.0004, 0, 0, 2), ("seed", 8, 0.0016, 0.0006, 0, 0, 2),
             ("film", 6, 0.0025, 0.0021, 0.0006, -0.0008, 2), ("cap", 8, 0.0016, 0.0006, 0, 0, 2),
             ("vacuum", 0, 0, 0, 0, 0, 0)]
    return magnetic_head("A magnetic film of 6 A between two layers of 8 A, for circular light", 251) + \
        magnetic_layers(stack) + ["", "# the magnetisation points along the beam", "magnetizationmode = 1",
                                  "maggamma = 90", "magphi = 90"]


def element_lines(film, substrate, thickness):
    """One block per element: its density in mol/cm^3 in the substrate, the film and the ambient."""
    lines = [f"# {film} film of {thickness:g} A on {substrate}, by chemical elements", "#",
             "# f1 = Z + f' and f2 = f'' at 8048 eV from International Tables for Crystallography, Vol. C (1992),",
             "# table 4.2.6.8 (Cu K-alpha); densities in mol/cm^3 are mass density over atomic weight:"]
    blocks = ["", "mode = 1", "elementlayerversion = 1"]
    for name, shares in ((film, (0, 1, 0)), (substrate, (1, 0, 0))):
        number, weight, f_prime, f2 = ATOMS[name]
        density = MATERIALS[name][1] / weight
        lines.append(f"# {name}: {MATERIALS[name][1]} g/cm^3 / {weight} g/mol = {density:.6f} mol/cm^3")
        blocks += [f" element = {name}", f" el_f1 = {number + f_prime:.4f}", f" el_f2 = {f2:.4f}"]
        for index, share in enumerate(shares):
            blocks += [f"  el_layer = {index}", f"  el_d = {thickness if index == 1 else 0:g}",
                       f"  el_density = {density * share:.6f}", f"  el_sigma = {(3, 5, 0)[index]}"]
    return lines + ["", "fileversion = 1", f"energy = {ENERGY:g}", "resolution = 0", "qzmax = 0.4", "numberofpoints = 401"] + blocks


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
    superlattice = [(si, 0, 3)] + [(molybdenum, 12, 5), (si, 18, 6)] * 10 + [(None, 0, 0)]
    yield "rough_superlattice", head("A Mo/Si superlattice whose roughness is near half of its layers, sliced", superlattice,
                                     0.6, 601) + slice_lines(0.5)
    yield "magnetic_film", magnetic_lines()
    yield "magnetic_trilayer", trilayer_lines()
    yield "nickel_elements", element_lines("Ni", "Si", 120)


if __name__ == "__main__":
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent
    for name, content in examples():
        (folder / f"{name}.state").write_text("\n".join(content) + "\n", encoding="utf-8")
