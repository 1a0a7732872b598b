// Path data text into commands: the grammar, its deliberate narrowings and its messages.
#include "svg/tqSvg.h"

#include <utf8.h>

#include <list>
#include <string>

#include <gtest/gtest.h>

#include "TreeEquality.h"

using namespace tq::svg;

namespace {

struct Converted {
    bool ok = false;
    std::string commands;  // "M0,0 L1,1": letter and numbers of each record
    std::string error = "untouched";
};

Converted convert(const std::string& text) {
    std::list<Path::Command> out;
    Converted result;
    result.ok = ConvertPathStringToCommands(text, out, &result.error);
    result.commands = tq::test::CommandsText(out);
    return result;
}

}  // namespace

TEST(PathData, AcceptedTextsGiveOneRecordPerGroupOfNumbers) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {" \n \n", ""},
        {"\nM1 2\n", "M1,2"},
        {"M10,20L30,40", "M10,20 L30,40"},
        {"M1 , 2M3 4", "M1,2 M3,4"},
        // Extra pairs after a moveto are lines, absolute or relative as the moveto.
        {"M1 2 3 4 5 6", "M1,2 L3,4 L5,6"},
        {"M1 2 m5 6 7 8", "M1,2 m5,6 l7,8"},
        // Other commands repeat their own kind; there is no relative close path.
        {"M0 0 Z\nm1 1z", "M0,0 Z m1,1 Z"},
        {"M0 0 H1 2 V3 h4 v5", "M0,0 H1 H2 V3 h4 v5"},
        {"M0 0 C1 2 3 4 5 6 c1 2 3 4 5 6 s4,3,2,1 S1 2 3 4 5 6 7 8",
         "M0,0 C1,2,3,4,5,6 c1,2,3,4,5,6 s4,3,2,1 S1,2,3,4 S5,6,7,8"},
        {"m0 0 l1 2 3 4 L5 6 h1 v2", "m0,0 l1,2 l3,4 L5,6 h1 v2"},
        // Numbers that start with a sign or a point need no separator.
        {"M.5.5", "M0.5,0.5"},
        {"M-1-2", "M-1,-2"},
        {"M1.5.5 1e2 2E-1 +1 -.5e+1", "M1.5,0.5 L100,0.2 L1,-5"},
        // Arcs: seven numbers a group, the flags as 1 or 0.
        {"M0 0 a1,1,0,0,1-5,5", "M0,0 a1,1,0,0,1,-5,5"},
        {"M0 0 A 1 2 30 1 0 5 5 1 2 30 0 1 6 6", "M0,0 A1,2,30,1,0,5,5 A1,2,30,0,1,6,6"},
    };
    for (const auto& [text, commands] : cases) {
        const Converted result = convert(text);
        EXPECT_TRUE(result.ok) << '"' << text << '"';
        EXPECT_EQ(result.error, "untouched") << '"' << text << '"';
        EXPECT_EQ(result.commands, commands) << '"' << text << '"';
    }
}

TEST(PathData, RefusalsKeepTheCommandsBeforeThemAndGiveAPositionedMessage) {
    const struct {
        std::string text, commandsBefore, error;
    } cases[] = {
        // The first command must be a moveto; an incomplete moveto group reports this too.
        {"L 1 2", "", "Expected MoveTo sequence at position 0"},
        {"  L1 2", "", "Expected MoveTo sequence at position 2"},
        {"M", "", "Expected MoveTo sequence at position 1"},
        {"M1 2 3", "", "Expected MoveTo sequence at position 6"},
        {"M1,,2", "", "Expected MoveTo sequence at position 3"},
        {"M0 0 1e5.5", "", "Expected MoveTo sequence at position 10"},
        {"M2.e", "", "Expected MoveTo sequence at position 4"},
        // White space is only blank and line feed.
        {"M10\t20", "", "Expected MoveTo sequence at position 3"},
        {"M0 0\tL1 1", "M0,0", "Unsupported command in path @4 : \tL1 1"},
        {"M0 0\r\nL1 1", "M0,0", "Unsupported command in path @4 : \r\nL1 1"},
        // An incomplete group: nothing of that command is kept.
        {"M0 0 L1", "M0,0", "Unmatched coordinate sequence after L at position 7"},
        {"M0 0 L1e 2", "M0,0", "Unmatched coordinate sequence after L at position 8"},
        {"M0 0 L10 20 30", "M0,0", "Unmatched coordinate sequence after L at position 14"},
        {"M0 0 C1 2 3 4 5", "M0,0", "Unmatched coordinate sequence after C at position 15"},
        // A letter followed by no number is refused with an empty message, deliberately.
        {"M 0 0 L", "M0,0", ""},
        // Unknown letters, quadratic curves included, and commas between groups.
        {"M0 0 L1 1 Q2 2 3 3", "M0,0 L1,1", "Unsupported command in path @10 : Q2 2 3 3"},
        {"M0 0 L1 1 T2 2", "M0,0 L1,1", "Unsupported command in path @10 : T2 2"},
        {"M0 0 \xC3\xA9", "M0,0", "Unsupported command in path @5 : \xC3\xA9"},
        {"M1,2,3,4", "M1,2", "Unsupported command in path @4 : ,3,4"},
        {"M0 0 L1 2,3 4", "M0,0 L1,2", "Unsupported command in path @9 : ,3 4"},
        {"M0 0 z 1 2", "M0,0 Z", "Unsupported command in path @7 : 1 2"},
        // Compact arc flags touch the next number; a partial last group is left unread.
        {"M0 0 a1 1 0 01 5 5", "M0,0",
         "Expected instructions following elliptical-arc at position 6"},
        {"M0 0 a 1 1 0 0 15 5", "M0,0",
         "Expected instructions following elliptical-arc at position 7"},
        {"M0 0 A1 1 0 1.0 0 5 5", "M0,0",
         "Expected instructions following elliptical-arc at position 6"},
        {"M0 0 a", "M0,0", "Expected instructions following elliptical-arc at position 6"},
        {"M0 0 a1 1 0 0 1 5 5 1 1", "M0,0 a1,1,0,0,1,5,5", "Unsupported command in path @20 : 1 1"},
    };
    for (const auto& c : cases) {
        const Converted result = convert(c.text);
        EXPECT_FALSE(result.ok) << '"' << c.text << '"';
        EXPECT_EQ(result.error, c.error) << '"' << c.text << '"';
        EXPECT_EQ(result.commands, c.commandsBefore) << '"' << c.text << '"';
    }
    // Without an error pointer the refusal is only the result.
    std::list<Path::Command> out;
    EXPECT_FALSE(ConvertPathStringToCommands("L1 1", out, nullptr));
}

TEST(PathData, MalformedUtf8ReachedByTheParserThrowsTheDecoderExceptions) {
    std::list<Path::Command> out;
    EXPECT_THROW(ConvertPathStringToCommands("M0 0 \xFF", out, nullptr), utf8::invalid_utf8);
    EXPECT_THROW(ConvertPathStringToCommands("M0 0 \xC3", out, nullptr), utf8::not_enough_room);
    EXPECT_THROW(ConvertPathStringToCommands("M0 0 \xED\xA0\x80", out, nullptr),
                 utf8::invalid_code_point);
    // Bytes that no rule looks at are never decoded.
    EXPECT_NO_THROW(ConvertPathStringToCommands("L\xFF", out, nullptr));
}
