#!/usr/bin/env bash
# Plants the faults of tests/mutation/faults.txt one at a time into a scratch
# copy of the checkout, rebuilds, runs the default test suite and reports
# which faults the suite caught. Run on demand; not part of CI.
#
#   tests/mutation/run.sh [-j N] [--keep] [--scratch DIR] [--timeout SECONDS]
#                         [--faults FILE] [--no-install] [--first] [ID ...]
#
# With no ID every fault of the list is planted. See tests/mutation/README.md.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
repo=$(cd "$here/../.." && pwd)

jobs=2
keep=0
scratch="${TMPDIR:-/tmp}/zylcomp-mutation"
timeout_s=600
faults="$here/faults.txt"
no_install=0
first=0
ids=()

usage() { sed -n '2,10p' "$0" | sed 's/^# \{0,1\}//'; }

while [ $# -gt 0 ]; do
    case "$1" in
        -j) jobs="$2"; shift 2 ;;
        -j*) jobs="${1#-j}"; shift ;;
        --keep) keep=1; shift ;;
        --scratch) scratch="$2"; shift 2 ;;
        --timeout) timeout_s="$2"; shift 2 ;;
        --faults) faults="$2"; shift 2 ;;
        --no-install) no_install=1; shift ;;
        --first) first=1; shift ;;
        -h|--help) usage; exit 0 ;;
        -*) echo "run.sh: unknown option $1" >&2; usage >&2; exit 2 ;;
        *) ids+=("$1"); shift ;;
    esac
done
case "$jobs" in ''|*[!0-9]*) echo "run.sh: -j takes a number" >&2; exit 2 ;; esac
faults=$(cd "$(dirname "$faults")" && pwd)/$(basename "$faults")
[ -f "$faults" ] || { echo "run.sh: no fault list $faults" >&2; exit 2; }

src="$scratch/src"
bld="$scratch/build"
logs="$scratch/logs"
work="$scratch/work"

cleanup() {
    if [ "$keep" -eq 0 ]; then
        rm -rf "$scratch"
    else
        echo "run.sh: scratch kept in $scratch" >&2
    fi
}

# Restores every file that a fault may have touched, whatever stopped us.
restore_pending=""
on_exit() {
    if [ -n "$restore_pending" ] && [ -f "$work/orig" ]; then
        cp "$work/orig" "$src/$restore_pending"
    fi
    cleanup
}

# Only a scratch directory of an earlier run (or a missing or empty one)
# is ever removed.
if [ -d "$scratch" ] && [ -n "$(ls -A "$scratch")" ] && [ ! -e "$scratch/.zylcomp-mutation" ]; then
    echo "run.sh: $scratch exists and is not a scratch directory of this script; not touching it" >&2
    exit 2
fi
rm -rf "$scratch"
mkdir -p "$src" "$logs" "$work"
: >"$scratch/.zylcomp-mutation"
trap on_exit EXIT

# The tracked files as committed at HEAD; uncommitted changes are not copied.
rev=$(git -C "$repo" rev-parse --short HEAD)
echo "run.sh: copying the checkout at $rev into $src" >&2
git -C "$repo" archive --format=tar "$rev" | tar -x -C "$src"

# Every fault is read and checked against the pristine sources before any
# build, so that a stale entry fails at once instead of after an hour.
python3 - "$faults" "$src" "$work/faults.tsv" "${ids[@]+"${ids[@]}"}" <<'PY'
import sys
path, src, out, wanted = sys.argv[1], sys.argv[2], sys.argv[3], sys.argv[4:]
def unescape(s):
    out, i = [], 0
    while i < len(s):
        c = s[i]
        if c == '\\' and i + 1 < len(s):
            n = s[i + 1]
            out.append({'t': '\t', 'n': '\n', '\\': '\\'}.get(n, '\\' + n))
            i += 2
        else:
            out.append(c); i += 1
    return ''.join(out)
rows, seen, bad = [], set(), False
with open(path, encoding='utf-8') as f:
    for no, line in enumerate(f, 1):
        line = line.rstrip('\n')
        if not line.strip() or line.startswith('#'):
            continue
        cols = line.split('\t')
        if len(cols) != 6:
            print(f"{path}:{no}: {len(cols)} columns, 6 wanted", file=sys.stderr); bad = True; continue
        fid, fname, kind, find, repl, what = cols
        if not (fid and fname and kind and find and what):
            print(f"{path}:{no}: only the replacement may be empty", file=sys.stderr); bad = True
        if fid in seen:
            print(f"{path}:{no}: id {fid} twice", file=sys.stderr); bad = True
        seen.add(fid)
        rows.append((no, fid, fname, kind, find, repl, what))
