# SPDX-License-Identifier: GPL-2.0-or-later
"""What all commands share: streams, exit values, options, and errors of one line.

Results go to standard output, everything else to standard error. Exit values: 0 done, 1 failed or findings, 2 wrong
usage, 130 and 143 after SIGINT and SIGTERM. Nothing here imports numpy, so that ``--help`` answers at once.
"""
from __future__ import annotations

import argparse
import json
import os
import signal
import sys
import warnings
from typing import Any, Callable, NoReturn, Optional, Sequence, TextIO, Union

from ..errors import TolvikError

DONE, FAILED, USAGE, INTERRUPTED, TERMINATED = 0, 1, 2, 130, 143


class Terminated(BaseException):
    """SIGTERM; no handler of Exception takes it for a failure."""


class _Version(argparse.Action):
    def __call__(self, parser: argparse.ArgumentParser, *_: Any) -> NoReturn:
        from .. import __version__

        print(f"{parser.prog} {__version__}")
        parser.exit(DONE)


class PlainParser(argparse.ArgumentParser):
    """Argument parser whose usage errors are one line."""

    def error(self, message: str) -> NoReturn:
        text = " ".join(message.split())
        sys.stderr.write(f"{coloured(self.prog + ': error:', sys.stderr)} {text}; see {self.prog} --help\n")
        self.exit(USAGE)


class Parser(PlainParser):
    """Argument parser of a command, with -V.

    Parameters
    ----------
    prog : str
        Name of the command.
    description : str
        One sentence.
    **others
        As for argparse.
    """

    def __init__(self, prog: str, description: str, **others: Any) -> None:
        super().__init__(prog=prog, description=description, allow_abbrev=False, **others)
        self.add_argument("-V", "--version", action=_Version, nargs=0, help="print the version and exit")


def add_common(parser: PlainParser) -> None:
    """Adds -q, -v and --json."""
    parser.add_argument("-q", "--quiet", action="store_true", help="no warnings and no progress")
    parser.add_argument(
        "-v", "--verbose", action="store_true", help="say more; after an internal error print where it came from"
    )
    parser.add_argument("--json", action="store_true", help="print the result as JSON")


def coloured(text: str, stream: TextIO) -> str:
    """The text in bold red on a terminal, unless NO_COLOR is set."""
    if os.environ.get("NO_COLOR") or not stream.isatty():
        return text
    return f"\033[1;31m{text}\033[0m"


def say(arguments: argparse.Namespace, text: str) -> None:
    """A line for the user on standard error, unless -q."""
    if not arguments.quiet:
        print(text, file=sys.stderr)


def show(arguments: argparse.Namespace, text: str, record: Any) -> None:
    """The result on standard output: the record with --json, else the text."""
    if arguments.json:
        text = json.dumps(record, indent=1, ensure_ascii=False, allow_nan=False, default=_plain)
    sys.stdout.write(text if text.endswith("\n") else text + "\n")


def without_nan(values: Any) -> list[Optional[float]]:
    """Numbers for JSON, which knows no NaN and no infinity: null for each."""
    return [float(value) if abs(value) < float("inf") else None for value in values]


def run(
    parser: Parser, work: Callable[[argparse.Namespace], Optional[int]], arguments: Optional[Sequence[str]] = None
) -> int:
    """Runs a command and returns its exit value; no exception leaves it.

    Parameters
    ----------
    parser : Parser
        With `add_common`.
    work : callable
        Takes the parsed arguments; returns an exit value, or None for 0.
    arguments : sequence of str, optional
        By default those of the process.
    """
    name, verbose = parser.prog, False
    if "_ARGCOMPLETE" in os.environ:  # the shell asks for completions
        _complete(parser)
    try:
        signal.signal(signal.SIGTERM, _terminate)
    except ValueError:
        pass  # not the main thread: whoever runs it there keeps the signals
    try:
        options = parser.parse_args(arguments)
        name, verbose = getattr(options, "prog", name), options.verbose
        with warnings.catch_warnings():
            _show_warnings(name, options.quiet)
            value = work(options) or DONE
        sys.stdout.flush()
        return value
    except SystemExit as end:
        return _flushed(name, end.code if isinstance(end.code, int) else DONE)
    except BrokenPipeError:
        _forget_stdout()
        return DONE
    except KeyboardInterrupt:
        return _failed(name, "interrupted", INTERRUPTED)
    except Terminated:
        return _failed(name, "terminated", TERMINATED)
    except TolvikError as error:
        return _failed(name, str(error))
    except OSError as error:
        _forget_stdout()
        place = error.filename or "standard output"
        return _failed(name, f"{place}: {error.strerror or error}")
    except MemoryError:
        return _failed(name, "out of memory; use fewer points or layers")
    except Exception as error:
        if verbose:
            import traceback

            traceback.print_exc()
        text = " ".join(f"{type(error).__name__}: {error}".split())
        return _failed(name, f"internal error: {text}; run with -v for the place and report it")


