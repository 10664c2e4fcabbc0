#!/usr/bin/env python3
"""Does benchex-explain name the limits of functions that have only one?

    bench/explain/limits.py [--build DIRECTORY] [--tries 100] [--large 10] [--write]

The functions of known.cpp do one thing each, as fast as it can be done: their limit is known, and it explains all of
their clocks. Three phases of equal length have none. The machine is measured once, into a directory of its own; then
each try explains every function anew. A name is right when it is that of what the function does; a value when the bound
stands within 5 % of the measured clocks, and not above their interval. The copy that is larger than any cache is stepped
through for half a minute, so it is tried fewer times (--large).

Prints a table; --write puts it into docs/explain.md, between the marks "limits". Exit status 1 when less than 95 % of
the tries of a function are right.
"""

import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "bench"))
import marked  # noqa: E402  pylint: disable=wrong-import-position
WAITING = "latency or waiting"
# What the answer begins with; for the last two nothing explains half.
KNOWN = {
    "known_multiplyAdds": "multiply-add",
    "known_loads": "loads",
    "known_stores": "stores",
    "known_divides": "divide",
    "known_branches": "taken branches",
    "known_chain": "chain",
    "known_copy": "new lines",
    "known_mixed_fds": "undecided",
    "known_mixed_lcb": "undecided",
}
LARGE = ("known_copy", 2, 3_500_000)


class Explainer:
    def __init__(self, build, cache):
        self.words = [str(build / "bin/benchex-explain"), "--json", "--blocks", "0",
                      "--program", str(build / "bin/explain_known")]
        self.environment = dict(os.environ, XDG_CACHE_HOME=cache)

    def calls(self, *words):
        done = subprocess.run([*self.words, *words], text=True, env=self.environment, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if done.returncode != 0:
            sys.exit(f"benchex-explain ended with {done.returncode}: {done.stderr}")
        return json.loads(done.stdout)["calls"]


def answer(call):
    """What is named, and the clocks that it needs at least."""
    bound, chain = call["bounds"][0], call["chain"]
    if bound["clocks"] >= 0.5 * call["clocks"]:
        return bound["name"], bound["clocks"]
    if chain["clocks"] >= 0.5 * call["clocks"]:
        return "chain", chain["clocks"]
    return "undecided", max(bound["clocks"], chain["clocks"])


class Row:
    def __init__(self, name, expected):
        self.name, self.expected = name, expected
        self.named, self.close, self.above = 0, 0, 0
        self.shares, self.others = [], []

    def take(self, call):
        name, clocks = answer(call)
        share = clocks / call["clocks"]
        right = name.startswith(self.expected)
        self.shares.append(share)
        self.named += right
        if not right:
            self.others.append(name)
        self.close += right and (self.expected == "undecided" or 0.95 <= share <= 1.05)
        self.above += clocks > call.get("interval", [0, call["clocks"]])[1]

    @property
    def tries(self):
        return len(self.shares)

    def line(self):
        spread = f"{100 * min(self.shares):.1f} to {100 * max(self.shares):.1f}"
        others = ", ".join(sorted(set(self.others)))
        return (f"| {self.name} | {self.expected} | {self.named} of {self.tries} | {self.close} of {self.tries} | "
                f"{100 * statistics.median(self.shares):.1f} | {spread} | {self.above} | {others} |")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build")
    parser.add_argument("--tries", type=int, default=100)
    parser.add_argument("--large", type=int, default=10)
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()
    start = time.time()
    rows = {name: Row(name, expected) for name, expected in KNOWN.items()}
    large = Row(LARGE[0] + ", beyond all caches", KNOWN[LARGE[0]])
    with tempfile.TemporaryDirectory() as cache:
        explainer = Explainer(arguments.build.resolve(), cache)
        for i in range(arguments.tries):
            for call in explainer.calls(*KNOWN):
                rows[call["function"]].take(call)
            if i * arguments.large // arguments.tries < (i + 1) * arguments.large // arguments.tries:
                name, row, most = LARGE
                for call in explainer.calls(name, "--row", str(row), "--most", str(most)):
                    large.take(call)
    every = [row for row in (*rows.values(), large) if row.tries]
    lines = ["| function | its limit | named | and within 5 % | share of the clocks, median % | least and most % | "
             "above the interval | other answers |", "|---" * 8 + "|"]
    lines += [row.line() for row in every]
    lines += ["", f"{sum(row.named for row in every)} of {sum(row.tries for row in every)} named right, "
                  f"{sum(row.close for row in every)} within 5 %. {time.strftime('%Y-%m-%d')}, bench/explain/limits.py, "
                  f"{time.time() - start:.0f} s, load {os.getloadavg()[1]:.1f}."]
    print("\n".join(lines))
    if arguments.write:
        marked.write("explain.md", "limits", lines)
    return 0 if all(row.close >= 0.95 * row.tries for row in every) else 1


if __name__ == "__main__":
    sys.exit(main())
