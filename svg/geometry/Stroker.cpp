#include "svg/geometry/detail/Stroker.h"

#include <algorithm>
#include <cmath>

#include "svg/geometry/TriangulatePoly.h"
#include "svg/geometry/detail/Flattening.h"
#include "svg/geometry/detail/TriangulateWithinCuts.h"

namespace tq::svg::detail {

namespace {

using Vec = Wm4::Vector2d;

constexpr double kPi = 3.14159265358979323846;
constexpr double kMaxMiterLimit = 1e4;
// Round steps of one call, beyond which arcs get coarser: about 64 MB of outline.
constexpr double kArcPointBudget = double(1 << 22);
// Outlines beyond this many points would leave 32-bit indices behind in the triangulation.
constexpr std::size_t kMaxOutlinePoints = std::size_t(1) << 31;
// Cut points allowed in the triangulation of an outline: 16 a segment, and a quarter of a million
// more for small outlines.
constexpr std::size_t kCutsPerSegment = 16;
constexpr std::size_t kCutsBase = std::size_t(1) << 18;

// The direction turned a quarter counter-clockwise (y up).
Vec leftOf(const Vec& d) {
    return Vec(-d.Y(), d.X());
}

double cross(const Vec& a, const Vec& b) {
    return a.X() * b.Y() - a.Y() * b.X();
}

}  // namespace

// A vertex's turn from direction `in` to direction `out`. The outer wedge runs from offset
// `from` to offset `to` (unit normals, counter-clockwise about the vertex), along which the
// offset edges run on towards a miter's tip; `leftTurn` puts it on the right side.
struct Stroker::Turn {
    Turn(const Vec& in, const Vec& out) {
        const double c = cross(in, out);
        cosine = std::clamp(in.Dot(out), -1.0, 1.0);
        sine = std::fabs(c);
        angle = std::atan2(sine, in.Dot(out));
        leftTurn = c >= 0.0;  // a fold straight back counts as a left turn
        if (leftTurn) {
            from = -leftOf(in);
            to = -leftOf(out);
            alongFrom = in;
            alongTo = -out;
        } else {
            from = leftOf(out);
            to = leftOf(in);
            alongFrom = -out;
            alongTo = in;
        }
    }

