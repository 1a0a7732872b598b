#include "svg/tqSvg.h"

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "TreeEquality.h"

using namespace tq::svg;
using tq::test::CanonicalText;
using Wm4::Vector2f;

namespace {

BoundingBox box(float x0, float y0, float x1, float y1) {
    return BoundingBox(Vector2f(x0, y0), Vector2f(x1, y1));
}

}  // namespace

TEST(ItemTree, CopiesAreDeepOrderedAndIndependent) {
    Document source;
    source.editViewbox() = box(0, 0, 10, 20);
    source.editStyle() = ".a { fill: red }";
    source.editId() = "doc";
    source.editTransform() = Wm4::Matrix3f(1, 0, 5, 0, 1, 7, 0, 0, 1);
    auto group = std::make_shared<Node>();
    group->editProperties().stroke = "blue";
    auto circle = std::make_shared<Circle>(Vector2f(1, 1), 2.0f);
    auto image = std::make_shared<Image>();
    image->preserveAspectRatio = AspectRatioAlign::XMidYMax;
    group->editChildren() = {circle, image, std::make_shared<Node>()};
    group->editChildren().back()->editId() = "inner";
    auto path = std::make_shared<Path>();
    path->commands.push_back({Path::CommandType::CubicBezierRel, {1, 2, 3, 4, 5, 6}});
    auto text = std::make_shared<Text>(Vector2f(), "x");
    text->textLength = UnitValue(3, Unit::Em);
    text->bold = true;
    source.editChildren() = {std::make_shared<Line>(Vector2f(0, 0), Vector2f(3, 4)), group, path,
                             text};

    const Document copy(source);
    EXPECT_EQ(CanonicalText(copy), CanonicalText(source));

    // Editing the copy, deep down, leaves the source alone.
    const std::string before = CanonicalText(source);
    auto& copiedGroup = static_cast<Node&>(**std::next(copy.getChildren().begin()));
    EXPECT_NE(&copiedGroup, group.get());
    static_cast<Circle&>(*copiedGroup.getChildren().front()).radius = 9;
    static_cast<Node&>(*copiedGroup.getChildren().back()).editChildren().push_back(nullptr);
    copiedGroup.editChildren().pop_front();
    EXPECT_EQ(CanonicalText(source), before);
}

TEST(ItemTree, CopyDropsNullAndNestedDocumentChildren) {
    Node group;
    auto inner = std::make_shared<Node>();
    inner->editChildren() = {std::make_shared<Document>(), nullptr};
    group.editChildren() = {std::make_shared<Document>(), nullptr,
                            std::make_shared<Rect>(Vector2f(1, 2)), inner};
    EXPECT_EQ(CanonicalText(Node(group)), "g\n  rect 1,2 1,1 r=0,0\n  g\n");
    EXPECT_EQ(group.getChildren().size(), 4u);  // the source keeps what it had
}

TEST(RenderingProperties, CascadeFillsOnlyAbsentFieldsAndNeverVectorEffect) {
    RenderingProperties parent;
    parent.opacity = 0.5f;
    parent.strokeWidth = 2.0f;
    parent.strokeOpacity = 0.25f;
    parent.stroke = "blue";
    parent.strokeLinecap = LineCap::Square;
    parent.strokeLinejoin = LineJoin::MiterClip;
    parent.strokeDasharray = std::vector<UnitValue>{{1, Unit::Px}, {2, Unit::Percent}};
    parent.className = "outer";
    parent.fill = "red";
    parent.fillOpacity = 0.75f;
    parent.vectorEffect = VectorEffect::NonScalingStroke;
    RenderingProperties child;
    child.cascadeParent(parent);
    RenderingProperties expected = parent;
    expected.vectorEffect.reset();
    EXPECT_EQ(child, expected);

    // Own values win; opacity is deliberately replaced, not multiplied.
    RenderingProperties own;
    own.opacity = 0.2f;
    own.stroke = "none";
    own.vectorEffect = VectorEffect::None;
    own.cascadeParent(parent);
    EXPECT_EQ(own.opacity, std::optional<float>(0.2f));
    EXPECT_EQ(own.stroke, std::optional<std::string>("none"));
    EXPECT_EQ(own.vectorEffect, std::optional<VectorEffect>(VectorEffect::None));
}

TEST(RenderingProperties, FillAndStrokeVisibility) {
    struct Case {
        const char* name;
        std::optional<std::string> fill, stroke;
        std::optional<float> opacity, fillOpacity, strokeOpacity;
        bool hasFill, hasStroke;
    };
    const Case cases[] = {
        {"empty record", {}, {}, {}, {}, {}, true, false},
        {"fill none", "none", "red", {}, {}, {}, false, true},
        {"stroke none", "red", "none", {}, {}, {}, true, false},
        {"only exact none", "None", "NONE", {}, {}, {}, true, true},
        {"fill-opacity 0", "red", "red", {}, 0.0f, {}, false, true},
        {"stroke-opacity 0", "red", "red", {}, {}, 0.0f, true, false},
        {"opacity 0", "red", "red", 0.0f, {}, {}, false, false},
        {"both negative", {}, "red", -1.0f, -1.0f, -1.0f, true, true},
    };
    for (const Case& c : cases) {
        RenderingProperties p;
        p.fill = c.fill;
        p.stroke = c.stroke;
        p.opacity = c.opacity;
        p.fillOpacity = c.fillOpacity;
        p.strokeOpacity = c.strokeOpacity;
        EXPECT_EQ(p.hasFill(), c.hasFill) << c.name;
        EXPECT_EQ(p.hasStroke(), c.hasStroke) << c.name;
    }
}

TEST(RenderingProperties, ColoursScaleAndClampOnlyAlpha) {
    struct Case {
        std::optional<std::string> colour;
        float opacity;
        std::array<float, 4> expected;
    };
    const Case cases[] = {
        {"none", 1.0f, {0, 0, 0, 0}},         {std::nullopt, 0.5f, {0, 0, 0, 0.5f}},
        {"#ff0000", 2.0f, {1, 0, 0, 1}},      {"#00ff00", -1.0f, {0, 1, 0, 0}},
        {"not a colour", 1.0f, {0, 0, 0, 0}}, {"#33669980", 0.5f, {0.2f, 0.4f, 0.6f, 64 / 255.0f}},
    };
    for (const Case& c : cases) {
        const Wm4::ColorRGBA colour = RenderingProperties::ParseColor(c.colour, c.opacity);
        for (int i = 0; i < 4; ++i) {
            EXPECT_FLOAT_EQ(colour[i], c.expected[static_cast<std::size_t>(i)])
                << c.colour.value_or("(absent)") << " channel " << i;
        }
    }

    RenderingProperties p;
    p.fill = "#0000ff";
    p.stroke = "#ffff00";
    p.opacity = 0.5f;
    p.fillOpacity = 0.5f;
    p.strokeOpacity = 0.8f;
    EXPECT_FLOAT_EQ(p.parseFillColor().A(), 0.25f);
    EXPECT_FLOAT_EQ(p.parseStrokeColor().A(), 0.4f);
    EXPECT_FLOAT_EQ(p.parseStrokeColor().G(), 1.0f);
}
