#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""exported_names.py NM HEADER LIBRARY PROGRAM

Checks that the library exports exactly the functions that the header marks, and the program exports them too.
"""
import re
import subprocess
import sys


def exported(nm, binary):
    lines = subprocess.run([nm, "--dynamic", "--defined-only", "--format=posix", binary], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    return {line.split()[0] for line in lines if line}


def main(nm, header, library, program):
    with open(header, encoding="utf-8") as file:
        marked = set(re.findall(r"^TOLVIK_EXPORT[^(]*?(\w+)\(", file.read(), re.MULTILINE))
    in_library, in_program = exported(nm, library), exported(nm, program)
    wrong = [f"{header}: marks no function"] if not marked else []
    wrong += [f"{library}: lacks {name}" for name in sorted(marked - in_library)]
    wrong += [f"{library}: exports {name} as well" for name in sorted(in_library - marked)]
    wrong += [f"{program}: lacks {name}" for name in sorted(marked - in_program)]
    print(*wrong, sep="\n")
    print(f"{len(marked)} names, {len(wrong)} faults")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
