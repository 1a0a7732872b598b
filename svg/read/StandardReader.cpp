#include "svg/read/detail/StandardReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

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

enum class StandardReader::Kind : std::uint8_t {
    // Elements that become items.
    Svg,
    Group,
    Switch,
    Definitions,  // defs: a detached group, drawn only through references
    Symbol,       // likewise, with a viewBox of its own
    Use,
    Rect,
    Circle,
    Ellipse,
    Line,
    Polyline,
    Polygon,
    Path,
    Text,
    Image,
    // Elements that do not.
    TextSpan,
    Style,
    Gradient,
    Stop,
    Silent,   // title, desc, metadata: no drawing, no warning
    Feature,  // drawing the library leaves out: skipped, with a warning where it matters
};

namespace {

using Kind = StandardReader::Kind;

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();
constexpr int kMaxDepth = 256;
// References may expand the document within a fixed allowance, beyond it only to ten times its
// own size, as entities may; sizes are the memory the items take, roughly.
constexpr std::uint64_t kMaxAmplification = 10;
constexpr std::uint64_t kExpansionAllowance = 16u << 20;

struct ElementRow {
    std::string_view name;
    Kind kind;
    // For features: the warning given when the element (always) or a reference to it (paint
    // servers, clip paths, masks, filters, markers) is met.
    std::string_view warning = {};
    bool warnAlways = false;
};

constexpr std::string_view kAnimation =
    "Ignore animation: the document is drawn as it stands before any animation";
constexpr std::string_view kFonts = "Ignore SVG font: fonts are not drawn";

// Sorted by name for a binary search.
constexpr ElementRow kElements[] = {
    {"a", Kind::Group},
    {"altGlyph", Kind::Feature, kFonts, true},
    {"altGlyphDef", Kind::Feature, kFonts, true},
    {"animate", Kind::Feature, kAnimation, true},
    {"animateColor", Kind::Feature, kAnimation, true},
    {"animateMotion", Kind::Feature, kAnimation, true},
    {"animateTransform", Kind::Feature, kAnimation, true},
    {"circle", Kind::Circle},
    {"clipPath", Kind::Feature, "Ignore clip path: the content is drawn unclipped"},
    {"color-profile", Kind::Silent},
    {"cursor", Kind::Silent},
    {"defs", Kind::Definitions},
    {"desc", Kind::Silent},
    {"discard", Kind::Feature, kAnimation, true},
    {"ellipse", Kind::Ellipse},
    {"filter", Kind::Feature, "Ignore filter: the content is drawn unfiltered"},
    {"font", Kind::Feature, kFonts, true},
    {"font-face", Kind::Feature, kFonts, true},
    {"foreignObject", Kind::Feature, "Ignore foreign object: its content is not drawn", true},
    {"g", Kind::Group},
    {"glyph", Kind::Feature, kFonts, true},
    {"hkern", Kind::Feature, kFonts, true},
    {"image", Kind::Image},
    {"line", Kind::Line},
    {"linearGradient", Kind::Gradient},
    {"marker", Kind::Feature, "Ignore marker: markers are not drawn"},
    {"mask", Kind::Feature, "Ignore mask: the content is drawn unmasked"},
    {"metadata", Kind::Silent},
    {"missing-glyph", Kind::Feature, kFonts, true},
    {"mpath", Kind::Feature, kAnimation, true},
    {"path", Kind::Path},
    {"pattern", Kind::Feature, "Ignore pattern: a pattern paint is drawn in its fallback colour"},
    {"polygon", Kind::Polygon},
    {"polyline", Kind::Polyline},
    {"radialGradient", Kind::Gradient},
    {"rect", Kind::Rect},
    {"script", Kind::Feature, "Ignore script: scripts are never run", true},
    {"set", Kind::Feature, kAnimation, true},
    {"stop", Kind::Stop},
    {"style", Kind::Style},
    {"svg", Kind::Svg},
    {"switch", Kind::Switch},
    {"symbol", Kind::Symbol},
    {"text", Kind::Text},
    {"textPath", Kind::TextSpan},
    {"title", Kind::Silent},
    {"tref", Kind::TextSpan},
    {"tspan", Kind::TextSpan},
    {"use", Kind::Use},
    {"view", Kind::Silent},
    {"vkern", Kind::Feature, kFonts, true},
};

const ElementRow* findElement(std::string_view name) {
    const auto* end = std::end(kElements);
    const auto* it =
        std::lower_bound(std::begin(kElements), end, name,
                         [](const ElementRow& row, std::string_view n) { return row.name < n; });
    return it != end && it->name == name ? it : nullptr;
}

std::uint8_t rowOf(const ElementRow* row) {
    return static_cast<std::uint8_t>(row - std::begin(kElements));
}

bool isContainer(Kind kind) {
    return kind == Kind::Svg || kind == Kind::Group || kind == Kind::Switch ||
           kind == Kind::Definitions || kind == Kind::Symbol;
}

// Attributes that carry no drawing the library does: accepted without a word. Text properties
// are listed apart, since the text element keeps some of them.
constexpr std::string_view kSilentAttributes[] = {
    "baseProfile",
    "clip-rule",
    "color-interpolation",
    "color-interpolation-filters",
    "color-profile",
    "color-rendering",
    "contentScriptType",
    "contentStyleType",
    "cursor",
    "enable-background",
    "externalResourcesRequired",
    "flood-color",
    "flood-opacity",
    "focusable",
    "image-rendering",
    "isolation",
    "lang",
    "lighting-color",
    "mix-blend-mode",
    "overflow",
    "paint-order",
    "pointer-events",
    "role",
    "shape-rendering",
    "stop-color",
    "stop-opacity",
    "stroke-dashoffset",
    "stroke-miterlimit",
    "tabindex",
    "text-rendering",
    "version",
    "zoomAndPan",
};

constexpr std::string_view kTextAttributes[] = {
    "alignment-baseline",
    "baseline-shift",
    "direction",
    "dominant-baseline",
    "font",
    "font-family",
    "font-size",
    "font-size-adjust",
    "font-stretch",
    "font-style",
    "font-variant",
    "font-weight",
    "kerning",
    "letter-spacing",
    "text-anchor",
    "text-decoration",
    "unicode-bidi",
    "word-spacing",
    "writing-mode",
    "glyph-orientation-horizontal",
    "glyph-orientation-vertical",
};

template <std::size_t N>
bool listed(const std::string_view (&names)[N], std::string_view name) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool isSilent(Kind kind, std::string_view name) {
    if (listed(kSilentAttributes, name) || name.substr(0, 5) == "aria-" ||
        name.substr(0, 5) == "data-" || name.substr(0, 2) == "on") {
        return true;
    }
    // A link's target does not change what is drawn.
    if (kind == Kind::Group && (name == "href" || name == "target")) {
        return true;
    }
    return kind != Kind::Text && listed(kTextAttributes, name);
}

bool isHorizontal(std::string_view name) {
    return name == "x" || name == "cx" || name == "x1" || name == "x2" || name == "width" ||
           name == "rx" || name == "dx";
}

bool isVertical(std::string_view name) {
    return name == "y" || name == "cy" || name == "y1" || name == "y2" || name == "height" ||
           name == "ry" || name == "dy";
}

bool mayNotBeNegative(std::string_view name) {
    return name == "width" || name == "height" || name == "r" || name == "rx" || name == "ry" ||
           name == "stroke-width";
}

// "#id", "url(#id)" and their quoted forms: the id, or false for a reference to another
// document.
bool localReference(std::string_view reference, std::string& id) {
    reference = TrimSpace(reference);
    if (!reference.empty() && (reference.front() == '"' || reference.front() == '\'') &&
        reference.size() >= 2 && reference.back() == reference.front()) {
        reference = TrimSpace(reference.substr(1, reference.size() - 2));
    }
    if (reference.empty() || reference.front() != '#') {
        return false;
    }
    id = std::string(reference.substr(1));
    return true;
}

Wm4::Matrix3f translation(float x, float y) {
    Wm4::Matrix3f m = Wm4::Matrix3f::IDENTITY;
    m(0, 2) = x;
    m(1, 2) = y;
    return m;
}

// The item's own transform followed by `m` (applied first to the content).
void appendTransform(ItemInterface& item, const Wm4::Matrix3f& m) {
    const Wm4::Matrix3f combined = item.getTransform() ? *item.getTransform() * m : m;
    if (combined != Wm4::Matrix3f::IDENTITY) {
        item.editTransform() = combined;
    } else {
        item.editTransform().reset();
    }
}

// A copy of one item without its children.
std::shared_ptr<ItemInterface> shallowCopy(const ItemInterface& item) {
    switch (item.getType()) {
        case ItemType::Line:
            return std::make_shared<Line>(static_cast<const Line&>(item));
        case ItemType::Rect:
            return std::make_shared<Rect>(static_cast<const Rect&>(item));
        case ItemType::Circle:
            return std::make_shared<Circle>(static_cast<const Circle&>(item));
        case ItemType::Path:
            return std::make_shared<Path>(static_cast<const Path&>(item));
        case ItemType::Text:
            return std::make_shared<Text>(static_cast<const Text&>(item));
        case ItemType::Image:
            return std::make_shared<Image>(static_cast<const Image&>(item));
        default: {
            auto group = std::make_shared<Node>();
            group->editTransform() = item.getTransform();
            group->editProperties() = item.getProperties();
            return group;
        }
    }
}

// Roughly the memory an item takes, when copies are counted against the document's size.
std::uint64_t sizeOf(const ItemInterface& item) {
    constexpr std::uint64_t kItem = 512;
    constexpr std::uint64_t kCommand = 64;
    const std::uint64_t commands =
        item.getType() == ItemType::Path ? static_cast<const Path&>(item).commands.size() : 0;
    return kItem + kCommand * commands;
}

// Whether the inherited pass has work on the item itself, whatever its ancestors: a paint naming
// the current colour or a gradient, or an opacity to multiply.
bool resolvesOnItem(const RenderingProperties& p) {
    const auto special = [](const std::optional<std::string>& paint) {
        return paint && (*paint == "currentColor" || paint->compare(0, 4, "url(") == 0);
    };
    return special(p.fill) || special(p.stroke) || p.opacity.has_value();
}

}  // namespace

