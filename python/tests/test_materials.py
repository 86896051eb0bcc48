# SPDX-License-Identifier: GPL-2.0-or-later
import math
import sys
import warnings

import numpy as np
import pytest

pytest.importorskip("periodictable")
pytest.importorskip("xraydb")

from tolvik import materials  # noqa: E402
from tolvik.errors import MaterialError, MaterialWarning, TolvikError  # noqa: E402
from tolvik.materials import factors  # noqa: E402
from tolvik.materials.constants import ELECTRON_RADIUS, PLANCK_TIMES_LIGHT  # noqa: E402

CU_KA1 = 8048.0
# f' and f'' at Cu K alpha: International Tables for Crystallography, Vol. C (1992), table 4.2.6.8, with Z and the molar
# mass and density that the examples of this repository use.
TABLES_OF_CRYSTALLOGRAPHY = {
    "Si": ({"Si": (14, 0.2541, 0.3302)}, 28.0855, 2.329),
    "Ni": ({"Ni": (28, -3.0029, 0.5091)}, 58.6934, 8.908),
    "Mo": ({"Mo": (42, -0.0483, 2.7339)}, 95.95, 10.22),
    "SiO2": ({"Si": (14, 0.2541, 0.3302), "O": (8, 0.0492, 0.0322), "O_": (8, 0.0492, 0.0322)}, 60.0843, 2.20),
}
# mu/rho in cm²/g at 10 keV: J. H. Hubbell and S. M. Seltzer, NIST Standard Reference Database 126 (1995).
NIST_10_KEV = {"Al": 26.23, "Si": 33.89, "Fe": 170.6, "Cu": 215.9, "Au": 118.1}


@pytest.mark.parametrize("source", ["henke", "chantler"])
@pytest.mark.parametrize("formula", TABLES_OF_CRYSTALLOGRAPHY)
def test_constants_at_copper_k_alpha(formula, source):
    atoms, mass, density = TABLES_OF_CRYSTALLOGRAPHY[formula]
    k = 2.8179403e-5 * (12398.42 / CU_KA1) ** 2 * density * 0.602214076 / mass / (2 * math.pi)
    delta, beta = materials.delta_beta(formula, density, CU_KA1, source)
    assert delta == pytest.approx(k * sum(z + f1 for z, f1, _ in atoms.values()), rel=0.006)
    assert beta == pytest.approx(k * sum(f2 for _, _, f2 in atoms.values()), rel=0.06)


@pytest.mark.parametrize("source", ["henke", "chantler"])
@pytest.mark.parametrize("element", NIST_10_KEV)
def test_absorption_at_10_kev(element, source):
    beta = materials.delta_beta(element, 1.0, 10000.0, source, warn=False)[1]
    mu = 4 * math.pi * beta / (PLANCK_TIMES_LIGHT / 10000) * 1e8  # 1/cm at 1 g/cm³
    # The total attenuation of NIST counts scattering too, 2 to 8 % here; beta is photo-absorption alone.
    assert 0.92 < mu / NIST_10_KEV[element] < 1.01


def test_constants_of_nature():
    scipy_constants = pytest.importorskip("scipy.constants")
    value = scipy_constants.physical_constants["classical electron radius"][0]
    assert ELECTRON_RADIUS == pytest.approx(value * 1e10, rel=1e-9)
    assert PLANCK_TIMES_LIGHT == pytest.approx(
        scipy_constants.h * scipy_constants.c / scipy_constants.e * 1e10, rel=1e-12
    )
    assert materials.formula.AVOGADRO == scipy_constants.N_A * 1e-24


@pytest.mark.parametrize("source", ["henke", "chantler"])
@pytest.mark.parametrize("element, z", [("C", 6), ("Al", 13), ("Si", 14)])
def test_f1_is_the_number_of_electrons_far_above_all_edges(element, z, source):
    assert factors.interpolate(element, source, np.array([29000.0]))[0][0] == pytest.approx(z, rel=0.005)


