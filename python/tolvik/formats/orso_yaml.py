# SPDX-License-Identifier: GPL-2.0-or-later
"""YAML of ORSO headers: PyYAML with times kept as text, 1e-3 read as a number, and errors that name the line."""
from __future__ import annotations

import re
from typing import Any

import yaml

from . import source

_FLOAT = re.compile(r"^[-+]?(?:\d+\.?\d*|\.\d+)(?:[eE][-+]?\d+)?$|^[-+]?\.(?:inf|Inf|INF)$|^\.(?:nan|NaN|NAN)$")
_INTEGER = re.compile(r"^[-+]?(?:0|[1-9]\d{0,17})$")
_NUMBER = re.compile(r"[+-]?(?:\d+\.?\d*|\.\d+)(?:[eEdD][+-]?\d{1,5})?|[+-]?(?:nan|inf(?:inity)?)", re.IGNORECASE)
_DEEPEST = 40


class _Loader(yaml.SafeLoader):
    """Plain scalars are null, bool, integer, float or text; a date stays the text that it is."""


class _Dumper(yaml.SafeDumper):
    """Writes no anchors, for readers that do not support them."""

    def ignore_aliases(self, data: Any) -> bool:
        return True


_Loader.yaml_implicit_resolvers = {}
_Dumper.yaml_implicit_resolvers = {  # times are written as they are read, without quotes
    first: [(tag, pattern) for tag, pattern in resolvers if not tag.endswith(":timestamp")]
    for first, resolvers in yaml.SafeDumper.yaml_implicit_resolvers.items()
}
for _characters, _tag, _pattern in (
    ("~nN", "null", re.compile(r"^(?:~|null|Null|NULL)$")),
    ("tTfF", "bool", re.compile(r"^(?:true|True|TRUE|false|False|FALSE)$")),
    ("-+0123456789", "int", _INTEGER),
    ("-+.0123456789", "float", _FLOAT),
):
    _Loader.add_implicit_resolver("tag:yaml.org,2002:" + _tag, _pattern, list(_characters))
_Loader.yaml_implicit_resolvers.setdefault("", []).append(("tag:yaml.org,2002:null", re.compile(r"^$")))
# YAML 1.1 reads 0123 as octal and 1:30 as sexagesimal; a header means the decimal number.
_Loader.add_constructor("tag:yaml.org,2002:int", lambda loader, node: int(node.value))
_Loader.add_constructor("tag:yaml.org,2002:float", lambda loader, node: float(re.sub(r"\.(?=[inIN])", "", node.value)))


def load(path: str, lines: list[tuple[int, str]]) -> dict[str, Any]:
    """Mapping of a header.

    Parameters
    ----------
    path : str
        For messages.
    lines : list of (int, str)
        Line number in the file and text without the comment sign.

    Returns
    -------
    dict

    Raises
    ------
    DataError
        If it is no YAML, no mapping, or uses aliases, which a header has no need of.
    """
    text = "\n".join(line for _, line in lines)
    try:
        _refuse_depth(text)
        loaded = yaml.load(text, Loader=_Loader)  # a SafeLoader: builds plain values only
    except yaml.MarkedYAMLError as error:
        mark = error.problem_mark or error.context_mark
        at = lines[min(mark.line, len(lines) - 1)][0] if mark else lines[0][0]
        source.fail(path, at, f"header is not YAML: {source.one_line(error.problem or error.context)}; mend the line")
    except yaml.YAMLError as error:
        source.fail(path, lines[0][0], f"header is not YAML: {source.one_line(error)}; mend it")
    except (ValueError, RecursionError, TypeError, OverflowError) as error:
        source.fail(
            path, lines[0][0], f"header cannot be read: {source.one_line(error) or type(error).__name__}; mend it"
        )
    if not isinstance(loaded, dict):
        source.fail(path, lines[0][0], "header is no mapping 'key: value'; it needs at least columns:")
    return {str(key): value for key, value in loaded.items()}


def dump(header: Any) -> list[str]:
    """Lines of YAML, each with "# " in front; keys keep their order."""
    text = yaml.dump(header, Dumper=_Dumper, sort_keys=False, allow_unicode=True, width=4096)
    return [f"# {line}".rstrip() for line in text.splitlines()]


def number(text: str) -> float:
    """Float of a field of a table; raises ValueError that quotes the field."""
    if not _NUMBER.fullmatch(text):
        raise ValueError(f"{text[:40]!r} is no number")
    return float(text.lower().replace("d", "e") if text[-1] in "0123456789." else text)


def _refuse_depth(text: str) -> None:
    depth = 0
    for event in yaml.parse(text, Loader=yaml.SafeLoader):
        if isinstance(event, yaml.AliasEvent):
            raise ValueError(f"alias *{event.anchor}")
        if isinstance(event, (yaml.MappingStartEvent, yaml.SequenceStartEvent)):
            depth += 1
            if depth > _DEEPEST:
                raise ValueError(f"nested deeper than {_DEEPEST} levels")
        elif isinstance(event, (yaml.MappingEndEvent, yaml.SequenceEndEvent)):
            depth -= 1
