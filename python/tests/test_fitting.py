# SPDX-License-Identifier: GPL-2.0-or-later
"""Objectives and fits on synthetic data with known truth."""
import json
import pickle
import threading
import time

import numpy as np
import pytest

import tolvik

Q = np.linspace(0.02, 0.4, 120)
TRUTH = [300.0, 8.0]


def film():
    """Nickel on silicon; free are the thickness of the film and its roughness."""
    state = tolvik.State()
    state.energy = 8048
    state.layers[0].layer_delta = 7.58e-6
    state.layers[0].layer_beta = 1.75e-7
    state.layers[0].layer_sigma = 3.0
    state.layers.insert(1, layer_d=TRUTH[0], layer_delta=2.42e-5, layer_beta=5.5e-7, layer_sigma=TRUTH[1])
    state.fitvariables.append(fit_id=0, fit_additional_id=1, fit_value=TRUTH[0], fit_delta=1, fit_lower_boundary=200,
                              fit_upper_boundary=400)
    state.fitvariables.append(fit_id=3, fit_additional_id=1, fit_value=TRUTH[1], fit_delta=0.1, fit_lower_boundary=0.5,
                              fit_upper_boundary=20)
    return state


def measured(seed=0, noise=0.03):
    R = tolvik.curve(film(), Q, dq=0).R
    dr = noise * R
    return tolvik.Data(Q, R + dr * np.random.default_rng(seed).standard_normal(Q.size), dr, 0.0)


def start(thickness=303.0, roughness=6.0):
    state = film()
    state.fitvariables.fit_value = [thickness, roughness]
    return state


@pytest.fixture
def objective():
    return tolvik.Objective(start(), measured())


def test_residuals_and_chi_square_follow_their_definition(objective):
    data = measured()
    model = tolvik.curve(objective.state_at(TRUTH), Q, dq=0).R
    expected = (data.r - model) / data.dr
    assert np.allclose(objective.residuals(TRUTH), expected, rtol=1e-9)
    assert objective.chisqr(TRUTH) == pytest.approx(np.sum(expected ** 2), rel=1e-9)
    norm = -0.5 * np.sum(expected ** 2 + np.log(2 * np.pi * data.dr ** 2))  # a product of normal densities
    assert objective.logl(TRUTH) == pytest.approx(norm, rel=1e-9) and objective.nll(TRUTH) == -objective.logl(TRUTH)
    assert objective.logp(TRUTH) == pytest.approx(-np.log(200) - np.log(19.5))  # flat between the bounds
    assert objective.logpost(TRUTH) == pytest.approx(objective.logp(TRUTH) + objective.logl(TRUTH))
    assert np.allclose(objective.generative(TRUTH), model, rtol=1e-9)


def test_many_points_are_those_one_by_one(objective):
    points = np.random.default_rng(1).uniform(objective.bounds[:, 0], objective.bounds[:, 1], (17, 2))
    assert objective.residuals(points).shape == (17, Q.size)
    for name in ("residuals", "chisqr", "logl", "logp", "logpost", "nll"):
        many = getattr(objective, name)(points)
        assert np.array_equal(many, [getattr(objective, name)(point) for point in points]), name


def test_the_jacobian_is_that_of_differences(objective):
    x = np.array(TRUTH)
    found = objective.jacobian(x)
    for j, step in enumerate((1e-4, 1e-4)):
        up, down = x.copy(), x.copy()
        up[j] += step
        down[j] -= step
        expected = (objective.residuals(up) - objective.residuals(down)) / (2 * step)
        assert np.allclose(found[:, j], expected, rtol=1e-5, atol=1e-5 * np.abs(expected).max())


def test_outside_the_bounds_there_is_no_posterior(objective):
    assert objective.logpost([100.0, 8.0]) == -np.inf and objective.logp([100.0, 8.0]) == -np.inf
    assert np.allclose(objective.prior_transform([[0.0, 0.5]]), [[200, 10.25]])


def test_an_objective_can_be_pickled(objective):
    other = pickle.loads(pickle.dumps(objective))
    assert np.array_equal(other.residuals(objective.x0), objective.residuals(objective.x0))


def test_shapes_that_are_none(objective):
    for x in (1.0, [1.0], [[1.0]], np.zeros((2, 2, 2))):
        with pytest.raises(tolvik.DataError, match="x has shape"):
            objective.chisqr(x)


def test_least_squares_finds_the_truth(objective):
    result = tolvik.fit(objective)
    assert result.success and np.all(np.abs(result.x - TRUTH) < 4 * result.errors)
    assert 0.6 < result.reduced < 1.5 and result.points == Q.size
    jacobian = objective.jacobian(result.x)
    assert np.allclose(result.covariance, np.linalg.inv(jacobian.T @ jacobian), rtol=1e-6)
    text = str(result)
    assert all(name in text for name in result.names) and "±" in text and "chi-square" in text
    assert "<table>" in result._repr_html_()


def test_several_starts_find_what_one_misses():
    far = tolvik.Objective(start(thickness=230.0), measured())
    alone = tolvik.fit(far)
    best = tolvik.fit(far, starts=24, seed=1)
    assert best.chisqr < alone.chisqr and np.all(np.abs(best.x - TRUTH) < 5 * best.errors)
    assert np.array_equal(best.x, tolvik.fit(far, starts=24, seed=1).x)


