# SPDX-License-Identifier: GPL-2.0-or-later
"""Curves: against the textbook recursion, and what they leave alone."""
import concurrent.futures
import multiprocessing
import subprocess
import sys
import warnings

import numpy as np
import pytest

import tolvik

Q = np.linspace(0.005, 0.5, 300)


def parratt(state, q):
    """L. G. Parratt, Phys. Rev. 95, 359 (1954), with the roughness of Nevot and Croce; sigma light, no resolution."""
    k0 = 2 * np.pi / state.wavelength
    n = 1 - state.layers.layer_delta + 1j * state.layers.layer_beta
    s2 = (q / (2 * k0)) ** 2
    kz = [k0 * np.sqrt(index ** 2 - 1 + s2 + 0j) for index in n]
    r = np.zeros(q.size, complex)
    for j in range(len(n) - 1):
        a, b = kz[j + 1], kz[j]
        f = (a - b) / (a + b) * np.exp(-2 * a * b * state.layers.layer_sigma[j] ** 2)
        if j:
            r *= np.exp(2j * kz[j] * state.layers.layer_d[j])
        r = (f + r) / (1 + f * r)
    return np.abs(r) ** 2


@pytest.fixture(params=["silicon", "oxide_on_silicon", "nickel_film"])
def state(request, examples):
    state = tolvik.load(examples / f"{request.param}.state")
    state.polarization = "sigma"
    return state


def test_a_curve_is_that_of_the_textbook(state):
    curve = tolvik.curve(state, Q, dq=0)
    assert np.allclose(curve.R, parratt(state, Q), rtol=1e-9, atol=1e-16)
    assert np.array_equal(curve.q, Q) and curve.q is not Q


def test_a_curve_leaves_the_state_as_it_was(state):
    before = state.copy()
    state.scriptlines = before.scriptlines = ["thickness[0] = 3"]
    tolvik.curve(state, Q, dq=0.001, energy=9000)
    tolvik.dichroism(state, Q)
    state.profile()
    assert state == before


def test_the_resolution_is_sigma(state):
    state.resolution = 0.004  # half width of the program: two standard deviations
    assert np.array_equal(tolvik.curve(state, Q).R, tolvik.curve(state, Q, dq=0.002).R)
    # nine samples of a Gaussian at 0, ±r/4 ... ±r with the weights of the program, on the textbook curve
    weights = {0: 0.204499, 0.25: 0.179959, 0.5: 0.123722, 0.75: 0.066462, 1: 0.027607}
    expected = sum(w * (parratt(state, Q + x * 0.004) + parratt(state, Q - x * 0.004)) / (2 if x == 0 else 1)
                   for x, w in weights.items())
    inside = Q > 0.01
    assert np.allclose(tolvik.curve(state, Q).R[inside], expected[inside], rtol=1e-8)


def test_the_energy_can_be_another(state):
    other = state.copy()
    other.energy = 9000
    assert np.array_equal(tolvik.curve(state, Q, energy=9000).R, tolvik.curve(other, Q).R)


def test_threads_do_not_change_a_bit(state):
    q = np.linspace(0.005, 0.5, 60000)
    alone = tolvik.curve(state, q, threads=1).R
    assert np.array_equal(tolvik.curve(state, q, threads=3).R, alone)
    both = tolvik.dichroism(state, q, threads=3)
    assert np.array_equal(both.Rp, tolvik.dichroism(state, q, threads=1).Rp) and both.A.size == q.size
    with pytest.raises(tolvik.OutOfReachError) as caught:
        tolvik.curve(state, np.append(q, 99.0), threads=3)
    assert caught.value.index == 60000


def test_sigma_and_pi_are_the_rays_of_the_dichroism(state):
    both = tolvik.dichroism(state, Q, dq=0)
    assert np.array_equal(both.Rp, tolvik.curve(state, Q, dq=0).R)
    assert np.allclose(both.A, (both.Rp - both.Rm) / (both.Rp + both.Rm), rtol=1e-14)
    state.polarization = "pi"
    assert np.array_equal(both.Rm, tolvik.curve(state, Q, dq=0).R)


