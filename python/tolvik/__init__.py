# SPDX-License-Identifier: GPL-2.0-or-later
"""Specular X-ray reflectivity of thin-film multilayers, resonant magnetic reflectivity included.

Lengths are in Å, qz in 1/Å, energies in eV. The width of a resolution is a standard deviation, sigma, in 1/Å.

A name is imported when it is first used, so that a tool answers ``--help`` before numpy is loaded.
"""
import importlib
from typing import TYPE_CHECKING, Any

from .errors import (CalculationError, DataError, DataFileError, DataWarning, MaterialError, MaterialWarning,
                     OutOfMemoryError, OutOfReachError, ScriptError, StateFileError, TableRangeWarning, TablesError,
                     TolvikError)

if TYPE_CHECKING:
    from ._core import __version__
    from .data import Data
    from .formats import read, write_ort
    from .state import State, load

__all__ = ["CalculationError", "Data", "DataError", "DataFileError", "DataWarning", "MaterialError", "MaterialWarning",
           "OutOfMemoryError", "OutOfReachError", "ScriptError", "State", "StateFileError", "TableRangeWarning",
           "TablesError", "TolvikError", "__version__", "load", "read", "write_ort"]

# Name -> the module that holds it.
_HOMES = {"Data": "data", "State": "state", "__version__": "_core", "load": "state", "read": "formats",
          "write_ort": "formats"}
# Modules that are used by their own name: tolvik.materials.delta_beta(...).
_MODULES = ("materials", "polarization", "resolution")


def __getattr__(name: str) -> Any:
    if name in _MODULES:
        return importlib.import_module("." + name, __name__)
    if name not in _HOMES:
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    value = getattr(importlib.import_module("." + _HOMES[name], __name__), name)
    globals()[name] = value
    return value


def __dir__() -> list[str]:
    return sorted({*globals(), *__all__, *_MODULES})
