#include "svg/tqSvg.h"

#include <array>
#include <string>

#include <gtest/gtest.h>

using tq::svg::ParseSvgColor;

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
    {"red", true, {255, 0, 0, 255}},
    {"rebeccapurple", true, {102, 51, 153, 255}},
    {"gray", true, {128, 128, 128, 255}},
    {"grey", true, {128, 128, 128, 255}},
    {"darkgrey", true, {169, 169, 169, 255}},
    {"darkslategrey", true, {47, 79, 79, 255}},
    {"lightgoldenrodyellow", true, {250, 250, 210, 255}},
    {"mediumvioletred", true, {199, 21, 133, 255}},
    {"navajowhite", true, {255, 222, 173, 255}},
    {"fuchsia", true, {255, 0, 255, 255}},
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
