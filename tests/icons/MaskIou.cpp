// mask_iou [--mask MASK.png] OURS.png REFERENCE.png [SIDE_BY_SIDE.png]
// mask_iou --list          pairs "OURS REFERENCE [MASK]" on standard input, one a line
// mask_iou --differ A.png B.png MASK.png
//
// Prints, per pair, the intersection over union of the two pictures' alpha masks (each
// thresholded at half coverage) and the share of the pixels both cover whose colours agree
// within 26 of 255 in every channel (unpremultiplied), or "na" for a pair that cannot be
// compared (unreadable, sizes differ). Pixels that a mask covers are left out of both measures.
// The side-by-side picture shows ours, the reference and their difference: red covered only by
// ours, blue only by the reference, amber covered by both in colours that differ, light grey
// masked. --differ writes the mask of the pixels where A and B differ in coverage or colour,
// grown by one pixel, and prints their count. Exit code 0, or 1 on unreadable or mismatched
// pictures outside --list, 2 on wrong usage.
#include <cairo.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

namespace {

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

Surface loadPng(const std::string& file) {
    Surface surface(cairo_image_surface_create_from_png(file.c_str()), &cairo_surface_destroy);
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        return Surface(nullptr, &cairo_surface_destroy);
    }
    cairo_surface_flush(surface.get());
    return surface;
}

std::uint32_t pixel(cairo_surface_t* surface, int x, int y) {
    std::uint32_t value;
    std::memcpy(
        &value,
        cairo_image_surface_get_data(surface) + y * cairo_image_surface_get_stride(surface) + x * 4,
        4);
    return cairo_image_surface_get_format(surface) == CAIRO_FORMAT_ARGB32 ? value
                                                                          : value | 0xff000000u;
}

bool covered(std::uint32_t p) {
    return (p >> 24) >= 128;
}

// The largest channel difference of two covered pixels, unpremultiplied.
int colourDistance(std::uint32_t p, std::uint32_t q) {
    int distance = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const int a = int((p >> shift) & 255u) * 255 / int(p >> 24);
        const int b = int((q >> shift) & 255u) * 255 / int(q >> 24);
        distance = std::max(distance, std::abs(a - b));
    }
    return distance;
}

constexpr int kColourTolerance = 26;

bool sameSize(cairo_surface_t* a, cairo_surface_t* b) {
    return a != nullptr && b != nullptr &&
           cairo_image_surface_get_width(a) == cairo_image_surface_get_width(b) &&
           cairo_image_surface_get_height(a) == cairo_image_surface_get_height(b);
}

bool differ(std::uint32_t p, std::uint32_t q) {
    return covered(p) != covered(q) ||
           (covered(p) && covered(q) && colourDistance(p, q) > kColourTolerance);
}

bool masked(cairo_surface_t* mask, int x, int y) {
    return mask != nullptr && covered(pixel(mask, x, y));
}

// The mask of the pixels where two pictures differ, grown by one pixel; false when they cannot
// be compared.
bool writeDifference(const char* aFile, const char* bFile, const char* maskFile) {
    const Surface a = loadPng(aFile);
    const Surface b = loadPng(bFile);
    if (!sameSize(a.get(), b.get())) {
        return false;
    }
    const int w = cairo_image_surface_get_width(a.get());
    const int h = cairo_image_surface_get_height(a.get());
    Surface out(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h), &cairo_surface_destroy);
    cairo_t* cr = cairo_create(out.get());
    long count = 0;
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            if (differ(pixel(a.get(), x, y), pixel(b.get(), x, y))) {
                cairo_rectangle(cr, x - 1, y - 1, 3, 3);
                ++count;
            }
        }
    }
    cairo_fill(cr);
    cairo_destroy(cr);
    std::printf("%ld\n", count);
    return cairo_surface_write_to_png(out.get(), maskFile) == CAIRO_STATUS_SUCCESS;
}

