#!/usr/bin/env python3
"""Holds the AAC decoder of the examples against ffmpeg's, and runs it over damaged streams.

    aacdec_test.py AACDEC-COMMAND... STREAMS

Where ffmpeg is installed (the Debian package) it encodes streams of every profile and tool, and decodes them; both
decoders' samples are compared on every code path of this processor. Two short streams with samples of ffmpeg's output are
there in any case. With --carry the two streams are encoded anew instead.

Of streams with noise substitution (-aac_pns 1) the standard fixes the noise's energy only, and every decoder draws another
noise: of these the energy is compared, slice by slice. ffmpeg's encoder has the profile of long-term prediction and does not
use it: "+ltp" stands for a stream of the low complexity profile into which prediction is written (`with_prediction`).
"""
import array
import random
import subprocess
import sys

from decoders import Codec, complaint

SLICE = 16384  # samples whose energies are compared
MOST_OFF = 0.1  # of the energy of a slice with noise


def energies(samples):
    return [sum(value * value for value in samples[i:i + SLICE]) for i in range(0, len(samples) - SLICE + 1, SLICE)]


def energy_complaint(name, got, reference):
    if len(got) != len(reference):
        return f"{name}: {len(got)} samples instead of {len(reference)}"
    off = max(abs(a - b) / b for a, b in zip(energies(got), energies(reference)) if b > 0)
    print(f"{name}: energies differ by {off:.1e}")
    return "" if off < MOST_OFF else f"{name}: energies differ by {off:.3g}"


def with_prediction(stream):
    """
    The frames of an ADTS stream as of the LTP profile, with long-term prediction in all long windows that stand first in
    their frame and, of a pair, are common. What it predicts has no meaning, but every decoder must compute the same.
    """
    draw, out, at = random.Random(7).randrange, bytearray(), 0
    while at + 7 < len(stream):
        length = (stream[at + 3] & 3) << 11 | stream[at + 4] << 3 | stream[at + 5] >> 5
        bits = "".join(f"{byte:08b}" for byte in stream[at + 7:at + length])
        pair = bits.startswith("001")
        info = 8 if pair else 15  # element, tag, and the bit of a common window or the gain
        bands, predicted = int(bits[info + 4:info + 10], 2), info + 10
        if (pair and bits[7] == "1" or bits.startswith("000")) and bits[info + 1:info + 3] != "10":
            data = "1"
            for _ in range(2 if pair else 1):
                flags = "".join(str(draw(2)) for _ in range(min(bands, 40)))
                data += f"1{draw(64, 2048):011b}{draw(4):03b}{flags}" if draw(4) else "0"
            bits = bits[:predicted] + data + bits[predicted + 1:]
        bits += "0" * (-len(bits) % 8)
        head, size = bytearray(stream[at:at + 7]), 7 + len(bits) // 8
        head[2] |= 0xC0
        head[3:6] = head[3] & 0xFC | size >> 11, size >> 3 & 0xFF, size << 5 & 0xE0 | head[5] & 0x1F
        out += head + int(bits, 2).to_bytes(len(bits) // 8, "big")
        at += length
    return bytes(out)


class AAC(Codec):
    suffix, needs = ".aac", ("ffmpeg",)
    carried = {"aaclc": ("44100 stereo 0.25", "-b:a 96k -aac_pns 0"),
               "aacltp": ("22050 mono 0.5", "-b:a 40k -aac_pns 0 +ltp")}
    encoded = [("44100 stereo 1", "-b:a 128k -aac_pns 0"), ("48000 stereo 1", "-b:a 320k -aac_pns 0 -aac_coder fast"),
               ("44100 stereo 1", "-b:a 48k -aac_pns 0"), ("32000 stereo 1", "-b:a 96k -aac_pns 0 -aac_ms 1 -aac_is 0"),
               ("96000 stereo 1", "-b:a 256k -aac_pns 0"), ("22050 mono 1", "-b:a 40k -aac_pns 0"),
               ("8000 mono 1", "-b:a 16k -aac_pns 0"), ("16000 stereo 1", "-b:a 48k -aac_pns 0 -aac_tns 0"),
               ("48000 6 1", "-b:a 384k -aac_pns 0"), ("44100 3 1", "-b:a 160k -aac_pns 0"),
               ("44100 stereo 1", "-b:a 128k -aac_pns 0 -aac_pce 1"),
               ("44100 stereo 1", "-profile:a aac_main -b:a 128k -aac_pns 0"),
               ("24000 mono 1", "-profile:a aac_main -b:a 32k -aac_pns 0"),
               ("44100 stereo 1", "-b:a 128k -aac_pns 0 +ltp"), ("16000 mono 1", "-b:a 32k -aac_pns 0 +ltp"),
               ("44100 stereo 1", "-profile:a mpeg2_aac_low -b:a 128k"), ("44100 stereo 1", "-b:a 64k -aac_pns 1")]

    def run_encoder(self, source, stream, rate, options):
        words = [word for word in options.split() if word != "+ltp"]
        subprocess.run(["ffmpeg", "-y", "-v", "error", "-i", source, "-c:a", "aac", *words, stream], check=True)
        if "+ltp" in options:
            stream.write_bytes(with_prediction(stream.read_bytes()))

    def reference_of(self, stream, folder):
        raw = subprocess.run(["ffmpeg", "-v", "error", "-i", stream, "-f", "f32le", "-"], check=True,
                             stdout=subprocess.PIPE).stdout
        return array.array("f", raw)

    def judge(self, name, got, reference, step):
        if "-aac_pns 1" in name:
            return energy_complaint(name, got, reference)
        return complaint(name, got, reference, step)


if __name__ == "__main__":
    sys.exit(AAC().main())
