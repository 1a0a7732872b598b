// Path data text into Path::Command records.
#pragma once

#include <list>
#include <string>
#include <string_view>

#include "svg/model/Path.h"
#include "svg/tqSvgExport.h"

namespace tq::svg {

class TQSVG_EXPORT PathVisitorStrToCommands {
public:
    // Records are appended to `out`, which is not emptied first.
    PathVisitorStrToCommands(const std::string& text, std::list<Path::Command>& out);
    PathVisitorStrToCommands(const PathVisitorStrToCommands&) = delete;
    PathVisitorStrToCommands& operator=(const PathVisitorStrToCommands&) = delete;

    // Parses the whole text: one record per group of numbers; extra pairs after a moveto are
    // lines, as in SVG. True when all of it was accepted. Call once.
    bool visit();
    // The message of the refusal; empty after a success (and after some refusals).
    const std::string& getErrorString() const { return mError; }

private:
    std::string mText;
    std::list<Path::Command>& mOut;
    std::string mError;
};

// Parses `text` and appends its commands to `out`. On a refusal returns false, sets `*error`
// (when given) to the message, and leaves in `out` every command read before the failing one.
TQSVG_EXPORT bool ConvertPathStringToCommands(const std::string& text,
                                              std::list<Path::Command>& out, std::string* error);

}  // namespace tq::svg
