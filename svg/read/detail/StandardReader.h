// The standard reading profile: SVG as browsers draw it, normalised into the item tree
// (internal).
//
// Elements become the items the tree has (ellipses, polygons, polylines and rounded rectangles
// become paths; "a", "switch" and nested "svg" become groups; "use" a group holding a copy of
// what it references). What needs the whole document is resolved when it ends, in this order:
//   1. style sheets and style attributes (sheet rules by specificity, then the style attribute,
//      then !important ones, over the presentation attributes);
//   2. "use" references, expanded into copies, in document order; a reference to itself or an
//      ancestor, an expansion out of proportion to the document or too deep refuses the load;
//   3. inherited values, from the root down: "display: none" and "visibility: hidden" remove
//      what they hide, "currentColor" takes the inherited "color", paint references take the
//      average colour of a gradient's stops (or their fallback, or none), and each item's
//      opacity becomes the product of its own and its ancestors' (the tree inherits opacity
//      without multiplying it).
// Every element's facts that the tree has no field for (its tag, display, visibility, colour,
// style attribute) sit in one record per element, kept in document order, so that the passes
// are loops over an array: no per-element allocation beyond the items themselves.
//
// One source file per pass: StandardReader.cpp reads the elements, StandardCascade.cpp applies
// the styles, StandardReferences.cpp expands references, StandardInheritance.cpp resolves what
// is inherited; StandardElements.cpp holds the vocabulary.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <tqXml/XmlSaxParserHandler.h>

#include "svg/model/BoundingBox.h"
#include "svg/model/ItemInterface.h"
#include "svg/model/ItemInterfacePointer.h"
#include "svg/read/detail/StandardElements.h"
#include "svg/read/detail/StandardValues.h"
#include "svg/read/detail/StyleSheet.h"

namespace tq::svg {

class Document;
class Loader;
class Node;

namespace detail {

class StandardReader {
public:
    // `maxElements`: the elements read before the document is refused; 0 for no bound.
    StandardReader(Loader& loader, std::size_t maxElements);
    ~StandardReader();

    tq::xml::StartElementResult startElement(const char* name,
                                             const std::vector<tq::xml::XmlAttribute>& attributes);
    bool endElement();
    bool characters(const char* text, int length);
    // Runs the whole-document passes and hands over the root; false after an error when the
    // document is refused.
    bool finish(ItemInterfacePointer<ItemInterface>& out);

    // A length attribute of the element being read, in user units: numbers with an absolute
    // unit, em, ex or a percentage of the viewport along the attribute's axis. Sizes and radii
    // may not be negative.
    bool parseLength(std::string_view name, std::string_view value, float& out) const;
    float lengthOr(std::string_view name, std::string_view text, float fallback);
    // The same for a length already read.
    bool toUserUnits(std::string_view name, float number, LengthUnit unit, float& out) const;
    // The standard reading of a "fill" or "stroke" value into the text the tree keeps; false
    // for a value that is no paint. `unset` is set for "inherit".
    bool parsePaint(std::string_view value, std::string& text, bool& unset);
    // A warning given once per key.
    void warnOnce(const std::string& key, const std::string& message);

private:
    using Kind = ElementKind;
    static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

    // What the tree has no field for, one per element that became an item, in document order.
    struct Record {
        ItemInterface* item = nullptr;
        std::uint32_t parent = kNone;    // the record of the enclosing item
        std::uint32_t previous = kNone;  // the item before it in the same element
        std::uint32_t end = kNone;       // one past the last record of the subtree
        std::uint32_t origin = kNone;    // the element a copy was made from; itself for originals
        std::uint32_t style = kNone;     // the style attribute, in mStyles
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
        bool firstChild = false;  // the first element in its parent
        bool attributesKnown = false;
        std::uint32_t attributes = 0;  // the first of them in mKeptAttributes
        std::uint32_t attributeCount = 0;
    };

    // An open element that was not skipped.
    struct Open {
        Kind kind;
        std::uint32_t record = kNone;
        bool viewport = false;           // pushed a viewport for the percentages of its content
        bool taken = false;              // a switch that has drawn its child
        std::uint32_t children = 0;      // elements started inside it so far
        std::uint32_t lastItem = kNone;  // the record of the last item started inside it
        std::uint32_t namespaces = 0;    // the namespace bindings before its own
    };

    // Attributes of the element being read that the tree has no field for.
    struct Scratch {
        std::string href;
        std::string_view x, y, width, height, cx, cy, rx, ry, points, viewBox, preserveAspectRatio,
            overflow, pathLength;
    };

    struct Gradient {
        std::string href;
        std::vector<Rgba> stops;
    };

    struct Use {
        std::uint32_t record;
        std::string target;
        // For a symbol: the viewport its viewBox is fitted into, 100 % of the use's viewport
        // unless given.
        float width, height;
    };
    struct Viewport {
        float width = 100.0f;
        float height = 100.0f;
    };
    struct SymbolView {
        std::optional<BoundingBox> viewBox;
        std::string preserveAspectRatio;
        bool clips = true;
    };
    // A viewport that clips what it draws, in the coordinates its item is placed in.
    struct Clip {
        std::uint32_t record;
        BoundingBox viewport;
    };

