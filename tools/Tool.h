// What the commands of tqsvg share: exit codes, loading and saving through a driver of the
// caller's, writing text, and the registration of each command.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <list>
#include <string>

#include "Batch.h"
#include "InputFiles.h"
#include "svg/tqSvg.h"

constexpr int kExitSuccess = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

using RootPointer = tq::svg::ItemInterfacePointer<tq::svg::ItemInterface>;

// Starts and stops the library around the commands, and routes its log lines to the job that
// raised them.
class Library {
public:
    Library();
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

private:
    tq::svg::LibraryGuard mGuard;  // started before the log is set, stopped after it is unset
    ReportingLog mLog;
};

// Appends one "file: message" line per message.
void AppendMessages(std::string& to, const std::string& file,
                    const std::list<std::string>& messages);

// Loads a file, or standard input for "-", through `driver`; `messages` receives the driver's
// messages (warnings on success). A file whose extension is not .svg is refused, as the
// library's manager would.
bool LoadFile(tq::svg::tqSvgDriver& driver, const std::string& file,
              const tq::svg::LoadOptions& options, RootPointer& root,
              std::list<std::string>& messages);

// How the commands read documents: the standard profile unless --subset asks for the library's
// own subset.
struct ReadingOptions {
    bool ignoreUnsupported = false;
    bool subset = false;
    std::size_t maxElements = tq::svg::LoadOptions().maxElements;

    tq::svg::LoadOptions loadOptions() const {
        tq::svg::LoadOptions options;
        options.ignoreUnsupported = ignoreUnsupported;
        options.maxElements = maxElements;
        options.profile = subset ? tq::svg::LoadProfile::Subset : tq::svg::LoadProfile::Standard;
        return options;
    }
};

// LoadFile with a driver of its own, refusing a document without any element; messages are
// appended to `err`.
bool LoadDocument(const std::string& file, const ReadingOptions& reading, RootPointer& root,
                  std::string& err);

// The extent of the content as drawn, curves and strokes included: the outlines and strokes
// segmented within a ten-thousandth of the content's size; invalid when there is none.
tq::svg::BoundingBox GeometryExtent(const tq::svg::ItemInterface& root);
// The extent of the strokes alone, as the library's stroke triangles cover them (flattened within
// its default tolerance); invalid when nothing is stroked.
tq::svg::BoundingBox StrokeExtent(const tq::svg::ItemInterface& root);

// Saves `item` as SVG to a file of any extension, or standard output for "-"; messages and a
// failure are appended to `err`.
bool SaveDocument(tq::svg::tqSvgDriver& driver, const tq::svg::ItemInterface& item,
                  const std::string& target, const tq::svg::SaveOptions& options, std::string& err);

// Creates the folders above `file` that are missing; a failure is appended to `err`.
bool CreateParentDirectory(const std::string& file, std::string& err);

// Writes `text` to a file, or to the report's standard output for "-" or an empty name; a
// failure is appended to the report's errors.
bool WriteText(const std::string& file, std::string&& text, JobReport& report);

// Runs one job the way a batch runs each of its jobs, so that a single file's output has the
// same form; the exit code.
int RunSingle(const std::string& label, const std::function<bool(JobReport&)>& work);

// Whether the arguments name one file (or "-") and no directory: its output is a file.
bool IsSingleFile(const std::vector<std::string>& arguments);
// Where each input's output goes: for a single file `output` itself (or, when it is a folder,
// the input's name with `extension` in it); for several, `output` is a folder and each output
// takes the input's relative path with `extension`. False after printing a usage error for
// `command` (several outputs to standard output, two inputs onto one output).
bool PlanOutputs(const std::string& command, const std::vector<std::string>& arguments,
                 const std::vector<InputFile>& inputs, const std::string& output,
                 const std::string& extension, std::vector<std::string>& targets);

// For a summary line under --subset: "; N of them load without --subset" when some of the
// failed files read as browsers read SVG, else nothing.
std::string ReadableWithoutSubset(const std::vector<std::string>& failedFiles,
                                  const ReadingOptions& reading);

// The labels a batch prints: the inputs' paths.
std::vector<std::string> LabelsOf(const std::vector<InputFile>& inputs);
// For an input that stands for a directory that could not be read: reports it and returns true.
bool ReportUnreadable(const InputFile& input, JobReport& report);

// Options that every command reading documents offers: --ignore-unsupported and --subset.
void AddReadingOptions(CLI::App& command, ReadingOptions& reading);
// -j and --verbose, for the commands that work through many files.
void AddBatchOptions(CLI::App& command, BatchSettings& settings);

// A command: its parser, and what runs when the parser was chosen; the result is the exit code.
struct Command {
    CLI::App* parser = nullptr;
    std::function<int()> run;
};

Command AddCheckCommand(CLI::App& app);
Command AddConvertCommand(CLI::App& app);
Command AddMeshCommand(CLI::App& app);
Command AddBboxCommand(CLI::App& app);
Command AddRenderCommand(CLI::App& app);
