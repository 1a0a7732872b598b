// Parsing of SVG colour texts into RGBA bytes.
#pragma once

#include <string>

#include <Wm4Foundation/Wm4Vector4.h>

#include "svg/tqSvgExport.h"

namespace tq::svg {

// Reads "#rgb", "#rgba", "#rrggbb", "#rrggbbaa", "rgb(r, g, b)", "rgba(r, g, b, a)" (integers
// 0-255, C-style hexadecimal and octal included, or percentages) and the 148 CSS colour
// keywords. Case-sensitive, no white space trimmed; "none" is the caller's business.
// `color` is set to opaque red first and keeps it, or the channels already written, on failure.
TQSVG_EXPORT bool ParseSvgColor(const std::string& text, Wm4::Vector4<unsigned char>& color);

}  // namespace tq::svg
