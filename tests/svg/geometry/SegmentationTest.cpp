#include "svg/geometry/SegmentationUtils.h"
#include "svg/tqSvg.h"

#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CapturingLog.h"

using namespace tq::svg;
using Wm4::Matrix3f;
using Wm4::Vector2f;
using namespace tq::svg::SegmentationUtils;

namespace {

// Sum of the triangles' signed areas, made positive per triangle: the covered area when the
// triangles do not overlap.
double trianglesArea(const SegmentedPrimitive& p) {
    double area = 0;
    for (std::size_t i = 0; i + 2 < p.triangleIndices.size(); i += 3) {
        const Vector2f& a = p.trianglePoints[p.triangleIndices[i]];
        const Vector2f& b = p.trianglePoints[p.triangleIndices[i + 1]];
        const Vector2f& c = p.trianglePoints[p.triangleIndices[i + 2]];
        area += std::fabs((double(b.X()) - a.X()) * (double(c.Y()) - a.Y()) -
                          (double(b.Y()) - a.Y()) * (double(c.X()) - a.X())) /
                2;
    }
    return area;
}

std::shared_ptr<Path> pathOf(const std::string& d) {
    auto path = std::make_shared<Path>();
    std::string error;
    EXPECT_TRUE(ConvertPathStringToCommands(d, path->commands, &error)) << d << ": " << error;
    return path;
}

RenderingProperties unfilled() {
    RenderingProperties p;
    p.fill = "none";
    p.stroke = "black";
    return p;
}

using Controls = std::array<Vector2f, 4>;

const Controls kArch = {{{0, 0}, {0, 4}, {4, 4}, {4, 0}}};
const Controls kS = {{{0, 0}, {0, 4}, {4, -4}, {4, 0}}};
const Controls kStraight = {{{0, 0}, {1, 1}, {2, 2}, {3, 3}}};
const Controls kDot = {{{2, 5}, {2, 5}, {2, 5}, {2, 5}}};
const Controls kLoop = {{{0, 0}, {300, 300}, {-200, 300}, {100, 0}}};
const Controls kFar = {
    {{1e4f, -1e4f}, {1e4f + 3, -1e4f + 9}, {1e4f + 8, -1e4f - 5}, {1e4f, -1e4f}}};

Wm4::BezierCurve2f curve(const Controls& c) {
    return Wm4::BezierCurve2f(3, new Vector2f[4]{c[0], c[1], c[2], c[3]});
}

// Jobs point into their workspace, so both live together.
struct Flattened {
    Flattened(const Controls& c, unsigned int maxPoints, float tolerance) {
        DeCasteljauGetBezierPoints(workspace, curve(c), jobs, maxPoints, tolerance);
    }
    BezierSegmentationWorkspace workspace;
    std::vector<SegmentationJob> jobs;
};

}  // namespace

TEST(SegmentShapes, RectangleAndCircleOutlinesAndFills) {
    Rect rect(Vector2f(1, 2), Vector2f(4, 3));
    rect.radius = Vector2f(1, 1);  // not drawn
    bool error = true;
    const auto r = SegmentRect(rect, nullptr, nullptr, &error);
    EXPECT_FALSE(error);
    EXPECT_EQ(r->points, (std::vector<Vector2f>{{1, 2}, {5, 2}, {5, 5}, {1, 5}}));
    EXPECT_EQ(r->indices, (std::vector<unsigned int>{0, 1, 1, 2, 2, 3, 3, 0}));
    EXPECT_DOUBLE_EQ(trianglesArea(*r), 12);

    const auto triangle =
        SegmentCircle(Circle(Vector2f(0, 0), 2), 3, 0.1f, nullptr, nullptr, &error);
    EXPECT_EQ(triangle->points.size(), 3u);
    EXPECT_EQ(triangle->indices, (std::vector<unsigned int>{0, 1, 1, 2, 2, 0}));
    EXPECT_EQ(triangle->points[0], Vector2f(2, 0));
    EXPECT_NEAR(trianglesArea(*triangle), 3 * std::sqrt(3.0), 1e-5);

    const auto circle =
        SegmentCircle(Circle(Vector2f(0, 0), 1), 32, 1000.0f, nullptr, nullptr, &error);
    EXPECT_EQ(circle->points.size(), 32u);  // the tolerance changes nothing
    EXPECT_NEAR(trianglesArea(*circle), 16 * std::sin(2 * M_PI / 32), 1e-5);

    const auto none = SegmentCircle(Circle(Vector2f(0, 0), 1), 0, 0.1f, nullptr, nullptr, &error);
    EXPECT_TRUE(none->points.empty());
    EXPECT_FALSE(error);
}

