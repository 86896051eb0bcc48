#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Fits the nickel film with each algorithm of -fit, from the same start, and draws measurement, start and results.

    fit_film.py [PROGRAM [FOLDER]]      default: build/Tolvik and build/fit_film

-fit never ends by itself: each run is stopped here after a step that saves, as a user would with Ctrl-C.
The data were made for 212 A, delta 2.4318e-05, roughness 5.5 A on the film and 3 A below. The simplex ends in a local
minimum with a wrong roughness; Levenberg-Marquardt and annealing find the truth. The picture needs gnuplot.
"""
import pathlib
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
# label, settings, the step to stop at (a multiple of ten: it saves)
FITS = [("simplex", ["fitalgorithm = 0"], 600),
        ("levenberg", ["fitalgorithm = 1"], 10),
        ("annealing", ["fitalgorithm = 2", "fittemp = 0.1", "fitdtemp = -1e-4"], 4000)]


def fit(program, state, last_step):
    """Runs -fit until the state of that step is saved. Returns the last error printed."""
    error = None
    with subprocess.Popen([program, "-fit", state], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True) as run:
        for line in run.stdout:
            if line.startswith("iteration="):
                step, error = line.removeprefix("iteration=").split(": error=")
                if int(step) > last_step:  # the save of last_step is over
                    break
        run.terminate()
    return float(error)


def curve(program, state, path):
    with open(path, "w", encoding="ascii") as out:
        subprocess.run([program, "-refl", state], stdout=out, stderr=subprocess.DEVNULL, check=True)


def values(path, key):
    pairs = (line.partition("=") for line in pathlib.Path(path).read_text(encoding="utf-8").splitlines())
    return [value.strip() for name, _, value in pairs if name.strip() == key]


def main(program="build/Tolvik", folder="build/fit_film"):
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    start = (HERE / "nickel_film.state").read_text(encoding="utf-8")
    (folder / "start.state").write_text(start, encoding="utf-8")
    measured = zip(values(folder / "start.state", "dataset_qz"), values(folder / "start.state", "dataset_R0"))
    (folder / "measured.txt").write_text("".join(f"{qz} {r}\n" for qz, r in measured), encoding="ascii")
    curve(program, folder / "start.state", folder / "start.txt")
    print(f"{'':10} {'error':>12} {'d / A':>9} {'delta':>12} {'film / A':>9} {'below / A':>9}")
    for label, settings, last_step in FITS:
        state = folder / f"{label}.state"
        state.write_text(start + "\n".join(settings) + "\n", encoding="utf-8")
        error = fit(program, state, last_step)
        saved = f"{state}.new"
        curve(program, saved, folder / f"{label}.txt")
        thickness, delta, film, below = (float(x) for x in values(saved, "fit_value"))
        print(f"{label:10} {error:12.3e} {thickness:9.3f} {delta:12.5e} {film:9.3f} {below:9.3f}")
    subprocess.run(["gnuplot", "-e", f"folder='{folder}'", HERE / "fit_film.gp"], check=True)
    print(f"the picture: {folder}/fit_film.png")


if __name__ == "__main__":
    if len(sys.argv) > 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
