#include "svg/read/detail/StandardValues.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <Wm4Foundation/Wm4Vector4.h>

#include "svg/model/SvgColor.h"
#include "svg/model/detail/NamedColors.h"
#include "svg/model/detail/SvgNumber.h"

namespace tq::svg::detail {

namespace {

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

int hexValue(char c) {
    if (isDigit(c)) {
        return c - '0';
    }
    c = lower(c);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// A CSS number at the front of `text`, which is advanced past it.
bool takeNumber(std::string_view& text, float& number) {
    std::size_t i = 0;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        ++i;
    }
    bool digits = false;
    for (; i < text.size() && isDigit(text[i]); ++i) {
        digits = true;
    }
    if (i < text.size() && text[i] == '.') {
        ++i;
        for (; i < text.size() && isDigit(text[i]); ++i) {
            digits = true;
        }
    }
    if (!digits) {
        return false;
    }
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        std::size_t j = i + 1;
        if (j < text.size() && (text[j] == '+' || text[j] == '-')) {
            ++j;
        }
        if (j < text.size() && isDigit(text[j])) {
            for (i = j; i < text.size() && isDigit(text[i]); ++i) {
            }
        }
    }
    if (!ParseSvgNumber(text.substr(0, i), number) || !std::isfinite(number)) {
        return false;
    }
    text.remove_prefix(i);
    return true;
}

unsigned char clampByte(double value) {
    return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0, 255.0)));
}

bool parseHex(std::string_view hex, Rgba& colour) {
    const std::size_t n = hex.size();
    if (n != 3 && n != 4 && n != 6 && n != 8) {
        return false;
    }
    unsigned char channels[4] = {0, 0, 0, 255};
    const bool shortForm = n <= 4;
    const std::size_t count = shortForm ? n : n / 2;
    for (std::size_t i = 0; i < count; ++i) {
        const int high = hexValue(hex[shortForm ? i : 2 * i]);
        const int low = hexValue(hex[shortForm ? i : 2 * i + 1]);
        if (high < 0 || low < 0) {
            return false;
        }
        channels[i] = static_cast<unsigned char>(high * 16 + low);
    }
    colour = {channels[0], channels[1], channels[2], channels[3]};
    return true;
}

// The arguments of a colour function: numbers with an optional "%" or angle unit, separated by
// commas or white space, an alpha possibly after "/".
struct Argument {
    float value = 0.0f;
    bool percent = false;
    std::string_view unit;
};

bool parseArguments(std::string_view inner, Argument (&out)[4], std::size_t& count) {
    count = 0;
    inner = TrimSpace(inner);
    while (!inner.empty()) {
        if (count == 4) {
            return false;
        }
        Argument& argument = out[count++];
        if (!takeNumber(inner, argument.value)) {
            return false;
        }
        std::size_t unit = 0;
        while (unit < inner.size() &&
               (inner[unit] == '%' || (lower(inner[unit]) >= 'a' && lower(inner[unit]) <= 'z'))) {
            ++unit;
        }
        argument.unit = inner.substr(0, unit);
        argument.percent = argument.unit == "%";
        inner = TrimSpace(inner.substr(unit));
        if (!inner.empty() && (inner[0] == ',' || inner[0] == '/')) {
            inner = TrimSpace(inner.substr(1));
            if (inner.empty()) {
                return false;
            }
        }
    }
    return true;
}

double alphaOf(const Argument& a) {
    return std::clamp(a.percent ? a.value / 100.0 : double(a.value), 0.0, 1.0) * 255.0;
}

bool parseRgb(std::string_view inner, Rgba& colour) {
    Argument a[4];
    std::size_t count = 0;
    if (!parseArguments(inner, a, count) || count < 3) {
        return false;
    }
    unsigned char c[3];
    for (int i = 0; i < 3; ++i) {
        if (!a[i].unit.empty() && !a[i].percent) {
            return false;
        }
        c[i] = clampByte(a[i].percent ? a[i].value * 2.55 : a[i].value);
    }
    colour = {c[0], c[1], c[2],
              count == 4 ? clampByte(alphaOf(a[3])) : static_cast<unsigned char>(255)};
    return true;
}

