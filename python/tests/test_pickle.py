# SPDX-License-Identifier: GPL-2.0-or-later
"""Copies, pickles and exact files of random states give the same curves, bit by bit."""
import copy
import pickle

import numpy as np
import pytest
from hypothesis import given, settings, strategies as st

import tolvik

Q = np.linspace(0.003, 0.3, 40)
NAMES = st.text(st.characters(min_codepoint=33, max_codepoint=0x24f, blacklist_characters="#=\x7f"), max_size=12)


def numbers(low, high):
    return st.floats(low, high, allow_nan=False, width=64)


LAYERS = st.lists(st.fixed_dictionaries({
    "layer_d": numbers(0, 300), "layer_sigma": numbers(0, 15), "layer_delta": numbers(-1e-3, 5e-3),
    "layer_beta": numbers(0, 1e-3), "layer_ddelta": numbers(-1e-4, 1e-4), "layer_dbeta": numbers(-1e-4, 1e-4),
    "layer_density": numbers(0, 20), "layer_db": NAMES, "layer_material": NAMES}), min_size=2, max_size=6)
SETTINGS = st.fixed_dictionaries({
    "energy": numbers(600, 20000), "resolution": numbers(0, 0.01), "algorithm": st.integers(0, 2),
    "magnetizationmode": st.sampled_from([0, 2]), "maggamma": numbers(0, 360), "magphi": numbers(0, 60),
    "layersegmentationmode": st.integers(0, 1), "minlayerthickness": st.just(2.0), "maxlayerthickness": st.just(9.0),
    "gradientscale": numbers(0.1, 1), "segmentationmodel": st.integers(0, 2), "averaging": st.integers(0, 2),
    "fastresolution": st.booleans(), "evo_random": st.integers(0, 2 ** 32 - 1), "fittemp": numbers(-1e300, 1e300)})
POLARIZATIONS = st.sampled_from(["sigma", "pi", "left", "right"])
SCRIPTS = st.lists(st.sampled_from(["x = 1", "  y = x", "thickness[1] = 20", "-- remark", ""]), max_size=3)


@st.composite
def states(draw):
    state = tolvik.State()
    while len(state.layers):
        del state.layers[0]
    for keys in draw(LAYERS):
        state.layers.append(**keys)
    for key, value in draw(SETTINGS).items():
        setattr(state, key, value)
    state.polarization = draw(POLARIZATIONS)
    state.scriptlines = draw(SCRIPTS)
    state.scriptparameters = draw(st.lists(numbers(-1e9, 1e9), max_size=3))
    for _ in range(draw(st.integers(0, 2))):
        state.gaussfunctions.append(gauss_z=draw(numbers(0, 100)), gauss_delta=draw(numbers(0, 1e-4)),
                                    gauss_variance=draw(numbers(1, 20)))
        state.fitvariables.append(fit_value=draw(numbers(-1e10, 1e10)), fit_delta=0.1)
    if draw(st.booleans()):
        state.datasets.append(datasettitle="Empty")
        dataset = state.datasets.append(datasettitle="one", datasetenergy=draw(numbers(1, 1e5)))
        dataset.dataset_qz = draw(st.lists(numbers(0, 1), min_size=1, max_size=4))
        dataset.dataset_R0 = np.ones(dataset.dataset_qz.size) * draw(numbers(1e-12, 1))
    return state


def same_curves(one, other):
    def curves(state):
        try:
            both = tolvik.dichroism(state, Q)
            return tolvik.curve(state, Q).R.tobytes() + both.Rp.tobytes() + both.Rm.tobytes() + both.A.tobytes()
        except tolvik.TolvikError as error:
            return str(error)
    return curves(one) == curves(other)


@settings(max_examples=60, deadline=None)
@given(states())
def test_copies_and_pickles_are_equal(state):
    for other in (copy.copy(state), copy.deepcopy(state), state.copy(), pickle.loads(pickle.dumps(state))):
        assert other == state and other is not state and other.digest() == state.digest()
        assert other.text(exact=True) == state.text(exact=True)
        assert same_curves(state, other)


@settings(max_examples=60, deadline=None)
@given(states())
def test_an_exact_file_gives_the_same_curves(tmp_path_factory, state):
    path = tmp_path_factory.mktemp("exact") / "x.state"
    state.save(path, exact=True)
    loaded = tolvik.load(path)
    assert same_curves(state, loaded)
    assert loaded.text(exact=True) == state.text(exact=True)
    assert loaded.energy == state.energy and loaded.wavelength == state.wavelength


def test_six_digits_do_not_give_the_same_curve(examples):
    state = tolvik.load(examples / "mo_si_mirror.state")
    state.layers.layer_d[1:-1] *= 1.0000123456
    loaded = tolvik.State.from_text(state.text())
    assert not np.array_equal(tolvik.curve(state, Q).R, tolvik.curve(loaded, Q).R)


def test_the_program_reads_an_exact_file(examples):
    state = tolvik.load(examples / "mo_si_mirror.state")
    keys = [line.split("=")[0] for line in state.text().splitlines() if "=" in line]
    assert [line.split("=")[0] for line in state.text(exact=True).splitlines() if "=" in line] == keys


def test_tables_and_unsaved_members_are_kept(examples):
    state = tolvik.load(examples / "l_edge" / "cobalt.state")
    state.load_tables(examples / "l_edge")
    state.epsilon = 1e-9
    state.kkoffset = 0.25
    state.mulqz4 = 1
    copied = pickle.loads(pickle.dumps(state))
    assert copied == state and copied.epsilon == 1e-9 and copied.mulqz4 == 1
    energies = np.linspace(772, 798, 5)
    assert np.array_equal(tolvik.energy_scan(copied, energies, 0.1).R, tolvik.energy_scan(state, energies, 0.1).R)


@pytest.mark.parametrize("key, value", [("resolution", 0.1), ("kktableindex", 2), ("evo_random", 7)])
def test_states_with_one_other_member_differ(key, value):
    one, other = tolvik.State(), tolvik.State()
    assert one == other and not one != other
    setattr(other, key, value)
    assert one != other and one.digest() != other.digest()
    assert one != 3
    with pytest.raises(TypeError):
        hash(one)


@pytest.mark.parametrize("spoil", [lambda b: b[:-1], lambda b: b + b"x", lambda b: b"", lambda b: b"\x02" + b[1:],
                                   lambda b: b[:4] + b"\xff\xff\xff\x7f" + b[8:]])
def test_spoilt_bytes_are_refused(spoil):
    state = tolvik.State()
    with pytest.raises(tolvik.StateFileError, match="not the bytes of a state"):
        tolvik.State._from_bytes(spoil(state._bytes()))
