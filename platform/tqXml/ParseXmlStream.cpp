#include "tqXml/ParseXmlStream.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

#include "tqSystem/tqCancelInterface.h"
#include "tqSystem/tqIoDevice.h"

// The parser runs libxml2 in its SAX1 mode: that mode delivers every attribute in document order
// with its name as written, namespace declarations included, which the SAX2 mode cannot. A SAX1
// handler has no structured error callback, so diagnostics are read from the context's last
// error, which libxml2 fills before it calls the plain callbacks.
// libxml2's own SAX2 handlers are kept for the DTD only (entity declarations need a document
// to live in); no element ever reaches a tree, so memory stays bounded by the chunk size plus
// the parser's state.

namespace tq::xml {

namespace {

constexpr int kChunkSize = 64 * 1024;

// libxml2's push parser bounds neither the nesting depth nor how far entity references expand
// into plain text (it catches entity loops, not a large entity referenced many times), so this
// layer bounds both: a small document cannot make a handler build something huge or deep.
// The depth is libxml2's own limit for its other parsers; the text and attribute values handed
// over may exceed ten times the input read only within a fixed allowance.
constexpr int kMaxDepth = 256;
constexpr std::uint64_t kMaxAmplification = 10;
constexpr std::uint64_t kExpansionAllowance = 16 * 1024 * 1024;

// Diagnostics that libxml2 raises outside any parser context (a failed encoding conversion, an
// I/O error) go to its generic handler, which prints them on standard error. The handler is
// per thread; it is silenced on this thread for the parse and restored after, since what
// matters reaches the SAX handler as a message (see parseChunk).
class QuietGenericErrors {
public:
    QuietGenericErrors() : mFunction(xmlGenericError), mContext(xmlGenericErrorContext) {
        xmlSetGenericErrorFunc(nullptr, &ignore);
    }
    ~QuietGenericErrors() { xmlSetGenericErrorFunc(mContext, mFunction); }
    QuietGenericErrors(const QuietGenericErrors&) = delete;
    QuietGenericErrors& operator=(const QuietGenericErrors&) = delete;

private:
    static void ignore(void*, const char*, ...) {}

    xmlGenericErrorFunc mFunction;
    void* mContext;
};

class StreamParser {
public:
    StreamParser(XmlSaxParserHandler& handler) : mHandler(handler) {}

    bool run(tqIoDevice& device, const tqCancelInterface* cancel);

private:
    static StreamParser& self(void* ctx) {
        return *static_cast<StreamParser*>(static_cast<xmlParserCtxtPtr>(ctx)->_private);
    }

    // Runs one handler call; a false answer or an exception stops the parser.
    template <class Call>
    void guarded(Call&& call) {
        if (mStopped) {
            return;
        }
        try {
            if (!call()) {
                stop();
            }
        } catch (...) {
            mException = std::current_exception();
            stop();
        }
    }

    // Stops the parser with a fatal message of this layer, positioned like libxml2's own.
    void refuse(const std::string& what) {
        if (mStopped) {
            return;
        }
        const int line = mContext != nullptr ? xmlSAX2GetLineNumber(mContext) : 0;
        const std::string message = line > 0 ? "line " + std::to_string(line) + ": " + what : what;
        guarded([&] {
            mHandler.onParserMessage(message, XmlFatalError);
            return false;
        });
        stop();
    }

    // Counts text handed to the handler; false, after refusing, once it grows out of proportion
    // to the input.
    bool admit(std::size_t bytes) {
        mDelivered += bytes;
        if (mDelivered > kExpansionAllowance && mDelivered > kMaxAmplification * mConsumed) {
            refuse("Entities or default attributes expand the document more than " +
                   std::to_string(kMaxAmplification) + "-fold");
            return false;
        }
        return true;
    }

    // libxml2 halts without a word to the SAX handler when the input cannot be converted to UTF-8
    // part-way; without this check the document read until then would pass for the whole.
    void parseChunk(const char* data, int size, bool terminate) {
        const int result = xmlParseChunk(mContext, data, size, terminate ? 1 : 0);
        if (result == XML_ERR_INVALID_ENCODING && mContext->wellFormed != 0 && !mStopped) {
            refuse("Input conversion failed: the bytes do not match the document's encoding");
        }
    }

    // Follows whether the input holds anything but white space, so that an empty document can be
    // called so.
    void noteSpace(const char* data, int64 size) {
        for (int64 i = 0; mOnlySpace && i < size; ++i) {
            const char c = data[i];
            mOnlySpace = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        }
    }

    void stop() {
        mStopped = true;
        if (mContext != nullptr) {
            xmlStopParser(mContext);
        }
    }

