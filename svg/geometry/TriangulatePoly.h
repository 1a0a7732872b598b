// Filling outlines with triangles under a fill rule.
//
// Input: points and segments (pairs of point indices), straight from flattened paths: several
// contours, holes wound either way, self-intersections, T-junctions, duplicate and coincident
// vertices, collinear overlapping segments, zero-length segments. Output: triangles that cover
// exactly the area whose winding number the rule keeps, two triangles and four fresh points per
// trapezoid of the decomposition, with no overlaps.
//
// Robustness: every predicate is decided exactly. The referenced points are snapped to an
// integer grid of 2^26 steps across the larger side of their bounding box (finer than a float's
// 24-bit mantissa at that scale, so distinct input points only merge when a float could barely
// tell them apart). On the grid, orientation tests are exact in 64-bit integers and crossing
// points exact in 128-bit before they are rounded to the nearest grid point. Snapping rule (snap
// rounding): a segment passing through the pixel of a vertex (the unit square centred on it) is
// routed through that vertex, so that rounded crossing points cannot keep creating crossings.
// Segments are split at every crossing, T-junction and overlap (found by a plane sweep that tests
// the segments that become neighbours, then by box tests for the few that left the sweep early)
// until only segments that meet at end points remain; equal segments are merged into one with a
// summed winding weight. The same sweep builds the trapezoids, their winding numbers and their
// regions as long as it finds nothing to split, so an outline that needs no splitting is swept
// once. Output coordinates come from the original floats (crossing points from the float lines, a
// vertical or horizontal side keeping its exact x or y), so triangles meet the input exactly.
//
// Open subpaths: when some vertex has more segments leaving than arriving, the outline is open
// and its inside undefined; then every run of consecutive segments (each ending where the next
// begins, in input order, as paths give them) that does not return to its start is closed by a
// segment back to it, as fills close open subpaths. Next to segments chained by index (pairs
// k, k+1 as segmented paths give them), a break in the index chain starts a new run even at the
// same position, so two open subpaths meeting at a point are closed apart. A closed outline is
// never changed, whatever the order of its segments.
//
// Cost: O((n + k) log n) for n segments and k crossings, in vectors and pooled tree nodes. The
// working memory stays with the calling thread between calls unless an outline made it grow past
// about 32k segments, so that filling many small outlines one after another does not allocate.
#pragma once

#include <vector>

#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/tqSvgExport.h"

namespace tq {

// Which winding numbers are inside. Any other value keeps every trapezoid inside a frame just
// around the outline's bounding box, inside the outline or not.
enum class TriangulationFillRule : int {
    NonZero = 0,  // winding number not 0
    EvenOdd = 1,  // winding number odd
};

// Appends the triangles of the filled outline to `outPoints` and `outIndices` (triples). False
// for an odd number of indices, an index out of range, a NaN or infinite coordinate, or an
// inconsistency found while building ("Shape triangulation failed", caught here); what was
// appended before a failure stays. `skipDegenerate` has no effect: a segment whose ends fall on
// the same vertex encloses no area and changes no winding number, so it is always left out, and
// the result is the same either way.
TQSVG_EXPORT bool TriangulatePoly(const std::vector<Wm4::Vector2f>& points,
                                  const std::vector<unsigned int>& indices,
                                  std::vector<Wm4::Vector2f>& outPoints,
                                  std::vector<unsigned int>& outIndices, TriangulationFillRule rule,
                                  bool skipDegenerate);

}  // namespace tq
