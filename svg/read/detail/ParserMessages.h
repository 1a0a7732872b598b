// The message texts that several attribute parsers and the loader share (internal).
#pragma once

#include <string>
#include <string_view>

#include "svg/read/detail/Loader.h"

namespace tq::svg {

inline std::string Quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

// "Attribute "name" specified twice" on the error callback; answers Invalid.
inline AttributeParseResult ReportSpecifiedTwice(Loader& loader, std::string_view name) {
    loader.reportError("Attribute " + Quoted(name) + " specified twice");
    return AttributeParseResult::Invalid;
}

// "Failed to parse value "value" in attribute "name"" on the error callback; answers Invalid.
inline AttributeParseResult ReportFailedToParse(Loader& loader, std::string_view name,
                                                std::string_view value) {
    loader.reportError("Failed to parse value " + Quoted(value) + " in attribute " + Quoted(name));
    return AttributeParseResult::Invalid;
}

// Converts the whole value into `target`, or reports "Failed to parse value ..." and leaves it.
AttributeParseResult StoreNumber(Loader& loader, std::string_view name, std::string_view value,
                                 float& target);

}  // namespace tq::svg