TEST(SegmentShapes, TransformMovesOutlineAndTriangles) {
    const Matrix3f shift(1, 0, 100, 0, 1, -50, 0, 0, 1);
    const auto plain = SegmentRect(Rect(Vector2f(0, 0), Vector2f(2, 2)), nullptr, nullptr, nullptr);
    const auto moved = SegmentRect(Rect(Vector2f(0, 0), Vector2f(2, 2)), &shift, nullptr, nullptr);
    ASSERT_FALSE(moved->trianglePoints.empty());
    for (auto [from, to] : {std::pair{&plain->points, &moved->points},
                            std::pair{&plain->trianglePoints, &moved->trianglePoints}}) {
        ASSERT_EQ(from->size(), to->size());
        for (std::size_t i = 0; i < from->size(); ++i) {
            EXPECT_EQ((*to)[i], (*from)[i] + Vector2f(100, -50));
        }
    }
    const auto line = SegmentLine(Line(Vector2f(1, 1), Vector2f(2, 3)), &shift, nullptr);
    EXPECT_EQ(line->points, (std::vector<Vector2f>{{101, -49}, {102, -47}}));
    EXPECT_EQ(line->indices, (std::vector<unsigned int>{0, 1}));
}

TEST(SegmentShapes, UnfilledShapesAreNeverTriangulated) {
    const RenderingProperties props = unfilled();
    bool error = true;
    // A bow tie that crosses itself and an outline with an odd index count: no error unfilled.
    const auto bowTie = SegmentPath(*pathOf("M0 0 L10 10 L10 0 L0 10 Z"), 32, -0.999f, nullptr,
                                    &props, nullptr, &error);
    EXPECT_FALSE(error);
    EXPECT_TRUE(bowTie->trianglePoints.empty());
    EXPECT_EQ(bowTie->indices.size(), 8u);

    auto odd = SegmentedPrimitive::FromContour({{0, 0}, {1, 0}, {1, 1}}, {0, 1, 2}, nullptr, &props,
                                               &error);
    EXPECT_FALSE(error);
    odd = SegmentedPrimitive::FromContour({{0, 0}, {1, 0}, {1, 1}}, {0, 1, 2}, nullptr, nullptr,
                                          &error);
    EXPECT_TRUE(error);
    EXPECT_TRUE(odd.triangleIndices.empty());
    EXPECT_EQ(odd.indices.size(), 3u);
}

TEST(SegmentPath, FillsUnderTheNonZeroRule) {
    const std::pair<const char*, double> cases[] = {
        // Outer square wound one way, inner square the other way: a ring.
        {"M0 0 H10 V10 H0 Z M3 3 V7 H7 V3 Z", 100 - 16},
        // Two squares wound alike overlap: their union.
        {"M0 0 H4 V4 H0 Z M2 2 H6 V6 H2 Z", 28},
    };
    for (const auto& [d, area] : cases) {
        bool error = true;
        const auto p = SegmentPath(*pathOf(d), 32, -0.999f, nullptr, nullptr, nullptr, &error);
        EXPECT_FALSE(error) << d;
        EXPECT_DOUBLE_EQ(trianglesArea(*p), area) << d;
    }
}

