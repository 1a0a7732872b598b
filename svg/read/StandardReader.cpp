// The standard reader's first pass: SAX events into items and records.
#include "svg/read/detail/StandardReader.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "svg/model/Circle.h"
#include "svg/model/Document.h"
#include "svg/model/Image.h"
#include "svg/model/Line.h"
#include "svg/model/Node.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/model/Text.h"
#include "svg/path/detail/PathData.h"
#include "svg/read/detail/AttributeParsers.h"
#include "svg/read/detail/Loader.h"
#include "svg/read/detail/ParserMessages.h"
#include "svg/read/detail/StandardShapes.h"

namespace tq::svg::detail {

using tq::xml::StartElementResult;
using tq::xml::XmlAttribute;

StandardReader::StandardReader(Loader& loader, std::size_t maxElements)
    : mLoader(loader), mMaxElements(maxElements) {}

StandardReader::~StandardReader() = default;

void StandardReader::warnOnce(const std::string& key, const std::string& message) {
    if (mWarned.insert(key).second) {
        mLoader.reportWarning(message);
    }
}

Node* StandardReader::parentNode() const {
    const std::uint32_t parent = parentRecord();
    if (parent == kNone) {
        return nullptr;
    }
    ItemInterface* item = mRecords[parent].item;
    return dynamic_cast<Node*>(item);
}

std::uint32_t StandardReader::parentRecord() const {
    for (auto it = mOpen.rbegin(); it != mOpen.rend(); ++it) {
        if (it->record != kNone) {
            return it->record;
        }
    }
    return kNone;
}

// ---- reading -----------------------------------------------------------------------------------

StartElementResult StandardReader::startElement(const char* name,
                                                const std::vector<XmlAttribute>& attributes) {
    if (mMaxElements != 0 && ++mElements > mMaxElements) {
        mLoader.reportError("The document has more than " + std::to_string(mMaxElements) +
                            " elements: refused as too large; raise the element bound to read it");
        return StartElementResult::Abort;
    }
    // Every element counts for ":first-child", drawn or not.
    mFirstChild = mOpen.empty() || mOpen.back().children++ == 0;
    const auto scope = static_cast<std::uint32_t>(mNamespaces.size());
    bindNamespaces(attributes);
    std::string_view tag(name);
    std::string_view prefix;
    if (const std::size_t colon = tag.find(':'); colon != std::string_view::npos) {
        prefix = tag.substr(0, colon);
        tag = tag.substr(colon + 1);
    }
    if (mOpen.empty() && mRootTag.empty()) {
        mRootTag = name;
    }
    // Elements of other vocabularies (editors' data, foreign content) are skipped silently.
    const StartElementResult result = namespaceOf(prefix) == Namespace::Svg
                                          ? startSvgElement(tag, attributes)
                                          : StartElementResult::SkipElement;
    if (result == StartElementResult::Continue) {
        mOpen.back().namespaces = scope;
    } else {
        mNamespaces.resize(scope);
    }
    return result;
}

void StandardReader::bindNamespaces(const std::vector<XmlAttribute>& attributes) {
    for (const XmlAttribute& attribute : attributes) {
        const bool declaration = attribute.prefix == "xmlns" ||
                                 (attribute.prefix.empty() && attribute.localName == "xmlns");
        if (!declaration) {
            continue;
        }
        const std::string_view uri = attribute.value;
        const Namespace space = uri == "http://www.w3.org/2000/svg"     ? Namespace::Svg
                                : uri == "http://www.w3.org/1999/xlink" ? Namespace::XLink
                                                                        : Namespace::Other;
        mNamespaces.push_back(
            {std::string(attribute.prefix.empty() ? std::string_view() : attribute.localName),
             space});
    }
}

// The namespace a prefix stands for on the element being read. Without any declaration, the
// default namespace is taken to be SVG's, as documents written without "xmlns" expect.
StandardReader::Namespace StandardReader::namespaceOf(std::string_view prefix) const {
    if (prefix == "xml") {
        return Namespace::Xml;
    }
    for (auto it = mNamespaces.rbegin(); it != mNamespaces.rend(); ++it) {
        if (it->prefix == prefix) {
            return it->space;
        }
    }
    return prefix.empty()      ? Namespace::Svg
           : prefix == "xlink" ? Namespace::XLink
                               : Namespace::Other;
}

StartElementResult StandardReader::startSvgElement(std::string_view tag,
                                                   const std::vector<XmlAttribute>& attributes) {
    const ElementRow* row = FindElement(tag);
    if (row == nullptr) {
        warnOnce("tag " + std::string(tag), "Ignore unsupported tag in svg : " + Quoted(tag));
        return StartElementResult::SkipElement;
    }
    Kind kind = row->kind;
    if (kind == Kind::Feature && row->warnAlways) {
        warnOnce(std::string(row->warning), std::string(row->warning));
    }
    if (!mOpen.empty()) {
        Open& parent = mOpen.back();
        // Text holds only pieces of text; a gradient only stops; shapes nothing.
        if (parent.kind == Kind::Text || parent.kind == Kind::TextSpan) {
            if (kind == Kind::TextSpan || tag == "a") {
                mOpen.push_back({Kind::TextSpan});
                return StartElementResult::Continue;
            }
            return StartElementResult::SkipElement;
        }
        if (parent.kind == Kind::Gradient) {
            if (kind == Kind::Stop) {
                addStop(attributes);
                mOpen.push_back({Kind::Stop});
                return StartElementResult::Continue;
            }
            return StartElementResult::SkipElement;
        }
        if (!IsContainer(parent.kind) || (parent.kind == Kind::Switch && parent.taken)) {
            return StartElementResult::SkipElement;
        }
    }
    if (kind == Kind::Stop || kind == Kind::TextSpan || kind == Kind::Silent ||
        !conditionsHold(attributes)) {
        return StartElementResult::SkipElement;
    }
    if (kind == Kind::Feature) {
        for (const XmlAttribute& attribute : attributes) {
            if (attribute.localName == "id" && attribute.prefix.empty()) {
                mFeatureIds.emplace(std::string(attribute.value), std::string(row->warning));
            }
        }
        return StartElementResult::SkipElement;
    }
    if (kind == Kind::Style) {
        mOpen.push_back({Kind::Style});
        return StartElementResult::Continue;
    }
    if (kind == Kind::Gradient) {
        startGradient(attributes);
        mOpen.push_back({Kind::Gradient});
        return StartElementResult::Continue;
    }
    if (!mOpen.empty() && mOpen.back().kind == Kind::Switch) {
        mOpen.back().taken = true;
    }
    return startItem(kind, tag, attributes);
}

bool StandardReader::conditionsHold(const std::vector<XmlAttribute>& attributes) const {
    for (const XmlAttribute& attribute : attributes) {
        if (!attribute.prefix.empty()) {
            continue;
        }
        if (attribute.localName == "requiredExtensions") {
            return false;  // no extension is supported
        }
        if (attribute.localName == "systemLanguage") {
            // The reader is taken to read English, as a browser's default would.
            bool english = false;
            std::string_view list = attribute.value;
            while (!list.empty() && !english) {
                const std::size_t comma = list.find(',');
                const std::string_view language = TrimSpace(list.substr(0, comma));
                english = EqualsLowerCase(language.substr(0, 2), "en") &&
                          (language.size() == 2 || language[2] == '-');
                list =
                    comma == std::string_view::npos ? std::string_view() : list.substr(comma + 1);
            }
            if (!english) {
                return false;
            }
        }
    }
    return true;
}

std::shared_ptr<ItemInterface> StandardReader::createItem(Kind kind) const {
    switch (kind) {
        case Kind::Svg:
            if (mRoot == nullptr && mOpen.empty()) {
                return std::make_shared<Document>();
            }
            return std::make_shared<Node>();
        case Kind::Rect:
            // Without width and height a rectangle is not drawn, unlike the tree's default.
            return std::make_shared<Rect>(Wm4::Vector2f::ZERO, Wm4::Vector2f::ZERO);
        case Kind::Circle:
            return std::make_shared<Circle>();
        case Kind::Line:
            return std::make_shared<Line>();
        case Kind::Ellipse:
        case Kind::Polyline:
        case Kind::Polygon:
        case Kind::Path:
            return std::make_shared<Path>();
        case Kind::Text:
            return std::make_shared<Text>();
        case Kind::Image:
            return std::make_shared<Image>();
        default:
            return std::make_shared<Node>();
    }
}

StartElementResult StandardReader::startItem(Kind kind, std::string_view name,
                                             const std::vector<XmlAttribute>& attributes) {
    const auto index = static_cast<std::uint32_t>(mRecords.size());
    const std::uint32_t parent = parentRecord();
    Record record;
    record.parent = parent;
    record.origin = index;
    record.row = RowOf(FindElement(name));
    record.depth = static_cast<std::uint16_t>(parent == kNone ? 0 : mRecords[parent].depth + 1);
    record.firstChild = mFirstChild;
    // Siblings as selectors see them are items: a title or a description in between is passed over.
    if (!mOpen.empty()) {
        record.previous = std::exchange(mOpen.back().lastItem, index);
    }
    keepAttributes(record, attributes);
    std::shared_ptr<ItemInterface> item = createItem(kind);
    Scratch scratch;
    readAttributes(kind, *item, scratch, record, attributes);
    item = finishItem(kind, index, std::move(item), scratch);
    record.item = item.get();
    if (!scratch.pathLength.empty()) {
        notePathLength(index, scratch.pathLength);
    }
    record.selectable = item->editId() || item->getProperties().className;
    record.resolves = resolvesOnItem(item->getProperties());
    mRecords.push_back(record);
    if (const auto& id = item->editId()) {
        mIds.emplace(*id, index);
    }
    if (kind == Kind::Use) {
        const Viewport viewport = mViewports.empty() ? Viewport() : mViewports.back();
        Use use{index, std::move(scratch.href), viewport.width, viewport.height};
        float length = 0.0f;
        if (!scratch.width.empty() && parseLength("width", scratch.width, length)) {
            use.width = length;
        }
        if (!scratch.height.empty() && parseLength("height", scratch.height, length)) {
            use.height = length;
        }
        mUseOfRecord.emplace(index, mUses.size());
        mUses.push_back(std::move(use));
    } else if (kind == Kind::Text) {
        warnOnce("text", "Ignore text: text is kept in the tree but not drawn");
    } else if (kind == Kind::Image) {
        warnOnce("image", "Ignore image: images are kept in the tree but not drawn");
    }
    Node* parentGroup = parentNode();
    if (kind == Kind::Definitions || kind == Kind::Symbol || parentGroup == nullptr) {
        if (mRoot == nullptr && parentGroup == nullptr && kind != Kind::Definitions &&
            kind != Kind::Symbol) {
            mRoot = item;
        } else {
            mDetached.push_back(item);
        }
    } else {
        parentGroup->editChildren().push_back(item);
    }
    mOpen.push_back({kind, index, kind == Kind::Svg});
    return StartElementResult::Continue;
}

// Attribute selectors need the attributes as written; a document needs them only once its style
// sheet, which comes first in nearly every file, has an attribute selector. The values of path
// data and points are left out: no selector tests them.
void StandardReader::keepAttributes(Record& record, const std::vector<XmlAttribute>& attributes) {
    record.attributesKnown = mKeepAttributes;
    if (!mKeepAttributes) {
        return;
    }
    record.attributes = static_cast<std::uint32_t>(mKeptAttributes.size());
    for (const XmlAttribute& attribute : attributes) {
        if (!attribute.prefix.empty() || attribute.localName == "xmlns") {
            continue;
        }
        const bool long_ = attribute.localName == "d" || attribute.localName == "points";
        const std::string_view value = long_ ? std::string_view() : attribute.value;
        KeptAttribute kept;
        kept.name = static_cast<std::uint32_t>(mTexts.size());
        kept.nameLength = static_cast<std::uint32_t>(attribute.localName.size());
        mTexts.append(attribute.localName);
        kept.value = static_cast<std::uint32_t>(mTexts.size());
        kept.valueLength = static_cast<std::uint32_t>(value.size());
        mTexts.append(value);
        mKeptAttributes.push_back(kept);
    }
    record.attributeCount = static_cast<std::uint32_t>(mKeptAttributes.size()) - record.attributes;
}

void StandardReader::readAttributes(Kind kind, ItemInterface& item, Scratch& scratch,
                                    Record& record, const std::vector<XmlAttribute>& attributes) {
    using Parser = AttributeParseResult (*)(Loader&, ItemInterface&, std::string_view,
                                            std::string_view, std::string_view);
    Parser parser = nullptr;
    switch (kind) {
        case Kind::Svg:
            parser = item.getType() == ItemType::Document ? &ParseSvgAttribute : nullptr;
            break;
        case Kind::Rect:
            parser = &ParseRectAttribute;
            break;
        case Kind::Circle:
            parser = &ParseCircleAttribute;
            break;
        case Kind::Line:
            parser = &ParseLineAttribute;
            break;
        case Kind::Path:
            parser = &ParsePathAttribute;
            break;
        case Kind::Text:
            parser = &ParseTextAttribute;
            break;
        case Kind::Image:
            parser = &ParseImageAttribute;
            break;
        default:
            break;
    }
    mLoader.stack().attributeSeen.fill(false);
    for (const XmlAttribute& attribute : attributes) {
        const std::string_view name = attribute.localName;
        const std::string_view value = attribute.value;
        if (!attribute.prefix.empty()) {
            const Namespace space = namespaceOf(attribute.prefix);
            if (space == Namespace::XLink && name == "href") {
                scratch.href = std::string(value);
            } else if (space == Namespace::Xml && name == "space" && kind == Kind::Text) {
                mLoader.dispatchAttribute(item, parser, {name, "xml", value});
            }
            // Anything else under a prefix (namespace declarations, editors' data, xml:lang)
            // belongs to another vocabulary.
            continue;
        }
        if (readOwnAttribute(kind, name, value, scratch, record) || IsSilentAttribute(kind, name)) {
            continue;
        }
        if (kind == Kind::Image && name == "preserveAspectRatio") {
            // The alignment is kept; meet or slice is not.
            XmlAttribute alignment = attribute;
            alignment.value = TrimSpace(value).substr(0, TrimSpace(value).find(' '));
            mLoader.dispatchAttribute(item, parser, alignment);
            continue;
        }
        mLoader.dispatchAttribute(item, parser, attribute);
    }
    if (kind == Kind::Image && !scratch.href.empty()) {
        static_cast<Image&>(item).href = scratch.href;
    }
}

// The attributes this layer reads itself; true when `name` was one of them.
bool StandardReader::readOwnAttribute(Kind kind, std::string_view name, std::string_view value,
                                      Scratch& scratch, Record& record) {
    if (name == "style") {
        record.style = static_cast<std::uint32_t>(mTexts.size());
        record.styleLength = static_cast<std::uint32_t>(value.size());
        mTexts.append(value);
        return true;
    }
    if (name == "color" || name == "display" || name == "visibility" || name == "clip-path" ||
        name == "mask" || name == "filter" || name.substr(0, 6) == "marker" ||
        name == "paint-order" || name == "mix-blend-mode") {
        applyDeclaration(record, name, value);
        return true;
    }
    if (name == "requiredFeatures" || name == "requiredExtensions" || name == "systemLanguage") {
        return true;  // decided before the element was read
    }
    if (name == "href" && (kind == Kind::Use || kind == Kind::Image)) {
        scratch.href = std::string(value);
        return true;
    }
    if (name == "pathLength") {
        scratch.pathLength = value;
        return true;
    }
    const bool root = kind == Kind::Svg && mRoot == nullptr && mOpen.empty();
    std::string_view* slot = nullptr;
    if (name == "x") {
        slot = &scratch.x;
    } else if (name == "y") {
        slot = &scratch.y;
    } else if (name == "width") {
        slot = &scratch.width;
    } else if (name == "height") {
        slot = &scratch.height;
    } else if (name == "cx") {
        slot = &scratch.cx;
    } else if (name == "cy") {
        slot = &scratch.cy;
    } else if (name == "rx") {
        slot = &scratch.rx;
    } else if (name == "ry") {
        slot = &scratch.ry;
    } else if (name == "points") {
        slot = &scratch.points;
    } else if (name == "viewBox") {
        slot = &scratch.viewBox;
    } else if (name == "preserveAspectRatio") {
        slot = &scratch.preserveAspectRatio;
    } else if (name == "overflow") {
        slot = &scratch.overflow;
    }
    if (slot == nullptr) {
        return name == "xmlns" && !root;  // repeated by nested svg elements
    }
    const bool own =
        (kind == Kind::Svg && name != "viewBox") || (kind == Kind::Svg && !root) ||
        kind == Kind::Symbol || kind == Kind::Use ||
        (kind == Kind::Ellipse && (name == "cx" || name == "cy" || name == "rx" || name == "ry")) ||
        ((kind == Kind::Polyline || kind == Kind::Polygon) && name == "points") ||
        (kind == Kind::Rect && (name == "rx" || name == "ry") &&
         EqualsLowerCase(TrimSpace(value), "auto"));
    if (own) {
        *slot = value;
    }
    return own;
}

void StandardReader::noteFeature(std::string_view attribute, std::string_view value) {
    value = TrimSpace(value);
    if (value.empty() || value == "none") {
        return;
    }
    std::string_view element = attribute.substr(0, 6) == "marker" ? "marker" : attribute;
    if (element == "clip-path") {
        element = "clipPath";
    }
    warnOnce(std::string(FindElement(element)->warning),
             std::string(FindElement(element)->warning));
}

// Properties that change the drawing in ways the library does not draw, said once when their
// value is not the one that changes nothing.
void StandardReader::noteUndrawn(std::string_view name, std::string_view value) {
    if (name == "paint-order" && !EqualsLowerCase(value, "normal") &&
        !EqualsLowerCase(value.substr(0, 4), "fill")) {
        warnOnce("paint-order", "Ignore paint order: the fill is drawn under the stroke");
    } else if (name == "mix-blend-mode" && !EqualsLowerCase(value, "normal")) {
        warnOnce("mix-blend-mode", "Ignore blend mode: shapes are drawn over each other");
    }
}

// One presentation value from an attribute, the style sheet or a style attribute; later ones
// replace earlier ones, and a value that does not parse leaves the earlier one with a warning.
void StandardReader::applyDeclaration(Record& record, std::string_view name,
                                      std::string_view value) {
    const std::string_view trimmed = TrimSpace(value);
    const bool inherit = EqualsLowerCase(trimmed, "inherit");
    if (name == "display") {
        record.display = inherit ? 0 : EqualsLowerCase(trimmed, "none") ? 1 : 2;
        return;
    }
    if (name == "visibility") {
        record.visibility = inherit                               ? 0
                            : EqualsLowerCase(trimmed, "visible") ? 1
                                                                  : 2;  // hidden, collapse
        return;
    }
    if (name == "color") {
        Rgba colour;
        if (inherit || EqualsLowerCase(trimmed, "currentcolor")) {
            record.colour = kNone;
        } else if (ParseCssColor(trimmed, colour)) {
            record.colour = static_cast<std::uint32_t>(mColours.size());
            mColours.push_back(ColourText(trimmed, colour));
        } else {
            mLoader.reportWarning("Ignore Invalid attribute " + Quoted(name) + " with value " +
                                  Quoted(value));
        }
        return;
    }
    if (name == "clip-path" || name == "mask" || name == "filter" ||
        name.substr(0, 6) == "marker") {
        noteFeature(name, value);
        return;
    }
    if (name == "paint-order" || name == "mix-blend-mode") {
        noteUndrawn(name, trimmed);
        return;
    }
    // An id or a class is no property a declaration may set; the selectors view them.
    if (record.item == nullptr || IsSilentAttribute(Kind::Group, name) || name == "id" ||
        name == "class") {
        return;
    }
    const XmlAttribute attribute{name, std::string_view(), value};
    mLoader.dispatchAttribute(*record.item, nullptr, attribute);
}

// A length attribute, or `fallback` when it is absent or invalid (with a warning).
float StandardReader::lengthOr(std::string_view name, std::string_view text, float fallback) {
    float value = fallback;
    if (!text.empty() && !parseLength(name, text, value)) {
        mLoader.reportWarning("Ignore Invalid attribute " + Quoted(name) + " with value " +
                              Quoted(text));
        value = fallback;
    }
    return value;
}

std::shared_ptr<ItemInterface> StandardReader::finishItem(Kind kind, std::uint32_t index,
                                                          std::shared_ptr<ItemInterface> item,
                                                          Scratch& s) {
    const Viewport parentViewport = mViewports.empty() ? Viewport() : mViewports.back();
    switch (kind) {
        case Kind::Svg:
            if (auto* document = dynamic_cast<Document*>(item.get())) {
                mViewports.push_back(rootViewport(*document, s));
            } else {
                mViewports.push_back(nestedViewport(index, *item, s, parentViewport));
            }
            break;
        case Kind::Symbol: {
            SymbolView& view = mSymbols[index];
            view.preserveAspectRatio = std::string(s.preserveAspectRatio);
            view.viewBox = readViewBox(s.viewBox);
            view.clips = clips(s.overflow);
            break;
        }
        case Kind::Use:
            AppendTransform(*item, Translation(lengthOr("x", s.x, 0.0f), lengthOr("y", s.y, 0.0f)));
            break;
        case Kind::Rect: {
            auto& rect = static_cast<Rect&>(*item);
            const auto& seen = mLoader.stack().attributeSeen;
            // A radius that is missing or "auto" takes the other's value; both are clamped to
            // half the sides.
            const bool hasRx = seen[4] && s.rx.empty();
            const bool hasRy = seen[5] && s.ry.empty();
            float rx = hasRx ? rect.radius.X() : hasRy ? rect.radius.Y() : 0.0f;
            float ry = hasRy ? rect.radius.Y() : hasRx ? rect.radius.X() : 0.0f;
            rx = std::min(rx, rect.size.X() / 2);
            ry = std::min(ry, rect.size.Y() / 2);
            if (rx > 0.0f && ry > 0.0f && rect.size.X() > 0.0f && rect.size.Y() > 0.0f) {
                auto path = std::make_shared<Path>();
                path->editTransform() = rect.getTransform();
                path->editId() = rect.getId();
                path->editProperties() = rect.getProperties();
                AppendRoundedRect(path->commands, rect.position.X(), rect.position.Y(),
                                  rect.size.X(), rect.size.Y(), rx, ry);
                return path;
            }
            break;
        }
        case Kind::Ellipse: {
            const bool autoRx = s.rx.empty() || EqualsLowerCase(TrimSpace(s.rx), "auto");
            const bool autoRy = s.ry.empty() || EqualsLowerCase(TrimSpace(s.ry), "auto");
            float rx = autoRx ? 0.0f : lengthOr("rx", s.rx, 0.0f);
            float ry = autoRy ? 0.0f : lengthOr("ry", s.ry, 0.0f);
            rx = autoRx ? ry : rx;
            ry = autoRy ? rx : ry;
            AppendEllipse(static_cast<Path&>(*item).commands, lengthOr("cx", s.cx, 0.0f),
                          lengthOr("cy", s.cy, 0.0f), rx, ry);
            break;
        }
        case Kind::Polyline:
        case Kind::Polygon: {
            // A number that does not parse ends the list: the points before it are drawn.
            std::vector<float> coordinates;
            if (!ReadStandardNumbers(s.points, coordinates)) {
                mLoader.reportWarning("Ignore Invalid attribute \"points\" with value " +
                                      Quoted(s.points));
            }
            AppendPolyline(static_cast<Path&>(*item).commands, coordinates, kind == Kind::Polygon);
            break;
        }
        default:
            break;
    }
    return item;
}

void StandardReader::startGradient(const std::vector<XmlAttribute>& attributes) {
    mGradients.emplace_back();
    for (const XmlAttribute& attribute : attributes) {
        if (attribute.localName == "id" && attribute.prefix.empty()) {
            mGradientIds.emplace(std::string(attribute.value), mGradients.size() - 1);
        } else if (attribute.localName == "href" &&
                   (attribute.prefix.empty() || attribute.prefix == "xlink")) {
            mGradients.back().href = std::string(attribute.value);
        }
    }
}

void StandardReader::addStop(const std::vector<XmlAttribute>& attributes) {
    std::string_view colourText = "black";
    std::string_view opacityText = "1";
    const auto take = [&](std::string_view name, std::string_view value) {
        if (name == "stop-color") {
            colourText = value;
        } else if (name == "stop-opacity") {
            opacityText = value;
        }
    };
    std::string_view style;
    for (const XmlAttribute& attribute : attributes) {
        if (attribute.prefix.empty()) {
            take(attribute.localName, attribute.value);
            style = attribute.localName == "style" ? attribute.value : style;
        }
    }
    ForEachDeclaration(
        style, [&](std::string_view name, std::string_view value, bool) { take(name, value); });
    Rgba colour;
    if (!ParseCssColor(colourText, colour)) {
        colour = Rgba();  // currentColor and the unreadable: black
    }
    float opacity = 1.0f;
    ParseOpacity(opacityText, opacity);
    colour.a = static_cast<unsigned char>(std::lround(colour.a * opacity));
    mGradients.back().stops.push_back(colour);
}

// The root's width and height are the picture's size: the viewBox is fitted into it (a missing
// side follows the viewBox's proportions), and without a viewBox they give it. Percentages in
// the content refer to the viewBox, the user space the content is written in.
StandardReader::Viewport StandardReader::rootViewport(Document& document, const Scratch& s) {
    const auto absolute = [this](std::string_view name, std::string_view text) {
        float number = 0.0f;
        LengthUnit unit = LengthUnit::None;
        float length = 0.0f;
        const bool usable = !text.empty() && ParseCssLength(text, number, unit) &&
                            unit != LengthUnit::Percent && parseLength(name, text, length) &&
                            length > 0.0f;
        if (!text.empty() && !usable && unit != LengthUnit::Percent) {
            mLoader.reportWarning("Ignore Invalid attribute " + Quoted(name) + " with value " +
                                  Quoted(text));
        }
        return usable ? std::optional<float>(length) : std::nullopt;
    };
    std::optional<float> width = absolute("width", s.width);
    std::optional<float> height = absolute("height", s.height);
    const std::optional<BoundingBox> viewBox = document.getViewbox();
    const bool boxed =
        viewBox && viewBox->isValid() && viewBox->getWidth() > 0.0f && viewBox->getHeight() > 0.0f;
    if (boxed && width && !height) {
        height = *width * viewBox->getHeight() / viewBox->getWidth();
    } else if (boxed && height && !width) {
        width = *height * viewBox->getWidth() / viewBox->getHeight();
    }
    Viewport viewport;
    if (width && height) {
        if (boxed) {
            AppendTransform(document, ViewBoxTransform(*viewBox, 0.0f, 0.0f, *width, *height,
                                                       s.preserveAspectRatio));
        }
        document.editViewbox() = BoundingBox(Wm4::Vector2f::ZERO, Wm4::Vector2f(*width, *height));
        viewport = {*width, *height};
    }
    if (boxed) {
        viewport = {viewBox->getWidth(), viewBox->getHeight()};
    }
    return viewport;
}

// A nested svg element: its viewBox fitted into x, y, width and height (100 % by default), which
// clip what it draws unless its overflow is visible.
StandardReader::Viewport StandardReader::nestedViewport(std::uint32_t index, ItemInterface& item,
                                                        const Scratch& s, const Viewport& parent) {
    const std::optional<BoundingBox> viewBox = readViewBox(s.viewBox);
    const float x = lengthOr("x", s.x, 0.0f);
    const float y = lengthOr("y", s.y, 0.0f);
    const float w = lengthOr("width", s.width, parent.width);
    const float h = lengthOr("height", s.height, parent.height);
    AppendTransform(item, viewBox ? ViewBoxTransform(*viewBox, x, y, w, h, s.preserveAspectRatio)
                                  : Translation(x, y));
    if (clips(s.overflow)) {
        mClips.push_back({index, BoundingBox(Wm4::Vector2f(x, y), Wm4::Vector2f(x + w, y + h))});
    }
    if (viewBox && viewBox->isValid()) {
        return {viewBox->getWidth(), viewBox->getHeight()};
    }
    return {w, h};
}

// Whether a viewport with this overflow clips its content ("hidden" by default).
bool StandardReader::clips(std::string_view overflow) {
    overflow = TrimSpace(overflow);
    return !EqualsLowerCase(overflow, "visible") && !EqualsLowerCase(overflow, "auto");
}

std::optional<BoundingBox> StandardReader::readViewBox(std::string_view text) const {
    BoundingBox box;
    if (text.empty()) {
        return std::nullopt;
    }
    if (!ParseViewBox(text, box)) {
        mLoader.reportWarning("Ignore Invalid attribute \"viewBox\" with value " + Quoted(text));
        return std::nullopt;
    }
    return box;
}

bool StandardReader::endElement() {
    if (mOpen.empty()) {
        return false;
    }
    const Open open = mOpen.back();
    mOpen.pop_back();
    mNamespaces.resize(open.namespaces);
    if (open.kind == Kind::Style) {
        mKeepAttributes = mSheetText.find('[') != std::string::npos;
    }
    if (open.record != kNone) {
        mRecords[open.record].end = static_cast<std::uint32_t>(mRecords.size());
    }
    if (open.viewport && !mViewports.empty()) {
        mViewports.pop_back();
    }
    return true;
}

bool StandardReader::characters(const char* text, int length) {
    if (mOpen.empty() || length < 1) {
        return true;
    }
    const Kind top = mOpen.back().kind;
    if (top == Kind::Style) {
        mSheetText.append(text, static_cast<std::size_t>(length));
    } else if (top == Kind::Text || top == Kind::TextSpan) {
        for (auto it = mOpen.rbegin(); it != mOpen.rend(); ++it) {
            if (it->kind == Kind::Text) {
                static_cast<Text&>(*mRecords[it->record].item)
                    .text.append(text, static_cast<std::size_t>(length));
                break;
            }
        }
    }
    return true;
}

bool StandardReader::parseLength(std::string_view name, std::string_view value, float& out) const {
    float number = 0.0f;
    LengthUnit unit = LengthUnit::None;
    return ParseCssLength(value, number, unit) && toUserUnits(name, number, unit, out);
}

bool StandardReader::toUserUnits(std::string_view name, float number, LengthUnit unit,
                                 float& out) const {
    const Viewport viewport = mViewports.empty() ? Viewport() : mViewports.back();
    const float reference =
        IsHorizontalLength(name) ? viewport.width
        : IsVerticalLength(name)
            ? viewport.height
            : std::sqrt((viewport.width * viewport.width + viewport.height * viewport.height) / 2);
    const float length = ToUserUnits(number, unit, reference);
    if (!std::isfinite(length) || (length < 0.0f && MayNotBeNegative(name))) {
        return false;
    }
    out = length;
    return true;
}

bool StandardReader::parsePaint(std::string_view value, std::string& text, bool& unset) {
    unset = false;
    std::string_view v = TrimSpace(value);
    if (v == "none" || EqualsLowerCase(v, "context-fill") || EqualsLowerCase(v, "context-stroke")) {
        text = "none";
        return true;
    }
    if (EqualsLowerCase(v, "currentcolor")) {
        text = "currentColor";
        return true;
    }
    if (EqualsLowerCase(v, "inherit")) {
        unset = true;
        return true;
    }
    if (EqualsLowerCase(v.substr(0, 4), "url(")) {
        const std::size_t close = v.find(')');
        if (close == std::string_view::npos) {
            return false;
        }
        std::string fallback = "none";
        const std::string_view rest = TrimSpace(v.substr(close + 1));
        bool fallbackUnset = false;
        if (!rest.empty() && (!parsePaint(rest, fallback, fallbackUnset) || fallbackUnset ||
                              fallback.compare(0, 4, "url(") == 0)) {
            return false;
        }
        std::string id;
        if (!LocalReference(v.substr(4, close - 4), id)) {
            warnOnce("external " + std::string(v.substr(4, close - 4)),
                     "Ignore reference " + Quoted(TrimSpace(v.substr(4, close - 4))) +
                         ": other documents are never read");
            text = fallback;
            return true;
        }
        text = "url(#" + id + ")";
        if (!rest.empty()) {
            text += " " + fallback;
        }
        return true;
    }
    Rgba colour;
    if (ParseCssColor(v, colour)) {
        text = ColourText(v, colour);
        return true;
    }
    // A colour with an ICC profile after it: the colour is the fallback a reader without
    // colour management draws.
    const std::size_t space = v.find(' ');
    if (space != std::string_view::npos && ParseCssColor(v.substr(0, space), colour)) {
        text = ColourText(v.substr(0, space), colour);
        return true;
    }
    return false;
}

void StandardReader::warnUnsupportedSelectors() {
    const std::vector<std::string>& skipped = mSheet.unsupported();
    if (skipped.empty()) {
        return;
    }
    std::string names;
    constexpr std::size_t kNamed = 8;
    for (std::size_t i = 0; i < skipped.size() && i < kNamed; ++i) {
        names += (i > 0 ? ", " : "") + Quoted(skipped[i]);
    }
    if (skipped.size() > kNamed) {
        names += " and " + std::to_string(skipped.size() - kNamed) + " more";
    }
    mLoader.reportWarning("Ignore style rules that are not supported: " + names);
}

bool StandardReader::finish(ItemInterfacePointer<ItemInterface>& out) {
    mOriginalRecords = mRecords.size();
    mSheet.parse(mSheetText);
    warnUnsupportedSelectors();
    applyStyles();
    if (!expandUses()) {
        return false;
    }
    warnClipping();
    resolveInherited();
    scaleDashesToPathLengths();
    removeHidden();
    if (mRoot == nullptr) {
        mLoader.reportError("The root element " + Quoted(mRootTag) +
                            " is not an SVG element that draws: the document has nothing to draw");
        return false;
    }
    out = mRoot;
    return true;
}

}  // namespace tq::svg::detail
