// Documents read into trees or refused with messages, through the manager as a host loads them.
#include "svg/tqSvg.h"

#include <clocale>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

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

const char* const kAllAttributes = R"svg(<svg xmlns="u" viewBox="-1 2 100 50">
    <rect x="1" y="2" width="3" height="4" rx="5" ry="6" fill="red" stroke="none"
          stroke-width="2" opacity="0.5" fill-opacity="0.25" stroke-opacity="0.75"
          class="a b" id="r1" stroke-linecap="square" stroke-linejoin="miter-clip"
          stroke-dasharray="1, 2 3" vector-effect="non-scaling-stroke" transform=" , "/>
    <line x1="1" x2="2" y1="3" y2="4" transform="scale(1)"/>
    <circle r="5" cx="6" cy="7"/>
    <path d="M0 0 L1 1z"/>
    <text x="5" dx="2" y="1" dy="-3" font-size="3" textLength="9" font-family="Sans"
          font-weight="700" font-style="italic" text-decoration="underline"
          xml:space="preserve">hi</text>
    <image x="1" y="2" width="3" height="4" href="a.png" preserveAspectRatio="xMaxYMid"/>
    <g vector-effect="none" stroke-linejoin="round" transform="translate(1 2)"/>
    <text xml:space="default" font-weight="bold"/>
    </svg>)svg";

}  // namespace

