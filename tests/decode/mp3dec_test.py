#!/usr/bin/env python3
"""Holds the example decoder against an independent one, and runs it over damaged streams.

    mp3dec_test.py MP3DEC-COMMAND... STREAMS

Where lame and mpg123 are installed (Debian packages of these names) streams of every standard, mode and sort of block
are encoded, and decoded by both on every code path of this processor. Two short streams with samples of mpg123's output
are there in any case. Accuracy is that of the standard for a decoder of full accuracy (ISO/IEC 11172-4): the difference
has an RMS value below 2^-15 / sqrt(12) of full scale and is nowhere above 2^-14. Damaged streams must end with status 0
or 1. With --carry the two streams are encoded anew instead.
"""
import array
import math
import os
import pathlib
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import wave

PATHS = {"portable": 0, "SSE2": 65, "AVX": 70, "AVX2": 71}
LEAST_RMS, LEAST_PEAK = 2**-15 / math.sqrt(12), 2**-14
SAMPLE_STEP = 7  # every seventh sample of the reference is carried
CARRIED = {"mpeg1": ("44100 stereo 0.25", "-b 96 -m j"), "mpeg25": ("8000 mono 0.6", "-b 16 -m m")}
ENCODED = [("44100 stereo 1", "-b 128 -m j"), ("44100 stereo 1", "-b 320 -m s"), ("48000 stereo 1", "-V 2"),
           ("32000 stereo 1", "-b 64 -m f"), ("48000 stereo 1", "-b 128 -m d"), ("44100 stereo 1", "-b 96 -p"),
           ("44100 stereo 1", "-b 160 --allshort"), ("44100 mono 1", "-b 64 -m m"), ("22050 stereo 1", "-b 64 -m j"),
           ("24000 stereo 1", "-b 56"), ("16000 stereo 1", "-b 48 -m s"), ("11025 stereo 1", "-b 32 -m j"),
           ("12000 mono 1", "-b 32 -m m"), ("8000 stereo 1", "-b 24 -m j")]


