# SPDX-License-Identifier: GPL-2.0-or-later
"""Bytes and text of a data file, and errors that name file and line."""
from __future__ import annotations

import codecs
import os
import pathlib
from typing import NoReturn, Optional, Union

from ..errors import DataError, DataFileError

Path = Union[str, "os.PathLike[str]"]

#: No curve is this long; larger files are refused before they fill the memory.
LARGEST_FILE = 256 * 1024 * 1024

_MARKS = (
    (codecs.BOM_UTF8, "utf-8-sig"),
    (codecs.BOM_UTF32_LE, "utf-32"),
    (codecs.BOM_UTF32_BE, "utf-32"),
    (codecs.BOM_UTF16_LE, "utf-16"),
    (codecs.BOM_UTF16_BE, "utf-16"),
)


def fail(path: Path, line: Optional[int], message: str) -> NoReturn:
    """Raises a DataError that begins with the file and, where there is one, the line."""
    place = f"{os.fspath(path)}:{line}: " if line else f"{os.fspath(path)}: "
    raise DataError(place + one_line(message))


def one_line(message: object) -> str:
    """The message of a library as one line of at most 300 characters."""
    text = " ".join(str(message).split())
    return text if len(text) <= 300 else text[:297] + "..."


def read_bytes(path: Path) -> bytes:
    """The whole file.

    Raises
    ------
    DataFileError
        If it cannot be opened or read, or is no plain file.
    DataError
        If it is empty or larger than `LARGEST_FILE`.
    """
    try:
        if os.path.isdir(path):
            raise DataFileError(f"{os.fspath(path)}: is a folder; name a file in it")
        size = os.path.getsize(path)
        if size > LARGEST_FILE:
            fail(path, None, f"has {size} bytes; files above {LARGEST_FILE} bytes are not read as one curve")
        content = pathlib.Path(path).read_bytes()
    except ValueError as error:
        if isinstance(error, DataError):
            raise
        raise DataFileError(f"{os.fspath(path)!r}: is no name of a file: {one_line(error)}") from None
    except OSError as error:
        if isinstance(error, DataFileError):
            raise
        reason = error.strerror or one_line(error)
        raise DataFileError(
            f"{os.fspath(path)}: cannot be read: {reason}; see that the name and the rights are right"
        ) from None
    if not content.strip():
        fail(path, None, "is empty; give a file with columns of q and R")
    return content


def decode(path: Path, content: bytes) -> str:
    """Text of a file: by its byte order mark, else UTF-16 that shows by its zero bytes, UTF-8, or Latin-1.

    Raises
    ------
    DataError
        If the bytes are no text.
    """
    encoding = next((name for mark, name in _MARKS if content.startswith(mark)), None) or _guess(content)
    try:
        text = content.decode(encoding)
    except UnicodeDecodeError as error:
        fail(path, None, f"is no {encoding} text at byte {error.start}; save it as UTF-8")
    if "\0" in text:
        fail(path, None, "holds zero bytes, so it is no text; give the file of columns, .ort or .orb")
    return text


def lines_of(text: str) -> list[str]:
    """Lines by LF, CRLF or CR alone; other separators of Unicode stay inside a line."""
    return text.replace("\r\n", "\n").replace("\r", "\n").split("\n")


def _guess(content: bytes) -> str:
    head = content[:4096]
    even, odd = head[0::2], head[1::2]
    for name, high in (("utf-16-le", odd), ("utf-16-be", even)):
        low = even if high is odd else odd
        if len(high) > 1 and high.count(0) > 0.4 * len(high) and low.count(0) == 0:
            return name
    try:
        content.decode("utf-8")
    except UnicodeDecodeError:
        return "latin-1"
    return "utf-8"
