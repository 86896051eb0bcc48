# SPDX-License-Identifier: GPL-2.0-or-later
"""How well a state describes its measurements, as a function of its fit variables."""
from __future__ import annotations

import re
import warnings
from dataclasses import dataclass
from typing import Any, Optional, Sequence, Union

import numpy as np
import numpy.typing as npt

from . import _core
from .data import Data
from .errors import DataError, DataWarning
from .results import Covariance
from .state import State

__all__ = ["Model", "Objective"]

Array = npt.NDArray[np.float64]

_WEIGHTS = ("errors", "log", "program")
_RESOLUTIONS = ("state", "points")
_MASKED_ONLY = re.compile(r"\(\d+ masked\)$")
# Kinds of measurements, as in tolvik/analysis/measurement.h.
_REFLECTIVITY, _ASYMMETRY, _ENERGY_SCAN, _ENERGY_SCAN_ASYMMETRY = 0, 3, 4, 6


@dataclass(frozen=True, eq=False)
class Model:
    """A measurement beside its model, at the points that take part.

    Attributes
    ----------
    q, R, dR : ndarray, shape (n,)
        Momentum transfer, 1/Å, measured value and its standard deviation (1 where none is known).
    model : ndarray, shape (n,)
        Model, with scale and background.
    """

    q: Array
    R: Array
    dR: Array
    model: Array


