// The white-space rules of SVG's xml:space, for hosts that display text content.
#pragma once

#include <string>

#include "svg/tqSvgExport.h"

namespace tq::svg {

// "preserve": every tab, line feed and carriage return becomes one space; the length stays.
TQSVG_EXPORT std::string ApplySvgXMLSpacePreserve(const std::string& text);

// "default": line feeds and carriage returns are removed, each run of spaces and tabs becomes
// one space, and runs at the very start and end are dropped. A line break ends a run, so the
// blanks on its two sides give two spaces, and a run before a final line break is kept as one
// space: deliberate.
TQSVG_EXPORT std::string ApplySvgXMLSpaceDefault(const std::string& text);

}  // namespace tq::svg
