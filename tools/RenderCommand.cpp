// tqsvg render: segments documents and draws them into PNG pictures.
#include <filesystem>
#include <iostream>
#include <memory>
#include <set>

#include "PngRender.h"
#include "Tool.h"

namespace fs = std::filesystem;

namespace {

struct RenderOptions {
    std::vector<std::string> inputs;
    std::string output;
    std::string background;
    ReadingOptions reading;
    RenderSettings settings;
    BatchSettings batch;
};

// "none" is transparent, as in SVG; otherwise the colour text as a fill would take it.
bool parseBackground(const std::string& text, Wm4::ColorRGBA& colour) {
    if (text.empty() || text == "none") {
        colour = Wm4::ColorRGBA(0.0f, 0.0f, 0.0f, 0.0f);
        return true;
    }
    Wm4::Vector4<unsigned char> bytes;
    if (!tq::svg::ParseSvgColor(text, bytes)) {
        return false;
    }
    colour =
        Wm4::ColorRGBA(bytes[0] / 255.0f, bytes[1] / 255.0f, bytes[2] / 255.0f, bytes[3] / 255.0f);
    return true;
}

// Folders are created only for several pictures: a single output names a place that exists.
bool renderOne(const std::string& input, const std::string& target, const RenderOptions& o,
               bool createFolders, JobReport& report) {
    RootPointer root;  // loaded through a driver of the job's own
    if (!LoadDocument(input, o.reading, root, report.err)) {
        return false;
    }
    if (createFolders && !CreateParentDirectory(target, report.err)) {
        return false;
    }
    RenderSettings settings = o.settings;
    settings.extentsFromGeometry = !o.reading.subset;
    const RenderOutcome outcome = RenderPng(*root, settings, target);
    if (outcome.segmentationError) {
        report.err += input +
                      ": warning: a filled shape could not be triangulated; it is drawn as an "
                      "outline and the shapes after it are missing\n";
    }
    if (!outcome.written) {
        report.err += target + ": " + outcome.error + '\n';
    }
    return outcome.written;
}

int runRender(RenderOptions& o) {
    if (!parseBackground(o.background, o.settings.background)) {
        std::cerr << "tqsvg render: --background: not a colour: " << o.background << '\n';
        return kExitUsage;
    }
    const std::vector<InputFile> inputs = CollectSvgFiles(o.inputs);
    std::vector<std::string> targets;
    if (!PlanOutputs("render", o.inputs, inputs, o.output, ".png", targets)) {
        return kExitUsage;
    }
    const bool createFolders = !IsSingleFile(o.inputs);
    const std::size_t failed =
        RunBatch(LabelsOf(inputs), o.batch, [&](std::size_t i, JobReport& report) {
            return !ReportUnreadable(inputs[i], report) &&
                   renderOne(inputs[i].path, targets[i], o, createFolders, report);
        });
    return failed == 0 ? kExitSuccess : kExitFailure;
}

}  // namespace

Command AddRenderCommand(CLI::App& app) {
    auto o = std::make_shared<RenderOptions>();
    CLI::App* render = app.add_subcommand(
        "render",
        "Segment documents and draw them as PNG pictures from the library's triangles alone, "
        "each shape's fill and then its stroke, the viewBox (else the content's extent) fitted "
        "into the "
        "picture. Several inputs or a directory draw into the directory given as --output, "
        "each picture at the input's relative path with the extension .png. A shape that "
        "could not be filled is a warning, not a failure.");
    render->add_option("inputs", o->inputs, "SVG files, directories, or - for standard input")
        ->required();
    render
        ->add_option("-o,--output", o->output,
                     "PNG file or - for standard output; a directory for several pictures")
        ->required();
    render
        ->add_option("--size", o->settings.size,
                     "Larger side of the picture in pixels (default 512)")
        ->check(CLI::Range(1, 8192));
    render->add_flag("--wireframe", o->settings.wireframe,
                     "Outline every fill and stroke triangle in a thin contrasting line");
    render->add_option("--background", o->background,
                       "Background colour as SVG writes it (#rrggbb, rgb(), a name); default "
                       "transparent");
    AddReadingOptions(*render, o->reading);
    AddBatchOptions(*render, o->batch);
    return {render, [o] { return runRender(*o); }};
}
