#include "svg/model/Node.h"

#include <utility>
#include <vector>

#include "svg/model/Circle.h"
#include "svg/model/Image.h"
#include "svg/model/Line.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/model/Text.h"

namespace tq::svg {

namespace {

bool isGroup(const ItemInterface& item) {
    return item.getType() == ItemType::Node || item.getType() == ItemType::Document;
}

}  // namespace

Node::Node() : ItemInterface(ItemType::Node) {}

Node::Node(ItemType type) : ItemInterface(type) {}

Node::Node(const Node& other, ShallowCopy) : ItemInterface(other) {}

Node::Node(const Node& other) : ItemInterface(other) {
    copyChildrenFrom(other);
}

// Level by level with an explicit work list, so that the depth of the tree never reaches the
// call stack. Each source node's children are appended in one go, which keeps their order.
void Node::copyChildrenFrom(const Node& source) {
    std::vector<std::pair<const Node*, Node*>> work{{&source, this}};
    while (!work.empty()) {
        const auto [from, to] = work.back();
        work.pop_back();
        for (const auto& child : from->mChildren) {
            if (!child) {
                continue;
            }
            std::shared_ptr<ItemInterface> copy;
            switch (child->getType()) {
                case ItemType::Node: {
                    const auto& group = static_cast<const Node&>(*child);
                    auto groupCopy = std::shared_ptr<Node>(new Node(group, ShallowCopy{}));
                    work.emplace_back(&group, groupCopy.get());
                    copy = std::move(groupCopy);
                    break;
                }
                case ItemType::Line:
                    copy = std::make_shared<Line>(static_cast<const Line&>(*child));
                    break;
                case ItemType::Rect:
                    copy = std::make_shared<Rect>(static_cast<const Rect&>(*child));
                    break;
                case ItemType::Circle:
                    copy = std::make_shared<Circle>(static_cast<const Circle&>(*child));
                    break;
                case ItemType::Path:
                    copy = std::make_shared<Path>(static_cast<const Path&>(*child));
                    break;
                case ItemType::Text:
                    copy = std::make_shared<Text>(static_cast<const Text&>(*child));
                    break;
                case ItemType::Image:
                    copy = std::make_shared<Image>(static_cast<const Image&>(*child));
                    break;
                case ItemType::Document:
                default:
                    // A nested document does not survive a copy: deliberate.
                    break;
            }
            if (copy) {
                to->mChildren.push_back(std::move(copy));
            }
        }
    }
}

// Children that only this node holds are unhooked before they die, so destroying a deep tree
// takes a loop instead of one stack frame per level.
Node::~Node() {
    if (mChildren.empty()) {
        return;
    }
    std::vector<std::shared_ptr<ItemInterface>> doomed;
    for (auto& child : mChildren) {
        doomed.push_back(std::move(child));
    }
    mChildren.clear();
    while (!doomed.empty()) {
        std::shared_ptr<ItemInterface> item = std::move(doomed.back());
        doomed.pop_back();
        if (item && item.use_count() == 1 && isGroup(*item)) {
            auto& children = static_cast<Node&>(*item).mChildren;
            for (auto& child : children) {
                doomed.push_back(std::move(child));
            }
            children.clear();
        }
    }
}

}  // namespace tq::svg
