#include "svg/geometry/TriangulatePoly.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <memory_resource>
#include <numeric>
#include <set>
#include <stdexcept>
#include <unordered_map>
#include <utility>

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
constexpr int kMaxSplitPasses = 64;
constexpr std::int64_t kMaxWeight = std::int64_t(1) << 20;

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

// Whether the line a-b passes through the pixel of a grid point (the unit square centred on it)
// whose orientation against a-b is `side`: the centre's distance to the line is at most the
// square's half-width in the direction of the line's normal.
bool throughPixel(const GridPoint& a, const GridPoint& b, std::int64_t side) {
    const std::int64_t dx = b.x - a.x, dy = b.y - a.y;
    const Int128 twice = Int128(side < 0 ? -side : side) * 2;
    return twice <= Int128(dx < 0 ? -dx : dx) + (dy < 0 ? -dy : dy);
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

// Sorts `items` by an unsigned key of `bits` bits, stably, in passes of 11 bits. Vertex and
// segment lists from outlines are full of runs and mirrored runs, on which std::sort falls back
// to heap sort; a radix sort costs the same on every input.
template <class T, class Key>
void radixSort(std::vector<T>& items, int bits, Key key) {
    constexpr int kDigit = 11;
    constexpr std::size_t kBuckets = std::size_t(1) << kDigit;
    std::vector<T> scratch(items.size());
    std::vector<std::size_t> count(kBuckets);
    for (int shift = 0; shift < bits; shift += kDigit) {
        std::fill(count.begin(), count.end(), 0);
        for (const T& item : items) {
            ++count[(key(item) >> shift) & (kBuckets - 1)];
        }
        std::size_t sum = 0;
        for (std::size_t& c : count) {
            sum += std::exchange(c, sum);
        }
        for (const T& item : items) {
            scratch[count[(key(item) >> shift) & (kBuckets - 1)]++] = item;
        }
        items.swap(scratch);
    }
}

// The number of bits needed for values up to `max`.
int bitsFor(std::uint64_t max) {
    int bits = 1;
    while (bits < 64 && (max >> bits) != 0) {
        ++bits;
    }
    return bits;
}

// Where the lines through a-b and c-d cross, from the float coordinates (so that a crossing on a
// vertical or horizontal segment keeps that segment's x or y exactly); `fallback` when the
// lines are too close to parallel for a finite answer.
Wm4::Vector2f crossingPosition(const Wm4::Vector2f& a, const Wm4::Vector2f& b,
                               const Wm4::Vector2f& c, const Wm4::Vector2f& d,
                               const Wm4::Vector2f& fallback) {
    const double rx = double(b.X()) - a.X(), ry = double(b.Y()) - a.Y();
    const double sx = double(d.X()) - c.X(), sy = double(d.Y()) - c.Y();
    const double den = rx * sy - ry * sx;
    const double t = ((double(c.X()) - a.X()) * sy - (double(c.Y()) - a.Y()) * sx) / den;
    if (!std::isfinite(t)) {
        return fallback;
    }
    const float x = rx == 0 ? a.X() : sx == 0 ? c.X() : static_cast<float>(a.X() + t * rx);
    const float y = ry == 0 ? a.Y() : sy == 0 ? c.Y() : static_cast<float>(a.Y() + t * ry);
    return std::isfinite(x) && std::isfinite(y) ? Wm4::Vector2f(x, y) : fallback;
}

}  // namespace

