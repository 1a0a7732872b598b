// Strokes of random paths under random pens, checked for what must hold of any stroke: indices
// in range, finite points, an output bounded by the input, and triangles that never overlap (their
// summed area is the area of their union).
//
// Input bytes:
//   0       cap (bits 0-1), join (bits 2-4), non-scaling (bit 5), dashes (bit 6)
//   1       the pen's width: a signed power of two, or a special value (0, tiny, huge, NaN)
//   2       the miter limit, from 0 to 25.5 in tenths
//   3       the transform: identity, scales, a rotation, a skew, singular, huge or NaN
//   4       the tolerance, 2^-(byte % 10) units
//   5       the coordinates' scale, a signed power of two (-8 to 7)
//   6..9    up to four dash lengths and the offset, in quarters (dashes only)
//   rest    commands, each an opcode byte (M, L, C, Q, A, Z) and its small integer operands
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "svg/tqSvg.h"

#include "TriangleArea.h"

namespace {

using namespace tq::svg;
using Wm4::Matrix3f;
using Wm4::Vector2f;

// Far more than any input here can make: 64 commands, arcs capped by the stroker's budget.
constexpr std::size_t kMaxTriangles = std::size_t(1) << 24;
constexpr std::size_t kMaxCheckedTriangles = 20000;

void check(bool condition, const char* what, const std::string& d) {
    if (!condition) {
        std::fprintf(stderr, "fuzz_stroke: %s\npath: %s\n", what, d.c_str());
        std::abort();
    }
}

float width(std::uint8_t byte) {
    switch (byte) {
        case 0xF0:
            return 0.0f;
        case 0xF1:
            return 1e-30f;
        case 0xF2:
            return 1e30f;
        case 0xF3:
            return std::numeric_limits<float>::quiet_NaN();
        case 0xF4:
            return std::numeric_limits<float>::infinity();
        case 0xF5:
            return -1.0f;
        default:
            return std::ldexp(1.0f, int(byte % 24) - 12);
    }
}

Matrix3f transform(std::uint8_t byte) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    switch (byte % 8) {
        case 1:
            return Matrix3f(3, 0, 5, 0, 0.25f, -2, 0, 0, 1);
        case 2:
            return Matrix3f(0.8660254f, -0.5f, 7, 0.5f, 0.8660254f, -3, 0, 0, 1);
        case 3:
            return Matrix3f(1, 2, 0, 0, 1, 0, 0, 0, 1);
        case 4:
            return Matrix3f(1, 1, 0, 1, 1, 0, 0, 0, 1);  // singular
        case 5:
            return Matrix3f(1e18f, 0, 0, 0, 1e18f, 0, 0, 0, 1);
        case 6:
            return Matrix3f(nan, 0, 0, 0, 1, 0, 0, 0, 1);
        default:
            return Matrix3f::IDENTITY;
    }
}

// The path data that the command bytes describe, operands as small integers times the scale.
std::string pathData(const std::uint8_t* data, std::size_t size, float scale) {
    static const char kOps[] = "MLCQAZ";
    static const int kOperands[] = {2, 2, 6, 4, 7, 0};
    std::string d;
    std::size_t pos = 0;
    for (int commands = 0; pos < size && commands < 64; ++commands) {
        const int op = data[pos++] % 6;
        d += kOps[op];
        for (int k = 0; k < kOperands[op]; ++k) {
            const int value = pos < size ? int(static_cast<std::int8_t>(data[pos++])) : 0;
            // The arc's flags are 0 or 1.
            const bool flag = op == 4 && (k == 3 || k == 4);
            d += ' ';
            d += flag ? std::to_string(value & 1) : std::to_string(float(value) * scale);
        }
        d += ' ';
    }
    return d;
}

