#include "svg/geometry/TriangulatePoly.h"
#include "svg/geometry/detail/TriangulateWithinCuts.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <memory>
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

// Rounds v >= 0 (below 2^62) to the nearest integer, halves up: what std::llround gives there,
// without the library call. The difference v - trunc(v) is exact in double.
std::int64_t roundNonNegative(double v) {
    const auto whole = static_cast<std::int64_t>(v);
    return whole + (v - double(whole) >= 0.5 ? 1 : 0);
}

// Whether the boxes of the segments a-b and c-d are apart. Such segments cannot cross, and
// neither passes through the pixel of an end of the other: an integer point outside a segment's
// box lies a whole step off it, and its pixel is only half a step wide.
bool boxesApart(const GridPoint& a, const GridPoint& b, const GridPoint& c, const GridPoint& d) {
    return std::max(a.x, b.x) < std::min(c.x, d.x) || std::max(c.x, d.x) < std::min(a.x, b.x) ||
           std::max(a.y, b.y) < std::min(c.y, d.y) || std::max(c.y, d.y) < std::min(a.y, b.y);
}

// Sorts `items` by an unsigned key of `bits` bits, stably, in passes of 11 bits.
template <class T, class Key>
void radixSort(std::vector<T>& items, std::vector<T>& scratch, int bits, Key key) {
    constexpr int kDigit = 11;
    constexpr std::size_t kBuckets = std::size_t(1) << kDigit;
    scratch.resize(items.size());
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

// Sorts `items` by an unsigned key of `bits` bits, stably. Outlines list their vertices along
// contours, so keys mostly come in long rising and falling runs: the falling ones are reversed
// (they hold no equal keys) and the runs merged pairwise, which is linear on a convex contour.
// Many short runs (noise, segment soups) go to a radix sort, whose cost does not depend on the
// order but which pays for its buckets on small inputs. (std::sort falls back to heap sort on
// outline orders.) `scratch` and `runs` are working space.
template <class T, class Key>
void sortByKey(std::vector<T>& items, std::vector<T>& scratch, std::vector<std::size_t>& runs,
               int bits, Key key) {
    const std::size_t n = items.size();
    runs.assign(1, 0);  // run boundaries
    for (std::size_t begin = 0; begin < n;) {
        std::size_t end = begin + 1;
        if (end < n && key(items[end]) < key(items[begin])) {
            while (end < n && key(items[end]) < key(items[end - 1])) {
                ++end;
            }
            std::reverse(items.begin() + begin, items.begin() + end);
        } else {
            while (end < n && !(key(items[end]) < key(items[end - 1]))) {
                ++end;
            }
        }
        runs.push_back(end);
        begin = end;
    }
    if (n > 4096 && runs.size() > n / 16) {
        radixSort(items, scratch, bits, key);
        return;
    }
    const auto less = [&key](const T& l, const T& r) { return key(l) < key(r); };
    scratch.resize(n);
    while (runs.size() > 2) {
        std::size_t kept = 0, r = 0;
        for (; r + 2 < runs.size(); r += 2) {
            std::merge(items.begin() + runs[r], items.begin() + runs[r + 1],
                       items.begin() + runs[r + 1], items.begin() + runs[r + 2],
                       scratch.begin() + runs[r], less);
            runs[kept++] = runs[r];
        }
        if (r + 1 < runs.size()) {  // the last run, left without a partner
            std::copy(items.begin() + runs[r], items.end(), scratch.begin() + runs[r]);
            runs[kept++] = runs[r];
        }
        runs[kept++] = n;
        runs.resize(kept);
        items.swap(scratch);
    }
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

// The vertices, segments and trapezoids of one decomposition. Kept from one outline to the next
// (build starts afresh), so that its buffers, warm and grown, serve again without allocating.
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

    // `maxCuts` bounds the cut points found while splitting; more fail the build.
    void build(const std::vector<Wm4::Vector2f>& points, const std::vector<unsigned int>& indices,
               std::size_t maxCuts = std::numeric_limits<std::size_t>::max());
    void emit(TriangulationFillRule rule, std::vector<Wm4::Vector2f>& outPoints,
              std::vector<unsigned int>& outIndices);
    // Whether the buffers grew too large to be kept for the next outline.
    bool oversized() const;

private:
    struct Edge {
        std::uint32_t a;  // direction a -> b, as given
        std::uint32_t b;
        int weight;
    };

    // A point where a segment is to be cut.
    struct Cut {
        std::uint32_t segment;
        std::uint32_t vertex;
    };

    // An index's place in the sweep order, while the outline's vertices are numbered.
    struct End {
        std::uint64_t key;
        std::uint32_t at;  // position in the indices
    };

    // Left-to-right order of the segments that cross the sweep position, and where a vertex
    // falls among them. Two segments are compared at the later of their upper ends, where both
    // exist; a vertex against a segment by the side it lies on. A vertex on a segment falls left
    // of it, and overlapping segments are unordered: the sweep finds both cases (by the pixel
    // test of the pair they make once adjacent) and cuts them before it builds on the order.
    struct SegmentOrder {
        using is_transparent = void;
        const TrapezoidRepresentation* self;

        const GridPoint& at(std::uint32_t v) const { return self->mVertices[v].grid; }

        // Whether segment s passes left of p.
        bool leftOf(std::uint32_t s, const GridPoint& p) const {
            const Segment& seg = self->mSegments[s];
            return orient(at(seg.upper), at(seg.lower), p) < 0;
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
                return orient(at(sa.upper), at(sa.lower), at(sb.lower)) < 0;
            }
            if (at(sb.upper) < at(sa.upper)) {
                return !leftOf(b, at(sa.upper));
            }
            return leftOf(a, at(sb.upper));
        }
    };
    using Status = std::pmr::set<std::uint32_t, SegmentOrder>;

    // What a sweep works with, per vertex and per segment.
    struct SweepBuffers {
        // Per vertex, the segments ending there (up) and starting there (down), in flat arrays.
        std::vector<std::uint32_t> upStart, up, downStart, down, fill;
        std::vector<std::uint32_t> order;  // the vertices in sweep order
        std::vector<std::uint32_t> added;  // those added by cuts and the frame
        // The status tree's nodes: freed ones serve again, in this pass and the next.
        std::pmr::unsynchronized_pool_resource nodes;
        std::vector<Status::iterator> where;
        std::vector<char> present;
        std::vector<char> suspect;                 // left the order early: tested again after
        std::vector<std::uint32_t> openTrapezoid;  // the gap right of each segment
        std::vector<std::int64_t> windingRight;
        std::vector<std::uint32_t> ending;  // at the vertex being visited, left to right
        std::vector<std::uint32_t> starting;
        // For recheckDropped: the segments by left end, each one's place there, their boxes,
        // the grid's cells and the pairs found in them.
        std::vector<std::uint64_t> byX, byXScratch, pairs;
        std::vector<std::uint32_t> rank, cellStart, cellListing;
        std::vector<std::int64_t> boxes;
    };

    class Sweep;

    void clear();
    std::uint32_t addPoint(const GridPoint& grid, const Wm4::Vector2f& position);
    void numberOutlineVertices(const std::vector<Wm4::Vector2f>& points,
                               const std::vector<unsigned int>& indices);
    GridPoint toGrid(const Wm4::Vector2f& p) const;
    Wm4::Vector2f fromGrid(const GridPoint& g) const;
    void incidence();
    void sweepOrder();
    bool recordIntersection(std::uint32_t s, std::uint32_t t);
    void closeOpenRuns();
    void orderAsSegments(const std::vector<Edge>& edges);
    void mergeEdges(const std::vector<Edge>& edges);
    void addFrame();
    void cutSegments();
    void groupByRegion();
    std::size_t keepTrapezoids(TriangulationFillRule rule);
    std::uint32_t findRegion(std::uint32_t t);
    void joinRegions(std::uint32_t a, std::uint32_t b);

    // The outline's own vertices come first, numbered in sweep order with their keys in
    // mSortedKeys; vertices added by splitting and the frame follow, found through mAddedAt.
    std::vector<Vertex> mVertices;
    std::vector<std::uint64_t> mSortedKeys;
    std::pmr::unsynchronized_pool_resource mAddedNodes;
    std::pmr::unordered_map<std::uint64_t, std::uint32_t> mAddedAt{&mAddedNodes};
    std::vector<Segment> mSegments;                          // the frame's four come last
    std::uint32_t mFrame[4] = {kNone, kNone, kNone, kNone};  // its corners, once made
    // Cuts at existing vertices (T-junctions, overlaps) are exact and go first; cuts at rounded
    // crossing points are applied only after a pass that found no exact cut, so that overlapping
    // pieces are merged before a crossing is rounded onto each of them.
    std::vector<Cut> mCuts;
    std::size_t mCutCount = 0, mMaxCuts = 0;  // over all rounds of splitting
    // Pairs the sweep's recheck may test while a budget of cuts is set: many pairs that do not
    // cut cost time all the same.
    std::size_t mTestCount = 0, mMaxTests = 0;
    std::vector<Cut> mCrossingCuts;
    std::vector<Trapezoid> mTrapezoids;
    double mMinX = 0, mMinY = 0, mScale = 1;

    // Working space of the steps, members only to keep their capacity.
    std::vector<End> mEnds, mEndScratch;
    std::vector<std::size_t> mRuns;
    std::vector<std::uint32_t> mVertexOf;  // of every index
    std::vector<Edge> mEdges;
    std::vector<char> mContinues;  // of every edge before the merge: it goes on from the last
    std::vector<std::int64_t> mBalance;
    std::vector<std::uint32_t> mCutStart, mCutPoints, mUpperStart;
    std::vector<std::uint32_t> mRegionOf, mRegionStart, mByRegion;
    SweepBuffers mSweep;
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
// the first index that falls on it; mVertexOf gives the vertex of every index. Sorting keys
// beats hashing here and leaves the sweep order ready-made. Contours name each point twice in a
// row (the end of a segment and the start of the next), so only the first of such a pair is
// sorted.
void TrapezoidRepresentation::numberOutlineVertices(const std::vector<Wm4::Vector2f>& points,
                                                    const std::vector<unsigned int>& indices) {
    // Fields are written in place: a whole End built aside and copied in stalls on the copy.
    mEnds.resize(indices.size());
    std::size_t count = 0;
    std::uint64_t maxKey = 0;
    for (std::size_t i = 0; i < indices.size(); ++i) {
        if (i == 0 || indices[i] != indices[i - 1]) {
            End& end = mEnds[count++];
            end.key = keyOf(toGrid(points[indices[i]]));
            end.at = static_cast<std::uint32_t>(i);
            maxKey = std::max(maxKey, end.key);
        }
    }
    mEnds.resize(count);
    // Stable: among equal keys the first index stays first.
    sortByKey(mEnds, mEndScratch, mRuns, bitsFor(maxKey), [](const End& end) { return end.key; });
    mVertexOf.resize(indices.size());
    for (const End& end : mEnds) {
        if (mSortedKeys.empty() || mSortedKeys.back() != end.key) {
            Vertex& vertex = mVertices.emplace_back();
            vertex.grid = gridOf(end.key);
            vertex.position = points[indices[end.at]];
            mSortedKeys.push_back(end.key);
        }
        mVertexOf[end.at] = static_cast<std::uint32_t>(mVertices.size() - 1);
    }
    for (std::size_t i = 1; i < indices.size(); ++i) {
        if (indices[i] == indices[i - 1]) {
            mVertexOf[i] = mVertexOf[i - 1];
        }
    }
}

GridPoint TrapezoidRepresentation::toGrid(const Wm4::Vector2f& p) const {
    return {roundNonNegative((double(p.X()) - mMinX) * mScale),
            roundNonNegative((double(p.Y()) - mMinY) * mScale)};
}

// Clamped to the float range: the frame lies one grid step beyond the outline, which is past the
// largest float when the outline reaches it.
Wm4::Vector2f TrapezoidRepresentation::fromGrid(const GridPoint& g) const {
    constexpr double kMax = std::numeric_limits<float>::max();
    return Wm4::Vector2f(static_cast<float>(std::clamp(mMinX + double(g.x) / mScale, -kMax, kMax)),
                         static_cast<float>(std::clamp(mMinY + double(g.y) / mScale, -kMax, kMax)));
}

// Per vertex, the segments ending there and starting there.
void TrapezoidRepresentation::incidence() {
    SweepBuffers& in = mSweep;
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
    in.fill.assign(in.upStart.begin(), in.upStart.end() - 1);
    for (std::uint32_t s = 0; s < mSegments.size(); ++s) {
        in.up[in.fill[mSegments[s].lower]++] = s;
    }
    in.fill.assign(in.downStart.begin(), in.downStart.end() - 1);
    for (std::uint32_t s = 0; s < mSegments.size(); ++s) {
        in.down[in.fill[mSegments[s].upper]++] = s;
    }
}

// The outline's vertices are numbered in order already; only the added ones are sorted and
// merged in.
void TrapezoidRepresentation::sweepOrder() {
    const auto sorted = static_cast<std::uint32_t>(mSortedKeys.size());
    const auto count = static_cast<std::uint32_t>(mVertices.size());
    const auto before = [this](std::uint32_t l, std::uint32_t r) {
        return mVertices[l].grid < mVertices[r].grid;
    };
    // Merged by hand into the buffer: std::inplace_merge would allocate one of its own.
    std::vector<std::uint32_t>& added = mSweep.added;
    added.resize(count - sorted);
    std::iota(added.begin(), added.end(), sorted);
    std::sort(added.begin(), added.end(), before);
    std::vector<std::uint32_t>& order = mSweep.order;
    order.resize(count);
    std::uint32_t next = 0;
    std::size_t k = 0, out = 0;
    while (next < sorted && k < added.size()) {
        order[out++] = before(added[k], next) ? added[k++] : next++;
    }
    while (next < sorted) {
        order[out++] = next++;
    }
    while (k < added.size()) {
        order[out++] = added[k++];
    }
}

// Classifies the pair (s, t): every crossing, T-junction and collinear overlap becomes a cut of
// the segments involved (a crossing point rounded to the nearest grid point). True when the two
// meet anywhere but at a shared end.
bool TrapezoidRepresentation::recordIntersection(std::uint32_t s, std::uint32_t t) {
    const Segment& e = mSegments[s];
    const Segment& f = mSegments[t];
    const GridPoint A = mVertices[e.upper].grid, B = mVertices[e.lower].grid;
    const GridPoint C = mVertices[f.upper].grid, D = mVertices[f.lower].grid;
    if (boxesApart(A, B, C, D)) {
        return false;
    }
    bool found = false;
    const auto cut = [&](std::vector<Cut>& into, std::uint32_t segment, const GridPoint& at,
                         const Wm4::Vector2f& position) {
        const Segment& seg = mSegments[segment];
        if (at == mVertices[seg.upper].grid || at == mVertices[seg.lower].grid) {
            return;
        }
        if (++mCutCount > mMaxCuts) {
            fail();
        }
        into.push_back({segment, addPoint(at, position)});
        found = true;
    };
    const std::int64_t d1 = orient(C, D, A), d2 = orient(C, D, B);
    const std::int64_t d3 = orient(A, B, C), d4 = orient(A, B, D);
    // A vertex whose pixel the segment passes through becomes a vertex of that segment (snap
    // rounding): routing segments through the pixels they cross keeps rounded crossing points
    // from creating new crossings over and over.
    if (throughPixel(C, D, d1) && strictlyInside(C, D, A))
        cut(mCuts, t, A, mVertices[e.upper].position);
    if (throughPixel(C, D, d2) && strictlyInside(C, D, B))
        cut(mCuts, t, B, mVertices[e.lower].position);
    if (throughPixel(A, B, d3) && strictlyInside(A, B, C))
        cut(mCuts, s, C, mVertices[f.upper].position);
    if (throughPixel(A, B, d4) && strictlyInside(A, B, D))
        cut(mCuts, s, D, mVertices[f.lower].position);
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
        cut(mCrossingCuts, s, P, position);
        cut(mCrossingCuts, t, P, position);
    }
    return found;
}