def main_of(run_tool: Callable[[], int]) -> NoReturn:
    """Ends the process with the exit value of a command."""
    value = run_tool()
    try:
        sys.stdout.flush()
    except OSError:
        _forget_stdout()
    sys.exit(value)


def energy(text: str) -> float:
    """Photon energy in eV of "8048", "8.048keV" or the name of a line as "CuKa"; for argparse."""
    found = LINES.get(text.strip().lower())
    if found is not None:
        return found
    plain = text.strip().lower()
    factor = 1000.0 if plain.endswith("kev") else 1.0
    try:
        value = factor * float(plain.removesuffix("kev").removesuffix("ev"))
    except ValueError:
        value = float("nan")
    if not 0 < value < float("inf"):
        raise argparse.ArgumentTypeError(
            f"energy {text!r} is no positive number of eV and none of {', '.join(LINE_NAMES)}"
        )
    return value


def energies(text: str) -> Union[float, tuple[float, float, float]]:
    """One energy, or first:last:step in eV; for argparse."""
    if ":" not in text:
        return energy(text)
    parts = text.split(":")
    if len(parts) != 3:
        raise argparse.ArgumentTypeError(f"energies {text!r} are not first:last:step in eV, as 770:800:0.25")
    first, last, step = (energy(part) for part in parts)
    if last < first or (last - first) / step > 1e6:
        raise argparse.ArgumentTypeError(f"energies {text!r} run backwards or are more than a million")
    return first, last, step


# K alpha 1 of usual anodes, eV: X-ray Data Booklet (2009), table 1-2.
_ANODES = {
    "Al": 1486.70,
    "Cr": 5414.72,
    "Fe": 6403.84,
    "Co": 6930.32,
    "Cu": 8047.78,
    "Ga": 9251.74,
    "Mo": 17479.34,
    "Ag": 22162.92,
}
LINE_NAMES = [f"{anode}Ka" for anode in _ANODES]
LINES = {
    name.lower(): value for anode, value in _ANODES.items() for name in (f"{anode}Ka", f"{anode}Ka1", f"{anode}Kalpha")
}


def _complete(parser: Parser) -> None:
    try:
        import argcomplete
    except ImportError:
        return
    argcomplete.autocomplete(parser)


def _terminate(*_: Any) -> NoReturn:
    raise Terminated


def _show_warnings(name: str, quiet: bool) -> None:
    def show_one(message: Union[Warning, str], *_: Any, **__: Any) -> None:
        if not quiet:
            print(f"{name}: warning: {' '.join(str(message).split())}", file=sys.stderr)

    from ..errors import DataWarning, MaterialWarning, TableRangeWarning

    warnings.simplefilter("ignore")
    for category in (DataWarning, MaterialWarning, TableRangeWarning):
        warnings.simplefilter("always", category)
    warnings.showwarning = show_one


def _failed(name: str, text: str, value: int = FAILED) -> int:
    try:
        sys.stderr.write(f"{coloured(name + ':', sys.stderr)} {' '.join(text.split())}\n")
        sys.stderr.flush()
    except OSError:
        pass
    return _flushed(name, value) if value != FAILED else value


def _flushed(name: str, value: int) -> int:
    try:
        sys.stdout.flush()
    except BrokenPipeError:
        _forget_stdout()
    except OSError as error:
        _forget_stdout()
        return _failed(name, f"standard output: {error.strerror or error}")
    return value


def _forget_stdout() -> None:
    """Points standard output at nothing, so that the end of the interpreter does not try to write the rest again."""
    try:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
    except (OSError, ValueError):
        pass


def _plain(value: Any) -> Any:
    if hasattr(value, "tolist"):
        return value.tolist()
    raise TypeError(f"{type(value).__name__} is no value of JSON")
