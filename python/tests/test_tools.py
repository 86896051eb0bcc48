# SPDX-License-Identifier: GPL-2.0-or-later
"""The commands, each run as a process: streams, exit values, files."""
import json
import os
import signal
import subprocess
import sys
import time

import numpy as np
import pytest
from ort_files import ort

import tolvik
from tolvik.formats import read

TOOLS = ("materials", "new", "ort")


@pytest.fixture(autouse=True)
def no_modules_of_the_folder(monkeypatch):
    monkeypatch.setenv("PYTHONSAFEPATH", "1")  # the package under test, not sources without their compiled module


def run(tool, *arguments, cwd=None, **others):
    return subprocess.run(
        [sys.executable, "-m", f"tolvik.tools.{tool}", *map(str, arguments)],
        capture_output="stdout" not in others,
        stderr=subprocess.PIPE if "stdout" in others else None,
        text=True,
        cwd=cwd,
        timeout=120,
        **others,
    )


def fails(done, value, *parts):
    assert done.returncode == value, done.stderr
    assert done.stderr.count("\n") == 1 and "Traceback" not in done.stderr, done.stderr
    assert not done.stdout
    for part in parts:
        assert part in done.stderr


@pytest.mark.parametrize("tool", TOOLS)
def test_help_and_version(tool):
    done = run(tool, "--help")
    assert done.returncode == 0 and done.stdout.startswith(f"usage: tolvik-{tool} ") and done.stderr == ""
    done = run(tool, "-V")
    assert (done.returncode, done.stdout) == (0, f"tolvik-{tool} {tolvik.__version__}\n")


@pytest.mark.parametrize("tool", TOOLS)
def test_help_does_not_load_numpy(tool):
    done = subprocess.run(
        [sys.executable, "-X", "importtime", "-m", f"tolvik.tools.{tool}", "-h"],
        capture_output=True,
        text=True,
        timeout=60,
    )
    assert done.returncode == 0 and not {"numpy", "scipy", "yaml", "periodictable"} & {
        line.split("|")[-1].strip() for line in done.stderr.splitlines()
    }


@pytest.mark.parametrize(
    "tool, arguments, part",
    [
        ("new", ["Si", "--colour"], "unrecognized arguments: --colour"),
        ("new", ["Si", "--energy", "blue"], "energy 'blue'"),
        ("new", ["Si", "--energy", "-5"], "--energy"),
        ("new", ["Si", "--tables", "1:2"], "not first:last:step"),
        ("materials", [], "FORMULA"),
        ("materials", ["Si", "--source", "nist"], "invalid choice"),
        ("materials", ["Si", "--energy", "9:8:1"], "run backwards"),
        ("ort", [], "COMMAND"),
        ("ort", ["show"], "FILE"),
        ("ort", ["in", "a.state", "b.ort"], "-o"),
        ("ort", ["show", "a", "--dq-is", "x"], "invalid choice"),
    ],
)
def test_wrong_usage(tool, arguments, part):
    fails(run(tool, *arguments), 2, f"tolvik-{tool}", part)


@pytest.mark.parametrize(
    "tool, arguments, parts",
    [
        ("new", ["Xx"], ["formula 'Xx' cannot be read"]),
        ("new", [], ["give one stack"]),
        ("new", ["Si | Co eight"], ["'eight' in 'Co eight'"]),
        ("new", ["Si", "--qmax", "20"], ["out of reach"]),
        ("new", ["Si", "--energy", "5"], ["outside the henke table"]),
        ("new", ["Si", "-o", "/none/a.state"], ["/none/a.state: cannot be written"]),
        ("new", ["Si", "--tables", "8000"], ["give first:last:step"]),
        ("materials", ["si"], ["is 'Si' meant"]),
        ("materials", ["LaMnO3"], ["as LaMnO3:5.2"]),
        ("materials", ["Si", "--density", "-1"], ["density -1"]),
        ("materials", ["Si", "--kk", "none.txt"], ["none.txt: cannot be read"]),
        ("materials", ["Si", "--energy", "8000", "--write", "/none/Si"], ["cannot be written"]),
        ("materials", ["Si", "--kk", "a", "--magnetic", "b"], ["together"]),
        ("ort", ["show", "none.ort"], ["none.ort: cannot be read: No such file"]),
        ("ort", ["in", "none.state", "none.ort", "-o", "new.state"], ["none.state"]),
    ],
)
def test_failures(tmp_path, tool, arguments, parts):
    fails(run(tool, *arguments, cwd=tmp_path), 1, f"tolvik-{tool}: ", *parts)
    assert os.listdir(tmp_path) == [], "no half files"


