// Strokes as triangles (internal): the area a pen of some width covers along centre lines, as
// triangles that cover each point of it exactly once.
//
// Input: centre lines as StrokeSubpaths give them (open or closed runs of distinct consecutive
// points, dots of a single point), in the stroke's own coordinates, where the pen is a disc; any
// angles, folds back along a segment, crossings and segments shorter than the pen is wide.
//
// How: the stroke is built as the union of simple pieces, each a closed polygon wound
// counter-clockwise: a rectangle along every segment, a wedge on the outer side of every vertex
// that turns (the join: miter, clipped miter, bevel or round sector), a cap at each open end
// (square or half disc) and a disc or square for each dot. On the inner side of a turn the
// rectangles overlap and need nothing more. Since every piece winds the same way, the winding
// number of any point is the number of pieces over it, so the pieces' union is exactly the set
// of points of non-zero winding: TriangulatePoly fills that set under the non-zero rule, and its
// trapezoids do not overlap, whatever the pieces do among themselves (cross, fold, share edges).
// There is no offset outline to untangle, which is where strokers usually break: short segments
// under wide pens and sharp folds only add pieces.
//
// Guarantees: the triangles cover the union of the pieces, each point at most once, within the
// triangulator's grid (2^26 steps across the stroke's extent); no point of the output is NaN or
// infinite (pieces that overflow fail the triangulation, which then adds nothing). Round joins
// and caps take as many steps as keep them within the tolerance once mapped; points inside
// curves are joined round, so that a flattened curve's stroke is the pen swept along it. Miters
// longer than the limit fall back to a bevel, or are clipped at the limit (miter-clip); the
// limit is taken between 1 and 10^4 widths, so that no spike outgrows the grid. Cost: linear in
// the points of the centre lines plus the round steps, which are capped at a budget per call
// (coarser arcs beyond it), then the triangulation's O((n + k) log n).
//
// Robustness: pieces are computed in double precision from points that differ, mapped to the
// output and rounded to float once; every piece winds counter-clockwise by construction rather
// than by a test of its area, so a thin or tiny piece cannot flip the winding of its neighbours.
#pragma once

#include <cstdint>
#include <vector>

#include <Wm4Foundation/Wm4Matrix3.h>
#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/geometry/detail/StrokeSubpaths.h"
#include "svg/model/RenderingProperties.h"

namespace tq::svg::detail {

struct StrokeStyle {
    double halfWidth = 0.5;  // in the centre lines' units
    LineJoin join = LineJoin::Miter;
    LineCap cap = LineCap::Butt;
    double miterLimit = 4.0;  // a miter's length over the stroke width
    double tolerance = 0.1;   // of round joins and caps, in output units
};

class Stroker {
public:
    // Appends the triangles of the stroke of `lines` to `outPoints` and `outIndices` (triples),
    // mapped by `map` (null: as they are). False, with the output as it was, when the pieces
    // could not be triangulated.
    bool stroke(const StrokeSubpaths& lines, const StrokeStyle& style, const Wm4::Matrix3f* map,
                std::vector<Wm4::Vector2f>& outPoints, std::vector<unsigned int>& outIndices);

    // The pieces of the last call: points and segments (index pairs), closed polygons in turn.
    const std::vector<Wm4::Vector2f>& piecePoints() const { return mPoints; }
    const std::vector<unsigned int>& pieceSegments() const { return mSegments; }

private:
    struct Turn;

    void prepare(const StrokeSubpaths& lines, const StrokeStyle& style, const Wm4::Matrix3f* map);
    void addRun(const StrokeSubpaths& lines, const StrokeSubpaths::Subpath& run);
    void addSegment(const Wm4::Vector2d& a, const Wm4::Vector2d& b);
    void addJoin(const Wm4::Vector2d& p, const Wm4::Vector2d& in, const Wm4::Vector2d& out,
                 bool corner);
    void addMiter(const Wm4::Vector2d& p, const Turn& turn, bool clip);
    void addCap(const Wm4::Vector2d& p, const Wm4::Vector2d& outward);
    void addDot(const Wm4::Vector2d& p, const Wm4::Vector2d& along);
    // Points on the pen's circle about `p` from direction `from`, turning counter-clockwise by
    // `angle`, the ends excluded.
    void addArc(const Wm4::Vector2d& p, const Wm4::Vector2d& from, double angle);

    void beginPiece();
    void addPoint(const Wm4::Vector2d& p);
    void endPiece();

    StrokeStyle mStyle;
    Wm4::Matrix3d mMap = Wm4::Matrix3d::IDENTITY;
    double mArcStep = 1.0;  // the largest angle of one step of a round join or cap
    std::vector<Wm4::Vector2f> mPoints;
    std::vector<unsigned int> mSegments;
    std::uint32_t mPieceStart = 0;
};

}  // namespace tq::svg::detail
