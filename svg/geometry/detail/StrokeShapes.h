// The strokes of shape items as triangles (internal), for SegmenterVisitor's `strokes` option.
//
// What browsers draw for an item's stroke: the width in the item's units under its composed
// transform, so that a non-uniform scale makes the pen an ellipse (the stroke is built in the
// item's own coordinates, its pieces then mapped), or in output units for a non-scaling stroke
// (built on the mapped centre lines, dashes in output units too); the joins, caps, miter limit
// (4 when absent; a value below 1 is ignored with a warning), dashes and dash offset of the
// properties. Curves and round joins and caps each take half the tolerance in output units; a
// tolerance of 0 stands for min(0.1, width / 20) in output units. A dash pattern finer than the
// tolerance, or one that would cut a path into more than about a million dashes, draws the
// stroke solid with a warning.
#pragma once

#include <Wm4Foundation/Wm4Matrix3.h>

#include "svg/geometry/SegmentationUtils.h"
#include "svg/geometry/SegmentedPrimitive.h"
#include "svg/geometry/detail/DashPattern.h"
#include "svg/geometry/detail/StrokeSubpaths.h"
#include "svg/geometry/detail/Stroker.h"
#include "svg/model/ItemInterface.h"

namespace tq::svg::detail {

// Kept from one item to the next, so that stroking many shapes does not allocate per shape.
struct StrokeWorkspace {
    SegmentedPrimitive flat;  // a path's flattening, before it becomes centre lines
    StrokeSubpaths lines;
    StrokeSubpaths dashes;
    DashPattern pattern;
    Stroker stroker;
};

// Sets the stroke triangles of `primitive` for a line, rectangle, circle or path: none without a
// visible stroke (none, transparent, a width that is not positive), for other items, or when the
// pieces could not be triangulated (logged).
void StrokeShape(const ItemInterface& item, const Wm4::Matrix3f& transform,
                 const RenderingProperties& properties, float tolerance,
                 SegmentationUtils::BezierSegmentationWorkspace& curves, StrokeWorkspace& workspace,
                 SegmentedPrimitive& primitive);

}  // namespace tq::svg::detail
