# SPDX-License-Identifier: GPL-2.0-or-later
import math

import numpy as np
import pytest

from tolvik import polarization
from tolvik.errors import DataError

C = math.sqrt(0.5)


def test_left_is_one_i_over_root_two():
    sigma_re, sigma_im, pi_re, pi_im = polarization.rays("left")[0]
    assert np.array([sigma_re + 1j * sigma_im, pi_re + 1j * pi_im]) == pytest.approx(np.array([1, 1j]) / math.sqrt(2))


@pytest.mark.parametrize(
    "name, first, second",
    [
        ("sigma", (1, 0, 0, 0), (0, 0, 1, 0)),
        ("pi", (0, 0, 1, 0), (1, 0, 0, 0)),
        ("left", (C, 0, 0, C), (C, 0, 0, -C)),
        ("right", (C, 0, 0, -C), (C, 0, 0, C)),
        ("asymmetry", (C, 0, 0, C), (C, 0, 0, -C)),
        ("S", (1, 0, 0, 0), (0, 0, 1, 0)),
        (" Left circular ", (C, 0, 0, C), (C, 0, 0, -C)),
        (("right", "sigma"), (C, 0, 0, -C), (1, 0, 0, 0)),
    ],
)
def test_rays_of_names(name, first, second):
    assert polarization.rays(name) == pytest.approx(np.array([first, second]), abs=0)


def test_rays_are_orthogonal_and_of_unit_length():
    for name in ("sigma", "pi", "left", "right"):
        rays = polarization.rays(name)
        amplitudes = rays[:, 0::2] + 1j * rays[:, 1::2]
        assert amplitudes @ amplitudes.conj().T == pytest.approx(np.eye(2))


def test_numbers_are_taken_as_they_are():
    numbers = [1, 0.5, 0, 0, 0, 0, 2, 0]
    assert polarization.rays(numbers).ravel().tolist() == numbers
    assert polarization.rays(np.reshape(numbers, (2, 4))).ravel().tolist() == numbers


def test_names_of_rays():
    for name in ("sigma", "pi", "left", "right"):
        assert polarization.name_of_ray(polarization.rays(name)[0]) == name
        assert polarization.name_of(polarization.rays(name)) == name
    assert polarization.name_of_ray([0.70711, 0, 0, -0.70711]) == "right", "as a state file saves it"
    assert polarization.name_of_ray([1, 0, 1e-9, 0]) is None
    assert polarization.name_of_ray([C, 1e-9, 0, C]) is None
    assert polarization.name_of("asymmetry") == "asymmetry"


@pytest.mark.parametrize(
    "wrong",
    [
        "up",
        "",
        "leftt",
        ("left",),
        ("left", "asymmetry"),
        ("left", "right", "pi"),
        [1, 0, 0],
        np.zeros((2, 4)),
        [1, 0, 0, 0, 0, 0, 0, 0],
        [math.nan] * 8,
        3,
        None,
        object(),
    ],
)
def test_wrong_polarizations_are_named(wrong):
    with pytest.raises(DataError, match="polarization") as caught:
        polarization.rays(wrong)
    assert "\n" not in str(caught.value)
