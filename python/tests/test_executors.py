# SPDX-License-Identifier: GPL-2.0-or-later
"""Executors give the same bytes, keep what is finished and name what failed."""
import concurrent.futures
import dataclasses
import multiprocessing
import os
import pathlib

import numpy as np
import pytest

import tolvik
from tolvik import executors

ENERGIES = np.linspace(772, 798, 9)
Q = np.linspace(0.01, 0.3, 30)


@pytest.fixture(autouse=True)
def never_serial(monkeypatch):
    """Send work to the executors that would be done at once here."""
    monkeypatch.setattr(executors, "SERIAL_BELOW", 0.0)
    monkeypatch.setattr(executors, "CHUNK_SECONDS", 1e-9)


@pytest.fixture(scope="module")
def cobalt(examples):
    state = tolvik.load(examples / "l_edge" / "cobalt.state")
    state.load_tables(examples / "l_edge")
    return state


@pytest.fixture(scope="module")
def spawned():
    with concurrent.futures.ProcessPoolExecutor(2, multiprocessing.get_context("spawn")) as pool:
        yield pool


def test_threads_and_spawned_processes_give_the_serial_bytes(cobalt, spawned):
    serial = tolvik.energy_map(cobalt, ENERGIES, Q, polarization=("left", "right"))
    assert serial.R.shape == (2, 9, 30) and np.isfinite(serial.R).all()
    for pool in (spawned, concurrent.futures.ThreadPoolExecutor(3)):
        other = tolvik.energy_map(cobalt, ENERGIES, Q, polarization=("left", "right"), executor=pool)
        assert other.R.tobytes() == serial.R.tobytes()


def test_a_row_is_the_curve_at_its_energy(cobalt):
    state = cobalt.copy()
    state.polarization = "left"
    both = tolvik.energy_map(state, ENERGIES, Q, polarization=("left", "right"))
    for i, energy in enumerate(ENERGIES):
        expected = tolvik.dichroism(state, Q, energy=energy)
        assert np.allclose(both.R[0, i], expected.Rp, rtol=1e-12) and np.allclose(both.R[1, i], expected.Rm, rtol=1e-12)
    assert np.allclose(both.asymmetry, (both.R[0] - both.R[1]) / (both.R[0] + both.R[1]))
    assert np.abs(both.asymmetry).max() > 0.1
    turned = tolvik.energy_map(state, ENERGIES, Q, polarization=("right", "left"))
    assert np.array_equal(turned.R[0], both.R[1]) and np.array_equal(turned.R[1], both.R[0])
    assert np.array_equal(tolvik.energy_map(state, ENERGIES, Q, polarization="right").R[0], both.R[1])


def test_a_map_survives_its_file(cobalt, tmp_path):
    saved = tolvik.energy_map(cobalt, ENERGIES, Q, polarization="sigma")
    saved.save(tmp_path / "map.h5")
    found = tolvik.load_map(tmp_path / "map.h5")
    assert found.R.tobytes() == saved.R.tobytes() and found.polarization == ("sigma",) and found.state == saved.state
    assert [path.name for path in tmp_path.iterdir()] == ["map.h5"]
    with pytest.raises(tolvik.DataFileError, match="cannot be written"):
        saved.save(tmp_path / "absent" / "map.h5")
    (tmp_path / "other.h5").write_text("no map")
    with pytest.raises(tolvik.DataFileError, match="cannot be read as a map"):
        tolvik.load_map(tmp_path / "other.h5")


@dataclasses.dataclass(frozen=True)
class Marking:
    """Leaves a mark for each task; one of them fails or kills its worker while the file "broken" is there."""

    folder: str
    how: str

    def __call__(self, task):
        folder = pathlib.Path(self.folder)
        if task == 5 and (folder / "broken").exists():
            if self.how == "dies":
                os._exit(1)
            raise ValueError("no such layer")
        with open(folder / f"{task}", "a") as file:
            file.write("x")
        return task * task

    def name_of(self, task):
        return f"task number {task}"


@pytest.mark.parametrize("how", ["raises", "dies"])
def test_what_is_finished_is_kept(tmp_path, how):
    (tmp_path / "broken").touch()
    job = Marking(str(tmp_path), how)
    context = multiprocessing.get_context("spawn")
    with concurrent.futures.ProcessPoolExecutor(1, context) as pool, pytest.raises(tolvik.WorkerError) as caught:
        executors.run(job, 8, executor=pool)
    text = str(caught.value)
    assert "call again to do the rest" in text and "\n" not in text
    if how == "raises":
        assert text.startswith("task number 5: ValueError: no such layer") and caught.value.task == 5
    else:
        assert text.startswith("task number ") and "BrokenProcessPool" in text
    (tmp_path / "broken").unlink()
    kept = {path.name for path in tmp_path.iterdir()}
    assert "0" in kept
    with concurrent.futures.ProcessPoolExecutor(1, context) as pool:
        assert executors.run(job, 8, executor=pool) == [task * task for task in range(8)]
    assert (tmp_path / "0").read_text() == "x"  # was not done again
    if how == "raises":
        assert all((tmp_path / str(task)).read_text() == "x" for task in range(8))


def test_a_serial_failure_keeps_too(tmp_path):
    (tmp_path / "broken").touch()
    job = Marking(str(tmp_path), "raises")
    with pytest.raises(tolvik.WorkerError, match="task number 5"):
        executors.run(job, 8)
    (tmp_path / "broken").unlink()
    assert executors.run(job, 8) == [task * task for task in range(8)]
    assert all((tmp_path / str(task)).read_text() == "x" for task in range(8))
    executors.run(job, 8)  # nothing is kept of what has ended
    assert (tmp_path / "0").read_text() == "xx"


def test_little_work_is_done_here(tmp_path, monkeypatch):
    monkeypatch.setattr(executors, "SERIAL_BELOW", 2.0)

    class Refusing(concurrent.futures.Executor):
        def submit(self, *arguments):
            raise AssertionError("this work pays no executor")

    assert executors.run(Marking(str(tmp_path), "raises"), 20,
                         executor=Refusing()) == [task * task for task in range(20)]


def test_progress_counts_the_tasks(cobalt, capsys):
    seen = []
    tolvik.energy_map(cobalt, ENERGIES, Q, polarization="left", progress=lambda done, count: seen.append((done, count)))
    assert seen[0] == (0, 9) and seen[-1] == (9, 9)
    tolvik.energy_map(cobalt, ENERGIES, Q, polarization="left", progress=True)
    captured = capsys.readouterr()
    assert captured.out == "" and "9/9" in captured.err


def test_workers_use_one_thread(spawned):
    executors.run(Marking(os.getcwd(), "raises"), 0, executor=spawned)
    assert spawned.submit(_threads_after_work).result() == "1"


def _threads_after_work():
    import pickle
    blob = pickle.dumps(Nothing())
    executors._work(("another", 1), "digest", blob, [0])
    return tolvik.build_info()["threads"]


class Nothing:
    def __call__(self, task):
        return None


@pytest.mark.parametrize("polarization", ["asymmetry", ("left", "left"), ()])
def test_polarizations_that_make_no_map(cobalt, polarization):
    with pytest.raises(tolvik.DataError, match="polarization"):
        tolvik.energy_map(cobalt, ENERGIES, Q, polarization=polarization)
