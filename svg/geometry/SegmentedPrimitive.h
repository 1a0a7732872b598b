// Flat geometry of one drawable item: an outline of line segments and, when filled, triangles;
// on request, its stroke as triangles too.
#pragma once

#include <vector>

#include <Wm4Foundation/Wm4Matrix3.h>
#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/model/RenderingProperties.h"
#include "svg/tqSvgExport.h"

namespace tq::svg {

struct TQSVG_EXPORT SegmentedPrimitive {
    // Builds a primitive from an outline given as index pairs. When the shape is filled (null
    // properties count as filled) the outline is cleaned up and triangulated under the non-zero
    // rule; a failure keeps the outline, logs once and sets `error`. Points of both arrays are
    // mapped by `transform` when it is given. `properties` stay default: callers assign them.
    static SegmentedPrimitive FromContour(std::vector<Wm4::Vector2f>&& points,
                                          std::vector<unsigned int>&& indices,
                                          const Wm4::Matrix3f* transform,
                                          const RenderingProperties* properties, bool* error);

    std::vector<Wm4::Vector2f> points;          // outline points, final coordinates
    std::vector<unsigned int> indices;          // outline segments: pairs into `points`
    std::vector<Wm4::Vector2f> trianglePoints;  // fill points, final coordinates
    std::vector<unsigned int> triangleIndices;  // fill triangles: triples into `trianglePoints`
    RenderingProperties properties;             // cascaded properties of the item
    // The composed transform the points were mapped by, as SegmenterVisitor sets it: a stroke
    // width is in the item's units, so a renderer scales it (and shapes its pen) by this.
    Wm4::Matrix3f transform = Wm4::Matrix3f::IDENTITY;
    // With SegmentOptions::strokes, the stroke of a stroked item: triangles that cover its area
    // once each, to be drawn over the fill. Final coordinates; triples into the points.
    std::vector<Wm4::Vector2f> strokeTrianglePoints;
    std::vector<unsigned int> strokeTriangleIndices;
};

}  // namespace tq::svg