// One pass of the plane sweep over the current segments. It visits the vertices in (y, x) order,
// keeping the segments that cross the sweep position ordered from left to right, and does two
// jobs at once:
// - It finds where segments meet other than at shared ends, by testing every pair that becomes
//   adjacent in the order (two segments that meet are adjacent just before they do). A pair
//   found meeting leaves the order for the rest of the pass, and its new neighbours are tested
//   in turn, so the order stays consistent; what it finds becomes cuts.
// - Until it finds anything, it builds the trapezoids. Each segment owns the open trapezoid to
//   its right; a trapezoid opens at the vertex where its gap between two segments begins and
//   closes at the vertex where a segment of it ends or a new one enters it. Winding numbers are
//   counted from the left: the gap right of a segment has the winding of the gap left of it plus
//   the segment's delta.
// So an outline that needs no splitting is swept once, and one that does is swept once more
// after each round of cuts.
class TrapezoidRepresentation::Sweep {
public:
    explicit Sweep(TrapezoidRepresentation& self);

    // True when the trapezoids are complete; false when cuts were found instead.
    bool run();

private:
    struct Pair {
        std::uint32_t left = kNone;
        std::uint32_t right = kNone;
    };

    void visit(std::uint32_t v);
    void passThrough(std::uint32_t v, std::uint32_t ending, std::uint32_t starting);
    void joinAt(const Pair& closed, const Pair& opened);
    void collectEnding(std::uint32_t v);
    void removeEnding(std::uint32_t v);
    Status::iterator insertStarting(std::uint32_t v, Status::iterator it);
    Pair closeGaps(std::uint32_t v, std::uint32_t pred, std::uint32_t succ);
    Pair openGaps(std::uint32_t v, std::uint32_t pred);
    std::uint32_t open(std::uint32_t owner, std::uint32_t top);
    std::uint32_t close(std::uint32_t owner, std::uint32_t right, std::uint32_t bottom);
    void testAround(Status::iterator it);
    Status::iterator drop(Status::iterator it);
    void found();
    void recheckDropped();
    bool pairsInGrid(std::uint32_t count, std::vector<std::uint64_t>& pairs);
    void pairsBySweep(std::uint32_t count);

