#include "svg/read/detail/Loader.h"

#include <tqXml/ParseXmlStream.h>

#include "svg/model/Circle.h"
#include "svg/model/Document.h"
#include "svg/model/Image.h"
#include "svg/model/Line.h"
#include "svg/model/Node.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/model/Text.h"
#include "svg/read/detail/AttributeParsers.h"
#include "svg/read/detail/ParserMessages.h"
#include "svg/read/detail/StandardReader.h"

namespace tq::svg {

namespace {

using tq::xml::StartElementResult;

struct TagRow {
    std::string_view tag;
    std::shared_ptr<ItemInterface> (*create)();
    AttributeParseResult (*parseAttribute)(Loader&, ItemInterface&, std::string_view,
                                           std::string_view, std::string_view);
};

template <class T>
std::shared_ptr<ItemInterface> make() {
    return std::make_shared<T>();
}

// The supported tags: exact, case-sensitive names as the XML parser delivers them. A constant
// table, so nothing is built at run time and threads may load at once.
constexpr TagRow kTagTable[] = {
    {"circle", &make<Circle>, &ParseCircleAttribute},
    {"g", &make<Node>, &ParseGroupAttribute},
    {"image", &make<Image>, &ParseImageAttribute},
    {"line", &make<Line>, &ParseLineAttribute},
    {"path", &make<Path>, &ParsePathAttribute},
    {"rect", &make<Rect>, &ParseRectAttribute},
    {"style", nullptr, nullptr},
    {"svg", &make<Document>, &ParseSvgAttribute},
    {"text", &make<Text>, &ParseTextAttribute},
};

const TagRow* findTag(std::string_view name) {
    for (const auto& row : kTagTable) {
        if (row.tag == name) {
            return &row;
        }
    }
    return nullptr;
}

bool isGroup(const std::shared_ptr<ItemInterface>& item) {
    return item && (item->getType() == ItemType::Node || item->getType() == ItemType::Document);
}

}  // namespace

Loader::Loader(ItemInterfacePointer<ItemInterface>& out, tqIoDevice& device,
               const LoadOptions& options, MessageCallback errorCallback,
               MessageCallback warningCallback)
    : mOut(out),
      mErrorCallback(std::move(errorCallback)),
      mWarningCallback(std::move(warningCallback)),
      mDevice(device),
      // The standard profile never refuses what it does not draw: it warns.
      mIgnoreUnsupported(options.ignoreUnsupported || options.profile == LoadProfile::Standard),
      mStandardProfile(options.profile == LoadProfile::Standard),
      mMaxElements(options.maxElements) {
    mParseResult = tq::xml::ParseXmlStream(mDevice, *this, nullptr);
}

Loader::~Loader() = default;

const Loader::MessageCallback& Loader::errorCallback() const {
    static const MessageCallback quiet;
    return mQuietDetail ? quiet : mErrorCallback;
}

void Loader::reportError(const std::string& message) const {
    if (mErrorCallback && !mQuietDetail) {
        mErrorCallback(message);
    }
}

void Loader::reportWarning(const std::string& message) const {
    if (mWarningCallback) {
        mWarningCallback(message);
    }
}

bool Loader::startDocument() {
    mStack = std::make_unique<LoaderStack>();
    if (mStandardProfile) {
        mStandard = std::make_unique<detail::StandardReader>(*this, mMaxElements);
    }
    return true;
}

StartElementResult Loader::startElement(const char* name,
                                        const std::vector<tq::xml::XmlAttribute>& attributes) {
    if (name == nullptr || !mStack) {
        return StartElementResult::Abort;
    }
    if (mStandard) {
        return mStandard->startElement(name, attributes);
    }
    const TagRow* row = findTag(name);
    if (row == nullptr) {
        if (mIgnoreUnsupported) {
            reportWarning("Ignore unsupported tag in svg : " + Quoted(name));
            return StartElementResult::SkipElement;
        }
        reportError("Found unsupported tag in svg : " + Quoted(name));
        return StartElementResult::Abort;
    }

    LoaderStack& stack = *mStack;
    stack.attributeSeen.fill(false);
    if (stack.trees.empty() || stack.lastTreeClosed) {
        stack.trees.emplace_back();
        stack.lastTreeClosed = false;
    }
    std::vector<StackEntry>& path = stack.trees.back();
    if (!path.empty() && !isGroup(path.back().item)) {
        reportError("Object of type " + Quoted(path.back().tag) +
                    " may not contain any child element.");
        return StartElementResult::Abort;
    }

    std::shared_ptr<ItemInterface> item = row->create ? row->create() : nullptr;
    path.push_back({row->tag.data(), item});
    if (!item) {
        return StartElementResult::Continue;  // the attributes of "style" are not examined
    }
    return parseAttributes(*item, row->parseAttribute, attributes) ? StartElementResult::Continue
                                                                   : StartElementResult::Abort;
}

bool Loader::parseAttributes(ItemInterface& item, AttributeParser parser,
                             const std::vector<tq::xml::XmlAttribute>& attributes) {
    for (const auto& attribute : attributes) {
        if (!dispatchAttribute(item, parser, attribute)) {
            return false;
        }
    }
    return true;
}

bool Loader::dispatchAttribute(ItemInterface& item, AttributeParser parser,
                               const tq::xml::XmlAttribute& attribute) {
    // The standard profile says once what it ignores: the parsers' detail is left out.
    mQuietDetail = mStandardProfile;
    AttributeParseResult result = ParsePresentationAttribute(*this, item, attribute.localName,
                                                             attribute.prefix, attribute.value);
    if (result == AttributeParseResult::NotRecognised && parser != nullptr) {
        result = parser(*this, item, attribute.localName, attribute.prefix, attribute.value);
    }
    mQuietDetail = false;
    if (result == AttributeParseResult::Handled) {
        return true;
    }
    std::string qname(attribute.localName);
    if (!attribute.prefix.empty()) {
        qname = std::string(attribute.prefix) + ":" + qname;
    }
    const std::string tail =
        " attribute " + Quoted(qname) + " with value " + Quoted(attribute.value);
    if (mStandard) {
        // What no parser reads draws nothing in a browser either (editors' properties, text
        // layout outside text, misspellings): silent. An unreadable value is said once.
        if (result == AttributeParseResult::Invalid) {
            mStandard->warnOnce("invalid " + qname + "=" + std::string(attribute.value),
                                "Ignore Invalid" + tail);
        }
        return true;
    }
    if (result == AttributeParseResult::Invalid) {
        if (!mIgnoreUnsupported) {
            reportError("Invalid" + tail);
            return false;
        }
        reportWarning("Ignore Invalid" + tail);  // capitalised on purpose
        return true;
    }
    if (!mIgnoreUnsupported) {
        reportError("Unsupported" + tail);
        return false;
    }
    reportWarning("Ignore unsupported" + tail);
    return true;
}

bool Loader::endElement(const char* name) {
    if (mStandard) {
        return mStandard->endElement();
    }
    if (!mStack || mStack->trees.empty() || mStack->trees.back().empty()) {
        reportError("End of element " + Quoted(name) + " unexpected");
        return false;
    }
    LoaderStack& stack = *mStack;
    std::vector<StackEntry>& path = stack.trees.back();
    if (path.back().tag != name) {
        reportError("End of element " + Quoted(name) + ", expected closing of " +
                    Quoted(path.back().tag));
        return false;
    }
    if (path.size() == 1) {
        stack.lastTreeClosed = true;  // the root stays in its path
        return true;
    }
    const StackEntry& parent = path[path.size() - 2];
    if (!isGroup(parent.item)) {
        reportError("Internal svg error, object of type " + Quoted(parent.tag) +
                    " may not contain any child element.");
        return false;
    }
    if (path.back().item) {
        static_cast<Node&>(*parent.item).editChildren().push_back(std::move(path.back().item));
    }
    path.pop_back();
    return true;
}

bool Loader::characters(const char* text, int length) {
    if (length < 1) {
        return true;
    }
    if (mStandard) {
        return mStandard->characters(text, length);
    }
    if (!mStack || mStack->trees.empty() || mStack->trees.back().empty()) {
        return false;
    }
    const std::vector<StackEntry>& path = mStack->trees.back();
    const StackEntry& top = path.back();
    if (top.tag == "text") {
        if (!top.item || top.item->getType() != ItemType::Text) {
            return false;
        }
        static_cast<Text&>(*top.item).text.append(text, static_cast<std::size_t>(length));
        return true;
    }
    if (top.tag == "style") {
        const std::shared_ptr<ItemInterface>& root = path.front().item;
        if (!root || root->getType() != ItemType::Document) {
            reportError("<style> tag is only expected if root is an <svg> tag.");
            return false;
        }
        // Every style element of the document feeds the one sheet, in order.
        auto& style = static_cast<Document&>(*root).editStyle();
        if (!style) {
            style.emplace();
        }
        style->append(text, static_cast<std::size_t>(length));
    }
    return true;
}

bool Loader::onParserMessage(const std::string& message, int severity) {
    if (severity == tq::xml::XmlWarning) {
        reportWarning(message);
        return true;
    }
    reportError(message);
    return false;
}

bool Loader::endDocument() {
    if (mStandard) {
        const bool finished = mStandard->finish(mOut);
        mStandard.reset();
        mStack.reset();
        return finished;
    }
    if (!mStack || !mStack->lastTreeClosed) {
        reportError("Some svg tags were not closed properly.");
        return false;
    }
    for (const auto& path : mStack->trees) {
        if (path.empty()) {
            reportError("Some closing tags were missing.");
            return false;
        }
    }
    if (mStack->trees.size() == 1) {
        mOut = mStack->trees.front().front().item;
    } else if (mStack->trees.size() > 1) {
        auto group = std::make_shared<Node>();
        for (const auto& path : mStack->trees) {
            if (path.front().item) {
                group->editChildren().push_back(path.front().item);
            }
        }
        mOut = group;
    }
    mStack.reset();
    return true;
}

}  // namespace tq::svg
