#!/usr/bin/env bash
# Builds what is missing and runs the main job: every test, in batch mode, with a listing, a result table and a
# summary table in a directory of the run. The exit status is 1 when a test failed, 2 when the run could not do its
# work. Keys given to this script are passed on in place of the defaults:
#   ./run.sh                 all tests, Auto method
#   ./run.sh -B -f TNS -L P  the TNS functions, with the figures of every combination in the listing
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=${BENCHEX_BUILD:-$here/build}

"$here/tools/install_packages.sh" build
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release >"$build.log" 2>&1 || { cat "$build.log"; exit 2; }
cmake --build "$build" --target benchex >>"$build.log" 2>&1 || { cat "$build.log"; exit 2; }

out=${BENCHEX_OUT:-$here/out/$(date +%Y%m%d-%H%M%S)}
mkdir -p "$out"
keys=("$@")
[ ${#keys[@]} -gt 0 ] || keys=(-B -L P)

status=0
"$build/bin/benchex" "-l$out" -o -r -u -g -dStrict=yes "${keys[@]}" || status=$?
echo
echo "Listing, result table and summary table are in $out"
exit "$status"
