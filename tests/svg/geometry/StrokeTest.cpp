// Strokes as triangles: areas against their analytic values, coverage against cairo's stroker,
// triangles that never overlap, and input that must not break them.
#include "svg/tqSvg.h"

#include <cairo.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "CapturingLog.h"
#include "TriangleArea.h"

using namespace tq::svg;
using Wm4::Matrix3f;
using Wm4::Vector2f;

namespace {

constexpr double kPi = 3.14159265358979323846;

std::shared_ptr<Path> pathOf(const std::string& d) {
    auto path = std::make_shared<Path>();
    std::string error;
    EXPECT_TRUE(ConvertPathStringToCommands(d, path->commands, &error)) << d << ": " << error;
    return path;
}

// A black stroke of `width` with nothing else set, and no fill.
RenderingProperties pen(float width) {
    RenderingProperties p;
    p.fill = "none";
    p.stroke = "black";
    p.strokeWidth = width;
    return p;
}

// The primitive of `item` stroked with `properties` under `transform`.
SegmentedPrimitive stroked(const std::shared_ptr<ItemInterface>& item,
                           const RenderingProperties& properties, float tolerance = 0.001f,
                           const Matrix3f& transform = Matrix3f::IDENTITY) {
    item->editProperties() = properties;
    if (transform != Matrix3f::IDENTITY) {
        item->editTransform() = transform;
    }
    SegmenterVisitor visitor(*item, SegmentOptions{tolerance, true});
    EXPECT_EQ(visitor.getSegmentedPrimitives().size(), 1u);
    return visitor.getSegmentedPrimitives().empty() ? SegmentedPrimitive()
                                                    : *visitor.getSegmentedPrimitives().front();
}

double strokeArea(const SegmentedPrimitive& p) {
    return tq::test::TrianglesArea(p.strokeTrianglePoints, p.strokeTriangleIndices);
}

// The area of the union of the triangles, by filling them again as outlines under the non-zero
// rule, each wound counter-clockwise: less than their summed area when they overlap.
double unionArea(const SegmentedPrimitive& p) {
    const double covered =
        tq::test::TrianglesUnionArea(p.strokeTrianglePoints, p.strokeTriangleIndices);
    EXPECT_TRUE(covered >= 0);
    return covered;
}

bool allFinite(const std::vector<Vector2f>& points) {
    for (const Vector2f& p : points) {
        if (!std::isfinite(p.X()) || !std::isfinite(p.Y())) {
            return false;
        }
    }
    return true;
}

struct Style {
    Style(LineCap cap_ = LineCap::Butt, LineJoin join_ = LineJoin::Miter,
          std::optional<float> miterLimit_ = {}, std::vector<float> dashes_ = {}, float offset_ = 0)
        : cap(cap_),
          join(join_),
          miterLimit(miterLimit_),
          dashes(std::move(dashes_)),
          offset(offset_) {}

    LineCap cap;
    LineJoin join;
    std::optional<float> miterLimit;
    std::vector<float> dashes;
    float offset;
};

RenderingProperties pen(float width, const Style& style) {
    RenderingProperties p = pen(width);
    p.strokeLinecap = style.cap;
    p.strokeLinejoin = style.join;
    p.strokeMiterlimit = style.miterLimit;
    if (!style.dashes.empty()) {
        p.strokeDasharray.emplace();
        for (float d : style.dashes) {
            p.strokeDasharray->emplace_back(d, Unit::None);
        }
        p.strokeDashoffset = style.offset;
    }
    return p;
}

const Matrix3f kScaleX2(2, 0, 0, 0, 1, 0, 0, 0, 1);
const Matrix3f kScaleY3(1, 0, 0, 0, 3, 0, 0, 0, 1);
const Matrix3f kRotate30(0.8660254f, -0.5f, 7, 0.5f, 0.8660254f, -3, 0, 0, 1);

}  // namespace

