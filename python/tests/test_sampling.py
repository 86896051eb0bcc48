# SPDX-License-Identifier: GPL-2.0-or-later
"""Errors by refits and by chains agree with those of the covariance, and repeat to the bit."""
import numpy as np
import pytest
from test_fitting import TRUTH, measured, start

import tolvik


@pytest.fixture(scope="module")
def result():
    return tolvik.fit(tolvik.Objective(start(), measured()))


@pytest.mark.parametrize("kind", ["parametric", "residual", "block"])
def test_a_bootstrap_has_the_errors_of_the_covariance(result, kind):
    sample = tolvik.bootstrap(result, 150, kind=kind, seed=2)
    assert sample.samples.shape == (150 - sample.failed, 2) and sample.failed < 5
    # 150 refits give a standard deviation to 1 / sqrt(300) = 6 %; the drawn residuals of 120 points to another 6 %
    assert np.allclose(sample.errors, result.errors, rtol=0.35)
    low, middle, high = sample.quantiles([0.16, 0.5, 0.84])
    assert np.all((low < middle) & (middle < high)) and np.all(np.abs(middle - result.x) < result.errors)
    assert np.array_equal(sample.samples, tolvik.bootstrap(result, 150, kind=kind, seed=2).samples)


def test_a_chain_has_the_errors_of_the_covariance(result):
    post = tolvik.sample(result.objective, steps=600, seed=3, x0=result.x)
    assert post.chain.shape == (600, 32, 2) and post.converged
    assert np.allclose(post.errors, result.errors, rtol=0.2)
    assert np.all(np.abs(post.mean - result.x) < 0.5 * result.errors)
    assert abs(post.correlation()[0, 1] - result.correlation[0, 1]) < 0.15
    band = post.band(result.objective.generative)
    assert band.shape == (3, len(result.objective)) and np.all(band[0] <= band[2])


def test_a_chain_that_is_resumed_has_the_same_bits(result, tmp_path):
    whole = tolvik.sample(result.objective, steps=40, seed=5, x0=result.x, backend=tmp_path / "whole.h5")
    tolvik.sample(result.objective, steps=15, seed=5, x0=result.x, backend=tmp_path / "parts.h5")
    parts = tolvik.sample(result.objective, steps=40, x0=result.x, backend=tmp_path / "parts.h5")
    assert np.array_equal(parts.chain, whole.chain) and np.array_equal(parts.logpost, whole.logpost)
    with pytest.raises(tolvik.DataFileError, match="holds a chain of 32 walkers and 2 parameters"):
        tolvik.sample(result.objective, steps=50, walkers=40, backend=tmp_path / "parts.h5")
    parts.save(tmp_path / "post.h5")
    assert (tmp_path / "post.h5").stat().st_size > 0


def test_a_chain_stops_when_it_is_long_enough(result):
    post = tolvik.sample(result.objective, steps=5000, seed=1, x0=result.x, until="20 tau")
    assert post.converged and len(post.chain) < 5000 and np.all(20 * post.tau < len(post.chain))


def test_arguments_that_are_none(result):
    with pytest.raises(tolvik.DataError, match="kind"):
        tolvik.bootstrap(result, 10, kind="none")
    with pytest.raises(tolvik.DataError, match="until"):
        tolvik.sample(result.objective, until="soon")
    with pytest.raises(tolvik.DataError, match="walkers"):
        tolvik.sample(result.objective, walkers=3)
    assert len(TRUTH) == 2
