#!/usr/bin/env python3
"""How good `benchex-compare --pair` is on this machine, against its goals.

    bench/pair/goals.py [--surroundings calm|load|both] [--quick] [--build DIRECTORY] [--write]

Compares kernels of the library with themselves made slower by an exact share (repeat.cpp), and the whole suite with
a copy of itself, and with one function slower; on the machine as it is ("calm") and beside a load that comes and goes on all cores
("load"). Prints a table; --write puts it into docs/measurement.md, between the marks "pair-goals"; the column of
surroundings that were not measured stays as it stands there. Half an hour for each of the surroundings at most, --quick
some minutes.
"""

import argparse
import json
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
# Kernels that may be called again and again with the same arguments, and the keys that leave one row of each.
KERNELS = {
    "zorsMakeFloat_16s32f": ["-dLength=256"],
    "zorsInterleave_16s": ["-dNumber of channels=2", "-dLength=100"],
    "zorsInterleave_32f": ["-dNumber of channels=2", "-dLength=100"],
    "zorsDeinterleave_32f": ["-dNumber of channels=2", "-dLength=100"],
}
SUITE_FUNCTION = "zorsMakeFloat_16s32f"
SHARES = [  # slowdown, REPEAT on the slow side (one less on the other), seconds, threshold in per cent, goal of 100
    (0.01, 101, 1, 0.5, 100),
    (0.005, 201, 1, 0.25, 99),
    (0.0025, 401, 5, 0.12, 90),
]
DECISION = 1  # threshold of the suite, per cent


class Load:
    """Busy loops on all cores, each for a moment and then not for a moment."""

    PROGRAM = ("import random,time\n"
               "while True:\n"
               "  end=time.time()+random.uniform(.05,2)\n"
               "  while time.time()<end: pass\n"
               "  time.sleep(random.uniform(.05,2))\n")

    def __enter__(self):
        self.processes = [subprocess.Popen([sys.executable, "-c", self.PROGRAM]) for _ in range(os.cpu_count())]

    def __exit__(self, *_):
        for process in self.processes:
            process.kill()
            process.wait()


class Calm:
    def __enter__(self):
        pass

    def __exit__(self, *_):
        pass


class Bench:
    def __init__(self, build, work):
        self.compare = str(build / "bin" / "benchex-compare")
        self.work = work
        self.libraries = {}
        self.held = [0, 0]  # intervals that hold the true ratio, of all

    def library(self, function):
        """The library that repeats a function's calls."""
        if function not in self.libraries:
            path = os.path.join(self.work, f"{function}.so")
            subprocess.run([os.environ.get("CXX", "g++"), "-O2", "-fPIC", "-shared", f"-DREPEATED={function}",
                            str(ROOT / "bench/pair/repeat.cpp"), "-o", path, "-ldl"], check=True)
            self.libraries[function] = path
        return self.libraries[function]

    def side(self, function, repeat):
        return f"LD_PRELOAD={self.library(function)} REPEAT={repeat}"

    def run(self, before, after, seconds, threshold, keys):
        command = [self.compare, "--pair", before, after, "--json", "--seconds", str(seconds), "--threshold", str(threshold),
                   "--seed", str(random.randrange(1 << 30)), "--", *keys]
        run = subprocess.run(command, text=True, capture_output=True)
        if run.returncode not in (0, 1):
            sys.exit(f"{' '.join(command)}\n{run.stderr}")
        return json.loads(run.stdout)

    def hold(self, row, truth):
        if row.get("low") and row.get("high"):
            self.held[0] += row["low"] <= truth <= row["high"]
            self.held[1] += 1

    def found(self, share, repeat, seconds, threshold, tries):
        """How many of the slowed kernels were called slower."""
        count = 0
        for i in range(tries):
            function = list(KERNELS)[i % len(KERNELS)]
            sides = self.side(function, repeat - 1), self.side(function, repeat)
            row, = self.run(*sides, seconds, threshold, [f"-f={function}", *KERNELS[function]])["rows"]
            count += row["verdict"] == "slower"
            self.hold(row, 1 + 1 / (repeat - 1))
        return count

    def copies(self):
        """Two fresh copies of the library: builds are different files, in different memory."""
        for name in ("before", "after"):
            place = pathlib.Path(self.work, name)
            shutil.rmtree(place, ignore_errors=True)
            place.mkdir()
            for library in pathlib.Path(self.compare).parent.glob("libzor*.so"):
                shutil.copy(library, place)
            yield str(place)

    def suite(self, slowed, tries):
        """Runs with a false alarm, runs that found the slowed function, times."""
        alarms = hits = undecided = 0
        times = []
        for _ in range(tries):
            before, after = self.copies()
            if slowed:
                before += " " + self.side(SUITE_FUNCTION, 50)
                after += " " + self.side(SUITE_FUNCTION, 51)
            result = self.run(before, after, 300, DECISION, [])
            named = [row for row in result["rows"] if row["verdict"] in ("slower", "faster")]
            truth = {row["function"] for row in named if slowed and row["verdict"] == "slower"}
            alarms += any(not slowed or row["function"] != SUITE_FUNCTION or row["verdict"] == "faster" for row in named)
            hits += SUITE_FUNCTION in truth
            undecided += result["cannotTell"]
            times.append(result["seconds"])
            if not slowed:
                for row in result["rows"]:
                    self.hold(row, 1)
        return alarms, hits, times, undecided


