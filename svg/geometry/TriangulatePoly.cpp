#include "svg/geometry/TriangulatePoly.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <numeric>
#include <set>
#include <stdexcept>
#include <unordered_map>

namespace tq {

namespace impl {

namespace {

[[noreturn]] void fail() {
    throw std::runtime_error("Shape triangulation failed");
}

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

// 128-bit integers, for products of grid differences with orientation values.
__extension__ typedef __int128 Int128;

constexpr std::int64_t kGridSteps = std::int64_t(1) << 26;
constexpr int kMaxSplitPasses = 16;

// A point of the integer grid. Sweep order: by y, then by x.
struct GridPoint {
    std::int64_t x;
    std::int64_t y;
    bool operator==(const GridPoint& o) const { return x == o.x && y == o.y; }
    bool operator<(const GridPoint& o) const { return y < o.y || (y == o.y && x < o.x); }
};

// Twice the signed area of (a, b, c); exact for grid coordinates (|x|, |y| < 2^27). Negative when
// c lies right of the line a->b in a y-down frame (for a downward a->b, right means larger x).
std::int64_t orient(const GridPoint& a, const GridPoint& b, const GridPoint& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Whether p lies strictly between a and b on the segment a-b, given that it is on its line.
bool strictlyInside(const GridPoint& a, const GridPoint& b, const GridPoint& p) {
    const std::int64_t along = (p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y);
    const std::int64_t length = (b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y);
    return along > 0 && along < length;
}

// Rounds num / den to the nearest integer (halves away from zero); den != 0.
std::int64_t roundedQuotient(Int128 num, Int128 den) {
    if (den < 0) {
        num = -num;
        den = -den;
    }
    const Int128 half = den / 2;
    return static_cast<std::int64_t>(num >= 0 ? (num + half) / den : -((-num + half) / den));
}

}  // namespace

// The vertices, segments and trapezoids of one decomposition.
class TrapezoidRepresentation {
public:
    struct Vertex {
        GridPoint grid;
        Wm4::Vector2f position;           // output coordinates
        std::vector<std::uint32_t> up;    // segments whose lower end is here (they end here)
        std::vector<std::uint32_t> down;  // segments whose upper end is here (they start here)
    };

    struct Segment {
        std::uint32_t upper;  // the end met first by the sweep
        std::uint32_t lower;
        int delta;  // change of winding number when crossing it from left to right
    };

    struct Trapezoid {
        std::uint32_t left;  // bounding segments
        std::uint32_t right;
        std::uint32_t top;  // bounding vertices
        std::uint32_t bottom;
        int winding;
        std::uint32_t region;  // union-find parent; the root names the region
    };

    void build(const std::vector<Wm4::Vector2f>& points, const std::vector<unsigned int>& indices,
               bool skipDegenerate);
    void emit(TriangulationFillRule rule, std::vector<Wm4::Vector2f>& outPoints,
              std::vector<unsigned int>& outIndices);

private:
    struct Edge {
        std::uint32_t a;  // direction a -> b, as given
        std::uint32_t b;
        int weight;
    };

    std::uint32_t addPoint(const GridPoint& grid, const Wm4::Vector2f& position);
    GridPoint toGrid(const Wm4::Vector2f& p) const;
    Wm4::Vector2f fromGrid(const GridPoint& g) const;
    bool splitPass(std::vector<Edge>& edges);
    void mergeEdges(const std::vector<Edge>& edges);
    void addFrame();
    void sweep();
    std::uint32_t findRegion(std::uint32_t t);
    void joinRegions(std::uint32_t a, std::uint32_t b);

    std::vector<Vertex> mVertices;
    std::unordered_map<std::uint64_t, std::uint32_t> mVertexAt;
    std::vector<Segment> mSegments;
    std::vector<Trapezoid> mTrapezoids;
    double mMinX = 0, mMinY = 0, mScale = 1;

