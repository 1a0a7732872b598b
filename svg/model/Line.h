// The "line" element.
#pragma once

#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/model/ItemInterface.h"

namespace tq::svg {

class TQSVG_EXPORT Line : public ItemInterface {
public:
    explicit Line(const Wm4::Vector2f& start = Wm4::Vector2f::ZERO,
                  const Wm4::Vector2f& end = Wm4::Vector2f::ZERO);
    Line(const Line& other) = default;
    Line(Line&& other) = default;

    bool computeEstimatedBoundingVolume(BoundingBox& box,
                                        const Wm4::Matrix3f& transform) const override;

    Wm4::Vector2f start;  // x1, y1
    Wm4::Vector2f end;    // x2, y2

private:
    bool beginWriteAsXmlImplPre(tq::xml::XmlSaveContext& context,
                                const SaveOptions& options) const override;
};

}  // namespace tq::svg
