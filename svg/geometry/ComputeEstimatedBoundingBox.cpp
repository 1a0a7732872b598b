#include "svg/geometry/ComputeEstimatedBoundingBox.h"

#include "svg/geometry/VisitorBase.h"

namespace tq::svg {

void ComputeEstimatedBoundingBox(const ItemInterface& item, BoundingBox& box,
                                 bool (*exclude)(const ItemInterface&),
                                 const Wm4::Matrix3f* initialTransform) {
    box = BoundingBox();
    const auto measure = [&box, exclude](const ItemInterface& it, const Wm4::Matrix3f& transform,
                                         const RenderingProperties&) {
        if (exclude != nullptr && exclude(it)) {
            return false;
        }
        BoundingBox local;
        if (it.computeEstimatedBoundingVolume(local, transform)) {
            if (box.isValid()) {
                box.expandToContain(local);
            } else {
                box = local;
            }
        }
        return true;
    };
    VisitorBase<const ItemInterface> visitor(measure, initialTransform);
    visitor.visitItemTree(item);
}

}  // namespace tq::svg
