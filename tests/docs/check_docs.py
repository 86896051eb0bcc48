#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""check_docs.py ROOT

Every relative link of the documents leads to a file, and every source file that they name exists: `engine/algorithms/parratt.h` is
looked for from the root, from src/ and from the document. NAME and ROOM stand for names of the reader's own.
"""
import pathlib
import re
import sys

LINK = re.compile(r"\]\(([^)#\s]+)")
NAMED_FILE = re.compile(r"`([\w.-]+(?:/[\w.-]+)+\.(?:h|tpp|cpp|cmake|py|gp|state|md))`")
PLACEHOLDER = re.compile(r"NAME|ROOM")
SKIPPED = ("build", ".git", "tests/cli/cases")


def documents(root):
    for path in sorted(root.rglob("*.md")):
        if not path.relative_to(root).as_posix().startswith(SKIPPED):
            yield path


def exists(name, places):
    return any((place / name).exists() for place in places)


def faults(root, path):
    text = path.read_text(encoding="utf-8")
    for target in LINK.findall(text):
        if "://" not in target and not (path.parent / target).exists():
            yield f"{path.relative_to(root)}: link to {target} leads nowhere"
    for name in NAMED_FILE.findall(text):
        if not PLACEHOLDER.search(name) and not exists(name, (root, root / "src", root / "include", path.parent)):
            yield f"{path.relative_to(root)}: there is no {name}"


def main(root):
    root = pathlib.Path(root).resolve()
    paths = list(documents(root))
    wrong = [fault for path in paths for fault in faults(root, path)]
    print(*wrong, sep="\n")
    print(f"{len(paths)} documents, {len(wrong)} faults")
    return 1 if wrong or not paths else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
