#include "svg/tqSvg.h"

#include <utf8.h>

#include <list>
#include <string>

#include <gtest/gtest.h>

#include "CaseFile.h"
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

// The grammar, its deliberate narrowings and its messages: tests/data/path/grammar.tsv.
TEST(PathData, TextsBecomeCommandsOrARefusalThatKeepsTheCommandsBefore) {
    const auto rows = tq::test::ReadTable("path/grammar.tsv");
    ASSERT_GT(rows.size(), 40u);
    for (const auto& row : rows) {
        ASSERT_GE(row.size(), row[0] == "ok" ? 3u : 4u) << testing::PrintToString(row);
        const Converted result = convert(row[1]);
        const std::string text = testing::PrintToString(row[1]);
        EXPECT_EQ(result.ok, row[0] == "ok") << text;
        EXPECT_EQ(result.commands, row[2]) << text;
        EXPECT_EQ(result.error, row[0] == "ok" ? "untouched" : row[3]) << text;
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