    struct SegmentOrder;
};

std::uint32_t TrapezoidRepresentation::addPoint(const GridPoint& grid,
                                                const Wm4::Vector2f& position) {
    const std::uint64_t key =
        (static_cast<std::uint64_t>(grid.x + 2) << 32) | static_cast<std::uint64_t>(grid.y + 2);
    const auto found = mVertexAt.find(key);
    if (found != mVertexAt.end()) {
        return found->second;
    }
    const auto id = static_cast<std::uint32_t>(mVertices.size());
    mVertices.push_back({grid, position, {}, {}});
    mVertexAt.emplace(key, id);
    return id;
}

GridPoint TrapezoidRepresentation::toGrid(const Wm4::Vector2f& p) const {
    return {std::llround((double(p.X()) - mMinX) * mScale),
            std::llround((double(p.Y()) - mMinY) * mScale)};
}

Wm4::Vector2f TrapezoidRepresentation::fromGrid(const GridPoint& g) const {
    return Wm4::Vector2f(static_cast<float>(mMinX + double(g.x) / mScale),
                         static_cast<float>(mMinY + double(g.y) / mScale));
}

void TrapezoidRepresentation::build(const std::vector<Wm4::Vector2f>& points,
                                    const std::vector<unsigned int>& indices, bool skipDegenerate) {
    double minX = std::numeric_limits<double>::infinity(), minY = minX;
    double maxX = -minX, maxY = -minX;
    for (unsigned int index : indices) {
        if (index >= points.size()) {
            fail();
        }
        const Wm4::Vector2f& p = points[index];
        if (!std::isfinite(p.X()) || !std::isfinite(p.Y())) {
            fail();
        }
        minX = std::min(minX, double(p.X()));
        minY = std::min(minY, double(p.Y()));
        maxX = std::max(maxX, double(p.X()));
        maxY = std::max(maxY, double(p.Y()));
    }
    if (indices.empty()) {
        return;
    }
    const double extent = std::max(maxX - minX, maxY - minY);
    mMinX = minX;
    mMinY = minY;
    mScale = extent > 0 ? double(kGridSteps) / extent : 1.0;

    std::vector<Edge> edges;
    edges.reserve(indices.size() / 2);
    for (std::size_t i = 0; i + 1 < indices.size(); i += 2) {
        const Wm4::Vector2f& p = points[indices[i]];
        const Wm4::Vector2f& q = points[indices[i + 1]];
        const std::uint32_t a = addPoint(toGrid(p), p);
        const std::uint32_t b = addPoint(toGrid(q), q);
        // A segment whose ends fall on one vertex encloses nothing: with or without the option
        // it changes no winding number, so it never reaches the sweep.
        (void)skipDegenerate;
        if (a != b) {
            edges.push_back({a, b, 1});
        }
    }
    int passes = 0;
    while (splitPass(edges)) {
        if (++passes > kMaxSplitPasses) {
            fail();  // rounding keeps creating crossings: give up rather than loop
        }
    }
    mergeEdges(edges);
    if (mSegments.empty()) {
        return;
    }
    addFrame();
    sweep();
}

// One pass over all pairs whose boxes overlap (by a sweep over x): every crossing, T-junction and
// collinear overlap becomes a split point of the segments involved. True when anything was split.
bool TrapezoidRepresentation::splitPass(std::vector<Edge>& edges) {
    const auto minX = [&](const Edge& e) {
        return std::min(mVertices[e.a].grid.x, mVertices[e.b].grid.x);
    };
    const auto maxX = [&](const Edge& e) {
        return std::max(mVertices[e.a].grid.x, mVertices[e.b].grid.x);
    };
    std::vector<std::uint32_t> order(edges.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&](std::uint32_t l, std::uint32_t r) {
        return minX(edges[l]) < minX(edges[r]) || (minX(edges[l]) == minX(edges[r]) && l < r);
    });
    std::vector<std::vector<std::uint32_t>> splits(edges.size());
    bool any = false;
    const auto split = [&](std::uint32_t edge, const GridPoint& at, const Wm4::Vector2f& position) {
        const Edge& e = edges[edge];
        if (at == mVertices[e.a].grid || at == mVertices[e.b].grid) {
            return;
        }
        splits[edge].push_back(addPoint(at, position));
        any = true;
    };
    std::vector<std::uint32_t> active;
    for (std::uint32_t current : order) {
        const Edge& e = edges[current];
        const std::int64_t left = minX(e);
        active.erase(std::remove_if(active.begin(), active.end(),
                                    [&](std::uint32_t t) { return maxX(edges[t]) < left; }),
                     active.end());
        const GridPoint A = mVertices[e.a].grid, B = mVertices[e.b].grid;
        for (std::uint32_t other : active) {
            const Edge& t = edges[other];
            const GridPoint C = mVertices[t.a].grid, D = mVertices[t.b].grid;
            if (std::max(A.y, B.y) < std::min(C.y, D.y) ||
                std::max(C.y, D.y) < std::min(A.y, B.y)) {
                continue;
            }
            const std::int64_t d1 = orient(C, D, A), d2 = orient(C, D, B);
            const std::int64_t d3 = orient(A, B, C), d4 = orient(A, B, D);
            // End points lying on the other segment (T-junctions and overlaps).
            if (d1 == 0 && strictlyInside(C, D, A))
                split(other, A, mVertices[e.a].position);
            if (d2 == 0 && strictlyInside(C, D, B))
                split(other, B, mVertices[e.b].position);
            if (d3 == 0 && strictlyInside(A, B, C))
                split(current, C, mVertices[t.a].position);
            if (d4 == 0 && strictlyInside(A, B, D))
                split(current, D, mVertices[t.b].position);
            // A proper crossing, rounded to the nearest grid point.
            if (((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) &&
                ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0))) {
                const Int128 den = Int128(d1) - d2;
                const GridPoint P{A.x + roundedQuotient(Int128(B.x - A.x) * d1, den),
                                  A.y + roundedQuotient(Int128(B.y - A.y) * d1, den)};
                const Wm4::Vector2f position = fromGrid(P);
                split(current, P, position);
                split(other, P, position);
            }
        }
        active.push_back(current);
    }
    if (!any) {
        return false;
    }
    std::vector<Edge> result;
    result.reserve(edges.size() * 2);
    for (std::size_t i = 0; i < edges.size(); ++i) {
        const Edge& e = edges[i];
        std::vector<std::uint32_t>& cuts = splits[i];
        if (cuts.empty()) {
            result.push_back(e);
            continue;
        }
        const GridPoint A = mVertices[e.a].grid, B = mVertices[e.b].grid;
        const auto along = [&](std::uint32_t v) {
            const GridPoint& p = mVertices[v].grid;
            return Int128(p.x - A.x) * (B.x - A.x) + Int128(p.y - A.y) * (B.y - A.y);
        };
        std::sort(cuts.begin(), cuts.end(),
                  [&](std::uint32_t l, std::uint32_t r) { return along(l) < along(r); });
        cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());
        std::uint32_t from = e.a;
        for (std::uint32_t cut : cuts) {
            if (cut != from) {
                result.push_back({from, cut, e.weight});
                from = cut;
            }
        }
        if (from != e.b) {
            result.push_back({from, e.b, e.weight});
        }
    }
    edges.swap(result);
    return true;
}

