// Normalises SVG path groups into the command records the library models (internal).
#pragma once

#include <list>

#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/model/Path.h"

namespace tq::svg::detail {

// Follows the current point and the last control point of a curve, both absolute and with the
// same float arithmetic as the geometry, so that what it computes lands where the geometry draws
// (a smooth curve after absolute curves gets the very control point the library's own reading
// would reflect).
class StandardPathSink {
public:
    explicit StandardPathSink(std::list<Path::Command>& out) : mOut(out) {}

    void begin(char letter);
    void group(const float* values, int count);
    void end() {}
    void abandon() {}

private:
    enum class Previous { Other, Cubic, Quadratic };

    void push(Path::CommandType type, std::initializer_list<float> values);
    void moveTo(bool relative, float x, float y, bool first);
    void cubic(bool relative, Wm4::Vector2f p1, Wm4::Vector2f p2, Wm4::Vector2f end);
    void quadratic(bool relative, Wm4::Vector2f control, Wm4::Vector2f end);
    void arc(bool relative, const float* values);
    // The point `offset` names: relative to the current point, or absolute.
    Wm4::Vector2f absolute(bool relative, Wm4::Vector2f offset) const {
        return relative ? mCurrent + offset : offset;
    }

    std::list<Path::Command>& mOut;
    char mLetter = 0;
    bool mFirstGroup = true;
    Wm4::Vector2f mCurrent = Wm4::Vector2f::ZERO;
    Wm4::Vector2f mSubpathStart = Wm4::Vector2f::ZERO;
    Previous mPrevious = Previous::Other;
    Wm4::Vector2f mControl = Wm4::Vector2f::ZERO;  // the previous curve's last control point
};

}  // namespace tq::svg::detail
