// Builds an item tree from the SAX events of one document.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <tqSystem/tqIoDevice.h>
#include <tqXml/XmlSaxParserHandler.h>

#include "svg/model/ItemInterface.h"
#include "svg/model/ItemInterfacePointer.h"
#include "svg/model/LoadOptions.h"

namespace tq::svg {

namespace detail {
class StandardReader;
}

// The answer of every attribute parser.
enum class AttributeParseResult {
    Handled = 0,        // taken and stored
    NotRecognised = 1,  // not this parser's attribute
    Invalid = 2,        // its attribute, but the value or the situation is wrong
};

// An open element: its tag and the item made for it (empty for "style").
struct StackEntry {
    std::string tag;
    std::shared_ptr<ItemInterface> item;
};

// The open elements of the document, one path per top-level element.
struct LoaderStack {
    std::vector<std::vector<StackEntry>> trees;
    bool lastTreeClosed = false;
    bool xmlnsSeen = false;               // the document's first "xmlns"
    std::array<bool, 6> attributeSeen{};  // per-element slots that catch a repeated attribute
};

class TQSVG_EXPORT Loader : public tq::xml::XmlSaxParserHandler {
public:
    using MessageCallback = std::function<void(const std::string&)>;
    using AttributeParser = AttributeParseResult (*)(Loader&, ItemInterface&, std::string_view,
                                                     std::string_view, std::string_view);

    // Parses the whole device at once; `out` receives the root only on success. Either
    // callback may be empty: a missing callback suppresses the text, never changes the outcome.
    Loader(ItemInterfacePointer<ItemInterface>& out, tqIoDevice& device, const LoadOptions& options,
           MessageCallback errorCallback, MessageCallback warningCallback);
    ~Loader() override;

    // What the XML parse returned: true when the document loaded.
    bool getParseResult() const { return mParseResult; }

    bool startDocument() override;
    bool endDocument() override;
    tq::xml::StartElementResult startElement(
        const char* name, const std::vector<tq::xml::XmlAttribute>& attributes) override;
    bool endElement(const char* name) override;
    bool characters(const char* text, int length) override;
    bool onParserMessage(const std::string& message, int severity) override;

    // Used by the attribute parsers.
    void reportError(const std::string& message) const;
    void reportWarning(const std::string& message) const;
    bool ignoresUnsupported() const { return mIgnoreUnsupported; }
    // The callback for a parser's detailed messages: none while the standard profile dispatches
    // an attribute, since it reports once what it ignores.
    const MessageCallback& errorCallback() const;
    LoaderStack& stack() { return *mStack; }
    // The standard reading profile's layer; null under the subset.
    detail::StandardReader* standard() const { return mStandard.get(); }

    // Offers one attribute to the presentation parser, then to `parser` (may be null), and
    // reports what neither took; false when that fails the load.
    bool dispatchAttribute(ItemInterface& item, AttributeParser parser,
                           const tq::xml::XmlAttribute& attribute);

private:
    bool parseAttributes(ItemInterface& item, AttributeParser parser,
                         const std::vector<tq::xml::XmlAttribute>& attributes);

    ItemInterfacePointer<ItemInterface>& mOut;
    MessageCallback mErrorCallback;
    MessageCallback mWarningCallback;
    std::unique_ptr<LoaderStack> mStack;
    std::unique_ptr<detail::StandardReader> mStandard;
    tqIoDevice& mDevice;
    bool mIgnoreUnsupported;
    bool mStandardProfile;
    std::size_t mMaxElements;
    bool mParseResult = false;
    bool mQuietDetail = false;  // while the standard profile dispatches an attribute
};

}  // namespace tq::svg