if wanted:
    known = {r[1] for r in rows}
    for w in wanted:
        if w not in known:
            print(f"run.sh: no fault with id {w}", file=sys.stderr); bad = True
    rows = [r for r in rows if r[1] in wanted]
for no, fid, fname, kind, find, repl, what in rows:
    try:
        text = open(f"{src}/{fname}", encoding='utf-8').read()
    except OSError as e:
        print(f"{path}:{no}: {fid}: {e}", file=sys.stderr); bad = True; continue
    n = text.count(unescape(find))
    if n != 1:
        print(f"{path}:{no}: {fid}: the text to find occurs {n} times in {fname}, not once", file=sys.stderr); bad = True
    if unescape(find) == unescape(repl):
        print(f"{path}:{no}: {fid}: the replacement is the text itself", file=sys.stderr); bad = True
if bad:
    sys.exit(1)
# The texts themselves, unescaped, wait in files of their own for the apply
# step, which then needs no escapes.
import os
os.makedirs(f"{os.path.dirname(out)}/texts", exist_ok=True)
for no, fid, fname, kind, find, repl, what in rows:
    for part, text in (("find", find), ("replace", repl)):
        with open(f"{os.path.dirname(out)}/texts/{fid}.{part}", 'w', encoding='utf-8') as t:
            t.write(unescape(text))
with open(out, 'w', encoding='utf-8') as f:
    for no, fid, fname, kind, find, repl, what in rows:
        # Unit separators, not tabs: bash's read would merge empty fields
        # between tabs, and a replacement may be empty.
        f.write('\x1f'.join((fid, fname, kind, find, repl, what)) + '\n')
PY

