// Path data text into Path::Command records.
#pragma once

#include <list>
#include <string>
#include <vector>

#include "svg/model/Path.h"
#include "svg/path/PathVisitorStrToTokens.h"

namespace tq::svg {

class TQSVG_EXPORT PathVisitorStrToCommands {
public:
    // Records are appended to `out`, which is not emptied first.
    PathVisitorStrToCommands(const std::string& text, std::list<Path::Command>& out);
    PathVisitorStrToCommands(const PathVisitorStrToCommands&) = delete;
    PathVisitorStrToCommands& operator=(const PathVisitorStrToCommands&) = delete;

    bool visit() { return mTokens.visit(); }
    const std::string& getErrorString() const { return mTokens.getErrorString(); }

private:
    // One record per group of numbers; extra pairs after a moveto are lines, as in SVG.
    void visitorCallback(char letter, std::vector<float>&& numbers);

    PathVisitorStrToTokens mTokens;
    std::list<Path::Command>& mOut;
};

// Parses `text` and appends its commands to `out`. On a refusal returns false, sets `*error`
// (when given) to the message, and leaves in `out` every command read before the failing one.
TQSVG_EXPORT bool ConvertPathStringToCommands(const std::string& text,
                                              std::list<Path::Command>& out, std::string* error);

}  // namespace tq::svg
