#!/usr/bin/env bash
# Runs the property test of tests/e2e/schema_gen_test.cpp over many seeds,
# on demand (CI runs its fixed range only):
#
#   tests/schemagen/run.sh [-j JOBS] [-b BUILD-DIR] [-k KEEP-DIR] FROM TO
#
# Without -b the script configures and builds a tree of its own in
# build-schemagen/, so that a long run does not depend on a build tree that
# is being rebuilt meanwhile; with -b it takes the programs of BUILD-DIR as
# they are. The seeds FROM to TO are cut into JOBS ranges (default 2) run
# side by side. Each range writes its log to KEEP-DIR/range{N}.log and every
# failing case to KEEP-DIR/{seed}.txt (default KEEP-DIR: the build tree's
# schemagen/). At the end the counts of all ranges are added up: cases
# accepted and refused, compiles and their known faults, warnings by kind,
# dictionaries compared, and the faults by kind.
set -euo pipefail

jobs=2
build=""
keep=""
while getopts "j:b:k:h" opt; do
    case $opt in
    j) jobs=$OPTARG ;;
    b) build=$OPTARG ;;
    k) keep=$OPTARG ;;
    *) sed -n '2,16p' "$0" | sed 's/^# \{0,1\}//'; exit 2 ;;
    esac
done
shift $((OPTIND - 1))
[ $# -eq 2 ] || { sed -n '2,16p' "$0" | sed 's/^# \{0,1\}//'; exit 2; }
from=$1
to=$2

source_dir=$(cd "$(dirname "$0")/../.." && pwd)
if [ -z "$build" ]; then
    build=$source_dir/build-schemagen
    cmake -S "$source_dir" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
    cmake --build "$build" -j "$jobs" --target zylcomp_tests zylcomp_cli > /dev/null
fi
keep=${keep:-$build/schemagen}
mkdir -p "$keep"
rm -f "$keep"/range*.log "$keep"/[0-9]*.txt

start=$(date +%s)
step=$(( (to - from + jobs) / jobs ))
pids=()
n=0
for ((first = from; first <= to; first += step)); do
    last=$(( first + step - 1 < to ? first + step - 1 : to ))
    ZYLCOMP_SCHEMAGEN_SEEDS=$first:$last ZYLCOMP_SCHEMAGEN_KEEP=$keep \
        "$build/tests/zylcomp_tests" --gtest_filter='SchemaGen.*' > "$keep/range$n.log" 2>&1 &
    pids+=($!)
    n=$((n + 1))
done
status=0
for pid in "${pids[@]}"; do
    wait "$pid" || status=1
done

echo "seeds $from..$to in $(( $(date +%s) - start )) s, $jobs at a time; cases and logs in $keep"
# Each range prints its counts as "  {what}: {n}" below "schemagen seeds".
cat "$keep"/range*.log | awk '
    /^schemagen seeds/ { counting = 1; next }
    counting && /^  .*: [0-9]+$/ {
        at = match($0, /: [0-9]+$/)
        key = substr($0, 3, at - 3); sum[key] += substr($0, at + 2)
        next
    }
    { counting = 0 }
    END { for (k in sum) printf "  %s: %d\n", k, sum[k] }' | sort
faults=$(ls "$keep" | grep -c '^[0-9]*\.txt$' || true)
echo "failing cases kept: $faults"
exit $status