@pytest.mark.parametrize("formula", ["Si", "SiO2", "Cu", "Mo", "W", "Pt", "Au", "Fe2O3", "SrTiO3", "GaAs"])
def test_both_sources_agree_away_from_edges(formula):
    energy = np.geomspace(3000, 25000, 60)
    far = [e for e in energy if abs(materials.nearest_edge(formula, e).energy - e) > 150]
    found = materials.compare(formula, None, far)
    assert len(far) > 30
    assert np.max(found.spread("delta")) < 0.04 and np.median(found.spread("delta")) < 0.01
    assert np.max(found.spread("beta")) < 0.13 and np.median(found.spread("beta")) < 0.06


@pytest.mark.filterwarnings("ignore")  # xraydb imports old names of scipy
def test_tables_at_their_rows_are_those_of_the_libraries():
    import periodictable
    import xraydb

    energy = np.array([700.0, 3000.0, 8048.0, 20000.0])
    f1, f2 = periodictable.Fe.xray.scattering_factors(energy=energy / 1000)
    mine = factors.interpolate("Fe", "henke", energy)
    assert mine[0] == pytest.approx(f1, abs=0.02) and mine[1] == pytest.approx(f2, rel=2e-3)
    f1, f2 = 26 + xraydb.f1_chantler("Fe", energy), xraydb.f2_chantler("Fe", energy)
    mine = factors.interpolate("Fe", "chantler", energy)
    assert mine[0][1:] == pytest.approx(f1[1:], rel=2e-3) and mine[1] == pytest.approx(f2, rel=1e-6)
    assert mine[0][0] == pytest.approx(f1[0], abs=0.3), "8 eV below L3 the spline of the library and a line differ"


def test_one_energy_does_not_depend_on_the_others():
    many = materials.delta_beta("Co", None, np.linspace(600, 900, 301), "chantler", warn=False)
    one = materials.delta_beta("Co", None, 650.0, "chantler")
    assert (many[0][50], many[1][50]) == one and isinstance(one[0], float)


# Density of a crystal from its unit cell: formula units and lattice constants in Å as in textbooks.
@pytest.mark.parametrize(
    "formula, units, volume",
    [
        ("MgO", 4, 4.212**3),
        ("SrTiO3", 1, 3.905**3),
        ("NiO", 4, 4.177**3),
        ("NaCl", 4, 5.640**3),
        ("LiF", 4, 4.027**3),
        ("GaAs", 4, 5.6533**3),
        ("CaF2", 4, 5.463**3),
        ("Fe3O4", 8, 8.396**3),
    ],
)
def test_densities_of_compounds_against_unit_cells(formula, units, volume):
    material = materials.parse(formula)
    assert material.units_per_volume * volume == pytest.approx(units, rel=0.02)
    assert "Handbook" in material.density_source


def test_formulas_and_densities():
    assert materials.parse("Co:8.5").density == 8.5 and materials.parse("Co @ 8.5").density == 8.5
    assert materials.parse("Co").density == pytest.approx(8.9) and materials.parse("Co:8.5", 8.0).density == 8.0
    assert materials.parse("La0.7Sr0.3MnO3:6.6").atoms == {"La": 0.7, "Sr": 0.3, "Mn": 1, "O": 3}
    assert materials.parse("D2O:1.1").atoms == {"H": 2, "O": 1}
    assert materials.parse("Ca(OH)2:2.2").atoms == {"Ca": 1, "O": 2, "H": 2}
    assert materials.delta_beta("vacuum", None, [700, 800])[0].tolist() == [0, 0]
    assert materials.parse(materials.parse("Si"), 2.0).density == 2.0


