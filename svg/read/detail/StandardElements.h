// The vocabulary of the standard reading profile (internal): the elements it knows, what each
// becomes, and which attributes draw nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tq::svg::detail {

enum class ElementKind : std::uint8_t {
    // Elements that become items.
    Svg,
    Group,
    Switch,
    Definitions,  // defs: a detached group, drawn only through references
    Symbol,       // likewise, with a viewBox of its own
    Use,
    Rect,
    Circle,
    Ellipse,
    Line,
    Polyline,
    Polygon,
    Path,
    Text,
    Image,
    // Elements that do not.
    TextSpan,
    Style,
    Gradient,
    Stop,
    Silent,   // title, desc, metadata: no drawing, no warning
    Feature,  // drawing the library leaves out: skipped, with a warning where it matters
};

struct ElementRow {
    std::string_view name;
    ElementKind kind;
    // For features: the warning given when the element (always) or a reference to it (paint
    // servers, clip paths, masks, filters, markers) is met.
    std::string_view warning = {};
    bool warnAlways = false;
};

// The row of an element name, or null for a name the profile does not know.
const ElementRow* FindElement(std::string_view name);
// Rows by their index, which records keep in a byte.
const ElementRow& ElementAt(std::uint8_t row);
std::uint8_t RowOf(const ElementRow* row);
// The number of rows.
std::size_t ElementCount();

// Elements whose children are drawn.
bool IsContainer(ElementKind kind);

// Attributes accepted without a word since they draw nothing the library draws.
bool IsSilentAttribute(ElementKind kind, std::string_view name);

// Lengths whose percentages refer to the viewport's width, to its height, and lengths that may
// not be negative.
bool IsHorizontalLength(std::string_view name);
bool IsVerticalLength(std::string_view name);
bool MayNotBeNegative(std::string_view name);

}  // namespace tq::svg::detail
