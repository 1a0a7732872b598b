// The presentation parser, asked first for every attribute of every element, and the
// transform-list parser.
#include <cmath>
#include <string>

#include <Wm4Foundation/Wm4Vector4.h>
#include <tqSystem/tqStringUtils.h>

#include "svg/model/SvgColor.h"
#include "svg/model/detail/SvgNumber.h"
#include "svg/path/detail/PathData.h"
#include "svg/read/detail/AttributeParsers.h"
#include "svg/read/detail/ParserMessages.h"
#include "svg/read/detail/StandardReader.h"
#include "svg/read/detail/StandardValues.h"

namespace tq::svg {

namespace {

using R = AttributeParseResult;

constexpr double kDegreesToRadians = 0.017453292519943295;

// The duplicate rule of every row: the first occurrence sets the property (to the type's zero
// value until the text is read) and later ones are refused. The standard profile lets a later
// value (a style sheet's, a style attribute's) replace an earlier one instead, and stores only a
// value that parses.
template <class T>
bool claim(Loader& loader, std::optional<T>& target, std::string_view name) {
    if (loader.standard() != nullptr) {
        return true;
    }
    if (target) {
        ReportSpecifiedTwice(loader, name);
        return false;
    }
    target = T{};
    return true;
}

// "inherit" under the standard profile: the property is left to the parent.
template <class T>
bool inherits(Loader& loader, std::optional<T>& target, std::string_view value) {
    if (loader.standard() == nullptr ||
        !detail::EqualsLowerCase(detail::TrimSpace(value), "inherit")) {
        return false;
    }
    target.reset();
    return true;
}

R parseNumber(Loader& loader, std::optional<float>& target, std::string_view name,
              std::string_view value) {
    if (inherits(loader, target, value)) {
        return R::Handled;
    }
    if (!claim(loader, target, name)) {
        return R::Invalid;
    }
    if (loader.standard() == nullptr) {
        return StoreNumber(loader, name, value, *target);
    }
    // Opacities are numbers or percentages, clamped; other numbers are lengths.
    float number = 0.0f;
    if (name == "opacity" || name == "fill-opacity" || name == "stroke-opacity") {
        if (!detail::ParseOpacity(value, number)) {
            return ReportFailedToParse(loader, name, value);
        }
    } else if (StoreNumber(loader, name, value, number) != R::Handled) {
        return R::Invalid;
    }
    target = number;
    return R::Handled;
}

// The text is kept as written, even when it is no colour: it survives a load and a save. The
// standard profile keeps instead what its paint reading makes of it.
R parseColour(Loader& loader, std::optional<std::string>& target, std::string_view name,
              std::string_view value) {
    if (!claim(loader, target, name)) {
        return R::Invalid;
    }
    bool valid = true;
    if (detail::StandardReader* standard = loader.standard()) {
        std::string text;
        bool unset = false;
        valid = standard->parsePaint(value, text, unset);
        if (valid) {
            target = unset ? std::nullopt : std::optional<std::string>(std::move(text));
        }
    } else {
        target = std::string(value);
        Wm4::Vector4<unsigned char> colour;
        valid = value == "none" || ParseSvgColor(*target, colour);
    }
    if (!valid) {
        loader.reportError("Failed to parse color " + Quoted(value) + " in attribute " +
                           Quoted(name));
        return R::Invalid;
    }
    return R::Handled;
}

R parseText(Loader& loader, std::optional<std::string>& target, std::string_view name,
            std::string_view value) {
    if (!claim(loader, target, name)) {
        return R::Invalid;
    }
    target = std::string(value);
    return R::Handled;
}

// A keyword among `keywords` stored as the value beside it.
template <class T, std::size_t N>
R parseKeyword(Loader& loader, std::optional<T>& target, std::string_view name,
               std::string_view value, const std::string_view (&keywords)[N],
               const T (&values)[N]) {
    if (inherits(loader, target, value)) {
        return R::Handled;
    }
    if (!claim(loader, target, name)) {
        return R::Invalid;
    }
    const std::string_view keyword = loader.standard() ? detail::TrimSpace(value) : value;
    for (std::size_t i = 0; i < N; ++i) {
        if (keyword == keywords[i]) {
            target = values[i];
            return R::Handled;
        }
    }
    return ReportFailedToParse(loader, name, value);
}

// The standard profile's dashes: lengths with units, none negative; a pattern of zeros draws
// no dashes.
bool parseStandardDashes(detail::StandardReader& standard, std::string_view name,
                         std::string_view value, std::vector<UnitValue>& dashes) {
    std::vector<std::pair<float, detail::LengthUnit>> lengths;
    if (!detail::ParseCssLengthList(value, lengths)) {
        return false;
    }
    bool any = false;
    for (const auto& [number, unit] : lengths) {
        float length = 0.0f;
        if (!standard.toUserUnits(name, number, unit, length) || length < 0.0f) {
            return false;
        }
        any = any || length > 0.0f;
        dashes.emplace_back(length, Unit::None);
    }
    if (!any) {
        dashes.clear();
    }
    return true;
}

// The standard profile's miter limit: a plain number. One below 1 names no miter at all, so it
// is left out with a warning and the inherited or default limit stays.
R parseMiterLimit(Loader& loader, std::optional<float>& target, std::string_view name,
                  std::string_view value) {
    if (inherits(loader, target, value)) {
        return R::Handled;
    }
    float limit = 0.0f;
    detail::LengthUnit unit = detail::LengthUnit::None;
    if (!detail::ParseCssLength(value, limit, unit) || unit != detail::LengthUnit::None) {
        return ReportFailedToParse(loader, name, value);
    }
    if (limit < 1.0f) {
        loader.reportWarning("Ignore " + Quoted(name) + " " + Quoted(value) + ": below 1");
        return R::Handled;
    }
    target = limit;
    return R::Handled;
}

// "none" and an empty value both stand for no dashing: an empty list, which cancels an
// inherited one.
R parseDashArray(Loader& loader, std::optional<std::vector<UnitValue>>& target,
                 std::string_view name, std::string_view value) {
    if (inherits(loader, target, value)) {
        return R::Handled;
    }
    if (!claim(loader, target, name)) {
        return R::Invalid;
    }
    std::vector<UnitValue> dashes;
    if (detail::StandardReader* standard = loader.standard()) {
        if (detail::TrimSpace(value) != "none" &&
            !parseStandardDashes(*standard, name, value, dashes)) {
            return ReportFailedToParse(loader, name, value);
        }
    } else if (value != "none") {
        std::vector<float> numbers;
        if (!ParseNumberList(name, value, 0, static_cast<std::size_t>(-1), numbers,
                             loader.errorCallback())) {
            return R::Invalid;
        }
        for (float number : numbers) {
            dashes.emplace_back(number, Unit::None);
        }
    }
    target = std::move(dashes);
    return R::Handled;
}

bool isTransformSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// One command's matrix; false, after its lines on `error`, when it cannot be built.
bool buildCommandMatrix(std::string_view value, std::string_view command,
                        std::string_view arguments, bool standard, Wm4::Matrix3f& m,
                        const Loader::MessageCallback& error) {
    struct Arity {
        std::string_view name;
        std::size_t min, max;
    };
    static constexpr Arity kCommands[] = {{"matrix", 6, 6}, {"translate", 1, 2}, {"scale", 1, 2},
                                          {"rotate", 1, 3}, {"skewX", 1, 1},     {"skewY", 1, 1}};
    const Arity* arity = nullptr;
    for (const auto& candidate : kCommands) {
        if (candidate.name == command) {
            arity = &candidate;
        }
    }
    if (arity == nullptr) {
        if (error) {
            error("Failed to parse transform attribute " + Quoted(value) +
                  ", unsupported command '" + std::string(command) + "'");
        }
        return false;
    }
    std::vector<float> n;
    const bool read =
        standard ? detail::ReadStandardNumbers(arguments, n) && n.size() >= arity->min &&
                       n.size() <= arity->max
                 : ParseNumberList("transform", arguments, arity->min, arity->max, n, error);
    if (!read) {
        if (error) {
            error("Failed to parse transform attribute " + Quoted(value) + ", fail to parse '" +
                  std::string(command) + "' content");
        }
        return false;
    }
    const auto radians = [](float degrees) {
        return static_cast<float>(static_cast<double>(degrees) * kDegreesToRadians);
    };
    m = Wm4::Matrix3f::IDENTITY;
    if (command == "matrix") {
        m(0, 0) = n[0];
        m(1, 0) = n[1];
        m(0, 1) = n[2];
        m(1, 1) = n[3];
        m(0, 2) = n[4];
        m(1, 2) = n[5];
    } else if (command == "translate") {
        m(0, 2) = n[0];
        m(1, 2) = n.size() > 1 ? n[1] : 0.0f;
    } else if (command == "scale") {
        m(0, 0) = n[0];
        m(1, 1) = n.size() > 1 ? n[1] : n[0];
    } else if (command == "rotate") {
        const float r = radians(n[0]);
        const float c = std::cos(r);
        const float s = std::sin(r);
        m(0, 0) = c;
        m(0, 1) = -s;
        m(1, 0) = s;
        m(1, 1) = c;
        if (n.size() == 3 && standard) {
            // translate(cx, cy) rotate(a) translate(-cx, -cy), as SVG composes it.
            m(0, 2) = n[1] - c * n[1] + s * n[2];
            m(1, 2) = n[2] - s * n[1] - c * n[2];
        } else if (n.size() == 3) {
            // The centre goes straight into the translation column, not as a rotation about
            // it: deliberate.
            m(0, 2) = n[1];
            m(1, 2) = n[2];
        }
    } else if (command == "skewX") {
        m(0, 1) = std::tan(radians(n[0]));
    } else {
        m(1, 0) = std::tan(radians(n[0]));
    }
    return true;
}

R parseTransform(Loader& loader, ItemInterface& item, std::string_view name,
                 std::string_view value) {
    if (item.getTransform() && loader.standard() == nullptr) {
        return ReportSpecifiedTwice(loader, name);
    }
    Wm4::Matrix3f matrix;
    if (!ParseTransformList(value, matrix, loader.errorCallback(), loader.standard() != nullptr)) {
        return R::Invalid;
    }
    // An identity result stores nothing, so a later transform is not "specified twice".
    if (matrix != Wm4::Matrix3f::IDENTITY) {
        item.editTransform() = matrix;
    } else {
        item.editTransform().reset();
    }
    return R::Handled;
}

}  // namespace

bool ParseTransformList(std::string_view value, Wm4::Matrix3f& out,
                        const Loader::MessageCallback& error) {
    return ParseTransformList(value, out, error, false);
}

bool ParseTransformList(std::string_view value, Wm4::Matrix3f& out,
                        const Loader::MessageCallback& error, bool standard) {
    Wm4::Matrix3f accumulated = Wm4::Matrix3f::IDENTITY;
    std::size_t pos = 0;
    while (true) {
        while (pos < value.size() && (isTransformSpace(value[pos]) || value[pos] == ',')) {
            ++pos;
        }
        if (pos == value.size()) {
            break;
        }
        const std::size_t open = value.find('(', pos);
        const std::size_t close = value.find(')', pos);
        if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
            if (error) {
                error("Failed to parse transform attribute " + Quoted(value) +
                      ", fail to locate '(' / ')'");
            }
            return false;
        }
        std::size_t nameEnd = open;
        while (nameEnd > pos && isTransformSpace(value[nameEnd - 1])) {
            --nameEnd;
        }
        Wm4::Matrix3f m;
        if (!buildCommandMatrix(value, value.substr(pos, nameEnd - pos),
                                value.substr(open + 1, close - open - 1), standard, m, error)) {
            return false;
        }
        accumulated = accumulated * m;  // the leftmost command ends up applied last
        pos = close + 1;
    }
    out = accumulated;
    return true;
}

