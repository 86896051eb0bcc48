# SPDX-License-Identifier: GPL-2.0-or-later
"""delta from measured absorption, against oscillators (which obey the relation exactly) and against the tables."""
import numpy as np
import pytest

pytest.importorskip("periodictable")
pytest.importorskip("xraydb")

from tolvik import _core, materials  # noqa: E402
from tolvik.errors import DataError, DataFileError, MaterialError, MaterialWarning  # noqa: E402

ENERGY = np.arange(700, 900.01, 0.25)


def oscillator(energy, at=780.0, width=4.0, strength=8.0):
    """-delta + i beta of a damped oscillator; delta and beta obey the Kramers-Kronig relation."""
    return 0.5 * strength / (at**2 - energy**2 - 1j * width * energy)


def test_transform_of_the_core_on_a_whole_spectrum():
    energy = np.unique(
        np.concatenate([np.arange(1.0, 700, 2), np.arange(700, 860, 0.25), np.geomspace(860, 60000, 3000)])
    )
    n = oscillator(energy)
    transform = _core._kramers_kronig(energy, n.imag)
    near = (energy > 740) & (energy < 820)
    # The whole strength is the constant: delta E² tends to strength / 2 at high energy.
    delta = (transform + 4.0) / energy**2
    # A curve in steps of 0.25 eV and 4 eV wide: (0.25 / 4)² of its height.
    assert delta[near] == pytest.approx(-oscillator(energy[near] + 0.01).real, abs=4e-3 * np.abs(n).max())


def test_an_oscillator_on_top_of_a_table_adds_its_own_delta():
    _, beta = materials.delta_beta("Si", None, ENERGY, "chantler")
    plain = materials.kramers_kronig(np.column_stack([ENERGY, beta]), "Si", scale=False)
    with_peak = materials.kramers_kronig(np.column_stack([ENERGY, beta + oscillator(ENERGY).imag]), "Si", scale=False)
    added = with_peak.delta - plain.delta
    # The tails of the peak beyond 700 and 900 eV are not in the spectrum: 1 % of its largest delta.
    assert added == pytest.approx(-oscillator(ENERGY).real, abs=0.012 * np.abs(oscillator(ENERGY).real).max())


@pytest.mark.parametrize(
    "formula, low, high, source, tolerance",
    [
        ("Si", 3000, 4000, "chantler", 0.003),
        ("Si", 3000, 4000, "henke", 0.002),
        ("SiO2", 900, 1500, "chantler", 0.01),
        ("Ni", 7900, 8800, "chantler", 0.02),
        ("Co", 700, 900, "chantler", 0.06),
    ],
)
def test_absorption_of_a_table_gives_back_its_delta(formula, low, high, source, tolerance):
    energy = np.arange(low, high, 1.0)
    delta, beta = materials.delta_beta(formula, None, energy, source, warn=False)
    found = materials.kramers_kronig(np.column_stack([energy, beta]), formula, source=source, scale=False)
    assert np.max(np.abs(found.delta - delta)) < tolerance * np.max(np.abs(delta))
    assert (found.beta == beta).all() and (found.energy == energy).all()


def test_counts_of_any_scale_and_offset_are_scaled_to_the_table():
    _, beta = materials.delta_beta("Ni", None, np.arange(8100, 8700, 2.0), "chantler", warn=False)
    energy = np.arange(8100, 8700, 2.0)
    exact = materials.kramers_kronig(np.column_stack([energy, beta]), "Ni", scale=False)
    counts = 1234 + 5.6e9 * energy * beta
    shuffled = np.random.default_rng(3).permutation(np.column_stack([energy, counts]))
    found = materials.kramers_kronig(shuffled, "Ni")
    assert found.beta == pytest.approx(beta, rel=1e-9) and found.delta == pytest.approx(exact.delta, rel=1e-6)


def test_density_scales_both():
    energy = np.arange(1700, 2000, 1.0)
    _, beta = materials.delta_beta("Si", None, energy, "chantler", warn=False)
    spectrum = np.column_stack([energy, energy * beta])
    thin, dense = (materials.kramers_kronig(spectrum, "Si", density) for density in (1.0, 2.0))
    assert dense.delta == pytest.approx(2 * thin.delta) and dense.beta == pytest.approx(2 * thin.beta)


