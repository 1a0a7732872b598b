// The XML writer that saving writes through: libxml2's text writer over an in-memory buffer,
// wrapped so that one place talks to libxml2 and every failure sets the context's error code.
#pragma once

#include <cstddef>
#include <string>

#include "tqXml/tqXmlExport.h"

// libxml2's own typedefs, repeated so that hosts need not include libxml2's headers.
extern "C" {
typedef struct _xmlTextWriter xmlTextWriter;
typedef xmlTextWriter* xmlTextWriterPtr;
typedef struct _xmlOutputBuffer xmlOutputBuffer;
typedef xmlOutputBuffer* xmlOutputBufferPtr;
}

class tqIoDevice;

namespace tq::xml {

class TQXML_EXPORT XmlSaveContext {
public:
    // `indent` switches the writer's indentation.
    explicit XmlSaveContext(bool indent);
    ~XmlSaveContext();

    XmlSaveContext(const XmlSaveContext&) = delete;
    XmlSaveContext& operator=(const XmlSaveContext&) = delete;

    // A failure code that leaves errorCode as it is: the write is deliberately unchecked.
    static constexpr int Unchecked = 0;

    // Each write returns true when the writer took it. On failure it sets errorCode to
    // `failureCode` (unless that is Unchecked) and returns false; it never throws. Names, values
    // and text are NUL-terminated: a NUL ends them.
    //
    // Opens an element; its attributes follow, then its content.
    bool startElement(const char* name, int failureCode);
    // An attribute of the element just opened, its value escaped as libxml2 escapes it.
    bool writeAttribute(const char* name, const char* value, int failureCode);
    // Text content, escaped.
    bool writeText(const char* text, int failureCode);
    // Text written as it is, unescaped.
    bool writeRaw(const char* text, int failureCode);
    bool writeComment(const char* text, int failureCode);
    // Closes the innermost open element.
    bool endElement(int failureCode);
    // Closes every open element and ends the document.
    bool endDocument(int failureCode);

    // When the buffer holds at least `threshold` bytes (0: whatever it holds), writes them to
    // `device` and empties the buffer. False when the device refused the bytes.
    bool flushBufferToDevice(tqIoDevice& device, std::size_t threshold);

    // False when the writer could not be created; every write then fails.
    bool isValid() const { return writer != nullptr; }

    // A text buffer that callers reuse to build attribute values, so that a save allocates once
    // rather than once per element. What it holds between uses means nothing.
    std::string& scratch() { return mScratch; }

    // The libxml2 writer itself, public because hosts of this class have always reached it: the
    // escape hatch for what the methods above do not cover. Its bytes land in the same buffer,
    // but its failures set no error code. The library writes only through the methods.
    xmlTextWriterPtr writer = nullptr;

    int errorCode = 0;  // 0 while all is well

private:
    bool fail(int failureCode);

    xmlOutputBufferPtr mOutput = nullptr;  // the writer's (freed with it), read when flushing
    std::string mScratch;
};

}  // namespace tq::xml
