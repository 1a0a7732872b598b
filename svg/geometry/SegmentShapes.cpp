#include "svg/geometry/SegmentShapes.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <tqSystem/tqLog.h>

#include "svg/geometry/CleanupContour.h"
#include "svg/geometry/TriangulatePoly.h"
#include "svg/geometry/detail/Flattening.h"
#include "svg/geometry/detail/TransformPoint.h"
#include "svg/path/PathVisitorCommandsToPrimitives.h"

namespace tq::svg {

namespace {

constexpr float kDegreesToRadians = 0.017453292f;
constexpr float kMinimumArcRadius = 0.01f;

void transformAll(std::vector<Wm4::Vector2f>& points, const Wm4::Matrix3f& transform) {
    for (Wm4::Vector2f& p : points) {
        p = TransformPoint(transform, p);
    }
}

// Appends the segment between the last two points.
void appendLastSegment(SegmentedPrimitive& primitive) {
    const auto last = static_cast<unsigned int>(primitive.points.size() - 1);
    primitive.indices.push_back(last - 1);
    primitive.indices.push_back(last);
}

void appendLine(SegmentedPrimitive& primitive, const Wm4::Vector2f& from, const Wm4::Vector2f& to,
                bool startNewRun) {
    if (startNewRun) {
        primitive.points.push_back(from);
    }
    primitive.points.push_back(to);
    appendLastSegment(primitive);
}

// How curves are cut: the library's fixed counts, or within a distance in output units.
struct Cuts {
    unsigned int maxPoints = 0;  // fixed counts: interior points of a cubic, steps of an arc
    float tolerance = 0.0f;      // fixed counts: flatness of cubic spans
    float distance = 0.0f;       // > 0: within this distance once mapped by the transform
    const Wm4::Matrix3f* transform = nullptr;
};

void appendArc(SegmentedPrimitive& primitive, const PathEllipticalArc& arc, bool startNewRun,
               const Cuts& cuts) {
    if (arc.start == arc.end) {
        if (startNewRun) {
            primitive.points.push_back(arc.end);
        } else {
            primitive.points.back() = arc.end;
        }
        return;
    }
    if (arc.radii.X() < kMinimumArcRadius || arc.radii.Y() < kMinimumArcRadius) {
        appendLine(primitive, arc.start, arc.end, startNewRun);
        return;
    }
    const unsigned int steps = cuts.distance > 0.0f
                                   ? detail::ArcSteps(std::max(arc.radii.X(), arc.radii.Y()) *
                                                          detail::MaximumStretch(cuts.transform),
                                                      arc.deltaAngle, cuts.distance)
                                   : cuts.maxPoints;
    const std::size_t first = primitive.points.size();
    SegmentationUtils::SegmentEllipticalArc(arc.center, arc.radii, arc.rotation * kDegreesToRadians,
                                            arc.startAngle, arc.deltaAngle, primitive.points,
                                            primitive.indices, startNewRun, steps, cuts.tolerance);
    // Exact ends. Without a new run the first computed step becomes a copy of the start, which
    // leaves a zero-length first segment; deliberate, the clean-up of filled shapes drops it.
    if (primitive.points.size() > first) {
        primitive.points[first] = arc.start;
        primitive.points.back() = arc.end;
    }
}

// Appends the path's pieces to `flat` as `cuts` cut them, telling `piece` (when set) after each
// one whether it began a new run and whether it closed its subpath.
void flattenPath(const Path& path, const Cuts& cuts,
                 SegmentationUtils::BezierSegmentationWorkspace& work, SegmentedPrimitive& flat,
                 const detail::PieceCallback& piece) {
    const PathVisitorCommandsToPrimitives* self = nullptr;  // the visitor, once it exists
    PathVisitorCommandsToPrimitives visitor(
        path.commands, [&](std::unique_ptr<PathPrimitive>& primitive, bool newRun) {
            // A run can only continue from a point that exists (a skipped first curve).
            const bool startNewRun = newRun || flat.points.empty();
            switch (primitive->type) {
                case PathPrimitiveType::LinePrimitive: {
                    const auto& line = static_cast<const PathLine&>(*primitive);
                    appendLine(flat, line.start, line.end, startNewRun);
                    break;
                }
                case PathPrimitiveType::ArcPrimitive:
                    appendArc(flat, static_cast<const PathEllipticalArc&>(*primitive), startNewRun,
                              cuts);
                    break;
                case PathPrimitiveType::BezierCubicPrimitive: {
                    const auto& curve = static_cast<const PathBezierCubic&>(*primitive).curve;
                    if (cuts.distance > 0.0f && curve.GetControlPoints() != nullptr) {
                        const Wm4::Vector2f* control = curve.GetControlPoints();
                        detail::AppendCubic(
                            control, detail::CubicSteps(control, cuts.transform, cuts.distance),
                            flat, startNewRun);
                    } else {
                        SegmentationUtils::DeCasteljauSegmentBezier(work, curve, flat, startNewRun,
                                                                    cuts.maxPoints, cuts.tolerance);
                    }
                    break;
                }
            }
            if (piece) {
                piece(startNewRun, self->closesSubpath());
            }
        });
    self = &visitor;
    visitor.visit();
}

std::shared_ptr<SegmentedPrimitive> segmentPath(
    const Path& path, const Cuts& cuts, const RenderingProperties* properties,
    SegmentationUtils::BezierSegmentationWorkspace* workspace, bool* error) {
    SegmentationUtils::BezierSegmentationWorkspace temporary;
    SegmentedPrimitive flat;
    flattenPath(path, cuts, workspace ? *workspace : temporary, flat, nullptr);
    return std::make_shared<SegmentedPrimitive>(SegmentedPrimitive::FromContour(
        std::move(flat.points), std::move(flat.indices), cuts.transform, properties, error));
}

}  // namespace

SegmentedPrimitive SegmentedPrimitive::FromContour(std::vector<Wm4::Vector2f>&& points,
                                                   std::vector<unsigned int>&& indices,
                                                   const Wm4::Matrix3f* transform,
                                                   const RenderingProperties* properties,
                                                   bool* error) {
    if (error != nullptr) {
        *error = false;
    }
    SegmentedPrimitive primitive;
    const bool filled = properties == nullptr || properties->hasFill();
    if (filled) {
        if (indices.size() % 2 != 0) {
            if (error != nullptr) {
                *error = true;
            }
        } else {
            CleanupContour(points, indices);
            const bool evenOdd = properties != nullptr && properties->fillRule == FillRule::EvenOdd;
            if (!tq::TriangulatePoly(points, indices, primitive.trianglePoints,
                                     primitive.triangleIndices,
                                     evenOdd ? tq::TriangulationFillRule::EvenOdd
                                             : tq::TriangulationFillRule::NonZero,
                                     true)) {
                tqLog::Log(tqLogObject(tqLogType::Error, "svg",
                                       "Shape cannot be rendered. Only its contour will be "
                                       "visible."));
                if (error != nullptr) {
                    *error = true;
                }
            }
        }
    }
    primitive.points = std::move(points);
    primitive.indices = std::move(indices);
    if (transform != nullptr) {
        transformAll(primitive.points, *transform);
        transformAll(primitive.trianglePoints, *transform);
    }
    return primitive;
}

std::shared_ptr<SegmentedPrimitive> SegmentLine(const Line& line, const Wm4::Matrix3f* transform,
                                                const RenderingProperties*) {
    auto primitive = std::make_shared<SegmentedPrimitive>();
    primitive->points = {line.start, line.end};
    primitive->indices = {0, 1};
    if (transform != nullptr) {
        transformAll(primitive->points, *transform);
    }
    return primitive;
}

std::shared_ptr<SegmentedPrimitive> SegmentRect(const Rect& rect, const Wm4::Matrix3f* transform,
                                                const RenderingProperties* properties,
                                                bool* error) {
    const float x = rect.position.X();
    const float y = rect.position.Y();
    const float right = x + rect.size.X();
    const float bottom = y + rect.size.Y();
    std::vector<Wm4::Vector2f> points = {{x, y}, {right, y}, {right, bottom}, {x, bottom}};
    std::vector<unsigned int> indices = {0, 1, 1, 2, 2, 3, 3, 0};
    return std::make_shared<SegmentedPrimitive>(SegmentedPrimitive::FromContour(
        std::move(points), std::move(indices), transform, properties, error));
}

std::shared_ptr<SegmentedPrimitive> SegmentCircle(const Circle& circle, unsigned int sides, float,
                                                  const Wm4::Matrix3f* transform,
                                                  const RenderingProperties* properties,
                                                  bool* error) {
    constexpr float kTwoPi = 2.0f * 3.1415927f;
    std::vector<Wm4::Vector2f> points;
    std::vector<unsigned int> indices;
    points.reserve(sides);
    indices.reserve(2 * static_cast<std::size_t>(sides));
    for (unsigned int i = 0; i < sides; ++i) {
        const float angle = kTwoPi * static_cast<float>(i) / static_cast<float>(sides);
        points.emplace_back(circle.center.X() + circle.radius * std::cos(angle),
                            circle.center.Y() + circle.radius * std::sin(angle));
        indices.push_back(i);
        indices.push_back(i + 1 == sides ? 0 : i + 1);
    }
    return std::make_shared<SegmentedPrimitive>(SegmentedPrimitive::FromContour(
        std::move(points), std::move(indices), transform, properties, error));
}

std::shared_ptr<SegmentedPrimitive> SegmentPath(
    const Path& path, unsigned int maxPoints, float tolerance, const Wm4::Matrix3f* transform,
    const RenderingProperties* properties,
    SegmentationUtils::BezierSegmentationWorkspace* workspace, bool* error) {
    return segmentPath(path, {maxPoints, tolerance, 0.0f, transform}, properties, workspace, error);
}

namespace detail {

std::shared_ptr<SegmentedPrimitive> SegmentPathWithin(
    const Path& path, float distance, const Wm4::Matrix3f* transform,
    const RenderingProperties* properties,
    SegmentationUtils::BezierSegmentationWorkspace* workspace, bool* error) {
    return segmentPath(path, {0, 0.0f, distance, transform}, properties, workspace, error);
}

void FlattenPathWithin(const Path& path, float distance, const Wm4::Matrix3f* transform,
                       SegmentationUtils::BezierSegmentationWorkspace& workspace,
                       SegmentedPrimitive& flat, const PieceCallback& piece) {
    flattenPath(path, {0, 0.0f, distance, transform}, workspace, flat, piece);
}

std::shared_ptr<SegmentedPrimitive> SegmentCircleWithin(const Circle& circle, float distance,
                                                        const Wm4::Matrix3f* transform,
                                                        const RenderingProperties* properties,
                                                        bool* error) {
    constexpr float kTwoPi = 2.0f * 3.1415927f;
    const unsigned int sides =
        std::max(4u, ArcSteps(circle.radius * MaximumStretch(transform), kTwoPi, distance));
    return SegmentCircle(circle, sides, 0.0f, transform, properties, error);
}

}  // namespace detail

}  // namespace tq::svg
