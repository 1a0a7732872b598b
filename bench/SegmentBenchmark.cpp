// Flattening and the whole segmentation pipeline.
//   FlattenCubic / FlattenArc  curves per second at 32 points (cubics at tolerance -0.999), with
//                              the heap allocations per curve once the workspace has grown
//   Pipeline/*                 load plus SegmenterVisitor, paths per second
//   Phases/*                   the same paths segmented piece by piece, with the share of time
//                              spent in flattening, clean-up and triangulation, and the heap
//                              allocations per path made by triangulation once warmed up
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <random>
#include <sstream>

#include "AllocationCounter.h"
#include "SvgDocumentGenerator.h"
#include "svg/tqSvg.h"

using namespace tq::svg;
using Wm4::Vector2f;

namespace {

constexpr unsigned int kPoints = 32;
constexpr float kTolerance = -0.999f;

// Cubics of every shape: arches, S-curves, loops, nearly straight ones.
std::vector<Wm4::BezierCurve2f> randomCubics(std::size_t count) {
    std::mt19937 rng(3);
    std::uniform_real_distribution<float> c(-100, 100);
    std::vector<Wm4::BezierCurve2f> curves;
    curves.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        curves.emplace_back(
            3, new Vector2f[4]{
                   {c(rng), c(rng)}, {c(rng), c(rng)}, {c(rng), c(rng)}, {c(rng), c(rng)}});
    }
    return curves;
}

