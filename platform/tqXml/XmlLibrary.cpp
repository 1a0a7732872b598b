#include "tqXml/XmlLibrary.h"

#include <libxml/parser.h>

#include <atomic>

namespace tq::xml {

namespace {
std::atomic<int> gUsers{0};
}  // namespace

bool initializeXmlLibrary() {
    if (gUsers.fetch_add(1) == 0) {
        xmlInitParser();
    }
    return true;
}

void finalizeXmlLibrary() {
    int users = gUsers.load();
    while (users > 0 && !gUsers.compare_exchange_weak(users, users - 1)) {
    }
    // xmlCleanupParser() is deliberately not called: it tears down libxml2's global state,
    // which the host or another library in the process may still be using.
}

}  // namespace tq::xml
