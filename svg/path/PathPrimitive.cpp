#include "svg/path/PathPrimitive.h"

#include <algorithm>
#include <cmath>

#include <Wm4Foundation/Wm4Math.h>

#include "svg/geometry/detail/TransformPoint.h"

namespace tq::svg {

namespace {

constexpr float kDegreesToRadians = 0.017453292f;
constexpr float kMinimumRadius = 0.01f;
constexpr float kFullTurn = 6.2831855f;

}  // namespace

PathPrimitive::~PathPrimitive() = default;

PathLine::PathLine(const Wm4::Vector2f& start_, const Wm4::Vector2f& end_)
    : PathPrimitive(PathPrimitiveType::LinePrimitive), start(start_), end(end_) {}

void PathLine::computeBoundingBox(BoundingBox& box, const Wm4::Matrix3f& transform) const {
    const Wm4::Vector2f a = TransformPoint(transform, start);
    const Wm4::Vector2f b = TransformPoint(transform, end);
    box.min = Wm4::Vector2f(std::min(a.X(), b.X()), std::min(a.Y(), b.Y()));
    box.max = Wm4::Vector2f(std::max(a.X(), b.X()), std::max(a.Y(), b.Y()));
}

PathEllipticalArc::PathEllipticalArc(const Wm4::Vector2f& radii_, float rotation_, bool largeArc_,
                                     bool sweep_, const Wm4::Vector2f& start_,
                                     const Wm4::Vector2f& end_)
    : PathPrimitive(PathPrimitiveType::ArcPrimitive),
      start(start_),
      end(end_),
      radii(std::fabs(radii_.X()), std::fabs(radii_.Y())),
      rotation(rotation_),
      largeArc(largeArc_),
      sweep(sweep_) {
    computeCenterForm();
}

// SVG's end-point to centre conversion in single precision, without its radius correction.
void PathEllipticalArc::computeCenterForm() {
    if (start == end) {
        return;
    }
    const float rx = radii.X();
    const float ry = radii.Y();
    if (rx < kMinimumRadius || ry < kMinimumRadius) {
        return;
    }
    const float phi = rotation * kDegreesToRadians;
    const float c = std::cos(phi);
    const float s = std::sin(phi);
    const float dx = (start.X() - end.X()) * 0.5f;
    const float dy = (start.Y() - end.Y()) * 0.5f;
    const float x1 = c * dx + s * dy;
    const float y1 = c * dy - s * dx;

    const float rx2 = rx * rx;
    const float ry2 = ry * ry;
    const float q = (rx2 * ry2 - rx2 * y1 * y1 - ry2 * x1 * x1) / (rx2 * y1 * y1 + ry2 * x1 * x1);
    float k = q >= 0.0f ? std::sqrt(q) : 0.0f;
    if (largeArc == sweep) {
        k = -k;
    }
    const float cxp = k * rx * y1 / ry;
    const float cyp = -k * ry * x1 / rx;
    center = Wm4::Vector2f(c * cxp - s * cyp + (start.X() + end.X()) * 0.5f,
                           s * cxp + c * cyp + (start.Y() + end.Y()) * 0.5f);

    const Wm4::Vector2f u((x1 - cxp) / rx, (y1 - cyp) / ry);
    const Wm4::Vector2f w((-x1 - cxp) / rx, (-y1 - cyp) / ry);
    startAngle = std::acos(u.X() / u.Length());
    if (u.Y() < 0.0f) {
        startAngle = -startAngle;
    }
    const float d = std::clamp(u.Dot(w) / (u.Length() * w.Length()), -1.0f, 1.0f);
    deltaAngle = std::acos(d);
    if (u.X() * w.Y() - u.Y() * w.X() < 0.0f) {
        deltaAngle = -deltaAngle;
    }
    if (sweep && deltaAngle < 0.0f) {
        deltaAngle += kFullTurn;
    } else if (!sweep && deltaAngle > 0.0f) {
        deltaAngle -= kFullTurn;
    }
}

void PathEllipticalArc::computeBoundingBox(BoundingBox& box, const Wm4::Matrix3f& transform) const {
    box = BoundingBox();
    if (start == end) {
        return;
    }
    if (radii.X() < kMinimumRadius || radii.Y() < kMinimumRadius) {
        box.expandToContain(start);
        box.expandToContain(end);
        return;
    }
    constexpr float kTwoPi = Wm4::Math<float>::TWO_PI;
    constexpr float kQuarter = Wm4::Math<float>::HALF_PI;
    float a = std::fmod(startAngle, kTwoPi);
    if (a < 0.0f) {
        a += kTwoPi;
    }
    const float b = std::fmod(deltaAngle, kTwoPi) + a;
    float lo = std::min(a, b);
    float hi = std::max(a, b);
    if (lo < 0.0f) {
        lo += kTwoPi;
        hi += kTwoPi;
    }

    const Wm4::Vector2f t = TransformPoint(transform, center);
    const float ax = transform(0, 0) * radii.X() + transform(0, 1) * radii.Y();
    const float by = transform(1, 0) * radii.X() + transform(1, 1) * radii.Y();
    const float phi = rotation * kDegreesToRadians;
    const float c = std::cos(phi);
    const float s = std::sin(phi);
    const auto grow = [&](float angle) {
        const float cosT = std::cos(angle);
        const float sinT = std::sin(angle);
        box.expandToContain(Wm4::Vector2f(t.X() + ax * cosT * c - by * sinT * s,
                                          t.Y() + ax * cosT * s + by * sinT * c));
    };
    grow(lo);
    grow(hi);
    // Extremes of the unrotated ellipse; angles past one full turn are deliberately not tried.
    for (int i = 0; i < 4; ++i) {
        const float angle = static_cast<float>(i) * kQuarter;
        if (lo < angle && angle < hi) {
            grow(angle);
        }
    }
}

PathBezierCubic::PathBezierCubic(Wm4::Vector2f* controlPoints)
    : PathPrimitive(PathPrimitiveType::BezierCubicPrimitive), curve(3, controlPoints) {}

void PathBezierCubic::computeBoundingBox(BoundingBox&, const Wm4::Matrix3f&) const {}

}  // namespace tq::svg
