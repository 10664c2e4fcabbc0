#!/usr/bin/env python3
"""Writes docs/man/benchex.1 from the program's own help, or checks that it is up to date.

    make_manual.py [--check] PROGRAM
"""
import pathlib
import re
import subprocess
import sys

MANUAL = pathlib.Path(__file__).resolve().parent.parent / "docs" / "man" / "benchex.1"

HEAD = r""".\" Written by tools/make_manual.py from the program's help.
.TH BENCHEX 1 "" "Benchex" "User Commands"
.SH NAME
benchex \- measure what the functions of a signal-processing library cost
.SH SYNOPSIS
.B benchex
.RI [ key ...]
.SH DESCRIPTION
Calls each function of the library under test many times, for every combination of its parameters, and reports clocks
per call and per unit of work, microseconds and, for floating-point functions, MFlops.
A fault in a tested function costs that test and not the run.
.PP
Keys begin with
.B \-
or
.BR / .
Their argument is attached or stands in the next word.
Without keys the first line of
.I benchex.cfg
is read, from the current directory or from that of the program.
Questions that no key answers are asked on the console;
.B \-B
asks nothing.
.SH KEYS
"""

TAIL = r""".SH FILES
.TP
.I benchex.csv
The result table
.RB ( \-r ):
title lines "label,value" about the run, the column titles, one line for each measured combination.
.TP
.I benchex_sum.csv
The summary table
.RB ( \-u ):
the same title lines, the column titles, a line for each test with its result, then the counts.
.TP
.I benchex_name.csv
The names of the parameters, in builds that have the key
.BR \-q .
.TP
.I benchex.ini
Parameter values, read by
.B \-i
and written by
.BR \-I .
.TP
.I benchex.cfg
Keys for a call without keys; the first line counts.
.PP
All stand in the directory of the program, or where
.B \-l
and
.B \-p
say; when the program was found through PATH, in the current directory.
.SH EXIT STATUS
1 when a test ended with a failure or the run was interrupted, else 0: also when no test ran, a value was wrong or an
output could not be opened.
With
.B \-dStrict=yes
(or Strict=yes in the ini file) 2 when the run ended before its tests, no test ran, a key or a \-d name was not known, or
a table or listing could not be written.
A second interruption, and a fault outside of a test, end the program by the signal.
.SH EXAMPLES
.TP
.B benchex \-B \-LP \-fMDCT
Shows the figures of all functions with "MDCT" in their name.
.TP
.B benchex \-B \-l/tmp/results \-n night \-r \-u
Measures everything and writes
.I night.csv
and
.I night_sum.csv
into
.IR /tmp/results .
.TP
.B LD_LIBRARY_PATH=/opt/newer benchex \-B \-r newer
Measures another build of the library with the same program.
.SH SEE ALSO
.BR benchex-report (1),
.BR benchex-compare (1)
"""


def roff(text):
    """Text that roff takes as it stands."""
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return re.sub(r"^(?=[.'])", r"\\&", text, flags=re.M)


def entry(block):
    """A key: its help lines, then its description as it stands."""
    lines = block.split("\n")
    heads = [line for line in lines if line.startswith("-")]
    rest = [line for line in lines if line and not line.startswith("-")]
    text = ""
    for number, head in enumerate(heads):
        form, _, meaning = head.partition(" = ") if " = " in head else head.partition("= ")
        text += ".TP\n" if number == 0 else ".TQ\n"
        text += f"\\fB{roff(form.strip())}\\fR \\(em {roff(meaning.strip())}\n"
    if rest:
        text += ".nf\n" + roff("\n".join(line.removeprefix("    ") for line in rest)) + "\n.fi\n"
    return text


def manual(program):
    shown = subprocess.run([program, "-hh"], capture_output=True, text=True, check=True).stdout
    blocks = shown.split("EXTENDED HELP\n", 1)[1].strip("\n").split("\n\n")
    return HEAD + "".join(entry(block) for block in blocks if block.startswith("-")) + TAIL


def main():
    check = "--check" in sys.argv
    text = manual(sys.argv[-1])
    if not check:
        MANUAL.write_text(text)
    elif MANUAL.read_text() != text:
        print(f"{MANUAL.name} differs from the program's help: run tools/make_manual.py PROGRAM")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
