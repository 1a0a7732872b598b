// Decimal to binary conversion of scanned numbers (internal).
#pragma once

#include <cstdint>

#include <fast_float/fast_float.h>

namespace tq::svg::detail {

// mantissa x 10^exponent, negated when `negative`, as the correctly rounded double that strtod
// would give, for the mantissa of at most 19 digits that a scanner gathered while it read them.
// A mantissa and a power of ten that a double holds exactly need one IEEE operation, which
// rounds once (measured faster here than the multiplication, since no scan waits for it);
// others one 128-bit multiplication by a power of five (the Eisel-Lemire method of
// fast_float). False in the rare cases that need the general conversion.
inline bool DecimalToDouble(std::uint64_t mantissa, int significantDigits, int exponent,
                            bool negative, double& value) {
    if (significantDigits > 19) {
        return false;
    }
    static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    if (mantissa <= (std::uint64_t(1) << 53) && exponent >= -22 && exponent <= 22) {
        value = static_cast<double>(mantissa);
        value = exponent < 0 ? value / kPowers[-exponent] : value * kPowers[exponent];
        value = negative ? -value : value;
        return true;
    }
    const fast_float::adjusted_mantissa binary =
        fast_float::compute_float<fast_float::binary_format<double>>(exponent, mantissa);
    if (binary.power2 < 0) {
        return false;
    }
    fast_float::to_float(negative, binary, value);
    return true;
}

}  // namespace tq::svg::detail
