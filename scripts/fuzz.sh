#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each in turn for SECONDS (default 60), over a
# scratch copy of its seed corpus (the committed corpus only grows by hand, with minimised
# findings) and, for the targets that read text, the dictionary fuzz/svg.dict. Any crash, input
# slower than 10 s, leak, sanitizer report or memory use over 2 GB fails the run; the reproducer
# is kept under the build's findings/ folder and named in the output.
#   scripts/fuzz.sh [SECONDS]
#   TQSVG_FUZZ_BUILD=DIR            build there instead of build/fuzz
#   TQSVG_FUZZ_TARGETS="load ..."   run only these targets
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
case "$seconds" in
    '' | *[!0-9]*) echo "usage: scripts/fuzz.sh [SECONDS]" >&2; exit 2 ;;
esac
build=${TQSVG_FUZZ_BUILD:-build/fuzz}
targets=(${TQSVG_FUZZ_TARGETS:-triangulate load path_data attributes roundtrip segment stroke})

scripts/setup.sh --fuzz

jobs=$(nproc 2>/dev/null || echo 2)
cmake --preset fuzz -B "$build" -DTQSVG_WERROR=ON >/dev/null
cmake --build "$build" -j "${TQSVG_FUZZ_JOBS:-$jobs}" --target "${targets[@]/#/fuzz_}"

findings=$build/findings
mkdir -p "$findings"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=()
for target in "${targets[@]}"; do
    mkdir -p "$work/$target"
    cp fuzz/corpus/"$target"/* "$work/$target/"
    options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1
             -artifact_prefix="$findings/$target-")
    if [ "$target" != triangulate ] && [ "$target" != stroke ]; then
        options+=(-dict=fuzz/svg.dict)
    fi
    log=$findings/$target.log
    echo "fuzz: $target for ${seconds}s"
    if "$build/fuzz/fuzz_$target" "${options[@]}" "$work/$target" >"$log" 2>&1; then
        # The last status line: executions, coverage (cov) and features (ft).
        grep -E '^#[0-9]+' "$log" | tail -n 1 || true
        grep -E '^stat::number_of_executed_units' "$log" || true
    else
        echo "fuzz: $target FAILED; log $log"
        grep -E -A 30 'ERROR|SUMMARY|^fuzz_|Test unit written|==[0-9]+==' "$log" | head -n 60
        failed+=("$target")
    fi
done

if [ ${#failed[@]} -gt 0 ]; then
    echo "fuzz: failures in ${failed[*]}; reproducers under $findings/" >&2
    exit 1
fi
echo "fuzz: all ${#targets[@]} targets ran ${seconds}s without a finding"
