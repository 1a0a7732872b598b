#!/usr/bin/env bash
# Sets up a fresh machine, builds the tqsvg tool and runs it on the bundled sample; the outputs
# go under out/.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh

build=build/release
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --target tqsvg -j "$(nproc 2>/dev/null || echo 2)"

tool="$build/tools/tqsvg"
sample=examples/sample.svg
mkdir -p out

echo "== tqsvg --version"
"$tool" --version
echo "== tqsvg check $sample"
"$tool" check "$sample"
echo "== tqsvg convert $sample out/sample.svg"
"$tool" convert --indent --author "tqsvg sample run" "$sample" out/sample.svg
"$tool" check out/sample.svg
echo
echo "Outputs: $(pwd)/out/sample.svg (the sample loaded and saved again)"
