#include "svg/path/PathBuilder.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <Wm4Foundation/Wm4Math.h>
#include <gtest/gtest.h>

#include "TreeEquality.h"

using namespace tq::svg;

namespace {

using V = Wm4::Vector2f;
using Math = Wm4::Math<float>;

std::string contentOf(const PathBuilder& builder) {
    return tq::test::CommandsText(builder.getContent());
}

struct Case {
    std::string name;
    std::function<void(PathBuilder&)> build;
    std::string expected;
};

void runCases(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        PathBuilder builder;
        c.build(builder);
        EXPECT_EQ(contentOf(builder), c.expected) << c.name;
    }
}

}  // namespace

TEST(PathBuilder, ShapesWrittenAtOnceUseTheShortestForms) {
    runCases({
        // Equal lengths keep the absolute form.
        {"horizontal line", [](PathBuilder& b) { b.appendLine(V(0, 0), V(10, 0)); }, "M0,0 H10"},
        {"lines joined at the pen",
         [](PathBuilder& b) {
             b.appendLine(V(0, 0), V(5, 5));
             b.appendLine(V(5, 5), V(9, 9));
         },
         "M0,0 L5,5 L9,9"},
        {"rectangle, no close path", [](PathBuilder& b) { b.appendRect(V(0, 0), V(10, 20)); },
         "M0,0 H10 V20 H0 V0"},
        {"relative when shorter",
         [](PathBuilder& b) { b.appendLine(V(1000, 2000), V(1001, 2001)); }, "M1000,2000 l1,1"},
        // "-10" needs no separator: 3 characters against 4 for " 190".
        {"minus sign saves the separator",
         [](PathBuilder& b) { b.appendLine(V(200, 0), V(190, 0)); }, "M200,0 h-10"},
        // A shape away from the pen is moved to, never joined by a line.
        {"separate shapes",
         [](PathBuilder& b) {
             b.appendLine(V(0, 0), V(1, 0));
             b.appendLine(V(1000, 1000), V(1000, 1005));
         },
         "M0,0 H1 m999,1000 v5"},
        {"line of length zero is vertical", [](PathBuilder& b) { b.appendLine(V(3, 4), V(3, 4)); },
         "M3,4 V4"},
        {"polyline",
         [](PathBuilder& b) {
             b.appendSegmentListConst({{0, 0}, {3, 4}, {3, 9}, {8, 9}});
         },
         "M0,0 L3,4 V9 H8"},
        {"polyline of one point",
         [](PathBuilder& b) {
             b.appendSegmentListConst({{7, 7}});
         },
         "M7,7"},
        {"empty polyline is ignored", [](PathBuilder& b) { b.appendSegmentListConst({}); }, ""},
    });
}

TEST(PathBuilder, EllipsesAreAbsoluteArcs) {
    const V center(100, 100), radii(10, 10);
    runCases({
        {"quarter", [&](PathBuilder& b) { b.appendEllipse(center, radii, 0, Math::HALF_PI); },
         "M110,100 A10,10,0,0,1,100,110"},
        {"three quarters take the large arc",
         [&](PathBuilder& b) { b.appendEllipse(center, radii, 0, 3 * Math::HALF_PI); },
         "M110,100 A10,10,0,1,1,100,90"},
        // The signed difference decides: going backwards never takes the large arc.
        {"three quarters backwards",
         [&](PathBuilder& b) { b.appendEllipse(center, radii, 0, -3 * Math::HALF_PI); },
         "M110,100 A10,10,0,0,1,100,110"},
        // Full: from angle 0, a quarter and then the rest, whatever the start angle.
        {"full within 0.01 of a turn",
         [](PathBuilder& b) { b.appendEllipse(V(10, 20), V(5, 3), 0, 6.28f); },
         "M15,20 A5,3,0,0,1,10,23 A5,3,0,1,1,15,20"},
        {"full from another start angle",
         [](PathBuilder& b) { b.appendEllipse(V(10, 20), V(5, 3), -1, 6); },
         "M15,20 A5,3,0,0,1,10,23 A5,3,0,1,1,15,20"},
        // The full test is made in double: in float, 2 pi - 0.01f rounds to a span that fails it.
        {"full, from 0.01",
         [&](PathBuilder& b) { b.appendEllipse(center, radii, 0.01f, Math::TWO_PI); },
         "M110,100 A10,10,0,0,1,100,110 A10,10,0,1,1,110,100"},
    });
}