    TrapezoidRepresentation& mSelf;
    const std::vector<Segment>& mSegments;
    SweepBuffers& mIn;
    const SegmentOrder mLess;
    Status mStatus;  // no heap allocation per segment: nodes come from mIn.nodes
    std::vector<Status::iterator>& mWhere;
    std::vector<char>& mPresent;
    std::vector<char>& mSuspect;
    std::vector<std::uint32_t>& mOpenTrapezoid;
    std::vector<std::int64_t>& mWindingRight;
    std::vector<std::uint32_t>& mEnding;
    std::vector<std::uint32_t>& mStarting;
    bool mBuilding = true;  // nothing found yet
};

TrapezoidRepresentation::Sweep::Sweep(TrapezoidRepresentation& self)
    : mSelf(self),
      mSegments(self.mSegments),
      mIn(self.mSweep),
      mLess{&self},
      mStatus(mLess, &mIn.nodes),
      mWhere(mIn.where),
      mPresent(mIn.present),
      mSuspect(mIn.suspect),
      mOpenTrapezoid(mIn.openTrapezoid),
      mWindingRight(mIn.windingRight),
      mEnding(mIn.ending),
      mStarting(mIn.starting) {
    self.incidence();
    self.sweepOrder();
    const std::size_t count = mSegments.size();
    mWhere.resize(count);
    mPresent.assign(count, 0);
    mSuspect.assign(count, 0);
    mOpenTrapezoid.assign(count, kNone);
    mWindingRight.assign(count, 0);
}

bool TrapezoidRepresentation::Sweep::run() {
    mSelf.mTrapezoids.clear();
    mSelf.mTrapezoids.reserve(mSegments.size() * 3);
    for (std::uint32_t v : mIn.order) {
        visit(v);
    }
    if (mBuilding) {
        return true;
    }
    recheckDropped();
    return false;
}

