// The libxml2 text writer that saving writes through, over an in-memory buffer.
#pragma once

#include <cstddef>

#include "tqXml/tqXmlExport.h"

// libxml2's own typedefs, repeated so that hosts need not include libxml2's headers.
extern "C" {
typedef struct _xmlTextWriter xmlTextWriter;
typedef xmlTextWriter* xmlTextWriterPtr;
typedef struct _xmlBuffer xmlBuffer;
typedef xmlBuffer* xmlBufferPtr;
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

    // When the buffer holds at least `threshold` bytes (0: whatever it holds), writes them to
    // `device` and empties the buffer. False when the device refused the bytes.
    bool flushBufferToDevice(tqIoDevice& device, std::size_t threshold);

    xmlTextWriterPtr writer = nullptr;
    int errorCode = 0;  // 0 while all is well

private:
    xmlBufferPtr mBuffer = nullptr;
};

}  // namespace tq::xml
