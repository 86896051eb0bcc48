# SPDX-License-Identifier: GPL-2.0-or-later
"""The exceptions of the package, and the table from faults of the C++ side to them."""
from __future__ import annotations

__all__ = ["CalculationError", "DataError", "DataFileError", "DataWarning", "MaterialError", "MaterialWarning",
           "OutOfMemoryError", "OutOfReachError", "ScriptError", "StateFileError", "TableRangeWarning", "TablesError",
           "TolvikError"]


class TolvikError(Exception):
    """Base class of all failures of this package.

    Attributes
    ----------
    code : int
        The return code of the calculation, as in `model/status.h`; 0 where a failure has none.
    """

    code = 0


class OutOfReachError(TolvikError, ValueError):
    """A point that no grazing angle reaches: its qz, resolution included, is not below 2 k0."""

    code = 2


class ScriptError(TolvikError):
    """The script of a state does not compile (code 3) or fails when it runs (code 4)."""

    code = 3


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
    kind, text = _FAULTS[fault]
    return kind(text.format(*arguments))
