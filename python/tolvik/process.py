# SPDX-License-Identifier: GPL-2.0-or-later
"""What belongs to the process: its threads, and how the package was built."""
from __future__ import annotations

from . import _core

__all__ = ["build_info", "set_threads"]


def set_threads(count: int) -> None:
    """Set how many threads calculations of this process use.

    Parameters
    ----------
    count : int
        At least 1; 0 stands for one per processor that the process may run on.

    Raises
    ------
    ValueError
        If count is negative.
    """
    if count < 0:
        raise ValueError(f"set_threads: {count} is no number of threads: give 0 or more")
    _core._set_threads(count)


def build_info() -> dict[str, str]:
    """How the package was built and what it runs on.

    Returns
    -------
    dict of str
        version, compiler, lanes (the instruction set in use: "plain", "sse", "avx2" or "avx512") and threads.
    """
    return {"version": _core.__version__, "compiler": _core._compiler(), "lanes": _core._lanes(),
            "threads": str(_core._threads())}