TEST(SegmentPath, PiecesBecomeChainedRuns) {
    struct Case {
        const char* d;
        std::size_t points;
        std::size_t segments;
    };
    const Case cases[] = {
        {"M0 0 L1 0 L1 1", 3, 2},
        {"M0 0 L1 0 M5 5 L6 5", 4, 2},
        // 32 arc steps after a line: the arc adds 32 points, the first a copy of (1, 0).
        {"M0 0 L1 0 A1 1 0 0 1 3 0", 2 + 32, 1 + 32},
        // An arc with a radius below 0.01 is a straight segment.
        {"M0 0 A0.005 4 0 0 1 3 0", 2, 1},
        // An arc between equal points moves the last point only.
        {"M0 0 L1 0 A1 1 0 0 1 1 0", 2, 1},
        {"M0 0 A1 1 0 0 1 0 0", 1, 0},
        // A straight cubic gives its start, middle and end.
        {"M0 0 C1 0 2 0 3 0", 3, 2},
        // An S-shaped cubic is split to the maximum of 32 interior points.
        {"M0 0 C1 1 2 -1 3 0", 34, 33},
    };
    const RenderingProperties props = unfilled();
    for (const Case& c : cases) {
        const auto p = SegmentPath(*pathOf(c.d), 32, -0.999f, nullptr, &props, nullptr, nullptr);
        EXPECT_EQ(p->points.size(), c.points) << c.d;
        EXPECT_EQ(p->indices.size(), 2 * c.segments) << c.d;
        for (std::size_t i = 2; i < p->indices.size(); i += 2) {
            // Within a run every segment starts where the previous one ended.
            if (std::string(c.d).find('M', 1) == std::string::npos) {
                EXPECT_EQ(p->indices[i], p->indices[i - 1]) << c.d;
            }
        }
    }

    const auto arc = SegmentPath(*pathOf("M0 0 L1 0 A1 1 0 0 1 3 0"), 32, -0.999f, nullptr, &props,
                                 nullptr, nullptr);
    // The ends are exact; the first computed step is deliberately overwritten by the start.
    EXPECT_EQ(arc->points[2], Vector2f(1, 0));
    EXPECT_EQ(arc->points.back(), Vector2f(3, 0));
    EXPECT_NEAR(arc->points[17].X(), 2, 1e-5f);
    EXPECT_NEAR(std::fabs(arc->points[17].Y()), 1, 1e-5f);
}

// Non-finite coordinates fail and keep the outline: SegmenterVisitor's failure test.
TEST(SegmentPath, HugeCoordinatesThatStayFiniteAreFilled) {
    bool error = true;
    const auto big = SegmentPath(*pathOf("M-1e30 0 A1e30 1e30 0 0 1 1e30 0 Z"), 32, -0.999f,
                                 nullptr, nullptr, nullptr, &error);
    EXPECT_FALSE(error);
    EXPECT_FALSE(big->triangleIndices.empty());
}

TEST(SegmenterVisitor, FailureStopsSegmentationAndForcesTheOutline) {
    Document document;
    auto first = std::make_shared<Rect>(Vector2f(0, 0), Vector2f(1, 1));
    auto broken = std::make_shared<Path>();
    broken->commands = {{Path::CommandType::MoveTo, {0, 0}},
                        {Path::CommandType::LineTo, {std::numeric_limits<float>::infinity(), 0}},
                        {Path::CommandType::LineTo, {0, 1}},
                        {Path::CommandType::ClosePath, {}}};
    broken->editProperties().fill = "#00ff00";
    broken->editProperties().fillOpacity = 0.5f;
    auto third = std::make_shared<Circle>(Vector2f(0, 0), 1);
    document.editChildren() = {first, broken, third};

    SegmenterVisitor visitor(document);
    EXPECT_TRUE(visitor.hasError());
    const auto& primitives = visitor.getSegmentedPrimitives();
    ASSERT_EQ(primitives.size(), 2u);
    const SegmentedPrimitive& failed = *primitives.back();
    EXPECT_TRUE(failed.triangleIndices.empty());
    EXPECT_EQ(failed.indices.size(), 6u);
    EXPECT_EQ(failed.properties.stroke, "#00ff00");
    EXPECT_EQ(failed.properties.strokeOpacity, 0.5f);
    EXPECT_EQ(failed.properties.vectorEffect, VectorEffect::NonScalingStroke);

    // A failing shape that has a stroke keeps its own.
    broken->editProperties().stroke = "blue";
    SegmenterVisitor stroked(document);
    EXPECT_EQ(stroked.getSegmentedPrimitives().back()->properties.stroke, "blue");
    EXPECT_FALSE(stroked.getSegmentedPrimitives().back()->properties.vectorEffect.has_value());
}

