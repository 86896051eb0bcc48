#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""check_figures.py PROGRAM EXAMPLES

Checks figures of README.md, docs/ and examples/, where that is cheap: each check names its sentence.
"""
import math
import pathlib
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
NEVER_ENDS = 0.5  # seconds; the same stack with limits takes about 0.01 s


class Figures:
    def __init__(self, program, examples, scratch):
        self.program, self.examples, self.scratch = program, examples, scratch
        self.wrong = []

    def expect(self, what, holds):
        if not holds:
            self.wrong.append(what)

    def near(self, what, got, want, tolerance):
        self.expect(f"{what}: {got:.4g} instead of {want:g} +- {tolerance:g}", abs(got - want) <= tolerance)

    def run(self, arguments, folder, timeout=60):
        return subprocess.run([self.program, *arguments], cwd=folder, capture_output=True, text=True, check=True,
                              timeout=timeout).stdout

    def changed(self, name, text, *lines):
        (self.scratch / name).write_text(text + "".join(line + "\n" for line in lines), encoding="utf-8")
        return name

    def curve(self, option, text, *lines):
        """Rows of numbers that a command prints for a state with more lines at its end; later lines count."""
        output = self.run([option, self.changed("changed.state", text, *lines)], self.scratch)
        return [[float(word) for word in line.split()] for line in output.splitlines() if line]

    def example(self, name):
        return (self.examples / name).read_text(encoding="utf-8")

    def map(self, *words):
        output = self.run(["-map", "E", "Q", *words, "cobalt.state"], self.examples / "l_edge")
        return [[float(word) for word in line.split()] for line in output.splitlines() if line]


def check_printed_digits(f):
    """README: double prints the digits of 200 bits; float is wrong by up to 12 % in minima of the oxide."""
    for name in ("silicon.state", "oxide_on_silicon.state"):
        text = f.example(name)
        exact, double, single = (f.curve("-refl", text, f"precision = {n}")[1:] for n in (3, 1, 0))
        f.expect(f"{name}: double and 200 bits differ", double == exact)
        worst = max(abs(a[1] / b[1] - 1) for a, b in zip(single, exact))
        f.expect(f"{name}: float is off by {worst}", 1e-3 < worst < 0.12)


def check_resolution(f):
    """physics.md: sigma = r/2 cut at +-r; samples below qz = 0 are left out, so R(0) keeps the share 0.602."""
    weights = {x / 4: math.exp(-2 * (x / 4) ** 2) for x in range(-4, 5)}  # exp(-x^2/(2 sigma^2)), sigma = 1/2 of r
    share = sum(w for x, w in weights.items() if x >= 0) / sum(weights.values())
    rows = f.curve("-refl", f.example("silicon.state"), "resolution = 0.004")
    plain = f.curve("-refl", f.example("silicon.state"))
    f.near("R at qz = 0 with a resolution", rows[0][1], share, 2e-3)
    f.expect("no dip from qz = r on", all(abs(a[1] / b[1] - 1) < 2e-3 for a, b in zip(rows[4:20], plain[4:20])))
    f.near("r over the full width at half maximum", 1 / math.sqrt(2 * math.log(2)), 0.85, 0.005)


def check_rough_superlattice(f):
    """examples/README.md: factors instead of slices at 6001 points change peaks by 0.6 % and -3.1 %, a flank by -16.8 %."""
    text = f.example("rough_superlattice.state")
    slices = f.curve("-refl", text, "numberofpoints = 6001")
    factors = f.curve("-refl", text, "numberofpoints = 6001", "layersegmentationmode = 0")

    def peak(curve, low, high):
        return max(r for qz, r in curve if low < qz < high)

    def change(qz):
        at = round(qz * 1e4)
        return factors[at][1] / slices[at][1] - 1

    f.near("first peak", peak(factors, 0.18, 0.25) / peak(slices, 0.18, 0.25) - 1, 0.006, 5e-4)
    f.near("second peak", peak(factors, 0.4, 0.43) / peak(slices, 0.4, 0.43) - 1, -0.031, 5e-4)
    f.near("flank of the second peak", change(0.4326), -0.168, 5e-4)
    f.near("minimum that changes most", change(0.2345), 0.197, 5e-3)


def check_algorithms(f):
    """physics.md: the difference of both helicities by algorithm 0 and 1 for the magnetic film without gauss functions."""
    text = f.example("magnetic_film.state").replace("gauss_delta = -0.9", "gauss_delta = 0")
    text = text.replace("gauss_beta = -0.9", "gauss_beta = 0")
    scalar, tensor = (f.curve("-dicrefl", text, f"algorithm = {n}") for n in (0, 1))
    ratio = {round(a[0], 3): (a[1] - a[2]) / (b[1] - b[2]) - 1 for a, b in zip(scalar, tensor) if b[1] != b[2]}
    f.expect("2 % up to qz = 0.06", all(abs(change) < 0.02 for qz, change in ratio.items() if 0.002 <= qz <= 0.06))
    f.near("difference at qz = 0.19", ratio[0.19], -0.09, 0.005)
    f.near("difference at qz = 0.346", ratio[0.346], -0.22, 0.005)


def check_l_edge(f):
    """examples/l_edge/README.md: fringes, asymmetry and the end of total reflection."""
    output = f.run(["-escan", "-dicrefl", "cobalt.state"], f.examples / "l_edge")
    rows = [[float(word) for word in line.split()] for line in output.splitlines()]
    minima = [b[0] for a, b, c in zip(rows, rows[1:], rows[2:]) if a[1] > b[1] < c[1] and b[0] > 0.1]
    f.near("fringes", (minima[-1] - minima[0]) / (len(minima) - 1), 0.041, 5e-4)
    f.near("fringes of the film alone", (minima[-1] - minima[0]) / (len(minima) - 1), 2 * math.pi / 150, 1.5e-3)
    f.near("asymmetry", min((p - m) / (p + m) for _, p, m in rows), -0.51, 5e-3)
    edge = f.map("770", "800", "0.046", "0.1", "151", "2")
    f.near("R at 0.046", max(r for _, qz, r in edge if qz < 0.05), 0.5, 0.02)
    f.near("R at 0.1", max(r for _, qz, r in edge if qz > 0.05), 0.033, 1e-3)


def check_map(f):
    """formats.md: -escan prints nothing; counts below 2; ranges outside the tables, which are 740 to 840 eV."""
    f.expect("-escan prints", f.run(["-escan", "cobalt.state"], f.examples / "l_edge") == "")
    scan = f.map("770", "800", "0.15", "0.15", "4", "2")
    f.expect("two rows of one scan", [e for e, _, _ in scan] == [770, 780, 790, 800] * 2 and scan[:4] == scan[4:])
    f.expect("n1 = 1 is nan", all(math.isnan(e) for e, _, _ in f.map("778", "778", "0.1", "0.2", "1", "3")))
    f.expect("n2 = 1 is nan", all(math.isnan(qz) for _, qz, _ in f.map("778", "780", "0.1", "0.1", "3", "1")))
    f.expect("a range is cut to the tables", f.map("700", "760", "0.1", "0.2", "4", "2")[0][0] == 740)
    outside = f.map("700", "720", "0.1", "0.2", "4", "2")
    f.expect("a range outside runs backwards", outside[0][0] == 740 and outside[3][0] == 720)
    f.expect("R = 1 outside the tables", all(r == 1 for e, _, r in outside if e < 740))


FILM = """fileversion = 1
layerversion = 3
layer = 0
  layer_db = Si
  layer_density = 2.33
