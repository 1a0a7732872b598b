#include "svg/tqSvg.h"

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace tq::svg;
using Wm4::Matrix3f;
using Wm4::Vector2f;

namespace {

constexpr float kPi = Wm4::Math<float>::WM4_PI;

// What the visitor handed over, flattened for comparison.
struct Piece {
    PathPrimitiveType type;
    Vector2f start;
    Vector2f end;
    bool newRun;
    bool operator==(const Piece& o) const {
        return type == o.type && start == o.start && end == o.end && newRun == o.newRun;
    }
};

std::ostream& operator<<(std::ostream& os, const Piece& p) {
    return os << static_cast<int>(p.type) << " (" << p.start.X() << "," << p.start.Y() << ")->("
              << p.end.X() << "," << p.end.Y() << ")" << (p.newRun ? " new" : "");
}

std::list<Path::Command> commandsOf(const std::string& d) {
    std::list<Path::Command> commands;
    std::string error;
    EXPECT_TRUE(ConvertPathStringToCommands(d, commands, &error)) << d << ": " << error;
    return commands;
}

// Every primitive of `d`, the cubics' control points in `cubics`.
std::vector<Piece> piecesOf(const std::string& d,
                            std::vector<std::vector<Vector2f>>* cubics = nullptr) {
    const std::list<Path::Command> commands = commandsOf(d);
    std::vector<Piece> pieces;
    PathVisitorCommandsToPrimitives visitor(
        commands, [&](std::unique_ptr<PathPrimitive>& primitive, bool newRun) {
            switch (primitive->type) {
                case PathPrimitiveType::LinePrimitive: {
                    const auto& line = static_cast<const PathLine&>(*primitive);
                    pieces.push_back({primitive->type, line.start, line.end, newRun});
                    break;
                }
                case PathPrimitiveType::ArcPrimitive: {
                    const auto& arc = static_cast<const PathEllipticalArc&>(*primitive);
                    pieces.push_back({primitive->type, arc.start, arc.end, newRun});
                    break;
                }
                case PathPrimitiveType::BezierCubicPrimitive: {
                    const auto* p =
                        static_cast<const PathBezierCubic&>(*primitive).curve.GetControlPoints();
                    pieces.push_back({primitive->type, p[0], p[3], newRun});
                    if (cubics) {
                        cubics->push_back({p[0], p[1], p[2], p[3]});
                    }
                    break;
                }
            }
        });
    visitor.visit();
    return pieces;
}

constexpr auto kLine = PathPrimitiveType::LinePrimitive;
constexpr auto kArc = PathPrimitiveType::ArcPrimitive;
constexpr auto kCubic = PathPrimitiveType::BezierCubicPrimitive;

}  // namespace

