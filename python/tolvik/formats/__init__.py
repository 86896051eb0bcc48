# SPDX-License-Identifier: GPL-2.0-or-later
"""Files of measured data: readers that each return a list of `tolvik.Data`, and the writer of .ort."""
from .ort_writer import write_ort
from .reader import read

__all__ = ["read", "write_ort"]
