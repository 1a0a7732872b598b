#include "svg/tqSvg.h"

#include <clocale>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace tq::svg;
using Strings = std::vector<std::string>;
using Item = ItemInterfacePointer<ItemInterface>;
using Types = std::vector<ItemType>;
using tq::xml::StartElementResult;

namespace {

// Errors as they are, warnings marked, in the order they were raised.
Loader::MessageCallback collect(Strings& messages, const std::string& mark = "") {
    return [&messages, mark](const std::string& text) { messages.push_back(mark + text); };
}

struct Parsed {
    bool ok = false;
    Item root;
    Strings messages;
};

Parsed parse(const std::string& text, bool ignoreUnsupported = false, Item initial = nullptr) {
    Parsed result;
    result.root = std::move(initial);
    tqIoDeviceMemory device(text);
    LoadOptions options;
    options.ignoreUnsupported = ignoreUnsupported;
    Loader loader(result.root, device, options, collect(result.messages),
                  collect(result.messages, "warning: "));
    result.ok = loader.getParseResult();
    return result;
}

std::string lines(const Strings& messages) {
    std::string text;
    for (const auto& message : messages) {
        text += (text.empty() ? "" : "\n") + message;
    }
    return text;
}

Types childTypes(const ItemInterface& item) {
    Types types;
    for (const auto& child : dynamic_cast<const Node&>(item).getChildren()) {
        types.push_back(child ? child->getType() : static_cast<ItemType>(255));  // 255: null
    }
    return types;
}

const ItemInterface& firstChild(const ItemInterface& item) {
    return *dynamic_cast<const Node&>(item).getChildren().front();
}

class LoaderTest : public testing::Test {
protected:
    void SetUp() override { initializeTqSvg(); }
    void TearDown() override { terminateTqSvg(); }
};

// A loader fed with SAX events by hand, as the XML layer would deliver them.
class LoaderEvents : public LoaderTest {
protected:
    void SetUp() override {
        LoaderTest::SetUp();
        loader = std::make_unique<Loader>(out, empty, LoadOptions(), collect(messages),
                                          collect(messages, "warning: "));
        messages.clear();  // what the empty device raised
        ASSERT_TRUE(loader->startDocument());
    }

    StartElementResult start(const char* name) { return loader->startElement(name, {}); }

    tqIoDeviceMemory empty;
    Item out;
    Strings messages;
    std::unique_ptr<Loader> loader;
};

}  // namespace

TEST_F(LoaderTest, ElementsBecomeItemsAttachedInDocumentOrder) {
    const Parsed lone = parse("<svg/>");
    ASSERT_TRUE(lone.ok);
    EXPECT_EQ(lone.root->getType(), ItemType::Document);
    EXPECT_EQ(childTypes(*lone.root), Types{});
    EXPECT_EQ(lone.messages, Strings{});

    const Parsed nested = parse("<svg><g><rect/></g></svg>");
    ASSERT_TRUE(nested.ok);
    EXPECT_EQ(childTypes(*nested.root), Types{ItemType::Node});
    EXPECT_EQ(childTypes(firstChild(*nested.root)), Types{ItemType::Rect});

    const Parsed all = parse(
        "<?xml version=\"1.0\"?>\n<svg>\n  <rect/>\n  <circle/>\n  <g><line/></g>\n"
        "  <path d=\"M0 0\"/>\n  <text/>\n  <image/>\n  <svg/>\n</svg>\n");
    ASSERT_TRUE(all.ok) << testing::PrintToString(all.messages);
    EXPECT_EQ(childTypes(*all.root),
              (Types{ItemType::Rect, ItemType::Circle, ItemType::Node, ItemType::Path,
                     ItemType::Text, ItemType::Image, ItemType::Document}));

    // Any supported tag may be the root; a skipped element leaves nothing behind.
    EXPECT_EQ(parse("<rect/>").root->getType(), ItemType::Rect);
    const Parsed skipped = parse("<svg><foo><rect/><bar x=\"1\"/></foo><circle/></svg>", true);
    EXPECT_EQ(childTypes(*skipped.root), Types{ItemType::Circle});
    EXPECT_EQ(skipped.messages, Strings{"warning: Ignore unsupported tag in svg : \"foo\""});
}

TEST_F(LoaderTest, TextAndStyleContentIsCollectedVerbatim) {
    const Parsed text = parse("<svg><text>  a&amp;b<![CDATA[<c>]]>\n</text></svg>");
    ASSERT_TRUE(text.ok);
    EXPECT_EQ(dynamic_cast<const Text&>(firstChild(*text.root)).text, "  a&b<c>\n");

    const Parsed style = parse("<svg><style type=\"t\">a{}</style><g/><style>b{}</style></svg>");
    ASSERT_TRUE(style.ok) << testing::PrintToString(style.messages);
    EXPECT_EQ(dynamic_cast<const Document&>(*style.root).getStyle(), "a{}b{}");

    const Parsed noStyle = parse("<svg><style/></svg>");
    EXPECT_FALSE(dynamic_cast<const Document&>(*noStyle.root).getStyle().has_value());

    // A document of one style element loads, and its root is empty.
    const Parsed styleOnly = parse("<style/>", false, std::make_shared<Rect>());
    EXPECT_TRUE(styleOnly.ok);
    EXPECT_EQ(styleOnly.root, nullptr);
}

