#!/usr/bin/env bash
# The command lines of benchex-report and benchex-compare: outputs, messages, exit statuses.
#   commandline_test.sh DIRECTORY-OF-PROGRAMS [EMULATOR...]
set -u
programs=$1
emulator=${2:-}
tables=$(cd "$(dirname "$0")/tables" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# expect STATUS "PATTERN OF THE OUTPUT" program arguments...
expect() {
    local status=$1 pattern=$2 program=$3
    shift 3
    local output got
    # shellcheck disable=SC2086  # an emulator is a command with options
    output=$(cd "$work" && ${emulator//;/ } "$programs/$program" "$@" 2>&1)
    got=$?
    if [ "$got" != "$status" ] || ! grep -q -e "$pattern" <<<"$output"; then
        echo "FAILED: $program $*: status $got, expected $status and '$pattern' in:"
        printf '%s\n' "$output" | head -20
        failures=$((failures + 1))
    fi
}

before=$tables/before.csv
after=$tables/after.csv
head -c -20 "$before" >"$work/cut.csv"
sed '/^zors/d' "$before" >"$work/empty.csv"
sed 's/zors/other/' "$before" >"$work/other.csv"
printf 'a;b\n1;2\n' >"$work/foreign.csv"
mkdir "$work/none" "$work/old" "$work/new"
for run in 1 2 3; do
    cp "$before" "$work/old/$run.csv"
    cp "$after" "$work/new/$run.csv"
done

expect 0 '^All: 1.000 over 18 rows: 0 slower' benchex-compare "$before" "$before"
expect 1 '^slower  *1\.[23].* zorsMDCTFwd_32f_I  Len=16 Window=short' benchex-compare "$before" "$after"
expect 0 '^faster ' benchex-compare "$after" "$before"
expect 0 '0 slower' benchex-compare --threshold 50 "$before" "$after"
expect 1 '10 slower, 0 faster, 8 same, 0 cannot tell' benchex-compare old new
expect 1 '(3 runs)' benchex-compare --before old/1.csv old/2.csv old/3.csv --after new --all
expect 1 '^Only after (1 row)' benchex-compare old new
expect 1 '^only after,,,,,,,,,,,zorsNew_16s_I,$' benchex-compare --csv old new
expect 1 '"slower": 10,' benchex-compare --json old new
expect 1 'microseconds per call' benchex-compare --time old new
expect 2 'no row of' benchex-compare "$before" other.csv
expect 2 'no row of' benchex-compare "$before" empty.csv
expect 2 'cut.csv: line [0-9]*: the last line is cut off' benchex-compare "$before" cut.csv
expect 0 'cut off, left out' benchex-compare --partial "$before" cut.csv
expect 2 'foreign.csv: line 1:' benchex-compare "$before" foreign.csv
expect 2 'missing.csv: cannot be opened' benchex-compare "$before" missing.csv
expect 2 'no table (\*.csv)' benchex-compare "$before" none
expect 2 'two tables are needed' benchex-compare "$before"
expect 2 'Try .benchex-compare --help' benchex-compare --what "$before" "$after"
for threshold in much -5 1001 5%% ''; do
    expect 2 'is no percentage from 0 to 1000' benchex-compare --threshold "$threshold" "$before" "$after"
done
expect 0 'allowed is 1.4' benchex-compare "$before" "$after" --threshold='40 %'
expect 2 'all was given a disallowed' benchex-compare --all=3 "$before" "$before"
expect 2 'excludes' benchex-compare --json --csv "$before" "$before"
expect 2 'stand either alone or behind' benchex-compare --before "$before" --after "$after" --all -- "$after"
expect 0 '^Usage: benchex-compare' benchex-compare --help

expect 0 '' benchex-report "$before" "$after" -o page.html --chart-library "$before"
expect 0 '"parameters":{"Len":16,"Window":"short"}' benchex-report --json -o - "$tables"
expect 0 'no charts' benchex-report "$before" -o bare.html --chart-library nowhere.js
expect 2 'no row and no tested function' benchex-report empty.csv
expect 2 'cut off' benchex-report cut.csv
expect 2 'TABLE is required' benchex-report
expect 0 '^benchex-report [0-9]' benchex-report --version
expect 0 '^EXCPTFAIL (1): zorsFault_8u' benchex-report --table "$before"
expect 0 "^Report: $work/a b.html" benchex-report --table "$before" -o 'a b.html' --chart-library "$before"
expect 2 'excludes' benchex-report --table --json "$before"
echo '{"schema": "other"}' >"$work/other.json"
expect 0 'other.json: no part of the page is made of this' benchex-report "$before" other.json -o other.html
expect 0 '^2 builds, from before to after; [0-9]* series' benchex-report --history "$before" "$after" -o history.html
expect 0 '^1 build, from before to before; 3 series' benchex-report --history "$before"
expect 2 'requires --history' benchex-report --alarm 5 "$before" "$after"
expect 2 '/nowhere/page.html: cannot be written' benchex-report "$before" -o /nowhere/page.html
for text in '"result":"EXCPTFAIL"' 'libzorac.so, 2.0' '"parameters":{"Len":1024,'; do
    grep -q -e "$text" "$work/page.html" || { echo "FAILED: page.html lacks $text"; failures=$((failures + 1)); }
done
grep -q -e 'https\?:' "$work/page.html" && { echo "FAILED: the page names an address"; failures=$((failures + 1)); }

[ "$failures" = 0 ] && echo "all as expected"
exit $((failures > 0))
