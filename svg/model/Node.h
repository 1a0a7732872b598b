// A group of items: the "g" element, and the base of Document.
#pragma once

#include <list>
#include <memory>

#include "svg/model/ItemInterface.h"

namespace tq::svg {

class TQSVG_EXPORT Node : public ItemInterface {
public:
    using ChildList = std::list<std::shared_ptr<ItemInterface>>;

    Node();
    // Deep copy: every child is copied into a fresh pointer of its own, in order. Null children
    // are dropped, and so, deliberately, is a Document nested as a child.
    Node(const Node& other);
    // Tears deep trees down without recursion.
    ~Node() override;

    // Children in document order; a pointer in the list may be null.
    const ChildList& getChildren() const { return mChildren; }
    ChildList& editChildren() { return mChildren; }

protected:
    explicit Node(ItemType type);
    // Starts an element named `name`; on failure sets error code 4 and logs.
    bool beginWriteAsXmlNodeWithName(tq::xml::XmlSaveContext& context, const char* name) const;

private:
    struct ShallowCopy {};
    Node(const Node& other, ShallowCopy);
    void copyChildrenFrom(const Node& source);

    bool computeEstimatedBoundingVolume(BoundingBox& box,
                                        const Wm4::Matrix3f& transform) const override;
    bool beginWriteAsXmlImplPre(tq::xml::XmlSaveContext& context,
                                const SaveOptions& options) const override;

    ChildList mChildren;
};

}  // namespace tq::svg
