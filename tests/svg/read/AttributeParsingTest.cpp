#include "svg/tqSvg.h"

#include <utf8.h>

#include <array>
#include <iterator>
#include <list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using namespace tq::svg;
using Strings = std::vector<std::string>;
using Item = ItemInterfacePointer<ItemInterface>;
using R = AttributeParseResult;
using Wm4::Matrix3f;

namespace {

class AttributeParsing : public testing::Test {
protected:
    void SetUp() override { initializeTqSvg(); }
    void TearDown() override { terminateTqSvg(); }

    struct Loaded {
        bool ok = false;
        Item root;
        std::string messages;  // one a line
    };

    static Loaded load(const std::string& svg, bool ignoreUnsupported = false) {
        Loaded result;
        tqIoDeviceMemory device(svg);
        LoadOptions options;
        options.ignoreUnsupported = ignoreUnsupported;
        std::list<std::string> messages;
        result.ok =
            tqSvgIOManager::get().loadSvg(result.root, device, "svg", nullptr, &options, &messages);
        for (const auto& message : messages) {
            result.messages += (result.messages.empty() ? "" : "\n") + message;
        }
        return result;
    }
};

// A loader with an open document, for calling the parsers directly.
class ParserBench {
public:
    ParserBench()
        : loader(
              out, device, LoadOptions(),
              [this](const std::string& text) { messages.push_back(text); },
              [this](const std::string& text) { messages.push_back("warning: " + text); }) {
        messages.clear();
        loader.startDocument();
    }

    Item out;
    tqIoDeviceMemory device;
    Strings messages;
    Loader loader;
};

template <class T>
const T& childAt(const Item& root, std::size_t index) {
    const auto& children = dynamic_cast<const Node&>(*root).getChildren();
    EXPECT_LT(index, children.size());
    return dynamic_cast<const T&>(
        **std::next(children.begin(), static_cast<std::ptrdiff_t>(index)));
}

std::array<float, 2> xy(const Wm4::Vector2f& v) {
    return {v.X(), v.Y()};
}

using Parser = AttributeParseResult (*)(Loader&, ItemInterface&, std::string_view, std::string_view,
                                        std::string_view);

Loader::MessageCallback collectInto(Strings& messages) {
    return [&messages](const std::string& text) { messages.push_back(text); };
}

}  // namespace

TEST_F(AttributeParsing, AttributesAreStoredIntoTheirItems) {
    const Loaded result = load(R"svg(<svg xmlns="http://www.w3.org/2000/svg" viewBox="-1 2 100 50">
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
        <g vector-effect="none" stroke-linejoin="round"/>
        <text xml:space="default"/>
        </svg>)svg");
    ASSERT_TRUE(result.ok) << result.messages;
    EXPECT_TRUE(result.messages.empty());

    const auto& document = dynamic_cast<const Document&>(*result.root);
    ASSERT_TRUE(document.getViewbox().has_value());
    EXPECT_EQ(*document.getViewbox(), BoundingBox(Wm4::Vector2f(-1, 2), Wm4::Vector2f(99, 52)));

    const auto& rect = childAt<Rect>(result.root, 0);
    EXPECT_EQ(xy(rect.position), (std::array<float, 2>{1, 2}));
    EXPECT_EQ(xy(rect.size), (std::array<float, 2>{3, 4}));
    EXPECT_EQ(xy(rect.radius), (std::array<float, 2>{5, 6}));
    const RenderingProperties& p = rect.getProperties();
    EXPECT_EQ(p.fill, "red");
    EXPECT_EQ(p.stroke, "none");
    EXPECT_EQ(p.strokeWidth, 2.0f);
    EXPECT_EQ(p.opacity, 0.5f);
    EXPECT_EQ(p.fillOpacity, 0.25f);
    EXPECT_EQ(p.strokeOpacity, 0.75f);
    EXPECT_EQ(p.className, "a b");
    EXPECT_EQ(rect.getId(), "r1");
    EXPECT_EQ(p.strokeLinecap, LineCap::Square);
    EXPECT_EQ(p.strokeLinejoin, LineJoin::MiterClip);
    EXPECT_EQ(p.strokeDasharray,
              (std::vector<UnitValue>{UnitValue(1), UnitValue(2), UnitValue(3)}));
    EXPECT_EQ(p.vectorEffect, VectorEffect::NonScalingStroke);
    EXPECT_FALSE(rect.getTransform().has_value());  // blanks and commas only: nothing stored

    const auto& line = childAt<Line>(result.root, 1);
    EXPECT_EQ(xy(line.start), (std::array<float, 2>{1, 3}));
    EXPECT_EQ(xy(line.end), (std::array<float, 2>{2, 4}));
    EXPECT_FALSE(line.getTransform().has_value());  // an identity result is not stored

    const auto& circle = childAt<Circle>(result.root, 2);
    EXPECT_EQ(circle.radius, 5.0f);
    EXPECT_EQ(xy(circle.center), (std::array<float, 2>{6, 7}));

    EXPECT_EQ(childAt<Path>(result.root, 3).commands.size(), 3u);

    // Position values accumulate: x + dx, y + dy.
    const auto& text = childAt<Text>(result.root, 4);
    EXPECT_EQ(xy(text.position), (std::array<float, 2>{7, -2}));
    EXPECT_EQ(text.fontSize, 3.0f);
    ASSERT_TRUE(text.textLength.has_value());
    EXPECT_EQ(text.textLength->value, 9.0f);
    EXPECT_EQ(text.fontFamily, "Sans");
    EXPECT_FALSE(text.bold.has_value());  // only "bold" sets it
    EXPECT_EQ(text.italic, true);
    EXPECT_EQ(text.underline, true);
    EXPECT_EQ(text.xmlSpacePreserve, true);
    EXPECT_EQ(text.text, "hi");

    const auto& image = childAt<Image>(result.root, 5);
    EXPECT_EQ(xy(image.position), (std::array<float, 2>{1, 2}));
    EXPECT_EQ(xy(image.size), (std::array<float, 2>{3, 4}));
    EXPECT_EQ(image.href, "a.png");
    EXPECT_EQ(image.preserveAspectRatio, AspectRatioAlign::XMaxYMid);

    const auto& group = childAt<Node>(result.root, 6);
    EXPECT_EQ(group.getProperties().vectorEffect, VectorEffect::None);  // present, no bit set
    EXPECT_EQ(group.getProperties().strokeLinejoin, LineJoin::Round);
    EXPECT_EQ(childAt<Text>(result.root, 7).xmlSpacePreserve, false);  // set, not preserving
}

