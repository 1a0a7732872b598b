#include "svg/model/detail/SvgNumber.h"
#include "svg/tqSvg.h"

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "CaseFile.h"

using tq::svg::ParseSvgColor;
using tq::svg::ParseSvgNumber;
using tq::svg::Unit;
using tq::svg::UnitValue;

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

// tests/data/model/colours.tsv
TEST(SvgColor, TextsGiveTheirBytesOrARefusal) {
    const auto rows = tq::test::ReadTable("model/colours.tsv");
    ASSERT_GT(rows.size(), 40u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 6u) << testing::PrintToString(row);
        Wm4::Vector4<unsigned char> color(1, 2, 3, 4);
        EXPECT_EQ(ParseSvgColor(row[0], color), row[1] == "ok") << '"' << row[0] << '"';
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(color[i], std::stoi(row[2 + static_cast<std::size_t>(i)]))
                << '"' << row[0] << "\" byte " << i;
        }
    }
}
