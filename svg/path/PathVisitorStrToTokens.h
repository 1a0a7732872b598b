// The path-data grammar: reads a "d" attribute command by command.
//
// A recursive-descent reading of the SVG path grammar with a reduced command set (no quadratic
// curves) and deliberate restrictions: white space is only space and line feed; commas may not
// stand between two coordinate groups of one command; arc flags must be separated from what
// follows them. Each complete command reaches the callback as (letter as written, numbers of all
// its groups); a refusal leaves one positioned message in the error text. Malformed UTF-8 met
// while testing a character raises the utf8 exceptions, which nothing here catches.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "svg/tqSvgExport.h"

namespace tq::svg {

class TQSVG_EXPORT PathVisitorStrToTokens {
public:
    enum Match {
        NoMatch = 0,  // the rule does not apply here; nothing was consumed
        Invalid = 1,  // the rule applies but the text is malformed; parsing stops
        Matched = 2,  // the rule consumed its text
    };
    using Callback = std::function<void(char, std::vector<float>&&)>;

    PathVisitorStrToTokens(const std::string& text, Callback callback);

    // Parses the whole text; true when all of it was accepted. Call once.
    bool visit();
    // The message of the refusal; empty after a success (and after some refusals).
    const std::string& getErrorString() const { return mError; }

private:
    std::string mText;
    Callback mCallback;
    std::string mError;
    std::vector<float> mNumbers;  // the command being read; its capacity is reused
};

}  // namespace tq::svg
