#!/usr/bin/env python3
"""Measures the tests: changes one token of the harness at a time and looks whether any test notices.

  tools/mutate.py --count 200 --seed 1 >list     200 changes, drawn by chance
  tools/mutate.py --replay list                  those of a list that nobody noticed, once more

The tree is copied, so that the sources stay as they are, and built without optimisation, once for each of two workers.
Changed are operators (comparison, arithmetic, logical), numbers and truth values in the .cpp files of api/ and
binding/. Headers are left alone: half the tests would have to be compiled again for each change. So are comments,
texts, the preprocessor, what is checked while compiling, and calls that name a process (it could be another one).
A change counts when it compiles and changes the object code, also the optimised code if no test notices it. Tests are
the harness' unit tests, the command-line cases and the misbehaving functions; a test must fail twice or exceed its
time limit to have noticed. One line for each change, in columns: place, before, after, result, the line of source.
"""

import argparse
import concurrent.futures
import copy
import functools
import importlib.util
import itertools
import json
import multiprocessing
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WORKERS = 2
LIBRARIES = {"api/": "lib/libbxapi.a", "binding/": "lib/libkvbinding.a"}  # of the folders that are changed
TOKEN = re.compile(r"""
    (?P<skip> //[^\n]* | /\*.*?\*/ | R"(?P<fence>[^(]*)\(.*?\)(?P=fence)" | "(?:\\.|[^"\\\n])*"
            | ^[ ]*\#(?:\\\n|[^\n])* | static_assert.*?; )
  | (?P<word> [A-Za-z_]\w* )
  | (?P<number> \d(?:[eEpP][+-]|'?[\w.])* )
  | (?P<character> '(?:\\.|[^'\\\n])*' )
  | (?P<operator> [<>=!+\-*/%&|^]=?=? | . )""", re.X | re.S | re.M)
TOKEN_PAIRS = ("&&", "||", "++", "--", "->", "<<", ">>", "::")
OTHER_PROCESS = re.compile(r"\b(setpriority|sched_\w+|kill)\(")
BINARY = {"<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"], "==": ["!="], "!=": ["=="],
          "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"], "&&": ["||"], "||": ["&&"], "&": ["|"], "|": ["&"],
          "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="], "<<": [">>"], ">>": ["<<"]}
UNARY = {"!": [""], "++": ["--"], "--": ["++"]}
WORDS = {"true": "false", "false": "true"}
SLOW_UNIT_TESTS = {"misbehave_test": "-*TheThousandth*"}  # run last, without the cases of this filter
CASE_PROGRAMS = ("fixture", "bare")  # of the command-line cases
MEMORY_LIMIT, CPU_LIMIT = 8 << 30, 120  # bytes, seconds: ends a change that runs wild
LIMIT_FACTOR, LIMIT_LEAST = 10, 5  # a test may take so many times as long as without a change, and so many seconds


@dataclass(frozen=True)
class Change:
    """One token of a source file and what stands in its place."""
    file: str
    line: int
    column: int
    before: str
    after: str
    text: str

    def row(self, result):
        return "\t".join((f"{self.file}:{self.line}:{self.column}", self.before, self.after or "(nothing)", result,
                          self.text))

    def apply(self, source):
        lines = source.split("\n")
        line, at = lines[self.line - 1], self.column - 1
        if not line.startswith(self.before, at):
            raise ValueError(f"{self.file}:{self.line}:{self.column}: no '{self.before}' there")
        lines[self.line - 1] = line[:at] + self.after + line[at + len(self.before):]
        return "\n".join(lines)


# ---- What can be changed ----

def number_changes(text):
    digits = text.replace("'", "")
    suffix = re.search(r"[uUlLfF]*$", digits)[0] if not digits.lower().startswith("0x") else ""
    digits = digits[:len(digits) - len(suffix)]
    try:
        value = int(digits, 0)
    except ValueError:
        try:
            return [repr(float(digits) * 2 + 1) + suffix]
        except ValueError:
            return []  # a binary or hexadecimal fraction
    changed = {value + 1, max(value - 1, 0), 0} - {value}
    return [f"{'0x%x' % new if digits.lower().startswith('0x') else new}{suffix}" for new in sorted(changed)]


def replacements(match, source):
    """What may stand in the place of a token."""
    text, kind = match.group(), match.lastgroup
    if kind == "number":
        return number_changes(text)
    if kind == "word":
        return [WORDS[text]] if text in WORDS else []
    if kind != "operator":
        return []
    spaced = source[match.start() - 1].isspace() and source[match.end():match.end() + 1].isspace()
    if not spaced:  # in this tree's layout a sign, a reference or the bracket of a template
        return UNARY.get(text, [])
    before, after = source[:match.start()].rstrip()[-1:], source[match.end():].lstrip()[:1]
    if '"' in (before, after) or (text in ("<<", ">>") and not before.isdigit()):  # joins texts, writes to a stream
        return []
    return BINARY.get(text, [])