TEST(SegmenterVisitor, PrimitivesCarryCascadedPropertiesAndFinalCoordinates) {
    Document document;
    auto group = std::make_shared<Node>();
    group->editTransform() = Matrix3f(2, 0, 10, 0, 2, 0, 0, 0, 1);
    group->editProperties().fill = "red";
    group->editChildren().push_back(std::make_shared<Line>(Vector2f(0, 0), Vector2f(1, 0)));
    group->editChildren().push_back(std::make_shared<Text>());
    group->editChildren().push_back(std::make_shared<Rect>(Vector2f(0, 0), Vector2f(1, 1)));
    document.editChildren().push_back(group);

    SegmenterVisitor visitor(document);
    EXPECT_FALSE(visitor.hasError());
    const auto& primitives = visitor.getSegmentedPrimitives();
    ASSERT_EQ(primitives.size(), 2u);
    EXPECT_EQ(primitives.front()->points.back(), Vector2f(12, 0));
    EXPECT_EQ(primitives.back()->properties.fill, "red");
    EXPECT_DOUBLE_EQ(trianglesArea(*primitives.back()), 4);
}

TEST(DeCasteljauGetBezierPoints, SpansTileTheCurveAndResultsLieOnIt) {
    for (const Controls& controls : {kArch, kS, kStraight, kDot, kLoop, kFar}) {
        const Wm4::BezierCurve2f whole = curve(controls);
        const float scale = std::fabs(controls[0].X()) + 400.0f;
        for (const unsigned int maxPoints : {1u, 2u, 3u, 7u, 32u, 100u}) {
            for (const float tolerance : {-0.999f, -0.9f, -0.3f}) {
                const Flattened flattened(controls, maxPoints, tolerance);
                const auto& jobs = flattened.jobs;
                ASSERT_GE(jobs.size(), 1u);
                ASSERT_LE(jobs.size(), maxPoints);
                float end = 0.0f;  // spans [t - 2 halfStep, t + 2 halfStep], in order, no gap
                for (const SegmentationJob& job : jobs) {
                    EXPECT_EQ(job.t - 2 * job.halfStep, end);
                    end = job.t + 2 * job.halfStep;
                    EXPECT_LT((job.getResult() - whole.GetPosition(job.t)).Length(), 1e-5f * scale);
                    // Stopping short of the maximum means every span is flat enough.
                    if (jobs.size() < maxPoints) {
                        EXPECT_LE(job.error, tolerance);
                    }
                }
                EXPECT_EQ(end, 1.0f);
            }
        }
    }
}

TEST(DeCasteljauGetBezierPoints, RefinesTheWorstSpanFirstAndTheEarliestOnTies) {
    // The arch's halves mirror each other with equal errors: the first one is split.
    const Flattened arch(kArch, 3, -0.999f);
    ASSERT_EQ(arch.jobs.size(), 3u);
    EXPECT_TRUE(arch.jobs[0].t < 0.5f && arch.jobs[1].t < 0.5f && arch.jobs[2].t > 0.5f);
    // Here the second half bends harder: it is split first.
    const Flattened skewed({{{0, 0}, {0, 1}, {1, 4}, {4, 0}}}, 3, -0.999f);
    ASSERT_EQ(skewed.jobs.size(), 3u);
    EXPECT_TRUE(skewed.jobs[0].t < 0.5f && skewed.jobs[1].t > 0.5f && skewed.jobs[2].t > 0.5f);
}

TEST(DeCasteljauGetBezierPoints, JobCountAtTheLimits) {
    // A straight or point-like cubic is accepted whole: one interior point.
    EXPECT_EQ(Flattened(kStraight, 32, -0.999f).jobs.size(), 1u);
    EXPECT_EQ(Flattened(kDot, 32, -1.0f).jobs.size(), 1u);  // a tolerance equal to the error
    // An S-shaped span is never flat at a negative tolerance, where an arch would be.
    EXPECT_EQ(Flattened(kS, 2, -0.01f).jobs.size(), 2u);
    EXPECT_EQ(Flattened(kArch, 2, -0.01f).jobs.size(), 1u);
    // The first job exists even when no point is allowed.
    EXPECT_EQ(Flattened(kS, 0, -0.999f).jobs.size(), 1u);
}