def test_a_new_state_and_its_tables(tmp_path):
    done = run(
        "new",
        "Si 3 | SiO2 15 3 | [Co 8 3 | Pt:20 12 3 | Pt 4 2]*20",
        "--energy",
        "8048",
        "--tables",
        "8000:8100:10",
        "-o",
        tmp_path / "film.state",
    )
    assert (done.returncode, done.stdout) == (
        0,
        "",
    ) and done.stderr == f"tolvik-new: {tmp_path}/film.state: 63 layers at 8048 eV, 12 tables\n"
    stems = ("Si", "SiO2", "Co", "Pt", "Pt_21.45", "vacuum")
    assert set(os.listdir(tmp_path)) == {
        "film.state",
        *(f"{stem}.{suffix}" for stem in stems for suffix in ("db", "m")),
    }
    assert tolvik.load(tmp_path / "film.state").text().count("layer_sigma") == 63
    text = (tmp_path / "film.state").read_text()
    assert text.startswith("# Si 3 | SiO2 15 3 | [Co 8 3") and "# Pt_21.45: Pt, 21.45 g/cm3 (periodictable)" in text
    assert text.count("layer = ") == 63 and text.count("layer_db = Pt_21.45") == 20
    # delta of Si from International Tables for Crystallography C (1992): 7.58e-6 at 2.33 g/cm³
    assert float(text.split("layer_delta = ")[1].split()[0]) == pytest.approx(7.58e-6, rel=0.005)
    fails(run("new", "Si", "-o", tmp_path / "film.state"), 1, "film.state: is there already")
    assert run("new", "Si", "-o", tmp_path / "film.state", "--force", "-q").stderr == ""


def test_models_of_orso_and_json():
    done = run("new", "--orso", "vacuum | 2 ( Si 4.1 | Mo 2.8 ) | Si", "--json")
    record = json.loads(done.stdout)
    assert [(layer["formula"], layer["d"], layer["sigma"]) for layer in record["layers"]] == [
        ("Si", 0, 3),
        ("Mo", 28, 3),
        ("Si", pytest.approx(41), 3),
        ("Mo", 28, 3),
        ("Si", pytest.approx(41), 3),
        ("vacuum", 0, 0),
    ]
    assert record["state"].startswith("# --orso vacuum | 2 ( Si 4.1")


def test_materials_side_by_side():
    done = run("materials", "Co", "--energy", "778")
    assert (
        done.returncode == 0
        and "henke" in done.stdout
        and "chantler" in done.stdout
        and "Co L3 (778.1 eV), 0.1 eV away" in done.stdout
    )
    assert (
        done.stderr.startswith("tolvik-materials: warning: Co: 0.1 eV from the edge Co L3")
        and "measured" in done.stderr
    )
    quiet = run("materials", "Co", "--energy", "778", "-q", "--json")
    assert quiet.stderr == "" and json.loads(quiet.stdout)["edge"] == ["Co L3 (778.1 eV)"]
    assert "7709.0 Co K" in run("materials", "Co", "--edges").stdout and "SiO2" in run("materials", "list").stdout
    assert json.loads(run("materials", "Si", "--source", "henke", "--energy", "CuKa", "--json").stdout)["delta"][
        0
    ] == pytest.approx(7.58e-6, rel=0.005)