// Equal segments become one, their weights summed by direction; those that cancel disappear.
void TrapezoidRepresentation::mergeEdges(const std::vector<Edge>& edges) {
    std::unordered_map<std::uint64_t, std::uint32_t> index;
    index.reserve(edges.size());
    for (const Edge& e : edges) {
        const bool downward = mVertices[e.a].grid < mVertices[e.b].grid;
        const std::uint32_t upper = downward ? e.a : e.b;
        const std::uint32_t lower = downward ? e.b : e.a;
        const std::uint64_t key = (std::uint64_t(upper) << 32) | lower;
        const auto found = index.find(key);
        const int delta = downward ? e.weight : -e.weight;
        if (found == index.end()) {
            index.emplace(key, static_cast<std::uint32_t>(mSegments.size()));
            mSegments.push_back({upper, lower, delta});
        } else {
            mSegments[found->second].delta += delta;
        }
    }
    mSegments.erase(std::remove_if(mSegments.begin(), mSegments.end(),
                                   [](const Segment& s) { return s.delta == 0; }),
                    mSegments.end());
}

// A rectangle just outside the grid's box, crossing nothing and changing no winding number: every
// trapezoid inside it has two bounding segments.
void TrapezoidRepresentation::addFrame() {
    const GridPoint corners[4] = {
        {-1, -1}, {kGridSteps + 1, -1}, {kGridSteps + 1, kGridSteps + 1}, {-1, kGridSteps + 1}};
    std::uint32_t ids[4];
    for (int i = 0; i < 4; ++i) {
        ids[i] = addPoint(corners[i], fromGrid(corners[i]));
    }
    mSegments.push_back({ids[0], ids[3], 0});  // left side, top to bottom
    mSegments.push_back({ids[1], ids[2], 0});  // right side
    mSegments.push_back({ids[0], ids[1], 0});  // top, left to right
    mSegments.push_back({ids[3], ids[2], 0});  // bottom
}

