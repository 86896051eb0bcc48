# SPDX-License-Identifier: GPL-2.0-or-later
"""Files of laboratory diffractometers and of spec: .xrdml, .ras and .spec through xrayutilities."""
from __future__ import annotations

import contextlib
import io
import re
import warnings
from typing import TYPE_CHECKING, Any, Optional, Sequence

import numpy as np

from ..data import Data
from ..errors import DataError, TolvikError
from . import quantities, source
from .quantities import Array, Column

if TYPE_CHECKING:
    from .reader import ReadOptions

_RAS_WAVELENGTH = re.compile(
    r'^\*(?:HW_XG_WAVE_LENGTH_ALPHA1|MEAS_COND_XG_WAVE_LENGTH_ALPHA1)\s+"?([\d.]+)', re.MULTILINE
)
_XRDML_WAVELENGTH = re.compile(r"<kAlpha1[^>]*>\s*([\d.]+)\s*</kAlpha1>")
_SPEC_ANGLES = ("2theta", "tth", "twotheta", "two theta", "del", "delta", "tt", "2th")
_SPEC_COUNTS = ("detector", "det", "counts", "apd", "scint", "signal", "diode")


def read(path: str, content: bytes, options: "ReadOptions") -> list[Data]:
    """All scans of a laboratory file; see `tolvik.read`."""
    try:
        import xrayutilities
    except ImportError:
        source.fail(
            path,
            None,
            (
                f".{options.format} files are read through xrayutilities, which is not installed; install "
                "python3-xrayutilities or export columns of text"
            ),
        )
    reader = {"xrdml": _xrdml, "ras": _ras, "spec": _spec}[options.format]
    noise = io.StringIO()
    try:
        with contextlib.redirect_stdout(noise), warnings.catch_warnings():
            warnings.simplefilter("ignore")
            scans = reader(xrayutilities, path, content, options)
    except TolvikError:
        raise
    except Exception as error:  # a damaged file may raise any exception of the library
        source.fail(
            path,
            None,
            (
                f"is no readable .{options.format} file: {source.one_line(error) or type(error).__name__}; "
                "export it anew or as columns of text"
            ),
        )
    found = []
    for name, columns, table, energy in scans:
        if table.shape[0] == 0:
            raise DataError(f"{path}: {name} has no points")
        found.append(
            quantities.assemble(
                columns,
                table,
                energy=options.energy or energy,
                dq_is=options.dq_is,
                source=path,
                name=name,
                metadata={"scan": name},
            )
        )
    return found


Scan = tuple[str, Sequence[Column], Array, Optional[float]]


def _xrdml(library: Any, path: str, content: bytes, options: "ReadOptions") -> list[Scan]:
    wavelength = _XRDML_WAVELENGTH.search(content.decode("utf-8", "replace"))
    energy = quantities.energy_of("wavelength", float(wavelength.group(1)), "angstrom") if wavelength else None
    scans: list[Scan] = []
    for number, scan in enumerate(library.io.XRDMLFile(path).scans, 1):
        rate = np.atleast_2d(np.asarray(scan["detector"], dtype=np.float64))
        angle = np.atleast_2d(np.asarray(scan["2Theta"], dtype=np.float64))
        seconds = np.broadcast_to(np.atleast_1d(scan["countTime"])[:, None], rate.shape)
        factors = np.asarray(scan.ddict.get("beamAttenuationFactors", ()), dtype=np.float64)
        attenuation = np.broadcast_to(np.atleast_2d(factors) if factors.size else 1.0, rate.shape)
        counts = rate * seconds / attenuation
        # The error is that of the photons that were counted, not of the rate without attenuator.
        table = np.column_stack(
            [
                np.broadcast_to(angle, rate.shape).ravel(),
                rate.ravel(),
                (np.sqrt(np.maximum(counts, 0)) * attenuation / seconds).ravel(),
            ]
        )
        scans.append((f"scan {number}", [Column("2theta"), Column("R"), Column("dR")], table, energy))
    return scans


def _ras(library: Any, path: str, content: bytes, options: "ReadOptions") -> list[Scan]:
    wavelength = _RAS_WAVELENGTH.search(content.decode("ascii", "ignore"))
    energy = quantities.energy_of("wavelength", float(wavelength.group(1)), "angstrom") if wavelength else None
    scans: list[Scan] = []
    for number, scan in enumerate(library.io.RASFile(path).scans, 1):
        axis = str(scan.scan_axis)
        angle = np.asarray(scan.data[axis], dtype=np.float64)
        counts, attenuation = np.asarray(scan.data["int"], float), np.asarray(scan.data["att"], float)
        quantity = "theta" if axis.lower() in ("omega", "theta") else "2theta"
        table = np.column_stack([angle, counts * attenuation, np.sqrt(np.maximum(counts, 0)) * attenuation])
        scans.append((f"scan {number}", [Column(quantity), Column("R"), Column("dR")], table, energy))
    return scans


def _spec(library: Any, path: str, content: bytes, options: "ReadOptions") -> list[Scan]:
    scans: list[Scan] = []
    for scan in library.io.SPECFile(path).scan_list:
        if scan.scan_status == "NODATA":
            continue
        scan.ReadData()
        if scan.data is None:
            continue
        labels = [str(label) for label in scan.data.dtype.names]
        if options.columns is None:
            picked = [_pick(path, labels, _SPEC_ANGLES), _pick(path, labels, _SPEC_COUNTS)]
            columns = [Column("2theta"), Column("counts")]
        else:
            columns = [quantities.parse(name) for name in options.columns]
            picked = labels[: len(columns)]
            if len(columns) > len(labels):
                raise DataError(f"{path}: scan {scan.nr} has columns {', '.join(labels)}; name at most {len(labels)}")
        table = np.column_stack([np.asarray(scan.data[label], dtype=np.float64) for label in picked])
        scans.append((f"scan {scan.nr}", columns, table, None))
    if not scans:
        raise DataError(f"{path}: holds no finished scan")
    return scans


def _pick(path: str, labels: Sequence[str], wanted: Sequence[str]) -> str:
    for label in labels:
        if label.strip().lower() in wanted:
            return label
    raise DataError(
        f"{path}: none of the columns {', '.join(labels)} is called {wanted[0]}; name them all in order with "
        "columns=, as '2theta,-,counts'"
    )
