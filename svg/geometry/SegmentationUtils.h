// Flattening of curved path pieces into runs of line segments.
//
// Cubic Bezier curves are subdivided adaptively by de Casteljau halving inside a scratch arena,
// so that no allocation happens per subdivision and, once the arena and the job array have grown,
// none per curve either; elliptical arcs are sampled in equal steps of their parameter angle.
// Output goes straight into a point array and an index array of segments (index pairs), as in
// SegmentedPrimitive.
//
// `startNewRun` says whether a curve starts a new run of segments: when true its start point is
// appended and the first segment starts there; when false the curve starts at the last point
// already in the array, which is not appended again (with no point there, the new points are
// simply chained among themselves).
//
// Threads: nothing here is shared between calls but the workspace the caller passes in, so
// threads that each use their own workspace may flatten at the same time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <Wm4Foundation/Wm4BezierCurve2.h>
#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/geometry/SegmentedPrimitive.h"
#include "svg/tqSvgExport.h"

namespace tq::svg::SegmentationUtils {

using PointIterator = std::vector<Wm4::Vector2f>::iterator;

struct BezierSegmentationWorkspace;

// One span of a cubic's parameter range, with its control points in the workspace.
struct TQSVG_EXPORT SegmentationJob {
    // Takes `points` (vectorSize control points of the span) and computes the error at once,
    // which takes two arrays from the workspace and overwrites `points` (see getResult).
    SegmentationJob(BezierSegmentationWorkspace& workspace, PointIterator points, float t,
                    float halfStep);

    // The curve point at `t`: the first control point once the span has been halved.
    const Wm4::Vector2f& getResult() const { return *points; }

    PointIterator points;  // the span's control points; the first is the curve point at `t`
    PointIterator left;    // control points of the first half of the span
    PointIterator right;   // control points of the second half of the span
    float t;               // parameter of the span's middle, in the whole curve's [0, 1]
    float halfStep;        // children have their middles at t - halfStep and t + halfStep
    // Flatness: chord / control polygon length mapped into [-1, 0] (-1 is straight); S-shaped
    // spans get [0, 1] so that any negative tolerance splits them.
    float error;

private:
    void computeError(BezierSegmentationWorkspace& workspace);
};

// Scratch arena of control-point arrays of `vectorSize` points each, handed out by bumping
// `next`. Copies and moves keep `next` at the same offset in their own storage. `jobs` is the
// job array DeCasteljauSegmentBezier uses, kept here so that it keeps its capacity from curve to
// curve; it is scratch (a copy starts with it empty). One workspace serves one thread at a time.
struct TQSVG_EXPORT BezierSegmentationWorkspace {
    BezierSegmentationWorkspace();
    BezierSegmentationWorkspace(const BezierSegmentationWorkspace& other);
    BezierSegmentationWorkspace(BezierSegmentationWorkspace&& other) noexcept;
    BezierSegmentationWorkspace& operator=(const BezierSegmentationWorkspace& other);
    BezierSegmentationWorkspace& operator=(BezierSegmentationWorkspace&& other) noexcept;
    ~BezierSegmentationWorkspace();

    // Room for `numVectors` (taken up to a power of two, at least 1) times 4 arrays of
    // `vectorSize` points: enough for the jobs of that many interior points. Arrays handed out
    // before become invalid. Reuses the storage's capacity.
    void initWorkspace(std::size_t numVectors, std::size_t vectorSize);

    // The next array; no bounds check, initWorkspace sized the arena for the largest use.
    PointIterator createVector();
    // The next array, with [first, last) copied into it.
    PointIterator createVector(const Wm4::Vector2f* first, const Wm4::Vector2f* last);

    std::size_t getNumPoints() const { return static_cast<std::size_t>(vectorSize); }

    std::uint64_t vectorSize = 0;
    PointIterator next;
    std::vector<Wm4::Vector2f> storage;
    std::vector<SegmentationJob> jobs;
};

// Fills `jobs` with the spans whose results are the interior points of the flattened cubic,
// ordered by t: starting from the whole curve, the span with the largest error (the earliest on
// ties) is halved until `tolerance` >= that error or there are `maxPoints` jobs. A cubic always
// gets at least the first job, even for a maximum of 0. Curves of another degree give no job.
TQSVG_EXPORT void DeCasteljauGetBezierPoints(BezierSegmentationWorkspace& workspace,
                                             const Wm4::BezierCurve2f& curve,
                                             std::vector<SegmentationJob>& jobs,
                                             unsigned int maxPoints, float tolerance);

// Appends the flattened curve to `primitive`'s points and indices: its start (when
// `startNewRun`), the interior points, the exact end point, and the segments joining them. The
// spans are kept in `workspace.jobs`. Left out, with a log line, when the point count could
// overflow 32-bit indices.
TQSVG_EXPORT void DeCasteljauSegmentBezier(BezierSegmentationWorkspace& workspace,
                                           const Wm4::BezierCurve2f& curve,
                                           SegmentedPrimitive& primitive, bool startNewRun,
                                           unsigned int maxPoints, float tolerance);

// Appends the arc of the ellipse with `center` and `radii`, rotated by `rotation` radians, from
// parameter angle `startAngle` over `sweep`, in exactly `steps` equal steps (`steps` + 1 points
// with the start). `tolerance` is deliberately not used: the step count alone decides. With 0
// steps only the start point is made (when `startNewRun`). Left out, with a log line, when the
// point count could overflow 32-bit indices.
TQSVG_EXPORT void SegmentEllipticalArc(const Wm4::Vector2f& center, const Wm4::Vector2f& radii,
                                       float rotation, float startAngle, float sweep,
                                       std::vector<Wm4::Vector2f>& points,
                                       std::vector<unsigned int>& indices, bool startNewRun,
                                       unsigned int steps, float tolerance);

}  // namespace tq::svg::SegmentationUtils
