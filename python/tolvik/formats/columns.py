# SPDX-License-Identifier: GPL-2.0-or-later
"""Text of two to four columns: q or an angle, R or counts, and their errors."""
from __future__ import annotations

import re
import warnings
from typing import TYPE_CHECKING, Optional

import numpy as np

from ..data import Data
from ..errors import DataError, DataWarning
from . import quantities, source
from .quantities import Array

if TYPE_CHECKING:
    from .reader import ReadOptions

_COMMENT = re.compile(r"^\s*(#|%|;|!|//|\*|')")
_NUMBER = re.compile(r"[+-]?(?:\d+\.?\d*|\.\d+)(?:[eEdD][+-]?\d{1,5})?|[+-]?(?:nan|inf(?:inity)?)", re.IGNORECASE)
_DECIMAL_COMMA = re.compile(r"^[+-]?\d*,\d+(?:[eEdD][+-]?\d+)?$")
_DEFAULT_NAMES = ("q", "R", "dR", "dq")
_LARGEST_USUAL_Q = 2.0  # 1/Å; 2 theta in degrees is soon above
_LARGEST_USUAL_R = 10.0  # a reflectivity that is only roughly normalised
_SETTING = re.compile(
    r"\b(energy|wavelength|lambda)\b\s*(?:[\[(]\s*([^\])]*)[\])])?\s*[:=]?\s*([-+.\d]+(?:e[-+]?\d+)?)\s*([a-zA-ZåÅ]*)",
    re.IGNORECASE,
)


def read(path: str, content: bytes, options: "ReadOptions") -> list[Data]:
    """One data set from a text of columns; see `tolvik.read`."""
    lines = source.lines_of(source.decode(path, content))
    header, rows = _split(path, lines)
    separator, decimal_comma = _separator(path, rows)
    table = _numbers(path, rows, separator, decimal_comma)
    named = options.columns or _names_in_header(header, separator, table.shape[1])
    if named is None and table.shape[1] > len(_DEFAULT_NAMES):
        source.fail(
            path,
            rows[0][0],
            (
                f"has {table.shape[1]} columns without names; give columns= as 'q,R,dR,dq', with '-' "
                "for a column to be skipped"
            ),
        )
    names = named or _DEFAULT_NAMES[: table.shape[1]]
    if len(names) != table.shape[1]:
        source.fail(path, rows[0][0], f"has {table.shape[1]} columns, but {len(names)} names: {', '.join(names)}")
    columns = [quantities.parse(name) for name in names]
    if named is None:
        _doubt(path, table)
    energy = options.energy or _energy_in_header(path, header)
    points = [number for number, _ in rows]
    try:
        return [quantities.assemble(columns, table, energy=energy, dq_is=options.dq_is, source=path)]
    except DataError as error:
        index = re.search(r"at index (\d+)", str(error))
        source.fail(path, points[int(index.group(1))] if index else None, str(error).removeprefix(f"{path}: "))


def read_table(path: source.Path) -> Array:
    """All numbers of a text of columns, without their meaning.

    Returns
    -------
    ndarray, shape (n, k)

    Raises
    ------
    DataError, DataFileError
        As `tolvik.read`.
    """
    name = str(path)
    _, rows = _split(name, source.lines_of(source.decode(name, source.read_bytes(name))))
    return _numbers(name, rows, *_separator(name, rows))


def _split(path: str, lines: list[str]) -> tuple[list[str], list[tuple[int, str]]]:
    """Header lines, and the numbered lines of data: from the first line with two numbers on."""
    header: list[str] = []
    rows: list[tuple[int, str]] = []
    for number, line in enumerate(lines, 1):
        text = line.strip()
        if not text:
            continue
        if _COMMENT.match(line):
            if not rows:
                header.append(_COMMENT.sub("", line).strip())
        elif rows or _looks_like_data(text):
            rows.append((number, text))
        else:
            header.append(text)
    if not rows:
        source.fail(path, None, f"no line of two or more numbers among {len(lines)}; give columns of q and R")
    return header, rows


def _looks_like_data(text: str) -> bool:
    fields = [field for field in re.split(r"[;,\s]+", text) if field]
    return len(fields) >= 2 and all(_NUMBER.fullmatch(field) for field in fields)


