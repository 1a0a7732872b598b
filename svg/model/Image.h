// The "image" element.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/model/ItemInterface.h"

namespace tq::svg {

// The preserveAspectRatio keywords ("none", "xMinYMin", ...); meet/slice is not kept.
enum class AspectRatioAlign : std::uint32_t {
    None = 0,
    XMinYMin = 1,
    XMidYMin = 2,
    XMaxYMin = 3,
    XMinYMid = 4,
    XMidYMid = 5,
    XMaxYMid = 6,
    XMinYMax = 7,
    XMidYMax = 8,
    XMaxYMax = 9,
};

class TQSVG_EXPORT Image : public ItemInterface {
public:
    Image();
    Image(const Image& other) = default;
    Image(Image&& other) = default;

    bool computeEstimatedBoundingVolume(BoundingBox& box,
                                        const Wm4::Matrix3f& transform) const override;

    Wm4::Vector2f position;  // x, y
    Wm4::Vector2f size;      // width, height
    std::string href;
    std::optional<AspectRatioAlign> preserveAspectRatio;

private:
    bool beginWriteAsXmlImplPre(tq::xml::XmlSaveContext& context,
                                const SaveOptions& options) const override;
};

}  // namespace tq::svg
