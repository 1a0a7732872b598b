// How SegmenterVisitor cuts items into geometry.
#pragma once

namespace tq::svg {

struct SegmentOptions {
    // Positive: curves, arcs, circles and round joins and caps within this distance of the true
    // shape in output units (after transforms); otherwise the library's fixed counts for fills
    // (a stroke then takes min(0.1, its width / 20)).
    float tolerance = 0.0f;
    // Also build the stroke of every stroked shape as triangles (SegmentedPrimitive's
    // strokeTrianglePoints and strokeTriangleIndices); without it they stay empty.
    bool strokes = false;
};

}  // namespace tq::svg
