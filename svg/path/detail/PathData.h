// Path data into command records under each reading profile (internal).
#pragma once

#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "svg/model/Path.h"

namespace tq::svg::detail {

// The library's own grammar: appends one record per group; false with the positioned message
// in `error` (possibly empty) when the text is refused, keeping the commands before the failing
// one.
bool ReadSubsetPathData(std::string_view text, std::list<Path::Command>& out, std::string& error);

// SVG's grammar, normalised into the records the library models: quadratic curves become the
// exact cubics, smooth cubics explicit cubics with SVG's reflection, arc radii too small for
// their end points are scaled up as SVG does and a zero radius becomes a line. False when the
// text holds an error; every group before it is kept, and `error` says where the rest was left.
bool ReadStandardPathData(std::string_view text, std::list<Path::Command>& out, std::string& error);

// Numbers separated by commas and white space, by SVG's number syntax (a polygon's points):
// false at the first that does not read, keeping those before it.
bool ReadStandardNumbers(std::string_view text, std::vector<float>& out);

}  // namespace tq::svg::detail
