#!/usr/bin/env python3
"""Compares a program with itself where one side misbehaves: its row says so, and the rest goes on."""

import argparse
import csv
import io
import json
import os
import signal
import subprocess
import sys
import tempfile
import time

TIME_LIMIT = 120  # seconds for a comparison that has to end by itself
ROWS = 26  # 13 functions, two lengths


class Failure(Exception):
    """What was not as it should be."""


def require(condition, message):
    if not condition:
        raise Failure(message)


class Comparisons:
    def __init__(self, compare, program):
        self.base = [os.path.abspath(compare), "--program", os.path.abspath(program), "--pair"]

    def start(self, before, after, *options, **how):
        how.setdefault("stdout", subprocess.PIPE)
        how.setdefault("stderr", subprocess.PIPE)
        return subprocess.Popen([*self.base, before, after, *options], text=True, stdin=subprocess.DEVNULL, **how)

    def run(self, before, after, *options, **how):
        """Exit status, output and messages of a comparison."""
        run = self.start(before, after, *options, **how)
        try:
            output, messages = run.communicate(timeout=TIME_LIMIT)
        except subprocess.TimeoutExpired:
            run.kill()
            raise Failure("the comparison does not end") from None
        return run.returncode, output, messages

    def json(self, before, after, *options):
        """Exit status and result. The threshold is wide: this is not about figures, and the machine may be busy."""
        status, output, messages = self.run(before, after, "--json", "--seconds", "20", "--threshold", "20", "--limit", "1",
                                            *options)
        require(status in (0, 1), f"status {status}: {messages}")
        return status, json.loads(output)


def rows_of(result, function):
    return [row for row in result["rows"] if row["function"] == function]


def require_rest(result, function):
    """All other rows are compared, and equal."""
    for row in result["rows"]:
        if row["function"] != function:
            require(row["rounds"] >= 8 and row["outputs"] == "equal" and "trouble" not in row, f"the rest suffers: {row}")


def equal_sides(comparisons):
    status, result = comparisons.json("", "")
    require(status == 0, f"status {status}")
    require(len(result["rows"]) == ROWS, f"{len(result['rows'])} rows")
    require(result["wrong"] == 0 and result["slower"] == 0, "equal sides differ")
    require_rest(result, "")


def misbehaving(deed, function, check, expected_status=0):
    """A check that lets the second side do the deed."""

    def run(comparisons):
        status, result = comparisons.json("", f"PAIR_TEST={deed}")
        require(status == expected_status, f"status {status}: {result['rows'][:2]}")
        require_rest(result, function)
        rows = rows_of(result, function)
        only = [row for row in result["onlyBefore"] if row["function"] == function]
        problem = check(rows, only)
        require(problem is True, f"{function}: {rows} {only}")

    return run


def trouble(text, rounds=0):
    """The first row names the trouble; the second, which the broken test does not come to, is on one side only."""
    return lambda rows, only: len(rows) == 1 and text in rows[0].get("trouble", "") and len(only) == 1


def interrupted(comparisons):
    """Ctrl-C gives what is known so far: how long the first round and all of them take, the machine decides."""
    result = None
    for wait in (0.5, 1, 2, 4, 8):
        run = comparisons.start("", "", "--json", "--threshold", "0.001", "--seconds", "60", preexec_fn=os.setpgrp)
        time.sleep(wait)
        os.killpg(run.pid, signal.SIGINT)
        output, messages = run.communicate(timeout=TIME_LIMIT)
        if run.returncode in (0, 1):
            result = json.loads(output)
            if result["interrupted"] and result["rounds"] > 0:
                break
    require(result, f"status {run.returncode}: {messages}")
    require(result["interrupted"] and result["seconds"] < 30, "not interrupted")
    require(len(result["rows"]) == ROWS and result["rounds"] > 0, f"{result['rounds']} rounds")


def bounded(comparisons):
    """--seconds is kept; a machine at rest may have decided all rows before."""
    status, output, messages = comparisons.run("", "", "--json", "--threshold", "0.001", "--seconds", "1")
    require(status in (0, 1), f"status {status}: {messages}")
    result = json.loads(output)
    require(result["rounds"] > 0 and result["seconds"] < 4, f"{result['rounds']} rounds, {result['seconds']} s")


def outputs_only(comparisons):
    """No rounds, no verdicts; what differs is found all the same, in all three forms."""
    sides = ["", "PAIR_TEST=wrong", "--outputs-only"]
    status, result = comparisons.json(*sides)
    require(status == 1 and result["rounds"] == result["slower"] == result["cannotTell"] == 0, f"status {status}")
    require(len(result["rows"]) == ROWS and result["wrong"] == 2, f"{result['wrong']} wrong")
    require(all(row["rounds"] == 0 and row["verdict"] == "-" for row in result["rows"]), "timed")
    status, result = comparisons.json("-dAcuracy=5", "", "--outputs-only")
    require(status == 0, "equal sides differ")
    require(any(note.startswith("before: -dAcuracy=5 is not used") for note in result["notes"]), f"{result['notes']}")
    status, output, _ = comparisons.run(*sides)
    require(status == 1 and output.count("WRONG") == 2 and f"{ROWS} rows: 2 wrong; " in output, output)
    status, output, _ = comparisons.run(*sides, "--csv")
    lines = list(csv.DictReader(io.StringIO(output)))
    require(status == 1 and [line["Function"] for line in lines if line["Outputs"] == "wrong"] == ["zorsWrong_32f"] * 2,
            output)


