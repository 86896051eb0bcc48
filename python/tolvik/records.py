# SPDX-License-Identifier: GPL-2.0-or-later
"""How records of a state and their lists show themselves: as text, as sequences, and compared with each other."""
from __future__ import annotations

import collections.abc
import difflib
import html
from typing import Any, Sequence

from . import _core

__all__ = ["html_table", "keys_of", "layer_rows", "nearest"]

_RECORDS = (_core.Layer, _core.ElementSlice, _core.ElementLayer, _core.GaussFunction, _core.FitVariable, _core.Dataset)
_LISTS = (_core.Layers, _core.ElementSlices, _core.ElementLayers, _core.GaussFunctions, _core.FitVariables,
          _core.Datasets)


def keys_of(kind: type) -> list[str]:
    """Names of the attributes of a record or state that can be set.

    Parameters
    ----------
    kind : type
        A class of this package, as ``type(state.layers[0])``.

    Returns
    -------
    list of str
        In the order of the state file.
    """
    return [name for base in reversed(kind.__mro__) for name, member in vars(base).items()
            if isinstance(member, property) and member.fset is not None]


def _brief(value: Any) -> str:
    size = getattr(value, "size", None)
    return repr(value) if size is None else f"array of {size}"


def _show_record(self: Any) -> str:
    members = [f"{name}={_brief(getattr(self, name))}" for name in keys_of(type(self))]
    return f"{type(self).__name__}({', '.join(members)})"


def _show_list(self: Any) -> str:
    return "[" + ",\n ".join(map(repr, self)) + "]"


def _equal_records(self: Any, other: object) -> bool:
    if not isinstance(other, type(self)):
        return NotImplemented
    return all(_same(getattr(self, name), getattr(other, name)) for name in keys_of(type(self)))


def _same(one: Any, other: Any) -> bool:
    return bool(one.tolist() == other.tolist() if hasattr(one, "tolist") else one == other)


def _equal_lists(self: Any, other: object) -> bool:
    if not isinstance(other, type(self)):
        return NotImplemented
    return len(self) == len(other) and all(a == b for a, b in zip(self, other))


def _extend() -> None:
    for record in _RECORDS:
        setattr(record, "__repr__", _show_record)
        setattr(record, "__eq__", _equal_records)
        setattr(record, "__hash__", None)
    for sequence in _LISTS:
        collections.abc.Sequence.register(sequence)
        for name in ("__iter__", "__contains__", "index", "count"):
            setattr(sequence, name, getattr(collections.abc.Sequence, name))
        setattr(sequence, "__repr__", _show_list)
        setattr(sequence, "__eq__", _equal_lists)
        setattr(sequence, "__hash__", None)


def nearest(name: str, kind: type) -> str:
    """The attribute of a class that a misspelt name may have meant.

    Parameters
    ----------
    name : str
        The name.
    kind : type
        The class.

    Returns
    -------
    str
        Empty where none is near.
    """
    found = difflib.get_close_matches(name, [key for key in dir(kind) if not key.startswith("_")], n=1)
    return found[0] if found else ""


def layer_rows(state: _core.State) -> list[list[str]]:
    """The layers of a state as rows of a table, the ambient first, as it stands in the sample.

    Parameters
    ----------
    state : State
        The state.

    Returns
    -------
    list of list of str
        Index, material, thickness, delta, beta and roughness of each layer.
    """
    last = len(state.layers) - 1
    rows = [[str(i), layer.layer_db, "" if i in (0, last) else f"{layer.layer_d:g}", f"{layer.layer_delta:.4g}",
             f"{layer.layer_beta:.4g}", "" if i == last else f"{layer.layer_sigma:g}"]
            for i, layer in enumerate(state.layers)]
    return rows[::-1]


def html_table(caption: str, head: Sequence[str], rows: Sequence[Sequence[str]]) -> str:
    """A table for a notebook.

    Parameters
    ----------
    caption : str
        Text above it.
    head : sequence of str
        Names of the columns.
    rows : sequence of sequence of str
        Their texts; everything is escaped.

    Returns
    -------
    str
    """
    def line(tag: str, cells: Sequence[str]) -> str:
        return "<tr>" + "".join(f"<{tag}>{html.escape(cell)}</{tag}>" for cell in cells) + "</tr>"

    return (f"<table><caption>{html.escape(caption)}</caption><thead>{line('th', head)}</thead><tbody>"
            + "".join(line("td", row) for row in rows) + "</tbody></table>")


_extend()
