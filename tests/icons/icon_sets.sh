#!/usr/bin/env bash
# Real-world icons that nobody here wrote: two pinned icon sets from the npm registry, installed
# into a cache outside the repository (never committed), run through the tool.
#   1. `tqsvg check` on every file, strict and with --ignore-unsupported: no crash, counts of
#      loaded, refused (by cause) and warnings;
#   2. every file that loads with --ignore-unsupported, rendered by `tqsvg render` and by
#      rsvg-convert at 64 and 256 px, compared by the intersection over union of their alpha masks at half coverage.
# A report with the distribution and the worst files goes to OUTDIR/report.md. The test fails on
# a crash, and when the share of good files (IoU >= 0.95 among the files that load) at a size
# drops below its line in baseline.tsv, keyed by reading profile and size.
#
# usage: icon_sets.sh TQSVG MASK_IOU [OUTDIR]
# With TQSVG_ICONS_NO_COMPARE=1 (sanitizer builds) only the checks and our renders run.
# Exits 77 (skipped) when the icons are not cached and the registry cannot be reached.
set -uo pipefail
tool=$(realpath "$1")
iou=$(realpath "$2")
out=$(realpath -m "${3:-out/icons}")
cache=${TQSVG_ICON_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/tqsvg-icons}
pins=("@mdi/svg@7.4.47" "simple-icons@16.37.0")
sets=("$cache/node_modules/@mdi/svg/svg" "$cache/node_modules/simple-icons/icons")
jobs=$(nproc 2>/dev/null || echo 2)
profile=default  # the reading profile: check and render with --ignore-unsupported
baseline=$(dirname "$(realpath "$0")")/baseline.tsv

if [ ! -d "${sets[0]}" ] || [ ! -d "${sets[1]}" ]; then
    if ! command -v npm >/dev/null || ! timeout 30 npm view "${pins[0]}" version >/dev/null 2>&1; then
        echo "SKIPPED: npm or its registry cannot be reached and the icons are not cached"
        exit 77
    fi
    mkdir -p "$cache"
    npm install --prefix "$cache" --no-save --no-audit --no-fund --ignore-scripts "${pins[@]}" \
        >/dev/null 2>&1 || { echo "npm install failed"; exit 1; }
fi
if ! command -v rsvg-convert >/dev/null; then
    echo "rsvg-convert (Debian's librsvg2-bin) is missing: run scripts/setup.sh"; exit 1
fi

rm -rf "$out"
mkdir -p "$out/worst"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
find "${sets[@]}" -name '*.svg' | sort >"$work/files"
total=$(wc -l <"$work/files")
failures=0
checkCrashes=0

# ---- check ---------------------------------------------------------------------------------
# One process per file, so that each file's messages and exit code stay its own.
check_one() {  # check_one MODE FILE -> "exit<TAB>file<TAB>first message<TAB>content skipped"
    local err rc skipped=0
    err=$("$tool" check $1 "$2" 2>&1 >/dev/null)
    rc=$?
    # Drawing content left out: a refused path or element, not just an unknown attribute.
    if printf '%s' "$err" | grep -q -e 'Malformed path' -e 'unsupported element' \
        -e 'Unsupported element'; then
        skipped=1
    fi
    printf '%s\t%s\t%s\t%s\n' "$rc" "$2" "$(printf '%s' "$err" | head -n 1 | sed "s|^$2: ||")" \
        "$skipped"
}
export -f check_one
export tool
for mode in strict ignore; do
    flag=""
    [ "$mode" = ignore ] && flag="--ignore-unsupported"
    xargs -d '\n' -P "$jobs" -n 1 bash -c "check_one '$flag' \"\$0\"" <"$work/files" \
        | sort -t$'\t' -k2 >"$work/check-$mode"
    crashes=$(awk -F'\t' '$1 != 0 && $1 != 1' "$work/check-$mode" | wc -l)
    checkCrashes=$((checkCrashes + crashes))
    if [ "$crashes" -ne 0 ]; then
        echo "FAIL: $crashes crashes in check ($mode):"
        awk -F'\t' '$1 != 0 && $1 != 1' "$work/check-$mode" | head
        failures=$((failures + 1))
    fi
