#include "PngRender.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "OutputFile.h"
#include "Tool.h"

namespace {

// Cairo keeps coordinates in 24.8 fixed point: farther values would wrap around. Clamping moves
// a far vertex by less than a pixel's worth of slope inside any picture this tool makes.
constexpr double kCoordinateLimit = 4.0e6;

using SurfacePointer = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using ContextPointer = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

bool usable(const tq::svg::BoundingBox& box) {
    return box.isValid() && std::isfinite(box.getWidth()) && std::isfinite(box.getHeight()) &&
           (box.getWidth() > 0.0f || box.getHeight() > 0.0f);
}

tq::svg::BoundingBox chooseBox(const tq::svg::ItemInterface& root, bool extentsFromGeometry) {
    const auto* document = dynamic_cast<const tq::svg::Document*>(&root);
    if (document != nullptr && document->getViewbox() && usable(*document->getViewbox())) {
        return *document->getViewbox();
    }
    tq::svg::BoundingBox box;
    if (extentsFromGeometry) {
        box = GeometryExtent(root);
    } else {
        tq::svg::ComputeEstimatedBoundingBox(root, box, nullptr, nullptr);
    }
    if (usable(box)) {
        return box;
    }
    return tq::svg::BoundingBox(Wm4::Vector2f(0.0f, 0.0f), Wm4::Vector2f(100.0f, 100.0f));
}

struct Pixel {
    double x;
    double y;
};

// False for a point that has no place in the picture (NaN, infinite).
bool toPixel(const View& view, const Wm4::Vector2f& point, Pixel& pixel) {
    const double x = (double(point.X()) - view.minX) * view.scale + view.offsetX;
    const double y = (double(point.Y()) - view.minY) * view.scale + view.offsetY;
    if (!std::isfinite(x) || !std::isfinite(y)) {
        return false;
    }
    pixel.x = std::clamp(x, -kCoordinateLimit, kCoordinateLimit);
    pixel.y = std::clamp(y, -kCoordinateLimit, kCoordinateLimit);
    return true;
}

bool toPixel(const View& view, const std::vector<Wm4::Vector2f>& points, unsigned int index,
             Pixel& pixel) {
    return index < points.size() && toPixel(view, points[index], pixel);
}

void setSource(cairo_t* cr, const Wm4::ColorRGBA& colour) {
    cairo_set_source_rgba(cr, colour.R(), colour.G(), colour.B(), colour.A());
}

// Adds triangles as one path, each wound counter-clockwise on screen, so that edges shared by
// two triangles cancel out.
void addTriangles(cairo_t* cr, const View& view, const std::vector<Wm4::Vector2f>& points,
                  const std::vector<unsigned int>& indices) {
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        Pixel a, b, c;
        if (!toPixel(view, points, indices[i], a) || !toPixel(view, points, indices[i + 1], b) ||
            !toPixel(view, points, indices[i + 2], c)) {
            continue;
        }
        if ((b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x) < 0.0) {
            std::swap(b, c);
        }
        cairo_move_to(cr, a.x, a.y);
        cairo_line_to(cr, b.x, b.y);
        cairo_line_to(cr, c.x, c.y);
        cairo_close_path(cr);
    }
}