// One vertex: the segments ending here leave the order, those starting here enter it, the gaps
// that meet here close and the new ones open, and the pairs that became adjacent are tested.
void TrapezoidRepresentation::Sweep::visit(std::uint32_t v) {
    const std::uint32_t endCount = mIn.upStart[v + 1] - mIn.upStart[v];
    const std::uint32_t startCount = mIn.downStart[v + 1] - mIn.downStart[v];
    if (mBuilding && endCount == 1 && startCount == 1) {
        passThrough(v, mIn.up[mIn.upStart[v]], mIn.down[mIn.downStart[v]]);
        return;
    }
    const bool ends = endCount != 0;
    const bool starts = startCount != 0;
    mEnding.clear();
    if (mBuilding && ends) {
        collectEnding(v);
    }
    removeEnding(v);
    const Status::iterator it = mStatus.lower_bound(mSelf.mVertices[v].grid);
    const std::uint32_t pred = it == mStatus.begin() ? kNone : *std::prev(it);
    const std::uint32_t succ = it == mStatus.end() ? kNone : *it;
    // A vertex whose segments all merged away builds nothing; the pair across it is tested
    // again all the same.
    const bool building = mBuilding && (ends || starts);
    const Pair closed = building ? closeGaps(v, pred, succ) : Pair{};

    const auto firstInserted = insertStarting(v, it);
    if (building && mBuilding) {
        joinAt(closed, openGaps(v, pred));
    }
    // New neighbours: left of the first inserted, right of the last, or across the vertex.
    if (firstInserted != mStatus.end()) {
        const std::uint32_t firstSegment = *firstInserted;
        testAround(firstInserted);
        // testAround drops the first inserted segment whenever it drops anything.
        const auto afterLast = succ != kNone && mPresent[succ] ? mWhere[succ] : mStatus.end();
        if (mPresent[firstSegment] && afterLast != mStatus.end()) {
            testAround(afterLast);
        }
    } else {
        testAround(it);
    }
}

// A vertex that one segment reaches and one leaves, as most vertices of a contour, while nothing
// was found: the new segment takes the old one's place in the order, where nothing else can be
// (a segment through v would have met the old one already), so the tree is neither searched nor
// rebalanced. (Once segments were dropped, the general path keeps placing by search.)
void TrapezoidRepresentation::Sweep::passThrough(std::uint32_t v, std::uint32_t ending,
                                                 std::uint32_t starting) {
    const Status::iterator it = mWhere[ending];
    const std::uint32_t pred = it == mStatus.begin() ? kNone : *std::prev(it);
    const auto next = std::next(it);
    const std::uint32_t succ = next == mStatus.end() ? kNone : *next;
    mEnding.assign(1, ending);
    mStarting.assign(1, starting);
    const Pair closed = closeGaps(v, pred, succ);
    // The key changes in place; the order stays as it was.
    const_cast<std::uint32_t&>(*it) = starting;
    mWhere[starting] = it;
    mPresent[ending] = 0;
    mPresent[starting] = 1;
    joinAt(closed, openGaps(v, pred));
    testAround(it);
    if (mPresent[starting] && succ != kNone && mPresent[succ]) {
        testAround(mWhere[succ]);
    }
}

// The gaps closed at a vertex continue in the gaps opened there: their regions are one.
void TrapezoidRepresentation::Sweep::joinAt(const Pair& closed, const Pair& opened) {
    if (closed.left != kNone && opened.left != kNone) {
        mSelf.joinRegions(closed.left, opened.left);
    }
    if (closed.right != kNone && opened.right != kNone) {
        mSelf.joinRegions(closed.right, opened.right);
    }
}

// The segments ending at v, left to right. While nothing was found they are all in the order,
// side by side.
void TrapezoidRepresentation::Sweep::collectEnding(std::uint32_t v) {
    auto first = mWhere[mIn.up[mIn.upStart[v]]];
    auto last = std::next(first);
    while (first != mStatus.begin() && mSegments[*std::prev(first)].lower == v) {
        --first;
    }
    while (last != mStatus.end() && mSegments[*last].lower == v) {
        ++last;
    }
    mEnding.assign(first, last);
    if (mEnding.size() != mIn.upStart[v + 1] - mIn.upStart[v]) {
        fail();
    }
}

void TrapezoidRepresentation::Sweep::removeEnding(std::uint32_t v) {
    for (std::uint32_t k = mIn.upStart[v]; k < mIn.upStart[v + 1]; ++k) {
        const std::uint32_t s = mIn.up[k];
        if (mPresent[s]) {
            mPresent[s] = 0;
            mStatus.erase(mWhere[s]);
        }
    }
}

// Inserts the segments starting at v before `it`, left to right, and returns the first inserted
// (the end when none); `mStarting` keeps them in order. Two segments leaving v in the same
// direction overlap: the longer is cut where the shorter ends, and sits this pass out.
TrapezoidRepresentation::Status::iterator TrapezoidRepresentation::Sweep::insertStarting(
    std::uint32_t v, Status::iterator it) {
    mStarting.assign(mIn.down.begin() + mIn.downStart[v], mIn.down.begin() + mIn.downStart[v + 1]);
    std::sort(mStarting.begin(), mStarting.end(), mLess);
    const GridPoint& at = mSelf.mVertices[v].grid;
    Status::iterator firstInserted = mStatus.end();
    for (std::size_t i = 0; i < mStarting.size(); ++i) {
        const std::uint32_t s = mStarting[i];
        if (i + 1 < mStarting.size()) {
            const std::uint32_t t = mStarting[i + 1];
            const GridPoint& ls = mSelf.mVertices[mSegments[s].lower].grid;
            const GridPoint& lt = mSelf.mVertices[mSegments[t].lower].grid;
            if (orient(at, ls, lt) == 0) {
                mSelf.recordIntersection(s, t);
                mSuspect[s] = 1;
                found();
                continue;
            }
        }
        it = mStatus.insert(it, s);
        mWhere[s] = it;
        mPresent[s] = 1;
        if (firstInserted == mStatus.end()) {
            firstInserted = it;
        }
        ++it;
    }
    return firstInserted;
}

// Closes the gaps that meet v: right of its predecessor and right of each segment ending here.
// Returns the leftmost and rightmost trapezoid closed.
TrapezoidRepresentation::Sweep::Pair TrapezoidRepresentation::Sweep::closeGaps(std::uint32_t v,
                                                                               std::uint32_t pred,
                                                                               std::uint32_t succ) {
    Pair closed;
    if (pred != kNone) {
        closed.left = closed.right = close(pred, mEnding.empty() ? succ : mEnding.front(), v);
    }
    for (std::size_t k = 0; k < mEnding.size(); ++k) {
        closed.right = close(mEnding[k], k + 1 < mEnding.size() ? mEnding[k + 1] : succ, v);
    }
    return closed;
}

