#include "svg/model/SvgColor.h"

#include "svg/model/detail/NamedColors.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string_view>

#include <tqSystem/tqStringUtils.h>

namespace tq::svg {

namespace {

struct NamedColor {
    std::string_view name;
    unsigned char r, g, b;
};

// The CSS named colours (SVG 1.1's keywords plus "rebeccapurple"), sorted by byte order so
// that lookup is a binary search over a constant table: nothing to build, nothing to lock.
constexpr NamedColor NamedColorTable[] = {
    {"aliceblue", 240, 248, 255},
    {"antiquewhite", 250, 235, 215},
    {"aqua", 0, 255, 255},
    {"aquamarine", 127, 255, 212},
    {"azure", 240, 255, 255},
    {"beige", 245, 245, 220},
    {"bisque", 255, 228, 196},
    {"black", 0, 0, 0},
    {"blanchedalmond", 255, 235, 205},
    {"blue", 0, 0, 255},
    {"blueviolet", 138, 43, 226},
    {"brown", 165, 42, 42},
    {"burlywood", 222, 184, 135},
    {"cadetblue", 95, 158, 160},
    {"chartreuse", 127, 255, 0},
    {"chocolate", 210, 105, 30},
    {"coral", 255, 127, 80},
    {"cornflowerblue", 100, 149, 237},
    {"cornsilk", 255, 248, 220},
    {"crimson", 220, 20, 60},
    {"cyan", 0, 255, 255},
    {"darkblue", 0, 0, 139},
    {"darkcyan", 0, 139, 139},
    {"darkgoldenrod", 184, 134, 11},
    {"darkgray", 169, 169, 169},
    {"darkgreen", 0, 100, 0},
    {"darkgrey", 169, 169, 169},
    {"darkkhaki", 189, 183, 107},
    {"darkmagenta", 139, 0, 139},
    {"darkolivegreen", 85, 107, 47},
    {"darkorange", 255, 140, 0},
    {"darkorchid", 153, 50, 204},
    {"darkred", 139, 0, 0},
    {"darksalmon", 233, 150, 122},
    {"darkseagreen", 143, 188, 143},
    {"darkslateblue", 72, 61, 139},
    {"darkslategray", 47, 79, 79},
    {"darkslategrey", 47, 79, 79},
    {"darkturquoise", 0, 206, 209},
    {"darkviolet", 148, 0, 211},
    {"deeppink", 255, 20, 147},
    {"deepskyblue", 0, 191, 255},
    {"dimgray", 105, 105, 105},
    {"dimgrey", 105, 105, 105},
    {"dodgerblue", 30, 144, 255},
    {"firebrick", 178, 34, 34},
    {"floralwhite", 255, 250, 240},
    {"forestgreen", 34, 139, 34},
    {"fuchsia", 255, 0, 255},
    {"gainsboro", 220, 220, 220},
    {"ghostwhite", 248, 248, 255},
    {"gold", 255, 215, 0},
    {"goldenrod", 218, 165, 32},
    {"gray", 128, 128, 128},
    {"green", 0, 128, 0},
    {"greenyellow", 173, 255, 47},
    {"grey", 128, 128, 128},
    {"honeydew", 240, 255, 240},
    {"hotpink", 255, 105, 180},
    {"indianred", 205, 92, 92},
    {"indigo", 75, 0, 130},
    {"ivory", 255, 255, 240},
    {"khaki", 240, 230, 140},
    {"lavender", 230, 230, 250},
    {"lavenderblush", 255, 240, 245},
    {"lawngreen", 124, 252, 0},
    {"lemonchiffon", 255, 250, 205},
    {"lightblue", 173, 216, 230},
    {"lightcoral", 240, 128, 128},
    {"lightcyan", 224, 255, 255},
    {"lightgoldenrodyellow", 250, 250, 210},
    {"lightgray", 211, 211, 211},
    {"lightgreen", 144, 238, 144},
    {"lightgrey", 211, 211, 211},
    {"lightpink", 255, 182, 193},
    {"lightsalmon", 255, 160, 122},
    {"lightseagreen", 32, 178, 170},
    {"lightskyblue", 135, 206, 250},
    {"lightslategray", 119, 136, 153},
    {"lightslategrey", 119, 136, 153},
    {"lightsteelblue", 176, 196, 222},
    {"lightyellow", 255, 255, 224},
    {"lime", 0, 255, 0},
    {"limegreen", 50, 205, 50},
    {"linen", 250, 240, 230},
    {"magenta", 255, 0, 255},
    {"maroon", 128, 0, 0},
    {"mediumaquamarine", 102, 205, 170},
    {"mediumblue", 0, 0, 205},
    {"mediumorchid", 186, 85, 211},
    {"mediumpurple", 147, 112, 219},
    {"mediumseagreen", 60, 179, 113},
    {"mediumslateblue", 123, 104, 238},
    {"mediumspringgreen", 0, 250, 154},
    {"mediumturquoise", 72, 209, 204},
    {"mediumvioletred", 199, 21, 133},
    {"midnightblue", 25, 25, 112},
    {"mintcream", 245, 255, 250},
    {"mistyrose", 255, 228, 225},
    {"moccasin", 255, 228, 181},
    {"navajowhite", 255, 222, 173},
    {"navy", 0, 0, 128},
    {"oldlace", 253, 245, 230},
    {"olive", 128, 128, 0},
    {"olivedrab", 107, 142, 35},
    {"orange", 255, 165, 0},
    {"orangered", 255, 69, 0},
    {"orchid", 218, 112, 214},
    {"palegoldenrod", 238, 232, 170},
    {"palegreen", 152, 251, 152},
    {"paleturquoise", 175, 238, 238},
    {"palevioletred", 219, 112, 147},
    {"papayawhip", 255, 239, 213},
    {"peachpuff", 255, 218, 185},
    {"peru", 205, 133, 63},
    {"pink", 255, 192, 203},
    {"plum", 221, 160, 221},
    {"powderblue", 176, 224, 230},
    {"purple", 128, 0, 128},
    {"rebeccapurple", 102, 51, 153},
    {"red", 255, 0, 0},
    {"rosybrown", 188, 143, 143},
    {"royalblue", 65, 105, 225},
    {"saddlebrown", 139, 69, 19},
    {"salmon", 250, 128, 114},
    {"sandybrown", 244, 164, 96},
    {"seagreen", 46, 139, 87},
    {"seashell", 255, 245, 238},
    {"sienna", 160, 82, 45},
    {"silver", 192, 192, 192},
    {"skyblue", 135, 206, 235},
    {"slateblue", 106, 90, 205},
    {"slategray", 112, 128, 144},
    {"slategrey", 112, 128, 144},
    {"snow", 255, 250, 250},
    {"springgreen", 0, 255, 127},
    {"steelblue", 70, 130, 180},
    {"tan", 210, 180, 140},
    {"teal", 0, 128, 128},
    {"thistle", 216, 191, 216},
    {"tomato", 255, 99, 71},
    {"turquoise", 64, 224, 208},
    {"violet", 238, 130, 238},
    {"wheat", 245, 222, 179},
    {"white", 255, 255, 255},
    {"whitesmoke", 245, 245, 245},
    {"yellow", 255, 255, 0},
    {"yellowgreen", 154, 205, 50},
};

static_assert(std::size(NamedColorTable) == 148);

const NamedColor* findNamedColor(std::string_view name) {
    const auto* end = std::end(NamedColorTable);
    const auto* it =
        std::lower_bound(std::begin(NamedColorTable), end, name,
                         [](const NamedColor& c, std::string_view n) { return c.name < n; });
    return it != end && it->name == name ? it : nullptr;
}

// strtol on one or two hexadecimal characters: conversion stops at the first invalid one.
unsigned char hexChannel(char first, char second) {
    const char digits[3] = {first, second, '\0'};
    return static_cast<unsigned char>(strtol_l(digits, nullptr, 16, tqStringUtils::msCLocale));
}

// Truncates toward zero to 32 bits as the processor's conversion does: out of range or NaN
// gives INT32_MIN, whose low byte is 0.
unsigned char lowByteOfTruncation(double value) {
    if (!(value > -2147483649.0 && value < 2147483648.0)) {
        return 0;
    }
    return static_cast<unsigned char>(static_cast<std::uint32_t>(static_cast<std::int32_t>(value)) &
                                      0xffu);
}

// One item of rgb()/rgba(): a percentage, or an integer 0-255 in C notation (hex, octal).
bool parseFunctionalChannel(const std::string& item, unsigned char& channel) {
    if (tqStringUtils::endsWith(item, "%")) {
        const std::string number = item.substr(0, item.size() - 1);
        char* end = nullptr;
        const double value = strtod_l(number.c_str(), &end, tqStringUtils::msCLocale);
        if (end != number.c_str() + number.size()) {
            return false;
        }
        // Deliberately not rounded: 100% gives 254, and values outside 0-100% wrap.
        channel = lowByteOfTruncation(static_cast<double>(static_cast<float>(value)) * 2.55);
        return true;
    }
    char* end = nullptr;
    const long value = strtol_l(item.c_str(), &end, 0, tqStringUtils::msCLocale);
    if (end != item.c_str() + item.size() || value < 0 || value > 255) {
        return false;
    }
    channel = static_cast<unsigned char>(value);
    return true;
}

}  // namespace

bool FindNamedColor(std::string_view name, unsigned char (&rgb)[3]) {
    const NamedColor* named = findNamedColor(name);
    if (named == nullptr) {
        return false;
    }
    rgb[0] = named->r;
    rgb[1] = named->g;
    rgb[2] = named->b;
    return true;
}

bool ParseSvgColor(const std::string& text, Wm4::Vector4<unsigned char>& color) {
    color = Wm4::Vector4<unsigned char>(255, 0, 0, 255);
    const std::size_t size = text.size();

    if ((size == 7 || size == 9) && text[0] == '#') {
        const int channels = size == 7 ? 3 : 4;
        for (int i = 0; i < channels; ++i) {
            color[i] = hexChannel(text[1 + 2 * i], text[2 + 2 * i]);
        }
        return true;
    }
    if ((size == 4 || size == 5) && text[0] == '#') {
        const int channels = size == 4 ? 3 : 4;
        for (int i = 0; i < channels; ++i) {
            color[i] = hexChannel(text[1 + i], text[1 + i]);
        }
        return true;
    }

    std::size_t prefix = 0;
    std::size_t expected = 0;
    if (size >= 5 && text.compare(0, 5, "rgba(") == 0) {
        prefix = 5;
        expected = 4;
    } else if (size >= 4 && text.compare(0, 4, "rgb(") == 0) {
        prefix = 4;
        expected = 3;
    }
    if (prefix != 0 && text.back() == ')') {
        std::string inner = text.substr(prefix, size - prefix - 1);
        tqStringUtils::replace(inner, ",", " ");
        const std::vector<std::string> items = tqStringUtils::Split(inner, ' ', true);
        if (items.size() != expected) {
            return false;
        }
        for (std::size_t i = 0; i < expected; ++i) {
            if (!parseFunctionalChannel(items[i], color[static_cast<int>(i)])) {
                return false;
            }
        }
        return true;
    }

    if (const NamedColor* named = findNamedColor(text)) {
        color[0] = named->r;
        color[1] = named->g;
        color[2] = named->b;
        return true;
    }
    return false;
}

}  // namespace tq::svg
