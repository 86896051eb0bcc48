# SPDX-License-Identifier: GPL-2.0-or-later
"""The exceptions of the package, and the table from faults of the C++ side to them."""
from __future__ import annotations

import math
import re
from typing import Callable

__all__ = ["CalculationError", "DataError", "DataFileError", "DataWarning", "MaterialError", "MaterialWarning",
           "OutOfMemoryError", "OutOfReachError", "ScriptError", "StateFileError", "TableRangeWarning", "TablesError",
           "TolvikError", "WorkerError"]


class TolvikError(Exception):
    """Base class of all failures of this package.

    Attributes
    ----------
    code : int
        The return code of the calculation, as in `tolvik/return_code.h`; 0 where a failure has none.
    """

    code = 0


class OutOfReachError(TolvikError, ValueError):
    """A point that no grazing angle reaches: its qz, resolution included, is not below 2 k0, or it is not finite.

    Attributes
    ----------
    index : int
        The first such point, counted from 0.
    limit : float
        2 k0, 1/Å.
    """

    code = 2

    def __init__(self, message: str, index: int = -1, limit: float = float("nan")) -> None:
        super().__init__(message)
        self.index = index
        self.limit = limit


class ScriptError(TolvikError):
    """The script of a state does not compile (code 3) or fails when it runs (code 4)."""

    def __init__(self, message: str, code: int = 3) -> None:
        super().__init__(message)
        self.code = code


class CalculationError(TolvikError):
    """A calculation that ended early, with the reason where one is known."""

    code = 5


class TablesError(TolvikError, LookupError):
    """Tables of optical constants that are missing or empty."""

    code = 6


class StateFileError(TolvikError, OSError):
    """A state file that cannot be read or written."""


class OutOfMemoryError(TolvikError, MemoryError):
    """A calculation or a state that does not fit into memory."""


class DataError(TolvikError, ValueError):
    """Measured data, a width or a polarisation that cannot be used; of a file, the message begins with FILE:LINE."""


class DataFileError(TolvikError, OSError):
    """A file of data or tables that cannot be opened, read or written."""


class MaterialError(TolvikError, ValueError):
    """A formula, density, energy or table of constants that cannot be used."""


class WorkerError(TolvikError):
    """A task that failed, or a worker that died with it; what was finished is kept for the next call.

    Attributes
    ----------
    task : int
        Index of the task.
    """

    def __init__(self, message: str, task: int = -1) -> None:
        super().__init__(message)
        self.task = task


class DataWarning(UserWarning):
    """Data whose use may differ from the intention of the file: masked points, a doubtful column."""


class MaterialWarning(UserWarning):
    """Constants of tables that are doubtful: near an edge, or beyond a table."""


class TableRangeWarning(UserWarning):
    """An energy beyond a table: the layers concerned keep their former constants."""


# Fault of the C++ side -> class and text. The arguments of the fault fill the braces.
_FAULTS: dict[str, tuple[type[Exception], str]] = {
    "not_loaded": (StateFileError, "{0}: cannot be read as a state file: check that it exists, is readable and has "
                                   "no fileversion other than 1"),
    "not_read": (StateFileError, "{0}: not a state file of version 1"),
    "not_saved": (StateFileError, "{0}: cannot be written: check that its folder exists, is writable and has room"),
    "view_alive": (BufferError, "{0}: an array still shows this memory: drop every array taken from {0} (del, or "
                                "take a copy with numpy.array) before its length changes"),
    "wrong_type": (TypeError, "{0}: expected {1}, got {2!r}"),
    "integer_range": (OverflowError, "{0}: {1} is outside {2} to {3}"),
    "nul_in_text": (ValueError, "{0}: text with a NUL character: a state holds none"),
    "not_unpickled": (StateFileError, "these are not the bytes of a state of this version of the package: pickle it "
                      "again, "
                                      "or pass it on as a state file"),
    "analysis_data": (DataError, "{0}"),
    "analysis_tables": (TablesError, "{0}"),
    "no_record": (IndexError, "{0}: there is no record {1}"),
    "wrong_length": (ValueError, "{0}: expected {1} values, got {2}"),
    "energy_range": (ValueError, "energy: {0} is not a finite energy above 0 eV"),
    "out_of_memory": (OutOfMemoryError, "out of memory: use fewer points, layers or slices"),
}


def make(fault: str, *arguments: object) -> Exception:
    """Build the exception of a fault.

    Parameters
    ----------
    fault : str
        Name of the fault, a key of the table of this module.
    *arguments : object
        The values in its text.

    Returns
    -------
    Exception
        To be raised by the caller.
    """
    if fault in _BUILDERS:
        return _BUILDERS[fault](*arguments)
    kind, text = _FAULTS[fault]
    return kind(text.format(*arguments))


def _out_of_reach(index: int, q: float, width: float, limit: float) -> Exception:
    if not math.isfinite(limit):
        return CalculationError("the state has no photon energy: set state.energy, in eV")
    if not math.isfinite(q):
        return OutOfReachError(f"q[{index}] is {q}: give finite values of qz in 1/Å", index, limit)
    wide = f" with 2 sigma = {width:.6g}" if width else ""
    return OutOfReachError(f"q[{index}] = {q:.6g} 1/Å{wide} is beyond 2 k0 = {limit:.6g} 1/Å: leave such points out "
                           f"or raise "
                           f"the photon energy", index, limit)


def _calculation(index: int, reason: str) -> Exception:
    where = f" at point {index}" if index >= 0 else ""
    return CalculationError(f"the calculation ended early{where}" + (f": {reason}" if reason else ": a layer has no "
                                                                     "solution "
                            "there, check its constants and thickness"))


def _script(code: int) -> Callable[[str], Exception]:
    def build(message: str) -> Exception:
        place = _LUA_PLACE.match(message)
        if place is None:
            return ScriptError(f"script: {message}", code)
        line = int(place[1]) - 1  # the first line of the chunk is "function Start()"
        return ScriptError(f"script, line {line}: {message[place.end():]}", code)
    return build


_LUA_PLACE = re.compile(r'\[string "line"\]:(\d+): ')
# Faults whose exceptions carry more than a text.
_BUILDERS: dict[str, Callable[..., Exception]] = {
    "out_of_reach": _out_of_reach,
    "calculation": _calculation,
    "analysis_script": lambda text, code: ScriptError(text, code),
    "analysis_calculation": lambda text, code: OutOfReachError(text) if code == 2 else CalculationError(text),
    "script_compilation": _script(3),
    "script_execution": _script(4),
}