std::uint32_t TrapezoidRepresentation::findRegion(std::uint32_t t) {
    while (mTrapezoids[t].region != t) {
        mTrapezoids[t].region = mTrapezoids[mTrapezoids[t].region].region;
        t = mTrapezoids[t].region;
    }
    return t;
}

void TrapezoidRepresentation::joinRegions(std::uint32_t a, std::uint32_t b) {
    a = findRegion(a);
    b = findRegion(b);
    if (a != b) {
        mTrapezoids[std::max(a, b)].region = std::min(a, b);
    }
}

// Left-to-right order of the segments that cross the sweep position, and where a vertex falls
// among them. Two segments are compared at the later of their upper ends, where both exist; a
// vertex against a segment by the side it lies on. A zero answer (a vertex on a segment, or two
// segments overlapping) cannot happen once everything was split, and is reported as a failure.
struct TrapezoidRepresentation::SegmentOrder {
    using is_transparent = void;
    const TrapezoidRepresentation* self;

    const GridPoint& at(std::uint32_t v) const { return self->mVertices[v].grid; }

    // Whether segment s passes left of p.
    bool leftOf(std::uint32_t s, const GridPoint& p) const {
        const Segment& seg = self->mSegments[s];
        const std::int64_t side = orient(at(seg.upper), at(seg.lower), p);
        if (side == 0) {
            fail();
        }
        return side < 0;
    }
    bool operator()(std::uint32_t s, const GridPoint& p) const { return leftOf(s, p); }
    bool operator()(const GridPoint& p, std::uint32_t s) const { return !leftOf(s, p); }
    bool operator()(std::uint32_t a, std::uint32_t b) const {
        if (a == b) {
            return false;
        }
        const Segment& sa = self->mSegments[a];
        const Segment& sb = self->mSegments[b];
        if (sa.upper == sb.upper) {
            const std::int64_t side = orient(at(sa.upper), at(sa.lower), at(sb.lower));
            if (side == 0) {
                fail();
            }
            return side < 0;
        }
        if (at(sb.upper) < at(sa.upper)) {
            return !leftOf(b, at(sa.upper));
        }
        return leftOf(a, at(sb.upper));
    }
};

