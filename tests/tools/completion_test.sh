#!/usr/bin/env bash
# What the completion offers, asked as bash asks it.
#   completion_test.sh COMPLETION-FILE
set -u
# shellcheck source=/dev/null
source "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
mkdir results
touch table.csv notes.txt
cat >benchex <<'END'
#!/bin/sh
case $1 in
-e) printf '| CPU : x |\n   #\tFunction\tTest\tSource\n'
    printf '   1\tzorsMDCTFwd_32f\tTimMdct\ta.cpp\n  12\tzorsMDCTInv_32f\tTimMdct\ta.cpp\n  13\tzorsCopy_8u\tTimCopy\tb.cpp\n' ;;
-hT) printf 'help\n    Processor types:\n        SSE2 AVX\n        AVX2\n' ;;
esac
END
chmod +x benchex
failures=0

# expect "OFFERS" function words...: the last word is the one being typed.
expect() {
    local wanted=$1 function=$2
    shift 2
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    COMPREPLY=()
    "$function" 2>/dev/null
    if [ "${COMPREPLY[*]}" != "$wanted" ]; then
        echo "FAILED: $* offers '${COMPREPLY[*]}', expected '$wanted'"
        failures=$((failures + 1))
    fi
}

expect '-fzorsMDCTFwd_32f -fzorsMDCTInv_32f' _benchex ./benchex -fzorsM
expect '-f-zorsCopy_8u' _benchex ./benchex -f-zorsC
expect 'zorsCopy_8u' _benchex ./benchex -f = zorsC
expect 'zorsMDCTFwd_32f zorsMDCTInv_32f zorsCopy_8u' _benchex ./benchex -f =
expect 'zorsCopy_8u' _benchex ./benchex -B -F zorsC
expect 'TimCopy TimMdct' _benchex ./benchex -t ''
expect '-tTimMdct' _benchex ./benchex -tTimM
expect '-TAVX -TAVX2' _benchex ./benchex -TAV
expect '-LWARN' _benchex ./benchex -LW
expect '-HONLY' _benchex ./benchex -HO
expect '-lresults/' _benchex ./benchex -lre
expect 'table.csv' _benchex ./benchex -r ta
expect '-dMethod=' _benchex ./benchex -dMe
expect '-B' _benchex ./benchex -B
expect 'table.csv results' _benchex_report benchex-report ''
expect '--title' _benchex_report benchex-report --ti
expect '--threshold' _benchex_compare benchex-compare --th

[ "$failures" = 0 ] && echo "all as expected"
exit $((failures > 0))