def test_an_empty_grid_gives_an_empty_curve(state):
    assert tolvik.curve(state, []).R.shape == (0,)
    assert tolvik.dichroism(state, []).A.shape == (0,)


def test_the_curve_is_that_of_the_program(state, examples, tmp_path, program):
    state.save(tmp_path / "exact.state", exact=True)
    printed = subprocess.run([program, "-refl", tmp_path / "exact.state"], stdout=subprocess.PIPE, check=True,
                             text=True)
    q, R = np.array([line.split() for line in printed.stdout.splitlines()], dtype=float).T
    grid = np.arange(state.numberofpoints) * (state.qzmax * (1 / (state.numberofpoints - 1)))
    assert [f"{x:e}" for x in tolvik.curve(state, grid).R] == [f"{x:e}" for x in R] and q.size == grid.size


def test_two_threads_may_use_one_state(state):
    expected = tolvik.curve(state, Q).R
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        futures = [pool.submit(tolvik.curve, state, Q) for _ in range(200)]
        assert all(np.array_equal(future.result().R, expected) for future in futures)


def test_one_thread_may_write_while_another_calculates(state):
    lengths = [layer.layer_d for layer in state.layers]

    def write():
        for _ in range(200):
            state.layers.append(state.layers[-1])
            del state.layers[-1]

    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        writing = pool.submit(write)
        while not writing.done():
            assert np.isfinite(tolvik.curve(state, Q).R).all()
        writing.result()
    assert [layer.layer_d for layer in state.layers] == lengths


def _curve_of(state):
    return tolvik.curve(state, Q).R


@pytest.mark.parametrize("method", ["fork", "spawn"])
def test_other_processes_give_the_same_bits(state, method):
    expected = _curve_of(state)
    tolvik.curve(state, np.linspace(0.01, 0.4, 60000))  # threads have run before the fork
    with concurrent.futures.ProcessPoolExecutor(1, multiprocessing.get_context(method)) as pool:
        assert np.array_equal(pool.submit(_curve_of, state).result(timeout=120), expected)


def test_energy_scan_needs_no_more_than_tables(examples):
    state = tolvik.load(examples / "l_edge" / "cobalt.state")
    state.load_tables(examples / "l_edge")
    energies = np.linspace(772, 798, 27)
    scan = tolvik.energy_scan(state, energies, 0.1)
    assert scan.R.shape == (27,) and np.asarray(scan) is not None
    state.ocautomatic = 1
    single = [tolvik.curve(state, [0.1], energy=energy).R[0] for energy in energies]
    assert np.allclose(scan.R, single, rtol=1e-12)
    with pytest.warns(tolvik.TableRangeWarning, match="5000 eV is beyond the table of"):
        beyond = tolvik.energy_scan(state, [780.0, 5000.0], 0.1)
    assert np.isfinite(beyond.R[0]) and np.isnan(beyond.R[1])
    with pytest.warns(tolvik.TableRangeWarning):
        tolvik.curve(state, [0.1], energy=5000)
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        tolvik.curve(state, [0.1], energy=780)


def test_the_profile_has_a_slab_per_layer(state):
    z, delta, beta = profile = state.profile()
    assert z.size == delta.size + 1 == beta.size + 1 == len(state.layers) + 1
    assert np.allclose(np.diff(z)[1:-1], state.layers.layer_d[1:-1])
    assert np.array_equal(delta, state.layers.layer_delta) and np.array_equal(profile.dbeta, state.layers.layer_dbeta)
    steps = state.profile(step=True)
    assert steps.z.size == steps.delta.size == 2 * delta.size
    area = np.sum(np.diff(steps.z) * steps.delta[:-1])  # the steps are flat
    assert area == pytest.approx(np.sum(np.diff(z) * delta))


def test_import_prints_nothing_and_is_light():
    code = ("import sys, tolvik; tolvik.load; "
            "print(sorted(m for m in sys.modules if m in ('scipy', 'matplotlib', 'emcee')))")
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert done.stdout == "[]\n" and done.stderr == ""
