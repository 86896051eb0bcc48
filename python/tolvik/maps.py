# SPDX-License-Identifier: GPL-2.0-or-later
"""Reflectivity over photon energy and qz, for one or more polarisations."""
from __future__ import annotations

import os
from concurrent.futures import Executor
from dataclasses import dataclass, field
from typing import Optional, Sequence, Union

import numpy as np
import numpy.typing as npt

from . import _core, executors, polarization as polarizations, records
from .curves import checked_energies, warn_of_ranges
from .errors import DataError, DataFileError
from .state import State

__all__ = ["EnergyMap", "energy_map", "load_map"]

Array = npt.NDArray[np.float64]
Path = Union[str, "os.PathLike[str]"]


@dataclass(frozen=True, eq=False)
class EnergyMap:
    """Reflectivity over energy and qz.

    Attributes
    ----------
    energies : ndarray, shape (nE,)
        Photon energies, eV.
    q : ndarray, shape (nq,)
        Momentum transfer, 1/Å.
    polarization : tuple of str, length p
        Names of the polarisations.
    R : ndarray, shape (p, nE, nq)
        Reflectivity; NaN where a table does not reach the energy.
    state : str
        The state as the text of a state file, with exact numbers.
    """

    energies: Array
    q: Array
    polarization: tuple[str, ...]
    R: Array
    state: str = field(repr=False)

    @property
    def asymmetry(self) -> Array:
        """(R[0] - R[1]) / (R[0] + R[1]), shape (nE, nq); 0 where both are 0."""
        if len(self.polarization) != 2:
            raise DataError(f"an asymmetry needs two polarisations, this map has {len(self.polarization)}")
        total = self.R[0] + self.R[1]
        return np.asarray(np.divide(self.R[0] - self.R[1], total, out=np.zeros_like(total), where=total != 0))

    def save(self, path: Path) -> None:
        """Write the map as HDF5.

        Parameters
        ----------
        path : str or os.PathLike
            The file; an existing one is replaced as a whole.

        Raises
        ------
        DataFileError
            If the file cannot be written.
        """
        import h5py
        name = os.fspath(path)
        aside = f"{name}.{os.getpid()}.part"
        try:
            with h5py.File(aside, "w") as file:
                for key in ("energies", "q", "R"):
                    file[key] = getattr(self, key)
                file["energies"].attrs["unit"] = "eV"
                file["q"].attrs["unit"] = "1/angstrom"
                file.attrs["polarization"] = list(self.polarization)
                file.attrs["state"] = self.state
                file.attrs["tolvik"] = _core.__version__
            os.replace(aside, name)
        except OSError as error:
            if os.path.exists(aside):
                os.unlink(aside)
            raise DataFileError(f"{name}: cannot be written: {error}") from error

    def _repr_html_(self) -> str:
        row = [", ".join(self.polarization), f"{self.energies[0]:g} to {self.energies[-1]:g} eV, {self.energies.size}",
               f"{self.q[0]:g} to {self.q[-1]:g} 1/Å, {self.q.size}"]
        return records.html_table("energy map", ["polarisation", "energies", "q"], [row])


def load_map(path: Path) -> EnergyMap:
    """Read a map that `EnergyMap.save` has written.

    Parameters
    ----------
    path : str or os.PathLike
        The file.

    Returns
    -------
    EnergyMap

    Raises
    ------
    DataFileError
        If the file cannot be read or is no map.
    """
    import h5py
    name = os.fspath(path)
    try:
        with h5py.File(name, "r") as file:
            names = tuple(str(each) for each in file.attrs["polarization"])
            return EnergyMap(file["energies"][()], file["q"][()], names, file["R"][()], str(file.attrs["state"]))
    except (OSError, KeyError) as error:
        raise DataFileError(f"{name}: cannot be read as a map: {error}") from error


@dataclass(frozen=True)
class _Rows:
    """The curve of each energy, in all polarisations."""

    state: State
    energies: Array
    q: Array
    polarization: tuple[str, ...]

    def __call__(self, task: int) -> Array:
        energy = self.energies[task:task + 1]
        rows = np.empty((len(self.polarization), self.q.size))
        for i, name in enumerate(self.polarization):
            if name == "right" and "left" in self.polarization[:i]:
                continue  # came with the other one
            state = self.state.copy()
            if name != "right":
                state.polarization = name
                both = name == "left" and "right" in self.polarization[i:]
                found = _core.energy_rows(state, energy, self.q, both)
                rows[i] = found[0, 0]
                if both:
                    rows[self.polarization.index("right")] = found[1, 0]
            else:
                state.polarization = "left"
                rows[i] = _core.energy_rows(state, energy, self.q, True)[1, 0]
        return rows

    def name_of(self, task: int) -> str:
        return f"energy {self.energies[task]:g} eV"


def energy_map(state: State, energies: npt.ArrayLike, q: npt.ArrayLike, *,
               polarization: Optional[Union[str, Sequence[str]]] = None, executor: Optional[Executor] = None,
               progress: executors.Progress = False) -> EnergyMap:
    """Curves of a state at many energies, with the optical constants of the tables at each.

    A row is the curve at that energy. "right" is calculated as the second ray beside "left", so that it sees the
    magnetisation reversed where the algorithm takes it to first order (algorithm 0).

    Parameters
    ----------
    state : State
        The sample and its options, its tables loaded; it is not changed.
    energies : array_like, shape (nE,)
        Photon energies, eV.
    q : array_like, shape (nq,)
        Momentum transfer, 1/Å.
    polarization : str or sequence of str, optional
        "sigma", "pi", "left", "right", different ones; by default the first ray of the state, which must be one of
        them.
    executor : concurrent.futures.Executor, optional
        Takes the energies; see `tolvik.executors.run`. The result is the same to the last bit.
    progress : bool or callable, optional
        True for a bar on the standard error; a function is called with the energies done and their number.

    Returns
    -------
    EnergyMap
        R has shape (p, nE, nq).

    Raises
    ------
    TablesError
        If a table is not loaded.
    WorkerError
        If an energy fails or a worker dies; energies that are done are kept for the next call.

    Warns
    -----
    TableRangeWarning
        If an energy is beyond a table; its row is NaN.
    """
    grid = checked_energies(energies)
    points = np.array(q, dtype=np.float64)
    if points.ndim != 1:
        raise DataError(f"q has shape {points.shape}: expected a one-dimensional array of qz in 1/Å")
    names = _names(state, polarization)
    warn_of_ranges(state, grid)
    job = _Rows(state.copy(), grid, points, names)
    rows = executors.run(job, grid.size, executor=executor, progress=progress)
    R = np.stack(rows, axis=1) if rows else np.empty((len(names), 0, points.size))
    return EnergyMap(grid, points, names, R, state.text(exact=True))


def _names(state: State, given: Optional[Union[str, Sequence[str]]]) -> tuple[str, ...]:
    if given is None:
        name = state.polarization
        if name is None:
            raise DataError("the first ray of the state has no name: give polarization, as ('left', 'right')")
        return (name,)
    names = tuple(polarizations.canonical(name) for name in ([given] if isinstance(given, str) else given))
    if not names or len(set(names)) != len(names) or "asymmetry" in names:
        raise DataError(f"polarization {names!r}: give different ones of sigma, pi, left, right")
    return names
