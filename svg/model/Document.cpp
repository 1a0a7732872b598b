#include "svg/model/Document.h"

#include "svg/geometry/ComputeEstimatedBoundingBox.h"

namespace tq::svg {

Document::Document() : Node(ItemType::Document) {}

Document::Document(const Document& other)
    : Node(other), mViewBox(other.mViewBox), mStyle(other.mStyle) {}

void Document::computeEstimatedViewboxFromContent() {
    BoundingBox box;
    ComputeEstimatedBoundingBox(*this, box, nullptr, nullptr);
    mViewBox = box;
}

}  // namespace tq::svg