// Opens the gaps that start at v: right of its predecessor and right of each segment starting
// here, with their winding numbers. Returns the leftmost and rightmost trapezoid opened.
TrapezoidRepresentation::Sweep::Pair TrapezoidRepresentation::Sweep::openGaps(std::uint32_t v,
                                                                              std::uint32_t pred) {
    Pair opened;
    std::int64_t winding = pred != kNone ? mWindingRight[pred] : 0;
    if (pred != kNone) {
        opened.left = opened.right = open(pred, v);
    }
    for (std::uint32_t s : mStarting) {
        winding += mSegments[s].delta;
        mWindingRight[s] = winding;
        opened.right = open(s, v);
        if (opened.left == kNone) {
            opened.left = opened.right;
        }
    }
    return opened;
}

std::uint32_t TrapezoidRepresentation::Sweep::open(std::uint32_t owner, std::uint32_t top) {
    std::vector<Trapezoid>& trapezoids = mSelf.mTrapezoids;
    const auto t = static_cast<std::uint32_t>(trapezoids.size());
    Trapezoid& trapezoid = trapezoids.emplace_back();
    trapezoid.left = owner;
    trapezoid.right = kNone;
    trapezoid.top = top;
    trapezoid.bottom = kNone;
    trapezoid.winding = mWindingRight[owner];
    trapezoid.region = t;
    mOpenTrapezoid[owner] = t;
    return t;
}

// Closes the gap right of `owner`; unbounded gaps (outside the frame) make no trapezoid.
std::uint32_t TrapezoidRepresentation::Sweep::close(std::uint32_t owner, std::uint32_t right,
                                                    std::uint32_t bottom) {
    const std::uint32_t t = mOpenTrapezoid[owner];
    mOpenTrapezoid[owner] = kNone;
    if (t == kNone || right == kNone) {
        return kNone;
    }
    mSelf.mTrapezoids[t].right = right;
    mSelf.mTrapezoids[t].bottom = bottom;
    return t;
}

// Tests the pair around `it` (its predecessor and itself), dropping both when they meet and
// testing the pair that then comes together.
void TrapezoidRepresentation::Sweep::testAround(Status::iterator it) {
    while (it != mStatus.begin() && it != mStatus.end()) {
        const auto before = std::prev(it);
        if (!mSelf.recordIntersection(*before, *it)) {
            return;
        }
        drop(before);
        it = drop(it);
    }
}

TrapezoidRepresentation::Status::iterator TrapezoidRepresentation::Sweep::drop(
    Status::iterator it) {
    found();
    mPresent[*it] = 0;
    mSuspect[*it] = 1;
    return mStatus.erase(it);
}

// Something is to be cut: the trapezoids of this pass are void.
void TrapezoidRepresentation::Sweep::found() {
    mBuilding = false;
}

// A pair that meets further down may have been hidden by a segment that left the order, so every
// segment that left is tested against all whose boxes overlap its own. The pairs come from a grid
// (see pairsInGrid) and are tested in the order of a sweep over x: the later of each pair by
// left end, then id, first, then the earlier one, so that the cuts come in one order whatever
// the grid. The frame meets nothing and is left out.
void TrapezoidRepresentation::Sweep::recheckDropped() {
    const auto count = static_cast<std::uint32_t>(mSegments.size() - 4);
    if (std::find(mSuspect.begin(), mSuspect.begin() + count, 1) == mSuspect.begin() + count) {
        return;
    }
    const std::vector<Vertex>& vertices = mSelf.mVertices;
    // By left end, then by id; outline segments lie at x >= 0.
    std::vector<std::uint64_t>& byX = mIn.byX;
    byX.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::int64_t left =
            std::min(vertices[mSegments[i].upper].grid.x, vertices[mSegments[i].lower].grid.x);
        byX[i] = (static_cast<std::uint64_t>(left) << 32) | i;
    }
    sortByKey(byX, mIn.byXScratch, mSelf.mRuns, 64, [](std::uint64_t key) { return key; });
    std::vector<std::uint32_t>& rank = mIn.rank;
    rank.resize(count);
    for (std::uint32_t r = 0; r < count; ++r) {
        rank[static_cast<std::uint32_t>(byX[r])] = r;
    }
    std::vector<std::uint64_t>& pairs = mIn.pairs;
    if (!pairsInGrid(count, pairs)) {
        pairs.clear();
        pairsBySweep(count);
        return;
    }
    sortByKey(pairs, mIn.byXScratch, mSelf.mRuns, 64, [](std::uint64_t key) { return key; });
    for (const std::uint64_t pair : pairs) {
        mSelf.recordIntersection(static_cast<std::uint32_t>(byX[pair >> 32]),
                                 static_cast<std::uint32_t>(byX[pair & 0xFFFFFFFFu]));
    }
}

// The same pairs in the same order, by a sweep over x that keeps the segments whose x-ranges
// are still open: slower than the grid, but in memory linear in the segments whatever the number
// of pairs.
void TrapezoidRepresentation::Sweep::pairsBySweep(std::uint32_t count) {
    const std::vector<std::int64_t>& box = mIn.boxes;
    const auto prune = [&](std::vector<std::uint32_t>& active, std::int64_t left) {
        active.erase(
            std::remove_if(active.begin(), active.end(),
                           [&](std::uint32_t t) { return box[4 * std::size_t(t) + 2] < left; }),
            active.end());
    };
    std::vector<std::uint32_t>& activeAll = mIn.cellListing;
    std::vector<std::uint32_t>& activeSuspects = mIn.cellStart;
    activeAll.clear();
    activeSuspects.clear();
    for (std::uint32_t r = 0; r < count; ++r) {
        const auto current = static_cast<std::uint32_t>(mIn.byX[r]);
        const std::int64_t left = box[4 * std::size_t(current)];
        const bool isSuspect = mSuspect[current] != 0;
        prune(activeSuspects, left);
        if (isSuspect) {
            prune(activeAll, left);
        }
        for (std::uint32_t other : isSuspect ? activeAll : activeSuspects) {
            if (++mSelf.mTestCount > mSelf.mMaxTests) {
                fail();
            }
            mSelf.recordIntersection(current, other);
        }
        if (isSuspect) {
            activeSuspects.push_back(current);
        }
        activeAll.push_back(current);
    }
}

