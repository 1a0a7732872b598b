// Start and stop of the XML layer.
#pragma once

#include "tqXml/tqXmlExport.h"

namespace tq::xml {

// libxml2's initialisation, counted so that nested use is safe. Returns true.
TQXML_EXPORT bool initializeXmlLibrary();
// Undoes one initializeXmlLibrary(); the last one releases libxml2's global state.
TQXML_EXPORT void finalizeXmlLibrary();

}  // namespace tq::xml
