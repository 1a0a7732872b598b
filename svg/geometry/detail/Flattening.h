// Flattening within a distance in output units (internal).
//
// The library's own counts cut every cubic by a flatness measure and every arc and circle into
// 32 steps, whatever their drawn size. Within a distance, each curve takes as many equal steps as
// keep it within that distance of the true curve once mapped by the transform: a small shape
// takes few points, a large one more (growing with the square root of its size, so that a huge
// shape stays within bounds too).
#pragma once

#include <Wm4Foundation/Wm4Matrix3.h>
#include <Wm4Foundation/Wm4Vector2.h>

#include <functional>
#include <memory>

#include "svg/geometry/SegmentationUtils.h"
#include "svg/geometry/SegmentedPrimitive.h"
#include "svg/model/Circle.h"
#include "svg/model/Path.h"

namespace tq::svg::detail {

// The most steps one curve takes, a guard against absurd sizes.
constexpr unsigned int kMaxCurveSteps = 4096;

// The largest factor by which the linear part of `m` stretches a length (1 for null).
float MaximumStretch(const Wm4::Matrix3f* m);

// Steps for an arc of `radius` (output units) over `sweep` radians within `distance`: each step's
// chord stays within `distance` of the arc.
unsigned int ArcSteps(float radius, float sweep, float distance);

// Steps for a cubic within `distance` once its control points are mapped by `m` (null: as they
// are), by the bound on a cubic's second differences.
unsigned int CubicSteps(const Wm4::Vector2f* control, const Wm4::Matrix3f* m, float distance);

// Appends the cubic in `steps` equal parameter steps to the primitive's points and segments, as
// the other flattening functions do (the start point only for a new run, the exact end point).
void AppendCubic(const Wm4::Vector2f* control, unsigned int steps, SegmentedPrimitive& primitive,
                 bool startNewRun);

// Told after each piece of a path is flattened: whether it began a new run of points and whether
// it closed its subpath.
using PieceCallback = std::function<void(bool newRun, bool closes)>;

// Appends the path's pieces to `flat` as SegmentPathWithin flattens them (without clean-up or
// filling), calling `piece` (when set) after each.
void FlattenPathWithin(const Path& path, float distance, const Wm4::Matrix3f* transform,
                       SegmentationUtils::BezierSegmentationWorkspace& workspace,
                       SegmentedPrimitive& flat, const PieceCallback& piece);

// SegmentPath and SegmentCircle within `distance` of the true shape in output units.
std::shared_ptr<SegmentedPrimitive> SegmentPathWithin(
    const Path& path, float distance, const Wm4::Matrix3f* transform,
    const RenderingProperties* properties,
    SegmentationUtils::BezierSegmentationWorkspace* workspace, bool* error);
std::shared_ptr<SegmentedPrimitive> SegmentCircleWithin(const Circle& circle, float distance,
                                                        const Wm4::Matrix3f* transform,
                                                        const RenderingProperties* properties,
                                                        bool* error);

}  // namespace tq::svg::detail
