// The "text" element with its UTF-8 content.
#pragma once

#include <optional>
#include <string>

#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/model/ItemInterface.h"
#include "svg/model/UnitValue.h"

namespace tq::svg {

class TQSVG_EXPORT Text : public ItemInterface {
public:
    explicit Text(const Wm4::Vector2f& position = Wm4::Vector2f::ZERO,
                  const std::string& text = "");
    Text(const Text& other) = default;
    Text(Text&& other) = default;

    bool computeEstimatedBoundingVolume(BoundingBox& box,
                                        const Wm4::Matrix3f& transform) const override;

    Wm4::Vector2f position;  // x, y
    std::string text;        // UTF-8 content, white space as read
    std::optional<std::string> fontFamily;
    std::optional<float> fontSize;
    std::optional<UnitValue> textLength;
    std::optional<bool> xmlSpacePreserve;  // true: "preserve", false: "default"
    std::optional<bool> bold;
    std::optional<bool> italic;
    std::optional<bool> underline;

private:
    bool endWriteAsXml(tq::xml::XmlSaveContext& context, const SaveOptions& options) const override;
    bool beginWriteAsXmlImplPre(tq::xml::XmlSaveContext& context,
                                const SaveOptions& options) const override;
};

}  // namespace tq::svg
