# SPDX-License-Identifier: GPL-2.0-or-later
"""Widths: expected numbers are the standard deviations of the densities themselves, integrated in the test."""
import math

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st

from tolvik import resolution
from tolvik.errors import DataError


def sigma_of_density(density, half_range):
    """Standard deviation over the full width at half maximum of a symmetric density with its top at 0."""
    x = np.linspace(-half_range, half_range, 200001)
    p = density(x)
    sigma = math.sqrt(np.trapz(p * x**2, x) / np.trapz(p, x))
    above = x[p >= p.max() / 2]
    return sigma / (above[-1] - above[0])


@pytest.mark.parametrize(
    "name, density, half_range",
    [
        ("gaussian", lambda x: np.exp(-(x**2) / 2), 9.0),
        ("triangular", lambda x: np.clip(1 - np.abs(x), 0, None), 1.5),
        ("uniform", lambda x: np.where(np.abs(x) <= 1, 1.0, 0.0), 1.5),
    ],
)
def test_full_width_of_each_distribution(name, density, half_range):
    assert resolution.sigma_per_width("fwhm", name) == pytest.approx(sigma_of_density(density, half_range), rel=1e-4)


def test_half_width_of_a_state_file_is_two_sigma():
    assert resolution.to_sigma(0.004, "half") == 0.002
    assert resolution.from_sigma(0.002, "half") == 0.004


def test_percentages_are_of_q():
    q = np.array([0.1, 0.2, -0.2])
    assert resolution.to_sigma(5.0, "percent", q=q) == pytest.approx([0.005, 0.01, 0.01])
    assert resolution.to_sigma(5.0, "percent_fwhm", q=q) == pytest.approx(
        np.array([0.005, 0.01, 0.01]) / 2.3548, rel=1e-5
    )


@given(
    st.sampled_from(resolution.KINDS),
    st.sampled_from(sorted(resolution.FWHM_PER_SIGMA)),
    st.floats(1e-8, 1e3),
    st.floats(1e-6, 10),
)
def test_there_and_back(kind, distribution, width, q):
    sigma = resolution.to_sigma(width, kind, distribution=distribution, q=[q])
    back = resolution.from_sigma(sigma, kind, distribution=distribution, q=[q])
    assert back == pytest.approx(width, rel=1e-12)


@pytest.mark.parametrize(
    "call",
    [
        lambda: resolution.to_sigma(1, "fwmh"),
        lambda: resolution.to_sigma(1, "fwhm", distribution="lorentzian"),
        lambda: resolution.to_sigma(1, "fwhm", distribution="triangle"),
        lambda: resolution.to_sigma([0.1, -0.1]),
        lambda: resolution.to_sigma(math.inf),
        lambda: resolution.to_sigma(3, "percent"),
        lambda: resolution.sigma_of_points("3", [0.1]),
        lambda: resolution.sigma_of_points("-3%", [0.1]),
        lambda: resolution.sigma_of_points("nan%", [0.1]),
        lambda: resolution.sigma_of_points(math.nan, [0.1]),
        lambda: resolution.sigma_of_points([0.1, 0.1], [0.1]),
        lambda: resolution.sigma_of_points(object(), [0.1]),
        lambda: resolution.sigma_of_points(None, [0.1]),
    ],
)
def test_each_error_says_what_sigma_is(call):
    with pytest.raises(DataError, match=r"sigma( =|: a number)") as caught:
        call()
    assert "\n" not in str(caught.value)


def test_what_callers_pass_as_dq():
    q = [0.1, 0.2]
    assert resolution.sigma_of_points("3%", q) == pytest.approx([0.003, 0.006])
    assert resolution.sigma_of_points(0.001, q) == pytest.approx([0.001, 0.001])
    assert resolution.sigma_of_points([0.001, 0.002], q) == pytest.approx([0.001, 0.002])
    assert resolution.sigma_of_points(0, q) == pytest.approx([0, 0])
