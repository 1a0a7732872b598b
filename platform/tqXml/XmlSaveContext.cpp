#include "tqXml/XmlSaveContext.h"

#include <libxml/xmlwriter.h>

#include "tqSystem/tqIoDevice.h"

namespace tq::xml {

XmlSaveContext::XmlSaveContext(bool indent) {
    mBuffer = xmlBufferCreate();
    if (mBuffer != nullptr) {
        writer = xmlNewTextWriterMemory(mBuffer, 0);
    }
    if (writer != nullptr) {
        xmlTextWriterSetIndent(writer, indent ? 1 : 0);
    }
}

XmlSaveContext::~XmlSaveContext() {
    if (writer != nullptr) {
        xmlFreeTextWriter(writer);
    }
    if (mBuffer != nullptr) {
        xmlBufferFree(mBuffer);
    }
}

bool XmlSaveContext::flushBufferToDevice(tqIoDevice& device, std::size_t threshold) {
    if (writer == nullptr || mBuffer == nullptr) {
        return false;
    }
    xmlTextWriterFlush(writer);
    const int length = xmlBufferLength(mBuffer);
    if (length <= 0 || static_cast<std::size_t>(length) < threshold) {
        return true;
    }
    const int64 written =
        device.write(reinterpret_cast<const char*>(xmlBufferContent(mBuffer)), length);
    xmlBufferEmpty(mBuffer);
    return written == length;
}

}  // namespace tq::xml
