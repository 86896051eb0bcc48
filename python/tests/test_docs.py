# SPDX-License-Identifier: GPL-2.0-or-later
"""The sessions of docs/python.md run, and everything public has a docstring with its sections."""
import doctest
import importlib
import inspect
import pathlib
import pkgutil
import typing

import pytest

import tolvik

MODULES = sorted(module.name for module in pkgutil.walk_packages(tolvik.__path__,
                                                                 "tolvik.") if module.name != "tolvik._core")


def test_the_sessions_of_the_page_run(monkeypatch, examples):
    monkeypatch.chdir(examples.parent)
    failed, tried = doctest.testfile(str(examples.parent / "docs" / "python.md"), module_relative=False,
                                     optionflags=doctest.IGNORE_EXCEPTION_DETAIL | doctest.NORMALIZE_WHITESPACE)
    assert tried > 20 and failed == 0


def public_of(module):
    for name, member in vars(module).items():
        if name.startswith("_") or getattr(member, "__module__", None) != module.__name__:
            continue
        if inspect.isfunction(member):
            yield name, member
        elif inspect.isclass(member):
            yield name, member
            for inner, method in vars(member).items():
                if not inner.startswith("_") and inspect.isfunction(method):
                    yield f"{name}.{inner}", method


@pytest.mark.parametrize("name", MODULES)
def test_docstrings_are_complete(name):
    module = importlib.import_module(name)
    assert module.__doc__, name
    for where, member in public_of(module):
        doc = inspect.getdoc(member)
        assert doc, f"{name}.{where} has no docstring"
        if not inspect.isfunction(member) or "\n" not in doc:
            continue
        parameters = [each for each in inspect.signature(member).parameters if each not in ("self", "cls")]
        if "Parameters\n" in doc:
            for each in parameters:
                assert each in doc, f"{name}.{where}: parameter {each} is not described"
        returned = typing.get_type_hints(member).get("return", type(None)) if name.count(".") < 2 else type(None)
        if "Parameters\n" in doc and returned not in (type(None), typing.NoReturn) and where.count("__") == 0:
            assert "Returns\n" in doc or "Yields\n" in doc, f"{name}.{where}: what it returns is not described"


def test_names_of_the_package_are_all_there():
    for name in tolvik.__all__:
        assert getattr(tolvik, name) is not None
    assert pathlib.Path(tolvik.__file__).with_name("py.typed").exists()
