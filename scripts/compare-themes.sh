#!/usr/bin/env bash
# Desktop icon themes, Inkscape's drawings and clip art from Debian's packages, scored against
# rsvg-convert like the icon sets (scripts/compare-icons.sh). The packages are downloaded and
# extracted into a cache outside the repository, never installed (offline once cached); a theme's
# links to other icons are left out. Prints which files are gzip-compressed (*.svgz, or *.svg
# holding gzip), then writes the report to OUTDIR.
#   scripts/compare-themes.sh [-o OUTDIR] [-s SIZE] [SET...]
# OUTDIR defaults to build/compare-themes, SIZE to 256; SET names sets below (all by default).
# TQSVG and MASK_IOU name the binaries to use instead of building them (as compare-icons.sh).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=$root/build/compare-themes
size=256
while getopts o:s: option; do
    case $option in
        o) out=$(realpath -m "$OPTARG") ;;
        s) size=$OPTARG ;;
        *) exit 2 ;;
    esac
done
shift $((OPTIND - 1))
# name, package and folder in the package.
declare -A package=(
    [adwaita]=adwaita-icon-theme [breeze]=breeze-icon-theme [papirus]=papirus-icon-theme
    [papirus-symbolic]=papirus-icon-theme [tango]=tango-icon-theme
    [elementary-xfce]=elementary-xfce-icon-theme [inkscape-examples]=inkscape
    [inkscape-tutorials]=inkscape-tutorials [openclipart]=openclipart-svg)
declare -A folder=(
    [adwaita]=icons/Adwaita [breeze]=icons/breeze [papirus]=icons/Papirus/64x64
    [papirus-symbolic]=icons/Papirus/symbolic [tango]=icons/Tango/scalable
    [elementary-xfce]=icons/elementary-xfce [inkscape-examples]=inkscape/examples
    [inkscape-tutorials]=inkscape/tutorials [openclipart]=openclipart/svg)
names=("$@")
[ $# -gt 0 ] || names=(adwaita breeze papirus papirus-symbolic tango elementary-xfce
    inkscape-examples inkscape-tutorials openclipart)
cache=${TQSVG_THEME_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/tqsvg-themes}
dirs=()
for name in "${names[@]}"; do
    [ -n "${package[$name]:-}" ] || { echo "unknown set $name; sets: ${!package[*]}" >&2; exit 2; }
    dir=$("$root/tests/icons/debian_package.sh" "$cache" "${package[$name]}")/usr/share/${folder[$name]}
    find "$dir" -type l \( -name '*.svg' -o -name '*.svgz' \) -delete
    dirs+=("$dir")
    gzipped=$(find "$dir" -name '*.svg' -type f -exec sh -c \
        'for f; do [ "$(head -c 2 "$f" | od -An -tx1)" = " 1f 8b" ] && echo "$f"; done; :' sh {} + | wc -l)
    echo "$name: $(find "$dir" -name '*.svg' | wc -l) *.svg ($gzipped gzip-compressed)," \
        "$(find "$dir" -name '*.svgz' | wc -l) *.svgz in $dir"
done
exec "$root/scripts/compare-icons.sh" -o "$out" -s "$size" "${dirs[@]}"
