// tqsvg check: loads files and prints their messages, then a summary line.
#include <iostream>
#include <memory>

#include "Tool.h"

namespace {

struct CheckOptions {
    std::vector<std::string> inputs;
    ReadingOptions reading;
    BatchSettings batch;
    bool status = false;
};

struct CheckResult {
    bool loaded = false;
    std::size_t warnings = 0;
};

bool checkOne(const InputFile& input, const tq::svg::LoadOptions& options, CheckResult& result,
              JobReport& report) {
    if (ReportUnreadable(input, report)) {
        return false;
    }
    tq::svg::tqSvgDriver driver;  // one per job: a driver serves one load at a time
    RootPointer root;
    std::list<std::string> messages;
    result.loaded = LoadFile(driver, input.path, options, root, messages);
    AppendMessages(report.err, input.path, messages);
    if (result.loaded) {
        result.warnings = messages.size();
    }
    return result.loaded;
}

void addStatus(const InputFile& input, bool loaded, bool wanted, JobReport& report) {
    if (wanted) {
        report.out += (loaded ? "ok\t" : "failed\t") + input.path + '\n';
    }
}

int runCheck(const CheckOptions& o) {
    const std::vector<InputFile> inputs = CollectSvgFiles(o.inputs);
    const tq::svg::LoadOptions options = o.reading.loadOptions();
    std::vector<CheckResult> results(inputs.size());
    const std::size_t failed =
        RunBatch(LabelsOf(inputs), o.batch, [&](std::size_t i, JobReport& report) {
            const bool loaded = checkOne(inputs[i], options, results[i], report);
            addStatus(inputs[i], loaded, o.status, report);
            return loaded;
        });
    std::size_t warnings = 0;
    std::vector<std::string> failedFiles;
    for (std::size_t i = 0; i < results.size(); ++i) {
        warnings += results[i].warnings;
        if (!results[i].loaded && inputs[i].error.empty()) {
            failedFiles.push_back(inputs[i].path);
        }
    }
    std::cout << inputs.size() - failed << " loaded, " << failed << " failed, " << warnings
              << " warnings" << ReadableWithoutSubset(failedFiles, o.reading) << '\n';
    return failed == 0 ? kExitSuccess : kExitFailure;
}

}  // namespace

Command AddCheckCommand(CLI::App& app) {
    auto o = std::make_shared<CheckOptions>();
    CLI::App* check = app.add_subcommand(
        "check",
        "Load SVG files and print their messages (on standard error), then a summary line: "
        "N loaded, M failed, K warnings. Directories are searched for *.svg and *.svgz files. Exit "
        "1 when "
        "a file failed to load or a directory could not be read.");
    check->add_option("inputs", o->inputs, "SVG files, directories, or - for standard input")
        ->required();
    AddReadingOptions(*check, o->reading);
    check->add_flag("--status", o->status,
                    "Print \"ok\" or \"failed\", a tab and the file's path for each file on "
                    "standard output, before the summary");
    AddBatchOptions(*check, o->batch);
    return {check, [o] { return runCheck(*o); }};
}
