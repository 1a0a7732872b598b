// Serialisation of the items: one element each, attributes in a fixed order.
#include <algorithm>
#include <cmath>

#include <tqSystem/tqLog.h>
#include <tqSystem/tqStringUtils.h>

#include "svg/model/Circle.h"
#include "svg/model/Document.h"
#include "svg/model/Image.h"
#include "svg/model/Line.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/model/SaveOptions.h"
#include "svg/model/Text.h"
#include "svg/write/SvgAttributeWriters.h"
#include "svg/write/SvgXmlSpace.h"
#include "svg/write/detail/WriteFailure.h"

namespace tq::svg {

using tq::xml::XmlSaveContext;

bool LogWriteFailure(const char* message) {
    tqLog::Log(tqLogObject(tqLogType::Error, "svg", message));
    return false;
}

bool FailWrite(XmlSaveContext& context, int code, const char* message) {
    context.errorCode = code;
    return LogWriteFailure(message);
}

bool WriteAttribute(XmlSaveContext& context, const char* name, const char* value) {
    return context.writeAttribute(name, value, SaveErrorAttribute) ||
           LogWriteFailure("Failed to write attribute");
}

namespace {

bool startElement(XmlSaveContext& context, const char* name, const char* failure) {
    return context.startElement(name, SaveErrorElementStart) || LogWriteFailure(failure);
}

// A float attribute left out when it equals 0.
bool writeIfNonZero(XmlSaveContext& context, const SaveOptions& options, const char* name,
                    float value) {
    return value == 0.0f || Helpers::writeAttributeFloatValue(context, options, name, value);
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Whether the letter of `type` may be left out after `previous`: lines repeat implicitly after a
// moveto of the same kind of coordinates, curves and arcs after themselves.
bool repeatsImplicitly(Path::CommandType type, int previous) {
    using T = Path::CommandType;
    switch (type) {
        case T::LineTo:
            return previous == int(T::MoveTo) || previous == int(T::LineTo);
        case T::LineToRel:
            return previous == int(T::MoveToRel) || previous == int(T::LineToRel);
        case T::MoveTo:
        case T::MoveToRel:
        case T::ClosePath:
            return false;
        default:
            return previous == int(type);
    }
}

// Builds the "d" text into `d`, which keeps its capacity from one path to the next. The string
// is used as a buffer: each command first makes room for its longest text, which is then
// written through a pointer, so that a token costs no call on the string.
//
// Separators: a space between tokens when indenting, otherwise only where a digit would touch a
// digit. A number's text starts with a digit exactly when it is finite and not negative (-0 is
// written 0), so the separator is known before the number is written.
void buildPathData(std::string& d, const std::list<Path::Command>& commands,
                   const SaveOptions& options) {
    constexpr std::size_t kCommandRoom = 2 + 7 * (1 + tqStringUtils::CompactFloatRoom);
    std::size_t length = 0;
    int previous = -1;
    d.clear();
    for (const Path::Command& command : commands) {
        const auto index = static_cast<std::size_t>(command.type);
        if (index >= std::size(Path::CommandValueCounts)) {
            continue;
        }
        if (d.size() < length + kCommandRoom) {
            d.resize(std::max(2 * d.size(), length + kCommandRoom));
        }
        char* const begin = &d[0];
        char* p = begin + length;
        if (!repeatsImplicitly(command.type, previous)) {
            if (options.indent && p != begin) {
                *p++ = ' ';
            }
            *p++ = Path::CommandLetters[index];
        }
        const std::size_t count =
            std::min<std::size_t>(Path::CommandValueCounts[index], command.values.size());
        for (std::size_t i = 0; i < count; ++i) {
            const float value = command.values[i];
            const bool flag = Path::IsFlag(command.type, i);
            const bool digitFirst = flag || (std::isfinite(value) && !(value < 0));
            if (p != begin && (options.indent || (digitFirst && isDigit(p[-1])))) {
                *p++ = ' ';
            }
            if (flag) {
                *p++ = value == 0.0f ? '0' : '1';
            } else {
                p = WriteSvgNumber(p, value, options);
            }
        }
        length = static_cast<std::size_t>(p - begin);
        previous = static_cast<int>(index);
    }
    d.resize(length);
}

}  // namespace

// ---- the common frame ------------------------------------------------------------------------

bool ItemInterface::beginWriteAsXml(XmlSaveContext& context, const SaveOptions& options) const {
    if (!beginWriteAsXmlImplPre(context, options)) {
        return false;
    }
    if (mId && !WriteAttribute(context, "id", mId->c_str())) {
        return false;
    }
    if (!mProperties.writeAttributes(context, options)) {
        return false;
    }
    if (mTransform &&
        !Helpers::writeAttributeTransform(context, options, "transform", *mTransform)) {
        return false;
    }
    return beginWriteAsXmlImplPost(context, options);
}

bool ItemInterface::endWriteAsXml(XmlSaveContext& context, const SaveOptions&) const {
    return context.endElement(SaveErrorElementEnd) || LogWriteFailure("Generic end element failed");
}

bool ItemInterface::beginWriteAsXmlImplPost(XmlSaveContext&, const SaveOptions&) const {
    return true;
}

// ---- groups and the document -----------------------------------------------------------------

bool Node::beginWriteAsXmlNodeWithName(XmlSaveContext& context, const char* name) const {
    return startElement(context, name, "Node failed begin");
}

bool Node::beginWriteAsXmlImplPre(XmlSaveContext& context, const SaveOptions&) const {
    return beginWriteAsXmlNodeWithName(context, "g");
}

bool Document::beginWriteAsXmlImplPre(XmlSaveContext& context, const SaveOptions& options) const {
    if (!beginWriteAsXmlNodeWithName(context, "svg") ||
        !WriteAttribute(context, "xmlns", "http://www.w3.org/2000/svg")) {
        return false;
    }
    // A present but invalid box is left out silently.
    if (mViewBox && mViewBox->isValid()) {
        return Helpers::writeAttributeBox(context, options, "viewBox", mViewBox->min.X(),
                                          mViewBox->min.Y(), mViewBox->getWidth(),
                                          mViewBox->getHeight());
    }
    return true;
}

// The sheet goes first inside "svg", in a CDATA section hidden from CSS inside comments.
bool Document::beginWriteAsXmlImplPost(XmlSaveContext& context, const SaveOptions&) const {
    if (!mStyle || mStyle->empty()) {
        return true;
    }
    if (!startElement(context, "style", "Node failed begin")) {
        return false;
    }
    // Deliberately unchecked: only the style element's start and end count as failures here.
    context.writeRaw("\n/* <![CDATA[ */", XmlSaveContext::Unchecked);
    // The sheet is written raw, but "]]>" would end the section: it is split across two.
    std::size_t start = 0;
    for (std::size_t end = 0; (end = mStyle->find("]]>", start)) != std::string::npos;
         start = end + 3) {
        context.writeRaw(mStyle->substr(start, end - start).c_str(), XmlSaveContext::Unchecked);
        context.writeRaw("]]]]><![CDATA[>", XmlSaveContext::Unchecked);
    }
    context.writeRaw(mStyle->c_str() + start, XmlSaveContext::Unchecked);
    context.writeRaw("\n/* ]]> */", XmlSaveContext::Unchecked);
    // The begin message for an end failure: deliberate.
    return context.endElement(SaveErrorElementEnd) || LogWriteFailure("Node failed begin");
}

bool Document::endWriteAsXml(XmlSaveContext& context, const SaveOptions& options) const {
    return ItemInterface::endWriteAsXml(context, options);
}

// ---- shapes ----------------------------------------------------------------------------------

bool Rect::beginWriteAsXmlImplPre(XmlSaveContext& context, const SaveOptions& options) const {
    return startElement(context, "rect", "Rect failed begin") &&
           writeIfNonZero(context, options, "x", position.X()) &&
           writeIfNonZero(context, options, "y", position.Y()) &&
           Helpers::writeAttributeFloatValue(context, options, "width", size.X()) &&
           Helpers::writeAttributeFloatValue(context, options, "height", size.Y()) &&
           writeIfNonZero(context, options, "rx", radius.X()) &&
           writeIfNonZero(context, options, "ry", radius.Y());
}

bool Circle::beginWriteAsXmlImplPre(XmlSaveContext& context, const SaveOptions& options) const {
    return startElement(context, "circle", "Circle failed begin") &&
           Helpers::writeAttributeFloatValue(context, options, "r", radius) &&
           writeIfNonZero(context, options, "cx", center.X()) &&
           writeIfNonZero(context, options, "cy", center.Y());
}

bool Line::beginWriteAsXmlImplPre(XmlSaveContext& context, const SaveOptions& options) const {
    return startElement(context, "line", "Line failed begin") &&
           writeIfNonZero(context, options, "x1", start.X()) &&
           writeIfNonZero(context, options, "y1", start.Y()) &&
           writeIfNonZero(context, options, "x2", end.X()) &&
           writeIfNonZero(context, options, "y2", end.Y());
}

bool Path::beginWriteAsXmlImplPre(XmlSaveContext& context, const SaveOptions& options) const {
    if (!startElement(context, "path", "Path failed begin")) {
        return false;
    }
    std::string& d = context.scratch();
    buildPathData(d, commands, options);
    return WriteAttribute(context, "d", d.c_str());
}

bool Image::beginWriteAsXmlImplPre(XmlSaveContext& context, const SaveOptions& options) const {
    static constexpr const char* kAlignments[] = {"xMinYMin", "xMidYMin", "xMaxYMin",
                                                  "xMinYMid", "xMidYMid", "xMaxYMid",
                                                  "xMinYMax", "xMidYMax", "xMaxYMax"};
    if (!startElement(context, "image", "Image failed begin") ||
        !writeIfNonZero(context, options, "x", position.X()) ||
        !writeIfNonZero(context, options, "y", position.Y()) ||
        !Helpers::writeAttributeFloatValue(context, options, "width", size.X()) ||
        !Helpers::writeAttributeFloatValue(context, options, "height", size.Y()) ||
        !WriteAttribute(context, "href", href.c_str())) {
        return false;
    }
    // "none" reads as 0 and is therefore not written back: deliberate.
    if (!preserveAspectRatio || *preserveAspectRatio == AspectRatioAlign::None) {
        return true;
    }
    const auto value = static_cast<std::size_t>(*preserveAspectRatio);
    return Helpers::writeAttributeString(context, options, "preserveAspectRatio",
                                         value <= 9 ? kAlignments[value - 1] : "none");
}

bool Text::beginWriteAsXmlImplPre(XmlSaveContext& context, const SaveOptions& options) const {
    if (!startElement(context, "text", "Text failed begin") ||
        !writeIfNonZero(context, options, "x", position.X()) ||
        !writeIfNonZero(context, options, "y", position.Y())) {
        return false;
    }
    if (fontFamily && !WriteAttribute(context, "font-family", fontFamily->c_str())) {
        return false;
    }
    if (bold.value_or(false) && !WriteAttribute(context, "font-weight", "bold")) {
        return false;
    }
    if (italic.value_or(false) && !WriteAttribute(context, "font-style", "italic")) {
        return false;
    }
    if (underline.value_or(false) && !WriteAttribute(context, "text-decoration", "underline")) {
        return false;
    }
    if (fontSize && !Helpers::writeAttributeFloatValue(context, options, "font-size", *fontSize)) {
        return false;
    }
    if (textLength &&
        !Helpers::writeAttributeUnitValue(context, options, "textLength", *textLength)) {
        return false;
    }
    if (xmlSpacePreserve &&
        !WriteAttribute(context, "xml:space", *xmlSpacePreserve ? "preserve" : "default")) {
        return false;
    }
    return true;
}

// The content is written as stored: no white-space rule is applied here.
bool Text::endWriteAsXml(XmlSaveContext& context, const SaveOptions& options) const {
    if (text.size() >= (std::size_t(1) << 31)) {
        return FailWrite(context, SaveErrorElementEnd, "Text content was too long");
    }
    if (!tqStringUtils::IsUtf8String(text)) {
        return FailWrite(context, SaveErrorElementEnd, "Text content was not utf8");
    }
    if (!context.writeText(text.c_str(), SaveErrorElementEnd)) {
        return LogWriteFailure("Text failed write content");
    }
    return ItemInterface::endWriteAsXml(context, options);
}

// ---- presentation attributes -----------------------------------------------------------------

// In the library's own order (stroke before fill, opacity after class), which byte-identical
// output depends on.
bool RenderingProperties::writeAttributes(XmlSaveContext& context,
                                          const SaveOptions& options) const {
    using namespace Helpers;
    static constexpr const char* kJoins[] = {"arcs", "bevel", "miter", "miter-clip", "round"};
    if (strokeWidth && !writeAttributeFloatValue(context, options, "stroke-width", *strokeWidth)) {
        return false;
    }
    if (strokeOpacity &&
        !writeAttributeFloatValue(context, options, "stroke-opacity", *strokeOpacity)) {
        return false;
    }
    if (stroke && !stroke->empty() && !WriteAttribute(context, "stroke", stroke->c_str())) {
        return false;
    }
    if (fill && !fill->empty() && !WriteAttribute(context, "fill", fill->c_str())) {
        return false;
    }
    if (fillOpacity && !writeAttributeFloatValue(context, options, "fill-opacity", *fillOpacity)) {
        return false;
    }
    if (className && !className->empty() &&
        !writeAttributeString(context, options, "class", *className)) {
        return false;
    }
    if (opacity && !writeAttributeFloatValue(context, options, "opacity", *opacity)) {
        return false;
    }
    if (strokeLinecap) {
        const char* cap = *strokeLinecap == LineCap::Round    ? "round"
                          : *strokeLinecap == LineCap::Square ? "square"
                                                              : "butt";
        if (!writeAttributeString(context, options, "stroke-linecap", cap)) {
            return false;
        }
    }
    if (strokeLinejoin) {
        const auto join = static_cast<std::size_t>(*strokeLinejoin);
        if (!writeAttributeString(context, options, "stroke-linejoin",
                                  join < std::size(kJoins) ? kJoins[join] : "miter")) {
            return false;
        }
    }
    if (strokeDasharray &&
        !writeAttributeUnitValues(context, options, "stroke-dasharray", *strokeDasharray)) {
        return false;
    }
    if (vectorEffect) {
        static constexpr std::pair<VectorEffect, const char*> kEffects[] = {
            {VectorEffect::NonScalingStroke, "non-scaling-stroke"},
            {VectorEffect::NonScalingSize, "non-scaling-size"},
            {VectorEffect::NonRotation, "non-rotation"},
            {VectorEffect::FixedPosition, "fixed-position"}};
        std::string& keywords = context.scratch();
        keywords.clear();
        for (const auto& [bit, keyword] : kEffects) {
            if ((*vectorEffect & bit) != VectorEffect::None) {
                keywords += keywords.empty() ? "" : " ";
                keywords += keyword;
            }
        }
        if (!writeAttributeString(context, options, "vector-effect",
                                  keywords.empty() ? "none" : keywords.c_str())) {
            return false;
        }
    }
    if (fillRule && !writeAttributeString(context, options, "fill-rule",
                                          *fillRule == FillRule::EvenOdd ? "evenodd" : "nonzero")) {
        return false;
    }
    if (strokeMiterlimit &&
        !writeAttributeFloatValue(context, options, "stroke-miterlimit", *strokeMiterlimit)) {
        return false;
    }
    if (strokeDashoffset &&
        !writeAttributeFloatValue(context, options, "stroke-dashoffset", *strokeDashoffset)) {
        return false;
    }
    return true;
}

// ---- text helpers ------------------------------------------------------------------------------

std::string ApplySvgXMLSpacePreserve(const std::string& text) {
    std::string result = text;
    for (char& c : result) {
        if (c == '\t' || c == '\n' || c == '\r') {
            c = ' ';
        }
    }
    return result;
}

std::string ApplySvgXMLSpaceDefault(const std::string& text) {
    std::string result;
    result.reserve(text.size());
    bool pendingBlank = false;  // a run of blanks waiting for what follows it
    for (char c : text) {
        if (c == '\n' || c == '\r') {
            // A line break ends the current run; its blanks count once, unless at the start.
            if (pendingBlank && !result.empty()) {
                result += ' ';
            }
            pendingBlank = false;
        } else if (c == ' ' || c == '\t') {
            pendingBlank = true;
        } else {
            if (pendingBlank && !result.empty()) {
                result += ' ';
            }
            pendingBlank = false;
            result += c;
        }
    }
    return result;  // a blank run at the very end is dropped
}

}  // namespace tq::svg
