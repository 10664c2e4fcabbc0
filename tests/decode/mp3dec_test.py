#!/usr/bin/env python3
"""Holds the MP3 decoder of the examples against mpg123, and runs it over damaged streams.

    mp3dec_test.py MP3DEC-COMMAND... STREAMS

Where lame and mpg123 are installed (Debian packages of these names) streams of every standard, mode and sort of block
are encoded, and decoded by both on every code path of this processor. Two short streams with samples of mpg123's output
are there in any case. With --carry the two streams are encoded anew instead.
"""
import subprocess
import sys

from decoders import Codec, samples_of


class MP3(Codec):
    suffix, needs = ".mp3", ("lame", "mpg123")
    carried = {"mpeg1": ("44100 stereo 0.25", "-b 96 -m j"), "mpeg25": ("8000 mono 0.6", "-b 16 -m m")}
    encoded = [("44100 stereo 1", "-b 128 -m j"), ("44100 stereo 1", "-b 320 -m s"), ("48000 stereo 1", "-V 2"),
               ("32000 stereo 1", "-b 64 -m f"), ("48000 stereo 1", "-b 128 -m d"), ("44100 stereo 1", "-b 96 -p"),
               ("44100 stereo 1", "-b 160 --allshort"), ("44100 mono 1", "-b 64 -m m"), ("22050 stereo 1", "-b 64 -m j"),
               ("24000 stereo 1", "-b 56"), ("16000 stereo 1", "-b 48 -m s"), ("11025 stereo 1", "-b 32 -m j"),
               ("12000 mono 1", "-b 32 -m m"), ("8000 stereo 1", "-b 24 -m j")]

    def run_encoder(self, source, stream, rate, options):
        subprocess.run(["lame", "--silent", *options.split(), "--resample", str(rate / 1000), source, stream], check=True,
                       stderr=subprocess.DEVNULL)

    def reference_of(self, stream, folder):
        out = folder / "reference.wav"
        subprocess.run(["mpg123", "-q", "--no-gapless", "-e", "f32", "-w", out, stream], check=True)
        return samples_of(out)[0]


if __name__ == "__main__":
    sys.exit(MP3().main())
