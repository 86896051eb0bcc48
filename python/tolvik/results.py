# SPDX-License-Identifier: GPL-2.0-or-later
"""Results of fits: values with their errors, as a table, as numbers and as files."""
from __future__ import annotations

import csv
import io
import json
import math
import os
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any, Union

import numpy as np
import numpy.typing as npt

from . import records
from .errors import DataFileError

if TYPE_CHECKING:
    from .objective import Objective

__all__ = ["Covariance", "FitResult"]

Array = npt.NDArray[np.float64]
Flags = npt.NDArray[np.bool_]
Path = Union[str, "os.PathLike[str]"]


@dataclass(frozen=True, eq=False)
class Covariance:
    """Errors and correlations of parameters at a minimum.

    Attributes
    ----------
    covariance, correlation : ndarray, shape (m, m)
        In the units of the parameters. A parameter at a bound, without effect or not determined has NaN in its row, and
        the others are calculated without it.
    errors : ndarray, shape (m,)
        Standard deviations, roots of the diagonal.
    at_bound, no_effect, not_determined : ndarray of bool, shape (m,)
        Why an error is NaN.
    chisqr, reduced : float
        Sum of the squared residuals, and the same over points minus parameters.
    """

    covariance: Array
    correlation: Array
    errors: Array
    at_bound: Flags
    no_effect: Flags
    not_determined: Flags
    chisqr: float
    reduced: float


