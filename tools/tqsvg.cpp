// tqsvg: the library's command-line tool.
#include <CLI/CLI.hpp>

#include <iostream>

#include "svg/tqSvg.h"

int main(int argc, char** argv) {
    CLI::App app{"tqsvg: load, save and segment SVG documents with the tqSvg library", "tqsvg"};
    app.set_version_flag(
        "-V,--version",
        std::string("tqsvg ") + tqSvg::Version::GetDescStringMajorMinorReleaseRevisionDate());
    app.require_subcommand(0);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    }
    if (argc == 1) {
        std::cout << app.help();
    }
    return 0;
}
