#include "tqSystem/tqStringUtils.h"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

locale_t tqStringUtils::msCLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));

namespace {

constexpr int kMaxFormatPrecision = 1000;

// Compact numbers are built in place: no float has a shortest or rounded form longer than
// this, so formatting a number allocates nothing.
constexpr std::size_t kCompactMax = tqStringUtils::CompactFloatRoom;

// Whether `count` significant digits, the first worth 10^exponent, are shorter (or as short) in
// plain notation as in exponent notation, which std::to_chars then writes.
bool plainIsShorter(int count, int exponent) {
    const int magnitude = exponent < 0 ? -exponent : exponent;
    const int scientificLength = count + (count > 1 ? 1 : 0) + (magnitude < 100 ? 4 : 5);
    const int plainLength = exponent < 0            ? 1 - exponent + count
                            : count <= exponent + 1 ? exponent + 1
                                                    : count + 1;
    return plainLength <= scientificLength;
}

// Writes the significant digits [digits, digits + count) (no leading or trailing zeros), the
// first of them worth 10^exponent, in plain or exponent notation, whichever is shorter (plain on
// a tie), as std::to_chars does for its shortest form. Returns the end of the text.
char* layoutDecimal(char* out, bool negative, const char* digits, int count, int exponent) {
    if (negative) {
        *out++ = '-';
    }
    const int magnitude = exponent < 0 ? -exponent : exponent;
    if (plainIsShorter(count, exponent)) {
        if (exponent < 0) {
            *out++ = '0';
            *out++ = '.';
            out = std::fill_n(out, -exponent - 1, '0');
            return std::copy_n(digits, count, out);
        }
        if (count <= exponent + 1) {
            out = std::copy_n(digits, count, out);
            return std::fill_n(out, exponent + 1 - count, '0');
        }
        out = std::copy_n(digits, exponent + 1, out);
        *out++ = '.';
        return std::copy_n(digits + exponent + 1, count - exponent - 1, out);
    }
    *out++ = digits[0];
    if (count > 1) {
        *out++ = '.';
        out = std::copy_n(digits + 1, count - 1, out);
    }
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    if (magnitude < 10) {
        *out++ = '0';
    }
    return std::to_chars(out, out + 3, magnitude).ptr;
}

// Copies the significant digits of a decimal text such as "-0.00125" or "1.5e+20" to `digits`
// (at least kCompactMax bytes); returns how many, 0 for a zero.
int significantDigits(std::string_view text, char* digits) {
    int count = 0;
    for (char c : text.substr(0, text.find('e'))) {
        if ((c >= '1' && c <= '9') || (c == '0' && count > 0)) {
            digits[count++] = c;
        }
    }
    while (count > 0 && digits[count - 1] == '0') {
        --count;
    }
    return count;
}

// ---- shortest digits -------------------------------------------------------------------------
//
// The shortest decimal that reads back as a float, by Giulietti's Schubfach method: the value's
// rounding interval, scaled by a power of ten that leaves it one or two decimal digits wide, is
// computed with one 64-by-32-bit product per end (rounded to odd, which keeps the comparisons
// exact), and the decimals of one digit fewer are tried before the nearest of full length. It
// gives the same digits as std::to_chars, two to three times faster, which matters because
// numbers are most of what a save writes. Checked against std::to_chars for every float.

// A little unsigned big integer, enough for 2^167 and 10^45, to build the table at compile time.
struct BigUnsigned {
    std::uint32_t limb[8] = {};  // least significant first

