#!/usr/bin/env bash
# Scores every SVG file under the given folders against rsvg-convert under both reading profiles,
# as the icon test scores its two pinned sets, and writes the report (shares per set, every file
# below 0.95 with its cause, the worst pictures side by side, every file's score in scores.tsv)
# to OUTDIR. Pictures are drawn by `tqsvg render`, from the library's fill and stroke triangles
# alone.
#   scripts/compare-icons.sh [-o OUTDIR] [-s SIZE] DIR...
# OUTDIR defaults to build/compare-icons, SIZE (the pictures' larger side in pixels) to 256.
# The tool and mask_iou are built in build/release unless TQSVG and MASK_IOU name them.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=$root/build/compare-icons
size=256
while getopts o:s: option; do
    case $option in
        o) out=$(realpath -m "$OPTARG") ;;
        s) size=$OPTARG ;;
        *) exit 2 ;;
    esac
done
shift $((OPTIND - 1))
[ $# -gt 0 ] || { echo "usage: $0 [-o OUTDIR] [-s SIZE] DIR..." >&2; exit 2; }
dirs=()
for d in "$@"; do
    [ -d "$d" ] || { echo "$d: not a folder" >&2; exit 2; }
    dirs+=("$(realpath "$d")")
done

if [ -z "${TQSVG:-}" ] || [ -z "${MASK_IOU:-}" ]; then
    "$root/scripts/setup.sh"
    (cd "$root" && cmake --preset release >/dev/null &&
        cmake --build --preset release --target tqsvg mask_iou)
    TQSVG=$root/build/release/tools/tqsvg
    MASK_IOU=$root/build/release/tests/icons/mask_iou
fi
TQSVG_ICONS_SIZE=$size exec "$root/tests/icons/icon_sets.sh" "$TQSVG" "$MASK_IOU" "$out" "${dirs[@]}"
