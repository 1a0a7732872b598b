// Triangulation with a budget of cut points (internal): TriangulatePoly, failing once splitting
// the outline has made more than `maxCuts` cut points. For outlines whose crossings can grow with
// the square of their segments (a stroke's fan of offsets under a pen wider than the curve
// bends), so that time and memory stay linear in the outline.
#pragma once

#include <cstddef>
#include <vector>

#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/geometry/TriangulatePoly.h"
#include "svg/tqSvgExport.h"

namespace tq::svg::detail {

TQSVG_EXPORT bool TriangulateWithinCuts(const std::vector<Wm4::Vector2f>& points,
                                        const std::vector<unsigned int>& indices,
                                        std::vector<Wm4::Vector2f>& outPoints,
                                        std::vector<unsigned int>& outIndices,
                                        TriangulationFillRule rule, std::size_t maxCuts);

}  // namespace tq::svg::detail