@dataclass(frozen=True, eq=False)
class FitResult:
    """Outcome of a fit.

    Attributes
    ----------
    names : tuple of str, length m
        Names of the parameters.
    x, errors : ndarray, shape (m,)
        Values and standard deviations; an error is NaN where there is none, see `at_bound` and `no_effect`.
    bounds : ndarray, shape (m, 2)
        Lower and upper bounds; infinite where there are none.
    covariance, correlation : ndarray, shape (m, m)
        Of the parameters.
    chisqr, reduced : float
        Chi-square, and chi-square over points minus parameters.
    points : int
        Number of residuals.
    at_bound, no_effect : ndarray of bool, shape (m,)
        Parameters at one of their bounds, and those that the data do not depend on or do not fix.
    method, message : str
        The method, and how it ended.
    success : bool
        False where it was stopped before it converged.
    evaluations : int
        Evaluations of the residuals.
    objective : Objective
        What was minimised.
    """

    names: tuple[str, ...]
    x: Array
    errors: Array
    bounds: Array
    covariance: Array = field(repr=False)
    correlation: Array = field(repr=False)
    chisqr: float
    reduced: float
    points: int
    at_bound: Flags
    no_effect: Flags
    method: str
    message: str
    success: bool
    evaluations: int
    objective: Objective = field(repr=False)

    def rows(self) -> list[list[str]]:
        """Name, value, error and remark of each parameter as texts.

        Returns
        -------
        list of list of str
        """
        return [[name, *_value_and_error(value, error), remark] for name, value, error, remark in
                zip(self.names, self.x, self.errors, self._remarks())]

    def strong_correlations(self, above: float = 0.9) -> list[tuple[str, str, float]]:
        """Pairs of parameters that are nearly one.

        Parameters
        ----------
        above : float, optional
            Least absolute value of the correlation.

        Returns
        -------
        list of (str, str, float)
        """
        m = len(self.names)
        return [(self.names[i], self.names[j], float(self.correlation[i, j])) for i in range(m) for j in range(i)
                if abs(self.correlation[i, j]) > above]

    def to_dict(self) -> dict[str, Any]:
        """The numbers as plain lists, for JSON; NaN and infinity are None.

        Returns
        -------
        dict
        """
        plain: dict[str, Any] = {}
        for name in ("names", "x", "errors", "bounds", "covariance", "correlation", "chisqr", "reduced", "points",
                     "at_bound",
                     "no_effect", "method", "message", "success", "evaluations"):
            value = getattr(self, name)
            plain[name] = _finite(value.tolist() if isinstance(value, np.ndarray) else value)
        plain["names"] = list(self.names)
        return plain

    def export(self, folder: Path) -> None:
        """Write the result into a folder, which is made where it is missing.

        Tables of the values (txt, json, csv), the state with exact numbers, per data set i curve_i.dat (q, R, dR,
        model) and residuals_i.dat (q, residual); profile.dat (z, delta, beta, magnetic parts); cov.txt.

        Parameters
        ----------
        folder : str or os.PathLike
            The folder.

        Raises
        ------
        DataFileError
            If a file cannot be written.
        """
        to = os.fspath(folder)
        table = io.StringIO()
        writer = csv.writer(table)
        writer.writerow(["name", "value", "error", "lower", "upper", "remark"])
        writer.writerows([name, repr(float(v)), repr(float(e)), repr(float(b[0])), repr(float(b[1])), remark] for
                         name, v, e, b, remark in zip(self.names, self.x, self.errors, self.bounds, self._remarks()))
        state = self.objective.state_at(self.x)
        profile = state.profile(step=True)
        files = {"results.txt": f"{self}\n", "results.json": json.dumps(self.to_dict(), indent=1) + "\n",
                 "results.csv": table.getvalue(), "fit.state": state.text(exact=True),
                 "profile.dat": _columns("z/A delta beta ddelta dbeta", [profile.z, profile.delta, profile.beta,
                                                                         profile.ddelta, profile.dbeta]),
                 "cov.txt": _columns(" ".join(name.replace(" ", "_") for name in self.names), list(self.covariance.T))}
        for i, model in enumerate(self.objective.models(self.x)):
            files[f"curve_{i}.dat"] = _columns("q/(1/A) R dR model", [model.q, model.R, model.dR, model.model])
            files[f"residuals_{i}.dat"] = _columns("q/(1/A) residual/sigma", [model.q,
                                                                              (model.R - model.model) / model.dR])
        try:
            os.makedirs(to, exist_ok=True)
            for name, text in files.items():
                aside = os.path.join(to, f"{name}.{os.getpid()}.part")
                with open(aside, "w", encoding="utf-8", newline="") as file:
                    file.write(text)
                os.replace(aside, os.path.join(to, name))
        except OSError as error:
            raise DataFileError(f"{error.filename or to}: cannot be written: {error.strerror}") from error

    def __str__(self) -> str:
        rows = self.rows()
        widths = [max((len(row[k]) for row in rows), default=0) for k in range(3)]
        lines = [f"{row[0]:<{widths[0]}}  {row[1]:>{widths[1]}} ± {row[2]:<{widths[2]}}  "
                 f"{row[3]}".rstrip() for row in rows]
        lines += [f"correlation {value:+.3f}: {a}, {b}" for a, b, value in self.strong_correlations()]
        lines.append(f"chi-square {self.chisqr:.6g}, reduced {self.reduced:.4g}, {self.points} points, {self.method}: "
                     f"{self.message}")
        return "\n".join(lines)

    def _repr_html_(self) -> str:
        return records.html_table(f"{self.method}: reduced chi-square {self.reduced:.4g}, {self.points} points",
                                  ["parameter", "value", "error", ""], self.rows())

    def _remarks(self) -> list[str]:
        return ["at a bound" if bound else "no effect, or not determined" if none else ""
                for bound, none in zip(self.at_bound, self.no_effect)]


def _value_and_error(value: float, error: float) -> tuple[str, str]:
    """Both to the second digit of the error."""
    if not (math.isfinite(error) and error > 0 and math.isfinite(value)):
        return f"{value:.6g}", "nan"
    shown = f"{error:.2g}"
    if "e" in shown or "e" in f"{value:.6g}":
        digits = max(1, math.floor(math.log10(abs(value) / error)) + 2) if value else 2
        return f"{value:.{min(digits, 17)}g}", shown
    return f"{value:.{max(0, 1 - math.floor(math.log10(error)))}f}", shown


def _finite(value: Any) -> Any:
    if isinstance(value, list):
        return [_finite(each) for each in value]
    return None if isinstance(value, float) and not math.isfinite(value) else value


def _columns(head: str, columns: list[Array]) -> str:
    rows = zip(*(column.tolist() for column in columns))
    return f"# {head}\n" + "".join(" ".join(repr(number) for number in row) + "\n" for row in rows)
