#include "tqSystem/tqStringUtils.h"

#include <utf8.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

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

// Writes digits d0.d1d2... x 10^exponent at `out` in plain or exponent notation, whichever is
// shorter (plain on a tie), as std::to_chars does for its shortest form. Returns the end.
char* layoutDecimal(char* out, bool negative, std::string_view digits, int exponent) {
    // Byte loops rather than std::copy: the pieces are a few bytes long, shorter than a call.
    const auto put = [&out](const char* from, const char* to) {
        while (from != to) {
            *out++ = *from++;
        }
    };
    const auto zeros = [&out](int count) {
        for (; count > 0; --count) {
            *out++ = '0';
        }
    };
    const int count = static_cast<int>(digits.size());
    const int magnitude = exponent < 0 ? -exponent : exponent;
    const int magnitudeDigits = magnitude < 100 ? 2 : 3;  // floats stay under 100
    const int plainLength = exponent >= 0 ? std::max(count, exponent + 1) + (count > exponent + 1)
                                          : 1 - exponent + count;
    const int scientificLength = count + (count > 1) + 2 + magnitudeDigits;
    if (negative) {
        *out++ = '-';
    }
    const char* d = digits.data();
    if (plainLength <= scientificLength) {
        if (exponent < 0) {
            *out++ = '0';
            *out++ = '.';
            zeros(-exponent - 1);
            put(d, d + count);
        } else if (count <= exponent + 1) {
            put(d, d + count);
            zeros(exponent + 1 - count);
        } else {
            put(d, d + exponent + 1);
            *out++ = '.';
            put(d + exponent + 1, d + count);
        }
        return out;
    }
    *out++ = d[0];
    if (count > 1) {
        *out++ = '.';
        put(d + 1, d + count);
    }
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    if (magnitude < 10) {
        *out++ = '0';
    }
    return std::to_chars(out, out + 3, magnitude).ptr;
}

// Powers of ten that doubles hold exactly.
constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

// The eight decimal digits of n < 10^8 as bytes 0 to 9, the first digit in the lowest byte: n is
// split into halves of four digits, pairs, then single digits, every lane of one 64-bit word at
// once and by multiplication only.
std::uint64_t digitBytes(std::uint32_t n) {
    const std::uint64_t merged = std::uint64_t(n / 10000) | (std::uint64_t(n % 10000) << 32);
    const std::uint64_t hundreds = ((merged * 10486) >> 20) & ((0x7FULL << 32) | 0x7FULL);
    const std::uint64_t pairs = ((merged - 100 * hundreds) << 16) | hundreds;
    const std::uint64_t tens = ((pairs * 103) >> 10) & 0x000F000F000F000FULL;
    return ((pairs - 10 * tens) << 8) | tens;
}

// The shortest form of a float whose shortest digits number six or fewer, without
// std::to_chars: most numbers in drawings, read from text with a few decimals, are such floats,
// and the standard formatter costs several times more. Any decimal of six significant digits or
// fewer reads back as a float of its own, so when the nearest six-digit decimal reads back as
// `value`, its digits without trailing zeros are the shortest and the only ones of that length.
// Returns nullptr where that does not hold, where the check is too close to call, and outside
// [1e-5, 2^24), so that the caller asks std::to_chars. `out` needs room for 24 bytes.
char* writeShortFloat(char* out, float value) {
    const float magnitude = std::fabs(value);
    if (!(magnitude >= 1e-5f && magnitude < 16777216.0f)) {
        return nullptr;
    }
    std::uint32_t bits;
    std::memcpy(&bits, &magnitude, sizeof bits);
    // The scale 10^shift that brings the magnitude into [1e5, 1e6). The estimate from the
    // binary exponent (log10(2) ~ 1233 / 4096) is never too large, and at most one too small.
    const int binaryExponent = int(bits >> 23) - 127;
    int shift = 5 - ((binaryExponent * 1233) >> 12);
    const auto scaled = [&shift](double x) {
        return shift >= 0 ? x * kPowersOfTen[shift] : x / kPowersOfTen[-shift];
    };
    double s = scaled(double(magnitude));
    if (s >= 1e6) {
        --shift;
        s = scaled(double(magnitude));
    }
    // The decimals that read back as `value` lie strictly between the midpoints to its
    // neighbours; scaled, each bound is off by a few units of 1e-10 at most.
    float below;
    float above;
    const std::uint32_t belowBits = bits - 1;
    const std::uint32_t aboveBits = bits + 1;
    std::memcpy(&below, &belowBits, sizeof below);
    std::memcpy(&above, &aboveBits, sizeof above);
    const double low = scaled((double(magnitude) + double(below)) / 2);
    const double high = scaled((double(magnitude) + double(above)) / 2);
    const auto whole = static_cast<std::uint32_t>(s + 0.5);  // s + 0.5 is exact below 2^52
    const double candidate = double(whole);
    constexpr double kMargin = 1e-8;
    if (!(candidate > low + kMargin && candidate < high - kMargin)) {
        return nullptr;
    }
    // Six digits (1000000 is the one digit of the next power of ten), the first in the lowest
    // byte; the trailing zeros are the zero bytes at the top.
    const std::uint64_t digits = digitBytes(whole) >> 16;
    const int exponent = 5 - shift;  // of the first digit
    if (whole == 1000000) {
        return layoutDecimal(out, value < 0, "1", exponent + 1);
    }
    const std::uint64_t nonZero = (digits + 0x7F7F7F7F7F7F7F7FULL) & 0x0000808080808080ULL;
    const int count = 6 - (__builtin_clzll(nonZero) - 16) / 8;
    char text[16];
    const std::uint64_t ascii = digits + 0x0000303030303030ULL;
    std::memcpy(text, &ascii, sizeof ascii);
    if (value < 0) {
        *out++ = '-';
    }
    if (exponent >= 0 && exponent < 5) {
        // 1 to 99999.9: the point after the integer digits, when a fraction follows.
        std::memcpy(out, text, 8);
        out[exponent + 1] = '.';
        std::memcpy(out + exponent + 2, text + exponent + 1, 8);
        return count > exponent + 1 ? out + count + 1 : out + exponent + 1;
    }
    if (exponent < 0 && exponent >= -3) {
        // 0.001 to 0.999999: "0.", the zeros the exponent asks for, the digits.
        std::memcpy(out, "0.00", 4);
        std::memcpy(out + 1 - exponent, text, 8);
        return out + 1 - exponent + count;
    }
    // Exponent notation may be the shorter: the general layout decides.
    return layoutDecimal(out, false, std::string_view(text, std::size_t(count)), exponent);
}

// The shortest text that reads back as `value`, at `out` with room for 64 bytes.
char* writeShortest(char* out, float value) {
    char* const end = writeShortFloat(out, value);
    return end != nullptr ? end : std::to_chars(out, out + 64, value).ptr;
}

std::string formatCompact(float value, int precision) {
    char buffer[64];
    std::string text(buffer, writeShortest(buffer, value));
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
    char laidOut[64];
    return std::string(laidOut,
                       layoutDecimal(laidOut, value < 0, significantDigits(sci), exponent));
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
    if (std::isfinite(value) && (precision < 0 || precision >= 9)) {
        // The common case, straight into the output.
        return writeShortest(out, value);
    }
    std::string text;
    if (formatNonFinite(value, text)) {
        return std::copy(text.begin(), text.end(), out);
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