def _separator(path: str, rows: list[tuple[int, str]]) -> tuple[Optional[str], bool]:
    """(separator, decimal comma); None separates by white space."""
    texts = [text for _, text in rows]
    if any(";" in text for text in texts):
        return ";", any("," in text for text in texts)
    if not any("," in text for text in texts):
        return None, False
    if any("." in text for text in texts):
        with_comma = next(number for number, text in rows if "," in text)
        if not all("," in text for text in texts):
            source.fail(
                path,
                with_comma,
                (
                    f"{dict(rows)[with_comma][:40]!r} has commas where other lines have none; write "
                    "numbers with a decimal point"
                ),
            )
        return ",", False
    fields = texts[0].split()
    if len(fields) >= 2 and any(_DECIMAL_COMMA.match(field) for field in fields):
        return None, True
    if re.search(r"(^|,)\s*[+-]?0\d", texts[0]):
        source.fail(
            path,
            rows[0][0],
            (
                f"{texts[0]!r}: decimal commas and commas between columns cannot be told apart; "
                "separate the columns by ';'"
            ),
        )
    return ",", False


def _numbers(path: str, rows: list[tuple[int, str]], separator: Optional[str], decimal_comma: bool) -> Array:
    table: list[list[float]] = []
    for number, text in rows:
        fields = [field.strip() for field in text.split(separator)]
        if separator and fields[-1] == "":
            fields.pop()
        if table and len(fields) != len(table[0]):
            source.fail(
                path,
                number,
                f"has {len(fields)} columns, the lines before have {len(table[0])}; mend or delete the line",
            )
        table.append([_number(path, number, field, decimal_comma) for field in fields])
    if len(table[0]) < 2:
        source.fail(path, rows[0][0], "has one column; give q and R")
    return np.array(table, dtype=np.float64)


def _number(path: str, line: int, field: str, decimal_comma: bool) -> float:
    if field == "":
        return float("nan")  # an empty field between two separators: a point without that value
    plain = field.replace(",", ".") if decimal_comma else field
    if not _NUMBER.fullmatch(plain):
        source.fail(path, line, f"{field[:40]!r} is no number; mend the line or begin it with # to make it a comment")
    return (
        float(plain.replace("d", "e").replace("D", "e")) if plain[-1:].isdigit() or plain[-1:] == "." else float(plain)
    )


def _names_in_header(header: list[str], separator: Optional[str], count: int) -> Optional[tuple[str, ...]]:
    """Names from the last header line in which every field names a quantity."""
    for text in reversed(header):
        for pattern in ([re.escape(separator)] if separator else []) + [r"\t+", r"\s*,\s*|\s*;\s*", r"\s{2,}", r"\s+"]:
            fields = tuple(field.strip() for field in re.split(pattern, text.strip()) if field.strip())
            if len(fields) == count and all(quantities.is_name(field) for field in fields):
                return fields
    return None


def _energy_in_header(path: str, header: list[str]) -> Optional[float]:
    for text in header:
        match = _SETTING.search(text)
        if match:
            key, before, value, after = match.groups()
            try:
                return quantities.energy_of(key.lower(), float(value), (before or after or "").strip())
            except (ValueError, OverflowError):
                continue  # a sentence about an energy, not a setting
    return None


def _doubt(path: str, table: Array) -> None:
    """Warns where unnamed columns hardly are q and R."""
    with np.errstate(invalid="ignore"):
        largest_q = float(np.nanmax(np.abs(table[:, 0]), initial=0.0))
        largest_r = float(np.nanmax(np.abs(table[:, 1]), initial=0.0))
    if largest_q > _LARGEST_USUAL_Q:
        warnings.warn(
            (
                f"{path}: column 1 reaches {largest_q:g} and is taken as q in 1/Å; for angles give "
                "columns='2theta,...' and energy"
            ),
            DataWarning,
            stacklevel=5,
        )
    if largest_r > _LARGEST_USUAL_R:
        warnings.warn(
            f"{path}: column 2 reaches {largest_r:g} and is taken as R; for counts give columns='q,counts'",
            DataWarning,
            stacklevel=5,
        )
