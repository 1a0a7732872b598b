// A 4-tuple; Vector4<unsigned char> holds an RGBA colour as bytes.
#pragma once

namespace Wm4 {

template <class Real>
class Vector4 {
public:
    constexpr Vector4() : mTuple{Real(0), Real(0), Real(0), Real(0)} {}
    constexpr Vector4(Real x, Real y, Real z, Real w) : mTuple{x, y, z, w} {}

    Real& X() { return mTuple[0]; }
    Real X() const { return mTuple[0]; }
    Real& Y() { return mTuple[1]; }
    Real Y() const { return mTuple[1]; }
    Real& Z() { return mTuple[2]; }
    Real Z() const { return mTuple[2]; }
    Real& W() { return mTuple[3]; }
    Real W() const { return mTuple[3]; }
    Real& operator[](int i) { return mTuple[i]; }
    Real operator[](int i) const { return mTuple[i]; }

    bool operator==(const Vector4& v) const {
        return mTuple[0] == v.mTuple[0] && mTuple[1] == v.mTuple[1] && mTuple[2] == v.mTuple[2] &&
               mTuple[3] == v.mTuple[3];
    }
    bool operator!=(const Vector4& v) const { return !(*this == v); }

private:
    Real mTuple[4];
};

using Vector4f = Vector4<float>;

}  // namespace Wm4
