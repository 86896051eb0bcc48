# SPDX-License-Identifier: GPL-2.0-or-later
"""The comments of a source file."""
import io
import re
import tokenize

# strings come first, so that a // inside one begins no comment
CPP_TOKEN = re.compile(r'"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])\'|//[^\n]*|/\*.*?\*/', re.DOTALL)


def cpp_comments(text):
    for match in CPP_TOKEN.finditer(text):
        if match.group().startswith("/"):
            yield text.count("\n", 0, match.start()) + 1, match.group()


def python_comments(text):
    """Comments, and strings that stand alone: docstrings."""
    before = tokenize.NEWLINE
    for token in tokenize.generate_tokens(io.StringIO(text).readline):
        alone = token.type == tokenize.STRING and before in (tokenize.NEWLINE, tokenize.INDENT, tokenize.DEDENT)
        if token.type == tokenize.COMMENT or alone:
            yield token.start[0], token.string
        if token.type not in (tokenize.NL, tokenize.COMMENT):
            before = token.type


def hash_comments(text):
    for number, line in enumerate(text.splitlines(), 1):
        if line.lstrip().startswith("#"):
            yield number, line


READERS = {".py": python_comments, ".pyi": python_comments, ".cmake": hash_comments, "": hash_comments}


def comments_of(path):
    """Pairs of the line on which a comment begins and its text."""
    return list(READERS.get(path.suffix, cpp_comments)(path.read_text(encoding="utf-8")))
