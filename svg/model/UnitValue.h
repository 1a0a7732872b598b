// A number with an SVG length unit.
#pragma once

#include <cstdint>
#include <string>

#include "svg/tqSvgExport.h"

namespace tq::svg {

enum class Unit : std::uint8_t {
    None = 0,  // a bare number
    Percent = 1,
    Em = 2,
    Px = 3,
    Pt = 4,
    Cm = 5,
    Mm = 6,
    In = 7,
    Count = 8,  // the number of units; written as nothing, never parsed
};

struct TQSVG_EXPORT UnitValue {
    UnitValue(float value_ = 0.0f, Unit unit_ = Unit::None) : value(value_), unit(unit_) {}

    // Parses "12", "2.5mm", "50 %", "1e2px" (trailing white space allowed, C locale). False, with
    // `out` unchanged, when the number does not take up the whole text before the unit. The
    // empty text deliberately parses as 0 with no unit.
    static bool parseVal(const std::string& text, UnitValue& out);

    bool operator==(const UnitValue& other) const {
        return value == other.value && unit == other.unit;
    }
    bool operator!=(const UnitValue& other) const { return !(*this == other); }

    float value;
    Unit unit;
};

// Writes the unit's suffix ("%", "em", "px", ...; nothing for None and Count) into `out`,
// after clearing it unless `append`. False for a value outside the enumeration.
TQSVG_EXPORT bool UnitToString(Unit unit, std::string& out, bool append);

}  // namespace tq::svg
