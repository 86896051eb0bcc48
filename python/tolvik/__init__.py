# SPDX-License-Identifier: GPL-2.0-or-later
"""Specular X-ray reflectivity of thin-film multilayers, resonant magnetic reflectivity included.

Lengths are in Å, qz in 1/Å, energies in eV. The width of a resolution is a standard deviation, sigma, in 1/Å.
"""
from ._core import __version__
from .errors import (CalculationError, OutOfMemoryError, OutOfReachError, ScriptError, StateFileError,
                     TableRangeWarning, TablesError, TolvikError)
from .state import State, load

__all__ = ["CalculationError", "OutOfMemoryError", "OutOfReachError", "ScriptError", "State", "StateFileError",
           "TableRangeWarning", "TablesError", "TolvikError", "__version__", "load"]
