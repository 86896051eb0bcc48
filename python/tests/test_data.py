# SPDX-License-Identifier: GPL-2.0-or-later
import math
import pickle
import warnings

import numpy as np
import pytest

from tolvik import units
from tolvik.data import Data
from tolvik.errors import DataError, DataWarning, TolvikError

Q = np.linspace(0.01, 0.1, 10)
R = Q**-4 * 1e-8


def test_names_of_refnx_and_the_full_width():
    data = Data(Q, R, 0.1 * R, 0.001)
    assert data.dq.tolist() == [0.001] * 10
    assert data.x_err == pytest.approx(0.001 * 2 * math.sqrt(2 * math.log(2)))  # FWHM of a gaussian
    assert all(a is not None for a in data.data)
    x, y, y_err, x_err = data.data
    assert (x == Q).all() and (y == R).all() and (y_err == 0.1 * R).all() and (x_err == data.x_err).all()


def test_arrays_are_copies_that_cannot_be_written():
    q = Q.copy()
    data = Data(q, R, 0.1 * R, 0.001, energy=np.full(10, 700.0))
    q[0] = 5
    assert data.q[0] == 0.01
    for array in (data.q, data.r, data.dr, data.dq, data.mask, data.energy):
        with pytest.raises(ValueError):
            array[0] = 1
    with pytest.raises(AttributeError):
        data.q = Q


def test_masked_points_are_counted_and_named_in_one_warning():
    r, dr, q = R.copy(), 0.1 * R, Q.copy()
    r[1], r[2], dr[3], q[4], dr[1] = 0, math.nan, 0, math.inf, 0
    with pytest.warns(DataWarning) as caught:
        data = Data(q, r, dr, name="scan", source="film.dat")
    assert [str(w.message) for w in caught] == [
        "film.dat: scan: 4 of 10 points masked: 2 not a finite number, 1 with R = 0, 1 with dR = 0"
    ]
    assert np.flatnonzero(data.mask).tolist() == [1, 2, 3, 4]
    assert data.x.tolist() == [Q[0], *Q[5:]] and data.n_masked == 4 and len(data) == 10


def test_a_given_mask_is_kept_and_not_warned_about():
    r = R.copy()
    r[1] = 0
    mask = np.zeros(10, bool)
    mask[[1, 7]] = True
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        data = Data(Q, r, mask=mask)
        again = data.replace(energy=700)
    assert np.flatnonzero(again.mask).tolist() == [1, 7]


def test_an_asymmetry_of_zero_is_a_point():
    data = Data(Q, np.zeros(10), polarization="dichroism")
    assert data.n_masked == 0 and data.polarization == "asymmetry"
    with pytest.raises(DataError, match="none of 10 points"):
        Data(Q, np.zeros(10))


def test_rays_of_names_and_numbers():
    assert Data(Q, R, polarization="s").rays[0].tolist() == [1, 0, 0, 0]
    data = Data(Q, R, polarization=[[0, 0, 1, 0], [1, 0, 0, 0]])
    assert data.rays[0].tolist() == [0, 0, 1, 0]
    assert Data(Q, R).rays is None


def test_pickle_keeps_everything():
    data = Data(Q, R, 0.1 * R, 0.001, energy=8048, polarization="left", name="a", metadata={"k": [1]})
    again = pickle.loads(pickle.dumps(data))
    assert (again.q == data.q).all() and (again.dq == data.dq).all() and again.metadata == {"k": [1]}
    assert again.energy == 8048 and again.polarization == "left" and again.name == "a"


def test_repr_in_one_line():
    assert (
        repr(Data(Q, R, 0.1 * R, 0.001, energy=8048, polarization="pi", name="scan"))
        == "Data(scan: 10 points, q 0.01 to 0.1 1/Å, dR, dq (sigma), 8048 eV, pi)"
    )