TEST(PathBuilder, ContoursAreClosedAndOptionallyChainedByNearestEnd) {
    const auto twoLines = [](bool reorder) {
        return [reorder](PathBuilder& b) {
            b.startContour(reorder);
            b.appendLine(V(0, 0), V(1, 0));
            b.appendLine(V(5, 5), V(1, 0));
            b.endContour();
        };
    };
    // Ties between shapes keep the earlier one: (20, 0) and (10, 10) are both 10 from (10, 0).
    const auto tie = [](bool horizontalFirst) {
        return [horizontalFirst](PathBuilder& b) {
            b.startContour(true);
            b.appendLine(V(0, 0), V(10, 0));
            if (horizontalFirst) {
                b.appendLine(V(20, 0), V(30, 0));
            }
            b.appendLine(V(10, 10), V(10, 30));
            if (!horizontalFirst) {
                b.appendLine(V(20, 0), V(30, 0));
            }
            b.endContour();
        };
    };
    runCases({
        {"reordered: second line walked backwards", twoLines(true), "M0,0 H1 L5,5 Z"},
        {"in order: joined by a line", twoLines(false), "M0,0 H1 L5,5 L1,0 Z"},
        {"tie, horizontal listed first", tie(true), "M0,0 H10 H20 H30 L10,10 V30 Z"},
        {"tie, vertical listed first", tie(false), "M0,0 H10 V10 V30 L20,0 H30 Z"},
        {"arc walked backwards sweeps the other way",
         [](PathBuilder& b) {
             b.startContour(true);
             b.appendLine(V(100, 120), V(100, 110));
             b.appendEllipse(V(100, 100), V(10, 10), 0, Math::HALF_PI);
             b.endContour();
         },
         "M100,120 v-10 A10,10,0,0,0,110,100 Z"},
        // After the close path the pen is at the contour's start: no move before the next line.
        {"pen back at the start, first shape moved to",
         [](PathBuilder& b) {
             b.appendLine(V(0, 0), V(0, 1));
             b.startContour(false);
             b.appendLine(V(2, 2), V(3, 3));
             b.endContour();
             b.appendLine(V(2, 2), V(2, 7));
         },
         "M0,0 V1 M2,2 L3,3 Z V7"},
        // Squared distances overflow to infinity: no shape beats the initial best, the next in
        // order is taken rather than looping for ever.
        {"no finite distance",
         [](PathBuilder& b) {
             b.startContour(true);
             b.appendLine(V(0, 0), V(1, 0));
             b.appendLine(V(2e19f, 0), V(2e19f, 1));
             b.appendLine(V(-2e19f, 1), V(-2e19f, 2));
             b.endContour();
         },
         "M0,0 H1 H2e+19 V1 H-2e+19 V2 Z"},
    });
}

TEST(PathBuilder, ContourLifecycle) {
    runCases({
        {"start while open ends the open contour; cancel writes nothing",
         [](PathBuilder& b) {
             b.startContour(false);
             b.appendLine(V(0, 0), V(1, 0));
             b.startContour(true);
             b.appendRect(V(0, 0), V(5, 5));
             b.cancelContour();
             b.endContour();  // none open
             b.appendLine(V(0, 0), V(0, 1));
         },
         "M0,0 H1 Z V1"},
        {"clear drops everything and leaves contour mode",
         [](PathBuilder& b) {
             b.appendLine(V(5, 5), V(6, 6));
             b.startContour(false);
             b.appendLine(V(0, 0), V(1, 0));
             b.clearBuilder();
             b.appendLine(V(0, 0), V(0, 1));
         },
         "M0,0 V1"},
    });
}

TEST(PathBuilder, CreatePathItemCopiesOrTakesTheContent) {
    PathBuilder builder;
    EXPECT_EQ(builder.createPathItem(false), nullptr);
    builder.startContour(false);
    builder.appendLine(V(0, 0), V(1, 1));  // pending: not in the item until written
    EXPECT_FALSE(builder.isEmpty());
    EXPECT_EQ(tq::test::CommandsText(builder.createPathItem(false)->commands), "");
    builder.clearBuilder();

    builder.appendLine(V(1000, 1000), V(1000, 1001));
    const auto copy = builder.createPathItem(false);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(tq::test::CommandsText(copy->commands), "M1000,1000 v1");
    EXPECT_EQ(contentOf(builder), "M1000,1000 v1");

    builder.startContour(false);
    builder.appendLine(V(0, 0), V(1, 1));  // pending: discarded by take
    const auto taken = builder.createPathItem(true);
    ASSERT_NE(taken, nullptr);
    EXPECT_EQ(tq::test::CommandsText(taken->commands), "M1000,1000 v1");
    EXPECT_TRUE(builder.isEmpty());

    // The pen position is forgotten too: the move is absolute although "m0 -1" is shorter.
    builder.endContour();
    builder.appendLine(V(1000, 1000), V(1000, 1001));
    EXPECT_EQ(contentOf(builder), "M1000,1000 v1");
}

// A copy owns copies of the pending shapes: each builder writes or drops them alone (the sanitizer
// build sees a shape deleted twice).
TEST(PathBuilder, CopiesAndMovesKeepThePenAndTheOpenContour) {
    PathBuilder original;
    original.appendLine(V(1000, 1000), V(1000, 1001));
    original.startContour(false);
    original.appendLine(V(1000, 1002), V(1000, 1003));

    PathBuilder copy(original);
    copy.endContour();
    EXPECT_EQ(contentOf(copy), "M1000,1000 v1 m0,1 v1 Z");
    EXPECT_EQ(contentOf(original), "M1000,1000 v1");
    original.cancelContour();
    original.startContour(false);

    original.appendLine(V(0, 0), V(5, 0));
    PathBuilder moved(std::move(original));
    moved.endContour();
    EXPECT_EQ(contentOf(moved), "M1000,1000 v1 M0,0 H5 Z");

    PathBuilder assigned;
    assigned.startContour(false);
    assigned.appendLine(V(0, 0), V(5, 0));  // deleted by the assignment
    assigned = moved;
    EXPECT_EQ(contentOf(assigned), contentOf(moved));
}
