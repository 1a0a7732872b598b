// Dashes along the centre lines of a stroke (internal).
//
// A pattern reads as SVG reads it: an odd list is repeated to make it even, and a list that holds
// a negative or non-finite length, a length with a unit other than px, or sums to zero draws the
// stroke solid. The offset starts the pattern that far along (before the start when negative).
// Dashes restart on each subpath and continue around a closed one: a dash over a closed
// subpath's start is one dash joined there, and a closed subpath that no gap interrupts stays
// closed. Every other dash is an open run whose two ends get caps; a dash of no length is a dot
// facing along the path, and so is a subpath of no length when the pattern starts in a dash.
#pragma once

#include <vector>

#include "svg/geometry/detail/StrokeSubpaths.h"
#include "svg/model/UnitValue.h"
#include "svg/tqSvgExport.h"

namespace tq::svg::detail {

struct TQSVG_EXPORT DashPattern {
    // Takes the pattern and offset in the centre lines' units; false when the stroke is solid.
    bool set(const std::vector<UnitValue>& dashes, float dashOffset);
    // An upper bound on the number of dashes along `lines`.
    double countAlong(const StrokeSubpaths& lines) const;

    std::vector<double> lengths;  // dash, gap, dash, gap...
    double period = 0.0;          // their sum
    double offset = 0.0;
};

// The dashes of `lines` in `dashes` (cleared first); `pattern` is one that set() accepted.
TQSVG_EXPORT void CutIntoDashes(const StrokeSubpaths& lines, const DashPattern& pattern,
                                StrokeSubpaths& dashes);

}  // namespace tq::svg::detail
