#include "svg/geometry/CleanupContour.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CaseFile.h"

using tq::CleanupContour;
using Wm4::Vector2f;

namespace {

using Points = std::vector<Vector2f>;
using Indices = std::vector<unsigned int>;

// The clean-up carried out literally: every replacement rewrites the whole array and every
// dropped pair is erased in place. Quadratic, but obviously what is meant; the library's
// version must give the same indices.
void ReferenceCleanup(Points& points, Indices& indices) {
    if (indices.empty() || points.empty() || indices.size() % 2 != 0) {
        return;
    }
    const Points original = points;
    if (points.size() >= 2) {
        float minX = points[0].X(), maxX = minX, minY = points[0].Y(), maxY = minY;
        for (const Vector2f& p : points) {
            minX = std::min(minX, p.X());
            maxX = std::max(maxX, p.X());
            minY = std::min(minY, p.Y());
            maxY = std::max(maxY, p.Y());
        }
        const float sx = 1.0f / (maxX - minX), sy = 1.0f / (maxY - minY);
        for (Vector2f& p : points) {
            p = Vector2f((p.X() - minX) * sx, (p.Y() - minY) * sy);
        }
    }
    const float nan = std::numeric_limits<float>::quiet_NaN();
    auto at = [&](unsigned int i) { return i < points.size() ? points[i] : Vector2f(nan, nan); };
    auto close = [](Vector2f a, Vector2f b) {
        return std::fabs(b.X() - a.X()) < 0.001f && std::fabs(b.Y() - a.Y()) < 0.001f;
    };
    std::size_t i = 0, j = indices.size();
    while (i < indices.size()) {
        const unsigned int a = indices[i], b = indices[i + 1];
        const Vector2f pa = at(a), pb = at(b);
        if (close(pa, pb)) {
            std::replace(indices.begin(), indices.end(), b, a);
            indices.erase(indices.begin() + i, indices.begin() + i + 2);
            continue;
        }
        if (j < indices.size() && indices[j + 1] == a) {
            const Vector2f p = at(indices[j]);
            const float cross =
                (pa.X() - p.X()) * (pb.Y() - pa.Y()) - (pa.Y() - p.Y()) * (pb.X() - pa.X());
            if (std::fabs(cross) < 1.0000001e-6f) {
                std::replace(indices.begin(), indices.end(), a, b);
                indices.erase(indices.begin() + i, indices.begin() + i + 2);
                continue;
            }
        }
        j = i;
        i += 2;
    }
    if (!indices.empty() && close(at(indices.front()), at(indices.back()))) {
        indices.back() = indices.front();
    }
    points = original;
}

bool sameBits(const Points& a, const Points& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Vector2f)) == 0);
}

// A closed polygon of n points on a circle, segments i -> i + 1.
void circle(std::size_t n, Points& points, Indices& indices) {
    for (std::size_t i = 0; i < n; ++i) {
        const double angle = 2 * 3.14159265358979 * double(i) / double(n);
        points.emplace_back(float(100 * std::cos(angle)), float(100 * std::sin(angle)));
        indices.push_back(unsigned(i));
        indices.push_back(unsigned((i + 1) % n));
    }
}

}  // namespace

// tests/data/geometry/cleanup.tsv
TEST(CleanupContour, Cases) {
    const auto rows = tq::test::ReadTable("geometry/cleanup.tsv");
    ASSERT_GT(rows.size(), 10u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 4u) << row[0];
        Points points;
        std::istringstream pairs(row[1]);
        for (std::string pair; std::getline(pairs, pair, ';');) {
            std::istringstream xy(pair);
            float x = 0, y = 0;
            xy >> x >> y;
            points.emplace_back(x, y);
        }
        const auto indices = [](const std::string& text) {
            std::istringstream in(text);
            return Indices(std::istream_iterator<unsigned int>(in), {});
        };
        Points after = points;
        Indices cleaned = indices(row[2]);
        CleanupContour(after, cleaned);
        EXPECT_EQ(cleaned, indices(row[3])) << row[0];
        EXPECT_TRUE(sameBits(after, points)) << row[0];
    }
}

// Small point sets on a coarse grid, with near-duplicates, so that short segments, collinear
// runs, doubling back, shared vertices across contours and degenerate boxes are all common.
TEST(CleanupContour, MatchesTheLiteralWalkOnRandomOutlines) {
    std::mt19937 random(20240611);
    auto uniform = [&](int n) { return int(random() % unsigned(n)); };
    for (int round = 0; round < 20000; ++round) {
        Points points;
        const int pointCount = 1 + uniform(12);
        const int grid = 1 + uniform(4);
        for (int k = 0; k < pointCount; ++k) {
            Vector2f p(float(uniform(grid + 1)), float(uniform(grid + 1)));
            if (uniform(5) == 0) {
                p += Vector2f(float(uniform(3) - 1), float(uniform(3) - 1)) * 0.0004f;
            }
            points.push_back(p);
        }
        Indices indices;
        unsigned int last = unsigned(uniform(pointCount));
        const int segments = uniform(16);
        for (int k = 0; k < segments; ++k) {
            if (uniform(4) == 0) {
                last = unsigned(uniform(pointCount + 1));  // a new run, maybe out of range
            }
            const unsigned int next = unsigned(uniform(pointCount));
            indices.insert(indices.end(), {last, next});
            last = next;
        }
        Points expectedPoints = points, actualPoints = points;
        Indices expected = indices, actual = indices;
        ReferenceCleanup(expectedPoints, expected);
        CleanupContour(actualPoints, actual);
        ASSERT_EQ(actual, expected) << "round " << round;
        ASSERT_TRUE(sameBits(actualPoints, points)) << "round " << round;
    }
}

// A finely flattened circle: almost every segment is short or continues its predecessor, so
// nearly every pair leads to a replacement.
TEST(CleanupContour, FlattenedCircles) {
    Points points;
    Indices indices;
    circle(4000, points, indices);
    Points referencePoints = points;
    Indices expected = indices;
    ReferenceCleanup(referencePoints, expected);
    CleanupContour(points, indices);
    EXPECT_EQ(indices, expected);
}
