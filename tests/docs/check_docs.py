#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""check_docs.py ROOT

Checks that documents and comments name files that exist:

- each relative link of a document leads to a file, and to a heading where it has an anchor;
- each `FOLDER/NAME` in code marks of a document exists;
- each `FOLDER/NAME.h` and each script in a comment or docstring of the sources exists. A comment may also name a file
  without its folder, or several by a pattern such as precision/*.cpp.

Names are looked for from the root, from src/, include/, tests/ and python/, and from the folder of the file, with and
without the folders above it. NAME, ROOM, STEM, FOLDER and SET stand for names of the reader's own.
"""
import fnmatch
import pathlib
import re
import sys

from comments import comments_of

LINK = re.compile(r"\]\(([^)#\s]*)(?:#([^)\s]*))?\)")
SUFFIX = r"\.(?:h|tpp|cpp|cmake|py|pyi|gp|state|md|toml)"
NAMED_FILE = re.compile(r"`([\w.-]+(?:/[\w.-]+)+" + SUFFIX + ")`")
NAMED_IN_COMMENT = re.compile(r"(?<![\w./<-])((?:[\w.-]+/)*[\w.*-]*[\w*]" + SUFFIX + r")(?![\w/])|(?<![\w./-])(scripts/[\w-]+)")
PLACEHOLDER = re.compile(r"NAME|ROOM|STEM|FOLDER|SET")
HEADING = re.compile(r"^#+ +(.+)$", re.MULTILINE)
SKIPPED = ("build", ".git", "tests/cli/cases")
SOURCE_FOLDERS = ("src", "include", "tests", "bench", "python", "examples", "scripts", "cmake")
# headers of packages and files that the program writes
FOREIGN = {"levmar.h", "avx512fintrin.h", "summary/plot.gp"}


def relative(root, path):
    return path.relative_to(root).as_posix()


def files(root, folders, suffixes):
    for folder in folders:
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in suffixes and path.is_file() and not relative(root, path).startswith(SKIPPED):
                yield path


def documents(root):
    return [path for path in sorted(root.rglob("*.md")) if not relative(root, path).startswith(SKIPPED)]


def sources(root):
    return [*files(root, SOURCE_FOLDERS, {".h", ".tpp", ".cpp", ".py", ".pyi", ".cmake"}), *files(root, ("scripts",), {""})]


def exists(name, places):
    return any(any(place.glob(name)) if "*" in name else (place / name).exists() for place in places)


def anchors(path):
    """Anchors of the headings, as the usual renderers of Markdown form them."""
    headings = HEADING.findall(path.read_text(encoding="utf-8"))
    return {re.sub(r"[^\w\- ]", "", heading.lower()).strip().replace(" ", "-") for heading in headings}


def document_faults(root, path):
    text = path.read_text(encoding="utf-8")
    for target, anchor in LINK.findall(text):
        if "://" in target:
            continue
        file = path.parent / target if target else path
        if not file.exists():
            yield f"{relative(root, path)}: link to {target} leads nowhere"
        elif anchor and anchor not in anchors(file):
            yield f"{relative(root, path)}: {file.name} has no heading #{anchor}"
    for name in NAMED_FILE.findall(text):
        if not PLACEHOLDER.search(name) and not exists(name, (root, root / "src", root / "include", path.parent)):
            yield f"{relative(root, path)}: there is no {name}"


def comment_faults(root, path, names):
    places = [root] + [root / folder for folder in ("src", "include", "tests", "python")]
    places += [parent for parent in path.parents if root in parent.parents]
    for line, comment in comments_of(path):
        for name in ("".join(match) for match in NAMED_IN_COMMENT.findall(comment)):
            known = name in FOREIGN or ("/" not in name and fnmatch.filter(names, name))
            if not PLACEHOLDER.search(name) and not known and not exists(name, places):
                yield f"{relative(root, path)}:{line}: there is no {name}"


def all_faults(root):
    texts, codes = documents(root), sources(root)
    names = {path.name for path in codes + texts} | {path.name for path in files(root, ("examples",), {".state", ".gp"})}
    faults = [fault for path in texts for fault in document_faults(root, path)]
    return faults + [fault for path in codes for fault in comment_faults(root, path, names)]


def main(root):
    root = pathlib.Path(root).resolve()
    texts, codes, faults = documents(root), sources(root), all_faults(root)
    print(*faults, sep="\n")
    print(f"{len(texts)} documents, {len(codes)} sources, {len(faults)} faults")
    return 1 if faults or not texts or not codes else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