// What the tree has no field for, one per element that became an item, in document order.
struct StandardReader::Record {
    ItemInterface* item = nullptr;
    std::uint32_t parent = kNone;  // the record of the enclosing item
    std::uint32_t end = kNone;     // one past the last record of the subtree
    std::uint32_t origin = kNone;  // the element a copy was made from; itself for originals
    std::uint32_t style = kNone;  // the style attribute, in mStyles
    std::uint32_t styleLength = 0;
    std::uint32_t colour = kNone;  // the "color" value as colour text, in mColours
    std::uint16_t depth = 0;
    std::uint8_t row = 0;         // in kElements
    std::uint8_t display = 0;     // 0 inherited, 1 none, 2 shown
    std::uint8_t visibility = 0;  // 0 inherited, 1 visible, 2 hidden
    // Set while the item is at hand, so that the passes skip items they have nothing to do on
    // (each visit of an item is a cache miss in a large document).
    bool selectable = false;  // has a class or an id
    bool resolves = false;    // see resolvesOnItem
};

// An open element that was not skipped.
struct StandardReader::Open {
    Kind kind;
    std::uint32_t record = kNone;
    bool viewport = false;  // pushed a viewport for the percentages of its content
    bool taken = false;     // a switch that has drawn its child
};

// Attributes of the element being read that the tree has no field for.
struct StandardReader::Scratch {
    std::string href;
    std::string_view x, y, width, height, cx, cy, rx, ry, points, viewBox, preserveAspectRatio;
};

