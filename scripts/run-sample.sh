#!/usr/bin/env bash
# Sets up a fresh machine, builds the tqsvg tool and runs it on the bundled sample: checks,
# converts, meshes and renders it; the outputs go under out/.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh

build=build/release
cmake --preset release >/dev/null
cmake --build --preset release --target tqsvg -j "$(nproc 2>/dev/null || echo 2)"

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
echo "== tqsvg mesh $sample -o out/sample-mesh.json"
"$tool" mesh "$sample" -o out/sample-mesh.json
"$tool" mesh --stats "$sample"
echo "== tqsvg render $sample -o out/sample.png"
"$tool" render "$sample" -o out/sample.png --size 800 --background white
"$tool" render "$sample" -o out/sample-wireframe.png --size 800 --background white --wireframe
echo "== tqsvg bbox $sample"
"$tool" bbox "$sample"
echo
echo "Outputs in $(pwd)/out:"
echo "  sample.svg             the sample loaded and saved again"
echo "  sample-mesh.json       its outlines, triangles and colours"
echo "  sample.png             the triangles and outlines drawn"
echo "  sample-wireframe.png   the same with every triangle's edges"
