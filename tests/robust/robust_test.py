#!/usr/bin/env python3
"""Shows that nothing is lost: kills runs at random moments, fills the disk, closes the reader, hangs up.

Each check runs the program under test in a directory of its own and prints one line with its figures.
"""

import argparse
import os
import pty
import random
import signal
import subprocess
import sys
import tempfile
import time

TIME_LIMIT = 120  # seconds for a run that has to end by itself
# So many calls that a run lasts long enough to be hit in its middle on a busy machine, too.
KEYS = ["-B", "-LP", "-dMethod=Manual", "-dNumLoops=1000"]
ENDLESS = "-dNumLoops=50000"  # for a run that is ended long before its end


class Failure(Exception):
    """What was lost."""


def require(condition, message):
    if not condition:
        raise Failure(message)


class Runs:
    """Starts the program in a directory of its own; -l sends its output files there."""

    def __init__(self, program, tests, directory):
        self.program = os.path.abspath(program)
        self.tests = tests
        self.directory = directory

    def path(self, name):
        return os.path.join(self.directory, name)

    def text(self, name):
        with open(self.path(name), encoding="utf-8", errors="replace") as file:
            return file.read()

    def start(self, *keys, **options):
        command = [self.program, *KEYS, "-t" + self.tests, "-l" + self.directory, "-p" + self.directory, *keys]
        options.setdefault("stdout", subprocess.DEVNULL)
        options.setdefault("stderr", subprocess.DEVNULL)
        return subprocess.Popen(command, stdin=subprocess.DEVNULL, cwd=self.directory, **options)

    def wait(self, run):
        """The exit status; a run that does not end is a failure."""
        try:
            return run.wait(TIME_LIMIT)
        except subprocess.TimeoutExpired:
            run.kill()
            raise Failure("the run does not end") from None


def measurements(listing):
    """Complete figure lines of a listing, which may end in the middle of one."""
    return sum("  perf=" in line for line in listing.split("\n")[:-1])


def rows(table):
    """Rows of figures in a result table; none of them cut."""
    require(not table or table.endswith("\n"), "the table ends within a row")
    lines = table.splitlines()
    heads = [i for i, line in enumerate(lines) if line.startswith("Function,")]
    if not heads:
        return 0
    cells = lines[heads[0]].count(",")
    figures = lines[heads[0] + 1:]
    require(all(line.count(",") == cells for line in figures), "a row has missing cells")
    return len(figures)


def is_complete(runs, name):
    return "| .Total time" in runs.text(name)


def kill_while_measuring(runs, times, rng):
    """kill -9: whole rows only, and every row that the listing shows."""
    started = time.monotonic()
    run = runs.start("-oo.txt", "-rr.csv")
    wait_for_rows(runs, run, "r.csv")
    first = time.monotonic() - started
    require(runs.wait(run) in (0, 1), "the run fails")
    duration = time.monotonic() - started
    total = rows(runs.text("r.csv"))
    seen = []
    for _ in range(times):
        for name in ("o.txt", "r.csv"):
            if os.path.exists(runs.path(name)):
                os.remove(runs.path(name))
        run = runs.start("-oo.txt", "-rr.csv")
        time.sleep(rng.uniform(0.9 * first, duration))
        run.kill()
        run.wait()
        table = rows(runs.text("r.csv")) if os.path.exists(runs.path("r.csv")) else 0
        listed = measurements(runs.text("o.txt")) if os.path.exists(runs.path("o.txt")) else 0
        require(table >= listed, f"the listing shows {listed} rows, the table has {table}")
        seen.append(table)
    within = sum(0 < n < total for n in seen)
    return f"{times} kills, {within} of them between the first and the last of {total} rows"


def kill_while_writing_ini(runs, times, rng):
    """kill -9: the ini file is the old one or the new one."""
    started = time.monotonic()
    require(runs.wait(runs.start("-Inew.ini")) == 0, "the run fails")
    duration = time.monotonic() - started
    new = runs.text("new.ini")
    old = "[Benchex]\nMethod = Manual\n" + "".join(f"; kept {i}\n" for i in range(50))
    with open(runs.path("old.ini"), "w", encoding="utf-8") as file:
        file.write(old)
    require(runs.wait(runs.start("-Iold.ini")) == 0, "the run fails")
    merged = runs.text("old.ini")
    require(new and merged != old, "the ini file was not written")
    outcomes = {old: 0, merged: 0}
    for _ in range(times):
        with open(runs.path("old.ini"), "w", encoding="utf-8") as file:
            file.write(old)
        run = runs.start("-Iold.ini")
        time.sleep(rng.uniform(0.2, 1.05) * duration)
        run.kill()
        run.wait()
        text = runs.text("old.ini")
        require(text in outcomes, f"neither the old nor the new file, {len(text)} bytes")
        outcomes[text] += 1
    return f"{times} kills: {outcomes[old]} times the old file, {outcomes[merged]} times the new one"