// Every pair of segments with overlapping boxes of which at least one is a suspect, once, as
// (rank of the later << 32 | rank of the earlier). Each segment is listed in the square cells
// its box covers; cells are as small as keeps that listing within a few entries per segment on
// average, so long segments make them coarser. A pair is taken in the cell that holds the
// lower corner of the boxes' overlap, which both boxes cover. False when the pairs would pass
// a budget linear in the segments.
bool TrapezoidRepresentation::Sweep::pairsInGrid(std::uint32_t count,
                                                 std::vector<std::uint64_t>& pairs) {
    const std::vector<Vertex>& vertices = mSelf.mVertices;
    std::vector<std::int64_t>& box = mIn.boxes;  // min x, min y, max x, max y per segment
    box.resize(4 * std::size_t(count));
    std::int64_t width = 0, height = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        const GridPoint& a = vertices[mSegments[i].upper].grid;
        const GridPoint& b = vertices[mSegments[i].lower].grid;
        std::int64_t* b4 = &box[4 * std::size_t(i)];
        b4[0] = std::min(a.x, b.x);
        b4[1] = a.y;  // the upper end comes first in (y, x) order
        b4[2] = std::max(a.x, b.x);
        b4[3] = b.y;
        width = std::max(width, b4[2]);
        height = std::max(height, b4[3]);
    }
    // One cell per segment or so to begin with, coarser while the listing is too long.
    int shift = 0;
    while (((width >> shift) + 1) * ((height >> shift) + 1) > std::int64_t(count) + 1) {
        ++shift;
    }
    const auto listed = [&](int s) {
        std::uint64_t total = 0;
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::int64_t* b4 = &box[4 * std::size_t(i)];
            total += std::uint64_t(((b4[2] >> s) - (b4[0] >> s) + 1) *
                                   ((b4[3] >> s) - (b4[1] >> s) + 1));
        }
        return total;
    };
    std::uint64_t entries = listed(shift);
    while (entries > 8 * std::uint64_t(count) + 1024) {
        entries = listed(++shift);
    }
    const std::int64_t columns = (width >> shift) + 1;
    const auto cellOf = [&](std::int64_t x, std::int64_t y) {
        return static_cast<std::size_t>((y >> shift) * columns + (x >> shift));
    };
    const auto forCells = [&](std::uint32_t i, const auto& visit) {
        const std::int64_t* b4 = &box[4 * std::size_t(i)];
        for (std::int64_t cy = b4[1] >> shift; cy <= b4[3] >> shift; ++cy) {
            for (std::int64_t cx = b4[0] >> shift; cx <= b4[2] >> shift; ++cx) {
                visit(static_cast<std::size_t>(cy * columns + cx));
            }
        }
    };
    // The cells' lists, by a counting sort.
    std::vector<std::uint32_t>& start = mIn.cellStart;
    std::vector<std::uint32_t>& listing = mIn.cellListing;
    start.assign(static_cast<std::size_t>(columns * ((height >> shift) + 1)) + 1, 0);
    for (std::uint32_t i = 0; i < count; ++i) {
        forCells(i, [&](std::size_t cell) { ++start[cell + 1]; });
    }
    std::partial_sum(start.begin(), start.end(), start.begin());
    listing.resize(start.back());
    std::vector<std::uint32_t>& fill = mIn.fill;
    fill.assign(start.begin(), start.end() - 1);
    for (std::uint32_t i = 0; i < count; ++i) {
        forCells(i, [&](std::size_t cell) { listing[fill[cell]++] = i; });
    }
    pairs.clear();
    // Beyond this many pairs, the sweep's linear memory wins.
    const std::size_t budget = 32 * std::size_t(count) + (std::size_t(1) << 20);
    std::size_t scanned = 0;
    bool full = false;
    const std::vector<std::uint32_t>& rank = mIn.rank;
    for (std::uint32_t a = 0; a < count; ++a) {
        if (!mSuspect[a]) {
            continue;
        }
        const std::int64_t* ba = &box[4 * std::size_t(a)];
        forCells(a, [&](std::size_t cell) {
            // Dense cells cost their scan even where few boxes overlap: it counts as well.
            scanned += start[cell + 1] - start[cell];
            if (scanned > 8 * budget) {
                full = true;
                return;
            }
            for (std::uint32_t k = start[cell]; k < start[cell + 1]; ++k) {
                const std::uint32_t b = listing[k];
                const std::int64_t* bb = &box[4 * std::size_t(b)];
                if (b == a || (mSuspect[b] && b < a) || ba[2] < bb[0] || bb[2] < ba[0] ||
                    ba[3] < bb[1] || bb[3] < ba[1] ||
                    cellOf(std::max(ba[0], bb[0]), std::max(ba[1], bb[1])) != cell) {
                    continue;
                }
                if (pairs.size() == budget) {
                    full = true;
                    return;
                }
                const std::uint64_t later = std::max(rank[a], rank[b]);
                const std::uint64_t earlier = std::min(rank[a], rank[b]);
                pairs.push_back((later << 32) | earlier);
            }
        });
        if (full) {
            return false;
        }
    }
    return true;
}

// Every segment is cut at its cut points (the exact ones when there are any, else the rounded
// crossings) and equal pieces are merged.
void TrapezoidRepresentation::cutSegments() {
    if (mCuts.empty()) {
        mCuts.swap(mCrossingCuts);
    }
    if (mCuts.empty()) {
        fail();  // a pass that found something always cuts
    }
    // The cut points of each segment, grouped by a counting sort in the order they were found.
    const auto count = static_cast<std::uint32_t>(mSegments.size());
    std::vector<std::uint32_t>& start = mCutStart;
    start.assign(std::size_t(count) + 1, 0);
    for (const Cut& c : mCuts) {
        ++start[c.segment + 1];
    }
    std::partial_sum(start.begin(), start.end(), start.begin());
    std::vector<std::uint32_t>& points = mCutPoints;
    points.resize(mCuts.size());
    std::vector<std::uint32_t>& fill = mSweep.fill;
    fill.assign(start.begin(), start.end() - 1);
    for (const Cut& c : mCuts) {
        points[fill[c.segment]++] = c.vertex;
    }
    mCuts.clear();
    mCrossingCuts.clear();

    std::vector<Edge>& pieces = mEdges;
    pieces.clear();
    for (std::uint32_t i = 0; i < count; ++i) {
        const Segment& seg = mSegments[i];
        const auto first = points.begin() + start[i], last = points.begin() + start[i + 1];
        if (first == last) {
            pieces.push_back({seg.upper, seg.lower, seg.delta});
            continue;
        }
        const GridPoint A = mVertices[seg.upper].grid, B = mVertices[seg.lower].grid;
        const auto along = [&](std::uint32_t v) {
            const GridPoint& p = mVertices[v].grid;
            return Int128(p.x - A.x) * (B.x - A.x) + Int128(p.y - A.y) * (B.y - A.y);
        };
        std::sort(first, last,
                  [&](std::uint32_t l, std::uint32_t r) { return along(l) < along(r); });
        std::uint32_t from = seg.upper;
        for (auto p = first, unique = std::unique(first, last); p != unique; ++p) {
            if (*p != from && *p != seg.lower) {
                pieces.push_back({from, *p, seg.delta});
                from = *p;
            }
        }
        pieces.push_back({from, seg.lower, seg.delta});
    }
    mergeEdges(pieces);
    addFrame();
}

// Empties everything, keeping the buffers' capacity.
void TrapezoidRepresentation::clear() {
    mVertices.clear();
    mSortedKeys.clear();
    mAddedAt.clear();
    mSegments.clear();
    std::fill(std::begin(mFrame), std::end(mFrame), kNone);
    mCuts.clear();
    mCrossingCuts.clear();
    mTrapezoids.clear();
}

