#include "svg/geometry/VisitorBase.h"

#include "svg/model/Node.h"

namespace tq::svg {

template <class Item>
VisitorBase<Item>::VisitorBase(const Callback& callback, const Wm4::Matrix3f* initialTransform)
    : mCallback(callback) {
    mTransforms.push_back(initialTransform ? *initialTransform : Wm4::Matrix3f::IDENTITY);
    mProperties.emplace_back();
}

template <class Item>
VisitorBase<Item>::~VisitorBase() = default;

template <class Item>
void VisitorBase<Item>::visitItemTree(Item& root) {
    // One frame per entered node whose children are being visited.
    struct Frame {
        Item* node;
        Node::ChildList::const_iterator next;
        Node::ChildList::const_iterator end;
    };
    const auto enter = [this](Item& item, std::vector<Frame>& frames) {
        const bool descend = onEnterSvgItem(item);
        const auto* node = descend ? dynamic_cast<const Node*>(&item) : nullptr;
        if (node != nullptr) {
            frames.push_back({&item, node->getChildren().begin(), node->getChildren().end()});
        } else {
            onLeaveSvgItem(item);
        }
    };
    std::vector<Frame> frames;
    enter(root, frames);
    while (!frames.empty()) {
        Frame& top = frames.back();
        if (top.next == top.end) {
            Item& node = *top.node;
            frames.pop_back();
            onLeaveSvgItem(node);
            continue;
        }
        const auto& child = *top.next++;
        if (child) {
            enter(*child, frames);
        }
    }
}

template <class Item>
bool VisitorBase<Item>::onEnterSvgItem(Item& item) {
    pushItemContext(item, PropertyMergeMode::Merge, PropertyMergeMode::Merge);
    return mCallback(item, mTransforms.back(), mProperties.back());
}

template <class Item>
void VisitorBase<Item>::onLeaveSvgItem(Item& item) {
    popItemContext(item, PropertyMergeMode::Merge, PropertyMergeMode::Merge);
}

// Parent on the left: the child's own transform acts first on its coordinates.
template <class Item>
void VisitorBase<Item>::pushTransform(const Wm4::Matrix3f& transform, bool compose) {
    if (compose && !mTransforms.empty()) {
        mTransforms.push_back(mTransforms.back() * transform);
    } else {
        mTransforms.push_back(transform);
    }
}

template <class Item>
void VisitorBase<Item>::popTransform() {
    if (mTransforms.size() >= 2) {
        mTransforms.pop_back();
    }
}

template <class Item>
void VisitorBase<Item>::pushProperties(const RenderingProperties& properties, bool cascade) {
    mProperties.push_back(properties);
    if (cascade && mProperties.size() >= 2) {
        mProperties.back().cascadeParent(mProperties[mProperties.size() - 2]);
    }
}

template <class Item>
void VisitorBase<Item>::popProperties() {
    if (mProperties.size() >= 2) {
        mProperties.pop_back();
    }
}

template <class Item>
void VisitorBase<Item>::pushItemContext(Item& item, PropertyMergeMode transformMode,
                                        PropertyMergeMode propertiesMode) {
    if (transformMode != PropertyMergeMode::Ignore && item.getTransform()) {
        pushTransform(*item.getTransform(), transformMode == PropertyMergeMode::Merge);
    }
    if (propertiesMode != PropertyMergeMode::Ignore) {
        pushProperties(item.getProperties(), propertiesMode == PropertyMergeMode::Merge);
    }
}

template <class Item>
void VisitorBase<Item>::popItemContext(Item& item, PropertyMergeMode transformMode,
                                       PropertyMergeMode propertiesMode) {
    if (transformMode != PropertyMergeMode::Ignore && item.getTransform()) {
        popTransform();
    }
    if (propertiesMode != PropertyMergeMode::Ignore) {
        popProperties();
    }
}

template class VisitorBase<const ItemInterface>;

}  // namespace tq::svg