    constexpr void multiplyBy10() {
        std::uint64_t carry = 0;
        for (std::uint32_t& l : limb) {
            carry += std::uint64_t(l) * 10;
            l = std::uint32_t(carry);
            carry >>= 32;
        }
    }
    constexpr void divideBy10() {  // floor
        std::uint64_t rest = 0;
        for (int i = 7; i >= 0; --i) {
            rest = (rest << 32) | limb[i];
            limb[i] = std::uint32_t(rest / 10);
            rest %= 10;
        }
    }
    constexpr void decrement() {
        for (std::uint32_t& l : limb) {
            if (l-- != 0) {
                return;
            }
        }
    }
    constexpr int bitLength() const {
        for (int i = 7; i >= 0; --i) {
            for (int b = 31; b >= 0; --b) {
                if ((limb[i] >> b) & 1) {
                    return 32 * i + b + 1;
                }
            }
        }
        return 0;
    }
    // Bits [shift, shift + 64).
    constexpr std::uint64_t bitsFrom(int shift) const {
        std::uint64_t result = 0;
        for (int b = 63; b >= 0; --b) {
            const int at = shift + b;
            result = (result << 1) | (at >= 0 && at < 256 ? (limb[at / 32] >> (at % 32)) & 1 : 0);
        }
        return result;
    }
};

constexpr int kMinPow10 = -31;
constexpr int kMaxPow10 = 45;

// g(k) = ceil(10^k / 2^r) with r = floor(log2 10^k) - 63, so that 2^63 <= g(k) < 2^64.
constexpr std::array<std::uint64_t, kMaxPow10 - kMinPow10 + 1> kPow10Significands = [] {
    std::array<std::uint64_t, kMaxPow10 - kMinPow10 + 1> table{};
    for (int k = kMinPow10; k <= kMaxPow10; ++k) {
        BigUnsigned n;
        if (k >= 0) {
            n.limb[0] = 1;
            for (int i = 0; i < k; ++i) {
                n.multiplyBy10();
            }
            const int shift = n.bitLength() - 64;
            if (shift <= 0) {
                table[std::size_t(k - kMinPow10)] = n.bitsFrom(shift);
                continue;
            }
            n.decrement();  // ceil(n / 2^shift) = floor((n - 1) / 2^shift) + 1
            table[std::size_t(k - kMinPow10)] = n.bitsFrom(shift) + 1;
        } else {
            BigUnsigned power;  // 10^-k, for its bit length b: 2^(b-1) < 10^-k < 2^b
            power.limb[0] = 1;
            for (int i = 0; i < -k; ++i) {
                power.multiplyBy10();
            }
            const int exponent = power.bitLength() + 63;  // 10^k / 2^r = 2^exponent / 10^-k
            n.limb[exponent / 32] = std::uint32_t(1) << (exponent % 32);
            n.decrement();
            for (int i = 0; i < -k; ++i) {
                n.divideBy10();
            }
            table[std::size_t(k - kMinPow10)] = n.bitsFrom(0) + 1;
        }
    }
    return table;
}();

// floor(log2 10^e) for |e| <= 1233; floor(log10 2^e) and floor(log10 (3/4) 2^e) for |e| <= 1650.
constexpr int floorLog2Pow10(int e) {
    return (e * 1741647) >> 19;
}
constexpr int floorLog10Pow2(int e, bool threeQuarters) {
    return (e * 1262611 - (threeQuarters ? 524031 : 0)) >> 22;
}

// floor(g cp / 2^64), its lowest bit set when the bits dropped are not all zero, give or take
// the one unit by which g is too large.
std::uint32_t roundToOdd(std::uint64_t g, std::uint32_t cp) {
    // g cp < 2^94, so g cp / 2^32 fits 64 bits: its high half is the quotient, its low half the
    // first 32 bits dropped.
    const std::uint64_t shifted = (g >> 32) * cp + (((g & 0xffffffff) * cp) >> 32);
    const auto high = static_cast<std::uint32_t>(shifted >> 32);
    const auto middle = static_cast<std::uint32_t>(shifted);
    return high | (middle > 1 ? 1 : 0);
}

// The shortest decimal digits × 10^exponent that reads back as a positive finite float with
// these bits, the nearest one when several are as short (ties to an even last digit).
void shortestDecimal(std::uint32_t bits, std::uint32_t& digits, int& exponent) {
    const std::uint32_t fraction = bits & 0x7fffff;
    const std::uint32_t biased = bits >> 23;
    std::uint32_t c = fraction;
    int q = 1 - 150;
    if (biased != 0) {
        c |= 0x800000;
        q = int(biased) - 150;
        // A whole number below 2^24 is its own shortest decimal.
        if (q <= 0 && -q < 24 && (c & ((std::uint32_t(1) << -q) - 1)) == 0) {
            digits = c >> -q;
            exponent = 0;
            return;
        }
    }
    const bool even = (c & 1) == 0;
    const bool lowerCloser = fraction == 0 && biased > 1;
    const std::uint32_t cbl = 4 * c - 2 + (lowerCloser ? 1 : 0);
    const std::uint32_t cb = 4 * c;
    const std::uint32_t cbr = 4 * c + 2;
    const int k = floorLog10Pow2(q, lowerCloser);
    const int h = q + floorLog2Pow10(-k) + 1;  // 1 to 4
    const std::uint64_t g = kPow10Significands[std::size_t(-k - kMinPow10)];
    const std::uint32_t vbl = roundToOdd(g, cbl << h);
    const std::uint32_t vb = roundToOdd(g, cb << h);
    const std::uint32_t vbr = roundToOdd(g, cbr << h);
    const std::uint32_t lower = vbl + (even ? 0 : 1);
    const std::uint32_t upper = vbr - (even ? 0 : 1);
    const std::uint32_t s = vb / 4;
    if (s >= 10) {
        // One digit fewer: at most one of its two neighbours can read back.
        const std::uint32_t sp = s / 10;
        const bool belowInside = lower <= 40 * sp;
        const bool aboveInside = 40 * sp + 40 <= upper;
        if (belowInside != aboveInside) {
            digits = sp + (aboveInside ? 1 : 0);
            exponent = k + 1;
            return;
        }
    }
    const bool belowInside = lower <= 4 * s;
    const bool aboveInside = 4 * s + 4 <= upper;
    if (belowInside != aboveInside) {
        digits = s + (aboveInside ? 1 : 0);
        exponent = k;
        return;
    }
    const std::uint32_t middle = 4 * s + 2;
    const bool up = vb > middle || (vb == middle && (s & 1) != 0);
    digits = s + (up ? 1 : 0);
    exponent = k;
}

constexpr char kPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr bool kLittleEndian = true;
#else
constexpr bool kLittleEndian = false;
#endif

// The eight decimal digits of `value` (below 10^8, zeros in front) as ASCII in one word, the
// first digit in the lowest byte: 8 digits split into 4 + 4, then 2 + 2, then 1 + 1 in parallel
// lanes of the word, dividing by multiplying (exact for these ranges).
std::uint64_t eightDigits(std::uint32_t value) {
    const std::uint64_t fours = (value / 10000) | (std::uint64_t(value % 10000) << 32);
    const std::uint64_t hundreds = ((fours * 10486) >> 20) & 0x0000007f0000007f;
    const std::uint64_t twos = hundreds | ((fours - 100 * hundreds) << 16);
    const std::uint64_t tens = ((twos * 103) >> 10) & 0x000f000f000f000f;
    const std::uint64_t ones = tens | ((twos - 10 * tens) << 8);
    return ones | 0x3030303030303030;
}

void store(char* out, std::uint64_t word) {
    std::memcpy(out, &word, sizeof word);
}

// The shortest text of a positive value below 2^24 whose shortest decimal has at most eight
// digits, `digits` × 10^exponent, as std::to_chars lays it out; returns its end. Most numbers
// take this way, so it has no branch that depends on how many digits there are: they are made
// in a word and written with stores of eight bytes (`out` has room for 24), leaving garbage
// after the end that later writes overwrite.
char* layoutEightDigits(char* out, std::uint32_t digits, int exponent) {
    const int width = 1 + (digits >= 10) + (digits >= 100) + (digits >= 1000) + (digits >= 10000) +
                      (digits >= 100000) + (digits >= 1000000) + (digits >= 10000000);
    const std::uint64_t padded = eightDigits(digits);
    // Trailing zeros are the '0' bytes at the top; digits >= 1 leaves one byte that is not.
    const int zeros = __builtin_clzll(padded ^ 0x3030303030303030) / 8;
    const int count = width - zeros;
    const std::uint64_t word = padded >> (8 * (8 - width));  // the first digit in byte 0
    const int first = exponent + width - 1;                  // the first digit's exponent
    if (plainIsShorter(count, first)) {
        if (first < 0) {  // 0.0ddd: at most three zeros after the point, or the exponent wins
            store(out, 0x3030303030302e30);  // "0.000000"
            store(out + 1 - first, word);
            return out + 1 - first + count;
        }
        store(out, word);
        if (count <= first + 1) {  // ddd00, below 2^24: at most seven zeros
            store(out + count, 0x3030303030303030);
            return out + first + 1;
        }
        out[first + 1] = '.';
        store(out + first + 2, word >> (8 * (first + 1)));
        return out + count + 1;
    }
    store(out, word);  // d.ddde+XX
    out[1] = '.';
    store(out + 2, word >> 8);
    out += count > 1 ? count + 1 : 1;
    *out++ = 'e';
    *out++ = first < 0 ? '-' : '+';
    std::memcpy(out, kPairs + 2 * (first < 0 ? -first : first), 2);  // |first| < 46
    return out + 2;
}

// Writes the shortest text of a finite value, as std::to_chars writes it, and returns its end.
char* formatShortest(char* out, float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    if ((bits & 0x7fffffff) == 0) {
        return std::to_chars(out, out + kCompactMax, value).ptr;  // "0" or "-0"
    }
    *out = '-';
    out += bits >> 31;
    bits &= 0x7fffffff;
    std::uint32_t digits;
    int exponent;
    shortestDecimal(bits, digits, exponent);
    if (kLittleEndian && digits < 100000000 && bits < 0x4b800000) {
        return layoutEightDigits(out, digits, exponent);
    }
    // Nine digits, 2^24 and above, or a machine that stores words the other way round.
    char text[16];
    const int length = static_cast<int>(std::to_chars(text, text + sizeof text, digits).ptr - text);
    int count = length;
    while (text[count - 1] == '0') {
        --count;
    }
    exponent += length - 1;  // now the first digit's
    const int q = int(bits >> 23) - 150;
    if (q > 0 && q < 40 && plainIsShorter(count, exponent)) {
        // From 2^24 on every float is a whole number, and std::to_chars writes it in full in
        // plain notation: its exact digits, not the shortest ones padded with zeros.
        return std::to_chars(out, out + kCompactMax,
                             std::uint64_t((bits & 0x7fffff) | 0x800000) << q)
            .ptr;
    }
    return layoutDecimal(out, false, text, count, exponent);
}

// Writes `value` (finite) with at most `precision` significant digits (0 counts as 1), laid
// out as the shortest form is, and returns the end.
char* formatCompact(char* out, float value, int precision) {
    char* end = formatShortest(out, value);
    const int wanted = std::max(precision, 1);
    char digits[kCompactMax];
    if (significantDigits(std::string_view(out, std::size_t(end - out)), digits) <= wanted) {
        return end;
    }
    // Round to `wanted` significant digits, then lay the digits out like the shortest form.
    char sci[kCompactMax];
    const char* sciEnd =
        std::to_chars(sci, sci + sizeof sci, value, std::chars_format::scientific, wanted - 1).ptr;
    const std::string_view rounded(sci, std::size_t(sciEnd - sci));
    const std::size_t e = rounded.find('e');
    int exponent = 0;
    std::from_chars(rounded.data() + e + (rounded[e + 1] == '+' ? 2 : 1), sciEnd, exponent);
    const int count = significantDigits(rounded, digits);
    return layoutDecimal(out, value < 0, digits, count, exponent);
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
    const bool fixed = format == FloatFormat::Fixed;
    if ((!fixed && format != FloatFormat::Scientific) || !std::isfinite(value)) {
        char buffer[kCompactMax];
        const char* end = writeCompactFloat(buffer, value, precision);
        out.append(buffer, static_cast<std::size_t>(end - buffer));
        return;
    }
    out += formatWithPrecision(value, precision,
                               fixed ? std::chars_format::fixed : std::chars_format::scientific);
}

char* tqStringUtils::writeCompactFloat(char* out, float value, int precision) {
    // NaN and infinities read the same in every format, whatever the sign of a NaN.
    if (std::isnan(value)) {
        return std::copy_n("nan", 3, out);
    }
    if (std::isinf(value)) {
        return value < 0 ? std::copy_n("-inf", 4, out) : std::copy_n("inf", 3, out);
    }
    return precision < 0 || precision >= 9 ? formatShortest(out, value)
                                           : formatCompact(out, value, precision);
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
