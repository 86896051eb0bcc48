# SPDX-License-Identifier: GPL-2.0-or-later
"""Errors of a fit by refits of synthetic data."""
from __future__ import annotations

from concurrent.futures import Executor
from dataclasses import dataclass, field
from typing import Optional

import numpy as np
import numpy.typing as npt

from . import executors
from .errors import CalculationError, DataError, ScriptError
from .fitting import least_squares
from .results import FitResult

__all__ = ["Sample", "bootstrap"]

Array = npt.NDArray[np.float64]

KINDS = ("parametric", "residual", "block")


@dataclass(frozen=True, eq=False)
class Sample:
    """Parameters of many refits, or of many steps of a chain.

    Attributes
    ----------
    names : tuple of str, length m
        Names of the parameters.
    samples : ndarray, shape (n, m)
        One row per refit that converged.
    failed : int
        Refits that did not.
    """

    names: tuple[str, ...]
    samples: Array = field(repr=False)
    failed: int = 0

    def quantiles(self, p: npt.ArrayLike) -> Array:
        """Quantiles of every parameter.

        Parameters
        ----------
        p : array_like, shape (k,)
            Shares between 0 and 1.

        Returns
        -------
        ndarray, shape (k, m)
        """
        return np.asarray(np.quantile(self.samples, np.asarray(p), axis=0))

    def correlation(self) -> Array:
        """Correlations of the parameters.

        Returns
        -------
        ndarray, shape (m, m)
        """
        return np.asarray(np.atleast_2d(np.corrcoef(self.samples, rowvar=False)))

    @property
    def mean(self) -> Array:
        """Means, shape (m,)."""
        return np.asarray(self.samples.mean(axis=0))

    @property
    def errors(self) -> Array:
        """Standard deviations, shape (m,)."""
        return np.asarray(self.samples.std(axis=0, ddof=1))


@dataclass(frozen=True)
class _Refits:
    fit: FitResult
    kind: str
    block: int
    seed: Optional[int]

    def __call__(self, task: int) -> Optional[Array]:
        random = np.random.default_rng([0 if self.seed is None else self.seed, task])
        models = self.fit.objective.models(self.fit.x)
        values = np.concatenate([model.model + model.dR * self._noise((model.R - model.model) / model.dR, random)
                                 for model in models])
        try:
            end = least_squares(self.fit.objective.with_values(values), self.fit.x)
        except (CalculationError, ScriptError):
            return None
        return end.x if end.success else None

    def _noise(self, residuals: Array, random: np.random.Generator) -> Array:
        n = residuals.size
        if self.kind == "parametric":
            return random.standard_normal(n)
        size = 1 if self.kind == "residual" else min(self.block, n)
        first = random.integers(0, n - size + 1, -(-n // size))
        return np.asarray(residuals[(first[:, np.newaxis] + np.arange(size)).ravel()[:n]])

    def name_of(self, task: int) -> str:
        return f"refit {task}"


def bootstrap(fit: FitResult, n: int, *, kind: str = "parametric", block: int = 10, seed: Optional[int] = None,
              executor: Optional[Executor] = None, progress: executors.Progress = False) -> Sample:
    """Fit synthetic data, made from the best model, many times.

    Parameters
    ----------
    fit : FitResult
        A fit of measurements with errors.
    n : int
        Number of refits.
    kind : {"parametric", "residual", "block"}, optional
        Noise: normal with the errors of the data; the residuals of the fit, drawn one by one with replacement; or
        drawn in runs of `block` neighbours, for residuals that are correlated.
    block : int, optional
        Points of a run.
    seed : int, optional
        Of the noise; each refit has a stream of its own, so that the result does not depend on the executor. Without
        one a new seed is drawn.
    executor, progress
        As for `tolvik.executors.run`.

    Returns
    -------
    Sample

    Raises
    ------
    DataError
        If the kind is unknown, or the data have no errors.

    References
    ----------
    B. Efron and R. J. Tibshirani, An Introduction to the Bootstrap, Chapman & Hall (1993).
    H. R. Kuensch, Ann. Statist. 17, 1217 (1989), for runs.
    """
    if kind not in KINDS:
        raise DataError(f"kind = {kind!r}: expected one of {', '.join(KINDS)}")
    if n < 2 or block < 1:
        raise DataError(f"n = {n}, block = {block}: expected at least 2 refits and runs of at least 1 point")
    if seed is None:
        seed = int(np.random.SeedSequence().generate_state(1)[0])
    rows = executors.run(_Refits(fit, kind, block, seed), n, executor=executor, progress=progress)
    done = [row for row in rows if row is not None]
    if len(done) < 2:
        raise DataError(f"{n - len(done)} of {n} refits failed: look at the fit first")
    return Sample(fit.names, np.array(done), n - len(done))
