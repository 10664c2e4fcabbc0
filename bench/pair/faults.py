#!/usr/bin/env python3
"""Does `benchex-compare --pair` notice when the library computes something else?

    bench/pair/faults.py [--build DIRECTORY] [--write] [NAME...]

Puts one fault at a time into a copy of the library's sources, builds the shared library that holds it into a
temporary directory, and compares its outputs with those of the library as it stands, on the suite's data and on random
ones. Prints a table; --write puts it into docs/measurement.md, between the marks "pair-faults". Exit status 1 when a
fault is not found.
"""

import argparse
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "bench"))
import marked  # noqa: E402  pylint: disable=wrong-import-position
SOURCES = ROOT / "zor/src"

# Name, file below zor/src, what stands there, the fault in its place. What stands there occurs once.
FAULTS = [
    # Wrong constants in tables.
    ("a coefficient of long-term prediction", "tables/aac_ltp_coef.h", "0.9849", "0.9489"),
    ("a coefficient of the alias butterflies", "tables/mp3_antialias.h", "-0.535", "-0.553"),
    ("a tap of a polyphase window", "tables/mp3_pqmf_window.h", "74992, 75038, 74992", "74992, 75308, 74992"),
    ("a length of scale factors", "tables/mp3_slen.h", "0, 0, 0, 0, 3, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4",
     "0, 0, 0, 0, 3, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 3"),
    ("a boundary of bands", "tables/mp3_sfb_long.h", "30, 36, 42, 50, 60, 72, 88, 106", "30, 36, 42, 50, 60, 74, 88, 106"),
    ("the highest band of noise shaping", "tables/aac_tns_max_bands.h", "31, 31, 34, 40", "30, 31, 34, 40"),
    ("a root of two", "generic/kernels/vector_kernels.cpp", "1.68179283050742909f", "1.68179383050742909f"),
    # One too many, one too few, one beside.
    ("a window that is one sample late", "sbr/filterbank.cpp", "windowTable[i * (640 / length)]",
     "windowTable[i > 0 ? (i - 1) * (640 / length) : 0]"),
    ("the window of a short slope off by one", "mp3/kernels/mdct_kernels.cpp", "n < 30 ? windows.brief[n - 18]",
     "n < 30 ? windows.brief[n - 19]"),
    ("a band left out of mid/side stereo", "aac/stereo.cpp", "forEachRun(maxSfb, use", "forEachRun(maxSfb - 1, use"),
    ("the last tap of a filter left out", "generic/kernels/fir_kernels.cpp",
     "for (int k = 0; k < order; ++k) {", "for (int k = 0; k < order - 1; ++k) {"),
    ("the last slots of a synthesis left out", "sbr/kernels/filterbank_kernels.cpp",
     "for (std::size_t age = 0; age < SbrSynthesis::ringSlots; ++age)",
     "for (std::size_t age = 0; age < SbrSynthesis::ringSlots - 1; ++age)"),
    ("an old row of a polyphase window", "mp3/kernels/pqmf_kernels.cpp", "for (int age = 1; age < rows; age += 2)\n        first +=",
     "for (int age = 5; age < rows; age += 2)\n        first +="),
    # Arithmetic.
    ("half a unit of rounding", "aac/kernels/spectrum_kernels.cpp", "value + 0.5F", "value + 0.25F"),
    ("halves rounded the other way", "mp3/jointstereo.cpp", "value + (value < 0 ? -0.5 : 0.5)", "value"),
    ("one step of an iteration", "generic/kernels/vector_kernels.cpp", "cubeRootStep(cubeRootStep(guess, x), x)",
     "cubeRootStep(guess, x)"),
    ("a forgetting factor", "aac/kernels/fdp_kernels.cpp", "forgetting = 0.90625f", "forgetting = 0.9140625f"),
    ("a sign of a modulation", "dts/kernels/filter_kernels.cpp", "(k + 1) & 2 ? -1.0f", "(k + 2) & 2 ? -1.0f"),
    ("the order of a predictor", "aac/tns.cpp", "for (int i = 0, j = m - 1; i <= j; ++i, --j)",
     "for (int i = 0, j = m - 1; i < j; ++i, --j)"),
    ("the sign of pulses", "aac/noiseless.cpp", "value > 0 ? m_pulses.amplitude[i] : -m_pulses.amplitude[i]",
     "value >= 0 ? m_pulses.amplitude[i] : -m_pulses.amplitude[i]"),
    # State that only the next call shows.
    ("the overlap of one band", "aac/mdct.cpp", "std::copy_n(src, length, srcDstOverlap)",
     "std::copy_n(src, length - 1, srcDstOverlap)"),
    ("the ring of a filter", "dts/kernels/filter_kernels.cpp", "filter.newest = (filter.newest + 1) &",
     "filter.newest = (filter.newest + 2) &"),
    # Branches that few data take.
    ("values beyond the range", "generic/kernels/vector_kernels.cpp", "rounded(src[i] * factor, -32768.0f, 32767.0f)",
     "rounded(src[i] * factor, -32768.0f, 32766.0f)"),
    ("a stop window", "aac/mdct.cpp", "curve.resize(frameLength, 1.0);", "curve.resize(frameLength, 0.0);"),
]

# What the functions get: the suite's data, many of them constants, and random ones up to this in their place.
DATA = (None, 3, 1000, 1000000)


