# SPDX-License-Identifier: GPL-2.0-or-later
"""Lists of records: sequences whose records are looked up where they stand."""
import collections.abc

import pytest

import tolvik

LISTS = ["layers", "elementlayers", "gaussfunctions", "fitvariables", "datasets"]


@pytest.mark.parametrize("name", LISTS)
def test_lists_are_sequences(name):
    records = getattr(tolvik.State(), name)
    for _ in range(3):
        records.append()
    assert isinstance(records, collections.abc.Sequence)
    assert len(list(records)) == len(records) and records[-1] == records[len(records) - 1]
    assert len(records[1:]) == len(records) - 1 and records[0] in records
    with pytest.raises(IndexError, match=f"{name}: there is no record 99"):
        records[99]
    del records[0]
    with pytest.raises(IndexError):
        records[-len(records) - 1]


def test_insert_puts_a_record_in_its_place():
    layers = tolvik.State().layers
    layers.insert(1, layer_d=20.0, layer_db="Mo")
    layers.insert(2, layers[1]).layer_d = 30.0
    assert [layer.layer_d for layer in layers] == [0, 20, 30, 0]
    assert layers[2].layer_db == "Mo"
    del layers[1]
    assert [layer.layer_d for layer in layers] == [0, 30, 0]


def test_a_wrong_attribute_leaves_the_list_as_it_was():
    layers = tolvik.State().layers
    with pytest.raises(AttributeError):
        layers.append(layer_thickness=20.0)
    with pytest.raises(TypeError, match="layer_d: expected float, got 'thick'"):
        layers.append(layer_d="thick")
    assert len(layers) == 2


def test_a_record_that_is_gone_says_so():
    layers = tolvik.State().layers
    last = layers[1]
    del layers[0]
    with pytest.raises(IndexError, match="layers: there is no record 1"):
        last.layer_d


def test_records_are_copied_between_states():
    one, other = tolvik.State(), tolvik.State()
    one.layers.append(layer_d=7.0)
    other.layers = one.layers
    one.layers[2].layer_d = 8.0
    assert len(other.layers) == 3 and other.layers[2].layer_d == 7.0
    other.layers[0] = one.layers[2]
    assert other.layers[0].layer_d == 8.0
    one.layers = one.layers
    assert one.layers[2].layer_d == 8.0


def test_elements_hold_slices():
    state = tolvik.State()
    nickel = state.elementlayers.append(element="Ni")
    nickel.slices.append(el_d=100.0, el_density=0.09)
    nickel.slices.append(nickel.slices[0], el_d=50.0)
    assert state.elementlayers[0].slices.el_d.tolist() == [100, 50]
    view = nickel.slices.el_d
    with pytest.raises(BufferError, match="elementlayers"):
        state.elementlayers.append()
    del view
    slices = nickel.slices
    del state.elementlayers[0]
    with pytest.raises(IndexError):
        len(slices)


def test_splines_are_arrays():
    function = tolvik.State().gaussfunctions.append(gauss_usespline=True)
    function.gauss_splinex = [0.0, 10.0]
    function.gauss_spliney = [1.0, 2.0]
    assert function.gauss_splinex.tolist() == [0, 10] and function.gauss_usespline is True


def test_docstrings_have_meaning_and_unit():
    layers, variables = type(tolvik.State().layers), type(tolvik.State().fitvariables[0:0])
    assert layers.layer_d.__doc__.startswith("thickness, Å") and variables is list
    assert type(tolvik.State().layers[0]).layer_sigma.__doc__ == "roughness of the interface above the layer, Å"


def test_records_show_their_keys():
    layer = tolvik.State().layers[0]
    assert repr(layer).startswith("Layer(layer_d=0.0, layer_db='vacuum', ")
    assert repr(tolvik.State().datasets.append()).count("array of 0") == 6  # the six curves of a measurement
