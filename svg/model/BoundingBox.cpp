#include "svg/model/BoundingBox.h"

#include <algorithm>

namespace tq::svg {

void BoundingBox::translate(const Wm4::Vector2f& offset) {
    min += offset;
    max += offset;
}

void BoundingBox::addMargin(const Wm4::Vector2f& margin) {
    min -= margin;
    max += margin;
}

void BoundingBox::expandToContain(const Wm4::Vector2f& point) {
    if (!isValid()) {
        min = max = point;
        return;
    }
    min = Wm4::Vector2f(std::min(min.X(), point.X()), std::min(min.Y(), point.Y()));
    max = Wm4::Vector2f(std::max(max.X(), point.X()), std::max(max.Y(), point.Y()));
}

void BoundingBox::expandToContain(const BoundingBox& other) {
    if (!isValid()) {
        *this = other;
        return;
    }
    min = Wm4::Vector2f(std::min(min.X(), other.min.X()), std::min(min.Y(), other.min.Y()));
    max = Wm4::Vector2f(std::max(max.X(), other.max.X()), std::max(max.Y(), other.max.Y()));
}

}  // namespace tq::svg