def measure(bench, surroundings, quick):
    """The rows of the table in these surroundings."""
    share = 10 if quick else 100
    suites = 2 if quick else 20
    with surroundings:
        bench.held = [0, 0]
        for slowdown, repeat, seconds, threshold, goal in SHARES:
            tries = max(5, share // 2) if quick and seconds > 1 else share
            count = bench.found(slowdown, repeat, seconds, threshold, tries)
            yield f"{100 * slowdown:g} % slower, {seconds} s: found", f"{goal} of 100", f"{count} of {tries}"
        alarms, _, times, undecided = bench.suite(False, suites)
        yield "the suite against a copy of itself: runs with any false alarm", "at most 1 of 20", f"{alarms} of {suites}"
        worst = max(times)
        slow_alarms, hits, _, _ = bench.suite(True, suites)
        yield "the suite with one function 2 % slower: found", "20 of 20", f"{hits} of {suites}"
        yield "and another one called", "0 of 20", f"{slow_alarms} of {suites}"
        held, all_ = bench.held
        yield "intervals that hold the true ratio", "93 to 98 %", f"{100 * held / all_:.1f} % of {all_}"
        yield "longest time for the suite, rows undecided in it", "300 s, 0", f"{worst:.0f} s, {undecided}"


def load_average():
    return " ".join(pathlib.Path("/proc/loadavg").read_text().split()[:3])


COLUMNS = {"calm": "the machine as it is", "load": "beside a load"}
PAGE = ROOT / "docs/measurement.md"
MARKED = re.compile(r"(<!-- pair-goals -->\n)(.*?)(<!-- /pair-goals -->)", re.S)


def stated(name):
    """What the page says of these surroundings: the figure of each row, and the line below the table."""
    lines = MARKED.search(PAGE.read_text())[2].splitlines()
    cells = [[cell.strip() for cell in line.strip("|").split("|")] for line in lines if line.startswith("|")]
    column = 2 + list(COLUMNS).index(name)
    figures = {row[0]: row[column] for row in cells[2:] if len(row) > column}
    remark = next((line for line in lines if line.startswith(COLUMNS[name].capitalize() + ":")), "")
    return figures, remark


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--write", action="store_true")
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build")
    parser.add_argument("--surroundings", choices=[*COLUMNS, "both"], default="both")
    arguments = parser.parse_args()
    goals = {}
    figures, remarks = {}, {}
    with tempfile.TemporaryDirectory() as work:
        bench = Bench(arguments.build, work)
        for name, surroundings in (("calm", Calm()), ("load", Load())):
            if arguments.surroundings not in (name, "both"):
                figures[name], remarks[name] = stated(name)
                continue
            start = time.time()
            loads = [load_average()]
            figures[name] = {}
            for what, goal, figure in measure(bench, surroundings, arguments.quick):
                goals[what] = goal
                figures[name][what] = figure
                print(f"{time.strftime('%H:%M:%S')} {name}: {what}: {figure} (goal {goal})", flush=True)
            loads.append(load_average())
            remarks[name] = (f"{COLUMNS[name].capitalize()}: {time.strftime('%Y-%m-%d %H:%M')}, "
                             f"{'--quick, ' if arguments.quick else ''}{time.time() - start:.0f} s, load averages "
                             f"{' and '.join(loads)} at the ends, {os.cpu_count()} processors.")
    lines = ["| what | goal | " + " | ".join(COLUMNS.values()) + " |", "|---" * (2 + len(COLUMNS)) + "|"]
    lines += [f"| {what} | {goal} | " + " | ".join(figures[name].get(what, "") for name in COLUMNS) + " |"
              for what, goal in goals.items()]
    lines += ["", *(remark + "\n" for remark in remarks.values() if remark)]
    table = "\n".join(lines).rstrip()
    print(table)
    if arguments.write:
        PAGE.write_text(MARKED.sub(lambda m: m[1] + table + "\n" + m[3], PAGE.read_text()))


if __name__ == "__main__":
    main()
