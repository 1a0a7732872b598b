#include "svg/geometry/detail/StrokeShapes.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <tqSystem/tqLog.h>

#include "svg/geometry/detail/Flattening.h"
#include "svg/model/Circle.h"
#include "svg/model/Line.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"

namespace tq::svg::detail {

namespace {

// "About a million dashes" on one path.
constexpr double kMaxDashes = double(1 << 20);
constexpr float kDefaultMiterLimit = 4.0f;

void warn(const char* text) {
    tqLog::Log(tqLogObject(tqLogType::Warning, "svg", text));
}

// The pen of a visible stroke in the centre lines' units, and the tolerance in output units.
struct Pen {
    double width = 1.0;
    double stretch = 1.0;  // the most an output length grows over a centre-line length
    bool nonScaling = false;
    float tolerance = 0.1f;
};

std::optional<Pen> penOf(const RenderingProperties& properties, const Wm4::Matrix3f& transform,
                         float tolerance) {
    if (!properties.hasStroke() || !(properties.parseStrokeColor().A() > 0.0f)) {
        return std::nullopt;
    }
    Pen pen;
    pen.width = properties.strokeWidth.value_or(1.0f);
    pen.nonScaling =
        properties.vectorEffect &&
        (*properties.vectorEffect & VectorEffect::NonScalingStroke) != VectorEffect::None;
    const double stretch = pen.nonScaling ? 1.0 : double(MaximumStretch(&transform));
    const double outputWidth = pen.width * stretch;
    if (!(pen.width > 0.0) || !(outputWidth > 0.0) || !std::isfinite(outputWidth)) {
        return std::nullopt;
    }
    pen.stretch = stretch;
    pen.tolerance =
        tolerance > 0.0f ? tolerance : static_cast<float>(std::min(0.1, outputWidth / 20.0));
    return pen;
}

void flatten(const ItemInterface& item, const Wm4::Matrix3f& transform, float distance,
             SegmentationUtils::BezierSegmentationWorkspace& curves, StrokeWorkspace& work) {
    switch (item.getType()) {
        case ItemType::Line:
            FlattenLineForStroke(static_cast<const Line&>(item), work.lines);
            break;
        case ItemType::Rect:
            FlattenRectForStroke(static_cast<const Rect&>(item), work.lines);
            break;
        case ItemType::Circle:
            FlattenCircleForStroke(static_cast<const Circle&>(item), distance, transform,
                                   work.lines);
            break;
        case ItemType::Path:
            FlattenPathForStroke(static_cast<const Path&>(item), distance, transform, curves,
                                 work.flat, work.lines);
            break;
        default:
            work.lines.clear();
            break;
    }
}

// The centre lines cut into dashes, or as they are for a solid stroke.
const StrokeSubpaths& dashed(const RenderingProperties& properties, const Pen& pen,
                             StrokeWorkspace& work) {
    if (!properties.strokeDasharray || properties.strokeDasharray->empty() ||
        !work.pattern.set(*properties.strokeDasharray,
                          properties.strokeDashoffset.value_or(0.0f))) {
        return work.lines;
    }
    if (work.pattern.period * pen.stretch < pen.tolerance) {
        warn("Dash pattern finer than the tolerance: the stroke is drawn solid");
        return work.lines;
    }
    if (work.pattern.countAlong(work.lines) > kMaxDashes) {
        warn("Dash pattern makes over a million dashes: the stroke is drawn solid");
        return work.lines;
    }
    CutIntoDashes(work.lines, work.pattern, work.dashes);
    return work.dashes;
}

StrokeStyle styleOf(const RenderingProperties& properties, const Pen& pen) {
    StrokeStyle style;
    style.halfWidth = pen.width / 2.0;
    style.tolerance = pen.tolerance / 2.0;
    // Values outside the enumerations (built in code) draw as the defaults, as they are written.
    const LineJoin join = properties.strokeLinejoin.value_or(LineJoin::Miter);
    style.join = static_cast<std::uint32_t>(join) <= static_cast<std::uint32_t>(LineJoin::Round)
                     ? join
                     : LineJoin::Miter;
    const LineCap cap = properties.strokeLinecap.value_or(LineCap::Butt);
    style.cap = static_cast<std::uint32_t>(cap) <= static_cast<std::uint32_t>(LineCap::Square)
                    ? cap
                    : LineCap::Butt;
    float limit = properties.strokeMiterlimit.value_or(kDefaultMiterLimit);
    if (!(limit >= 1.0f)) {
        warn("Miter limit below 1 ignored: the default 4 is used");
        limit = kDefaultMiterLimit;
    }
    style.miterLimit = limit;
    return style;
}

}  // namespace

void StrokeShape(const ItemInterface& item, const Wm4::Matrix3f& transform,
                 const RenderingProperties& properties, float tolerance,
                 SegmentationUtils::BezierSegmentationWorkspace& curves, StrokeWorkspace& workspace,
                 SegmentedPrimitive& primitive) {
    primitive.strokeTrianglePoints.clear();
    primitive.strokeTriangleIndices.clear();
    const std::optional<Pen> pen = penOf(properties, transform, tolerance);
    if (!pen) {
        return;
    }
    flatten(item, transform, pen->tolerance / 2.0f, curves, workspace);
    if (workspace.lines.subpaths.empty()) {
        return;
    }
    if (pen->nonScaling) {
        workspace.lines.transform(transform);
    }
    if (!workspace.lines.allFinite() ||
        !workspace.stroker.stroke(dashed(properties, *pen, workspace), styleOf(properties, *pen),
                                  pen->nonScaling ? nullptr : &transform,
                                  primitive.strokeTrianglePoints,
                                  primitive.strokeTriangleIndices)) {
        tqLog::Log(tqLogObject(tqLogType::Error, "svg", "Stroke cannot be rendered."));
    }
}

}  // namespace tq::svg::detail
