// The receiver of SAX events from ParseXmlStream.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tqXml/tqXmlExport.h"

namespace tq::xml {

// One attribute as written: "xlink:href" has the prefix "xlink" and the local name "href";
// namespace declarations are attributes too ("xmlns", or local name "xlink" with prefix "xmlns").
// The views are valid during the startElement call only.
struct XmlAttribute {
    std::string_view localName;
    std::string_view prefix;
    std::string_view value;
};

// The handler's answer to a start tag.
enum class StartElementResult {
    Continue = 0,
    SkipElement = 1,  // no events for the element's content and no end event for it
    Abort = 2,        // stop the parse as failed
};

// Severities of onParserMessage.
enum XmlMessageSeverity { XmlError = 2, XmlFatalError = 3, XmlWarning = 4 };

class TQXML_EXPORT XmlSaxParserHandler {
public:
    virtual ~XmlSaxParserHandler();

    // Every operation returning bool stops the parse by returning false.
    virtual bool startDocument();
    virtual bool endDocument();
    // `name` is the element name as written ("prefix:name" when prefixed).
    virtual StartElementResult startElement(const char* name,
                                            const std::vector<XmlAttribute>& attributes);
    virtual bool endElement(const char* name);
    // Text and CDATA, with references already decoded; may come in several pieces.
    virtual bool characters(const char* text, int length);
    // A diagnostic of the XML parser, with its severity (XmlMessageSeverity).
    virtual bool onParserMessage(const std::string& message, int severity);
};

}  // namespace tq::xml
