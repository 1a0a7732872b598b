// The "circle" element.
#pragma once

#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/model/ItemInterface.h"

namespace tq::svg {

class TQSVG_EXPORT Circle : public ItemInterface {
public:
    explicit Circle(const Wm4::Vector2f& center = Wm4::Vector2f::ZERO, float radius = 0.0f);
    Circle(const Circle& other) = default;
    Circle(Circle&& other) = default;

    bool computeEstimatedBoundingVolume(BoundingBox& box,
                                        const Wm4::Matrix3f& transform) const override;

    Wm4::Vector2f center;  // cx, cy
    float radius;          // r

private:
    bool beginWriteAsXmlImplPre(tq::xml::XmlSaveContext& context,
                                const SaveOptions& options) const override;
};

}  // namespace tq::svg
