#!/usr/bin/env python3
"""Checks rules of the tree that no compiler checks.

- One order of rooms: a room of the harness includes itself and earlier rooms only; the binding stands beside
  the framework, the suite behind it. A test knows no room behind the one that it tests, the programs of tools
  only headers of data.
- The library knows nothing of the harness, and nobody outside the library its internal headers.
- Files of code have at most 500 lines, generated tables and the library's public headers excepted.
- A comment behind a member or a row is written /**< so */ in all rooms.
Prints what breaks a rule and exits with 1.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
ROOMS = ["foundation", "output", "system", "data", "timing", "parameters", "framework", "session"]
ORDER = {room: place for place, room in enumerate(ROOMS)}
# Folders and tests that are not named after their room, by the last room that they may know.
LAST_ROOM = {"binding": "framework", "zorac": "framework", "examples": "framework", "fuzz": "session",
             "bench": "session", "tools": None, "zor": None}
TEST_ROOM = {"dialogue": "session", "cacheiterator": "parameters", "faults": "framework", "binding": "framework",
             "test": "output", "ini": "parameters", "zor": None, "zormath": None}
DATA_HEADERS = {"output/bxtable.h", "timing/bxturnsform.h"}
PUBLIC_LIBRARY_HEADERS = {path.relative_to(ROOT / "zor/include").as_posix() for path in (ROOT / "zor/include").rglob("*.h")}
LIBRARY_FOLDERS = {path.name for path in (ROOT / "zor/src").iterdir() if path.is_dir()}
HARNESS_HEADER = re.compile(r"(bx|kv)[a-z]*\.h$")
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)
MAX_LINES = 500


def code_files():
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "*.cpp", "*.h"], cwd=ROOT, text=True,
                            capture_output=True, check=True).stdout.split()
    return [pathlib.PurePath(name) for name in listed if (ROOT / name).exists()]


def room_of(path):
    return path.parts[2] if path.parts[:2] == ("api", "src") and len(path.parts) > 3 else None


def last_room_of(path):
    """The last room that a file may include; None for no room at all."""
    if path.parts[:2] == ("api", "src"):
        return room_of(path) or "session"
    if path.parts[0] == "tests" and len(path.parts) == 2:
        theme = path.stem.split("_")[0]
        theme = theme.removesuffix("support")
        return theme if theme in ORDER else TEST_ROOM.get(theme)
    if path.parts[:2] == ("tests", "tools"):
        return None
    return LAST_ROOM.get(path.parts[0], "session")


def complaints(path):
    text = (ROOT / path).read_text()
    lines = text.count("\n")
    if lines > MAX_LINES and "tables" not in path.parts and path.parts[:2] != ("zor", "include"):
        yield f"{path}: {lines} lines, at most {MAX_LINES}"
    if re.search(r"//[/!]<", text):
        yield f"{path}: a comment behind a member is written /**< so */"
    last = last_room_of(path)
    for name in INCLUDE.findall(text):
        included = name.split("/")[0]
        if included in ORDER and name not in DATA_HEADERS and (last is None or ORDER[included] > ORDER[last]):
            yield f"{path}: includes {name}, " + (f"a room behind {last}" if last else "and is to know no room")
        if path.parts[0] == "zor" and (included in ORDER or HARNESS_HEADER.match(name)):
            yield f"{path}: the library includes the harness's {name}"
        if path.parts[0] in ("api", "binding", "zorac") and included in LIBRARY_FOLDERS and \
                not (ROOT / "binding" / name).exists():
            yield f"{path}: includes the library's internal {name}"
        if path.parts[0] == "api" and name in PUBLIC_LIBRARY_HEADERS - {"zortypes.h"}:
            yield f"{path}: the harness includes {name}"


def main():
    found = [text for path in code_files() for text in complaints(path)]
    print("\n".join(found) if found else "The tree keeps its rules.")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
