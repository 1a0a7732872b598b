// A whole item tree into outlines and fill triangles.
#pragma once

#include <list>
#include <memory>

#include "svg/geometry/SegmentOptions.h"
#include "svg/geometry/SegmentationUtils.h"
#include "svg/geometry/SegmentedPrimitive.h"
#include "svg/geometry/VisitorBase.h"
#include "svg/model/Node.h"

namespace tq::svg {

namespace detail {
struct StrokeWorkspace;
}

// Segments every line, rectangle, circle and path under `root` (root included) at construction,
// in traversal order, with the composed transforms and cascaded properties: circles with 32
// sides, path curves with at most 32 points each (cubics refined until the chord reaches 99.9 %
// of the control polygon), arcs in 32 steps.
//
// With SegmentOptions::strokes, every primitive of a stroked shape also carries its stroke as
// triangles, as browsers draw it: width, joins, caps, miter limit, dashes and non-scaling
// strokes, following the item's own commands (a spike that the fill's clean-up drops is still
// stroked). The triangles of one stroke never overlap, so a translucent stroke blends evenly.
//
// A filled shape that cannot be triangulated keeps its outline, gets a stroke in its fill paint
// (non-scaling) when it had none, and sets the error flag; the items after it are deliberately
// not segmented, so a host sees at once where the trouble begins. Several visitors may segment
// one tree at once, each with its own workspace.
class TQSVG_EXPORT SegmenterVisitor : public VisitorBase<const ItemInterface> {
public:
    using PrimitiveList = std::list<std::shared_ptr<SegmentedPrimitive>>;

    explicit SegmenterVisitor(const Node& root);
    // The same for any item (a document whose root is a single shape, for one), with a
    // flattening tolerance: when `tolerance` is positive, curves, arcs and circles take as many
    // points as keep them within `tolerance` of the true shape, in output units (after
    // transforms), instead of the fixed counts.
    explicit SegmenterVisitor(const ItemInterface& root, float tolerance = 0.0f);
    // The same with options: a tolerance as above, and strokes as triangles.
    SegmenterVisitor(const ItemInterface& root, const SegmentOptions& options);
    ~SegmenterVisitor() override;

    // Segments one item and appends its primitive; false when it could not be filled.
    bool segmentObject(const ItemInterface& item, const Wm4::Matrix3f& transform,
                       const RenderingProperties& properties);

    // The primitives in traversal order; the caller may take them.
    PrimitiveList& getSegmentedPrimitives() { return mPrimitives; }
    bool hasError() const { return mError; }

private:
    SegmentationUtils::BezierSegmentationWorkspace mWorkspace;
    std::unique_ptr<detail::StrokeWorkspace> mStrokes;  // with the strokes option only
    PrimitiveList mPrimitives;
    float mTolerance = 0.0f;
    bool mError = false;
};

}  // namespace tq::svg
