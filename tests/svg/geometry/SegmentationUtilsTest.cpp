#include "svg/geometry/SegmentationUtils.h"

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <tqSystem/tqLog.h>

using namespace tq::svg::SegmentationUtils;
using tq::svg::SegmentedPrimitive;
using Wm4::Vector2f;

namespace {

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

// Segments k of the index array join point first + k to first + k + 1.
void expectChain(const std::vector<unsigned int>& indices, std::size_t from, unsigned int first,
                 std::size_t segments) {
    ASSERT_EQ(indices.size(), from + 2 * segments);
    for (std::size_t k = 0; k < segments; ++k) {
        EXPECT_EQ(indices[from + 2 * k], first + k);
        EXPECT_EQ(indices[from + 2 * k + 1], first + k + 1);
    }
}

class CapturingLog : public tqLog {
public:
    CapturingLog() { tqLog::setInstance(this); }
    ~CapturingLog() override { tqLog::setInstance(nullptr); }
    void write(const tqLogObject& object) override {
        lines.push_back(std::to_string(int(object.type)) + " " + object.category + ": " +
                        object.text);
    }
    std::vector<std::string> lines;
};

}  // namespace

TEST(SegmentationWorkspace, ArenaHoldsFourArraysPerPowerOfTwoOfJobs) {
    const std::vector<std::array<std::size_t, 3>> cases = {
        {0, 4, 16}, {1, 4, 16}, {2, 4, 32}, {3, 4, 64}, {4, 4, 64}, {5, 3, 96}, {33, 4, 1024}};
    for (const auto& [arrays, size, points] : cases) {
        BezierSegmentationWorkspace workspace;
        workspace.initWorkspace(arrays, size);
        EXPECT_EQ(workspace.storage.size(), points) << arrays << " arrays of " << size;
        EXPECT_EQ(workspace.getNumPoints(), size);
    }
}

TEST(SegmentationWorkspace, CopiesAndMovesHandOutFromTheirOwnStorage) {
    BezierSegmentationWorkspace original;
    original.initWorkspace(2, 4);
    original.createVector(kArch.data(), kArch.data() + 4);
    BezierSegmentationWorkspace copy(original);
    EXPECT_EQ(copy.next - copy.storage.begin(), 4);
    EXPECT_EQ(copy.createVector() - copy.storage.begin(), 4);
    BezierSegmentationWorkspace moved(std::move(copy));
    EXPECT_EQ(moved.next - moved.storage.begin(), 8);
    EXPECT_EQ(moved.storage[3], kArch[3]);
    original = moved;
    EXPECT_EQ(original.next - original.storage.begin(), 8);
}

TEST(SegmentationJob, HalvesTheSpanAndMeasuresItsFlatness) {
    struct Case {
        const char* name;
        Controls controls;
        float error;
    };
    const float root80 = std::sqrt(80.0f);
    const std::vector<Case> cases = {
        {"arch", kArch, -1.0f / 3.0f},
        {"straight", kStraight, -1.0f},
        {"all points equal", kDot, -1.0f},
        {"doubling back on the chord is no S", {{{0, 0}, {2, 0}, {1, 0}, {3, 0}}}, -0.6f},
        {"closed span", {{{0, 0}, {0, 4}, {4, 4}, {0, 0}}}, 0.0f},
        {"S", kS, 1.0f - 4.0f / (8.0f + root80)},
    };
    for (const Case& c : cases) {
        BezierSegmentationWorkspace workspace;
        workspace.initWorkspace(1, 4);
        const auto points = workspace.createVector(c.controls.data(), c.controls.data() + 4);
        const SegmentationJob job(workspace, points, 0.5f, 0.25f);
        EXPECT_NEAR(job.error, c.error, 1e-6f) << c.name;
        // The halves are the de Casteljau halves: they meet at the middle and trace the curve.
        const Wm4::BezierCurve2f whole = curve(c.controls);
        EXPECT_EQ(job.getResult(), whole.GetPosition(0.5f)) << c.name;
        EXPECT_TRUE(job.left[3] == job.getResult() && job.right[0] == job.getResult()) << c.name;
        const auto first = curve({job.left[0], job.left[1], job.left[2], job.left[3]});
        const auto second = curve({job.right[0], job.right[1], job.right[2], job.right[3]});
        for (const float s : {0.0f, 0.3f, 1.0f}) {
            EXPECT_NEAR((first.GetPosition(s) - whole.GetPosition(s / 2)).Length(), 0, 1e-5f);
            EXPECT_NEAR((second.GetPosition(s) - whole.GetPosition(0.5f + s / 2)).Length(), 0,
                        1e-5f);
        }
    }
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
    const Flattened flattenedArch(kArch, 3, -0.999f);
    const auto& arch = flattenedArch.jobs;
    ASSERT_EQ(arch.size(), 3u);
    EXPECT_EQ(arch[0].t, 0.125f);
    EXPECT_EQ(arch[1].t, 0.375f);
    EXPECT_EQ(arch[2].t, 0.75f);
    // Here the second half bends harder: it is split first.
    const Flattened flattenedSkew({{{0, 0}, {0, 1}, {1, 4}, {4, 0}}}, 3, -0.999f);
    const auto& skewed = flattenedSkew.jobs;
    ASSERT_EQ(skewed.size(), 3u);
    EXPECT_EQ(skewed[0].t, 0.25f);
    EXPECT_EQ(skewed[1].t, 0.625f);
}

