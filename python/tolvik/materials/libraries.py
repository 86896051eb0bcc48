# SPDX-License-Identifier: GPL-2.0-or-later
"""The libraries with the tables, loaded when they are first needed.

xraydb is one SQLite file with an interface on SQLAlchemy and scipy. The file is read directly: the interface takes a
second to load, and interpolates f1 by a spline through rows that depend on the other energies of a call.
"""
from __future__ import annotations

import functools
import importlib
import importlib.util
import os
import pathlib
import sqlite3
import warnings
from typing import Any

from ..errors import MaterialError

_XRAYDB_FILE = "xraydb.sqlite"


@functools.lru_cache(maxsize=None)
def periodictable() -> Any:
    """The module periodictable, or a MaterialError that says how to install it."""
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # its warnings about old names in other libraries
        try:
            module = importlib.import_module("periodictable")
        except ImportError:
            raise MaterialError(
                "formulas need periodictable, which is not installed; install python3-periodictable, or give delta and "
                "beta"
            ) from None
        module.formula("H2O")  # builds its parser
    return module


def xraydb_rows(query: str, symbol: str) -> list[tuple[Any, ...]]:
    """Rows of the data base of xraydb.

    Parameters
    ----------
    query : str
        SQL with one place for the symbol of the element.
    symbol : str
        Element.

    Returns
    -------
    list of tuple
        Empty for an element that the data base does not know.

    Raises
    ------
    MaterialError
        If xraydb is not installed, or its file is another one.
    """
    connection = None
    try:
        connection = sqlite3.connect(f"{_xraydb_file().as_uri()}?mode=ro", uri=True)
        return connection.execute(query, (symbol,)).fetchall()
    except sqlite3.Error as error:
        raise MaterialError(f"the data base of xraydb cannot be read: {error}; install python3-xraydb anew") from None
    finally:
        if connection is not None:
            connection.close()


@functools.lru_cache(maxsize=None)
def _xraydb_file() -> pathlib.Path:
    found = importlib.util.find_spec("xraydb")
    for folder in (found.submodule_search_locations or ()) if found else ():
        path = pathlib.Path(folder).resolve() / _XRAYDB_FILE
        if os.path.isfile(path):
            return path
    raise MaterialError("edges and the Chantler tables need xraydb, which is not installed; install python3-xraydb")
