// tqsvg: the library's command-line tool.
//
// Exit codes: 0 success, 1 when a file failed to load or save, 2 on a usage error.
#include <CLI/CLI.hpp>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "MeshJson.h"
#include "StdioDevice.h"
#include "svg/io/tqSvgDriver.h"
#include "svg/tqSvg.h"

namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

struct Library {
    Library() { tq::svg::initializeTqSvg(); }
    ~Library() { tq::svg::terminateTqSvg(); }
};

void printMessages(const std::string& file, const std::list<std::string>& messages) {
    for (const std::string& message : messages) {
        std::cerr << file << ": " << message << '\n';
    }
}

// Loads a file, or standard input for "-"; prints the messages prefixed with the file name.
bool load(const std::string& file, const tq::svg::LoadOptions& options,
          tq::svg::ItemInterfacePointer<tq::svg::ItemInterface>& out, std::size_t* messageCount) {
    std::list<std::string> messages;
    bool ok;
    if (file == "-") {
        StdioDevice in(stdin);
        ok = tq::svg::tqSvgIOManager::get().loadSvg(out, in, "svg", nullptr, &options, &messages);
    } else {
        ok = tq::svg::tqSvgIOManager::get().loadSvg(out, file, nullptr, &options, &messages);
        if (!ok && messages.empty()) {
            messages.push_back("not an .svg file");
        }
    }
    printMessages(file, messages);
    if (messageCount != nullptr) {
        *messageCount = messages.size();
    }
    return ok;
}

int runCheck(const std::vector<std::string>& files, bool ignoreUnsupported) {
    tq::svg::LoadOptions options;
    options.ignoreUnsupported = ignoreUnsupported;
    std::size_t loaded = 0;
    std::size_t failed = 0;
    std::size_t warnings = 0;
    for (const std::string& file : files) {
        tq::svg::ItemInterfacePointer<tq::svg::ItemInterface> root;
        std::size_t messages = 0;
        if (load(file, options, root, &messages)) {
            ++loaded;
            warnings += messages;
        } else {
            ++failed;
        }
    }
    std::cout << loaded << " loaded, " << failed << " failed, " << warnings << " warnings\n";
    return failed == 0 ? 0 : kExitFailure;
}

struct ConvertOptions {
    std::string input;
    std::string output;
    bool indent = false;
    int precision = -1;
    std::string author;
    bool noHeader = false;
    bool ignoreUnsupported = false;
};

int runConvert(const ConvertOptions& o) {
    tq::svg::LoadOptions loadOptions;
    loadOptions.ignoreUnsupported = o.ignoreUnsupported;
    tq::svg::ItemInterfacePointer<tq::svg::ItemInterface> root;
    if (!load(o.input, loadOptions, root, nullptr)) {
        return kExitFailure;
    }
    if (!root) {
        std::cerr << o.input << ": the document holds no element\n";
        return kExitFailure;
    }
    tq::svg::SaveOptions saveOptions;
    saveOptions.indent = o.indent;
    saveOptions.floatPrecision = o.precision;
    saveOptions.author = o.author;
    saveOptions.writeHeader = !o.noHeader;
    std::list<std::string> messages;
    bool ok;
    if (o.output == "-") {
        StdioDevice out(stdout);
        ok = tq::svg::tqSvgIOManager::get().saveSvg(*root, out, "svg", nullptr, &saveOptions,
                                                    &messages);
        ok = out.flush() && ok;
    } else {
        // Saved through the file name: any extension is accepted, the content is SVG.
        tq::svg::tqSvgDriver driver;
        ok = driver.saveSvg(*root, o.output, nullptr, saveOptions);
        driver.getLastErrorsAndWarnings(messages, true);
    }
    printMessages(o.output, messages);
    if (!ok && messages.empty()) {
        std::cerr << o.output << ": the document could not be written\n";
    }
    return ok ? 0 : kExitFailure;
}