TEST(DeCasteljauGetBezierPoints, JobCountAtTheLimits) {
    // A straight or point-like cubic is accepted whole: one interior point.
    EXPECT_EQ(Flattened(kStraight, 32, -0.999f).jobs.size(), 1u);
    EXPECT_EQ(Flattened(kDot, 32, -0.999f).jobs.size(), 1u);
    EXPECT_EQ(Flattened(kDot, 32, -1.0f).jobs.size(), 1u);  // a tolerance equal to the error

    // An S-shaped span is never flat at a negative tolerance, where an arch would be.
    EXPECT_EQ(Flattened(kS, 2, -0.01f).jobs.size(), 2u);
    EXPECT_EQ(Flattened(kArch, 2, -0.01f).jobs.size(), 1u);
    EXPECT_EQ(Flattened(kS, 32, -0.999f).jobs.size(), 32u);
    EXPECT_EQ(Flattened(kS, 1, -0.999f).jobs.size(), 1u);
    // The first job exists even when no point is allowed.
    EXPECT_EQ(Flattened(kS, 0, -0.999f).jobs.size(), 1u);

    Flattened flattened(kS, 4, -0.999f);
    DeCasteljauGetBezierPoints(flattened.workspace, Wm4::BezierCurve2f(2, new Vector2f[3]()),
                               flattened.jobs, 8, -1);
    EXPECT_TRUE(flattened.jobs.empty());
}

TEST(DeCasteljauSegmentBezier, AppendsAChainEndingExactlyAtTheEndPoint) {
    struct Case {
        const char* name;
        std::size_t existing;
        bool startNewRun;
        Controls controls;
        std::size_t added;       // points appended
        unsigned int chainFrom;  // first point of the first new segment
    };
    const std::vector<Case> cases = {
        {"new run", 2, true, kS, 1 + 5 + 1, 2},
        {"continued run", 2, false, kS, 5 + 1, 1},
        {"straight, new run", 0, true, kStraight, 3, 0},
        {"continued run with nothing before", 0, false, kS, 5 + 1, 0},
    };
    for (const Case& c : cases) {
        BezierSegmentationWorkspace workspace;
        SegmentedPrimitive primitive;
        primitive.points.assign(c.existing, Vector2f(-1, -1));
        DeCasteljauSegmentBezier(workspace, curve(c.controls), primitive, c.startNewRun, 5,
                                 -0.999f);
        ASSERT_EQ(primitive.points.size(), c.existing + c.added) << c.name;
        EXPECT_EQ(primitive.points.back(), c.controls[3]) << c.name;
        const std::size_t interior = c.existing + (c.startNewRun ? 1 : 0);
        if (c.startNewRun) {
            EXPECT_EQ(primitive.points[c.existing], c.controls[0]) << c.name;
        }
        const Flattened flattened(c.controls, 5, -0.999f);
        const auto& jobs = flattened.jobs;
        for (std::size_t k = 0; k < jobs.size(); ++k) {
            EXPECT_EQ(primitive.points[interior + k], jobs[k].getResult()) << c.name;
        }
        expectChain(primitive.indices, 0, c.chainFrom, primitive.points.size() - 1 - c.chainFrom);
    }
}

