# SPDX-License-Identifier: GPL-2.0-or-later
"""Failures: the class, one clear line, and the code."""
import math

import numpy as np
import pytest

import tolvik

Q = np.linspace(0.01, 0.3, 20)


@pytest.fixture
def state(examples):
    return tolvik.load(examples / "oxide_on_silicon.state")


def one_line(caught):
    assert isinstance(caught.value, tolvik.TolvikError)
    assert "\n" not in str(caught.value)
    return str(caught.value)


def limit_of(state):
    return 4 * math.pi / (12398.326 / state.energy)  # 2 k0


@pytest.mark.parametrize("calculate", [tolvik.curve, tolvik.dichroism])
def test_a_point_beyond_2_k0(state, calculate):
    limit = limit_of(state)
    with pytest.raises(tolvik.OutOfReachError, match="q\\[1\\]") as caught:
        calculate(state, [0.1, limit * 1.001, 0.2])
    assert one_line(caught) and isinstance(caught.value, ValueError)
    assert caught.value.code == 2 and caught.value.index == 1 and caught.value.limit == pytest.approx(limit)
    state.resolution = 0
    calculate(state, [limit * 0.999])


def test_the_resolution_counts_too(state):
    q = limit_of(state) * 0.999
    with pytest.raises(tolvik.OutOfReachError, match="2 sigma = 0.02"):
        tolvik.curve(state, [q], dq=0.01)
    tolvik.curve(state, [q], dq=0)


@pytest.mark.parametrize("bad", [math.nan, math.inf, -math.inf])
@pytest.mark.parametrize("calculate", [tolvik.curve, tolvik.dichroism])
def test_a_point_that_is_not_finite(state, bad, calculate):
    with pytest.raises(tolvik.OutOfReachError, match="q\\[2\\] is -?(nan|inf)") as caught:
        calculate(state, [0.1, 0.2, bad, 0.3])
    assert caught.value.index == 2 and one_line(caught)


def test_a_state_without_energy():
    with pytest.raises(tolvik.CalculationError, match="no photon energy: set state.energy") as caught:
        tolvik.curve(tolvik.State(), Q)
    assert caught.value.code == 5 and one_line(caught)


@pytest.mark.parametrize("value", [0, -1, math.nan, math.inf])
def test_energies_that_are_none(state, value):
    with pytest.raises(ValueError, match="energy"):
        state.energy = value
    with pytest.raises(tolvik.DataError, match="energy"):
        tolvik.curve(state, Q, energy=value)


def test_a_script_that_does_not_compile(state):
    state.scriptlines = ["x = 1", "y = = 2"]
    for run in (state.run_script, lambda: tolvik.curve(state, Q), state.profile):
        with pytest.raises(tolvik.ScriptError, match="script, line 2: unexpected symbol near '='") as caught:
            run()
        assert caught.value.code == 3 and one_line(caught)


def test_a_script_that_raises(state):
    state.scriptlines = ["", "error('the layer is too thin')"]
    before = state.text()
    for run in (lambda: tolvik.curve(state, Q), lambda: tolvik.dichroism(state, Q), state.run_script):
        with pytest.raises(tolvik.ScriptError, match="script, line 2: the layer is too thin") as caught:
            run()
        assert caught.value.code == 4 and one_line(caught)
    assert state.text() == before


def test_a_script_that_puts_points_out_of_reach(state):
    state.scriptlines = ["energy = 500"]
    with pytest.raises(tolvik.OutOfReachError):
        tolvik.curve(state, np.linspace(0.01, 0.6, 50))  # 2 k0 at 500 eV is 0.507


def test_a_script_that_works_changes_the_curve_and_not_the_state(state):
    plain = tolvik.curve(state, Q).R
    state.scriptlines = ["thickness[1] = 2 * thickness[1]"]
    doubled = tolvik.curve(state, Q).R
    state.scriptlines = []
    assert np.array_equal(tolvik.curve(state, Q).R, plain)
    state.layers.layer_d[1] *= 2
    assert np.array_equal(tolvik.curve(state, Q).R, doubled) and not np.array_equal(plain, doubled)


def test_missing_tables_are_named(state, tmp_path):
    with pytest.raises(tolvik.TablesError, match="SiO2.db") as caught:
        state.load_tables(tmp_path)
    assert isinstance(caught.value, LookupError) and caught.value.code == 6 and one_line(caught)
    state.ocautomatic = 1
    with pytest.raises(tolvik.TablesError, match="not loaded: .*SiO2.db.*call load_tables"):
        tolvik.curve(state, Q)
    with pytest.raises(tolvik.TablesError):
        tolvik.energy_scan(state, [8000.0], 0.1)
    with pytest.raises(tolvik.TablesError):
        state.set_constants()


def test_out_of_memory(state):
    state.layersegmentationmode = 1
    state.layers.layer_sigma = 1e7
    state.layers.layer_d[1:-1] = 1e10
    state.minlayerthickness = 1e-3
    state.maxlayerthickness = 1e-3
    with pytest.raises(MemoryError) as caught:
        tolvik.curve(state, Q)
    assert one_line(caught)


@pytest.mark.parametrize("dq", [-1, math.nan, math.inf, "broad", "-3%", [0.1], np.full(20, -1.0)])
def test_widths_that_are_none(state, dq):
    with pytest.raises(tolvik.DataError, match="sigma"):
        tolvik.curve(state, Q, dq=dq)


@pytest.mark.parametrize("q", [0.1, [[0.1]], "a"])
def test_q_of_another_shape(state, q):
    with pytest.raises((tolvik.DataError, ValueError)):
        tolvik.curve(state, q)


def test_all_classes_derive_from_one():
    from tolvik import errors
    for name in errors.__all__:
        kind = getattr(tolvik, name)
        assert issubclass(kind, tolvik.TolvikError) or issubclass(kind, UserWarning), name