def tokens(source):
    """The tokens of a source text, two-character operators in one piece."""
    at = 0
    while match := TOKEN.match(source, at):
        if source[at:at + 2] in TOKEN_PAIRS and match.lastgroup == "operator":
            match = re.compile(r"(?P<operator>..)", re.S).match(source, at)
        yield match
        at = match.end()


def changes_of(file):
    source = (ROOT / file).read_text(encoding="utf-8")
    lines = source.split("\n")
    for match in tokens(source):
        line = source.count("\n", 0, match.start())
        column = match.start() - (source.rfind("\n", 0, match.start()) + 1)
        if OTHER_PROCESS.search(lines[line]):
            continue
        for after in replacements(match, source):
            yield Change(file, line + 1, column + 1, match.group(), after, lines[line].strip())


def drawn(seed):
    """All changes in an order of chance: first the token, then one of its replacements."""
    chance = random.Random(seed)
    places = {}
    for file in sorted(tracked()):
        if file.startswith(tuple(LIBRARIES)) and file.endswith(".cpp") and not file.endswith("/main.cpp"):
            for change in changes_of(file):
                places.setdefault((file, change.line, change.column), []).append(change)
    order = sorted(places)
    chance.shuffle(order)
    return [chance.choice(places[place]) for place in order]


def unnoticed_of(list_file):
    changes = []
    for row in Path(list_file).read_text(encoding="utf-8").splitlines():
        cells = row.split("\t")
        if len(cells) == 5 and cells[3] == "unnoticed":
            file, line, column = cells[0].split(":")
            after = "" if cells[2] == "(nothing)" else cells[2]
            changes.append(Change(file, int(line), int(column), cells[1], after, cells[4]))
    return changes


# ---- A copy of the tree, its build and its tests ----

def tracked():
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT,
                            check=True, stdout=subprocess.PIPE).stdout.decode()
    return [file for file in listed.split("\0") if file and (ROOT / file).is_file()]


def confine():
    """A session of its own for the process, limits, and the signals as in a terminal."""
    os.setsid()
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_CPU, (CPU_LIMIT, CPU_LIMIT))
    for sig in (signal.SIGINT, signal.SIGHUP):
        signal.signal(sig, signal.SIG_DFL)


