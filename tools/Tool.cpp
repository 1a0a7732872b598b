#include "Tool.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

#include <tqSystem/tqDirUtils.h>

#include "StdioDevice.h"

Library::Library() {
    tq::svg::initializeTqSvg();
    tqLog::setInstance(&mLog);
}

Library::~Library() {
    tqLog::setInstance(nullptr);
    tq::svg::terminateTqSvg();
}

void AppendMessages(std::string& to, const std::string& file,
                    const std::list<std::string>& messages) {
    for (const std::string& message : messages) {
        to += file + ": " + message + '\n';
    }
}

bool LoadFile(tq::svg::tqSvgDriver& driver, const std::string& file,
              const tq::svg::LoadOptions& options, RootPointer& root,
              std::list<std::string>& messages) {
    bool ok;
    if (file == "-") {
        StdioDevice in(stdin);
        ok = driver.loadSvg(root, in, "svg", nullptr, options);
    } else if (driver.canLoad({nullptr, tqDirUtils::ExtractFileExtension(file, true, true)},
                              options) == tq::svg::tqSvgDriver::CannotHandle) {
        messages.assign(1, "not an .svg file");
        return false;
    } else {
        ok = driver.loadSvg(root, file, nullptr, options);
    }
    driver.getLastErrorsAndWarnings(messages, true);
    return ok;
}

bool LoadDocument(const std::string& file, const ReadingOptions& reading, RootPointer& root,
                  std::string& err) {
    const tq::svg::LoadOptions options = reading.loadOptions();
    tq::svg::tqSvgDriver driver;
    std::list<std::string> messages;
    const bool ok = LoadFile(driver, file, options, root, messages);
    AppendMessages(err, file, messages);
    if (ok && !root) {
        err += file + ": the document holds no element\n";
    }
    return ok && root;
}

bool SaveDocument(tq::svg::tqSvgDriver& driver, const tq::svg::ItemInterface& item,
                  const std::string& target, const tq::svg::SaveOptions& options,
                  std::string& err) {
    bool ok;
    if (target == "-") {
        StdioDevice out(stdout);
        ok = driver.saveSvg(item, out, "svg", nullptr, options);
        ok = out.flush() && ok;
    } else {
        // Saved through the file name: any extension is accepted, the content is SVG.
        ok = driver.saveSvg(item, target, nullptr, options);
    }
    std::list<std::string> messages;
    driver.getLastErrorsAndWarnings(messages, true);
    AppendMessages(err, target, messages);
    if (!ok && messages.empty()) {
        err += target + ": the document could not be written\n";
    }
    return ok;
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
    std::ofstream out(file, std::ios::binary);
    out << text;
    out.close();
    if (!out) {
        report.err += file + ": could not be written\n";
        return false;
    }
    return true;
}

int RunSingle(const std::string& label, const std::function<bool(JobReport&)>& work) {
    const std::size_t failed = RunBatch(
        {label}, BatchSettings(), [&](std::size_t, JobReport& report) { return work(report); });
    return failed == 0 ? kExitSuccess : kExitFailure;
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

tq::svg::BoundingBox GeometryExtent(const tq::svg::SegmenterVisitor::PrimitiveList& primitives) {
    tq::svg::BoundingBox box;
    for (const auto& primitive : primitives) {
        for (const Wm4::Vector2f& point : primitive->points) {
            if (std::isfinite(point.X()) && std::isfinite(point.Y())) {
                box.expandToContain(point);
            }
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
