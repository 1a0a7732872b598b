// Single-precision constants and functions for the geometry code.
#pragma once

#include <cfloat>
#include <cmath>

namespace Wm4 {

template <class Real>
class Math {
public:
    static constexpr Real WM4_PI = Real(3.14159265358979323846);
    static constexpr Real HALF_PI = Real(0.5) * WM4_PI;
    static constexpr Real TWO_PI = Real(2) * WM4_PI;
    static constexpr Real MAX_REAL = sizeof(Real) == sizeof(float) ? Real(FLT_MAX) : Real(DBL_MAX);

    static Real Sin(Real value) { return std::sin(value); }
    static Real Cos(Real value) { return std::cos(value); }
    static Real Tan(Real value) { return std::tan(value); }
    // Plain arc cosine: callers that need a clamped argument clamp it themselves.
    static Real ACos(Real value) { return std::acos(value); }
    static Real Sqrt(Real value) { return std::sqrt(value); }
    static Real FAbs(Real value) { return std::fabs(value); }
};

using Mathf = Math<float>;
using Mathd = Math<double>;

}  // namespace Wm4
