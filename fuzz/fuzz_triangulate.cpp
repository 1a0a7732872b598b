// Triangulation of arbitrary segment soups, under every fill rule and option, checked against what
// holds for any triangulation: an answer without a crash, well-formed output on success, and the
// documented refusals.
//
// Input bytes:
//   0       flags: bit 0 indices taken as they are (may be out of range) instead of modulo the
//           point count; bit 1 one index more (an odd count); bit 2 output arrays not empty
//   1       scale of the small integer coordinates, as a signed power of two
//   2       number of points
//   ...     the points' coordinates, x then y, each a tag byte and its payload:
//             0x00-0x7F  the small integer tag - 64, times the scale
//             0x80-0xBF  the next 4 bytes as the bits of a float (little-endian)
//             0xC0-0xDF  a special value: zero, limits, infinities, NaN, ...
//             0xE0-0xFF  the same value as an earlier coordinate
//   rest    the segments' indices, one byte each (at most 512)
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include "svg/tqSvg.h"

namespace {

using Point = Wm4::Vector2f;

void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "fuzz_triangulate: %s\n", what);
        std::abort();
    }
}

// Zeros, small fractions, the float limits, infinities, NaNs, and the integers where floats stop
// being exact.
float special(unsigned i) {
    using L = std::numeric_limits<float>;
    // clang-format off
    static const float values[32] = {
        0.0f, -0.0f, 1.0f, -1.0f, 0.5f, 1.0f / 3.0f, 0.1f, 1e-7f,
        L::min(), -L::min(), L::denorm_min(), -L::denorm_min(),
        L::max(), -L::max(), L::infinity(), -L::infinity(), L::quiet_NaN(), -L::quiet_NaN(),
        1e-20f, 1e20f, -1e20f, 1e38f, -3e38f, 1e-38f,
        16777216.0f, 16777215.0f, 67108864.0f, 1.0f - L::epsilon() / 2, 1.0f + L::epsilon(),
        65535.0f, -4096.0f, 1e6f};
    // clang-format on
    return values[i % 32];
}

struct Input {
    bool rawIndices = false;
    bool prefill = false;
    std::vector<Point> points;
    std::vector<unsigned int> indices;
};

Input decode(const std::uint8_t* data, std::size_t size) {
    Input input;
    if (size < 3) {
        return input;
    }
    const std::uint8_t flags = data[0];
    input.rawIndices = flags & 1;
    input.prefill = flags & 4;
    const float scale = std::ldexp(1.0f, static_cast<std::int8_t>(data[1]));
    const std::size_t pointCount = data[2];
    std::size_t pos = 3;
    std::vector<float> coordinates;
    while (coordinates.size() < 2 * pointCount && pos < size) {
        const std::uint8_t tag = data[pos++];
        float value = 0;
        if (tag < 0x80) {
            value = float(int(tag) - 64) * scale;
        } else if (tag < 0xC0) {
            std::uint32_t bits = 0;
            for (int i = 0; i < 4 && pos < size; ++i) {
                bits |= std::uint32_t(data[pos++]) << (8 * i);
            }
            std::memcpy(&value, &bits, sizeof value);
        } else if (tag < 0xE0) {
            value = special(tag);
        } else if (!coordinates.empty()) {
            value = coordinates[(tag - 0xE0u) % coordinates.size()];
        }
        coordinates.push_back(value);
    }
    for (std::size_t i = 0; i + 1 < coordinates.size(); i += 2) {
        input.points.emplace_back(coordinates[i], coordinates[i + 1]);
    }
    const std::size_t n = input.points.size();
    for (; pos < size && input.indices.size() < 512; ++pos) {
        input.indices.push_back((input.rawIndices || n == 0) ? data[pos] : data[pos] % n);
    }
    const bool odd = flags & 2;
    if (input.indices.size() % 2 != (odd ? 1u : 0u)) {
        input.indices.push_back(0);
    }
    return input;
}

struct Output {
    bool ok = false;
    std::vector<Point> points;
    std::vector<unsigned int> indices;
};

bool sameBits(const std::vector<Point>& a, const std::vector<Point>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Point)) == 0);
}