    enum class Namespace : std::uint8_t { Svg, XLink, Xml, Other };
    struct Binding {
        std::string prefix;  // empty for the default namespace
        Namespace space;
    };
    // An attribute kept for the selectors of a style sheet, in mTexts.
    struct KeptAttribute {
        std::uint32_t name, nameLength, value, valueLength;
    };

    // Reading.
    tq::xml::StartElementResult startSvgElement(
        std::string_view tag, const std::vector<tq::xml::XmlAttribute>& attributes);
    void bindNamespaces(const std::vector<tq::xml::XmlAttribute>& attributes);
    Namespace namespaceOf(std::string_view prefix) const;
    void keepAttributes(Record& record, const std::vector<tq::xml::XmlAttribute>& attributes);
    tq::xml::StartElementResult startItem(Kind kind, std::string_view name,
                                          const std::vector<tq::xml::XmlAttribute>& attributes);
    std::shared_ptr<ItemInterface> createItem(Kind kind) const;
    void readAttributes(Kind kind, ItemInterface& item, Scratch& scratch, Record& record,
                        const std::vector<tq::xml::XmlAttribute>& attributes);
    bool readOwnAttribute(Kind kind, std::string_view name, std::string_view value,
                          Scratch& scratch, Record& record);
    void applyDeclaration(Record& record, std::string_view name, std::string_view value);
    std::shared_ptr<ItemInterface> finishItem(Kind kind, std::uint32_t index,
                                              std::shared_ptr<ItemInterface> item,
                                              Scratch& scratch);
    std::optional<BoundingBox> readViewBox(std::string_view text) const;
    Viewport rootViewport(Document& document, const Scratch& s);
    Viewport nestedViewport(std::uint32_t index, ItemInterface& item, const Scratch& s,
                            const Viewport& parent);
    static bool clips(std::string_view overflow);
    void warnClipping();
    void startGradient(const std::vector<tq::xml::XmlAttribute>& attributes);
    void addStop(const std::vector<tq::xml::XmlAttribute>& attributes);
    bool conditionsHold(const std::vector<tq::xml::XmlAttribute>& attributes) const;
    void noteFeature(std::string_view attribute, std::string_view value);
    void noteUndrawn(std::string_view name, std::string_view value);
    Node* parentNode() const;
    std::uint32_t parentRecord() const;

    // The passes.
    void warnUnsupportedSelectors();
    void applyStyles();
    void selectorElements(std::vector<CssElement>& elements,
                          std::vector<CssAttribute>& attributes) const;
    bool expandUses();
    bool expandUse(const Use& use);
    bool insideDefinitions(std::uint32_t record) const;
    std::uint32_t copySubtree(std::uint32_t source, std::uint32_t parent, Node& into);
    static bool resolvesOnItem(const RenderingProperties& p);
    void resolveInherited();
    void notePathLength(std::uint32_t record, std::string_view value);
    void scaleDashesToPathLengths();
    std::string resolvePaint(const std::string& paint);
    bool gradientColour(const std::string& id, std::string& colour);
    void removeHidden();

    Loader& mLoader;
    std::size_t mMaxElements;
    std::size_t mElements = 0;
    std::vector<Record> mRecords;
    std::vector<Open> mOpen;
    std::vector<Binding> mNamespaces;  // in scope, innermost last
    bool mFirstChild = false;          // the element being read is its parent's first
    bool mKeepAttributes = false;      // the style sheet so far has attribute selectors
    std::vector<Use> mUses;
    std::vector<Gradient> mGradients;
    std::unordered_map<std::string, std::uint32_t> mIds;       // id -> record
    std::unordered_map<std::string, std::string> mFeatureIds;  // id -> what it defines
    std::unordered_map<std::string, std::size_t> mGradientIds;
    std::vector<std::shared_ptr<ItemInterface>> mDetached;  // definitions, kept for references
    std::vector<Viewport> mViewports;  // what percentages refer to, innermost last
    std::unordered_map<std::uint32_t, SymbolView> mSymbols;  // by record
    std::vector<Clip> mClips;
    std::unordered_map<std::uint32_t, std::size_t> mUseOfRecord;
    std::vector<std::uint32_t> mHidden;  // records whose items the last pass removes
    // Texts that records refer to by index: style attributes and kept attributes. It grows only
    // while elements are read, never in the passes that read it back, so a view into it stays
    // valid while declarations are applied (applying "color" adds to mColours instead).
    std::string mTexts;
    std::vector<KeptAttribute> mKeptAttributes;
    std::vector<std::string> mColours;
    std::string mSheetText;
    // The records whose element gave a pathLength, in order, with its value.
    std::vector<std::pair<std::uint32_t, float>> mPathLengths;
    StyleSheet mSheet;
    std::set<std::string> mWarned;
    std::shared_ptr<ItemInterface> mRoot;
    std::string mRootTag;  // as written
    std::size_t mOriginalRecords = 0;
};

}  // namespace detail
}  // namespace tq::svg
