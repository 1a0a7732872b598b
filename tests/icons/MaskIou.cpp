// mask_iou OURS.png REFERENCE.png [SIDE_BY_SIDE.png]
//
// Prints the intersection over union of the two pictures' alpha masks, each thresholded at half
// coverage, and optionally writes the two pictures side by side with their difference (red:
// covered only by ours, blue: only by the reference). Both pictures must have the same size.
// Exit code 0 with the figure, 1 on unreadable or mismatched input, 2 on wrong usage.
#include <cairo.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

cairo_surface_t* loadPng(const char* file) {
    cairo_surface_t* surface = cairo_image_surface_create_from_png(file);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        std::fprintf(stderr, "%s: not a readable PNG\n", file);
        cairo_surface_destroy(surface);
        return nullptr;
    }
    cairo_surface_flush(surface);
    return surface;
}

// Alpha of a pixel of an ARGB32 or RGB24 image surface.
bool covered(cairo_surface_t* surface, int x, int y) {
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    if (cairo_image_surface_get_format(surface) != CAIRO_FORMAT_ARGB32) {
        return true;
    }
    std::uint32_t pixel;
    std::memcpy(&pixel, data + y * stride + x * 4, 4);
    return (pixel >> 24) >= 128;
}

void writeSideBySide(const char* file, cairo_surface_t* ours, cairo_surface_t* reference) {
    const int w = cairo_image_surface_get_width(ours);
    const int h = cairo_image_surface_get_height(ours);
    cairo_surface_t* out = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 3 * w + 8, h);
    cairo_t* cr = cairo_create(out);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_set_source_surface(cr, ours, 0, 0);
    cairo_paint(cr);
    cairo_set_source_surface(cr, reference, w + 4, 0);
    cairo_paint(cr);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const bool a = covered(ours, x, y);
            const bool b = covered(reference, x, y);
            if (a == b && !a) {
                continue;
            }
            if (a && b) {
                cairo_set_source_rgb(cr, 0.8, 0.8, 0.8);
            } else if (a) {
                cairo_set_source_rgb(cr, 0.9, 0.1, 0.1);
            } else {
                cairo_set_source_rgb(cr, 0.1, 0.2, 0.9);
            }
            cairo_rectangle(cr, 2 * w + 8 + x, y, 1, 1);
            cairo_fill(cr);
        }
    }
    cairo_destroy(cr);
    cairo_surface_write_to_png(out, file);
    cairo_surface_destroy(out);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3 || argc > 4) {
        std::fprintf(stderr, "usage: mask_iou OURS.png REFERENCE.png [SIDE_BY_SIDE.png]\n");
        return 2;
    }
    cairo_surface_t* ours = loadPng(argv[1]);
    cairo_surface_t* reference = loadPng(argv[2]);
    int status = 1;
    if (ours && reference) {
        const int w = cairo_image_surface_get_width(ours);
        const int h = cairo_image_surface_get_height(ours);
        if (w != cairo_image_surface_get_width(reference) ||
            h != cairo_image_surface_get_height(reference)) {
            std::fprintf(stderr, "sizes differ\n");
        } else {
            long both = 0, either = 0;
            for (int y = 0; y < h; ++y) {
                for (int x = 0; x < w; ++x) {
                    const bool a = covered(ours, x, y);
                    const bool b = covered(reference, x, y);
                    both += a && b;
                    either += a || b;
                }
            }
            // Two empty pictures agree completely.
            std::printf("%.4f\n", either == 0 ? 1.0 : double(both) / double(either));
            if (argc == 4) {
                writeSideBySide(argv[3], ours, reference);
            }
            status = 0;
        }
    }
    if (ours) {
        cairo_surface_destroy(ours);
    }
    if (reference) {
        cairo_surface_destroy(reference);
    }
    return status;
}
