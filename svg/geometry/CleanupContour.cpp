#include "svg/geometry/CleanupContour.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

namespace tq {

namespace {

// Both relative to the outline's size: they apply to coordinates normalised into the unit square.
constexpr float kLengthTolerance = 0.001f;
constexpr float kCollinearTolerance = 1.0000001e-6f;

// The points mapped into the unit square of their bounding box. The reciprocal is taken once
// and multiplied; a box of zero width or height is deliberately not guarded against: the NaN
// coordinates it gives fail every test, so such an outline is left as it is.
std::vector<Wm4::Vector2f> normalised(const std::vector<Wm4::Vector2f>& points) {
    float minX = points[0].X(), maxX = minX, minY = points[0].Y(), maxY = minY;
    for (const Wm4::Vector2f& p : points) {
        minX = p.X() < minX ? p.X() : minX;
        maxX = p.X() > maxX ? p.X() : maxX;
        minY = p.Y() < minY ? p.Y() : minY;
        maxY = p.Y() > maxY ? p.Y() : maxY;
    }
    const float scaleX = 1.0f / (maxX - minX);
    const float scaleY = 1.0f / (maxY - minY);
    std::vector<Wm4::Vector2f> result;
    result.reserve(points.size());
    for (const Wm4::Vector2f& p : points) {
        result.emplace_back((p.X() - minX) * scaleX, (p.Y() - minY) * scaleY);
    }
    return result;
}

bool nearlyEqual(const Wm4::Vector2f& a, const Wm4::Vector2f& b) {
    return std::fabs(b.X() - a.X()) < kLengthTolerance &&
           std::fabs(b.Y() - a.Y()) < kLengthTolerance;
}

// Whether b continues the line p-a, forwards or back.
bool collinear(const Wm4::Vector2f& p, const Wm4::Vector2f& a, const Wm4::Vector2f& b) {
    const float cross = (a.X() - p.X()) * (b.Y() - a.Y()) - (a.Y() - p.Y()) * (b.X() - a.X());
    return std::fabs(cross) < kCollinearTolerance;
}

// "Replace every occurrence of v by w in the index array", recorded instead of done: a forest
// in which each replaced index points to its replacement, so that the current value of an entry
// is the root above its original value. Replacing only ever links one current value (a root)
// under another, so no cycle forms, and an entry's root is exactly what the repeated
// whole-array replacements would have left in it. Indices beyond the points are never replaced
// (no test succeeds on them) and stand for themselves.
class Replacements {
public:
    explicit Replacements(std::size_t count) : mParent(count) {
        std::iota(mParent.begin(), mParent.end(), 0u);
    }

    unsigned int current(unsigned int index) {
        if (index >= mParent.size()) {
            return index;
        }
        while (mParent[index] != index) {
            mParent[index] = mParent[mParent[index]];  // path halving
            index = mParent[index];
        }
        return index;
    }

    // `from` and `to` are current values, both of existing points.
    void replace(unsigned int from, unsigned int to) { mParent[from] = to; }

private:
    std::vector<unsigned int> mParent;
};

// Working coordinates by index; an index beyond them reads as NaN, failing every test.
class WorkingPoints {
public:
    explicit WorkingPoints(const std::vector<Wm4::Vector2f>& points) : mPoints(&points) {
        // A single point is not normalised (there is no box to normalise into).
        if (points.size() >= 2) {
            mNormalised = normalised(points);
            mPoints = &mNormalised;
        }
    }
    WorkingPoints(const WorkingPoints&) = delete;
    WorkingPoints& operator=(const WorkingPoints&) = delete;

    Wm4::Vector2f operator[](unsigned int index) const {
        if (index >= mPoints->size()) {
            const float nan = std::numeric_limits<float>::quiet_NaN();
            return Wm4::Vector2f(nan, nan);
        }
        return (*mPoints)[index];
    }

private:
    const std::vector<Wm4::Vector2f>* mPoints;
    std::vector<Wm4::Vector2f> mNormalised;
};

// Drops short segments and merges collinear runs, compacting the kept pairs to the front.
// Reading pair r after the kept pairs [0, kept) sees exactly the array the in-place erasing
// walk would see: the kept pairs, then the pairs not yet visited, all through the replacements.
// The previous kept pair is the one just before the cursor, none at the start.
void simplify(const WorkingPoints& at, std::vector<unsigned int>& indices,
              Replacements& replacements) {
    std::size_t kept = 0;
    for (std::size_t r = 0; r < indices.size(); r += 2) {
        const unsigned int a = replacements.current(indices[r]);
        const unsigned int b = replacements.current(indices[r + 1]);
        if (nearlyEqual(at[a], at[b])) {
            replacements.replace(b, a);
            continue;
        }
        if (kept > 0 && replacements.current(indices[kept - 1]) == a) {
            const unsigned int p = replacements.current(indices[kept - 2]);
            if (collinear(at[p], at[a], at[b])) {
                replacements.replace(a, b);  // the previous segment now runs from p to b
                continue;
            }
        }
        indices[kept] = a;
        indices[kept + 1] = b;
        kept += 2;
    }
    indices.resize(kept);
    for (unsigned int& index : indices) {
        index = replacements.current(index);
    }
}

}  // namespace

void CleanupContour(std::vector<Wm4::Vector2f>& points, std::vector<unsigned int>& indices) {
    if (indices.empty() || points.empty() || indices.size() % 2 != 0) {
        return;
    }
    // The caller's points are only read: the tests run on a normalised copy.
    const WorkingPoints at(points);
    const std::size_t addressable = std::numeric_limits<unsigned int>::max();
    Replacements replacements(points.size() < addressable ? points.size() : addressable);
    simplify(at, indices, replacements);
    if (!indices.empty() && nearlyEqual(at[indices.front()], at[indices.back()])) {
        indices.back() = indices.front();
    }
}

}  // namespace tq
