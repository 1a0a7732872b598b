#include "svg/geometry/SegmentationUtils.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <type_traits>

#include <tqSystem/tqLog.h>

#include "svg/geometry/detail/Flattening.h"

namespace tq::svg::SegmentationUtils {

namespace {

constexpr std::uint64_t kMaxIndex = 4294967295u;

// Whether appending up to `count` points after `existing` could leave 32-bit indices.
bool wouldOverflow(std::size_t existing, unsigned int count) {
    if (std::uint64_t(existing) + count > kMaxIndex) {
        tqLog::Log(tqLogObject(tqLogType::Error, "svg", "Index overflow during segmentation"));
        return true;
    }
    return false;
}

// Joins the points from `firstNew` on to the end: from the point before when the run goes on,
// so that the new points continue the previous segment chain.
void appendChain(std::vector<unsigned int>& indices, std::size_t firstNew, std::size_t count,
                 bool startNewRun) {
    // A continued run with nothing before it has no previous point to start from.
    std::size_t k = (startNewRun || firstNew == 0) ? firstNew : firstNew - 1;
    for (; k + 1 < count; ++k) {
        indices.push_back(static_cast<unsigned int>(k));
        indices.push_back(static_cast<unsigned int>(k + 1));
    }
}

std::size_t nextPowerOfTwo(std::size_t n) {
    std::size_t power = 1;
    while (power < n) {
        power <<= 1;
    }
    return power;
}

// Index of the job with the largest error; the earliest wins ties (and NaN never wins).
std::size_t worstJob(const std::vector<SegmentationJob>& jobs) {
    std::size_t worst = 0;
    for (std::size_t k = 1; k < jobs.size(); ++k) {
        if (jobs[k].error > jobs[worst].error) {
            worst = k;
        }
    }
    return worst;
}

Wm4::Vector2f midpoint(const Wm4::Vector2f& a, const Wm4::Vector2f& b) {
    return (a + b) * 0.5f;
}

// De Casteljau at one half, in place: each round takes the outermost points of the current
// polygon into the halves and replaces the polygon by its edge midpoints. The last round has one
// point left, the curve's middle, which ends both halves.
template <class Count>
void splitAtHalf(PointIterator points, PointIterator left, PointIterator right, Count n) {
    for (std::ptrdiff_t count = n; count > 0; --count) {
        left[n - count] = points[0];
        right[count - 1] = points[count - 1];
        for (std::ptrdiff_t m = 0; m + 1 < count; ++m) {
            points[m] = midpoint(points[m], points[m + 1]);
        }
    }
}

}  // namespace

// ---- SegmentationJob ----

SegmentationJob::SegmentationJob(BezierSegmentationWorkspace& workspace, PointIterator points_,
                                 float t_, float halfStep_)
    : points(points_), left(), right(), t(t_), halfStep(halfStep_), error(0.0f) {
    computeError(workspace);
}

void SegmentationJob::computeError(BezierSegmentationWorkspace& workspace) {
    left = workspace.createVector();
    right = workspace.createVector();
    const auto n = static_cast<std::ptrdiff_t>(workspace.getNumPoints());
    const Wm4::Vector2f p0 = points[0], p1 = points[1], p2 = points[2], p3 = points[n - 1];

    if (n == 4) {
        // Cubics, which are all that segmentation hands here, with the loops unrolled.
        splitAtHalf(points, left, right, std::integral_constant<std::ptrdiff_t, 4>());
    } else {
        splitAtHalf(points, left, right, n);
    }

    // Inner control points on opposite sides of the chord make an S: never flat enough.
    const Wm4::Vector2f d = p3 - p0;
    const float s1 = d.X() * (p1.Y() - p0.Y()) - d.Y() * (p1.X() - p0.X());
    const float s2 = d.X() * (p2.Y() - p0.Y()) - d.Y() * (p2.X() - p0.X());
    const float base = s1 * s2 < 0.0f ? 1.0f : 0.0f;
    const float polygon = (p1 - p0).Length() + (p2 - p1).Length() + (p3 - p2).Length();
    error = polygon == 0.0f ? base - 1.0f : base - d.Length() / polygon;
}

// ---- BezierSegmentationWorkspace ----

// `next` is declared before `storage`, so it is set once the storage exists.
BezierSegmentationWorkspace::BezierSegmentationWorkspace() {
    next = storage.begin();
}

BezierSegmentationWorkspace::BezierSegmentationWorkspace(const BezierSegmentationWorkspace& other)
    : vectorSize(other.vectorSize), storage(other.storage) {
    next = storage.begin() + (other.next - other.storage.begin());
}

BezierSegmentationWorkspace::BezierSegmentationWorkspace(
    BezierSegmentationWorkspace&& other) noexcept
    : vectorSize(other.vectorSize) {
    const auto offset = other.next - other.storage.begin();
    storage = std::move(other.storage);
    jobs = std::move(other.jobs);
    next = storage.begin() + offset;
    other.storage.clear();
    other.next = other.storage.begin();
}

BezierSegmentationWorkspace& BezierSegmentationWorkspace::operator=(
    const BezierSegmentationWorkspace& other) {
    if (this != &other) {
        vectorSize = other.vectorSize;
        storage = other.storage;
        next = storage.begin() + (other.next - other.storage.begin());
        jobs.clear();
    }
    return *this;
}

BezierSegmentationWorkspace& BezierSegmentationWorkspace::operator=(
    BezierSegmentationWorkspace&& other) noexcept {
    if (this != &other) {
        const auto offset = other.next - other.storage.begin();
        vectorSize = other.vectorSize;
        storage = std::move(other.storage);
        jobs = std::move(other.jobs);
        next = storage.begin() + offset;
        other.storage.clear();
        other.next = other.storage.begin();
    }
    return *this;
}

BezierSegmentationWorkspace::~BezierSegmentationWorkspace() = default;

void BezierSegmentationWorkspace::initWorkspace(std::size_t numVectors, std::size_t size) {
    vectorSize = size;
    storage.resize(nextPowerOfTwo(numVectors) * 4 * size);
    next = storage.begin();
}

PointIterator BezierSegmentationWorkspace::createVector() {
    const PointIterator vector = next;
    next += static_cast<std::ptrdiff_t>(vectorSize);
    return vector;
}

PointIterator BezierSegmentationWorkspace::createVector(const Wm4::Vector2f* first,
                                                        const Wm4::Vector2f* last) {
    const PointIterator vector = createVector();
    std::copy(first, last, vector);
    return vector;
}

// ---- Flattening ----

void DeCasteljauGetBezierPoints(BezierSegmentationWorkspace& workspace,
                                const Wm4::BezierCurve2f& curve, std::vector<SegmentationJob>& jobs,
                                unsigned int maxPoints, float tolerance) {
    jobs.clear();
    const int degree = curve.GetDegree();
    if (degree != 3 || curve.GetControlPoints() == nullptr) {
        return;
    }
    workspace.initWorkspace(maxPoints, std::size_t(degree) + 1);
    // The first job exists even for a maximum of 0.
    jobs.reserve(std::max(maxPoints, 1u));
    const Wm4::Vector2f* control = curve.GetControlPoints();
    jobs.emplace_back(workspace, workspace.createVector(control, control + degree + 1), 0.5f,
                      0.25f);

    while (jobs.size() < maxPoints) {
        const std::size_t worst = worstJob(jobs);
        if (tolerance >= jobs[worst].error) {
            break;
        }
        const SegmentationJob parent = jobs[worst];
        const float childHalfStep = parent.halfStep / 2.0f;
        jobs[worst] =
            SegmentationJob(workspace, parent.left, parent.t - parent.halfStep, childHalfStep);
        jobs.emplace_back(workspace, parent.right, parent.t + parent.halfStep, childHalfStep);
    }
    std::sort(jobs.begin(), jobs.end(),
              [](const SegmentationJob& a, const SegmentationJob& b) { return a.t < b.t; });
}

void DeCasteljauSegmentBezier(BezierSegmentationWorkspace& workspace,
                              const Wm4::BezierCurve2f& curve, SegmentedPrimitive& primitive,
                              bool startNewRun, unsigned int maxPoints, float tolerance) {
    std::vector<Wm4::Vector2f>& points = primitive.points;
    const Wm4::Vector2f* control = curve.GetControlPoints();
    // Without control points there is no end point to join to.
    if (wouldOverflow(points.size(), maxPoints) || control == nullptr || curve.GetDegree() < 0) {
        return;
    }
    DeCasteljauGetBezierPoints(workspace, curve, workspace.jobs, maxPoints, tolerance);

    const std::size_t before = points.size();
    if (startNewRun) {
        points.push_back(control[0]);
    }
    for (const SegmentationJob& job : workspace.jobs) {
        points.push_back(job.getResult());
    }
    // The exact end point, so that the next piece starts where this one was meant to end.
    points.push_back(control[curve.GetDegree()]);
    appendChain(primitive.indices, before, points.size(), startNewRun);
}

void SegmentEllipticalArc(const Wm4::Vector2f& center, const Wm4::Vector2f& radii, float rotation,
                          float startAngle, float sweep, std::vector<Wm4::Vector2f>& points,
                          std::vector<unsigned int>& indices, bool startNewRun, unsigned int steps,
                          float /*tolerance*/) {
    if (wouldOverflow(points.size(), steps)) {
        return;
    }
    const float c = std::cos(rotation);
    const float s = std::sin(rotation);
    const std::size_t before = points.size();
    // With no steps the only point is the start (rather than 0 / 0).
    const float stepCount = steps == 0 ? 1.0f : float(steps);
    for (unsigned int i = startNewRun ? 0 : 1; i <= steps; ++i) {
        const float theta = (float(i) / stepCount) * sweep + startAngle;
        const float cosTheta = std::cos(theta);
        const float sinTheta = std::sin(theta);
        points.emplace_back(center.X() + radii.X() * cosTheta * c - radii.Y() * sinTheta * s,
                            center.Y() + radii.X() * cosTheta * s + radii.Y() * sinTheta * c);
        if (i == steps) {
            break;  // steps may be the largest unsigned value
        }
    }
    appendChain(indices, before, points.size(), startNewRun);
}

}  // namespace tq::svg::SegmentationUtils

