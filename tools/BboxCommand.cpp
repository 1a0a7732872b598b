// tqsvg bbox: the estimated extent of a document's content, or the document refitted to it.
#include <memory>

#include "Tool.h"

namespace {

struct BboxOptions {
    std::string input;
    std::string output;
    bool fit = false;
    ReadingOptions reading;
};

// The extent of the content: the library's estimate under the subset (curves add nothing to it,
// deliberately), the segmented outlines, curves included, otherwise.
tq::svg::BoundingBox extentOf(const tq::svg::ItemInterface& root, const BboxOptions& o) {
    tq::svg::BoundingBox box;
    if (o.reading.subset) {
        tq::svg::ComputeEstimatedBoundingBox(root, box, nullptr, nullptr);
    } else {
        tq::svg::SegmenterVisitor segmenter(root);
        box = GeometryExtent(segmenter.getSegmentedPrimitives());
    }
    return box;
}

bool printBox(const tq::svg::ItemInterface& root, const BboxOptions& o, JobReport& report) {
    const tq::svg::BoundingBox box = extentOf(root, o);
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
    if (o.reading.subset) {
        document->computeEstimatedViewboxFromContent();
    } else {
        document->editViewbox() = extentOf(*document, o);
    }
    tq::svg::tqSvgDriver driver;
    return SaveDocument(driver, *document, o.output.empty() ? "-" : o.output,
                        tq::svg::SaveOptions(), report.err);
}

bool bboxOne(const BboxOptions& o, JobReport& report) {
    RootPointer root;
    if (!LoadDocument(o.input, o.reading, root, report.err)) {
        return false;
    }
    return o.fit ? writeFitted(*root, o, report) : printBox(*root, o, report);
}

}  // namespace

Command AddBboxCommand(CLI::App& app) {
    auto o = std::make_shared<BboxOptions>();
    CLI::App* bbox = app.add_subcommand(
        "bbox",
        "Print the bounding box of a document's content: x y width height, or \"empty\". "
        "Curves are measured on their segmented outlines (with --subset: the library's "
        "estimate, which leaves cubic curves out). Stroke widths are not included.");
    bbox->add_option("input", o->input, "SVG file, or - for standard input")->required();
    bbox->add_flag("--fit", o->fit, "Write the document with its viewBox set to that box instead");
    bbox->add_option("-o,--output", o->output, "output file for --fit (default: standard output)");
    AddReadingOptions(*bbox, o->reading);
    return {bbox,
            [o] { return RunSingle(o->input, [&](JobReport& r) { return bboxOne(*o, r); }); }};
}
