// Conversion of number text in the C locale, whatever the process locale.
#pragma once

#include <string_view>

#include "svg/tqSvgExport.h"

namespace tq::svg {

// Converts the whole of `text` as strtod does in the C locale (leading white space, a '+',
// "inf", "nan" and hexadecimal forms included), narrowed to float. False, with `out`
// unchanged, when the conversion stops before the end of the text or the text is empty. The common
// decimal forms take a fast path that never allocates.
TQSVG_EXPORT bool ParseSvgNumber(std::string_view text, float& out);

}  // namespace tq::svg
