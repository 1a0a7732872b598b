// Loads an SVG file, turns it into outlines, fill triangles and stroke triangles, adds a shape
// built in code, and prints what a renderer would receive.   usage: segment FILE.svg
#include <svg/tqSvg.h>

#include <cstdio>

namespace {

void printShapes(const tq::svg::SegmenterVisitor::PrimitiveList& shapes) {
    std::size_t segments = 0, triangles = 0, strokeTriangles = 0;
    for (const auto& shape : shapes) {
        const Wm4::ColorRGBA fill = shape->properties.parseFillColor();  // opacity applied
        std::printf(
            "  %3zu segments %4zu triangles %4zu stroke triangles  fill rgba(%.2f %.2f "
            "%.2f %.2f)\n",
            shape->indices.size() / 2, shape->triangleIndices.size() / 3,
            shape->strokeTriangleIndices.size() / 3, fill.R(), fill.G(), fill.B(), fill.A());
        segments += shape->indices.size() / 2;
        triangles += shape->triangleIndices.size() / 3;
        strokeTriangles += shape->strokeTriangleIndices.size() / 3;
    }
    std::printf("%zu shapes, %zu segments, %zu triangles, %zu stroke triangles\n", shapes.size(),
                segments, triangles, strokeTriangles);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: segment FILE.svg\n");
        return 2;
    }
    tq::svg::LibraryGuard library;
    std::printf("tqSvg %s\n", tqSvg::Version::GetDescStringMajorMinorReleaseRevision(true, false));

    tq::svg::ItemInterfacePointer<tq::svg::ItemInterface> root;
    std::list<std::string> messages;
    const bool loaded =
        tq::svg::tqSvgIOManager::get().loadSvg(root, argv[1], nullptr, nullptr, &messages);
    for (const std::string& message : messages) {
        std::fprintf(stderr, "%s: %s\n", argv[1], message.c_str());
    }
    auto* document = dynamic_cast<tq::svg::Document*>(root.get());
    if (!loaded || document == nullptr) {
        return 1;
    }

    // A frame built in code: an outer square, and an inner one wound the other way round,
    // which the non-zero fill rule leaves empty.
    tq::svg::PathBuilder builder;
    builder.appendRect(Wm4::Vector2f(0, 0), Wm4::Vector2f(40, 40));
    builder.appendSegmentListConst({{10, 10}, {10, 30}, {30, 30}, {30, 10}, {10, 10}});
    auto frame = builder.createPathItem(true);
    frame->editProperties().fill = "teal";
    document->editChildren().push_back(frame);

    // Within 0.05 units of the curves, strokes as triangles too.
    tq::svg::SegmenterVisitor segmenter(*document, tq::svg::SegmentOptions{0.05f, true});
    printShapes(segmenter.getSegmentedPrimitives());
    return segmenter.hasError() ? 1 : 0;
}
