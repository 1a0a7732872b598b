// Streams a device through the XML parser into a SAX handler.
#pragma once

#include "tqXml/XmlSaxParserHandler.h"
#include "tqXml/tqXmlExport.h"

class tqIoDevice;
class tqCancelInterface;

namespace tq::xml {

// Parses `device` to its end, reading it in chunks so memory stays bounded whatever its size.
// Returns false when the handler stopped the parse, the XML was malformed, the device failed or
// `cancel` asked to stop. Never touches the network and never loads external entities or DTDs.
// An exception thrown by the handler stops the parser and is rethrown once libxml2 returned.
TQXML_EXPORT bool ParseXmlStream(tqIoDevice& device, XmlSaxParserHandler& handler,
                                 const tqCancelInterface* cancel);

}  // namespace tq::xml