def test_differential_evolution_needs_no_start():
    far = tolvik.Objective(start(thickness=230.0), measured())
    result = tolvik.fit(far, "differential_evolution", seed=3)
    assert np.all(np.abs(result.x - TRUTH) < 5 * result.errors)


@pytest.mark.parametrize("method", ["simplex", "levmar", "annealing", "evolution"])
def test_the_programs_own_methods(method):
    state = start(thickness=301.0)
    state.attach(measured())
    state.evo_population, state.evo_parents, state.evo_probability, state.evo_range = 20, 50, 30, 10
    objective = tolvik.Objective(state, measured())
    result = tolvik.fit(objective, method, steps=40, seed=1)
    assert result.chisqr < objective.chisqr(objective.x0) and result.method == method


def test_a_parameter_without_effect_is_flagged():
    state = start()
    state.fitvariables.append(fit_id=0, fit_additional_id=0, fit_value=10, fit_lower_boundary=0, fit_upper_boundary=50)
    with_idle = tolvik.fit(tolvik.Objective(state, measured()))
    without = tolvik.fit(tolvik.Objective(start(), measured()))
    assert with_idle.no_effect.tolist() == [False, False, True] and np.isnan(with_idle.errors[2])
    assert np.allclose(with_idle.errors[:2], without.errors, rtol=1e-3)


def test_a_parameter_at_its_bound_is_flagged():
    state = start()
    state.fitvariables[1].fit_upper_boundary = 7.0  # the truth is 8
    result = tolvik.fit(tolvik.Objective(state, measured()))
    assert result.at_bound.tolist() == [False, True] and np.isnan(result.errors[1]) and np.isfinite(result.errors[0])
    assert "at a bound" in str(result)


def test_nothing_free():
    state = start()
    state.fitvariables = tolvik.State().fitvariables
    objective = tolvik.Objective(state, measured())
    assert objective.x0.shape == (0,)
    with pytest.raises(tolvik.DataError, match="nothing is free"):
        tolvik.fit(objective)


def test_more_parameters_than_points():
    few = tolvik.Data([0.1], [1e-4], 1e-5, 0.0)
    result = tolvik.fit(tolvik.Objective(start(), few))
    assert np.isnan(result.reduced) and np.isnan(result.errors).any()


def test_a_start_outside_its_bounds_is_moved():
    with pytest.warns(tolvik.DataWarning):
        objective = tolvik.Objective(start(thickness=1000.0), measured())
    assert objective.x0[0] == 400


def test_crossed_bounds():
    state = start()
    state.fitvariables[0].fit_lower_boundary = 500
    with pytest.raises(tolvik.DataError):
        tolvik.Objective(state, measured())


def test_points_without_value_or_error_are_masked_and_counted():
    r, dr = measured().r.copy(), measured().dr.copy()
    r[3], dr[7] = 0.0, 0.0
    r[11] = np.nan
    with pytest.warns(tolvik.DataWarning, match="3 of 120 points masked"):
        data = tolvik.Data(Q, r, dr, 0.0)
    objective = tolvik.Objective(start(), data)
    assert len(objective) == 117 and tolvik.fit(objective).success


def test_a_script_that_raises():
    state = start()
    state.scriptlines = ["error('no')"]
    with pytest.raises(tolvik.ScriptError, match="no"):
        tolvik.Objective(state, measured())


def test_points_beyond_2_k0():
    with pytest.warns(tolvik.DataWarning, match="1 of 2 points used .1 out of reach"):
        assert len(tolvik.Objective(start(), tolvik.Data([0.1, 9.0], [1e-4, 1e-4], 1e-5, 0.0))) == 1


def test_an_interrupt_keeps_the_best(monkeypatch):
    import _thread
    state = start(thickness=230.0)
    objective = tolvik.Objective(state, measured())
    timer = threading.Timer(0.3, _thread.interrupt_main)
    timer.start()
    result = tolvik.fit(objective, "differential_evolution", seed=1, steps=10 ** 6,
                        progress=lambda done, count: time.sleep(0.02))
    assert not result.success and "interrupted" in result.message
    assert result.chisqr < objective.chisqr(objective.x0)


def test_results_are_exported(objective, tmp_path):
    result = tolvik.fit(objective)
    result.export(tmp_path / "out")
    written = {path.name for path in (tmp_path / "out").iterdir()}
    assert written == {"results.txt", "results.json", "results.csv", "fit.state", "profile.dat", "cov.txt",
                       "curve_0.dat",
                       "residuals_0.dat"}
    found = json.loads((tmp_path / "out" / "results.json").read_text())
    assert found["x"] == result.x.tolist()
    residuals = np.loadtxt(tmp_path / "out" / "residuals_0.dat")[:, 1]
    assert np.sum(residuals ** 2) == pytest.approx(result.chisqr)
    assert tolvik.load(tmp_path / "out" / "fit.state").fitvariables.fit_value.tolist() == result.x.tolist()


def test_the_resolution_of_points(objective):
    data = measured().replace(dq=0.002 * np.ones(Q.size))
    points = tolvik.Objective(start(), data, resolution="points")
    smeared = points.generative(TRUTH)
    fine = np.linspace(-6, 6, 2001)
    weights = np.exp(-fine ** 2 / 2)
    state = points.state_at(TRUTH)
    expected = [np.sum(weights * tolvik.curve(state, q + 0.002 * fine, dq=0).R) / weights.sum() for q in Q[5:]]
    assert np.allclose(smeared[5:], expected, rtol=1e-3)  # a dense Gaussian
