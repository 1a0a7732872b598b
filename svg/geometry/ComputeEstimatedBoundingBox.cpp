#include "svg/geometry/ComputeEstimatedBoundingBox.h"

#include <vector>

#include "svg/model/Node.h"

namespace tq::svg {

void ComputeEstimatedBoundingBox(const ItemInterface& item, BoundingBox& box,
                                 bool (*exclude)(const ItemInterface&),
                                 const Wm4::Matrix3f* initialTransform) {
    box = BoundingBox();
    // An explicit stack: trees built by hosts may be deeper than the call stack allows.
    struct Pending {
        const ItemInterface* item;
        Wm4::Matrix3f parentTransform;
    };
    std::vector<Pending> pending;
    pending.push_back({&item, initialTransform ? *initialTransform : Wm4::Matrix3f::IDENTITY});
    while (!pending.empty()) {
        const Pending current = pending.back();
        pending.pop_back();
        const ItemInterface& it = *current.item;
        if (exclude != nullptr && exclude(it)) {
            continue;
        }
        const Wm4::Matrix3f transform = it.getTransform()
                                            ? current.parentTransform * *it.getTransform()
                                            : current.parentTransform;
        BoundingBox local;
        if (it.computeEstimatedBoundingVolume(local, transform)) {
            if (box.isValid()) {
                box.expandToContain(local);
            } else {
                box = local;
            }
        }
        if (const auto* node = dynamic_cast<const Node*>(&it)) {
            // Pushed in reverse so that children are visited in document order.
            const auto& children = node->getChildren();
            for (auto child = children.rbegin(); child != children.rend(); ++child) {
                if (*child) {
                    pending.push_back({child->get(), transform});
                }
            }
        }
    }
}

}  // namespace tq::svg
