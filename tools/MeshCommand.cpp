// tqsvg mesh: the segmented geometry of a document as JSON, or its counts and timings.
#include <chrono>
#include <memory>

#include "MeshJson.h"
#include "Tool.h"

namespace {

struct MeshOptions {
    std::string input;
    std::string output;
    bool stats = false;
    float tolerance = 0.0f;
    ReadingOptions reading;
};

double millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

std::string statsText(const tq::svg::SegmenterVisitor::PrimitiveList& primitives, double loadMs,
                      double segmentMs) {
    std::size_t points = 0, segments = 0, triangles = 0;
    for (const auto& primitive : primitives) {
        points += primitive->points.size();
        segments += primitive->indices.size() / 2;
        triangles += primitive->triangleIndices.size() / 3;
    }
    return "primitives: " + std::to_string(primitives.size()) +
           "\noutline points: " + std::to_string(points) +
           "\nsegments: " + std::to_string(segments) + "\ntriangles: " + std::to_string(triangles) +
           "\nload: " + std::to_string(loadMs) + " ms\nsegment: " + std::to_string(segmentMs) +
           " ms\n";
}

bool meshOne(const MeshOptions& o, JobReport& report) {
    const auto loadStart = std::chrono::steady_clock::now();
    RootPointer root;
    if (!LoadDocument(o.input, o.reading, root, report.err)) {
        return false;
    }
    const double loadMs = millisecondsSince(loadStart);
    const auto* node = dynamic_cast<const tq::svg::Node*>(root.get());
    if (node == nullptr) {
        report.err += o.input + ": the root is not a group\n";
        return false;
    }
    const auto segmentStart = std::chrono::steady_clock::now();
    tq::svg::SegmenterVisitor visitor(*node, o.tolerance);
    const double segmentMs = millisecondsSince(segmentStart);
    if (visitor.hasError()) {
        report.err += o.input +
                      ": a filled shape could not be triangulated; it and the shapes after it "
                      "are not filled\n";
    }
    std::string text;
    if (o.stats) {
        text = statsText(visitor.getSegmentedPrimitives(), loadMs, segmentMs);
    } else {
        AppendMeshJson(text, visitor.getSegmentedPrimitives(), visitor.hasError());
    }
    return WriteText(o.output, std::move(text), report) && !visitor.hasError();
}

}  // namespace

Command AddMeshCommand(CLI::App& app) {
    auto o = std::make_shared<MeshOptions>();
    CLI::App* mesh = app.add_subcommand(
        "mesh",
        "Segment a document into outlines and fill triangles, written as JSON: per shape its "
        "fill and stroke colours, stroke width, outline points and segments, triangle points "
        "and triangles. Exit 1 when a filled shape could not be triangulated.");
    mesh->add_option("input", o->input, "SVG file, or - for standard input")->required();
    mesh->add_option("-o,--output", o->output, "output file (default: standard output)");
    mesh->add_flag("--stats", o->stats, "Print counts and timings instead of the mesh");
    mesh->add_option("--tolerance", o->tolerance,
                     "Flatten curves, arcs and circles within this distance in document units "
                     "(default: the library's fixed point counts)")
        ->check(CLI::NonNegativeNumber);
    AddReadingOptions(*mesh, o->reading);
    return {mesh,
            [o] { return RunSingle(o->input, [&](JobReport& r) { return meshOne(*o, r); }); }};
}
