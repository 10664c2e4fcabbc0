#!/usr/bin/env python3
"""Checks rules of the tree that no compiler checks.

- Floors: a room of the harness includes only rooms on its own floor or below it.
- The library knows nothing of the harness, and nobody outside the library its internal headers.
- Files of code have at most 500 lines, generated tables and the library's public headers excepted.
Prints what breaks a rule and exits with 1.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FLOORS = {"foundation": 0, "output": 1, "system": 1, "data": 1, "timing": 2, "parameters": 2, "framework": 3,
          "session": 4}
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


def complaints(path):
    text = (ROOT / path).read_text()
    lines = text.count("\n")
    if lines > MAX_LINES and "tables" not in path.parts and path.parts[:2] != ("zor", "include"):
        yield f"{path}: {lines} lines, at most {MAX_LINES}"
    room = room_of(path)
    for name in INCLUDE.findall(text):
        included = name.split("/")[0]
        if room and included in FLOORS and FLOORS[included] > FLOORS[room]:
            yield f"{path}: a room on floor {FLOORS[room]} includes {name}, on floor {FLOORS[included]}"
        if path.parts[0] == "zor" and (included in FLOORS or HARNESS_HEADER.match(name)):
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
