#include "svg/path/PathBuilder.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include <Wm4Foundation/Wm4Math.h>
#include <tqSystem/tqStringUtils.h>

namespace tq::svg {

namespace {

using T = Path::CommandType;
using Math = Wm4::Math<float>;

// Characters that `value` takes in path data: its shortest text, plus the separator that a
// number needs before it unless it starts with a minus sign. The text fits the string's own
// buffer, so measuring does not allocate.
std::size_t writtenLength(float value) {
    const std::string text =
        tqStringUtils::fromFloat(value, 20, tqStringUtils::FloatFormat::Compact);
    return text.size() + (!text.empty() && text[0] != '-' ? 1 : 0);
}

bool relativeIsShorter(const Wm4::Vector2f& relative, const Wm4::Vector2f& absolute) {
    return writtenLength(relative.X()) + writtenLength(relative.Y()) <
           writtenLength(absolute.X()) + writtenLength(absolute.Y());
}

Wm4::Vector2f pointAtAngle(const Wm4::Vector2f& center, const Wm4::Vector2f& radii, float angle) {
    return Wm4::Vector2f(std::cos(angle) * radii.X() + center.X(),
                         std::sin(angle) * radii.Y() + center.Y());
}

// Within 0.01 of a whole turn. In double, where the difference of two floats is exact, so that the
// answer near the threshold does not hinge on how a float subtraction rounds.
bool spansFullTurn(float startAngle, float endAngle) {
    const double span = std::fabs(static_cast<double>(endAngle) - static_cast<double>(startAngle));
    return span + 0.01 > static_cast<double>(Math::TWO_PI);
}

float squaredDistance(const Wm4::Vector2f& a, const Wm4::Vector2f& b) {
    return (a - b).SquaredLength();
}

// A copy of a pending shape: the builder makes only its three kinds.
std::unique_ptr<PathBuilder::PrimitiveInterface> copyOf(
    const PathBuilder::PrimitiveInterface& primitive) {
    switch (primitive.type) {
        case PathBuilder::PrimitiveInterface::LineType:
            return std::make_unique<PathBuilder::Line>(
                static_cast<const PathBuilder::Line&>(primitive));
        case PathBuilder::PrimitiveInterface::EllipseType:
            return std::make_unique<PathBuilder::Ellipse>(
                static_cast<const PathBuilder::Ellipse&>(primitive));
        default:
            return std::make_unique<PathBuilder::SegmentList>(
                static_cast<const PathBuilder::SegmentList&>(primitive));
    }
}

}  // namespace

// ---- Shapes ----

PathBuilder::Line::Line(const Wm4::Vector2f& from, const Wm4::Vector2f& to)
    : PrimitiveInterface(LineType), start(from), end(to) {}

void PathBuilder::Line::write(PathBuilder& builder) const {
    builder.writeLineTo(getEndPoint());
}

PathBuilder::Ellipse::Ellipse(const Wm4::Vector2f& ellipseCenter, const Wm4::Vector2f& ellipseRadii,
                              float start, float end)
    : PrimitiveInterface(EllipseType),
      center(ellipseCenter),
      radii(ellipseRadii),
      startAngle(start),
      endAngle(end),
      full(spansFullTurn(start, end)) {
    // A full ellipse starts and ends at angle 0 whatever its angles.
    startPoint = pointAtAngle(center, radii, full ? 0.0f : startAngle);
    endPoint = full ? startPoint : pointAtAngle(center, radii, endAngle);
}

void PathBuilder::Ellipse::write(PathBuilder& builder) const {
    if (full) {
        // One arc cannot end where it starts: a quarter, then the other three quarters. The
        // direction is fixed, reversed or not, as a closed ellipse has no end to walk from.
        const Wm4::Vector2f quarter = pointAtAngle(center, radii, Math::HALF_PI);
        builder.writeEllipticalArc(radii, 0.0f, false, true, quarter);
        builder.writeEllipticalArc(radii, 0.0f, true, true, startPoint);
        return;
    }
    const bool largeArc = endAngle - startAngle > Math::WM4_PI;
    builder.writeEllipticalArc(radii, 0.0f, largeArc, !reversed, getEndPoint());
}

PathBuilder::SegmentList::SegmentList(std::vector<Wm4::Vector2f>&& polyline)
    : PrimitiveInterface(SegmentListType), points(std::move(polyline)) {}

void PathBuilder::SegmentList::write(PathBuilder& builder) const {
    if (!reversed) {
        for (std::size_t i = 1; i < points.size(); ++i) {
            builder.writeLineTo(points[i]);
        }
        return;
    }
    for (std::size_t i = points.size() - 1; i > 0; --i) {
        builder.writeLineTo(points[i - 1]);
    }
}

// ---- Lifetime ----

PathBuilder::~PathBuilder() = default;

PathBuilder::PathBuilder(const PathBuilder& other) {
    *this = other;
}

PathBuilder& PathBuilder::operator=(const PathBuilder& other) {
    if (this != &other) {
        mPendingPrimitives.clear();
        for (const auto& primitive : other.mPendingPrimitives) {
            mPendingPrimitives.push_back(copyOf(*primitive));
        }
        mCurrentPoint = other.mCurrentPoint;
        mHasCurrentPoint = other.mHasCurrentPoint;
        mContent = other.mContent;
        mContourOpen = other.mContourOpen;
        mReorderContour = other.mReorderContour;
    }
    return *this;
}

PathBuilder::PathBuilder(PathBuilder&& other) noexcept {
    *this = std::move(other);
}

PathBuilder& PathBuilder::operator=(PathBuilder&& other) noexcept {
    if (this != &other) {
        mPendingPrimitives.clear();
        mPendingPrimitives.swap(other.mPendingPrimitives);
        mCurrentPoint = other.mCurrentPoint;
        mHasCurrentPoint = other.mHasCurrentPoint;
        mContent.swap(other.mContent);
        mContourOpen = other.mContourOpen;
        mReorderContour = other.mReorderContour;
        other.clearBuilder();
    }
    return *this;
}

// ---- Contours ----

void PathBuilder::startContour(bool reorder) {
    endContour();
    mContourOpen = true;
    mReorderContour = reorder;
}

void PathBuilder::endContour() {
    if (!mContourOpen) {
        return;
    }
    mContourOpen = false;
    if (mPendingPrimitives.empty()) {
        clearCurrentContour();
        return;
    }
    if (mReorderContour) {
        ReorderContourPath(mPendingPrimitives);
    }
    bool first = true;
    for (const auto& primitive : mPendingPrimitives) {
        startPrimitive(!first, primitive->getStartPoint());
        primitive->write(*this);
        endPrimitive(primitive->getEndPoint());
        first = false;
    }
    mContent.push_back(Path::Command{T::ClosePath, {}});
    // As after an SVG close path, the pen is back at the figure's start.
    setCurrentPoint(mPendingPrimitives.front()->getStartPoint());
    clearCurrentContour();
}

void PathBuilder::cancelContour() {
    if (mContourOpen) {
        clearCurrentContour();
    }
}

void PathBuilder::clearCurrentContour() {
    mContourOpen = false;
    mReorderContour = false;
    mPendingPrimitives.clear();
}

// Greedy chaining: the first shape stays first, then always the remaining shape with an end
// nearest to where the chain stops, walked from that end. Deliberately stable: ties keep the
// earlier shape, and a shape whose two ends are equally near keeps its direction.
void PathBuilder::ReorderContourPath(std::list<std::unique_ptr<PrimitiveInterface>>& primitives) {
    if (primitives.empty()) {
        return;
    }
    std::list<std::unique_ptr<PrimitiveInterface>> work;
    work.splice(work.end(), primitives);
    primitives.splice(primitives.end(), work, work.begin());
    while (!work.empty()) {
        const Wm4::Vector2f chainEnd = primitives.back()->getEndPoint();
        float best = Math::MAX_REAL;
        // Kept when no distance is finite (huge or NaN coordinates), so that the loop ends.
        auto chosen = work.begin();
        for (auto it = work.begin(); it != work.end(); ++it) {
            const float nearest = std::min(squaredDistance(chainEnd, (*it)->getStartPoint()),
                                           squaredDistance(chainEnd, (*it)->getEndPoint()));
            if (nearest < best) {
                best = nearest;
                chosen = it;
            }
        }
        PrimitiveInterface& next = **chosen;
        next.reversed = squaredDistance(chainEnd, next.getStartPoint()) >
                        squaredDistance(chainEnd, next.getEndPoint());
        primitives.splice(primitives.end(), work, chosen);
    }
}

// ---- Shapes added ----

void PathBuilder::appendLine(const Wm4::Vector2f& from, const Wm4::Vector2f& to) {
    if (mContourOpen) {
        mPendingPrimitives.push_back(std::make_unique<Line>(from, to));
        return;
    }
    writeAlone(Line(from, to));
}

void PathBuilder::appendRect(const Wm4::Vector2f& position, const Wm4::Vector2f& size) {
    const float x = position.X(), y = position.Y();
    const float right = x + size.X(), bottom = y + size.Y();
    const Wm4::Vector2f corners[5] = {{x, y}, {right, y}, {right, bottom}, {x, bottom}, {x, y}};
    if (mContourOpen) {
        mPendingPrimitives.push_back(std::make_unique<SegmentList>(
            std::vector<Wm4::Vector2f>(std::begin(corners), std::end(corners))));
        return;
    }
    writePolylineAlone(corners, 5);
}

void PathBuilder::appendEllipse(const Wm4::Vector2f& center, const Wm4::Vector2f& radii,
                                float startAngle, float endAngle) {
    if (mContourOpen) {
        mPendingPrimitives.push_back(
            std::make_unique<Ellipse>(center, radii, startAngle, endAngle));
        return;
    }
    writeAlone(Ellipse(center, radii, startAngle, endAngle));
}

void PathBuilder::appendSegmentListConst(const std::vector<Wm4::Vector2f>& points) {
    if (points.empty()) {
        return;
    }
    if (mContourOpen) {
        mPendingPrimitives.push_back(
            std::make_unique<SegmentList>(std::vector<Wm4::Vector2f>(points)));
        return;
    }
    // Written straight from the caller's points: no copy.
    writePolylineAlone(points.data(), points.size());
}

void PathBuilder::appendSegmentListMove(std::vector<Wm4::Vector2f>& points) {
    if (points.empty()) {
        return;
    }
    if (mContourOpen) {
        mPendingPrimitives.push_back(std::make_unique<SegmentList>(std::move(points)));
    } else {
        writeAlone(SegmentList(std::move(points)));
    }
    points.clear();  // a moved-from vector is only guaranteed valid, not empty
}

void PathBuilder::writeAlone(const PrimitiveInterface& primitive) {
    startPrimitive(false, primitive.getStartPoint());
    primitive.write(*this);
    endPrimitive(primitive.getEndPoint());
}

void PathBuilder::writePolylineAlone(const Wm4::Vector2f* points, std::size_t count) {
    startPrimitive(false, points[0]);
    for (std::size_t i = 1; i < count; ++i) {
        writeLineTo(points[i]);
    }
    endPrimitive(points[count - 1]);
}

// ---- Output ----

ItemInterfacePointer<Path> PathBuilder::createPathItem(bool take) {
    if (isEmpty()) {
        return {};
    }
    auto path = std::make_shared<Path>();
    if (take) {
        path->commands.swap(mContent);
        clearBuilder();
    } else {
        path->commands = mContent;
    }
    return path;
}

void PathBuilder::clearBuilder() {
    clearCurrentContour();
    mContent.clear();
    mCurrentPoint = Wm4::Vector2f::ZERO;
    mHasCurrentPoint = false;
}

// ---- Records ----

void PathBuilder::setCurrentPoint(const Wm4::Vector2f& point) {
    mCurrentPoint = point;
    mHasCurrentPoint = true;
}

void PathBuilder::writeMove(const Wm4::Vector2f& point) {
    if (mHasCurrentPoint) {
        const Wm4::Vector2f relative = point - mCurrentPoint;
        if (relativeIsShorter(relative, point)) {
            mContent.push_back(Path::Command{T::MoveToRel, {relative.X(), relative.Y()}});
            setCurrentPoint(point);
            return;
        }
    }
    mContent.push_back(Path::Command{T::MoveTo, {point.X(), point.Y()}});
    setCurrentPoint(point);
}

void PathBuilder::writeLineTo(const Wm4::Vector2f& point) {
    if (!mHasCurrentPoint) {
        mContent.push_back(Path::Command{T::LineTo, {point.X(), point.Y()}});
        setCurrentPoint(point);
        return;
    }
    // Vertical first: a line to the pen itself becomes a vertical line of length 0.
    if (point.X() == mCurrentPoint.X()) {
        writeVLineTo(point.Y());
        return;
    }
    if (point.Y() == mCurrentPoint.Y()) {
        writeHLineTo(point.X());
        return;
    }
    const Wm4::Vector2f relative = point - mCurrentPoint;
    if (relativeIsShorter(relative, point)) {
        mContent.push_back(Path::Command{T::LineToRel, {relative.X(), relative.Y()}});
    } else {
        mContent.push_back(Path::Command{T::LineTo, {point.X(), point.Y()}});
    }
    setCurrentPoint(point);
}

void PathBuilder::writeHLineTo(float x) {
    // Without a pen position the line starts from the origin's height.
    const float y = mHasCurrentPoint ? mCurrentPoint.Y() : 0.0f;
    const float relative = x - mCurrentPoint.X();
    if (mHasCurrentPoint && writtenLength(relative) < writtenLength(x)) {
        mContent.push_back(Path::Command{T::HLineToRel, {relative}});
    } else {
        mContent.push_back(Path::Command{T::HLineTo, {x}});
    }
    setCurrentPoint(Wm4::Vector2f(x, y));
}

void PathBuilder::writeVLineTo(float y) {
    const float x = mHasCurrentPoint ? mCurrentPoint.X() : 0.0f;
    const float relative = y - mCurrentPoint.Y();
    if (mHasCurrentPoint && writtenLength(relative) < writtenLength(y)) {
        mContent.push_back(Path::Command{T::VLineToRel, {relative}});
    } else {
        mContent.push_back(Path::Command{T::VLineTo, {y}});
    }
    setCurrentPoint(Wm4::Vector2f(x, y));
}

void PathBuilder::writeEllipticalArc(const Wm4::Vector2f& radii, float rotation, bool largeArc,
                                     bool sweep, const Wm4::Vector2f& end) {
    mContent.push_back(Path::Command{T::EllipticalArc,
                                     {radii.X(), radii.Y(), rotation, largeArc ? 1.0f : 0.0f,
                                      sweep ? 1.0f : 0.0f, end.X(), end.Y()}});
    setCurrentPoint(end);
}

void PathBuilder::startPrimitive(bool connect, const Wm4::Vector2f& point) {
    if (!mHasCurrentPoint || mCurrentPoint != point) {
        if (connect && mHasCurrentPoint) {
            writeLineTo(point);
        } else {
            writeMove(point);
        }
    }
    setCurrentPoint(point);
}

void PathBuilder::endPrimitive(const Wm4::Vector2f& point) {
    setCurrentPoint(point);
}

}  // namespace tq::svg