TEST_F(Read, DocumentsBecomeTreesOrMessages) {
    const Case cases[] = {
        {kAllAttributes, false,
         "svg viewBox=-1,2,99,52\n"
         "  rect id=\"r1\" opacity=0.5 stroke-width=2 stroke-opacity=0.75 stroke=\"none\" "
         "linecap=2 "
         "linejoin=3 dasharray=[1,2,3] class=\"a b\" fill=\"red\" fill-opacity=0.25 "
         "vector-effect=1 1,2 3,4 r=5,6\n"
         "  line 1,3 2,4\n"
         "  circle 6,7 5\n"
         "  path M0,0 L1,1 Z\n"
         // Position values accumulate: x + dx, y + dy; only "bold" sets bold.
         "  text 7,-2 \"hi\" font-family=\"Sans\" font-size=3 textLength=9 preserve=1 italic=1 "
         "underline=1\n"
         "  image 1,2 3,4 href=\"a.png\" align=6\n"
         "  g transform=1,0,1,0,1,2,0,0,1 linejoin=4 vector-effect=0\n"
         "  text 0,0 \"\" preserve=0 bold=1\n",
         ""},
        // Any supported tag may be the root; a skipped element leaves nothing behind.
        {"<rect/>", false, "rect 0,0 1,1 r=0,0\n", ""},
        {"<?xml version=\"1.0\"?>\n<svg>\n <g><line/></g>\n <svg/>\n</svg>\n", false,
         "svg\n  g\n    line 0,0 0,0\n  svg\n", ""},
        {"<svg><foo><rect/><bar x=\"1\"/></foo><circle/><baz/></svg>", true,
         "svg\n  circle 0,0 0\n",
         "Ignore unsupported tag in svg : \"foo\"\nIgnore unsupported tag in svg : \"baz\""},
        // Text and style sheets are collected verbatim; several sheets are joined.
        {"<svg><text>  a&amp;b<![CDATA[<c>]]>\n</text></svg>", false,
         "svg\n  text 0,0 \"  a&b<c>\\n\"\n", ""},
        {"<svg><style type=\"t\">a{}</style><g/><style>b{}</style><style/></svg>", false,
         "svg style=\"a{}b{}\"\n  g\n", ""},
        {"<svg><style/></svg>", false, "svg\n", ""},
        // An XML parser warning lets the load go on.
        {"<?xml version=\"1.1\"?><svg/>", false, "svg\n",
         "line 1, column 20: Unsupported version '1.1'"},
        // Refusals, strict and lenient.
        {"<svg><foo/></svg>", false, "", "Found unsupported tag in svg : \"foo\""},
        {"<SVG/>", false, "", "Found unsupported tag in svg : \"SVG\""},
        {"<svg:svg xmlns:svg=\"u\"/>", false, "", "Found unsupported tag in svg : \"svg:svg\""},
        {"<svg><rect><rect/></rect></svg>", false, "",
         "Object of type \"rect\" may not contain any child element."},
        {"<svg><text>a<g/></text></svg>", true, "",
         "Object of type \"text\" may not contain any child element."},
        {"<svg><style><g/></style></svg>", false, "",
         "Object of type \"style\" may not contain any child element."},
        {"<g><style>x</style></g>", false, "",
         "<style> tag is only expected if root is an <svg> tag."},
        {"<style>x</style>", true, "", "<style> tag is only expected if root is an <svg> tag."},
        {"<svg><rect width=\"1px\" foo=\"1\"/></svg>", true, "svg\n  rect 0,0 1,1 r=0,0\n",
         "Failed to parse value \"1px\" in attribute \"width\"\n"
         "Ignore Invalid attribute \"width\" with value \"1px\"\n"
         "Ignore unsupported attribute \"foo\" with value \"1\""},
        {"<svg><rect foo=\"1\" bar=\"2\"/></svg>", false, "",
         "Unsupported attribute \"foo\" with value \"1\""},
        {"<svg><rect xml:lang=\"en\"/></svg>", false, "",
         "Unsupported attribute \"xml:lang\" with value \"en\""},
        // The svg element knows only xmlns and viewBox; a group knows nothing of its own.
        {"<svg width=\"100\"/>", false, "", "Unsupported attribute \"width\" with value \"100\""},
        {"<svg width=\"100\"/>", true, "svg\n",
         "Ignore unsupported attribute \"width\" with value \"100\""},
        {"<svg><g x=\"1\"/></svg>", false, "", "Unsupported attribute \"x\" with value \"1\""},
        {"<svg><text foo=\"1\"/></svg>", true, "svg\n  text 0,0 \"\"\n",
         "Ignore unsupported attribute \"foo\" with value \"1\""},
        // Nothing of a transform list that fails is kept.
        {"<svg><rect transform=\"translate(1) spin(2)\"/></svg>", true,
         "svg\n  rect 0,0 1,1 r=0,0\n",
         "Failed to parse transform attribute \"translate(1) spin(2)\", unsupported command "
         "'spin'\nIgnore Invalid attribute \"transform\" with value \"translate(1) spin(2)\""},
        // Only the bare href is an image reference.
        {"<svg><image xmlns:xlink=\"u\" xlink:href=\"a.png\"/></svg>", true,
         "svg\n  image 0,0 0,0 href=\"\"\n",
         "Ignore unsupported attribute \"xmlns:xlink\" with value \"u\"\n"
         "Ignore unsupported attribute \"xlink:href\" with value \"a.png\""},
        // Number lists split at blanks and commas.
        {"<svg viewBox=\" ,1,\t2\r\n3  -4.5e1,\"/>", false, "svg viewBox=1,2,4,-43\n", ""},
    };
    for (const Case& c : cases) {
        expectRead(c);
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

// Every attribute refused by its parser gives the parser's line, then the dispatch line.
TEST_F(Read, RefusedAttributesGiveTheDetailLineThenTheDispatchLine) {
    const struct {
        std::string tag, name, value, detail;
    } cases[] = {
        {"svg", "xmlns", "u", "Attribute \"xmlns\" specified twice"},  // the root has one
        {"svg", "viewBox", "0,0,100", "Wrong number of values for \"viewBox\""},
        {"svg", "viewBox", "1 2 3 4 5", "Wrong number of values for \"viewBox\""},
        {"svg", "viewBox", "0 0 1 a", "Failed to parse value \"a\" in attribute \"viewBox\""},
        {"svg", "viewBox", "0 0 1 2;3", "Failed to parse value \"2;3\" in attribute \"viewBox\""},
        {"rect", "width", "10px", "Failed to parse value \"10px\" in attribute \"width\""},
        {"rect", "height", "", "Failed to parse value \"\" in attribute \"height\""},
        {"circle", "r", "1 ", "Failed to parse value \"1 \" in attribute \"r\""},
        {"line", "x1", "a", "Failed to parse value \"a\" in attribute \"x1\""},
        {"text", "dy", "1e", "Failed to parse value \"1e\" in attribute \"dy\""},
        {"image", "preserveAspectRatio", "xMidYMid meet",
         "Failed to parse value \"xMidYMid meet\" in attribute \"preserveAspectRatio\""},
        {"path", "d", "M0 0 Q1 1 2 2",
         "Malformed path attribute, Unsupported command in path @5 : Q1 1 2 2"},
        {"path", "d", "M 0 0 L", "Malformed path attribute, "},
        {"g", "stroke-opacity", "half",
         "Failed to parse value \"half\" in attribute \"stroke-opacity\""},
        {"rect", "stroke-linecap", "Round",
         "Failed to parse value \"Round\" in attribute \"stroke-linecap\""},
        {"rect", "stroke-linejoin", "mitre",
         "Failed to parse value \"mitre\" in attribute \"stroke-linejoin\""},
        {"rect", "vector-effect", "scale",
         "Failed to parse value \"scale\" in attribute \"vector-effect\""},
        {"rect", "fill", "nocolour", "Failed to parse color \"nocolour\" in attribute \"fill\""},
        {"rect", "stroke-dasharray", "1 x",
         "Failed to parse value \"x\" in attribute \"stroke-dasharray\""},
        {"rect", "transform", "translate 10",
         "Failed to parse transform attribute \"translate 10\", fail to locate '(' / ')'"},
        // Arguments that do not parse: the number list has sent its own line first.
        {"rect", "transform", "rotate(a)",
         "Failed to parse value \"a\" in attribute \"transform\"\nFailed to parse transform "
         "attribute \"rotate(a)\", fail to parse 'rotate' content"},
        // A text reports its unknown attributes itself.
        {"text", "foo", "1", "Ignore unsupported attribute \"foo\" with value \"1\""},
    };
    for (const auto& c : cases) {
        expectRead(
            {"<svg xmlns=\"u\"><" + c.tag + " " + c.name + "=\"" + c.value + "\"/></svg>", false,
             "",
             c.detail + "\nInvalid attribute \"" + c.name + "\" with value \"" + c.value + "\""});
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
