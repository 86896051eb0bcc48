# SPDX-License-Identifier: GPL-2.0-or-later
"""The program's own optimisers, step by step."""
import concurrent.futures

import numpy as np
import pytest

import tolvik


@pytest.fixture
def state(examples):
    return tolvik.load(examples / "nickel_film.state")


def error_at(state):
    """Error of a state as it is: a simplex without size stays where it starts."""
    state.fitalgorithm = 0
    state.fitvariables.fit_delta = 0
    return tolvik.Fit(state).step()


@pytest.mark.parametrize("algorithm", [0, 1, 2])
def test_steps_lower_the_error_and_print_nothing(state, algorithm, capfd):
    before = state.copy()
    state.fitalgorithm = before.fitalgorithm = algorithm
    fit = tolvik.Fit(state)
    assert fit.best_error == np.inf
    first = fit.step()
    for _ in range(1 if algorithm == 1 else 60):
        last = fit.step()
    assert fit.best_error <= min(first, last) and np.isfinite(fit.best_error)
    assert state == before
    best = fit.best
    assert best.fitvariables.fit_value.tolist() != state.fitvariables.fit_value.tolist()
    assert error_at(best) == pytest.approx(fit.best_error, rel=1e-9)
    assert isinstance(fit.snapshot(), tolvik.State)
    captured = capfd.readouterr()
    assert captured.out == "" and captured.err == ""


def test_an_evolution_is_reproducible_and_silent(state, capfd):
    state.evo_population = 12
    state.evo_parents = 50
    state.evo_probability = 20
    state.evo_range = 10
    runs = []
    for _ in range(2):
        evolution = tolvik.Evolution(state)
        runs.append([evolution.step() for _ in range(5)])
        best = evolution.best
        assert evolution.best_error == min(runs[-1])
    assert runs[0] == runs[1]
    variables = best.fitvariables
    assert np.all(variables.fit_value >= variables.fit_lower_boundary)
    assert np.all(variables.fit_value <= variables.fit_upper_boundary)
    assert capfd.readouterr().out == ""


def test_steps_of_two_threads_take_turns(state):
    state.fitalgorithm = 1
    fits = [tolvik.Fit(state) for _ in range(2)]
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        errors = list(pool.map(lambda fit: fit.step(), fits))
    assert errors[0] == errors[1]


def test_the_best_has_the_error_that_was_said(state, tmp_path):
    state.fitalgorithm = 0
    fit = tolvik.Fit(state)
    errors = [fit.step() for _ in range(200)]
    assert errors[-1] < errors[0]
    fit.best.save(tmp_path / "best.state", exact=True)
    assert error_at(tolvik.load(tmp_path / "best.state")) == pytest.approx(fit.best_error, rel=1e-9)


def test_a_script_that_raises(state):
    state.scriptlines = ["error('no')"]
    with pytest.raises(tolvik.ScriptError, match="line 1: no"):
        tolvik.Fit(state)
