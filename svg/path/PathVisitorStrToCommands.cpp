#include "svg/path/PathVisitorStrToCommands.h"

namespace tq::svg {

namespace {

struct Kind {
    Path::CommandType type;
    std::size_t count;
};

bool kindOfLetter(char letter, Kind& kind) {
    using T = Path::CommandType;
    switch (letter) {
        case 'M':
            kind = {T::MoveTo, 2};
            return true;
        case 'm':
            kind = {T::MoveToRel, 2};
            return true;
        case 'L':
            kind = {T::LineTo, 2};
            return true;
        case 'l':
            kind = {T::LineToRel, 2};
            return true;
        case 'A':
            kind = {T::EllipticalArc, 7};
            return true;
        case 'a':
            kind = {T::EllipticalArcRel, 7};
            return true;
        case 'H':
            kind = {T::HLineTo, 1};
            return true;
        case 'h':
            kind = {T::HLineToRel, 1};
            return true;
        case 'V':
            kind = {T::VLineTo, 1};
            return true;
        case 'v':
            kind = {T::VLineToRel, 1};
            return true;
        case 'C':
            kind = {T::CubicBezier, 6};
            return true;
        case 'c':
            kind = {T::CubicBezierRel, 6};
            return true;
        case 'S':
            kind = {T::SmoothCubicBezier, 4};
            return true;
        case 's':
            kind = {T::SmoothCubicBezierRel, 4};
            return true;
        case 'Z':
        case 'z':
            kind = {T::ClosePath, 0};
            return true;
        default:
            return false;
    }
}

}  // namespace

PathVisitorStrToCommands::PathVisitorStrToCommands(const std::string& text,
                                                   std::list<Path::Command>& out)
    : mTokens(text,
              [this](char letter, std::vector<float>&& numbers) {
                  visitorCallback(letter, std::move(numbers));
              }),
      mOut(out) {}

void PathVisitorStrToCommands::visitorCallback(char letter, std::vector<float>&& numbers) {
    Kind kind;
    if (!kindOfLetter(letter, kind)) {
        return;
    }
    if (kind.count == 0) {
        if (numbers.empty()) {
            mOut.push_back({kind.type, {}});
        }
        return;
    }
    if (numbers.size() == kind.count) {
        mOut.push_back({kind.type, std::move(numbers)});
        return;
    }
    Path::CommandType type = kind.type;
    for (std::size_t i = 0; i + kind.count <= numbers.size(); i += kind.count) {
        mOut.push_back({type, std::vector<float>(
                                  numbers.begin() + static_cast<std::ptrdiff_t>(i),
                                  numbers.begin() + static_cast<std::ptrdiff_t>(i + kind.count))});
        if (type == Path::CommandType::MoveTo) {
            type = Path::CommandType::LineTo;
        } else if (type == Path::CommandType::MoveToRel) {
            type = Path::CommandType::LineToRel;
        }
    }
}

bool ConvertPathStringToCommands(const std::string& text, std::list<Path::Command>& out,
                                 std::string* error) {
    PathVisitorStrToCommands visitor(text, out);
    const bool ok = visitor.visit();
    if (!ok && error != nullptr) {
        *error = visitor.getErrorString();
    }
    return ok;
}

}  // namespace tq::svg