# The default build: the preset's build type, tests on (as the default preset).
build_type=$(python3 -c '
import json, sys
p = json.load(open(sys.argv[1]))
for c in p["configurePresets"]:
    if c["name"] == "default":
        print(c.get("cacheVariables", {}).get("CMAKE_BUILD_TYPE", "")); break
' "$src/CMakePresets.json")
echo "run.sh: configuring $bld (CMAKE_BUILD_TYPE=$build_type, tests on)" >&2
cmake -S "$src" -B "$bld" -DCMAKE_BUILD_TYPE="$build_type" -DZYLCOMP_BUILD_TESTS=ON \
    >"$logs/configure.log" 2>&1 || { cat "$logs/configure.log" >&2; echo "run.sh: configure failed" >&2; exit 1; }

ctest_args=(--test-dir "$bld" -j "$jobs" --timeout 300)
if [ "$no_install" -eq 1 ]; then
    ctest_args+=(-LE install)
fi
baseline_args=("${ctest_args[@]}")
if [ "$first" -eq 1 ]; then
    # A fault is caught once one test fails; the rest of the suite would
    # only say so again.
    ctest_args+=(--stop-on-failure)
fi

echo "run.sh: building and testing the unmutated checkout" >&2
t0=$(date +%s)
if ! cmake --build "$bld" -j "$jobs" >"$logs/baseline-build.log" 2>&1; then
    tail -40 "$logs/baseline-build.log" >&2
    echo "run.sh: the unmutated checkout does not build" >&2; exit 1
fi
if ! ctest "${baseline_args[@]}" >"$logs/baseline-test.log" 2>&1; then
    tail -40 "$logs/baseline-test.log" >&2
    echo "run.sh: the unmutated suite fails; fix that first" >&2; exit 1
fi
echo "run.sh: baseline passed in $(( $(date +%s) - t0 )) s" >&2

# ctest starts the slowest tests first; with --first the fastest go first
# instead, so that a fault caught by a quick test does not wait for the
# slow ones. The baseline's own timings give the order.
costs="$bld/Testing/Temporary/CTestCostData.txt"
if [ "$first" -eq 1 ] && [ -f "$costs" ]; then
    python3 - "$costs" "$work/costs-fast-first.txt" <<'PY'
import sys
out = []
for line in open(sys.argv[1], encoding='utf-8'):
    if line.startswith('---'):
        break
    parts = line.split()
    if len(parts) == 3:
        out.append(f"{parts[0]} {parts[1]} {1.0 / (float(parts[2]) + 0.001):.6f}\n")
open(sys.argv[2], 'w', encoding='utf-8').write(''.join(out) + '---\n')
PY
fi

# Applies fault $2 to file $1, failing unless the text to find occurs
# exactly once.
apply_fault() {
    python3 - "$1" "$work/texts/$2.find" "$work/texts/$2.replace" <<'PY'
import sys
file = sys.argv[1]
find, repl = (open(p, encoding='utf-8').read() for p in sys.argv[2:4])
text = open(file, encoding='utf-8').read()
n = text.count(find)
if n != 1:
    print(f"run.sh: the text to find occurs {n} times in {file}, not once", file=sys.stderr)
    sys.exit(1)
open(file, 'w', encoding='utf-8').write(text.replace(find, repl, 1))
PY
}

results="$work/results.tsv"
: >"$results"
total=$(wc -l <"$work/faults.tsv")
n=0
while IFS=$'\x1f' read -r fid fname kind find repl what; do
    n=$((n + 1))
    echo "run.sh: [$n/$total] $fid ($fname: $what)" >&2
    t0=$(date +%s)
    cp -p "$src/$fname" "$work/orig"
    restore_pending="$fname"
    if ! apply_fault "$src/$fname" "$fid" </dev/null; then
        echo "run.sh: fault $fid cannot be applied" >&2
        exit 1
    fi
    touch "$src/$fname"
    result=""
    catching=""
    set +e
    timeout "$timeout_s" cmake --build "$bld" -j "$jobs" </dev/null >"$logs/$fid-build.log" 2>&1
    rc=$?
    set -e
    if [ "$rc" -eq 124 ]; then
        result="timeout (build)"
    elif [ "$rc" -ne 0 ]; then
        result="does not compile"
        # The compiler's first complaint, so that a fault that should have
        # compiled is easy to tell from a broken build.
        catching=$(grep -m1 -E 'error:' "$logs/$fid-build.log" | sed 's#^.*/src/##' | cut -c1-100 || true)
    else
        if [ -f "$work/costs-fast-first.txt" ]; then
            cp "$work/costs-fast-first.txt" "$costs"
        fi
        left=$(( timeout_s - ($(date +%s) - t0) ))
        [ "$left" -gt 30 ] || left=30
        set +e
        timeout "$left" ctest "${ctest_args[@]}" </dev/null >"$logs/$fid-test.log" 2>&1
        rc=$?
        set -e
        if [ "$rc" -eq 0 ]; then
            result="survived"
        else
            failed=$(sed -n '/The following tests FAILED:/,$p' "$logs/$fid-test.log" |
                sed -n 's/^[[:space:]]*[0-9]\{1,\} - \([^ ]*\).*/\1/p')
            count=$(printf '%s\n' "$failed" | grep -c . || true)
            if [ "$rc" -eq 124 ]; then
                result="caught (timeout)"
            else
                result="caught"
            fi
            catching=$(printf '%s\n' "$failed" | head -3 | paste -sd ' ' -)
            if [ "$count" -gt 3 ]; then catching="$catching … ($count tests)"; fi
            [ -n "$catching" ] || catching="(no test named; see $fid-test.log)"
        fi
    fi
    # Restore; the restored file keeps a fresh time stamp (plain cp), so
    # that the next build compiles it again.
    cp "$work/orig" "$src/$fname"
    touch "$src/$fname"
    restore_pending=""
    secs=$(( $(date +%s) - t0 ))
    echo "run.sh:   $result ${catching:+($catching) }in ${secs} s" >&2
    printf '%s\t%s\t%s\t%s\t%s\t%s\n' "$fid" "$fname" "$kind" "$result" "$catching" "$secs" >>"$results"
done <"$work/faults.tsv"

# The last restore must be rebuilt too when the scratch is kept.
if [ "$keep" -eq 1 ]; then
    cmake --build "$bld" -j "$jobs" >"$logs/final-build.log" 2>&1 || true
fi

python3 - "$results" "$rev" <<'PY'
import sys
rows = [l.rstrip('\n').split('\t') for l in open(sys.argv[1], encoding='utf-8') if l.strip()]
def cell(s):
    return s.replace('|', '\\|')
print(f"# Mutation run at {sys.argv[2]}\n")
print("| id | file | kind | result | caught by | s |")
print("| --- | --- | --- | --- | --- | ---: |")
for fid, fname, kind, result, catching, secs in rows:
    print(f"| {cell(fid)} | {cell(fname)} | {cell(kind)} | {cell(result)} | {cell(catching)} | {secs} |")
planted = len(rows)
nocompile = sum(1 for r in rows if r[3] == "does not compile")
timeouts = sum(1 for r in rows if r[3] == "timeout (build)")
caught = sum(1 for r in rows if r[3].startswith("caught"))
survived = sum(1 for r in rows if r[3] == "survived")
counted = caught + survived
pct = f"{100.0 * caught / counted:.1f} %" if counted else "n/a"
print()
print(f"- planted: {planted}")
print(f"- not compiling (not counted): {nocompile}")
if timeouts:
    print(f"- build timed out (not counted): {timeouts}")
print(f"- caught: {caught}")
print(f"- survived: {survived}")
print(f"- caught: {pct} of {counted}")
surv = [r[0] for r in rows if r[3] == "survived"]
if surv:
    print(f"\nSurvivors: {' '.join(surv)}")
PY
