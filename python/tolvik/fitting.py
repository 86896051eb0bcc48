# SPDX-License-Identifier: GPL-2.0-or-later
"""Fits: least squares with the exact Jacobian, differential evolution, and the program's own optimisers."""
from __future__ import annotations

import math
from concurrent.futures import Executor
from dataclasses import dataclass
from typing import Any, Optional

import numpy as np
import numpy.typing as npt

from . import executors
from .errors import CalculationError, DataError, ScriptError
from .objective import Objective
from .optimisers import Evolution, Fit
from .results import FitResult

__all__ = ["METHODS", "fit"]

Array = npt.NDArray[np.float64]

_PROGRAM = {"simplex": 0, "levmar": 1, "annealing": 2}
METHODS = ("least_squares", "differential_evolution", *_PROGRAM, "evolution")


def fit(objective: Objective, method: str = "least_squares", *, starts: int = 1, seed: Optional[int] = None,
        steps: Optional[int] = None, executor: Optional[Executor] = None,
        progress: executors.Progress = False) -> FitResult:
    """Fit the parameters of an objective.

    A KeyboardInterrupt ends the fit; the result is then the best point so far.

    Parameters
    ----------
    objective : Objective
        What is minimised.
    method : str, optional
        "least_squares": trust region reflective with bounds and the exact Jacobian. "differential_evolution": a global
        search between finite bounds, then least squares. "simplex", "levmar", "annealing", "evolution": the program's
        own, which minimise its own error over the active datasets of the state.
    starts : int, optional
        For least squares: from the start of the objective and from starts - 1 points of a Latin hypercube between the
        bounds; the best one counts.
    seed : int, optional
        Of all random numbers; the same seed gives the same result.
    steps : int, optional
        Most generations of a search, or steps of the program's own (500 by default).
    executor : concurrent.futures.Executor, optional
        Takes the starts; see `tolvik.executors.run`.
    progress : bool or callable, optional
        True for a bar on the standard error; a function is called with starts or steps done and their number.

    Returns
    -------
    FitResult

    Raises
    ------
    DataError
        If the method is unknown, nothing is free, or a search has no finite bounds.

    References
    ----------
    M. A. Branch, T. F. Coleman and Y. Li, SIAM J. Sci. Comput. 21, 1 (1999).
    R. Storn and K. Price, J. Global Optim. 11, 341 (1997).
    """
    if method not in METHODS:
        raise DataError(f"method = {method!r}: expected one of {', '.join(METHODS)}")
    if not objective.names:
        raise DataError("nothing is free: add fit variables to the state")
    if starts < 1:
        raise DataError(f"starts = {starts}: expected at least 1")
    if method == "least_squares":
        return _from_starts(objective, starts, seed, executor, progress)
    if method == "differential_evolution":
        return _search(objective, seed, 1000 if steps is None else steps, progress)
    return _program(objective, method, seed, 500 if steps is None else steps, progress)


@dataclass(frozen=True)
class _End:
    x: Array
    chisqr: float
    message: str
    success: bool
    evaluations: int
    interrupted: bool = False


class _Best:
    """Counts evaluations and keeps the best point, for the case that the fit is interrupted."""

    def __init__(self, objective: Objective, x: Array) -> None:
        self.objective = objective
        self.x = x
        self.chisqr = math.inf
        self.evaluations = 0

    def residuals(self, x: Array) -> Array:
        self.evaluations += 1
        found = self.objective._core._residuals(x[np.newaxis])[0]
        chisqr = float(found @ found)
        if chisqr < self.chisqr:
            self.x, self.chisqr = x.copy(), chisqr
        return np.asarray(found)

    def many(self, columns: Array) -> Array:
        """Chi-square of points in columns, (m, S) or (m,)."""
        values = np.atleast_1d(self.objective.chisqr(columns.T))
        self.evaluations += values.size
        least = int(np.argmin(values))
        if values[least] < self.chisqr:
            self.x, self.chisqr = np.atleast_2d(columns.T)[least].copy(), float(values[least])
        return np.asarray(values if columns.ndim == 2 else values[0])

    def end(self, message: str, success: bool, interrupted: bool = False) -> _End:
        return _End(self.x, self.chisqr, message, success, self.evaluations, interrupted)


def least_squares(objective: Objective, x0: Array) -> _End:
    """One run of least squares.

    Parameters
    ----------
    objective : Objective
        What is minimised.
    x0 : ndarray, shape (m,)
        The start.

    Returns
    -------
    _End
        Interrupted runs end at their best point.
    """
    from scipy.optimize import least_squares as run
    best = _Best(objective, x0)
    lower, upper = objective.bounds.T
    objective.residuals(x0)  # says why, where the start cannot be calculated
    try:
        end = run(best.residuals, x0, jac=objective.jacobian, bounds=(lower, upper), x_scale=objective.scale,
                  ftol=1e-10,
                  xtol=1e-10, gtol=1e-10)
    except KeyboardInterrupt:
        return best.end("interrupted: the best point so far", False, True)
    return best.end(end.message, bool(end.success))


