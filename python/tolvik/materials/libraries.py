# SPDX-License-Identifier: GPL-2.0-or-later
"""The libraries that hold the tables, loaded when they are first needed."""
from __future__ import annotations

import functools
import importlib
import warnings
from typing import Any, Callable

from ..errors import MaterialError

_PACKAGES = {"periodictable": "python3-periodictable", "xraydb": "python3-xraydb"}


@functools.lru_cache(maxsize=None)
def library(name: str) -> Any:
    """The module periodictable or xraydb, or a MaterialError that says how to install it.

    Their warnings about each other's old names are suppressed.
    """
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        try:
            module = importlib.import_module(name)
        except ImportError:
            raise MaterialError(
                f"tables of materials need {name}, which is not installed; install {_PACKAGES[name]} or give "
                "delta and beta"
            ) from None
        # Each makes its parser or opens its data base at the first call.
        first_call: Callable[[], Any] = module.get_xraydb if name == "xraydb" else lambda: module.formula("H2O").mass
        first_call()
    return module
