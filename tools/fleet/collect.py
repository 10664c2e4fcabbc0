#!/usr/bin/env python3
"""Collects the tables of slices, and names the slices that died.

    collect.py [-o TABLES] OUT...

OUT is the directory of a run of slices: its file "slices", and parts/slice-1, parts/slice-2 and so on as
run_slice.sh writes them. The rows are joined to one table for each machine, <Computer>.csv, and one summary table,
<Computer>_sum.csv, in TABLES (the first OUT's directory "tables"); rows of different machines, systems or
libraries are never joined. benchex-report and benchex-compare read that directory.

A slice died when its program did not reach the end of its run. It is named, with what it did not measure as keys
for another run; the rows that it wrote are kept.

Exit status: 0 all slices are complete, 1 so they are but a test failed, 2 a slice died.
"""
import argparse
import pathlib
import re
import signal
import sys

END_OF_TESTS = "END_DATA"
FREQUENCY = re.compile(r"([\d.]+) GHz")


class Table:
    """A csv file of the program: lines that tell of the machine, a heading, rows, and counts of a summary."""

    def __init__(self, path):
        text = path.read_text(errors="replace") if path.exists() else ""
        lines = text.split("\n")[:-1]  # a last line without its end was cut off
        start = next((i for i, line in enumerate(lines) if line.startswith("Function,")), len(lines))
        self.head = lines[:start]
        self.heading = lines[start] if start < len(lines) else None
        body = lines[start + 1:]
        self.rows = body[:body.index(END_OF_TESTS)] if END_OF_TESTS in body else body

    def machine(self):
        """All that has to be the same for rows to stand in one table."""
        lines = (FREQUENCY.sub("GHz", line) for line in self.head if not line.startswith("Start,"))
        return tuple(lines) + (self.heading,)

    def frequency(self):
        """As the program estimated it; it differs a little from run to run."""
        return next((found[1] for line in self.head if (found := FREQUENCY.search(line))), "unknown")

    def column(self, name):
        at = self.heading.split(",").index(name) if self.heading else 0
        return [row.split(",")[at] for row in self.rows]


class Slice:
    """One slice: what it was to measure, and what came of it."""

    def __init__(self, directory, number, keys):
        part = directory / "parts" / f"slice-{number}"
        self.name = f"{directory.name or directory.resolve().name}/slice-{number}"
        self.keys = keys.split()
        self.results = Table(part / "slice.csv")
        self.summary = Table(part / "slice_sum.csv")
        status = part / "slice.status"
        self.status = int(status.read_text()) if status.exists() and status.read_text().strip() else None
        self.ended = (part / "slice.end").exists()

    def missing(self):
        """The keys of which the summary knows nothing."""
        done = {"-f=": set(self.summary.column("Function")), "-t=": set(self.summary.column("Test"))}
        return [key for key in self.keys if key[3:] not in done[key[:3]]]

    def death(self):
        """Why the slice counts as died, or None."""
        if self.status is None:
            return "no exit status: not started, or its machine is gone"
        if self.status > 128:
            return f"ended by {signal_name(self.status - 128)}"
        if self.status > 1:
            return f"exit status {self.status}"
        if not self.ended:
            return "the program left no signal file"
        return "tests are missing" if self.missing() else None


def signal_name(number):
    try:
        return signal.Signals(number).name
    except ValueError:
        return f"signal {number}"


def slices_of(directory):
    lines = (directory / "slices").read_text().splitlines()
    return [Slice(directory, number, keys) for number, keys in enumerate(lines, 1)]


def order_of(slices):
    """Place of each function in a run of all: the slices were dealt out like cards."""
    places = {}
    for round_ in range(max((len(s.keys) for s in slices), default=0)):
        for one in slices:
            if round_ < len(one.keys):
                places.setdefault(one.keys[round_][3:], len(places))
    return places


def function_of(row):
    """The full name of a row's function: name, types and variant stand in cells of their own."""
    return "_".join(cell for cell in row.split(",")[:3] if cell != "-")


def write_joined(path, tables, name_of, order):
    rows = [row for table in tables for row in table.rows]
    rows.sort(key=lambda row: order.get(name_of(row), len(order)))  # stable: a function's rows keep their order
    lines = tables[0].head + [tables[0].heading] + rows
    path.write_text("\n".join(lines) + "\n")
    return len(rows)


def grouped_by_machine(tables):
    groups = {}
    for table in tables:
        if table.heading:
            groups.setdefault(table.machine(), []).append(table)
    return groups.values()


def file_title(table, used):
    computer = next((line.split(",", 1)[1] for line in table.head if line.startswith("Computer,")), "tables")
    title = re.sub(r"[^\w.-]", "_", computer)
    used[title] = used.get(title, 0) + 1
    return title if used[title] == 1 else f"{title}-{used[title]}"


def write_tables(slices, directory):
    directory.mkdir(parents=True, exist_ok=True)
    for old in directory.glob("*.csv"):
        old.unlink()
    order = order_of(slices)
    used = {}
    for tables in grouped_by_machine([s.results for s in slices]):
        title = file_title(tables[0], used)
        count = write_joined(directory / f"{title}.csv", tables, function_of, order)
        print(f"{directory / title}.csv: {count} rows of {len(tables)} slices")
        frequencies = sorted({table.frequency() for table in tables})
        if len(frequencies) > 1:
            print(f"    estimated at {' and '.join(frequencies)} GHz: compare clocks, not microseconds and MFlops")
    used = {}
    for tables in grouped_by_machine([s.summary for s in slices]):
        title = file_title(tables[0], used)
        write_joined(directory / f"{title}_sum.csv", tables, lambda row: row.split(",")[0], order)


def report(slices):
    """Tells what came of the slices; returns the exit status."""
    dead = [s for s in slices if s.death()]
    for one in dead:
        missing = one.missing()
        print(f"{one.name} died: {one.death()}; {len(missing)} of {len(one.keys)} not finished", file=sys.stderr)
        if missing:
            print("    run again: " + " ".join(missing), file=sys.stderr)
    failed = [s for s in slices if s.status == 1]
    for one in failed:
        print(f"{one.name}: a test failed", file=sys.stderr)
    print(f"{len(slices) - len(dead)} of {len(slices)} slices complete")
    return 2 if dead or not slices else 1 if failed else 0


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("-o", "--output", type=pathlib.Path, help="directory for the joined tables")
    arguments.add_argument("out", nargs="+", type=pathlib.Path)
    options = arguments.parse_args()
    try:
        slices = [one for directory in options.out for one in slices_of(directory)]
    except FileNotFoundError as error:
        print(f"collect.py: {error.filename}: no such file", file=sys.stderr)
        return 2
    write_tables(slices, options.output or options.out[0] / "tables")
    return report(slices)


if __name__ == "__main__":
    sys.exit(main())
