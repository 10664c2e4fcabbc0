#!/usr/bin/env bash
# What the completions offer, asked as bash, fish and zsh ask them; a shell that is missing is named and left out.
#   completion_test.sh DIRECTORY-OF-COMPLETIONS
set -u
# shellcheck source=/dev/null
completions=$1
source "$completions/benchex.bash"
here=$(cd "$(dirname "$0")" && pwd)
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
-B) printf '[Benchex]\nMethod=Auto\t// Auto|Manual\n\n[zorsCopy_8u]\nMax value=50; 100\nLength=64\n' >"${2#-I}" ;;
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
expect '-dLength=' _benchex ./benchex -dLe
expect '-dMax\ value=' _benchex ./benchex '-dMax\ '
expect 'PreciseAccuracy=' _benchex ./benchex -d PreciseA
expect '-B' _benchex ./benchex -B
expect 'table.csv results' _benchex_report benchex-report ''
expect '--title' _benchex_report benchex-report --ti
expect '--project' _benchex_new benchex-new --p
expect 'results/' _benchex_new benchex-new --project ''
expect '--threshold' _benchex_compare benchex-compare --th

# The same lines for the other shells: line typed, what it offers.
lines=('benchex -fzorsM' 'benchex -f zorsC' 'benchex -tTimM' 'benchex -TAV' 'benchex -LW' 'benchex -r ta' 'benchex -dLe' 'benchex-compare --th' 'benchex-new --pr')
offers=('-fzorsMDCTFwd_32f -fzorsMDCTInv_32f' 'zorsCopy_8u' '-tTimMdct' '-TAVX -TAVX2' '-LWARN' 'table.csv' '-dLength=' '--threshold' '--project')
export PATH=$work:$PATH

fish_offers() {
    local line
    for line in "$@"; do
        fish --no-config -c "source $completions/benchex.fish; complete -C '$line'" | cut -f1 | sort -u | xargs
    done
}
zsh_offers() { timeout 60 zsh -f "$here/zsh_offers.zsh" "$completions" "$@"; }

for shell in fish zsh; do
    if ! command -v $shell >/dev/null; then
        echo "not tried: $shell is missing"
        continue
    fi
    mapfile -t offered < <(${shell}_offers "${lines[@]}")
    for i in "${!lines[@]}"; do
        if [ "${offered[i]:-}" != "${offers[i]}" ]; then
            echo "FAILED: $shell: '${lines[i]}' offers '${offered[i]:-}', expected '${offers[i]}'"
            failures=$((failures + 1))
        fi
    done
done

[ "$failures" = 0 ] && echo "all as expected"
exit $((failures > 0))
