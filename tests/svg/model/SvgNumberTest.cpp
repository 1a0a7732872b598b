#include "svg/tqSvg.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

using tq::svg::ParseSvgNumber;

namespace {

// What the conversion must agree with: strtod in the C locale over the whole text, narrowed.
bool reference(const std::string& text, float& out) {
    if (text.empty()) {
        return false;
    }
    char* end = nullptr;
    const double value = strtod_l(text.c_str(), &end, tqStringUtils::msCLocale);
    if (end != text.c_str() + text.size()) {
        return false;
    }
    out = static_cast<float>(value);
    return true;
}

void expectSameAsReference(const std::string& text) {
    float expected = -7.0f;
    float actual = -7.0f;
    const bool ok = reference(text, expected);
    ASSERT_EQ(ParseSvgNumber(text, actual), ok) << '"' << text << '"';
    if (ok) {
        ASSERT_EQ(std::memcmp(&actual, &expected, sizeof actual), 0)
            << '"' << text << "\" gives " << actual << " instead of " << expected;
    } else {
        EXPECT_EQ(actual, -7.0f) << "a refused text must leave the output alone";
    }
}

}  // namespace

TEST(SvgNumber, AcceptsExactlyWhatStrtodConsumesWhole) {
    const char* texts[] = {"0",
                           "-0",
                           "+5",
                           "1.",
                           ".5",
                           "-.5e-3",
                           "1e5",
                           "1E+05",
                           "1e",
                           "1e+",
                           ".",
                           "-",
                           "",
                           " 7",
                           "7 ",
                           "1px",
                           "0x1A",
                           "inf",
                           "-nan",
                           "1e39",
                           "1e-50",
                           "1e400",
                           "00012",
                           "1.2.3",
                           "3.4028235e38",
                           "1.17549435e-38",
                           "123456789012345678901234567890",
                           "0.000000000000000000000000001",
                           "9007199254740993",
                           "1e22",
                           "1e23",
                           "4.9e-324"};
    for (const char* text : texts) {
        expectSameAsReference(text);
    }
}

TEST(SvgNumber, RandomDecimalsConvertBitExactly) {
    std::mt19937 rng(7);
    const auto digits = [&](int n) {
        std::string s;
        for (int i = 0; i < n; ++i) {
            s += static_cast<char>('0' + rng() % 10);
        }
        return s;
    };
    for (int i = 0; i < 200000; ++i) {
        std::string text;
        if (rng() % 3 == 0) {
            text += rng() % 2 ? "-" : "+";
        }
        text += digits(static_cast<int>(rng() % 12));
        if (rng() % 2) {
            text += "." + digits(static_cast<int>(rng() % 12));
        }
        if (rng() % 4 == 0) {
            text += (rng() % 2 ? "e" : "E") + std::string(rng() % 2 ? "-" : "") +
                    std::to_string(rng() % 60);
        }
        expectSameAsReference(text);
        if (HasFatalFailure()) {
            return;
        }
    }
}
