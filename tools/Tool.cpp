#include "Tool.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <thread>

#include <tqSystem/tqDirUtils.h>

#include "OutputFile.h"
#include "StdinDevice.h"

Library::Library() {
    tqLog::setInstance(&mLog);
}

Library::~Library() {
    tqLog::setInstance(nullptr);
}

void AppendMessages(std::string& to, const std::string& file,
                    const std::list<std::string>& messages) {
    for (const std::string& message : messages) {
        to += file + ": " + message + '\n';
    }
}

namespace {

// Why a file that failed to load could not be read, in the tool's words, when the library's
// messages do not say: the system's reason; empty when there is none to add (an empty file the
// library calls empty itself).
std::string unreadReason(const std::string& file) {
    std::error_code error;
    if (std::filesystem::status(file, error).type() == std::filesystem::file_type::not_found ||
        error) {
        return "the file could not be opened: " + error.message();
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        return std::string("the file could not be opened: ") + std::strerror(errno);
    }
    return {};
}

std::string notSvgReason(const std::string& file) {
    std::string reason = unreadReason(file);
    if (!reason.empty()) {
        return reason;
    }
    const std::string extension = tqDirUtils::ExtractFileExtension(file, false, false);
    return (extension.empty() ? std::string("no driver reads a file without an extension")
                              : "no driver reads the extension \"" + extension + "\"") +
           ": name it *.svg (or *.svgz when compressed), or give it on standard input as -";
}

}  // namespace

bool LoadFile(tq::svg::tqSvgDriver& driver, const std::string& file,
              const tq::svg::LoadOptions& options, RootPointer& root,
              std::list<std::string>& messages) {
    bool ok;
    if (file == "-") {
        StdinDevice in;
        ok = driver.loadSvg(root, in, "svg", nullptr, options);
    } else if (const std::string extension = tqDirUtils::ExtractFileExtension(file, true, true);
               extension != "svgz" && driver.canLoad({nullptr, extension}, options) ==
                                          tq::svg::tqSvgDriver::CannotHandle) {
        messages = {"not an .svg file", notSvgReason(file)};
        return false;
    } else {
        ok = driver.loadSvg(root, file, nullptr, options);
    }
    driver.getLastErrorsAndWarnings(messages, true);
    // A document without a root draws nothing: every command refuses it alike.
    if (ok && !root) {
        messages.push_back("the document holds no element");
        ok = false;
    }
    if (!ok && file != "-") {
        if (std::string reason = unreadReason(file); !reason.empty()) {
            messages.push_back(std::move(reason));
        }
    }
    return ok;
}

bool LoadDocument(const std::string& file, const ReadingOptions& reading, RootPointer& root,
                  std::string& err) {
    const tq::svg::LoadOptions options = reading.loadOptions();
    tq::svg::tqSvgDriver driver;
    std::list<std::string> messages;
    const bool ok = LoadFile(driver, file, options, root, messages);
    AppendMessages(err, file, messages);
    return ok;
}

bool SaveDocument(tq::svg::tqSvgDriver& driver, const tq::svg::ItemInterface& item,
                  const std::string& target, const tq::svg::SaveOptions& options,
                  std::string& err) {
    // Any extension is accepted: the content is SVG.
    OutputFile out(target);
    const bool saved = out.isOpen() && driver.saveSvg(item, out, "svg", nullptr, options);
    std::list<std::string> messages;
    driver.getLastErrorsAndWarnings(messages, true);
    AppendMessages(err, target, messages);
    // The save itself does not look at what the device refused; the device does.
    if (!out.commit()) {
        err += target + ": " + out.error() + '\n';
        return false;
    }
    if (!saved) {
        err += target + ": the document could not be written\n";
    }
    return saved;
}

bool CreateParentDirectory(const std::string& file, std::string& err) {
    const std::filesystem::path parent = std::filesystem::path(file).parent_path();
    std::error_code error;
    if (parent.empty() || std::filesystem::is_directory(parent, error)) {
        return true;
    }
    std::filesystem::create_directories(parent, error);
    if (error) {
        err += parent.string() + ": the directory could not be created: " + error.message() + '\n';
        return false;
    }
    return true;
}

bool WriteText(const std::string& file, std::string&& text, JobReport& report) {
    if (file.empty() || file == "-") {
        report.out += std::move(text);
        return true;
    }
    OutputFile out(file);
    out.write(text.data(), static_cast<int64>(text.size()));
    if (!out.commit()) {
        report.err += file + ": " + out.error() + '\n';
        return false;
    }
    return true;
}

int RunSingle(const std::string& label, const std::function<bool(JobReport&)>& work) {
    const std::size_t failed = RunBatch(
        {label}, BatchSettings(), [&](std::size_t, JobReport& report) { return work(report); });
    return failed == 0 ? kExitSuccess : kExitFailure;
}

bool IsSingleFile(const std::vector<std::string>& arguments) {
    return arguments.size() == 1 && (arguments[0] == "-" || !IsDirectory(arguments[0]));
}

