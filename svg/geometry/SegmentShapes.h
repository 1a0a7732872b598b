// Drawable items into outlines and fill triangles, one item at a time.
//
// In every function a null transform leaves coordinates as they are, null properties count as
// filled, and a null error flag is not written. The error flag reports a filled outline that
// could not be triangulated: the primitive then keeps its outline only.
#pragma once

#include <memory>

#include <Wm4Foundation/Wm4Matrix3.h>

#include "svg/geometry/SegmentationUtils.h"
#include "svg/geometry/SegmentedPrimitive.h"
#include "svg/model/Circle.h"
#include "svg/model/Line.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/model/RenderingProperties.h"
#include "svg/tqSvgExport.h"

namespace tq::svg {

// The line's two end points and one segment; never filled, so `properties` are not read.
TQSVG_EXPORT std::shared_ptr<SegmentedPrimitive> SegmentLine(const Line& line,
                                                             const Wm4::Matrix3f* transform,
                                                             const RenderingProperties* properties);

// The four corners; corner radii are not drawn, a rounded rectangle becomes a plain one.
TQSVG_EXPORT std::shared_ptr<SegmentedPrimitive> SegmentRect(const Rect& rect,
                                                             const Wm4::Matrix3f* transform,
                                                             const RenderingProperties* properties,
                                                             bool* error);

// A regular polygon of exactly `sides` corners, the first at angle 0; `tolerance` is
// deliberately not used. No point at all for 0 sides.
TQSVG_EXPORT std::shared_ptr<SegmentedPrimitive> SegmentCircle(
    const Circle& circle, unsigned int sides, float tolerance, const Wm4::Matrix3f* transform,
    const RenderingProperties* properties, bool* error);

// Lines as they are, cubics flattened adaptively to at most `maxPoints` interior points each
// under `tolerance` (see DeCasteljauGetBezierPoints), arcs in exactly `maxPoints` steps with
// their ends set to the exact end points. `workspace` may be null (a temporary one is used);
// passing one lets a caller flatten many paths without allocating per curve.
TQSVG_EXPORT std::shared_ptr<SegmentedPrimitive> SegmentPath(
    const Path& path, unsigned int maxPoints, float tolerance, const Wm4::Matrix3f* transform,
    const RenderingProperties* properties,
    SegmentationUtils::BezierSegmentationWorkspace* workspace, bool* error);

}  // namespace tq::svg