// What rounding alone may move the area by: every edge shifted by a few steps of the float
// points' and the triangulator's grid across the extent, which matters for pens about as thin
// as those steps.
double roundingSlack(const std::vector<Vector2f>& points, const std::vector<unsigned int>& t) {
    double minX = std::numeric_limits<double>::infinity(), minY = minX, maxX = -minX, maxY = -minX;
    double magnitude = 0;
    for (const Vector2f& p : points) {
        minX = std::min(minX, double(p.X()));
        maxX = std::max(maxX, double(p.X()));
        minY = std::min(minY, double(p.Y()));
        maxY = std::max(maxY, double(p.Y()));
        magnitude = std::max({magnitude, std::fabs(double(p.X())), std::fabs(double(p.Y()))});
    }
    const double step = std::ldexp(std::max({maxX - minX, maxY - minY, magnitude}), -22);
    double perimeters = 0;
    for (std::size_t i = 0; i + 2 < t.size(); i += 3) {
        for (int k = 0; k < 3; ++k) {
            const Vector2f& a = points[t[i + k]];
            const Vector2f& b = points[t[i + (k + 1) % 3]];
            perimeters += std::hypot(double(b.X()) - a.X(), double(b.Y()) - a.Y());
        }
    }
    return 4 * step * perimeters;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kHeader = 10;
    if (size < kHeader) {
        return 0;
    }
    static const bool started = initializeTqSvg();
    if (!started) {
        std::abort();
    }
    const std::string d =
        pathData(data + kHeader, size - kHeader, std::ldexp(1.0f, int(data[5] % 16) - 8));
    auto path = std::make_shared<Path>();
    std::string error;
    if (!ConvertPathStringToCommands(d, path->commands, &error)) {
        return 0;
    }
    RenderingProperties& pen = path->editProperties();
    pen.fill = "none";
    pen.stroke = "black";
    pen.strokeWidth = width(data[1]);
    pen.strokeLinecap = static_cast<LineCap>(data[0] % 3);
    pen.strokeLinejoin = static_cast<LineJoin>((data[0] >> 2) % 5);
    pen.strokeMiterlimit = float(data[2]) / 10.0f;
    if (data[0] & 0x20) {
        pen.vectorEffect = VectorEffect::NonScalingStroke;
    }
    if (data[0] & 0x40) {
        pen.strokeDasharray.emplace();
        for (int k = 6; k < 9; ++k) {
            pen.strokeDasharray->emplace_back(float(static_cast<std::int8_t>(data[k])) / 4.0f,
                                              Unit::None);
        }
        pen.strokeDashoffset = float(static_cast<std::int8_t>(data[9])) / 4.0f;
    }
    path->editTransform() = transform(data[3]);
    const float tolerance = std::ldexp(1.0f, -int(data[4] % 10));

    SegmenterVisitor visitor(*path, SegmentOptions{tolerance, true});
    for (const auto& primitive : visitor.getSegmentedPrimitives()) {
        const std::vector<Vector2f>& points = primitive->strokeTrianglePoints;
        const std::vector<unsigned int>& triangles = primitive->strokeTriangleIndices;
        check(triangles.size() % 3 == 0, "an index count that is not a multiple of 3", d);
        check(triangles.size() / 3 <= kMaxTriangles, "more triangles than the input allows", d);
        for (unsigned int index : triangles) {
            check(index < points.size(), "an index out of range", d);
        }
        for (const Vector2f& p : points) {
            check(std::isfinite(p.X()) && std::isfinite(p.Y()), "a point not finite", d);
        }
        const double sum = tq::test::TrianglesArea(points, triangles);
        // The check triangulates every triangle again: done where that stays quick.
        if (triangles.empty() || triangles.size() / 3 > kMaxCheckedTriangles ||
            !std::isfinite(sum) || sum > 1e30) {
            continue;
        }
        const double covered = tq::test::TrianglesUnionArea(points, triangles);
        check(covered >= 0, "the triangles do not triangulate again", d);
        check(std::fabs(covered - sum) <= 1e-4 * sum + roundingSlack(points, triangles),
              "triangles overlap", d);
    }
    return 0;
}