// The vertices, segments and trapezoids of one decomposition.
class TrapezoidRepresentation {
public:
    struct Vertex {
        GridPoint grid;
        Wm4::Vector2f position;  // output coordinates
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
        std::int64_t winding;
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
    std::vector<std::uint32_t> addOutlineVertices(const std::vector<Wm4::Vector2f>& points,
                                                  const std::vector<unsigned int>& indices);
    GridPoint toGrid(const Wm4::Vector2f& p) const;
    Wm4::Vector2f fromGrid(const GridPoint& g) const;
    struct Incidence;
    Incidence incidence() const;
    std::vector<std::uint32_t> sweepOrder() const;
    bool recordIntersection(std::uint32_t s, std::uint32_t t,
                            std::vector<std::vector<std::uint32_t>>& cuts,
                            std::vector<std::vector<std::uint32_t>>& crossingCuts);
    bool splitPass();
    void closeOpenRuns(std::vector<Edge>& edges) const;
    void mergeEdges(const std::vector<Edge>& edges);
    void addFrame();
    void sweep();
    std::uint32_t findRegion(std::uint32_t t);
    void joinRegions(std::uint32_t a, std::uint32_t b);

    // The outline's own vertices come first, numbered in sweep order with their keys in
    // mSortedKeys; vertices added by splitting and the frame follow, found through mAddedAt.
    std::vector<Vertex> mVertices;
    std::vector<std::uint64_t> mSortedKeys;
    std::pmr::monotonic_buffer_resource mVertexArena;  // the nodes of mAddedAt
    std::pmr::unordered_map<std::uint64_t, std::uint32_t> mAddedAt{&mVertexArena};
    std::vector<Segment> mSegments;
    std::vector<Trapezoid> mTrapezoids;
    double mMinX = 0, mMinY = 0, mScale = 1;

    struct SegmentOrder;
};

namespace {

// Grid coordinates lie in [-1, 2^26 + 1]: offset, they fit 32 bits each, and the keys sort in
// sweep order (y, then x).
std::uint64_t keyOf(const GridPoint& g) {
    return (static_cast<std::uint64_t>(g.y + 2) << 32) | static_cast<std::uint64_t>(g.x + 2);
}

GridPoint gridOf(std::uint64_t key) {
    return {static_cast<std::int64_t>(key & 0xffffffffu) - 2,
            static_cast<std::int64_t>(key >> 32) - 2};
}

}  // namespace

// The vertex at a grid point, made when there is none yet.
std::uint32_t TrapezoidRepresentation::addPoint(const GridPoint& grid,
                                                const Wm4::Vector2f& position) {
    const std::uint64_t key = keyOf(grid);
    const auto sorted = std::lower_bound(mSortedKeys.begin(), mSortedKeys.end(), key);
    if (sorted != mSortedKeys.end() && *sorted == key) {
        return static_cast<std::uint32_t>(sorted - mSortedKeys.begin());
    }
    const auto found = mAddedAt.find(key);
    if (found != mAddedAt.end()) {
        return found->second;
    }
    const auto id = static_cast<std::uint32_t>(mVertices.size());
    mVertices.push_back({grid, position});
    mAddedAt.emplace(key, id);
    return id;
}

// The outline's vertices: one per grid point, numbered in sweep order, each at the position of
// the first index that falls on it. Sorting keys beats hashing here and leaves the sweep order
// ready-made.
std::vector<std::uint32_t> TrapezoidRepresentation::addOutlineVertices(
    const std::vector<Wm4::Vector2f>& points, const std::vector<unsigned int>& indices) {
    struct End {
        std::uint64_t key;
        std::uint32_t at;  // position in `indices`
    };
    std::vector<End> ends(indices.size());
    for (std::size_t i = 0; i < indices.size(); ++i) {
        ends[i] = {keyOf(toGrid(points[indices[i]])), static_cast<std::uint32_t>(i)};
    }
    std::uint64_t maxKey = 0;
    for (const End& end : ends) {
        maxKey = std::max(maxKey, end.key);
    }
    // Stable: among equal keys the first index stays first.
    radixSort(ends, bitsFor(maxKey), [](const End& end) { return end.key; });
    std::vector<std::uint32_t> vertexOf(indices.size());
    mVertices.reserve(ends.size() / 2 + 8);
    mSortedKeys.reserve(ends.size() / 2 + 8);
    for (const End& end : ends) {
        if (mSortedKeys.empty() || mSortedKeys.back() != end.key) {
            mVertices.push_back({gridOf(end.key), points[indices[end.at]]});
            mSortedKeys.push_back(end.key);
        }
        vertexOf[end.at] = static_cast<std::uint32_t>(mVertices.size() - 1);
    }
    return vertexOf;
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

    const std::vector<std::uint32_t> vertexOf = addOutlineVertices(points, indices);
    std::vector<Edge> edges;
    edges.reserve(indices.size() / 2);
    for (std::size_t i = 0; i + 1 < indices.size(); i += 2) {
        const std::uint32_t a = vertexOf[i];
        const std::uint32_t b = vertexOf[i + 1];
        // A segment whose ends fall on one vertex encloses nothing: with or without the option
        // it changes no winding number, so it never reaches the sweep.
        (void)skipDegenerate;
        if (a != b) {
            edges.push_back({a, b, 1});
        }
    }
    closeOpenRuns(edges);
    mergeEdges(edges);
    int passes = 0;
    while (splitPass()) {
        if (++passes > kMaxSplitPasses) {
            fail();  // rounding keeps creating crossings: give up rather than loop
        }
    }
    // Segments that cancel out (an open run closed back along itself) still span the frame in
    // which every trapezoid is kept by the rules that keep everything.
    if (edges.empty()) {
        return;
    }
    addFrame();
    sweep();
}

// Left-to-right order of the segments that cross the sweep position, and where a vertex falls
// among them. Two segments are compared at the later of their upper ends, where both exist; a
// vertex against a segment by the side it lies on. A zero answer (a vertex on a segment, or two
// segments overlapping) cannot happen once everything was split, and is reported as a failure.
struct TrapezoidRepresentation::SegmentOrder {
    using is_transparent = void;
    const TrapezoidRepresentation* self;
    // While finding cuts, a zero answer is remembered (the segment through the vertex) instead
    // of failing; the caller then cuts that segment and asks again.
    bool tolerant = false;
    mutable std::uint32_t zeroSegment = kNone;