TEST_F(LoaderTest, RefusalsReachTheirCallbackWithTheExactText) {
    const struct {
        std::string svg;
        bool ignoreUnsupported, ok;
        std::string messages;  // one a line
    } cases[] = {
        {"<svg><foo/></svg>", false, false, "Found unsupported tag in svg : \"foo\""},
        {"<SVG/>", false, false, "Found unsupported tag in svg : \"SVG\""},
        {"<svg:svg xmlns:svg=\"u\"/>", false, false, "Found unsupported tag in svg : \"svg:svg\""},
        {"<svg><foo><bar/></foo><baz/></svg>", true, true,
         "warning: Ignore unsupported tag in svg : \"foo\"\n"
         "warning: Ignore unsupported tag in svg : \"baz\""},
        {"<svg><rect><rect/></rect></svg>", false, false,
         "Object of type \"rect\" may not contain any child element."},
        {"<svg><text>a<g/></text></svg>", true, false,
         "Object of type \"text\" may not contain any child element."},
        {"<svg><style><g/></style></svg>", false, false,
         "Object of type \"style\" may not contain any child element."},
        {"<svg><rect width=\"1px\" foo=\"1\"/></svg>", true, true,
         "Failed to parse value \"1px\" in attribute \"width\"\n"
         "warning: Ignore Invalid attribute \"width\" with value \"1px\"\n"
         "warning: Ignore unsupported attribute \"foo\" with value \"1\""},
        {"<svg><rect foo=\"1\" bar=\"2\"/></svg>", false, false,
         "Unsupported attribute \"foo\" with value \"1\""},
        {"<svg><rect xml:lang=\"en\"/></svg>", false, false,
         "Unsupported attribute \"xml:lang\" with value \"en\""},
        {"<g><style>x</style></g>", false, false,
         "<style> tag is only expected if root is an <svg> tag."},
        {"<style>x</style>", true, false, "<style> tag is only expected if root is an <svg> tag."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.svg + (c.ignoreUnsupported ? " (ignoring unsupported)" : ""));
        const Parsed result = parse(c.svg, c.ignoreUnsupported);
        EXPECT_EQ(result.ok, c.ok);
        EXPECT_EQ(lines(result.messages), c.messages);
    }
}

TEST_F(LoaderTest, BadDocumentsFailAndLeaveTheCallersPointerUnchanged) {
    for (const char* text : {"<svg><foo/></svg>", "<svg><rect></svg>", "", "   ", "<svg>",
                             "<?xml version=\"1.0\"?>", "<svg><path d=\"M0 0 \xFF\"/></svg>"}) {
        SCOPED_TRACE(std::string("document \"") + text + "\"");
        const Item sentinel = std::make_shared<Rect>();
        const Parsed result = parse(text, false, sentinel);
        EXPECT_FALSE(result.ok);
        EXPECT_EQ(result.root, sentinel);
        EXPECT_FALSE(result.messages.empty());
    }
    // Malformed XML fails with the XML parser's own text, whatever the options.
    const Parsed mismatch = parse("<svg><rect></svg>", true);
    EXPECT_FALSE(mismatch.ok);
    ASSERT_FALSE(mismatch.messages.empty());
    EXPECT_NE(mismatch.messages.front().find("mismatch"), std::string::npos)
        << mismatch.messages.front();
}

TEST_F(LoaderTest, XmlParserWarningsLetTheLoadGoOn) {
    const Parsed result = parse("<?xml version=\"1.1\"?><svg/>");
    EXPECT_TRUE(result.ok);
    ASSERT_EQ(result.messages.size(), 1u);
    EXPECT_EQ(result.messages.front().rfind("warning: ", 0), 0u) << result.messages.front();
}

TEST_F(LoaderTest, MissingCallbacksSuppressTextsButNotTheOutcome) {
    const auto load = [](const std::string& text, bool ignore) {
        Item out;
        tqIoDeviceMemory device(text);
        LoadOptions options;
        options.ignoreUnsupported = ignore;
        return Loader(out, device, options, {}, {}).getParseResult();
    };
    EXPECT_FALSE(load("<svg><foo/></svg>", false));
    EXPECT_FALSE(load("<svg><rect x=\"a\"/></svg>", false));
    EXPECT_FALSE(load("<svg><rect><rect/></rect></svg>", false));
    EXPECT_TRUE(load("<svg><foo/><rect x=\"a\" y=\"b\"/></svg>", true));
}