def instructions(comparisons):
    """One instruction more is found, and nothing else; nothing is timed."""
    status, result = comparisons.json("", "PAIR_TEST=more", "--instructions")
    require(status == 1 and result["rounds"] == 0 and len(result["rows"]) == ROWS, f"status {status}")
    for row in result["rows"]:
        more = row["instructionsAfter"] - row["instructionsBefore"]
        steady = row["function"] == "zorsSteady_32f"
        require((more, row["verdict"]) == ((1, "more") if steady else (0, "same")), f"{row}")
    status, output, _ = comparisons.run("", "", "--instructions")
    require(status == 0 and " 0 with more instructions, 0 wrong; " in output, output)


def chained(comparisons):
    """Results of a comparison of equal sides and of one whose second side is slower make a history, which tells the step."""
    with tempfile.TemporaryDirectory() as place:
        for name, after in ("night1", ""), ("night2", "PAIR_TEST=ulp"), ("night3", ""):
            _, result = comparisons.json("", after)
            with open(os.path.join(place, name + ".json"), "w", encoding="utf-8") as file:
                json.dump(result, file)
        report = os.path.join(os.path.dirname(comparisons.base[0]), "benchex-report")
        run = subprocess.run([report, "--history", "--alarm", "2", "-o", os.path.join(place, "page.html"), place],
                             capture_output=True, text=True, check=False)
        steps = [line for line in run.stdout.splitlines() if " between " in line]
        require(run.returncode == 1 and len(steps) == 1 and "zorsUlp_32f  between night1 and night2" in steps[0],
                f"status {run.returncode}: {run.stdout} {run.stderr}")


def refused(comparisons):
    """What cannot be compared has status 2 and a reason."""
    with tempfile.TemporaryDirectory() as empty:
        cases = [(("", "nosuch"), "neither a directory"), ((empty, ""), "no library in"),
                 (("", "", "--", "-f", "nosuch"), "measures nothing"), (("", "", "--outputs", "12x"), "--outputs"),
                 (("/bin/false", ""), "measures nothing"), (("",), "two sides"),
                 (("", "", "--threshold", "x"), "--threshold")]
        for words, reason in cases:
            status, _, messages = comparisons.run(words[0], *words[1:]) if len(words) > 1 else \
                comparisons.run(*words, "--all")
            require(status == 2 and reason in messages, f"{words}: status {status}: {messages}")


def without_rights(comparisons):
    """Another user needs no rights for it."""
    if os.getuid() != 0:
        return
    status, output, messages = comparisons.run("", "", "--json", "--threshold", "20", "--seconds", "20", user=65534,
                                               group=65534, extra_groups=[], cwd="/")
    require(status == 0, f"status {status}: {messages} {output[:300]}")
    require_rest(json.loads(output), "")


def outputs(kind, text=""):
    return lambda rows, only: len(rows) == 2 and all(
        row["outputs"] == kind and text in row.get("difference", "") for row in rows)


CHECKS = {
    "equal_sides": equal_sides,
    "skip": misbehaving("skip", "zorsSkip_32f", lambda rows, only: len(rows) == 1 and len(only) == 1),
    "fault": misbehaving("fault", "zorsFault_32f", trouble("Illegal storage access"), 1),
    "late": misbehaving("late", "zorsLate_32f", lambda rows, only: "trouble" in rows[0]),
    "hang": misbehaving("hang", "zorsHang_32f", trouble("Time limit of 1 s exceeded"), 1),
    "stuck": misbehaving("stuck", "zorsStuck_32f", lambda rows, only: not rows and len(only) == 2),
    "die": misbehaving("die", "zorsDie_32f", trouble("ended by signal 9"), 1),
    "status": misbehaving("status", "zorsStatus_32f", outputs("wrong", "status 0 and status 3"), 1),
    "data": misbehaving("data", "zorsData_32f", outputs("data differ", "after it block"), 1),
    "ulp": misbehaving("ulp", "zorsUlp_32f", outputs("right", "Vector 32f"), 1),  # and slower
    "wrong": misbehaving("wrong", "zorsWrong_32f", outputs("wrong", "(Vector 16s len=8) index 2: 0 and 1"), 1),
    "state": misbehaving("state", "zorsState_32f", outputs("wrong", "(Vector 16s len=8) after call 2 index 5: 0 and 1"),
                         1),
    "interrupted": interrupted,
    "bounded": bounded,
    "outputs_only": outputs_only,
    "instructions": instructions,
    "chained": chained,
    "refused": refused,
    "without_rights": without_rights,
}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--compare", required=True)
    parser.add_argument("--program", required=True)
    parser.add_argument("checks", nargs="*", choices=[[], *CHECKS])
    arguments = parser.parse_args()
    comparisons = Comparisons(arguments.compare, arguments.program)
    failures = 0
    for name in arguments.checks or CHECKS:
        try:
            CHECKS[name](comparisons)
            print(f"{name}: as it should be", flush=True)
        except Failure as failure:
            print(f"{name}: FAILED: {failure}", flush=True)
            failures += 1
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