// Twice the area covered by the triangles appended after the first `base` indices.
double doubleArea(const Output& out, std::size_t base) {
    double area = 0;
    for (std::size_t i = base; i + 2 < out.indices.size(); i += 3) {
        const Point& a = out.points[out.indices[i]];
        const Point& b = out.points[out.indices[i + 1]];
        const Point& c = out.points[out.indices[i + 2]];
        area += std::abs((double(b.X()) - a.X()) * (double(c.Y()) - a.Y()) -
                         (double(b.Y()) - a.Y()) * (double(c.X()) - a.X()));
    }
    return area;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Input input = decode(data, size);
    bool valid = input.indices.size() % 2 == 0;
    for (unsigned int index : input.indices) {
        valid = valid && index < input.points.size() && std::isfinite(input.points[index].X()) &&
                std::isfinite(input.points[index].Y());
    }
    // What the caller had in the output arrays stays, and new triangles index past it.
    Output before;
    if (input.prefill) {
        before.points = {Point(7, 7), Point(8, 8)};
        before.indices = {1, 0, 1};
    }

    Output results[3][2];
    for (int rule = 0; rule < 3; ++rule) {
        for (int skip = 0; skip < 2; ++skip) {
            Output& out = results[rule][skip];
            out = before;
            out.ok = tq::TriangulatePoly(input.points, input.indices, out.points, out.indices,
                                         static_cast<tq::TriangulationFillRule>(rule), skip != 0);
            check(std::equal(before.points.begin(), before.points.end(), out.points.begin()) &&
                      std::equal(before.indices.begin(), before.indices.end(), out.indices.begin()),
                  "the output arrays' previous contents changed");
            if (!valid) {
                check(!out.ok,
                      "accepted an odd count, an index out of range or a point not finite");
            }
            if (input.indices.size() % 2 != 0) {
                check(out.points.size() == before.points.size() &&
                          out.indices.size() == before.indices.size(),
                      "appended output for an odd index count");
            }
            if (!out.ok) {
                continue;
            }
            // Each trapezoid: four fresh points, two horizontal sides, two triangles.
            const std::size_t points = out.points.size() - before.points.size();
            const std::size_t indices = out.indices.size() - before.indices.size();
            check(points % 4 == 0 && indices % 6 == 0 && points / 4 == indices / 6,
                  "the output is not made of quadruples of points with six indices each");
            for (std::size_t t = 0; t < points / 4; ++t) {
                const auto b = static_cast<unsigned int>(before.points.size() + 4 * t);
                const unsigned int* i = out.indices.data() + before.indices.size() + 6 * t;
                check(i[0] == b && i[1] == b + 1 && i[2] == b + 3 && i[3] == b + 1 &&
                          i[4] == b + 3 && i[5] == b + 2,
                      "a trapezoid's triangles do not use its own four points");
                const Point* p = out.points.data() + b;
                for (int k = 0; k < 4; ++k) {
                    check(std::isfinite(p[k].X()) && std::isfinite(p[k].Y()),
                          "an output point is not finite");
                }
                check(p[0].Y() == p[1].Y() && p[2].Y() == p[3].Y() && p[0].Y() != p[3].Y(),
                      "a trapezoid's sides are not two distinct horizontals");
            }
        }
    }

    // The same call gives the same triangles.
    Output again = before;
    again.ok = tq::TriangulatePoly(input.points, input.indices, again.points, again.indices,
                                   tq::TriangulationFillRule::NonZero, true);
    const Output& first = results[0][1];
    check(again.ok == first.ok && again.indices == first.indices &&
              sameBits(again.points, first.points),
          "two equal calls gave different results");

    // Odd winding numbers are non-zero, and every rule keeps less than keeping everything.
    for (int skip = 0; skip < 2; ++skip) {
        if (results[0][skip].ok && results[1][skip].ok && results[2][skip].ok) {
            const std::size_t base = before.indices.size();
            const double evenOdd = doubleArea(results[1][skip], base);
            const double nonZero = doubleArea(results[0][skip], base);
            const double all = doubleArea(results[2][skip], base);
            const double tolerance = 1e-4 * all;
            check(evenOdd <= nonZero + tolerance && nonZero <= all + tolerance,
                  "the even-odd area exceeds the non-zero area, or that the whole frame's");
        }
    }
    return 0;
}
