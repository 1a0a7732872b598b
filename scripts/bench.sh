#!/usr/bin/env bash
# Builds the benchmarks in Release, runs each beside its peer and prints one table: ours, the
# peer, the ratio and the goal for every row (loading beside libxml2's floor and resvg's parse,
# saving beside the bytes moved by memcpy and fwrite, filling beside the GLU tessellator, stroking
# beside Clipper's offsetting, the tool rendering mdi's icons beside rsvg-convert).
#
#   scripts/bench.sh [OUTDIR]      results and the table go to OUTDIR (default build/bench/results)
#
# Peers from npm (resvg-js, the icon sets) are installed into ~/.cache, never into the
# repository; Debian's (libxml2, GLU, rsvg-convert, node) by setup.sh. Takes about 15 minutes,
# and 5 more the first time, to build the segmentation benchmark as it was before the speed work.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=$(realpath -m "${1:-$root/build/bench/results}")
cache=${XDG_CACHE_HOME:-$HOME/.cache}
icons=${TQSVG_ICON_CACHE:-$cache/tqsvg-icons}
peers=$cache/tqsvg-bench
resvg_pin="@resvg/resvg-js@2.6.2"
icon_pins=("@mdi/svg@7.4.47" "simple-icons@16.37.0" "lucide-static@1.62.0")

"$root/scripts/setup.sh" --bench
cd "$root"
cmake --preset bench >/dev/null
cmake --build --preset bench
bin=$root/build/bench/bench
tool=$root/build/bench/tools/tqsvg
mkdir -p "$out"

step() { printf '\n== %s\n' "$*" >&2; }

step "peers from npm (into $cache)"
[ -d "$peers/node_modules/@resvg/resvg-js" ] ||
    npm install --prefix "$peers" --no-save --no-audit --no-fund "$resvg_pin" >/dev/null
[ -d "$icons/node_modules/@mdi/svg/svg" ] && [ -d "$icons/node_modules/simple-icons/icons" ] &&
    [ -d "$icons/node_modules/lucide-static/icons" ] ||
    npm install --prefix "$icons" --no-save --no-audit --no-fund --ignore-scripts "${icon_pins[@]}" >/dev/null
export TQSVG_ICON_CACHE=$icons

# Google Benchmark's JSON for each binary; its console output goes to the log.
run_bench() {
    local name=$1
    shift
    step "$name"
    "$bin/$name" --benchmark_out="$out/$name.json" --benchmark_out_format=json "$@" | tee "$out/$name.log" >&2
}
run_bench bench_load --benchmark_repetitions=9 --benchmark_enable_random_interleaving=true
run_bench bench_save
run_bench bench_segment --benchmark_filter=Pipeline/generated --benchmark_repetitions=3

# The segmentation row compares with the code as it was before the work on speed, built from
# the repository's history and run here, beside ours.
before_rev=4a0d232
step "segmentation as of $before_rev, for its row"
before=$root/build/bench-before
if [ ! -x "$before/build/bench/bench_segment" ]; then
    rm -rf "$before" && mkdir -p "$before/src"
    git -C "$root" archive "$before_rev" | tar -x -C "$before/src"
    cmake -S "$before/src" -B "$before/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DTQSVG_BUILD_BENCH=ON -DTQSVG_BUILD_TESTS=OFF >/dev/null
    cmake --build "$before/build" --target bench_segment
fi
"$before/build/bench/bench_segment" --benchmark_filter=Pipeline/generated --benchmark_repetitions=3 \
    --benchmark_out="$out/bench_segment_before.json" --benchmark_out_format=json >&2
run_bench bench_triangulate
run_bench bench_stroke --benchmark_repetitions=3

step "resvg's parse of the load benchmark's document"
"$bin/generate_document" "$out/document.svg"
node "$root/bench/peers/resvg_parse.js" "$peers/node_modules/@resvg/resvg-js" "$out/document.svg" 5 \
    >"$out/resvg.json"
rm -f "$out/document.svg"

step "mdi's icons drawn at 256 px, ours with -j 2 beside rsvg-convert two at a time"
mdi=$icons/node_modules/@mdi/svg/svg
pictures=$(mktemp -d)
trap 'rm -rf "$pictures"' EXIT
seconds() {  # the wall time of a command, in seconds
    local start
    start=$(date +%s%N)
    "$@"
    local ns=$(($(date +%s%N) - start))
    printf '%d.%09d' $((ns / 1000000000)) $((ns % 1000000000))
}
ours=$(seconds "$tool" render "$mdi" -o "$pictures/ours" --size 256 -j 2 2>/dev/null)
mkdir -p "$pictures/peer"
peer=$(seconds sh -c "ls '$mdi' | xargs -P 2 -I{} rsvg-convert -w 256 -h 256 -o '$pictures/peer/{}.png' '$mdi/{}'")
printf '{"files": %d, "ours_s": %s, "peer_s": %s}\n' "$(ls "$mdi" | wc -l)" "$ours" "$peer" >"$out/render.json"

python3 "$root/scripts/bench_table.py" "$out" | tee "$out/table.md"
