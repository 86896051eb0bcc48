# SPDX-License-Identifier: GPL-2.0-or-later
"""The state: sample, scattering setup, options, measurements and script of one project."""
from __future__ import annotations

import hashlib
import os
import warnings
from typing import Any, NamedTuple, Optional, Union

import numpy as np
import numpy.typing as npt

from . import _core, polarization, records
from .data import Data
from .errors import DataError, TableRangeWarning, TablesError

__all__ = ["Profile", "State", "load"]

Array = npt.NDArray[np.float64]
Path = Union[str, "os.PathLike[str]"]


class _Columns(NamedTuple):
    z: Array
    delta: Array
    beta: Array


class Profile(_Columns):
    """Depth profile of the index of refraction, n = 1 - delta + i beta; unpacks as (z, delta, beta).

    Attributes
    ----------
    z : ndarray, shape (n + 1,) or (2 n,)
        Heights of the edges of the slabs, Å, upwards from the substrate; of a step profile one height per value.
    delta, beta : ndarray, shape (n,) or (2 n,)
        Optical constants.
    ddelta, dbeta : ndarray, shape (n,) or (2 n,)
        Their magnetic parts.
    """

    ddelta: Array
    dbeta: Array


class State(_core.State):
    """A project as the program knows it.

    Every key of the state file is an attribute; its docstring is the comment of the file. The lists `layers` (index 0
    is the substrate), `elementlayers`, `gaussfunctions`, `fitvariables` and `datasets` are sequences of records, and
    each key of their records is also a column over all of them: ``state.layers.layer_d`` is an array on the memory of
    the state. While such an array lives, whatever would move that memory raises BufferError. An attribute that does not
    exist raises AttributeError, also when it is set.

    Two states are equal when all their members are, bit by bit.
    """

    __slots__ = ()

    @classmethod
    def from_text(cls, text: str, name: str = "<text>") -> State:
        """Read a state from the text of a state file.

        Parameters
        ----------
        text : str
            The text.
        name : str, optional
            The name of a measurement's file inside the text, and of the text in messages.

        Returns
        -------
        State

        Raises
        ------
        StateFileError
            If the text has another version.
        """
        state = cls()
        state._read(text, name)
        return state

    @classmethod
    def _of(cls, core: _core.State) -> State:
        state = cls()
        state._share(core)
        return state

    @classmethod
    def _from_bytes(cls, data: bytes) -> State:
        state = cls()
        state._take_bytes(data)
        return state

    def save(self, path: Path, exact: bool = False) -> None:
        """Write the state file.

        Parameters
        ----------
        path : str or os.PathLike
            The file; an existing one is replaced as a whole or stays as it is.
        exact : bool, optional
            Numbers with 17 digits, so that they read back as they are; else 6, as the program writes.

        Raises
        ------
        StateFileError
            If the file cannot be written.
        """
        self._save(os.fspath(path), exact)

    def text(self, exact: bool = False) -> str:
        """Text of the state file.

        Parameters
        ----------
        exact : bool, optional
            As for `save`.

        Returns
        -------
        str
        """
        return self._text(exact)

    def copy(self) -> State:
        """Deep copy, loaded tables included.

        Returns
        -------
        State
        """
        return State._from_bytes(self._bytes())

    def digest(self) -> str:
        """SHA-256 of all members, loaded tables included.

        Returns
        -------
        str
            64 hexadecimal digits, the same for equal states.
        """
        return hashlib.sha256(self._bytes()).hexdigest()

    @property
    def polarization(self) -> Optional[str]:
        """Name of the first ray: "sigma", "pi", "left" or "right"; None for any other.

        Setting it sets both rays as `tolvik.polarization.rays` does: the second one is the orthogonal partner.
        """
        return polarization.name_of_ray(self.rays[0])

    @polarization.setter
    def polarization(self, value: polarization.Polarization) -> None:
        self.rays = polarization.rays(value)

    def load_tables(self, folder: Optional[Path] = None) -> None:
        """Read the tables of optical constants that the sample names and that are not loaded yet.

        Parameters
        ----------
        folder : str or os.PathLike, optional
            Where the tables are; the stems count from the working directory otherwise, as in the program.

        Raises
        ------
        TablesError
            If a file is missing or empty; the others are loaded all the same.
        """
        prefix = "" if folder is None else os.path.join(os.fspath(folder), "")
        missing = self._load_tables(prefix)
        if missing:
            raise TablesError(f"tables of optical constants are missing or empty: {', '.join(missing)}: create them "
                              f"or pass "
                              f"their folder to load_tables")

    def set_constants(self) -> None:
        """Set the optical constants of all layers to those of their tables at the energy of the state.

        Raises
        ------
        TablesError
            If tables are not loaded.

        Warns
        -----
        TableRangeWarning
            If the energy is beyond a table; such layers keep their constants.
        """
        require_tables(self, self.energy)
        self._set_constants()

    def run_script(self) -> None:
        """Run the script of the state once on it, unless `disablescript` is set.

        Raises
        ------
        ScriptError
            If the script does not compile or fails; what it changed before stays changed.
        """
        self._run_script()

    def profile(self, step: bool = False) -> Profile:
        """Depth profile as the algorithm sees it: after script and tables, cut into slices where the state asks for it.

        Parameters
        ----------
        step : bool, optional
            Two points per slab, for a line plot; else edges and values, as for `matplotlib.pyplot.stairs`.

        Returns
        -------
        Profile
            Substrate and ambient are endless; they are drawn over 5 % of the stack, at least 10 Å.
        """
        require_tables(self, self.energy, only_automatic=True)
        height, delta, beta, ddelta, dbeta = self._profile()
        inner = height[:-1]
        low, high = (inner[0], inner[-1]) if inner.size else (0.0, 0.0)
        margin = max(10.0, 0.05 * (high - low))
        edges = np.concatenate([[low - margin], inner, [high + margin]])
        columns = [delta, beta, ddelta, dbeta]
        if step:
            edges = np.repeat(edges, 2)[1:-1]
            columns = [np.repeat(column, 2) for column in columns]
        profile = Profile(edges, columns[0], columns[1])
        profile.ddelta, profile.dbeta = columns[2], columns[3]
        return profile

    def attach(self, data: Data) -> int:
        """Append a measurement to the datasets and make it the active one.

        The keys of the dataset take what they can hold: points that are not masked, one energy, rays, and the width of
        the resolution where it is the same at all points. Error bars and widths per point stay with `data`.

        Parameters
        ----------
        data : Data
            The measurement.

        Returns
        -------
        int
            Index of the new dataset.

        Raises
        ------
        DataError
            If it belongs to no energy that a dataset can have.
        """
        used = ~data.mask
        asymmetry = isinstance(data.polarization, str) and data.polarization == "asymmetry"
        energies = None if data.energy is None or isinstance(data.energy, float) else data.energy[used]
        if energies is not None and asymmetry:
            raise DataError(f"{data.name or 'data'}: an asymmetry over energies has no place in a dataset; pass it to "
                            f"Objective")
        if not len(self.datasets):
            self.datasets.append(datasettitle="Empty", datasetcomment="This Dataset contains no data.",
                                 datasetenergy=self.energy, datasetresolution=self.resolution)
        keys: dict[str, Any] = {"datasettitle": data.name or "data", "datasetfile": data.source, "datasetactive": 1,
                                "datasetenergy": data.energy if isinstance(data.energy, float) else self.energy,
                                "datasetresolution": self.resolution}
        if data.dq is not None and np.ptp(data.dq[used]) == 0:
            keys["datasetresolution"] = 2 * float(data.dq[used][0])
        rays = self.rays if data.rays is None else data.rays
        names = ("sigmare", "sigmaim", "pire", "piim")
        keys.update({f"datasetray{i + 1}{name}": float(rays[i, k]) for i in (0, 1) for k, name in enumerate(names)})
        dataset = self.datasets.append(**keys)
        dataset.dataset_qz = data.q[used]
        setattr(dataset, "dataset_A" if asymmetry else "dataset_R0", data.r[used])
        if energies is not None:
            dataset.dataset_eng = energies
        self.activedatasetindex = len(self.datasets) - 1
        return self.activedatasetindex

    def __copy__(self) -> State:
        return self.copy()

    def __deepcopy__(self, memo: dict[int, Any]) -> State:
        return self.copy()

    def __reduce__(self) -> tuple[Any, ...]:
        return State._from_bytes, (self._bytes(),)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, _core.State):
            return NotImplemented
        return self._bytes() == other._bytes()

    __hash__ = None  # type: ignore[assignment]  # a state can change

    def __repr__(self) -> str:
        return (f"State({len(self.layers)} layers, {self.energy:g} eV, {len(self.fitvariables)} fit variables, "
                f"{len(self.datasets)} datasets)")

    def _repr_html_(self) -> str:
        return records.html_table(f"{self.energy:g} eV, resolution sigma = {self.resolution / 2:g} 1/Å",
                                  ["", "material", "d / Å", "delta", "beta", "sigma / Å"], records.layer_rows(self))

    def __setattr__(self, name: str, value: Any) -> None:
        try:
            object.__setattr__(self, name, value)
        except AttributeError:
            if hasattr(type(self), name):
                raise
            raise _unknown(name) from None

    def __getattr__(self, name: str) -> Any:
        raise _unknown(name)