TEST(DeCasteljauSegmentBezier, OtherDegreesJoinTheEndsDirectly) {
    BezierSegmentationWorkspace workspace;
    SegmentedPrimitive primitive;
    const Wm4::BezierCurve2f quadratic(2, new Vector2f[3]{{0, 0}, {5, 5}, {9, 1}});
    DeCasteljauSegmentBezier(workspace, quadratic, primitive, true, 32, -0.999f);
    DeCasteljauSegmentBezier(workspace, quadratic, primitive, false, 32, -0.999f);
    EXPECT_EQ(primitive.points, (std::vector<Vector2f>{{0, 0}, {9, 1}, {9, 1}}));
    expectChain(primitive.indices, 0, 0, 2);
}

TEST(DeCasteljauSegmentBezier, NoAllocationOnceTheArenaAndJobsHaveGrown) {
    BezierSegmentationWorkspace workspace;
    SegmentedPrimitive primitive;
    DeCasteljauSegmentBezier(workspace, curve(kS), primitive, true, 32, -0.999f);
    const Vector2f* storage = workspace.storage.data();
    const SegmentationJob* jobs = workspace.jobs.data();
    const std::size_t storageCapacity = workspace.storage.capacity();
    const std::size_t jobCapacity = workspace.jobs.capacity();
    for (const Controls& controls : {kLoop, kArch, kS}) {
        for (const unsigned int maxPoints : {32u, 3u}) {
            DeCasteljauSegmentBezier(workspace, curve(controls), primitive, false, maxPoints,
                                     -0.999f);
        }
    }
    EXPECT_EQ(workspace.storage.data(), storage);
    EXPECT_EQ(workspace.storage.capacity(), storageCapacity);
    EXPECT_EQ(workspace.jobs.data(), jobs);
    EXPECT_EQ(workspace.jobs.capacity(), jobCapacity);
}

TEST(SegmentationOverflow, CurvesThatCouldOverflowIndicesAreLeftOutAndLogged) {
    const unsigned int most = std::numeric_limits<unsigned int>::max();
    CapturingLog log;
    BezierSegmentationWorkspace workspace;
    SegmentedPrimitive primitive;
    primitive.points.assign(1, Vector2f(3, 3));
    DeCasteljauSegmentBezier(workspace, curve(kS), primitive, false, most, -0.999f);
    SegmentEllipticalArc({0, 0}, {1, 1}, 0, 0, 1, primitive.points, primitive.indices, false, most,
                         0);
    EXPECT_EQ(primitive.points.size(), 1u);
    EXPECT_TRUE(primitive.indices.empty());
    const std::string line = "2 svg: Index overflow during segmentation";
    EXPECT_EQ(log.lines, (std::vector<std::string>{line, line}));
}

TEST(SegmentEllipticalArc, EqualStepsOfTheParameterAngleOnTheEllipse) {
    struct Case {
        float rotation, start, sweep;
        unsigned int steps;
        bool startNewRun;
    };
    const std::vector<Case> cases = {
        {0.0f, 0.0f, 6.2831853f, 8, true},
        {0.5f, 0.25f, 1.5f, 6, true},
        {-1.2f, 2.0f, -2.5f, 5, false},
        {0.3f, 1.0f, 0.5f, 1, false},
    };
    const Vector2f center(10, -4), radii(3, 1);
    for (const Case& c : cases) {
        std::vector<Vector2f> points = {{7, 7}};
        std::vector<unsigned int> indices = {0, 0};
        SegmentEllipticalArc(center, radii, c.rotation, c.start, c.sweep, points, indices,
                             c.startNewRun, c.steps, 0.5f);
        const unsigned int first = c.startNewRun ? 0 : 1;
        ASSERT_EQ(points.size(), 1 + c.steps + 1 - first);
        expectChain(indices, 2, c.startNewRun ? 1 : 0, c.steps);
        for (unsigned int i = first; i <= c.steps; ++i) {
            // Back into the ellipse's own frame, where the point is (rx cos a, ry sin a).
            const Vector2f d = points[1 + i - first] - center;
            const double cr = std::cos(double(c.rotation)), sr = std::sin(double(c.rotation));
            const double u = (d.X() * cr + d.Y() * sr) / radii.X();
            const double v = (-d.X() * sr + d.Y() * cr) / radii.Y();
            const double angle = c.start + c.sweep * i / c.steps;
            EXPECT_NEAR(u, std::cos(angle), 1e-5) << i;
            EXPECT_NEAR(v, std::sin(angle), 1e-5) << i;
        }
    }
}
