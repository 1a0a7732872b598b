// The standard reader's cascade: style sheets and style attributes over the presentation
// attributes.
#include <vector>

#include "svg/model/ItemInterface.h"
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

void StandardReader::applyStyles() {
    // Whether any rule applies to every element of a row, so that an element without a class,
    // an id or a style attribute may be passed over.
    std::vector<bool> rowMatches(ElementCount());
    for (std::size_t row = 0; row < rowMatches.size(); ++row) {
        rowMatches[row] = mSheet.matchesEvery(ElementAt(static_cast<std::uint8_t>(row)).name);
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
        mSheet.match(ElementAt(record.row).name, properties.className.value_or(""),
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

}  // namespace tq::svg::detail
