// An axis-aligned box; default-constructed it is deliberately invalid (min above max).
#pragma once

#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/tqSvgExport.h"

namespace tq::svg {

struct TQSVG_EXPORT BoundingBox {
    BoundingBox() : min(1.0f, 1.0f), max(-1.0f, -1.0f) {}
    BoundingBox(const Wm4::Vector2f& min_, const Wm4::Vector2f& max_) : min(min_), max(max_) {}

    // max >= min on both axes; a single point is valid, a NaN coordinate is not.
    bool isValid() const { return max.X() >= min.X() && max.Y() >= min.Y(); }

    // None of the measures checks validity: the default box has size (-2, -2).
    float getWidth() const { return max.X() - min.X(); }
    float getHeight() const { return max.Y() - min.Y(); }
    Wm4::Vector2f getMinPoint() const { return min; }
    Wm4::Vector2f getMaxPoint() const { return max; }
    Wm4::Vector2f getSize() const { return Wm4::Vector2f(getWidth(), getHeight()); }
    Wm4::Vector2f getCenterPoint() const { return min + (max - min) * 0.5f; }

    void translate(const Wm4::Vector2f& offset);
    // Grows the box by `margin` on every side (shrinks it for a negative margin).
    void addMargin(const Wm4::Vector2f& margin);

    // An invalid box becomes the point; a valid one grows to include it.
    void expandToContain(const Wm4::Vector2f& point);
    // An invalid box becomes `other`. A valid one takes the min of the mins and the max of the
    // maxes without looking at `other`'s validity: merging an invalid box pulls min towards
    // (1, 1) and max towards (-1, -1). Deliberate; callers test isValid() first.
    void expandToContain(const BoundingBox& other);

    bool operator==(const BoundingBox& other) const { return min == other.min && max == other.max; }
    bool operator!=(const BoundingBox& other) const { return !(*this == other); }

    Wm4::Vector2f min;
    Wm4::Vector2f max;
};

}  // namespace tq::svg