    Vec from, to, alongFrom, alongTo;
    double cosine;  // of the turning angle
    double sine;    // of the turning angle, not negative
    double angle;   // the turning angle, in [0, pi]
    bool leftTurn;
};

bool Stroker::stroke(const StrokeSubpaths& lines, const StrokeStyle& style,
                     const Wm4::Matrix3f* map, std::vector<Wm4::Vector2f>& outPoints,
                     std::vector<unsigned int>& outIndices) {
    prepare(lines, style, map);
    for (const StrokeSubpaths::Subpath& run : lines.subpaths) {
        addRun(lines, run);
        if (mPoints.size() > kMaxOutlinePoints) {
            return false;
        }
    }
    if (mSegments.empty()) {
        return true;
    }
    const std::size_t points = outPoints.size(), indices = outIndices.size();
    // Where the pen is wider than a curve bends, the inner offsets fan out and may all cross
    // each other; beyond a budget linear in the outline the stroke fails rather than take time
    // and memory quadratic in it.
    const std::size_t maxCuts = kCutsPerSegment * (mSegments.size() / 2) + kCutsBase;
    if (!TriangulateWithinCuts(mPoints, mSegments, outPoints, outIndices,
                               tq::TriangulationFillRule::NonZero, maxCuts)) {
        outPoints.resize(points);
        outIndices.resize(indices);
        return false;
    }
    return true;
}

// The style within its bounds, the map, and the angle of a round step: within the tolerance
// once the pen is mapped, and coarser when the round ends of these lines would pass the budget.
void Stroker::prepare(const StrokeSubpaths& lines, const StrokeStyle& style,
                      const Wm4::Matrix3f* map) {
    mStyle = style;
    mStyle.miterLimit = std::clamp(style.miterLimit, 1.0, kMaxMiterLimit);
    mMap = Wm4::Matrix3d::IDENTITY;
    if (map != nullptr) {
        for (int row = 0; row < 2; ++row) {
            for (int col = 0; col < 3; ++col) {
                mMap(row, col) = (*map)(row, col);
            }
        }
    }
    const double radius = style.halfWidth * double(MaximumStretch(map));
    mArcStep =
        radius > style.tolerance ? 2.0 * std::acos(1.0 - style.tolerance / radius) : kPi / 2.0;
    mArcStep = std::clamp(mArcStep, 2.0 * kPi / double(kMaxCurveSteps), kPi / 2.0);
    // Pessimistic: every vertex a half turn, and two round caps per run.
    const double rounds = double(lines.points.size()) +
                          (style.cap == LineCap::Round ? 2.0 * double(lines.subpaths.size()) : 0.0);
    if (rounds * std::ceil(kPi / mArcStep) > kArcPointBudget) {
        mArcStep = kPi / std::max(2.0, std::floor(kArcPointBudget / rounds));
    }
    mPoints.clear();
    mSegments.clear();
}

// Both sides of the run, joined at every vertex between two of its segments; an open run is one
// outline with its caps, a closed one a loop per side.
void Stroker::addRun(const StrokeSubpaths& lines, const StrokeSubpaths::Subpath& run) {
    const std::uint32_t n = run.end - run.begin;
    const Vec* p = lines.points.data() + run.begin;
    const std::uint8_t* corner = lines.corners.data() + run.begin;
    if (n == 1) {
        addDot(p[0], run.along);
        return;
    }
    const std::uint32_t segments = run.closed ? n : n - 1;
    mDirections.clear();
    mLengths.clear();
    for (std::uint32_t i = 0; i < segments; ++i) {
        const Vec d = p[i + 1 < n ? i + 1 : 0] - p[i];
        mLengths.push_back(d.Length());
        mDirections.push_back(d / mLengths.back());
    }
    mRight.clear();
    mLeft.clear();
    const double h = mStyle.halfWidth;
    if (!run.closed) {
        mRight.push_back(p[0] - leftOf(mDirections[0]) * h);
        mLeft.push_back(p[0] + leftOf(mDirections[0]) * h);
    }
    // A closed run's first vertex never takes the crossing (see the header).
    for (std::uint32_t v = run.closed ? 0 : 1; v < (run.closed ? n : n - 1); ++v) {
        addJoin(p[v], (v + segments - 1) % segments, v, corner[v] != 0, v != 0);
    }
    if (run.closed) {
        addPolygon(mRight, false);
        addPolygon(mLeft, true);
        return;
    }
    mRight.push_back(p[n - 1] - leftOf(mDirections.back()) * h);
    mLeft.push_back(p[n - 1] + leftOf(mDirections.back()) * h);
    addOpenOutline(p[0], p[n - 1]);
}

// Both sides through vertex `p` from segment `in` to segment `out`: the outer one around the
// join's wedge, the inner one through the vertex (or the offsets' crossing). Points inside a
// curve are joined round, as the pen sweeps there.
void Stroker::addJoin(const Vec& p, std::uint32_t in, std::uint32_t out, bool corner,
                      bool mayCross) {
    const Vec& din = mDirections[in];
    const Vec& dout = mDirections[out];
    const double h = mStyle.halfWidth;
    if (din == dout) {
        mRight.push_back(p - leftOf(din) * h);
        mLeft.push_back(p + leftOf(din) * h);
        return;
    }
    const Turn turn(din, dout);
    if (turn.sine == 0.0 && turn.cosine > 0.0) {  // straight on, as far as doubles tell
        for (Chain* side : {&mRight, &mLeft}) {
            const double sign = side == &mRight ? -1.0 : 1.0;
            side->insert(side->end(),
                         {p + leftOf(din) * (sign * h), p, p + leftOf(dout) * (sign * h)});
        }
        return;
    }
    outerWedge(p, turn, corner ? mStyle.join : LineJoin::Round);
    Chain& outer = turn.leftTurn ? mRight : mLeft;
    // The wedge runs counter-clockwise, which is forward on the right side, back on the left.
    if (turn.leftTurn) {
        outer.insert(outer.end(), mScratch.begin(), mScratch.end());
    } else {
        outer.insert(outer.end(), mScratch.rbegin(), mScratch.rend());
    }
    innerCorner(turn.leftTurn ? mLeft : mRight, p, turn, in, out, mayCross);
}

// The outer side's points from one offset to the other, in mScratch: a bevel's two, an arc, or
// a miter's tip (cut off at the limit by a clip, else bevelled beyond it). The offsets' own
// points lie on the way to a miter's tip or clip, so they are left out there.
void Stroker::outerWedge(const Vec& p, const Turn& turn, LineJoin join) {
    const double h = mStyle.halfWidth;
    mScratch.clear();
    if (join == LineJoin::Miter || join == LineJoin::MiterClip || join == LineJoin::Arcs) {
        // The tip lies h / cos(angle / 2) out along the bisector of the offsets.
        const double limit = mStyle.miterLimit;
        const double cosHalfSquared = (1.0 + turn.cosine) / 2.0;
        if (limit * limit * cosHalfSquared >= 1.0) {
            mScratch.push_back(p + (turn.from + turn.to) * (h / (1.0 + turn.cosine)));
            return;
        }
        if (join == LineJoin::MiterClip) {
            // How far each offset edge runs on before it meets the clip line, limit * h out
            // across the bisector; sin(angle / 2) > 0 since the miter is over the limit.
            const double run =
                (limit - std::sqrt(cosHalfSquared)) * h / std::sqrt((1.0 - turn.cosine) / 2.0);
            mScratch.push_back(p + turn.from * h + turn.alongFrom * run);
            mScratch.push_back(p + turn.to * h + turn.alongTo * run);
            return;
        }
    }
    mScratch.push_back(p + turn.from * h);
    if (join == LineJoin::Round) {
        addArc(mScratch, p, turn.from, turn.angle);
    }
    mScratch.push_back(p + turn.to * h);
}

// The inner side from segment `in`'s offset to segment `out`'s: through the vertex, which is
// what the two rectangles' ends add up to, or through the offset edges' crossing when the loop
// this cuts off (the vertex, the two offsets' ends and the crossing) lies in both rectangles:
// the crossing lies h tan(angle / 2) back along each segment, each offset's end h sin(angle)
// along the other.
void Stroker::innerCorner(Chain& side, const Vec& p, const Turn& turn, std::uint32_t in,
                          std::uint32_t out, bool mayCross) {
    const double h = mStyle.halfWidth;
    const double sign = turn.leftTurn ? 1.0 : -1.0;
    const Vec nin = leftOf(mDirections[in]) * (sign * h);
    const Vec nout = leftOf(mDirections[out]) * (sign * h);
    const double shorter = std::min(mLengths[in], mLengths[out]);
    if (mayCross && turn.cosine > -1.0 && h * turn.sine <= shorter * (1.0 + turn.cosine) &&
        h * turn.sine <= shorter) {
        side.push_back(p + (nin + nout) / (1.0 + turn.cosine));
    } else {
        side.insert(side.end(), {p + nin, p, p + nout});
    }
}

// The open run's one outline: start cap, right side, end cap, left side back.
void Stroker::addOpenOutline(const Vec& start, const Vec& end) {
    mPolygonStart = static_cast<std::uint32_t>(mPoints.size());
    addPoint(mLeft.front());
    addCap(start, -mDirections.front());
    for (const Vec& point : mRight) {
        addPoint(point);
    }
    addCap(end, mDirections.back());
    for (std::size_t i = mLeft.size() - 1; i > 0; --i) {
        addPoint(mLeft[i]);
    }
    closePolygon();
}

// A cap's points between the two sides' ends, from the right of `outward` round to its left.
void Stroker::addCap(const Vec& p, const Vec& outward) {
    const double h = mStyle.halfWidth;
    const Vec n = leftOf(outward) * h;
    mScratch.clear();
    if (mStyle.cap == LineCap::Square) {
        mScratch.push_back(p - n + outward * h);
        mScratch.push_back(p + n + outward * h);
    } else if (mStyle.cap == LineCap::Round) {
        addArc(mScratch, p, -leftOf(outward), kPi);
    }
    for (const Vec& point : mScratch) {
        addPoint(point);
    }
}

// A subpath or dash of no length: a disc, or a square facing `along`.
void Stroker::addDot(const Vec& p, const Vec& along) {
    const double h = mStyle.halfWidth;
    mScratch.clear();
    if (mStyle.cap == LineCap::Square) {
        const Vec n = leftOf(along) * h;
        const Vec d = along * h;
        mScratch.insert(mScratch.end(), {p - n - d, p - n + d, p + n + d, p + n - d});
    } else if (mStyle.cap == LineCap::Round) {
        mScratch.push_back(p + along * h);
        addArc(mScratch, p, along, 2.0 * kPi);
    }
    addPolygon(mScratch, false);
}

void Stroker::addArc(Chain& out, const Vec& p, const Vec& from, double angle) {
    const double steps = std::ceil(angle / mArcStep);
    if (!(steps > 1.0)) {
        return;
    }
    const double step = angle / steps;
    const double c = std::cos(step), s = std::sin(step);
    const double h = mStyle.halfWidth;
    Vec v = from;
    for (int k = 1; k < int(steps); ++k) {
        v = Vec(c * v.X() - s * v.Y(), s * v.X() + c * v.Y());
        out.push_back(p + v * h);
    }
}

void Stroker::addPolygon(const Chain& points, bool backwards) {
    mPolygonStart = static_cast<std::uint32_t>(mPoints.size());
    if (backwards) {
        for (auto it = points.rbegin(); it != points.rend(); ++it) {
            addPoint(*it);
        }
    } else {
        for (const Vec& point : points) {
            addPoint(point);
        }
    }
    closePolygon();
}

void Stroker::addPoint(const Vec& p) {
    mPoints.emplace_back(static_cast<float>(mMap(0, 0) * p.X() + mMap(0, 1) * p.Y() + mMap(0, 2)),
                         static_cast<float>(mMap(1, 0) * p.X() + mMap(1, 1) * p.Y() + mMap(1, 2)));
}

// Joins the points since the polygon began into a closed loop; fewer than three enclose nothing.
void Stroker::closePolygon() {
    const auto end = static_cast<std::uint32_t>(mPoints.size());
    if (end - mPolygonStart < 3) {
        mPoints.resize(mPolygonStart);
        return;
    }
    for (std::uint32_t i = mPolygonStart; i < end; ++i) {
        mSegments.push_back(i);
        mSegments.push_back(i + 1 < end ? i + 1 : mPolygonStart);
    }
}

}  // namespace tq::svg::detail