TEST(PathPrimitives, CommandsBecomeAbsolutePiecesWithRunFlags) {
    struct Case {
        const char* d;
        std::vector<Piece> expected;
    };
    const Case cases[] = {
        {"M1 1 Z", {{kLine, {1, 1}, {1, 1}, true}}},
        {"M0 0 L1 0 M5 5 L6 5", {{kLine, {0, 0}, {1, 0}, true}, {kLine, {5, 5}, {6, 5}, true}}},
        {"M0 0 L1 0 L1 1", {{kLine, {0, 0}, {1, 0}, true}, {kLine, {1, 0}, {1, 1}, false}}},
        // After a close path the pen is back at the subpath start and a new run begins.
        {"M0 0 L1 0 Z L2 2",
         {{kLine, {0, 0}, {1, 0}, true},
          {kLine, {1, 0}, {0, 0}, false},
          {kLine, {0, 0}, {2, 2}, true}}},
        {"m1 2 l3 4 h1 v-2 H0 V0",
         {{kLine, {1, 2}, {4, 6}, true},
          {kLine, {4, 6}, {5, 6}, false},
          {kLine, {5, 6}, {5, 4}, false},
          {kLine, {5, 4}, {0, 4}, false},
          {kLine, {0, 4}, {0, 0}, false}}},
        // Relative moves after a close path start from the subpath start.
        {"m1 1 l1 0 z m2 2 l1 0",
         {{kLine, {1, 1}, {2, 1}, true},
          {kLine, {2, 1}, {1, 1}, false},
          {kLine, {3, 3}, {4, 3}, true}}},
        {"M0 0 a1 1 0 0 1 2 0 c0 1 1 1 1 0",
         {{kArc, {0, 0}, {2, 0}, true}, {kCubic, {2, 0}, {3, 0}, false}}},
        {"M0 0 M3 3", {}},
        {"", {}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(piecesOf(c.d), c.expected) << c.d;
    }
}

TEST(PathPrimitives, SmoothCubicReflectsThePreviousRecordsRawNumbers) {
    struct Case {
        const char* d;
        Vector2f p1;  // first control point of the last cubic
    };
    const Case cases[] = {
        // After an absolute cubic: SVG's reflection of (2, 2) about (3, 0).
        {"M0 0 C1 1 2 2 3 0 S5 1 6 0", {4, -2}},
        // After a relative cubic the raw numbers (2, 2) and (3, 0) are reflected as if absolute,
        // then the current point (13, 10) is added for the relative kind: not SVG's (14, 8).
        {"M10 10 c1 1 2 2 3 0 s1 1 2 0", {4 + 13, -2 + 10}},
        // No cubic before: the current point, with nothing added for the relative kind.
        {"M7 8 s1 1 2 0", {7, 8}},
        {"M7 8 L9 9 S1 1 2 0", {9, 9}},
        // A chain of smooth cubics reflects the previous smooth record.
        {"M0 0 S1 1 2 0 S3 -1 4 0", {3, -1}},
    };
    for (const Case& c : cases) {
        std::vector<std::vector<Vector2f>> cubics;
        piecesOf(c.d, &cubics);
        ASSERT_FALSE(cubics.empty()) << c.d;
        EXPECT_EQ(cubics.back()[1], c.p1) << c.d;
    }
}

TEST(PathPrimitives, HandBuiltCommandsWithTooFewNumbersAreSkipped) {
    std::list<Path::Command> commands = {
        {Path::CommandType::MoveTo, {1, 1}}, {Path::CommandType::CubicBezier, {1, 2}},
        {Path::CommandType::LineTo, {2}},    {static_cast<Path::CommandType>(99), {}},
        {Path::CommandType::LineTo, {3, 3}},
    };
    int count = 0;
    PathVisitorCommandsToPrimitives visitor(commands,
                                            [&](std::unique_ptr<PathPrimitive>& p, bool newRun) {
                                                ++count;
                                                EXPECT_TRUE(newRun);
                                                EXPECT_EQ(p->type, kLine);
                                            });
    visitor.visit();
    EXPECT_EQ(count, 1);
}

TEST(PathEllipticalArc, EndPointFormBecomesCentreForm) {
    struct Case {
        Vector2f radii;
        float rotation;
        bool largeArc, sweep;
        Vector2f start, end;
        Vector2f center;
        float startAngle, deltaAngle;
    };
    const Case cases[] = {
        {{1, 1}, 0, false, true, {0, 0}, {2, 0}, {1, 0}, kPi, kPi},
        {{1, 1}, 0, false, false, {0, 0}, {2, 0}, {1, 0}, kPi, -kPi},
        // Too small to reach: not enlarged, the centre stays on the chord's midpoint.
        {{0.5f, 0.5f}, 0, false, true, {0, 0}, {2, 0}, {1, 0}, kPi, kPi},
        // A quarter circle, small and large.
        {{1, 1}, 0, false, true, {1, 0}, {0, 1}, {0, 0}, 0, kPi / 2},
        {{1, 1}, 0, true, true, {1, 0}, {0, 1}, {1, 1}, -kPi / 2, 1.5f * kPi},
        {{1, 1}, 0, true, false, {1, 0}, {0, 1}, {0, 0}, 0, -1.5f * kPi},
        // Rotated by 90 degrees: (0, -2) is the end of the long axis at parameter angle pi.
        {{2, 1}, 90, false, true, {0, -2}, {1, 0}, {0, 0}, kPi, kPi / 2},
    };
    for (const Case& c : cases) {
        const PathEllipticalArc arc(c.radii, c.rotation, c.largeArc, c.sweep, c.start, c.end);
        EXPECT_NEAR(arc.center.X(), c.center.X(), 1e-5f);
        EXPECT_NEAR(arc.center.Y(), c.center.Y(), 1e-5f);
        EXPECT_NEAR(arc.startAngle, c.startAngle, 1e-5f);
        EXPECT_NEAR(arc.deltaAngle, c.deltaAngle, 1e-5f);
    }
}

TEST(PathEllipticalArc, DegenerateArcsKeepTheirFieldsAndZeroAngles) {
    const PathEllipticalArc negative(Vector2f(-3, 4), 10, true, false, {0, 0}, {1, 1});
    EXPECT_EQ(negative.radii, Vector2f(3, 4));
    EXPECT_EQ(negative.rotation, 10);

    for (const PathEllipticalArc& arc :
         {PathEllipticalArc({1, 1}, 0, false, true, {5, 5}, {5, 5}),
          PathEllipticalArc({0.005f, 1}, 0, false, true, {0, 0}, {1, 0})}) {
        EXPECT_EQ(arc.center, Vector2f(0, 0));
        EXPECT_EQ(arc.startAngle, 0);
        EXPECT_EQ(arc.deltaAngle, 0);
    }
}

TEST(PathPrimitiveBoundingBox, EachKindFollowsItsOwnRule) {
    const Matrix3f shift(1, 0, 10, 0, 1, 20, 0, 0, 1);
    BoundingBox box(Vector2f(-7, -7), Vector2f(7, 7));

    PathLine(Vector2f(3, 1), Vector2f(1, 2)).computeBoundingBox(box, shift);
    EXPECT_EQ(box, BoundingBox(Vector2f(11, 21), Vector2f(13, 22)));

    // Cubics leave the box alone.
    PathBezierCubic(new Vector2f[4]{{0, 0}, {0, 100}, {100, 100}, {100, 0}})
        .computeBoundingBox(box, shift);
    EXPECT_EQ(box, BoundingBox(Vector2f(11, 21), Vector2f(13, 22)));

    // A radius below 0.01: the end points, deliberately untransformed.
    PathEllipticalArc({0.001f, 5}, 0, false, true, {3, 1}, {1, 2}).computeBoundingBox(box, shift);
    EXPECT_EQ(box, BoundingBox(Vector2f(1, 1), Vector2f(3, 2)));

    PathEllipticalArc({1, 1}, 0, false, true, {3, 1}, {3, 1}).computeBoundingBox(box, shift);
    EXPECT_FALSE(box.isValid());
}

TEST(PathPrimitiveBoundingBox, ArcsReachTheirExtremesBetweenTheEndAngles) {
    struct Case {
        bool largeArc, sweep;
        Vector2f start, end;
        BoundingBox expected;
    };
    const Case cases[] = {
        // Half circles around (1, 0): each passes the extreme of its side.
        {false, true, {0, 0}, {2, 0}, BoundingBox({0, -1}, {2, 0})},
        {false, false, {0, 0}, {2, 0}, BoundingBox({0, 0}, {2, 1})},
        {false, true, {1, 0}, {0, 1}, BoundingBox({0, 0}, {1, 1})},
        // Three quarters around (1, 1) from angle 3/2 pi to 3 pi: the extremes past one full
        // turn are deliberately not tried, so the estimate is only the end points' box.
        {true, true, {1, 0}, {0, 1}, BoundingBox({0, 0}, {1, 1})},
        // The same three quarters the other way round, from 0 down to -3/2 pi (shifted into
        // [pi/2, 2 pi]): the extremes at pi and 3/2 pi are found.
        {true, false, {1, 0}, {0, 1}, BoundingBox({-1, -1}, {1, 1})},
    };
    for (const Case& c : cases) {
        BoundingBox box;
        PathEllipticalArc({1, 1}, 0, c.largeArc, c.sweep, c.start, c.end)
            .computeBoundingBox(box, Matrix3f::IDENTITY);
        EXPECT_NEAR(box.min.X(), c.expected.min.X(), 1e-5f);
        EXPECT_NEAR(box.min.Y(), c.expected.min.Y(), 1e-5f);
        EXPECT_NEAR(box.max.X(), c.expected.max.X(), 1e-5f);
        EXPECT_NEAR(box.max.Y(), c.expected.max.Y(), 1e-5f);
    }
}

TEST(PathPrimitiveBoundingBox, PathUnitesItsPrimitivesAndCubicsPullTowardsTheEmptyBox) {
    Path path;
    path.commands = commandsOf("M10 10 L20 30");
    BoundingBox box;
    EXPECT_TRUE(path.computeEstimatedBoundingVolume(box, Matrix3f::IDENTITY));
    EXPECT_EQ(box, BoundingBox(Vector2f(10, 10), Vector2f(20, 30)));

    // The cubic's empty box is merged too: min towards (1, 1), max unchanged by (-1, -1).
    path.commands = commandsOf("M10 10 L20 30 C0 0 50 50 30 30");
    box = BoundingBox();
    EXPECT_TRUE(path.computeEstimatedBoundingVolume(box, Matrix3f::IDENTITY));
    EXPECT_EQ(box, BoundingBox(Vector2f(1, 1), Vector2f(20, 30)));
}
