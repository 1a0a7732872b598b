#include "svg/geometry/detail/Stroker.h"

#include <algorithm>
#include <cmath>

#include "svg/geometry/TriangulatePoly.h"
#include "svg/geometry/detail/Flattening.h"

namespace tq::svg::detail {

namespace {

using Vec = Wm4::Vector2d;

constexpr double kPi = 3.14159265358979323846;
constexpr double kMaxMiterLimit = 1e4;
// Round steps of one call, beyond which arcs get coarser: about 64 MB of pieces.
constexpr double kArcPointBudget = double(1 << 22);
// Pieces beyond this many points would leave 32-bit indices behind in the triangulation.
constexpr std::size_t kMaxPiecePoints = std::size_t(1) << 31;

// The direction turned a quarter counter-clockwise (y up).
Vec leftOf(const Vec& d) {
    return Vec(-d.Y(), d.X());
}

double cross(const Vec& a, const Vec& b) {
    return a.X() * b.Y() - a.Y() * b.X();
}

// Consecutive points differ, so the length is positive.
Vec direction(const Vec& from, const Vec& to) {
    const Vec d = to - from;
    return d / d.Length();
}

}  // namespace

// A vertex's turn from direction `in` to direction `out`, as the pen's outer side sees it: the
// outer offsets (unit normals) of the two segments in counter-clockwise order, and the
// directions in which each offset edge runs on towards the miter's tip.
struct Stroker::Turn {
    Turn(const Vec& in, const Vec& out) {
        const double c = cross(in, out);
        cosine = std::clamp(in.Dot(out), -1.0, 1.0);
        angle = std::atan2(std::fabs(c), in.Dot(out));
        if (c >= 0.0) {  // a left turn (or a fold straight back): the outer side is the right
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
    double angle;   // the turning angle, in [0, pi]
};

bool Stroker::stroke(const StrokeSubpaths& lines, const StrokeStyle& style,
                     const Wm4::Matrix3f* map, std::vector<Wm4::Vector2f>& outPoints,
                     std::vector<unsigned int>& outIndices) {
    prepare(lines, style, map);
    for (const StrokeSubpaths::Subpath& run : lines.subpaths) {
        addRun(lines, run);
        if (mPoints.size() > kMaxPiecePoints) {
            return false;
        }
    }
    if (mSegments.empty()) {
        return true;
    }
    const std::size_t points = outPoints.size(), indices = outIndices.size();
    if (!tq::TriangulatePoly(mPoints, mSegments, outPoints, outIndices,
                             tq::TriangulationFillRule::NonZero, true)) {
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

// Segments, the joins between them (all around a closed run) and the caps of an open one.
void Stroker::addRun(const StrokeSubpaths& lines, const StrokeSubpaths::Subpath& run) {
    const std::uint32_t n = run.end - run.begin;
    const Vec* p = lines.points.data() + run.begin;
    const std::uint8_t* corner = lines.corners.data() + run.begin;
    if (n == 1) {
        addDot(p[0], run.along);
        return;
    }
    const std::uint32_t segments = run.closed ? n : n - 1;
    Vec previous = run.closed ? direction(p[n - 1], p[0]) : Vec();
    for (std::uint32_t i = 0; i < segments; ++i) {
        const Vec& b = p[i + 1 < n ? i + 1 : 0];
        const Vec d = direction(p[i], b);
        addSegment(p[i], b);
        if (i > 0 || run.closed) {
            addJoin(p[i], previous, d, corner[i] != 0);
        }
        previous = d;
    }
    if (!run.closed) {
        addCap(p[0], direction(p[1], p[0]));
        addCap(p[n - 1], previous);
    }
}

void Stroker::addSegment(const Vec& a, const Vec& b) {
    const Vec n = leftOf(direction(a, b)) * mStyle.halfWidth;
    beginPiece();
    addPoint(a + n);
    addPoint(a - n);
    addPoint(b - n);
    addPoint(b + n);
    endPiece();
}

// The wedge on the outer side of a turn; points inside a curve are joined round, as the pen
// sweeps there. Going straight on needs nothing.
void Stroker::addJoin(const Vec& p, const Vec& in, const Vec& out, bool corner) {
    if (cross(in, out) == 0.0 && in.Dot(out) > 0.0) {
        return;
    }
    const Turn turn(in, out);
    const double h = mStyle.halfWidth;
    const LineJoin join = corner ? mStyle.join : LineJoin::Round;
    if (join == LineJoin::Miter || join == LineJoin::MiterClip || join == LineJoin::Arcs) {
        addMiter(p, turn, join == LineJoin::MiterClip);
        return;
    }
    beginPiece();
    addPoint(p);
    addPoint(p + turn.from * h);
    if (join == LineJoin::Round) {
        addArc(p, turn.from, turn.angle);
    }
    addPoint(p + turn.to * h);
    endPiece();
}

// The miter's tip lies h / cos(angle / 2) from the vertex, along the bisector of the outer
// offsets; beyond the limit it is cut off at the limit (clip), or bevelled.
void Stroker::addMiter(const Vec& p, const Turn& turn, bool clip) {
    const double h = mStyle.halfWidth;
    const double limit = mStyle.miterLimit;
    const double cosHalfSquared = (1.0 + turn.cosine) / 2.0;
    beginPiece();
    addPoint(p);
    addPoint(p + turn.from * h);
    if (limit * limit * cosHalfSquared >= 1.0) {
        addPoint(p + (turn.from + turn.to) * (h / (1.0 + turn.cosine)));
    } else if (clip) {
        // How far each offset edge runs on before it meets the clip line, limit * h from the
        // vertex across the bisector; sin(angle / 2) > 0 since the miter is over the limit.
        const double run =
            (limit - std::sqrt(cosHalfSquared)) * h / std::sqrt((1.0 - turn.cosine) / 2.0);
        addPoint(p + turn.from * h + turn.alongFrom * run);
        addPoint(p + turn.to * h + turn.alongTo * run);
    }
    addPoint(p + turn.to * h);
    endPiece();
}

void Stroker::addCap(const Vec& p, const Vec& outward) {
    if (mStyle.cap == LineCap::Butt) {
        return;
    }
    const double h = mStyle.halfWidth;
    const Vec n = leftOf(outward) * h;
    beginPiece();
    addPoint(p - n);
    if (mStyle.cap == LineCap::Square) {
        addPoint(p - n + outward * h);
        addPoint(p + n + outward * h);
    } else {
        addArc(p, -leftOf(outward), kPi);
    }
    addPoint(p + n);
    endPiece();
}

// A subpath or dash of no length: a disc, or a square facing `along`.
void Stroker::addDot(const Vec& p, const Vec& along) {
    if (mStyle.cap == LineCap::Butt) {
        return;
    }
    const double h = mStyle.halfWidth;
    beginPiece();
    if (mStyle.cap == LineCap::Square) {
        const Vec n = leftOf(along) * h;
        const Vec d = along * h;
        addPoint(p - n - d);
        addPoint(p - n + d);
        addPoint(p + n + d);
        addPoint(p + n - d);
    } else {
        addPoint(p + along * h);
        addArc(p, along, 2.0 * kPi);
    }
    endPiece();
}

void Stroker::addArc(const Vec& p, const Vec& from, double angle) {
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
        addPoint(p + v * h);
    }
}

void Stroker::beginPiece() {
    mPieceStart = static_cast<std::uint32_t>(mPoints.size());
}

void Stroker::addPoint(const Vec& p) {
    mPoints.emplace_back(static_cast<float>(mMap(0, 0) * p.X() + mMap(0, 1) * p.Y() + mMap(0, 2)),
                         static_cast<float>(mMap(1, 0) * p.X() + mMap(1, 1) * p.Y() + mMap(1, 2)));
}

// Closes the piece's polygon; fewer than three points enclose nothing.
void Stroker::endPiece() {
    const auto end = static_cast<std::uint32_t>(mPoints.size());
    if (end - mPieceStart < 3) {
        mPoints.resize(mPieceStart);
        return;
    }
    for (std::uint32_t i = mPieceStart; i < end; ++i) {
        mSegments.push_back(i);
        mSegments.push_back(i + 1 < end ? i + 1 : mPieceStart);
    }
}

}  // namespace tq::svg::detail
