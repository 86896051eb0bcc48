# SPDX-License-Identifier: GPL-2.0-or-later
"""Stacks as text: "Si | SiO2 15 3 | [Co 8 3 | Pt 12 3]*20", and the models of ORSO."""
from __future__ import annotations

import re
from dataclasses import dataclass
from typing import Callable, Optional

from ..errors import MaterialError

MOST_LAYERS = 20000
_TOKEN = re.compile(r"\s*(\||\[|\]|\*\s*\d+|[^\s|\[\]*]+(?:\[\d+\][^\s|\[\]*]*)*)")
_ORSO_TOKEN = re.compile(r"\s*(\||\d+\s*\(|\((?=\s)|\)(?=\s|\||$)|[^\s|]+)")
_NUMBER = re.compile(r"[+-]?(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?")


@dataclass(frozen=True)
class Layer:
    """A layer: formula with or without density, thickness and roughness of its upper interface, Å."""

    formula: str
    thickness: float
    roughness: float


def parse(text: str, roughness: float = 0.0) -> list[Layer]:
    """Layers of a stack, from the substrate to the ambient.

    Parameters
    ----------
    text : str
        Items between "|", from the substrate up: formula, thickness in Å, roughness of the upper interface in Å. The
        substrate has no thickness. A part in brackets with "*N" is repeated N times, also inside
        another one. A last item without thickness is the ambient, else vacuum is.
    roughness : float
        Of interfaces that name none, Å.

    Returns
    -------
    list of Layer

    Raises
    ------
    MaterialError
        With the place, counted from 1, and the remedy.
    """
    tokens = _tokens(_TOKEN, text)
    items, rest = _sequence(text, tokens, 0, _bracket_of_stack)
    if rest != len(tokens):
        raise _wrong(text, tokens, rest, "']' without '['")
    return _with_ends(text, items, roughness)


def parse_orso(text: str, roughness: float = 3.0) -> list[Layer]:
    """Layers of a model of ORSO, "vacuum | 40 ( Si 4.1 | Mo 2.8 ) | Si": nm, beam side first.

    Parameters
    ----------
    text : str
        The stack of the model.
    roughness : float
        Of every interface, Å; such a stack names none, and 3 Å is the default of the language.

    Returns
    -------
    list of Layer
        From the substrate to the ambient.
    """
    tokens = _tokens(_ORSO_TOKEN, text)
    items, rest = _sequence(text, tokens, 0, _parenthesis_of_orso)
    if rest != len(tokens):
        raise _wrong(text, tokens, rest, "')' without '('")
    for item in (item for item in items if len(item) > 2):
        raise MaterialError(f"stack {text!r}: {' '.join(item)!r} has more than a formula and a thickness in nm")
    if len(items) < 2:
        raise MaterialError(
            f"stack {text!r} has one medium; give the ambient first and the substrate last, as 'vacuum | Si'"
        )
    middle = [Layer(item[0], 10 * _length(text, item, 1), roughness) for item in items[1:-1]]
    return [Layer(items[-1][0], 0.0, roughness), *reversed(middle), Layer(items[0][0], 0.0, 0.0)]


_Item = list[str]
_Bracket = Callable[[str, list[tuple[int, str]], int], "tuple[list[_Item], int]"]


def _tokens(pattern: re.Pattern[str], text: str) -> list[tuple[int, str]]:
    """(place, token); the pattern takes any character that is no blank."""
    found, at = [], 0
    while text[at:].strip():
        match = pattern.match(text, at)
        if match is None:
            raise MaterialError(
                f"stack {text!r}: {text[at:].strip()[:10]!r} at character {at + 1} cannot be read; write items as "
                "'formula thickness roughness' between |"
            )
        found.append((match.start(1) + 1, match.group(1)))
        at = match.end()
    return found


def _sequence(text: str, tokens: list[tuple[int, str]], at: int, bracket: _Bracket) -> tuple[list[_Item], int]:
    """Items from one place to the end or a closing bracket, repeats written out."""
    items: list[_Item] = []
    expects_item = True
    while at < len(tokens) and tokens[at][1] not in ("]", ")"):
        token = tokens[at][1]
        if token == "|":
            if expects_item:
                raise _wrong(text, tokens, at, "'|' without a layer before it")
            expects_item, at = True, at + 1
            continue
        if not expects_item:
            raise _wrong(text, tokens, at, "no '|' before this")
        inner, at = bracket(text, tokens, at)
        items += inner
        if len(items) > MOST_LAYERS:
            raise MaterialError(f"stack {text[:60]!r} has more than {MOST_LAYERS} layers; repeat less often")
        expects_item = False
    if expects_item:
        raise _wrong(text, tokens, at, "a layer is missing at the end")
    return items, at


