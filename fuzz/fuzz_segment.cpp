// Load, then segment the whole tree into outlines and fill triangles.
//
// Input bytes:
//   0     options: bit 0 ignores unsupported content, bit 1 reads with the standard profile,
//         bit 2 segments within a tolerance (0.01 to 0.32, from bits 3 to 7)
//   rest  the document
//
// Checked beyond the sanitizers: every outline is made of index pairs and every fill of index
// triples, all within their point arrays; segmenting the same tree again gives the same counts
// (the visitor keeps no state between trees).
#include <cstddef>
#include <cstdint>
#include <memory>

#include "FuzzSupport.h"

namespace {

constexpr const char* kTarget = "fuzz_segment";

using Primitives = tq::svg::SegmenterVisitor::PrimitiveList;

void checkPrimitives(const Primitives& primitives) {
    for (const auto& primitive : primitives) {
        if (!primitive) {
            tq::fuzz::fail(kTarget, "a null primitive");
        }
        if (primitive->indices.size() % 2 != 0) {
            tq::fuzz::fail(kTarget, "an outline index count that is odd");
        }
        for (unsigned int index : primitive->indices) {
            if (index >= primitive->points.size()) {
                tq::fuzz::fail(kTarget, "an outline index out of range");
            }
        }
        if (primitive->triangleIndices.size() % 3 != 0) {
            tq::fuzz::fail(kTarget, "a triangle index count that is no multiple of 3");
        }
        for (unsigned int index : primitive->triangleIndices) {
            if (index >= primitive->trianglePoints.size()) {
                tq::fuzz::fail(kTarget, "a triangle index out of range");
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const tq::fuzz::LoadResult loaded =
        tq::fuzz::load(kTarget, tq::fuzz::documentBytes(data, size),
                       tq::fuzz::loadOptions(data[0] & 1, data[0] & 2));
    if (!loaded.ok || !loaded.root) {
        return 0;
    }
    const float tolerance = (data[0] & 4) ? 0.01f * float(1 + (data[0] >> 3)) : 0.0f;
    const tq::svg::ItemInterface& root = *loaded.root;
    tq::svg::SegmenterVisitor first(root, tolerance);
    checkPrimitives(first.getSegmentedPrimitives());

    tq::svg::SegmenterVisitor second(root, tolerance);
    const Primitives& a = first.getSegmentedPrimitives();
    const Primitives& b = second.getSegmentedPrimitives();
    bool same = a.size() == b.size() && first.hasError() == second.hasError();
    for (auto i = a.begin(), j = b.begin(); same && i != a.end(); ++i, ++j) {
        same = (*i)->points.size() == (*j)->points.size() && (*i)->indices == (*j)->indices &&
               (*i)->trianglePoints.size() == (*j)->trianglePoints.size() &&
               (*i)->triangleIndices == (*j)->triangleIndices;
    }
    if (!same) {
        tq::fuzz::fail(kTarget, "segmenting the same tree twice gave different geometry");
    }
    return 0;
}
