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

# offered SHELL "OFFERS" "LINE TYPED" COMMAND...: the command prints what the shell offers.
offered() {
    local shell=$1 wanted=$2 line=$3
    shift 3
    local offers
    offers=$("$@" | cut -f1 | sort -u | tr '\n' ' ')
    if [ "$offers" != "$wanted " ]; then
        echo "FAILED: $shell: '$line' offers '$offers', expected '$wanted'"
        failures=$((failures + 1))
    fi
}

lines=(
    'benchex -fzorsM|-fzorsMDCTFwd_32f -fzorsMDCTInv_32f'
    'benchex -f zorsC|zorsCopy_8u'
    'benchex -tTimM|-tTimMdct'
    'benchex -TAV|-TAVX -TAVX2'
    'benchex -LW|-LWARN'
    'benchex -r ta|table.csv'
    'benchex-compare --th|--threshold'
)
export PATH=$work:$PATH
for shell in fish zsh; do
    if ! command -v $shell >/dev/null; then
        echo "not tried: $shell is missing"
        continue
    fi
    for each in "${lines[@]}"; do
        line=${each%%|*}
        if [ $shell = fish ]; then
            offered fish "${each#*|}" "$line" \
                fish --no-config -c "source $completions/benchex.fish; complete -C '$line'"
        else
            offered zsh "${each#*|}" "$line" timeout 30 zsh -f "$here/zsh_offers.zsh" "$completions" "$line"
        fi
    done
done

[ "$failures" = 0 ] && echo "all as expected"
exit $((failures > 0))
