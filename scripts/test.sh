#!/usr/bin/env bash
# Sets up a fresh machine, builds everything and runs every test (the build presets are in
# CMakePresets.json).
#   scripts/test.sh                 the normal build, in build/release
#   scripts/test.sh --sanitize      AddressSanitizer and UndefinedBehaviorSanitizer, in build/asan
#   scripts/test.sh --threads       the tests labelled "threads" under ThreadSanitizer, in build/tsan
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh

preset=release
case "${1:-}" in
    --sanitize) preset=asan ;;
    --threads) preset=tsan ;;
    '') ;;
    *) echo "usage: scripts/test.sh [--sanitize | --threads]" >&2; exit 2 ;;
esac
jobs=$(nproc 2>/dev/null || echo 2)
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" -j "$jobs"
if [ "$preset" = asan ]; then
    # The tests labelled "icons" (the icon sets, the renderer fixtures) run once more under the
    # sanitizers, without the reference renderer's comparison, which the normal build makes.
    ctest --preset asan -j "$jobs" -LE icons
    TQSVG_ICONS_NO_COMPARE=1 ctest --preset asan -L icons
else
    ctest --preset "$preset" -j "$jobs"
fi