def test_materials_write(tmp_path):
    done = run("materials", "Co:8.5", "--energy", "8000:8100:50", "--write", "Co", cwd=tmp_path)
    assert done.stdout == "Co.db\nCo.ff\n" and np.loadtxt(tmp_path / "Co.db").shape == (3, 3)
    energy = np.arange(7600, 8200, 2.0)
    beta = tolvik.materials.delta_beta("Co", None, energy, "chantler", warn=False)[1]
    np.savetxt(tmp_path / "mu.txt", np.column_stack([energy, 3 + 1e5 * energy * beta]))
    np.savetxt(tmp_path / "both.txt", np.column_stack([energy, 3 + 1e5 * energy * beta, 3 + 1.1e5 * energy * beta]))
    assert run("materials", "Co", "--kk", "mu.txt", "--write", "K", cwd=tmp_path).stdout == "K.db\n"
    assert np.loadtxt(tmp_path / "K.db")[:, 2] == pytest.approx(beta, rel=1e-8)
    assert run("materials", "Co", "--magnetic", "both.txt", "--write", "M", cwd=tmp_path).stdout == "M.db\nM.m\n"
    assert "Kramers-Kronig" in (tmp_path / "M.m").read_text().splitlines()[0]


def test_ort_show(tmp_path):
    (tmp_path / "a.ort").write_text(ort(more="# data_set: second\n0.1 0 1 0\n0.2 1 1 0\n"))
    done = run("ort", "show", "a.ort", cwd=tmp_path)
    assert "a.ort: first\n  points  3, 0 masked\n  q       0.01 to 0.03 1/angstrom\n" in done.stdout
    assert "  dq      0.001 to 0.0015 (sigma)\n  energy  8047.73 eV\n  rays    sigma\na.ort: second" in done.stdout
    assert done.stderr == "tolvik-ort: warning: a.ort: second: 1 of 2 points masked: 1 with R = 0\n"
    record = json.loads(run("ort", "show", "a.ort", "--json", "-q", "--dq-is", "half", cwd=tmp_path).stdout)
    assert record[0]["sigma_q"] == [0.0005, 0.00075] and record[1]["masked"] == 1
    (tmp_path / "b.dat").write_text("0.5 100\n1.0 400\n2 10\n")
    done = run(
        "ort", "show", "b.dat", "--columns", "2theta,counts", "--energy", "CuKa", "--normalise", "--json", cwd=tmp_path
    )
    assert json.loads(done.stdout)[0]["r"] == [0.025, 1.0]


@pytest.mark.skipif(not hasattr(tolvik.State, "attach"), reason="states cannot take data yet")
def test_ort_in_and_out(tmp_path, examples):
    second = "# data_set: second\n# data_source: {measurement: {instrument_settings: {polarization: left}}}\n"
    (tmp_path / "a.ort").write_text(ort(more=second + "0.1 0.123456789012 1 0.1\n0.2 0.01 1 0.1\n"))
    state = examples / "nickel_film.state"
    before = state.read_bytes()
    assert run("ort", "in", state, "a.ort", "-o", "new.state", cwd=tmp_path).stdout == "new.state: 2 data sets\n"
    assert state.read_bytes() == before
    new = tolvik.load(tmp_path / "new.state")
    assert new.datasets[-1].dataset_R0.tolist() == [0.123456789012, 0.01], "all digits"
    assert new.datasets[-1].datasetresolution == 0.2 and new.datasets[-1].datasettitle == "second", "r = 2 sigma"
    assert new.datasets[-2].dataset_R0.tolist() == [1, 0.5, 0.25]
    assert (
        run("ort", "in", state, "a.ort", "-o", "one.state", "--match", "polarization", cwd=tmp_path).stdout
        == "one.state: 1 data sets\n"
    )
    fails(run("ort", "in", "new.state", "a.ort", "-o", "./new.state", cwd=tmp_path), 1, "is the state itself")
    assert run("ort", "out", state, "--data", "-o", "data.ort", cwd=tmp_path).returncode == 0
    assert read(tmp_path / "data.ort")[0].name == "nickel"
    done = run("ort", "out", state, "--model", "-o", "curve.ort", cwd=tmp_path)
    assert done.returncode == 0, done.stderr
    (curve,) = read(tmp_path / "curve.ort")
    layers = curve.metadata["data_source"]["sample"]["model"]["layers"]
    assert len(curve) == tolvik.load(state).numberofpoints and len(layers) == len(tolvik.load(state).layers)


