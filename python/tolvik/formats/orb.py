# SPDX-License-Identifier: GPL-2.0-or-later
"""HDF5 files of the Open Reflectometry Standards Organisation (.orb).

Each group with NX_class "NXentry" is a data set: the group ``info`` is the header as a tree of groups (the attribute
``sequence`` marks a list and its order), the group ``data`` holds one array per column. An array is found by the name
of its column, as NAME_errors or sNAME for errors, else by its place in the order of the group.
"""
from __future__ import annotations

import io
from typing import TYPE_CHECKING, Any, Optional, Sequence

import numpy as np

from ..data import Data
from ..errors import DataError, TolvikError
from . import orso_header, source

if TYPE_CHECKING:
    from .reader import ReadOptions

_DEEPEST = 40
_LONGEST_SCALAR = 100000


def read(path: str, content: bytes, options: "ReadOptions") -> list[Data]:
    """All data sets of an .orb file; see `tolvik.read`."""
    import h5py

    found: list[Data] = []
    try:
        with h5py.File(io.BytesIO(content), "r") as file:
            entries = [(name, file[name]) for name in file if isinstance(file.get(name), h5py.Group)]
            for name, group in entries:
                if _text(group.attrs.get("NX_class")) in ("NXentry", None) and "data" in group:
                    found.append(_entry(path, name, group, options))
    except TolvikError as error:
        message = str(error)
        source.fail(path, None, message.removeprefix(f"{path}: "))
    except Exception as error:  # h5py reports damage as OSError, RuntimeError, KeyError, ValueError and others
        source.fail(
            path, None, f"is no readable HDF5 file: {source.one_line(error) or type(error).__name__}; write it anew"
        )
    if not found:
        source.fail(path, None, "holds no group of NX_class NXentry with a group data; it is no .orb file")
    return found


def _entry(path: str, name: str, group: Any, options: "ReadOptions") -> Data:
    header = _tree(group["info"], 0) if "info" in group else {}
    if not isinstance(header, dict):
        raise DataError(f"{name}: info is no tree of a header")
    header.setdefault("data_set", name)
    data = group["data"]
    listed = header.get("columns")
    if not isinstance(listed, list):
        header["columns"] = listed = _columns_of_arrays(data)
    columns = orso_header.columns(header)
    arrays = [_array(name, data, entry, index, len(listed)) for index, entry in enumerate(listed)]
    if len({array.size for array in arrays}) != 1:
        raise DataError(
            f"{name}: columns of {sorted({array.size for array in arrays})} points; all need the same number"
        )
    try:
        return orso_header.data_set(header, columns, np.column_stack(arrays), path, options)
    except DataError as error:
        raise DataError(f"{name}: " + str(error).removeprefix(f"{path}: ").removeprefix(f"{name}: ")) from None


def _tree(node: Any, depth: int) -> Any:
    """Group or array of a header as plain values."""
    import h5py

    if depth > _DEEPEST:
        raise DataError(f"header is nested deeper than {_DEEPEST} levels")
    if isinstance(node, h5py.Group):
        if "sequence" in node.attrs:
            order = [_text(key) for key in np.atleast_1d(node.attrs["sequence"])]
            return [_tree(node[key], depth + 1) for key in order if key in node]
        children = {str(key): _tree(node[key], depth + 1) for key in node}
        if children and all(key.isdigit() for key in children):
            return [children[key] for key in sorted(children, key=int)]
        return children
    if not isinstance(node, h5py.Dataset) or node.shape is None:
        return None
    if node.size > _LONGEST_SCALAR:
        raise DataError(f"header holds {node.name} with {node.size} values")
    value = node.asstr()[()] if h5py.check_string_dtype(node.dtype) else node[()]
    return value.tolist() if isinstance(value, (np.ndarray, np.generic)) else value


def _columns_of_arrays(data: Any) -> list[dict[str, Any]]:
    """Entries of columns from the arrays themselves, where the header names none."""
    result = []
    for key in _order(data):
        entry: dict[str, Any] = {"name": key.lstrip("_")}
        unit = _text(data[key].attrs.get("units"))
        if unit:
            entry["unit"] = unit
        result.append(entry)
    return result


def _array(entry_name: str, data: Any, entry: Any, index: int, count: int) -> Any:
    """Array (n,) of a column."""
    name = entry if isinstance(entry, str) else str(entry.get("name") or "") if isinstance(entry, dict) else ""
    names = [name] if name else []
    if isinstance(entry, dict) and entry.get("error_of"):
        of = str(entry["error_of"])
        names += [f"{of}_errors", f"_{of}_errors", f"{of}_error", f"s{of}", f"error_of_{of}"]
    key: Optional[str] = next((candidate for candidate in names if candidate in data), None)
    if key is None:
        order = _order(data)
        if len(order) != count:
            raise DataError(
                f"{entry_name}: no array for column {index + 1} ({', '.join(names)}) among {', '.join(order)}"
            )
        key = order[index]
    array = np.asarray(data[key][()])
    if array.dtype.kind not in "fiu" or array.ndim != 1:
        raise DataError(f"{entry_name}: {key} is no one-dimensional array of numbers")
    return array.astype(np.float64)


def _order(data: Any) -> Sequence[str]:
    import h5py

    listed = data.attrs.get("sequence")
    if listed is not None and np.size(listed):
        return [str(_text(key)) for key in np.atleast_1d(listed) if _text(key) in data]
    return [str(key) for key in data if isinstance(data[key], h5py.Dataset)]


def _text(value: Any) -> Optional[str]:
    if value is None:
        return None
    return value.decode("utf-8", "replace") if isinstance(value, bytes) else str(value)
