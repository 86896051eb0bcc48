# SPDX-License-Identifier: GPL-2.0-or-later
"""The posterior of the parameters by an ensemble of walkers."""
from __future__ import annotations

import os
import re
from dataclasses import dataclass, field
from typing import Any, Callable, Optional, Union

import numpy as np
import numpy.typing as npt

from . import executors
from .errors import DataError, DataFileError
from .objective import Objective
from .resampling import Sample

__all__ = ["Posterior", "sample"]

Array = npt.NDArray[np.float64]
Path = Union[str, "os.PathLike[str]"]

_CHECK_EVERY = 100  # steps between two looks at the autocorrelation


@dataclass(frozen=True, eq=False)
class Posterior(Sample):
    """Samples of a posterior; `samples` are all walkers of all steps after the burn-in.

    Attributes
    ----------
    chain : ndarray, shape (steps, walkers, m)
        All steps.
    logpost : ndarray, shape (steps, walkers)
        Logarithm of the posterior.
    burn : int
        Steps that are left out of `samples`.
    tau : ndarray, shape (m,)
        Autocorrelation times, in steps.
    converged : bool
        Whether the chain is as long as was asked for.
    """

    chain: Array = field(repr=False, default_factory=lambda: np.empty((0, 0, 0)))
    logpost: Array = field(repr=False, default_factory=lambda: np.empty((0, 0)))
    burn: int = 0
    tau: Array = field(default_factory=lambda: np.empty(0))
    converged: bool = False

    def band(self, function: Callable[[Array], npt.ArrayLike], p: npt.ArrayLike = (0.16, 0.5, 0.84), count: int = 200,
             seed: int = 0) -> Array:
        """Quantiles of what follows from the parameters, as a curve: ``post.band(objective.generative)``.

        Parameters
        ----------
        function : callable
            From x of shape (m,) to an array of shape (n,).
        p : array_like, shape (k,), optional
            Shares.
        count : int, optional
            Samples that are drawn.
        seed : int, optional
            Of the draw.

        Returns
        -------
        ndarray, shape (k, n)
        """
        drawn = np.random.default_rng(seed).integers(0, len(self.samples), count)
        return np.asarray(np.quantile([np.asarray(function(self.samples[i])) for i in drawn], np.asarray(p), axis=0))

    def save(self, path: Path) -> None:
        """Write names, chain and posterior as HDF5.

        Parameters
        ----------
        path : str or os.PathLike
            The file; an existing one is replaced as a whole.

        Raises
        ------
        DataFileError
            If it cannot be written.
        """
        import h5py
        name = os.fspath(path)
        aside = f"{name}.{os.getpid()}.part"
        try:
            with h5py.File(aside, "w") as file:
                for key in ("chain", "logpost", "tau"):
                    file[key] = getattr(self, key)
                file.attrs["names"] = list(self.names)
                file.attrs["burn"] = self.burn
            os.replace(aside, name)
        except OSError as error:
            if os.path.exists(aside):
                os.unlink(aside)
            raise DataFileError(f"{name}: cannot be written: {error}") from error


