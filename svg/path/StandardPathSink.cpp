#include "svg/path/detail/StandardPathSink.h"

#include <algorithm>
#include <cmath>

#include "svg/path/PathPrimitive.h"
#include "svg/path/detail/PathData.h"
#include "svg/path/detail/PathDataScanner.h"

namespace tq::svg::detail {

namespace {

using Type = Path::CommandType;
using Vec = Wm4::Vector2f;

bool isRelative(char letter) {
    return letter >= 'a' && letter <= 'z';
}

// Radii scaled up so that the ellipse reaches from `start` to `end`, as SVG corrects radii that
// are too small; radii already large enough are kept.
void fitRadii(const Vec& start, const Vec& end, float rotationDegrees, float& rx, float& ry) {
    const double phi = double(rotationDegrees) * 0.017453292519943295;
    const double c = std::cos(phi);
    const double s = std::sin(phi);
    const double dx = (double(start.X()) - double(end.X())) * 0.5;
    const double dy = (double(start.Y()) - double(end.Y())) * 0.5;
    const double x1 = c * dx + s * dy;
    const double y1 = -s * dx + c * dy;
    const double lambda = (x1 * x1) / (double(rx) * rx) + (y1 * y1) / (double(ry) * ry);
    if (lambda > 1.0) {
        const double scale = std::sqrt(lambda);
        rx = static_cast<float>(rx * scale);
        ry = static_cast<float>(ry * scale);
    }
}

// The middle of the arc by SVG's end-point to centre conversion in double precision, when the
// geometry's single-precision conversion of the same arc sweeps a visibly different angle; false
// when it draws the arc well. An arc whose end lies a hair from its start, a common way to
// write a whole circle, is the case: in floats its sweep rounds to nothing.
bool middleOfMisdrawnArc(const Vec& start, const Vec& end, float rx, float ry, float rotation,
                         bool largeArc, bool sweep, Vec& middle) {
    constexpr double kPi = 3.14159265358979323846;
    // Only a large arc whose chord is short beside its radii sweeps nearly a whole turn, where
    // single precision loses the sweep; every other arc is left at once.
    const Vec chord = end - start;
    const float radius = std::max(rx, ry);
    if (start == end || !largeArc || !(chord.SquaredLength() < 1e-4f * radius * radius)) {
        return false;
    }
    const PathEllipticalArc single(Vec(rx, ry), rotation, largeArc, sweep, start, end);
    const double phi = double(rotation) * kPi / 180.0;
    const double c = std::cos(phi);
    const double s = std::sin(phi);
    const double dx = (double(start.X()) - double(end.X())) * 0.5;
    const double dy = (double(start.Y()) - double(end.Y())) * 0.5;
    const double x1 = c * dx + s * dy;
    const double y1 = c * dy - s * dx;
    const double a = double(rx);
    const double b = double(ry);
    const double q =
        (a * a * b * b - a * a * y1 * y1 - b * b * x1 * x1) / (a * a * y1 * y1 + b * b * x1 * x1);
    double k = q > 0.0 ? std::sqrt(q) : 0.0;
    if (largeArc == sweep) {
        k = -k;
    }
    const double cxp = k * a * y1 / b;
    const double cyp = -k * b * x1 / a;
    const double startAngle = std::atan2((y1 - cyp) / b, (x1 - cxp) / a);
    double delta = std::atan2((-y1 - cyp) / b, (-x1 - cxp) / a) - startAngle;
    if (sweep && delta < 0.0) {
        delta += 2.0 * kPi;
    } else if (!sweep && delta > 0.0) {
        delta -= 2.0 * kPi;
    }
    if (!std::isfinite(delta) || std::fabs(delta - double(single.deltaAngle)) < 1e-3) {
        return false;
    }
    const double t = startAngle + delta / 2.0;
    const double mx = a * std::cos(t);
    const double my = b * std::sin(t);
    const double cx = c * cxp - s * cyp + (double(start.X()) + double(end.X())) * 0.5;
    const double cy = s * cxp + c * cyp + (double(start.Y()) + double(end.Y())) * 0.5;
    middle =
        Vec(static_cast<float>(cx + c * mx - s * my), static_cast<float>(cy + s * mx + c * my));
    return std::isfinite(middle.X()) && std::isfinite(middle.Y());
}

}  // namespace

void StandardPathSink::begin(char letter) {
    mLetter = letter;
    mFirstGroup = true;
    if (letter == 'Z' || letter == 'z') {
        push(Type::ClosePath, {});
        mCurrent = mSubpathStart;
        mPrevious = Previous::Other;
    }
}

void StandardPathSink::push(Path::CommandType type, std::initializer_list<float> values) {
    mOut.push_back({type, std::vector<float>(values)});
}

void StandardPathSink::moveTo(bool relative, float x, float y, bool first) {
    const Vec end = absolute(relative, Vec(x, y));
    if (first) {
        push(relative ? Type::MoveToRel : Type::MoveTo, {x, y});
        mSubpathStart = end;
    } else {
        push(relative ? Type::LineToRel : Type::LineTo, {x, y});
    }
    mCurrent = end;
}

// Points are absolute, or offsets from the current point for a relative command.
void StandardPathSink::cubic(bool relative, Vec p1, Vec p2, Vec end) {
    push(relative ? Type::CubicBezierRel : Type::CubicBezier,
         {p1.X(), p1.Y(), p2.X(), p2.Y(), end.X(), end.Y()});
    mControl = absolute(relative, p2);
    mCurrent = absolute(relative, end);
    mPrevious = Previous::Cubic;
}

// The exact cubic of a quadratic: its control points lie two thirds of the way from each end
// towards the quadratic's control point.
void StandardPathSink::quadratic(bool relative, Vec control, Vec end) {
    constexpr float kTwoThirds = 2.0f / 3.0f;
    const Vec start = relative ? Vec::ZERO : mCurrent;
    push(relative ? Type::CubicBezierRel : Type::CubicBezier,
         {start.X() + kTwoThirds * (control.X() - start.X()),
          start.Y() + kTwoThirds * (control.Y() - start.Y()),
          end.X() + kTwoThirds * (control.X() - end.X()),
          end.Y() + kTwoThirds * (control.Y() - end.Y()), end.X(), end.Y()});
    mControl = absolute(relative, control);
    mCurrent = absolute(relative, end);
    mPrevious = Previous::Quadratic;
}

void StandardPathSink::arc(bool relative, const float* v) {
    const Vec end = absolute(relative, Vec(v[5], v[6]));
    float rx = std::fabs(v[0]);
    float ry = std::fabs(v[1]);
    if (rx == 0.0f || ry == 0.0f) {
        push(relative ? Type::LineToRel : Type::LineTo, {v[5], v[6]});
    } else {
        fitRadii(mCurrent, end, v[2], rx, ry);
        Vec middle;
        if (middleOfMisdrawnArc(mCurrent, end, rx, ry, v[2], v[3] != 0.0f, v[4] != 0.0f, middle)) {
            // Two halves, each of which the geometry draws well.
            push(Type::EllipticalArc, {rx, ry, v[2], 0.0f, v[4], middle.X(), middle.Y()});
            push(Type::EllipticalArc, {rx, ry, v[2], 0.0f, v[4], end.X(), end.Y()});
        } else {
            push(relative ? Type::EllipticalArcRel : Type::EllipticalArc,
                 {rx, ry, v[2], v[3], v[4], v[5], v[6]});
        }
    }
    mCurrent = end;
}

void StandardPathSink::group(const float* v, int) {
    const bool relative = isRelative(mLetter);
    const bool first = mFirstGroup;
    mFirstGroup = false;
    // The control point a smooth curve mirrors: the last control point of a curve of its own
    // kind reflected about the current point, or the current point itself; as an offset from
    // the current point for a relative command.
    const Previous previous = mPrevious;
    const auto mirrored = [&](Previous kind) {
        const Vec point = previous == kind ? mCurrent * 2.0f - mControl : mCurrent;
        return relative ? point - mCurrent : point;
    };
    mPrevious = Previous::Other;
    switch (mLetter) {
        case 'M':
        case 'm':
            moveTo(relative, v[0], v[1], first);
            break;
        case 'L':
        case 'l':
            push(relative ? Type::LineToRel : Type::LineTo, {v[0], v[1]});
            mCurrent = absolute(relative, Vec(v[0], v[1]));
            break;
        case 'H':
        case 'h':
            push(relative ? Type::HLineToRel : Type::HLineTo, {v[0]});
            mCurrent = Vec(relative ? mCurrent.X() + v[0] : v[0], mCurrent.Y());
            break;
        case 'V':
        case 'v':
            push(relative ? Type::VLineToRel : Type::VLineTo, {v[0]});
            mCurrent = Vec(mCurrent.X(), relative ? mCurrent.Y() + v[0] : v[0]);
            break;
        case 'C':
        case 'c':
            cubic(relative, Vec(v[0], v[1]), Vec(v[2], v[3]), Vec(v[4], v[5]));
            break;
        case 'S':
        case 's':
            cubic(relative, mirrored(Previous::Cubic), Vec(v[0], v[1]), Vec(v[2], v[3]));
            break;
        case 'Q':
        case 'q':
            quadratic(relative, Vec(v[0], v[1]), Vec(v[2], v[3]));
            break;
        case 'T':
        case 't':
            quadratic(relative, mirrored(Previous::Quadratic), Vec(v[0], v[1]));
            break;
        case 'A':
        case 'a':
            arc(relative, v);
            break;
        default:
            break;
    }
}

bool ReadStandardPathData(std::string_view text, std::list<Path::Command>& out,
                          std::string& error) {
    StandardPathSink sink(out);
    PathDataScanner<StandardGrammar, StandardPathSink> scanner(text, sink);
    const bool ok = scanner.scan();
    error = scanner.error();
    return ok;
}

namespace {

struct NoCommands {
    void begin(char) {}
    void group(const float*, int) {}
    void end() {}
    void abandon() {}
};

}  // namespace

bool ReadStandardNumbers(std::string_view text, std::vector<float>& out) {
    NoCommands sink;
    return PathDataScanner<StandardGrammar, NoCommands>(text, sink).scanNumbers(out);
}

}  // namespace tq::svg::detail
