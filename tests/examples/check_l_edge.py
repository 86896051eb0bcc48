#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""check_l_edge.py PROGRAM FOLDER

Checks that the files of the example are those that write_tables.py writes, that its tables obey the Kramers-Kronig
relation, and that its curves have the required symmetry and agree where two commands calculate the same.
"""
import math
import pathlib
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
PRINTED = 2e-6  # seven printed digits on both sides


def run(program, folder, *arguments):
    result = subprocess.run([program, *arguments], cwd=folder, capture_output=True, text=True, check=True)
    return [[float(word) for word in line.split()] for line in result.stdout.splitlines() if line]


def agree(a, b, tolerance=PRINTED):
    return abs(a - b) <= tolerance * max(abs(a), abs(b))


def check_kramers_kronig(tables):
    """delta(E) = -2/pi P int E' beta(E') / (E'^2 - E^2) dE' for the oscillators alone, by midpoints around E."""
    wrong = []
    step = 0.02
    for strength in (2, 3):
        for energy in (770.0, 778.0, 785.0, 795.0):
            # an odd number of half steps away on both sides, so that the pole cancels
            grid = [energy + step * (k + 0.5) for k in range(-38000, 38000)]
            integral = sum(e * tables.lorentz(e, strength).imag / (e * e - energy * energy) for e in grid) * step
            expected = tables.lorentz(energy, strength).real
            if abs(2 / math.pi * integral - expected) > 0.005 * abs(tables.lorentz(778.1, strength)):
                wrong.append(f"Kramers-Kronig at {energy}: {2 / math.pi * integral} against {expected}")
    return wrong


def check_curves(program, folder):
    wrong = []
    plus_minus = run(program, folder, "-escan", "-dicrefl", "cobalt.state")
    if len(plus_minus) != 401:
        return [f"{len(plus_minus)} points of -dicrefl"]
    asymmetry = max(abs((p - m) / (p + m)) for _, p, m in plus_minus)
    if not 0.1 < asymmetry < 1:
        wrong.append(f"asymmetry {asymmetry}")

    text = (folder / "cobalt.state").read_text()
    # the other magnetisation is the other helicity
    (folder / "reversed.state").write_text(text.replace("maggamma = 90", "maggamma = 270"))
    for (qz, plus, minus), (_, plus2, minus2) in zip(plus_minus,
                                                     run(program, folder, "-escan", "-dicrefl", "reversed.state")):
        if qz > 0.005 and not (agree(plus, minus2, 1e-5) and agree(minus, plus2, 1e-5)):
            wrong.append(f"reversed magnetisation at qz = {qz}: {plus} {minus} against {plus2} {minus2}")

    # a map takes the first ray and the constants of its energies: at 778.1 eV the curve of the first helicity
    energy_map = run(program, folder, "-map", "E", "Q", "778.1", "780.1", "0", "0.4", "2", "401", "cobalt.state")
    curve = {round(qz, 6): r for energy, qz, r in energy_map if agree(energy, 778.1)}
    for qz, plus, _ in plus_minus:
        if qz > 0 and not agree(curve[round(qz, 6)], plus, 1e-5):
            wrong.append(f"map and curve at qz = {qz}: {curve[round(qz, 6)]} against {plus}")
    return wrong[:8]


def main(program, folder):
    folder = pathlib.Path(folder).resolve()
    sys.path.insert(0, str(folder))
    import write_tables  # lies beside the tables

    wrong = check_kramers_kronig(write_tables)
    with tempfile.TemporaryDirectory(prefix="tolvik-l-edge-") as scratch:
        scratch = pathlib.Path(scratch)
        subprocess.run([sys.executable, "-B", str(folder / "write_tables.py"), str(scratch)], check=True)
        for path in sorted(scratch.iterdir()):
            if path.read_bytes() != (folder / path.name).read_bytes():
                wrong.append(f"{path.name} is not what write_tables.py writes: run it")
        wrong += check_curves(program, scratch)
    print(*wrong, sep="\n")
    print(f"{len(wrong)} faults")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(str(pathlib.Path(sys.argv[1]).resolve()), sys.argv[2]))
