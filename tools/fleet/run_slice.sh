#!/usr/bin/env bash
# Runs one slice of the tests.
#
#   run_slice.sh SLICES NUMBER PROGRAM [KEYS...]
#
#   SLICES       file of slices.sh: line NUMBER holds the keys of this slice
#   KEYS         further keys for the program, -dMethod=Manual for example
#
# Writes into parts/slice-NUMBER of the current directory: slice.keys, slice.log (the listing), slice.csv,
# slice_sum.csv, slice.end and, when the program is over, slice.status with its exit status. The exit status is that
# of the program.
set -uo pipefail
[ $# -ge 3 ] || { sed -n '2,/^set/s/^# \{0,1\}//p' "$0" >&2; exit 2; }
slices=$1 number=$2
shift 2
keys=$(sed -n "${number}p" "$slices")
[ -n "$keys" ] || { echo "run_slice.sh: $slices has no slice $number" >&2; exit 2; }

directory=$PWD/parts/slice-$number
rm -rf "$directory"
mkdir -p "$directory"
echo "$keys" >"$directory/slice.keys"
read -ra words <<<"$keys"
"$@" -B "-l$directory" -nslice -r -u -g "${words[@]}" >"$directory/slice.log" 2>&1
status=$?
echo "$status" >"$directory/slice.status"
exit "$status"
