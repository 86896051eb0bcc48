# SPDX-License-Identifier: GPL-2.0-or-later
"""Optical constants of materials: tabulated, measured, and the files of tables that the program reads.

n = 1 - delta + i beta. There are two tables: "henke" (B. L. Henke, E. M. Gullikson and J. C. Davis, At. Data
Nucl. Data Tables 54, 181 (1993), 10 to 30000 eV, through periodictable) and "chantler" (C. T. Chantler, J. Phys. Chem.
Ref. Data 24, 71 (1995) and 29, 597 (2000), through xraydb). Near an absorption edge neither is valid: measure.
"""
from .constants import Comparison, compare, delta_beta
from .edges import Edge, edges, nearest_edge
from .formula import Material, parse
from .measured import dichroism, kramers_kronig
from .table import OpticalTable, write_tables

__all__ = [
    "Comparison",
    "Edge",
    "Material",
    "OpticalTable",
    "compare",
    "delta_beta",
    "dichroism",
    "edges",
    "kramers_kronig",
    "nearest_edge",
    "parse",
    "write_tables",
]
