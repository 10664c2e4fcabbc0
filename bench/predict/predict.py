#!/usr/bin/env python3
"""Do the harness's figures predict what a decoder's blocks cost?

    bench/predict/predict.py BUILD-DIRECTORY [--rounds N] [--seconds N] [--accuracy PERCENT] [--codec CODEC]
        [--write]

Encodes four streams of each codec, and for each of them
- counts a decoder's calls of each function of the library and times them where they are made (mp3_clock, aac_clock);
- lets the harness repeat, in the precise mode, each function's calls on the stream's own data (mp3_predict,
  aac_predict), once with the function and once without it: the difference is the function's.
The harness's figures of all functions added up are the prediction. Both take turns, and the least of the rounds counts, of
each function: other work on the machine only adds.
Prints a table by stream and one by function; --write puts them into docs/library.md, between the marks "prediction". Needs
lame and ffmpeg (Debian packages).
"""
import argparse
import collections
import csv
import io
import pathlib
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "bench"))
import marked  # noqa: E402  pylint: disable=wrong-import-position
sys.path.insert(0, str(ROOT / "tests" / "decode"))
from aacdec_test import AAC  # noqa: E402
from mp3dec_test import MP3  # noqa: E402

STREAMS = {
    "mp3": (MP3(), [("44100 stereo", "-b 128 -m j"), ("44100 stereo", "-b 320 -m s"), ("48000 stereo", "-V 4"),
                    ("22050 mono", "-b 48 -m m")]),
    "aac": (AAC(), [("44100 stereo", "-b:a 128k"), ("48000 stereo", "-b:a 256k -aac_pns 0"),
                    ("44100 stereo", "-profile:a aac_main -b:a 128k -aac_pns 0"),
                    ("44100 mono", "-b:a 64k -aac_pns 0 +ltp")]),
}


def timed(program, stream):
    """Calls and microseconds a decoding of each function, where the decoder makes them."""
    out = subprocess.run([program, stream, "15"], check=True, capture_output=True, text=True).stdout
    lines = [line.split() for line in out.splitlines()]
    return {name: (int(calls), float(microseconds)) for name, calls, microseconds in lines if int(calls) > 0}


def figures(program, stream, accuracy):
    """Microseconds of the same calls by the harness, the function alone."""
    with tempfile.TemporaryDirectory() as place:
        subprocess.run([program, "-B", "-dPrecise=yes", f"-dPreciseAccuracy={accuracy}", f"-dStream={stream}", "-r", "-l" + place,
                        "-nx"], stdout=subprocess.DEVNULL, check=False)
        text = (pathlib.Path(place) / "x.csv").read_text()
    found = collections.defaultdict(dict)
    for row in csv.DictReader(io.StringIO(text[text.index("Function,"):])):
        name = "_".join(row[column] for column in ("Function", "Types", "Descriptor") if row[column] != "-")
        found[name][row["P2"]] = float(row["Time (usec)"])
    return {name: row["called"] - row["left out"] for name, row in found.items() if len(row) == 2}


def per_cent(predicted, measured):
    return f"{100 * (predicted / measured - 1):+.1f} %"


def compare(codec, sound, options, arguments, folder):
    """Of each function the calls, the microseconds measured and those predicted."""
    stream = STREAMS[codec][0].encode(f"{sound} {arguments.seconds}", options, folder, "stream")
    build, measured, predicted = arguments.build / "bin", [], []
    for _ in range(arguments.rounds):
        measured.append(timed(build / f"{codec}_clock", stream))
        predicted.append(figures(build / f"{codec}_predict", stream, arguments.accuracy))
        measured.append(timed(build / f"{codec}_clock", stream))
    missing = set(measured[0]) - set(predicted[0])
    if missing:
        sys.exit(f"{codec}_predict gave no figure of {', '.join(sorted(missing))}")
    return {name: (calls, min(run[name][1] for run in measured), min(run[name] for run in predicted))
            for name, (calls, _) in measured[0].items()}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--seconds", type=float, default=3)
    parser.add_argument("--accuracy", type=float, default=1)
    parser.add_argument("--codec", choices=STREAMS)
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()
    lines = ["| stream | calls | blocks measured, us | predicted, us | off | furthest off, of the whole |", "|---|---|---|---|---|---|"]
    by_function = collections.defaultdict(lambda: [0, 0, 0])
    with tempfile.TemporaryDirectory() as temporary:
        for codec in [arguments.codec] if arguments.codec else STREAMS:
            for sound, options in STREAMS[codec][1]:
                rows = compare(codec, sound, options, arguments, pathlib.Path(temporary))
                calls, measured, predicted = (sum(row[i] for row in rows.values()) for i in range(3))
                furthest = max(rows, key=lambda name: abs(rows[name][2] - rows[name][1]))
                share = 100 * (rows[furthest][2] - rows[furthest][1]) / measured
                lines.append(f"| {codec} {sound}, `{options}` | {calls} | {measured:.0f} | {predicted:.0f} | "
                             f"{per_cent(predicted, measured)} | {furthest} {share:+.1f} % |")
                print(lines[-1], flush=True)
                for name, row in rows.items():
                    by_function[name] = [a + b for a, b in zip(by_function[name], row)]
    lines += ["", "| function, all its streams | calls | measured, us | predicted, us | off |", "|---|---|---|---|---|"]
    lines += [f"| {name} | {calls} | {measured:.0f} | {predicted:.0f} | {per_cent(predicted, measured)} |"
              for name, (calls, measured, predicted) in by_function.items()]
    lines += ["", f"{time.strftime('%Y-%m-%d')}, bench/predict/predict.py, {arguments.rounds} rounds, {arguments.seconds:g} s of sound."]
    print("\n".join(lines))
    if arguments.write:
        marked.write("library.md", "prediction", lines)


if __name__ == "__main__":
    main()
