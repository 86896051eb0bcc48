# SPDX-License-Identifier: GPL-2.0-or-later
"""Specular X-ray reflectivity of thin-film multilayers, resonant magnetic reflectivity included.

Lengths are in Å, qz in 1/Å, energies in eV. The width of a resolution is a standard deviation, sigma, in 1/Å.

A name is imported when it is first used, so that a tool answers ``--help`` before numpy is loaded.
"""
import importlib
from typing import TYPE_CHECKING, Any

from .errors import (CalculationError, DataError, DataFileError, DataWarning, MaterialError, MaterialWarning,
                     OutOfMemoryError, OutOfReachError, ScriptError, StateFileError, TableRangeWarning, TablesError,
                     TolvikError, WorkerError)

if TYPE_CHECKING:
    from ._core import __version__
    from .curves import Curve, Dichroism, EnergyScan, curve, dichroism, energy_scan
    from .data import Data
    from .fitting import fit
    from .formats import read, write_ort
    from .maps import EnergyMap, energy_map, load_map
    from .objective import Objective
    from .optimisers import Evolution, Fit
    from .posterior import Posterior, sample
    from .process import build_info, set_threads
    from .resampling import Sample, bootstrap
    from .results import FitResult
    from .state import Profile, State, load

__all__ = ["CalculationError", "Curve", "Data", "DataError", "DataFileError", "DataWarning", "Dichroism",
           "EnergyMap", "EnergyScan", "Evolution", "Fit", "FitResult", "MaterialError", "MaterialWarning",
           "Objective", "OutOfMemoryError", "OutOfReachError", "Posterior", "Profile", "Sample", "ScriptError",
           "State", "StateFileError", "TableRangeWarning", "TablesError", "TolvikError", "WorkerError",
           "__version__", "bootstrap", "build_info", "curve", "dichroism", "energy_map", "energy_scan", "fit",
           "load", "load_map", "read", "sample", "set_threads", "write_ort"]

# Module -> the names that it holds.
_CONTENTS = {
    "_core": ("__version__",),
    "curves": ("Curve", "Dichroism", "EnergyScan", "curve", "dichroism", "energy_scan"),
    "data": ("Data",),
    "formats": ("read", "write_ort"),
    "fitting": ("fit",),
    "maps": ("EnergyMap", "energy_map", "load_map"),
    "objective": ("Objective",),
    "optimisers": ("Evolution", "Fit"),
    "posterior": ("Posterior", "sample"),
    "process": ("build_info", "set_threads"),
    "resampling": ("Sample", "bootstrap"),
    "results": ("FitResult",),
    "state": ("Profile", "State", "load"),
}
_HOMES = {name: module for module, names in _CONTENTS.items() for name in names}
# Modules that are used by their own name: tolvik.materials.delta_beta(...).
_MODULES = ("executors", "materials", "polarization", "resolution")


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
