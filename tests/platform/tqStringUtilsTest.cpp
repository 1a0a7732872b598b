#include <tqSystem/tqStringUtils.h>

#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

using Format = tqStringUtils::FloatFormat;

namespace {

float readBack(const std::string& text) {
    float value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    EXPECT_EQ(result.ec, std::errc()) << text;
    EXPECT_EQ(result.ptr, text.data() + text.size()) << text;
    return value;
}

std::uint32_t bitsOf(float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// Significant digits of a decimal text: leading and trailing zeros of the mantissa do not count.
std::size_t significantDigits(const std::string& text) {
    std::string digits;
    for (char c : text.substr(0, text.find('e'))) {
        if (c >= '0' && c <= '9') {
            digits += c;
        }
    }
    const auto first = digits.find_first_not_of('0');
    if (first == std::string::npos) {
        return 1;
    }
    return digits.find_last_not_of('0') - first + 1;
}

// Finite floats that stress the formatter: extremes, denormals, powers of ten, random bits.
std::vector<float> interestingFloats() {
    const float least = std::numeric_limits<float>::min();
    const float denormal = std::numeric_limits<float>::denorm_min();
    std::vector<float> values = {0.0f,      -0.0f,        1.0f,          -1.0f,       0.1f,
                                 0.2f,      0.3f,         1e-5f,         1e20f,       123456.0f,
                                 least,     denormal,     16777216.0f,   16777217.0f, 3.4028235e38f,
                                 -1.4e-45f, 9.999999e-5f, -3.4028235e38f};
    for (int e = -45; e <= 38; ++e) {
        values.push_back(std::strtof(("1e" + std::to_string(e)).c_str(), nullptr));
    }
    std::mt19937 rng(20261122);
    while (values.size() < 20000) {
        const std::uint32_t bits = rng();
        float value;
        std::memcpy(&value, &bits, sizeof value);
        if (std::isfinite(value)) {
            values.push_back(value);
        }
    }
    return values;
}

}  // namespace

TEST(FromFloatCompact, ShortestTextReadsBackBitExactAndCannotBeShorter) {
    for (float value : interestingFloats()) {
        const std::string text = tqStringUtils::fromFloat(value, -1, Format::Compact);
        ASSERT_EQ(bitsOf(readBack(text)), bitsOf(value)) << text;
        // Not longer than the shortest exponent form, and that form has no digit to spare:
        // one significant digit fewer, correctly rounded, no longer reads back.
        char sci[64];
        const auto s = std::to_chars(sci, sci + sizeof sci, value, std::chars_format::scientific);
        const std::string scientific(sci, s.ptr);
        EXPECT_LE(text.size(), scientific.size()) << text;
        const std::size_t digits = significantDigits(scientific);
        if (digits > 1) {
            char shorter[64];
            const auto r =
                std::to_chars(shorter, shorter + sizeof shorter, value,
                              std::chars_format::scientific, static_cast<int>(digits) - 2);
            EXPECT_NE(bitsOf(readBack(std::string(shorter, r.ptr))), bitsOf(value)) << text;
        }
        // Every precision of 9 or more is the shortest text too.
        EXPECT_EQ(tqStringUtils::fromFloat(value, 9, Format::Compact), text);
    }
}

// The shortest text has a fast path of its own for numbers of a few digits; it must write
// exactly what std::to_chars writes, over the whole float range and densely where drawings'
// numbers lie (decimals of up to six digits).
TEST(FromFloatCompact, ShortestTextIsStdToChars) {
    std::vector<float> values;
    for (std::uint64_t bits = 0; bits <= 0xffffffffu; bits += 4093) {
        const auto pattern = static_cast<std::uint32_t>(bits);
        float value;
        std::memcpy(&value, &pattern, sizeof value);
        values.push_back(value);
    }
    for (int k = -30000; k <= 30000; k += 7) {
        for (double scale : {1.0, 10.0, 100.0, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9}) {
            values.push_back(static_cast<float>(k / scale));
            values.push_back(static_cast<float>(k * scale));
        }
    }
    for (float edge : {1e-5f, 9.99999e-6f, 16777215.0f, 16777216.0f, 999999.5f, 999999.4f,
                       99999.95f, 0.001f, 0.000999999f, 100000.0f, 1e6f}) {
        values.push_back(edge);
        values.push_back(std::nextafter(edge, 0.0f));
        values.push_back(std::nextafter(edge, 1e30f));
    }
    for (float value : values) {
        if (!std::isfinite(value)) {
            continue;
        }
        char expected[64];
        const auto end = std::to_chars(expected, expected + sizeof expected, value).ptr;
        ASSERT_EQ(tqStringUtils::fromFloat(value, -1, Format::Compact), std::string(expected, end))
            << "bits " << std::hex << bitsOf(value);
    }
}

TEST(FromFloatCompact, LimitedPrecisionKeepsAtMostThatManyDigits) {
    for (float value : interestingFloats()) {
        const std::string shortest = tqStringUtils::fromFloat(value, -1, Format::Compact);
        for (int precision = 0; precision <= 8; ++precision) {
            const std::string text = tqStringUtils::fromFloat(value, precision, Format::Compact);
            const std::size_t digits = significantDigits(text);
            EXPECT_LE(digits, static_cast<std::size_t>(std::max(precision, 1))) << text;
            EXPECT_LE(digits, significantDigits(shortest)) << text << " vs " << shortest;
            // Either the shortest text itself, or the correctly rounded p-digit decimal.
            if (significantDigits(shortest) <= static_cast<std::size_t>(std::max(precision, 1))) {
                EXPECT_EQ(text, shortest);
            } else {
                char rounded[64];
                const auto r =
                    std::to_chars(rounded, rounded + sizeof rounded, value,
                                  std::chars_format::scientific, std::max(precision, 1) - 1);
                EXPECT_EQ(std::strtod(text.c_str(), nullptr),
                          std::strtod(std::string(rounded, r.ptr).c_str(), nullptr))
                    << text;
            }
        }
    }
}

TEST(FromFloatCompact, Examples) {
    struct Case {
        float value;
        int precision;
        const char* text;
    };
    const Case cases[] = {
        {0.1f, -1, "0.1"},
        {1e20f, -1, "1e+20"},
        {1e-5f, -1, "1e-05"},
        {-0.0f, -1, "-0"},
        {3.14159f, 3, "3.14"},
        {123456.0f, 3, "123000"},
        {1.5e9f, 1, "2e+09"},
        {9.99f, 2, "10"},
        {0.000123f, 2, "0.00012"},
        {std::numeric_limits<float>::quiet_NaN(), -1, "nan"},
        {-std::numeric_limits<float>::quiet_NaN(), 3, "nan"},
        {std::numeric_limits<float>::infinity(), -1, "inf"},
        {-std::numeric_limits<float>::infinity(), 5, "-inf"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(tqStringUtils::fromFloat(c.value, c.precision, Format::Compact), c.text)
            << c.value << " precision " << c.precision;
    }
}

TEST(IsUtf8String, AcceptsOnlyStrictUtf8) {
    const std::pair<std::string, bool> cases[] = {
        {"", true},
        {"\xC3\xA9t\xE2\x82\xAC \xF0\x9F\x98\x80", true},
        {"\xF4\x8F\xBF\xBF", true},      // U+10FFFF
        {std::string("a\0b", 3), true},  // NUL is a code point
        {"\xC0\xAF", false},             // overlong
        {"\xF0\x80\x80\xAF", false},     // overlong
        {"\xED\xA0\x80", false},         // surrogate
        {"\xF4\x90\x80\x80", false},     // above U+10FFFF
        {"\xE2\x82", false},             // truncated
        {"\x80", false},                 // lone continuation
        {"\xFF", false},
    };
    for (const auto& [bytes, valid] : cases) {
        EXPECT_EQ(tqStringUtils::IsUtf8String(bytes), valid) << testing::PrintToString(bytes);
    }
}
