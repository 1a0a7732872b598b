#include "svg/tqSvg.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using namespace tq::svg;

namespace {

using Calls = std::vector<std::pair<char, std::vector<float>>>;

struct Tokenized {
    bool accepted = false;
    Calls calls;
    std::string error;
};

Tokenized tokenize(const std::string& text) {
    Tokenized result;
    PathVisitorStrToTokens visitor(text, [&](char letter, std::vector<float>&& numbers) {
        result.calls.emplace_back(letter, std::move(numbers));
    });
    result.accepted = visitor.visit();
    result.error = visitor.getErrorString();
    return result;
}

}  // namespace

TEST(PathTokenizer, AcceptedTextsReportEachCommandOnceWithAllItsNumbers) {
    const std::pair<std::string, Calls> cases[] = {
        {"", {}},
        {" \n \n", {}},
        {"\nM1 2\n", {{'M', {1, 2}}}},
        {"M 1 2 3 4", {{'M', {1, 2, 3, 4}}}},
        {"M10,20L30,40", {{'M', {10, 20}}, {'L', {30, 40}}}},
        {"m1,2 l1,2 3,4", {{'m', {1, 2}}, {'l', {1, 2, 3, 4}}}},
        {"M1 , 2M3 4", {{'M', {1, 2}}, {'M', {3, 4}}}},
        {"M0 0 Z\nm1 1z", {{'M', {0, 0}}, {'Z', {}}, {'m', {1, 1}}, {'z', {}}}},
        {"M0 0 H1 2 V3 h4 v5", {{'M', {0, 0}}, {'H', {1, 2}}, {'V', {3}}, {'h', {4}}, {'v', {5}}}},
        {"M0 0 C1 2 3 4 5 6 s4,3,2,1",
         {{'M', {0, 0}}, {'C', {1, 2, 3, 4, 5, 6}}, {'s', {4, 3, 2, 1}}}},
        // Numbers that start with a sign or a point need no separator.
        {"M.5.5", {{'M', {0.5f, 0.5f}}}},
        {"M-1-2", {{'M', {-1, -2}}}},
        {"M1.5.5 1e2 2E-1 +1 -.5e+1", {{'M', {1.5f, 0.5f, 100, 0.2f, 1, -5}}}},
        // Arcs: seven numbers a group, the flags as 1 or 0.
        {"M0 0 a1 1 0 0 1 5 5", {{'M', {0, 0}}, {'a', {1, 1, 0, 0, 1, 5, 5}}}},
        {"M0 0 a1,1,0,0,1-5,5", {{'M', {0, 0}}, {'a', {1, 1, 0, 0, 1, -5, 5}}}},
        {"M0 0 A 1 2 30 1 0 5 5 1 2 30 0 1 6 6",
         {{'M', {0, 0}}, {'A', {1, 2, 30, 1, 0, 5, 5, 1, 2, 30, 0, 1, 6, 6}}}},
    };
    for (const auto& [text, calls] : cases) {
        SCOPED_TRACE("path \"" + text + "\"");
        const Tokenized result = tokenize(text);
        EXPECT_TRUE(result.accepted);
        EXPECT_EQ(result.error, "");
        EXPECT_EQ(result.calls, calls);
    }
}

TEST(PathTokenizer, RefusalsCarryTheirPositionedMessage) {
    const Calls none;
    const Calls m00 = {{'M', {0, 0}}};
    const struct {
        std::string text;
        std::string error;
        Calls callsBeforeRefusal;
    } cases[] = {
        // The first command must be a moveto; an incomplete moveto group reports this too.
        {"L 1 2", "Expected MoveTo sequence at position 0", none},
        {"  L1 2", "Expected MoveTo sequence at position 2", none},
        {"M", "Expected MoveTo sequence at position 1", none},
        {"M1 2 3", "Expected MoveTo sequence at position 6", none},
        {"M1,,2", "Expected MoveTo sequence at position 3", none},
        {"M0 0 1e5.5", "Expected MoveTo sequence at position 10", none},
        {"M-", "Expected MoveTo sequence at position 2", none},
        {"M2.e", "Expected MoveTo sequence at position 4", none},
        // White space is only blank and line feed.
        {"M10\t20", "Expected MoveTo sequence at position 3", none},
        {"M0 0\tL1 1", "Unsupported command in path @4 : \tL1 1", m00},
        {"M0 0\r\nL1 1", "Unsupported command in path @4 : \r\nL1 1", m00},
        // An incomplete group: nothing of that command reaches the callback.
        {"M0 0 L1", "Unmatched coordinate sequence after L at position 7", m00},
        {"M0 0 L1e 2", "Unmatched coordinate sequence after L at position 8", m00},
        {"M0 0 L10 20 30", "Unmatched coordinate sequence after L at position 14", m00},
        {"M0 0 C1 2 3 4 5", "Unmatched coordinate sequence after C at position 15", m00},
        // A letter followed by no number is refused without a message, deliberately.
        {"M 0 0 L", "", m00},
        // Unknown letters, quadratic curves included, and commas between groups.
        {"M0 0 Q1 1 2 2", "Unsupported command in path @5 : Q1 1 2 2", m00},
        {"M0 0 L1 1 T2 2",
         "Unsupported command in path @10 : T2 2",
         {{'M', {0, 0}}, {'L', {1, 1}}}},
        {"M0 0 \xC3\xA9", "Unsupported command in path @5 : \xC3\xA9", m00},
        {"M1,2,3,4", "Unsupported command in path @4 : ,3,4", {{'M', {1, 2}}}},
        {"M0 0 L1 2,3 4", "Unsupported command in path @9 : ,3 4", {{'M', {0, 0}}, {'L', {1, 2}}}},
        {"M0 0 z 1 2", "Unsupported command in path @7 : 1 2", {{'M', {0, 0}}, {'z', {}}}},
        // Compact arc flags touch the next number; a partial last group is left unread.
        {"M0 0 a1 1 0 01 5 5", "Expected instructions following elliptical-arc at position 6", m00},
        {"M0 0 a 1 1 0 0 15 5", "Expected instructions following elliptical-arc at position 7",
         m00},
        {"M0 0 A1 1 0 1.0 0 5 5", "Expected instructions following elliptical-arc at position 6",
         m00},
        {"M0 0 a", "Expected instructions following elliptical-arc at position 6", m00},
        {"M0 0 a1 1 0 0 1 5 5 1 1",
         "Unsupported command in path @20 : 1 1",
         {{'M', {0, 0}}, {'a', {1, 1, 0, 0, 1, 5, 5}}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE("path \"" + c.text + "\"");
        const Tokenized result = tokenize(c.text);
        EXPECT_FALSE(result.accepted);
        EXPECT_EQ(result.error, c.error);
        EXPECT_EQ(result.calls, c.callsBeforeRefusal);
    }
}
