#include "svg/read/detail/StandardShapes.h"

#include <algorithm>
#include <cmath>

#include "svg/path/PathVisitorCommandsToPrimitives.h"
#include "svg/path/detail/PathData.h"
#include "svg/read/detail/StandardValues.h"

namespace tq::svg::detail {

namespace {

using Type = Path::CommandType;

void push(std::list<Path::Command>& out, Type type, std::initializer_list<float> values) {
    out.push_back({type, std::vector<float>(values)});
}

// A quarter arc of radii (rx, ry), swept clockwise on screen, to (x, y).
void quarterArc(std::list<Path::Command>& out, float rx, float ry, float x, float y) {
    push(out, Type::EllipticalArc, {rx, ry, 0.0f, 0.0f, 1.0f, x, y});
}

}  // namespace

void AppendEllipse(std::list<Path::Command>& out, float cx, float cy, float rx, float ry) {
    if (!(rx > 0.0f) || !(ry > 0.0f)) {
        return;
    }
    push(out, Type::MoveTo, {cx + rx, cy});
    quarterArc(out, rx, ry, cx, cy + ry);
    quarterArc(out, rx, ry, cx - rx, cy);
    quarterArc(out, rx, ry, cx, cy - ry);
    quarterArc(out, rx, ry, cx + rx, cy);
    push(out, Type::ClosePath, {});
}

void AppendRoundedRect(std::list<Path::Command>& out, float x, float y, float width, float height,
                       float rx, float ry) {
    const float right = x + width;
    const float bottom = y + height;
    push(out, Type::MoveTo, {x + rx, y});
    push(out, Type::HLineTo, {right - rx});
    quarterArc(out, rx, ry, right, y + ry);
    push(out, Type::VLineTo, {bottom - ry});
    quarterArc(out, rx, ry, right - rx, bottom);
    push(out, Type::HLineTo, {x + rx});
    quarterArc(out, rx, ry, x, bottom - ry);
    push(out, Type::VLineTo, {y + ry});
    quarterArc(out, rx, ry, x + rx, y);
    push(out, Type::ClosePath, {});
}

void AppendPolyline(std::list<Path::Command>& out, const std::vector<float>& coordinates,
                    bool closed) {
    const std::size_t pairs = coordinates.size() / 2;
    for (std::size_t i = 0; i < pairs; ++i) {
        push(out, i == 0 ? Type::MoveTo : Type::LineTo,
             {coordinates[2 * i], coordinates[2 * i + 1]});
    }
    if (closed && pairs > 0) {
        push(out, Type::ClosePath, {});
    }
}

Wm4::Matrix3f ViewBoxTransform(const BoundingBox& viewBox, float x, float y, float width,
                               float height, std::string_view preserveAspectRatio) {
    const float boxWidth = viewBox.getWidth();
    const float boxHeight = viewBox.getHeight();
    Wm4::Matrix3f m = Wm4::Matrix3f::IDENTITY;
    if (!(boxWidth > 0.0f) || !(boxHeight > 0.0f) || !(width > 0.0f) || !(height > 0.0f)) {
        m(0, 2) = x;
        m(1, 2) = y;
        return m;
    }
    std::string_view align = TrimSpace(preserveAspectRatio);
    bool slice = false;
    if (const std::size_t space = align.find(' '); space != std::string_view::npos) {
        slice = TrimSpace(align.substr(space)) == "slice";
        align = align.substr(0, space);
    }
    float sx = width / boxWidth;
    float sy = height / boxHeight;
    float fx = 0.5f;  // where the box sits in the spare room: 0 min, 0.5 mid, 1 max
    float fy = 0.5f;
    if (align != "none") {
        if (align.size() == 8 && align[0] == 'x' && align[4] == 'Y') {
            const auto factor = [](std::string_view part) {
                return part == "Min" ? 0.0f : part == "Max" ? 1.0f : 0.5f;
            };
            fx = factor(align.substr(1, 3));
            fy = factor(align.substr(5, 3));
        }
        sx = sy = slice ? std::max(sx, sy) : std::min(sx, sy);
    }
    m(0, 0) = sx;
    m(1, 1) = sy;
    m(0, 2) = x + (width - boxWidth * sx) * fx - viewBox.min.X() * sx;
    m(1, 2) = y + (height - boxHeight * sy) * fy - viewBox.min.Y() * sy;
    return m;
}

Wm4::Matrix3f Translation(float x, float y) {
    Wm4::Matrix3f m = Wm4::Matrix3f::IDENTITY;
    m(0, 2) = x;
    m(1, 2) = y;
    return m;
}

void AppendTransform(ItemInterface& item, const Wm4::Matrix3f& m) {
    const Wm4::Matrix3f combined = item.getTransform() ? *item.getTransform() * m : m;
    if (combined != Wm4::Matrix3f::IDENTITY) {
        item.editTransform() = combined;
    } else {
        item.editTransform().reset();
    }
}

bool ParseViewBox(std::string_view text, BoundingBox& box) {
    std::vector<float> numbers;
    if (!ReadStandardNumbers(text, numbers) || numbers.size() != 4 || !(numbers[2] >= 0.0f) ||
        !(numbers[3] >= 0.0f) || !std::isfinite(numbers[0] + numbers[2]) ||
        !std::isfinite(numbers[1] + numbers[3])) {
        return false;
    }
    box = BoundingBox(Wm4::Vector2f(numbers[0], numbers[1]),
                      Wm4::Vector2f(numbers[0] + numbers[2], numbers[1] + numbers[3]));
    return true;
}

double PathLength(const std::list<Path::Command>& commands) {
    constexpr int kChords = 64;
    double length = 0.0;
    const auto along = [&](const auto& position) {
        Wm4::Vector2f previous = position(0.0f);
        for (int i = 1; i <= kChords; ++i) {
            const Wm4::Vector2f next = position(static_cast<float>(i) / kChords);
            length += (next - previous).Length();
            previous = next;
        }
    };
    PathVisitorCommandsToPrimitives visitor(
        commands, [&](std::unique_ptr<PathPrimitive>& primitive, bool) {
            if (primitive->type == PathPrimitiveType::BezierCubicPrimitive) {
                const auto& curve = static_cast<const PathBezierCubic&>(*primitive).curve;
                along([&](float t) { return curve.GetPosition(t); });
            } else if (primitive->type == PathPrimitiveType::ArcPrimitive &&
                       static_cast<const PathEllipticalArc&>(*primitive).deltaAngle != 0.0f) {
                const auto& arc = static_cast<const PathEllipticalArc&>(*primitive);
                const float rotation = arc.rotation * 3.14159265f / 180.0f;
                const float c = std::cos(rotation);
                const float s = std::sin(rotation);
                along([&](float t) {
                    const float angle = arc.startAngle + t * arc.deltaAngle;
                    const float x = arc.radii.X() * std::cos(angle);
                    const float y = arc.radii.Y() * std::sin(angle);
                    return arc.center + Wm4::Vector2f(c * x - s * y, s * x + c * y);
                });
            } else if (primitive->type == PathPrimitiveType::LinePrimitive) {
                const auto& line = static_cast<const PathLine&>(*primitive);
                length += (line.end - line.start).Length();
            } else {  // an arc too flat to have a centre is drawn as its chord
                const auto& arc = static_cast<const PathEllipticalArc&>(*primitive);
                length += (arc.end - arc.start).Length();
            }
        });
    visitor.visit();
    return length;
}

}  // namespace tq::svg::detail
