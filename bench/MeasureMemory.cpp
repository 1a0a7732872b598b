// Peak memory of loading a file, or of building and saving a tree of N items:
//   measure_memory load FILE     load FILE from disk
//   measure_memory save N FILE   build a tree of N items and save it to FILE
//   measure_memory triangulate N fill a noisy N-vertex circle with TriangulatePoly
// Prints the peak resident size before and after the operation, in MiB.
#include <sys/resource.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "svg/tqSvg.h"

namespace {

double peakMiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: measure_memory load FILE | save N FILE | triangulate N\n");
        return 2;
    }
    tq::svg::initializeTqSvg();
    const std::string mode = argv[1];
    bool ok = false;
    if (mode == "load") {
        const double before = peakMiB();
        tq::svg::ItemInterfacePointer<tq::svg::ItemInterface> root;
        ok = tq::svg::tqSvgIOManager::get().loadSvg(root, argv[2], nullptr, nullptr, nullptr);
        std::printf("load %s: peak %.1f MiB before, %.1f MiB after\n", argv[2], before, peakMiB());
    } else if (mode == "save" && argc >= 4) {
        const long count = std::atol(argv[2]);
        tq::svg::Document document;
        for (long i = 0; i < count; ++i) {
            auto rect = std::make_shared<tq::svg::Rect>(
                Wm4::Vector2f(float(i % 1000), float(i / 1000)), Wm4::Vector2f(0.5f, 0.25f));
            document.editChildren().push_back(std::move(rect));
        }
        const double before = peakMiB();
        tq::svg::SaveOptions options;
        options.writeHeader = false;
        ok = tq::svg::tqSvgIOManager::get().saveSvg(document, argv[3], nullptr, &options, nullptr);
        std::printf("save %ld items: peak %.1f MiB with the tree, %.1f MiB after saving\n", count,
                    before, peakMiB());
    } else if (mode == "triangulate") {
        const long count = std::atol(argv[2]);
        std::vector<Wm4::Vector2f> points;
        std::vector<unsigned int> indices;
        std::mt19937 rng(1);
        std::uniform_real_distribution<double> noise(0.99, 1.01);
        for (long i = 0; i < count; ++i) {
            const double angle = 2 * 3.14159265358979 * double(i) / double(count);
            const double r = 1000 * noise(rng);
            points.emplace_back(float(r * std::cos(angle)), float(r * std::sin(angle)));
            indices.push_back(static_cast<unsigned int>(i));
            indices.push_back(static_cast<unsigned int>((i + 1) % count));
        }
        std::vector<Wm4::Vector2f> outPoints;
        std::vector<unsigned int> outIndices;
        const double before = peakMiB();
        ok = tq::TriangulatePoly(points, indices, outPoints, outIndices,
                                 tq::TriangulationFillRule::NonZero, true);
        const double after = peakMiB();
        // The output alone: four points and six indices per trapezoid.
        const double output = double(outPoints.capacity() * sizeof(Wm4::Vector2f) +
                                     outIndices.capacity() * sizeof(unsigned int)) /
                              (1024.0 * 1024.0);
        std::printf(
            "triangulate %ld vertices: peak %.1f MiB before, %.1f MiB after (output %.1f MiB); "
            "%.0f bytes per vertex beyond the output\n",
            count, before, after, output,
            (after - before - output) * 1024.0 * 1024.0 / double(count));
    }
    tq::svg::terminateTqSvg();
    return ok ? 0 : 1;
}
