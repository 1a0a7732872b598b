// tqsvg mesh: the segmented geometry of documents as JSON, or their counts and timings.
#include <chrono>
#include <memory>

#include "MeshJson.h"
#include "Tool.h"

namespace {

struct MeshOptions {
    std::vector<std::string> inputs;
    std::string output;
    bool stats = false;
    float tolerance = 0.0f;
    ReadingOptions reading;
    BatchSettings batch;
};

double millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

std::string statsText(const tq::svg::SegmenterVisitor::PrimitiveList& primitives, double loadMs,
                      double segmentMs) {
    std::size_t points = 0, segments = 0, triangles = 0, strokeTriangles = 0;
    for (const auto& primitive : primitives) {
        points += primitive->points.size();
        segments += primitive->indices.size() / 2;
        triangles += primitive->triangleIndices.size() / 3;
        strokeTriangles += primitive->strokeTriangleIndices.size() / 3;
    }
    return "primitives: " + std::to_string(primitives.size()) +
           "\noutline points: " + std::to_string(points) +
           "\nsegments: " + std::to_string(segments) + "\ntriangles: " + std::to_string(triangles) +
           "\nstroke triangles: " + std::to_string(strokeTriangles) +
           "\nload: " + std::to_string(loadMs) + " ms\nsegment: " + std::to_string(segmentMs) +
           " ms\n";
}

// Statistics of several files are told apart by a line naming each.
bool meshOne(const InputFile& input, const std::string& target, const MeshOptions& o, bool several,
             JobReport& report) {
    if (ReportUnreadable(input, report)) {
        return false;
    }
    const auto loadStart = std::chrono::steady_clock::now();
    RootPointer root;
    if (!LoadDocument(input.path, o.reading, root, report.err)) {
        return false;
    }
    const double loadMs = millisecondsSince(loadStart);
    const auto segmentStart = std::chrono::steady_clock::now();
    tq::svg::SegmentOptions options;
    options.tolerance = o.tolerance;
    options.strokes = true;
    tq::svg::SegmenterVisitor visitor(*root, options);
    const double segmentMs = millisecondsSince(segmentStart);
    if (visitor.hasError()) {
        report.err += input.path +
                      ": a filled shape could not be triangulated; it and the shapes after it "
                      "are not filled\n";
    }
    std::string text;
    if (o.stats) {
        text = (several ? input.path + ":\n" : "") +
               statsText(visitor.getSegmentedPrimitives(), loadMs, segmentMs);
    } else {
        AppendMeshJson(text, visitor.getSegmentedPrimitives(), visitor.hasError());
    }
    return (!several || o.stats || CreateParentDirectory(target, report.err)) &&
           WriteText(target, std::move(text), report) && !visitor.hasError();
}

int runMesh(const MeshOptions& o) {
    const std::vector<InputFile> inputs = CollectSvgFiles(o.inputs);
    const bool several = !IsSingleFile(o.inputs);
    std::vector<std::string> targets(inputs.size());
    if (!o.stats && !PlanOutputs("mesh", o.inputs, inputs, o.output, ".json", targets)) {
        return kExitUsage;
    }
    const std::size_t failed =
        RunBatch(LabelsOf(inputs), o.batch, [&](std::size_t i, JobReport& report) {
            return meshOne(inputs[i], o.stats ? std::string() : targets[i], o, several, report);
        });
    return failed == 0 ? kExitSuccess : kExitFailure;
}

}  // namespace

Command AddMeshCommand(CLI::App& app) {
    auto o = std::make_shared<MeshOptions>();
    CLI::App* mesh = app.add_subcommand(
        "mesh",
        "Segment documents into outlines, fill triangles and stroke triangles, written as "
        "JSON: per shape its fill and stroke colours, stroke width, outline points and "
        "segments, triangle points and triangles, stroke triangle points and stroke "
        "triangles. Several inputs or a directory write into the directory given as "
        "--output, each at the input's relative path with the extension .json. Exit 1 when a "
        "filled shape could not be triangulated.");
    mesh->add_option("inputs", o->inputs, "SVG files, directories, or - for standard input")
        ->required();
    mesh->add_option("-o,--output", o->output,
                     "output file (default: standard output); a directory for several inputs");
    mesh->add_flag("--stats", o->stats, "Print counts and timings instead of the mesh");
    mesh->add_option("--tolerance", o->tolerance,
                     "Flatten curves, arcs, circles and round joins and caps within this "
                     "distance in document units (default: the library's fixed point counts for "
                     "fills, and for a stroke the smaller of 0.1 and a twentieth of its width)")
        ->check(CLI::NonNegativeNumber);
    AddReadingOptions(*mesh, o->reading);
    AddBatchOptions(*mesh, o->batch);
    return {mesh, [o] { return runMesh(*o); }};
}