// Width 2 throughout. A right-angled miter covers exactly what the overlap of the two segments
// inside the corner leaves out, so dashes bent around the square's corners keep width x length.
TEST(Strokes, AreasMatchTheirAnalyticValues) {
    const double clipped = std::pow(std::sqrt(2.0) - 1.2, 2);  // a miter's tip cut at 1.2
    struct Case {
        Case(const char* what_, const char* d_, Style style_, double expected_,
             const Matrix3f& transform_ = Matrix3f::IDENTITY, bool nonScaling_ = false)
            : what(what_),
              d(d_),
              style(std::move(style_)),
              expected(expected_),
              transform(transform_),
              nonScaling(nonScaling_) {}

        const char* what;
        const char* d;
        Style style;
        double expected;
        Matrix3f transform;
        bool nonScaling;
    };
    const Case cases[] = {
        {"butt caps", "M0 0 L10 0", {}, 20},
        {"square caps", "M0 0 L10 0", {LineCap::Square}, 24},
        {"round caps", "M0 0 L10 0", {LineCap::Round}, 20 + kPi},
        {"miter joins of a square", "M0 0 H10 V10 H0 Z", {}, 80},
        {"bevel joins", "M0 0 H10 V10 H0 Z", {LineCap::Butt, LineJoin::Bevel}, 78},
        {"round joins", "M0 0 H10 V10 H0 Z", {LineCap::Round, LineJoin::Round}, 76 + kPi},
        {"arcs as miter", "M0 0 H10 V10 H0 Z", {LineCap::Butt, LineJoin::Arcs}, 80},
        {"limit just over the square root of 2",
         "M0 0 H10 V10 H0 Z",
         {LineCap::Butt, LineJoin::Miter, 1.42f},
         80},
        {"limit just under it", "M0 0 H10 V10 H0 Z", {LineCap::Butt, LineJoin::Miter, 1.41f}, 78},
        {"clipped miters",
         "M0 0 H10 V10 H0 Z",
         {LineCap::Butt, LineJoin::MiterClip, 1.2f},
         80 - 4 * clipped},
        {"an open square is capped, not joined, at its start", "M0 0 H10 V10 H0 V0", {}, 79},
        {"a square narrower than the pen is filled", "M0 0 H1.5 V1.5 H0 Z", {}, 3.5 * 3.5},
        {"dashes", "M0 0 L10 0", {LineCap::Butt, LineJoin::Miter, {}, {2, 1}}, 14},
        {"dash offset", "M0 0 L10 0", {LineCap::Butt, LineJoin::Miter, {}, {2, 1}, 1}, 14},
        {"negative offset", "M0 0 L10 0", {LineCap::Butt, LineJoin::Miter, {}, {2, 1}, -1}, 12},
        {"an odd list repeated", "M0 0 L10 0", {LineCap::Butt, LineJoin::Miter, {}, {3}}, 12},
        {"dots of no length", "M0 0 L10 0", {LineCap::Round, LineJoin::Miter, {}, {0, 4}}, 3 * kPi},
        {"square dashes", "M0 0 L10 0", {LineCap::Square, LineJoin::Miter, {}, {2, 3}}, 4 * 4},
        {"a negative dash draws solid",
         "M0 0 L10 0",
         {LineCap::Butt, LineJoin::Miter, {}, {2, -1}},
         20},
        {"dashes summing to 0 draw solid",
         "M0 0 L10 0",
         {LineCap::Butt, LineJoin::Miter, {}, {0, 0}},
         20},
        {"a dash over a closed start is joined",
         "M0 0 H10 V10 H0 Z",
         {LineCap::Butt, LineJoin::Miter, {}, {5, 5}, 2.5f},
         40},
        {"a dash that never ends keeps a closed path closed",
         "M0 0 H10 V10 H0 Z",
         {LineCap::Butt, LineJoin::Miter, {}, {50, 5}},
         80},
        {"dashes restart on each subpath",
         "M0 0 L3 0 M0 5 L3 5",
         {LineCap::Butt, LineJoin::Miter, {}, {2, 9}},
         8},
        {"a round dot", "M5 5 Z", {LineCap::Round}, kPi},
        {"a square dot", "M5 5 L5 5", {LineCap::Square}, 4},
        {"no dot with butt caps", "M5 5 Z", {}, 0},
        {"a lone moveto draws nothing", "M5 5", {LineCap::Round}, 0},
        {"pen scaled along x", "M0 0 L10 0", {}, 40, kScaleX2},
        {"pen scaled across the line", "M0 0 L10 0", {}, 60, kScaleY3},
        {"an elliptic pen on a diagonal",
         "M0 0 L10 10",
         {LineCap::Round},
         2 * (40 / std::sqrt(2.0) + kPi),
         kScaleX2},
        {"rotated", "M0 0 L10 0", {LineCap::Square}, 24, kRotate30},
        {"a rotated dot keeps its square turned", "M5 5 Z", {LineCap::Square}, 4, kRotate30},
        {"non-scaling along x", "M0 0 L10 0", {}, 40, kScaleX2, true},
        {"non-scaling across", "M0 0 L10 0", {}, 20, kScaleY3, true},
        {"non-scaling dashes in output units",
         "M0 0 L5 0",
         {LineCap::Butt, LineJoin::Miter, {}, {2, 1}},
         14,
         kScaleX2,
         true},
    };
    for (const Case& c : cases) {
        RenderingProperties properties = pen(2, c.style);
        if (c.nonScaling) {
            properties.vectorEffect = VectorEffect::NonScalingStroke;
        }
        const SegmentedPrimitive p = stroked(pathOf(c.d), properties, 0.001f, c.transform);
        EXPECT_NEAR(strokeArea(p), c.expected, 1e-3 * c.expected + 1e-4) << c.what;
    }
}