AttributeParseResult ParsePresentationAttribute(Loader& loader, ItemInterface& item,
                                                std::string_view name, std::string_view prefix,
                                                std::string_view value) {
    static constexpr std::string_view kCaps[] = {"butt", "round", "square"};
    static constexpr LineCap kCapValues[] = {LineCap::Butt, LineCap::Round, LineCap::Square};
    static constexpr std::string_view kJoins[] = {"arcs", "bevel", "miter", "miter-clip", "round"};
    static constexpr LineJoin kJoinValues[] = {LineJoin::Arcs, LineJoin::Bevel, LineJoin::Miter,
                                               LineJoin::MiterClip, LineJoin::Round};
    static constexpr std::string_view kEffects[] = {
        "none", "non-scaling-stroke", "non-scaling-size", "non-rotation", "fixed-position"};
    static constexpr VectorEffect kEffectBits[] = {
        VectorEffect::None, VectorEffect::NonScalingStroke, VectorEffect::NonScalingSize,
        VectorEffect::NonRotation, VectorEffect::FixedPosition};
    static constexpr std::string_view kFillRules[] = {"nonzero", "evenodd"};
    static constexpr FillRule kFillRuleValues[] = {FillRule::NonZero, FillRule::EvenOdd};
    if (!prefix.empty()) {
        return R::NotRecognised;
    }
    RenderingProperties& p = item.editProperties();
    if (name == "stroke-width")
        return parseNumber(loader, p.strokeWidth, name, value);
    if (name == "stroke")
        return parseColour(loader, p.stroke, name, value);
    if (name == "stroke-opacity")
        return parseNumber(loader, p.strokeOpacity, name, value);
    if (name == "fill")
        return parseColour(loader, p.fill, name, value);
    if (name == "fill-opacity")
        return parseNumber(loader, p.fillOpacity, name, value);
    if (name == "class")
        return parseText(loader, p.className, name, value);
    if (name == "stroke-linecap")
        return parseKeyword(loader, p.strokeLinecap, name, value, kCaps, kCapValues);
    if (name == "stroke-linejoin")
        return parseKeyword(loader, p.strokeLinejoin, name, value, kJoins, kJoinValues);
    if (name == "stroke-dasharray")
        return parseDashArray(loader, p.strokeDasharray, name, value);
    if (name == "vector-effect")
        return parseKeyword(loader, p.vectorEffect, name, value, kEffects, kEffectBits);
    if (name == "id")
        return parseText(loader, item.editId(), name, value);
    if (name == "transform")
        return parseTransform(loader, item, name, value);
    if (name == "opacity")
        return parseNumber(loader, p.opacity, name, value);
    // The subset refuses these two, as it always has.
    if (name == "stroke-miterlimit" && loader.standard() != nullptr)
        return parseMiterLimit(loader, p.strokeMiterlimit, name, value);
    if (name == "stroke-dashoffset" && loader.standard() != nullptr)
        return parseNumber(loader, p.strokeDashoffset, name, value);
    if (name == "fill-rule")
        return parseKeyword(loader, p.fillRule, name, value, kFillRules, kFillRuleValues);
    return R::NotRecognised;
}

}  // namespace tq::svg
