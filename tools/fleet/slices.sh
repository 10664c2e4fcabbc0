#!/usr/bin/env bash
# Deals the tests of a program out to slices: one line of selection keys for each slice.
#
#   slices.sh [-t] NUMBER PROGRAM [SELECTION...]
#
#   -t           deal out whole test classes (-t=) instead of functions (-f=)
#   NUMBER       of slices; fewer lines come out where there are fewer tests
#   SELECTION    keys -f, -t, -H of the program, to slice a part of the tests
#
# The tests are dealt like cards, so that neighbours, which often take equally long, come to different slices.
set -euo pipefail
column=2 key=-f=
if [ "${1:-}" = -t ]; then
    column=3 key=-t=
    shift
fi
[ $# -ge 2 ] && [ "$1" -ge 1 ] 2>/dev/null || { sed -n '2,/^set/s/^# \{0,1\}//p' "$0" >&2; exit 2; }
number=$1
shift

"$@" -e | awk -F '\t' -v number="$number" -v column="$column" -v key="$key" '
    NF == 4 && $1 ~ /^ *[0-9]+$/ && !seen[$column]++ {
        at = dealt++ % number
        slice[at] = slice[at] " " key $column
    }
    END {
        if (!dealt) { print "slices.sh: no test to slice" > "/dev/stderr"; exit 2 }
        for (i = 0; i < number && i < dealt; ++i) print substr(slice[i], 2)
    }'
