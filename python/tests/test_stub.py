# SPDX-License-Identifier: GPL-2.0-or-later
"""The types that _core.pyi gives are those of the module."""
import ast
import pathlib

import tolvik
from tolvik import _core, records

assert records  # completes the sequences
STUB = ast.parse((pathlib.Path(tolvik.__file__).parent / "_core.pyi").read_text(encoding="utf-8"))


def names_of(body):
    for node in body:
        if isinstance(node, (ast.FunctionDef, ast.ClassDef)):
            yield node.name
        elif isinstance(node, ast.AnnAssign):
            yield node.target.id


def public(names):
    return {n for n in names if not (n.startswith("__") and n.endswith("__"))}


def test_the_stub_names_all_of_the_module_and_nothing_else():
    assert public(names_of(STUB.body)) == public(vars(_core))


def test_the_stub_names_all_members_of_each_class():
    for node in STUB.body:
        if isinstance(node, ast.ClassDef):
            assert public(names_of(node.body)) == public(vars(getattr(_core, node.name))), node.name
