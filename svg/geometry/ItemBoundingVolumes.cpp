// The items' own extents under a transform. Estimates by design: strokes are not included and
// a circle's radius is used as it stands, neither scaled nor rotated.
#include <algorithm>

#include "svg/geometry/detail/TransformPoint.h"
#include "svg/model/Circle.h"
#include "svg/model/Image.h"
#include "svg/model/Line.h"
#include "svg/model/Node.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/model/Text.h"
#include "svg/path/PathVisitorCommandsToPrimitives.h"

namespace tq::svg {

namespace {

void widen(BoundingBox& box, const Wm4::Vector2f& p) {
    box.min = Wm4::Vector2f(std::min(box.min.X(), p.X()), std::min(box.min.Y(), p.Y()));
    box.max = Wm4::Vector2f(std::max(box.max.X(), p.X()), std::max(box.max.Y(), p.Y()));
}

// The box of the four mapped corners, started at the first corner.
void boxOfRectangle(BoundingBox& box, const Wm4::Vector2f& position, const Wm4::Vector2f& size,
                    const Wm4::Matrix3f& transform) {
    const float x = position.X();
    const float y = position.Y();
    const Wm4::Vector2f corners[4] = {
        TransformPoint(transform, {x, y}),
        TransformPoint(transform, {x + size.X(), y}),
        TransformPoint(transform, {x + size.X(), y + size.Y()}),
        TransformPoint(transform, {x, y + size.Y()}),
    };
    box.min = box.max = corners[0];
    for (const auto& corner : corners) {
        widen(box, corner);
    }
}

}  // namespace

bool Node::computeEstimatedBoundingVolume(BoundingBox&, const Wm4::Matrix3f&) const {
    return false;
}

bool Text::computeEstimatedBoundingVolume(BoundingBox&, const Wm4::Matrix3f&) const {
    return false;
}

bool Rect::computeEstimatedBoundingVolume(BoundingBox& box, const Wm4::Matrix3f& transform) const {
    boxOfRectangle(box, position, size, transform);
    return true;
}

bool Image::computeEstimatedBoundingVolume(BoundingBox& box, const Wm4::Matrix3f& transform) const {
    boxOfRectangle(box, position, size, transform);
    return true;
}

bool Line::computeEstimatedBoundingVolume(BoundingBox& box, const Wm4::Matrix3f& transform) const {
    box.min = box.max = TransformPoint(transform, start);
    widen(box, TransformPoint(transform, end));
    return true;
}

bool Circle::computeEstimatedBoundingVolume(BoundingBox& box,
                                            const Wm4::Matrix3f& transform) const {
    const Wm4::Vector2f c = TransformPoint(transform, center);
    box.min = Wm4::Vector2f(c.X() - radius, c.Y() - radius);
    box.max = Wm4::Vector2f(c.X() + radius, c.Y() + radius);
    return true;
}

// The union of the primitives' boxes. Each primitive's box is merged whatever it holds, so one
// that stays empty (a cubic, an arc between equal points) pulls a valid union towards min (1, 1)
// and max (-1, -1); deliberate, it keeps the estimate in step with the primitives' own rules.
bool Path::computeEstimatedBoundingVolume(BoundingBox& box, const Wm4::Matrix3f& transform) const {
    PathVisitorCommandsToPrimitives visitor(
        commands, [&box, &transform](std::unique_ptr<PathPrimitive>& primitive, bool) {
            BoundingBox local;
            primitive->computeBoundingBox(local, transform);
            if (box.isValid()) {
                box.expandToContain(local);
            } else {
                box = local;
            }
        });
    visitor.visit();
    return true;
}

}  // namespace tq::svg
