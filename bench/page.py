#!/usr/bin/env python3
"""How fast a report page of many rows opens, scrolls and filters in Chromium.

    bench/page.py [--report build/bin/benchex-report] [--rows 100000] [--times 5]

Needs chromium and chromium-driver. Prints every round and the medians.
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
import report_browser_test as page_test  # noqa: E402  the same browser, table and way to scroll


def round_of(browser, page):
    start = time.monotonic()
    browser.open(page.as_uri())
    page_test.count(browser)
    opened = time.monotonic() - start
    frames = browser.call("POST", browser.session + "/execute/async", {"script": page_test.SCROLLED, "args": []})
    filtered = browser.run("const start = performance.now(); const field = document.getElementById('filter');"
                           "field.value = 'zorsf99'; field.dispatchEvent(new Event('input'));"
                           "document.body.offsetHeight; return performance.now() - start;") / 1000
    return opened, statistics.median(frames) / 1000, frames[-1] / 1000, filtered


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--report", default=ROOT / "build/bin/benchex-report")
    parser.add_argument("--rows", type=int, default=100000)
    parser.add_argument("--times", type=int, default=5)
    options = parser.parse_args()
    titles = ("open", "frame, middle", "frame, longest", "filter")
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
            print("  " + ", ".join(f"{title} {value:.3f} s" for title, value in zip(titles, rounds[-1])), flush=True)
    print("median: " + ", ".join(f"{title} {statistics.median(column):.3f} s" for title, column in zip(titles, zip(*rounds))))


if __name__ == "__main__":
    main()
