#!/usr/bin/env python3
"""Do the library's code paths compute the same?

    bench/pair/paths.py [--build DIRECTORY] [--write]

Compares the outputs of each path with those of the portable one, bit by bit, on the suite's data and on random ones.
Prints a table of the functions that differ, with what the standards demand of them; --write puts it into
docs/library.md, between the marks "paths". Exit status 1 when a function differs of which its standard demands the same
bits.
"""

import argparse
import json
import pathlib
import re
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "bench"))
import marked  # noqa: E402  pylint: disable=wrong-import-position
PORTABLE, PATHS = "X87", ("SSE2", "AVX", "AVX2")
DATA = ([], *([f"-dRandomData={most}"] for most in (3, 1000, 1000000)))
ACCURACY = "accuracy: ISO/IEC 11172-4 calls a decoder fully accurate below 2^-15 / sqrt 12 rms, 98 dB under a full sine"
# By name, the first that fits. True: the same bits are demanded.
DEMANDS = [
    ("FDP", True, "the same bits: ISO/IEC 13818-7 rounds each step of prediction, which encoder and decoder repeat"),
    ("Decode(?!TNS|Ms|Is)|Unpack|VLC|Huff|Noiseless", True, "the same bits: parsed from the stream"),
    ("16s|32s", False, "accuracy: samples to within a rounding, which no parsing builds on"),
    ("DTS", False, "accuracy: ETSI TS 102 114 fixes the taps of the filter bank, not its arithmetic"),
    ("SBR", False, "accuracy: ISO/IEC 14496-3 gives formulas in real numbers"),
    ("MP3", False, ACCURACY),
    ("", False, "nothing: of no standard"),
]


def demand(function):
    return next((strict, text) for pattern, strict, text in DEMANDS if re.search(pattern, function))


def compare(program, path, keys):
    run = subprocess.run([program, "--pair", f"-T {PORTABLE}", f"-T {path}", "--outputs", "equal", "--outputs-only", "--json",
                          "--", *keys], text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if run.returncode not in (0, 1):
        sys.exit(f"benchex-compare ended with {run.returncode}: {run.stderr}")
    return json.loads(run.stdout)["rows"]


def cell(rows):
    if not rows:
        return "equal"
    data = sum(row["outputs"] == "data differ" for row in rows)
    noise = min((row["decibels"] for row in rows if row.get("decibels") is not None), default=None)
    return (f"{len(rows)} rows" + ("" if noise is None else f", {noise:.0f} dB") +
            (f", of {data} the data before the call too" if data else ""))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build")
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()
    rows = {path: [row for keys in DATA for row in compare(str(arguments.build / "bin/benchex-compare"), path, keys)]
            for path in PATHS}
    everything = {row["function"] for row in rows[PATHS[0]]}
    differing = {path: [row for row in rows[path] if row["outputs"] != "equal"] for path in PATHS}
    functions = sorted({row["function"] for path in PATHS for row in differing[path]})
    broken = [function for function in functions if demand(function)[0]]
    lines = ["| function | " + " | ".join(PATHS) + " | demanded |", "|---" * (2 + len(PATHS)) + "|"]
    lines += ["| " + " | ".join([function, *(cell([row for row in differing[path] if row["function"] == function])
                                             for path in PATHS), demand(function)[1]]) + " |" for function in functions]
    lines += ["", f"The other {len(everything) - len(functions)} of {len(everything)} functions give the same bits on all paths: "
              f"{len(rows[PATHS[0]])} rows a path, three quarters of them on random data. {time.strftime('%Y-%m-%d')}, bench/pair/paths.py."]
    print("\n".join(lines))
    if broken:
        print("\nDIFFER against what is demanded: " + ", ".join(broken))
    if arguments.write:
        marked.write("library.md", "paths", lines)
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
