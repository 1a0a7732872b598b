// A planar Bezier curve that owns its control points.
#pragma once

#include <utility>

#include "Wm4Vector2.h"

namespace Wm4 {

template <class Real>
class BezierCurve2 {
public:
    // Takes ownership of `controlPoints`, an array of degree + 1 points allocated with new[].
    BezierCurve2(int degree, Vector2<Real>* controlPoints)
        : mDegree(degree), mControlPoints(controlPoints) {}
    ~BezierCurve2() { delete[] mControlPoints; }

    BezierCurve2(const BezierCurve2&) = delete;
    BezierCurve2& operator=(const BezierCurve2&) = delete;
    BezierCurve2(BezierCurve2&& other) noexcept
        : mDegree(other.mDegree), mControlPoints(std::exchange(other.mControlPoints, nullptr)) {}
    BezierCurve2& operator=(BezierCurve2&& other) noexcept {
        if (this != &other) {
            delete[] mControlPoints;
            mDegree = other.mDegree;
            mControlPoints = std::exchange(other.mControlPoints, nullptr);
        }
        return *this;
    }

    int GetDegree() const { return mDegree; }
    const Vector2<Real>* GetControlPoints() const { return mControlPoints; }

    // The point at parameter t, by de Casteljau's construction (no allocation for degree <= 7).
    Vector2<Real> GetPosition(Real t) const {
        if (!mControlPoints || mDegree < 0) {
            return Vector2<Real>();
        }
        constexpr int kLocal = 8;
        Vector2<Real> local[kLocal];
        Vector2<Real>* work = mDegree < kLocal ? local : new Vector2<Real>[mDegree + 1];
        for (int i = 0; i <= mDegree; ++i) {
            work[i] = mControlPoints[i];
        }
        const Real s = Real(1) - t;
        for (int level = mDegree; level > 0; --level) {
            for (int i = 0; i < level; ++i) {
                work[i] = work[i] * s + work[i + 1] * t;
            }
        }
        const Vector2<Real> result = work[0];
        if (work != local) {
            delete[] work;
        }
        return result;
    }

private:
    int mDegree;
    Vector2<Real>* mControlPoints;
};

using BezierCurve2f = BezierCurve2<float>;

}  // namespace Wm4
