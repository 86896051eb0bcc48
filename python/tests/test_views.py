# SPDX-License-Identifier: GPL-2.0-or-later
"""Columns are arrays on the memory of the state, and keep it alive and in place."""
import gc

import numpy as np
import pytest

import tolvik


@pytest.fixture
def state(examples):
    return tolvik.load(examples / "mo_si_mirror.state")


def test_a_column_writes_into_the_records(state):
    before = [layer.layer_d for layer in state.layers]
    state.layers.layer_d[1:-1] *= 1.01
    after = [layer.layer_d for layer in state.layers]
    assert after == [before[0]] + [d * 1.01 for d in before[1:-1]] + [before[-1]]


def test_a_column_is_set_with_the_broadcasting_of_numpy(state):
    state.layers.layer_sigma = 2.5
    assert set(state.layers.layer_sigma) == {2.5}
    with pytest.raises(ValueError):
        state.layers.layer_sigma = [1.0, 2.0]


def test_texts_are_columns_too(state):
    names = state.layers.layer_db
    state.layers.layer_db = [name + "2" for name in names]
    assert state.layers[1].layer_db == names[1] + "2"
    with pytest.raises(ValueError, match=f"layer_db: expected {len(names)} values, got 1"):
        state.layers.layer_db = ["Si"]


@pytest.mark.parametrize("move", [
    lambda s: s.layers.append(), lambda s: s.layers.insert(0), lambda s: s.layers.__delitem__(1),
    lambda s: setattr(s, "layers", tolvik.State().layers), lambda s: s._load("x"), lambda s: s._read("", "x"),
    lambda s: s.layers.__setitem__(0, s.layers[1])])
def test_no_block_moves_while_a_view_lives(state, move, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    tolvik.State().save("x")
    before = state.text()
    view = state.layers.layer_d[1:3]  # a slice holds the whole
    with pytest.raises(BufferError, match="layers: an array still shows this memory"):
        move(state)
    assert state.text() == before
    del view
    gc.collect()
    move(state)


def test_views_of_one_block_do_not_hold_another(state):
    view = state.layers.layer_d
    state.fitvariables.append(fit_value=1.0)
    assert view.size == len(state.layers)


def test_a_view_outlives_its_state(state):
    view = state.layers.layer_d
    values = view.tolist()
    del state
    gc.collect()
    churn = [np.ones(10000) for _ in range(50)]  # what was freed would be used again
    assert view.tolist() == values and len(churn) == 50


def test_points_of_a_measurement_are_views(state):
    dataset = state.datasets.append(datasettitle="one")
    dataset.dataset_qz = [0.1, 0.2, 0.3]
    view = dataset.dataset_qz
    view[1] = 0.25
    assert state.datasets[-1].dataset_qz.tolist() == [0.1, 0.25, 0.3]
    dataset.dataset_qz = [1.0, 2.0, 3.0]  # the same length moves nothing
    assert view.tolist() == [1.0, 2.0, 3.0]
    with pytest.raises(BufferError, match="datasets"):
        dataset.dataset_qz = [1.0]
    with pytest.raises(BufferError, match="datasets"):
        state.datasets.append()
    del view
    dataset.dataset_qz = [1.0]
    assert dataset.dataset_qz.size == 1


def test_derived_columns_follow_and_are_read_only(state):
    state.layers.layer_d[1] = 50
    z = state.layers.layer_z
    assert z[1] == state.layers.layer_d[1] + z[0]
    assert np.allclose(np.diff(z), state.layers.layer_d[1:])
    for name in ("layer_z", "epsilon", "magnetic"):
        with pytest.raises(ValueError, match="read-only"):
            getattr(state.layers, name)[0] = 1
        with pytest.raises(AttributeError):
            setattr(state.layers, name, 1)


def test_tensors_follow_the_constants_and_the_magnetisation(state):
    state.layers.layer_delta[1] = 1e-3
    state.layers.layer_beta[1] = 2e-4
    n = 1 - 1e-3 + 2e-4j
    epsilon = state.layers.epsilon
    assert epsilon.shape == (len(state.layers), 4, 4)
    assert np.allclose(epsilon[1, :3, :3], np.eye(3) * n * n, rtol=1e-14)  # an isotropic medium: n squared
    assert not state.layers.magnetic.any()
    state.layers.layer_ddelta[1] = 1e-4
    state.magnetizationmode = 2
    state.magphi = 0.0
    epsilon = state.layers.epsilon
    assert state.layers.magnetic.all()
    assert abs(epsilon[1, 0, 1]) == pytest.approx(2 * abs(n) ** 2 * 1e-4)  # 2 n² delta_m, to first order
    assert epsilon[1, 0, 1] == -epsilon[1, 1, 0] and epsilon[1, 0, 2] == 0


def test_rays_are_a_view_and_have_names(state):
    rays = state.rays
    state.polarization = "left"
    assert np.allclose(rays, [[0.5 ** 0.5, 0, 0, 0.5 ** 0.5], [0.5 ** 0.5, 0, 0, -(0.5 ** 0.5)]])  # (1, ±i)/√2
    assert state.polarization == "left" and state.ray1piim == rays[0, 3]
    rays[0] = [1, 0, 0, 0]
    assert state.polarization == "sigma"
    rays[0] = [1, 0, 1, 0]
    assert state.polarization is None
    del state
    gc.collect()
    assert rays[0, 2] == 1


def test_script_parameters_are_a_view(state):
    state.scriptparameters = [1.0, 2.0]
    view = state.scriptparameters
    view[0] = 5
    assert state.scriptparameters.tolist() == [5.0, 2.0]
    with pytest.raises(BufferError, match="scriptparameters"):
        state.scriptparameters = []
