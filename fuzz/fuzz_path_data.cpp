// Path data text into drawing commands.
//
// Input bytes: the text of a "d" attribute, as it is.
//
// Malformed UTF-8 raises the utf8 exceptions, which the tokenizer lets through by design (the
// loader's XML layer never hands it such text); exactly those are caught here. Checked: the
// commands already in the list stay first; every command has its kind's number count, arc flags
// are 0 or 1 and a path starts with a moveto; and the commands of an accepted
// text, written back with the library's number format, read back the same. (Some refusals have
// no message, deliberately: a command letter with no number.)
#include <utf8.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

#include "FuzzSupport.h"

namespace {

using tq::svg::Path;
using Type = Path::CommandType;

constexpr const char* kTarget = "fuzz_path_data";

// Numbers per command kind, in the order of Path::CommandType.
constexpr std::size_t kCounts[] = {2, 2, 2, 2, 7, 7, 1, 1, 1, 1, 6, 6, 4, 4, 0};

// Parses and checks; false when the text was refused.
bool parse(const std::string& text, std::list<Path::Command>& commands) {
    const Path::Command marker{Type::ClosePath, {}};
    commands.assign(1, marker);
    bool ok = false;
    try {
        ok = tq::svg::ConvertPathStringToCommands(text, commands, nullptr);
    } catch (const utf8::exception&) {
        return false;
    }
    if (commands.empty() || commands.front() != marker) {
        tq::fuzz::fail(kTarget, "the commands already in the list were changed", text);
    }
    commands.pop_front();
    if (!commands.empty() && commands.front().type != Type::MoveTo &&
        commands.front().type != Type::MoveToRel) {
        tq::fuzz::fail(kTarget, "the first command is not a moveto", text);
    }
    for (const Path::Command& command : commands) {
        const auto kind = static_cast<std::size_t>(command.type);
        if (kind >= std::size(kCounts) || command.values.size() != kCounts[kind]) {
            tq::fuzz::fail(kTarget, "a command with the wrong number count", text);
        }
        if (command.type == Type::EllipticalArc || command.type == Type::EllipticalArcRel) {
            for (std::size_t flag : {3, 4}) {
                if (command.values[flag] != 0.0f && command.values[flag] != 1.0f) {
                    tq::fuzz::fail(kTarget, "an arc flag other than 0 or 1", text);
                }
            }
        }
    }
    return ok;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::list<Path::Command> commands;
    if (!parse(text, commands)) {
        return 0;
    }
    // A number beyond the float range is stored as an infinity, which no path data spells:
    // such commands are deliberately not carried back.
    if (!tq::fuzz::allFinite(commands)) {
        return 0;
    }
    // Write the commands out as the saver formats numbers and read them back.
    std::string written;
    const tq::svg::SaveOptions options;
    for (const Path::Command& command : commands) {
        if (!written.empty()) {
            written += ' ';
        }
        written += Path::CommandLetters[static_cast<int>(command.type)];
        for (float value : command.values) {
            written += ' ';
            tq::svg::Helpers::appendSvgNumber(written, value, options);
        }
    }
    std::list<Path::Command> again;
    if (!parse(written, again)) {
        tq::fuzz::fail(kTarget, "the written commands were refused",
                       text + "\nwritten: " + written);
    }
    if (again.size() != commands.size()) {
        tq::fuzz::fail(kTarget, "the written commands read back as another count",
                       text + "\nwritten: " + written);
    }
    auto it = again.begin();
    for (const Path::Command& command : commands) {
        const Path::Command& other = *it++;
        bool same = command.type == other.type && command.values.size() == other.values.size();
        for (std::size_t i = 0; same && i < command.values.size(); ++i) {
            same = command.values[i] == other.values[i];  // -0 is written "0"
        }
        if (!same) {
            tq::fuzz::fail(kTarget, "a written command read back different",
                           text + "\nwritten: " + written);
        }
    }
    return 0;
}
