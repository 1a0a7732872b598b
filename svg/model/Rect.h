// The "rect" element. A default Rect is deliberately a unit square at the origin.
#pragma once

#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/model/ItemInterface.h"

namespace tq::svg {

class TQSVG_EXPORT Rect : public ItemInterface {
public:
    explicit Rect(const Wm4::Vector2f& position = Wm4::Vector2f::ZERO,
                  const Wm4::Vector2f& size = Wm4::Vector2f::ONE);
    Rect(const Rect& other) = default;
    Rect(Rect&& other) = default;

    bool computeEstimatedBoundingVolume(BoundingBox& box,
                                        const Wm4::Matrix3f& transform) const override;

    Wm4::Vector2f position;  // x, y
    Wm4::Vector2f size;      // width, height
    Wm4::Vector2f radius;    // rx, ry

private:
    bool beginWriteAsXmlImplPre(tq::xml::XmlSaveContext& context,
                                const SaveOptions& options) const override;
};

}  // namespace tq::svg
