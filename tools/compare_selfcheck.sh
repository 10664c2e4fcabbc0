#!/usr/bin/env bash
# How often benchex-compare errs on this machine: false alarms on runs of one build, and changes found where one function
# is slowed down.
#   tools/compare_selfcheck.sh [DIRECTORY-OF-PROGRAMS]
# Variables: PAIRS (20), RUNS a side (5), SELECT (keys), SLOWED (a function of SELECT, of some thousand clocks a call: the
# detour costs some dozens), PERCENT (10), CXX (g++), KEEP (a directory for the tables).
# The sides of a pair run in turn, so that what the machine does besides counts for all of them.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
programs=$(cd "${1:-$here/../build/bin}" && pwd)
pairs=${PAIRS:-20}
runs=${RUNS:-5}
slowed=${SLOWED:-zorsSynthesisFilter_SBR_RToR_32f_D2L}
percent=${PERCENT:-10}
select="-f=zorsSynthesisFilter_SBR_RToR_32f_D2L -f=zorsMDCTFwd_AAC_32s -f=zorsSynthesisFilter_PQMF_MP3_32f"
read -ra select <<<"${SELECT:-$select -dPrecise=yes -dPreciseAccuracy=1}"
if [ -n "${KEEP:-}" ]; then
    work=$KEEP
    rm -rf "${work:?}/ratios"
    mkdir -p "$work"
else
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
fi

"${CXX:-g++}" -O2 -fPIC -shared "-DSLOWED_FUNCTION=$slowed" "-DSLOWED_PERCENT=$percent" "$here/slowdown.cpp" \
    -o "$work/slowdown.so" -ldl

measure() { # directory, run, library put before the others
    mkdir -p "$1"
    LD_PRELOAD=${3:-} "$programs/benchex" -B "${select[@]}" "-r$1/$2.csv" >/dev/null
}

# Whether the comparison of two sides calls a row of (or, with "!", not of) the slowed function slower.
alarm_in() { # before, after, grep options
    local table status=0
    table=$("$programs/benchex-compare" --csv "$1" "$2") || status=$?
    [ "$status" -le 1 ] || exit 2
    grep '^slower,' <<<"$table" | grep "${@:3}" -q ",$slowed,"
}

# The slowed function's ratio, as the comparison of two sides has it.
ratio_in() {
    "$programs/benchex-compare" --json "$1" "$2" | sed -n "s/.*\"function\": \"$slowed\", \"ratio\": \([0-9.]\{1,6\}\).*/\1/p"
}

declare -A count=([alarm1]=0 [found1]=0 [other1]=0 [alarm]=0 [found]=0 [other]=0)
judge() { # suffix of the counters, then the three sides
    if alarm_in "$2" "$3" || alarm_in "$2" "$3" -v; then count[alarm$1]=$((count[alarm$1] + 1)); fi
    if alarm_in "$2" "$4"; then count[found$1]=$((count[found$1] + 1)); fi
    if alarm_in "$2" "$4" -v; then count[other$1]=$((count[other$1] + 1)); fi
}

load_before=$(cut -d' ' -f1-3 /proc/loadavg)
for pair in $(seq "$pairs"); do
    at=$work/pair$pair
    for run in $(seq "$runs"); do
        measure "$at/a" "$run"
        measure "$at/b" "$run"
        measure "$at/slow" "$run" "$work/slowdown.so"
    done
    judge 1 "$at/a/1.csv" "$at/b/1.csv" "$at/slow/1.csv"
    judge '' "$at/a" "$at/b" "$at/slow"
    ratio_in "$at/a" "$at/slow" >>"$work/ratios" || true
done

rows=$(grep -c '^zor' "$work/pair1/a/1.csv")
all=$(cat "$work"/pair*/*/*.csv | grep -c '^zor')
shared=$(cat "$work"/pair*/*/*.csv | grep -c ' shared=' || true)
cat <<END
$pairs pairs, $rows rows, keys ${select[*]}, $slowed slowed by $percent %
load average: $load_before before, $(cut -d' ' -f1-3 /proc/loadavg) after, on $(nproc) processors
figures for which the core was shared: $shared of $all
                                     single tables   $runs runs a side
false alarm, same build                 ${count[alarm1]} of $pairs         ${count[alarm]} of $pairs
slowed function found                   ${count[found1]} of $pairs         ${count[found]} of $pairs
and another function called slower      ${count[other1]} of $pairs         ${count[other]} of $pairs
its ratio, $runs runs a side: median $(sort -n "$work/ratios" | sed -n "$(((pairs + 1) / 2))p"), from $(sort -n "$work/ratios" | head -1) to $(sort -n "$work/ratios" | tail -1)
END
