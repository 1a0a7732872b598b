// Tidying of outlines before they are filled.
#pragma once

#include <vector>

#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/tqSvgExport.h"

namespace tq {

// Tidies the outline given by `indices` (segments as index pairs into `points`) in place, in one
// walk over the segments:
// - a segment shorter than 0.001 in both coordinates is dropped, and its end point is replaced
//   by its start point throughout the array (earlier segments and other contours included);
// - a segment that continues the previous kept one in a straight line, forwards or doubling
//   back, is merged into it: its start point is replaced by its end point throughout;
// - afterwards the last index becomes the first when the two points nearly coincide.
// Tolerances apply to coordinates normalised into the points' bounding box, so they are relative
// to the outline's size; a box of zero width or height makes every test fail and leaves the
// outline as it is. Only `indices` changes: `points` keeps its values, including points that no
// segment refers to any more. Nothing happens for an empty or odd index array or no points. An
// index beyond `points` stands for no position, so no test succeeds on its account.
//
// Cost: close to linear in the number of indices (replacements are recorded, not carried out
// over the whole array), plus a normalised copy of the points and one index per point.
TQSVG_EXPORT void CleanupContour(std::vector<Wm4::Vector2f>& points,
                                 std::vector<unsigned int>& indices);

}  // namespace tq
