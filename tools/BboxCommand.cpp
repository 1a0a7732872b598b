// tqsvg bbox: the estimated extent of a document's content, or the document refitted to it.
#include <memory>

#include "Tool.h"

namespace {

struct BboxOptions {
    std::string input;
    std::string output;
    bool fit = false;
    bool ignoreUnsupported = false;
};

bool printBox(const tq::svg::ItemInterface& root, JobReport& report) {
    tq::svg::BoundingBox box;
    tq::svg::ComputeEstimatedBoundingBox(root, box, nullptr, nullptr);
    if (!box.isValid()) {
        report.out += "empty\n";
        return true;
    }
    std::string text;
    for (const float v : {box.min.X(), box.min.Y(), box.getWidth(), box.getHeight()}) {
        if (!text.empty()) {
            text += ' ';
        }
        tqStringUtils::appendFloat(text, v, -1, tqStringUtils::FloatFormat::Compact);
    }
    report.out += text + '\n';
    return true;
}

bool writeFitted(tq::svg::ItemInterface& root, const BboxOptions& o, JobReport& report) {
    auto* document = dynamic_cast<tq::svg::Document*>(&root);
    if (document == nullptr) {
        report.err += o.input + ": the root is not a document\n";
        return false;
    }
    document->computeEstimatedViewboxFromContent();
    tq::svg::tqSvgDriver driver;
    return SaveDocument(driver, *document, o.output.empty() ? "-" : o.output,
                        tq::svg::SaveOptions(), report.err);
}

bool bboxOne(const BboxOptions& o, JobReport& report) {
    RootPointer root;
    if (!LoadDocument(o.input, o.ignoreUnsupported, root, report.err)) {
        return false;
    }
    return o.fit ? writeFitted(*root, o, report) : printBox(*root, report);
}

}  // namespace

Command AddBboxCommand(CLI::App& app) {
    auto o = std::make_shared<BboxOptions>();
    CLI::App* bbox = app.add_subcommand(
        "bbox",
        "Print the estimated bounding box of a document's content: x y width height, or "
        "\"empty\". Stroke widths are not included.");
    bbox->add_option("input", o->input, "SVG file, or - for standard input")->required();
    bbox->add_flag("--fit", o->fit,
                   "Write the document with its viewBox set to the estimated box instead");
    bbox->add_option("-o,--output", o->output, "output file for --fit (default: standard output)");
    AddIgnoreUnsupportedFlag(*bbox, o->ignoreUnsupported);
    return {bbox,
            [o] { return RunSingle(o->input, [&](JobReport& r) { return bboxOne(*o, r); }); }};
}
