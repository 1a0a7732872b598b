#!/usr/bin/env bash
# Scores the standard profile on families of SVG 1.1's own test cases against their reference
# pictures, with the icon sets' measure (tests/icons/icon_sets.sh: the lower of coverage IoU and
# colour agreement, through mask_iou). The cases come from Debian's librsvg2-tests, downloaded
# and extracted into a cache outside the repository (offline once cached). Each case's title and
# labels are text, which the library does not draw and the references draw in their own font: the
# pixels where a reference differs from rsvg-convert's drawing of the case without its text
# elements are left out. Writes OUTDIR/report.md (per family: cases, how many at 0.95 or better;
# per case: its score, what out-of-scope content it has, the other warnings) and OUTDIR/cases.tsv.
# Out of scope: what the tool's warnings say it leaves out (gradients, images, filters...), text
# besides the revision caption, references into other documents, clipping by nested viewports.
#   scripts/compare-w3c.sh [-o OUTDIR] [FAMILY...]
# OUTDIR defaults to build/compare-w3c; FAMILY to the list below. The tool and mask_iou are built
# in build/release unless TQSVG and MASK_IOU name them.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=$root/build/compare-w3c
if [ "${1:-}" = -o ]; then
    out=$(realpath -m "$2")
    shift 2
fi
families=("$@")
[ $# -gt 0 ] || families=(paths-data shapes coords-trans coords-viewattr struct-use struct-group
    struct-svg struct-symbol styling-css painting-fill types-basic painting-stroke)
cache=${TQSVG_W3C_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/tqsvg-w3c}
package=$("$root/tests/icons/debian_package.sh" "$cache" librsvg2-tests)
suite=$package/usr/libexec/installed-tests/RSVG/fixtures/reftests/svg1.1
if [ -z "${TQSVG:-}" ] || [ -z "${MASK_IOU:-}" ]; then
    "$root/scripts/setup.sh"
    (cd "$root" && cmake --preset release >/dev/null &&
        cmake --build --preset release --target tqsvg mask_iou)
    TQSVG=$root/build/release/tools/tqsvg
    MASK_IOU=$root/build/release/tests/icons/mask_iou
fi

# One folder per family under the cache: each case with its reference picture beside it
# (NAME-ref.png) and the mask of the pixels its text draws (NAME-mask.png), made once.
strip_text() { perl -0pe 's/<text\b.*?<\/text>//gs; s/<text\b[^>]*\/>//g' "$1"; }
# Text other than the revision caption, outside comments.
has_text() { perl -0ne 's/<!--.*?-->//gs; exit !(grep { !/id="revision"/ } /<text\b[^>]*>/g)' "$1"; }
sets=()
missing=()
mkdir -p "$out"
for family in "${families[@]}"; do
    dir=$cache/families/$family
    cases=$(find "$suite" -maxdepth 1 -name "$family-*.svg" | sort)
    [ -n "$cases" ] || { missing+=("$family"); continue; }
    sets+=("$dir")
    [ -f "$dir/.done" ] && continue
    rm -rf "$dir"
    mkdir -p "$dir"
    while read -r case; do
        name=$(basename "$case" .svg)
        cp "$case" "$dir/"
        cp "$suite/$name-ref.png" "$dir/$name-ref.png"
        # Drawn beside the case, so that what it refers to by relative paths is found.
        strip_text "$case" >"$suite/$name.text-free"
        read -r w h < <(od -An -tu1 -j16 -N8 "$dir/$name-ref.png" |
            awk '{ print $3 * 256 + $4, $7 * 256 + $8 }')
        rsvg-convert -w "$w" -h "$h" -o "$dir/text-free.png" "$suite/$name.text-free" 2>/dev/null
        "$MASK_IOU" --differ "$dir/$name-ref.png" "$dir/text-free.png" "$dir/$name-mask.png" >/dev/null
        rm -f "$suite/$name.text-free" "$dir/text-free.png"
        has_text "$case" && echo "$name" >>"$dir/.text"
    done <<<"$cases"
    touch "$dir/.done"
