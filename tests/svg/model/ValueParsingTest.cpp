#include "svg/tqSvg.h"

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include <gtest/gtest.h>

using tq::svg::ParseSvgColor;
using tq::svg::ParseSvgNumber;
using tq::svg::Unit;
using tq::svg::UnitValue;

namespace {

using Bytes = std::array<int, 4>;

struct ColorCase {
    std::string text;
    bool ok;
    Bytes expected;  // also what a failure leaves behind
};

void PrintTo(const ColorCase& c, std::ostream* os) {
    *os << '"' << c.text << '"';
}

class SvgColorParse : public testing::TestWithParam<ColorCase> {};

TEST_P(SvgColorParse, GivesTheExpectedBytes) {
    const ColorCase& c = GetParam();
    Wm4::Vector4<unsigned char> color(1, 2, 3, 4);
    EXPECT_EQ(ParseSvgColor(c.text, color), c.ok);
    EXPECT_EQ((Bytes{color[0], color[1], color[2], color[3]}), c.expected);
}

const ColorCase kHexCases[] = {
    {"#ff0000", true, {255, 0, 0, 255}},    {"#f00", true, {255, 0, 0, 255}},
    {"#12345678", true, {18, 52, 86, 120}}, {"#1234", true, {17, 34, 51, 68}},
    {"#ff00", true, {255, 255, 0, 0}},  // five bytes: four one-digit channels
    {"#zz0000", true, {0, 0, 0, 255}},  // digits are not validated
    {"#1z2233", true, {1, 34, 51, 255}},    {"#ff000", false, {255, 0, 0, 255}},
    {"#", false, {255, 0, 0, 255}},         {"ff0000", false, {255, 0, 0, 255}},
    {" #ff0000", false, {255, 0, 0, 255}},
};
INSTANTIATE_TEST_SUITE_P(Hex, SvgColorParse, testing::ValuesIn(kHexCases));

const ColorCase kFunctionalCases[] = {
    {"rgb(10, 20, 30)", true, {10, 20, 30, 255}},
    {"rgb(10 20 30)", true, {10, 20, 30, 255}},
    {"rgb(10,,20,30)", true, {10, 20, 30, 255}},
    {"rgb(0x10,010,1)", true, {16, 8, 1, 255}},
    {"rgb(100%,50%,0%)", true, {254, 127, 0, 255}},  // truncated, never rounded
    {"rgb(12.5%,20%,40%)", true, {31, 51, 102, 255}},
    {"rgb(110%,200%,-1%)", true, {24, 253, 254, 255}},  // low byte of the truncation
    {"rgba(1,2,3,128)", true, {1, 2, 3, 128}},
    {"rgba(1,2,3,50%)", true, {1, 2, 3, 127}},
    {"rgba(1,2,3,0.5)", false, {1, 2, 3, 255}},
    {"rgba(1,2,3)", false, {255, 0, 0, 255}},
    {"rgb(10,20)", false, {255, 0, 0, 255}},
    {"rgb(256,0,0)", false, {255, 0, 0, 255}},
    {"rgb(10,-1,0)", false, {10, 0, 0, 255}},  // channels before the failure stay written
    {"rgb(10,20,1.5)", false, {10, 20, 0, 255}},
    {"rgb(10,20,x%)", false, {10, 20, 0, 255}},
    {"rgb(0x,0,0)", false, {255, 0, 0, 255}},
    {"rgb(10,20,30) ", false, {255, 0, 0, 255}},
    {"rgb(10;20;30)", false, {255, 0, 0, 255}},
};
INSTANTIATE_TEST_SUITE_P(Functional, SvgColorParse, testing::ValuesIn(kFunctionalCases));

const ColorCase kKeywordCases[] = {
    {"aliceblue", true, {240, 248, 255, 255}},
    {"black", true, {0, 0, 0, 255}},
    {"rebeccapurple", true, {102, 51, 153, 255}},
    {"gray", true, {128, 128, 128, 255}},
    {"grey", true, {128, 128, 128, 255}},
    {"darkgrey", true, {169, 169, 169, 255}},
    {"yellowgreen", true, {154, 205, 50, 255}},
    {"transparent", false, {255, 0, 0, 255}},
    {"none", false, {255, 0, 0, 255}},
    {"Red", false, {255, 0, 0, 255}},
    {" red", false, {255, 0, 0, 255}},
    {"", false, {255, 0, 0, 255}},
    {"bluee", false, {255, 0, 0, 255}},
};
INSTANTIATE_TEST_SUITE_P(Keyword, SvgColorParse, testing::ValuesIn(kKeywordCases));

}  // namespace

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
    // Separated by '|', since blanks around a number matter.
    const std::string texts =
        "0|-0|+5|1.|.5|-.5e-3|1e5|1E+05|1e|1e+|.|-|| 7|7 |1px|0x1A|inf|-nan|1e39|1e-50|"
        "1e400|00012|1.2.3|3.4028235e38|1.17549435e-38|123456789012345678901234567890|"
        "0.000000000000000000000000001|9007199254740993|1e22|1e23|4.9e-324";
    std::size_t from = 0;
    for (std::size_t bar = 0; bar != std::string::npos; from = bar + 1) {
        bar = texts.find('|', from);
        expectSameAsReference(texts.substr(from, bar - from));
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

TEST(UnitValue, ParsesNumbersWithTheirUnit) {
    struct Case {
        const char* text;
        float value;
        Unit unit;
    };
    const Case cases[] = {
        {"10", 10, Unit::None},     {"2.5mm", 2.5f, Unit::Mm}, {"50 %", 50, Unit::Percent},
        {"1e2px", 100, Unit::Px},   {"12 px  ", 12, Unit::Px}, {"1.5em", 1.5f, Unit::Em},
        {"-3pt", -3, Unit::Pt},     {"4cm", 4, Unit::Cm},      {"\t 7in\r\n", 7, Unit::In},
        {"  .5", 0.5f, Unit::None}, {"", 0, Unit::None},       {"px", 0, Unit::Px},
    };
    for (const Case& c : cases) {
        UnitValue out(-99, Unit::Count);
        EXPECT_TRUE(UnitValue::parseVal(c.text, out)) << '"' << c.text << '"';
        EXPECT_EQ(out, UnitValue(c.value, c.unit)) << '"' << c.text << '"';
    }
    for (const char* text : {"abc", "10qq", "10PX", "10 px x", "1,5", "5 5px", "px10"}) {
        UnitValue out(42, Unit::Cm);
        EXPECT_FALSE(UnitValue::parseVal(text, out)) << '"' << text << '"';
        EXPECT_EQ(out, UnitValue(42, Unit::Cm)) << "left unchanged for \"" << text << '"';
    }
}