layer = 1
energy = 8048
qzmax = 0.05
numberofpoints = 50
"""


def check_states(f):
    """formats.md: keys that act differently from what their names suggest."""
    (f.scratch / "Si.db").write_text("8000 7.6e-6 1.7e-7\n8100 7.6e-6 1.7e-7\n", encoding="utf-8")
    f.expect("-refl with tables and densities alone", all(r == 0 for _, r in f.curve("-refl", FILM, "ocautomatic = 1")))
    silicon = FILM.replace("  layer_db = Si", "  layer_delta = 7.6e-6")
    script = "scriptline = delta[0] = 0"
    on, off = f.curve("-refl", silicon, script), f.curve("-refl", silicon, script, "disablescript = 2")
    f.expect("disablescript = 2", on[20][1] < 1e-2 and off == f.curve("-refl", silicon))
    for limits, ends in (((), False), (("maxlayerthickness = 2",), False), (("gradientscale = 1",), False),
                         (("minlayerthickness = 0.5",), True), (("maxlayerthickness = 2", "gradientscale = 1"), True)):
        try:
            f.run(["-refl", f.changed("slices.state", silicon, "layersegmentationmode = 1", *limits)], f.scratch,
                  60 if ends else NEVER_ENDS)
            f.expect(f"slices with {limits} end", ends)
        except subprocess.TimeoutExpired:
            f.expect(f"slices with {limits} never end", not ends)


def check_fit_from_afar(f):
    """fitting.md: a simplex finds the nickel film from 170 A, 42 A from the truth."""
    text = f.example("nickel_film.state").replace("fit_value = 205", "fit_value = 170")
    text = text.replace("fit_lower_boundary = 180", "fit_lower_boundary = 100")
    fit = subprocess.Popen([f.program, "-fit", f.changed("afar.state", text)], cwd=f.scratch, stdout=subprocess.PIPE,
                           stderr=subprocess.DEVNULL, text=True)
    try:
        error = next(float(line.split("error=")[1]) for line in fit.stdout if line.startswith("iteration=300:"))
    finally:
        fit.kill()
        fit.wait()
        fit.stdout.close()
    f.expect(f"the error after 300 steps is {error}", error < 1e-3)
    lines = (f.scratch / "afar.state.new").read_text(encoding="utf-8").splitlines()
    thickness = next(float(line.split("=")[1]) for line in lines if "fit_value" in line)
    f.near("thickness", thickness, 212, 0.1)


CHECKS = (check_printed_digits, check_resolution, check_rough_superlattice, check_algorithms, check_l_edge, check_map,
          check_states, check_fit_from_afar)


def main(program, examples):
    with tempfile.TemporaryDirectory(prefix="tolvik-figures-") as scratch:
        figures = Figures(str(pathlib.Path(program).resolve()), pathlib.Path(examples).resolve(), pathlib.Path(scratch))
        for check in CHECKS:
            check(figures)
    print(*figures.wrong, sep="\n")
    print(f"{len(CHECKS)} checks, {len(figures.wrong)} faults")
    return 1 if figures.wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
