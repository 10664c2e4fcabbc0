#!/usr/bin/env python3
"""The fleet scripts: slices together are one run, and a slice that died is named.

    fleet_test.py --fleet DIRECTORY --program BENCHEX [--emulator COMMAND]
"""
import argparse
import os
import pathlib
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

FAST = ["-dMethod=Manual", "-dNumLoops=1"]
OPTIONS = None


def table_cells(path):
    """The function and parameter cells of the rows of a result table, in order."""
    lines = path.read_text().splitlines()
    heading = next(i for i, line in enumerate(lines) if line.startswith("Function,"))
    measured = lines[heading].split(",").index("Comment")
    return [line.split(",")[:measured] for line in lines[heading + 1:]]


class FleetTest(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.directory = pathlib.Path(holder.name)
        self.program = self.script("program", 'exec {program} "$@"')

    def script(self, name, text):
        """A program of that name; {program} stands for the words that start the program under test."""
        path = self.directory / name
        path.write_text("#!/usr/bin/env bash\n" +
                        text.format(program=f"{OPTIONS.emulator.replace(';', ' ')} {OPTIONS.program}") + "\n")
        path.chmod(path.stat().st_mode | stat.S_IXUSR)
        return path

    def run_tool(self, *words, status=0, **options):
        done = subprocess.run([str(word) for word in words], capture_output=True, text=True, timeout=240,
                              cwd=self.directory, check=False, **options)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout + done.stderr

    def make_slices(self, *words):
        slices = self.directory / "slices"
        slices.write_text(self.run_tool(OPTIONS.fleet / "slices.sh", *words))
        return slices

    def run_slices(self, slices, program, status=0, **options):
        text = self.run_tool(OPTIONS.fleet / "run_parallel.sh", "-j", 2, "-o", self.directory / "out", slices, program,
                             *FAST, status=status, **options)
        tables = (self.directory / "out/tables").glob("*.csv")
        return text, [path for path in tables if not path.name.endswith("_sum.csv")]

    def test_four_slices_give_the_rows_of_one_run(self):
        self.run_tool(self.program, "-B", f"-l{self.directory}", "-nwhole", "-r", *FAST)
        _, tables = self.run_slices(self.make_slices(4, self.program), self.program)
        self.assertEqual(len(tables), 1)
        whole = table_cells(self.directory / "whole.csv")
        self.assertGreater(len(whole), 500)
        self.assertEqual(table_cells(tables[0]), whole)

    def test_slices_hold_every_test_once(self):
        for words, tests in (((3, self.program), 77), (("-t", 5, self.program, "-fMP3"), None),
                             ((9, self.program, "-fTNS"), 2)):
            lines = self.make_slices(*words).read_text().splitlines()
            keys = [key for line in lines for key in line.split()]
            self.assertEqual(len(keys), len(set(keys)))
            self.assertEqual(len(lines), min(len(keys), words[words[0] == "-t"]))
            self.assertLessEqual(max(len(line.split()) for line in lines) - min(len(line.split()) for line in lines), 1)
            if tests:
                self.assertEqual(len(keys), tests)

    def test_a_slice_that_died_is_named(self):
        slices = self.make_slices(2, self.program, "-fTNS", "-fInterleave")
        lines = slices.read_text().splitlines()
        self.assertEqual(len(lines[1].split()), 2)
        deaths = {
            # Killed when the first of its two tests is done.
            'set -- "${{@:1:$#-1}}"; {program} "$@" >/dev/null; kill -KILL $$':
                ("ended by SIGKILL", lines[1].split()[-1]),
            # Ends in order, but its last test was not run.
            'set -- "${{@:1:$#-1}}"': ("tests are missing", lines[1].split()[-1]),
            # Never ran.
            "exit 127": ("exit status 127", lines[1]),
            # Says that all went well, and wrote nothing.
            "exit 0": ("the program left no signal file", lines[1]),
        }
        for death, (reason, left) in deaths.items():
            with self.subTest(death=death):
                mortal = self.script("mortal", 'if [[ "$*" == *slice-2* ]]; then ' + death +
                                     '; fi\nexec {program} "$@"')
                text, tables = self.run_slices(slices, mortal, status=2)
                self.assertIn("slice-2 died: " + reason, text)
                self.assertIn("run again: " + left + "\n", text)
                self.assertNotIn("slice-1 died", text)
                self.assertIn("1 of 2 slices complete", text)
                self.assertEqual(len(tables), 1)

    def test_a_failed_test_is_no_death(self):
        slices = self.make_slices(2, self.program, "-fTNS")
        failing = self.script("failing", '{program} "$@"; exit 1')
        text, _ = self.run_slices(slices, failing, status=1)
        self.assertIn("slice-1: a test failed", text)
        self.assertIn("2 of 2 slices complete", text)

    def test_without_parallel_the_slices_run_one_after_another(self):
        tools = self.directory / "tools"
        tools.mkdir()
        for name in ("bash", "env", "sed", "awk", "cat", "cp", "rm", "mkdir", "dirname", "basename", "wc", "seq",
                     "python3"):
            (tools / name).symlink_to(shutil.which(name))
        slices = self.make_slices(2, self.program, "-fTNS")
        text, tables = self.run_slices(slices, self.program, env=dict(os.environ, PATH=str(tools)))
        self.assertIn("one after another", text)
        self.assertIn("2 of 2 slices complete", text)
        self.assertEqual(len(tables), 1)


def main():
    global OPTIONS
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("--fleet", type=pathlib.Path, required=True, help="directory of the scripts")
    arguments.add_argument("--program", required=True)
    arguments.add_argument("--emulator", default="", help="command that runs the program")
    OPTIONS, rest = arguments.parse_known_args()
    if not shutil.which("parallel"):
        print("GNU parallel is not installed: the slices of these tests run one after another.")
    unittest.main(argv=sys.argv[:1] + rest)


if __name__ == "__main__":
    main()