// Adds consecutive pairs of triangles as the axis-aligned rectangles they make, if every pair
// makes one (a frame, dashes along horizontal and vertical lines); false, adding nothing,
// otherwise. Cairo computes exact coverage only for paths of horizontal and vertical edges, so
// such strokes then come out as the cairo stroker draws them, to the unit of alpha, where an edge
// lies on half a pixel; the triangles' diagonals would send them through its sampling rasteriser.
bool addRectangles(cairo_t* cr, const View& view, const std::vector<Wm4::Vector2f>& points,
                   const std::vector<unsigned int>& indices) {
    if (indices.size() % 6 != 0) {
        return false;
    }
    const auto rectangle = [&](std::size_t i, double box[4]) {
        Pixel p[6];
        for (std::size_t k = 0; k < 6; ++k) {
            if (!toPixel(view, points, indices[i + k], p[k])) {
                return false;
            }
        }
        const auto [left, right] = std::minmax({p[0].x, p[1].x, p[2].x, p[3].x, p[4].x, p[5].x});
        const auto [top, bottom] = std::minmax({p[0].y, p[1].y, p[2].y, p[3].y, p[4].y, p[5].y});
        for (const Pixel& corner : p) {
            if ((corner.x != left && corner.x != right) ||
                (corner.y != top && corner.y != bottom)) {
                return false;
            }
        }
        // Two corners in common, on a diagonal: the triangles are the two halves of the box.
        Pixel common[3];
        int shared = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            if (std::count(indices.begin() + i + 3, indices.begin() + i + 6, indices[i + k]) == 1) {
                common[shared++] = p[k];
            }
        }
        if (shared != 2 || common[0].x == common[1].x || common[0].y == common[1].y) {
            return false;
        }
        // Neither half flat (two indices may name one point).
        const double area = (right - left) * (bottom - top);
        for (std::size_t k = 0; k < 6; k += 3) {
            const double twice = (p[k + 1].x - p[k].x) * (p[k + 2].y - p[k].y) -
                                 (p[k + 1].y - p[k].y) * (p[k + 2].x - p[k].x);
            if (!(std::fabs(std::fabs(twice) - area) <= 1e-9 * area)) {
                return false;
            }
        }
        box[0] = left;
        box[1] = top;
        box[2] = right - left;
        box[3] = bottom - top;
        return true;
    };
    double box[4];
    for (std::size_t i = 0; i < indices.size(); i += 6) {
        if (!rectangle(i, box)) {
            return false;
        }
    }
    for (std::size_t i = 0; i < indices.size(); i += 6) {
        rectangle(i, box);
        cairo_rectangle(cr, box[0], box[1], box[2], box[3]);
    }
    return true;
}

// All triangles of a fill or stroke are filled as one path rather than one by one: the
// rasteriser then computes each pixel's coverage once for the whole shape, so the outer edges
// stay antialiased while the edges between triangles leave no seams.
void fillTriangles(cairo_t* cr, const View& view, const std::vector<Wm4::Vector2f>& points,
                   const std::vector<unsigned int>& indices, const Wm4::ColorRGBA& colour) {
    if (indices.empty() || !(colour.A() > 0.0f)) {
        return;
    }
    cairo_new_path(cr);
    if (!addRectangles(cr, view, points, indices)) {
        addTriangles(cr, view, points, indices);
    }
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_WINDING);
    setSource(cr, colour);
    cairo_fill(cr);
}

void fillPrimitive(cairo_t* cr, const View& view, const tq::svg::SegmentedPrimitive& primitive) {
    if (primitive.properties.hasFill()) {
        fillTriangles(cr, view, primitive.trianglePoints, primitive.triangleIndices,
                      primitive.properties.parseFillColor());
    }
}

// The library's stroke triangles, over the fill.
void strokePrimitive(cairo_t* cr, const View& view, const tq::svg::SegmentedPrimitive& primitive) {
    if (primitive.properties.hasStroke()) {
        fillTriangles(cr, view, primitive.strokeTrianglePoints, primitive.strokeTriangleIndices,
                      primitive.properties.parseStrokeColor());
    }
}

// Black over light fills, white over dark ones.
Wm4::ColorRGBA contrastingColour(const Wm4::ColorRGBA& fill) {
    const float luminance = 0.2126f * fill.R() + 0.7152f * fill.G() + 0.0722f * fill.B();
    return luminance > 0.5f ? Wm4::ColorRGBA(0.0f, 0.0f, 0.0f, 0.8f)
                            : Wm4::ColorRGBA(1.0f, 1.0f, 1.0f, 0.8f);
}

void outlineTriangles(cairo_t* cr, const View& view, const std::vector<Wm4::Vector2f>& points,
                      const std::vector<unsigned int>& indices, const Wm4::ColorRGBA& under) {
    if (indices.empty()) {
        return;
    }
    cairo_new_path(cr);
    addTriangles(cr, view, points, indices);
    cairo_set_line_width(cr, 0.75);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_BEVEL);
    setSource(cr, contrastingColour(under));
    cairo_stroke(cr);
}

