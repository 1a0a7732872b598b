// A row-major 3x3 matrix; in this library a 2D affine transform in homogeneous form.
#pragma once

#include "Wm4Vector3.h"

namespace Wm4 {

template <class Real>
class Matrix3 {
public:
    // The zero matrix, or the identity when `zero` is false.
    constexpr explicit Matrix3(bool zero = true)
        : mEntry{Real(0), Real(0), Real(0), Real(0), Real(0), Real(0), Real(0), Real(0), Real(0)} {
        if (!zero) {
            mEntry[0] = mEntry[4] = mEntry[8] = Real(1);
        }
    }
    constexpr Matrix3(Real m00, Real m01, Real m02, Real m10, Real m11, Real m12, Real m20,
                      Real m21, Real m22)
        : mEntry{m00, m01, m02, m10, m11, m12, m20, m21, m22} {}

    Real& operator()(int row, int col) { return mEntry[3 * row + col]; }
    Real operator()(int row, int col) const { return mEntry[3 * row + col]; }

    // The ordinary product, this matrix on the left.
    Matrix3 operator*(const Matrix3& m) const {
        Matrix3 product;
        for (int row = 0; row < 3; ++row) {
            for (int col = 0; col < 3; ++col) {
                product(row, col) = (*this)(row, 0) * m(0, col) + (*this)(row, 1) * m(1, col) +
                                    (*this)(row, 2) * m(2, col);
            }
        }
        return product;
    }

    Vector3<Real> operator*(const Vector3<Real>& v) const {
        return Vector3<Real>(mEntry[0] * v[0] + mEntry[1] * v[1] + mEntry[2] * v[2],
                             mEntry[3] * v[0] + mEntry[4] * v[1] + mEntry[5] * v[2],
                             mEntry[6] * v[0] + mEntry[7] * v[1] + mEntry[8] * v[2]);
    }

    // Exact, element by element (so 0 equals -0 here).
    bool operator==(const Matrix3& m) const {
        for (int i = 0; i < 9; ++i) {
            if (mEntry[i] != m.mEntry[i]) {
                return false;
            }
        }
        return true;
    }
    bool operator!=(const Matrix3& m) const { return !(*this == m); }

    static const Matrix3 ZERO;
    static const Matrix3 IDENTITY;

private:
    Real mEntry[9];
};

template <class Real>
const Matrix3<Real> Matrix3<Real>::ZERO(true);
template <class Real>
const Matrix3<Real> Matrix3<Real>::IDENTITY(false);

using Matrix3f = Matrix3<float>;
using Matrix3d = Matrix3<double>;

}  // namespace Wm4