class Objective:
    """Compares a state with measurements. A point of the parameters is x of shape (m,), many are X of shape (k, m).

    The parameters are the fit variables of the state, in their order. Every evaluation begins from the state as it was
    given; the state itself is not changed. Objectives can be pickled.

    Parameters
    ----------
    state : State
        Model with its fit variables.
    data : Data or sequence of Data, optional
        Measurements; the active datasets of the state by default. One that `State.attach` has put into the state
        takes the multiplicator, translator and shift of its dataset.
    weights : {"errors", "log", "program"}, optional
        Residuals: (R - model) / dR; log10 R - log10 model; or those of the fits of the program.
    resolution : {"state", "points"}, optional
        Width of q: that of the dataset or state, or the dq of each point.
    threads : int, optional
        Most threads for many points; as many as `set_threads` says by default. The results do not depend on it.

    Raises
    ------
    DataError
        If measurements or bounds cannot be used.
    TablesError
        If tables are missing.
    ScriptError
        If the script of the state fails where the parameters start.

    Warns
    -----
    DataWarning
        If a start outside its bounds was moved, and for points that were left out.
    """

    def __init__(self, state: State, data: Union[Data, Sequence[Data], None] = None, *, weights: str = "errors",
                 resolution: str = "state", threads: Optional[int] = None) -> None:
        _choice("weights", weights, _WEIGHTS)
        _choice("resolution", resolution, _RESOLUTIONS)
        self._given: dict[str, Any] = {"weights": weights, "resolution": resolution, "threads": threads}
        self._state = state.copy()
        self._data = (data,) if isinstance(data, Data) else None if data is None else tuple(data)
        if self._data is None:
            active = [i for i, dataset in enumerate(state.datasets)
                      if dataset.datasetactive and dataset.dataset_qz.size]
            measurements: list[dict[str, Any]] = [{"dataset": i} for i in active]
        else:
            measurements = [_measurement(self._state, each, resolution) for each in self._data]
        self._core = _core.Objective(self._state, measurements, _WEIGHTS.index(weights), _RESOLUTIONS.index(resolution),
                                     threads or 0)
        self._count = len(measurements)
        found = self._core._parameters()
        self.names: tuple[str, ...] = tuple(each[0] for each in found)
        #: Where a fit starts, shape (m,).
        self.x0: Array = np.array([each[1] for each in found], dtype=np.float64)
        #: Lower and upper bounds, shape (m, 2); infinite where there are none.
        self.bounds: Array = np.array([each[2:4] for each in found], dtype=np.float64).reshape(-1, 2)
        #: A typical change of each parameter, shape (m,).
        self.scale: Array = np.array([each[4] for each in found], dtype=np.float64)
        for text in self._core._warnings():
            if not _MASKED_ONLY.search(text):  # said when the data were made
                warnings.warn(text, DataWarning, stacklevel=2)

    def __reduce__(self) -> tuple[Any, ...]:
        return _rebuild, (self._state, self._data, self._given)

    def __repr__(self) -> str:
        return f"Objective({len(self)} residuals of {self._count} measurements, {len(self.names)} parameters)"

    def __len__(self) -> int:
        return self._core._size()

    def residuals(self, x: npt.ArrayLike) -> Array:
        """Residuals, whose squares sum to chi-square.

        Parameters
        ----------
        x : array_like, shape (m,) or (k, m)

        Returns
        -------
        ndarray, shape (N,) or (k, N)
            Of many points, rows that cannot be calculated are NaN.

        Raises
        ------
        ScriptError, CalculationError
            If a single point cannot be calculated.
        """
        points = self._points(x)
        return self._core._residuals_at(points) if points.ndim == 1 else self._core._residuals(points)

    def chisqr(self, x: npt.ArrayLike) -> Any:
        """Chi-square; infinite where the model cannot be calculated.

        Parameters
        ----------
        x : array_like, shape (m,) or (k, m)

        Returns
        -------
        float or ndarray, shape (k,)
        """
        return self._evaluate(x, 0)

    def logl(self, x: npt.ArrayLike) -> Any:
        """Logarithm of the likelihood, for normal errors with its constant; shapes as for `chisqr`.

        Parameters
        ----------
        x : array_like, shape (m,) or (k, m)

        Returns
        -------
        float or ndarray, shape (k,)
        """
        return self._evaluate(x, 1)

    def logp(self, x: npt.ArrayLike) -> Any:
        """Logarithm of the prior, -infinity outside the bounds; shapes as for `chisqr`.

        Parameters
        ----------
        x : array_like, shape (m,) or (k, m)

        Returns
        -------
        float or ndarray, shape (k,)
        """
        return self._evaluate(x, 2)

    def logpost(self, x: npt.ArrayLike) -> Any:
        """Logarithm of the posterior, `logp` + `logl`; points outside the bounds are not calculated.

        Parameters
        ----------
        x : array_like, shape (m,) or (k, m)

        Returns
        -------
        float or ndarray, shape (k,)
        """
        points = self._points(x)
        values = self._core._evaluate(points, True)
        with np.errstate(invalid="ignore"):
            total = np.where(np.isneginf(values[2]), -np.inf, values[1] + values[2])
        return float(total[0]) if points.ndim == 1 else total

    def nll(self, x: npt.ArrayLike) -> Any:
        """Negative logarithm of the likelihood, for minimisers; shapes as for `chisqr`.

        Parameters
        ----------
        x : array_like, shape (m,) or (k, m)

        Returns
        -------
        float or ndarray, shape (k,)
        """
        return -self.logl(x)

    def prior_transform(self, u: npt.ArrayLike) -> Array:
        """Points of the unit cube as points distributed by the prior, for nested samplers.

        Parameters
        ----------
        u : array_like, shape (m,) or (k, m)
            Between 0 and 1.

        Returns
        -------
        ndarray, shape of u
            NaN for a parameter without finite bounds.
        """
        return self._core._prior_transform(self._points(u))

    def generative(self, x: npt.ArrayLike) -> Array:
        """The model at all points that take part, one measurement after the other.

        Parameters
        ----------
        x : array_like, shape (m,)

        Returns
        -------
        ndarray, shape (N,)
        """
        return np.concatenate([model.model for model in self.models(x)])

    def models(self, x: npt.ArrayLike) -> list[Model]:
        """Each measurement beside its model.

        Parameters
        ----------
        x : array_like, shape (m,)

        Returns
        -------
        list of Model
        """
        points = self._points(x)
        found = []
        for i in range(self._count):
            used, q, model, _ = self._core._model(points, i)
            measured, errors = self._measured(i)
            found.append(Model(q, measured[used], errors[used], model))
        return found

    def jacobian(self, x: npt.ArrayLike) -> Array:
        """Derivatives of the residuals by the parameters, exact where there are exact ones.

        Parameters
        ----------
        x : array_like, shape (m,)

        Returns
        -------
        ndarray, shape (N, m)
        """
        return self._core._jacobian(self._points(x))[1]

    def covar(self, x: Optional[npt.ArrayLike] = None) -> Array:
        """Covariance of the parameters at a minimum, the inverse of JᵀJ.

        Parameters
        ----------
        x : array_like, shape (m,), optional
            The minimum; the start by default.

        Returns
        -------
        ndarray, shape (m, m)
        """
        return self.covariance(self.x0 if x is None else x).covariance

    def covariance(self, x: npt.ArrayLike) -> Covariance:
        """Errors and correlations at a minimum.

        Parameters
        ----------
        x : array_like, shape (m,)
            The minimum.

        Returns
        -------
        Covariance
        """
        return Covariance(**self._core._covariance(self._points(x)))

    def state_at(self, x: npt.ArrayLike) -> State:
        """The state with its fit variables at a point.

        Parameters
        ----------
        x : array_like, shape (m,)

        Returns
        -------
        State
        """
        return State._of(self._core._state_at(self._points(x)))

    def with_values(self, values: npt.ArrayLike) -> Objective:
        """The same comparison with other measured values, for synthetic data.

        Parameters
        ----------
        values : array_like, shape (N,)
            Values at the points that take part, as `generative` orders them.

        Returns
        -------
        Objective
        """
        if self._data is None:
            raise DataError("synthetic data need measurements with errors: pass data to Objective")
        left = np.asarray(values, dtype=np.float64)
        copies = []
        for i, each in enumerate(self._data):
            used = self._core._model(self.x0, i)[0]
            r = each.r.copy()
            r[used] = left[:len(used)]
            left = left[len(used):]
            copies.append(each.replace(r=r))
        with warnings.catch_warnings():
            warnings.simplefilter("ignore", DataWarning)  # said when the objective was made
            return Objective(self._state, copies, **self._given)

    def _measured(self, i: int) -> tuple[Array, Array]:
        if self._data is not None:
            dr = self._data[i].dr
            return self._data[i].r, np.ones(self._data[i].q.size) if dr is None else dr
        active = [each for each in self._state.datasets if each.datasetactive and each.dataset_qz.size]
        measured = active[i].dataset_A if active[i].dataset_R0.size == 0 else active[i].dataset_R0
        return measured, np.ones(measured.size)

    def _points(self, x: npt.ArrayLike) -> Array:
        points = np.asarray(x, dtype=np.float64)
        if points.ndim not in (1, 2) or points.shape[-1] != len(self.names):
            raise DataError(f"x has shape {points.shape}: expected ({len(self.names)},) or (k, {len(self.names)})")
        return points

    def _evaluate(self, x: npt.ArrayLike, which: int) -> Any:
        points = self._points(x)
        values = self._core._evaluate(points, False)[which]
        return float(values[0]) if points.ndim == 1 else values


