#!/usr/bin/env bash
# Line coverage of the harness and of the library by all tests, unit and command line:
#   tools/coverage.sh [BUILD-DIR]
# Prints the share of each folder and the files with the least; exit status 1 below a goal. The build, with counters
# and without optimisation, stays in BUILD-DIR (default: a folder of the user's own cache, outside of the sources).
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-${XDG_CACHE_HOME:-$HOME/.cache}/benchex-coverage}

command -v gcovr >/dev/null || {
    echo "coverage.sh: gcovr is missing; it is in the Debian package gcovr (tools/install_packages.sh coverage)" >&2
    exit 2
}
launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi

# A function that ruins the frame pointer is one of those that the tests have; whoever saves it would hide that.
flags="-O0 -fomit-frame-pointer --coverage"
mkdir -p "$build"
log=$build/coverage.log
say_log() { tail -n 40 "$log" >&2; }
trap 'say_log' ERR
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=None -DBENCHEX_TESTS=ON \
    -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" "${launcher[@]}" >"$log" 2>&1
cmake --build "$build" >>"$log" 2>&1
find "$build" -name '*.gcda' -delete
# The companion programs, the page in the browser and the fleet are not measured here. A test that fails (counters cost
# registers and time) is named and the rest counts.
ctest --test-dir "$build" -j "$(nproc)" -E '^(tools|robust)\.|^fleet$' >>"$log" 2>&1 ||
    sed -n '/^The following tests FAILED/,$p' "$log" >&2
gcovr --root "$here" --object-directory "$build" --filter "$here/(api|binding|zor)/" -j "$(nproc)" \
    --json-summary "$build/coverage.json" "$build" >>"$log" 2>&1
trap - ERR

python3 - "$build/coverage.json" <<'END'
import json
import sys

GOALS = {"api/": 90, "binding/": 90, "zor/": 85}  # percent
LEAST = 10  # files named at the end

files = json.load(open(sys.argv[1], encoding="utf-8"))["files"]


def share(covered, total):
    return 100 * covered / max(total, 1)


def folder(name, goal, *prefixes):
    """Prints the line of one folder or of several together; whether the goal is reached."""
    inside = [file for file in files if file["filename"].startswith(prefixes)]
    covered, total = (sum(file[f"line_{what}"] for file in inside) for what in ("covered", "total"))
    print(f"{name} {share(covered, total):.1f} % of {total} lines (at least {goal} %)")
    return share(covered, total) >= goal


reached = [folder(name, goal, name) for name, goal in GOALS.items()]
reached.append(folder("api/ and binding/", GOALS["api/"], "api/", "binding/"))
print("Least covered:")
for file in sorted(files, key=lambda file: share(file["line_covered"], file["line_total"]))[:LEAST]:
    print(f"{share(file['line_covered'], file['line_total']):6.1f} % of {file['line_total']:4} {file['filename']}")
sys.exit(0 if all(reached) else 1)
END
