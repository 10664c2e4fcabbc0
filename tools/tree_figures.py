#!/usr/bin/env python3
"""Counts what tells how a tree of sources is built, of this one or of an older checkout:

    tools/tree_figures.py [TREE] [--known FILE]

Lines of each room; headers that a unit gets from kv.h and bx.h; the longest functions; variables in headers that can
change; names without a user, and with users in tests only. Names that stand in FILE are others' to use and left out of the last three.
Needs Universal Ctags.
"""
import argparse
import collections
import json
import pathlib
import re
import subprocess

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)
NOT_CODE = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', re.S)
WORD = re.compile(r"[A-Za-z_]\w*")
HARNESS = ("api/src", "binding")
USERS = HARNESS + ("zorac", "bench", "fuzz", "examples", "tools")


def sources(tree, folders, endings=(".h", ".cpp")):
    return sorted(path for folder in folders for path in (tree / folder).rglob("*") if path.suffix in endings)


def rooms(tree):
    return sorted(path for path in (tree / "api/src").iterdir() if path.is_dir()) + [tree / "binding", tree / "zorac"]


def lines(paths):
    return sum(path.read_text().count("\n") for path in paths)


def included_from(tree, header):
    """The headers that an include of this one brings, itself among them."""
    found, waiting = set(), [header]
    while waiting:
        name = waiting.pop()
        for path in (tree / folder / name for folder in (*HARNESS, "zor/include")):
            if path.exists() and path not in found:
                found.add(path)
                waiting += INCLUDE.findall(path.read_text())
    return found


def tags(paths):
    command = ["ctags", "--output-format=json", "--kinds-C++=+pxL-l", "--fields=+neSKP", "--languages=C++", "-f", "-"]
    out = subprocess.run(command + [str(path) for path in paths], capture_output=True, text=True, check=True).stdout
    return [tag for tag in map(json.loads, out.splitlines()) if not tag["name"].startswith("__anon")]


def is_variable(tag):
    text = tag["pattern"].strip("/^$")
    declared = text.split(tag["name"])[0]
    if tag["kind"] == "member":
        if not re.search(r"\bstatic\b", declared):
            return False
    elif tag["kind"] not in ("variable", "externvar"):
        return False
    constant = re.search(r"\bconst\b", declared.split("*")[-1])
    return not constant and not re.search(r"\b(constexpr|typedef|template)\b", text)


def variables(tree):
    found = [tag for tag in tags(sources(tree, HARNESS, (".h",))) if is_variable(tag)]
    unique = {(tag["path"], tag.get("scope", ""), tag["name"]): tag for tag in found}
    return list(unique.values())


def longest_functions(tree, count=5):
    found = [(tag["end"] - tag["line"] + 1, tag["name"], tag["path"]) for tag in tags(sources(tree, HARNESS))
             if tag["kind"] == "function" and "end" in tag]
    return sorted(found, reverse=True)[:count]


def words(paths):
    count = collections.Counter()
    for path in paths:
        count.update(WORD.findall(NOT_CODE.sub(" ", path.read_text())))
    return count


def names_without_user(tree, known):
    """Names that stand nowhere but where they are declared: (nowhere at all, in tests too)."""
    used, tested = words(sources(tree, USERS)), words(sources(tree, ("tests",)))
    places = collections.defaultdict(set)
    for tag in tags(sources(tree, HARNESS)):
        if tag["kind"] not in ("local", "parameter", "namespace", "enum", "header") and tag["name"] not in known:
            places[tag["name"]].add((tag["path"], tag["line"]))
    # Objects whose constructors do the work are never named.
    alone = [name for name in places if WORD.fullmatch(name) and used[name] <= len(places[name]) and
             not re.fullmatch(r"s_\w*(Init|Registered|Installed)", name)]
    return sorted(n for n in alone if not tested[n]), sorted(n for n in alone if tested[n])


def main():
    arguments = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    arguments.add_argument("tree", nargs="?", default=pathlib.Path(__file__).resolve().parent.parent, type=pathlib.Path)
    arguments.add_argument("--known", type=pathlib.Path)
    given = arguments.parse_args()
    tree = given.tree
    known = set(WORD.findall(given.known.read_text())) if given.known else set()

    for room in rooms(tree):
        print(f"{lines(sources(room, ('.',))):6} lines in {room.relative_to(tree)}")
    chief = {name: included_from(tree, name) for name in ("kv.h", "bx.h")}
    library = set(sources(tree, ("zor/include",), (".h",)))
    for name, headers in chief.items():
        print(f"{len(headers - library):6} headers of the harness from {name}, {lines(headers - library)} lines")
    print(f"{len(chief['kv.h'] | chief['bx.h'] | library):6} headers from both and of the library")
    for length, name, path in longest_functions(tree):
        print(f"{length:6} lines of {name} in {pathlib.Path(path).relative_to(tree)}")
    state = variables(tree)
    views = [tag for tag in state if "&" in tag["pattern"].split(tag["name"])[0]]
    own = sorted(tag["name"] for tag in state if tag["name"] not in known)
    print(f"{len(state):6} variables in headers, {len(views)} of them references; {len(own)} not among the known names:",
          " ".join(own))
    for text, names in zip(("without a user", "used by tests only"), names_without_user(tree, known)):
        print(f"{len(names):6} names {text}:", " ".join(names))


if __name__ == "__main__":
    main()