class Tree:
    """A copy of the sources, and how the build makes libraries of them."""

    def __init__(self, build, work):
        self.build = build
        self.work = work
        self.sources = work / "src"
        shutil.copytree(SOURCES, self.sources)
        commands = json.loads(self.ninja("-t", "compdb"))
        self.compiled = {entry["output"]: entry for entry in commands
                         if entry["file"].startswith(str(SOURCES) + "/") and entry["output"].endswith(".o")}
        self.linked = {entry["output"]: entry for entry in commands
                       if re.fullmatch(r"(.*/)?libzor\w+\.so[.\d]*", entry["output"]) and "-shared" in entry["command"]}
        self.depends = {}
        for line in self.ninja("-t", "deps").splitlines():
            if line and not line.startswith(" "):
                output = line.split(":")[0]
            elif line.strip():
                self.depends.setdefault(os.path.normpath(self.build / line.strip()), set()).add(output)

    def ninja(self, *words):
        return subprocess.run(["ninja", "-C", str(self.build), "--quiet", *words], check=True, text=True,
                              stdout=subprocess.PIPE).stdout

    def objects_of(self, file):
        """The objects that a file is compiled into."""
        return sorted(set(self.compiled) & self.depends.get(str(SOURCES / file), set()))

    def library(self, objects, directory):
        """Builds objects anew, and the libraries that hold them, into a directory."""
        running = []
        for index, output in enumerate(objects):
            words = shlex.split(self.compiled[output]["command"])
            made = str(directory / f"{index}.o")
            for flag, value in (("-o", made), ("-MF", made + ".d"), ("-MT", made)):
                if flag in words:
                    words[words.index(flag) + 1] = value
            words = [word.replace(str(SOURCES), str(self.sources)) for word in words]
            running.append(subprocess.Popen(words, cwd=self.build))
            if len(running) >= 2:
                finish(running.pop(0))
        for each in running:
            finish(each)
        count = 0
        for output, entry in self.linked.items():
            command = entry["command"]
            held = [each for each in objects if f" {each} " in command]
            if not held:
                continue
            for index, each in enumerate(objects):
                command = command.replace(f" {each} ", f" {directory / f'{index}.o'} ")
            made = directory / pathlib.Path(output).name
            command = command.replace(f"-o {output} ", f"-o {made} ")
            finish(subprocess.Popen(command, shell=True, cwd=self.build))
            soname = re.search(r"-soname,(\S+)", command)
            if soname and soname[1] != made.name:
                made.rename(directory / soname[1])
            count += 1
        return count


def finish(process):
    if process.wait() != 0:
        raise SystemExit("a faulty library could not be built")


def differences(compare, directory, most):
    """The rows whose outputs differ from those of the library as it stands."""
    run = subprocess.run([compare, "--pair", "", str(directory), "--json", "--outputs-only", "--",
                          *([] if most is None else [f"-dRandomData={most}"])], text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if run.returncode not in (0, 1):
        raise SystemExit(f"benchex-compare ended with {run.returncode}: {run.stderr}")
    return [row for row in json.loads(run.stdout)["rows"] if row["outputs"] != "equal"]


def try_fault(tree, compare, name, file, there, fault):
    """The line of the table, and whether the fault was found."""
    path = tree.sources / file
    text = path.read_text()
    if text.count(there) != 1:
        raise SystemExit(f"{name}: {file} holds {text.count(there)} of \"{there}\"")
    with tempfile.TemporaryDirectory(dir=tree.work) as directory:
        directory = pathlib.Path(directory)
        try:
            path.write_text(text.replace(there, fault))
            if tree.library(tree.objects_of(file), directory) == 0:
                raise SystemExit(f"{name}: no library holds {file}")
        finally:
            path.write_text(text)
        found = [differences(compare, directory, most) for most in DATA]
    rows = [row for each in found for row in each]
    functions = sorted({row["function"] for row in rows})
    more = f" and {len(functions) - 2} more" if len(functions) > 2 else ""
    noise = min((row["decibels"] for row in rows if row.get("decibels") is not None), default=None)
    counts = " | ".join(f"{len(each)} ({sum(row['outputs'] == 'wrong' for row in each)})" for each in found)
    return (f"| {name} | `{file}` | {counts} | {', '.join(functions[:2])}{more} | "
            f"{'' if noise is None else f'{noise:.0f}'} |"), bool(rows)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build")
    parser.add_argument("--write", action="store_true")
    parser.add_argument("names", nargs="*")
    arguments = parser.parse_args()
    lines = ["| fault | file | rows that differ (wrong) | random to "
             + " | ".join(str(most) for most in DATA[1:]) + " | functions | least dB |", "|---" * (5 + len(DATA)) + "|"]
    found = []
    start = time.time()
    with tempfile.TemporaryDirectory() as work:
        tree = Tree(arguments.build.resolve(), pathlib.Path(work))
        for fault in FAULTS:
            if arguments.names and not any(name in fault[0] for name in arguments.names):
                continue
            line, is_found = try_fault(tree, str(arguments.build / "bin/benchex-compare"), *fault)
            found.append(is_found)
            lines.append(line)
            print(line + ("" if is_found else " NOT FOUND"), flush=True)
    lines += ["", f"{sum(found)} of {len(found)} found. {time.strftime('%Y-%m-%d')}, bench/pair/faults.py, "
                  f"{time.time() - start:.0f} s."]
    print(lines[-1])
    if arguments.write:
        marked.write("measurement.md", "pair-faults", lines)
    return 0 if all(found) else 1


if __name__ == "__main__":
    sys.exit(main())
