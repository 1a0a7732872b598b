// Pictures of segmented documents, drawn with cairo, for `tqsvg render`.
#pragma once

#include <string>

#include "svg/tqSvg.h"

struct RenderSettings {
    int size = 512;          // the larger side of the picture in pixels
    bool wireframe = false;  // outline every fill and stroke triangle on top
    Wm4::ColorRGBA background{0.0f, 0.0f, 0.0f, 0.0f};
    // Without a viewBox: fit the extent of the segmented geometry (curves included) rather than
    // the library's estimate, which leaves cubics out.
    bool extentsFromGeometry = false;
};

// Document coordinates to pixels: x' = (x - minX) * scale + offsetX, likewise for y.
struct View {
    double minX = 0.0;
    double minY = 0.0;
    double scale = 1.0;
    double offsetX = 0.0;
    double offsetY = 0.0;
    int width = 1;
    int height = 1;
};

// Fits `box` into a picture whose larger side is `size` pixels, keeping the aspect ratio,
// centred.
View FitView(const tq::svg::BoundingBox& box, int size);

// What RenderPng did.
struct RenderOutcome {
    bool written = false;            // false: `error` says why
    bool segmentationError = false;  // a shape could not be filled; the rest is drawn anyway
    std::string error;
};

// Segments `root` (curves within a fraction of a pixel), draws each shape's fill and then its
// stroke, both from the library's triangles alone, and writes the picture as PNG to `output` ("-"
// for standard output). The picture shows the document's viewBox, else the content's extent, else
// 0 0 100 100.
RenderOutcome RenderPng(const tq::svg::ItemInterface& root, const RenderSettings& settings,
                        const std::string& output);
