#include "svg/read/detail/StandardElements.h"

#include <algorithm>
#include <iterator>

namespace tq::svg::detail {

namespace {

using Kind = ElementKind;

constexpr std::string_view kAnimation =
    "Ignore animation: the document is drawn as it stands before any animation";
constexpr std::string_view kFonts = "Ignore SVG font: fonts are not drawn";

// Sorted by name for a binary search.
constexpr ElementRow kElements[] = {
    {"a", Kind::Group},
    {"altGlyph", Kind::Feature, kFonts, true},
    {"altGlyphDef", Kind::Feature, kFonts, true},
    {"animate", Kind::Feature, kAnimation, true},
    {"animateColor", Kind::Feature, kAnimation, true},
    {"animateMotion", Kind::Feature, kAnimation, true},
    {"animateTransform", Kind::Feature, kAnimation, true},
    {"circle", Kind::Circle},
    {"clipPath", Kind::Feature, "Ignore clip path: the content is drawn unclipped"},
    {"color-profile", Kind::Silent},
    {"cursor", Kind::Silent},
    {"defs", Kind::Definitions},
    {"desc", Kind::Silent},
    {"discard", Kind::Feature, kAnimation, true},
    {"ellipse", Kind::Ellipse},
    {"filter", Kind::Feature, "Ignore filter: the content is drawn unfiltered"},
    {"font", Kind::Feature, kFonts, true},
    {"font-face", Kind::Feature, kFonts, true},
    {"foreignObject", Kind::Feature, "Ignore foreign object: its content is not drawn", true},
    {"g", Kind::Group},
    {"glyph", Kind::Feature, kFonts, true},
    {"hkern", Kind::Feature, kFonts, true},
    {"image", Kind::Image},
    {"line", Kind::Line},
    {"linearGradient", Kind::Gradient},
    {"marker", Kind::Feature, "Ignore marker: markers are not drawn"},
    {"mask", Kind::Feature, "Ignore mask: the content is drawn unmasked"},
    {"metadata", Kind::Silent},
    {"missing-glyph", Kind::Feature, kFonts, true},
    {"mpath", Kind::Feature, kAnimation, true},
    {"path", Kind::Path},
    {"pattern", Kind::Feature, "Ignore pattern: a pattern paint is drawn in its fallback colour"},
    {"polygon", Kind::Polygon},
    {"polyline", Kind::Polyline},
    {"radialGradient", Kind::Gradient},
    {"rect", Kind::Rect},
    {"script", Kind::Feature, "Ignore script: scripts are never run", true},
    {"set", Kind::Feature, kAnimation, true},
    {"stop", Kind::Stop},
    {"style", Kind::Style},
    {"svg", Kind::Svg},
    {"switch", Kind::Switch},
    {"symbol", Kind::Symbol},
    {"text", Kind::Text},
    {"textPath", Kind::TextSpan},
    {"title", Kind::Silent},
    {"tref", Kind::TextSpan},
    {"tspan", Kind::TextSpan},
    {"use", Kind::Use},
    {"view", Kind::Silent},
    {"vkern", Kind::Feature, kFonts, true},
};

// Attributes that carry no drawing the library does: accepted without a word. Text properties
// are listed apart, since the text element keeps some of them.
constexpr std::string_view kSilentAttributes[] = {
    "baseProfile",
    "clip-rule",
    "color-interpolation",
    "color-interpolation-filters",
    "color-profile",
    "color-rendering",
    "contentScriptType",
    "contentStyleType",
    "cursor",
    "enable-background",
    "externalResourcesRequired",
    "flood-color",
    "flood-opacity",
    "solid-color",
    "solid-opacity",
    "focusable",
    "image-rendering",
    "isolation",
    "lang",
    "lighting-color",
    "overflow",
    "pointer-events",
    "role",
    "shape-rendering",
    "stop-color",
    "stop-opacity",
    "tabindex",
    "text-rendering",
    "version",
    "zoomAndPan",
};

constexpr std::string_view kTextAttributes[] = {
    "alignment-baseline",
    "baseline-shift",
    "direction",
    "dominant-baseline",
    "font",
    "font-family",
    "font-size",
    "font-size-adjust",
    "font-stretch",
    "font-style",
    "font-variant",
    "font-weight",
    "kerning",
    "letter-spacing",
    "text-anchor",
    "text-decoration",
    "unicode-bidi",
    "word-spacing",
    "writing-mode",
    "glyph-orientation-horizontal",
    "glyph-orientation-vertical",
};

template <std::size_t N>
bool listed(const std::string_view (&names)[N], std::string_view name) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

}  // namespace

const ElementRow* FindElement(std::string_view name) {
    const auto* end = std::end(kElements);
    const auto* it =
        std::lower_bound(std::begin(kElements), end, name,
                         [](const ElementRow& row, std::string_view n) { return row.name < n; });
    return it != end && it->name == name ? it : nullptr;
}

const ElementRow& ElementAt(std::uint8_t row) {
    return kElements[row];
}

std::size_t ElementCount() {
    return std::size(kElements);
}

std::uint8_t RowOf(const ElementRow* row) {
    return static_cast<std::uint8_t>(row - std::begin(kElements));
}

bool IsContainer(Kind kind) {
    return kind == Kind::Svg || kind == Kind::Group || kind == Kind::Switch ||
           kind == Kind::Definitions || kind == Kind::Symbol;
}

bool IsSilentAttribute(Kind kind, std::string_view name) {
    if (listed(kSilentAttributes, name) || name.substr(0, 5) == "aria-" ||
        name.substr(0, 5) == "data-" || name.substr(0, 2) == "on") {
        return true;
    }
    // A link's target does not change what is drawn.
    if (kind == Kind::Group && (name == "href" || name == "target")) {
        return true;
    }
    // Text is not drawn, and says so once; its layout beyond what the tree keeps needs no word.
    const bool kept = name == "font-family" || name == "font-size" || name == "font-weight" ||
                      name == "font-style";
    return listed(kTextAttributes, name) && !(kind == Kind::Text && kept);
}

bool IsHorizontalLength(std::string_view name) {
    return name == "x" || name == "cx" || name == "x1" || name == "x2" || name == "width" ||
           name == "rx" || name == "dx";
}

bool IsVerticalLength(std::string_view name) {
    return name == "y" || name == "cy" || name == "y1" || name == "y2" || name == "height" ||
           name == "ry" || name == "dy";
}

bool MayNotBeNegative(std::string_view name) {
    return name == "width" || name == "height" || name == "r" || name == "rx" || name == "ry" ||
           name == "stroke-width";
}

}  // namespace tq::svg::detail
