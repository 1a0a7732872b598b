// The centre lines that a stroke follows (internal): an item's own geometry flattened into runs of
// points, each open or closed, as its commands wrote it.
//
// A stroke follows the path as written, not the fill's cleaned outline: a spike back along a
// line is stroked, and subpaths keep their closed or open state. Each point remembers whether
// two commands meet there (a corner, joined in the stroke's style) or whether it lies inside a
// curve, where the pen sweeps round. Repeated points are dropped as they come, so consecutive
// points always differ; a run whose points all coincide but which drew a segment ("M x y Z",
// "M x y L x y") stays as a single point, a dot that round and square caps draw.
#pragma once

#include <cstdint>
#include <vector>

#include <Wm4Foundation/Wm4Matrix3.h>
#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/geometry/SegmentationUtils.h"
#include "svg/geometry/SegmentedPrimitive.h"
#include "svg/model/Circle.h"
#include "svg/model/Line.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/tqSvgExport.h"

namespace tq::svg::detail {

struct TQSVG_EXPORT StrokeSubpaths {
    struct Subpath {
        std::uint32_t begin = 0;  // first point
        std::uint32_t end = 0;    // one past the last point
        bool closed = false;      // joined from the last point back to the first, without caps
        Wm4::Vector2d along{1.0, 0.0};  // a dot's direction, which square caps face
    };

    void clear();
    // Starts a run, adds its points (a repeat of the last point only marks it a corner when the
    // repeat is one), and ends it: a closed run drops a last point equal to its first; a run of
    // one point is kept as a dot when it `drew` a segment and dropped otherwise.
    void begin();
    void add(const Wm4::Vector2d& point, bool corner);
    void end(bool closed, bool drew, const Wm4::Vector2d& along = Wm4::Vector2d(1.0, 0.0));

    // Maps every point and dot direction by `m` (a stroke that does not scale is drawn in the
    // output's coordinates), dropping points that the map makes equal.
    void transform(const Wm4::Matrix3f& m);
    // Length of the run's segments, the closing one included.
    double length(const Subpath& subpath) const;
    bool allFinite() const;

    std::vector<Wm4::Vector2d> points;
    std::vector<std::uint8_t> corners;  // per point: 1 where two commands meet
    std::vector<Subpath> subpaths;
};

// Each shape item as its stroke follows it, in the item's own coordinates. Curves, arcs and
// circles come within `distance` of the true shape once mapped by `transform` (as in
// SegmentPathWithin); `scratch` and `curves` are working space.
TQSVG_EXPORT void FlattenPathForStroke(const Path& path, float distance,
                                       const Wm4::Matrix3f& transform,
                                       SegmentationUtils::BezierSegmentationWorkspace& curves,
                                       SegmentedPrimitive& scratch, StrokeSubpaths& out);
// The four corners, closed; corner radii are not drawn, as in segmentation. A rectangle with no
// area is not drawn at all.
TQSVG_EXPORT void FlattenRectForStroke(const Rect& rect, StrokeSubpaths& out);
// Closed, without corners; a circle of no radius is not drawn.
TQSVG_EXPORT void FlattenCircleForStroke(const Circle& circle, float distance,
                                         const Wm4::Matrix3f& transform, StrokeSubpaths& out);
TQSVG_EXPORT void FlattenLineForStroke(const Line& line, StrokeSubpaths& out);

}  // namespace tq::svg::detail