TEST_F(LoaderEvents, UnbalancedEventsAreRefused) {
    EXPECT_TRUE(loader->onParserMessage("careful", 4));  // a warning: parsing goes on
    EXPECT_FALSE(loader->onParserMessage("broken", 2));
    EXPECT_FALSE(loader->onParserMessage("fatal", 3));
    EXPECT_EQ(messages, (Strings{"warning: careful", "broken", "fatal"}));
    messages.clear();

    EXPECT_TRUE(loader->characters("", 0));
    EXPECT_FALSE(loader->characters("x", 1));  // text outside any element: no message
    EXPECT_EQ(loader->startElement(nullptr, {}), StartElementResult::Abort);
    EXPECT_FALSE(loader->endElement("svg"));
    EXPECT_EQ(messages, Strings{"End of element \"svg\" unexpected"});

    ASSERT_TRUE(loader->startDocument());
    EXPECT_EQ(start("svg"), StartElementResult::Continue);
    EXPECT_EQ(start("g"), StartElementResult::Continue);
    EXPECT_FALSE(loader->endElement("svg"));
    EXPECT_FALSE(loader->endDocument());
    ASSERT_TRUE(loader->startDocument());
    EXPECT_FALSE(loader->endDocument());  // no element at all
    EXPECT_EQ(messages, (Strings{"End of element \"svg\" unexpected",
                                 "End of element \"svg\", expected closing of \"g\"",
                                 "Some svg tags were not closed properly.",
                                 "Some svg tags were not closed properly."}));
    EXPECT_EQ(out, nullptr);
}

TEST_F(LoaderEvents, SeveralTopLevelElementsAreGatheredInOneGroup) {
    for (const char* tag : {"svg", "style", "rect"}) {
        EXPECT_EQ(start(tag), StartElementResult::Continue);
        EXPECT_TRUE(loader->endElement(tag));
    }
    EXPECT_TRUE(loader->endDocument());
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->getType(), ItemType::Node);
    EXPECT_EQ(childTypes(*out), (Types{ItemType::Document, ItemType::Rect}));
    EXPECT_EQ(messages, Strings{});
}

TEST_F(LoaderEvents, BrokenStackStatesAreReportedAtTheirEvent) {
    // A child below a leaf item, which the start tag would have refused.
    EXPECT_EQ(start("svg"), StartElementResult::Continue);
    EXPECT_EQ(start("rect"), StartElementResult::Continue);
    loader->stack().trees.back().push_back({"circle", std::make_shared<Circle>()});
    EXPECT_FALSE(loader->endElement("circle"));

    // An empty tree record at the end of the document.
    ASSERT_TRUE(loader->startDocument());
    EXPECT_EQ(start("svg"), StartElementResult::Continue);
    EXPECT_TRUE(loader->endElement("svg"));
    loader->stack().trees.emplace_back();
    EXPECT_FALSE(loader->endDocument());
    EXPECT_EQ(messages,
              (Strings{"Internal svg error, object of type \"rect\" may not contain any child "
                       "element.",
                       "Some closing tags were missing."}));
    EXPECT_EQ(out, nullptr);
}

namespace {

// Switches the process to a locale that writes a decimal comma; empty when none is installed.
std::string useDecimalCommaLocale() {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR.utf8",
                             "fr_FR", "nl_NL.UTF-8", "es_ES.UTF-8"}) {
        if (std::setlocale(LC_ALL, name) != nullptr &&
            std::string(std::localeconv()->decimal_point) == ",") {
            return name;
        }
    }
    return "";
}

struct RestoreCLocale {
    ~RestoreCLocale() { std::setlocale(LC_ALL, "C"); }
};

}  // namespace

TEST_F(LoaderTest, LocaleWithDecimalCommaDoesNotChangeHowNumbersRead) {
    const RestoreCLocale restore;
    const std::string locale = useDecimalCommaLocale();
    if (locale.empty()) {
        GTEST_SKIP() << "no locale with a decimal comma is installed (tried de_DE, fr_FR, ...)";
    }
    const Parsed result = parse(
        "<svg viewBox=\"0 0 1.5 2.5\"><rect x=\"1.5\" y=\" 2.5\" width=\"+0.5\" "
        "stroke-width=\"0.25\" transform=\"translate(1.5 -2.5)\"/>"
        "<path d=\"M1.5 2.5e-1\"/></svg>");
    ASSERT_TRUE(result.ok) << locale << ": " << testing::PrintToString(result.messages);
    const auto& document = dynamic_cast<const Document&>(*result.root);
    EXPECT_EQ(document.getViewbox()->max.X(), 1.5f);
    EXPECT_EQ(document.getViewbox()->max.Y(), 2.5f);
    const auto& rect = dynamic_cast<const Rect&>(*document.getChildren().front());
    EXPECT_EQ(rect.position.X(), 1.5f);
    EXPECT_EQ(rect.position.Y(), 2.5f);
    EXPECT_EQ(rect.size.X(), 0.5f);
    EXPECT_EQ(rect.getProperties().strokeWidth, 0.25f);
    EXPECT_EQ((*rect.getTransform())(0, 2), 1.5f);
    EXPECT_EQ((*rect.getTransform())(1, 2), -2.5f);
    const auto& path = dynamic_cast<const Path&>(*document.getChildren().back());
    EXPECT_EQ(path.commands.front().values, (std::vector<float>{1.5f, 0.25f}));
}
