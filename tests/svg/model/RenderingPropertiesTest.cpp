#include "svg/tqSvg.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace tq::svg;

namespace {

RenderingProperties everyFieldSet() {
    RenderingProperties p;
    p.opacity = 0.5f;
    p.strokeWidth = 2.0f;
    p.strokeOpacity = 0.25f;
    p.stroke = "blue";
    p.strokeLinecap = LineCap::Square;
    p.strokeLinejoin = LineJoin::MiterClip;
    p.strokeDasharray = std::vector<UnitValue>{{1, Unit::Px}, {2, Unit::Percent}};
    p.className = "outer";
    p.fill = "red";
    p.fillOpacity = 0.75f;
    p.vectorEffect = VectorEffect::NonScalingStroke | VectorEffect::FixedPosition;
    return p;
}

void expectColor(const Wm4::ColorRGBA& c, const std::array<float, 4>& expected) {
    for (int i = 0; i < 4; ++i) {
        EXPECT_FLOAT_EQ(c[i], expected[static_cast<std::size_t>(i)]) << "channel " << i;
    }
}

}  // namespace

TEST(RenderingProperties, CascadeFillsOnlyAbsentFieldsAndNeverVectorEffect) {
    const RenderingProperties parent = everyFieldSet();
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
    EXPECT_EQ(own.fill, std::optional<std::string>("red"));
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
        {"negative opacity", {}, "red", -1.0f, {}, {}, false, false},
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

TEST(RenderingProperties, ParseColorScalesAndClampsOnlyAlpha) {
    struct Case {
        std::optional<std::string> colour;
        float opacity;
        std::array<float, 4> expected;
    };
    const Case cases[] = {
        {"none", 1.0f, {0, 0, 0, 0}},
        {std::nullopt, 1.0f, {0, 0, 0, 1}},
        {std::nullopt, 0.5f, {0, 0, 0, 0.5f}},
        {"#ff0000", 2.0f, {1, 0, 0, 1}},
        {"#00ff00", -1.0f, {0, 1, 0, 0}},
        {"not a colour", 1.0f, {0, 0, 0, 0}},
        {"None", 1.0f, {0, 0, 0, 0}},
        {"#33669980", 0.5f, {0.2f, 0.4f, 0.6f, 64 / 255.0f}},
        {"rgb(255, 0, 51)", 0.25f, {1, 0, 0.2f, 0.25f}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.colour.value_or("(absent)") + " @ " + std::to_string(c.opacity));
        expectColor(RenderingProperties::ParseColor(c.colour, c.opacity), c.expected);
    }
}

TEST(RenderingProperties, FillAndStrokeColoursUseTheirOwnOpacityTimesOpacity) {
    RenderingProperties p;
    expectColor(p.parseFillColor(), {0, 0, 0, 1});
    expectColor(p.parseStrokeColor(), {0, 0, 0, 1});  // absent stroke reads as opaque black

    p.fill = "#0000ff";
    p.stroke = "#ffff00";
    p.opacity = 0.5f;
    p.fillOpacity = 0.5f;
    p.strokeOpacity = 0.8f;
    expectColor(p.parseFillColor(), {0, 0, 1, 0.25f});
    expectColor(p.parseStrokeColor(), {1, 1, 0, 0.4f});

    p.opacity.reset();
    p.fill = "none";
    expectColor(p.parseFillColor(), {0, 0, 0, 0});
    expectColor(p.parseStrokeColor(), {1, 1, 0, 0.8f});
}
