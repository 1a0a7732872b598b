// What the writers share internally: failure reporting and the number writer.
#pragma once

#include <tqXml/XmlSaveContext.h>

#include "svg/model/SaveOptions.h"

namespace tq::svg {

// Error codes of a save, kept in XmlSaveContext::errorCode.
enum SaveErrorCode {
    SaveErrorHeader = 2,        // the document start or a header comment
    SaveErrorDocumentEnd = 3,   // the document end
    SaveErrorElementStart = 4,  // a start tag
    SaveErrorElementEnd = 5,    // an end tag or text content
    SaveErrorAttribute = 6,     // an attribute
};

// Logs `message` under "svg" and returns false; the context's write has set the code.
bool LogWriteFailure(const char* message);

// Sets the code, logs `message` under "svg" and returns false: for failures that no write
// reported.
bool FailWrite(tq::xml::XmlSaveContext& context, int code, const char* message);

// Writes one attribute with its text as it stands; code 6 and its log line on failure.
bool WriteAttribute(tq::xml::XmlSaveContext& context, const char* name, const char* value);

// Helpers::floatToSvgNumber's text written at `out`, which must have room for
// tqStringUtils::CompactFloatRoom bytes; returns its end.
char* WriteSvgNumber(char* out, float value, const SaveOptions& options);

}  // namespace tq::svg
