#!/usr/bin/env bash
# Times zylcomp against flatc on generated schemas of growing size, side by
# side in one run:
#
#   zylcomp --cpp SCHEMA.zyl         against  flatc --cpp SCHEMA.fbs
#   zyl_db_load_dictionary(text)     against  flatc -b --schema SCHEMA.fbs
#
# and prints wall time, processor time, peak memory and output bytes of
# each, the ratios, and how the cost grows with the size.
#
#   bench/run.sh [-r RUNS] [-f FIELDS] [-b BUILD-DIR] [-w WORK-DIR] [CLASSES ...]
#
# Defaults: 3 runs, 20 fields, 100 500 1000 5000 classes. Without -b the
# script configures and builds a Release tree in build-bench/ first; with
# -b it takes the programs from BUILD-DIR as they are (configured with
# -DZYLCOMP_BUILD_BENCH=ON). flatc comes from the Debian package
# flatbuffers-compiler. The time of zyl_db_load_dictionary is that of the
# call alone, measured inside bench_load_dictionary; every other time is that
# of the whole process. Processor time is user plus system time; on a shared
# machine it is the steadier figure. Peak memory is the process's maximum
# resident set. Each figure is the median of the runs, with the best beside it.
set -euo pipefail

runs=3
fields=20
build=""
work=""
while getopts "r:f:b:w:h" opt; do
    case $opt in
    r) runs=$OPTARG ;;
    f) fields=$OPTARG ;;
    b) build=$OPTARG ;;
    w) work=$OPTARG ;;
    *) sed -n '2,21p' "$0" | sed 's/^# \{0,1\}//'; exit 2 ;;
    esac
done
shift $((OPTIND - 1))
sizes=("$@")
[ ${#sizes[@]} -gt 0 ] || sizes=(100 500 1000 5000)

src=$(cd "$(dirname "$0")/.." && pwd)
if [ -z "$build" ]; then
    build=$src/build-bench
    cmake -S "$src" -B "$build" -DCMAKE_BUILD_TYPE=Release -DZYLCOMP_BUILD_BENCH=ON \
        -DZYLCOMP_BUILD_TESTS=OFF >/dev/null
    cmake --build "$build" -j2 --target zylcomp_cli bench_gen_schema bench_load_dictionary bench_timed >/dev/null
fi
build=$(cd "$build" && pwd)
zylcomp=$build/zylcomp
gen=$build/bench/bench_gen_schema
load=$build/bench/bench_load_dictionary
timed=$build/bench/bench_timed
for p in "$zylcomp" "$gen" "$load" "$timed"; do
    [ -x "$p" ] || { echo "run.sh: $p is missing (build with -DZYLCOMP_BUILD_BENCH=ON)" >&2; exit 1; }
done
flatc=$(command -v flatc) || { echo "run.sh: flatc not found (apt-get install flatbuffers-compiler)" >&2; exit 1; }

if [ -z "$work" ]; then
    work=$(mktemp -d /tmp/zylcomp-bench-XXXXXX)
    trap 'rm -rf "$work"' EXIT
fi
mkdir -p "$work"

# Bytes of every file in a directory.
bytes() { find "$1" -type f -printf '%s\n' | awk '{ s += $1 } END { print s + 0 }'; }
# Median and best of the numbers on standard input: "MEDIAN BEST".
stats() { sort -g | awk '{ v[NR] = $1 } END { m = NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2; print m, v[1] }'; }

echo "machine: $(uname -srm), $(nproc) cores, $(grep -m1 'model name' /proc/cpuinfo | sed 's/.*: //')"
echo "zylcomp: $zylcomp"
echo "flatc:   $flatc ($("$flatc" --version))"
echo "load average before: $(cut -d' ' -f1-3 /proc/loadavg)"
echo "$runs runs of each, $fields fields per class"
echo

# results/<entry>.<classes>: one line "SECONDS PEAK-KB BYTES CPU-SECONDS" per
# run, and for the run-time entry the wall time of the whole process after it.
results=$work/results
mkdir -p "$results"
for n in "${sizes[@]}"; do
    mkdir -p "$work/schema-$n"
    "$gen" "$n" "$fields" "$work/schema-$n"
done
# Each round runs every size once, so that a machine that slows down or
# speeds up during the benchmark shifts all sizes alike and the growth
# figures compare like with like.
for ((r = 1; r <= runs; r++)); do
    for n in "${sizes[@]}"; do
        dir=$work/schema-$n
        out=$work/out
        # zylcomp --cpp
        rm -rf "$out" && mkdir "$out"
        "$timed" "$work/t" "$zylcomp" --cpp -o "$out" "$dir/bench.zyl" >/dev/null
        read -r s kb rc cpu <"$work/t"
        [ "$rc" = 0 ] || { echo "run.sh: zylcomp failed on $n classes" >&2; exit 1; }
        echo "$s $kb $(bytes "$out") $cpu" >>"$results/zylcomp.$n"
        # flatc --cpp
        rm -rf "$out" && mkdir "$out"
        "$timed" "$work/t" "$flatc" --cpp -o "$out" "$dir/bench.fbs"
        read -r s kb rc cpu <"$work/t"
        [ "$rc" = 0 ] || { echo "run.sh: flatc --cpp failed on $n classes" >&2; exit 1; }
        echo "$s $kb $(bytes "$out") $cpu" >>"$results/flatc.$n"
        # zyl_db_load_dictionary: the call's own time and the dictionary's bytes
        "$timed" "$work/t" "$load" "$dir/bench.zyl" >"$work/l"
        read -r s kb rc cpu <"$work/t"
        [ "$rc" = 0 ] || { echo "run.sh: zyl_db_load_dictionary failed on $n classes" >&2; exit 1; }
        read -r call dictBytes callCpu <"$work/l"
        echo "$call $kb $dictBytes $callCpu $s" >>"$results/load.$n"
        # flatc -b --schema
        rm -rf "$out" && mkdir "$out"
        "$timed" "$work/t" "$flatc" -b --schema -o "$out" "$dir/bench.fbs"
        read -r s kb rc cpu <"$work/t"
        [ "$rc" = 0 ] || { echo "run.sh: flatc -b --schema failed on $n classes" >&2; exit 1; }
        echo "$s $kb $(bytes "$out") $cpu" >>"$results/bfbs.$n"
    done
done
rm -rf "$work/out"

# "MEDIAN BEST" of column `col` of a result file.
col() { awk -v c="$2" '{ print $c }' "$results/$1" | stats; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.3f", (b > 0 ? a / b : 0) }'; }
label() {
    case $1 in
    zylcomp) echo "zylcomp --cpp" ;;
    flatc) echo "flatc --cpp" ;;
    load) echo "zyl_db_load_dictionary (call)" ;;
    bfbs) echo "flatc -b --schema" ;;
    esac
}

