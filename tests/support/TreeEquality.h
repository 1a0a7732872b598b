// Deep equality of item trees for the tests, with a description of the first difference.
#pragma once

#include <cmath>
#include <cstring>
#include <sstream>
#include <string>

#include "svg/tqSvg.h"

namespace tq::test {

// Floats compare equal when equal in value or both NaN (a NaN written and read back is a NaN).
inline bool SameFloat(float a, float b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

class TreeComparer {
public:
    // Empty when the trees are equal, else where they first differ.
    std::string compare(const svg::ItemInterface& a, const svg::ItemInterface& b) {
        mDifference.clear();
        item(a, b, "root");
        return mDifference;
    }

private:
    bool fail(const std::string& where, const std::string& what) {
        if (mDifference.empty()) {
            mDifference = where + ": " + what;
        }
        return false;
    }

    bool floats(const std::string& where, float a, float b) {
        if (SameFloat(a, b)) {
            return true;
        }
        std::ostringstream text;
        text.precision(9);
        text << a << " != " << b;
        return fail(where, text.str());
    }

    bool vec(const std::string& where, const Wm4::Vector2f& a, const Wm4::Vector2f& b) {
        return floats(where + ".x", a.X(), b.X()) && floats(where + ".y", a.Y(), b.Y());
    }

    template <class T, class Same>
    bool optional(const std::string& where, const std::optional<T>& a, const std::optional<T>& b,
                  Same same) {
        if (a.has_value() != b.has_value()) {
            return fail(where, a ? "present != absent" : "absent != present");
        }
        return !a || same(*a, *b) || fail(where, "values differ");
    }

    template <class T>
    bool optional(const std::string& where, const std::optional<T>& a, const std::optional<T>& b) {
        return optional(where, a, b, [](const T& x, const T& y) { return x == y; });
    }

    bool optionalFloat(const std::string& where, const std::optional<float>& a,
                       const std::optional<float>& b) {
        return optional(where, a, b, [](float x, float y) { return SameFloat(x, y); });
    }

    bool properties(const std::string& where, const svg::RenderingProperties& a,
                    const svg::RenderingProperties& b) {
        const auto sameDashes = [](const std::vector<svg::UnitValue>& x,
                                   const std::vector<svg::UnitValue>& y) {
            if (x.size() != y.size()) {
                return false;
            }
            for (std::size_t i = 0; i < x.size(); ++i) {
                if (!SameFloat(x[i].value, y[i].value) || x[i].unit != y[i].unit) {
                    return false;
                }
            }
            return true;
        };
        return optionalFloat(where + ".opacity", a.opacity, b.opacity) &&
               optionalFloat(where + ".strokeWidth", a.strokeWidth, b.strokeWidth) &&
               optionalFloat(where + ".strokeOpacity", a.strokeOpacity, b.strokeOpacity) &&
               optional(where + ".stroke", a.stroke, b.stroke) &&
               optional(where + ".strokeLinecap", a.strokeLinecap, b.strokeLinecap) &&
               optional(where + ".strokeLinejoin", a.strokeLinejoin, b.strokeLinejoin) &&
               optional(where + ".strokeDasharray", a.strokeDasharray, b.strokeDasharray,
                        sameDashes) &&
               optional(where + ".className", a.className, b.className) &&
               optional(where + ".fill", a.fill, b.fill) &&
               optionalFloat(where + ".fillOpacity", a.fillOpacity, b.fillOpacity) &&
               optional(where + ".vectorEffect", a.vectorEffect, b.vectorEffect);
    }

    bool matrix(const std::string& where, const Wm4::Matrix3f& a, const Wm4::Matrix3f& b) {
        for (int r = 0; r < 3; ++r) {
            for (int c = 0; c < 3; ++c) {
                if (!floats(where + "(" + std::to_string(r) + "," + std::to_string(c) + ")",
                            a(r, c), b(r, c))) {
                    return false;
                }
            }
        }
        return true;
    }

    bool commands(const std::string& where, const std::list<svg::Path::Command>& a,
                  const std::list<svg::Path::Command>& b) {
        if (a.size() != b.size()) {
            return fail(where,
                        std::to_string(a.size()) + " commands != " + std::to_string(b.size()));
        }
        auto ib = b.begin();
        int index = 0;
        for (const auto& ca : a) {
            const auto& cb = *ib++;
            const std::string at = where + "[" + std::to_string(index++) + "]";
            if (ca.type != cb.type) {
                return fail(at, "type " + std::to_string(int(ca.type)) +
                                    " != " + std::to_string(int(cb.type)));
            }
            if (ca.values.size() != cb.values.size()) {
                return fail(at, "number count differs");
            }
            for (std::size_t i = 0; i < ca.values.size(); ++i) {
                if (!floats(at + "." + std::to_string(i), ca.values[i], cb.values[i])) {
                    return false;
                }
            }
        }
        return true;
    }

    bool item(const svg::ItemInterface& a, const svg::ItemInterface& b, const std::string& where) {
        using svg::ItemType;
        if (a.getType() != b.getType()) {
            return fail(where, "type " + std::to_string(int(a.getType())) +
                                   " != " + std::to_string(int(b.getType())));
        }
        if (!optional(where + ".id", a.getId(), b.getId()) ||
            !optional(where + ".transform", a.getTransform(), b.getTransform(),
                      [&](const Wm4::Matrix3f& x, const Wm4::Matrix3f& y) {
                          return matrix(where + ".transform", x, y);
                      }) ||
            !properties(where + ".properties", a.getProperties(), b.getProperties())) {
            return false;
        }
        switch (a.getType()) {
            case ItemType::Document: {
                const auto& da = static_cast<const svg::Document&>(a);
                const auto& db = static_cast<const svg::Document&>(b);
                if (!optional(where + ".viewBox", da.getViewbox(), db.getViewbox(),
                              [&](const svg::BoundingBox& x, const svg::BoundingBox& y) {
                                  return vec(where + ".viewBox.min", x.min, y.min) &&
                                         vec(where + ".viewBox.max", x.max, y.max);
                              }) ||
                    !optional(where + ".style", da.getStyle(), db.getStyle())) {
                    return false;
                }
                return children(da, db, where);
            }
            case ItemType::Node:
                return children(static_cast<const svg::Node&>(a), static_cast<const svg::Node&>(b),
                                where);
            case ItemType::Line: {
                const auto& x = static_cast<const svg::Line&>(a);
                const auto& y = static_cast<const svg::Line&>(b);
                return vec(where + ".start", x.start, y.start) && vec(where + ".end", x.end, y.end);
            }
            case ItemType::Rect: {
                const auto& x = static_cast<const svg::Rect&>(a);
                const auto& y = static_cast<const svg::Rect&>(b);
                return vec(where + ".position", x.position, y.position) &&
                       vec(where + ".size", x.size, y.size) &&
                       vec(where + ".radius", x.radius, y.radius);
            }
            case ItemType::Circle: {
                const auto& x = static_cast<const svg::Circle&>(a);
                const auto& y = static_cast<const svg::Circle&>(b);
                return vec(where + ".center", x.center, y.center) &&
                       floats(where + ".radius", x.radius, y.radius);
            }
            case ItemType::Path:
                return commands(where + ".commands", static_cast<const svg::Path&>(a).commands,
                                static_cast<const svg::Path&>(b).commands);
            case ItemType::Text: {
                const auto& x = static_cast<const svg::Text&>(a);
                const auto& y = static_cast<const svg::Text&>(b);
                return vec(where + ".position", x.position, y.position) &&
                       (x.text == y.text ||
                        fail(where + ".text", "'" + x.text + "' != '" + y.text + "'")) &&
                       optional(where + ".fontFamily", x.fontFamily, y.fontFamily) &&
                       optionalFloat(where + ".fontSize", x.fontSize, y.fontSize) &&
                       optional(where + ".textLength", x.textLength, y.textLength,
                                [](const svg::UnitValue& u, const svg::UnitValue& v) {
                                    return SameFloat(u.value, v.value) && u.unit == v.unit;
                                }) &&
                       optional(where + ".xmlSpacePreserve", x.xmlSpacePreserve,
                                y.xmlSpacePreserve) &&
                       optional(where + ".bold", x.bold, y.bold) &&
                       optional(where + ".italic", x.italic, y.italic) &&
                       optional(where + ".underline", x.underline, y.underline);
            }
            case ItemType::Image: {
                const auto& x = static_cast<const svg::Image&>(a);
                const auto& y = static_cast<const svg::Image&>(b);
                return vec(where + ".position", x.position, y.position) &&
                       vec(where + ".size", x.size, y.size) &&
                       (x.href == y.href || fail(where + ".href", x.href + " != " + y.href)) &&
                       optional(where + ".preserveAspectRatio", x.preserveAspectRatio,
                                y.preserveAspectRatio);
            }
        }
        return fail(where, "unknown item type");
    }

    bool children(const svg::Node& a, const svg::Node& b, const std::string& where) {
        const auto& ca = a.getChildren();
        const auto& cb = b.getChildren();
        if (ca.size() != cb.size()) {
            return fail(where,
                        std::to_string(ca.size()) + " children != " + std::to_string(cb.size()));
        }
        auto ib = cb.begin();
        int index = 0;
        for (const auto& child : ca) {
            const auto& other = *ib++;
            const std::string at = where + "/" + std::to_string(index++);
            if (!child || !other) {
                if (child || other) {
                    return fail(at, "null child on one side only");
                }
                continue;
            }
            if (!item(*child, *other, at)) {
                return false;
            }
        }
        return true;
    }

    std::string mDifference;
};

// Empty when equal, else the first difference.
inline std::string TreeDifference(const svg::ItemInterface& a, const svg::ItemInterface& b) {
    return TreeComparer().compare(a, b);
}

}  // namespace tq::test
