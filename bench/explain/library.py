#!/usr/bin/env python3
"""What limits each function of the library on this machine, as benchex-explain has it.

    bench/explain/library.py [--build DIRECTORY] [--write] [NAME...]

Runs the suite once for a table of results, takes of each function (those that NAME is a part of) the longest call that
is not too long to be stepped through, and lets benchex-explain tell about that line of the table. Prints a table;
--write puts it into docs/library.md, between the marks "limits".
"""

import argparse
import csv
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "bench"))
import marked  # noqa: E402  pylint: disable=wrong-import-position
MOST_MICROSECONDS = 15  # 100,000 instructions or so
MOST_STEPS = 400_000


def run(words):
    done = subprocess.run([str(word) for word in words], text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    if done.returncode not in (0, 1):
        sys.exit(f"{words[0]} ended with {done.returncode}: {done.stderr}{done.stdout}")
    return done.stdout


def lines_of(table):
    """Line number and microseconds of a call of each row, by function."""
    with open(table, newline="", encoding="utf-8") as file:
        rows = csv.reader(file)
        titles = None
        functions = {}
        for row in rows:
            if "Function" in row:
                titles = row
            elif titles and len(row) == len(titles):
                cells = dict(zip(titles, row))
                try:
                    microseconds = float(cells[next(title for title in titles if "usec" in title)])
                except ValueError:
                    continue
                name = "_".join(cells[title] for title in ("Function", "Types", "Descriptor") if cells[title] != "-")
                functions.setdefault(name, []).append((rows.line_num, microseconds))
        return functions


def chosen(rows):
    short = [row for row in rows if row[1] <= MOST_MICROSECONDS]
    return max(short, key=lambda row: row[1])[0] if short else min(rows, key=lambda row: row[1])[0]


def cell(call):
    count = f"{call['instructions']:,}" + ("" if call["complete"] else " at least")
    if "clocks" not in call or "limit" not in call:
        return f"{count} | | | | "
    share = f"{100 * call['limitShare']:.0f} %" if "limit" in call else ""
    left = call["clocks"] * (1 - call["limitShare"]) if call.get("limit", "").find("waiting") < 0 else call["clocks"]
    return f"{count} | {call.get('instructionsPerClock', 0):.2f} | {call.get('limit', '')} | {share} | {left:,.0f}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build")
    parser.add_argument("--write", action="store_true")
    parser.add_argument("names", nargs="*")
    arguments = parser.parse_args()
    start = time.time()
    calls = []
    with tempfile.TemporaryDirectory() as directory:
        table = pathlib.Path(directory) / "suite.csv"
        run([arguments.build / "bin/benchex", "-B", f"-r{table}"])
        for function, rows in lines_of(table).items():
            if arguments.names and not any(name in function for name in arguments.names):
                continue
            text = run([arguments.build / "bin/benchex-explain", "--json", "--blocks", 0, "--most", MOST_STEPS,
                        "--table", table, "--line", chosen(rows)])
            calls += json.loads(text)["calls"]
            print(f"{function}: {cell(calls[-1])}", file=sys.stderr, flush=True)
    calls.sort(key=lambda call: call["function"])
    lines = ["| function | parameters | instructions | a clock | limit | share | clocks left |", "|---" * 7 + "|"]
    lines += [f"| {call['function']} | {call['parameters']} | {cell(call)} |" for call in calls]
    lines += ["", f"{len(calls)} functions, {time.strftime('%Y-%m-%d')}, bench/explain/library.py, {time.time() - start:.0f} s, "
                  f"load {os.getloadavg()[1]:.1f}."]
    print("\n".join(lines))
    if arguments.write:
        marked.write("library.md", "limits", lines)
    return 0


if __name__ == "__main__":
    sys.exit(main())