    void zero(std::uint32_t s) const {
        if (!tolerant) {
            fail();
        }
        zeroSegment = s;
    }

    const GridPoint& at(std::uint32_t v) const { return self->mVertices[v].grid; }

    // Whether segment s passes left of p.
    bool leftOf(std::uint32_t s, const GridPoint& p) const {
        const Segment& seg = self->mSegments[s];
        const std::int64_t side = orient(at(seg.upper), at(seg.lower), p);
        if (side == 0) {
            zero(s);
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
                zero(b);
            }
            return side < 0;
        }
        if (at(sb.upper) < at(sa.upper)) {
            return !leftOf(b, at(sa.upper));
        }
        return leftOf(a, at(sb.upper));
    }
};

// Per vertex, the segments ending there (up) and starting there (down), in flat arrays.
struct TrapezoidRepresentation::Incidence {
    std::vector<std::uint32_t> upStart, up, downStart, down;
};

TrapezoidRepresentation::Incidence TrapezoidRepresentation::incidence() const {
    Incidence in;
    in.upStart.assign(mVertices.size() + 1, 0);
    in.downStart.assign(mVertices.size() + 1, 0);
    for (const Segment& seg : mSegments) {
        ++in.upStart[seg.lower + 1];
        ++in.downStart[seg.upper + 1];
    }
    std::partial_sum(in.upStart.begin(), in.upStart.end(), in.upStart.begin());
    std::partial_sum(in.downStart.begin(), in.downStart.end(), in.downStart.begin());
    in.up.resize(mSegments.size());
    in.down.resize(mSegments.size());
    std::vector<std::uint32_t> upFill(in.upStart.begin(), in.upStart.end() - 1);
    std::vector<std::uint32_t> downFill(in.downStart.begin(), in.downStart.end() - 1);
    for (std::uint32_t s = 0; s < mSegments.size(); ++s) {
        in.up[upFill[mSegments[s].lower]++] = s;
        in.down[downFill[mSegments[s].upper]++] = s;
    }
    return in;
}