def _unknown(name: str) -> AttributeError:
    near = records.nearest(name, State)
    hint = f"; did you mean {near!r}?" if near else ": the keys of the state file are its attributes"
    return AttributeError(f"State has no attribute {name!r}{hint}")


def require_tables(state: _core.State, energy: float, *, only_automatic: bool = False) -> None:
    """Check that the tables of a sample are loaded and reach an energy.

    Parameters
    ----------
    state : State
        The sample.
    energy : float
        Photon energy, eV.
    only_automatic : bool, optional
        Check a state only whose constants come from tables (`ocautomatic`).

    Raises
    ------
    TablesError
        If a table is not loaded.

    Warns
    -----
    TableRangeWarning
        If the energy is beyond a table.
    """
    if only_automatic and not state.ocautomatic:
        return
    ranges = state._table_ranges()
    missing = [stem for stem, span in ranges if span is None]
    if missing:
        suffix = ".ff" if state.mode == 1 else ".db"
        raise TablesError("tables of optical constants are not loaded: " + ", ".join(stem + suffix for stem in missing)
                          + ": call load_tables, or set ocautomatic = 0 to keep the constants of the layers")
    for stem, span in ranges:
        if span is not None and not span[0] <= energy <= span[1]:
            warnings.warn(f"{energy:g} eV is beyond the table of {stem}, {span[0]:g} to {span[1]:g} eV: its constants "
                          f"stay as "
                          f"they are", TableRangeWarning, stacklevel=4)


def load(path: Path) -> State:
    """Read a state file.

    Parameters
    ----------
    path : str or os.PathLike
        The file.

    Returns
    -------
    State

    Raises
    ------
    StateFileError
        If the file cannot be read or has another version.
    """
    state = State()
    state._load(os.fspath(path))
    return state
