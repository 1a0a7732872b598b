// Estimated extent of an item and its subtree.
#pragma once

#include <Wm4Foundation/Wm4Matrix3.h>

#include "svg/model/BoundingBox.h"
#include "svg/model/ItemInterface.h"
#include "svg/tqSvgExport.h"

namespace tq::svg {

// Sets `box` to the union of the items' own boxes over the subtree of `item` (itself included),
// each under its composed transform (parent times child, `initialTransform` outermost; null
// means identity). An item for which `exclude` returns true is left out with its subtree.
// Estimates: stroke widths are not included, curves add nothing of their own, and a circle's
// radius is not transformed. An empty result is the invalid default box.
TQSVG_EXPORT void ComputeEstimatedBoundingBox(const ItemInterface& item, BoundingBox& box,
                                              bool (*exclude)(const ItemInterface&),
                                              const Wm4::Matrix3f* initialTransform);

}  // namespace tq::svg
