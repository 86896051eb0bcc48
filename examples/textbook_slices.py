#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The textbook calculation of the examples that are sliced, magnetic or given by elements.

It shares no code with the program: even slices of error-function interfaces, the index shift of a magnetic layer, and the
Parratt recursion for sigma and pi with the Nevot-Croce factor. Lengths in angstrom, energies in eV.

    textbook_slices.py STATE      qz and R on the state's grid
"""
import cmath
import math
import sys

import textbook

# r_e (h c)^2 N_A / 2 pi with densities in mol/cm^3, as the program rounds it
STRENGTH = 415.1761541
FIELDS = ("delta", "beta", "ddelta", "dbeta")
SETTINGS = {"energy", "qzmax", "numberofpoints", "mode", "magnetizationmode", "layersegmentationmode", "minlayerthickness",
            "ray1sigmare", "ray1sigmaim", "ray1pire", "ray1piim"}


def step_function(x):
    return math.erf(x / math.sqrt(2))


def read_state(path):
    """numbers, layers, gauss functions, elements: dicts with the keys of the file, their prefixes cut."""
    numbers, layers, functions, elements = {}, [], [], []
    with open(path, encoding="utf-8") as file:
        for line in file:
            key, sign, value = (part.strip() for part in line.split("#")[0].partition("="))
            if not sign:
                continue
            if key == "layer":
                layers.append(dict.fromkeys(FIELDS + ("d", "sigma"), 0.0))
            elif key == "gauss_function":
                functions.append({})
            elif key == "element":
                elements.append({"slices": []})
            elif key == "el_layer":
                elements[-1]["slices"].append({})
            elif key in ("el_f1", "el_f2"):
                elements[-1][key] = float(value)
            elif key.startswith("el_"):
                elements[-1]["slices"][-1][key[3:]] = float(value)
            elif key.startswith("gauss_"):
                functions[-1][key[6:]] = float(value)
            elif key.startswith("layer_") and key != "layer_db":
                layers[-1][key[6:]] = float(value)
            elif key in SETTINGS:
                numbers[key] = float(value)
    return numbers, layers, functions, elements


def sliced(layers, functions, step):
    """Slices of thickness step from 30 below the substrate's surface to 30 above the top; values at their middles."""
    heights = [0.0]
    for layer in layers[1:-1]:
        heights.append(heights[-1] + layer["d"])
    result = []
    for i in range(int((heights[-1] + 60) / step) + 1):
        z = -30 + step * (i if i > 0 else 0.5)
        share = [0.5 * (1 + step_function((h - z) / max(a["sigma"], 1e-10))) for h, a in zip(heights, layers)]
        entry = {f: layers[-1][f] + sum(w * (a[f] - b[f]) for w, a, b in zip(share, layers, layers[1:])) for f in FIELDS}
        for g in functions if i > 0 else ():
            shape = math.exp(-0.5 * ((z - g["z"]) / g["variance"]) ** 2)
            entry["ddelta"] *= 1 + g["delta"] * shape
            entry["dbeta"] *= 1 + g["beta"] * shape
        result.append(entry | {"d": step})
    return result


def density(slices, z):
    """Mean density, each slice weighted by the error functions of its two interfaces."""
    edges, height = [], 0.0
    for i, part in enumerate(slices[:-1]):
        height += part["d"] if i > 0 else 0.0
        edges.append(step_function((z - height) / part["sigma"]))
    weights = [(1 + low) * (1 - high) for low, high in zip([1.0] + edges, edges + [-1.0])]
    return sum(w * part["density"] for w, part in zip(weights, slices)) / sum(weights)


def from_elements(elements, energy):
    length = sum(part["d"] for part in elements[0]["slices"][1:-1])
    result = []
    for i in range(int((length + 60) * 2)):
        entry = {"d": 0.5, "ddelta": 0.0, "dbeta": 0.0}
        for field, factor in (("delta", "el_f1"), ("beta", "el_f2")):
            entry[field] = sum(STRENGTH * density(e["slices"], -30 + 0.5 * i) * e[factor] for e in elements) / energy**2
        result.append(entry)
    return result


def reflectivity(entries, numbers, qz):
    """|sigma part|^2 Rs + |pi part|^2 Rp; a magnetic index is n + (deltam - i betam) cos(theta)."""
    k0 = 2 * math.pi * numbers["energy"] / textbook.ENERGY_TIMES_LAMBDA
    cos = math.sqrt(1 - (qz / (2 * k0)) ** 2)
    shift = cos if numbers.get("magnetizationmode") else 0.0
    n = [1 - e["delta"] + 1j * e["beta"] + shift * (e["ddelta"] - 1j * e["dbeta"]) for e in entries]
    kz = [k0 * cmath.sqrt(index**2 - cos**2) for index in n]
    kz_pi = [k / index**2 for k, index in zip(kz, n)]
    total = 0.0
    for name, default, u in (("sigma", 1.0, kz), ("pi", 0.0, kz_pi)):
        share = abs(complex(numbers.get(f"ray1{name}re", default), numbers.get(f"ray1{name}im", 0.0))) ** 2
        r = 0
        for j in range(len(entries) - 1):
            total_u = u[j + 1] + u[j]
            fresnel = (u[j + 1] - u[j]) / total_u if total_u != 0 else 0
            fresnel *= cmath.exp(-2 * kz[j + 1] * kz[j] * entries[j].get("sigma", 0.0) ** 2)
            phase = cmath.exp(2j * kz[j] * entries[j]["d"]) if j > 0 else 0
            r = (fresnel + r * phase) / (1 + fresnel * r * phase)
        total += share * abs(r) ** 2
    return total


def curve(path):
    """[(qz, R)] on the grid of the state."""
    numbers, layers, functions, elements = read_state(path)
    if numbers.get("mode"):
        entries = from_elements(elements, numbers["energy"])
    elif not numbers.get("layersegmentationmode"):
        entries = layers
    else:
        active = functions if numbers.get("magnetizationmode") == 2 else []
        entries = sliced(layers, active, numbers["minlayerthickness"])
    return [(qz, reflectivity(entries, numbers, qz)) for qz in textbook.grid(numbers)]


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    for x, y in curve(sys.argv[1]):
        print(f"{x:e} {y:e}")