// The sweep visits vertices in (y, x) order, keeping the segments that cross the sweep position
// ordered from left to right. Each segment owns the open trapezoid to its right; a trapezoid opens
// at the vertex where its gap between two segments begins and closes at the vertex where a
// segment of it ends or a new one enters it. Winding numbers are counted from the left: the gap
// right of a segment has the winding of the gap left of it plus the segment's delta.
void TrapezoidRepresentation::sweep() {
    for (std::uint32_t s = 0; s < mSegments.size(); ++s) {
        mVertices[mSegments[s].upper].down.push_back(s);
        mVertices[mSegments[s].lower].up.push_back(s);
    }
    const SegmentOrder less{this};
    using Status = std::set<std::uint32_t, SegmentOrder>;
    Status status(less);
    std::vector<Status::iterator> where(mSegments.size());
    std::vector<std::uint32_t> openTrapezoid(mSegments.size(), kNone);  // the gap right of each
    std::vector<int> windingRight(mSegments.size(), 0);

    std::vector<std::uint32_t> order(mVertices.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&](std::uint32_t l, std::uint32_t r) {
        return mVertices[l].grid < mVertices[r].grid;
    });
    mTrapezoids.reserve(mSegments.size() * 3);

    const auto open = [&](std::uint32_t owner, std::uint32_t top) {
        const auto t = static_cast<std::uint32_t>(mTrapezoids.size());
        mTrapezoids.push_back({owner, kNone, top, kNone, windingRight[owner], t});
        openTrapezoid[owner] = t;
        return t;
    };
    // Closes the gap right of `owner`; unbounded gaps (outside the frame) make no trapezoid.
    const auto close = [&](std::uint32_t owner, std::uint32_t right, std::uint32_t bottom) {
        const std::uint32_t t = openTrapezoid[owner];
        openTrapezoid[owner] = kNone;
        if (t == kNone || right == kNone) {
            return kNone;
        }
        mTrapezoids[t].right = right;
        mTrapezoids[t].bottom = bottom;
        return t;
    };

    std::vector<std::uint32_t> starting;
    for (std::uint32_t v : order) {
        const Vertex& vertex = mVertices[v];
        if (vertex.up.empty() && vertex.down.empty()) {
            continue;
        }
        // The segments ending here, [first, last), or the place where the vertex falls.
        Status::iterator first, last;
        if (!vertex.up.empty()) {
            first = where[vertex.up.front()];
            last = std::next(first);
            while (first != status.begin() && mSegments[*std::prev(first)].lower == v) {
                --first;
            }
            while (last != status.end() && mSegments[*last].lower == v) {
                ++last;
            }
            if (static_cast<std::size_t>(std::distance(first, last)) != vertex.up.size()) {
                fail();
            }
        } else {
            first = last = status.lower_bound(vertex.grid);
        }
        const std::uint32_t pred = first == status.begin() ? kNone : *std::prev(first);
        const std::uint32_t succ = last == status.end() ? kNone : *last;

        // Close the gaps that meet this vertex.
        std::uint32_t closedLeft = kNone;
        std::uint32_t closedRight = kNone;
        if (pred != kNone) {
            closedLeft = closedRight = close(pred, first != last ? *first : succ, v);
        }
        for (auto it = first; it != last; ++it) {
            const auto next = std::next(it);
            closedRight = close(*it, next != last ? *next : succ, v);
        }
        status.erase(first, last);

        // Insert the segments that start here, left to right, and open the gaps they make.
        starting.assign(vertex.down.begin(), vertex.down.end());
        std::sort(starting.begin(), starting.end(), less);
        int winding = pred != kNone ? windingRight[pred] : 0;
        std::uint32_t openedLeft = kNone;
        std::uint32_t openedRight = kNone;
        if (pred != kNone) {
            openedLeft = openedRight = open(pred, v);
        }
        const auto hint = succ != kNone ? where[succ] : status.end();
        for (std::uint32_t s : starting) {
            winding += mSegments[s].delta;
            windingRight[s] = winding;
            where[s] = status.insert(hint, s);
            openedRight = open(s, v);
            if (openedLeft == kNone) {
                openedLeft = openedRight;
            }
        }
        if (closedLeft != kNone && openedLeft != kNone) {
            joinRegions(closedLeft, openedLeft);
        }
        if (closedRight != kNone && openedRight != kNone) {
            joinRegions(closedRight, openedRight);
        }
    }
}

