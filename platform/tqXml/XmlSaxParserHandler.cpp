#include "tqXml/XmlSaxParserHandler.h"

namespace tq::xml {

XmlSaxParserHandler::~XmlSaxParserHandler() = default;

bool XmlSaxParserHandler::startDocument() {
    return true;
}
bool XmlSaxParserHandler::endDocument() {
    return true;
}
StartElementResult XmlSaxParserHandler::startElement(const char*,
                                                     const std::vector<XmlAttribute>&) {
    return StartElementResult::Continue;
}
bool XmlSaxParserHandler::endElement(const char*) {
    return true;
}
bool XmlSaxParserHandler::characters(const char*, int) {
    return true;
}
bool XmlSaxParserHandler::onParserMessage(const std::string&, int) {
    return true;
}

}  // namespace tq::xml