double hueToChannel(double m1, double m2, double h) {
    h = h - std::floor(h);
    if (h * 6 < 1) {
        return m1 + (m2 - m1) * h * 6;
    }
    if (h * 2 < 1) {
        return m2;
    }
    if (h * 3 < 2) {
        return m1 + (m2 - m1) * (2.0 / 3 - h) * 6;
    }
    return m1;
}

bool parseHsl(std::string_view inner, Rgba& colour) {
    Argument a[4];
    std::size_t count = 0;
    if (!parseArguments(inner, a, count) || count < 3 || !a[1].percent || !a[2].percent) {
        return false;
    }
    double turns = a[0].value / 360.0;
    if (EqualsLowerCase(a[0].unit, "turn")) {
        turns = a[0].value;
    } else if (EqualsLowerCase(a[0].unit, "rad")) {
        turns = a[0].value / (2 * 3.14159265358979323846);
    } else if (EqualsLowerCase(a[0].unit, "grad")) {
        turns = a[0].value / 400.0;
    } else if (!a[0].unit.empty() && !EqualsLowerCase(a[0].unit, "deg")) {
        return false;
    }
    const double s = std::clamp(a[1].value / 100.0, 0.0, 1.0);
    const double l = std::clamp(a[2].value / 100.0, 0.0, 1.0);
    const double m2 = l <= 0.5 ? l * (s + 1) : l + s - l * s;
    const double m1 = l * 2 - m2;
    colour = {clampByte(255 * hueToChannel(m1, m2, turns + 1.0 / 3)),
              clampByte(255 * hueToChannel(m1, m2, turns)),
              clampByte(255 * hueToChannel(m1, m2, turns - 1.0 / 3)),
              count == 4 ? clampByte(alphaOf(a[3])) : static_cast<unsigned char>(255)};
    return true;
}

// "name(" ... ")" with the name in any case; `inner` receives what stands between.
bool functionCall(std::string_view text, std::string_view name, std::string_view& inner) {
    if (text.size() < name.size() + 2 || text.back() != ')' ||
        !EqualsLowerCase(text.substr(0, name.size()), name) || text[name.size()] != '(') {
        return false;
    }
    inner = text.substr(name.size() + 1, text.size() - name.size() - 2);
    return true;
}

}  // namespace

std::string_view TrimSpace(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool EqualsLowerCase(std::string_view text, std::string_view lowerCase) {
    if (text.size() != lowerCase.size()) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (lower(text[i]) != lowerCase[i]) {
            return false;
        }
    }
    return true;
}

bool ParseCssColor(std::string_view text, Rgba& colour) {
    text = TrimSpace(text);
    if (text.empty()) {
        return false;
    }
    if (text[0] == '#') {
        return parseHex(text.substr(1), colour);
    }
    std::string_view inner;
    if (functionCall(text, "rgb", inner) || functionCall(text, "rgba", inner)) {
        return parseRgb(inner, colour);
    }
    if (functionCall(text, "hsl", inner) || functionCall(text, "hsla", inner)) {
        return parseHsl(inner, colour);
    }
    if (EqualsLowerCase(text, "transparent")) {
        colour = {0, 0, 0, 0};
        return true;
    }
    char name[32];
    if (text.size() >= sizeof name) {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        name[i] = lower(text[i]);
    }
    unsigned char rgb[3];
    if (!FindNamedColor(std::string_view(name, text.size()), rgb)) {
        return false;
    }
    colour = {rgb[0], rgb[1], rgb[2], 255};
    return true;
}

