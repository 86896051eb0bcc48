#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""check_version.py ROOT VERSION

Fails where a file that repeats the version of the project names another one.
"""
import pathlib
import re
import sys

# The places, with the version as the one group of the pattern.
PLACES = {
    "CHANGELOG.md": r"^## (\d+\.\d+\.\d+)",
    "CITATION.cff": r"^version: (\S+)$",
    "docs/library.md": r"GIT_TAG v(\d+\.\d+\.\d+)",
    "man/Tolvik.1": r'^\.TH TOLVIK 1 "[^"]*" "Tolvik ([^"]*)"',
}


def check(root, version):
    faults = 0
    for name, pattern in PLACES.items():
        found = re.search(pattern, (root / name).read_text(encoding="utf-8"), re.MULTILINE)
        if found is None or found.group(1) != version:
            print(f"{name}: version {found.group(1) if found else 'not found'} instead of {version}")
            faults += 1
    print(f"check_version: {len(PLACES)} files, {faults} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(check(pathlib.Path(sys.argv[1]), sys.argv[2]))
