#include "svg/geometry/detail/StrokeSubpaths.h"

#include <algorithm>
#include <cmath>

#include "svg/geometry/detail/Flattening.h"

namespace tq::svg::detail {

namespace {

Wm4::Vector2d toDouble(const Wm4::Vector2f& p) {
    return Wm4::Vector2d(p.X(), p.Y());
}

}  // namespace

void StrokeSubpaths::clear() {
    points.clear();
    corners.clear();
    subpaths.clear();
}

void StrokeSubpaths::begin() {
    Subpath subpath;
    subpath.begin = subpath.end = static_cast<std::uint32_t>(points.size());
    subpaths.push_back(subpath);
}

void StrokeSubpaths::add(const Wm4::Vector2d& point, bool corner) {
    Subpath& subpath = subpaths.back();
    if (subpath.end > subpath.begin && points.back() == point) {
        corners.back() = corners.back() | (corner ? 1 : 0);
        return;
    }
    points.push_back(point);
    corners.push_back(corner ? 1 : 0);
    subpath.end = static_cast<std::uint32_t>(points.size());
}

void StrokeSubpaths::end(bool closed, bool drew, const Wm4::Vector2d& along) {
    Subpath& subpath = subpaths.back();
    if (closed && subpath.end - subpath.begin > 1 && points.back() == points[subpath.begin]) {
        corners[subpath.begin] = corners[subpath.begin] | corners.back();
        points.pop_back();
        corners.pop_back();
        --subpath.end;
    }
    subpath.closed = closed;
    subpath.along = along;
    if (subpath.end == subpath.begin || (subpath.end - subpath.begin == 1 && !drew)) {
        points.resize(subpath.begin);
        corners.resize(subpath.begin);
        subpaths.pop_back();
    }
}

void StrokeSubpaths::transform(const Wm4::Matrix3f& m) {
    const auto map = [&m](const Wm4::Vector2d& p, double w) {
        return Wm4::Vector2d(m(0, 0) * p.X() + m(0, 1) * p.Y() + w * m(0, 2),
                             m(1, 0) * p.X() + m(1, 1) * p.Y() + w * m(1, 2));
    };
    // In place: dropping points only ever moves the rest towards the front.
    std::size_t kept = 0;
    std::uint32_t w = 0;
    for (Subpath run : subpaths) {
        const std::uint32_t first = w;
        for (std::uint32_t i = run.begin; i < run.end; ++i) {
            const Wm4::Vector2d p = map(points[i], 1.0);
            if (w > first && points[w - 1] == p) {
                corners[w - 1] = corners[w - 1] | corners[i];
                continue;
            }
            points[w] = p;
            corners[w++] = corners[i];
        }
        if (run.closed && w - first > 1 && points[w - 1] == points[first]) {
            corners[first] = corners[first] | corners[--w];
        }
        const Wm4::Vector2d along = map(run.along, 0.0);
        const double length = along.Length();
        run.along = length > 0.0 && std::isfinite(length) ? along / length : Wm4::Vector2d(1, 0);
        run.begin = first;
        run.end = w;
        subpaths[kept++] = run;
    }
    subpaths.resize(kept);
    points.resize(w);
    corners.resize(w);
}

double StrokeSubpaths::length(const Subpath& subpath) const {
    double sum = 0.0;
    for (std::uint32_t i = subpath.begin; i + 1 < subpath.end; ++i) {
        sum += (points[i + 1] - points[i]).Length();
    }
    if (subpath.closed && subpath.end - subpath.begin > 1) {
        sum += (points[subpath.begin] - points[subpath.end - 1]).Length();
    }
    return sum;
}

bool StrokeSubpaths::allFinite() const {
    return std::all_of(points.begin(), points.end(), [](const Wm4::Vector2d& p) {
        return std::isfinite(p.X()) && std::isfinite(p.Y());
    });
}

void FlattenPathForStroke(const Path& path, float distance, const Wm4::Matrix3f& transform,
                          SegmentationUtils::BezierSegmentationWorkspace& curves,
                          SegmentedPrimitive& scratch, StrokeSubpaths& out) {
    out.clear();
    scratch.points.clear();
    scratch.indices.clear();
    std::size_t taken = 0;     // points of `scratch` already moved into `out`
    std::size_t before = 0;    // index count before the latest piece
    std::size_t segments = 0;  // index count before the current run
    bool open = false, closed = false;
    FlattenPathWithin(path, distance, &transform, curves, scratch, [&](bool newRun, bool closes) {
        if (newRun) {
            if (open) {
                out.end(closed, scratch.indices.size() > segments);
            }
            out.begin();
            open = true;
            segments = before;
        }
        // The end of every piece is where it meets the next command; a new run's first point
        // is where its moveto put it.
        const std::size_t last = scratch.points.size();
        for (std::size_t k = taken; k < last; ++k) {
            out.add(toDouble(scratch.points[k]), k + 1 == last || (newRun && k == taken));
        }
        taken = last;
        before = scratch.indices.size();
        closed = closes;
    });
    if (open) {
        out.end(closed, scratch.indices.size() > segments);
    }
}

void FlattenRectForStroke(const Rect& rect, StrokeSubpaths& out) {
    out.clear();
    const double x = rect.position.X(), y = rect.position.Y();
    const double w = rect.size.X(), h = rect.size.Y();
    if (!(w > 0.0) || !(h > 0.0)) {
        return;
    }
    out.begin();
    for (const Wm4::Vector2d& corner : {Wm4::Vector2d(x, y), Wm4::Vector2d(x + w, y),
                                        Wm4::Vector2d(x + w, y + h), Wm4::Vector2d(x, y + h)}) {
        out.add(corner, true);
    }
    out.end(true, true);
}

void FlattenCircleForStroke(const Circle& circle, float distance, const Wm4::Matrix3f& transform,
                            StrokeSubpaths& out) {
    constexpr double kTwoPi = 6.283185307179586;
    out.clear();
    const double r = circle.radius;
    if (!(r > 0.0)) {
        return;
    }
    const unsigned int sides =
        std::max(4u, ArcSteps(circle.radius * MaximumStretch(&transform), float(kTwoPi), distance));
    out.begin();
    for (unsigned int i = 0; i < sides; ++i) {
        const double angle = kTwoPi * double(i) / double(sides);
        out.add(toDouble(circle.center) + Wm4::Vector2d(r * std::cos(angle), r * std::sin(angle)),
                false);
    }
    out.end(true, true);
}

void FlattenLineForStroke(const Line& line, StrokeSubpaths& out) {
    out.clear();
    out.begin();
    out.add(toDouble(line.start), true);
    out.add(toDouble(line.end), true);
    out.end(false, true);
}

}  // namespace tq::svg::detail
