// tqsvg: the library's command-line tool. Each command lives in its own *Command.cpp.
//
// Exit codes: 0 success, 1 when a file failed, 2 on a usage error.
#include <iostream>
#include <string>
#include <vector>

#include "OutputFile.h"
#include "Tool.h"

int main(int argc, char** argv) {
    CLI::App app{"Load, save, segment and draw SVG documents with the tqSvg library.", "tqsvg"};
    app.set_version_flag(
        "-V,--version",
        std::string("tqsvg ") + tqSvg::Version::GetDescStringMajorMinorReleaseRevisionDate());
    app.require_subcommand(0, 1);
    const std::vector<Command> commands = {AddCheckCommand(app), AddConvertCommand(app),
                                           AddMeshCommand(app), AddBboxCommand(app),
                                           AddRenderCommand(app)};
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

    OutputFile::ReadUmask();
    Library library;
    for (const Command& command : commands) {
        if (command.parser->parsed()) {
            return command.run();
        }
    }
    // No command: the help, as a usage error.
    std::cerr << app.help();
    return kExitUsage;
}