def _plain_item(tokens: list[tuple[int, str]], at: int, ends: Callable[[str], bool]) -> tuple[list[_Item], int]:
    words: _Item = []
    while at < len(tokens) and not ends(tokens[at][1]):
        words.append(tokens[at][1])
        at += 1
    return [words], at


def _bracket_of_stack(text: str, tokens: list[tuple[int, str]], at: int) -> tuple[list[_Item], int]:
    if tokens[at][1] != "[":
        if tokens[at][1].startswith("*"):
            raise _wrong(text, tokens, at, "a repeat without brackets: write [A 10 | B 20]*5")
        return _plain_item(tokens, at, lambda token: token in ("|", "[", "]") or token.startswith("*"))
    inner, end = _sequence(text, tokens, at + 1, _bracket_of_stack)
    if end == len(tokens):
        raise _wrong(text, tokens, at, "'[' without ']'")
    if end + 1 == len(tokens) or not tokens[end + 1][1].startswith("*"):
        raise _wrong(text, tokens, end, "']' without the number of repeats: write [A 10 | B 20]*5")
    return _repeat(text, inner, int(tokens[end + 1][1][1:][:9])), end + 2


def _parenthesis_of_orso(text: str, tokens: list[tuple[int, str]], at: int) -> tuple[list[_Item], int]:
    token = tokens[at][1]
    if not token.endswith("(") or not (token == "(" or token[0].isdigit()):
        return _plain_item(tokens, at, lambda other: other in ("|", ")", "(") or bool(re.fullmatch(r"\d+\s*\(", other)))
    inner, end = _sequence(text, tokens, at + 1, _parenthesis_of_orso)
    if end == len(tokens):
        raise _wrong(text, tokens, at, "'(' without ')'")
    return _repeat(text, inner, int(token[:-1].strip()[:9]) if token != "(" else 1), end + 1


def _repeat(text: str, items: list[_Item], count: int) -> list[_Item]:
    if count < 1 or count * len(items) > MOST_LAYERS:
        raise MaterialError(
            f"stack {text[:60]!r} repeats {len(items)} layers {count} times; 1 to {MOST_LAYERS} layers in all"
        )
    return items * count


def _with_ends(text: str, items: list[_Item], roughness: float) -> list[Layer]:
    layers = []
    for index, words in enumerate(items):
        substrate, last = index == 0, index == len(items) - 1
        if len(words) > 3 or (substrate and len(words) > 2):
            raise MaterialError(
                f"stack {text!r}: {' '.join(words)!r} has too many words; write "
                f"{'the substrate as formula roughness' if substrate else 'formula thickness roughness'}"
            )
        if substrate:
            layers.append(Layer(words[0], 0.0, _length(text, words, 1, roughness)))
        elif last and len(words) == 1:
            layers.append(Layer(words[0], 0.0, 0.0))
        else:
            layers.append(Layer(words[0], _length(text, words, 1), _length(text, words, 2, roughness)))
    if len(layers) == 1 or layers[-1].thickness > 0 or len(items[-1]) > 1:
        layers.append(Layer("vacuum", 0.0, 0.0))
    return layers


def _length(text: str, words: _Item, index: int, default: Optional[float] = None) -> float:
    if index >= len(words):
        if default is not None:
            return default
        raise MaterialError(f"stack {text!r}: layer {' '.join(words)!r} has no thickness; write formula and thickness")
    value = float(words[index]) if _NUMBER.fullmatch(words[index]) else -1.0
    if not 0 <= value < 1e9:
        raise MaterialError(
            f"stack {text!r}: {words[index]!r} in {' '.join(words)!r} is no length of at least 0; write a number in Å"
        )
    return value


def _wrong(text: str, tokens: list[tuple[int, str]], at: int, what: str) -> MaterialError:
    place = tokens[at][0] if at < len(tokens) else len(text) + 1
    return MaterialError(f"stack {text!r}: {what}, at character {place}")
