#!/usr/bin/env python3
"""The example decoder's time beside libmpg123's, as a ratio, in one run.

    bench/library/decoders.py BUILD-DIRECTORY [--rounds N] [STREAM.mp3...]

Each round decodes a stream with both programs, one right after the other, so that what disturbs one disturbs its
neighbour; both decode to 16-bit WAV files on /dev/null. What is compared is the processor time in user mode of a whole
process, its start included, the median of the rounds' ratios with the quartiles. Without streams a sound of ten seconds
is encoded with lame at 128 and 320 kbit/s, and each stream taken twelve times over. Needs mpg123, and lame.
"""
import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parents[1] / "tests" / "decode"))
import mp3dec_test as streams  # noqa: E402

RATES = {"128 kbit/s": "-b 128 -m j", "320 kbit/s": "-b 320 -m s"}


def seconds(command):
    """User time of a process."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode:
        sys.exit(f"{command[0]} ended with status {process.returncode}")
    return usage.ru_utime


def compare(name, stream, mp3dec, rounds):
    ours, theirs = [], []
    for _ in range(rounds):
        ours.append(seconds([mp3dec, stream, "/dev/null"]))
        theirs.append(seconds(["mpg123", "-q", "--no-gapless", "-w", "/dev/null", stream]))
    low, middle, high = statistics.quantiles([a / b for a, b in zip(ours, theirs)], n=4)
    print(f"{name:24} {1000 * min(ours):9.1f} {1000 * min(theirs):9.1f} {middle:7.2f}   {low:.2f} to {high:.2f}", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build")
    parser.add_argument("stream", nargs="*")
    parser.add_argument("--rounds", type=int, default=15)
    arguments = parser.parse_args()
    mp3dec = next(pathlib.Path(arguments.build).rglob("mp3dec"), None)
    if not mp3dec or not shutil.which("mpg123"):
        sys.exit("needs the built example mp3dec and the package mpg123")
    print(f"{'stream':24} {'mp3dec ms':>9} {'mpg123 ms':>9} {'ratio':>7}   quartiles")
    for stream in arguments.stream:
        compare(pathlib.Path(stream).name, stream, mp3dec, arguments.rounds)
    if not arguments.stream:
        with tempfile.TemporaryDirectory() as temporary:
            folder = pathlib.Path(temporary)
            for name, options in RATES.items():
                stream = streams.encode("44100 stereo 10", options, folder, "stream")
                stream.write_bytes(12 * stream.read_bytes())
                compare(name, stream, mp3dec, arguments.rounds)


if __name__ == "__main__":
    main()
