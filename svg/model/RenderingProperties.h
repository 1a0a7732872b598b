// The presentation attributes of an item, each optional so that children can inherit.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <Wm4Foundation/Wm4ColorRGBA.h>

#include "svg/model/UnitValue.h"
#include "svg/tqSvgExport.h"

namespace tq::xml {
class XmlSaveContext;
}

namespace tq::svg {

struct SaveOptions;

// Values in the alphabetical order of the keywords.
enum class LineCap : std::uint32_t { Butt = 0, Round = 1, Square = 2 };
enum class LineJoin : std::uint32_t { Arcs = 0, Bevel = 1, Miter = 2, MiterClip = 3, Round = 4 };

// A bit set; a present value with no bit set stands for "none".
enum class VectorEffect : std::uint32_t {
    None = 0,
    NonScalingStroke = 1,
    NonScalingSize = 2,
    NonRotation = 4,
    FixedPosition = 8,
};

// Which parts of a self-intersecting or nested outline are inside.
enum class FillRule : std::uint32_t { NonZero = 0, EvenOdd = 1 };

constexpr VectorEffect operator|(VectorEffect a, VectorEffect b) {
    return static_cast<VectorEffect>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}
constexpr VectorEffect operator&(VectorEffect a, VectorEffect b) {
    return static_cast<VectorEffect>(static_cast<std::uint32_t>(a) & static_cast<std::uint32_t>(b));
}

struct TQSVG_EXPORT RenderingProperties {
    // Fills every absent field but vectorEffect with the parent's optional. Opacity is
    // deliberately inherited, not multiplied: a child's own opacity replaces the parent's (the
    // standard reading profile stores each item's product with its ancestors' instead).
    void cascadeParent(const RenderingProperties& parent);

    // False for the exact fill "none"; otherwise whether fill-opacity times opacity is positive
    // (an absent fill is SVG's black).
    bool hasFill() const;
    // False for an absent stroke or "none"; otherwise whether stroke-opacity times opacity is
    // positive.
    bool hasStroke() const;

    // The colour text as RGBA in [0, 1] with its alpha multiplied by `opacity` and clamped to
    // [0, 1]: black for an absent text, transparent black for "none" or an unparsable text.
    static Wm4::ColorRGBA ParseColor(const std::optional<std::string>& colour, float opacity);
    Wm4::ColorRGBA parseFillColor() const;
    Wm4::ColorRGBA parseStrokeColor() const;

    // Writes the present attributes through the context's writer; false on a writer failure.
    bool writeAttributes(tq::xml::XmlSaveContext& context, const SaveOptions& options) const;

    bool operator==(const RenderingProperties& other) const;
    bool operator!=(const RenderingProperties& other) const { return !(*this == other); }

    std::optional<float> opacity;
    std::optional<float> strokeWidth;
    std::optional<float> strokeOpacity;
    std::optional<std::string> stroke;  // colour text as written, or "none"
    std::optional<LineCap> strokeLinecap;
    std::optional<LineJoin> strokeLinejoin;
    std::optional<std::vector<UnitValue>> strokeDasharray;
    std::optional<std::string> className;
    std::optional<std::string> fill;  // colour text as written, or "none"
    std::optional<float> fillOpacity;
    std::optional<VectorEffect> vectorEffect;  // not inherited
    // Set only by the standard reading profile: segmentation fills by it, the writer writes it
    // when present. Absent means non-zero.
    std::optional<FillRule> fillRule;
    // Set only by the standard reading profile, written when present: the longest miter join as
    // a multiple of the stroke width (absent: 4), and how far into the dash pattern the path
    // starts, in user units, negative allowed (absent: 0).
    std::optional<float> strokeMiterlimit;
    std::optional<float> strokeDashoffset;
};

}  // namespace tq::svg
