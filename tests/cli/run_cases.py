#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""run_cases.py PROGRAM CASES [NAME-PART ...]

Runs PROGRAM on each case folder of CASES (README.md there describes a case), compares byte for byte, numbers
with a tolerance only where the case gives one, and ends with "N passed, M failed".
"""
import math
import pathlib
import shutil
import subprocess
import sys
import tempfile

SECONDS = 60
# Files of a case that are not copied to the scratch folder of the program.
OUR_OWN = {"argv", "stdout", "stderr", "exit", "tolerance", "output"}


def read(path, default=None):
    return path.read_bytes() if path.exists() else default


def as_number(token):
    try:
        return float(token)
    except ValueError:
        return None


def tokens_agree(expected, got, relative, floor):
    if expected == got:
        return True
    a, b = as_number(expected), as_number(got)
    if a is None or b is None or b"_" in expected + got:
        return False
    if a != a or b != b:
        return a != a and b != b  # NaN with NaN, its sign aside
    if a == b or math.isinf(a) or math.isinf(b):
        return a == b
    return abs(a - b) <= max(relative * max(abs(a), abs(b)), floor)


def differences(what, expected, got, tolerance):
    """At most ten lines that show where the two differ."""
    if expected == got:
        return []
    relative, floor = tolerance
    want, have = expected.split(b"\n"), got.split(b"\n")
    found = []
    for number, (a, b) in enumerate(zip(want, have), 1):
        left, right = a.split(), b.split()
        same = a == b if relative == 0 else len(left) == len(right) and all(
            tokens_agree(x, y, relative, floor) for x, y in zip(left, right))
        if not same:
            found.append(f"{what}, line {number}: expected {a!r}, got {b!r}")
    if len(want) != len(have):
        found.append(f"{what}: expected {len(want) - 1} line ends, got {len(have) - 1}")
    return found[:10]


def read_tolerance(case):
    numbers = [float(x) for x in read(case / "tolerance", b"0").split()]
    return numbers[0], numbers[1] if len(numbers) > 1 else 0.0


def run_case(program, case):
    """The list of faults; empty when the case passes."""
    with tempfile.TemporaryDirectory(prefix="tolvik-cli-") as folder:
        scratch = pathlib.Path(folder)
        for item in case.iterdir():
            if item.name not in OUR_OWN:
                shutil.copy(item, scratch / item.name)
        arguments = read(case / "argv").decode().splitlines()
        try:
            done = subprocess.run([program, *arguments], cwd=scratch, stdin=subprocess.DEVNULL, capture_output=True,
                                  timeout=SECONDS, check=False)
        except subprocess.TimeoutExpired:
            return [f"still running after {SECONDS} s"]
        tolerance = read_tolerance(case)
        wrong = differences("stdout", read(case / "stdout"), done.stdout, tolerance)
        wrong += differences("stderr", read(case / "stderr"), done.stderr, (0, 0))
        expected_exit = int(read(case / "exit"))
        if done.returncode != expected_exit:
            wrong.append(f"exit value: expected {expected_exit}, got {done.returncode}")
        for wanted in sorted((case / "output").glob("**/*")):
            name = wanted.relative_to(case / "output")
            if wanted.is_file() and not (scratch / name).is_file():
                wrong.append(f"{name}: not written")
            elif wanted.is_file():
                wrong += differences(str(name), wanted.read_bytes(), (scratch / name).read_bytes(), tolerance)
        return wrong


def is_whole(case):
    missing = [name for name in ("argv", "stdout", "stderr", "exit") if not (case / name).is_file()]
    return [f"the case has no file {name}" for name in missing]


def main(program, folder, parts):
    program = str(pathlib.Path(program).resolve())
    cases = sorted(p for p in pathlib.Path(folder).iterdir() if p.is_dir())
    cases = [c for c in cases if not parts or any(part in c.name for part in parts)]
    failed = 0
    for case in cases:
        wrong = is_whole(case) or run_case(program, case)
        if wrong:
            failed += 1
            print(f"FAILED {case.name}", *wrong, sep="\n    ")
    print(f"{len(cases) - failed} passed, {failed} failed")
    return 0 if cases and not failed else 1


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1], sys.argv[2], sys.argv[3:]))
