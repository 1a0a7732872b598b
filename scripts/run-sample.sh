#!/usr/bin/env bash
# Sets up a fresh machine, builds the tqsvg tool and runs it.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh

build=build/release
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTQSVG_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" --target tqsvg -j "$(nproc 2>/dev/null || echo 2)"

tool="$build/tools/tqsvg"
echo "== $tool --version"
"$tool" --version
echo "== $tool --help"
"$tool" --help
