// tqsvg: the library's command-line tool.
//
// Exit codes: 0 success, 1 when a file failed to load or save, 2 on a usage error.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

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
    std::cout << app.help();
    return 0;
}
