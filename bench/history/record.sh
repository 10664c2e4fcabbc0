#!/usr/bin/env bash
# Records the noise of this machine: one unchanged program measured again and again, as nights would be.
#   bench/history/record.sh DIR [COUNT [PROGRAM]]
#   history_bench DIR; history_bench --rows DIR
set -euo pipefail
directory=${1:?directory of the recordings}
program=${3:-$(dirname "$0")/../../build/bin/benchex}
for i in $(seq -w 1 "${2:-130}"); do
    mkdir -p "$directory/$i"
    place=$(cd "$directory/$i" && pwd)
    "$program" -B -L P -dPrecise=yes -f=zorsMDCTFwd_32f -f=zorsMDCTInv_32f_I -f=zorsDecodeTNS_AAC_32s_I \
        -f=zorsScale_32f_I -f=zorsFIRBlockOne_32f -f=zorsHuffmanDecode_MP3_1u32s -f=zorsQuantInv_AAC_32s_I \
        -f=zorsMakeFloat_16s32f -f=zorsMDCTFwd_AAC_32s -f=zorsInterleave_32f -f=zorsSynthesisFilter_PQMF_MP3_32f \
        "-l$place" -n night -r -q -u >/dev/null || true
done
