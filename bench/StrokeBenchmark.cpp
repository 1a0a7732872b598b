// Strokes, side by side over the same flattened centre lines:
//   Stroke         ours: the stroke's triangles, as SegmenterVisitor's strokes option builds them
//   ClipperOffset  Clipper 6.4's offsetting (ClipperLib::ClipperOffset, Debian's
//                  libpolyclipping) of the same lines into outline polygons, without triangles
// Lines: every shape of lucide's icons, one stroke at a time (width 2, round joins and caps,
// within the tolerance of a 256-pixel picture: arcs within half of it, Clipper's ArcTolerance
// alike), when they are cached (scripts/bench.sh installs them), and one random walk of 100,000
// segments (steps of 0.5 to 1.5, width 0.4, miter joins with SVG's limit 4, which is Clipper's
// MiterLimit in its units of half widths; butt ends). Items are input vertices; the counters give
// our triangles and Clipper's outline vertices.
#include <benchmark/benchmark.h>
#include <polyclipping/clipper.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "IconCache.h"
#include "svg/geometry/detail/StrokeSubpaths.h"
#include "svg/geometry/detail/Stroker.h"
#include "svg/tqSvg.h"

namespace {

using tq::svg::detail::StrokeStyle;
using tq::svg::detail::StrokeSubpaths;

constexpr double kPi = 3.14159265358979323846;
// Clipper works on integers: icon units (a 24-unit box) and walk steps become 2^16 of them.
constexpr double kClipperScale = 65536.0;

struct Strokes {
    std::vector<StrokeSubpaths> lines;  // one stroke each
    StrokeStyle style;
    ClipperLib::JoinType join = ClipperLib::jtRound;
    ClipperLib::EndType openEnd = ClipperLib::etOpenRound;
    std::string missing;  // why there is nothing to stroke

