#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Writes the tables and the state of this folder: a film that is like cobalt at its L edges.

    write_tables.py            writes them beside this script
    write_tables.py FOLDER     writes them into FOLDER (the test compares)

These are not measured constants. They are Lorentz oscillators, so delta and beta obey the Kramers-Kronig relation; their
positions and strengths are near those of cobalt:

    -delta + i beta = 1/2 sum_j A_j / (E_j^2 - E^2 - i G_j E) + background

The magnetic constants deltam and betam are the same sum with the strengths B_j, of opposite sign at the two edges, as
spin and orbit demand; the two helicities have delta +- deltam and beta +- betam. The background of all materials is
delta = delta_0 (E_0/E)^2, beta = beta_0 (E_0/E)^3 at E_0 = 778.1 eV, the usual fall far from edges.
"""
import pathlib
import sys

E_0 = 778.1
# E_j eV, G_j eV, A_j eV^2, B_j eV^2
OSCILLATORS = [(778.1, 1.6, 13.0, 2.4), (793.2, 2.2, 7.5, -1.5)]
# delta_0, beta_0
BACKGROUND = {"cobalt": (1.9e-3, 7.0e-4), "silicon": (8.0e-4, 1.8e-4), "cap": (1.1e-3, 3.0e-4), "vacuum": (0.0, 0.0)}
RESONANT = {"cobalt"}


def energies():
    """2 eV steps from 740 to 840 eV, a tenth of that around the edges."""
    return [round(0.2 * k, 1) for k in range(3700, 4201) if k % 10 == 0 or 3850 <= k <= 4000]


def lorentz(energy, strength):
    """-delta + i beta of the oscillators; strength: 2 for A, 3 for B."""
    return 0.5 * sum(o[strength] / complex(o[0] ** 2 - energy**2, -o[1] * energy) for o in OSCILLATORS)


def constants(material, energy):
    """delta, beta, deltam, betam"""
    delta_0, beta_0 = BACKGROUND[material]
    n = complex(-delta_0 * (E_0 / energy) ** 2, beta_0 * (E_0 / energy) ** 3)
    m = 0j
    if material in RESONANT:
        n += lorentz(energy, 2)
        m = lorentz(energy, 3)
    return tuple(value + 0.0 for value in (-n.real, n.imag, -m.real, m.imag))  # no negative zeros


STATE = """\
# 150 A of a film like cobalt on silicon under a 20 A cap, in circular light at the L3 edge.
# The tables *.db and *.m are Lorentz oscillators, no measurement: see write_tables.py. Run it in this folder, since
# the stems in layer_db count from the working directory.

fileversion = 1
energy = 778.1
qzmax = 0.4
numberofpoints = 401
resolution = 0.001

# constants from the tables at each energy; tensors, since the light is circular and the film magnetic
ocautomatic = 1
algorithm = 1
magnetizationmode = 1

# magnetisation in the surface along the beam (longitudinal geometry)
maggamma = 90
magphi = 90

# the two helicities: (1, +i) and (1, -i) over root 2 in (sigma, pi)
ray1sigmare = 0.70710678
ray1sigmaim = 0
ray1pire = 0
ray1piim = 0.70710678
ray2sigmare = 0.70710678
ray2sigmaim = 0
ray2pire = 0
ray2piim = -0.70710678

# the energy scan of -escan, which also loads the tables for -dicrefl
engscanqz = 0.15
engscanmin = 770
engscanmax = 800
"""
# stem, thickness, roughness, from the substrate up
LAYERS = [("silicon", 0, 3), ("cobalt", 150, 4), ("cap", 20, 4), ("vacuum", 0, 0)]


def state():
    lines = [STATE, "layerversion = 3"]
    for index, (stem, thickness, sigma) in enumerate(LAYERS):
        delta, beta, deltam, betam = constants(stem, E_0)
        lines += [f" layer = {index}", f"  layer_d = {thickness:g}", f"  layer_db = {stem}",
                  f"  layer_delta = {delta:.5e}", f"  layer_beta = {beta:.5e}", f"  layer_ddelta = {deltam:.5e}",
                  f"  layer_dbeta = {betam:.5e}", f"  layer_sigma = {sigma:g}"]
    return "\n".join(lines) + "\n"


def table(material, columns, what):
    lines = [f"# {material}: Lorentz oscillators of write_tables.py, not measured", f"# energy (eV), {what}"]
    for energy in energies():
        values = constants(material, energy)
        lines.append(f"{energy:.1f} {values[columns]:.9e} {values[columns + 1]:.9e}")
    return "\n".join(lines) + "\n"


if __name__ == "__main__":
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent
    for name in BACKGROUND:
        (folder / f"{name}.db").write_text(table(name, 0, "delta, beta"), encoding="utf-8")
        (folder / f"{name}.m").write_text(table(name, 2, "deltam, betam"), encoding="utf-8")
    (folder / "cobalt.state").write_text(state(), encoding="utf-8")
