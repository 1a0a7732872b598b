#include "svg/model/detail/SvgNumber.h"

#include "svg/model/detail/ExactDecimal.h"

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <tqSystem/tqStringUtils.h>

namespace tq::svg {

namespace {

// The common decimals ("-12.375", "1e-3") in one pass: with at most 19 significant digits the
// mantissa and the power of ten give the correctly rounded double that strtod would return.
// Anything else is left to the general conversion (false).
bool parseShortDecimal(const char* p, const char* end, double& value) {
    bool negative = false;
    if (p != end && (*p == '-' || *p == '+')) {
        negative = *p == '-';
        ++p;
    }
    std::uint64_t mantissa = 0;
    int digits = 0;
    int exponent = 0;
    bool any = false;
    for (; p != end && *p >= '0' && *p <= '9'; ++p) {
        any = true;
        if (mantissa == 0 && *p == '0') {
            continue;  // leading zeros carry nothing
        }
        if (++digits > 19) {
            return false;
        }
        mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
    }
    if (p != end && *p == '.') {
        for (++p; p != end && *p >= '0' && *p <= '9'; ++p) {
            any = true;
            if (mantissa == 0 && *p == '0') {
                --exponent;
                continue;
            }
            if (++digits > 19) {
                return false;
            }
            mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
            --exponent;
        }
    }
    if (!any) {
        return false;
    }
    if (p != end && (*p == 'e' || *p == 'E')) {
        ++p;
        bool negativeExponent = false;
        if (p != end && (*p == '-' || *p == '+')) {
            negativeExponent = *p == '-';
            ++p;
        }
        if (p == end || *p < '0' || *p > '9') {
            return false;
        }
        int e = 0;
        for (; p != end && *p >= '0' && *p <= '9'; ++p) {
            if (e > 1000) {
                return false;
            }
            e = e * 10 + (*p - '0');
        }
        exponent += negativeExponent ? -e : e;
    }
    if (p != end) {
        return false;
    }
    double result = 0.0;
    if (!detail::DecimalToDouble(mantissa, digits, exponent, false, result)) {
        return false;
    }
    value = negative ? -result : result;
    return true;
}

}  // namespace

bool ParseSvgNumber(std::string_view text, float& out) {
    // std::from_chars reads the decimal forms exactly as strtod does (to double, then narrowed
    // like strtod's result would be) and takes no locale. It refuses what strtod would still
    // accept (leading white space, '+', hexadecimal, out-of-range values): those go the slow way.
    double value = 0.0;
    const char* first = text.data();
    const char* last = first + text.size();
    if (parseShortDecimal(first, last, value)) {
        out = static_cast<float>(value);
        return true;
    }
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