// Writes `text` to a file, or standard output for "-" or an empty name.
bool writeText(const std::string& file, const std::string& text) {
    if (file.empty() || file == "-") {
        std::cout << text;
        std::cout.flush();
        return bool(std::cout);
    }
    std::ofstream out(file, std::ios::binary);
    out << text;
    out.close();
    if (!out) {
        std::cerr << file << ": could not be written\n";
        return false;
    }
    return true;
}

double millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

// Loads a file that must hold a document; messages and failures are printed.
bool loadDocument(const std::string& file, bool ignoreUnsupported,
                  tq::svg::ItemInterfacePointer<tq::svg::ItemInterface>& root) {
    tq::svg::LoadOptions options;
    options.ignoreUnsupported = ignoreUnsupported;
    if (!load(file, options, root, nullptr)) {
        return false;
    }
    if (!root) {
        std::cerr << file << ": the document holds no element\n";
        return false;
    }
    return true;
}

struct MeshOptions {
    std::string input;
    std::string output;
    bool stats = false;
    bool ignoreUnsupported = false;
};

int runMesh(const MeshOptions& o) {
    const auto loadStart = std::chrono::steady_clock::now();
    tq::svg::ItemInterfacePointer<tq::svg::ItemInterface> root;
    if (!loadDocument(o.input, o.ignoreUnsupported, root)) {
        return kExitFailure;
    }
    const double loadMs = millisecondsSince(loadStart);
    const auto* node = dynamic_cast<const tq::svg::Node*>(root.get());
    if (node == nullptr) {
        std::cerr << o.input << ": the root is not a group\n";
        return kExitFailure;
    }
    const auto segmentStart = std::chrono::steady_clock::now();
    tq::svg::SegmenterVisitor visitor(*node);
    const double segmentMs = millisecondsSince(segmentStart);
    if (visitor.hasError()) {
        std::cerr << o.input
                  << ": a filled shape could not be triangulated; it and the shapes after it "
                     "are not filled\n";
    }
    std::string text;
    if (o.stats) {
        std::size_t points = 0, segments = 0, triangles = 0;
        for (const auto& primitive : visitor.getSegmentedPrimitives()) {
            points += primitive->points.size();
            segments += primitive->indices.size() / 2;
            triangles += primitive->triangleIndices.size() / 3;
        }
        text = "primitives: " + std::to_string(visitor.getSegmentedPrimitives().size()) +
               "\noutline points: " + std::to_string(points) +
               "\nsegments: " + std::to_string(segments) +
               "\ntriangles: " + std::to_string(triangles) + "\nload: " + std::to_string(loadMs) +
               " ms\nsegment: " + std::to_string(segmentMs) + " ms\n";
    } else {
        AppendMeshJson(text, visitor.getSegmentedPrimitives(), visitor.hasError());
    }
    if (!writeText(o.output, text)) {
        return kExitFailure;
    }
    return visitor.hasError() ? kExitFailure : 0;
}

struct BboxOptions {
    std::string input;
    std::string output;
    bool fit = false;
    bool ignoreUnsupported = false;
};

