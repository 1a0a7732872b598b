#include "svg/path/PathBuilder.h"

#include <functional>
#include <list>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <Wm4Foundation/Wm4Math.h>
#include <gtest/gtest.h>

#include "PathCommandPrinter.h"

using namespace tq::svg;

namespace {

using T = Path::CommandType;
using V = Wm4::Vector2f;
using Commands = std::vector<Path::Command>;
using Math = Wm4::Math<float>;

Commands contentOf(const PathBuilder& builder) {
    return Commands(builder.getContent().begin(), builder.getContent().end());
}

struct Case {
    std::string name;
    std::function<void(PathBuilder&)> build;
    Commands expected;
};

void runCases(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        PathBuilder builder;
        c.build(builder);
        EXPECT_EQ(contentOf(builder), c.expected);
    }
}

}  // namespace

TEST(PathBuilder, NewBuilderIsEmptyAndMakesNoItem) {
    PathBuilder builder;
    EXPECT_TRUE(builder.isEmpty());
    EXPECT_EQ(builder.createPathItem(false), nullptr);
    EXPECT_EQ(builder.createPathItem(true), nullptr);

    // A pending shape makes the builder non-empty, but it is not in the item until written.
    builder.startContour(false);
    builder.appendLine(V(0, 0), V(1, 1));
    EXPECT_FALSE(builder.isEmpty());
    const auto item = builder.createPathItem(false);
    ASSERT_NE(item, nullptr);
    EXPECT_TRUE(item->commands.empty());
}

TEST(PathBuilder, ShapesWrittenAtOnceUseTheShortestForms) {
    runCases({
        // Equal lengths keep the absolute form.
        {"horizontal line",
         [](PathBuilder& b) { b.appendLine(V(0, 0), V(10, 0)); },
         {{T::MoveTo, {0, 0}}, {T::HLineTo, {10}}}},
        {"lines joined at the pen",
         [](PathBuilder& b) {
             b.appendLine(V(0, 0), V(5, 5));
             b.appendLine(V(5, 5), V(9, 9));
         },
         {{T::MoveTo, {0, 0}}, {T::LineTo, {5, 5}}, {T::LineTo, {9, 9}}}},
        {"rectangle, no close path",
         [](PathBuilder& b) { b.appendRect(V(0, 0), V(10, 20)); },
         {{T::MoveTo, {0, 0}},
          {T::HLineTo, {10}},
          {T::VLineTo, {20}},
          {T::HLineTo, {0}},
          {T::VLineTo, {0}}}},
        {"relative when shorter",
         [](PathBuilder& b) { b.appendLine(V(1000, 2000), V(1001, 2001)); },
         {{T::MoveTo, {1000, 2000}}, {T::LineToRel, {1, 1}}}},
        // "-10" needs no separator: 3 characters against 4 for " 190".
        {"minus sign saves the separator",
         [](PathBuilder& b) { b.appendLine(V(200, 0), V(190, 0)); },
         {{T::MoveTo, {200, 0}}, {T::HLineToRel, {-10}}}},
        // A shape away from the pen is moved to, never joined by a line.
        {"separate shapes",
         [](PathBuilder& b) {
             b.appendLine(V(0, 0), V(1, 0));
             b.appendLine(V(1000, 1000), V(1000, 1005));
         },
         {{T::MoveTo, {0, 0}},
          {T::HLineTo, {1}},
          {T::MoveToRel, {999, 1000}},
          {T::VLineToRel, {5}}}},
        {"line of length zero is vertical",
         [](PathBuilder& b) { b.appendLine(V(3, 4), V(3, 4)); },
         {{T::MoveTo, {3, 4}}, {T::VLineTo, {4}}}},
        {"polyline",
         [](PathBuilder& b) {
             b.appendSegmentListConst({{0, 0}, {3, 4}, {3, 9}, {8, 9}});
         },
         {{T::MoveTo, {0, 0}}, {T::LineTo, {3, 4}}, {T::VLineTo, {9}}, {T::HLineTo, {8}}}},
        {"polyline of one point",
         [](PathBuilder& b) {
             b.appendSegmentListConst({{7, 7}});
         },
         {{T::MoveTo, {7, 7}}}},
        {"empty polyline is ignored", [](PathBuilder& b) { b.appendSegmentListConst({}); }, {}},
    });
}

