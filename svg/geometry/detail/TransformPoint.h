// Maps a point by a homogeneous 2D affine matrix.
#pragma once

#include <Wm4Foundation/Wm4Matrix3.h>
#include <Wm4Foundation/Wm4Vector2.h>

namespace tq::svg {

// (x, y) becomes (m00 x + m01 y + m02, m10 x + m11 y + m12); the third row is not used.
inline Wm4::Vector2f TransformPoint(const Wm4::Matrix3f& m, const Wm4::Vector2f& p) {
    return Wm4::Vector2f(m(0, 0) * p.X() + m(0, 1) * p.Y() + m(0, 2),
                         m(1, 0) * p.X() + m(1, 1) * p.Y() + m(1, 2));
}

}  // namespace tq::svg