bool PlanOutputs(const std::string& command, const std::vector<std::string>& arguments,
                 const std::vector<InputFile>& inputs, const std::string& output,
                 const std::string& extension, std::vector<std::string>& targets) {
    namespace fs = std::filesystem;
    const auto named = [&](const std::string& relative) {
        return fs::path(relative).replace_extension(extension).string();
    };
    targets.clear();
    if (IsSingleFile(arguments)) {
        const bool intoFolder = output != "-" && IsDirectory(output) && arguments[0] != "-";
        targets.push_back(intoFolder ? (fs::path(output) / named(inputs[0].relative)).string()
                                     : output);
        return true;
    }
    std::set<std::string> seen;
    for (const InputFile& input : inputs) {
        if (input.path == "-" || output.empty() || output == "-") {
            std::cerr << "tqsvg " << command
                      << ": several inputs need a directory as --output, and named input files\n";
            return false;
        }
        targets.push_back((fs::path(output) / named(input.relative)).string());
        if (input.error.empty() && !seen.insert(targets.back()).second) {
            std::cerr << "tqsvg " << command << ": two inputs would both be written to "
                      << targets.back() << '\n';
            return false;
        }
    }
    return true;
}

std::string ReadableWithoutSubset(const std::vector<std::string>& failedFiles,
                                  const ReadingOptions& reading) {
    if (!reading.subset || failedFiles.empty()) {
        return {};
    }
    ReadingOptions standard = reading;
    standard.subset = false;
    std::size_t readable = 0;
    for (const std::string& file : failedFiles) {
        RootPointer root;
        std::string ignored;
        readable += LoadDocument(file, standard, root, ignored) ? 1 : 0;
    }
    return readable == 0 ? std::string()
                         : "; " + std::to_string(readable) + " of them load without --subset";
}

std::vector<std::string> LabelsOf(const std::vector<InputFile>& inputs) {
    std::vector<std::string> labels;
    labels.reserve(inputs.size());
    for (const InputFile& input : inputs) {
        labels.push_back(input.path);
    }
    return labels;
}

bool ReportUnreadable(const InputFile& input, JobReport& report) {
    if (input.error.empty()) {
        return false;
    }
    report.err += input.path + ": the directory could not be read: " + input.error + '\n';
    return true;
}

namespace {

// The outline points, and with `strokes` the stroke triangles' points too.
tq::svg::BoundingBox drawnBox(const tq::svg::ItemInterface& root, float tolerance, bool strokes) {
    tq::svg::SegmentOptions options;
    options.tolerance = tolerance;
    options.strokes = strokes;
    tq::svg::SegmenterVisitor segmenter(root, options);
    tq::svg::BoundingBox box;
    const auto add = [&box](const std::vector<Wm4::Vector2f>& points) {
        for (const Wm4::Vector2f& point : points) {
            if (std::isfinite(point.X()) && std::isfinite(point.Y())) {
                box.expandToContain(point);
            }
        }
    };
    for (const auto& primitive : segmenter.getSegmentedPrimitives()) {
        add(primitive->points);
        add(primitive->strokeTrianglePoints);
    }
    return box;
}

}  // namespace

// Outline points lie on the curves, so the box can only fall short of a curve's extreme, by
// less than the flattening tolerance: a first rough pass gives the size that tolerance is taken
// from. Strokes come within the same tolerance.
tq::svg::BoundingBox GeometryExtent(const tq::svg::ItemInterface& root) {
    const tq::svg::BoundingBox rough = drawnBox(root, 0.0f, false);
    const float size = std::max(rough.getWidth(), rough.getHeight());
    if (!rough.isValid() || !std::isfinite(size) || !(size > 0.0f)) {
        return drawnBox(root, 0.0f, true);
    }
    return drawnBox(root, size * 1e-4f, true);
}

tq::svg::BoundingBox StrokeExtent(const tq::svg::ItemInterface& root) {
    tq::svg::SegmentOptions options;
    options.strokes = true;
    tq::svg::SegmenterVisitor segmenter(root, options);
    tq::svg::BoundingBox box;
    for (const auto& primitive : segmenter.getSegmentedPrimitives()) {
        for (const Wm4::Vector2f& point : primitive->strokeTrianglePoints) {
            box.expandToContain(point);
        }
    }
    return box;
}

void AddReadingOptions(CLI::App& command, ReadingOptions& reading) {
    command.add_flag("--subset", reading.subset,
                     "Read only the library's strict subset of SVG, with its deliberate "
                     "restrictions (default: SVG as browsers draw it)");
    command.add_flag("--ignore-unsupported", reading.ignoreUnsupported,
                     "With --subset: skip what the subset does not have, with a warning, "
                     "instead of failing");
    command.add_option("--max-elements", reading.maxElements,
                       "Refuse documents of more elements than this, as too large (default: "
                       "1000000; 0: no bound; the subset reads any number)");
}

void AddBatchOptions(CLI::App& command, BatchSettings& settings) {
    settings.jobs = std::max(1u, std::thread::hardware_concurrency());
    command
        .add_option("-j,--jobs", settings.jobs,
                    "Files worked on at once (default: the number of processors)")
        ->check(CLI::Range(1u, 1024u));
    command.add_flag("-v,--verbose", settings.verbose,
                     "Print \"[i/n] file\" before each file's messages");
}