printf '%-7s %-31s %10s %10s %10s %10s %9s %12s\n' classes entry "wall med" "wall best" "cpu med" "cpu best" \
    "peak MiB" "output bytes"
for n in "${sizes[@]}"; do
    for e in zylcomp flatc load bfbs; do
        read -r tm tb <<<"$(col "$e.$n" 1)"
        read -r cm cb <<<"$(col "$e.$n" 4)"
        read -r km _ <<<"$(col "$e.$n" 2)"
        read -r bm _ <<<"$(col "$e.$n" 3)"
        printf '%-7s %-31s %10.4f %10.4f %10.4f %10.4f %9.1f %12d\n' "$n" "$(label $e)" "$tm" "$tb" "$cm" "$cb" \
            "$(awk -v k="$km" 'BEGIN { print k / 1024 }')" "$bm"
        if [ "$e" = load ]; then
            read -r pm pb <<<"$(col "$e.$n" 5)"
            printf '%-7s %-31s %10.4f %10.4f\n' "$n" "  bench_load_dictionary (process)" "$pm" "$pb"
        fi
    done
done
echo "(seconds; the output bytes of zyl_db_load_dictionary are the dictionary's memory from"
echo " zyl_sys_malloc and zyl_sys_calloc, its peak memory that of the whole bench_load_dictionary)"

echo
echo "ratios, zylcomp over flatc, of the medians (of the best runs):"
printf '%-7s %-24s %-24s %-24s %-24s\n' classes "--cpp wall" "--cpp cpu" "load / -b --schema wall" \
    "load / -b --schema cpu"
for n in "${sizes[@]}"; do
    line=$(printf '%-7s' "$n")
    for pair in "zylcomp flatc 1" "zylcomp flatc 4" "load bfbs 1" "load bfbs 4"; do
        read -r a b c <<<"$pair"
        read -r am ab <<<"$(col "$a.$n" "$c")"
        read -r bm bb <<<"$(col "$b.$n" "$c")"
        line+=$(printf ' %-24s' "$(ratio "$am" "$bm") ($(ratio "$ab" "$bb"))")
    done
    echo "$line"
done

if [ ${#sizes[@]} -gt 1 ]; then
    lo=${sizes[0]}
    hi=${sizes[${#sizes[@]} - 1]}
    for n in "${sizes[@]}"; do
        [ "$n" -lt "$lo" ] && lo=$n
        [ "$n" -gt "$hi" ] && hi=$n
    done
    # The growth over sizes a tenth apart, when there are such.
    for n in "${sizes[@]}"; do
        [ $((n * 10)) -eq "$hi" ] && lo=$n
    done
    echo
    echo "growth from $lo to $hi classes (x$(ratio "$hi" "$lo") the classes), of the medians (of the best runs):"
    printf '  %-31s %-20s %-20s\n' entry wall cpu
    for e in zylcomp flatc load bfbs; do
        read -r am ab <<<"$(col "$e.$lo" 1)"
        read -r bm bb <<<"$(col "$e.$hi" 1)"
        read -r acm acb <<<"$(col "$e.$lo" 4)"
        read -r bcm bcb <<<"$(col "$e.$hi" 4)"
        printf '  %-31s %-20s %-20s\n' "$(label $e)" "x$(ratio "$bm" "$am") (x$(ratio "$bb" "$ab"))" \
            "x$(ratio "$bcm" "$acm") (x$(ratio "$bcb" "$acb"))"
    done
fi
echo
echo "load average after: $(cut -d' ' -f1-3 /proc/loadavg)"
