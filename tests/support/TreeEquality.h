// Item trees as canonical text, one line per item indented by depth: two trees are equal exactly
// when their texts are, and a failed comparison shows a readable diff. Every float is written as
// the shortest text that reads back to the same bits (as exact as hex, and readable in a table);
// every NaN is written "nan", and -0 as "0" (the writer does the same). Optional fields appear only
// when present.
//
//   svg viewBox=0,0,10,10 style="a{}"
//     g id="a" transform=1,0,5,0,1,7,0,0,1 fill="red"
//       rect 1,2 3,4 r=0,0
//     path M0,0 L1,1 Z
#pragma once

#include <charconv>
#include <cmath>
#include <sstream>
#include <string>

#include "svg/tqSvg.h"

namespace tq::test {

inline std::string Number(float value) {
    if (std::isnan(value)) {
        return "nan";
    }
    if (value == 0.0f) {
        value = 0.0f;
    }
    char buffer[32];
    return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
}

// "M0,0 L1,1 Z": the letter and the numbers of each command.
inline std::string CommandsText(const std::list<svg::Path::Command>& commands) {
    std::string out;
    for (const auto& command : commands) {
        const auto kind = static_cast<std::size_t>(command.type);
        out += (out.empty() ? "" : " ") +
               std::string(1, kind < 15 ? svg::Path::CommandLetters[kind] : '?');
        for (std::size_t i = 0; i < command.values.size(); ++i) {
            out += (i ? "," : "") + Number(command.values[i]);
        }
    }
    return out;
}

namespace detail {

inline std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        out += c == '\n'               ? std::string("\\n")
               : c == '"' || c == '\\' ? std::string("\\") + c
                                       : std::string(1, c);
    }
    return out + '"';
}

inline std::string pair(const Wm4::Vector2f& v) {
    return Number(v.X()) + "," + Number(v.Y());
}

inline std::string unitValue(const svg::UnitValue& u) {
    std::string suffix;
    svg::UnitToString(u.unit, suffix, false);
    return Number(u.value) + (u.unit == svg::Unit::Count ? "count" : suffix);
}

template <class T, class Write>
void field(std::ostream& os, const char* name, const std::optional<T>& value, Write write) {
    if (value) {
        os << ' ' << name << '=' << write(*value);
    }
}

inline void common(std::ostream& os, const svg::ItemInterface& item) {
    const auto number = [](float v) { return Number(v); };
    const auto text = [](const std::string& s) { return quoted(s); };
    const auto integer = [](auto v) { return std::to_string(static_cast<int>(v)); };
    field(os, "id", item.getId(), text);
    field(os, "transform", item.getTransform(), [](const Wm4::Matrix3f& m) {
        std::string out;
        for (int i = 0; i < 9; ++i) {
            out += (i ? "," : "") + Number(m(i / 3, i % 3));
        }
        return out;
    });
    const svg::RenderingProperties& p = item.getProperties();
    field(os, "opacity", p.opacity, number);
    field(os, "stroke-width", p.strokeWidth, number);
    field(os, "stroke-opacity", p.strokeOpacity, number);
    field(os, "stroke", p.stroke, text);
    field(os, "linecap", p.strokeLinecap, integer);
    field(os, "linejoin", p.strokeLinejoin, integer);
    field(os, "dasharray", p.strokeDasharray, [](const std::vector<svg::UnitValue>& dashes) {
        std::string out = "[";
        for (const auto& dash : dashes) {
            out += (out.size() > 1 ? "," : "") + unitValue(dash);
        }
        return out + "]";
    });
    field(os, "class", p.className, text);
    field(os, "fill", p.fill, text);
    field(os, "fill-opacity", p.fillOpacity, number);
    field(os, "vector-effect", p.vectorEffect, integer);
    field(os, "fill-rule", p.fillRule, integer);
    field(os, "miterlimit", p.strokeMiterlimit, number);
    field(os, "dashoffset", p.strokeDashoffset, number);
}

inline void item(std::ostream& os, const svg::ItemInterface* item, int depth) {
    using svg::ItemType;
    os << std::string(2 * static_cast<std::size_t>(depth), ' ');
    if (item == nullptr) {
        os << "(null)\n";
        return;
    }
    static const char* const kNames[] = {"svg",    "g",    "line", "rect",
                                         "circle", "path", "text", "image"};
    const auto type = static_cast<std::size_t>(item->getType());
    os << (type < std::size(kNames) ? kNames[type] : "type" + std::to_string(type));
    if (item->getType() == ItemType::Document) {
        const auto& document = static_cast<const svg::Document&>(*item);
        field(os, "viewBox", document.getViewbox(),
              [](const svg::BoundingBox& b) { return pair(b.min) + "," + pair(b.max); });
        field(os, "style", document.getStyle(), quoted);
    }
    common(os, *item);
    switch (item->getType()) {
        case ItemType::Line: {
            const auto& line = static_cast<const svg::Line&>(*item);
            os << ' ' << pair(line.start) << ' ' << pair(line.end);
            break;
        }
        case ItemType::Rect: {
            const auto& rect = static_cast<const svg::Rect&>(*item);
            os << ' ' << pair(rect.position) << ' ' << pair(rect.size)
               << " r=" << pair(rect.radius);
            break;
        }
        case ItemType::Circle: {
            const auto& circle = static_cast<const svg::Circle&>(*item);
            os << ' ' << pair(circle.center) << ' ' << Number(circle.radius);
            break;
        }
        case ItemType::Path:
            os << ' ' << CommandsText(static_cast<const svg::Path&>(*item).commands);
            break;
        case ItemType::Text: {
            const auto& text = static_cast<const svg::Text&>(*item);
            const auto flag = [](bool b) { return b ? "1" : "0"; };
            os << ' ' << pair(text.position) << ' ' << quoted(text.text);
            field(os, "font-family", text.fontFamily, quoted);
            field(os, "font-size", text.fontSize, Number);
            field(os, "textLength", text.textLength, unitValue);
            field(os, "preserve", text.xmlSpacePreserve, flag);
            field(os, "bold", text.bold, flag);
            field(os, "italic", text.italic, flag);
            field(os, "underline", text.underline, flag);
            break;
        }
        case ItemType::Image: {
            const auto& image = static_cast<const svg::Image&>(*item);
            os << ' ' << pair(image.position) << ' ' << pair(image.size)
               << " href=" << quoted(image.href);
            field(os, "align", image.preserveAspectRatio,
                  [](svg::AspectRatioAlign a) { return std::to_string(static_cast<int>(a)); });
            break;
        }
        default:
            break;
    }
    os << '\n';
    if (item->getType() == ItemType::Document || item->getType() == ItemType::Node) {
        for (const auto& child : static_cast<const svg::Node&>(*item).getChildren()) {
            detail::item(os, child.get(), depth + 1);
        }
    }
}

}  // namespace detail

inline std::string CanonicalText(const svg::ItemInterface* root) {
    std::ostringstream os;
    detail::item(os, root, 0);
    return os.str();
}

inline std::string CanonicalText(const svg::ItemInterface& root) {
    return CanonicalText(&root);
}

// Empty when the trees are equal, else both texts.
inline std::string TreeDifference(const svg::ItemInterface& a, const svg::ItemInterface& b) {
    const std::string x = CanonicalText(a), y = CanonicalText(b);
    return x == y ? std::string() : x + "--- differs from ---\n" + y;
}

}  // namespace tq::test