void writeSideBySide(const char* file, cairo_surface_t* ours, cairo_surface_t* reference,
                     cairo_surface_t* mask) {
    const int w = cairo_image_surface_get_width(ours);
    const int h = cairo_image_surface_get_height(ours);
    Surface out(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 3 * w + 8, h),
                &cairo_surface_destroy);
    cairo_t* cr = cairo_create(out.get());
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_set_source_surface(cr, ours, 0, 0);
    cairo_paint(cr);
    cairo_set_source_surface(cr, reference, w + 4, 0);
    cairo_paint(cr);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const std::uint32_t a = pixel(ours, x, y);
            const std::uint32_t b = pixel(reference, x, y);
            if (!covered(a) && !covered(b)) {
                continue;
            }
            if (masked(mask, x, y)) {
                cairo_set_source_rgb(cr, 0.93, 0.93, 0.93);
            } else if (covered(a) && covered(b)) {
                const bool agree = colourDistance(a, b) <= kColourTolerance;
                cairo_set_source_rgb(cr, agree ? 0.8 : 0.9, agree ? 0.8 : 0.7, agree ? 0.8 : 0.0);
            } else if (covered(a)) {
                cairo_set_source_rgb(cr, 0.9, 0.1, 0.1);
            } else {
                cairo_set_source_rgb(cr, 0.1, 0.2, 0.9);
            }
            cairo_rectangle(cr, 2 * w + 8 + x, y, 1, 1);
            cairo_fill(cr);
        }
    }
    cairo_destroy(cr);
    cairo_surface_write_to_png(out.get(), file);
}

// "iou colour-share", or "na"; false when the pair cannot be compared.
bool compare(const std::string& oursFile, const std::string& referenceFile,
             const std::string& maskFile, const char* sideBySide) {
    const Surface ours = loadPng(oursFile);
    const Surface reference = loadPng(referenceFile);
    const Surface mask =
        maskFile.empty() ? Surface(nullptr, &cairo_surface_destroy) : loadPng(maskFile);
    if (!sameSize(ours.get(), reference.get()) ||
        (!maskFile.empty() && !sameSize(ours.get(), mask.get()))) {
        std::printf("na\n");
        return false;
    }
    long both = 0, either = 0, agree = 0;
    for (int y = 0; y < cairo_image_surface_get_height(ours.get()); ++y) {
        for (int x = 0; x < cairo_image_surface_get_width(ours.get()); ++x) {
            const std::uint32_t a = pixel(ours.get(), x, y);
            const std::uint32_t b = pixel(reference.get(), x, y);
            if (masked(mask.get(), x, y)) {
                continue;
            }
            both += covered(a) && covered(b);
            either += covered(a) || covered(b);
            agree += covered(a) && covered(b) && colourDistance(a, b) <= kColourTolerance;
        }
    }
    // Two empty pictures agree completely.
    std::printf("%.4f %.4f\n", either == 0 ? 1.0 : double(both) / double(either),
                both == 0 ? 1.0 : double(agree) / double(both));
    if (sideBySide != nullptr) {
        writeSideBySide(sideBySide, ours.get(), reference.get(), mask.get());
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
        std::string line;
        while (std::getline(std::cin, line)) {
            std::istringstream fields(line);
            std::string ours, reference, mask;
            if (fields >> ours >> reference) {
                fields >> mask;
                compare(ours, reference, mask, nullptr);
            }
        }
        return 0;
    }
    if (argc == 5 && std::strcmp(argv[1], "--differ") == 0) {
        return writeDifference(argv[2], argv[3], argv[4]) ? 0 : 1;
    }
    std::string mask;
    if (argc >= 3 && std::strcmp(argv[1], "--mask") == 0) {
        mask = argv[2];
        argc -= 2;
        argv += 2;
    }
    if (argc < 3 || argc > 4) {
        std::fprintf(stderr,
                     "usage: mask_iou [--mask MASK.png] OURS.png REFERENCE.png [SIDE_BY_SIDE.png]\n"
                     "       mask_iou --list  (\"OURS REFERENCE [MASK]\" on standard input)\n"
                     "       mask_iou --differ A.png B.png MASK.png\n");
        return 2;
    }
    return compare(argv[1], argv[2], mask, argc == 4 ? argv[3] : nullptr) ? 0 : 1;
}