void drawWireframe(cairo_t* cr, const View& view, const tq::svg::SegmentedPrimitive& primitive) {
    outlineTriangles(cr, view, primitive.trianglePoints, primitive.triangleIndices,
                     primitive.properties.parseFillColor());
    outlineTriangles(cr, view, primitive.strokeTrianglePoints, primitive.strokeTriangleIndices,
                     primitive.properties.parseStrokeColor());
}

void draw(cairo_t* cr, const View& view, const tq::svg::SegmenterVisitor::PrimitiveList& shapes,
          const RenderSettings& settings) {
    if (settings.background.A() > 0.0f) {
        setSource(cr, settings.background);
        cairo_paint(cr);
    }
    for (const auto& primitive : shapes) {
        fillPrimitive(cr, view, *primitive);
        strokePrimitive(cr, view, *primitive);
    }
    if (settings.wireframe) {
        for (const auto& primitive : shapes) {
            drawWireframe(cr, view, *primitive);
        }
    }
}

cairo_status_t writeToOutput(void* output, const unsigned char* data, unsigned int length) {
    return static_cast<OutputFile*>(output)->write(reinterpret_cast<const char*>(data), length) < 0
               ? CAIRO_STATUS_WRITE_ERROR
               : CAIRO_STATUS_SUCCESS;
}

// The PNG whole or nothing; false with `error` set.
bool writePng(cairo_surface_t* surface, const std::string& target, std::string& error) {
    OutputFile output(target);
    const cairo_status_t status =
        cairo_surface_write_to_png_stream(surface, writeToOutput, &output);
    if (!output.commit()) {
        error = output.error();
        return false;
    }
    if (status != CAIRO_STATUS_SUCCESS) {
        error = std::string("could not be written: ") + cairo_status_to_string(status);
        return false;
    }
    return true;
}

}  // namespace

View FitView(const tq::svg::BoundingBox& box, int size) {
    double width = box.getWidth();
    double height = box.getHeight();
    View view;
    view.minX = box.min.X();
    view.minY = box.min.Y();
    // A box flat on one axis (a lone horizontal line) gets a square picture around it.
    if (width <= 0.0) {
        view.minX -= height / 2.0;
        width = height;
    } else if (height <= 0.0) {
        view.minY -= width / 2.0;
        height = width;
    }
    view.scale = size / std::max(width, height);
    view.width = std::clamp(static_cast<int>(std::lround(width * view.scale)), 1, size);
    view.height = std::clamp(static_cast<int>(std::lround(height * view.scale)), 1, size);
    // The content starts at the picture's top-left corner, where other renderers put it, so that
    // pictures compare pixel for pixel: rounding the size leaves under half a pixel at the right
    // or the bottom. Only content enlarged to the one-pixel minimum is centred.
    const auto lead = [](int pixels, double extent) {
        const double slack = pixels - extent;
        return slack > 0.5 ? slack / 2.0 : 0.0;
    };
    view.offsetX = lead(view.width, width * view.scale);
    view.offsetY = lead(view.height, height * view.scale);
    return view;
}

RenderOutcome RenderPng(const tq::svg::ItemInterface& root, const RenderSettings& settings,
                        const std::string& output) {
    // Curves within a fifth of a pixel: no facets to see at any size.
    constexpr double kPixelTolerance = 0.05;
    RenderOutcome outcome;
    const View view = FitView(chooseBox(root, settings.extentsFromGeometry), settings.size);
    tq::svg::SegmentOptions options;
    options.tolerance = static_cast<float>(kPixelTolerance / view.scale);
    options.strokes = true;
    tq::svg::SegmenterVisitor segmenter(root, options);
    outcome.segmentationError = segmenter.hasError();
    SurfacePointer surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, view.width, view.height),
                           &cairo_surface_destroy);
    ContextPointer cr(cairo_create(surface.get()), &cairo_destroy);
    draw(cr.get(), view, segmenter.getSegmentedPrimitives(), settings);
    const cairo_status_t status = cairo_status(cr.get());
    if (status != CAIRO_STATUS_SUCCESS) {
        outcome.error = std::string("could not be drawn: ") + cairo_status_to_string(status);
        return outcome;
    }
    cairo_surface_flush(surface.get());
    outcome.written = writePng(surface.get(), output, outcome.error);
    return outcome;
}
