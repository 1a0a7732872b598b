#include "svg/tqSvg.h"

#include <array>
#include <limits>
#include <string>

#include <gtest/gtest.h>

using namespace tq::svg;
using Wm4::Vector2f;

namespace {

std::array<float, 4> corners(const BoundingBox& b) {
    return {b.min.X(), b.min.Y(), b.max.X(), b.max.Y()};
}
std::array<float, 2> xy(const Vector2f& v) {
    return {v.X(), v.Y()};
}

BoundingBox box(float x0, float y0, float x1, float y1) {
    return BoundingBox(Vector2f(x0, y0), Vector2f(x1, y1));
}

}  // namespace

TEST(UnitValue, ParsesNumbersWithTheirUnit) {
    struct Case {
        const char* text;
        float value;
        Unit unit;
    };
    const Case cases[] = {
        {"10", 10, Unit::None},     {"2.5mm", 2.5f, Unit::Mm}, {"50 %", 50, Unit::Percent},
        {"1e2px", 100, Unit::Px},   {"12 px  ", 12, Unit::Px}, {"1.5em", 1.5f, Unit::Em},
        {"-3pt", -3, Unit::Pt},     {"4cm", 4, Unit::Cm},      {"\t 7in\r\n", 7, Unit::In},
        {"  .5", 0.5f, Unit::None}, {"+8\f", 8, Unit::None},   {"", 0, Unit::None},
        {"px", 0, Unit::Px},        {"  ", 0, Unit::None},
    };
    for (const Case& c : cases) {
        UnitValue out(-99, Unit::Count);
        EXPECT_TRUE(UnitValue::parseVal(c.text, out)) << '"' << c.text << '"';
        EXPECT_FLOAT_EQ(out.value, c.value) << '"' << c.text << '"';
        EXPECT_EQ(out.unit, c.unit) << '"' << c.text << '"';
    }
}

TEST(UnitValue, RejectsTextThatIsNotWhollyANumberAndUnit) {
    for (const char* text : {"abc", "10qq", "10PX", "10 px x", "1,5", "5 5px", "px10"}) {
        UnitValue out(42, Unit::Cm);
        EXPECT_FALSE(UnitValue::parseVal(text, out)) << '"' << text << '"';
        EXPECT_EQ(out, UnitValue(42, Unit::Cm)) << "left unchanged for \"" << text << '"';
    }
}

TEST(UnitValue, UnitToStringWritesOrAppendsTheSuffix) {
    const std::pair<Unit, const char*> suffixes[] = {
        {Unit::None, ""}, {Unit::Percent, "%"}, {Unit::Em, "em"},
        {Unit::Px, "px"}, {Unit::Pt, "pt"},     {Unit::Cm, "cm"},
        {Unit::Mm, "mm"}, {Unit::In, "in"},     {Unit::Count, ""},
    };
    for (const auto& [unit, suffix] : suffixes) {
        std::string s = "3";
        EXPECT_TRUE(UnitToString(unit, s, true));
        EXPECT_EQ(s, std::string("3") + suffix);
        EXPECT_TRUE(UnitToString(unit, s, false));
        EXPECT_EQ(s, suffix);
    }

    std::string kept = "3";
    EXPECT_FALSE(UnitToString(static_cast<Unit>(9), kept, true));
    EXPECT_EQ(kept, "3");
    std::string cleared = "3";
    EXPECT_FALSE(UnitToString(static_cast<Unit>(200), cleared, false));
    EXPECT_EQ(cleared, "");
}

TEST(BoundingBox, DefaultIsInvalidAndMeasuresWithoutChecking) {
    const BoundingBox b;
    EXPECT_FALSE(b.isValid());
    EXPECT_EQ(corners(b), (std::array<float, 4>{1, 1, -1, -1}));
    EXPECT_EQ(xy(b.getSize()), (std::array<float, 2>{-2, -2}));
    EXPECT_EQ(xy(b.getCenterPoint()), (std::array<float, 2>{0, 0}));

    const BoundingBox r = box(1, 2, 5, 8);
    EXPECT_EQ(xy(r.getSize()), (std::array<float, 2>{4, 6}));
    EXPECT_EQ(xy(r.getCenterPoint()), (std::array<float, 2>{3, 5}));

    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(r.isValid());
    EXPECT_TRUE(box(2, 3, 2, 3).isValid());
    EXPECT_FALSE(box(0, 0, -1, 5).isValid());
    EXPECT_FALSE(box(0, 0, 5, -1).isValid());
    EXPECT_FALSE(box(0, nan, 1, 1).isValid());
}

TEST(BoundingBox, TranslateAndMarginIgnoreValidity) {
    BoundingBox b = box(0, 0, 2, 2);
    b.translate(Vector2f(3, -1));
    EXPECT_EQ(corners(b), (std::array<float, 4>{3, -1, 5, 1}));
    b.addMargin(Vector2f(1, 2));
    EXPECT_EQ(corners(b), (std::array<float, 4>{2, -3, 6, 3}));
    b.addMargin(Vector2f(-3, 0));
    EXPECT_EQ(corners(b), (std::array<float, 4>{5, -3, 3, 3}));
}

TEST(BoundingBox, ExpandToContainPoint) {
    BoundingBox b;
    b.expandToContain(Vector2f(2, 3));
    EXPECT_TRUE(b.isValid());
    EXPECT_EQ(corners(b), (std::array<float, 4>{2, 3, 2, 3}));
    EXPECT_EQ(xy(b.getSize()), (std::array<float, 2>{0, 0}));
    b.expandToContain(Vector2f(-1, 5));
    EXPECT_EQ(corners(b), (std::array<float, 4>{-1, 3, 2, 5}));
    b.expandToContain(Vector2f(0, 4));
    EXPECT_EQ(corners(b), (std::array<float, 4>{-1, 3, 2, 5}));
}

TEST(BoundingBox, ExpandToContainBoxTrustsTheOtherBox) {
    BoundingBox b = box(5, 5, 6, 6);
    b.expandToContain(box(0, 5.5f, 5.5f, 9));
    EXPECT_EQ(corners(b), (std::array<float, 4>{0, 5, 6, 9}));

    // Deliberate: an invalid box merged into a valid one pulls the corners toward (1,1)/(-1,-1).
    BoundingBox pulled = box(5, 5, 6, 6);
    pulled.expandToContain(BoundingBox());
    EXPECT_EQ(corners(pulled), (std::array<float, 4>{1, 1, 6, 6}));

    // An invalid box becomes a copy of the other one, whatever that is.
    BoundingBox fromEmpty;
    fromEmpty.expandToContain(box(3, 4, 7, 8));
    EXPECT_EQ(corners(fromEmpty), (std::array<float, 4>{3, 4, 7, 8}));
    BoundingBox stillEmpty = box(9, 9, 0, 0);
    stillEmpty.expandToContain(box(4, 4, 2, 2));
    EXPECT_EQ(corners(stillEmpty), (std::array<float, 4>{4, 4, 2, 2}));
}

TEST(Options, DefaultsFailOnUnsupportedAndWriteAHeader) {
    EXPECT_FALSE(LoadOptions().ignoreUnsupported);
    const SaveOptions save;
    EXPECT_TRUE(save.author.empty());
    EXPECT_EQ(save.floatPrecision, -1);
    EXPECT_FALSE(save.indent);
    EXPECT_TRUE(save.writeHeader);
}
