#!/usr/bin/env bash
# Sets up a fresh machine, builds everything and runs every test.
#   scripts/test.sh                 the normal build, in build/release
#   scripts/test.sh --sanitize      AddressSanitizer and UndefinedBehaviorSanitizer, in build/asan
#   scripts/test.sh --threads       the tests that run the library on several threads, under
#                                   ThreadSanitizer, in build/tsan
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh

build=build/release
args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
if [ "${1:-}" = "--sanitize" ]; then
    build=build/asan
    args=(-DCMAKE_BUILD_TYPE=Debug -DTQSVG_SANITIZE=address,undefined)
    export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
    # Aborting makes a sanitizer report a crash (exit 134) rather than an ordinary failure.
    export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1:abort_on_error=1
fi

jobs=$(nproc 2>/dev/null || echo 2)
if [ "${1:-}" = "--threads" ]; then
    cmake -S . -B build/tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTQSVG_SANITIZE=thread \
        -DTQSVG_BUILD_TOOLS=OFF
    cmake --build build/tsan -j "$jobs" --target svg_tests
    TSAN_OPTIONS=halt_on_error=1 build/tsan/tests/svg_tests --gtest_filter='*Thread*'
    exit 0
fi
cmake -S . -B "$build" -G Ninja "${args[@]}"
cmake --build "$build" -j "$jobs"
if [ "$build" = build/asan ]; then
    # The icon sets (a network test) run once under the sanitizers without the reference
    # renderer's comparison, which the normal build makes.
    ctest --test-dir "$build" --output-on-failure -j "$jobs" -LE icons
    TQSVG_ICONS_NO_COMPARE=1 ctest --test-dir "$build" --output-on-failure -L icons
else
    ctest --test-dir "$build" --output-on-failure -j "$jobs"
fi
