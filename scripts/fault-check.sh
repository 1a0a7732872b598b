#!/usr/bin/env bash
# Plants each deliberate fault of scripts/faults.tsv alone in a scratch copy of the sources,
# rebuilds, runs the tests (all but the icons label) and records which tests failed, so that a
# change to the tests can be shown to keep its power to find faults.
#   scripts/fault-check.sh [--rev REV] [--out DIR] [ID...]
#       REV: a commit to copy instead of the working tree; ID: only these faults.
#       Writes DIR/faults.md (a Markdown table) and DIR/faults.tsv (id, outcome, failed tests);
#       DIR defaults to build/faults.
#   scripts/fault-check.sh --compare BEFORE.tsv AFTER.tsv
#       Lists every fault caught in BEFORE and not in AFTER; exits 1 when there is one.
# A fault whose original text is no longer in its file is reported as DOES NOT APPLY (its line
# in faults.tsv needs refreshing); it is never skipped silently.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD

if [ "${1:-}" = --compare ]; then
    [ $# -eq 3 ] || { echo "usage: $0 --compare BEFORE.tsv AFTER.tsv" >&2; exit 2; }
    lost=$(awk -F'\t' 'NR == FNR { if ($2 == "caught") before[$1] = 1; next }
                       { seen[$1] = 1 }
                       ($1 in before) && $2 != "caught" { print $1 " (" $2 ")" }
                       END { for (id in before) if (!(id in seen)) print id " (not run)" }' \
        "$2" "$3")
    if [ -n "$lost" ]; then
        echo "caught before, not after:"; echo "$lost"; exit 1
    fi
    echo "every fault caught before is caught after"
    exit 0
fi

rev=""
out=$root/build/faults
while [ $# -gt 0 ]; do
    case "$1" in
        --rev) rev=$2; shift 2 ;;
        --out) out=$(realpath -m "$2"); shift 2 ;;
        -*) echo "unknown option $1" >&2; exit 2 ;;
        *) break ;;
    esac
done
only=("$@")

src=$out/src
build=$out/build
mkdir -p "$out"

# The sources as they stand (tracked and new files), or as committed at REV; all of them are
# rebuilt (ccache makes that cheap), so that nothing of an interrupted run stays compiled in.
rm -rf "$src"
mkdir -p "$src"
if [ -n "$rev" ]; then
    git archive "$rev" | tar -x -C "$src"
else
    git ls-files -co --exclude-standard -z |
        while IFS= read -r -d '' f; do [ -e "$f" ] && printf '%s\0' "$f"; done |
        tar --null -T - -cf - | tar -xf - -C "$src"
fi
find "$src" -type f -exec touch {} +

# ccache, where installed, makes putting an original file back (and a second run) nearly free.
launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
cmake -S "$src" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" \
    -DCMAKE_LINK_DEPENDS_NO_SHARED=ON -DTQSVG_WERROR=OFF >"$out/configure.log"

run_tests() {  # run_tests LOG -> failed test names, one a line, on stdout
    ctest --test-dir "$build" -LE icons -j1 --timeout 300 >"$1" 2>&1 || true
    sed -n '/The following tests FAILED:/,$p' "$1" |
        sed -nE 's/^[[:space:]]*[0-9]+ - (.+) \(([^)]*)\)$/\1/p'
}

echo "fault-check: building the unchanged sources in $build"
nice -n 10 cmake --build "$build" -j1 >"$out/build.log" 2>&1 ||
    { echo "fault-check: the unchanged sources do not build, see $out/build.log" >&2; exit 1; }
clean=$(run_tests "$out/clean.log")
if [ -n "$clean" ]; then
    echo "fault-check: tests fail without any fault:" >&2
    echo "$clean" >&2
    exit 1
fi

backup=$out/original
planted=""
restore() {
    if [ -n "$planted" ]; then
        # A fresh modification time, so that the build compiles the original again.
        cp "$backup" "$src/$planted"
        planted=""
    fi
}
trap restore EXIT INT TERM

tsv=$out/faults.tsv
table=$out/faults.md
: >"$tsv"
{
    echo "| id | fault | file | caught by |"
    echo "|---|---|---|---|"
} >"$table"
missing=0
while IFS=$'\t' read -r id file original replacement what; do
    case "$id" in '#'* | '') continue ;; esac
    if [ ${#only[@]} -gt 0 ] && [[ ! " ${only[*]} " =~ " $id " ]]; then
        continue
    fi
    result=""
    tests=""
    if [ ! -f "$src/$file" ] || ! grep -qF -- "$original" "$src/$file"; then
        echo "fault-check: $id: DOES NOT APPLY: the original text is not in $file" >&2
        result="does not apply"
        missing=$((missing + 1))
    else
        cp -p "$src/$file" "$backup"
        planted=$file
        ORIGINAL=$original REPLACEMENT=$replacement python3 - "$src/$file" <<'PY'
import os, sys
path = sys.argv[1]
text = open(path, encoding="utf-8").read()
open(path, "w", encoding="utf-8").write(
    text.replace(os.environ["ORIGINAL"], os.environ["REPLACEMENT"], 1))
PY
        start=$(date +%s)
        if ! nice -n 10 cmake --build "$build" -j1 >"$out/build-$id.log" 2>&1; then
            result="does not build"
        else
            rm -f "$out/build-$id.log"
            tests=$(run_tests "$out/test-$id.log" | paste -sd' ' -)
            result=$([ -n "$tests" ] && echo caught || echo "NOT CAUGHT")
        fi
        restore
        echo "fault-check: $id: $result in $(($(date +%s) - start)) s${tests:+: $tests}"
    fi
    printf '%s\t%s\t%s\n' "$id" "$result" "$tests" >>"$tsv"
    # In the table the test names are shortened to the first four.
    shown=$(echo "$tests" | tr ' ' '\n' | sed '/^$/d' | head -n 4 | paste -sd' ' - | sed 's/ /, /g')
    count=$(echo "$tests" | tr ' ' '\n' | sed '/^$/d' | wc -l)
    [ "$count" -gt 4 ] && shown="$shown and $((count - 4)) more"
    case "$result" in
        caught) cell=$shown ;;
        *) cell="**$result**" ;;
    esac
    printf '| %s | %s | %s | %s |\n' "$id" "$what" "$file" "$cell" >>"$table"
done <"$root/scripts/faults.tsv"
# Leave the scratch build as the sources stand.
nice -n 10 cmake --build "$build" -j1 >/dev/null 2>&1 || true

caught=$(awk -F'\t' '$2 == "caught"' "$tsv" | wc -l)
total=$(wc -l <"$tsv")
echo "fault-check: $caught of $total faults caught; table in $table"
if [ "$missing" -ne 0 ]; then
    echo "fault-check: $missing fault(s) DO NOT APPLY: refresh their lines in scripts/faults.tsv" >&2
fi
awk -F'\t' '$2 != "caught" { print "fault-check: " $1 ": " $2 }' "$tsv" >&2
