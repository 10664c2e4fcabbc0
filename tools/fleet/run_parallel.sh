#!/usr/bin/env bash
# Runs all slices with GNU parallel, on this machine or over ssh, and collects their tables.
#
#   run_parallel.sh [-j JOBS] [-S LOGINS] -o OUT SLICES PROGRAM [KEYS...]
#
#   -j JOBS      slices that run at the same time on a machine (1: measurements side by side disturb each other)
#   -S LOGINS    machines as GNU parallel names them, "node1,user@node2"; they need rsync and PROGRAM under the same
#                path. Without -S the slices run here.
#   -o OUT       directory for the parts and for the tables made of them
#   SLICES       file of slices.sh
#   KEYS         further keys for the program
#
# Without GNU parallel, and without -S, the slices run one after another. Exit status as of collect.py.
set -euo pipefail
fleet=$(cd "$(dirname "$0")" && pwd)
usage() { sed -n '2,/^set/s/^# \{0,1\}//p' "$0" >&2; exit 2; }
jobs=1 logins='' out=''
while getopts j:S:o: option; do
    case $option in
    j) jobs=$OPTARG ;;
    S) logins=$OPTARG ;;
    o) out=$OPTARG ;;
    *) usage ;;
    esac
done
shift $((OPTIND - 1))
[ -n "$out" ] && [ $# -ge 2 ] || usage
slices=$1 program=$2
shift 2
case $program in
*/*) program=$(cd "$(dirname "$program")" && pwd)/$(basename "$program") ;;
esac

rm -rf "$out/parts" # a part of an earlier run is no part of this one
mkdir -p "$out"
cp "$slices" "$out/slices"
cp "$fleet/run_slice.sh" "$out/run_slice.sh"
cd "$out"
count=$(wc -l <slices)

# A slice whose program fails or dies is reported by collect.py.
if command -v parallel >/dev/null; then
    remote=()
    [ -z "$logins" ] || remote=(--sshlogin "$logins" --workdir ... --transferfile run_slice.sh --transferfile slices
        --return 'parts/slice-{}' --cleanup)
    seq "$count" | parallel --will-cite -j "$jobs" --joblog joblog "${remote[@]}" \
        ./run_slice.sh slices {} "$program" "$@" || true
elif [ -z "$logins" ]; then
    echo "GNU parallel is not installed: the slices run one after another."
    for number in $(seq "$count"); do
        ./run_slice.sh slices "$number" "$program" "$@" || true
    done
else
    echo "run_parallel.sh: -S needs GNU parallel" >&2
    exit 2
fi
exec "$fleet/collect.py" .
