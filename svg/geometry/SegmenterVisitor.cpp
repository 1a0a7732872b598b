#include "svg/geometry/SegmenterVisitor.h"

#include "svg/geometry/SegmentShapes.h"
#include "svg/geometry/detail/Flattening.h"
#include "svg/geometry/detail/StrokeShapes.h"

namespace tq::svg {

namespace {

constexpr unsigned int kCircleSides = 32;
constexpr float kCircleTolerance = 0.1f;
constexpr unsigned int kCurvePoints = 32;
constexpr float kCurveTolerance = -0.999f;

// An outline that could not be filled is drawn instead, in the fill's paint.
void strokeInsteadOfFill(RenderingProperties& properties) {
    if (properties.hasStroke()) {
        return;
    }
    properties.stroke = properties.fill;
    properties.strokeOpacity = properties.fillOpacity;
    properties.vectorEffect = VectorEffect::NonScalingStroke;
}

}  // namespace

SegmenterVisitor::SegmenterVisitor(const Node& root)
    : SegmenterVisitor(static_cast<const ItemInterface&>(root)) {}

SegmenterVisitor::SegmenterVisitor(const ItemInterface& root, float tolerance)
    : SegmenterVisitor(root, SegmentOptions{tolerance, false}) {}

SegmenterVisitor::SegmenterVisitor(const ItemInterface& root, const SegmentOptions& options)
    : VisitorBase<const ItemInterface>(
          [this](const ItemInterface& item, const Wm4::Matrix3f& transform,
                 const RenderingProperties& properties) {
              // After the first failure the rest of the tree is deliberately left alone.
              mError = mError || !segmentObject(item, transform, properties);
              return true;
          },
          nullptr),
      mStrokes(options.strokes ? std::make_unique<detail::StrokeWorkspace>() : nullptr),
      mTolerance(options.tolerance > 0.0f ? options.tolerance : 0.0f) {
    visitItemTree(root);
}

SegmenterVisitor::~SegmenterVisitor() = default;

bool SegmenterVisitor::segmentObject(const ItemInterface& item, const Wm4::Matrix3f& transform,
                                     const RenderingProperties& properties) {
    bool failed = false;
    std::shared_ptr<SegmentedPrimitive> primitive;
    switch (item.getType()) {
        case ItemType::Line:
            primitive = SegmentLine(static_cast<const Line&>(item), &transform, &properties);
            break;
        case ItemType::Rect:
            primitive =
                SegmentRect(static_cast<const Rect&>(item), &transform, &properties, &failed);
            break;
        case ItemType::Circle:
            primitive =
                mTolerance > 0.0f
                    ? detail::SegmentCircleWithin(static_cast<const Circle&>(item), mTolerance,
                                                  &transform, &properties, &failed)
                    : SegmentCircle(static_cast<const Circle&>(item), kCircleSides,
                                    kCircleTolerance, &transform, &properties, &failed);
            break;
        case ItemType::Path:
            primitive =
                mTolerance > 0.0f
                    ? detail::SegmentPathWithin(static_cast<const Path&>(item), mTolerance,
                                                &transform, &properties, &mWorkspace, &failed)
                    : SegmentPath(static_cast<const Path&>(item), kCurvePoints, kCurveTolerance,
                                  &transform, &properties, &mWorkspace, &failed);
            break;
        default:
            return true;
    }
    primitive->properties = properties;
    primitive->transform = transform;
    if (failed) {
        strokeInsteadOfFill(primitive->properties);
    }
    if (mStrokes) {
        detail::StrokeShape(item, transform, primitive->properties, mTolerance, mWorkspace,
                            *mStrokes, *primitive);
    }
    mPrimitives.push_back(std::move(primitive));
    return !failed;
}

}  // namespace tq::svg
