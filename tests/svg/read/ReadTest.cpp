// Documents read into trees or refused with messages, through the manager as a host loads them;
// the cases are under tests/data/read.
#include "svg/read/detail/AttributeParsers.h"
#include "svg/tqSvg.h"

#include <clocale>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "CaseFile.h"
#include "LibraryTest.h"
#include "TreeEquality.h"

using namespace tq::svg;
using tq::test::CanonicalText;
using Wm4::Matrix3f;

namespace {

class Read : public tq::test::LibraryTest {
protected:
    struct Case {
        std::string document;
        bool ignoreUnsupported;
        // The tree as canonical text when the load succeeds; empty when it must fail (and leave
        // the caller's pointer as it was).
        std::string tree;
        std::string messages;  // one a line; warnings are marked by their text
    };

    static void expectRead(const Case& c) {
        SCOPED_TRACE(c.document + (c.ignoreUnsupported ? " (ignoring unsupported)" : ""));
        const tq::test::Item sentinel = std::make_shared<Rect>();
        const tq::test::Loaded result = load(c.document, c.ignoreUnsupported, sentinel);
        EXPECT_EQ(result.ok, !c.tree.empty());
        EXPECT_EQ(result.ok ? CanonicalText(result.root.get()) : "", c.tree);
        if (!result.ok) {
            EXPECT_EQ(result.root, sentinel);
        }
        EXPECT_EQ(result.messages, c.messages);
    }
};

}  // namespace

TEST_F(Read, DocumentsBecomeTreesOrMessages) {
    const auto blocks = tq::test::ReadBlocks("read/documents.txt");
    ASSERT_GT(blocks.size(), 20u);
    for (const auto& block : blocks) {
        const auto section = [&](const char* name) {
            const auto it = block.sections.find(name);
            return it == block.sections.end() ? std::string() : it->second;
        };
        const std::string tree = section("tree");
        expectRead({section("document"), block.title.rfind("lenient", 0) == 0,
                    tree.empty() ? tree : tree + "\n", section("messages")});
    }
}

TEST_F(Read, MalformedDocumentsFailWithTheXmlParsersText) {
    for (const char* text : {"<svg><rect></svg>", "", "   ", "<svg>", "<?xml version=\"1.0\"?>",
                             "<svg><path d=\"M0 0 \xFF\"/></svg>"}) {
        for (bool ignore : {false, true}) {
            const tq::test::Item sentinel = std::make_shared<Rect>();
            const tq::test::Loaded result = load(text, ignore, sentinel);
            EXPECT_FALSE(result.ok) << text;
            EXPECT_EQ(result.root, sentinel) << text;
            EXPECT_NE(result.messages, "") << text;
        }
    }
    EXPECT_NE(load("<svg><rect></svg>", true).messages.find("mismatch"), std::string::npos);
}

TEST_F(Read, RefusedAttributesGiveTheParsersLinesThenTheDispatchLine) {
    const auto rows = tq::test::ReadTable("read/refused_attributes.tsv");
    ASSERT_GT(rows.size(), 20u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 4u) << testing::PrintToString(row);
        const auto& [element, name, value, lines] = std::tie(row[0], row[1], row[2], row[3]);
        expectRead({"<svg xmlns=\"u\"><" + element + " " + name + "=\"" + value + "\"/></svg>",
                    false, "",
                    lines + "\nInvalid attribute \"" + name + "\" with value \"" + value + "\""});
    }
}

TEST_F(Read, TransformListsComposeLeftmostCommandOutermost) {
    const std::pair<std::string, Matrix3f> cases[] = {
        {"", Matrix3f::IDENTITY},
        {"translate(10)", Matrix3f(1, 0, 10, 0, 1, 0, 0, 0, 1)},
        {"translate(10,-5)", Matrix3f(1, 0, 10, 0, 1, -5, 0, 0, 1)},
        {"scale(2 3)", Matrix3f(2, 0, 0, 0, 3, 0, 0, 0, 1)},
        {"rotate(30)", Matrix3f(0.8660254f, -0.5f, 0, 0.5f, 0.8660254f, 0, 0, 0, 1)},
        // The centre goes straight into the translation column, deliberately.
        {"rotate(90 5 6)", Matrix3f(0, -1, 5, 1, 0, 6, 0, 0, 1)},
        {"matrix(1 2 3 4 5 6)", Matrix3f(1, 3, 5, 2, 4, 6, 0, 0, 1)},
        {"skewX(45)", Matrix3f(1, 1, 0, 0, 1, 0, 0, 0, 1)},
        {"skewY(45)", Matrix3f(1, 0, 0, 1, 1, 0, 0, 0, 1)},
        {"scale(3),translate(1 2)", Matrix3f(3, 0, 3, 0, 3, 6, 0, 0, 1)},
        {" translate \t\n(1)\n,scale(2)", Matrix3f(2, 0, 1, 0, 2, 0, 0, 0, 1)},
    };
    for (const auto& [text, expected] : cases) {
        std::vector<std::string> messages;
        Matrix3f out(true);
        ASSERT_TRUE(ParseTransformList(text, out, [&](const std::string& m) {
            messages.push_back(m);
        })) << text;
        EXPECT_TRUE(messages.empty()) << text;
        for (int i = 0; i < 9; ++i) {
            EXPECT_NEAR(out(i / 3, i % 3), expected(i / 3, i % 3), 1e-6) << text << " m" << i;
        }
    }
}

TEST_F(Read, LocaleWithDecimalCommaDoesNotChangeHowNumbersRead) {
    std::string locale;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8"}) {
        if (std::setlocale(LC_ALL, name) != nullptr &&
            std::string(std::localeconv()->decimal_point) == ",") {
            locale = name;
            break;
        }
    }
    if (locale.empty()) {
        std::setlocale(LC_ALL, "C");
        GTEST_SKIP() << "no locale with a decimal comma is installed (scripts/setup.sh makes one)";
    }
    const tq::test::Loaded result = load(
        "<svg viewBox=\"0 0 1.5 2.5\"><rect x=\"1.5\" y=\" 2.5\" width=\"+0.5\" "
        "stroke-width=\"0.25\" transform=\"translate(1.5 -2.5)\"/>"
        "<path d=\"M1.5 2.5e-1\"/></svg>");
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(CanonicalText(result.root.get()),
              "svg viewBox=0,0,1.5,2.5\n"
              "  rect transform=1,0,1.5,0,1,-2.5,0,0,1 stroke-width=0.25 1.5,2.5 0.5,1 r=0,0\n"
              "  path M1.5,0.25\n")
        << locale;
}