int runBbox(const BboxOptions& o) {
    tq::svg::ItemInterfacePointer<tq::svg::ItemInterface> root;
    if (!loadDocument(o.input, o.ignoreUnsupported, root)) {
        return kExitFailure;
    }
    if (!o.fit) {
        tq::svg::BoundingBox box;
        tq::svg::ComputeEstimatedBoundingBox(*root, box, nullptr, nullptr);
        if (!box.isValid()) {
            std::cout << "empty\n";
            return 0;
        }
        std::string text;
        for (const float v : {box.min.X(), box.min.Y(), box.getWidth(), box.getHeight()}) {
            if (!text.empty()) {
                text += ' ';
            }
            tqStringUtils::appendFloat(text, v, -1, tqStringUtils::FloatFormat::Compact);
        }
        std::cout << text << '\n';
        return 0;
    }
    auto* document = dynamic_cast<tq::svg::Document*>(root.get());
    if (document == nullptr) {
        std::cerr << o.input << ": the root is not a document\n";
        return kExitFailure;
    }
    document->computeEstimatedViewboxFromContent();
    tq::svg::SaveOptions saveOptions;
    std::list<std::string> messages;
    bool ok;
    const std::string target = o.output.empty() ? "-" : o.output;
    if (target == "-") {
        StdioDevice out(stdout);
        ok = tq::svg::tqSvgIOManager::get().saveSvg(*root, out, "svg", nullptr, &saveOptions,
                                                    &messages);
        ok = out.flush() && ok;
    } else {
        tq::svg::tqSvgDriver driver;
        ok = driver.saveSvg(*root, target, nullptr, saveOptions);
        driver.getLastErrorsAndWarnings(messages, true);
    }
    printMessages(target, messages);
    if (!ok && messages.empty()) {
        std::cerr << target << ": the document could not be written\n";
    }
    return ok ? 0 : kExitFailure;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Load, save and segment SVG documents with the tqSvg library.", "tqsvg"};
    app.set_version_flag(
        "-V,--version",
        std::string("tqsvg ") + tqSvg::Version::GetDescStringMajorMinorReleaseRevisionDate());
    app.require_subcommand(0, 1);

    std::vector<std::string> checkFiles;
    bool checkIgnore = false;
    CLI::App* check = app.add_subcommand("check", "Load SVG files and print their messages");
    check->add_option("files", checkFiles, "SVG files, or - for standard input")->required();
    check->add_flag("--ignore-unsupported", checkIgnore,
                    "Skip unsupported elements and attributes with a warning instead of failing");

    ConvertOptions convertOptions;
    CLI::App* convert = app.add_subcommand("convert", "Load an SVG file and save it again");
    convert->add_option("input", convertOptions.input, "SVG file, or - for standard input")
        ->required();
    convert->add_option("output", convertOptions.output, "output file, or - for standard output")
        ->required();
    convert->add_flag("--indent", convertOptions.indent, "Indent the XML and space out path data");
    convert
        ->add_option("--precision", convertOptions.precision,
                     "Significant digits of numbers (1-8); default: shortest exact")
        ->check(CLI::Range(-1, 9));
    convert->add_option("--author", convertOptions.author, "Write an \"Author : \" comment");
    convert->add_flag("--no-header", convertOptions.noHeader,
                      "Leave out the exporter and date comments");
    convert->add_flag("--ignore-unsupported", convertOptions.ignoreUnsupported,
                      "Skip unsupported elements and attributes with a warning instead of failing");

    MeshOptions meshOptions;
    CLI::App* mesh = app.add_subcommand(
        "mesh", "Segment a document into outlines and fill triangles, written as JSON");
    mesh->add_option("input", meshOptions.input, "SVG file, or - for standard input")->required();
    mesh->add_option("-o,--output", meshOptions.output, "output file (default: standard output)");
    mesh->add_flag("--stats", meshOptions.stats, "Print counts and timings instead of the mesh");
    mesh->add_flag("--ignore-unsupported", meshOptions.ignoreUnsupported,
                   "Skip unsupported elements and attributes with a warning instead of failing");

    BboxOptions bboxOptions;
    CLI::App* bbox = app.add_subcommand(
        "bbox", "Print the estimated bounding box of a document's content: x y width height");
    bbox->add_option("input", bboxOptions.input, "SVG file, or - for standard input")->required();
    bbox->add_flag("--fit", bboxOptions.fit,
                   "Write the document with its viewBox set to the estimated box instead");
    bbox->add_option("-o,--output", bboxOptions.output,
                     "output file for --fit (default: standard output)");
    bbox->add_flag("--ignore-unsupported", bboxOptions.ignoreUnsupported,
                   "Skip unsupported elements and attributes with a warning instead of failing");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return kExitUsage;
    }

    Library library;
    if (check->parsed()) {
        return runCheck(checkFiles, checkIgnore);
    }
    if (convert->parsed()) {
        return runConvert(convertOptions);
    }
    if (mesh->parsed()) {
        return runMesh(meshOptions);
    }
    if (bbox->parsed()) {
        return runBbox(bboxOptions);
    }
    std::cout << app.help();
    return 0;
}
