#include "tqSystem/tqStringUtils.h"

#include <utf8.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

locale_t tqStringUtils::msCLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));

namespace {

constexpr int kMaxFormatPrecision = 1000;

// NaN and infinities read the same in every format, whatever the sign of a NaN.
bool formatNonFinite(float value, std::string& out) {
    if (std::isnan(value)) {
        out = "nan";
        return true;
    }
    if (std::isinf(value)) {
        out = value < 0 ? "-inf" : "inf";
        return true;
    }
    return false;
}

// The significant digits of a decimal text such as "-0.00125" or "1.5e+20".
std::string significantDigits(std::string_view text) {
    const std::size_t exponent = text.find('e');
    std::string digits;
    for (char c : text.substr(0, exponent)) {
        if (c >= '0' && c <= '9') {
            digits += c;
        }
    }
    const std::size_t first = digits.find_first_not_of('0');
    if (first == std::string::npos) {
        return "0";
    }
    const std::size_t last = digits.find_last_not_of('0');
    return digits.substr(first, last - first + 1);
}

// Writes digits d0.d1d2... x 10^exponent in plain or exponent notation, whichever is shorter
// (plain on a tie), as std::to_chars does for its shortest form.
std::string layoutDecimal(bool negative, const std::string& digits, int exponent) {
    std::string plain;
    const int count = static_cast<int>(digits.size());
    if (exponent >= 0) {
        if (count <= exponent + 1) {
            plain = digits + std::string(static_cast<std::size_t>(exponent + 1 - count), '0');
        } else {
            plain = digits.substr(0, static_cast<std::size_t>(exponent + 1)) + "." +
                    digits.substr(static_cast<std::size_t>(exponent + 1));
        }
    } else {
        plain = "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + digits;
    }

    std::string scientific = digits.substr(0, 1);
    if (count > 1) {
        scientific += "." + digits.substr(1);
    }
    const int magnitude = exponent < 0 ? -exponent : exponent;
    scientific += exponent < 0 ? "e-" : "e+";
    if (magnitude < 10) {
        scientific += '0';
    }
    scientific += std::to_string(magnitude);

    std::string result = negative ? "-" : "";
    result += plain.size() <= scientific.size() ? plain : scientific;
    return result;
}

std::string formatCompact(float value, int precision) {
    char buffer[64];
    const auto shortest = std::to_chars(buffer, buffer + sizeof buffer, value);
    std::string text(buffer, shortest.ptr);
    if (precision < 0 || precision >= 9) {
        return text;
    }
    const int wanted = std::max(precision, 1);
    if (static_cast<int>(significantDigits(text).size()) <= wanted) {
        return text;
    }
    // Round to `wanted` significant digits, then lay the digits out like the shortest form.
    const auto rounded = std::to_chars(buffer, buffer + sizeof buffer, value,
                                       std::chars_format::scientific, wanted - 1);
    const std::string_view sci(buffer, static_cast<std::size_t>(rounded.ptr - buffer));
    const std::size_t e = sci.find('e');
    int exponent = 0;
    std::from_chars(sci.data() + e + (sci[e + 1] == '+' ? 2 : 1), sci.data() + sci.size(),
                    exponent);
    return layoutDecimal(value < 0, significantDigits(sci), exponent);
}

std::string formatWithPrecision(float value, int precision, std::chars_format format) {
    if (precision < 0) {
        precision = 6;
    }
    precision = std::min(precision, kMaxFormatPrecision);
    std::string text(static_cast<std::size_t>(precision) + 64, '\0');
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), value, format, precision);
    text.resize(static_cast<std::size_t>(result.ptr - text.data()));
    return text;
}

std::string fromMagnitude(bool negative, uint64 magnitude, int minDigits) {
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, magnitude);
    const std::size_t length = static_cast<std::size_t>(result.ptr - buffer);
    std::string text = negative ? "-" : "";
    if (minDigits > 0 && static_cast<std::size_t>(minDigits) > length) {
        text.append(static_cast<std::size_t>(minDigits) - length, '0');
    }
    text.append(buffer, length);
    return text;
}

}  // namespace

std::string tqStringUtils::fromFloat(float value, int precision, FloatFormat format) {
    std::string text;
    appendFloat(text, value, precision, format);
    return text;
}

void tqStringUtils::appendFloat(std::string& out, float value, int precision, FloatFormat format) {
    if (format == FloatFormat::Compact || !std::isfinite(value)) {
        char buffer[CompactFloatRoom];
        out.append(buffer, writeCompactFloat(buffer, value, precision));
        return;
    }
    out += formatWithPrecision(
        value, precision,
        format == FloatFormat::Fixed ? std::chars_format::fixed : std::chars_format::scientific);
}

char* tqStringUtils::writeCompactFloat(char* out, float value, int precision) {
    std::string text;
    if (formatNonFinite(value, text)) {
        return std::copy(text.begin(), text.end(), out);
    }
    if (precision < 0 || precision >= 9) {
        // The common case, straight into the output.
        return std::to_chars(out, out + CompactFloatRoom, value).ptr;
    }
    // Never longer than the shortest text, which fits.
    text = formatCompact(value, precision);
    return std::copy(text.begin(), text.end(), out);
}

std::string tqStringUtils::fromInt64(int64 value, int minDigits) {
    // The magnitude is taken in unsigned arithmetic so that INT64_MIN is no special case.
    const uint64 magnitude =
        value < 0 ? uint64(0) - static_cast<uint64>(value) : static_cast<uint64>(value);
    return fromMagnitude(value < 0, magnitude, minDigits);
}

std::string tqStringUtils::fromUInt64(uint64 value, int minDigits) {
    return fromMagnitude(false, value, minDigits);
}

void tqStringUtils::replace(std::string& text, const std::string& from, const std::string& to) {
    if (from.empty()) {
        return;
    }
    std::size_t pos = text.find(from);
    if (pos == std::string::npos) {
        return;
    }
    std::string result;
    result.reserve(text.size());
    std::size_t done = 0;
    while (pos != std::string::npos) {
        result.append(text, done, pos - done);
        result += to;
        done = pos + from.size();
        pos = text.find(from, done);
    }
    result.append(text, done, std::string::npos);
    text.swap(result);
}

std::vector<std::string> tqStringUtils::Split(const std::string& text, char separator,
                                              bool skipEmpty) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (true) {
        const std::size_t end = text.find(separator, begin);
        const std::size_t stop = end == std::string::npos ? text.size() : end;
        if (!skipEmpty || stop > begin) {
            parts.emplace_back(text, begin, stop - begin);
        }
        if (end == std::string::npos) {
            return parts;
        }
        begin = end + 1;
    }
}

bool tqStringUtils::endsWith(const std::string& text, const std::string& suffix) {
    return text.size() >= suffix.size() &&
           text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool tqStringUtils::IsUtf8String(const std::string& text) {
    return utf8::is_valid(text.begin(), text.end());
}
