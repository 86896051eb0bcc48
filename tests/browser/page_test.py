#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""page_test.py HOST STATE ROWS [SCREENSHOT]

Starts the host program on a state and looks at its page with a real browser: it must load as XHTML with MathML without
a parse error, show one row per slice, and take new values from the form.
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile
import urllib.request

from webdriver import Browser

PAGE = "http://127.0.0.1:8080/"
DRIVER_PORT = 9515


class Checks:
    def __init__(self):
        self.passed = self.failed = 0

    def equal(self, what, got, want):
        if got == want:
            self.passed += 1
        else:
            self.failed += 1
            print(f"{what}: want {want!r}, got {got!r}")


def look_at_page(browser, rows, checks):
    browser.open(PAGE)
    checks.equal("namespace of the root", browser.run("return document.documentElement.namespaceURI"),
                 "http://www.w3.org/1999/xhtml")
    checks.equal("content type", browser.run("return document.contentType"), "text/xml")
    checks.equal("parse errors", browser.run("return document.getElementsByTagName('parsererror').length"), 0)
    checks.equal("title", browser.run("return document.title"), "Consistency check")
    checks.equal("rows", browser.run("return document.querySelectorAll('table[frame=box] > tr').length"), rows)
    checks.equal("tensors", browser.run("return document.getElementsByTagNameNS("
                                        "'http://www.w3.org/1998/Math/MathML', 'math').length"), rows)
    checks.equal("elements of a tensor", browser.run("return document.querySelectorAll('math')[0]"
                                                     ".querySelectorAll('mtd').length"), 9)
    checks.equal("the name of the tensor", browser.run("return document.querySelector('math').textContent.trim()[0]"),
                 "\N{GREEK SMALL LETTER EPSILON}")


def submit_form(browser, checks):
    browser.type("input[name=qz]", "0.25")
    browser.type("input[name=epsilon]", "0.001")
    browser.type("input[name=energy]", "700")
    browser.click("input[type=submit]")
    value = "return document.querySelector('input[name={}]').value"
    checks.equal("qz after the form", browser.run(value.format("qz")), "0.25")
    checks.equal("epsilon after the form", browser.run(value.format("epsilon")), "0.001")
    checks.equal("energy after the form", browser.run(value.format("energy")), "700")
    browser.open(PAGE)
    checks.equal("qz of the next page", browser.run(value.format("qz")), "0.1")
    checks.equal("energy of the next page", browser.run(value.format("energy")), "700")


def main(host, state, rows, screenshot=None):
    checks = Checks()
    state = pathlib.Path(state).resolve()
    folder = tempfile.mkdtemp(prefix="tolvik-browser-")
    server = subprocess.Popen([pathlib.Path(host).resolve(), state, "0"], cwd=state.parent, stdout=subprocess.DEVNULL)
    try:
        with urllib.request.urlopen(PAGE, timeout=30):
            pass
    except urllib.error.URLError:
        pass  # the browser tries again
    browser = None
    try:
        browser = Browser(DRIVER_PORT, folder)
        look_at_page(browser, int(rows), checks)
        if screenshot:
            browser.screenshot(screenshot)
        submit_form(browser, checks)
        checks.equal("the server still runs", server.poll(), None)
    finally:
        if browser is not None:
            browser.close()
        server.kill()
        server.wait()
        shutil.rmtree(folder, ignore_errors=True)
    print(f"{checks.passed} passed, {checks.failed} failed")
    return 1 if checks.failed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