def full_disk(runs, *_):
    """A table on a full disk is named; the listing and the signal file are whole."""
    run = runs.start("-oo.txt", "-r/dev/full", "-gs.sgl")
    require(runs.wait(run) in (0, 1), "the run is ended by a signal")
    require(is_complete(runs, "o.txt"), "the listing is not whole")
    require("-- Can't write all of file /dev/full" in runs.text("o.txt"), "no message of the full disk")
    require(os.path.getsize(runs.path("s.sgl")) > 0, "the signal file is empty")
    with open("/dev/full", "w", encoding="utf-8") as full:
        run = runs.start("-oo.txt", "-rr.csv", stdout=full, stderr=subprocess.PIPE)
        errors = run.communicate(timeout=TIME_LIMIT)[1].decode()
    require(is_complete(runs, "o.txt") and rows(runs.text("r.csv")) > 0, "the files are not whole")
    require("standard output" in errors, "no message of the full standard output")
    return "table and standard output"


def closed_pipe(runs, *_):
    """The reader leaves after a line: files and signal file are whole."""
    run = runs.start("-oo.txt", "-rr.csv", "-gs.sgl", stdout=subprocess.PIPE)
    run.stdout.readline()
    run.stdout.close()
    require(runs.wait(run) in (0, 1), "the run is ended by a signal")
    require(is_complete(runs, "o.txt"), "the listing is not whole")
    require(rows(runs.text("r.csv")) >= measurements(runs.text("o.txt")) > 0, "rows are missing")
    require(os.path.getsize(runs.path("s.sgl")) > 0, "the signal file is empty")
    return f"{rows(runs.text('r.csv'))} rows"


def wait_for_rows(runs, run, name):
    """Waits until a run has written a row."""
    limit = time.monotonic() + TIME_LIMIT
    while time.monotonic() < limit and run.poll() is None:
        if os.path.exists(runs.path(name)) and rows_so_far(runs.text(name)) > 0:
            return
        time.sleep(0.002)
    raise Failure("the run ended before it was interrupted")


def rows_so_far(table):
    return rows(table[:table.rfind("\n") + 1])


def stopped_in_order(runs, status, name):
    listing = runs.text("o.txt")
    require(status == 1, f"exit status {status}")
    require(f"-- Interrupted by {name}: the run stops here" in listing, "the listing does not say so")
    require(is_complete(runs, "o.txt"), "the listing has no summary")
    require(rows(runs.text("r.csv")) >= measurements(listing) > 0, "rows are missing")
    require(os.path.getsize(runs.path("s.sgl")) > 0, "the signal file is empty")
    return rows(runs.text("r.csv"))


def clear(runs):
    for name in os.listdir(runs.directory):
        os.remove(runs.path(name))


def interrupted(runs, *_):
    """Ctrl-C and its relatives stop the run in order."""
    written = []
    for sig in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        clear(runs)
        run = runs.start(ENDLESS, "-oo.txt", "-rr.csv", "-gs.sgl")
        wait_for_rows(runs, run, "r.csv")
        run.send_signal(sig)
        written.append(stopped_in_order(runs, runs.wait(run), sig.name))
    return "stopped after " + ", ".join(map(str, written)) + " rows"


def hung_up(runs, *_):
    """The terminal of the run goes away: the files are whole."""
    child, terminal = pty.fork()
    if child == 0:
        os.execv(runs.program, [runs.program, *KEYS, ENDLESS, "-t" + runs.tests, "-l" + runs.directory,
                                "-oo.txt", "-rr.csv", "-gs.sgl"])
    limit = time.monotonic() + TIME_LIMIT
    while not (os.path.exists(runs.path("r.csv")) and rows_so_far(runs.text("r.csv")) > 0):
        require(time.monotonic() < limit, "no row")
        os.read(terminal, 65536)
    os.close(terminal)
    while True:
        done, status = os.waitpid(child, os.WNOHANG)
        if done:
            break
        require(time.monotonic() < limit, "the run does not end")
        time.sleep(0.01)
    require(os.WIFEXITED(status), "the run is ended by a signal")
    return f"stopped after {stopped_in_order(runs, os.WEXITSTATUS(status), 'SIGHUP')} rows"


CHECKS = {"full_disk": full_disk, "closed_pipe": closed_pipe, "interrupted": interrupted, "hung_up": hung_up,
          "kill_while_measuring": kill_while_measuring, "kill_while_writing_ini": kill_while_writing_ini}


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("--program", required=True, help="the program under test")
    arguments.add_argument("--tests", default="AAC", help="its tests, as -t selects them")
    arguments.add_argument("--times", type=int, default=100, help="number of kills")
    arguments.add_argument("--seed", type=int, default=1, help="of the moments at which runs are killed")
    arguments.add_argument("check", nargs="*", choices=[*CHECKS, []], help="all by default")
    options = arguments.parse_args()
    failures = 0
    for name in options.check or CHECKS:
        with tempfile.TemporaryDirectory() as directory:
            runs = Runs(options.program, options.tests, directory)
            try:
                print(f"{name}: {CHECKS[name](runs, options.times, random.Random(options.seed))}", flush=True)
            except Failure as failure:
                failures += 1
                print(f"{name}: FAILED: {failure}", flush=True)
    return failures != 0


if __name__ == "__main__":
    sys.exit(main())