TEST_F(AttributeParsing, RefusedAttributesGiveTheDetailLineThenTheDispatchLine) {
    const struct {
        std::string tag, name, value, detail;
    } cases[] = {
        {"svg", "xmlns", "u", "Attribute \"xmlns\" specified twice"},  // the root has one
        {"svg", "viewBox", "0,0,100", "Wrong number of values for \"viewBox\""},
        {"svg", "viewBox", "0 0 1 a", "Failed to parse value \"a\" in attribute \"viewBox\""},
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
        // A text reports its unknown attributes itself.
        {"text", "foo", "1", "Ignore unsupported attribute \"foo\" with value \"1\""},
    };
    for (const auto& c : cases) {
        const std::string svg =
            "<svg xmlns=\"u\"><" + c.tag + " " + c.name + "=\"" + c.value + "\"/></svg>";
        SCOPED_TRACE(svg);
        const Loaded result = load(svg);
        EXPECT_FALSE(result.ok);
        EXPECT_EQ(result.messages, c.detail + "\nInvalid attribute \"" + c.name +
                                       "\" with value \"" + c.value + "\"");
    }
}

TEST_F(AttributeParsing, UnknownAttributesAndIgnoredRefusals) {
    const struct {
        std::string element;
        bool ignoreUnsupported;
        std::string messages;  // one a line
    } cases[] = {
        // The svg element knows only xmlns and viewBox; a group knows nothing of its own.
        {"<svg width=\"100\"/>", false, "Unsupported attribute \"width\" with value \"100\""},
        {"<svg width=\"100\"/>", true, "Ignore unsupported attribute \"width\" with value \"100\""},
        {"<g x=\"1\"/>", false, "Unsupported attribute \"x\" with value \"1\""},
        {"<text foo=\"1\"/>", true, "Ignore unsupported attribute \"foo\" with value \"1\""},
        {"<rect transform=\"translate(1) spin(2)\"/>", true,
         "Failed to parse transform attribute \"translate(1) spin(2)\", unsupported command "
         "'spin'\n"
         "Ignore Invalid attribute \"transform\" with value \"translate(1) spin(2)\""},
        // Only the bare href is an image reference.
        {"<image xmlns:xlink=\"http://www.w3.org/1999/xlink\" xlink:href=\"a.png\"/>", true,
         "Ignore unsupported attribute \"xmlns:xlink\" with value "
         "\"http://www.w3.org/1999/xlink\"\n"
         "Ignore unsupported attribute \"xlink:href\" with value \"a.png\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.element + (c.ignoreUnsupported ? " (ignoring unsupported)" : ""));
        const Loaded result = load("<svg>" + c.element + "</svg>", c.ignoreUnsupported);
        EXPECT_EQ(result.ok, c.ignoreUnsupported);
        EXPECT_EQ(result.messages, c.messages);
        if (result.ok) {
            const ItemInterface& child = childAt<ItemInterface>(result.root, 0);
            EXPECT_FALSE(child.getTransform().has_value());  // nothing of a failed list is kept
            if (child.getType() == ItemType::Image) {
                EXPECT_EQ(dynamic_cast<const Image&>(child).href, "");
            }
        }
    }
}

TEST_F(AttributeParsing, AttributeGivenTwiceOnOneItemIsRefused) {
    ParserBench bench;
    Rect rect;
    Document document;
    Text text;
    Image image;
    const struct {
        Parser parse;
        ItemInterface& item;
        std::string name, first, second;
        R firstResult;  // a value that failed to parse still claims the attribute
    } cases[] = {
        {ParseRectAttribute, rect, "x", "1", "2", R::Handled},
        {ParseRectAttribute, rect, "width", "a", "3", R::Invalid},
        {ParsePresentationAttribute, rect, "fill", "red", "blue", R::Handled},
        {ParsePresentationAttribute, rect, "stroke-width", "x", "1", R::Invalid},
        {ParsePresentationAttribute, rect, "id", "a", "b", R::Handled},
        {ParsePresentationAttribute, rect, "transform", "translate(4)", "scale(2)", R::Handled},
        {ParseSvgAttribute, document, "viewBox", "0 0 1 1", "0 0 2 2", R::Handled},
        {ParseTextAttribute, text, "textLength", "1", "2", R::Handled},
        {ParseTextAttribute, text, "font-size", "big", "2", R::Invalid},
        {ParseImageAttribute, image, "href", "a.png", "b.png", R::Handled},
        {ParseImageAttribute, image, "preserveAspectRatio", "none", "none", R::Handled},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        bench.messages.clear();
        EXPECT_EQ(c.parse(bench.loader, c.item, c.name, "", c.first), c.firstResult);
        EXPECT_EQ(c.parse(bench.loader, c.item, c.name, "", c.second), R::Invalid);
        ASSERT_EQ(bench.messages.size(), c.firstResult == R::Handled ? 1u : 2u);
        EXPECT_EQ(bench.messages.back(), "Attribute \"" + c.name + "\" specified twice");
    }
    EXPECT_EQ(rect.position.X(), 1.0f);
    EXPECT_EQ((*rect.getTransform())(0, 2), 4.0f);
    EXPECT_EQ(image.href, "a.png");
    EXPECT_TRUE(text.fontSize.has_value());  // set before its value was read

    // A transform that composed to the identity stores nothing, so another one is accepted.
    Circle circle;
    EXPECT_EQ(ParsePresentationAttribute(bench.loader, circle, "transform", "", "scale(1)"),
              R::Handled);
    EXPECT_FALSE(circle.getTransform().has_value());
    EXPECT_EQ(ParsePresentationAttribute(bench.loader, circle, "transform", "", "scale(2)"),
              R::Handled);
}

TEST_F(AttributeParsing, NumberListsSplitAtTheFiveSeparators) {
    Strings messages;
    const auto error = collectInto(messages);
    std::vector<float> out;
    EXPECT_TRUE(ParseNumberList("viewBox", "0 0 100 50", 4, 4, out, error));
    EXPECT_EQ(out, (std::vector<float>{0, 0, 100, 50}));
    EXPECT_TRUE(ParseNumberList("n", " ,1,\t2\r\n3  -4.5e1,", 0, 10, out, error));
    EXPECT_EQ(out, (std::vector<float>{1, 2, 3, -45}));
    EXPECT_TRUE(messages.empty());

    EXPECT_FALSE(ParseNumberList("viewBox", "1 2 3", 4, 4, out, error));
    EXPECT_FALSE(ParseNumberList("viewBox", "1 2 3 4 5", 4, 4, out, error));
    EXPECT_FALSE(ParseNumberList("n", " , ", 1, 2, out, error));
    EXPECT_FALSE(ParseNumberList("viewBox", "1 x 3 4", 4, 4, out, error));
    EXPECT_FALSE(ParseNumberList("n", "1;2", 1, 2, out, error));
    EXPECT_EQ(messages,
              (Strings{"Wrong number of values for \"viewBox\"",
                       "Wrong number of values for \"viewBox\"", "Wrong number of values for \"n\"",
                       "Failed to parse value \"x\" in attribute \"viewBox\"",
                       "Failed to parse value \"1;2\" in attribute \"n\""}));

    EXPECT_FALSE(ParseNumberList("n", "1 x", 1, 2, out, Loader::MessageCallback()));
    EXPECT_THROW(ParseNumberList("n", "1 \xFF 2", 1, 3, out, error), utf8::invalid_utf8);
    EXPECT_THROW(ParseNumberList("n", "1 \xC3", 1, 3, out, error), utf8::not_enough_room);
}

TEST_F(AttributeParsing, TransformListsComposeLeftmostCommandOutermost) {
    struct Case {
        std::string text;
        Matrix3f expected;
    };
    const Case cases[] = {
        {"", Matrix3f::IDENTITY},
        {" ,\t\r\n,", Matrix3f::IDENTITY},
        {"translate(10)", Matrix3f(1, 0, 10, 0, 1, 0, 0, 0, 1)},
        {"translate(10,-5)", Matrix3f(1, 0, 10, 0, 1, -5, 0, 0, 1)},
        {"scale(2)", Matrix3f(2, 0, 0, 0, 2, 0, 0, 0, 1)},
        {"scale(2 3)", Matrix3f(2, 0, 0, 0, 3, 0, 0, 0, 1)},
        {"rotate(90)", Matrix3f(0, -1, 0, 1, 0, 0, 0, 0, 1)},
        {"rotate(30)", Matrix3f(0.8660254f, -0.5f, 0, 0.5f, 0.8660254f, 0, 0, 0, 1)},
        // The centre goes straight into the translation column, deliberately.
        {"rotate(90 5 6)", Matrix3f(0, -1, 5, 1, 0, 6, 0, 0, 1)},
        {"matrix(1 2 3 4 5 6)", Matrix3f(1, 3, 5, 2, 4, 6, 0, 0, 1)},
        {"skewX(45)", Matrix3f(1, 1, 0, 0, 1, 0, 0, 0, 1)},
        {"skewY(45)", Matrix3f(1, 0, 0, 1, 1, 0, 0, 0, 1)},
        {"translate(1,2) scale(3)", Matrix3f(3, 0, 1, 0, 3, 2, 0, 0, 1)},
        {"scale(3),translate(1 2)", Matrix3f(3, 0, 3, 0, 3, 6, 0, 0, 1)},
        {" translate \t\n(1)\n,scale(2)", Matrix3f(2, 0, 1, 0, 2, 0, 0, 0, 1)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE("transform \"" + c.text + "\"");
        Strings messages;
        Matrix3f out(true);
        ASSERT_TRUE(ParseTransformList(c.text, out, collectInto(messages)));
        EXPECT_TRUE(messages.empty());
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                EXPECT_NEAR(out(row, column), c.expected(row, column), 1e-6)
                    << "m(" << row << ", " << column << ")";
            }
        }
    }
}

