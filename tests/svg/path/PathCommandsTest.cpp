#include "svg/tqSvg.h"

#include <utf8.h>

#include <iterator>
#include <list>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "PathCommandPrinter.h"

using namespace tq::svg;

namespace {

using T = Path::CommandType;
using Commands = std::vector<Path::Command>;

Commands asVector(const std::list<Path::Command>& list) {
    return Commands(list.begin(), list.end());
}

}  // namespace

TEST(PathCommands, TextsBecomeOneRecordPerGroupOfNumbers) {
    const std::pair<std::string, Commands> cases[] = {
        {"", {}},
        {"M0 0z", {{T::MoveTo, {0, 0}}, {T::ClosePath, {}}}},
        // Extra pairs after a moveto are lines, absolute or relative as the moveto.
        {"M1 2 3 4 5 6", {{T::MoveTo, {1, 2}}, {T::LineTo, {3, 4}}, {T::LineTo, {5, 6}}}},
        {"M1 2 m5 6 7 8", {{T::MoveTo, {1, 2}}, {T::MoveToRel, {5, 6}}, {T::LineToRel, {7, 8}}}},
        // Other commands repeat their own kind.
        {"M0 0 H1 2 3",
         {{T::MoveTo, {0, 0}}, {T::HLineTo, {1}}, {T::HLineTo, {2}}, {T::HLineTo, {3}}}},
        {"M0 0 L1 2 3 4", {{T::MoveTo, {0, 0}}, {T::LineTo, {1, 2}}, {T::LineTo, {3, 4}}}},
        {"M0 0 a1 2 3 0 1 4 5 6 7 8 1 0 9 10",
         {{T::MoveTo, {0, 0}},
          {T::EllipticalArcRel, {1, 2, 3, 0, 1, 4, 5}},
          {T::EllipticalArcRel, {6, 7, 8, 1, 0, 9, 10}}}},
        {"M0 0 S1 2 3 4 5 6 7 8",
         {{T::MoveTo, {0, 0}},
          {T::SmoothCubicBezier, {1, 2, 3, 4}},
          {T::SmoothCubicBezier, {5, 6, 7, 8}}}},
    };
    for (const auto& [text, commands] : cases) {
        SCOPED_TRACE("path \"" + text + "\"");
        std::list<Path::Command> out;
        std::string error = "untouched";
        EXPECT_TRUE(ConvertPathStringToCommands(text, out, &error));
        EXPECT_EQ(error, "untouched");
        EXPECT_EQ(asVector(out), commands);
    }
}

TEST(PathCommands, EveryLetterOfTheLetterTableReadsBackAsItsKind) {
    ASSERT_STREQ(Path::CommandLetters, "MmLlAaHhVvCcSsZ");
    const std::vector<float> two = {1, 2}, one = {1}, arc = {1, 2, 3, 1, 0, 6, 7};
    const std::vector<float> cubic = {1, 2, 3, 4, 5, 6}, smooth = {1, 2, 3, 4}, none;
    const std::vector<float> groups[] = {two, two, two,   two,   arc,    arc,    one, one,
                                         one, one, cubic, cubic, smooth, smooth, none};
    for (std::size_t kind = 0; kind < std::size(groups); ++kind) {
        std::string text = std::string("M9 9 ") + Path::CommandLetters[kind];
        for (float n : groups[kind]) {
            text += " " + std::to_string(static_cast<int>(n));
        }
        SCOPED_TRACE(text);
        std::list<Path::Command> out = {{T::LineTo, {7, 8}}};  // kept in front
        ASSERT_TRUE(ConvertPathStringToCommands(text, out, nullptr));
        EXPECT_EQ(asVector(out), (Commands{{T::LineTo, {7, 8}},
                                           {T::MoveTo, {9, 9}},
                                           {static_cast<T>(kind), groups[kind]}}));
    }
    // There is no relative close path: "z" is read as the one ClosePath kind.
    std::list<Path::Command> out;
    ASSERT_TRUE(ConvertPathStringToCommands("M0 0 z", out, nullptr));
    EXPECT_EQ(out.back().type, T::ClosePath);
}

TEST(PathCommands, RefusalKeepsTheCommandsReadBeforeItAndReportsTheMessage) {
    std::list<Path::Command> out;
    std::string error;
    EXPECT_FALSE(ConvertPathStringToCommands("M0 0 L1 1 Q2 2 3 3", out, &error));
    EXPECT_EQ(asVector(out), (Commands{{T::MoveTo, {0, 0}}, {T::LineTo, {1, 1}}}));
    EXPECT_EQ(error, "Unsupported command in path @10 : Q2 2 3 3");

    // A letter without numbers is refused with an empty message, which replaces the old text.
    out.clear();
    error = "old text";
    EXPECT_FALSE(ConvertPathStringToCommands("M0 0 L", out, &error));
    EXPECT_EQ(error, "");
    EXPECT_EQ(asVector(out), (Commands{{T::MoveTo, {0, 0}}}));

    // Without an error pointer the refusal is only the result.
    out.clear();
    EXPECT_FALSE(ConvertPathStringToCommands("L1 1", out, nullptr));
    EXPECT_TRUE(out.empty());

    std::list<Path::Command> direct;
    PathVisitorStrToCommands visitor("M1 2 L3", direct);
    EXPECT_FALSE(visitor.visit());
    EXPECT_EQ(visitor.getErrorString(), "Unmatched coordinate sequence after L at position 7");
    EXPECT_EQ(asVector(direct), (Commands{{T::MoveTo, {1, 2}}}));
}

TEST(PathCommands, MalformedUtf8ReachedByTheParserThrowsTheDecoderExceptions) {
    std::list<Path::Command> out;
    std::string error;
    EXPECT_THROW(ConvertPathStringToCommands("M0 0 \xFF", out, &error), utf8::invalid_utf8);
    EXPECT_THROW(ConvertPathStringToCommands("M0 0 \xC3", out, &error), utf8::not_enough_room);
    EXPECT_THROW(ConvertPathStringToCommands("M0 0 \xED\xA0\x80", out, &error),
                 utf8::invalid_code_point);
    // Bytes that no rule looks at are never decoded.
    EXPECT_NO_THROW(ConvertPathStringToCommands("L\xFF", out, &error));
}
