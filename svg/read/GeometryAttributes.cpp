// The per-tag attribute parsers: geometry and structure.
#include <utf8.h>

#include <algorithm>
#include <string>

#include <tqSystem/tqStringUtils.h>

#include "svg/model/Circle.h"
#include "svg/model/Document.h"
#include "svg/model/Image.h"
#include "svg/model/Line.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/model/Text.h"
#include "svg/model/detail/SvgNumber.h"
#include "svg/path/detail/PathData.h"
#include "svg/read/detail/AttributeParsers.h"
#include "svg/read/detail/ParserMessages.h"
#include "svg/read/detail/StandardReader.h"
#include "svg/read/detail/StandardShapes.h"

namespace tq::svg {

namespace {

using R = AttributeParseResult;

// Claims the element's slot for this attribute: false, after the message, when it was taken.
bool claimSlot(Loader& loader, std::size_t slot, std::string_view name) {
    bool& seen = loader.stack().attributeSeen[slot];
    if (seen) {
        ReportSpecifiedTwice(loader, name);
        return false;
    }
    seen = true;
    return true;
}

// A slot-guarded number: the slot stays claimed when the value does not parse.
R parseNumberInto(Loader& loader, std::size_t slot, std::string_view name, std::string_view value,
                  float& target) {
    return claimSlot(loader, slot, name) ? StoreNumber(loader, name, value, target) : R::Invalid;
}

// Adds instead of storing: the position of a text accumulates x and dx (y and dy), deliberately.
R addNumberTo(Loader& loader, std::size_t slot, std::string_view name, std::string_view value,
              float& target) {
    float number = 0.0f;
    const R result = parseNumberInto(loader, slot, name, value, number);
    if (result == R::Handled) {
        target += number;
    }
    return result;
}

// The position of `name` in `names` (for the numeric attributes, their slot), or -1.
template <std::size_t N>
int indexOf(const std::string_view (&names)[N], std::string_view name) {
    for (std::size_t i = 0; i < N; ++i) {
        if (names[i] == name) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

// An unprefixed attribute among `names` stored as a number into the target of its slot.
template <std::size_t N>
R parseSlottedNumber(Loader& loader, const std::string_view (&names)[N], float* const (&targets)[N],
                     std::string_view name, std::string_view prefix, std::string_view value) {
    const int slot = prefix.empty() ? indexOf(names, name) : -1;
    if (slot < 0) {
        return R::NotRecognised;
    }
    return parseNumberInto(loader, static_cast<std::size_t>(slot), name, value, *targets[slot]);
}

bool isSeparator(char32_t c) {
    return c == U' ' || c == U',' || c == U'\t' || c == U'\n' || c == U'\r';
}

// A number as the profile reads it: the whole value under the subset, a length with its unit
// under the standard profile.
bool readNumber(Loader& loader, std::string_view name, std::string_view value, float& number) {
    if (const detail::StandardReader* standard = loader.standard()) {
        return standard->parseLength(name, value, number);
    }
    return ParseSvgNumber(value, number);
}

}  // namespace

AttributeParseResult StoreNumber(Loader& loader, std::string_view name, std::string_view value,
                                 float& target) {
    float number = 0.0f;
    if (!readNumber(loader, name, value, number)) {
        return ReportFailedToParse(loader, name, value);
    }
    target = number;
    return AttributeParseResult::Handled;
}

bool ParseNumberList(std::string_view name, std::string_view value, std::size_t minCount,
                     std::size_t maxCount, std::vector<float>& out,
                     const Loader::MessageCallback& error) {
    std::string copy(value);
    for (auto it = copy.begin(); it != copy.end();) {
        auto at = it;
        if (isSeparator(utf8::next(it, copy.end()))) {
            *at = ' ';
        }
    }
    const std::vector<std::string> parts = tqStringUtils::Split(copy, ' ', true);
    if (parts.size() < minCount || parts.size() > maxCount) {
        if (error) {
            error("Wrong number of values for " + Quoted(name));
        }
        return false;
    }
    out.clear();
    for (const std::string& part : parts) {
        float number = 0.0f;
        if (!ParseSvgNumber(part, number)) {
            if (error) {
                error("Failed to parse value " + Quoted(part) + " in attribute " + Quoted(name));
            }
            return false;
        }
        out.push_back(number);
    }
    return true;
}

AttributeParseResult ParseSvgAttribute(Loader& loader, ItemInterface& item, std::string_view name,
                                       std::string_view prefix, std::string_view value) {
    if (item.getType() != ItemType::Document) {
        return R::Invalid;
    }
    if (!prefix.empty()) {
        return R::NotRecognised;
    }
    auto& document = static_cast<Document&>(item);
    if (name == "xmlns") {
        // Once per document: a nested svg element repeating it is reported.
        if (loader.stack().xmlnsSeen) {
            return ReportSpecifiedTwice(loader, name);
        }
        loader.stack().xmlnsSeen = true;
        return R::Handled;
    }
    if (name == "viewBox") {
        if (document.getViewbox()) {
            return ReportSpecifiedTwice(loader, name);
        }
        if (loader.standard() != nullptr) {
            BoundingBox box;
            if (!detail::ParseViewBox(value, box)) {
                return R::Invalid;
            }
            document.editViewbox() = box;
            return R::Handled;
        }
        document.editViewbox() = BoundingBox();
        std::vector<float> numbers;
        if (!ParseNumberList(name, value, 4, 4, numbers, loader.errorCallback())) {
            return R::Invalid;
        }
        document.editViewbox() =
            BoundingBox(Wm4::Vector2f(numbers[0], numbers[1]),
                        Wm4::Vector2f(numbers[0] + numbers[2], numbers[1] + numbers[3]));
        return R::Handled;
    }
    return R::NotRecognised;
}

AttributeParseResult ParseGroupAttribute(Loader&, ItemInterface& item, std::string_view,
                                         std::string_view, std::string_view) {
    return item.getType() == ItemType::Node ? R::NotRecognised : R::Invalid;
}

AttributeParseResult ParseRectAttribute(Loader& loader, ItemInterface& item, std::string_view name,
                                        std::string_view prefix, std::string_view value) {
    static constexpr std::string_view kNames[] = {"x", "y", "width", "height", "rx", "ry"};
    if (item.getType() != ItemType::Rect) {
        return R::Invalid;
    }
    auto& rect = static_cast<Rect&>(item);
    float* const targets[] = {&rect.position.X(), &rect.position.Y(), &rect.size.X(),
                              &rect.size.Y(),     &rect.radius.X(),   &rect.radius.Y()};
    return parseSlottedNumber(loader, kNames, targets, name, prefix, value);
}

AttributeParseResult ParseLineAttribute(Loader& loader, ItemInterface& item, std::string_view name,
                                        std::string_view prefix, std::string_view value) {
    static constexpr std::string_view kNames[] = {"x1", "x2", "y1", "y2"};
    if (item.getType() != ItemType::Line) {
        return R::Invalid;
    }
    auto& line = static_cast<Line&>(item);
    float* const targets[] = {&line.start.X(), &line.end.X(), &line.start.Y(), &line.end.Y()};
    return parseSlottedNumber(loader, kNames, targets, name, prefix, value);
}

AttributeParseResult ParseCircleAttribute(Loader& loader, ItemInterface& item,
                                          std::string_view name, std::string_view prefix,
                                          std::string_view value) {
    static constexpr std::string_view kNames[] = {"r", "cx", "cy"};
    if (item.getType() != ItemType::Circle) {
        return R::Invalid;
    }
    auto& circle = static_cast<Circle&>(item);
    float* const targets[] = {&circle.radius, &circle.center.X(), &circle.center.Y()};
    return parseSlottedNumber(loader, kNames, targets, name, prefix, value);
}

AttributeParseResult ParsePathAttribute(Loader& loader, ItemInterface& item, std::string_view name,
                                        std::string_view prefix, std::string_view value) {
    if (item.getType() != ItemType::Path) {
        return R::Invalid;
    }
    if (!prefix.empty() || name != "d") {
        return R::NotRecognised;
    }
    if (!claimSlot(loader, 0, name)) {
        return R::Invalid;
    }
    std::string error;
    auto& commands = static_cast<Path&>(item).commands;
    if (loader.standard() != nullptr) {
        // As browsers do, a path is drawn up to its first error.
        if (!detail::ReadStandardPathData(value, commands, error)) {
            loader.reportWarning("Path data drawn up to its error: " + error);
        }
        return R::Handled;
    }
    if (!detail::ReadSubsetPathData(value, commands, error)) {
        loader.reportError("Malformed path attribute, " + error);
        return R::Invalid;
    }
    return R::Handled;
}

AttributeParseResult ParseImageAttribute(Loader& loader, ItemInterface& item, std::string_view name,
                                         std::string_view prefix, std::string_view value) {
    static constexpr std::string_view kNames[] = {"x", "y", "width", "height"};
    static constexpr std::string_view kAlignments[] = {
        "none",     "xMinYMin", "xMidYMin", "xMaxYMin", "xMinYMid",
        "xMidYMid", "xMaxYMid", "xMinYMax", "xMidYMax", "xMaxYMax"};
    if (item.getType() != ItemType::Image) {
        return R::Invalid;
    }
    if (!prefix.empty()) {
        return R::NotRecognised;
    }
    auto& image = static_cast<Image&>(item);
    if (indexOf(kNames, name) >= 0) {
        float* const targets[] = {&image.position.X(), &image.position.Y(), &image.size.X(),
                                  &image.size.Y()};
        return parseSlottedNumber(loader, kNames, targets, name, prefix, value);
    }
    if (name == "href") {
        // An empty href does not count as given: a second one is then accepted.
        if (!image.href.empty()) {
            return ReportSpecifiedTwice(loader, name);
        }
        image.href = std::string(value);
        return R::Handled;
    }
    if (name == "preserveAspectRatio") {
        if (image.preserveAspectRatio) {
            return ReportSpecifiedTwice(loader, name);
        }
        const int alignment = indexOf(kAlignments, value);
        image.preserveAspectRatio = static_cast<AspectRatioAlign>(std::max(alignment, 0));
        return alignment >= 0 ? R::Handled : ReportFailedToParse(loader, name, value);
    }
    return R::NotRecognised;
}

AttributeParseResult ParseTextAttribute(Loader& loader, ItemInterface& item, std::string_view name,
                                        std::string_view prefix, std::string_view value) {
    static constexpr std::string_view kPosition[] = {"x", "y", "dx", "dy"};
    if (item.getType() != ItemType::Text) {
        return R::Invalid;
    }
    auto& text = static_cast<Text&>(item);
    if (!prefix.empty()) {
        if (prefix == "xml" && name == "space") {
            text.xmlSpacePreserve = value == "preserve";
            return R::Handled;
        }
        return R::NotRecognised;
    }
    if (const int slot = indexOf(kPosition, name); slot >= 0) {
        float& axis = slot % 2 == 0 ? text.position.X() : text.position.Y();
        return addNumberTo(loader, static_cast<std::size_t>(slot), name, value, axis);
    }
    if (name == "font-size") {
        if (loader.standard() != nullptr &&
            detail::EqualsLowerCase(detail::TrimSpace(value), "inherit")) {
            return R::Handled;  // the parent's size, which the text does not keep
        }
        if (!claimSlot(loader, 4, name)) {
            return R::Invalid;
        }
        text.fontSize = text.fontSize.value_or(0.0f);  // set before the value is parsed
        float number = 0.0f;
        if (!readNumber(loader, name, value, number)) {
            return ReportFailedToParse(loader, name, value);
        }
        *text.fontSize += number;
        return R::Handled;
    }
    if (name == "textLength") {
        if (text.textLength) {
            return ReportSpecifiedTwice(loader, name);
        }
        text.textLength = UnitValue(0.0f, Unit::None);
        float number = 0.0f;
        if (!readNumber(loader, name, value, number)) {
            return ReportFailedToParse(loader, name, value);
        }
        text.textLength->value = number;
        return R::Handled;
    }
    if (name == "font-family") {
        text.fontFamily = std::string(value);
        return R::Handled;
    }
    // Keywords other than the one that matters are accepted without effect.
    if (name == "font-weight") {
        if (value == "bold") {
            text.bold = true;
        }
        return R::Handled;
    }
    if (name == "font-style") {
        if (value == "italic") {
            text.italic = true;
        }
        return R::Handled;
    }
    if (name == "text-decoration") {
        if (value == "underline") {
            text.underline = true;
        }
        return R::Handled;
    }
    // A text reports its unknown attributes itself.
    const std::string message =
        "Ignore unsupported attribute " + Quoted(name) + " with value " + Quoted(value);
    if (loader.ignoresUnsupported()) {
        loader.reportWarning(message);
        return R::Handled;
    }
    loader.reportError(message);
    return R::Invalid;
}

}  // namespace tq::svg