TEST(Strokes, ShapesAreStrokedLikeTheirPaths) {
    const Style round{LineCap::Round, LineJoin::Round};
    // A ring: pi (11^2 - 9^2).
    EXPECT_NEAR(strokeArea(stroked(std::make_shared<Circle>(Vector2f(3, 4), 10), pen(2))), 40 * kPi,
                0.05);
    // Corner radii are not drawn, as in fills; a rectangle with no area draws nothing.
    auto rect = std::make_shared<Rect>(Vector2f(0, 0), Vector2f(10, 10));
    rect->radius = Vector2f(2, 2);
    EXPECT_NEAR(strokeArea(stroked(rect, pen(2))), 80, 1e-4);
    EXPECT_EQ(strokeArea(stroked(std::make_shared<Rect>(Vector2f(0, 0), Vector2f(10, 0)), pen(2))),
              0);
    EXPECT_NEAR(
        strokeArea(stroked(std::make_shared<Line>(Vector2f(0, 0), Vector2f(0, 10)), pen(2, round))),
        20 + kPi, 0.01);
    // A line of no length is a dot.
    EXPECT_NEAR(
        strokeArea(stroked(std::make_shared<Line>(Vector2f(1, 1), Vector2f(1, 1)), pen(2, round))),
        kPi, 0.01);
}

// The fill's clean-up drops the spike back along the diagonal; the stroke keeps it.
TEST(Strokes, FollowThePathAsWrittenNotTheCleanedFill) {
    RenderingProperties properties = pen(4);
    properties.fill = "yellow";
    const SegmentedPrimitive p =
        stroked(pathOf("M10 10 L90 10 L90 90 L10 10 L30 60 Z"), properties);
    EXPECT_FALSE(p.triangleIndices.empty());
    // Points along the diagonal from (90, 90) back to (10, 10), away from the other edges.
    for (const Vector2f& probe : {Vector2f(60, 60), Vector2f(70, 70)}) {
        bool covered = false;
        const auto& t = p.strokeTriangleIndices;
        for (std::size_t i = 0; i + 2 < t.size() && !covered; i += 3) {
            const Vector2f& a = p.strokeTrianglePoints[t[i]];
            const Vector2f& b = p.strokeTrianglePoints[t[i + 1]];
            const Vector2f& c = p.strokeTrianglePoints[t[i + 2]];
            const auto side = [&probe](const Vector2f& u, const Vector2f& v) {
                return (v.X() - u.X()) * (probe.Y() - u.Y()) -
                       (v.Y() - u.Y()) * (probe.X() - u.X());
            };
            const float s1 = side(a, b), s2 = side(b, c), s3 = side(c, a);
            covered = (s1 >= 0 && s2 >= 0 && s3 >= 0) || (s1 <= 0 && s2 <= 0 && s3 <= 0);
        }
        EXPECT_TRUE(covered) << probe.X();
    }
}

// Crossings, a figure of eight, folds back along a segment and pens wider than the segments:
// the triangles' summed area is the area of their union.
TEST(Strokes, TrianglesNeverOverlap) {
    struct Case {
        const char* d;
        Style style;
        float width;
    };
    const Case cases[] = {
        {"M0 0 L10 10 M0 10 L10 0", {}, 2},
        {"M0 0 C10 10 10 -10 0 0 C-10 10 -10 -10 0 0 Z", {LineCap::Round, LineJoin::Round}, 3},
        {"M0 0 L10 1 L0 2 L10 3 L0 4 L10 5", {LineCap::Square, LineJoin::Miter, 100.0f}, 3},
        {"M0 0 L10 1 L0 2 L10 3 L0 4 L10 5", {LineCap::Round, LineJoin::MiterClip, 2.0f}, 3},
        {"M0 0 L1 0 L1 1 L2 1 L2 0 L3 0 L3 1", {LineCap::Round, LineJoin::Bevel}, 5},
        {"M0 0 L10 0 L0 0 L10 0", {LineCap::Square, LineJoin::Round}, 2},
        {"M0 0 L10 0 L10 10 L0 10 L0 -5", {LineCap::Butt, LineJoin::Miter, {}, {7, 2}, 3}, 4},
    };
    for (const Case& c : cases) {
        const SegmentedPrimitive p = stroked(pathOf(c.d), pen(c.width, c.style), 0.01f);
        const double sum = strokeArea(p);
        EXPECT_GT(sum, 0) << c.d;
        EXPECT_NEAR(unionArea(p), sum, 1e-5 * sum) << c.d;
    }
}

