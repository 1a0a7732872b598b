#include "svg/write/SvgAttributeWriters.h"

#include <cstring>

#include <tqSystem/tqLog.h>
#include <tqSystem/tqStringUtils.h>

#include "svg/write/detail/WriteFailure.h"

namespace tq::svg::Helpers {

namespace {

void appendUnitValue(std::string& text, const UnitValue& value, const SaveOptions& options) {
    appendSvgNumber(text, value.value, options);
    UnitToString(value.unit, text, true);
}

}  // namespace

std::string floatToSvgNumber(float value, const SaveOptions& options) {
    std::string text;
    appendSvgNumber(text, value, options);
    return text;
}

void appendSvgNumber(std::string& out, float value, const SaveOptions& options) {
    char text[tqStringUtils::CompactFloatRoom];
    out.append(text, static_cast<std::size_t>(WriteSvgNumber(text, value, options) - text));
}

bool writeAttributeString(tq::xml::XmlSaveContext& context, const SaveOptions&, const char* name,
                          const char* value) {
    return WriteAttribute(context, name, value);
}

bool writeAttributeString(tq::xml::XmlSaveContext& context, const SaveOptions& options,
                          const char* name, const std::string& value) {
    return writeAttributeString(context, options, name, value.c_str());
}

// The values below are built in the context's scratch text, which keeps its capacity from one
// attribute to the next.

bool writeAttributeFloatValue(tq::xml::XmlSaveContext& context, const SaveOptions& options,
                              const char* name, float value) {
    std::string& text = context.scratch();
    text.clear();
    appendSvgNumber(text, value, options);
    return writeAttributeString(context, options, name, text);
}

bool writeAttributeUnitValue(tq::xml::XmlSaveContext& context, const SaveOptions& options,
                             const char* name, const UnitValue& value) {
    std::string& text = context.scratch();
    text.clear();
    appendUnitValue(text, value, options);
    return writeAttributeString(context, options, name, text);
}

bool writeAttributeUnitValues(tq::xml::XmlSaveContext& context, const SaveOptions& options,
                              const char* name, const std::vector<UnitValue>& values) {
    std::string& text = context.scratch();
    text.clear();
    for (const UnitValue& value : values) {
        if (!text.empty()) {
            text += ' ';
        }
        appendUnitValue(text, value, options);
    }
    return writeAttributeString(context, options, name, text);
}

bool writeAttributeBox(tq::xml::XmlSaveContext& context, const SaveOptions& options,
                       const char* name, float x, float y, float width, float height) {
    std::string& text = context.scratch();
    text.clear();
    for (const float value : {x, y, width, height}) {
        if (!text.empty()) {
            text += ' ';
        }
        appendSvgNumber(text, value, options);
    }
    return writeAttributeString(context, options, name, text);
}

bool writeAttributeTransform(tq::xml::XmlSaveContext& context, const SaveOptions& options,
                             const char* name, const Wm4::Matrix3f& matrix) {
    // Bit for bit: a matrix that differs from the identity only by a -0 is written.
    bool identity = true;
    for (int row = 0; row < 3 && identity; ++row) {
        for (int col = 0; col < 3 && identity; ++col) {
            const float a = matrix(row, col);
            const float b = Wm4::Matrix3f::IDENTITY(row, col);
            identity = std::memcmp(&a, &b, sizeof a) == 0;
        }
    }
    if (identity) {
        return true;
    }
    // Column by column from the first two rows: SVG's a b c d e f.
    const float values[6] = {matrix(0, 0), matrix(1, 0), matrix(0, 1),
                             matrix(1, 1), matrix(0, 2), matrix(1, 2)};
    std::string& text = context.scratch();
    text = "matrix(";
    for (int i = 0; i < 6; ++i) {
        if (i > 0) {
            text += ' ';
        }
        appendSvgNumber(text, values[i], options);
    }
    text += ')';
    return writeAttributeString(context, options, name, text);
}

bool writeAttributeSignedInt(tq::xml::XmlSaveContext& context, const SaveOptions& options,
                             const char* name, int64 value) {
    return writeAttributeString(context, options, name,
                                tqStringUtils::fromUInt64(static_cast<uint64>(value), 1));
}

bool writeAttributeUnsignedInt(tq::xml::XmlSaveContext& context, const SaveOptions& options,
                               const char* name, uint64 value) {
    return writeAttributeString(context, options, name,
                                tqStringUtils::fromInt64(static_cast<int64>(value), 1));
}

}  // namespace tq::svg::Helpers

namespace tq::svg {

char* WriteSvgNumber(char* out, float value, const SaveOptions& options) {
    char* end = tqStringUtils::writeCompactFloat(out, value, options.floatPrecision);
    if (end - out == 2 && out[0] == '-' && out[1] == '0') {
        out[0] = '0';
        return out + 1;
    }
    return end;
}

}  // namespace tq::svg
