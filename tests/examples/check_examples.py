#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""check_examples.py PROGRAM EXAMPLES

Checks that the state files of the folder are those that write_examples.py writes, and that the program's curve of each
agrees with the plain recursion of textbook.py, or of textbook_slices.py where it is sliced, magnetic or given by elements.
"""
import pathlib
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
# Seven printed digits on the program's side; the textbook's n^2 - cos^2 loses about 1e-11, more in deep minima.
RELATIVE, FLOOR = 2e-6, 1e-14
# The program's error function comes from a table that is accurate to 5e-7.
RELATIVE_SLICES = 1e-5


def differs(line, qz, expected, relative):
    words = [float(word) for word in line.split()]
    if len(words) != 2 or abs(words[0] - qz) > 1e-6 * max(abs(qz), 1e-9):
        return True
    return not abs(words[1] - expected) <= max(relative * expected, FLOOR)


def expected_curve(path):
    """[(qz, R)] by the textbook, and the tolerance for the program."""
    import textbook  # lie beside the examples
    import textbook_slices

    numbers = textbook_slices.read_state(path)[0]
    if any(numbers.get(key) for key in ("mode", "layersegmentationmode", "magnetizationmode")):
        return textbook_slices.curve(path), RELATIVE_SLICES
    layers, numbers = textbook.read_state(path)
    return [(qz, textbook.reflectivity(layers, numbers["energy"], qz)) for qz in textbook.grid(numbers)], RELATIVE


def check_curve(program, path):
    points, relative = expected_curve(path)
    run = subprocess.run([program, "-refl", str(path)], capture_output=True, text=True, check=True)
    lines = run.stdout.splitlines()
    if len(lines) != len(points):
        return [f"{path.name}: {len(lines)} lines for {len(points)} points"]
    wrong = []
    for line, (qz, expected) in zip(lines, points):
        if differs(line, qz, expected, relative):
            wrong.append(f"{path.name}: got {line}, textbook {qz:e} {expected:e}")
    return wrong[:5]


def main(program, folder):
    folder = pathlib.Path(folder).resolve()
    sys.path.insert(0, str(folder))
    states = sorted(folder.glob("*.state"))
    wrong = [] if states else [f"{folder}: no examples"]
    with tempfile.TemporaryDirectory(prefix="tolvik-examples-") as scratch:
        subprocess.run([sys.executable, "-B", str(folder / "write_examples.py"), scratch], check=True)
        written = {p.name: p.read_bytes() for p in pathlib.Path(scratch).glob("*.state")}
    if written != {p.name: p.read_bytes() for p in states}:
        wrong.append("the state files are not those that write_examples.py writes: run it")
    for state in states:
        wrong += check_curve(program, state)
    print(*wrong, sep="\n")
    print(f"{len(states)} examples, {len(wrong)} faults")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