TEST(Strokes, OnlyWhenAskedForAndVisible) {
    auto path = pathOf("M0 0 L10 0 L10 10");
    RenderingProperties visible = pen(2);
    visible.fill = "red";
    path->editProperties() = visible;
    // Without the option the output is what it always was.
    SegmenterVisitor plain(*path, 0.01f);
    const SegmentedPrimitive& fillOnly = *plain.getSegmentedPrimitives().front();
    EXPECT_TRUE(fillOnly.strokeTrianglePoints.empty());
    const SegmentedPrimitive both = stroked(path, visible, 0.01f);
    EXPECT_EQ(both.trianglePoints, fillOnly.trianglePoints);
    EXPECT_EQ(both.points, fillOnly.points);
    EXPECT_FALSE(both.strokeTriangleIndices.empty());

    const std::function<void(RenderingProperties&)> hidden[] = {
        [](RenderingProperties& p) { p.stroke.reset(); },
        [](RenderingProperties& p) { p.stroke = "none"; },
        [](RenderingProperties& p) { p.strokeWidth = 0; },
        [](RenderingProperties& p) { p.strokeWidth = -1; },
        [](RenderingProperties& p) { p.strokeOpacity = 0; },
        [](RenderingProperties& p) { p.opacity = 0; },
        [](RenderingProperties& p) { p.stroke = "rgba(0,0,0,0)"; },
    };
    for (const auto& hide : hidden) {
        RenderingProperties properties = visible;
        hide(properties);
        EXPECT_TRUE(stroked(path, properties, 0.01f).strokeTriangleIndices.empty());
    }
}

TEST(Strokes, TooFineDashesAndLowMiterLimitsDrawWithAWarning) {
    struct Case {
        const char* d;
        Style style;
        float tolerance;
        const char* warning;
        double expected;
    };
    const Style fine{LineCap::Butt, LineJoin::Miter, {}, {0.001f, 0.001f}};
    const Style many{LineCap::Butt, LineJoin::Miter, {}, {4e-6f, 4e-6f}};
    const Style low{LineCap::Butt, LineJoin::Miter, 0.5f};
    const Case cases[] = {
        {"M0 0 L10 0", fine, 0.01f, "finer than the tolerance", 20},
        {"M0 0 L10 0", many, 1e-6f, "over a million dashes", 20},
        {"M0 0 H10 V10 H0 Z", low, 0.01f, "Miter limit below 1", 80},
    };
    for (const Case& c : cases) {
        tq::test::CapturingLog log;
        EXPECT_NEAR(strokeArea(stroked(pathOf(c.d), pen(2, c.style), c.tolerance)), c.expected,
                    1e-3)
            << c.warning;
        ASSERT_EQ(log.lines.size(), 1u) << c.warning;
        EXPECT_NE(log.lines[0].find(c.warning), std::string::npos) << log.lines[0];
    }
}

