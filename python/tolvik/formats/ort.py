# SPDX-License-Identifier: GPL-2.0-or-later
"""Text files of the Open Reflectometry Standards Organisation (.ort), versions 0.1 to 1.2.

A file begins with a line that names the standard. Each data set is a header of YAML in comment lines and a table; the
header of a later data set begins with ``data_set:`` and carries only the differences to the first one. The meaning of
a header is in `orso_header`, which .orb files share.
"""
from __future__ import annotations

import re
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any, Optional

import numpy as np

from ..data import Data
from ..errors import DataError
from . import orso_header, orso_yaml, source

if TYPE_CHECKING:
    from .reader import ReadOptions

_FIRST_LINE = re.compile(
    r"^#\s*#?\s*ORSO reflectivity data file\s*\|\s*([\d.]+)\s+standard\s*\|\s*YAML encoding", re.IGNORECASE
)
_NEXT = re.compile(r"^#\s?data_set\s*:")
_KEY = re.compile(r"^#\s?(data_source|reduction|columns)\s*:")


@dataclass
class _Block:
    """One data set: numbered lines of its header without the comment sign, and of its table."""

    header: list[tuple[int, str]] = field(default_factory=list)
    rows: list[tuple[int, str]] = field(default_factory=list)


def read(path: str, content: bytes, options: "ReadOptions") -> list[Data]:
    """All data sets of an .ort file; see `tolvik.read`."""
    lines = source.lines_of(source.decode(path, content))
    version = _version(path, lines)
    found: list[Data] = []
    first: Optional[dict[str, Any]] = None
    for block in _blocks(path, lines[1:]):
        own = orso_yaml.load(path, block.header)
        header = own if first is None else orso_header.merge(first, own)
        first = header if first is None else first
        place = block.header[0][0]
        try:
            columns = orso_header.columns(header, version)
        except DataError as error:
            source.fail(path, place, str(error))
        table = _table(path, block, len(columns))
        try:
            found.append(orso_header.data_set(header, columns, table, path, options))
        except DataError as error:
            index = re.search(r"at index (\d+)", str(error))
            line = block.rows[int(index.group(1))][0] if index else place
            source.fail(path, line, str(error).removeprefix(f"{path}: "))
    return found


def _version(path: str, lines: list[str]) -> tuple[int, ...]:
    match = _FIRST_LINE.match(lines[0].lstrip("\ufeff"))
    if not match:
        source.fail(
            path,
            1,
            (
                f"{lines[0][:60]!r} is not the first line of an ORSO file ('# # ORSO reflectivity data file | "
                "1.0 standard | YAML encoding | ...'); plain columns read with format='columns'"
            ),
        )
    parts = match.group(1).strip(".").split(".")
    version = tuple(int(part[:6]) for part in parts if part)
    if not version or version[0] > 1:
        source.fail(path, 1, f"version {match.group(1)} of the standard is unknown; 0.1 to 1.2 are read")
    return version


def _blocks(path: str, lines: list[str]) -> list[_Block]:
    blocks = [_Block()]
    for number, line in enumerate(lines, 2):
        block = blocks[-1]
        if line.startswith("#"):
            if block.rows and _NEXT.match(line):
                blocks.append(_Block(header=[(number, _uncommented(line))]))
            elif not block.rows:
                block.header.append((number, _uncommented(line)))
            elif _KEY.match(line):
                source.fail(
                    path, number, f"{line[:40]!r} after data: the header of a data set begins with '# data_set: NAME'"
                )
        elif line.strip():
            block.rows.append((number, line.strip()))
    if not blocks[0].header:
        source.fail(path, 2, "has no header; lines of YAML that begin with # are needed, with columns:")
    return blocks


def _uncommented(line: str) -> str:
    return line[2:] if line.startswith("# ") else line[1:]


def _table(path: str, block: _Block, count: int) -> orso_header.Array:
    if not block.rows:
        source.fail(path, block.header[0][0], "data set without points; delete its header")
    rows = []
    for number, text in block.rows:
        fields = text.split()
        if len(fields) != count:
            source.fail(path, number, f"has {len(fields)} columns, the header names {count}; mend the line or columns:")
        try:
            rows.append([orso_yaml.number(value) for value in fields])
        except ValueError as error:
            source.fail(path, number, f"{error}; mend the line or begin it with #")
    return np.array(rows, dtype=np.float64)
