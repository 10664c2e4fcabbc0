#!/usr/bin/env python3
"""Compares the counts of Instructions=yes with those of callgrind, on the SSE2 path, which valgrind knows.

Usage: callgrind_check.py PROGRAM [FUNCTION...]

Each function is run at its first combination. callgrind collects inside the call of the test alone; it counts every
iteration of a repeated string instruction, so it is compared with the steps. Both sides bind all symbols at start, and
use the C library's plain SSE2 routines. Without valgrind there is nothing to compare, which is no error.
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile

# Processor features whose routines valgrind does not know, or not on every processor.
PLAIN = "glibc.cpu.hwcaps=-AVX512F,-AVX512VL,-AVX512BW,-AVX2,-AVX,-ERMS,-FSRM,-SSSE3,-SSE4_1,-SSE4_2,-BMI2,-MOVBE,-RTM"


def run(command, environment, folder):
    return subprocess.run(command, capture_output=True, text=True, env=environment, cwd=folder, check=False)


def listed(program):
    shown = subprocess.run([program, "-B", "-e"], capture_output=True, text=True, check=False).stdout
    return re.findall(r"^ *\d+\t(\w+)\t", shown, re.MULTILINE)


def first_combination(program, function, environment, folder):
    """The -d settings of the first combination, and the steps of its call."""
    options = [program, "-B", "-TSSE2", "-f=" + function, "-LP", "-dMethod=Manual", "-dNumLoops=1"]
    shown = run(options + ["-dInstructions=yes", "-dInstructionsMost=100000"], environment, folder).stdout
    match = re.search(r"^(.*)\n.*\binstr=(\d+)(?: steps=(\d+))?", shown, re.MULTILINE)
    if not match:
        return None, None
    settings = ["-d" + word for word in re.findall(r"(\w+=\S+)", match.group(1))]
    return options + settings, int(match.group(3) or match.group(2))


def callgrind(options, function, environment, folder):
    """Instructions of the one call that is made outside of the timed loop; None for several combinations."""
    command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=calls", "--dump-instr=no",
               f"--toggle-collect=*tcall_{function}(*"]
    done = run(command + options, environment, folder)
    collected = re.search(r"Collected *: (\d+)", done.stderr)
    try:
        with open(os.path.join(folder, "calls"), encoding="utf-8") as file:
            text = file.read()
    except OSError:
        return None
    one = done.stdout.count(" perf=") == 1 and "tcall_" in text
    return int(collected.group(1)) if collected and one else None


def main():
    if not shutil.which("valgrind"):
        print("no valgrind: nothing compared")
        return 0
    program = os.path.abspath(sys.argv[1])
    functions = sys.argv[2:] or listed(program)
    environment = dict(os.environ, LD_BIND_NOW="1", GLIBC_TUNABLES=PLAIN)
    equal, differing, skipped = 0, [], []
    with tempfile.TemporaryDirectory() as folder:
        for function in functions:
            options, steps = first_combination(program, function, environment, folder)
            counted = callgrind(options, function, environment, folder) if options else None
            if counted is None:
                skipped.append(function)
                continue
            print(f"{function:40} {steps:8} {counted:8} {'' if steps == counted else 'differs'}", flush=True)
            if steps == counted:
                equal += 1
            else:
                differing.append(function)
    print(f"{equal} equal, {len(differing)} differ, {len(skipped)} not compared: {' '.join(skipped)}")
    return 1 if differing else 0


if __name__ == "__main__":
    sys.exit(main())