def write_sound(path, rate, channels, seconds):
    """A sweep, a tone that comes and goes, noise, and clicks, which make short blocks."""
    draw = random.Random(3).uniform
    samples = array.array("h")
    for i in range(int(rate * seconds)):
        t = i / rate
        sweep = math.sin(2 * math.pi * (100 * t + 0.2 * rate * t * t / seconds))
        tone = math.sin(2 * math.pi * 440 * t) * (0.5 + 0.5 * math.sin(8 * t))
        hiss, click = draw(-1, 1), i % (rate // 3) < 40
        for value in (0.45 * sweep + 0.15 * hiss + 0.3 * click * draw(-1, 1), 0.4 * tone + 0.1 * hiss + 0.2 * click)[:channels]:
            samples.append(int(30000 * value))
    with wave.open(str(path), "wb") as file:
        file.setnchannels(channels)
        file.setsampwidth(2)
        file.setframerate(rate)
        file.writeframes(samples.tobytes())


def encode(sound, options, folder, name):
    rate, mode, seconds = sound.split()
    source, stream = folder / "sound.wav", folder / f"{name}.mp3"
    write_sound(source, int(rate), 1 if mode == "mono" else 2, float(seconds))
    subprocess.run(["lame", "--silent", *options.split(), "--resample", str(int(rate) / 1000), source, stream], check=True,
                   stderr=subprocess.DEVNULL)
    return stream


def samples_of(path):
    """The samples of a WAV file of floats, and its channels."""
    data = path.read_bytes()
    form, body = data.index(b"fmt "), data.index(b"data")
    kind, channels = struct.unpack_from("<HH", data, form + 8)
    assert kind == 3, "not a file of floats"
    samples = array.array("f")
    samples.frombytes(data[body + 8:len(data) - (len(data) - body - 8) % 4])
    return samples, channels


def reference_of(stream, folder):
    out = folder / "reference.wav"
    subprocess.run(["mpg123", "-q", "--no-gapless", "-e", "f32", "-w", out, stream], check=True)
    return samples_of(out)[0]


def decoded(command, stream, folder, cpu):
    """The example's output on a code path; None where the processor lacks it."""
    out = folder / "decoded.wav"
    status = subprocess.run([*command, "-f", "-c", str(cpu), stream, out], stderr=subprocess.DEVNULL).returncode
    return None if status == 2 else samples_of(out) if status == 0 else ((), 0)


def complaint(name, got, reference, step):
    """What is wrong with decoded samples, of which the reference has every `step`th; empty if nothing."""
    got = got[::step]
    if len(got) != len(reference):
        return f"{name}: {len(got)} samples instead of {len(reference)}"
    differences = [abs(a - b) for a, b in zip(got, reference)]
    rms, peak = math.sqrt(sum(d * d for d in differences) / len(differences)), max(differences)
    print(f"{name}: RMS {rms:.2e}, largest {peak:.2e}")
    return "" if rms < LEAST_RMS and peak < LEAST_PEAK else f"{name}: RMS {rms:.3g}, largest {peak:.3g}"


def compare(command, name, stream, reference, step, folder):
    for path, cpu in PATHS.items():
        got = decoded(command, stream, folder, cpu)
        if got is not None:
            yield complaint(f"{name} on {path}", got[0], reference, step)


def damaged(command, stream, folder):
    """Bytes changed, cut and doubled: the decoder may give up, but not crash."""
    draw = random.Random(5)
    # What a sanitizer finds must not end with the status of a stream that the decoder refuses.
    own = {name: ":".join(filter(None, [os.environ.get(name), "exitcode=99"])) for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS")}
    whole = stream.read_bytes()
    for attempt in range(12):
        data = bytearray(whole)
        for _ in range(1 << attempt % 8):
            data[draw.randrange(len(data))] = draw.randrange(256)
        if attempt % 3 == 1:
            del data[draw.randrange(len(data)):]
        if attempt % 3 == 2:
            at = draw.randrange(len(data))
            data[at:at] = data[at // 2:at]
        broken = folder / "broken.mp3"
        broken.write_bytes(data)
        status = subprocess.run([*command, broken, folder / "decoded.wav"], stderr=subprocess.PIPE,
                                env=os.environ | own)
        if status.returncode not in (0, 1):
            yield f"{stream.name}, damage {attempt}: status {status.returncode}\n{status.stderr.decode()[-2000:]}"


def carry(streams):
    with tempfile.TemporaryDirectory() as temporary:
        folder = pathlib.Path(temporary)
        for name, (sound, options) in CARRIED.items():
            stream = encode(sound, options, folder, name)
            shutil.copy(stream, streams / stream.name)
            (streams / f"{name}.f32").write_bytes(reference_of(stream, folder)[::SAMPLE_STEP].tobytes())


def main():
    *command, streams = sys.argv[1:]
    streams = pathlib.Path(streams)
    if command == ["--carry"]:
        return carry(streams)
    found = []
    with tempfile.TemporaryDirectory() as temporary:
        folder = pathlib.Path(temporary)
        for name in CARRIED:
            reference = array.array("f")
            reference.frombytes((streams / f"{name}.f32").read_bytes())
            stream = streams / f"{name}.mp3"
            found += compare(command, name, stream, reference, SAMPLE_STEP, folder)
            found += damaged(command, stream, folder)
        if shutil.which("lame") and shutil.which("mpg123"):
            for sound, options in ENCODED:
                stream = encode(sound, options, folder, "stream")
                found += compare(command, f"{sound} {options}", stream, reference_of(stream, folder), 1, folder)
                found += damaged(command, stream, folder)
        else:
            print("lame or mpg123 is not installed: the streams carried only")
    found = [text for text in found if text]
    print("\n".join(found) if found else "All within the accuracy.")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