TEST_F(AttributeParsing, TransformRefusalsNameTheirCause) {
    const std::pair<std::string, std::string> cases[] = {
        {"translate 10", "fail to locate '(' / ')'"},
        {"translate)1(", "fail to locate '(' / ')'"},
        {"scale(2) rotate(1", "fail to locate '(' / ')'"},
        {"spin(3)", "unsupported command 'spin'"},
        {"Translate(1)", "unsupported command 'Translate'"},
        // Arguments that do not parse: the number list has sent its own line first.
        {"translate(1) rotate(a)", "fail to parse 'rotate' content"},
        {"matrix(1 2 3)", "fail to parse 'matrix' content"},
        {"skewX(1 2)", "fail to parse 'skewX' content"},
        {"translate()", "fail to parse 'translate' content"},
    };
    for (const auto& [text, cause] : cases) {
        SCOPED_TRACE("transform \"" + text + "\"");
        Strings messages;
        Matrix3f out(false);
        EXPECT_FALSE(ParseTransformList(text, out, collectInto(messages)));
        ASSERT_FALSE(messages.empty());
        EXPECT_EQ(messages.size(), cause.rfind("fail to parse", 0) == 0 ? 2u : 1u);
        EXPECT_EQ(messages.back(),
                  "Failed to parse transform attribute \"" + text + "\", " + cause);
    }
}