WRONG = [
    (lambda: materials.parse("si"), "is 'Si' meant"),
    (lambda: materials.parse("Xx"), "cannot be read"),
    (lambda: materials.parse(""), "empty"),
    (lambda: materials.parse("Si O)2"), "cannot be read"),
    (lambda: materials.parse("Si" * 200), "too long"),
    (lambda: materials.parse("1"), "cannot be read"),
    (lambda: materials.parse("Si:heavy"), "density 'heavy' of Si"),
    (lambda: materials.parse("Si", -1), "density -1 of Si"),
    (lambda: materials.parse("Si", math.nan), "density nan"),
    (lambda: materials.parse("La0.7Sr0.3MnO3"), "as La0.7Sr0.3MnO3:5.2"),
    (lambda: materials.parse("n:1"), "is 'N' meant"),
    (lambda: materials.parse(None), "cannot be read"),
    (lambda: materials.delta_beta("Si", None, -1), "energy -1"),
    (lambda: materials.delta_beta("Si", None, None), "energy None"),
    (lambda: materials.delta_beta("Si", None, []), "energy"),
    (lambda: materials.delta_beta("Si", None, "CuKa"), "energy"),
    (lambda: materials.delta_beta("Si", None, 5), "outside the henke table of Si, "),
    (lambda: materials.delta_beta("Si", None, 8000, "nist"), "source 'nist'"),
    (lambda: materials.delta_beta("Pu", None, 8000), "ends with uranium"),
    (lambda: materials.delta_beta("Pu", None, 8000, "chantler"), "ends with uranium"),
    (lambda: materials.compare("Si", None, 1e9), "outside both tables"),
    (lambda: materials.write_tables("x", "SiO2", None, [700.0], suffixes=[".ff"]), "is no element"),
    (lambda: materials.write_tables("x", "Si", None, [700.0], suffixes=[".e"]), "suffix '.e'"),
    (lambda: materials.table.grid(800, 700, 1), "are no range"),
    (lambda: materials.table.grid(700, 800, 0), "are no range"),
    (lambda: materials.table.grid(700, 800, 1e-9), "are no range"),
    (lambda: materials.table.grid(math.nan, 800, 1), "are no range"),
]


@pytest.mark.parametrize("call, message", WRONG)
@pytest.mark.filterwarnings("ignore::tolvik.errors.MaterialWarning")
def test_wrong_input_gives_one_line(call, message):
    with pytest.raises(MaterialError) as caught:
        call()
    assert message in str(caught.value) and "\n" not in str(caught.value)
    assert isinstance(caught.value, TolvikError) and isinstance(caught.value, ValueError)


def test_edges():
    # X-ray Data Booklet (2009), table 1-1: Co K 7709, L3 778.1, L2 793.2; Si K 1839 eV.
    found = {str(edge).split(" (")[0]: edge.energy for edge in materials.edges("CoSi:5")}
    assert (
        found["Co K"] == 7709
        and found["Co L3"] == 778.1
        and found["Co L2"] == 793.2
        and found["Si K"] == pytest.approx(1839, abs=1)
    )
    assert materials.nearest_edge("Co", 786).name == "L2" and materials.nearest_edge("vacuum", 700) is None


def test_near_an_edge_there_is_one_warning():
    with pytest.warns(MaterialWarning) as caught:
        materials.delta_beta("Co", None, np.linspace(700, 900, 50))
    assert len(caught) == 1 and "use a measured table" in str(caught[0].message)
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        materials.delta_beta("Co", None, [750.0, 815.0, 8000.0])
    with pytest.warns(MaterialWarning, match="19.1 eV from the edge Co L3"):
        materials.delta_beta("Co", None, 759.0)


@pytest.mark.filterwarnings("ignore::tolvik.errors.MaterialWarning")
def test_at_the_l3_edge_of_cobalt_not_even_the_sign_agrees_nearby():
    found = materials.compare("Co", None, np.arange(770, 790, 0.25))
    assert np.any(np.sign(found.delta["henke"]) != np.sign(found.delta["chantler"]))
    assert "Co L3 (778.1 eV), 0.1 eV away" in str(materials.compare("Co", None, 778.0))


def rows_of(path):
    lines = path.read_text().splitlines()
    return lines[:2], np.array([[float(word) for word in line.split()] for line in lines[2:]])


