// tqsvg bbox: the extent of documents' content, or the documents refitted to it.
#include <memory>

#include "Tool.h"

namespace {

struct BboxOptions {
    std::vector<std::string> inputs;
    std::string output;
    bool fit = false;
    ReadingOptions reading;
    BatchSettings batch;
};

// The extent of the content with its strokes: the library's estimate under the subset (curves
// add nothing to it, deliberately) with the strokes' extent, the drawn geometry otherwise.
tq::svg::BoundingBox extentOf(const tq::svg::ItemInterface& root, const BboxOptions& o) {
    if (!o.reading.subset) {
        return GeometryExtent(root);
    }
    tq::svg::BoundingBox box;
    tq::svg::ComputeEstimatedBoundingBox(root, box, nullptr, nullptr);
    const tq::svg::BoundingBox strokes = StrokeExtent(root);
    if (strokes.isValid()) {
        box.expandToContain(strokes.min);
        box.expandToContain(strokes.max);
    }
    return box;
}

// "x y width height", or "empty"; after the file's name when there are several.
void printBox(const tq::svg::ItemInterface& root, const std::string& label, const BboxOptions& o,
              JobReport& report) {
    const tq::svg::BoundingBox box = extentOf(root, o);
    std::string text = label.empty() ? "" : label + ": ";
    if (!box.isValid()) {
        report.out += text + "empty\n";
        return;
    }
    const float values[] = {box.min.X(), box.min.Y(), box.getWidth(), box.getHeight()};
    for (std::size_t i = 0; i < 4; ++i) {
        text += i ? " " : "";
        tqStringUtils::appendFloat(text, values[i], -1, tqStringUtils::FloatFormat::Compact);
    }
    report.out += text + '\n';
}

bool writeFitted(tq::svg::ItemInterface& root, const InputFile& input, const std::string& target,
                 const BboxOptions& o, bool several, JobReport& report) {
    auto* document = dynamic_cast<tq::svg::Document*>(&root);
    if (document == nullptr) {
        report.err += input.path + ": the root is not a document\n";
        return false;
    }
    document->editViewbox() = extentOf(*document, o);
    tq::svg::tqSvgDriver driver;
    return (!several || CreateParentDirectory(target, report.err)) &&
           SaveDocument(driver, *document, target.empty() ? "-" : target, tq::svg::SaveOptions(),
                        report.err);
}

bool bboxOne(const InputFile& input, const std::string& target, const BboxOptions& o, bool several,
             JobReport& report) {
    RootPointer root;
    if (ReportUnreadable(input, report) || !LoadDocument(input.path, o.reading, root, report.err)) {
        return false;
    }
    if (o.fit) {
        return writeFitted(*root, input, target, o, several, report);
    }
    printBox(*root, several ? input.path : std::string(), o, report);
    return true;
}

int runBbox(const BboxOptions& o) {
    const std::vector<InputFile> inputs = CollectSvgFiles(o.inputs);
    const bool several = !IsSingleFile(o.inputs);
    std::vector<std::string> targets(inputs.size());
    if (o.fit && !PlanOutputs("bbox", o.inputs, inputs, o.output, ".svg", targets)) {
        return kExitUsage;
    }
    const std::size_t failed =
        RunBatch(LabelsOf(inputs), o.batch, [&](std::size_t i, JobReport& report) {
            return bboxOne(inputs[i], targets[i], o, several, report);
        });
    return failed == 0 ? kExitSuccess : kExitFailure;
}

}  // namespace

Command AddBboxCommand(CLI::App& app) {
    auto o = std::make_shared<BboxOptions>();
    CLI::App* bbox = app.add_subcommand(
        "bbox",
        "Print the bounding box of documents' content: x y width height, or \"empty\" (after "
        "the file's name when there are several). Curves are measured on their segmented "
        "outlines (with --subset: the library's estimate, which leaves cubic curves out), "
        "strokes on the library's stroke triangles, with their widths, joins and caps.");
    bbox->add_option("inputs", o->inputs, "SVG files, directories, or - for standard input")
        ->required();
    bbox->add_flag("--fit", o->fit,
                   "Write the documents with their viewBox set to that box instead");
    bbox->add_option("-o,--output", o->output,
                     "output file for --fit (default: standard output); a directory for several "
                     "inputs");
    AddReadingOptions(*bbox, o->reading);
    AddBatchOptions(*bbox, o->batch);
    return {bbox, [o] { return runBbox(*o); }};
}