std::string ColourText(std::string_view original, const Rgba& colour) {
    Wm4::Vector4<unsigned char> bytes;
    const std::string text(original);
    if (ParseSvgColor(text, bytes) && bytes[0] == colour.r && bytes[1] == colour.g &&
        bytes[2] == colour.b && bytes[3] == colour.a) {
        return text;
    }
    char buffer[10];
    if (colour.a == 255) {
        std::snprintf(buffer, sizeof buffer, "#%02x%02x%02x", colour.r, colour.g, colour.b);
    } else {
        std::snprintf(buffer, sizeof buffer, "#%02x%02x%02x%02x", colour.r, colour.g, colour.b,
                      colour.a);
    }
    return buffer;
}

bool TakeCssLength(std::string_view& text, float& number, LengthUnit& unit) {
    static constexpr std::pair<std::string_view, LengthUnit> kUnits[] = {
        {"px", LengthUnit::Px}, {"pt", LengthUnit::Pt}, {"pc", LengthUnit::Pc},
        {"mm", LengthUnit::Mm}, {"cm", LengthUnit::Cm}, {"in", LengthUnit::In},
        {"em", LengthUnit::Em}, {"ex", LengthUnit::Ex}, {"%", LengthUnit::Percent}};
    std::string_view rest = text;
    if (!takeNumber(rest, number)) {
        return false;
    }
    std::size_t end = 0;
    while (end < rest.size() &&
           (rest[end] == '%' || (lower(rest[end]) >= 'a' && lower(rest[end]) <= 'z'))) {
        ++end;
    }
    unit = LengthUnit::None;
    if (end > 0) {
        const auto* found = std::find_if(
            std::begin(kUnits), std::end(kUnits),
            [&](const auto& row) { return EqualsLowerCase(rest.substr(0, end), row.first); });
        if (found == std::end(kUnits)) {
            return false;
        }
        unit = found->second;
    }
    text = rest.substr(end);
    return true;
}

bool ParseCssLength(std::string_view text, float& number, LengthUnit& unit) {
    text = TrimSpace(text);
    return TakeCssLength(text, number, unit) && text.empty();
}

bool ParseCssLengthList(std::string_view text, std::vector<std::pair<float, LengthUnit>>& out) {
    text = TrimSpace(text);
    while (!text.empty()) {
        float number = 0.0f;
        LengthUnit unit = LengthUnit::None;
        if (!TakeCssLength(text, number, unit)) {
            return false;
        }
        out.emplace_back(number, unit);
        text = TrimSpace(text);
        if (!text.empty() && text.front() == ',') {
            text = TrimSpace(text.substr(1));
            if (text.empty()) {
                return false;  // a trailing comma
            }
        }
    }
    return true;
}

float ToUserUnits(float number, LengthUnit unit, float reference) {
    switch (unit) {
        case LengthUnit::Pt:
            return number * (96.0f / 72.0f);
        case LengthUnit::Pc:
            return number * 16.0f;
        case LengthUnit::Mm:
            return number * (96.0f / 25.4f);
        case LengthUnit::Cm:
            return number * (96.0f / 2.54f);
        case LengthUnit::In:
            return number * 96.0f;
        case LengthUnit::Em:
            return number * 16.0f;
        case LengthUnit::Ex:
            return number * 8.0f;
        case LengthUnit::Percent:
            return number * reference / 100.0f;
        default:
            return number;
    }
}

bool ParseOpacity(std::string_view text, float& opacity) {
    text = TrimSpace(text);
    float number = 0.0f;
    if (!takeNumber(text, number)) {
        return false;
    }
    if (text == "%") {
        number /= 100.0f;
    } else if (!text.empty()) {
        return false;
    }
    opacity = std::clamp(number, 0.0f, 1.0f);
    return true;
}

// "#id", "url(#id)" and their quoted forms: the id, or false for a reference to another
// document.
bool LocalReference(std::string_view reference, std::string& id) {
    reference = TrimSpace(reference);
    if (!reference.empty() && (reference.front() == '"' || reference.front() == '\'') &&
        reference.size() >= 2 && reference.back() == reference.front()) {
        reference = TrimSpace(reference.substr(1, reference.size() - 2));
    }
    if (reference.empty() || reference.front() != '#') {
        return false;
    }
    id = std::string(reference.substr(1));
    return true;
}

}  // namespace tq::svg::detail