def test_a_closed_pipe_is_quiet():
    command = f"{sys.executable} -m tolvik.tools.new 'Si | [Co 8 3 | Pt 12 3]*2000' | head -1; exit ${{PIPESTATUS[0]}}"
    done = subprocess.run(["bash", "-c", command], capture_output=True, text=True, timeout=120)
    assert (done.returncode, done.stderr) == (0, "") and done.stdout.startswith("# Si | ")


def test_a_full_disk_is_an_error_of_one_line():
    with open("/dev/full", "w") as full:
        for arguments in (["new", "Si"], ["materials", "list"]):
            done = run(*arguments, stdout=full)
            assert (
                done.returncode == 1
                and done.stderr == f"tolvik-{arguments[0]}: standard output: No space left on device\n"
            )
    fails(run("new", "Si", "-o", "/dev/full"), 1, "/dev/full: cannot be written: No space left")


@pytest.mark.parametrize(
    "sent, value, word", [(signal.SIGINT, 130, "interrupted"), (signal.SIGTERM, 143, "terminated")]
)
def test_signals(sent, value, word):
    program = (
        "import sys, time; from tolvik.tools import common, ort\n"
        "def work(arguments):\n    print('ready', flush=True)\n    time.sleep(60)\n"
        "sys.exit(common.run(ort.parser(), work, ['show', 'x']))"
    )
    process = subprocess.Popen(
        [sys.executable, "-c", program], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
    )
    assert process.stdout.readline() == "ready\n"
    begin = time.monotonic()
    process.send_signal(sent)
    _, errors = process.communicate(timeout=30)
    assert process.returncode == value and errors == f"tolvik-ort: {word}\n" and time.monotonic() - begin < 10


def test_an_internal_error_is_one_line_and_v_gives_the_place():
    program = (
        "import sys; from tolvik.tools import common, new\nsys.exit(common.run(new.parser(), lambda a: 1 / 0,"
        " sys.argv[1:]))"
    )
    for flag, lines in (("-q", 1), ("-v", 5)):
        done = subprocess.run([sys.executable, "-c", program, "Si", flag], capture_output=True, text=True, timeout=60)
        assert done.returncode == 1 and "tolvik-new: internal error: ZeroDivisionError" in done.stderr
        assert (done.stderr.count("\n") == 1) == (lines == 1)


@pytest.mark.parametrize("settings, coloured", [({}, True), ({"NO_COLOR": "1"}, False)])
def test_colour_on_a_terminal_unless_no_color(settings, coloured):
    pty = pytest.importorskip("pty")
    main, side = pty.openpty()
    environment = {key: value for key, value in os.environ.items() if key != "NO_COLOR"} | settings
    process = subprocess.Popen(
        [sys.executable, "-m", "tolvik.tools.new", "--none"], stdin=side, stdout=side, stderr=side, env=environment
    )
    assert process.wait(timeout=60) == 2
    os.close(side)
    text = os.read(main, 10000).decode()
    os.close(main)
    assert ("\033[" in text) == coloured and "unrecognized arguments" in text


def test_the_shell_completes_options(tmp_path):
    pytest.importorskip("argcomplete")
    settings = {**os.environ, "_ARGCOMPLETE": "1", "COMP_LINE": "tolvik-new --en", "COMP_POINT": "15"}
    command = f"{sys.executable} -m tolvik.tools.new 8>{tmp_path}/found"
    assert subprocess.run(["bash", "-c", command], env=settings, timeout=60).returncode == 0
    assert (tmp_path / "found").read_text().strip() == "--energy"