void FlattenCubic(benchmark::State& state) {
    const auto curves = randomCubics(1024);
    SegmentationUtils::BezierSegmentationWorkspace workspace;
    SegmentedPrimitive out;
    std::size_t curvesDone = 0;
    std::size_t allocations = 0;
    for (auto _ : state) {
        for (const auto& curve : curves) {
            out.points.clear();
            out.indices.clear();
            const std::size_t before = tq::bench::AllocationCount();
            SegmentationUtils::DeCasteljauSegmentBezier(workspace, curve, out, true, kPoints,
                                                        kTolerance);
            // The first curves grow the workspace and the output; count the rest.
            if (curvesDone >= curves.size()) {
                allocations += tq::bench::AllocationCount() - before;
            }
            ++curvesDone;
        }
        benchmark::DoNotOptimize(out.points.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(curvesDone));
    state.counters["allocs/curve"] =
        static_cast<double>(allocations) / static_cast<double>(curvesDone - curves.size() + 1);
    state.counters["points/curve"] = static_cast<double>(out.points.size());
}
BENCHMARK(FlattenCubic);

void FlattenArc(benchmark::State& state) {
    SegmentedPrimitive out;
    std::size_t arcs = 0;
    std::size_t allocations = 0;
    for (auto _ : state) {
        for (int i = 0; i < 1024; ++i) {
            out.points.clear();
            out.indices.clear();
            const std::size_t before = tq::bench::AllocationCount();
            SegmentationUtils::SegmentEllipticalArc(Vector2f(10, 20), Vector2f(30, 15),
                                                    0.1f * static_cast<float>(i % 30), 0.5f, 2.5f,
                                                    out.points, out.indices, true, kPoints, 0);
            if (arcs >= 1024) {
                allocations += tq::bench::AllocationCount() - before;
            }
            ++arcs;
        }
        benchmark::DoNotOptimize(out.points.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(arcs));
    state.counters["allocs/arc"] =
        static_cast<double>(allocations) / static_cast<double>(arcs - 1024 + 1);
}
BENCHMARK(FlattenArc);

// ---- whole pipeline ----------------------------------------------------------------------------

ItemInterfacePointer<ItemInterface> load(const std::string& svg) {
    tqIoDeviceMemory device(svg);
    ItemInterfacePointer<ItemInterface> root;
    std::list<std::string> messages;
    if (!tqSvgIOManager::get().loadSvg(root, device, "svg", nullptr, nullptr, &messages)) {
        std::fprintf(stderr, "load failed: %s\n",
                     messages.empty() ? "?" : messages.front().c_str());
        std::abort();
    }
    return root;
}

std::size_t countPaths(const ItemInterface& root) {
    std::size_t paths = 0;
    VisitorBase<const ItemInterface> visitor(
        [&paths](const ItemInterface& item, const Wm4::Matrix3f&, const RenderingProperties&) {
            paths += item.getType() == ItemType::Path;
            return true;
        },
        nullptr);
    visitor.visitItemTree(root);
    return paths;
}

const std::string& generatedShapes() {
    static const std::string svg = tq::bench::GenerateShapeSvg(10000);
    return svg;
}

const std::string& sample() {
    static const std::string svg = [] {
        std::ifstream in(TQSVG_SAMPLE_SVG, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }();
    return svg;
}

void Pipeline(benchmark::State& state, const std::string& (*document)()) {
    LibraryGuard library;
    const std::string& svg = document();
    std::size_t paths = 0;
    std::size_t triangles = 0;
    for (auto _ : state) {
        const auto root = load(svg);
        SegmenterVisitor visitor(static_cast<const Node&>(*root));
        paths += countPaths(*root);
        for (const auto& p : visitor.getSegmentedPrimitives()) {
            triangles += p->triangleIndices.size() / 3;
        }
        if (visitor.hasError()) {
            state.SkipWithError("a shape failed to triangulate");
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(paths));
    state.counters["triangles/iter"] =
        static_cast<double>(triangles) / static_cast<double>(state.iterations());
    state.counters["bytes"] = static_cast<double>(svg.size());
}
BENCHMARK_CAPTURE(Pipeline, generated_10k_paths, generatedShapes)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Pipeline, sample, sample)->Unit(benchmark::kMillisecond);

// Each path of the document flattened, cleaned up and triangulated as SegmentPath does, with a
// clock around each step.
void Phases(benchmark::State& state, const std::string& (*document)()) {
    LibraryGuard library;
    const auto root = load(document());
    std::vector<const Path*> paths;
    VisitorBase<const ItemInterface> collect(
        [&paths](const ItemInterface& item, const Wm4::Matrix3f&, const RenderingProperties&) {
            if (item.getType() == ItemType::Path) {
                paths.push_back(static_cast<const Path*>(&item));
            }
            return true;
        },
        nullptr);
    collect.visitItemTree(*root);

    using Clock = std::chrono::steady_clock;
    Clock::duration flatten{}, cleanup{}, triangulate{};
    RenderingProperties outlineOnly;
    outlineOnly.fill = "none";
    SegmentationUtils::BezierSegmentationWorkspace workspace;
    std::vector<Vector2f> trianglePoints;
    std::vector<unsigned int> triangleIndices;
    std::size_t triangulations = 0;
    std::size_t allocations = 0;
    for (auto _ : state) {
        for (const Path* path : paths) {
            const auto t0 = Clock::now();
            auto flat =
                SegmentPath(*path, kPoints, kTolerance, nullptr, &outlineOnly, &workspace, nullptr);
            const auto t1 = Clock::now();
            tq::CleanupContour(flat->points, flat->indices);
            const auto t2 = Clock::now();
            trianglePoints.clear();
            triangleIndices.clear();
            const std::size_t before = tq::bench::AllocationCount();
            tq::TriangulatePoly(flat->points, flat->indices, trianglePoints, triangleIndices,
                                tq::TriangulationFillRule::NonZero, true);
            const auto t3 = Clock::now();
            // The first pass over the paths grows the buffers; count the rest.
            if (triangulations++ >= paths.size()) {
                allocations += tq::bench::AllocationCount() - before;
            }
            flatten += t1 - t0;
            cleanup += t2 - t1;
            triangulate += t3 - t2;
        }
    }
    const double total = std::chrono::duration<double>(flatten + cleanup + triangulate).count();
    const auto share = [total](Clock::duration d) {
        return std::chrono::duration<double>(d).count() / total;
    };
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * paths.size()));
    state.counters["flatten"] = share(flatten);
    state.counters["cleanup"] = share(cleanup);
    state.counters["triangulate"] = share(triangulate);
    state.counters["tri_allocs/path"] =
        static_cast<double>(allocations) /
        static_cast<double>(std::max<std::size_t>(triangulations, paths.size() + 1) - paths.size());
}
BENCHMARK_CAPTURE(Phases, generated_10k_paths, generatedShapes)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Phases, sample, sample)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
