// Pictures of segmented documents, drawn with cairo, for `tqsvg render`.
#pragma once

#include <string>

#include "svg/tqSvg.h"

struct RenderSettings {
    int size = 512;          // the larger side of the picture in pixels
    bool wireframe = false;  // outline every fill triangle on top
    Wm4::ColorRGBA background{0.0f, 0.0f, 0.0f, 0.0f};
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

// Fits the document's viewBox (else the content's estimated box, else 0 0 100 100) into a
// picture whose larger side is `size` pixels, keeping the aspect ratio, centred.
View FitView(const tq::svg::ItemInterface& root, int size);

// What RenderPng did.
struct RenderOutcome {
    bool written = false;            // false: `error` says why
    bool segmentationError = false;  // a shape could not be filled; the rest is drawn anyway
    std::string error;
};

// Segments `root`, draws fills, then strokes, shape by shape, and writes the picture as PNG to
// `output` ("-" for standard output).
RenderOutcome RenderPng(const tq::svg::Node& root, const RenderSettings& settings,
                        const std::string& output);