// The outline's vertices are numbered in order already; only the added ones are sorted and
// merged in.
std::vector<std::uint32_t> TrapezoidRepresentation::sweepOrder() const {
    const auto sorted = static_cast<std::uint32_t>(mSortedKeys.size());
    std::vector<std::uint32_t> order(mVertices.size());
    std::iota(order.begin(), order.end(), 0u);
    if (order.size() > sorted) {
        const auto before = [this](std::uint32_t l, std::uint32_t r) {
            return mVertices[l].grid < mVertices[r].grid;
        };
        std::sort(order.begin() + sorted, order.end(), before);
        std::inplace_merge(order.begin(), order.begin() + sorted, order.end(), before);
    }
    return order;
}

// Classifies the pair (s, t): every crossing, T-junction and collinear overlap becomes a cut of
// the segments involved (a crossing point rounded to the nearest grid point). True when the two
// meet anywhere but at a shared end.
bool TrapezoidRepresentation::recordIntersection(
    std::uint32_t s, std::uint32_t t, std::vector<std::vector<std::uint32_t>>& cuts,
    std::vector<std::vector<std::uint32_t>>& crossingCuts) {
    const Segment& e = mSegments[s];
    const Segment& f = mSegments[t];
    const GridPoint A = mVertices[e.upper].grid, B = mVertices[e.lower].grid;
    const GridPoint C = mVertices[f.upper].grid, D = mVertices[f.lower].grid;
    bool found = false;
    const auto cut = [&](std::vector<std::vector<std::uint32_t>>& into, std::uint32_t segment,
                         const GridPoint& at, const Wm4::Vector2f& position) {
        const Segment& seg = mSegments[segment];
        if (at == mVertices[seg.upper].grid || at == mVertices[seg.lower].grid) {
            return;
        }
        into[segment].push_back(addPoint(at, position));
        found = true;
    };
    const std::int64_t d1 = orient(C, D, A), d2 = orient(C, D, B);
    const std::int64_t d3 = orient(A, B, C), d4 = orient(A, B, D);
    // A vertex whose pixel the segment passes through becomes a vertex of that segment (snap
    // rounding): routing segments through the pixels they cross keeps rounded crossing points
    // from creating new crossings over and over.
    if (throughPixel(C, D, d1) && strictlyInside(C, D, A))
        cut(cuts, t, A, mVertices[e.upper].position);
    if (throughPixel(C, D, d2) && strictlyInside(C, D, B))
        cut(cuts, t, B, mVertices[e.lower].position);
    if (throughPixel(A, B, d3) && strictlyInside(A, B, C))
        cut(cuts, s, C, mVertices[f.upper].position);
    if (throughPixel(A, B, d4) && strictlyInside(A, B, D))
        cut(cuts, s, D, mVertices[f.lower].position);
    if (((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) && ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0))) {
        const Int128 den = Int128(d1) - d2;
        const GridPoint P{A.x + roundedQuotient(Int128(B.x - A.x) * d1, den),
                          A.y + roundedQuotient(Int128(B.y - A.y) * d1, den)};
        // Output coordinates: the float lines' crossing where it agrees with the grid point, and
        // the exact x of a vertical side or y of a horizontal side whatever the rounding did.
        const Wm4::Vector2f& ea = mVertices[e.upper].position;
        const Wm4::Vector2f& eb = mVertices[e.lower].position;
        const Wm4::Vector2f& fa = mVertices[f.upper].position;
        const Wm4::Vector2f& fb = mVertices[f.lower].position;
        const Wm4::Vector2f onGrid = fromGrid(P);
        Wm4::Vector2f position = crossingPosition(ea, eb, fa, fb, onGrid);
        if (std::fabs(double(position.X()) - onGrid.X()) * mScale > 2 ||
            std::fabs(double(position.Y()) - onGrid.Y()) * mScale > 2) {
            position = onGrid;
        }
        if (ea.X() == eb.X() || fa.X() == fb.X()) {
            position.X() = ea.X() == eb.X() ? ea.X() : fa.X();
        }
        if (ea.Y() == eb.Y() || fa.Y() == fb.Y()) {
            position.Y() = ea.Y() == eb.Y() ? ea.Y() : fa.Y();
        }
        cut(crossingCuts, s, P, position);
        cut(crossingCuts, t, P, position);
    }
    return found;
}

