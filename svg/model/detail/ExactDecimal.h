// The exact fast case of decimal-to-binary conversion (internal).
#pragma once

#include <cstdint>

namespace tq::svg::detail {

// mantissa x 10^exponent as the correctly rounded double, when both factors are exact doubles
// (at most 15 significant digits, |exponent| <= 22): one IEEE multiplication or division then
// rounds once, as strtod does. False when the case does not apply.
inline bool ExactDecimalToDouble(std::uint64_t mantissa, int significantDigits, int exponent,
                                 double& value) {
    static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    if (mantissa == 0) {
        value = 0.0;
        return true;
    }
    if (significantDigits > 15 || exponent < -22 || exponent > 22) {
        return false;
    }
    value = static_cast<double>(mantissa);
    value = exponent < 0 ? value / kPowers[-exponent] : value * kPowers[exponent];
    return true;
}

}  // namespace tq::svg::detail
