#!/usr/bin/env python3
"""Opens a report in a headless Chromium and uses it: overview, charts, filter, links, sorting,
themes, paper, 100,000 rows, console.

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
            "timeouts": {"script": 500000, "pageLoad": 500000},  # a loaded machine takes its time
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
            with urllib.request.urlopen(request, timeout=560) as answer:
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

    def press(self, text):
        """Keys for the element that has the focus; nothing is scrolled for them as for `type`."""
        keys = [{"type": kind, "value": key} for key in text for kind in ("keyDown", "keyUp")]
        self.call("POST", self.session + "/actions", {"actions": [{"type": "key", "id": "keys", "actions": keys}]})

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
SHOWN = "return document.getElementById('shown').value"
CLOCKS = """
const column = [...document.querySelectorAll('#rows th')].findIndex(t => t.textContent === 'Clocks');
return [...document.querySelectorAll('#rows tbody tr:not(.gap)')].map(r => r.cells[column].lastChild?.textContent)
  .filter(Boolean).map(Number);
"""
# Texts of the table that their columns cut, but for those that may be long.
CUT = """
const may = [...document.querySelectorAll('#rows th')].map(title => /Parameters|Comment/.test(title.textContent));
return [...document.querySelectorAll('#rows tbody tr:not(.gap) td')].filter(cell => !may[cell.cellIndex] && cell.scrollWidth > cell.clientWidth)
  .map(cell => cell.textContent);
"""
LINES = "return document.querySelectorAll('#rows tbody tr:not(.gap)').length"
TARGET = """
const row = document.querySelector('#rows tr.target');
if (!row) return null;
const box = row.getBoundingClientRect();
return box.top >= 0 && box.bottom <= innerHeight ? row.textContent : 'out of view';
"""
# Ticks of all charts that stand closer than their texts are wide.
CROWDED = """
const pen = document.createElement('canvas').getContext('2d');
pen.font = '12px sans-serif';
return [...document.querySelectorAll('canvas')].map(Chart.getChart).filter(c => c && c.config.type === 'line').flatMap(c => {
  const axis = c.scales.x;
  return axis.ticks.slice(1).filter((tick, i) => axis.getPixelForValue(tick.value) - axis.getPixelForValue(axis.ticks[i].value)
    < (pen.measureText(tick.value).width + pen.measureText(axis.ticks[i].value).width) / 2);
}).length;
"""
KINDS = """
return Object.fromEntries([...document.querySelectorAll('article')].map(a =>
  [a.dataset.function, Chart.getChart(a.querySelector('canvas'))?.config.type]));
