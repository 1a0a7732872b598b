// The abstract base of every item of the tree.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <Wm4Foundation/Wm4Matrix3.h>

#include "svg/model/BoundingBox.h"
#include "svg/model/RenderingProperties.h"
#include "svg/tqSvgExport.h"

namespace tq::svg {

struct SaveOptions;

// Fixed values: copying a node dispatches on them.
enum class ItemType : std::uint8_t {
    Document = 0,
    Node = 1,
    Line = 2,
    Rect = 3,
    Circle = 4,
    Path = 5,
    Text = 6,
    Image = 7,
};

class TQSVG_EXPORT ItemInterface {
public:
    virtual ~ItemInterface();

    ItemType getType() const { return mType; }

    const std::optional<Wm4::Matrix3f>& getTransform() const { return mTransform; }
    std::optional<Wm4::Matrix3f>& editTransform() { return mTransform; }

    std::optional<std::string> getId() const { return mId; }
    std::optional<std::string>& editId() { return mId; }

    const RenderingProperties& getProperties() const { return mProperties; }
    RenderingProperties& editProperties() { return mProperties; }

    // Opens the element and writes all its attributes: the item's own, then "id", the
    // presentation attributes, "transform", then what the item adds last. False on failure.
    bool beginWriteAsXml(tq::xml::XmlSaveContext& context, const SaveOptions& options) const;
    // Writes any content and closes the element.
    virtual bool endWriteAsXml(tq::xml::XmlSaveContext& context, const SaveOptions& options) const;

    // Sets `box` to the extent of the item's own geometry under `transform`; false when the
    // item has none of its own (groups, texts).
    virtual bool computeEstimatedBoundingVolume(BoundingBox& box,
                                                const Wm4::Matrix3f& transform) const = 0;

protected:
    explicit ItemInterface(ItemType type) : mType(type) {}
    ItemInterface(const ItemInterface&) = default;
    ItemInterface& operator=(const ItemInterface&) = default;

private:
    // Starts the element and writes the item's own geometric attributes.
    virtual bool beginWriteAsXmlImplPre(tq::xml::XmlSaveContext& context,
                                        const SaveOptions& options) const = 0;
    // Runs after the common attributes; writes nothing by default.
    virtual bool beginWriteAsXmlImplPost(tq::xml::XmlSaveContext& context,
                                         const SaveOptions& options) const;

    std::optional<Wm4::Matrix3f> mTransform;
    std::optional<std::string> mId;
    RenderingProperties mProperties;
    ItemType mType;
};

}  // namespace tq::svg