done
loaded=$(awk -F'\t' '$1 == 0' "$work/check-strict" | wc -l)
refused=$(awk -F'\t' '$1 == 1' "$work/check-strict" | wc -l)
loadedIgnoring=$(awk -F'\t' '$1 == 0' "$work/check-ignore" | wc -l)
warned=$(awk -F'\t' '$1 == 0 && $3 != ""' "$work/check-ignore" | wc -l)
# A refusal's cause is its message with the quoted values taken out.
causes() {
    awk -F'\t' "$1" "$2" | cut -f3 | sed -E 's/value "[^"]*"/value "…"/g; s/position [0-9]+/position N/g; s/@[0-9]+/@N/g; s/ : .*//' \
        | sort | uniq -c | sort -rn | head -n 12
}

# ---- render and compare -------------------------------------------------------------------
# Our pictures in one batch per set and size; a crash there is then pinned on its file by
# rendering that set's files one at a time.
renderCrashes=0
for i in "${!sets[@]}"; do
    for size in 64 256; do
        "$tool" render --ignore-unsupported "${sets[$i]}" -o "$work/ours/$i/$size" \
            --size "$size" -j "$jobs" >/dev/null 2>&1
        rc=$?
        if [ "$rc" -ne 0 ] && [ "$rc" -ne 1 ]; then
            while read -r f; do
                "$tool" render --ignore-unsupported "$f" -o "$work/one.png" --size "$size" \
                    >/dev/null 2>&1
                rc=$?
                if [ "$rc" -ne 0 ] && [ "$rc" -ne 1 ]; then
                    echo "FAIL: render crashed ($rc) on $f"
                    renderCrashes=$((renderCrashes + 1))
                fi
            done < <(find "${sets[$i]}" -name '*.svg' | sort)
        fi
    done
done
[ "$renderCrashes" -ne 0 ] && failures=$((failures + 1))
if [ "${TQSVG_ICONS_NO_COMPARE:-0}" = 1 ]; then
    echo "$total files; strict: $loaded loaded, $refused refused; crashes: check $checkCrashes, render $renderCrashes"
    exit $((failures != 0))
fi