namespace tq::svg::detail {

float MaximumStretch(const Wm4::Matrix3f* m) {
    if (m == nullptr) {
        return 1.0f;
    }
    // The largest singular value of [a b; c d].
    const double a = (*m)(0, 0), b = (*m)(0, 1), c = (*m)(1, 0), d = (*m)(1, 1);
    const double sum = a * a + b * b + c * c + d * d;
    const double det = a * d - b * c;
    const double root = std::sqrt(std::max(0.0, sum * sum - 4.0 * det * det));
    return static_cast<float>(std::sqrt((sum + root) / 2.0));
}

unsigned int ArcSteps(float radius, float sweep, float distance) {
    const double r = std::fabs(double(radius));
    const double angle = std::fabs(double(sweep));
    if (!(distance > 0.0f) || !std::isfinite(r) || !std::isfinite(angle)) {
        return 1;
    }
    // A chord of angle t lies r (1 - cos(t / 2)) from its arc.
    const double step = r <= distance ? 3.14159265358979 / 2 : 2.0 * std::acos(1.0 - distance / r);
    const double steps = std::ceil(angle / std::max(step, 1e-9));
    return static_cast<unsigned int>(std::clamp(steps, 1.0, double(kMaxCurveSteps)));
}

unsigned int CubicSteps(const Wm4::Vector2f* control, const Wm4::Matrix3f* m, float distance) {
    if (!(distance > 0.0f)) {
        return 1;
    }
    // Second differences see only the linear part of the transform.
    const auto mapped = [m](const Wm4::Vector2f& v) {
        return m == nullptr ? v
                            : Wm4::Vector2f((*m)(0, 0) * v.X() + (*m)(0, 1) * v.Y(),
                                            (*m)(1, 0) * v.X() + (*m)(1, 1) * v.Y());
    };
    const Wm4::Vector2f d1 = mapped(control[0] - control[1] * 2.0f + control[2]);
    const Wm4::Vector2f d2 = mapped(control[1] - control[2] * 2.0f + control[3]);
    const double bound = std::max(double(d1.Length()), double(d2.Length()));
    // n steps keep a cubic within 3 / 4 * bound / n^2 of its chords.
    const double steps = std::ceil(std::sqrt(0.75 * bound / double(distance)));
    if (!std::isfinite(steps)) {
        return kMaxCurveSteps;
    }
    return static_cast<unsigned int>(std::clamp(steps, 1.0, double(kMaxCurveSteps)));
}

void AppendCubic(const Wm4::Vector2f* control, unsigned int steps, SegmentedPrimitive& primitive,
                 bool startNewRun) {
    std::vector<Wm4::Vector2f>& points = primitive.points;
    if (SegmentationUtils::wouldOverflow(points.size(), steps)) {
        return;
    }
    const std::size_t before = points.size();
    if (startNewRun) {
        points.push_back(control[0]);
    }
    for (unsigned int i = 1; i < steps; ++i) {
        const float t = float(i) / float(steps);
        const float u = 1.0f - t;
        points.push_back(control[0] * (u * u * u) + control[1] * (3.0f * u * u * t) +
                         control[2] * (3.0f * u * t * t) + control[3] * (t * t * t));
    }
    points.push_back(control[3]);
    SegmentationUtils::appendChain(primitive.indices, before, points.size(), startNewRun);
}

}  // namespace tq::svg::detail