// One sweep that finds where segments meet other than at shared ends, by testing every pair that
// becomes adjacent in the left-to-right order (two segments that meet are adjacent just before
// they do). A pair found meeting leaves the order for the rest of the pass, and its new
// neighbours are tested in turn, so the order stays consistent. Then every segment is cut at its
// cut points and equal pieces are merged. True when anything was cut; repeated until nothing is.
bool TrapezoidRepresentation::splitPass() {
    const Incidence in = incidence();
    // Cuts at existing vertices (T-junctions, overlaps) are exact and go first; cuts at rounded
    // crossing points are applied only in a pass that found no exact cut, so that overlapping
    // pieces are merged before a crossing is rounded onto each of them.
    std::vector<std::vector<std::uint32_t>> cuts(mSegments.size());
    std::vector<std::vector<std::uint32_t>> crossingCuts(mSegments.size());
    bool any = false;

    std::pmr::unsynchronized_pool_resource pool;
    SegmentOrder less{this, true};
    using Status = std::pmr::set<std::uint32_t, SegmentOrder>;
    Status status(less, &pool);
    std::vector<Status::iterator> where(mSegments.size());
    std::vector<char> present(mSegments.size(), 0);
    std::vector<char> suspect(mSegments.size(), 0);  // left the order early: tested again below

    const auto drop = [&](Status::iterator it) {
        present[*it] = 0;
        suspect[*it] = 1;
        return status.erase(it);
    };
    // Tests the pair around `it` (its predecessor and itself), dropping both when they meet and
    // testing the pair that then comes together.
    const auto testAround = [&](Status::iterator it) {
        while (it != status.begin() && it != status.end()) {
            const auto before = std::prev(it);
            if (!recordIntersection(*before, *it, cuts, crossingCuts)) {
                return;
            }
            any = true;
            drop(before);
            it = drop(it);
        }
    };

    std::vector<std::uint32_t> starting;
    for (std::uint32_t v : sweepOrder()) {
        const GridPoint& at = mVertices[v].grid;
        for (std::uint32_t k = in.upStart[v]; k < in.upStart[v + 1]; ++k) {
            if (present[in.up[k]]) {
                present[in.up[k]] = 0;
                status.erase(where[in.up[k]]);
            }
        }
        // The place of the vertex; a segment passing through it is cut there and dropped.
        Status::iterator it;
        while (true) {
            less.zeroSegment = kNone;
            it = status.lower_bound(at);
            if (less.zeroSegment == kNone) {
                break;
            }
            cuts[less.zeroSegment].push_back(v);
            any = true;
            drop(where[less.zeroSegment]);
        }
        starting.assign(in.down.begin() + in.downStart[v], in.down.begin() + in.downStart[v + 1]);
        std::sort(starting.begin(), starting.end(), less);
        Status::iterator firstInserted = status.end();
        for (std::size_t i = 0; i < starting.size(); ++i) {
            const std::uint32_t s = starting[i];
            // Two segments leaving here in the same direction overlap: the longer is cut where
            // the shorter ends, and sits this pass out.
            if (i + 1 < starting.size()) {
                const std::uint32_t t = starting[i + 1];
                const GridPoint& ls = mVertices[mSegments[s].lower].grid;
                const GridPoint& lt = mVertices[mSegments[t].lower].grid;
                if (orient(at, ls, lt) == 0) {
                    recordIntersection(s, t, cuts, crossingCuts);
                    any = true;
                    suspect[s] = 1;
                    continue;
                }
            }
            it = status.insert(it, s);
            where[s] = it;
            present[s] = 1;
            if (firstInserted == status.end()) {
                firstInserted = it;
            }
            ++it;
        }
        // New neighbours: left of the first inserted, right of the last, or across the vertex.
        if (firstInserted != status.end()) {
            const std::uint32_t firstSegment = *firstInserted;
            testAround(firstInserted);
            if (present[firstSegment] && it != status.end()) {
                testAround(it);
            }
        } else {
            testAround(it);
        }
    }
    // A pair that meets further down may have been hidden by a segment that left the order, so
    // every segment that left is tested against all whose boxes overlap its own (a sweep over x).
    if (std::find(suspect.begin(), suspect.end(), 1) != suspect.end()) {
        const auto minX = [&](std::uint32_t i) {
            return std::min(mVertices[mSegments[i].upper].grid.x,
                            mVertices[mSegments[i].lower].grid.x);
        };
        const auto maxX = [&](std::uint32_t i) {
            return std::max(mVertices[mSegments[i].upper].grid.x,
                            mVertices[mSegments[i].lower].grid.x);
        };
        std::vector<std::uint32_t> byX(mSegments.size());
        std::iota(byX.begin(), byX.end(), 0u);
        std::sort(byX.begin(), byX.end(), [&](std::uint32_t l, std::uint32_t r) {
            return minX(l) < minX(r) || (minX(l) == minX(r) && l < r);
        });
        std::vector<std::uint32_t> activeAll, activeSuspects;
        const auto prune = [&](std::vector<std::uint32_t>& active, std::int64_t left) {
            active.erase(std::remove_if(active.begin(), active.end(),
                                        [&](std::uint32_t t) { return maxX(t) < left; }),
                         active.end());
        };
        for (std::uint32_t current : byX) {
            const std::int64_t left = minX(current);
            const bool isSuspect = suspect[current] != 0;
            prune(activeSuspects, left);
            if (isSuspect) {
                prune(activeAll, left);
            }
            for (std::uint32_t other : isSuspect ? activeAll : activeSuspects) {
                if (recordIntersection(current, other, cuts, crossingCuts)) {
                    any = true;
                }
            }
            if (isSuspect) {
                activeSuspects.push_back(current);
            }
            activeAll.push_back(current);
        }
    }
    const auto anyCut = [](const std::vector<std::vector<std::uint32_t>>& c) {
        return std::any_of(c.begin(), c.end(), [](const auto& points) { return !points.empty(); });
    };
    if (!anyCut(cuts)) {
        cuts.swap(crossingCuts);
    }
    any = anyCut(cuts);
    if (!any) {
        return false;
    }
    std::vector<Edge> pieces;
    pieces.reserve(mSegments.size() + mSegments.size() / 4);
    for (std::uint32_t i = 0; i < mSegments.size(); ++i) {
        const Segment& seg = mSegments[i];
        std::vector<std::uint32_t>& points = cuts[i];
        if (points.empty()) {
            pieces.push_back({seg.upper, seg.lower, seg.delta});
            continue;
        }
        const GridPoint A = mVertices[seg.upper].grid, B = mVertices[seg.lower].grid;
        const auto along = [&](std::uint32_t v) {
            const GridPoint& p = mVertices[v].grid;
            return Int128(p.x - A.x) * (B.x - A.x) + Int128(p.y - A.y) * (B.y - A.y);
        };
        std::sort(points.begin(), points.end(),
                  [&](std::uint32_t l, std::uint32_t r) { return along(l) < along(r); });
        points.erase(std::unique(points.begin(), points.end()), points.end());
        std::uint32_t from = seg.upper;
        for (std::uint32_t point : points) {
            if (point != from && point != seg.lower) {
                pieces.push_back({from, point, seg.delta});
                from = point;
            }
        }
        pieces.push_back({from, seg.lower, seg.delta});
    }
    mergeEdges(pieces);
    return true;
}

