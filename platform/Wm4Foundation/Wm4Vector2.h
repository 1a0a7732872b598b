// A 2D vector of plain values.
#pragma once

#include "Wm4Math.h"

namespace Wm4 {

template <class Real>
class Vector2 {
public:
    constexpr Vector2() : mTuple{Real(0), Real(0)} {}
    constexpr Vector2(Real x, Real y) : mTuple{x, y} {}

    Real& X() { return mTuple[0]; }
    Real X() const { return mTuple[0]; }
    Real& Y() { return mTuple[1]; }
    Real Y() const { return mTuple[1]; }
    Real& operator[](int i) { return mTuple[i]; }
    Real operator[](int i) const { return mTuple[i]; }

    // Exact, element by element.
    bool operator==(const Vector2& v) const {
        return mTuple[0] == v.mTuple[0] && mTuple[1] == v.mTuple[1];
    }
    bool operator!=(const Vector2& v) const { return !(*this == v); }

    Vector2 operator+(const Vector2& v) const {
        return Vector2(mTuple[0] + v.mTuple[0], mTuple[1] + v.mTuple[1]);
    }
    Vector2 operator-(const Vector2& v) const {
        return Vector2(mTuple[0] - v.mTuple[0], mTuple[1] - v.mTuple[1]);
    }
    Vector2 operator-() const { return Vector2(-mTuple[0], -mTuple[1]); }
    Vector2 operator*(Real s) const { return Vector2(s * mTuple[0], s * mTuple[1]); }
    Vector2 operator/(Real s) const { return Vector2(mTuple[0] / s, mTuple[1] / s); }

    Vector2& operator+=(const Vector2& v) {
        mTuple[0] += v.mTuple[0];
        mTuple[1] += v.mTuple[1];
        return *this;
    }
    Vector2& operator-=(const Vector2& v) {
        mTuple[0] -= v.mTuple[0];
        mTuple[1] -= v.mTuple[1];
        return *this;
    }
    Vector2& operator*=(Real s) {
        mTuple[0] *= s;
        mTuple[1] *= s;
        return *this;
    }
    Vector2& operator/=(Real s) {
        mTuple[0] /= s;
        mTuple[1] /= s;
        return *this;
    }

    Real Dot(const Vector2& v) const { return mTuple[0] * v.mTuple[0] + mTuple[1] * v.mTuple[1]; }
    Real SquaredLength() const { return Dot(*this); }
    Real Length() const { return Math<Real>::Sqrt(SquaredLength()); }

    static const Vector2 ZERO;
    static const Vector2 ONE;
    static const Vector2 UNIT_X;
    static const Vector2 UNIT_Y;

private:
    Real mTuple[2];
};

template <class Real>
Vector2<Real> operator*(Real s, const Vector2<Real>& v) {
    return v * s;
}

template <class Real>
const Vector2<Real> Vector2<Real>::ZERO(Real(0), Real(0));
template <class Real>
const Vector2<Real> Vector2<Real>::ONE(Real(1), Real(1));
template <class Real>
const Vector2<Real> Vector2<Real>::UNIT_X(Real(1), Real(0));
template <class Real>
const Vector2<Real> Vector2<Real>::UNIT_Y(Real(0), Real(1));

using Vector2f = Vector2<float>;
using Vector2d = Vector2<double>;

}  // namespace Wm4
