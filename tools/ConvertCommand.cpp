// tqsvg convert: loads and saves one file, or every *.svg file of a directory into another.
#include <filesystem>
#include <iostream>
#include <memory>

#include "Tool.h"

namespace fs = std::filesystem;

namespace {

struct ConvertOptions {
    std::string input;
    std::string output;
    bool indent = false;
    int precision = -1;
    std::string author;
    bool noHeader = false;
    ReadingOptions reading;
    BatchSettings batch;

    tq::svg::SaveOptions saveOptions() const {
        tq::svg::SaveOptions options;
        options.indent = indent;
        options.floatPrecision = precision;
        options.author = author;
        options.writeHeader = !noHeader;
        return options;
    }
};

// Folders are created only for a directory's files: a single output names a place that exists.
// `unread` tells a file that did not load from one that did not save.
bool convertOne(const std::string& input, const std::string& target, const ConvertOptions& o,
                bool createFolders, JobReport& report, char* unread = nullptr) {
    RootPointer root;
    if (!LoadDocument(input, o.reading, root, report.err)) {
        if (unread != nullptr) {
            *unread = 1;
        }
        return false;
    }
    tq::svg::tqSvgDriver driver;  // one per job: a driver serves one operation at a time
    return (!createFolders || CreateParentDirectory(target, report.err)) &&
           SaveDocument(driver, *root, target, o.saveOptions(), report.err);
}

int usageError(const std::string& text) {
    std::cerr << "tqsvg convert: " << text << '\n';
    return kExitUsage;
}

int convertDirectory(const ConvertOptions& o) {
    std::error_code ignored;
    if (o.output == "-" || (fs::exists(o.output, ignored) && !IsDirectory(o.output))) {
        return usageError("a directory converts into a directory, not into " + o.output);
    }
    const std::vector<InputFile> inputs = CollectSvgFiles({o.input}, o.output);
    std::vector<char> unread(inputs.size(), 0);
    const std::size_t failed =
        RunBatch(LabelsOf(inputs), o.batch, [&](std::size_t i, JobReport& report) {
            const InputFile& input = inputs[i];
            // The text written is plain: a compressed input's copy is named .svg.
            const fs::path target =
                fs::path(o.output) / fs::path(input.relative).replace_extension(".svg");
            return !ReportUnreadable(input, report) &&
                   convertOne(input.path, target.string(), o, true, report, &unread[i]);
        });
    std::vector<std::string> unreadFiles;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        if (unread[i]) {
            unreadFiles.push_back(inputs[i].path);
        }
    }
    std::cout << inputs.size() - failed << " converted, " << failed << " failed"
              << ReadableWithoutSubset(unreadFiles, o.reading) << '\n';
    return failed == 0 ? kExitSuccess : kExitFailure;
}

int convertFile(const ConvertOptions& o) {
    std::string target = o.output;
    if (o.output != "-" && IsDirectory(o.output)) {
        if (o.input == "-") {
            return usageError("standard input has no name to give a file in " + o.output);
        }
        target = (fs::path(o.output) / fs::path(o.input).filename()).string();
    }
    return RunSingle(
        o.input, [&](JobReport& report) { return convertOne(o.input, target, o, false, report); });
}

int runConvert(const ConvertOptions& o) {
    return o.input != "-" && IsDirectory(o.input) ? convertDirectory(o) : convertFile(o);
}

}  // namespace

Command AddConvertCommand(CLI::App& app) {
    auto o = std::make_shared<ConvertOptions>();
    CLI::App* convert =
        app.add_subcommand("convert",
                           "Load an SVG file and save it again. With a directory as INPUT, every "
                           "*.svg and *.svgz file below "
                           "it is converted to the same relative path under OUTPUT (folders are "
                           "created; a compressed file's copy is named .svg) and a "
                           "summary line is printed.");
    convert->add_option("input", o->input, "SVG file, directory, or - for standard input")
        ->required();
    convert
        ->add_option("output", o->output,
                     "output file, directory (for a directory input, or to keep the file's "
                     "name), or - for standard output")
        ->required();
    convert->add_flag("--indent", o->indent, "Indent the XML and space out path data");
    convert
        ->add_option("--precision", o->precision,
                     "Significant digits of numbers (1-8); default: shortest exact")
        ->check(CLI::Range(-1, 9));
    convert->add_option("--author", o->author, "Write an \"Author : \" comment");
    convert->add_flag("--no-header", o->noHeader, "Leave out the exporter and date comments");
    AddReadingOptions(*convert, o->reading);
    AddBatchOptions(*convert, o->batch);
    return {convert, [o] { return runConvert(*o); }};
}