// An outline whose runs do not all return to where they began (a subpath left open, or one
// whose last point was moved off its first by clean-up) has no well-defined inside: the winding
// number would change along a path that crosses no segment. Fills treat an open subpath as closed
// by a straight line back to its start. Segments come from paths in order, so a run of
// consecutive segments (each ending where the next begins) is a subpath or a piece of one; when
// some vertex has more segments leaving than arriving, every run that does not end where it
// began gets its closing segment. An outline with no such vertex is closed already, whatever the
// order of its segments, and is left as it is.
void TrapezoidRepresentation::closeOpenRuns(std::vector<Edge>& edges) const {
    std::vector<std::int64_t> balance(mVertices.size(), 0);  // leaving minus arriving
    for (const Edge& e : edges) {
        ++balance[e.a];
        --balance[e.b];
    }
    if (std::all_of(balance.begin(), balance.end(), [](std::int64_t b) { return b == 0; })) {
        return;
    }
    const std::size_t count = edges.size();
    for (std::size_t first = 0; first < count;) {
        std::size_t last = first;
        while (last + 1 < count && edges[last].b == edges[last + 1].a) {
            ++last;
        }
        if (edges[first].a != edges[last].b) {
            edges.push_back({edges[last].b, edges[first].a, 1});
        }
        first = last + 1;
    }
}