namespace {

// x of the segment P-Q at height y, as the line y = m x + b; a vertical segment keeps its x.
float xAtHeight(const Wm4::Vector2f& P, const Wm4::Vector2f& Q, float y) {
    if (Q.X() - P.X() == 0.0f) {
        return P.X();
    }
    const float m = (Q.Y() - P.Y()) / (Q.X() - P.X());
    const float b = P.Y() - m * P.X();
    const float x = (y - b) / m;
    return std::isfinite(x) ? x : P.X();
}

bool keeps(TriangulationFillRule rule, int winding) {
    switch (static_cast<int>(rule)) {
        case 0:
            return winding != 0;
        case 1:
            return (winding & 1) != 0;
        default:
            return true;
    }
}

}  // namespace

// Regions in the order of their first trapezoid, each kept or rejected whole by the winding
// number of that trapezoid; every kept trapezoid of non-zero height gives four fresh points and
// two triangles.
void TrapezoidRepresentation::emit(TriangulationFillRule rule,
                                   std::vector<Wm4::Vector2f>& outPoints,
                                   std::vector<unsigned int>& outIndices) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> byRegion;  // (region, trapezoid)
    byRegion.reserve(mTrapezoids.size());
    for (std::uint32_t t = 0; t < mTrapezoids.size(); ++t) {
        if (mTrapezoids[t].bottom != kNone) {
            byRegion.emplace_back(findRegion(t), t);
        }
    }
    std::sort(byRegion.begin(), byRegion.end());
    bool kept = false;
    for (std::size_t i = 0; i < byRegion.size(); ++i) {
        const Trapezoid& trapezoid = mTrapezoids[byRegion[i].second];
        if (i == 0 || byRegion[i].first != byRegion[i - 1].first) {
            kept = keeps(rule, trapezoid.winding);
        }
        if (!kept) {
            continue;
        }
        if (trapezoid.left == kNone || trapezoid.right == kNone) {
            fail();
        }
        const float yA = mVertices[trapezoid.top].position.Y();
        const float yB = mVertices[trapezoid.bottom].position.Y();
        if (yA == yB) {
            continue;
        }
        const Segment& first = mSegments[trapezoid.left];
        const Segment& second = mSegments[trapezoid.right];
        const Wm4::Vector2f& P1 = mVertices[first.upper].position;
        const Wm4::Vector2f& Q1 = mVertices[first.lower].position;
        const Wm4::Vector2f& P2 = mVertices[second.upper].position;
        const Wm4::Vector2f& Q2 = mVertices[second.lower].position;
        outPoints.emplace_back(xAtHeight(P2, Q2, yA), yA);
        outPoints.emplace_back(xAtHeight(P1, Q1, yA), yA);
        outPoints.emplace_back(xAtHeight(P1, Q1, yB), yB);
        outPoints.emplace_back(xAtHeight(P2, Q2, yB), yB);
        const auto n = static_cast<unsigned int>(outPoints.size());
        outIndices.insert(outIndices.end(), {n - 4, n - 3, n - 1, n - 3, n - 1, n - 2});
    }
}

}  // namespace impl

bool TriangulatePoly(const std::vector<Wm4::Vector2f>& points,
                     const std::vector<unsigned int>& indices,
                     std::vector<Wm4::Vector2f>& outPoints, std::vector<unsigned int>& outIndices,
                     TriangulationFillRule rule, bool skipDegenerate) {
    if (indices.size() % 2 != 0) {
        return false;
    }
    try {
        impl::TrapezoidRepresentation representation;
        representation.build(points, indices, skipDegenerate);
        representation.emit(rule, outPoints, outIndices);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace tq
