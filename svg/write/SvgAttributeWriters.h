// Attribute writers: every value that the writers put into SVG text goes through these, so the
// library has one number format.
#pragma once

#include <string>
#include <vector>

#include <Wm4Foundation/Wm4Matrix3.h>
#include <tqSystem/tqTypes.h>
#include <tqXml/XmlSaveContext.h>

#include "svg/model/SaveOptions.h"
#include "svg/model/UnitValue.h"
#include "svg/tqSvgExport.h"

namespace tq::svg::Helpers {

// The shortest text that reads back as the same float (or `options.floatPrecision` significant
// digits), in the C locale; "-0" is written "0".
TQSVG_EXPORT std::string floatToSvgNumber(float value, const SaveOptions& options);
// The same text appended to `out`.
TQSVG_EXPORT void appendSvgNumber(std::string& out, float value, const SaveOptions& options);

// Each writes the attribute `name` through the context's writer and returns true; on a writer
// failure it sets the context's error code to 6, logs "Failed to write attribute" and returns
// false.
TQSVG_EXPORT bool writeAttributeString(tq::xml::XmlSaveContext& context, const SaveOptions& options,
                                       const char* name, const char* value);
TQSVG_EXPORT bool writeAttributeString(tq::xml::XmlSaveContext& context, const SaveOptions& options,
                                       const char* name, const std::string& value);
TQSVG_EXPORT bool writeAttributeFloatValue(tq::xml::XmlSaveContext& context,
                                           const SaveOptions& options, const char* name,
                                           float value);
// The number followed by the unit's suffix, with no space ("5px").
TQSVG_EXPORT bool writeAttributeUnitValue(tq::xml::XmlSaveContext& context,
                                          const SaveOptions& options, const char* name,
                                          const UnitValue& value);
// The values separated by one space; an empty list writes an empty value.
TQSVG_EXPORT bool writeAttributeUnitValues(tq::xml::XmlSaveContext& context,
                                           const SaveOptions& options, const char* name,
                                           const std::vector<UnitValue>& values);
TQSVG_EXPORT bool writeAttributeBox(tq::xml::XmlSaveContext& context, const SaveOptions& options,
                                    const char* name, float x, float y, float width, float height);
// "matrix(a b c d e f)"; nothing at all for a matrix bit-identical to the identity.
TQSVG_EXPORT bool writeAttributeTransform(tq::xml::XmlSaveContext& context,
                                          const SaveOptions& options, const char* name,
                                          const Wm4::Matrix3f& matrix);
// The two integer writers deliberately format through the formatter of the other signedness:
// -1 given to writeAttributeSignedInt is written "18446744073709551615".
TQSVG_EXPORT bool writeAttributeSignedInt(tq::xml::XmlSaveContext& context,
                                          const SaveOptions& options, const char* name,
                                          int64 value);
TQSVG_EXPORT bool writeAttributeUnsignedInt(tq::xml::XmlSaveContext& context,
                                            const SaveOptions& options, const char* name,
                                            uint64 value);

}  // namespace tq::svg::Helpers
