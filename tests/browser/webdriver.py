# SPDX-License-Identifier: GPL-2.0-or-later
"""The part of the WebDriver protocol (W3C) that a test of one page needs."""
import base64
import json
import subprocess
import time
import urllib.request

ELEMENT = "element-6066-11e4-a52e-4f735466cecf"


class Browser:
    """A headless Chromium, driven by chromedriver on a port of the local machine."""

    def __init__(self, driver_port, profile_folder):
        self._driver = subprocess.Popen(["chromedriver", f"--port={driver_port}"], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        self._url = f"http://127.0.0.1:{driver_port}"
        arguments = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                     "--disable-background-networking", "--disable-component-update", "--disable-sync",
                     "--window-size=1500,1000", f"--user-data-dir={profile_folder}"]
        wanted = {"capabilities": {"alwaysMatch": {"goog:chromeOptions": {"args": arguments}}}}
        deadline = time.monotonic() + 30
        while True:
            try:
                self._session = self._call("POST", "/session", wanted)["sessionId"]
                return
            except (ConnectionError, urllib.error.URLError):
                if time.monotonic() > deadline:
                    self._driver.kill()
                    raise
                time.sleep(0.1)

    def _call(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self._url + path, data, {"Content-Type": "application/json"}, method=method)
        with urllib.request.urlopen(request, timeout=60) as answer:
            return json.load(answer)["value"]

    def _in_session(self, method, path, body=None):
        return self._call(method, f"/session/{self._session}{path}", body)

    def open(self, url):
        self._in_session("POST", "/url", {"url": url})

    def run(self, script):
        return self._in_session("POST", "/execute/sync", {"script": script, "args": []})

    def find(self, selector):
        return self._in_session("POST", "/element", {"using": "css selector", "value": selector})[ELEMENT]

    def type(self, selector, text):
        element = self.find(selector)
        self._in_session("POST", f"/element/{element}/clear", {})
        self._in_session("POST", f"/element/{element}/value", {"text": text})

    def click(self, selector):
        self._in_session("POST", f"/element/{self.find(selector)}/click", {})

    def screenshot(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self._in_session("GET", "/screenshot")))

    def close(self):
        try:
            self._in_session("DELETE", "")
        finally:
            self._driver.terminate()
            self._driver.wait()
