#!/usr/bin/env bash
# Downloads Debian packages with apt-get (never installing them) and extracts each into its own
# folder of a cache outside the repository, then prints the folders, one a line. Idempotent, and
# offline once a package is cached. Exits 77 (skipped) when a package is neither cached nor
# downloadable.
#   usage: debian_package.sh CACHE PACKAGE...
set -euo pipefail
[ $# -ge 2 ] || { echo "usage: $0 CACHE PACKAGE..." >&2; exit 2; }
cache=$1
shift
mkdir -p "$cache"
for package in "$@"; do
    dir=$cache/$package
    if [ ! -f "$dir/.extracted" ]; then
        download=$(mktemp -d "$cache/.download.XXXXXX")
        # apt-get warns that its sandbox user cannot write to the folder when run as root.
        if ! (cd "$download" && timeout 600 apt-get download "$package" >/dev/null 2>&1); then
            rm -rf "$download"
            echo "SKIPPED: $package is not cached and apt-get cannot download it" >&2
            exit 77
        fi
        rm -rf "$dir"
        dpkg-deb -x "$download"/*.deb "$dir"
        basename "$download"/*.deb >"$dir/.extracted"
        rm -rf "$download"
    fi
    echo "$dir"
done
