// Value syntax of the standard reading profile: CSS colours, lengths with units, opacities
// (internal).
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tq::svg::detail {

// White space at both ends removed: space, tab, line feed, carriage return, form feed.
std::string_view TrimSpace(std::string_view text);

// ASCII case-insensitive comparison with a lower-case literal.
bool EqualsLowerCase(std::string_view text, std::string_view lowerCase);

struct Rgba {
    unsigned char r = 0, g = 0, b = 0, a = 255;
};

// A CSS colour: "#rgb", "#rgba", "#rrggbb", "#rrggbbaa", rgb()/rgba() and hsl()/hsla() with
// commas or spaces, numbers or percentages and an alpha of 0-1 or a percentage (clamped,
// rounded), the keywords in any case, and "transparent". Surrounding white space is allowed.
// "none" and "currentColor" are the caller's business.
bool ParseCssColor(std::string_view text, Rgba& colour);

// The text the library's own colour reader reads as `colour`: `original` when it already does,
// else "#rrggbb", or "#rrggbbaa" when it is not opaque.
std::string ColourText(std::string_view original, const Rgba& colour);

enum class LengthUnit { None, Px, Pt, Pc, Mm, Cm, In, Em, Ex, Percent };

// A number with an optional unit (px, pt, pc, mm, cm, in, em, ex, %), white space around it
// allowed; false for anything else or a number that is not finite.
bool ParseCssLength(std::string_view text, float& number, LengthUnit& unit);

// The same at the front of `text`, which is advanced past it; nothing may stand between the
// number and its unit.
bool TakeCssLength(std::string_view& text, float& number, LengthUnit& unit);

// Lengths separated by white space or a comma, by SVG's number syntax ("5-3" holds two, ".5.5"
// too), appended to `out`; false at the first that does not read.
bool ParseCssLengthList(std::string_view text, std::vector<std::pair<float, LengthUnit>>& out);

// User units of a length: absolute units at 96 per inch, em and ex of a 16-unit font, a
// percentage of `reference`.
float ToUserUnits(float number, LengthUnit unit, float reference);

// An opacity: a number or a percentage, clamped to [0, 1].
bool ParseOpacity(std::string_view text, float& opacity);

// "#id", "url(#id)" and their quoted forms: the id, or false for a reference to another
// document.
bool LocalReference(std::string_view reference, std::string& id);

}  // namespace tq::svg::detail