// Equal segments become one, their weights summed by direction; those that cancel disappear.
void TrapezoidRepresentation::mergeEdges(const std::vector<Edge>& edges) {
    mSegments.clear();
    mSegments.reserve(edges.size() + 4);
    for (const Edge& e : edges) {
        const bool downward = mVertices[e.a].grid < mVertices[e.b].grid;
        if (e.a != e.b) {
            mSegments.push_back(
                {downward ? e.a : e.b, downward ? e.b : e.a, downward ? e.weight : -e.weight});
        }
    }
    const int idBits = bitsFor(mVertices.size());
    radixSort(mSegments, 2 * idBits, [idBits](const Segment& seg) {
        return (std::uint64_t(seg.upper) << idBits) | seg.lower;
    });
    std::size_t kept = 0;
    for (std::size_t i = 0; i < mSegments.size();) {
        Segment merged = mSegments[i];
        for (++i; i < mSegments.size() && mSegments[i].upper == merged.upper &&
                  mSegments[i].lower == merged.lower;
             ++i) {
            // Weights only grow by merging; a sum this large means the splitting ran away.
            if (std::abs(std::int64_t(merged.delta) + mSegments[i].delta) > kMaxWeight) {
                fail();
            }
            merged.delta += mSegments[i].delta;
        }
        if (merged.delta != 0) {
            mSegments[kept++] = merged;
        }
    }
    mSegments.resize(kept);
}