def test_dichroism_in_the_signs_of_the_program():
    _, beta = materials.delta_beta("Si", None, ENERGY, "chantler")
    peak = 0.2 * oscillator(ENERGY)
    # A positive betam makes beta smaller for left circular light along the magnetisation.
    spectrum = np.column_stack([ENERGY, beta - peak.imag, beta + peak.imag])
    constants, magnetic = materials.dichroism(spectrum, "Si", scale=False)
    assert magnetic.beta == pytest.approx(peak.imag) and constants.beta == pytest.approx(beta)
    assert magnetic.delta == pytest.approx(-peak.real, abs=0.015 * np.abs(peak.real).max())


def test_dichroism_is_scaled_as_its_mean():
    energy = np.arange(1700, 2000, 0.5)
    _, beta = materials.delta_beta("Si", None, energy, "chantler", warn=False)
    peak = oscillator(energy, at=1840, strength=0.5).imag * 0.1
    counts = np.column_stack([energy, 3 + 1e6 * energy * (beta - peak), 3 + 1e6 * energy * (beta + peak)])
    assert materials.dichroism(counts, "Si")[1].beta == pytest.approx(peak, rel=1e-6)


def test_a_table_is_saved_with_its_origin(tmp_path):
    _, beta = materials.delta_beta("Si", None, ENERGY, "chantler")
    found = materials.kramers_kronig(np.column_stack([ENERGY, beta]), "Si", scale=False)
    found.save(tmp_path / "Si.db")
    lines = (tmp_path / "Si.db").read_text().splitlines()
    assert lines[0].startswith(
        "# Si, 2.33 g/cm3: measured absorption as given, delta by Kramers-Kronig, outside Chantler"
    )
    assert np.loadtxt(tmp_path / "Si.db")[:, 1] == pytest.approx(found.delta, rel=1e-9)
    with pytest.raises(MaterialError, match="ends in .db, .m or .ff"):
        found.save(tmp_path / "Si.txt")
    (tmp_path / "beta.txt").write_text("energy beta\n" + "\n".join(f"{e:.10g} {b:.12e}" for e, b in zip(ENERGY, beta)))
    assert materials.kramers_kronig(tmp_path / "beta.txt", "Si", scale=False).delta == pytest.approx(
        found.delta, rel=1e-9
    )


def test_an_unscaled_spectrum_that_misses_the_table_is_warned_about():
    _, beta = materials.delta_beta("Si", None, ENERGY, "chantler")
    with pytest.warns(MaterialWarning, match="the step disturbs delta"):
        materials.kramers_kronig(np.column_stack([ENERGY, 2 * beta]), "Si", scale=False)


@pytest.mark.parametrize(
    "spectrum, message",
    [
        ([[700, 1]] * 3, "at least five rows"),
        (np.ones((9, 3)), "shape"),
        ("a", "none"),
        (np.full((9, 2), np.nan), "not finite"),
        (np.column_stack([np.arange(-4, 5.0), np.ones(9)]), "not positive"),
        (np.ones((9, 2)), "1 eV twice"),
        (np.column_stack([np.arange(700, 709.0), np.ones(9)]), "same absorption at both ends"),
        (
            np.column_stack([np.geomspace(0.5, 709.0, 9), np.arange(9)]),
            "does not lie inside|outside the chantler table",
        ),
        ([["a", "b"]], "shape"),
        (object(), "shape"),
    ],
)
def test_wrong_spectra(spectrum, message):
    if isinstance(spectrum, str):
        with pytest.raises(DataFileError, match="cannot be read"):
            materials.kramers_kronig("no such file.txt", "Si")
        return
    with pytest.raises(MaterialError, match=message) as caught:
        materials.kramers_kronig(spectrum, "Si")
    assert "\n" not in str(caught.value)


def test_wrong_files_and_vacuum(tmp_path):
    (tmp_path / "a.xas").write_text("1 2\n3 x\n")
    with pytest.raises(DataError, match="a.xas:2: 'x' is no number"):
        materials.kramers_kronig(tmp_path / "a.xas", "Si")
    with pytest.raises(MaterialError, match="vacuum absorbs nothing"):
        materials.kramers_kronig(np.column_stack([ENERGY, ENERGY]), "vacuum")
