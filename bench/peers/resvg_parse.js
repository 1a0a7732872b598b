// node resvg_parse.js MODULE_DIR FILE [RUNS]: times resvg's parse of FILE (the Resvg constructor,
// which reads the SVG into its tree; nothing is rendered) RUNS times and prints the times in
// milliseconds as JSON.
const { Resvg } = require(process.argv[2]);
const fs = require('fs');

const svg = fs.readFileSync(process.argv[3]);
const runs = Number(process.argv[4] || 5);
const times = [];
for (let i = 0; i < runs; ++i) {
    const start = process.hrtime.bigint();
    const tree = new Resvg(svg);
    times.push(Number(process.hrtime.bigint() - start) / 1e6);
    if (tree.width <= 0) {
        throw new Error('resvg read an empty picture');
    }
}
console.log(JSON.stringify({ bytes: svg.length, times_ms: times }));
