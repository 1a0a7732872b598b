// The standard reader's references: each "use" expanded into a copy of what it references.
#include <algorithm>

#include "svg/geometry/ComputeEstimatedBoundingBox.h"
#include "svg/model/Circle.h"
#include "svg/model/Document.h"
#include "svg/model/Image.h"
#include "svg/model/Line.h"
#include "svg/model/Node.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/model/Text.h"
#include "svg/read/detail/Loader.h"
#include "svg/read/detail/ParserMessages.h"
#include "svg/read/detail/StandardReader.h"
#include "svg/read/detail/StandardShapes.h"

namespace tq::svg::detail {

namespace {

constexpr int kMaxDepth = 256;
// References may expand the document within a fixed allowance, beyond it only to ten times its
// own size, as entities may; sizes are the memory the items take, roughly.
constexpr std::uint64_t kMaxAmplification = 10;
constexpr std::uint64_t kExpansionAllowance = 16u << 20;

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

}  // namespace

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

// Clipping to a viewport is not drawn; said once, and only when some drawn content reaches
// past its viewport.
void StandardReader::warnClipping() {
    for (const Clip& clip : mClips) {
        if (insideDefinitions(clip.record)) {
            continue;
        }
        BoundingBox box;
        ComputeEstimatedBoundingBox(*mRecords[clip.record].item, box, nullptr, nullptr);
        const Wm4::Vector2f slack = (clip.viewport.max - clip.viewport.min) * 1e-4f;
        if (box.isValid() && (box.min.X() < clip.viewport.min.X() - slack.X() ||
                              box.min.Y() < clip.viewport.min.Y() - slack.Y() ||
                              box.max.X() > clip.viewport.max.X() + slack.X() ||
                              box.max.Y() > clip.viewport.max.Y() + slack.Y())) {
            mLoader.reportWarning(
                "Ignore clipping: content reaching past a nested viewport is drawn unclipped");
            return;
        }
    }
}

bool StandardReader::insideDefinitions(std::uint32_t record) const {
    if (record >= mOriginalRecords) {
        return false;
    }
    for (std::uint32_t a = mRecords[record].parent; a != kNone; a = mRecords[a].parent) {
        const Kind kind = ElementAt(mRecords[a].row).kind;
        if (kind == Kind::Definitions || kind == Kind::Symbol) {
            return true;
        }
    }
    return false;
}

bool StandardReader::expandUse(const Use& use) {
    std::string id;
    if (!LocalReference(use.target, id)) {
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
    const Kind kind = ElementAt(mRecords[target].row).kind;
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
    if (symbol != mSymbols.end()) {
        const SymbolView& view = symbol->second;
        if (view.viewBox) {
            AppendTransform(*mRecords[copy].item,
                            ViewBoxTransform(*view.viewBox, 0.0f, 0.0f, use.width, use.height,
                                             view.preserveAspectRatio));
        }
        if (view.clips) {
            mClips.push_back(
                {copy, BoundingBox(Wm4::Vector2f::ZERO, Wm4::Vector2f(use.width, use.height))});
        }
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
        const Kind kind = ElementAt(original.row).kind;
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
            copy.row = RowOf(FindElement("g"));
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

}  // namespace tq::svg::detail
