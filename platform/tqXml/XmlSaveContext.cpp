// Every call into libxml2's writer is made here. The writer writes into an output buffer that
// has no write callback, so its bytes stay in that one buffer until flushBufferToDevice hands
// them to the device: one copy fewer than a writer over a separate memory buffer.
#include "tqXml/XmlSaveContext.h"

#include <libxml/xmlIO.h>
#include <libxml/xmlwriter.h>

#include <array>
#include <climits>

#include "tqSystem/tqIoDevice.h"

namespace tq::xml {

namespace {

const xmlChar* xml(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

// The bytes that libxml2 writes unchanged inside a quoted attribute value: printable ASCII but
// the quote, '&', '<' and '>'. It rewrites white space other than the blank and control
// characters as character references and checks non-ASCII bytes as UTF-8, so values with any of
// those still go through it.
constexpr std::array<bool, 256> kPlainInAttribute = [] {
    std::array<bool, 256> plain{};
    for (int c = 0x20; c < 0x7f; ++c) {
        plain[std::size_t(c)] = c != '"' && c != '&' && c != '<' && c != '>';
    }
    return plain;
}();

// The length of `value` when every byte of it is plain and the length fits libxml2's int,
// otherwise -1.
int plainAttributeLength(const char* value) {
    const char* p = value;
    while (kPlainInAttribute[static_cast<unsigned char>(*p)]) {
        ++p;
    }
    return *p == '\0' && p - value <= INT_MAX ? int(p - value) : -1;
}

}  // namespace

XmlSaveContext::XmlSaveContext(bool indent) {
    xmlOutputBufferPtr output = xmlAllocOutputBuffer(nullptr);
    if (output == nullptr) {
        return;
    }
    writer = xmlNewTextWriter(output);
    if (writer == nullptr) {
        xmlOutputBufferClose(output);
        return;
    }
    mOutput = output;
    xmlTextWriterSetIndent(writer, indent ? 1 : 0);
}

XmlSaveContext::~XmlSaveContext() {
    if (writer != nullptr) {
        xmlFreeTextWriter(writer);  // closes its output buffer too
    }
}

bool XmlSaveContext::fail(int failureCode) {
    if (failureCode != Unchecked) {
        errorCode = failureCode;
    }
    return false;
}

bool XmlSaveContext::startElement(const char* name, int failureCode) {
    return (writer != nullptr && xmlTextWriterStartElement(writer, xml(name)) >= 0) ||
           fail(failureCode);
}

bool XmlSaveContext::writeAttribute(const char* name, const char* value, int failureCode) {
    if (writer == nullptr || value == nullptr) {
        return fail(failureCode);
    }
    xmlTextWriterPtr w = writer;
    const int plain = plainAttributeLength(value);
    if (plain < 0) {
        return xmlTextWriterWriteAttribute(w, xml(name), xml(value)) >= 0 || fail(failureCode);
    }
    // A value that needs no escaping is copied in one piece: libxml2's escaper goes byte by
    // byte, and path data, most of a document's bytes, never needs it.
    return (xmlTextWriterStartAttribute(w, xml(name)) >= 0 &&
            (plain == 0 || xmlTextWriterWriteRawLen(w, xml(value), plain) >= 0) &&
            xmlTextWriterEndAttribute(w) >= 0) ||
           fail(failureCode);
}

bool XmlSaveContext::writeText(const char* text, int failureCode) {
    // libxml2 reports a failed text write as -1 and nothing else.
    return (writer != nullptr && xmlTextWriterWriteString(writer, xml(text)) != -1) ||
           fail(failureCode);
}

bool XmlSaveContext::writeRaw(const char* text, int failureCode) {
    return (writer != nullptr && xmlTextWriterWriteRaw(writer, xml(text)) >= 0) ||
           fail(failureCode);
}

bool XmlSaveContext::writeComment(const char* text, int failureCode) {
    return (writer != nullptr && xmlTextWriterWriteComment(writer, xml(text)) >= 0) ||
           fail(failureCode);
}

bool XmlSaveContext::endElement(int failureCode) {
    return (writer != nullptr && xmlTextWriterEndElement(writer) >= 0) || fail(failureCode);
}

bool XmlSaveContext::endDocument(int failureCode) {
    return (writer != nullptr && xmlTextWriterEndDocument(writer) >= 0) || fail(failureCode);
}

bool XmlSaveContext::flushBufferToDevice(tqIoDevice& device, std::size_t threshold) {
    if (mOutput == nullptr || mOutput->buffer == nullptr) {
        return false;
    }
    const std::size_t length = xmlOutputBufferGetSize(mOutput);
    if (length == 0 || length < threshold) {
        return true;
    }
    const int64 written = device.write(
        reinterpret_cast<const char*>(xmlOutputBufferGetContent(mOutput)), int64(length));
    xmlBufShrink(mOutput->buffer, length);
    return written == int64(length);
}

}  // namespace tq::xml