done

# The references are 480 by 360 pixels: our pictures are drawn 480 pixels on their larger side.
set +e
TQSVG_ICONS_SIZE=480 "$root/tests/icons/icon_sets.sh" "$TQSVG" "$MASK_IOU" "$out/run" "${sets[@]}" \
    >"$out/log.txt" 2>&1
status=$?
set -e

# "family<TAB>case<TAB>score<TAB>coverage<TAB>colour<TAB>out of scope<TAB>other warnings".
generalised() { sed -E 's/ with value "[^"]*"//; s/position [0-9]+/position N/; s/@[0-9]+/@N/; s/^(.{150}).+/\1…/'; }
sed -E 's/^([^:]*)\.svg: /\1\t/; s/^[^\t]*\///' "$out/run/standard-messages.txt" \
    | { grep -Ev $'\tIgnore (gradient|clip path|mask|filter|marker|pattern|text|image|animation|script|foreign object|SVG font): ' || true; } \
    | generalised | awk -F'\t' '!seen[$0]++ { w[$1] = w[$1] (w[$1] == "" ? "" : "; ") $2 }
        END { for (c in w) print c "\t" w[c] }' >"$out/run/other-warnings"
cat "$cache"/families/*/.text 2>/dev/null >"$out/run/text" || true
awk -F'\t' -v families="${sets[*]}" '
    BEGIN { n = split(families, f, " "); for (i = 1; i <= n; i++) { sub(/.*\//, "", f[i]); family[i - 1] = f[i] } }
    FILENAME ~ /other-warnings$/ { other[$1] = $2; next }
    FILENAME ~ /text$/ { text[$1] = 1; next }
    { c = $6; sub(/.*\//, "", c); sub(/\.svg$/, "", c)
      k = $5; gsub(/(^|, )(text|SVG font)/, "", k); sub(/^, /, "", k)
      if (c in text) k = k == "" ? "text" : "text, " k
      if (other[c] ~ /other documents are never read/) k = k (k == "" ? "" : ", ") "other document"
      if (other[c] ~ /Ignore clipping/) k = k (k == "" ? "" : ", ") "viewport clipping"
      print family[$1] "\t" c "\t" $2 "\t" $3 "\t" $4 "\t" k "\t" other[c] }' \
    "$out/run/other-warnings" "$out/run/text" "$out/run/scores.tsv" >"$out/cases.tsv"

{
    echo "# SVG 1.1 cases against their reference pictures (standard profile, text left out)"
    echo
    echo "| family | cases | at 0.95 or better | with out-of-scope content | below 0.95 with none but text |"
    echo "|---|---|---|---|---|"
    awk -F'\t' '{ n[$1]++; good[$1] += $3 != "failed" && $3 >= 0.95; out[$1] += $6 != ""; k = $6; sub(/^text(, )?/, "", k)
                  bad[$1] += ($3 == "failed" || $3 < 0.95) && k == ""; order[$1] = order[$1] ? order[$1] : ++o }
        END { for (f in n) printf "%d| %s | %d | %d | %d | %d |\n", order[f], f, n[f], good[f], out[f], bad[f] }' \
        "$out/cases.tsv" | sort -n | cut -d'|' -f2- | sed 's/^/|/'
    [ ${#missing[@]} -eq 0 ] || echo -e "\nNo cases in the package: ${missing[*]}."
    echo
    echo "Text is left out of every score (its pixels are masked), so a case whose only out-of-scope"
    echo "content is text is scored on everything else. Every case: score (coverage, colour);"
    echo "out-of-scope content; other warnings."
    echo
    awk -F'\t' '{ printf "- %s %s (%s, %s)%s%s\n", $2, $3, $4, $5, ($6 == "" ? "" : "; out of scope: " $6),
                  ($7 == "" ? "" : "; " $7) }' "$out/cases.tsv"
    echo
    echo "The run's report and log (crashes): $out/run/report.md, $out/log.txt (exit $status)"
} >"$out/report.md"
cat "$out/report.md"
exit "$status"