    static void onStartDocument(void* ctx);
    static void onEndDocument(void* ctx);
    static void onStartElement(void* ctx, const xmlChar* name, const xmlChar** attributes);
    static void onEndElement(void* ctx, const xmlChar* name);
    static void onCharacters(void* ctx, const xmlChar* text, int length);
    static void onEntityDecl(void* ctx, const xmlChar* name, int type, const xmlChar* publicId,
                             const xmlChar* systemId, xmlChar* content);
    static xmlParserInputPtr onResolveEntity(void* ctx, const xmlChar* publicId,
                                             const xmlChar* systemId);
    static void onDiagnostic(void* ctx, const char* format, ...);

    XmlSaxParserHandler& mHandler;
    xmlParserCtxtPtr mContext = nullptr;
    std::vector<XmlAttribute> mAttributes;
    int mSkipDepth = 0;            // > 0 while inside an element the handler asked to skip
    int mDepth = 0;                // open elements, skipped ones included
    std::uint64_t mConsumed = 0;   // bytes read from the device
    std::uint64_t mDelivered = 0;  // bytes of text and attribute values handed over
    bool mStopped = false;
    bool mElementSeen = false;
    bool mOnlySpace = true;  // the input read so far is white space
    std::exception_ptr mException;
};

void StreamParser::onStartDocument(void* ctx) {
    xmlSAX2StartDocument(ctx);  // creates the document that holds DTD declarations
    StreamParser& parser = self(ctx);
    parser.guarded([&] { return parser.mHandler.startDocument(); });
}

void StreamParser::onEndDocument(void* ctx) {
    StreamParser& parser = self(ctx);
    parser.guarded([&] { return parser.mHandler.endDocument(); });
}

void StreamParser::onStartElement(void* ctx, const xmlChar* name, const xmlChar** attributes) {
    StreamParser& parser = self(ctx);
    parser.mElementSeen = true;
    if (parser.mStopped) {
        return;
    }
    if (++parser.mDepth > kMaxDepth) {
        parser.refuse("Excessive depth in document: more than " + std::to_string(kMaxDepth) +
                      " nested elements");
        return;
    }
    if (parser.mSkipDepth > 0) {
        ++parser.mSkipDepth;
        return;
    }
    parser.guarded([&] {
        parser.mAttributes.clear();
        for (const xmlChar** a = attributes; a != nullptr && a[0] != nullptr; a += 2) {
            const std::string_view qname(reinterpret_cast<const char*>(a[0]));
            const std::string_view value(a[1] ? reinterpret_cast<const char*>(a[1]) : "");
            if (!parser.admit(qname.size() + value.size())) {
                return false;
            }
            const std::size_t colon = qname.find(':');
            if (colon == std::string_view::npos) {
                parser.mAttributes.push_back({qname, std::string_view(), value});
            } else {
                parser.mAttributes.push_back(
                    {qname.substr(colon + 1), qname.substr(0, colon), value});
            }
        }
        switch (
            parser.mHandler.startElement(reinterpret_cast<const char*>(name), parser.mAttributes)) {
            case StartElementResult::Continue:
                return true;
            case StartElementResult::SkipElement:
                parser.mSkipDepth = 1;
                return true;
            case StartElementResult::Abort:
            default:
                return false;
        }
    });
}

void StreamParser::onEndElement(void* ctx, const xmlChar* name) {
    StreamParser& parser = self(ctx);
    --parser.mDepth;
    if (parser.mSkipDepth > 0) {
        --parser.mSkipDepth;
        return;
    }
    parser.guarded([&] { return parser.mHandler.endElement(reinterpret_cast<const char*>(name)); });
}

void StreamParser::onCharacters(void* ctx, const xmlChar* text, int length) {
    StreamParser& parser = self(ctx);
    if (parser.mStopped || !parser.admit(static_cast<std::size_t>(length > 0 ? length : 0)) ||
        parser.mSkipDepth > 0) {
        return;
    }
    parser.guarded(
        [&] { return parser.mHandler.characters(reinterpret_cast<const char*>(text), length); });
}

// Only internal entities are declared. An external one is left undeclared, so that a reference
// to it is an error (or, with an external subset, a warning) and nothing is ever read from a
// file or the network on its behalf.
void StreamParser::onEntityDecl(void* ctx, const xmlChar* name, int type, const xmlChar* publicId,
                                const xmlChar* systemId, xmlChar* content) {
    if (type == XML_INTERNAL_GENERAL_ENTITY || type == XML_INTERNAL_PARAMETER_ENTITY ||
        type == XML_INTERNAL_PREDEFINED_ENTITY) {
        xmlSAX2EntityDecl(ctx, name, type, publicId, systemId, content);
    }
}

xmlParserInputPtr StreamParser::onResolveEntity(void*, const xmlChar*, const xmlChar*) {
    return nullptr;
}

void StreamParser::onDiagnostic(void* ctx, const char*, ...) {
    const xmlError* error = ctx ? xmlCtxtGetLastError(ctx) : nullptr;
    if (error == nullptr) {
        return;
    }
    StreamParser& parser = self(ctx);
    std::string message = error->message ? error->message : "XML parser error";
    while (!message.empty() && (message.back() == '\n' || message.back() == '\r')) {
        message.pop_back();
    }
    if (!parser.mElementSeen && parser.mOnlySpace) {
        // libxml2 calls nothing at all "Extra content at the end of the document".
        message = "The document is empty";
    } else if (error->line > 0) {
        message = "line " + std::to_string(error->line) + ", column " +
                  std::to_string(error->int2) + ": " + message;
    }
    const int severity = error->level == XML_ERR_WARNING ? XmlWarning
                         : error->level == XML_ERR_ERROR ? XmlError
                                                         : XmlFatalError;
    parser.guarded([&] { return parser.mHandler.onParserMessage(message, severity); });
}

bool StreamParser::run(tqIoDevice& device, const tqCancelInterface* cancel) {
    xmlSAXHandler sax;
    std::memset(&sax, 0, sizeof sax);
    xmlSAXVersion(&sax, 2);  // libxml2's DTD handlers
    sax.initialized = 1;     // not the SAX2 magic: libxml2 would then switch to SAX2 events
    sax.startElement = &StreamParser::onStartElement;
    sax.endElement = &StreamParser::onEndElement;
    sax.startDocument = &StreamParser::onStartDocument;
    sax.endDocument = &StreamParser::onEndDocument;
    sax.characters = &StreamParser::onCharacters;
    sax.ignorableWhitespace = &StreamParser::onCharacters;
    sax.cdataBlock = &StreamParser::onCharacters;
    sax.entityDecl = &StreamParser::onEntityDecl;
    sax.resolveEntity = &StreamParser::onResolveEntity;
    sax.externalSubset = nullptr;
    sax.reference = nullptr;
    sax.processingInstruction = nullptr;
    sax.comment = nullptr;
    sax.warning = &StreamParser::onDiagnostic;
    sax.error = &StreamParser::onDiagnostic;
    sax.fatalError = &StreamParser::onDiagnostic;

    const QuietGenericErrors quiet;
    // Not zeroed: a small document would otherwise pay for clearing the whole chunk.
    const std::unique_ptr<char[]> chunk(new char[kChunkSize]);
    int64 got = device.read(chunk.get(), kChunkSize);
    bool readFailed = got < 0;
    if (readFailed) {
        got = 0;
    }
    mConsumed += static_cast<std::uint64_t>(got);
    noteSpace(chunk.get(), got);
    mContext = xmlCreatePushParserCtxt(&sax, nullptr, chunk.get(), 0, nullptr);
    if (mContext == nullptr) {
        mHandler.onParserMessage("Failed to create the XML parser", XmlFatalError);
        return false;
    }
    mContext->_private = this;
    // Entities are substituted so that handlers see decoded text; external ones are never
    // declared (onEntityDecl), and nothing is fetched from the network.
    xmlCtxtUseOptions(mContext, XML_PARSE_NOENT | XML_PARSE_NONET);

    bool cancelled = false;
    while (!mStopped && !readFailed && got > 0) {
        parseChunk(chunk.get(), static_cast<int>(got), false);
        if (mStopped) {
            break;
        }
        if (cancel != nullptr && cancel->isCancelled()) {
            cancelled = true;
            break;
        }
        got = device.read(chunk.get(), kChunkSize);
        readFailed = got < 0;
        mConsumed += readFailed ? 0 : static_cast<std::uint64_t>(got);
        noteSpace(chunk.get(), got);
    }
    if (readFailed && !mStopped) {
        guarded(
            [&] { return mHandler.onParserMessage("Failed to read the input", XmlFatalError); });
        mStopped = true;
    }
    if (!mStopped && !cancelled) {
        parseChunk(nullptr, 0, true);
    }
    const bool wellFormed = mContext->wellFormed != 0;
    if (mContext->myDoc != nullptr) {
        xmlFreeDoc(mContext->myDoc);
        mContext->myDoc = nullptr;
    }
    xmlFreeParserCtxt(mContext);
    mContext = nullptr;
    if (mException) {
        std::rethrow_exception(mException);
    }
    return wellFormed && !mStopped && !cancelled && !readFailed;
}

}  // namespace

bool ParseXmlStream(tqIoDevice& device, XmlSaxParserHandler& handler,
                    const tqCancelInterface* cancel) {
    StreamParser parser(handler);
    return parser.run(device, cancel);
}

}  // namespace tq::xml