// Nothing hostile crashes, hangs or gives a point that is not finite.
TEST(Strokes, HostileInputStaysSafe) {
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    struct Case {
        Case(const char* d_, float width_, Style style_,
             const Matrix3f& transform_ = Matrix3f::IDENTITY)
            : d(d_), width(width_), style(std::move(style_)), transform(transform_) {}

        const char* d;
        float width;
        Style style;
        Matrix3f transform;
    };
    const Case cases[] = {
        {"M0 0 L10 0 L10 10", 1e-30f, {LineCap::Round, LineJoin::Round}},
        {"M0 0 L10 0 L10 10", 1e30f, {LineCap::Round, LineJoin::Round}},
        {"M0 0 L10 0 L10 10", 3e38f, {LineCap::Square, LineJoin::Miter}},
        {"M0 0 L10 0 L0 0.000001", 2, {LineCap::Butt, LineJoin::Miter, 3e38f}},
        {"M0 0 L10 0 L0 0.000001", 2, {LineCap::Butt, LineJoin::MiterClip, 3e38f}},
        {"M0 0 L10 0 L0 0", 2, {LineCap::Butt, LineJoin::MiterClip, 1.0f}},
        {"M0 0 L1e-30 1e-30 L1e30 0 L0 1e30", 2, {LineCap::Round, LineJoin::Round}},
        {"M0 0 L10 0", 2, {LineCap::Round, LineJoin::Round}, Matrix3f(nan, 0, 0, 0, 1, 0, 0, 0, 1)},
        {"M0 0 L10 0", 2, {LineCap::Round, LineJoin::Round}, Matrix3f(inf, 0, 0, 0, 1, 0, 0, 0, 1)},
        {"M0 0 L10 0", 2, {LineCap::Round, LineJoin::Round}, Matrix3f(0, 0, 0, 0, 0, 0, 0, 0, 1)},
        {"M0 0 L10 0 L10 10",
         2,
         {LineCap::Round, LineJoin::Round},
         Matrix3f(1, 0, 0, 0, 0, 0, 0, 0, 1)},
        {"M0 0 C1e38 1e38 -1e38 1e38 0 0", 2, {LineCap::Round, LineJoin::Round}},
        {"M0 0 L1e5 0", 2, {LineCap::Round, LineJoin::Round, {}, {0, 10}}},
    };
    for (const Case& c : cases) {
        tq::test::CapturingLog log;
        const SegmentedPrimitive p =
            stroked(pathOf(c.d), pen(c.width, c.style), 0.01f, c.transform);
        EXPECT_TRUE(allFinite(p.strokeTrianglePoints)) << c.d;
        EXPECT_LT(p.strokeTrianglePoints.size(), std::size_t(1) << 24) << c.d;
        EXPECT_EQ(p.strokeTriangleIndices.size() % 3, 0u);
    }
    auto broken = std::make_shared<Path>();
    broken->commands = {{Path::CommandType::MoveTo, {0, 0}},
                        {Path::CommandType::LineTo, {inf, 0}},
                        {Path::CommandType::LineTo, {nan, 1}}};
    tq::test::CapturingLog log;
    EXPECT_TRUE(stroked(broken, pen(1), 0.01f).strokeTrianglePoints.empty());
}

namespace {

// A picture of pixels inside or not (antialiasing off: a pixel is in when its centre is).
struct Mask {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> in;
    bool at(int x, int y) const {
        return x >= 0 && y >= 0 && x < width && y < height && in[std::size_t(y) * width + x] != 0;
    }
};

using Draw = std::function<void(cairo_t*)>;

// Draws at `scale` pixels per unit, the origin `margin` units in from the corner.
Mask rasterise(const Draw& draw, int size, double scale, double margin) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_A8, size, size);
    cairo_t* cr = cairo_create(surface);
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_NONE);
    cairo_set_tolerance(cr, 0.01);
    cairo_scale(cr, scale, scale);
    cairo_translate(cr, margin, margin);
    draw(cr);
    cairo_destroy(cr);
    cairo_surface_flush(surface);
    Mask mask{size, size, {}};
    const int stride = cairo_image_surface_get_stride(surface);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            mask.in.push_back(data[y * stride + x] > 127 ? 1 : 0);
        }
    }
    cairo_surface_destroy(surface);
    return mask;
}

void traceCommands(cairo_t* cr, const Path& path) {
    for (const Path::Command& c : path.commands) {
        const std::vector<float>& v = c.values;
        switch (c.type) {
            case Path::CommandType::MoveTo:
                cairo_move_to(cr, v[0], v[1]);
                break;
            case Path::CommandType::LineTo:
                cairo_line_to(cr, v[0], v[1]);
                break;
            case Path::CommandType::CubicBezier:
                cairo_curve_to(cr, v[0], v[1], v[2], v[3], v[4], v[5]);
                break;
            case Path::CommandType::ClosePath:
                cairo_close_path(cr);
                break;
            default:
                ADD_FAILURE() << "only absolute M, L, C and Z are traced";
        }
    }
}

