#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""check_docs.py finds each kind of wrong name in a small tree, and accepts the right ones."""
import pathlib
import tempfile
import unittest

import check_docs

RIGHT = {
    "src/room/layer.h": "// Heights: room/height.tpp, or height.tpp; bodies in room/*.tpp. See docs/guide.md and scripts/run.\n",
    "src/room/height.tpp": 'const char* text = "// room/gone.h";  // a comment of NAME.h\n',
    "docs/guide.md": "# A guide: all of it\n\n[here](#a-guide-all-of-it) and [there](../README.md#top), `room/layer.h`\n",
    "README.md": "# Top\n",
    "scripts/run": "",
    "tests/run.py": '"""Reads room/layer.h."""\nname = "room/gone.h"\n',
}


def faults_of(changed):
    with tempfile.TemporaryDirectory(prefix="tolvik-docs-") as folder:
        root = pathlib.Path(folder).resolve()
        for name, text in (RIGHT | changed).items():
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).write_text(text, encoding="utf-8")
        return check_docs.all_faults(root)


class CheckDocs(unittest.TestCase):
    def test_right_names_pass(self):
        self.assertEqual(faults_of({}), [])

    def expect(self, name, text, *faults):
        self.assertEqual(faults_of({name: text}), [f"{name}{fault}" for fault in faults])

    def test_comment_that_names_no_file(self):
        self.expect("src/room/new.cpp", "int a;  // see room/gone.h\n", ":1: there is no room/gone.h")

    def test_file_of_another_folder(self):
        self.expect("src/room/new.cpp", "// see hall/layer.h\n", ":1: there is no hall/layer.h")

    def test_name_without_folder(self):
        self.expect("src/room/new.cpp", "\n// see gone.tpp\n", ":2: there is no gone.tpp")

    def test_pattern_without_files(self):
        self.expect("src/room/new.cpp", "// is included by hall/*.cpp only\n", ":1: there is no hall/*.cpp")

    def test_script_in_a_comment(self):
        self.expect("src/room/new.cpp", "/* found by\n   scripts/gone */\n", ":1: there is no scripts/gone")

    def test_docstring(self):
        self.expect("tests/new.py", 'def f():\n    """As in room/gone.h."""\n', ":2: there is no room/gone.h")

    def test_document(self):
        self.expect("docs/new.md", "`room/gone.h` [a](gone.md) [b](guide.md#gone)\n", ": link to gone.md leads nowhere",
                    ": guide.md has no heading #gone", ": there is no room/gone.h")


if __name__ == "__main__":
    unittest.main()