TEST(PathBuilder, EllipsesAreAbsoluteArcs) {
    const V center(100, 100), radii(10, 10);
    runCases({
        {"quarter",
         [&](PathBuilder& b) { b.appendEllipse(center, radii, 0, Math::HALF_PI); },
         {{T::MoveTo, {110, 100}}, {T::EllipticalArc, {10, 10, 0, 0, 1, 100, 110}}}},
        {"three quarters take the large arc",
         [&](PathBuilder& b) { b.appendEllipse(center, radii, 0, 3 * Math::HALF_PI); },
         {{T::MoveTo, {110, 100}}, {T::EllipticalArc, {10, 10, 0, 1, 1, 100, 90}}}},
        // The signed difference decides: going backwards never takes the large arc.
        {"three quarters backwards",
         [&](PathBuilder& b) { b.appendEllipse(center, radii, 0, -3 * Math::HALF_PI); },
         {{T::MoveTo, {110, 100}}, {T::EllipticalArc, {10, 10, 0, 0, 1, 100, 110}}}},
        // Full: from angle 0, a quarter and then the rest, whatever the start angle.
        {"full within 0.01 of a turn",
         [](PathBuilder& b) { b.appendEllipse(V(10, 20), V(5, 3), 0, 6.28f); },
         {{T::MoveTo, {15, 20}},
          {T::EllipticalArc, {5, 3, 0, 0, 1, 10, 23}},
          {T::EllipticalArc, {5, 3, 0, 1, 1, 15, 20}}}},
        {"full from another start angle",
         [](PathBuilder& b) { b.appendEllipse(V(10, 20), V(5, 3), -1, 6); },
         {{T::MoveTo, {15, 20}},
          {T::EllipticalArc, {5, 3, 0, 0, 1, 10, 23}},
          {T::EllipticalArc, {5, 3, 0, 1, 1, 15, 20}}}},
    });

    // The full test is made in double: in float, 2 pi - 0.01f rounds to a span that fails it.
    PathBuilder builder;
    builder.appendEllipse(center, radii, 0.01f, Math::TWO_PI);
    EXPECT_EQ(builder.getContent().size(), 3u);
    builder.clearBuilder();
    builder.appendEllipse(center, radii, 0, 6.27f);
    EXPECT_EQ(builder.getContent().size(), 2u);
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
        {"reordered: second line walked backwards",
         twoLines(true),
         {{T::MoveTo, {0, 0}}, {T::HLineTo, {1}}, {T::LineTo, {5, 5}}, {T::ClosePath, {}}}},
        {"in order: joined by a line",
         twoLines(false),
         {{T::MoveTo, {0, 0}},
          {T::HLineTo, {1}},
          {T::LineTo, {5, 5}},
          {T::LineTo, {1, 0}},
          {T::ClosePath, {}}}},
        {"tie, horizontal listed first",
         tie(true),
         {{T::MoveTo, {0, 0}},
          {T::HLineTo, {10}},
          {T::HLineTo, {20}},
          {T::HLineTo, {30}},
          {T::LineTo, {10, 10}},
          {T::VLineTo, {30}},
          {T::ClosePath, {}}}},
        {"tie, vertical listed first",
         tie(false),
         {{T::MoveTo, {0, 0}},
          {T::HLineTo, {10}},
          {T::VLineTo, {10}},
          {T::VLineTo, {30}},
          {T::LineTo, {20, 0}},
          {T::HLineTo, {30}},
          {T::ClosePath, {}}}},
        {"both ends equally near: direction kept",
         [](PathBuilder& b) {
             b.startContour(true);
             b.appendLine(V(0, 0), V(10, 0));
             b.appendLine(V(10, 5), V(10, -5));
             b.endContour();
         },
         {{T::MoveTo, {0, 0}},
          {T::HLineTo, {10}},
          {T::VLineTo, {5}},
          {T::VLineTo, {-5}},
          {T::ClosePath, {}}}},
        {"polyline walked backwards",
         [](PathBuilder& b) {
             b.startContour(true);
             b.appendLine(V(0, 0), V(10, 0));
             b.appendSegmentListConst({{0, 5}, {5, 5}, {10, 5}});
             b.endContour();
         },
         {{T::MoveTo, {0, 0}},
          {T::HLineTo, {10}},
          {T::VLineTo, {5}},
          {T::HLineTo, {5}},
          {T::HLineTo, {0}},
          {T::ClosePath, {}}}},
        {"arc walked backwards sweeps the other way",
         [](PathBuilder& b) {
             b.startContour(true);
             b.appendLine(V(100, 120), V(100, 110));
             b.appendEllipse(V(100, 100), V(10, 10), 0, Math::HALF_PI);
             b.endContour();
         },
         {{T::MoveTo, {100, 120}},
          {T::VLineToRel, {-10}},
          {T::EllipticalArc, {10, 10, 0, 0, 0, 110, 100}},
          {T::ClosePath, {}}}},
        // After the close path the pen is at the contour's start: no move before the next line.
        {"pen back at the start, first shape moved to",
         [](PathBuilder& b) {
             b.appendLine(V(0, 0), V(0, 1));
             b.startContour(false);
             b.appendLine(V(2, 2), V(3, 3));
             b.endContour();
             b.appendLine(V(2, 2), V(2, 7));
         },
         {{T::MoveTo, {0, 0}},
          {T::VLineTo, {1}},
          {T::MoveTo, {2, 2}},
          {T::LineTo, {3, 3}},
          {T::ClosePath, {}},
          {T::VLineTo, {7}}}},
    });
}