// Whether every pixel in one mask and not the other has a pixel of the other within `reach`.
int pixelsBeyondReach(const Mask& a, const Mask& b, int reach) {
    int beyond = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            if (a.at(x, y) == b.at(x, y)) {
                continue;
            }
            const Mask& other = a.at(x, y) ? b : a;
            bool near = false;
            for (int dy = -reach; dy <= reach && !near; ++dy) {
                for (int dx = -reach; dx <= reach && !near; ++dx) {
                    near = dx * dx + dy * dy <= reach * reach && other.at(x + dx, y + dy);
                }
            }
            beyond += near ? 0 : 1;
        }
    }
    return beyond;
}

}  // namespace

// Curves, a star, zigzags and dashes, drawn at 40 pixels a unit: our triangles filled against
// cairo's stroker on the same commands. Where the pictures differ, a pixel of the other lies
// within the tolerance (0.05 units, 2 pixels) and a pixel's rounding.
TEST(Strokes, CoverageMatchesCairosStroker) {
    struct Case {
        const char* d;
        Style style;
        float width;
    };
    const Case cases[] = {
        {"M0 5 C0 -2 6 12 10 3 C12 -2 4 0 2 9", {LineCap::Round, LineJoin::Round}, 1.5f},
        {"M1 8 C10 -3 -1 -3 8 8", {LineCap::Butt, LineJoin::Miter}, 2},
        {"M5 0 L7.9 9 L0.2 3.4 L9.8 3.4 L2.1 9 Z", {LineCap::Butt, LineJoin::Miter}, 0.8f},
        {"M5 0 L7.9 9 L0.2 3.4 L9.8 3.4 L2.1 9 Z", {LineCap::Butt, LineJoin::Bevel}, 0.8f},
        {"M0 0 L2 9 L4 1 L6 9 L8 0 L9 9", {LineCap::Square, LineJoin::Miter}, 1.2f},
        {"M0 0 L2 9 L4 1 L6 9 L8 0 L9 9", {LineCap::Round, LineJoin::Round}, 1.2f},
        {"M0 2 C3 -2 7 12 10 5", {LineCap::Round, LineJoin::Round, {}, {2, 1.5f}, 0.7f}, 1},
        {"M1 1 L9 1 L9 9 L1 9 Z", {LineCap::Square, LineJoin::Miter, {}, {3, 2}, 1}, 1},
        {"M2 3 L3.4 3 L7.4 9.93", {LineCap::Butt, LineJoin::Bevel}, 4},
    };
    const double scale = 40, margin = 2;
    const int size = 14 * 40;
    for (const Case& c : cases) {
        const auto path = pathOf(c.d);
        const RenderingProperties properties = pen(c.width, c.style);
        const SegmentedPrimitive p = stroked(path, properties, 0.05f);
        const Mask ours = rasterise(
            [&p](cairo_t* cr) {
                const auto& t = p.strokeTriangleIndices;
                for (std::size_t i = 0; i + 2 < t.size(); i += 3) {
                    for (int k = 0; k < 3; ++k) {
                        const Vector2f& v = p.strokeTrianglePoints[t[i + k]];
                        (k == 0 ? cairo_move_to : cairo_line_to)(cr, v.X(), v.Y());
                    }
                    cairo_close_path(cr);
                }
                cairo_set_fill_rule(cr, CAIRO_FILL_RULE_WINDING);
                cairo_fill(cr);
            },
            size, scale, margin);
        const Mask theirs = rasterise(
            [&](cairo_t* cr) {
                traceCommands(cr, *path);
                cairo_set_line_width(cr, c.width);
                cairo_set_line_cap(cr, c.style.cap == LineCap::Round    ? CAIRO_LINE_CAP_ROUND
                                       : c.style.cap == LineCap::Square ? CAIRO_LINE_CAP_SQUARE
                                                                        : CAIRO_LINE_CAP_BUTT);
                cairo_set_line_join(cr, c.style.join == LineJoin::Round   ? CAIRO_LINE_JOIN_ROUND
                                        : c.style.join == LineJoin::Bevel ? CAIRO_LINE_JOIN_BEVEL
                                                                          : CAIRO_LINE_JOIN_MITER);
                cairo_set_miter_limit(cr, 4);
                const std::vector<double> dashes(c.style.dashes.begin(), c.style.dashes.end());
                cairo_set_dash(cr, dashes.data(), int(dashes.size()), c.style.offset);
                cairo_stroke(cr);
            },
            size, scale, margin);
        int covered = 0;
        for (unsigned char in : theirs.in) {
            covered += in;
        }
        EXPECT_GT(covered, 1000) << c.d;
        EXPECT_EQ(pixelsBeyondReach(ours, theirs, 3), 0) << c.d;
    }
}
