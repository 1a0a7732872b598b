#include "svg/path/PathVisitorCommandsToPrimitives.h"

#include <cmath>
#include <utility>

namespace tq::svg {

namespace {

using Type = Path::CommandType;

bool isCubic(Type type) {
    return type == Type::CubicBezier || type == Type::CubicBezierRel ||
           type == Type::SmoothCubicBezier || type == Type::SmoothCubicBezierRel;
}

bool isRelative(Type type) {
    return type != Type::ClosePath && (static_cast<unsigned>(type) & 1u) != 0;
}

// Arc flags are true for any non-zero value, NaN included.
bool flag(float value) {
    return value != 0.0f;
}

std::unique_ptr<PathPrimitive> makeCubic(const Wm4::Vector2f& p0, const Wm4::Vector2f& p1,
                                         const Wm4::Vector2f& p2, const Wm4::Vector2f& p3) {
    auto* controlPoints = new Wm4::Vector2f[4]{p0, p1, p2, p3};
    return std::make_unique<PathBezierCubic>(controlPoints);
}

}  // namespace

PathVisitorCommandsToPrimitives::PathVisitorCommandsToPrimitives(
    const std::list<Path::Command>& commands, Callback callback)
    : mCommands(commands), mCallback(std::move(callback)) {}

void PathVisitorCommandsToPrimitives::visit() {
    mCurrentPoint = Wm4::Vector2f::ZERO;
    mSubpathStart = Wm4::Vector2f::ZERO;
    bool startNewRun = true;
    const Path::Command* previous = nullptr;
    for (const Path::Command& command : mCommands) {
        const auto kind = static_cast<std::size_t>(command.type);
        if (kind < std::size(Path::CommandValueCounts) &&
            command.values.size() >= Path::CommandValueCounts[kind]) {
            if (command.type == Type::MoveTo || command.type == Type::MoveToRel) {
                startNewRun = true;
            }
            std::unique_ptr<PathPrimitive> primitive = makePrimitive(command, previous);
            if (primitive) {
                mClosing = command.type == Type::ClosePath;
                mCallback(primitive, startNewRun);
                startNewRun = command.type == Type::ClosePath;
            }
        }
        previous = &command;
    }
}

// Makes the command's primitive (none for a moveto) and moves the current point to its end.
std::unique_ptr<PathPrimitive> PathVisitorCommandsToPrimitives::makePrimitive(
    const Path::Command& command, const Path::Command* previous) {
    const std::vector<float>& d = command.values;
    const Wm4::Vector2f origin = isRelative(command.type) ? mCurrentPoint : Wm4::Vector2f::ZERO;
    const Wm4::Vector2f current = mCurrentPoint;
    std::unique_ptr<PathPrimitive> primitive;
    Wm4::Vector2f end;
    switch (command.type) {
        case Type::MoveTo:
        case Type::MoveToRel:
            mCurrentPoint = origin + Wm4::Vector2f(d[0], d[1]);
            mSubpathStart = mCurrentPoint;
            return nullptr;
        case Type::LineTo:
        case Type::LineToRel:
            end = origin + Wm4::Vector2f(d[0], d[1]);
            primitive = std::make_unique<PathLine>(current, end);
            break;
        case Type::HLineTo:
        case Type::HLineToRel:
            end = Wm4::Vector2f(origin.X() + d[0], current.Y());
            primitive = std::make_unique<PathLine>(current, end);
            break;
        case Type::VLineTo:
        case Type::VLineToRel:
            end = Wm4::Vector2f(current.X(), origin.Y() + d[0]);
            primitive = std::make_unique<PathLine>(current, end);
            break;
        case Type::ClosePath:
            end = mSubpathStart;
            primitive = std::make_unique<PathLine>(current, end);
            break;
        case Type::EllipticalArc:
        case Type::EllipticalArcRel:
            end = origin + Wm4::Vector2f(d[5], d[6]);
            primitive = std::make_unique<PathEllipticalArc>(Wm4::Vector2f(d[0], d[1]), d[2],
                                                            flag(d[3]), flag(d[4]), current, end);
            break;
        case Type::CubicBezier:
        case Type::CubicBezierRel:
            end = origin + Wm4::Vector2f(d[4], d[5]);
            primitive = makeCubic(current, origin + Wm4::Vector2f(d[0], d[1]),
                                  origin + Wm4::Vector2f(d[2], d[3]), end);
            break;
        case Type::SmoothCubicBezier:
        case Type::SmoothCubicBezierRel:
            end = origin + Wm4::Vector2f(d[2], d[3]);
            primitive = makeCubic(current, reflectedControlPoint(command, previous),
                                  origin + Wm4::Vector2f(d[0], d[1]), end);
            break;
    }
    mCurrentPoint = end;
    return primitive;
}

// The first control point of a smooth cubic: the previous cubic record's last control point
// reflected about its end point, computed from the record's numbers as written.
Wm4::Vector2f PathVisitorCommandsToPrimitives::reflectedControlPoint(
    const Path::Command& command, const Path::Command* previous) const {
    if (previous == nullptr || !isCubic(previous->type) || previous->values.size() < 4) {
        return mCurrentPoint;
    }
    const std::vector<float>& u = previous->values;
    const std::size_t n = u.size();
    Wm4::Vector2f p1(2.0f * u[n - 2] - u[n - 4], 2.0f * u[n - 1] - u[n - 3]);
    if (command.type == Type::SmoothCubicBezierRel) {
        p1 += mCurrentPoint;
    }
    return p1;
}

}  // namespace tq::svg