def run(command, limit, **options):
    """Exit status (None beyond the time limit) and output of a command, which leaves no process of its group behind."""
    with tempfile.TemporaryFile() as output:
        with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                              preexec_fn=confine, **options) as process:
            try:
                status = process.wait(limit)
            except subprocess.TimeoutExpired:
                status = None
            finally:
                try:
                    os.killpg(process.pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass
        output.seek(0)
        return status, output.read(1 << 20).decode("utf-8", "replace")


class Tree:
    """A copy of the tree with its build without optimisation."""

    def __init__(self, place):
        self.source, self.build = place / "source", place / "build"
        self.unit_tests = sorted(file.stem for file in (ROOT / "tests").glob("*_test.cpp")
                                 if not file.name.startswith("zor_")) + list(SLOW_UNIT_TESTS)
        self.copy()
        self.build_all()
        entries = json.loads((self.build / "compile_commands.json").read_text(encoding="utf-8"))
        self.commands = {}  # source file -> how it is compiled
        for entry in entries:
            self.commands[os.path.relpath(entry["file"], self.source)] = entry["command"]
        self.share_libraries()

    def duplicate(self, place):
        """The same tree at another place; no command names the old one."""
        other = copy.copy(self)
        other.source, other.build = place / "source", place / "build"
        shutil.rmtree(place, ignore_errors=True)
        shutil.copytree(self.source.parent, place, symlinks=True)
        moved = functools.partial(re.sub, re.escape(str(self.source.parent)) + r"\b", str(place))
        other.commands = {file: moved(command) for file, command in self.commands.items()}
        return other

    def build_all(self):
        environment = dict(os.environ, CCACHE_BASEDIR=str(self.source), CCACHE_NOHASHDIR="1")
        configure = ["cmake", "-S", self.source, "-B", self.build, "-G", "Ninja", "-DBENCHEX_TESTS=ON",
                     "-DCMAKE_BUILD_TYPE=None", "-DCMAKE_CXX_FLAGS=-O0 -fomit-frame-pointer", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON",
                     "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST"]
        if shutil.which("ld.lld"):
            configure.append("-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld")
        if shutil.which("ccache"):
            configure += [f"-DCMAKE_{language}_COMPILER_LAUNCHER=ccache" for language in ("C", "CXX")]
        targets = ["-j", str(WORKERS), "--target", *self.unit_tests, *CASE_PROGRAMS]
        for command in (configure, ["cmake", "--build", self.build, *targets]):
            subprocess.run(command, check=True, env=environment, stdout=subprocess.DEVNULL)

    def copy(self):
        """Brings the copy up to date; what is the same keeps its time, so that it is not built again."""
        files = tracked()
        for file in files:
            old, new = ROOT / file, self.source / file
            if not new.is_file() or new.read_bytes() != old.read_bytes():
                new.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(old, new)
        for file in list(self.source.rglob("*")):
            if file.is_file() and str(file.relative_to(self.source)) not in files:
                file.unlink()

    def share_libraries(self):
        """Links the programs with shared libraries of the harness, so that a change links one of them and no program."""
        for folder in LIBRARIES:
            self.link(folder)
        for program in (*self.unit_tests, *CASE_PROGRAMS):
            listed = subprocess.run(["ninja", "-t", "commands", program], cwd=self.build, check=True,
                                    stdout=subprocess.PIPE)
            recipe = listed.stdout.decode().splitlines()[-1]  # after those of what it depends on
            for archive in LIBRARIES.values():
                recipe = recipe.replace(archive, f"{archive}.so '-Wl,-rpath,$ORIGIN/../lib'")
            if not self.make(recipe):
                raise SystemExit(f"{program} cannot be linked with shared libraries")

    def link(self, folder):
        """Makes the shared library of a folder."""
        objects = " ".join(str(self.object_file(file)) for file in self.commands
                           if file.startswith(folder) and not file.endswith("/main.cpp"))
        linker = "-fuse-ld=lld" if shutil.which("ld.lld") else ""
        library = f"{LIBRARIES[folder]}.so"
        return self.make(f"c++ -shared {linker} -Wl,-soname,{Path(library).name} -o {library} {objects}")

    def make(self, recipe):
        return run(["sh", "-c", recipe], 600, cwd=self.build, env=dict(os.environ, CCACHE_DISABLE="1"))[0] == 0

    def object_file(self, file):
        return self.build / re.search(r" -o (\S+)", self.commands[file])[1]

    def compiled(self, file, options=""):
        """The object code of a file, in the tree or, with further options, beside it; None if it does not compile."""
        command, place = self.commands[file], self.object_file(file)
        if options:
            place = place.with_suffix(".other")
            command = f"{command} {options} -o {place}"
        return place.read_bytes() if self.make(command) else None


class Tests:
    """The tests of a tree, in the order in which they are likely to notice a change, with their time limits."""

    def __init__(self, tree):
        self.tree = tree
        self.quick = [name for name in tree.unit_tests if name not in SLOW_UNIT_TESTS]
        self.cases = sorted((tree.source / "tests" / "cli" / "cases").glob("*.txt"))
        runner = importlib.util.spec_from_file_location("run_case", tree.source / "tests" / "cli" / "run_case.py")
        self.run_case = importlib.util.module_from_spec(runner)
        runner.loader.exec_module(self.run_case)
        self.limits = {}
        for name in self.order("api/src/"):
            start = time.monotonic()
            if failure := self.failure(name):
                raise SystemExit(f"without any change, {failure} fails")
            self.limits[name] = LIMIT_FACTOR * (time.monotonic() - start) + LIMIT_LEAST

    def order(self, file):
        """Tests named after the file's room come first, slow ones last."""
        parts = Path(file).parts
        room = parts[2] if len(parts) > 2 else parts[0]
        own = [name for name in self.quick if name.startswith(room)]
        rest = sorted((name for name in self.quick if name not in own), key=lambda name: self.limits.get(name, 0))
        cases = ["cases"]
        return own + (cases + rest if room == "session" else rest + cases) + list(SLOW_UNIT_TESTS)

    def failure(self, name):
        """What notices the present state of the tree, or None."""
        limit = self.limits.get(name, 600)
        with tempfile.TemporaryDirectory() as directory:
            return self.case_failure(limit) if name == "cases" else self.unit_failure(name, limit, directory)

    def unit_failure(self, name, limit, directory):
        environment = dict(os.environ, GTEST_FAIL_FAST="1", GTEST_FILTER=SLOW_UNIT_TESTS.get(name, "*"))
        status, output = run([str(self.tree.build / "bin" / name)], limit, cwd=directory, env=environment)
        if status is None:
            return f"{name} (time limit)"
        failed = re.search(r"\[  FAILED  \] (\S+?),? ", output)
        return None if status == 0 else f"{name} {failed[1]}" if failed else f"{name} (exit status {status})"

    def case_failure(self, limit):
        """Runs the cases in a process of their own until one fails; it says which through a pipe."""
        here, there = multiprocessing.Pipe(duplex=False)
        process = multiprocessing.Process(target=self.report_cases, args=(there,))
        process.start()
        there.close()
        try:
            finished = here.poll(limit)
            return here.recv() if finished else "cli (time limit)"
        except EOFError:
            return "cli (runs wild)"
        finally:
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except (ProcessLookupError, PermissionError):
                process.kill()
            process.join()

    def report_cases(self, pipe):
        confine()
        programs = [str(self.tree.build / "bin" / name) for name in CASE_PROGRAMS]
        for case in self.cases:
            expected = case.read_text(encoding="utf-8").split("\n")
            try:
                with tempfile.TemporaryDirectory() as directory:
                    self.run_case.provide_programs(directory, programs, "")
                    same = self.run_case.run_case(expected, directory) == expected
            except Exception:  # pylint: disable=broad-except
                same = False  # no output within the limits
            if not same:
                pipe.send(f"cli.{case.stem}")
                return
        pipe.send(None)

    def noticed_by(self, file):
        for name in self.order(file):
            failure = self.failure(name)
            if failure and ("(time limit)" in failure or self.failure(name)):
                return failure
        return None


# ---- Judging ----

class Judge:
    """A worker: a tree of its own, in which it tries changes."""

    def __init__(self, tree):
        self.tree = tree
        self.tests = Tests(tree)
        self.optimised = {}

    def result(self, change):
        place = self.tree.source / change.file
        source = place.read_text(encoding="utf-8")
        changed = change.apply(source)
        folder = next(folder for folder in LIBRARIES if change.file.startswith(folder))
        object_file = self.tree.object_file(change.file)
        kept = object_file.read_bytes()
        try:
            place.write_text(changed, encoding="utf-8")
            code = self.tree.compiled(change.file)
            if code is None:
                return "did not compile"
            if code == kept:
                return "same code"
            self.tree.link(folder)
            noticed = self.tests.noticed_by(change.file)
            if noticed:
                return f"noticed by {noticed}"
            optimised = self.tree.compiled(change.file, "-O2")
            place.write_text(source, encoding="utf-8")
            if change.file not in self.optimised:
                self.optimised[change.file] = self.tree.compiled(change.file, "-O2")
            return "same code" if optimised == self.optimised[change.file] else "unnoticed"
        finally:
            place.write_text(source, encoding="utf-8")
            object_file.write_bytes(kept)
            self.tree.link(folder)


judge = None  # of a worker process


def set_up(trees):
    global judge  # pylint: disable=global-statement
    judge = Judge(trees.get())


def judged(change):
    return change, judge.result(change)


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("--count", type=int, default=200, help="changes that count (default 200)")
    arguments.add_argument("--seed", type=int, default=1, help="of the draw (default 1)")
    arguments.add_argument("--replay", metavar="LIST", help="try the unnoticed changes of an earlier list again")
    arguments.add_argument("--scratch", type=Path, help="keep copies and builds here, for the next time")
    options = arguments.parse_args()
    os.environ["LC_ALL"] = "C"
    changes = unnoticed_of(options.replay) if options.replay else drawn(options.seed)
    count = len(changes) if options.replay else options.count
    kinds = {"noticed": 0, "unnoticed": 0, "same code": 0, "did not compile": 0}
    with tempfile.TemporaryDirectory() as temporary:
        scratch = (options.scratch or Path(temporary)).resolve()
        trees = multiprocessing.Queue()
        tree = Tree(scratch / "worker1")
        trees.put(tree)
        for number in range(2, WORKERS + 1):
            trees.put(tree.duplicate(scratch / f"worker{number}"))
        with concurrent.futures.ProcessPoolExecutor(WORKERS, initializer=set_up, initargs=(trees,)) as workers:
            remaining = iter(changes)
            running = [workers.submit(judged, change) for change in itertools.islice(remaining, 2 * WORKERS)]
            while running and kinds["noticed"] + kinds["unnoticed"] < count:
                change, result = running.pop(0).result()
                kinds["noticed" if result.startswith("noticed") else result] += 1
                print(change.row(result), flush=True)
                running += [workers.submit(judged, change) for change in itertools.islice(remaining, 1)]
            for future in running:
                future.cancel()
    counted = kinds["noticed"] + kinds["unnoticed"]
    print(f"noticed {kinds['noticed']} of {counted} ({100 * kinds['noticed'] / max(counted, 1):.1f} %); not counted: "
          f"{kinds['same code']} that change no code, {kinds['did not compile']} that do not compile")


if __name__ == "__main__":
    sys.exit(main())