awk -F'\t' '$1 == 0 {print $2}' "$work/check-ignore" >"$work/loaded"
compare_one() {  # compare_one FILE -> "size<TAB>iou<TAB>file" per size
    local f=$1 i ours ref
    for i in "${!sets[@]}"; do
        case "$f" in "${sets[$i]}"/*) break ;; esac
    done
    for size in 64 256; do
        ours="$work/ours/$i/$size/${f#"${sets[$i]}"/}"
        ours="${ours%.svg}.png"
        ref="$work/ref-$BASHPID.png"
        if [ -f "$ours" ] && rsvg-convert -w "$size" -h "$size" -a -o "$ref" "$f" 2>/dev/null; then
            printf '%s\t%s\t%s\n' "$size" "$("$iou" "$ours" "$ref" 2>/dev/null || echo na)" "$f"
        fi
    done
    rm -f "$work/ref-$BASHPID.png"
}
export -f compare_one
export iou work
export SETS_LIST="${sets[*]}"
xargs -d '\n' -P "$jobs" -n 1 bash -c 'read -ra sets <<<"$SETS_LIST"; compare_one "$0"' \
    <"$work/loaded" | sort >"$work/iou"

# ---- report --------------------------------------------------------------------------------
grep -v $'\tna\t' "$work/iou" >"$work/iou-valid"
python3 - "$work/iou-valid" "$out" "$work/check-strict" "$work/check-ignore" <<'PY' >"$work/distribution"
import os, sys
rows = [l.rstrip('\n').split('\t') for l in open(sys.argv[1]) if l.strip()]
out = sys.argv[2]
strict = {l.split('\t')[1] for l in open(sys.argv[3]) if l.split('\t')[0] == '0'}
skipped = {l.split('\t')[1] for l in open(sys.argv[4]) if l.rstrip('\n').split('\t')[-1] == '1'}
# Files read whole compare what the library draws; files with a path or element left out
# (refused by design) cannot match the reference.
classes = [('read whole, strictly', lambda f: f in strict),
           ('read whole, an attribute ignored', lambda f: f not in strict and f not in skipped),
           ('content left out (refused path or element)', lambda f: f in skipped)]
for name, member in classes:
    for size in ('64', '256'):
        values = sorted((float(v), f) for s, v, f in rows if s == size and member(f))
        if not values:
            continue
        n = len(values)
        median = values[n // 2][0]
        p5 = values[int(0.05 * (n - 1))][0]
        below = sum(1 for v, _ in values if v < 0.95)
        print(f"| {name} | {size} px | {n} | {median:.4f} | {p5:.4f} | {below} |")
print()
rows = [r for r in rows if r[2] not in skipped]
values = sorted((float(v), f) for s, v, f in rows if s == '256')
root = os.path.commonpath([f for _, f in values]) if len(values) > 1 else ''
print("Worst ten at 256 px among files read whole:\n")
for v, f in values[:10]:
    print(f"- {v:.4f} {os.path.relpath(f, root) if root else f}")
print()
for rank, (v, f) in enumerate(values[:3], 1):
    base = os.path.join(out, 'worst', f"{rank}-{os.path.basename(f)[:-4]}")
    print(f"WORST\t{rank}\t{f}\t{base}")
PY
grep -v '^WORST' "$work/distribution" >"$work/distribution-text"
# The worst three side by side: ours | rsvg-convert | difference (red: ours only, blue: theirs).
grep '^WORST' "$work/distribution" | while IFS=$'\t' read -r _ rank file base; do
    "$tool" render --ignore-unsupported "$file" -o "$work/w.png" --size 256 >/dev/null 2>&1
    rsvg-convert -w 256 -h 256 -a -o "$work/w-ref.png" "$file" 2>/dev/null
    "$iou" "$work/w.png" "$work/w-ref.png" "$base.png" >/dev/null 2>&1
done
# Every file read whole below 0.95, for the explanations.
awk -F'\t' '$4 == 1 {print $2}' "$work/check-ignore" >"$work/skipped"
awk -F'\t' 'NR == FNR {skip[$1] = 1; next} $2 < 0.95 && !($3 in skip)' "$work/skipped" \
    "$work/iou-valid" | sort -t$'\t' -k2 -n >"$out/below-0.95.tsv"

{
    echo "# Icon sets: ${pins[*]}"
    echo
    echo "$total files. Strict: $loaded loaded, $refused refused. With --ignore-unsupported:"
    echo "$loadedIgnoring loaded, $warned of them with warnings."
    echo
    echo "Refusals by cause (strict):"
    echo '```'
    causes '$1 == 1' "$work/check-strict"
    echo '```'
    echo "Warnings by first cause (--ignore-unsupported):"
    echo '```'
    causes '$1 == 0 && $3 != ""' "$work/check-ignore"
    echo '```'
    echo "Alpha-mask IoU against rsvg-convert (threshold: half coverage):"
    echo
    echo "| files | size | count | median | 5th percentile | below 0.95 |"
    echo "|---|---|---|---|---|---|"
    cat "$work/distribution-text"
    echo "Crashes: check $checkCrashes, render $renderCrashes."
} >"$out/report.md"
cat "$out/report.md"

# ---- the baseline ----------------------------------------------------------------------------
for size in 64 256; do
    good=$(awk -F'\t' -v s="$size" '$1 == s && $2 != "na" && $2 >= 0.95' "$work/iou" | wc -l)
    share=$(awk -v g="$good" -v n="$loadedIgnoring" 'BEGIN { printf "%.4f", n ? g / n : 0 }')
    floor=$(awk -F'\t' -v m="$profile" -v s="$size" '$1 == m && $2 == s { print $3 }' "$baseline")
    echo "good files at $size px ($profile): $good of $loadedIgnoring loaded, share $share," \
        "baseline ${floor:-missing}"
    if [ -z "$floor" ] || awk -v a="$share" -v b="$floor" 'BEGIN { exit !(a < b) }'; then
        echo "FAIL: the share of good files at $size px is below the baseline in $baseline"
        failures=$((failures + 1))
    fi
done
echo "report: $out/report.md; worst pictures: $out/worst/"
exit $((failures != 0))
