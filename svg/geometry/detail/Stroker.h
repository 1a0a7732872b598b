// Strokes as triangles (internal): the area a pen of some width covers along centre lines, as
// triangles that cover each point of it exactly once.
//
// Input: centre lines as StrokeSubpaths give them (open or closed runs of distinct consecutive
// points, dots of a single point), in the stroke's own coordinates, where the pen is a disc; any
// angles, folds back along a segment, crossings and segments shorter than the pen is wide.
//
// The stroke is, by definition, the union of simple pieces: a rectangle along every segment, a
// wedge on the outer side of every vertex that turns (the join: miter, clipped miter, bevel or
// round sector), a cap at each open end (square or half disc) and a disc or square for each dot.
// Wound counter-clockwise, every piece adds 1 to the winding number of the points it covers, so
// the union is exactly the set of points of non-zero winding of all the pieces' boundaries
// together. That sum of boundaries is what is built, with the edges that cancel left out: each
// run's outline, its right side forward and its left side back, through the outer wedges and
// caps, and through the vertex itself on the inner side of a turn (where the rectangles' ends
// would cancel to exactly that). Where the loop between the two inner offset edges' crossing
// and the vertex lies inside both segments' rectangles, the outline takes the crossing instead:
// that takes 1 off the winding number inside the loop. A point inside the loops of k vertices
// lies inside at least k + 1 rectangles as long as those vertices do not go all the way round
// a closed run, which is why a closed run's first vertex never takes the crossing; so no point
// that the pieces cover is lost. TriangulatePoly then fills the non-zero set, and its
// trapezoids do not overlap, whatever the outline does (cross itself, fold back, run through the
// vertex under a pen wider than the segments): nothing here untangles an offset outline, the
// usual way strokers break.
//
// Guarantees: the triangles cover the union of the pieces, each point at most once, within the
// triangulator's grid (2^26 steps across the stroke's extent); no point of the output is NaN or
// infinite (outlines that overflow fail the triangulation, which then adds nothing). Round joins
// and caps take as many steps as keep them within the tolerance once mapped; points inside
// curves are joined round, so that a flattened curve's stroke is the pen swept along it. Miters
// longer than the limit fall back to a bevel, or are clipped at the limit (miter-clip); the
// limit is taken between 1 and 10^4 widths, so that no spike outgrows the grid. Cost: linear in
// the points of the centre lines plus the round steps, which are capped at a budget per call
// (coarser arcs beyond it), then the triangulation's O((n + k) log n) for k crossings, which are
// held to a budget linear in n (16 a segment and a quarter of a million more): an outline that
// would cross itself more, as the fanning inner offsets of a pen much wider than a tight curve can,
// fails the stroke instead of taking time and memory quadratic in n.
//
// Robustness: offsets are computed in double precision from points that differ, mapped to the
// output and rounded to float once. The outline's orientation follows from the construction, not
// from a test of an area, so a thin or tiny piece cannot flip the winding of its neighbours.
#pragma once

#include <cstdint>
#include <vector>

#include <Wm4Foundation/Wm4Matrix3.h>
#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/geometry/detail/StrokeSubpaths.h"
#include "svg/model/RenderingProperties.h"
#include "svg/tqSvgExport.h"

namespace tq::svg::detail {

struct StrokeStyle {
    double halfWidth = 0.5;  // in the centre lines' units
    LineJoin join = LineJoin::Miter;
    LineCap cap = LineCap::Butt;
    double miterLimit = 4.0;  // a miter's length over the stroke width
    double tolerance = 0.1;   // of round joins and caps, in output units
};

class TQSVG_EXPORT Stroker {
public:
    // Appends the triangles of the stroke of `lines` to `outPoints` and `outIndices` (triples),
    // mapped by `map` (null: as they are). False, with the output as it was, when the pieces
    // could not be triangulated.
    bool stroke(const StrokeSubpaths& lines, const StrokeStyle& style, const Wm4::Matrix3f* map,
                std::vector<Wm4::Vector2f>& outPoints, std::vector<unsigned int>& outIndices);

private:
    struct Turn;
    using Chain = std::vector<Wm4::Vector2d>;

    void prepare(const StrokeSubpaths& lines, const StrokeStyle& style, const Wm4::Matrix3f* map);
    void addRun(const StrokeSubpaths& lines, const StrokeSubpaths::Subpath& run);
    void addJoin(const Wm4::Vector2d& p, std::uint32_t in, std::uint32_t out, bool corner,
                 bool mayCross);
    void outerWedge(const Wm4::Vector2d& p, const Turn& turn, LineJoin join);
    void innerCorner(Chain& side, const Wm4::Vector2d& p, const Turn& turn, std::uint32_t in,
                     std::uint32_t out, bool mayCross);
    void addOpenOutline(const Wm4::Vector2d& start, const Wm4::Vector2d& end);
    void addCap(const Wm4::Vector2d& p, const Wm4::Vector2d& outward);
    void addDot(const Wm4::Vector2d& p, const Wm4::Vector2d& along);
    // Points on the pen's circle about `p` from direction `from`, turning counter-clockwise by
    // `angle`, the ends excluded.
    void addArc(Chain& out, const Wm4::Vector2d& p, const Wm4::Vector2d& from, double angle);

    void addPolygon(const Chain& points, bool backwards);
    void addPoint(const Wm4::Vector2d& p);
    void closePolygon();

    StrokeStyle mStyle;
    Wm4::Matrix3d mMap = Wm4::Matrix3d::IDENTITY;
    double mArcStep = 1.0;  // the largest angle of one step of a round join or cap
    // One run: its segments' directions and lengths, and its two sides, each in the run's
    // direction; a wedge or cap under construction.
    std::vector<Wm4::Vector2d> mDirections;
    std::vector<double> mLengths;
    Chain mRight, mLeft, mScratch;
    std::vector<Wm4::Vector2f> mPoints;
    std::vector<unsigned int> mSegments;
    std::uint32_t mPolygonStart = 0;
};

}  // namespace tq::svg::detail
