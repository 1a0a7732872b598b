#include "svg/tqSvg.h"

#include <array>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CaseFile.h"
#include "TreeEquality.h"

using namespace tq::svg;
using tq::test::Number;
using Wm4::Matrix3f;
using Wm4::Vector2f;

namespace {

constexpr float kPi = Wm4::Math<float>::WM4_PI;

std::list<Path::Command> commandsOf(const std::string& d) {
    std::list<Path::Command> commands;
    EXPECT_TRUE(ConvertPathStringToCommands(d, commands, nullptr)) << d;
    return commands;
}

std::string point(const Vector2f& p) {
    return Number(p.X()) + "," + Number(p.Y());
}

// Every primitive as "kind start>end", with "+" where a new run starts and a cubic's control
// points in between: "L0,0>1,0+ C1,0 2,2 3,2>3,0".
std::string piecesOf(const std::list<Path::Command>& commands) {
    std::string out;
    PathVisitorCommandsToPrimitives visitor(commands, [&](std::unique_ptr<PathPrimitive>& primitive,
                                                          bool newRun) {
        out += out.empty() ? "" : " ";
        if (primitive->type == PathPrimitiveType::LinePrimitive) {
            const auto& line = static_cast<const PathLine&>(*primitive);
            out += "L" + point(line.start) + ">" + point(line.end);
        } else if (primitive->type == PathPrimitiveType::ArcPrimitive) {
            const auto& arc = static_cast<const PathEllipticalArc&>(*primitive);
            out += "A" + point(arc.start) + ">" + point(arc.end);
        } else {
            const auto* p =
                static_cast<const PathBezierCubic&>(*primitive).curve.GetControlPoints();
            out += "C" + point(p[0]) + " " + point(p[1]) + " " + point(p[2]) + ">" + point(p[3]);
        }
        out += newRun ? "+" : "";
    });
    visitor.visit();
    return out;
}

}  // namespace

TEST(PathPrimitives, CommandsBecomeAbsolutePiecesWithRunFlags) {
    // tests/data/path/primitives.tsv
    const auto rows = tq::test::ReadTable("path/primitives.tsv");
    ASSERT_GE(rows.size(), 10u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 2u) << row[0];
        EXPECT_EQ(piecesOf(commandsOf(row[0])), row[1]) << row[0];
    }
    // Hand-built commands with too few numbers, or of no kind, are skipped.
    const std::list<Path::Command> built = {
        {Path::CommandType::MoveTo, {1, 1}}, {Path::CommandType::CubicBezier, {1, 2}},
        {Path::CommandType::LineTo, {2}},    {static_cast<Path::CommandType>(99), {}},
        {Path::CommandType::LineTo, {3, 3}},
    };
    EXPECT_EQ(piecesOf(built), "L1,1>3,3+");
}

TEST(PathEllipticalArc, EndPointFormBecomesCentreForm) {
    struct Case {
        Vector2f radii;
        float rotation;
        bool largeArc, sweep;
        Vector2f start, end;
        std::array<float, 4> centreAndAngles;  // x, y, start angle, delta
    };
    const Case cases[] = {
        {{1, 1}, 0, false, true, {0, 0}, {2, 0}, {1, 0, kPi, kPi}},
        {{1, 1}, 0, false, false, {0, 0}, {2, 0}, {1, 0, kPi, -kPi}},
        // Too small to reach: not enlarged, the centre stays on the chord's midpoint.
        {{0.5f, 0.5f}, 0, false, true, {0, 0}, {2, 0}, {1, 0, kPi, kPi}},
        // A quarter circle, small and large.
        {{1, 1}, 0, false, true, {1, 0}, {0, 1}, {0, 0, 0, kPi / 2}},
        {{1, 1}, 0, true, true, {1, 0}, {0, 1}, {1, 1, -kPi / 2, 1.5f * kPi}},
        {{1, 1}, 0, true, false, {1, 0}, {0, 1}, {0, 0, 0, -1.5f * kPi}},
        // Rotated by 90 degrees: (0, -2) is the end of the long axis at parameter angle pi.
        {{2, 1}, 90, false, true, {0, -2}, {1, 0}, {0, 0, kPi, kPi / 2}},
        // Degenerate: equal ends, or a radius below 0.01, give (0, 0) and zero angles.
        {{1, 1}, 0, false, true, {5, 5}, {5, 5}, {0, 0, 0, 0}},
        {{0.005f, 1}, 0, false, true, {0, 0}, {1, 0}, {0, 0, 0, 0}},
    };
    for (const Case& c : cases) {
        const PathEllipticalArc arc(c.radii, c.rotation, c.largeArc, c.sweep, c.start, c.end);
        const std::array<float, 4> got{arc.center.X(), arc.center.Y(), arc.startAngle,
                                       arc.deltaAngle};
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(got[i], c.centreAndAngles[i], 1e-5f) << point(c.start) << " " << i;
        }
    }
    const PathEllipticalArc negative(Vector2f(-3, 4), 10, true, false, {0, 0}, {1, 1});
    EXPECT_EQ(negative.radii, Vector2f(3, 4));
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

    // Half circles around (1, 0) pass the extreme of their side. Three quarters around (1, 1)
    // from 3/2 pi to 3 pi: the extremes past one full turn are deliberately not tried; the other
    // way round, from 0 down to -3/2 pi (shifted into [pi/2, 2 pi]), they are found.
    const struct {
        bool largeArc, sweep;
        Vector2f start, end;
        std::array<float, 4> box;
    } arcs[] = {
        {false, true, {0, 0}, {2, 0}, {0, -1, 2, 0}},  {false, false, {0, 0}, {2, 0}, {0, 0, 2, 1}},
        {false, true, {1, 0}, {0, 1}, {0, 0, 1, 1}},   {true, true, {1, 0}, {0, 1}, {0, 0, 1, 1}},
        {true, false, {1, 0}, {0, 1}, {-1, -1, 1, 1}},
    };
    for (const auto& c : arcs) {
        PathEllipticalArc({1, 1}, 0, c.largeArc, c.sweep, c.start, c.end)
            .computeBoundingBox(box, Matrix3f::IDENTITY);
        const std::array<float, 4> got{box.min.X(), box.min.Y(), box.max.X(), box.max.Y()};
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(got[i], c.box[i], 1e-5f) << c.largeArc << c.sweep << " " << i;
        }
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
    EXPECT_TRUE(path.computeEstimatedBoundingVolume(box, Matrix3f::IDENTITY));
    EXPECT_EQ(box, BoundingBox(Vector2f(1, 1), Vector2f(20, 30)));
}