// A rectangle just outside the grid's box, crossing nothing and changing no winding number: every
// trapezoid inside it has two bounding segments.
void TrapezoidRepresentation::addFrame() {
    std::int64_t right = 0, bottom = 0;
    for (const Vertex& v : mVertices) {
        right = std::max(right, v.grid.x);
        bottom = std::max(bottom, v.grid.y);
    }
    const GridPoint corners[4] = {
        {-1, -1}, {right + 1, -1}, {right + 1, bottom + 1}, {-1, bottom + 1}};
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

// The sweep visits vertices in (y, x) order, keeping the segments that cross the sweep position
// ordered from left to right. Each segment owns the open trapezoid to its right; a trapezoid opens
// at the vertex where its gap between two segments begins and closes at the vertex where a
// segment of it ends or a new one enters it. Winding numbers are counted from the left: the gap
// right of a segment has the winding of the gap left of it plus the segment's delta.
void TrapezoidRepresentation::sweep() {
    const Incidence in = incidence();
    const std::vector<std::uint32_t>& upStart = in.upStart;
    const std::vector<std::uint32_t>& downStart = in.downStart;
    const std::vector<std::uint32_t>& up = in.up;
    const std::vector<std::uint32_t>& down = in.down;

    // The status tree takes its nodes from a pool: no heap allocation per segment.
    std::pmr::unsynchronized_pool_resource pool;
    const SegmentOrder less{this, false};
    using Status = std::pmr::set<std::uint32_t, SegmentOrder>;
    Status status(less, &pool);
    std::vector<Status::iterator> where(mSegments.size());
    std::vector<std::uint32_t> openTrapezoid(mSegments.size(), kNone);  // the gap right of each
    std::vector<std::int64_t> windingRight(mSegments.size(), 0);
    const std::vector<std::uint32_t> order = sweepOrder();
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
        const std::uint32_t* upBegin = up.data() + upStart[v];
        const std::uint32_t upCount = upStart[v + 1] - upStart[v];
        if (upCount == 0 && downStart[v + 1] == downStart[v]) {
            continue;
        }
        // The segments ending here, [first, last), or the place where the vertex falls.
        Status::iterator first, last;
        if (upCount != 0) {
            first = where[*upBegin];
            last = std::next(first);
            while (first != status.begin() && mSegments[*std::prev(first)].lower == v) {
                --first;
            }
            while (last != status.end() && mSegments[*last].lower == v) {
                ++last;
            }
            if (static_cast<std::size_t>(std::distance(first, last)) != upCount) {
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
        starting.assign(down.data() + downStart[v], down.data() + downStart[v + 1]);
        std::sort(starting.begin(), starting.end(), less);
        std::int64_t winding = pred != kNone ? windingRight[pred] : 0;
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

// x of the segment P-Q at height y: the line y = m x + b solved for x, in the form
// x = P.x + (y - P.y) / m and in double, which keeps steep and nearly horizontal segments exact
// where (y - b) / m in float would cancel or overflow. A vertical segment keeps its x.
float xAtHeight(const Wm4::Vector2f& P, const Wm4::Vector2f& Q, float y) {
    if (Q.X() - P.X() == 0.0f) {
        return P.X();
    }
    const double x =
        P.X() + (double(y) - P.Y()) * (double(Q.X()) - P.X()) / (double(Q.Y()) - P.Y());
    if (!std::isfinite(x)) {
        return P.X();
    }
    // Within the segment's own x range: a height at or just past an end (a snapped vertex) must
    // not carry the point beyond it, nor past the float range on huge coordinates.
    const double lo = std::min(P.X(), Q.X());
    const double hi = std::max(P.X(), Q.X());
    return static_cast<float>(std::clamp(x, lo, hi));
}

bool keeps(TriangulationFillRule rule, std::int64_t winding) {
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
    // Grouped by region with a counting sort. A region is named by its smallest trapezoid, so
    // the groups come in the order of their first trapezoids, each in trapezoid order.
    const auto count = static_cast<std::uint32_t>(mTrapezoids.size());
    std::vector<std::uint32_t> regionOf(count, kNone);
    std::vector<std::uint32_t> start(std::size_t(count) + 1, 0);
    for (std::uint32_t t = 0; t < count; ++t) {
        if (mTrapezoids[t].bottom != kNone) {
            regionOf[t] = findRegion(t);
            ++start[regionOf[t] + 1];
        }
    }
    std::partial_sum(start.begin(), start.end(), start.begin());
    std::vector<std::uint32_t> byRegion(start.back());
    for (std::uint32_t t = 0; t < count; ++t) {
        if (regionOf[t] != kNone) {
            byRegion[start[regionOf[t]]++] = t;
        }
    }
    bool kept = false;
    for (std::size_t i = 0; i < byRegion.size(); ++i) {
        const Trapezoid& trapezoid = mTrapezoids[byRegion[i]];
        if (i == 0 || regionOf[byRegion[i]] != regionOf[byRegion[i - 1]]) {
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
