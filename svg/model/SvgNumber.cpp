#include "svg/model/SvgNumber.h"

#include <charconv>
#include <cstdlib>
#include <string>

#include <tqSystem/tqStringUtils.h>

namespace tq::svg {

bool ParseSvgNumber(std::string_view text, float& out) {
    // std::from_chars reads the decimal forms exactly as strtod does (to double, then narrowed
    // like strtod's result would be) and takes no locale. It refuses what strtod would still
    // accept (leading white space, '+', hexadecimal, out-of-range values): those go the slow way.
    double value = 0.0;
    const char* first = text.data();
    const char* last = first + text.size();
    const auto result = std::from_chars(first, last, value);
    if (result.ec == std::errc() && result.ptr == last) {
        out = static_cast<float>(value);
        return true;
    }
    if (text.empty()) {
        return false;  // strtod converts nothing here; an empty value is no number
    }
    char local[64];
    std::string heap;
    const char* copy = local;
    if (text.size() < sizeof local) {
        text.copy(local, text.size());
        local[text.size()] = '\0';
    } else {
        heap.assign(text);
        copy = heap.c_str();
    }
    char* end = nullptr;
    value = strtod_l(copy, &end, tqStringUtils::msCLocale);
    if (end != copy + text.size()) {
        return false;
    }
    out = static_cast<float>(value);
    return true;
}

}  // namespace tq::svg
