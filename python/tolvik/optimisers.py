# SPDX-License-Identifier: GPL-2.0-or-later
"""The program's own optimisers, step by step."""
from __future__ import annotations

from typing import Union

from . import _core
from .state import State, require_tables

__all__ = ["Evolution", "Fit"]


class _Steps:
    """What both optimisers share. Steps of all of them run one at a time in a process, without the GIL."""

    _core: Union[_core.Fit, _core.Evolution]

    def step(self) -> float:
        """Run one step.

        Returns
        -------
        float
            The error after the step: of the model of `snapshot` for a fit, of the best individual of the generation for
            an evolution.

        Raises
        ------
        CalculationError
            If a calculation fails.
        """
        return self._core._step()

    def snapshot(self) -> State:
        """The state given, with the variables of the last evaluation.

        Returns
        -------
        State
        """
        return State._of(self._core._snapshot())

    @property
    def best(self) -> State:
        """The state given, with the variables of the lowest error so far."""
        return State._of(self._core._best())

    @property
    def best_error(self) -> float:
        """The lowest error so far; infinite before the first step."""
        return self._core.best_error


def _ready(state: State) -> State:
    require_tables(state, state.energy, only_automatic=True)
    ready = state.copy()
    if ready.ocautomatic:
        ready.set_constants()
    ready.copy().run_script()  # says why, where it fails: the steps pass over it
    return ready


class Fit(_Steps):
    """Fit of a copy of a state to its active datasets, by the `fitalgorithm` of the state.

    0 is one step of the downhill simplex, 1 a whole Levenberg-Marquardt run, 2 one step of simulated annealing. The
    error is that of the program, by `fiterrorfunction` and `fitasymmetry`. Nothing is printed and nothing stops by
    itself.

    Parameters
    ----------
    state : State
        Model, fit variables and datasets; it is not changed.

    Raises
    ------
    ScriptError
        If the script of the state fails.
    TablesError
        If the constants come from tables that are not loaded.
    """

    def __init__(self, state: State) -> None:
        self._core = _core.Fit(_ready(state))


class Evolution(_Steps):
    """Genetic search of a copy of a state between the bounds of its fit variables, by its `evo_` settings.

    Parameters
    ----------
    state : State
        Model, fit variables and datasets; it is not changed.

    Raises
    ------
    ScriptError
        If the script of the state fails.
    TablesError
        If the constants come from tables that are not loaded.
    """

    def __init__(self, state: State) -> None:
        self._core = _core.Evolution(_ready(state))
