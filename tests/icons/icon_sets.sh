#!/usr/bin/env bash
# Real-world icons that nobody here wrote, read and drawn by the tool under both reading profiles
# and compared with Debian's rsvg-convert at 256 px:
#   subset    checked strictly and leniently (--subset [--ignore-unsupported]); each file that
#             loads leniently is drawn, and scored by the IoU of the two alpha masks (thresholded
#             at half coverage);
#   standard  checked and drawn as browsers read SVG; scored by the lower of the IoU and the share
#             of the pixels both cover whose colours agree (a detail drawn inside a filled shape,
#             such as a face's eyes, changes colours, not coverage).
# A file is good at 0.95 or better. The test fails on a crash; when a profile's share of good
# files among those that load drops below its line in baseline.tsv; and when a file below 0.95
# under the standard profile has no cause among what that profile leaves out (text, images,
# gradients, filters, masks, clip paths, markers, patterns, animation, scripts). The report, with
# every such file and its cause and the worst pictures side by side, goes to OUTDIR.
#
# usage: icon_sets.sh TQSVG MASK_IOU [OUTDIR [SET_DIR...]]
# Without SET_DIRs: two pinned public icon sets from the npm registry, installed into a cache
# outside the repository and checked against the baseline; exits 77 (skipped) when they are not
# cached and the registry cannot be reached. With SET_DIRs (scripts/compare-icons.sh): those
# directories, reported without a baseline.
# TQSVG_ICONS_NO_COMPARE=1 (sanitizer builds): only the checks and our pictures are made.
# TQSVG_ICON_SIZE: the pictures' size in pixels (default 256; the baseline has lines per size).
set -uo pipefail
tool=$(realpath "$1")
iou=$(realpath "$2")
out=$(realpath -m "${3:-out/icons}")
shift $(($# < 3 ? $# : 3))
jobs=$(nproc 2>/dev/null || echo 2)
baseline=$(dirname "$(realpath "$0")")/baseline.tsv
size=${TQSVG_ICON_SIZE:-256}

if [ $# -gt 0 ]; then
    sets=("$@")
    baseline=""
else
    cache=${TQSVG_ICON_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/tqsvg-icons}
    pins=("@mdi/svg@7.4.47" "simple-icons@16.37.0")
    sets=("$cache/node_modules/@mdi/svg/svg" "$cache/node_modules/simple-icons/icons")
    if [ ! -d "${sets[0]}" ] || [ ! -d "${sets[1]}" ]; then
        if ! command -v npm >/dev/null || ! timeout 30 npm view "${pins[0]}" version >/dev/null 2>&1; then
            echo "SKIPPED: npm or its registry cannot be reached and the icons are not cached"
            exit 77
        fi
        mkdir -p "$cache"
        npm install --prefix "$cache" --no-save --no-audit --no-fund --ignore-scripts "${pins[@]}" \
            >/dev/null 2>&1 || { echo "npm install failed"; exit 1; }
    fi
fi
command -v rsvg-convert >/dev/null || { echo "rsvg-convert (Debian's librsvg2-bin) is missing: run scripts/setup.sh"; exit 1; }

rm -rf "$out"
mkdir -p "$out/worst"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() {
    echo "FAIL: $*"
    failures=$((failures + 1))
}

# Runs a batch command of the tool; exit codes 0 and 1 are verdicts, anything else a crash,
# which is then pinned on its file by running the files one at a time.
batch() {  # batch WHAT SET COMMAND... (a file argument stands at the end)
    local what=$1 set=$2
    shift 2
    "$@" "$set"
    local rc=$?
    if [ "$rc" -gt 1 ]; then
        fail "$what crashed ($rc) on $set"
        find "$set" -name '*.svg' | sort | while read -r f; do
            "$@" "$f" >/dev/null 2>&1
            rc=$?
            [ "$rc" -gt 1 ] && echo "  crashed ($rc) on $f"
        done
    fi
}

# ---- checks and pictures ---------------------------------------------------------------------
# One process per set and mode; `check --status` says which files loaded, and each message line
# starts with its file's path.
declare -A checkFlags=([strict]="--subset" [subset]="--subset --ignore-unsupported" [standard]="")
for mode in strict subset standard; do
    : >"$work/$mode.status"
    : >"$work/$mode.messages"
    for i in "${!sets[@]}"; do
        batch "check ($mode)" "${sets[$i]}" "$tool" check ${checkFlags[$mode]} --status \
            -j "$jobs" >>"$work/$mode.status" 2>>"$work/$mode.messages"
    done
    sed -i '/^[0-9]* loaded, /d' "$work/$mode.status"
done
for mode in subset standard; do
    for i in "${!sets[@]}"; do
        batch "render ($mode)" "${sets[$i]}" "$tool" render ${checkFlags[$mode]} --size "$size" \
            -j "$jobs" -o "$work/$mode/$i" >/dev/null 2>&1
    done
done
total=$(wc -l <"$work/standard.status")
count() { grep -c "^$1" "$2"; }
if [ "${TQSVG_ICONS_NO_COMPARE:-0}" = 1 ]; then
    echo "$total files; loaded: subset strictly $(count ok "$work/strict.status"), subset" \
        "leniently $(count ok "$work/subset.status"), standard $(count ok "$work/standard.status")"
    exit $((failures != 0))
fi

# ---- the reference pictures and the scores ---------------------------------------------------
# "set<TAB>file<TAB>picture": the picture's path below a set's folder of pictures.
for i in "${!sets[@]}"; do
    find "${sets[$i]}" -name '*.svg' | sort | while read -r f; do
        rel=${f#"${sets[$i]}"/}
        printf '%s\t%s\t%s\n' "$i" "$f" "${rel%.svg}.png"
    done
done >"$work/files"
awk -F'\t' -v w="$work" '{ print w "/ref/" $1 "/" $3; print $2 }' "$work/files" \
    | xargs -d '\n' -P "$jobs" -n 2 sh -c \
        'mkdir -p "$(dirname "$0")" && rsvg-convert -w '"$size"' -h '"$size"' -a -o "$0" "$1" 2>/dev/null'
# Per mode: "score<TAB>iou<TAB>colour<TAB>file" for every file that loaded.
for mode in subset standard; do
    awk -F'\t' -v m="$mode" -v w="$work" '
        NR == FNR { if ($1 == "ok") loaded[$2] = 1; next }
        ($2 in loaded) { print w "/" m "/" $1 "/" $3, w "/ref/" $1 "/" $3, $2 }' \
        "$work/$mode.status" "$work/files" >"$work/$mode.pairs"
    cut -d' ' -f1,2 "$work/$mode.pairs" | "$iou" --list | paste -d' ' - <(cut -d' ' -f3- "$work/$mode.pairs") \
        | awk -v m="$mode" '{ s = $1 == "na" ? "na" : (m == "subset" || $1 < $2 ? $1 : $2)
                             printf "%s\t%s\t%s\t%s\n", s, $1, ($1 == "na" ? "na" : $2), $NF }' \
        >"$work/$mode.scores"
done

# ---- causes ----------------------------------------------------------------------------------
# Each file's first message: message lines start with the file's path.
first_messages() {  # first_messages MODE -> "file<TAB>message"
    sed -nE 's/^(.*\.(svg|SVG)): (.*)$/\1\t\3/p' "$work/$1.messages" | awk -F'\t' '!seen[$1]++'
}
generalised() {
    sed -E 's/value "[^"]*"/value "…"/g; s/"[^"]*"/"…"/g; s/position [0-9]+/position N/g; s/@[0-9]+/@N/g; s/ : .*//'
}
# What the standard profile leaves out, as its warnings name it.
cause_of() {  # cause_of FILE: the first warning about something left out, else "unexplained"
    grep -F -- "$1: Ignore " "$work/standard.messages" \
        | sed -E 's/^.*: Ignore (gradient|clip path|mask|filter|marker|pattern|text|image|animation|script|foreign object|SVG font): .*$/\1/;t;d' \
        | head -n 1 | grep . || echo unexplained
}

# ---- report ----------------------------------------------------------------------------------
{
    echo "# Icon sets: ${sets[*]}"
    echo
    echo "$total files. Loaded: subset strictly $(count ok "$work/strict.status"), subset leniently" \
        "$(count ok "$work/subset.status"), standard $(count ok "$work/standard.status")."
    echo
    echo "Refusals of the strict subset by cause:"
    echo '```'
    first_messages strict | cut -f2 | generalised | sort | uniq -c | sort -rn | head -n 8
    echo '```'
    echo "Standard profile, warnings by kind (a file counts once per kind):"
    echo '```'
    sed -E 's/^.*(\.svg|\.SVG): //' "$work/standard.messages" | generalised | sed -E 's/: .*//' \
        | sort | uniq -c | sort -rn | head -n 12
    echo '```'
    echo "Scores against rsvg-convert at $size px (subset: coverage; standard: the lower of"
    echo "coverage and colour agreement):"
    echo
    echo "| profile | compared | median | 5th percentile | at 0.95 or better | share |"
    echo "|---|---|---|---|---|---|"
    for mode in subset standard; do
        sort -n "$work/$mode.scores" | awk -F'\t' -v m="$mode" -v loaded="$(count ok "$work/$mode.status")" '
            $1 != "na" { v[n++] = $1; good += $1 >= 0.95 }
            END { printf "| %s | %d | %.4f | %.4f | %d | %.4f |\n", m, n, v[int(n / 2)],
                  v[int(0.05 * (n - 1))], good, loaded ? good / loaded : 0 }'
    done
    echo
    echo "Standard profile below 0.95, with the cause:"
    echo
    awk -F'\t' '$1 != "na" && $1 < 0.95' "$work/standard.scores" | sort -n \
        | while IFS=$'\t' read -r score coverage colour file; do
            echo "- $score (coverage $coverage, colour $colour) $file: $(cause_of "$file")"
        done | tee "$work/below"
} >"$out/report.md"
cat "$out/report.md"
cp "$work/below" "$out/below-0.95.txt"
# The worst three of the standard profile side by side: ours | rsvg-convert | difference.
sort -n "$work/standard.scores" | head -n 3 | cut -f4 | nl -w1 | while read -r rank file; do
    pair=$(grep -F " $file" "$work/standard.pairs" | head -n 1)
    "$iou" ${pair% *} "$out/worst/$rank-$(basename "${file%.svg}").png" >/dev/null 2>&1
done

# ---- verdicts --------------------------------------------------------------------------------
unexplained=$(grep -c ': unexplained$' "$work/below")
[ "$unexplained" -ne 0 ] && fail "$unexplained files below 0.95 under the standard profile have no cause it leaves out"
if [ -n "$baseline" ]; then
    for mode in subset standard; do
        good=$(awk -F'\t' '$1 != "na" && $1 >= 0.95' "$work/$mode.scores" | wc -l)
        loaded=$(count ok "$work/$mode.status")
        share=$(awk -v g="$good" -v n="$loaded" 'BEGIN { printf "%.4f", n ? g / n : 0 }')
        floor=$(awk -F'\t' -v m="$mode" -v s="$size" '$1 == m && $2 == s { print $3 }' "$baseline")
        echo "good files at $size px ($mode): $good of $loaded loaded, share $share, baseline ${floor:-missing}"
        if [ -z "$floor" ] || awk -v a="$share" -v b="$floor" 'BEGIN { exit !(a < b) }'; then
            fail "the share of good files ($mode, $size px) is below its line in $baseline"
        fi
    done
fi
echo "report: $out/report.md; worst pictures: $out/worst/"
exit $((failures != 0))
