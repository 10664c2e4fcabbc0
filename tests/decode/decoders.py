"""What the tests of the example decoders share: sounds, the decoders' output, what is demanded of it, damage.

Accuracy is that of the standards for a decoder of full accuracy (ISO/IEC 11172-4, 13818-4): the difference has an RMS
value below 2^-15 / sqrt(12) of full scale and is nowhere above 2^-14. Damaged streams must end with status 0 or 1.
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


def write_sound(path, rate, channels, seconds):
    """A sweep, a tone that comes and goes, noise, and clicks, which make short blocks; a low tone in each further channel."""
    draw = random.Random(3).uniform
    samples = array.array("h")
    for i in range(int(rate * seconds)):
        t = i / rate
        sweep = math.sin(2 * math.pi * (100 * t + 0.2 * rate * t * t / seconds))
        tone = math.sin(2 * math.pi * 440 * t) * (0.5 + 0.5 * math.sin(8 * t))
        hiss, click = draw(-1, 1), i % (rate // 3) < 40
        first = 0.45 * sweep + 0.15 * hiss + 0.3 * click * draw(-1, 1)
        more = [0.1 * c * math.sin(2 * math.pi * 40 * c * t) for c in range(2, channels)]
        for value in [first, 0.4 * tone + 0.1 * hiss + 0.2 * click, *more][:channels]:
            samples.append(int(30000 * value))
    with wave.open(str(path), "wb") as file:
        file.setnchannels(channels)
        file.setsampwidth(2)
        file.setframerate(rate)
        file.writeframes(samples.tobytes())


def samples_of(path):
    """The samples of a WAV file of floats, and its channels."""
    data = path.read_bytes()
    form, body = data.index(b"fmt "), data.index(b"data")
    kind, channels = struct.unpack_from("<HH", data, form + 8)
    assert kind == 3, "not a file of floats"
    samples = array.array("f")
    samples.frombytes(data[body + 8:len(data) - (len(data) - body - 8) % 4])
    return samples, channels


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
        broken = folder / f"broken{stream.suffix}"
        broken.write_bytes(data)
        status = subprocess.run([*command, broken, folder / "decoded.wav"], stderr=subprocess.PIPE,
                                env=os.environ | own)
        if status.returncode not in (0, 1):
            yield f"{stream.name}, damage {attempt}: status {status.returncode}\n{status.stderr.decode()[-2000:]}"


class Codec:
    """A codec's streams: `carried` by name and `encoded`, each a sound (rate, mode, seconds) and the encoder's options."""
    suffix, needs, carried, encoded = "", (), {}, []

    def run_encoder(self, source, stream, rate, options):
        raise NotImplementedError

    def reference_of(self, stream, folder):
        """The samples of an independent decoder, as floats."""
        raise NotImplementedError

    def judge(self, name, got, reference, step):
        return complaint(name, got, reference, step)

    def encode(self, sound, options, folder, name):
        rate, mode, seconds = sound.split()
        source, stream = folder / "sound.wav", folder / f"{name}{self.suffix}"
        write_sound(source, int(rate), {"mono": 1, "stereo": 2}.get(mode) or int(mode), float(seconds))
        self.run_encoder(source, stream, int(rate), options)
        return stream

    def carry(self, streams):
        with tempfile.TemporaryDirectory() as temporary:
            folder = pathlib.Path(temporary)
            for name, (sound, options) in self.carried.items():
                stream = self.encode(sound, options, folder, name)
                shutil.copy(stream, streams / stream.name)
                (streams / f"{name}.f32").write_bytes(self.reference_of(stream, folder)[::SAMPLE_STEP].tobytes())

    def compare(self, command, name, stream, reference, step, folder):
        for path, cpu in PATHS.items():
            got = decoded(command, stream, folder, cpu)
            if got is not None:
                yield self.judge(f"{name} on {path}", got[0], reference, step)

    def check(self, command, streams):
        found = []
        with tempfile.TemporaryDirectory() as temporary:
            folder = pathlib.Path(temporary)
            for name in self.carried:
                reference = array.array("f")
                reference.frombytes((streams / f"{name}.f32").read_bytes())
                stream = streams / f"{name}{self.suffix}"
                found += self.compare(command, name, stream, reference, SAMPLE_STEP, folder)
                found += damaged(command, stream, folder)
            if all(shutil.which(program) for program in self.needs):
                for sound, options in self.encoded:
                    stream = self.encode(sound, options, folder, "stream")
                    found += self.compare(command, f"{sound} {options}", stream, self.reference_of(stream, folder), 1, folder)
                    found += damaged(command, stream, folder)
            else:
                print(f"not installed: {' or '.join(self.needs)}: the streams carried only")
        found = [text for text in found if text]
        print("\n".join(found) if found else "All within the accuracy.")
        return 1 if found else 0

    def main(self):
        *command, streams = sys.argv[1:]
        if command == ["--carry"]:
            return self.carry(pathlib.Path(streams))
        return self.check(command, pathlib.Path(streams))