"""
GROUND = "return getComputedStyle(document.body).backgroundColor"


class Check:
    """Names what went wrong and goes on."""

    def __init__(self):
        self.failures = 0

    def __call__(self, truth, text):
        print(("ok      " if truth else "FAILED  ") + text)
        self.failures += not truth


def count(browser):
    return int(browser.run(SHOWN).split()[0])


def use_page(browser, check, pictures):
    rows = count(browser)
    check(rows > 1, f"the table has rows ({rows})")
    ratios = browser.run("return [...document.querySelectorAll('#overview tr:not(.domain) [data-ratio]')]"
                         ".map(cell => [cell.closest('tr').dataset.function, Number(cell.textContent)])")
    check(["zorsMDCTFwd_32f_I", 0.77] in ratios, f"the overview has the ratios of the functions ({ratios})")
    check(len({name for name, _ in ratios}) == len(ratios), "each once")
    browser.run("document.querySelector('#functions').scrollIntoView()")
    time.sleep(1)
    shown, drawn = browser.run(IN_VIEW), browser.run(DRAWN)
    check(shown > 0 and drawn == shown, f"all charts in view are drawn ({drawn} of {shown})")
    kinds = browser.run(KINDS)
    check(kinds.get("zorsUnpack_MP3") == "bar" and kinds.get("zorsMDCTFwd_32f_I") == "line" and
          "zorsNew_16s_I" not in kinds, f"names have bars, sizes have lines, a single number has no chart ({kinds})")
    check(browser.run(CROWDED) == 0, "no labels of an axis print over each other")

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

    place = "return document.querySelector('#domain-MP3').getBoundingClientRect().top"
    browser.run("document.querySelector('#domain-MP3').scrollIntoView()")
    before = browser.run(place)
    browser.run("document.getElementById('filter').focus({preventScroll: true})")
    browser.press("mp3 stereo")
    check(count(browser) == 2, f"words typed leave the rows that hold them all ({browser.run(SHOWN)})")
    left = browser.run("return [...document.querySelectorAll('article')].filter(a => !a.hidden).map(a => a.dataset.function)")
    check(left == ["zorsUnpack_MP3"], f"and the charts of their functions ({left})")
    now = browser.run(place)
    check(0 <= now <= before + 80, f"what is looked at stays in view ({before} to {now})")
    check("q=mp3+stereo" in browser.run("return location.href"), "the address holds the filter")
    browser.call("POST", browser.session + "/refresh", {})
    check(count(browser) == 2, "and brings it back")
    if pictures:
        browser.picture(pictures / "filtered.png")

    link = browser.run("return document.querySelector('#rows tbody a').href")
    browser.type("#filter", "\ue003" * 10)  # backspace
    check(count(browser) == rows, "the filter emptied shows all rows again")
    browser.open("about:blank")
    browser.open(link.replace("mp3+stereo", "copy"))
    time.sleep(0.3)
    found = browser.run(TARGET) or ""
    check("zorsUnpack_MP3" in found and "stereo" in found, f"a link to a row shows it, whatever is filtered ({found})")

    position = browser.run(
        "return [...document.querySelectorAll('#rows th')].findIndex(t => t.textContent === 'Clocks') + 1")
    title = f"#rows th:nth-child({position}) button"
    browser.run(f"document.querySelector('{title}').scrollIntoView({{block: 'center'}})")
    browser.click(title)
    cut = browser.run(CUT)
    check(not cut, f"no column cuts its texts ({cut})")
    clocks = browser.run(CLOCKS)
    check(len(clocks) == rows and clocks == sorted(clocks), "a click on a title sorts the rows")
    browser.click(title)
    clocks = browser.run(CLOCKS)
    check(clocks == sorted(clocks, reverse=True), "another click turns the order round")

    browser.run("window.dispatchEvent(new Event('beforeprint'))")
    check(browser.run(LINES) == rows, "paper gets all rows")
    browser.run("window.dispatchEvent(new Event('afterprint'))")
    for theme in ("dark", "light") if pictures else ():
        browser.run("document.getElementById('rows').scrollIntoView()")
        browser.picture(pictures / f"rows_{theme}.png")
        browser.run("scrollTo(0, 0)")
        browser.picture(pictures / f"head_{theme}.png")
        browser.click("#theme")


TITLES = "Function,Types,Descriptor,P1,P2,P3,P4,P5,P6,P7,P8,Comment,Clocks,per,Time (usec),MFlops"


def large_table(path, rows):
    """A table of a thousand rows for each function."""
    lines = ["CPU,one", "Start,Sun Nov 22 23:26:43 2026", TITLES]
    for i in range(rows):
        lines.append(f"zorsF{i // 1000},32f,-,{i % 1000 + 1},-,-,-,-,-,-,-,nLps=4,{1 + i % 7}.25,e,{i % 13}.5,-")
    path.write_text("\n".join(lines) + "\n")


# The time between two frames while the table is scrolled from end to end, milliseconds: median and longest.
SCROLLED = """
const done = arguments[arguments.length - 1];
const frame = document.getElementById('rows');
frame.scrollIntoView();
let step = 0, last = performance.now();
const times = [];
const next = now => {
  times.push(now - last);
  last = now;
  frame.scrollTop = frame.scrollHeight * step / 100;
  if (++step <= 100) requestAnimationFrame(next); else done(times.sort((a, b) => a - b));
};
requestAnimationFrame(next);
"""


def use_large_page(browser, check, report, directory, rows=100000):
    table, page = directory / "large.csv", directory / "large.html"
    large_table(table, rows)
    subprocess.run([report, table, "-o", page], check=True, capture_output=True)
    start = time.monotonic()
    browser.open(page.as_uri())
    check(count(browser) == rows, f"{rows} rows are there, opened in {time.monotonic() - start:.2f} s")
    lines = browser.run(LINES)
    check(lines < 200, f"only those in view are laid out ({lines})")
    times = browser.call("POST", browser.session + "/execute/async", {"script": SCROLLED, "args": []})
    print(f"        scrolling: {times[len(times) // 2]:.0f} ms between two frames in the middle, {times[-1]:.0f} ms at most")
    last = browser.run("return [...document.querySelectorAll('#rows tbody tr:not(.gap)')].pop().textContent")
    check(f"zorsF{(rows - 1) // 1000}_32f" in last and "1000" in last, f"the end of the table is its last row ({last})")
    start = time.monotonic()
    browser.type("#filter", "zorsf99")
    check(count(browser) == 1000, f"filtered in {time.monotonic() - start:.2f} s")


PAIR_ROWS = """
return [...document.querySelectorAll('.pair .rows tbody tr')].filter(row => !row.hidden).map(row => [...row.cells].map(c => c.textContent));
"""


def use_pair_page(browser, check, report, directory):
    """A result of benchex-compare --pair, without tables."""
    page = directory / "pair.html"
    subprocess.run([report, pathlib.Path(__file__).parent / "pair.json", "-o", page], check=True, capture_output=True)
    browser.open(page.as_uri())
    rows = browser.run(PAIR_ROWS)
    check(len(rows) == 5 and rows[0][0] == "zorsMDCTFwd_32f" and {"slower", "1.0500", "1.0400 to 1.0600"} <= set(rows[0]),
          f"rows of a pair with verdict, ratio and interval ({rows[:1]})")
    check("right, 1 ulp, 140 dB" in rows[1] and any("index 2: 0 and 1" in cell for cell in rows[3]) and
          any("Time limit" in cell for cell in rows[4]), "with their outputs and what is wrong")
    text = browser.run("return document.body.innerText")
    check("new <i>" in text and "Only before (1)" in text and "All rows\n" not in text, "both sides, and no empty parts")
    browser.click(".pair [data-kind=wrong]")
    check([row[0] for row in browser.run(PAIR_ROWS)] == ["zorsUnpack_MP3"], "a button leaves the rows of its kind")
    browser.click(".pair [data-kind='all rows']")
    browser.type("#filter", "mdct 64")
    check(len(browser.run(PAIR_ROWS)) == 1, "the filter leaves rows that hold its words")
    marks = browser.run("""return [...document.querySelectorAll('.pair .rows svg')].map(picture =>
      [...picture.querySelectorAll('.one, .centre')].map(mark => Math.round(+(mark.getAttribute('x1') ?? mark.getAttribute('x')))));""")
    check(len(marks) == 4 and marks[0][1] > marks[0][0] > marks[3][1], f"slower is right of the middle, faster left ({marks})")


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
            check(count(browser) > 1, "without the chart library the table is there")
            check("No charts" in browser.run("return document.querySelector('.notice').textContent"),
                  "and the page says what is missing")
            use_pair_page(browser, check, arguments.report, pathlib.Path(directory))
            use_large_page(browser, check, arguments.report, pathlib.Path(directory))
            messages = [entry["message"] for entry in browser.messages()]
            check(not messages, "no message on the console " + " ".join(messages))
        finally:
            browser.close()
    return 1 if check.failures else 0


if __name__ == "__main__":
    sys.exit(main())
