// A 3D vector, as far as the homogeneous 2D transforms need one.
#pragma once

namespace Wm4 {

template <class Real>
class Vector3 {
public:
    constexpr Vector3() : mTuple{Real(0), Real(0), Real(0)} {}
    constexpr Vector3(Real x, Real y, Real z) : mTuple{x, y, z} {}

    Real& X() { return mTuple[0]; }
    Real X() const { return mTuple[0]; }
    Real& Y() { return mTuple[1]; }
    Real Y() const { return mTuple[1]; }
    Real& Z() { return mTuple[2]; }
    Real Z() const { return mTuple[2]; }
    Real& operator[](int i) { return mTuple[i]; }
    Real operator[](int i) const { return mTuple[i]; }

    bool operator==(const Vector3& v) const {
        return mTuple[0] == v.mTuple[0] && mTuple[1] == v.mTuple[1] && mTuple[2] == v.mTuple[2];
    }
    bool operator!=(const Vector3& v) const { return !(*this == v); }

private:
    Real mTuple[3];
};

using Vector3f = Vector3<float>;

}  // namespace Wm4
