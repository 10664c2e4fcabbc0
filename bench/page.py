#!/usr/bin/env python3
"""How fast a report page of many rows opens, scrolls and filters in Chromium.

    bench/page.py [--report build/bin/benchex-report] [--rows 100000] [--times 5]

Needs chromium and chromium-driver. Scrolled is three ways: the page from top to end at 1800 pixels a second, the
table by three lines a frame as a wheel does, and the table from end to end in a hundred jumps. Prints every round, and
for each way the times between two frames of all rounds: middle, 95th and 99th percentile, longest. "empty" is the same
way through a page of one long empty block: what the browser takes by itself on this machine.
"""
import argparse
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/tools"))
import report_browser_test as page_test  # noqa: E402  the same browser and table

# The times between two frames, milliseconds, while `place(step)` is called once a frame.
FRAMES = """
const done = arguments[arguments.length - 1];
const frame = document.getElementById('rows');
const times = [];
let step = 0, last;
const next = now => {
  if (last !== undefined) times.push(now - last);
  last = now;
  if (place(step++)) requestAnimationFrame(next); else done(times);
};
const start = () => setTimeout(() => requestAnimationFrame(next), 1000);
"""
PAGE = "const place = step => { scrollTo(0, 30 * step); return step < 400; }; scrollTo(0, 0); start();"
WAYS = {
    "page": PAGE,
    "table, wheel": "const place = step => { frame.scrollTop = 50000 + 78 * step; return step < 300; };"
                    "frame.scrollIntoView(); start();",
    "table, jumps": "const place = step => { frame.scrollTop = frame.scrollHeight * step / 100; return step < 100; };"
                    "frame.scrollIntoView(); start();",
}
EMPTY = "data:text/html,<body style='height: 20000px'>"


def frames(browser, way):
    return browser.call("POST", browser.session + "/execute/async", {"script": FRAMES + way, "args": []})


def round_of(browser, page):
    start = time.monotonic()
    browser.open(page.as_uri())
    page_test.count(browser)
    opened = time.monotonic() - start
    scrolled = {name: frames(browser, way) for name, way in WAYS.items()}
    filtered = browser.run("const start = performance.now(); const field = document.getElementById('filter');"
                           "field.value = 'zorsf99'; field.dispatchEvent(new Event('input'));"
                           "document.body.offsetHeight; return performance.now() - start;") / 1000
    browser.open(EMPTY)
    scrolled["empty"] = frames(browser, PAGE)
    return opened, filtered, scrolled


def summary(times):
    cuts = statistics.quantiles(times, n=100, method="inclusive")
    return f"{statistics.median(times):.0f} / {cuts[94]:.0f} / {cuts[98]:.0f} / {max(times):.0f} ms"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--report", default=ROOT / "build/bin/benchex-report")
    parser.add_argument("--rows", type=int, default=100000)
    parser.add_argument("--times", type=int, default=5)
    options = parser.parse_args()
    rounds = []
    with tempfile.TemporaryDirectory() as directory:
        table, page = pathlib.Path(directory) / "large.csv", pathlib.Path(directory) / "large.html"
        page_test.large_table(table, options.rows)
        start = time.monotonic()
        subprocess.run([options.report, table, "-o", page], check=True, capture_output=True)
        print(f"{options.rows} rows: written in {time.monotonic() - start:.2f} s, {page.stat().st_size / 1e6:.1f} MB")
        for _ in range(options.times):
            browser = page_test.Browser(shutil.which("chromedriver"), shutil.which("chromium"))
            try:
                rounds.append(round_of(browser, page))
            finally:
                browser.close()
            opened, filtered, scrolled = rounds[-1]
            print(f"  open {opened:.2f} s, filter {filtered:.2f} s, frames " +
                  ", ".join(f"{name} {summary(times)}" for name, times in scrolled.items()), flush=True)
    print(f"median: open {statistics.median(r[0] for r in rounds):.2f} s, filter {statistics.median(r[1] for r in rounds):.2f} s")
    print("frames, middle / 95 % / 99 % / longest:")
    for name in rounds[0][2]:
        print(f"  {name:13} {summary([time for r in rounds for time in r[2][name]])}")


if __name__ == "__main__":
    main()