TEST(PathBuilder, ContourLifecycle) {
    runCases({
        {"start while open ends the open contour",
         [](PathBuilder& b) {
             b.startContour(false);
             b.appendLine(V(0, 0), V(1, 0));
             b.startContour(false);
             b.appendLine(V(0, 0), V(0, 1));  // pending: never written
         },
         {{T::MoveTo, {0, 0}}, {T::HLineTo, {1}}, {T::ClosePath, {}}}},
        {"cancel writes nothing; the next contour starts afresh",
         [](PathBuilder& b) {
             b.startContour(true);
             b.appendRect(V(0, 0), V(5, 5));
             b.cancelContour();
             b.startContour(false);
             b.endContour();  // nothing gathered: not even a close path
             b.endContour();  // none open
             b.appendLine(V(0, 0), V(1, 0));
         },
         {{T::MoveTo, {0, 0}}, {T::HLineTo, {1}}}},
        {"clear drops pending shapes and leaves contour mode",
         [](PathBuilder& b) {
             b.startContour(false);
             b.appendLine(V(0, 0), V(1, 0));
             b.clearBuilder();
             b.appendLine(V(0, 0), V(0, 1));
         },
         {{T::MoveTo, {0, 0}}, {T::VLineTo, {1}}}},
    });
}

TEST(PathBuilder, ReorderingEndsWhenNoDistanceIsFinite) {
    // Squared distances overflow to infinity: no shape beats the initial best, the next in order
    // is taken rather than looping for ever.
    PathBuilder builder;
    builder.startContour(true);
    builder.appendLine(V(0, 0), V(1, 0));
    builder.appendLine(V(2e19f, 0), V(2e19f, 1));
    builder.appendLine(V(-2e19f, 1), V(-2e19f, 2));
    builder.endContour();
    const Commands content = contentOf(builder);
    ASSERT_EQ(content.size(), 7u);
    EXPECT_EQ(content[2], (Path::Command{T::HLineTo, {2e19f}}));
    EXPECT_EQ(content[4], (Path::Command{T::HLineTo, {-2e19f}}));
    EXPECT_EQ(content[6].type, T::ClosePath);
}

TEST(PathBuilder, CreatePathItemCopiesOrTakesTheContent) {
    PathBuilder builder;
    builder.appendLine(V(1000, 1000), V(1000, 1001));
    const Commands written = contentOf(builder);

    const auto copy = builder.createPathItem(false);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(Commands(copy->commands.begin(), copy->commands.end()), written);
    EXPECT_EQ(contentOf(builder), written);

    builder.startContour(false);
    builder.appendLine(V(0, 0), V(1, 1));  // pending: discarded by take
    const auto taken = builder.createPathItem(true);
    ASSERT_NE(taken, nullptr);
    EXPECT_EQ(Commands(taken->commands.begin(), taken->commands.end()), written);
    EXPECT_TRUE(builder.isEmpty());

    // The pen position is forgotten too: the move is absolute although "m0 -1" is shorter.
    builder.endContour();
    builder.appendLine(V(1000, 1000), V(1000, 1001));
    EXPECT_EQ(contentOf(builder), written);
}

// Copies share pending shapes (see the header), so they are made while none is pending.
TEST(PathBuilder, CopiesAndMovesKeepThePenAndTheOpenContour) {
    PathBuilder original;
    original.appendLine(V(1000, 1000), V(1000, 1001));
    original.startContour(false);

    PathBuilder copy(original);
    copy.appendLine(V(1000, 1002), V(1000, 1003));
    copy.endContour();
    EXPECT_EQ(contentOf(copy)[2], (Path::Command{T::MoveToRel, {0, 1}}));
    EXPECT_EQ(contentOf(copy).back().type, T::ClosePath);
    EXPECT_EQ(original.getContent().size(), 2u);

    original.appendLine(V(0, 0), V(5, 0));
    PathBuilder moved(std::move(original));
    moved.endContour();
    EXPECT_EQ(contentOf(moved).back().type, T::ClosePath);

    PathBuilder assigned;
    assigned.startContour(false);
    assigned.appendLine(V(0, 0), V(5, 0));  // deleted by the assignment
    assigned = moved;
    EXPECT_EQ(contentOf(assigned), contentOf(moved));
}
