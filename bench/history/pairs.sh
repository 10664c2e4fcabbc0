#!/usr/bin/env bash
# What a history of pairs is worth on this machine: false steps of an unchanged program, and a function made slower by
# PERCENT that is told in its first night.
#   bench/history/pairs.sh DIR [PAIRS [SLOWED]]
# PAIRS (100) comparisons of two fresh copies of the library are chained: each step is a false alarm. SLOWED (20) comparisons
# with the slowed function are put behind them, one at a time. Variables: PERCENT (3), SECONDS_EACH (30), PROGRAMS, where
# benchex is (build/bin).
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
programs=${PROGRAMS:-$root/build/bin}
mkdir -p "${1:?directory of the results}/same" "$1/slow"
directory=$(cd "$1" && pwd)
slowed=zorsSynthesisFilter_SBR_RToR_32f_D2L # some thousand clocks a call: the detour costs some dozens
select=(-f=$slowed)
for name in zorsMDCTFwd_32f zorsMDCTInv_32f_I zorsDecodeTNS_AAC_32s_I zorsScale_32f_I zorsFIRBlockOne_32f \
    zorsHuffmanDecode_MP3_1u32s zorsQuantInv_AAC_32s_I zorsMakeFloat_16s32f zorsMDCTFwd_AAC_32s zorsInterleave_32f; do
    select+=(-f=$name)
done
compare() { # more of the side after, result
    local side
    for side in before after; do
        rm -rf "${directory:?}/$side"
        mkdir "$directory/$side"
        cp "$programs"/lib*.so "$directory/$side"
    done
    "$programs/benchex-compare" --pair "$directory/before" "$directory/after $1" --json --seconds "${SECONDS_EACH:-30}" -- \
        "${select[@]}" >"$2" || [ $? = 1 ]
}
g++ -O2 -fPIC -shared "-DSLOWED_FUNCTION=$slowed" "-DSLOWED_PERCENT=${PERCENT:-3}" "$root/tools/slowdown.cpp" \
    -o "$directory/slowdown.so" -ldl
library=$directory/slowdown.so

start=$SECONDS
for i in $(seq -w 1 "${2:-100}"); do compare "" "$directory/same/$i.json"; done
echo "${2:-100} comparisons of copies in $((SECONDS - start)) s; steps found, of functions and of rows:"
"$programs/benchex-report" --history -o "$directory/functions.html" "$directory/same"
"$programs/benchex-report" --history --rows -o "$directory/rows.html" "$directory/same"

told=0
for i in $(seq -w 1 "${3:-20}"); do
    compare "LD_PRELOAD=$library" "$directory/slow/$i.json"
    if "$programs/benchex-report" --history -o "$directory/slow.html" "$directory"/same/*.json "$directory/slow/$i.json" |
        grep "  $slowed  between .* and $i\$"; then
        told=$((told + 1))
    fi
done
echo "$slowed, ${PERCENT:-3} % slower: told in its first night $told of ${3:-20} times"
