// The attribute parsers of the loader: presentation attributes first, then each tag's own.
// Exported for the tests and fuzzers; hosts load documents through tqSvgIOManager.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include <Wm4Foundation/Wm4Matrix3.h>

#include "svg/read/detail/Loader.h"

namespace tq::svg {

// fill, stroke, opacities, stroke-width, caps, joins, dashes, class, id, vector-effect and
// transform; NotRecognised for anything else.
TQSVG_EXPORT AttributeParseResult ParsePresentationAttribute(Loader& loader, ItemInterface& item,
                                                             std::string_view name,
                                                             std::string_view prefix,
                                                             std::string_view value);

// The per-tag parsers; each answers Invalid for an item of another type.
TQSVG_EXPORT AttributeParseResult ParseSvgAttribute(Loader&, ItemInterface&, std::string_view,
                                                    std::string_view, std::string_view);
TQSVG_EXPORT AttributeParseResult ParseGroupAttribute(Loader&, ItemInterface&, std::string_view,
                                                      std::string_view, std::string_view);
TQSVG_EXPORT AttributeParseResult ParseRectAttribute(Loader&, ItemInterface&, std::string_view,
                                                     std::string_view, std::string_view);
TQSVG_EXPORT AttributeParseResult ParseLineAttribute(Loader&, ItemInterface&, std::string_view,
                                                     std::string_view, std::string_view);
TQSVG_EXPORT AttributeParseResult ParseCircleAttribute(Loader&, ItemInterface&, std::string_view,
                                                       std::string_view, std::string_view);
TQSVG_EXPORT AttributeParseResult ParsePathAttribute(Loader&, ItemInterface&, std::string_view,
                                                     std::string_view, std::string_view);
TQSVG_EXPORT AttributeParseResult ParseTextAttribute(Loader&, ItemInterface&, std::string_view,
                                                     std::string_view, std::string_view);
TQSVG_EXPORT AttributeParseResult ParseImageAttribute(Loader&, ItemInterface&, std::string_view,
                                                      std::string_view, std::string_view);

// Splits `value` at blank, comma, tab, line feed and carriage return and converts each part.
// Fewer than `minCount` or more than `maxCount` parts give "Wrong number of values for "name"",
// a part that is no number "Failed to parse value "part" in attribute "name"", both on `error`
// (which may be empty). Malformed UTF-8 raises the utf8 exceptions.
TQSVG_EXPORT bool ParseNumberList(std::string_view name, std::string_view value,
                                  std::size_t minCount, std::size_t maxCount,
                                  std::vector<float>& out, const Loader::MessageCallback& error);

// A "transform" list composed into one matrix, leftmost command outermost. On failure sends
// its lines to `error` and leaves `out` unchanged.
TQSVG_EXPORT bool ParseTransformList(std::string_view value, Wm4::Matrix3f& out,
                                     const Loader::MessageCallback& error);
// The same; with `standard`, numbers follow SVG's number syntax (compact forms such as
// "-0.5-1.5" and ".5.5") and "rotate(a cx cy)" turns about (cx, cy) as SVG composes it, where
// the library's own reading deliberately puts (cx, cy) into the translation.
TQSVG_EXPORT bool ParseTransformList(std::string_view value, Wm4::Matrix3f& out,
                                     const Loader::MessageCallback& error, bool standard);

}  // namespace tq::svg
