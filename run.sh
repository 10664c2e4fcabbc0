#!/usr/bin/env bash
# Builds what is missing and runs the main job: every test, in batch mode and the precise mode, with a listing, a
# result table, a summary table, the names of the parameters and a report page in a directory of the run. On a terminal
# it ends with a table of what was found and the name of the page. The exit status is 1 when a test failed, 2 when
# the run could not do its work. Keys given to this script are passed on in place of the defaults:
#   ./run.sh                 all tests
#   ./run.sh -B -f TNS -L P  the TNS functions, with the figures of every combination in the listing
# The precise mode is left out where the keys choose a method (-dMethod=, -dPrecise=) or an ini file (-i).
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=${BENCHEX_BUILD:-$here/build}
terminal=false
[ -t 1 ] && [ -t 2 ] && terminal=true
say() { if $terminal; then printf '\r\033[K%s' "$1"; fi; }

"$here/tools/install_packages.sh" build
say "Building; what the compiler says is in $build.log"
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release >"$build.log" 2>&1 || { cat "$build.log"; exit 2; }
cmake --build "$build" --target benchex >>"$build.log" 2>&1 || { cat "$build.log"; exit 2; }
without=$(grep -o 'benchex-report and benchex-compare are left out.*' "$build.log" || true)
if [ -z "$without" ] && ! cmake --build "$build" --target benchex-report >>"$build.log" 2>&1; then
    without="benchex-report could not be built; $build.log says why"
fi
say ""

out=${BENCHEX_OUT:-$here/out/$(date +%Y%m%d-%H%M%S)}
mkdir -p "$out"
keys=("$@")
[ ${#keys[@]} -gt 0 ] || keys=(-B -L P)
precise=(-dPrecise=yes)
names=(-q)
batch=false
for key in "${keys[@]}"; do
    case $key in
    [-/]B) batch=true ;;
    [-/]q) names=() ;;
    [-/]d*Precise=* | [-/]d*Method=* | Precise=* | Method=* | [-/]i*) precise=() ;;
    esac
done
run=("$build/bin/benchex" "-l$out" -o -r "${names[@]}" -u -g -dStrict=yes "${precise[@]}" "${keys[@]}")

# Writes the page, and with --table the table, of what this run measured; fails where there is none.
report() {
    local tables
    mapfile -t tables < <(find "$out" -maxdepth 1 -name '*.csv' ! -name '*_name.csv' ! -name '*_sum.csv' -newer "$console")
    [ ${#tables[@]} -gt 0 ] && "$build/bin/benchex-report" "$@" -o "$out/report.html" "${tables[@]}"
}

console=$(mktemp)
trap 'rm -f "$console" "$console.txt"' EXIT
status=0
# What the program asks has to be seen: only a batch run goes without its listing on the screen.
if $terminal && $batch && [ -z "$without" ]; then
    "${run[@]}" >"$console.txt" || status=$?
    [ "$status" -ge 2 ] || { report --table 2>>"$build.log" && exit "$status"; }
    cat "$console.txt"
else
    "${run[@]}" || status=$?
    [ -n "$without" ] || report >>"$build.log" 2>&1 || true
fi
echo
echo "Listing, result table and summary table are in $out"
if $terminal && [ -n "$without" ]; then echo "No table and no page: $without"; fi
exit "$status"
