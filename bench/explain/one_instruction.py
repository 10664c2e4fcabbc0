#!/usr/bin/env python3
"""Is one instruction that is put into a function found while the machine is busy?

    bench/explain/one_instruction.py [--build DIRECTORY] [--functions 20] [--write]

Puts one "nop" at the beginning of one function of the library at a time, builds the shared library that holds it, and
counts with `benchex-compare --pair --instructions` what calls execute in that library and in the one that stands: of
this function, and of as many others that every function of the suite is among them at some time. Meanwhile a loop
keeps each core busy. Found means: every row of the function executes one instruction more for each time that it calls
it, and no row of any other is named. Prints a table; --write puts it into docs/explain.md, between the marks "one-instruction". Exit
status 1 when something is not found, or something else is.
"""

import argparse
import contextlib
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "bench"))
import marked  # noqa: E402  pylint: disable=wrong-import-position
sys.path.insert(0, str(ROOT / "bench/pair"))
import faults  # noqa: E402  pylint: disable=wrong-import-position
LONG = 1_000_000  # steps of a function all of whose rows are long
# How often a row's call calls its function, where that is not once: 2048 samples in slots of 32.
CALLS = {"zorsAnalysisFilter_PQMF_MP3_32f": 64, "zorsSynthesisFilter_PQMF_MP3_32f": 64}


@contextlib.contextmanager
def busy():
    loops = [subprocess.Popen([sys.executable, "-c", "while True: pass"]) for _ in range(os.cpu_count())]
    try:
        yield
    finally:
        for loop in loops:
            loop.kill()
            loop.wait()


def definitions():
    """File and place of the first statement of each function of the interface."""
    found = {}
    for path in sorted(faults.SOURCES.rglob("*.cpp")):
        for match in re.finditer(r"^(?:extern \"C\" )?ZorStatus (zors\w+)\([^{;]*?\) \{\n", path.read_text(), re.M):
            found[match[1]] = (str(path.relative_to(faults.SOURCES)), match.end())
    return found


def count(compare, directory, functions, most=60_000):
    done = subprocess.run([compare, "--pair", "", str(directory), "--instructions", "--json", "--", "-dInstructions=yes",
                           f"-dInstructionsMost={most}", *("-f=" + function for function in functions)], text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    if done.returncode not in (0, 1):
        sys.exit(f"benchex-compare ended with {done.returncode}: {done.stderr}")
    return json.loads(done.stdout)["rows"]


def try_function(tree, compare, function, place, others):
    file, at = place
    path = tree.sources / file
    text = path.read_text()
    with tempfile.TemporaryDirectory(dir=tree.work) as directory:
        try:
            path.write_text(text[:at] + '    __asm__ volatile("nop");\n' + text[at:])
            tree.library(tree.objects_of(file), pathlib.Path(directory))
        finally:
            path.write_text(text)
        rows = count(compare, directory, [function, *others])
        if not any(row["function"] == function and "instructionsBefore" in row for row in rows):
            rows = [row for row in rows if row["function"] != function] + count(compare, directory, [function], LONG)
    known = [row for row in rows if "instructionsBefore" in row]
    more = [(row["function"] == function, row["instructionsAfter"] - row["instructionsBefore"]) for row in known]
    own = [difference for mine, difference in more if mine]
    false = sum(difference != 0 for mine, difference in more if not mine)
    others = sum(not mine for mine, _ in more)
    right = bool(own) and all(difference == CALLS.get(function, 1) for difference in own) and false == 0
    return (f"| {function} | {len(own)} | {', '.join(sorted(set(map(str, own))))} | {others} | {false} | "
            f"{len(rows) - len(known)} |"), right


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build")
    parser.add_argument("--functions", type=int, default=20)
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()
    start = time.time()
    listed = subprocess.run([str(arguments.build / "bin/benchex"), "-B", "-e"], text=True, stdout=subprocess.PIPE, check=False)
    tested = re.findall(r"^ *\d+\t(\w+)\t", listed.stdout, re.M)
    places = {name: place for name, place in definitions().items() if name in tested}
    names = sorted(places)[::max(1, len(places) // arguments.functions)][:arguments.functions]
    lines = ["| one instruction in | rows | more | rows of others | of them named | cannot tell |", "|---" * 6 + "|"]
    found = 0
    with tempfile.TemporaryDirectory() as work, busy():
        tree = faults.Tree(arguments.build.resolve(), pathlib.Path(work))
        for i, name in enumerate(names):
            others = [each for each in tested[i::len(names)] if each != name]
            line, right = try_function(tree, str(arguments.build / "bin/benchex-compare"), name, places[name], others)
            found += right
            lines.append(line)
            print(line + ("" if right else " NOT AS IT SHOULD BE"), flush=True)
        load = os.getloadavg()[1]
    lines += ["", f"{found} of {len(names)} found with nothing else named. {time.strftime('%Y-%m-%d')}, "
                  f"bench/explain/one_instruction.py, {time.time() - start:.0f} s, load {load:.1f}."]
    print(lines[-1])
    if arguments.write:
        marked.write("explain.md", "one-instruction", lines)
    return 0 if found == len(names) else 1


if __name__ == "__main__":
    sys.exit(main())
