// The standard reader's cascade: style sheets and style attributes over the presentation
// attributes.
#include <vector>

#include "svg/model/ItemInterface.h"
#include "svg/read/detail/Loader.h"
#include "svg/read/detail/StandardReader.h"

namespace tq::svg::detail {

// Whether the inherited pass has work on the item itself, whatever its ancestors: a paint naming
// the current colour or a gradient, or an opacity to multiply.
bool StandardReader::resolvesOnItem(const RenderingProperties& p) {
    const auto special = [](const std::optional<std::string>& paint) {
        return paint && (*paint == "currentColor" || paint->compare(0, 4, "url(") == 0);
    };
    return special(p.fill) || special(p.stroke) || p.opacity.has_value();
}

// The elements as the sheet's selectors see them; views into the items' ids and classes, which
// declarations never change, and into mTexts, which the cascade does not grow.
void StandardReader::selectorElements(std::vector<CssElement>& elements,
                                      std::vector<CssAttribute>& attributes) const {
    elements.resize(mOriginalRecords);
    for (std::uint32_t i = 0; i < mOriginalRecords; ++i) {
        const Record& record = mRecords[i];
        CssElement& element = elements[i];
        element.tag = ElementAt(record.row).name;
        // getId() answers a copy; the view must be of the item's own text.
        const std::optional<std::string>& id = record.item->editId();
        const auto& classes = record.item->getProperties().className;
        element.id = id ? std::string_view(*id) : std::string_view();
        element.classes = classes ? std::string_view(*classes) : std::string_view();
        element.parent = record.parent;
        element.previous = record.previous;
        element.firstChild = record.firstChild;
        element.attributesKnown = record.attributesKnown;
        element.attributes = record.attributes;
        element.attributeCount = record.attributeCount;
    }
    const std::string_view texts(mTexts);
    attributes.reserve(mKeptAttributes.size());
    for (const KeptAttribute& kept : mKeptAttributes) {
        attributes.push_back(
            {texts.substr(kept.name, kept.nameLength), texts.substr(kept.value, kept.valueLength)});
    }
}

void StandardReader::applyStyles() {
    // Whether some rule may apply to an element of a row without a class or an id, so that an
    // element without a class, an id or a style attribute may be passed over.
    std::vector<bool> rowMatches(ElementCount());
    for (std::size_t row = 0; row < rowMatches.size(); ++row) {
        rowMatches[row] =
            mSheet.mayMatchWithoutClassOrId(ElementAt(static_cast<std::uint8_t>(row)).name);
    }
    std::vector<CssElement> elements;
    std::vector<CssAttribute> attributes;
    if (!mSheet.empty()) {
        selectorElements(elements, attributes);
    }
    std::vector<const CssDeclaration*> matched;
    for (std::uint32_t i = 0; i < mOriginalRecords; ++i) {
        Record& record = mRecords[i];
        if (record.style == kNone &&
            (mSheet.empty() || (!record.selectable && !rowMatches[record.row]))) {
            continue;
        }
        matched.clear();
        if (!mSheet.empty()) {
            mSheet.match(elements, attributes, i, matched);
        }
        const std::string_view style =
            record.style == kNone
                ? std::string_view()
                : std::string_view(mTexts).substr(record.style, record.styleLength);
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
                        applyDeclaration(record, name, value);
                    }
                });
        }
        record.resolves = resolvesOnItem(record.item->getProperties());
    }
    if (mSheet.exhausted()) {
        mLoader.reportWarning(
            "Ignore the style sheet past some elements: matching its selectors against this "
            "document takes too long");
    }
}

}  // namespace tq::svg::detail