// A buffer this large served an outline of tens of thousands of segments; such outlines are
// rare enough to allocate for, and keeping what they grew would hold memory for nothing.
bool TrapezoidRepresentation::oversized() const {
    constexpr std::size_t kKeep = std::size_t(1) << 15;
    return mSegments.capacity() > kKeep || mVertices.capacity() > kKeep ||
           mEnds.capacity() > kKeep || mTrapezoids.capacity() > 4 * kKeep;
}

void TrapezoidRepresentation::build(const std::vector<Wm4::Vector2f>& points,
                                    const std::vector<unsigned int>& indices, std::size_t maxCuts) {
    clear();
    mCutCount = 0;
    mMaxCuts = maxCuts;
    mTestCount = 0;
    mMaxTests = maxCuts < std::numeric_limits<std::size_t>::max() / 16
                    ? 16 * maxCuts
                    : std::numeric_limits<std::size_t>::max();
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

    numberOutlineVertices(points, indices);
    mEdges.clear();
    mContinues.clear();
    bool chained = true;  // no break in the index chain since the last edge kept
    for (std::size_t i = 0; i + 1 < indices.size(); i += 2) {
        chained = chained && i > 0 && indices[i - 1] == indices[i];
        // A segment whose ends fall on one vertex encloses nothing and changes no winding
        // number: it is always left out.
        if (mVertexOf[i] != mVertexOf[i + 1]) {
            mEdges.push_back({mVertexOf[i], mVertexOf[i + 1], 1});
            mContinues.push_back(chained);
            chained = true;
        }
    }
    // Segments that cancel out (an open run closed back along itself) still span the frame in
    // which every trapezoid is kept by the rules that keep everything.
    if (mEdges.empty()) {
        return;
    }
    closeOpenRuns();
    mergeEdges(mEdges);
    addFrame();
    for (int passes = 0;; ++passes) {
        if (Sweep(*this).run()) {
            return;
        }
        if (passes == kMaxSplitPasses) {
            fail();  // rounding keeps creating crossings: give up rather than loop
        }
        cutSegments();
    }
}

// An outline whose runs do not all return to where they began (a subpath left open, or one
// whose last point was moved off its first by clean-up) has no well-defined inside: the winding
// number would change along a path that crosses no segment. Fills treat an open subpath as closed
// by a straight line back to its start. Segments come from paths in order, so a run of
// consecutive segments (each ending where the next begins) is a subpath or a piece of one; when
// some vertex has more segments leaving than arriving, every run that does not end where it
// began gets its closing segment. An outline with no such vertex is closed already, whatever the
// order of its segments, and is left as it is.
// Segmented paths also chain their segments by index, a new subpath starting at a new index:
// where the index chain breaks next to segments chained by index, a new run begins even at the
// same position, so that an open subpath ending where the next one starts is closed on its own.
// Segments given with points of their own are chained by position.
void TrapezoidRepresentation::closeOpenRuns() {
    std::vector<Edge>& edges = mEdges;
    std::vector<std::int64_t>& balance = mBalance;  // leaving minus arriving
    balance.assign(mVertices.size(), 0);
    for (const Edge& e : edges) {
        ++balance[e.a];
        --balance[e.b];
    }
    if (std::all_of(balance.begin(), balance.end(), [](std::int64_t b) { return b == 0; })) {
        return;
    }
    const std::size_t count = edges.size();
    const auto continues = [&](std::size_t next) {
        const bool indexChained =
            mContinues[next - 1] || (next + 1 < count && mContinues[next + 1]);
        return edges[next - 1].b == edges[next].a && (mContinues[next] || !indexChained);
    };
    for (std::size_t first = 0; first < count;) {
        std::size_t last = first;
        while (last + 1 < count && continues(last + 1)) {
            ++last;
        }
        if (edges[first].a != edges[last].b) {
            edges.push_back({edges[last].b, edges[first].a, 1});
        }
        first = last + 1;
    }
}

// The edges as segments directed down the sweep, in mSegments, ordered by upper end (a counting
// sort) and then by lower end within each group (short ones by insertion).
void TrapezoidRepresentation::orderAsSegments(const std::vector<Edge>& edges) {
    std::vector<std::uint32_t>& start = mUpperStart;
    start.assign(mVertices.size() + 1, 0);
    const auto upper = [this](const Edge& e) {
        return mVertices[e.a].grid < mVertices[e.b].grid ? e.a : e.b;
    };
    for (const Edge& e : edges) {
        start[upper(e) + 1] += e.a != e.b;
    }
    std::partial_sum(start.begin(), start.end(), start.begin());
    mSegments.resize(start.back());
    for (const Edge& e : edges) {
        if (e.a != e.b) {
            const bool downward = upper(e) == e.a;
            Segment& seg = mSegments[start[upper(e)]++];
            seg.upper = downward ? e.a : e.b;
            seg.lower = downward ? e.b : e.a;
            seg.delta = downward ? e.weight : -e.weight;
        }
    }
    const auto byLower = [](const Segment& l, const Segment& r) { return l.lower < r.lower; };
    for (std::size_t first = 0; first < mSegments.size();) {
        std::size_t last = first + 1;
        while (last < mSegments.size() && mSegments[last].upper == mSegments[first].upper) {
            ++last;
        }
        if (last - first > 16) {
            std::sort(mSegments.begin() + first, mSegments.begin() + last, byLower);
        } else {
            for (std::size_t i = first + 1; i < last; ++i) {  // insertion sort
                for (std::size_t j = i; j > first && byLower(mSegments[j], mSegments[j - 1]); --j) {
                    std::swap(mSegments[j], mSegments[j - 1]);
                }
            }
        }
        first = last;
    }
}

