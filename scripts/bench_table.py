#!/usr/bin/env python3
"""bench_table.py OUTDIR: the table of scripts/bench.sh, from the results it left in OUTDIR."""
import json
import os
import platform
import statistics
import sys

out = sys.argv[1]


def load(name):
    path = os.path.join(out, name)
    if not os.path.exists(path):
        return None
    with open(path) as f:
        return json.load(f)


def runs(doc, prefix):
    """The iteration runs of a benchmark whose name starts with `prefix`, skipped ones left out."""
    if doc is None:
        return []
    return [b for b in doc["benchmarks"]
            if b["name"].startswith(prefix) and b.get("run_type") == "iteration"
            and not b.get("error_occurred")]


def aggregate(doc, prefix, kind):
    for b in (doc or {}).get("benchmarks", []):
        if b["name"].startswith(prefix) and b.get("aggregate_name") == kind:
            return b
    return None


def ms(b):
    unit = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[b["time_unit"]]
    return b["cpu_time"] * unit


rows = []


def row(what, ours, peer, ratio, goal, met):
    rows.append((what, ours, peer, ratio, goal, "yes" if met else "**no**"))


load_doc = load("bench_load.json")
resvg = load("resvg.json")
median = aggregate(load_doc, "Load/", "median")
slowest = max(runs(load_doc, "Load/"), key=ms, default=None)
if median and resvg:
    peer = statistics.median(resvg["times_ms"])
    worst = min(resvg["times_ms"]) / ms(slowest) if slowest else float("nan")
    row("load 50 MB document (subset)", f"{ms(median):.0f} ms", f"resvg-js parse {peer:.0f} ms",
        f"{peer / ms(median):.2f}x (worst pair {worst:.2f}x)", ">= 2x", worst >= 2)
floor = aggregate(load_doc, "BareSaxNumbers/", "median")
if median and floor:
    share = ms(floor) / ms(median)
    row("load beside its floor", f"{ms(median):.0f} ms",
        f"libxml2 SAX + from_chars {ms(floor):.0f} ms", f"{share:.0%} of floor speed", ">= 60%",
        share >= 0.6)
standard = aggregate(load_doc, "LoadStandard/", "median")
if median and standard:
    share = ms(median) / ms(standard)
    row("load, standard profile", f"{ms(standard):.0f} ms", f"subset {ms(median):.0f} ms",
        f"{share:.0%} of subset speed", ">= 90%", share >= 0.9)
tokenizer = aggregate(load_doc, "Tokenizer/", "median")
if tokenizer:
    rate = tokenizer["bytes_per_second"] / 1e6
    row("path tokenizer", f"{rate:.0f} MB/s", "", "", ">= 300 MB/s", rate >= 300)
icons, bare = aggregate(load_doc, "IconsLoad/", "median"), aggregate(load_doc, "IconsBareSax/", "median")
if icons and bare:
    ratio = ms(icons) / ms(bare)
    row("load mdi's 7,447 icons from memory", f"{ms(icons):.1f} ms",
        f"libxml2 SAX {ms(bare):.1f} ms", f"{ratio:.2f}x the SAX pass", "<= 2x", ratio <= 2)

save = load("bench_save.json")
for b in runs(save, "SaveToMemory"):
    rate = b["save MB/s"]
    row("save to memory", f"{rate:.0f} MB/s", f"memcpy of the bytes {b['peer MB/s']:.0f} MB/s",
        "", ">= 150 MB/s", rate >= 150)
for b in runs(save, "SaveToFile"):
    # The file's share of the save: opening, writing and closing it against fopen, one fwrite of
    # the same bytes and fclose.
    ratio = b["writes x fwrite"]
    row("save to a file", f"{ms(b):.0f} ms", "fopen, one fwrite of the bytes, fclose",
        f"writes {ratio:.2f}x fwrite", "<= 1.5x", ratio <= 1.5)

tri = load("bench_triangulate.json")
ours_runs = {b["name"].split("/min_time")[0].removeprefix("TriangulatePoly/"): b
             for b in runs(tri, "TriangulatePoly/")}
glu_runs = {b["name"].split("/min_time")[0].removeprefix("GluTess/"): b for b in runs(tri, "GluTess/")}
for name, b in ours_runs.items():
    glu = glu_runs.get(name)
    if glu is None:
        row(f"fill {name}", f"{ms(b):.2f} ms", "GLU not run (over 10 s)", "", ">= 1.5x", True)
        continue
    ratio = ms(glu) / ms(b)
    row(f"fill {name}", f"{ms(b):.2f} ms", f"GLU {ms(glu):.2f} ms", f"{ratio:.2f}x", ">= 1.5x",
        ratio >= 1.5)
    if name == "icon_outlines":
        per_vertex = 1e9 / b["items_per_second"]
        glu_per_vertex = 1e9 / glu["items_per_second"]
        row("fill icon outlines, per vertex", f"{per_vertex:.0f} ns", f"GLU {glu_per_vertex:.0f} ns",
            "", "< 150 ns", per_vertex < 150)

stroke = load("bench_stroke.json")
for name, what in (("lucide_icons", "stroke lucide's icons (round joins and caps)"),
                   ("random_walk_100k", "stroke a 100,000-segment random walk (miter joins)")):
    ours, clipper = aggregate(stroke, f"Stroke/{name}", "median"), aggregate(stroke, f"ClipperOffset/{name}", "median")
    if ours and clipper:
        ratio = ms(clipper) / ms(ours)
        row(what, f"{ms(ours):.0f} ms", f"ClipperOffset {ms(clipper):.0f} ms (outline only)",
            f"{ratio:.2f}x", ">= 1.5x", ratio >= 1.5)

# Ours beside the same benchmark built from the code before the speed work, both medians.
segment = aggregate(load("bench_segment.json"), "Pipeline/generated_10k_paths", "median")
before = aggregate(load("bench_segment_before.json"), "Pipeline/generated_10k_paths", "median")
if segment and before:
    ratio = ms(before) / ms(segment)
    row("load + segment 10k icon-like paths", f"{ms(segment):.0f} ms",
        f"before (4a0d232) {ms(before):.0f} ms", f"{ratio:.2f}x", ">= 2x", ratio >= 2)

render = load("render.json")
if render:
    ratio = render["peer_s"] / render["ours_s"]
    row(f"render mdi's {render['files']:,} icons at 256 px, 2 at once", f"{render['ours_s']:.1f} s",
        f"rsvg-convert {render['peer_s']:.1f} s", f"{ratio:.2f}x", ">= 1x", ratio >= 1)

cpu = "unknown CPU"
try:
    with open("/proc/cpuinfo") as f:
        cpu = next(line.split(":", 1)[1].strip() for line in f if line.startswith("model name"))
except (OSError, StopIteration):
    pass
print(f"Measured on {cpu}, {os.cpu_count()} cores, {platform.system()} {platform.release()}; "
      "CPU time per run, medians.\n")
print("| what | ours | peer | ratio | goal | met |")
print("|---|---|---|---|---|---|")
for r in rows:
    print("| " + " | ".join(r) + " |")
