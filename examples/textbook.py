#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The textbook calculation of the examples: a plain Parratt recursion for sigma polarisation.

It shares no code with the program: it makes the measured points of the nickel example, and the tests compare the curve
of every example with it. Parratt, Phys. Rev. 95, 359 (1954); roughness factor exp(-2 k_a k_b s^2) of Nevot and
Croce, Rev. Phys. Appl. 15, 761 (1980). Lengths in angstrom, qz in 1/angstrom, energy in eV.

    textbook.py curve STATE      qz and R on the state's grid
    textbook.py profile STATE    height and delta through the interfaces, for drawing
"""
import cmath
import math
import sys

ENERGY_TIMES_LAMBDA = 12398.326  # eV angstrom


def read_state(path):
    """Returns layers (substrate first; dicts of d, delta, beta, sigma) and numbers: the keys that these examples use."""
    layers, numbers = [], {}
    with open(path, encoding="utf-8") as file:
        for line in file:
            key, sign, value = line.split("#")[0].partition("=")
            key, value = key.strip(), value.strip()
            if key == "layer":
                layers.append(dict.fromkeys(("d", "delta", "beta", "sigma"), 0.0))
            elif key.startswith("layer_") and key[6:] in ("d", "delta", "beta", "sigma"):
                layers[-1][key[6:]] = float(value)
            elif sign and key in ("energy", "qzmax", "numberofpoints"):
                numbers[key] = float(value)
    return layers, numbers


def reflectivity(layers, energy, qz):
    """|r|^2 of the stack; layers from the substrate to the ambient, sigma at the upper interface of each."""
    k0 = 2 * math.pi * energy / ENERGY_TIMES_LAMBDA
    cos2 = 1 - (qz / (2 * k0)) ** 2
    kz = [k0 * cmath.sqrt((1 - layer["delta"] + 1j * layer["beta"]) ** 2 - cos2) for layer in layers]
    r = 0
    for lower in range(len(layers) - 1):
        a, b = kz[lower + 1], kz[lower]
        fresnel = (a - b) / (a + b) if a + b != 0 else 0
        fresnel *= cmath.exp(-2 * a * b * layers[lower]["sigma"] ** 2)
        phase = cmath.exp(2j * b * layers[lower]["d"]) if lower > 0 else 0
        r = (fresnel + r * phase) / (1 + fresnel * r * phase)
    return abs(r) ** 2


def grid(numbers):
    count = int(numbers["numberofpoints"])
    return [numbers["qzmax"] * (1 / (count - 1)) * i for i in range(count)]


def depth_profile(layers, step=0.5, margin=30.0):
    """(z, delta) with z = 0 at the substrate's surface; each interface an error function of its sigma."""
    heights = [0.0]
    for layer in layers[1:-1]:
        heights.append(heights[-1] + layer["d"])
    points = []
    z = -margin
    while z <= heights[-1] + margin:
        value = layers[0]["delta"]
        for height, lower, upper in zip(heights, layers, layers[1:]):
            above = 0.5 * (1 + math.erf((z - height) / (math.sqrt(2) * max(lower["sigma"], 1e-6))))
            value += above * (upper["delta"] - lower["delta"])
        points.append((z, value))
        z += step
    return points


def main(what, path):
    layers, numbers = read_state(path)
    if what == "profile":
        points = depth_profile(layers)
    else:
        points = [(qz, reflectivity(layers, numbers["energy"], qz)) for qz in grid(numbers)]
    for x, y in points:
        print(f"{x:e} {y:e}")


if __name__ == "__main__":
    if len(sys.argv) != 3 or sys.argv[1] not in ("curve", "profile"):
        sys.exit(__doc__)
    main(*sys.argv[1:])
