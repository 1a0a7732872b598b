#include "svg/model/RenderingProperties.h"

#include <algorithm>

#include "svg/model/SvgColor.h"

namespace tq::svg {

namespace {

template <class T>
void inherit(std::optional<T>& field, const std::optional<T>& parent) {
    if (!field) {
        field = parent;
    }
}

float valueOrOne(const std::optional<float>& value) {
    return value ? *value : 1.0f;
}

}  // namespace

void RenderingProperties::cascadeParent(const RenderingProperties& parent) {
    inherit(opacity, parent.opacity);
    inherit(strokeWidth, parent.strokeWidth);
    inherit(strokeOpacity, parent.strokeOpacity);
    inherit(stroke, parent.stroke);
    inherit(strokeLinecap, parent.strokeLinecap);
    inherit(strokeLinejoin, parent.strokeLinejoin);
    inherit(strokeDasharray, parent.strokeDasharray);
    inherit(fill, parent.fill);
    inherit(fillOpacity, parent.fillOpacity);
    inherit(className, parent.className);
    inherit(fillRule, parent.fillRule);
    inherit(strokeMiterlimit, parent.strokeMiterlimit);
    inherit(strokeDashoffset, parent.strokeDashoffset);
}

bool RenderingProperties::hasFill() const {
    if (fill && *fill == "none") {
        return false;
    }
    return valueOrOne(fillOpacity) * valueOrOne(opacity) > 0.0f;
}

bool RenderingProperties::hasStroke() const {
    if (!stroke || *stroke == "none") {
        return false;
    }
    return valueOrOne(strokeOpacity) * valueOrOne(opacity) > 0.0f;
}

Wm4::ColorRGBA RenderingProperties::ParseColor(const std::optional<std::string>& colour,
                                               float opacity) {
    Wm4::ColorRGBA result = Wm4::ColorRGBA::BLACK;
    if (colour) {
        if (*colour == "none") {
            return Wm4::ColorRGBA(0.0f, 0.0f, 0.0f, 0.0f);
        }
        Wm4::Vector4<unsigned char> bytes;
        if (!ParseSvgColor(*colour, bytes)) {
            return Wm4::ColorRGBA(0.0f, 0.0f, 0.0f, 0.0f);
        }
        result = Wm4::ColorRGBA(bytes[0] / 255.0f, bytes[1] / 255.0f, bytes[2] / 255.0f,
                                1.0f * (bytes[3] / 255.0f));
    }
    // Only alpha is clamped; NaN fails both tests and stays NaN.
    float alpha = result.A() * opacity;
    if (alpha < 0.0f) {
        alpha = 0.0f;
    } else if (alpha > 1.0f) {
        alpha = 1.0f;
    }
    result.A() = alpha;
    return result;
}

Wm4::ColorRGBA RenderingProperties::parseFillColor() const {
    return ParseColor(fill, valueOrOne(fillOpacity) * valueOrOne(opacity));
}

Wm4::ColorRGBA RenderingProperties::parseStrokeColor() const {
    return ParseColor(stroke, valueOrOne(strokeOpacity) * valueOrOne(opacity));
}

bool RenderingProperties::operator==(const RenderingProperties& other) const {
    return opacity == other.opacity && strokeWidth == other.strokeWidth &&
           strokeOpacity == other.strokeOpacity && stroke == other.stroke &&
           strokeLinecap == other.strokeLinecap && strokeLinejoin == other.strokeLinejoin &&
           strokeDasharray == other.strokeDasharray && className == other.className &&
           fill == other.fill && fillOpacity == other.fillOpacity &&
           vectorEffect == other.vectorEffect && fillRule == other.fillRule &&
           strokeMiterlimit == other.strokeMiterlimit && strokeDashoffset == other.strokeDashoffset;
}

}  // namespace tq::svg
