// Decimal to binary conversion of scanned numbers (internal).
#pragma once

#include <cstdint>

#include <fast_float/fast_float.h>

namespace tq::svg::detail {

// mantissa x 10^exponent, negated when `negative`, as the correctly rounded double that strtod
// would give, for the mantissa of at most 19 significant digits that a scanner gathered while
// it read the digits. One 128-bit multiplication by a power of five (the Eisel-Lemire method of
// fast_float), no division. False in the rare cases that need the general conversion.
inline bool DecimalToDouble(std::uint64_t mantissa, int significantDigits, int exponent,
                            bool negative, double& value) {
    if (significantDigits > 19) {
        return false;
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