    std::size_t vertices() const {
        std::size_t n = 0;
        for (const StrokeSubpaths& l : lines) {
            n += l.points.size();
        }
        return n;
    }
};

// The centre lines of one shape item, flattened for a stroke within `tolerance`.
void centreLines(const tq::svg::ItemInterface& item, const Wm4::Matrix3f& transform,
                 float tolerance, tq::svg::SegmentationUtils::BezierSegmentationWorkspace& curves,
                 tq::svg::SegmentedPrimitive& scratch, StrokeSubpaths& out) {
    using namespace tq::svg;
    switch (item.getType()) {
        case ItemType::Path:
            detail::FlattenPathForStroke(static_cast<const Path&>(item), tolerance / 2, transform,
                                         curves, scratch, out);
            break;
        case ItemType::Circle:
            detail::FlattenCircleForStroke(static_cast<const Circle&>(item), tolerance / 2,
                                           transform, out);
            break;
        case ItemType::Rect:
            detail::FlattenRectForStroke(static_cast<const Rect&>(item), out);
            break;
        case ItemType::Line:
            detail::FlattenLineForStroke(static_cast<const Line&>(item), out);
            break;
        default:
            out.clear();
    }
}

Strokes lucide() {
    using namespace tq::svg;
    Strokes strokes;
    strokes.style.halfWidth = 1.0;
    strokes.style.join = LineJoin::Round;
    strokes.style.cap = LineCap::Round;
    strokes.style.tolerance = 0.05 * 24.0 / 256.0 / 2.0;  // a twentieth of a pixel, halved
    const std::filesystem::path folder = IconCache() / "node_modules/lucide-static/icons";
    if (!std::filesystem::is_directory(folder)) {
        strokes.missing = "icons not cached in " + folder.string() + " (scripts/bench.sh): skipped";
        return strokes;
    }
    LibraryGuard library;
    LoadOptions options;
    options.profile = LoadProfile::Standard;
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".svg") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    SegmentationUtils::BezierSegmentationWorkspace curves;
    SegmentedPrimitive scratch;
    for (const auto& file : files) {
        std::ifstream in(file, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        tqIoDeviceMemory device(text.str());
        ItemInterfacePointer<ItemInterface> root;
        if (!tqSvgIOManager::get().loadSvg(root, device, "svg", nullptr, &options, nullptr) ||
            !root) {
            continue;
        }
        VisitorBase<const ItemInterface> visitor(
            [&](const ItemInterface& item, const Wm4::Matrix3f& transform,
                const RenderingProperties&) {
                StrokeSubpaths lines;
                centreLines(item, transform, float(2 * strokes.style.tolerance), curves, scratch,
                            lines);
                if (!lines.subpaths.empty()) {
                    strokes.lines.push_back(std::move(lines));
                }
                return true;
            },
            nullptr);
        visitor.visitItemTree(*root);
    }
    return strokes;
}

// A walk of unit-ish steps, turning by up to 120 degrees at each: it crosses itself often.
Strokes randomWalk() {
    Strokes strokes;
    strokes.style.halfWidth = 0.2;
    strokes.style.join = tq::svg::LineJoin::Miter;
    strokes.style.cap = tq::svg::LineCap::Butt;
    strokes.join = ClipperLib::jtMiter;
    strokes.openEnd = ClipperLib::etOpenButt;
    std::uint64_t state = 12345;
    const auto uniform = [&state] {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return double(state >> 11) * 0x1.0p-53;
    };
    StrokeSubpaths walk;
    walk.begin();
    Wm4::Vector2d p(0, 0);
    double heading = 0;
    for (int i = 0; i <= 100000; ++i) {
        walk.add(p, true);
        heading += (uniform() - 0.5) * (4 * kPi / 3);
        const double step = 0.5 + uniform();
        p = p + Wm4::Vector2d(std::cos(heading), std::sin(heading)) * step;
    }
    walk.end(false, true);
    strokes.lines.push_back(std::move(walk));
    return strokes;
}

void runOurs(benchmark::State& state, const Strokes& strokes) {
    if (!strokes.missing.empty()) {
        state.SkipWithError(strokes.missing.c_str());
        return;
    }
    tq::svg::detail::Stroker stroker;
    std::vector<Wm4::Vector2f> points;
    std::vector<unsigned int> triangles;
    std::size_t count = 0;
    for (auto _ : state) {
        count = 0;
        for (const StrokeSubpaths& lines : strokes.lines) {
            points.clear();
            triangles.clear();
            if (!stroker.stroke(lines, strokes.style, nullptr, points, triangles)) {
                state.SkipWithError("a stroke failed");
                return;
            }
            count += triangles.size() / 3;
            benchmark::DoNotOptimize(triangles.data());
        }
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(strokes.vertices()));
    state.counters["triangles"] = double(count);
}

// The same lines as Clipper paths: closed subpaths stroked on both sides, open ones and dots
// with the ends.
void toClipper(const StrokeSubpaths& lines, ClipperLib::Paths& closed, ClipperLib::Paths& open) {
    closed.clear();
    open.clear();
    for (const StrokeSubpaths::Subpath& s : lines.subpaths) {
        ClipperLib::Path path;
        for (std::uint32_t i = s.begin; i < s.end; ++i) {
            path.emplace_back(ClipperLib::cInt(std::llround(lines.points[i].X() * kClipperScale)),
                              ClipperLib::cInt(std::llround(lines.points[i].Y() * kClipperScale)));
        }
        (s.closed && s.end - s.begin > 1 ? closed : open).push_back(std::move(path));
    }
}

void runClipper(benchmark::State& state, const Strokes& strokes) {
    if (!strokes.missing.empty()) {
        state.SkipWithError(strokes.missing.c_str());
        return;
    }
    std::vector<ClipperLib::Paths> closed(strokes.lines.size()), open(strokes.lines.size());
    for (std::size_t i = 0; i < strokes.lines.size(); ++i) {
        toClipper(strokes.lines[i], closed[i], open[i]);
    }
    ClipperLib::ClipperOffset offset(strokes.style.miterLimit,
                                     strokes.style.tolerance * kClipperScale);
    ClipperLib::Paths solution;
    std::size_t vertices = 0;
    for (auto _ : state) {
        vertices = 0;
        for (std::size_t i = 0; i < strokes.lines.size(); ++i) {
            offset.Clear();
            offset.AddPaths(closed[i], strokes.join, ClipperLib::etClosedLine);
            offset.AddPaths(open[i], strokes.join, strokes.openEnd);
            offset.Execute(solution, strokes.style.halfWidth * kClipperScale);
            for (const ClipperLib::Path& p : solution) {
                vertices += p.size();
            }
            benchmark::DoNotOptimize(solution.data());
        }
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * int64_t(strokes.vertices()));
    state.counters["outline_vertices"] = double(vertices);
}

}  // namespace

int main(int argc, char** argv) {
    // Made once, on first use, outside the timed loops.
    static const auto lucideLines = [] {
        static const Strokes strokes = lucide();
        return &strokes;
    };
    static const auto walkLines = [] {
        static const Strokes strokes = randomWalk();
        return &strokes;
    };
    const std::pair<const char*, const Strokes* (*)()> cases[] = {{"lucide_icons", +lucideLines},
                                                                  {"random_walk_100k", +walkLines}};
    for (const auto& [name, lines] : cases) {
        benchmark::RegisterBenchmark(
            (std::string("Stroke/") + name).c_str(),
            [lines = lines](benchmark::State& state) { runOurs(state, *lines()); })
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark(
            (std::string("ClipperOffset/") + name).c_str(),
            [lines = lines](benchmark::State& state) { runClipper(state, *lines()); })
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
