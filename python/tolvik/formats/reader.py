# SPDX-License-Identifier: GPL-2.0-or-later
"""`read`: the reader for all files of measured data."""
from __future__ import annotations

import importlib
import os
import re
from dataclasses import dataclass
from typing import Optional, Sequence, Union

from ..data import Data
from ..errors import DataError, TolvikError
from ..resolution import KINDS
from . import source

#: Suffix of a file -> format; each format is a module here with a function ``read(path, content, options)``.
SUFFIXES = {
    ".ort": "ort",
    ".orb": "orb",
    ".h5": "orb",
    ".nxs": "orb",
    ".xrdml": "xrdml",
    ".ras": "ras",
    ".spec": "spec",
    ".dat": "columns",
    ".txt": "columns",
    ".csv": "columns",
    ".refl": "columns",
    ".xy": "columns",
    ".xye": "columns",
    ".asc": "columns",
    ".tsv": "columns",
}
_MODULES = {"ort": "ort", "orb": "orb", "columns": "columns", "xrdml": "lab", "ras": "lab", "spec": "lab"}
_ORT_MARK = "ORSO reflectivity data file"
_SPEC_START = re.compile(r"^#(?:F |S \d)")  # spec writes files of any name
_HDF5_MARK = b"\x89HDF\r\n\x1a\n"


@dataclass(frozen=True)
class ReadOptions:
    """The caller's information about a file; where it is None, that of the file is used."""

    format: str
    dq_is: Optional[str] = None
    columns: Optional[tuple[str, ...]] = None
    energy: Optional[float] = None


def read(
    path: source.Path,
    format: Optional[str] = None,
    dq_is: Optional[str] = None,
    *,
    columns: Union[str, Sequence[str], None] = None,
    energy: Optional[float] = None,
) -> list[Data]:
    """Reads all data sets of a file.

    Parameters
    ----------
    path : str or path-like
        .ort, .orb, text of two to four columns, .xrdml, .ras or .spec.
    format : str, optional
        "ort", "orb", "columns", "xrdml", "ras" or "spec"; by default from the content and the suffix.
    dq_is : str, optional
        Convention of the width of q in the file: "sigma", "fwhm", "half", "percent" or "percent_fwhm". It overrides
        that of the file; without both it is sigma.
    columns : str or sequence of str, optional
        Names of the columns of a text or a laboratory file, as "2theta,counts": q, 2theta, theta, R, counts, dR, dq,
        d2theta, and "-" for one to be skipped. A unit may follow: "q[1/nm]".
    energy : float, optional
        Photon energy, eV; it overrides that of the file. Angles need it.

    Returns
    -------
    list of Data
        One per data set; q in 1/Å, dq = sigma.

    Raises
    ------
    DataError
        If the content is wrong: one line with file, line, value and remedy.
    DataFileError
        If the file cannot be read; also an OSError.

    Warns
    -----
    DataWarning
        Once per data set with masked points, and where a column looks like another quantity.
    """
    name = os.fspath(path)
    if dq_is is not None and str(dq_is).strip().lower() not in KINDS:
        raise DataError(f"dq_is = {dq_is!r} is unknown; give one of {', '.join(KINDS)} (sigma = FWHM / 2.3548)")
    if format is not None and format not in _MODULES:
        raise DataError(f"format {format!r} is unknown; give one of {', '.join(_MODULES)}")
    if energy is not None and not 0 < energy < float("inf"):
        raise DataError(f"energy {energy!r} is no positive number; give eV")
    content = source.read_bytes(path)
    kind = format or _guess_format(name, content)
    names = tuple(columns.split(",")) if isinstance(columns, str) else None if columns is None else tuple(columns)
    if names is not None and kind in ("ort", "orb"):
        raise DataError(f"{name}: an {kind} file names its columns itself; leave columns away or give format='columns'")
    options = ReadOptions(kind, dq_is, names, energy)
    module = importlib.import_module("." + _MODULES[kind], __package__)
    try:
        found: list[Data] = module.read(name, content, options)
    except TolvikError as error:
        if str(error).startswith(name):
            raise
        raise DataError(f"{name}: {source.one_line(error)}") from None
    if not found:
        source.fail(name, None, "holds no data set")
    return found


def _guess_format(name: str, content: bytes) -> str:
    if content.startswith(_HDF5_MARK):
        return "orb"
    head = content[:400].replace(b"\0", b"").decode("latin-1")
    if _ORT_MARK in head.split("\n", 1)[0]:
        return "ort"
    if _SPEC_START.search(head):
        return "spec"
    suffix = os.path.splitext(name)[1].lower()
    if suffix in SUFFIXES:
        return SUFFIXES[suffix]
    raise DataError(f"{name}: suffix {suffix!r} is unknown; give format= one of {', '.join(_MODULES)}")
