#!/usr/bin/env bash
# Scores every SVG file under the given folders against rsvg-convert under both reading profiles,
# as the icon test scores its two pinned sets, and writes the report (shares, every file below
# 0.95 with its cause, the worst pictures side by side) to OUTDIR.
#   scripts/compare-icons.sh [-o OUTDIR] DIR...      OUTDIR defaults to build/compare-icons
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=$root/build/compare-icons
if [ "${1:-}" = -o ]; then
    out=$(realpath -m "$2")
    shift 2
fi
[ $# -gt 0 ] || { echo "usage: $0 [-o OUTDIR] DIR..." >&2; exit 2; }
dirs=()
for d in "$@"; do
    [ -d "$d" ] || { echo "$d: not a folder" >&2; exit 2; }
    dirs+=("$(realpath "$d")")
done

"$root/scripts/setup.sh"
cd "$root"
cmake --preset release >/dev/null
cmake --build --preset release --target tqsvg mask_iou
exec tests/icons/icon_sets.sh build/release/tools/tqsvg build/release/tests/icons/mask_iou "$out" "${dirs[@]}"
