#!/usr/bin/env bash
# Installs the Debian packages that building, testing and the tool need, only where missing.
# Idempotent; runs as root (no sudo) or through sudo when it is there.
#   scripts/setup.sh            building, testing, the tool and the benchmarks
#   scripts/setup.sh --fuzz     also clang and its fuzzing and sanitizer runtimes
#   scripts/setup.sh --bench    also node and npm, for the peers that come from npm
set -euo pipefail

packages=(
    cmake ninja-build g++ pkg-config
    libxml2-dev zlib1g-dev libutfcpp-dev libcli11-dev libcairo2-dev libfast-float-dev
    libgtest-dev libgmock-dev libbenchmark-dev libglu1-mesa-dev libpolyclipping-dev librsvg2-bin
    clang-format locales python3
)
case "${1:-}" in
    --fuzz) packages+=(clang libclang-rt-14-dev) ;;
    --bench) command -v npm >/dev/null || packages+=(nodejs npm) ;;  # any node will do
esac

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo)
fi

if [ ${#missing[@]} -eq 0 ]; then
    echo "setup: all ${#packages[@]} packages present"
else
    if [ ${#as_root[@]} -gt 0 ] && ! command -v sudo >/dev/null; then
        echo "setup: need root to install: ${missing[*]}" >&2
        exit 1
    fi
    echo "setup: installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# A locale that writes a decimal comma, for the test that loading ignores the process locale.
if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
    echo "setup: generating the de_DE.UTF-8 locale"
    "${as_root[@]}" localedef -i de_DE -f UTF-8 de_DE.UTF-8 || echo "setup: could not generate de_DE.UTF-8"
fi
echo "setup: done"
