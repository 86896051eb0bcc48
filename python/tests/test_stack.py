# SPDX-License-Identifier: GPL-2.0-or-later
import pytest
from hypothesis import given
from hypothesis import strategies as st

from tolvik.errors import MaterialError
from tolvik.tools.stack import Layer, parse, parse_orso

VACUUM = Layer("vacuum", 0, 0)
CO, PT = Layer("Co", 8, 3), Layer("Pt:21", 12, 3)


@pytest.mark.parametrize(
    "text, layers",
    [
        ("Si", [Layer("Si", 0, 0), VACUUM]),
        ("Si 3", [Layer("Si", 0, 3), VACUUM]),
        ("Si 3|SiO2 15 2.5", [Layer("Si", 0, 3), Layer("SiO2", 15, 2.5), VACUUM]),
        (" Si | Ni 200 ", [Layer("Si", 0, 0), Layer("Ni", 200, 0), VACUUM]),
        ("Si | Ni 200 5 | H2O", [Layer("Si", 0, 0), Layer("Ni", 200, 5), Layer("H2O", 0, 0)]),
        ("Si | [Co 8 3 | Pt:21 12 3]*2", [Layer("Si", 0, 0), CO, PT, CO, PT, VACUUM]),
        (
            "Si | [Co 8 3 | [Pt:21 12 3]*2] * 2 | Ca(OH)2:2.2 1e1",
            [Layer("Si", 0, 0), CO, PT, PT, CO, PT, PT, Layer("Ca(OH)2:2.2", 10, 0), VACUUM],
        ),
        ("Si | Co[59] 8 3", [Layer("Si", 0, 0), Layer("Co[59]", 8, 3), VACUUM]),
    ],
)
def test_stacks(text, layers):
    assert parse(text) == layers


@pytest.mark.parametrize(
    "text, layers",
    [
        ("vacuum | Si", [Layer("Si", 0, 3), VACUUM]),
        (
            "vacuum | 2 ( Si 4.1 | Mo 2.8 ) | Si",
            [Layer("Si", 0, 3), Layer("Mo", 28, 3), Layer("Si", 41, 3), Layer("Mo", 28, 3), Layer("Si", 41, 3), VACUUM],
        ),
        (
            "vacuum | Ca(OH)2:2.2 1 | 2( Fe 1 | 2 ( Ni 3 ) ) | SiO2",
            [
                Layer("SiO2", 0, 3),
                *[Layer("Ni", 30, 3), Layer("Ni", 30, 3), Layer("Fe", 10, 3)] * 2,
                Layer("Ca(OH)2:2.2", 10, 3),
                VACUUM,
            ],
        ),
    ],
)
def test_models_of_orso(text, layers):
    found = parse_orso(text)
    assert [(one.formula, one.roughness) for one in found] == [(one.formula, one.roughness) for one in layers]
    assert [one.thickness for one in found] == pytest.approx([one.thickness for one in layers])


BAD = [
    "",
    "|",
    "Si |",
    "Si || Co 8",
    "Si | Co | Pt 3",
    "Si | Co -8",
    "Si | Co eight",
    "Si | Co 8 3 2",
    "Si 3 2 | Co 8",
    "Si | Co 8,5",
    "Si | [Co 8",
    "Si | Co 8]*3",
    "Si | [Co 8]",
    "Si | [Co 8]*0",
    "Si | [Co 8]*999999999999",
    "Si | Co 8*3",
    "Si | [Co 8]*3 Pt 4",
    "Si | [[Co 8]*999]*999",
    "Si | [Co 8]*x",
    "Si | []*3",
    "Si | Co nan",
    "Si | Co 1e99",
    "*3",
    "]",
    "[",
]


@pytest.mark.parametrize("text", BAD)
def test_wrong_stacks_name_the_place(text):
    with pytest.raises(MaterialError, match="^stack ") as caught:
        parse(text)
    assert "\n" not in str(caught.value)


@pytest.mark.parametrize(
    "text",
    [
        "",
        "Si",
        "vacuum | ( Si 3",
        "vacuum | 2 ( Si 3 ) ) | Si",
        "vacuum | Si 3 2 | Si",
        "vacuum | Si x | Si",
        "vacuum | 99999999 ( Si 1 ) | Si",
        "vacuum | 0 ( Si 1 ) | Si",
        "vacuum | Ni | Si",
    ],
)
def test_wrong_models(text):
    with pytest.raises(MaterialError, match="^stack ") as caught:
        parse_orso(text)
    assert "\n" not in str(caught.value)


def test_roughness_of_interfaces_that_name_none():
    assert [one.roughness for one in parse("Si | Ni 200 0 | Cr 30 | Al 9 1", 4.0)] == [4, 0, 4, 1, 0]


@given(st.text(alphabet="SiCo 128.|[]*()x-e", max_size=40))
def test_no_text_gives_another_error(text):
    for reader in (parse, parse_orso):
        try:
            layers = reader(text)
        except MaterialError:
            continue
        assert len(layers) >= 2 and all(one.thickness >= 0 and one.formula for one in layers)