@pytest.mark.parametrize(
    "call",
    [
        lambda: Data([], []),
        lambda: Data(0.1, 0.1),
        lambda: Data([[0.1]], [[0.1]]),
        lambda: Data(Q, R[:5]),
        lambda: Data(Q, R, R[:5]),
        lambda: Data(Q, R, -R),
        lambda: Data(Q, R, R, -0.001),
        lambda: Data(Q, ["a"] * 10),
        lambda: Data(Q, R, energy=-1),
        lambda: Data(Q, R, energy="Cu"),
        lambda: Data(Q, R, energy=[700, 701]),
        lambda: Data(Q, R, polarization="up"),
        lambda: Data(Q, R, mask=[1] * 10),
        lambda: Data(Q, R, mask=[True]),
        lambda: Data(Q, R * math.nan),
        lambda: Data(Q, [10**400] * 10),
        lambda: Data.from_counts(Q, -R),
        lambda: Data(Q, R).footprint(10, 0.1),
        lambda: Data(Q, R, energy=700).footprint(0, 0.1),
        lambda: Data(Q, R, energy=700).footprint(10, 0.1, "round"),
        lambda: Data(Q, R).background("much"),
        lambda: Data(Q, R).normalise(0),
        lambda: Data(Q, R).normalise(math.nan),
        lambda: Data([0.1, 0.2], [1, 1]).background(),
    ],
)
def test_wrong_input_gives_one_line(call):
    with pytest.raises(DataError) as caught:
        call()
    assert isinstance(caught.value, TolvikError) and isinstance(caught.value, ValueError)
    assert "\n" not in str(caught.value)


def test_errors_of_counting():
    data = Data.from_counts(Q, np.arange(1, 11))
    assert data.dr == pytest.approx(np.sqrt(np.arange(1, 11)))


def test_two_theta_to_q():
    # Bragg: a period of 40 Å at 1.5406 Å reflects in first order at sin(theta) = lambda / (2 d), where q = 2 pi / d.
    wavelength = 1.5406
    two_theta = 2 * math.degrees(math.asin(wavelength / 80))
    data = Data.from_two_theta([two_theta], [1.0], energy=units.energy_from_wavelength(wavelength))
    assert data.q[0] == pytest.approx(2 * math.pi / 40, rel=1e-12)


def test_width_of_two_theta_is_the_derivative():
    h = 1e-5
    q = units.q_from_two_theta([2 - h, 2 + h], 8048)
    assert units.dq_from_two_theta([2.0], [0.03], 8048)[0] == pytest.approx((q[1] - q[0]) / (2 * h) * 0.03, rel=1e-7)


def test_footprint_of_a_box_is_geometry():
    # 10 mm sample, 0.1 mm beam: full from sin(theta) = 0.01 on, half of the beam hits at sin(theta) = 0.005.
    energy = 8048.0
    k2 = 4 * math.pi / units.wavelength_from_energy(energy)
    data = Data(k2 * np.array([0.005, 0.01, 0.02]), [0.5, 1.0, 0.1], [0.05, 0.1, 0.01], energy=energy).footprint(
        10, 0.1
    )
    assert data.r == pytest.approx([1.0, 1.0, 0.1]) and data.dr == pytest.approx([0.1, 0.1, 0.01])


def test_footprint_of_a_gaussian_is_its_integral():
    energy, sine, length, fwhm = 8048.0, 0.004, 10.0, 0.1
    sigma = fwhm / (2 * math.sqrt(2 * math.log(2)))
    y = np.linspace(-length * sine / 2, length * sine / 2, 20001)
    hit = np.trapz(np.exp(-(y**2) / 2 / sigma**2), y) / (sigma * math.sqrt(2 * math.pi))
    data = Data([4 * math.pi / units.wavelength_from_energy(energy) * sine], [1.0], energy=energy)
    assert data.footprint(length, fwhm, "gaussian").r[0] == pytest.approx(1 / hit, rel=1e-7)


def test_background_and_scale_are_found():
    q = np.linspace(0.005, 0.5, 200)
    curve = np.minimum(1, (0.03 / q) ** 8)
    counts = 5e4 * curve + 12
    counts[20] = 1e6  # a spike above total reflection
    data = Data(q, counts).background().normalise()
    assert data.r[100] == pytest.approx(curve[100], abs=1e-7)
    assert data.r[0] == pytest.approx(1, rel=1e-6)
