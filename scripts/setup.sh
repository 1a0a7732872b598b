#!/usr/bin/env bash
# Installs the Debian packages that building, testing and the tool need, only where missing.
# Idempotent; runs as root (no sudo) or through sudo when it is there.
set -euo pipefail

packages=(
    cmake ninja-build g++ pkg-config
    libxml2-dev libutfcpp-dev libcli11-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    clang-format
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    echo "setup: all ${#packages[@]} packages present"
    exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "setup: need root to install: ${missing[*]}" >&2; exit 1; }
    as_root=(sudo)
fi
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
echo "setup: done"
