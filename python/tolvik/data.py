# SPDX-License-Identifier: GPL-2.0-or-later
"""Measured reflectivity of one sample under one condition."""
from __future__ import annotations

import dataclasses
import warnings
from dataclasses import dataclass, field
from typing import Any, Mapping, Optional, Tuple, Union

import numpy as np
import numpy.typing as npt

from . import polarization as _polarization
from . import data_checks, reduction, resolution, units
from .errors import DataError, DataWarning

Array = npt.NDArray[np.float64]
Mask = npt.NDArray[np.bool_]


@dataclass(frozen=True, eq=False, repr=False)
class Data:
    """One measured curve; its arrays cannot be written to, and methods return new objects.

    Points that cannot enter a fit are masked: R = 0 (except in an asymmetry), dR = 0, and numbers that are not finite.
    They are counted and named in one `DataWarning`.

    Parameters
    ----------
    q : array_like, shape (n,)
        Momentum transfer, 1/Å, in any order.
    r : array_like, shape (n,)
        Reflectivity, or asymmetry when ``polarization`` is "asymmetry".
    dr : float or array_like, shape (n,), optional
        Standard deviation of r.
    dq : float or array_like, shape (n,), optional
        Resolution: sigma, 1/Å. `tolvik.resolution` converts other widths.
    energy : float or array_like, shape (n,), optional
        Photon energy, eV.
    polarization : str, pair of str, or array_like, shape (2, 4), optional
        As for `tolvik.polarization.rays`.
    mask : array_like of bool, shape (n,), optional
        True where a point is left out, as in numpy.ma. Points that must be masked are added to it.
    metadata : mapping, optional
        Further information of the file about the measurement, unchanged.
    name, source : str
        Title of the data set and the file that it comes from, for messages.

    Raises
    ------
    DataError
        If shapes differ, a width or an error is negative, or no point is left.
    """

    q: Array
    r: Array
    dr: Optional[Array] = None
    dq: Optional[Array] = None
    energy: Union[float, Array, None] = field(default=None, kw_only=True)
    polarization: Any = field(default=None, kw_only=True)
    mask: Mask = field(default=None, kw_only=True)  # type: ignore[arg-type]  # always an array once it is made
    metadata: Mapping[str, Any] = field(default_factory=dict, kw_only=True)
    name: str = field(default="", kw_only=True)
    source: str = field(default="", kw_only=True)

    def __post_init__(self) -> None:
        q = data_checks.column("q", self.q, None)
        r = data_checks.column("r", self.r, q.size)
        dr = None if self.dr is None else data_checks.column("dr", self.dr, q.size)
        dq = None if self.dq is None else data_checks.column("dq", self.dq, q.size)
        data_checks.refuse_negative("dr", dr, "an error is a standard deviation")
        data_checks.refuse_negative("dq", dq, "dq is the resolution, sigma = FWHM / 2.3548")
        if self.polarization is not None and not isinstance(self.polarization, str):
            object.__setattr__(self, "polarization", data_checks.frozen_rays(self.polarization))
        elif self.polarization is not None:
            object.__setattr__(self, "polarization", _polarization.canonical(self.polarization))
        asymmetry = isinstance(self.polarization, str) and self.polarization == "asymmetry"
        reasons = data_checks.reasons_to_mask(q, r, dr, dq, zero_is_empty=not asymmetry)
        given = data_checks.mask_of(self.mask, q.size)
        mask = given.copy()
        for _, points in reasons:
            mask |= points
        for name, value in (("q", q), ("r", r), ("dr", dr), ("dq", dq), ("mask", mask)):
            if value is not None:
                value.setflags(write=False)
            object.__setattr__(self, name, value)
        object.__setattr__(self, "energy", data_checks.energy_of(self.energy, q.size))
        if np.all(mask):
            raise DataError(
                self._label()
                + f"none of {q.size} points is usable; {data_checks.tally(reasons, None) or 'all are masked'}"
            )
        new = data_checks.tally(reasons, given)
        if new:
            warnings.warn(
                f"{self._label()}{int(np.sum(mask & ~given))} of {q.size} points masked: {new}",
                DataWarning,
                stacklevel=3,
            )

    def __len__(self) -> int:
        return int(self.q.size)

    def __repr__(self) -> str:
        parts = [f"{len(self)} points", f"q {np.nanmin(self.q):.4g} to {np.nanmax(self.q):.4g} 1/Å"]
        parts += [text for text, there in (("dR", self.dr is not None), ("dq (sigma)", self.dq is not None)) if there]
        if self.n_masked:
            parts.append(f"{self.n_masked} masked")
        if isinstance(self.energy, float):
            parts.append(f"{self.energy:g} eV")
        if isinstance(self.polarization, str):
            parts.append(self.polarization)
        return f"Data({self.name + ': ' if self.name else ''}{', '.join(parts)})"

    @property
    def n_masked(self) -> int:
        """Number of points that are left out."""
        return int(np.count_nonzero(self.mask))

    @property
    def x(self) -> Array:
        """q of the points in use, 1/Å, shape (m,)."""
        return self.q[~self.mask]

    @property
    def y(self) -> Array:
        """Reflectivity of the points in use, shape (m,)."""
        return self.r[~self.mask]

    @property
    def y_err(self) -> Optional[Array]:
        """Standard deviation of y, shape (m,), or None."""
        return None if self.dr is None else self.dr[~self.mask]

    @property
    def x_err(self) -> Optional[Array]:
        """Full width at half maximum of the resolution of the points in use, 1/Å, shape (m,); `dq` is sigma."""
        return None if self.dq is None else resolution.from_sigma(self.dq[~self.mask], "fwhm")

    @property
    def data(self) -> Tuple[Array, Array, Optional[Array], Optional[Array]]:
        """(x, y, y_err, x_err) of the points in use; x_err is the full width at half maximum."""
        return self.x, self.y, self.y_err, self.x_err

    @property
    def rays(self) -> Optional[Array]:
        """The two rays of the polarisation, shape (2, 4), or None."""
        return None if self.polarization is None else _polarization.rays(self.polarization)

    def replace(self, **changes: Any) -> Data:
        """A copy with some members changed, as `dataclasses.replace`."""
        return dataclasses.replace(self, **changes)

    @classmethod
    def from_counts(
        cls, q: npt.ArrayLike, counts: npt.ArrayLike, dq: Optional[npt.ArrayLike] = None, **others: Any
    ) -> Data:
        """Data from counts of a detector, with the errors of counting: dr = sqrt(counts).

        Parameters
        ----------
        q, counts : array_like, shape (n,)
            Momentum transfer, 1/Å, and the counts, before any scaling.
        dq : float or array_like, shape (n,), optional
            sigma, 1/Å.
        **others
            Keyword arguments of `Data`.

        Returns
        -------
        Data
            r are the counts; `normalise` brings them to a reflectivity.
        """
        return cls(q, counts, reduction.poisson_errors(counts), dq, **others)  # type: ignore[arg-type]

    @classmethod
    def from_two_theta(
        cls,
        two_theta: npt.ArrayLike,
        r: npt.ArrayLike,
        dr: Optional[npt.ArrayLike] = None,
        dq: Optional[npt.ArrayLike] = None,
        *,
        energy: float,
        **others: Any,
    ) -> Data:
        """Data over the scattering angle in degrees at a photon energy in eV; dq is sigma in 1/Å."""
        q = units.q_from_two_theta(two_theta, energy)
        return cls(q, r, dr, dq, energy=energy, **others)  # type: ignore[arg-type]

    def footprint(self, length: float, beam: float, profile: str = "box") -> Data:
        """Corrected for the part of the beam that misses a short sample; see `tolvik.reduction.footprint_factor`."""
        if self.energy is None:
            raise DataError(self._label() + "the footprint needs the photon energy; give energy in eV")
        factor = reduction.footprint_factor(self.q, self.energy, length, beam, profile)
        return self._scaled(1 / np.where(factor > 0, factor, np.nan))

    def background(self, value: Union[float, str] = "auto") -> Data:
        """With a constant background subtracted.

        Parameters
        ----------
        value : float or "auto"
            Background in the units of r; "auto" takes the median of the tenth of the points at the largest q, at least
            three. That is right only where the curve has ended in its background.

        Returns
        -------
        Data
            Values below zero stay, with their errors.
        """
        level = reduction.background_level(self.x, self.y) if value == "auto" else reduction.number("background", value)
        return self.replace(r=self.r - level)

    def normalise(self, to: Union[float, str] = "auto") -> Data:
        """Divided by the intensity of total reflection.

        Parameters
        ----------
        to : float or "auto"
            Intensity that becomes R = 1; "auto" takes the largest median of five neighbouring points.

        Returns
        -------
        Data
        """
        level = reduction.plateau_level(self.x, self.y) if to == "auto" else reduction.number("intensity", to)
        if not level > 0:
            raise DataError(self._label() + f"cannot normalise to {level:g}; give the intensity of the direct beam")
        return self._scaled(np.full(len(self), 1 / level))

    def _scaled(self, factor: Array) -> Data:
        return self.replace(r=self.r * factor, dr=None if self.dr is None else self.dr * np.abs(factor))

    def _label(self) -> str:
        name = ": ".join(text for text in (self.source, self.name) if text)
        return name + ": " if name else ""
