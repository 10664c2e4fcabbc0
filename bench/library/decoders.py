#!/usr/bin/env python3
"""The example decoders' times beside those of libmpg123 and libavcodec, as ratios, in one run.

    bench/library/decoders.py BUILD-DIRECTORY [--rounds N] [--write] [STREAM...]

Each round decodes a stream with both programs, one right after the other, so that what disturbs one disturbs its
neighbour. MP3: mp3dec and mpg123, to 16-bit WAV files on /dev/null. AAC: aacdec and avdecode (libavcodec), which throw the
samples away. What is compared is the processor time in user mode of a whole process, its start included: the median of the
rounds' ratios with the quartiles. Without streams a sound of ten seconds is encoded with lame and ffmpeg, and each stream
taken twelve times over; --write puts that table into docs/library.md, between the marks "decoders". Needs mpg123, lame and
ffmpeg, and of the build the examples and the benches.
"""
import argparse
import os
import pathlib
import shutil
import statistics
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

STREAMS = [(MP3(), "44100 stereo 10", "-b 128 -m j"), (MP3(), "44100 stereo 10", "-b 320 -m s"),
           (AAC(), "44100 stereo 10", "-b:a 128k"), (AAC(), "44100 stereo 10", "-b:a 128k -aac_pns 0"),
           (AAC(), "48000 stereo 10", "-b:a 320k -aac_pns 0"),
           (AAC(), "44100 stereo 10", "-profile:a aac_main -b:a 128k -aac_pns 0"),
           (AAC(), "44100 stereo 10", "-b:a 128k -aac_pns 0 +ltp")]


def seconds(command):
    """User time of a process."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode:
        sys.exit(f"{command[0]} ended with status {process.returncode}")
    return usage.ru_utime


def compare(stream, build, rounds):
    """Least milliseconds of ours and theirs, and the quartiles of the ratio."""
    mp3 = pathlib.Path(stream).suffix == ".mp3"
    mine = [build / "mp3dec", stream, "/dev/null"] if mp3 else [build / "aacdec", stream]
    other = ["mpg123", "-q", "--no-gapless", "-w", "/dev/null", stream] if mp3 else [build / "avdecode", stream]
    ours, theirs = [], []
    for _ in range(rounds):
        ours.append(seconds(mine))
        theirs.append(seconds(other))
    low, middle, high = statistics.quantiles([a / b for a, b in zip(ours, theirs)], n=4)
    row = f"{1000 * min(ours):.1f} | {1000 * min(theirs):.1f} | {middle:.2f} ({low:.2f} to {high:.2f}) |"
    return ("mp3dec, mpg123" if mp3 else "aacdec, libavcodec") + " | " + row


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("stream", nargs="*")
    parser.add_argument("--rounds", type=int, default=15)
    parser.add_argument("--write", action="store_true")
    arguments = parser.parse_args()
    build = arguments.build / "bin"
    if not all(shutil.which(build / program) for program in ("mp3dec", "aacdec", "avdecode")) or not shutil.which("mpg123"):
        sys.exit("needs mp3dec, aacdec and avdecode of the build, and the package mpg123")
    lines = ["| stream | decoders | ms | ms | ratio (quartiles) |", "|---|---|---|---|---|"]

    def add(name, stream):
        lines.append(f"| {name} | {compare(stream, build, arguments.rounds)}")
        print(lines[-1], flush=True)

    for stream in arguments.stream:
        add(pathlib.Path(stream).name, stream)
    with tempfile.TemporaryDirectory() as temporary:
        for codec, sound, options in [] if arguments.stream else STREAMS:
            stream = codec.encode(sound, options, pathlib.Path(temporary), "stream")
            stream.write_bytes(12 * stream.read_bytes())
            add(f"{codec.suffix[1:]} {sound.split()[0]} Hz, `{options}`", stream)
    if arguments.write and not arguments.stream:
        lines += ["", f"{time.strftime('%Y-%m-%d')}, bench/library/decoders.py, {arguments.rounds} rounds, 120 s of sound each."]
        marked.write("library.md", "decoders", lines)


if __name__ == "__main__":
    main()
