// Areas of triangle lists, for checking that triangles cover each point at most once: their
// summed area equals the area of their union exactly then.
#pragma once

#include <cmath>
#include <utility>
#include <vector>

#include "svg/tqSvg.h"

namespace tq::test {

// Twice the signed area of a, b, c, in double precision.
inline double TwiceSignedArea(const Wm4::Vector2f& a, const Wm4::Vector2f& b,
                              const Wm4::Vector2f& c) {
    return (double(b.X()) - a.X()) * (double(c.Y()) - a.Y()) -
           (double(b.Y()) - a.Y()) * (double(c.X()) - a.X());
}

// The summed area of the triangles (index triples).
inline double TrianglesArea(const std::vector<Wm4::Vector2f>& points,
                            const std::vector<unsigned int>& triangles) {
    double sum = 0;
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
        sum += std::fabs(TwiceSignedArea(points[triangles[i]], points[triangles[i + 1]],
                                         points[triangles[i + 2]])) /
               2;
    }
    return sum;
}

// The area of the triangles' union: each wound counter-clockwise and filled again under the
// non-zero rule. Negative when that fill fails.
inline double TrianglesUnionArea(const std::vector<Wm4::Vector2f>& points,
                                 const std::vector<unsigned int>& triangles) {
    std::vector<Wm4::Vector2f> corners;
    std::vector<unsigned int> segments;
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
        Wm4::Vector2f a = points[triangles[i]], b = points[triangles[i + 1]],
                      c = points[triangles[i + 2]];
        if (TwiceSignedArea(a, b, c) < 0) {
            std::swap(b, c);
        }
        const auto n = static_cast<unsigned int>(corners.size());
        corners.insert(corners.end(), {a, b, c});
        segments.insert(segments.end(), {n, n + 1, n + 1, n + 2, n + 2, n});
    }
    std::vector<Wm4::Vector2f> outPoints;
    std::vector<unsigned int> outTriangles;
    if (!TriangulatePoly(corners, segments, outPoints, outTriangles, TriangulationFillRule::NonZero,
                         true)) {
        return -1;
    }
    return TrianglesArea(outPoints, outTriangles);
}

}  // namespace tq::test