def sample(objective: Objective, *, steps: int = 1000, seed: Optional[int] = None, walkers: Optional[int] = None,
           x0: Optional[npt.ArrayLike] = None, backend: Optional[Path] = None, until: Optional[str] = None,
           burn: Optional[int] = None, progress: executors.Progress = False) -> Posterior:
    """Sample the posterior by the affine-invariant ensemble sampler of emcee, all walkers of a move at once.

    A chain in an HDF5 file goes on where it ended, random numbers included, so that an interrupted run ends with the
    same bits as one that was not. A KeyboardInterrupt ends the run; the steps so far are returned.

    Parameters
    ----------
    objective : Objective
        Likelihood and prior.
    steps : int, optional
        Steps of the whole chain, those of the file included.
    seed : int, optional
        Of start and chain.
    walkers : int, optional
        Number of walkers, at least twice the parameters; four times, at least 32, by default.
    x0 : array_like, shape (m,), optional
        The walkers start around it, by about their errors; a fit's `x`, by default the start of the objective.
    backend : str or os.PathLike, optional
        The HDF5 file.
    until : str, optional
        Stop when the chain is that many autocorrelation times long, as "50 tau", and these have settled to 1 %;
        `steps` is then the most.
    burn : int, optional
        Steps that are left out; twice the longest autocorrelation time by default.
    progress : bool or callable, optional
        True for a bar on the standard error; a function is called with the steps done and their number.

    Returns
    -------
    Posterior

    Raises
    ------
    DataError
        If an argument cannot be used or the start has no posterior.
    DataFileError
        If the file holds another chain.

    References
    ----------
    J. Goodman and J. Weare, Comm. App. Math. Comp. Sci. 5, 65 (2010).
    D. Foreman-Mackey et al., Publ. Astron. Soc. Pac. 125, 306 (2013).
    """
    import emcee
    m = len(objective.names)
    count = max(32, 4 * m) if walkers is None else walkers
    times = _times(until)
    if not m or count < 2 * m or count % 2 or steps < 1:
        raise DataError(f"{m} parameters, {count} walkers, {steps} steps: expected at least one of each, and an even "
                        f"number of "
                        f"walkers of at least twice the parameters")
    random = np.random.RandomState(seed)
    file: Any = None if backend is None else emcee.backends.HDFBackend(os.fspath(backend))
    goes_on = bool(file is not None and file.initialized and file.iteration)
    if goes_on and file.shape != (count, m):
        raise DataFileError(f"{file.filename}: holds a chain of {file.shape[0]} walkers and {file.shape[1]} "
                            f"parameters, not of {count} and {m}: take another file")
    if file is not None and not goes_on:
        file.reset(count, m)
    sampler = emcee.EnsembleSampler(count, m, objective.logpost, vectorize=True, backend=file)
    state: Any
    if goes_on:
        state = sampler.get_last_sample()
    else:
        state = emcee.State(_ball(objective, x0, count, random), random_state=random.get_state())
    converged = False
    old = np.full(m, np.inf)
    with executors.reporter(progress, steps) as report:
        try:
            left = steps - sampler.iteration
            for _ in (sampler.sample(state, iterations=left) if left > 0 else ()):
                report(sampler.iteration)
                if times is None or sampler.iteration % _CHECK_EVERY:
                    continue
                tau = sampler.get_autocorr_time(tol=0)
                converged = bool(np.all(tau * times < sampler.iteration) and np.all(np.abs(old - tau) < 0.01 * tau))
                if converged:
                    break
                old = tau
        except KeyboardInterrupt:
            if not sampler.iteration:
                raise
    chain, logpost = sampler.get_chain(), sampler.get_log_prob()
    tau = np.asarray(sampler.get_autocorr_time(tol=0)) if sampler.iteration > 1 else np.full(m, np.nan)
    if burn is None:
        longest = np.nanmax(tau) if np.any(np.isfinite(tau)) else 0.0
        burn = int(min(2 * longest, 0.5 * len(chain)))
    converged = converged or (times is None and len(chain) == steps)
    return Posterior(objective.names, chain[burn:].reshape(-1, m), 0, chain, logpost, burn, tau, converged)


def _times(until: Optional[str]) -> Optional[float]:
    if until is None:
        return None
    found = re.fullmatch(r"\s*([0-9.]+)\s*tau\s*", until)
    if found is None:
        raise DataError(f"until = {until!r}: expected a number of autocorrelation times, as '50 tau'")
    return float(found[1])


def _ball(objective: Objective, x0: Optional[npt.ArrayLike], count: int, random: Any) -> Array:
    """Start of the walkers: around a point by its errors, inside the bounds."""
    centre = objective.x0 if x0 is None else np.asarray(x0, dtype=np.float64)
    errors = objective.covariance(centre).errors
    lower, upper = objective.bounds.T
    width = np.where(np.isfinite(errors) & (errors > 0), errors, 1e-3 * objective.scale)
    width = np.minimum(width, np.where(np.isfinite(upper - lower), 0.1 * (upper - lower), np.inf))
    points = centre + width * random.standard_normal((count, centre.size))
    points = np.where(points < lower, np.minimum(2 * lower - points, upper), points)
    points = np.where(points > upper, np.maximum(2 * upper - points, lower), points)
    if not np.all(np.isfinite(objective.logpost(points))):
        raise DataError("the walkers have no posterior where they start: give x0 of a fit, inside the bounds")
    return np.asarray(points)