def _rebuild(state: State, data: Optional[tuple[Data, ...]], given: dict[str, Any]) -> Objective:
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", DataWarning)
        return Objective(state, data, **given)


def _choice(name: str, value: str, among: Sequence[str]) -> None:
    if value not in among:
        raise DataError(f"{name} = {value!r}: expected one of {', '.join(among)}")


def _measurement(state: State, data: Data, resolution: str) -> dict[str, Any]:
    """A measurement as the C++ side takes it. Masked points go in as points without a value."""
    if not isinstance(data, Data):
        raise DataError(f"data of type {type(data).__name__}: expected tolvik.Data, as tolvik.read returns it")
    if resolution == "points" and data.dq is None:
        raise DataError(f"{data.name or 'data'}: resolution='points' needs dq (sigma in 1/Å) at every point")
    asymmetry = isinstance(data.polarization, str) and data.polarization == "asymmetry"
    scan = data.energy is not None and not isinstance(data.energy, float)
    kinds = (_ENERGY_SCAN, _ENERGY_SCAN_ASYMMETRY) if scan else (_REFLECTIVITY, _ASYMMETRY)
    kind = kinds[asymmetry]
    given: dict[str, Any] = {"kind": kind, "name": data.name, "q": data.q.tolist(), "masked": data.mask.tolist(),
                             "R": data.r.tolist(), "dR": [] if data.dr is None else data.dr.tolist()}
    for i, dataset in enumerate(state.datasets):
        values = dataset.dataset_A if asymmetry else dataset.dataset_R0
        if np.array_equal(dataset.dataset_qz, data.x) and np.array_equal(values, data.y):
            given["dataset"] = i
    if data.dq is not None and resolution == "points":
        given["dq"] = data.dq.tolist()
    elif data.dq is not None and np.ptp(data.dq[~data.mask]) == 0:
        given["resolution"] = 2 * float(data.dq[~data.mask][0])
    if scan:
        given["energies"] = np.asarray(data.energy).tolist()
    elif data.energy is not None:
        given["energy"] = data.energy
    if data.rays is not None:
        given["rays"] = data.rays.ravel().tolist()
    return given
