#!/usr/bin/env python3
"""Opens a report in a headless Chromium and uses it: charts, filter, sorting, themes, console.

    report_browser_test.py --report benchex-report [--pictures DIR] TABLE...

Ends with status 77 (skipped) where the browser or its driver is missing.
"""
import argparse
import base64
import json
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import urllib.error
import urllib.request

SKIPPED = 77


class Browser:
    """A WebDriver session with a driver process of its own."""

    def __init__(self, driver, chromium):
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            port = probe.getsockname()[1]
        self.base = f"http://127.0.0.1:{port}"
        self.process = subprocess.Popen([driver, f"--port={port}"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.session = None
        self.wait_for_driver()
        options = {
            "binary": chromium,
            "args": ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--window-size=1400,1600"],
        }
        answer = self.call("POST", "/session", {"capabilities": {"alwaysMatch": {
            "goog:chromeOptions": options, "goog:loggingPrefs": {"browser": "ALL"}}}})
        self.session = f"/session/{answer['sessionId']}"

    def wait_for_driver(self):
        for _ in range(300):
            try:
                if self.call("GET", "/status")["ready"]:
                    return
            except (urllib.error.URLError, ConnectionError):
                pass
            time.sleep(0.1)
        raise RuntimeError("the driver does not answer")

    def call(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.base + path, data, {"Content-Type": "application/json"}, method=method)
        try:
            with urllib.request.urlopen(request, timeout=120) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise RuntimeError(f"{method} {path}: {error.read().decode()[:500]}") from None

    def open(self, url):
        self.call("POST", self.session + "/url", {"url": url})

    def run(self, script):
        return self.call("POST", self.session + "/execute/sync", {"script": script, "args": []})

    def element(self, selector):
        found = self.call("POST", self.session + "/element", {"using": "css selector", "value": selector})
        return self.session + "/element/" + next(iter(found.values()))

    def type(self, selector, text):
        self.call("POST", self.element(selector) + "/value", {"text": text})

    def click(self, selector):
        self.call("POST", self.element(selector) + "/click", {})

    def messages(self):
        return self.call("POST", self.session + "/se/log", {"type": "browser"})

    def picture(self, path):
        path.write_bytes(base64.b64decode(self.call("GET", self.session + "/screenshot")))

    def theme(self, name):
        """What the system prefers, as the page sees it."""
        self.call("POST", self.session + "/goog/cdp/execute", {"cmd": "Emulation.setEmulatedMedia", "params": {
            "features": [{"name": "prefers-color-scheme", "value": name}]}})

    def close(self):
        try:
            if self.session:
                self.call("DELETE", self.session)
        finally:
            self.process.terminate()
            self.process.wait()


# Canvases in view that hold something other than their ground.
DRAWN = """
return [...document.querySelectorAll('canvas')].filter(c => {
  const box = c.getBoundingClientRect();
  if (box.bottom <= 0 || box.top >= innerHeight || box.width === 0) return false;
  const pixels = c.getContext('2d').getImageData(0, 0, c.width, c.height).data;
  return pixels.some(value => value !== 0);
}).length;
"""
IN_VIEW = """
return [...document.querySelectorAll('canvas')].filter(c => {
  const box = c.getBoundingClientRect();
  return box.bottom > 0 && box.top < innerHeight && box.width > 0;
}).length;
"""
VISIBLE_ROWS = "return [...document.querySelectorAll('#rows tbody tr')].filter(r => !r.hidden).length"
CLOCKS = """
const column = [...document.querySelectorAll('#rows th')].findIndex(t => t.textContent === 'Clocks');
return [...document.querySelectorAll('#rows tbody tr')].filter(r => !r.hidden)
  .map(r => r.cells[column].dataset.value).filter(Boolean).map(Number);
"""
GROUND = "return getComputedStyle(document.body).backgroundColor"


class Check:
    """Names what went wrong and goes on."""

    def __init__(self):
        self.failures = 0

    def __call__(self, truth, text):
        print(("ok      " if truth else "FAILED  ") + text)
        self.failures += not truth


def use_page(browser, check, pictures):
    rows = browser.run(VISIBLE_ROWS)
    check(rows > 1, f"the table has rows ({rows})")
    browser.run("document.querySelector('#functions').scrollIntoView()")
    time.sleep(1)
    shown, drawn = browser.run(IN_VIEW), browser.run(DRAWN)
    check(shown > 0 and drawn == shown, f"all charts in view are drawn ({drawn} of {shown})")

    grounds = {}
    for theme in ("light", "dark"):
        browser.theme(theme)
        time.sleep(0.5)
        grounds[theme] = browser.run(GROUND)
        if pictures:
            browser.picture(pictures / f"functions_{theme}.png")
    check(grounds["light"] != grounds["dark"], f"the themes differ ({grounds})")
    browser.run("scrollTo(0, 0)")
    browser.click("#theme")
    check(browser.run(GROUND) == grounds["light"], "the button changes the theme")
    browser.click("#theme")

    word = browser.run("return document.querySelector('#rows tbody tr:last-child').dataset.function")
    expected = browser.run(
        f"return [...document.querySelectorAll('#rows tbody tr')].filter(r => r.textContent.includes('{word}')).length")
    browser.type("#filter", word.lower())
    check(browser.run(VISIBLE_ROWS) == expected, f"a word typed leaves the rows that hold it ({expected} of {rows})")
    left = browser.run("return [...document.querySelectorAll('article')].filter(a => !a.hidden).length")
    check(0 < left <= expected, f"and the charts of their functions ({left})")
    if pictures:
        browser.picture(pictures / "filtered.png")
    browser.type("#filter", "\ue003" * len(word))  # backspace
    check(browser.run(VISIBLE_ROWS) == rows, "the filter emptied shows all rows again")

    position = browser.run(
        "return [...document.querySelectorAll('#rows th')].findIndex(t => t.textContent === 'Clocks') + 1")
    title = f"#rows th:nth-child({position}) button"
    browser.run(f"document.querySelector('{title}').scrollIntoView({{block: 'center'}})")
    browser.click(title)
    clocks = browser.run(CLOCKS)
    check(clocks == sorted(clocks), "a click on a title sorts the rows")
    browser.click(title)
    clocks = browser.run(CLOCKS)
    check(clocks == sorted(clocks, reverse=True), "another click turns the order round")
    for theme in ("dark", "light") if pictures else ():
        browser.run("document.getElementById('rows').scrollIntoView()")
        browser.picture(pictures / f"rows_{theme}.png")
        browser.run("scrollTo(0, 0)")
        browser.picture(pictures / f"head_{theme}.png")
        browser.click("#theme")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--report", required=True)
    parser.add_argument("--pictures", type=pathlib.Path)
    parser.add_argument("tables", nargs="+")
    arguments = parser.parse_args()
    chromium = shutil.which("chromium") or shutil.which("chromium-browser") or shutil.which("google-chrome")
    driver = shutil.which("chromedriver")
    if not chromium or not driver:
        print("skipped: Debian's packages chromium and chromium-driver are needed")
        return SKIPPED

    check = Check()
    with tempfile.TemporaryDirectory() as directory:
        page = pathlib.Path(directory) / "report.html"
        written = subprocess.run([arguments.report, *arguments.tables, "-o", page], capture_output=True, text=True)
        if written.returncode == 0 and "libjs-chart.js" in written.stderr:
            print("skipped: Debian's package libjs-chart.js is needed")
            return SKIPPED
        check(written.returncode == 0, "the page is written " + written.stderr.strip())
        bare = pathlib.Path(directory) / "bare.html"
        subprocess.run([arguments.report, *arguments.tables, "-o", bare, "--chart-library", "/nonexistent"],
                       capture_output=True)
        browser = Browser(driver, chromium)
        try:
            browser.open(page.as_uri())
            use_page(browser, check, arguments.pictures)
            browser.open(bare.as_uri())
            check(browser.run(VISIBLE_ROWS) > 1, "without the chart library the table is there")
            check("No charts" in browser.run("return document.querySelector('.notice').textContent"),
                  "and the page says what is missing")
            messages = [entry["message"] for entry in browser.messages()]
            check(not messages, "no message on the console " + " ".join(messages))
        finally:
            browser.close()
    return 1 if check.failures else 0


if __name__ == "__main__":
    sys.exit(main())