struct StandardReader::Gradient {
    std::string href;
    std::vector<Rgba> stops;
};

struct StandardReader::Use {
    std::uint32_t record;
    std::string target;
    // For a symbol: the viewport its viewBox is fitted into, when given.
    std::optional<float> width, height;
};

StandardReader::StandardReader(Loader& loader) : mLoader(loader) {}

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
    const std::string_view tag(name);
    if (tag.find(':') != std::string_view::npos) {
        return StartElementResult::SkipElement;  // another vocabulary (editors' metadata)
    }
    const ElementRow* row = findElement(tag);
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
        if (!isContainer(parent.kind) || (parent.kind == Kind::Switch && parent.taken)) {
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
    record.row = rowOf(findElement(name));
    record.depth = static_cast<std::uint16_t>(parent == kNone ? 0 : mRecords[parent].depth + 1);
    std::shared_ptr<ItemInterface> item = createItem(kind);
    Scratch scratch;
    readAttributes(kind, *item, scratch, record, attributes);
    item = finishItem(kind, index, std::move(item), scratch);
    record.item = item.get();
    record.selectable = item->getId() || item->getProperties().className;
    record.resolves = resolvesOnItem(item->getProperties());
    mRecords.push_back(record);
    if (const auto& id = item->getId()) {
        mIds.emplace(*id, index);
    }
    if (kind == Kind::Use) {
        Use use{index, std::move(scratch.href), {}, {}};
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
            if (attribute.prefix == "xlink" && name == "href") {
                scratch.href = std::string(value);
            } else if (attribute.prefix == "xml" && name == "space" && kind == Kind::Text) {
                mLoader.dispatchAttribute(item, parser, attribute);
            }
            // Anything else under a prefix (namespace declarations, editors' data, xml:lang)
            // belongs to another vocabulary.
            continue;
        }
        if (readOwnAttribute(kind, name, value, scratch, record) || isSilent(kind, name)) {
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
        record.style = static_cast<std::uint32_t>(mStyles.size());
        record.styleLength = static_cast<std::uint32_t>(value.size());
        mStyles.append(value);
        return true;
    }
    if (name == "color" || name == "display" || name == "visibility" || name == "clip-path" ||
        name == "mask" || name == "filter" || name.substr(0, 6) == "marker") {
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
    warnOnce(std::string(findElement(element)->warning),
             std::string(findElement(element)->warning));
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
    if (record.item == nullptr || isSilent(Kind::Group, name)) {
        return;
    }
    const XmlAttribute attribute{name, std::string_view(), value};
    mLoader.dispatchAttribute(*record.item, nullptr, attribute);
}

std::shared_ptr<ItemInterface> StandardReader::finishItem(Kind kind, std::uint32_t index,
                                                          std::shared_ptr<ItemInterface> item,
                                                          Scratch& s) {
    const auto length = [this](std::string_view name, std::string_view text, float fallback) {
        float value = fallback;
        if (!text.empty() && !parseLength(name, text, value)) {
            mLoader.reportWarning("Ignore Invalid attribute " + Quoted(name) + " with value " +
                                  Quoted(text));
            value = fallback;
        }
        return value;
    };
    const Viewport parentViewport = mViewports.empty() ? Viewport() : mViewports.back();
    switch (kind) {
        case Kind::Svg: {
            Viewport viewport;
            std::optional<BoundingBox> viewBox;
            if (auto* document = dynamic_cast<Document*>(item.get())) {
                // The root: its width and height give the view box when it has none.
                LengthUnit unit = LengthUnit::None;
                float w = 0.0f;
                float h = 0.0f;
                if (!document->getViewbox() && ParseCssLength(s.width, w, unit) &&
                    unit != LengthUnit::Percent && ParseCssLength(s.height, h, unit) &&
                    unit != LengthUnit::Percent) {
                    w = length("width", s.width, 0.0f);
                    h = length("height", s.height, 0.0f);
                    if (w > 0.0f && h > 0.0f) {
                        document->editViewbox() =
                            BoundingBox(Wm4::Vector2f::ZERO, Wm4::Vector2f(w, h));
                    }
                }
                viewBox = document->getViewbox();
            } else {
                // A nested viewport: its viewBox fitted into x, y, width, height.
                std::vector<float> numbers;
                if (!s.viewBox.empty() &&
                    ParseNumberList("viewBox", s.viewBox, 4, 4, numbers, nullptr)) {
                    viewBox = BoundingBox(
                        Wm4::Vector2f(numbers[0], numbers[1]),
                        Wm4::Vector2f(numbers[0] + numbers[2], numbers[1] + numbers[3]));
                }
                const float x = length("x", s.x, 0.0f);
                const float y = length("y", s.y, 0.0f);
                const float w = length("width", s.width, parentViewport.width);
                const float h = length("height", s.height, parentViewport.height);
                appendTransform(
                    *item, viewBox ? ViewBoxTransform(*viewBox, x, y, w, h, s.preserveAspectRatio)
                                   : translation(x, y));
                viewport.width = w;
                viewport.height = h;
            }
            if (viewBox && viewBox->isValid()) {
                viewport.width = viewBox->getWidth();
                viewport.height = viewBox->getHeight();
            }
            mViewports.push_back(viewport);
            break;
        }
        case Kind::Symbol: {
            SymbolView& view = mSymbols[index];
            view.preserveAspectRatio = std::string(s.preserveAspectRatio);
            std::vector<float> numbers;
            if (!s.viewBox.empty() &&
                ParseNumberList("viewBox", s.viewBox, 4, 4, numbers, nullptr)) {
                view.viewBox =
                    BoundingBox(Wm4::Vector2f(numbers[0], numbers[1]),
                                Wm4::Vector2f(numbers[0] + numbers[2], numbers[1] + numbers[3]));
            }
            break;
        }
        case Kind::Use:
            appendTransform(*item, translation(length("x", s.x, 0.0f), length("y", s.y, 0.0f)));
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
            float rx = autoRx ? 0.0f : length("rx", s.rx, 0.0f);
            float ry = autoRy ? 0.0f : length("ry", s.ry, 0.0f);
            rx = autoRx ? ry : rx;
            ry = autoRy ? rx : ry;
            AppendEllipse(static_cast<Path&>(*item).commands, length("cx", s.cx, 0.0f),
                          length("cy", s.cy, 0.0f), rx, ry);
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

bool StandardReader::endElement() {
    if (mOpen.empty()) {
        return false;
    }
    const Open open = mOpen.back();
    mOpen.pop_back();
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
    if (!ParseCssLength(value, number, unit)) {
        return false;
    }
    const Viewport viewport = mViewports.empty() ? Viewport() : mViewports.back();
    const float reference =
        isHorizontal(name) ? viewport.width
        : isVertical(name)
            ? viewport.height
            : std::sqrt((viewport.width * viewport.width + viewport.height * viewport.height) / 2);
    const float length = ToUserUnits(number, unit, reference);
    if (!std::isfinite(length) || (length < 0.0f && mayNotBeNegative(name))) {
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
        if (!localReference(v.substr(4, close - 4), id)) {
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

// ---- the whole-document passes -----------------------------------------------------------------

bool StandardReader::finish(ItemInterfacePointer<ItemInterface>& out) {
    mOriginalRecords = mRecords.size();
    mSheet.parse(mSheetText);
    if (!mSheet.firstUnsupported().empty()) {
        warnOnce("selector", "Ignore style rule " + Quoted(mSheet.firstUnsupported()) +
                                 ": only element, class and id selectors are applied");
    }
    applyStyles();
    if (!expandUses()) {
        return false;
    }
    resolveInherited();
    removeHidden();
    out = mRoot;  // none when the root element was not one the profile reads
    return true;
}

void StandardReader::applyStyles() {
    // Whether any rule applies to every element of a row, so that an element without a class,
    // an id or a style attribute may be passed over.
    std::array<bool, std::size(kElements)> rowMatches{};
    for (std::size_t row = 0; row < rowMatches.size(); ++row) {
        rowMatches[row] = mSheet.matchesEvery(kElements[row].name);
    }
    std::vector<const CssDeclaration*> matched;
    for (std::uint32_t i = 0; i < mOriginalRecords; ++i) {
        Record& record = mRecords[i];
        if (record.style == kNone &&
            (mSheet.empty() || (!record.selectable && !rowMatches[record.row]))) {
            continue;
        }
        const auto& properties = record.item->getProperties();
        const auto& id = record.item->getId();
        mSheet.match(kElements[record.row].name, properties.className.value_or(""),
                     id ? std::string_view(*id) : std::string_view(), matched);
        const std::string_view style =
            record.style == kNone
                ? std::string_view()
                : std::string_view(mStyles).substr(record.style, record.styleLength);
        // Normal declarations, then important ones; within each, the sheet before the style
        // attribute.
        for (const bool important : {false, true}) {
            for (const CssDeclaration* declaration : matched) {
                if (declaration->important == important) {
                    applyDeclaration(record, declaration->name, declaration->value);
                }
            }
            ForEachDeclaration(
                style, [&](std::string_view name, std::string_view value, bool isImportant) {
                    if (isImportant == important) {
                        applyDeclaration(mRecords[i], name, value);
                    }
                });
        }
        mRecords[i].resolves = resolvesOnItem(mRecords[i].item->getProperties());
    }
}

bool StandardReader::expandUses() {
    if (mUses.empty()) {
        return true;
    }
    std::uint64_t documentSize = 0;
    for (std::uint32_t i = 0; i < mOriginalRecords; ++i) {
        documentSize += sizeOf(*mRecords[i].item);
    }
    const std::uint64_t limit = std::max(kExpansionAllowance, kMaxAmplification * documentSize);
    std::uint64_t expanded = 0;
    for (std::size_t u = 0; u < mUses.size(); ++u) {
        const Use use = mUses[u];
        // Originals inside definitions are never drawn: only their copies are expanded.
        if (insideDefinitions(use.record)) {
            continue;
        }
        const std::size_t before = mRecords.size();
        if (!expandUse(use)) {
            return false;
        }
        for (std::size_t i = before; i < mRecords.size(); ++i) {
            expanded += sizeOf(*mRecords[i].item);
        }
        if (expanded > limit) {
            mLoader.reportError("References expand the document more than " +
                                std::to_string(kMaxAmplification) + "-fold");
            return false;
        }
    }
    return true;
}

bool StandardReader::insideDefinitions(std::uint32_t record) const {
    if (record >= mOriginalRecords) {
        return false;
    }
    for (std::uint32_t a = mRecords[record].parent; a != kNone; a = mRecords[a].parent) {
        const Kind kind = kElements[mRecords[a].row].kind;
        if (kind == Kind::Definitions || kind == Kind::Symbol) {
            return true;
        }
    }
    return false;
}

bool StandardReader::expandUse(const Use& use) {
    std::string id;
    if (!localReference(use.target, id)) {
        if (!use.target.empty()) {
            warnOnce("external " + use.target,
                     "Ignore reference " + Quoted(use.target) + ": other documents are never read");
        }
        return true;
    }
    const auto found = mIds.find(id);
    if (found == mIds.end()) {
        warnOnce("missing " + id, "Ignore reference " + Quoted("#" + id) +
                                      ": no element that can be drawn has that id");
        return true;
    }
    const std::uint32_t target = found->second;
    const std::uint32_t targetOrigin = mRecords[target].origin;
    for (std::uint32_t a = use.record; a != kNone; a = mRecords[a].parent) {
        if (mRecords[a].origin == targetOrigin) {
            mLoader.reportError("Element \"use\" references itself or an ancestor: " +
                                Quoted("#" + id));
            return false;
        }
    }
    const Kind kind = kElements[mRecords[target].row].kind;
    if (kind == Kind::Definitions) {
        return true;
    }
    auto& placeholder = static_cast<Node&>(*mRecords[use.record].item);
    const std::uint32_t copy = copySubtree(target, use.record, placeholder);
    if (copy == kNone) {
        return false;
    }
    // A symbol is drawn as a viewport: its viewBox fitted into the use's width and height.
    const auto symbol = mSymbols.find(target);
    if (symbol != mSymbols.end() && symbol->second.viewBox) {
        const BoundingBox& viewBox = *symbol->second.viewBox;
        appendTransform(
            *mRecords[copy].item,
            ViewBoxTransform(viewBox, 0.0f, 0.0f, use.width.value_or(viewBox.getWidth()),
                             use.height.value_or(viewBox.getHeight()),
                             symbol->second.preserveAspectRatio));
    }
    return true;
}

// Copies the subtree of record `source` under `into` (whose record is `parent`), records
// included, in document order; a symbol is copied as a plain group. Placeholders of uses are
// copied without what they hold and expanded again in their new place. Returns the record of
// the copy of `source`, or kNone after refusing a copy nested too deep.
std::uint32_t StandardReader::copySubtree(std::uint32_t source, std::uint32_t parent, Node& into) {
    const std::uint32_t end = mRecords[source].end;
    std::vector<std::uint32_t> copies(end - source, kNone);
    const auto first = static_cast<std::uint32_t>(mRecords.size());
    for (std::uint32_t i = source; i < end; ++i) {
        const Record original = mRecords[i];
        const Kind kind = kElements[original.row].kind;
        const std::uint32_t copiedParent = i == source ? parent
                                           : original.parent >= source && original.parent < end
                                               ? copies[original.parent - source]
                                               : kNone;
        if (copiedParent == kNone || (i != source && kind == Kind::Definitions)) {
            continue;  // inside a left-out part (nested definitions, a placeholder's content)
        }
        Record copy = original;
        copy.parent = copiedParent;
        copy.style = kNone;
        copy.depth = static_cast<std::uint16_t>(mRecords[copiedParent].depth + 1);
        if (copy.depth > kMaxDepth) {
            mLoader.reportError("References nest the document deeper than " +
                                std::to_string(kMaxDepth) + " levels");
            return kNone;
        }
        if (kind == Kind::Symbol) {
            copy.row = rowOf(findElement("g"));
        }
        std::shared_ptr<ItemInterface> item = shallowCopy(*original.item);
        item->editId().reset();  // ids stay unique in the tree
        copy.item = item.get();
        const auto index = static_cast<std::uint32_t>(mRecords.size());
        mRecords.push_back(copy);
        copies[i - source] = index;
        Node& group = i == source ? into : static_cast<Node&>(*mRecords[copiedParent].item);
        group.editChildren().push_back(std::move(item));
        if (kind == Kind::Use) {
            // What the placeholder holds is its expansion, made again for the copy.
            const auto use = mUseOfRecord.find(i);
            if (use != mUseOfRecord.end()) {
                Use again = mUses[use->second];
                again.record = index;
                mUses.push_back(std::move(again));
            }
            i = original.end - 1;
        }
    }
    // Children come after their parents: ends gather from the last record back.
    for (std::uint32_t i = first; i < mRecords.size(); ++i) {
        mRecords[i].end = i + 1;
    }
    for (auto i = static_cast<std::uint32_t>(mRecords.size()); i-- > first;) {
        const std::uint32_t p = mRecords[i].parent;
        if (p != kNone && p >= first) {
            mRecords[p].end = std::max(mRecords[p].end, mRecords[i].end);
        }
    }
    return copies[0];
}

void StandardReader::resolveInherited() {
    struct State {
        bool removed = false;
        bool hidden = false;
        bool fillIsCurrent = false;
        bool strokeIsCurrent = false;
        std::uint32_t colour = kNone;  // in mColours; none for black
        float opacity = 1.0f;
    };
    std::vector<State> states(mRecords.size());
    for (std::uint32_t i = 0; i < mRecords.size(); ++i) {
        Record& record = mRecords[i];
        const Kind kind = kElements[record.row].kind;
        if (i < mOriginalRecords && (kind == Kind::Definitions || kind == Kind::Symbol)) {
            i = record.end - 1;  // definitions are drawn through their copies only
            continue;
        }
        const State parent = record.parent == kNone ? State() : states[record.parent];
        State& state = states[i];
        state = parent;
        state.removed = parent.removed || record.display == 1;
        if (state.removed) {
            if (!parent.removed) {
                mHidden.push_back(i);
            }
            continue;
        }
        state.hidden = record.visibility == 0 ? parent.hidden : record.visibility == 2;
        if (state.hidden && dynamic_cast<Node*>(record.item) == nullptr) {
            mHidden.push_back(i);
            continue;
        }
        if (record.colour != kNone) {
            state.colour = record.colour;
        }
        if (!record.resolves && !state.fillIsCurrent && !state.strokeIsCurrent) {
            continue;  // nothing to resolve on the item, and nothing it could change below it
        }
        RenderingProperties& p = record.item->editProperties();
        // currentColor is inherited as the keyword, so a descendant with a colour of its own
        // paints in that colour.
        static const std::string black = "black";
        const std::string& colour = state.colour == kNone ? black : mColours[state.colour];
        const auto resolve = [&](std::optional<std::string>& paint, bool& isCurrent) {
            if (paint) {
                isCurrent = *paint == "currentColor";
                if (paint->compare(0, 4, "url(") == 0) {
                    *paint = resolvePaint(*paint);
                    isCurrent = *paint == "currentColor";
                }
                if (isCurrent) {
                    *paint = colour;
                }
            } else if (isCurrent && record.colour != kNone) {
                paint = colour;
            }
        };
        resolve(p.fill, state.fillIsCurrent);
        resolve(p.stroke, state.strokeIsCurrent);
        if (p.opacity) {
            state.opacity *= *p.opacity;
            p.opacity = state.opacity;
        }
    }
}

std::string StandardReader::resolvePaint(const std::string& paint) {
    const std::size_t close = paint.find(')');
    const std::string id = paint.substr(5, close - 5);
    const std::string fallback = close + 2 < paint.size() ? paint.substr(close + 2) : "none";
    std::string colour;
    if (gradientColour(id, colour)) {
        warnOnce("gradient", "Ignore gradient: it is drawn in the average of its stop colours");
        return colour;
    }
    const auto feature = mFeatureIds.find(id);
    if (feature != mFeatureIds.end()) {
        warnOnce(feature->second, feature->second);
    } else {
        warnOnce("missing " + id,
                 "Ignore reference " + Quoted("#" + id) + ": no paint has that id");
    }
    return fallback;
}

bool StandardReader::gradientColour(const std::string& id, std::string& colour) {
    auto found = mGradientIds.find(id);
    if (found == mGradientIds.end()) {
        return false;
    }
    // Stops come from the gradient itself or, when it has none, along its references.
    const Gradient* gradient = &mGradients[found->second];
    for (int hops = 0; gradient->stops.empty() && hops < 16; ++hops) {
        std::string next;
        if (!localReference(gradient->href, next) ||
            (found = mGradientIds.find(next)) == mGradientIds.end()) {
            break;
        }
        gradient = &mGradients[found->second];
    }
    if (gradient->stops.empty()) {
        colour = "none";
        return true;
    }
    double sum[4] = {0, 0, 0, 0};
    for (const Rgba& stop : gradient->stops) {
        sum[0] += stop.r;
        sum[1] += stop.g;
        sum[2] += stop.b;
        sum[3] += stop.a;
    }
    const double n = static_cast<double>(gradient->stops.size());
    const auto channel = [&](int i) { return static_cast<unsigned char>(std::lround(sum[i] / n)); };
    colour = ColourText("", {channel(0), channel(1), channel(2), channel(3)});
    return true;
}

void StandardReader::removeHidden() {
    std::unordered_map<Node*, std::vector<const ItemInterface*>> byParent;
    for (const std::uint32_t i : mHidden) {
        const std::uint32_t parent = mRecords[i].parent;
        if (parent == kNone) {
            if (auto* root = dynamic_cast<Node*>(mRecords[i].item)) {
                root->editChildren().clear();
            }
            continue;
        }
        if (auto* group = dynamic_cast<Node*>(mRecords[parent].item)) {
            byParent[group].push_back(mRecords[i].item);
        }
    }
    for (auto& entry : byParent) {
        std::vector<const ItemInterface*>& doomed = entry.second;
        std::sort(doomed.begin(), doomed.end());
        entry.first->editChildren().remove_if([&](const std::shared_ptr<ItemInterface>& child) {
            return std::binary_search(doomed.begin(), doomed.end(), child.get());
        });
    }
}

}  // namespace tq::svg::detail