def test_written_tables(tmp_path):
    energy = [720.0, 700.0, 710.0, 700.0]
    paths = materials.write_tables(
        tmp_path / "Si", "Si", None, energy, source="chantler", suffixes=[".db", ".m", ".ff"]
    )
    assert paths == [f"{tmp_path}/Si.db", f"{tmp_path}/Si.m", f"{tmp_path}/Si.ff"]
    heads, db = rows_of(tmp_path / "Si.db")
    assert (
        heads[0].startswith("# Si, 2.33 g/cm3 (periodictable): Chantler, J. Phys. Chem. Ref. Data 24, 71 (1995)")
        and "tolvik" in heads[0]
    )
    assert heads[1] == "# energy (eV), delta, beta" and db[:, 0].tolist() == [700, 710, 720]
    delta, beta = materials.delta_beta("Si", None, [700, 710, 720], "chantler")
    assert db[:, 1] == pytest.approx(delta, rel=1e-9) and db[:, 2] == pytest.approx(beta, rel=1e-9)
    assert not rows_of(tmp_path / "Si.m")[1][:, 1:].any()
    ff = rows_of(tmp_path / "Si.ff")[1]
    # delta = r_e lambda² n f1 / (2 pi)
    n = 0.602214076 * 2.33 / 28.0855
    assert ff[:, 1] * 2.8179403e-5 * (12398.42 / ff[:, 0]) ** 2 * n / 2 / math.pi == pytest.approx(delta, rel=1e-5)
    materials.write_tables(tmp_path / "vacuum", "vacuum", None, [700, 800], suffixes=[".db", ".m"])
    assert not rows_of(tmp_path / "vacuum.db")[1][:, 1:].any()


def test_the_program_reads_the_tables(tmp_path, monkeypatch):
    tolvik = pytest.importorskip("tolvik")
    if not hasattr(tolvik.State, "load_tables"):
        pytest.skip("tables are not bound yet")
    materials.write_tables(tmp_path / "Si", "Si", None, np.arange(8000, 8101, 10.0))
    materials.write_tables(tmp_path / "vacuum", "vacuum", None, [8000.0, 8100.0])
    (tmp_path / "a.state").write_text(
        "fileversion = 1\nenergy = 8050\nlayerversion = 3\nlayer = 0\nlayer_db = Si\nlayer = 1\nlayer_db = vacuum\n"
    )
    state = tolvik.load(tmp_path / "a.state")
    state.load_tables(str(tmp_path))
    state.set_constants()
    assert (state.layers.layer_delta[0], state.layers.layer_beta[0]) == pytest.approx(
        materials.delta_beta("Si", None, 8050.0), rel=1e-9
    )


def test_missing_libraries_are_named(monkeypatch):
    from tolvik.materials import libraries

    def without(name):
        libraries.periodictable.cache_clear()
        libraries._xraydb_file.cache_clear()
        monkeypatch.setitem(sys.modules, name, None)

    monkeypatch.setattr(libraries.importlib.util, "find_spec", lambda name: None)
    without("xraydb")
    with pytest.raises(MaterialError, match="install python3-xraydb"):
        libraries.xraydb_rows("SELECT 1 WHERE ? = ''", "Si")
    without("periodictable")
    with pytest.raises(MaterialError, match="install python3-periodictable"):
        libraries.periodictable()
    monkeypatch.undo()
    libraries.periodictable.cache_clear()
    libraries._xraydb_file.cache_clear()


def test_a_damaged_data_base_is_an_error(monkeypatch, tmp_path):
    from tolvik.materials import libraries

    (tmp_path / "xraydb.sqlite").write_text("no data base")
    monkeypatch.setattr(libraries, "_xraydb_file", lambda: tmp_path / "xraydb.sqlite")
    with pytest.raises(MaterialError, match="cannot be read: file is not a database; install python3-xraydb anew"):
        libraries.xraydb_rows("SELECT energy FROM Chantler WHERE element = ?", "Si")
