# SPDX-License-Identifier: GPL-2.0-or-later
"""The state: sample, scattering setup, options, measurements and script of one project."""
from __future__ import annotations

import os
from typing import Any, Union

from . import _core

__all__ = ["State", "load"]

Path = Union[str, "os.PathLike[str]"]


class State(_core.State):
    """A project as the program knows it.

    Every key of the state file is an attribute; its docstring is the comment of the file. An attribute that does not
    exist raises AttributeError, also when it is set.
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
            What a measurement inside the text names as its file.

        Returns
        -------
        State

        Raises
        ------
        StateFileError
            The text has another version.
        """
        state = cls()
        state._read(text, name)
        return state

    @classmethod
    def _of(cls, core: _core.State) -> State:
        state = cls()
        state._share(core)
        return state

    def save(self, path: Path) -> None:
        """Write the state file.

        Parameters
        ----------
        path : str or os.PathLike
            The file; an existing one is replaced as a whole or stays as it is.

        Raises
        ------
        StateFileError
            The file cannot be written.
        """
        self._save(os.fspath(path))

    def text(self) -> str:
        """Text of the state file.

        Returns
        -------
        str
            What `save` writes.
        """
        return self._text()

    def __getattr__(self, name: str) -> Any:
        raise AttributeError(f"State has no attribute {name!r}: the keys of the state file are its attributes, "
                             f"see dir(tolvik.State)")


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
        The file cannot be read or has another version.
    """
    state = State()
    state._load(os.fspath(path))
    return state
