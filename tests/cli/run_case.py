#!/usr/bin/env python3
"""Runs a command-line test: a text with commands and the output that they must give.

In a case file every line that begins with two blanks is part of a test, everything else is text for the reader:

  $ a shell command          (run in a directory of its own, which the commands of a case share)
  > its next line            (if it has more)
  the lines that it writes   (standard output and errors together, without empty lines at the end)
  [1]                        (its exit status, unless that is 0)

The programs under test stand in that directory, so that their default files go there too. What differs from run
to run (dates, times, machine) is replaced by fixed words before the comparison.

With --update the case file is rewritten with the present output: read the difference before keeping it.
"""

import argparse
import difflib
import os
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
MARGIN = "  "
TIME_LIMIT = 120  # seconds for one command

MACHINE_LABELS = {"CPU": "<cpu>", "OS": "<os>", "Computer": "<computer>", "Library": "<library>"}
MONTHS = "Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec"
PATTERNS = [
    (re.compile(rf"(Benchex \d\.\d), ({MONTHS}) [ \d]\d \d{{4}}"), r"\1, <date>"),
    (re.compile(rf"(Mon|Tue|Wed|Thu|Fri|Sat|Sun) ({MONTHS}) [ \d]\d \d\d:\d\d:\d\d \d{{4}}"), "<time>"),
    (re.compile(r"\b\d\d:\d\d:\d\d\b"), "<h:m:s>"),
    (re.compile(r"^(CPU|OS|Computer|Library),.*"), lambda m: f"{m[1]},{MACHINE_LABELS[m[1]]}"),
]
# Cells that differ from run to run, by the head of their column.
CHANGING_CELLS = {"Time (sec.)": "<s>"}


class Normalizer:
    """Replaces what differs from run to run in the lines of one output."""

    def __init__(self):
        self.columns = {}  # number of cells in a row -> words for the changing ones
        self.in_machine_entry = False

    def line(self, text):
        """The line with fixed words, or None for a line that only continues one of the machine's."""
        framed = self.machine_line(text)
        if framed is not None:
            return framed or None
        for pattern, word in PATTERNS:
            text = pattern.sub(word, text)
        if text.startswith("|") and "<" in text:
            text = re.sub(r" +\|$", " |", text)
        return self.table_row(text)

    def machine_line(self, text):
        entry = re.match(r"\| (CPU|OS|Computer|Library) +: ", text)
        if entry:
            self.in_machine_entry = True
            return f"{entry[0]}{MACHINE_LABELS[entry[1]]} |"
        if self.in_machine_entry and re.match(r"\| {13}", text):
            return ""
        self.in_machine_entry = False
        return None

    def table_row(self, text):
        cells = text.split(",")
        if any(cell in CHANGING_CELLS for cell in cells):
            self.columns[len(cells)] = {i: CHANGING_CELLS[c] for i, c in enumerate(cells) if c in CHANGING_CELLS}
        elif len(cells) in self.columns:
            for i, word in self.columns[len(cells)].items():
                if re.fullmatch(r"[\d.e+-]*\d[\d.e+-]*", cells[i]):
                    cells[i] = word
        return ",".join(cells)


def normalized(output):
    normalizer = Normalizer()
    lines = (normalizer.line(line) for line in output.replace("\r\n", "\n").splitlines())
    return [line for line in lines if line is not None]


def provide_programs(directory, programs, emulator):
    """Puts each program into the directory under its own name."""
    for program in programs:
        place = os.path.join(directory, os.path.basename(program))
        if emulator:
            with open(place, "w", encoding="ascii") as script:
                script.write(f'#!/bin/sh\nexec {emulator} -0 "$0" {program} "$@"\n')
            os.chmod(place, 0o755)
        else:
            os.symlink(program, place)


def run_command(command, directory):
    """The output lines of a command as a case file shows them."""
    environment = dict(os.environ, PATH=HERE + os.pathsep + os.environ["PATH"], LC_ALL="C", TZ="UTC")
    environment.pop("ZOR_MAX_CACHE_SIZE", None)
    done = subprocess.run(["sh", "-c", command], cwd=directory, env=environment, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=TIME_LIMIT, check=False)
    lines = normalized(done.stdout.decode("utf-8", "replace"))
    while lines and not lines[-1]:  # looks like the text that follows the test
        lines.pop()
    return lines + ([f"[{done.returncode}]"] if done.returncode else [])


def run_case(lines, directory):
    """The case file as it would read with the output of today."""
    result = []
    i = 0
    while i < len(lines):
        result.append(lines[i])
        command = lines[i][len(MARGIN) + 2:] if lines[i].startswith(MARGIN + "$ ") else None
        i += 1
        if command is None:
            continue
        while i < len(lines) and lines[i].startswith(MARGIN + "> "):
            command += "\n" + lines[i][len(MARGIN) + 2:]
            result.append(lines[i])
            i += 1
        result += [MARGIN + line if line else "" for line in run_command(command, directory)]
        while i < len(lines) and is_output(lines, i):
            i += 1
    return result


def is_output(lines, i):
    """Expected output; an empty line belongs to it when more output of the same command follows."""
    if lines[i].startswith(MARGIN):
        return not lines[i].startswith(MARGIN + "$ ")
    following = next((line for line in lines[i:] if line), "")
    return not lines[i] and following.startswith(MARGIN) and not following.startswith(MARGIN + "$ ")


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("--program", action="append", default=[], help="a program under test (repeatable)")
    arguments.add_argument("--emulator", default="", help="command that runs the programs")
    arguments.add_argument("--update", action="store_true", help="rewrite the case files")
    arguments.add_argument("case", nargs="+")
    options = arguments.parse_args()
    failures = 0
    for case in options.case:
        with open(case, encoding="utf-8") as file:
            expected = file.read().split("\n")
        with tempfile.TemporaryDirectory() as directory:
            provide_programs(directory, options.program, options.emulator.replace(";", " "))
            actual = run_case(expected, directory)
        if actual == expected:
            continue
        failures += 1
        if options.update:
            with open(case, "w", encoding="utf-8") as file:
                file.write("\n".join(actual))
        print("\n".join(difflib.unified_diff(expected, actual, case, "this run", lineterm="")))
    return 1 if failures and not options.update else 0


if __name__ == "__main__":
    sys.exit(main())
