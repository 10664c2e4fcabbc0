#!/usr/bin/env python3
"""Are counts of instructions the same every time, and does counting leave the timing alone?

    bench/explain/counts.py [--build DIRECTORY] [--repetitions 1000] [--rounds 10] [--no-suite]
                            [--write]

Runs the program again and again with Instructions=yes: the first row of each function below has to have one count and
one digest. Then, in turns, with Instructions=no and Instructions=yes in the precise mode: benchex-compare judges all rows of
both. Last the whole suite, once, for the time that its counting takes. Prints what it found; --write puts it into
docs/explain.md, between the marks "counts". Exit status 1 when counts differ, or a row is slower or faster.
"""

import argparse
import collections
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
# From dozens of instructions to two thousand; parsing, arithmetic, state that goes on from call to call.
COUNTED = ("zorsUnpackFrameHeader_MP3", "zorsUnpackScaleFactors_MP3_1u8s", "zorsDecodeFillElt_AAC", "zorsScale_32f_I",
           "zorsMakeFloat_16s32f", "zorsMDCTFwd_32f", "zorsFIRBlockOne_32f", "zorsDeinterleaveSpectrum_AAC_32s")
COUNTED_MOST = 3000
TIMED = ("zorsUnpackFrameHeader_MP3", "zorsScale_32f_I", "zorsFIRBlockOne_32f", "zorsMDCTFwd_32f", "zorsDecodeTNS_AAC_32s_I")


def run(*words):
    done = subprocess.run([str(word) for word in words], text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return done.returncode, done.stdout


def repetitions(program, count):
    seen = collections.defaultdict(collections.Counter)
    words = ["-B", "-L", "P", *("-f=" + function for function in COUNTED), "-dMethod=Manual", "-dNumLoops=1",
             "-dInstructions=yes", "-dInstructionsRow=1", f"-dInstructionsMost={COUNTED_MOST}"]
    for _ in range(count):
        _, text = run(program, *words)
        for i, found in enumerate(re.findall(r"\binstr=\d+(?: steps=\d+)? code=\w+", text)):
            seen[i][found] += 1
    if len(seen) != len(COUNTED):
        sys.exit(f"{len(seen)} rows were counted instead of {len(COUNTED)}: {text}")
    differing = [dict(counts) for counts in seen.values() if len(counts) > 1 or sum(counts.values()) != count]
    every = sorted(int(re.search(r"\d+", found)[0]) for counts in seen.values() for found in counts)
    return differing, (f"{count:,} runs of a row each of {len(seen)} functions, {every[0]} to {every[-1]:,} instructions: "
                       f"{len(seen) - len(differing)} with the same count and digest every time, {len(differing)} with others.")


def timing(build, rounds):
    with tempfile.TemporaryDirectory() as directory:
        sides = {word: [f"{directory}/{word}{i}.csv" for i in range(rounds)] for word in ("no", "yes")}
        for i in range(rounds):
            for word in ("no", "yes") if i % 2 else ("yes", "no"):
                run(build / "bin/benchex", "-B", *("-f=" + function for function in TIMED), "-dPrecise=yes",
                    "-dInstructionsMost=20000", f"-dInstructions={word}", "-r" + sides[word][i])
        _, text = run(build / "bin/benchex-compare", "--json", "--threshold", 2, "--before", *sides["no"], "--after", *sides["yes"])
    result = json.loads(text)
    differing = result["slower"] + result["faster"]
    return differing, (f"{rounds} runs with Instructions=yes and {rounds} without, in turns, precise mode, compared to 2 %: of "
                       f"{len(result['rows'])} rows {result['slower']} slower, {result['faster']} faster, {result['same']} the same, "
                       f"{result['cannotTell']} undecided; ratio of all rows {result['ratio']:.4f}.")


def suite(build):
    start = time.time()
    _, text = run(build / "bin/benchex", "-B", "-L", "P", "-dInstructions=yes")
    counted = len(re.findall(r"\binstr=\d", text))
    beyond = len(re.findall(r"\binstr>", text))
    steps = sum(int(word) for word in re.findall(r"\binstr[=>](\d+)", text))
    return (f"The whole suite with Instructions=yes: {time.time() - start:.0f} s, {counted} rows counted, {beyond} beyond the limit "
            f"of steps, {steps:,} instructions.")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build")
    parser.add_argument("--repetitions", type=int, default=1000)
    parser.add_argument("--rounds", type=int, default=10)
    parser.add_argument("--no-suite", action="store_true")
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()
    bad, differing = 0, []
    lines = []
    if arguments.repetitions:
        differing, line = repetitions(arguments.build / "bin/benchex", arguments.repetitions)
        lines.append(line)
        print(line, *differing, sep="\n", flush=True)
    if arguments.rounds:
        bad, line = timing(arguments.build, arguments.rounds)
        lines.append(line)
        print(line, flush=True)
    if not arguments.no_suite:
        line = suite(arguments.build)
        lines.append(line)
        print(line, flush=True)
    lines.append(f"{time.strftime('%Y-%m-%d')}, bench/explain/counts.py, load {os.getloadavg()[1]:.1f}.")
    print(lines[-1])
    if arguments.write:
        marked.write("explain.md", "counts", ["\n\n".join(lines)])
    return 1 if differing or bad else 0


if __name__ == "__main__":
    sys.exit(main())
