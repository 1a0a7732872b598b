#!/usr/bin/env bash
# Scores every SVG file under the given folders against rsvg-convert under both reading profiles,
# as the icon test scores its two pinned sets, and writes the report (shares, every file below
# 0.95 with its cause, the worst pictures side by side) to OUTDIR. Pictures are drawn by
# `tqsvg render`, from the library's fill and stroke triangles alone, at SIZE pixels.
#   scripts/compare-icons.sh [-o OUTDIR] [-s SIZE] DIR...
#   OUTDIR defaults to build/compare-icons, SIZE to 256
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=$root/build/compare-icons
size=256
usage() { echo "usage: $0 [-o OUTDIR] [-s SIZE] DIR..." >&2; exit 2; }
while [ $# -gt 1 ]; do
    case "$1" in
        -o) out=$(realpath -m "$2"); shift 2 ;;
        -s) size=$2; shift 2 ;;
        *) break ;;
    esac
done
case "$size" in '' | *[!0-9]* | 0) usage ;; esac
[ $# -gt 0 ] || usage
dirs=()
for d in "$@"; do
    [ -d "$d" ] || { echo "$d: not a folder" >&2; exit 2; }
    dirs+=("$(realpath "$d")")
done

"$root/scripts/setup.sh"
cd "$root"
cmake --preset release >/dev/null
cmake --build --preset release --target tqsvg mask_iou
TQSVG_ICON_SIZE=$size exec tests/icons/icon_sets.sh build/release/tools/tqsvg build/release/tests/icons/mask_iou "$out" "${dirs[@]}"
