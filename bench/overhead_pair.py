#!/usr/bin/env python3
"""What a combination of parameter values costs outside of the timed regions, in two builds by turns:

    bench/overhead_pair.py OLD/overhead_bench NEW/overhead_bench [pairs]

Prints medians of wall and processor time a combination, from 1 to 30,000 of them, and their ratio in a pair. By turns,
so that a slow minute of the machine falls on both.
"""
import os
import statistics
import sys
import tempfile
import time


def run(program, directory, combinations):
    """Wall and processor seconds of one process."""
    start = time.monotonic()
    process = os.fork()
    if process == 0:
        quiet = os.open(os.devnull, os.O_WRONLY)
        os.dup2(quiet, 1)
        os.dup2(quiet, 2)
        os.execv(program, [program, "benchex", directory, str(combinations)])
    _, status, usage = os.wait4(process, 0)
    if status != 0:
        sys.exit(f"{program} failed")
    return time.monotonic() - start, usage.ru_utime + usage.ru_stime


def cost(program, directory):
    """Microseconds a combination, of wall and of processor time."""
    many = 30_000
    few, much = run(program, directory, 1), run(program, directory, many)
    return [1e6 * (b - a) / (many - 1) for a, b in zip(few, much)]


def main():
    programs = sys.argv[1:3]
    pairs = int(sys.argv[3]) if len(sys.argv) > 3 else 10
    with tempfile.TemporaryDirectory() as directory:
        measured = [[cost(program, directory) for program in programs] for _ in range(pairs)]
        for kind, name in enumerate(("wall", "processor")):
            old, new = ([pair[side][kind] for pair in measured] for side in (0, 1))
            ratio = statistics.median(b / a for a, b in zip(old, new))
            print(f"{name} time a combination: {statistics.median(old):.2f} us, then {statistics.median(new):.2f} us; "
                  f"ratio {ratio:.3f} (medians of {pairs} pairs, least {min(old):.2f} and {min(new):.2f})")


if __name__ == "__main__":
    main()