// Equal segments become one, their weights summed by direction; those that cancel disappear.
void TrapezoidRepresentation::mergeEdges(const std::vector<Edge>& edges) {
    orderAsSegments(edges);
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
// trapezoid inside it has two bounding segments. Its four segments follow the outline's; the
// corners are made once, from the outline's vertices, which no cut ever passes.
void TrapezoidRepresentation::addFrame() {
    if (mFrame[0] == kNone) {
        std::int64_t right = 0, bottom = 0;
        for (const Vertex& v : mVertices) {
            right = std::max(right, v.grid.x);
            bottom = std::max(bottom, v.grid.y);
        }
        const GridPoint corners[4] = {
            {-1, -1}, {right + 1, -1}, {right + 1, bottom + 1}, {-1, bottom + 1}};
        for (int i = 0; i < 4; ++i) {
            mFrame[i] = addPoint(corners[i], fromGrid(corners[i]));
        }
    }
    mSegments.push_back({mFrame[0], mFrame[3], 0});  // left side, top to bottom
    mSegments.push_back({mFrame[1], mFrame[2], 0});  // right side
    mSegments.push_back({mFrame[0], mFrame[1], 0});  // top, left to right
    mSegments.push_back({mFrame[3], mFrame[2], 0});  // bottom
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

namespace {

// x of the segment P-Q at height y: the line y = m x + b solved for x, in the form
// x = P.x + (y - P.y) / m and in double, which keeps steep and nearly horizontal segments exact
// where (y - b) / m in float would cancel or overflow. A vertical segment keeps its x, and the
// height of an end gives that end's own x.
float xAtHeight(const Wm4::Vector2f& P, const Wm4::Vector2f& Q, float y) {
    if (Q.X() - P.X() == 0.0f || y == P.Y()) {
        return P.X();
    }
    if (y == Q.Y()) {
        return Q.X();
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
    switch (rule) {
        case TriangulationFillRule::NonZero:
            return winding != 0;
        case TriangulationFillRule::EvenOdd:
            return (winding & 1) != 0;
    }
    return true;  // any other value keeps every trapezoid
}

}  // namespace

// The closed trapezoids in mByRegion, grouped by region with a counting sort, and the region of
// each in mRegionOf. A region is named by its smallest trapezoid, so the groups come in the order
// of their first trapezoids, each in trapezoid order.
void TrapezoidRepresentation::groupByRegion() {
    const auto count = static_cast<std::uint32_t>(mTrapezoids.size());
    std::vector<std::uint32_t>& regionOf = mRegionOf;
    std::vector<std::uint32_t>& start = mRegionStart;
    regionOf.assign(count, kNone);
    start.assign(std::size_t(count) + 1, 0);
    for (std::uint32_t t = 0; t < count; ++t) {
        if (mTrapezoids[t].bottom != kNone) {
            regionOf[t] = findRegion(t);
            ++start[regionOf[t] + 1];
        }
    }
    std::partial_sum(start.begin(), start.end(), start.begin());
    mByRegion.resize(start.back());
    for (std::uint32_t t = 0; t < count; ++t) {
        if (regionOf[t] != kNone) {
            mByRegion[start[regionOf[t]]++] = t;
        }
    }
}

// Moves the trapezoids to emit to the front of mByRegion and returns their count: those of the
// regions that the rule keeps (by the winding number of each region's first trapezoid) that have
// a height.
std::size_t TrapezoidRepresentation::keepTrapezoids(TriangulationFillRule rule) {
    std::size_t emitted = 0;
    bool kept = false;
    for (std::size_t i = 0; i < mByRegion.size(); ++i) {
        const std::uint32_t t = mByRegion[i];
        const Trapezoid& trapezoid = mTrapezoids[t];
        if (i == 0 || mRegionOf[t] != mRegionOf[mByRegion[i - 1]]) {
            kept = keeps(rule, trapezoid.winding);
        }
        if (!kept) {
            continue;
        }
        if (trapezoid.left == kNone || trapezoid.right == kNone) {
            fail();
        }
        if (mVertices[trapezoid.top].position.Y() != mVertices[trapezoid.bottom].position.Y()) {
            mByRegion[emitted++] = t;
        }
    }
    return emitted;
}

// Regions in the order of their first trapezoid, each kept or rejected whole; every kept
// trapezoid of non-zero height gives four fresh points and two triangles. The output grows once.
void TrapezoidRepresentation::emit(TriangulationFillRule rule,
                                   std::vector<Wm4::Vector2f>& outPoints,
                                   std::vector<unsigned int>& outIndices) {
    groupByRegion();
    const std::size_t emitted = keepTrapezoids(rule);
    const std::vector<std::uint32_t>& byRegion = mByRegion;
    auto n = static_cast<unsigned int>(outPoints.size());
    outPoints.resize(outPoints.size() + 4 * emitted);
    outIndices.resize(outIndices.size() + 6 * emitted);
    Wm4::Vector2f* point = outPoints.data() + n;
    unsigned int* index = outIndices.data() + outIndices.size() - 6 * emitted;
    for (std::size_t i = 0; i < emitted; ++i, n += 4) {
        const Trapezoid& trapezoid = mTrapezoids[byRegion[i]];
        const float yA = mVertices[trapezoid.top].position.Y();
        const float yB = mVertices[trapezoid.bottom].position.Y();
        const Segment& first = mSegments[trapezoid.left];
        const Segment& second = mSegments[trapezoid.right];
        const Wm4::Vector2f& P1 = mVertices[first.upper].position;
        const Wm4::Vector2f& Q1 = mVertices[first.lower].position;
        const Wm4::Vector2f& P2 = mVertices[second.upper].position;
        const Wm4::Vector2f& Q2 = mVertices[second.lower].position;
        *point++ = Wm4::Vector2f(xAtHeight(P2, Q2, yA), yA);
        *point++ = Wm4::Vector2f(xAtHeight(P1, Q1, yA), yA);
        *point++ = Wm4::Vector2f(xAtHeight(P1, Q1, yB), yB);
        *point++ = Wm4::Vector2f(xAtHeight(P2, Q2, yB), yB);
        for (unsigned int k : {0u, 1u, 3u, 1u, 3u, 2u}) {
            *index++ = n + k;
        }
    }
}

}  // namespace impl

namespace {

// One representation per thread, kept between calls while it stays small: filling many small
// outlines one after another then reuses warm buffers instead of allocating them each time.
thread_local std::unique_ptr<impl::TrapezoidRepresentation> tKept;

}  // namespace

bool TriangulatePoly(const std::vector<Wm4::Vector2f>& points,
                     const std::vector<unsigned int>& indices,
                     std::vector<Wm4::Vector2f>& outPoints, std::vector<unsigned int>& outIndices,
                     TriangulationFillRule rule, bool /*skipDegenerate: no effect*/) {
    return svg::detail::TriangulateWithinCuts(points, indices, outPoints, outIndices, rule,
                                              std::numeric_limits<std::size_t>::max());
}

namespace svg::detail {

bool TriangulateWithinCuts(const std::vector<Wm4::Vector2f>& points,
                           const std::vector<unsigned int>& indices,
                           std::vector<Wm4::Vector2f>& outPoints,
                           std::vector<unsigned int>& outIndices, TriangulationFillRule rule,
                           std::size_t maxCuts) {
    if (indices.size() % 2 != 0) {
        return false;
    }
    // Taken out of the thread's slot while in use.
    std::unique_ptr<impl::TrapezoidRepresentation> representation = std::move(tKept);
    if (!representation) {
        representation = std::make_unique<impl::TrapezoidRepresentation>();
    }
    bool ok = true;
    try {
        representation->build(points, indices, maxCuts);
        representation->emit(rule, outPoints, outIndices);
    } catch (const std::exception&) {
        ok = false;
    }
    if (!representation->oversized()) {
        tKept = std::move(representation);
    }
    return ok;
}

}  // namespace svg::detail

}  // namespace tq