@dataclass(frozen=True)
class _Starts:
    objective: Objective
    starts: Array

    def __call__(self, task: int) -> Optional[_End]:
        try:
            return least_squares(self.objective, self.starts[task])
        except (CalculationError, ScriptError):
            if task == 0:
                raise
            return None  # a random start without a curve

    def name_of(self, task: int) -> str:
        return f"start {task}"


def _from_starts(objective: Objective, count: int, seed: Optional[int], executor: Optional[Executor],
                 progress: executors.Progress) -> FitResult:
    starts = _hypercube(objective, count, seed)
    if count == 1 and not progress:
        return _result(objective, least_squares(objective, starts[0]), "least squares")
    found = executors.run(_Starts(objective, starts), count, executor=executor, progress=progress)
    ends: list[_End] = [end for end in found if end is not None]
    best = min(ends, key=lambda end: end.chisqr)
    total = sum(end.evaluations for end in ends)
    message = f"{best.message} (best of {count} starts)" if count > 1 else best.message
    return _result(objective, _End(best.x, best.chisqr, message, best.success, total), "least squares")


def _hypercube(objective: Objective, count: int, seed: Optional[int]) -> Array:
    if count == 1:
        return objective.x0[np.newaxis]
    from scipy.stats import qmc
    lower, upper = _finite_bounds(objective)
    drawn = qmc.LatinHypercube(len(objective.names), seed=seed).random(count - 1)
    return np.vstack([objective.x0, lower + drawn * (upper - lower)])


def _finite_bounds(objective: Objective) -> tuple[Array, Array]:
    lower, upper = objective.bounds.T
    endless = ~np.isfinite(upper - lower)
    if np.any(endless):
        raise DataError(f"{objective.names[int(np.argmax(endless))]}: several starts and global searches need finite "
                        f"bounds; "
                        f"set fit_lower_boundary and fit_upper_boundary")
    return lower, upper


def _search(objective: Objective, seed: Optional[int], generations: int, progress: executors.Progress) -> FitResult:
    from scipy.optimize import differential_evolution
    lower, upper = _finite_bounds(objective)
    best = _Best(objective, objective.x0)
    with executors.reporter(progress, generations) as report:
        done = 0

        def count(_: Array, convergence: float) -> None:
            nonlocal done
            done += 1
            report(done)

        try:
            end = differential_evolution(best.many, np.column_stack([lower, upper]), seed=seed, maxiter=generations,
                                         polish=False,
                                         vectorized=True, updating="deferred", callback=count, x0=objective.x0)
        except KeyboardInterrupt:
            return _result(objective, best.end("interrupted: the best point so far", False), "differential evolution")
    if not math.isfinite(best.chisqr):
        raise CalculationError("no point between the bounds could be calculated: check bounds, q and script")
    polished = least_squares(objective, best.x)
    total = best.evaluations + polished.evaluations
    return _result(objective, _End(polished.x, polished.chisqr, f"{end.message}; then {polished.message}",
                                   polished.success,
                                   total), "differential evolution")


def _program(objective: Objective, method: str, seed: Optional[int], steps: int,
             progress: executors.Progress) -> FitResult:
    state = objective.state_at(objective.x0)
    if not any(dataset.datasetactive and dataset.dataset_qz.size for dataset in state.datasets):
        raise DataError(f"method = {method!r} fits the active datasets of the state: call state.attach(data) first")
    if seed is not None:
        state.evo_random = seed
    run: Any
    if method == "evolution":
        _finite_bounds(objective)
        run = Evolution(state)
    else:
        state.fitalgorithm = _PROGRAM[method]
        run = Fit(state)
    message, success, done = f"{steps} steps", True, 0
    with executors.reporter(progress, steps) as report:
        try:
            while done < steps and not (method == "levmar" and done):
                run.step()
                done += 1
                report(done)
        except KeyboardInterrupt:
            message, success = "interrupted: the best point so far", False
    if method == "levmar" and success:
        message = "one run"
    x = np.array(run.best.fitvariables.fit_value)
    return _result(objective, _End(x, float(objective.chisqr(x)), message, success, done), method)


def _result(objective: Objective, end: _End, method: str) -> FitResult:
    found = objective.covariance(end.x)
    return FitResult(objective.names, end.x, found.errors, objective.bounds, found.covariance, found.correlation,
                     found.chisqr,
                     found.reduced, len(objective), found.at_bound, found.no_effect | found.not_determined, method,
                     end.message,
                     end.success, end.evaluations, objective)
