// Filling outlines with triangles, side by side over the same outlines:
//   TriangulatePoly  ours, fill rule NonZero, skipping degenerate segments (as segmentation does)
//   GluTess          the GLU tessellator, winding rule NONZERO, triangles collected through the
//                    begin/vertex/combine/end callbacks
// Outlines: simple ones (a circle, a circle with noise, a circle with long spikes), ones that
// cross themselves about once per vertex (the star polygon {n/3}, a zigzag that goes around
// twice), a page of 'O' glyphs (many small contours with holes), and the flattened path outlines
// of two icon sets, when they are cached (tests/icons/icon_sets.sh installs them), filled one
// after another. Items are input vertices (segments); the counters give the triangles and the
// area that they cover, which must agree between the two.
//
// At the end a table gives, for every outline, the median CPU time of each (over
// --benchmark_repetitions), the time per input vertex, and the ratio GLU / ours from the same
// run: a machine busy with other work slows both alike.
#include <GL/glu.h>
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "IconCache.h"
#include "svg/tqSvg.h"

namespace {

using Contour = std::vector<Wm4::Vector2f>;
using Contours = std::vector<Contour>;

constexpr double kPi = 3.14159265358979323846;
constexpr float kRadius = 1000.0f;

// A fixed sequence of uniform numbers in [0, 1), the same on every platform.
class Random {
public:
    explicit Random(std::uint64_t seed) : mState(seed) {}
    double next() {
        std::uint64_t z = (mState += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return double((z ^ (z >> 31)) >> 11) * 0x1.0p-53;
    }

private:
    std::uint64_t mState;
};

Wm4::Vector2f onCircle(double angle, double radius) {
    return Wm4::Vector2f(static_cast<float>(radius * std::cos(angle)),
                         static_cast<float>(radius * std::sin(angle)));
}

Contours circle(std::size_t n) {
    Contour c(n);
    for (std::size_t i = 0; i < n; ++i) {
        c[i] = onCircle(2 * kPi * double(i) / double(n), kRadius);
    }
    return {c};
}

// Noise of the order of the vertex spacing, as on a traced outline: every vertex at its own
// angle, so the outline stays simple, and the same shape at every n.
Contours noisyCircle(std::size_t n) {
    const double spacing = 2 * kPi * kRadius / double(n);
    Random random(n);
    Contour c(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double jitter = 4 * spacing * (random.next() - 0.5);
        c[i] = onCircle(2 * kPi * double(i) / double(n), kRadius + jitter);
    }
    return {c};
}

// Noise of 10 % of the radius: a simple outline of long spikes that grows denser with n, so that
// a horizontal or vertical line meets a fixed share of all its edges.
Contours spikyCircle(std::size_t n) {
    Random random(n);
    Contour c(n);
    for (std::size_t i = 0; i < n; ++i) {
        c[i] = onCircle(2 * kPi * double(i) / double(n), kRadius * (0.95 + 0.1 * random.next()));
    }
    return {c};
}

// The star polygon {n/3}: one closed outline through n points of a circle, three points at a
// time (n must not be a multiple of 3). Its crossings lie within a sagitta of the circle, which
// falls below a float's precision as n grows: this is degenerate input at 100k.
Contours polygram(std::size_t n) {
    Contour c(n);
    for (std::size_t i = 0; i < n; ++i) {
        c[i] = onCircle(2 * kPi * double(3 * i % n) / double(n), kRadius);
    }
    return {c};
}

// One closed zigzag of small teeth that goes around the circle twice; the second lap is shifted
// by half a tooth, so each of its edges crosses two of the first lap's (about n crossings, well
// apart at every n), and the core has winding number 2.
Contours doubleZigzag(std::size_t n) {
    const double tooth = 4 * kPi * kRadius / double(n);
    Contour c(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double step = double(i) + (i >= n / 2 ? 0.5 : 0.0);
        c[i] = onCircle(4 * kPi * step / double(n), i % 2 == 0 ? kRadius : kRadius - 3 * tooth);
    }
    return {c};
}

// A page of `count` letters 'O' in lines of 25, each an outer ring counter-clockwise and a hole
// clockwise, of 16 vertices each.
Contours glyphs(std::size_t count) {
    constexpr int kSides = 16;
    Contours contours;
    for (std::size_t g = 0; g < count; ++g) {
        const double cx = 10.0 * double(g % 25), cy = 12.0 * double(g / 25);
        Contour outer, inner;
        for (int i = 0; i < kSides; ++i) {
            const double a = 2 * kPi * i / kSides;
            outer.emplace_back(static_cast<float>(cx + 4.0 * std::cos(a)),
                               static_cast<float>(cy + 5.0 * std::sin(a)));
            inner.emplace_back(static_cast<float>(cx + 2.5 * std::cos(-a)),
                               static_cast<float>(cy + 3.5 * std::sin(-a)));
        }
        contours.push_back(std::move(outer));
        contours.push_back(std::move(inner));
    }
    return contours;
}

// One outline in both forms: points with segments for us, contours of doubles for GLU (which
// reads its vertices through pointers that must stay valid until the polygon ends).
struct Outline {
    std::vector<Wm4::Vector2f> points;
    std::vector<unsigned int> indices;
    std::vector<std::vector<std::array<GLdouble, 3>>> gluContours;

    explicit Outline(const Contours& contours) {
        for (const Contour& c : contours) {
            const auto first = static_cast<unsigned int>(points.size());
            const auto count = static_cast<unsigned int>(c.size());
            auto& glu = gluContours.emplace_back();
            for (unsigned int i = 0; i < count; ++i) {
                points.push_back(c[i]);
                indices.push_back(first + i);
                indices.push_back(first + (i + 1) % count);
                glu.push_back({c[i].X(), c[i].Y(), 0.0});
            }
        }
    }

    // Segments as segmentation makes them; every run of segments that follow on from each other
    // is one GLU contour, which GLU closes (as TriangulatePoly closes open runs).
    Outline(std::vector<Wm4::Vector2f> p, std::vector<unsigned int> i)
        : points(std::move(p)), indices(std::move(i)) {
        const auto vertex = [this](unsigned int index) {
            return std::array<GLdouble, 3>{points[index].X(), points[index].Y(), 0.0};
        };
        for (std::size_t first = 0; first + 1 < indices.size();) {
            std::size_t last = first;  // the run's last segment
            while (last + 3 < indices.size() && indices[last + 2] == indices[last + 1]) {
                last += 2;
            }
            auto& glu = gluContours.emplace_back();
            for (std::size_t k = first; k <= last; k += 2) {
                glu.push_back(vertex(indices[k]));
            }
            if (indices[last + 1] != indices[first]) {
                glu.push_back(vertex(indices[last + 1]));
            }
            first = last + 2;
        }
    }

    std::size_t vertices() const { return indices.size() / 2; }
};

using Outlines = std::vector<Outline>;

// Outlines are made on first use, so that a filter that skips them does not pay for them.
struct Case {
    Outlines (*make)(std::size_t);
    std::size_t n;
    std::unique_ptr<Outlines> outlines;
    std::string missing;  // why there are none, when there are none

    Outlines& get() {
        if (!outlines) {
            outlines = std::make_unique<Outlines>(make(n));
        }
        return *outlines;
    }
};

template <Contours (*make)(std::size_t)>
Outlines single(std::size_t n) {
    Outlines outlines;
    outlines.emplace_back(make(n));
    return outlines;
}

// ---- icon outlines -----------------------------------------------------------------------------

const std::filesystem::path kIconSets[] = {"node_modules/@mdi/svg/svg",
                                           "node_modules/simple-icons/icons"};

// The outline of every path of every icon, flattened as segmentation flattens it (32 points per
// curve, tolerance -0.999, the path's transform) and cleaned up as it is before filling.
// Properties with fill "none" keep SegmentPath from triangulating while collecting.
Outlines iconOutlines(std::size_t) {
    using namespace tq::svg;
    Outlines outlines;
    LibraryGuard library;
    LoadOptions options;
    options.ignoreUnsupported = true;  // simple-icons carry a role attribute
    RenderingProperties outlineOnly;
    outlineOnly.fill = "none";
    SegmentationUtils::BezierSegmentationWorkspace workspace;
    std::vector<std::filesystem::path> files;
    for (const auto& set : kIconSets) {
        for (const auto& entry : std::filesystem::directory_iterator(IconCache() / set)) {
            if (entry.path().extension() == ".svg") {
                files.push_back(entry.path());
            }
        }
    }
    std::sort(files.begin(), files.end());
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
                if (item.getType() == ItemType::Path) {
                    auto flat = SegmentPath(static_cast<const Path&>(item), 32, -0.999f, &transform,
                                            &outlineOnly, &workspace, nullptr);
                    tq::CleanupContour(flat->points, flat->indices);
                    if (!flat->indices.empty()) {
                        outlines.emplace_back(std::move(flat->points), std::move(flat->indices));
                    }
                }
                return true;
            },
            nullptr);
        visitor.visitItemTree(*root);
    }
    return outlines;
}

double triangleArea(double ax, double ay, double bx, double by, double cx, double cy) {
    return 0.5 * std::abs((bx - ax) * (cy - ay) - (by - ay) * (cx - ax));
}

std::size_t vertexCount(const Outlines& outlines) {
    std::size_t vertices = 0;
    for (const Outline& outline : outlines) {
        vertices += outline.vertices();
    }
    return vertices;
}

void reportOutput(benchmark::State& state, const Outlines& outlines, std::size_t triangles,
                  double area) {
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(vertexCount(outlines)));
    state.counters["triangles"] = double(triangles);
    state.counters["area"] = area;
}

// ---- ours --------------------------------------------------------------------------------------

void runTriangulatePoly(benchmark::State& state, Case& c) {
    const Outlines& outlines = c.get();
    std::vector<Wm4::Vector2f> outPoints;
    std::vector<unsigned int> outIndices;
    std::size_t triangles = 0;
    double area = 0;
    for (auto _ : state) {
        triangles = 0;
        for (const Outline& outline : outlines) {
            outPoints.clear();
            outIndices.clear();
            if (!tq::TriangulatePoly(outline.points, outline.indices, outPoints, outIndices,
                                     tq::TriangulationFillRule::NonZero, true)) {
                state.SkipWithError("TriangulatePoly failed");
                return;
            }
            triangles += outIndices.size() / 3;
            benchmark::DoNotOptimize(outIndices.data());
        }
    }
    // The area of every outline, outside the timed loop.
    for (const Outline& outline : outlines) {
        outPoints.clear();
        outIndices.clear();
        tq::TriangulatePoly(outline.points, outline.indices, outPoints, outIndices,
                            tq::TriangulationFillRule::NonZero, true);
        for (std::size_t i = 0; i + 2 < outIndices.size(); i += 3) {
            const Wm4::Vector2f &a = outPoints[outIndices[i]], &b = outPoints[outIndices[i + 1]],
                                &d = outPoints[outIndices[i + 2]];
            area += triangleArea(a.X(), a.Y(), b.X(), b.Y(), d.X(), d.Y());
        }
    }
    reportOutput(state, outlines, triangles, area);
}

// ---- GLU ---------------------------------------------------------------------------------------

// The triangles of one tessellation, as triples of vertex pointers: into the outline's vertices,
// or into the vertices that the combine callback made at crossings.
struct GluOutput {
    std::deque<std::array<GLdouble, 3>> combined;  // stable addresses
    std::vector<const GLdouble*> primitive;
    GLenum mode = GL_TRIANGLES;
    std::vector<const GLdouble*> triangles;
    GLenum error = 0;

    void clear() {
        combined.clear();
        triangles.clear();
        error = 0;
    }
};

GluOutput& output(void* data) {
    return *static_cast<GluOutput*>(data);
}

void GLAPIENTRY onBegin(GLenum mode, void* data) {
    output(data).mode = mode;
    output(data).primitive.clear();
}

void GLAPIENTRY onVertex(void* vertex, void* data) {
    output(data).primitive.push_back(static_cast<const GLdouble*>(vertex));
}

void GLAPIENTRY onEnd(void* data) {
    GluOutput& out = output(data);
    const std::vector<const GLdouble*>& v = out.primitive;
    switch (out.mode) {
        case GL_TRIANGLES:
            out.triangles.insert(out.triangles.end(), v.begin(), v.begin() + v.size() / 3 * 3);
            break;
        case GL_TRIANGLE_FAN:
            for (std::size_t i = 1; i + 1 < v.size(); ++i) {
                out.triangles.insert(out.triangles.end(), {v[0], v[i], v[i + 1]});
            }
            break;
        case GL_TRIANGLE_STRIP:
            for (std::size_t i = 0; i + 2 < v.size(); ++i) {
                if (i % 2 == 0) {
                    out.triangles.insert(out.triangles.end(), {v[i], v[i + 1], v[i + 2]});
                } else {
                    out.triangles.insert(out.triangles.end(), {v[i + 1], v[i], v[i + 2]});
                }
            }
            break;
        default:
            out.error = GLU_TESS_ERROR1;  // any error: an unexpected primitive
            break;
    }
}

void GLAPIENTRY onCombine(GLdouble coords[3], void* [4], GLfloat[4], void** result, void* data) {
    GluOutput& out = output(data);
    out.combined.push_back({coords[0], coords[1], coords[2]});
    *result = out.combined.back().data();
}

void GLAPIENTRY onError(GLenum error, void* data) {
    output(data).error = error;
}

template <class F>
_GLUfuncptr callback(F* f) {
    return reinterpret_cast<_GLUfuncptr>(f);
}

void runGluTess(benchmark::State& state, Case& c) {
    Outlines& outlines = c.get();
    GLUtesselator* tess = gluNewTess();
    gluTessProperty(tess, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_NONZERO);
    gluTessProperty(tess, GLU_TESS_BOUNDARY_ONLY, GL_FALSE);
    gluTessNormal(tess, 0, 0, 1);  // the outline is planar: no normal to estimate
    gluTessCallback(tess, GLU_TESS_BEGIN_DATA, callback(onBegin));
    gluTessCallback(tess, GLU_TESS_VERTEX_DATA, callback(onVertex));
    gluTessCallback(tess, GLU_TESS_END_DATA, callback(onEnd));
    gluTessCallback(tess, GLU_TESS_COMBINE_DATA, callback(onCombine));
    gluTessCallback(tess, GLU_TESS_ERROR_DATA, callback(onError));
    GluOutput out;
    const auto tessellate = [&](Outline& outline) {
        out.clear();
        gluTessBeginPolygon(tess, &out);
        for (auto& contour : outline.gluContours) {
            gluTessBeginContour(tess);
            for (auto& vertex : contour) {
                gluTessVertex(tess, vertex.data(), vertex.data());
            }
            gluTessEndContour(tess);
        }
        gluTessEndPolygon(tess);
        return out.error == 0;
    };
    std::size_t triangles = 0;
    for (auto _ : state) {
        triangles = 0;
        for (Outline& outline : outlines) {
            if (!tessellate(outline)) {
                state.SkipWithError(reinterpret_cast<const char*>(gluErrorString(out.error)));
                gluDeleteTess(tess);
                return;
            }
            triangles += out.triangles.size() / 3;
            benchmark::DoNotOptimize(out.triangles.data());
        }
    }
    double area = 0;
    for (Outline& outline : outlines) {
        tessellate(outline);
        for (std::size_t i = 0; i + 2 < out.triangles.size(); i += 3) {
            const GLdouble *a = out.triangles[i], *b = out.triangles[i + 1],
                           *d = out.triangles[i + 2];
            area += triangleArea(a[0], a[1], b[0], b[1], d[0], d[1]);
        }
    }
    gluDeleteTess(tess);
    reportOutput(state, outlines, triangles, area);
}

// ---- registration ------------------------------------------------------------------------------

std::deque<Case>& cases() {
    static std::deque<Case> all;
    return all;
}

// Registers both implementations on one set of outlines. Where one GLU run would take over 10 s,
// GLU is not run: its row says so, and ours has the counter glu_skipped. A case without outlines
// (icons not cached) is skipped with its reason.
void add(const std::string& name, Outlines (*make)(std::size_t), std::size_t n, bool runGlu = true,
         std::string missing = "") {
    Case& c = cases().emplace_back(Case{make, n, nullptr, std::move(missing)});
    benchmark::RegisterBenchmark(("TriangulatePoly/" + name).c_str(),
                                 [&c, runGlu](benchmark::State& s) {
                                     if (!c.missing.empty()) {
                                         s.SkipWithError(c.missing.c_str());
                                         return;
                                     }
                                     runTriangulatePoly(s, c);
                                     if (!runGlu) {
                                         s.counters["glu_skipped"] = 1;
                                     }
                                 })
        ->Unit(benchmark::kMillisecond)
        ->MinTime(0.5);
    benchmark::RegisterBenchmark(("GluTess/" + name).c_str(),
                                 [&c, runGlu](benchmark::State& s) {
                                     if (!c.missing.empty()) {
                                         s.SkipWithError(c.missing.c_str());
                                     } else if (runGlu) {
                                         runGluTess(s, c);
                                     } else {
                                         s.SkipWithError("not run: one run takes over 10 s");
                                     }
                                 })
        ->Unit(benchmark::kMillisecond)
        ->MinTime(0.5);
}

template <Contours (*make)(std::size_t)>
void add(const char* shape, std::size_t n, bool runGlu = true) {
    add(std::string(shape) + "/" + std::to_string(n), single<make>, n, runGlu);
}

// The console output, and the CPU time of every run by name, for the table at the end.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    // Colours only on a terminal, as the default reporter does.
    RatioReporter() : ConsoleReporter(isatty(fileno(stdout)) ? OO_ColorTabular : OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                const auto items = run.counters.find("items_per_second");
                mRuns[run.run_name.function_name].push_back(
                    {run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit),
                     items == run.counters.end() ? 0.0 : double(items->second)});
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    // Median CPU time of ours and GLU per outline, per input vertex, and GLU / ours.
    void printRatios() const {
        std::printf("\n%-26s %12s %12s %10s %10s %10s\n", "outline", "ours ms", "GLU ms",
                    "ours ns/v", "GLU ns/v", "GLU/ours");
        for (const auto& [name, ours] : mRuns) {
            const std::string prefix = "TriangulatePoly/";
            if (name.compare(0, prefix.size(), prefix) != 0) {
                continue;
            }
            const std::string outline = name.substr(prefix.size());
            const auto glu = mRuns.find("GluTess/" + outline);
            const Timing a = median(ours);
            std::printf("%-26s %12.4f", outline.c_str(), a.seconds * 1e3);
            if (glu == mRuns.end()) {
                std::printf(" %12s %10.1f %10s %10s\n", "-", a.nsPerVertex(), "-", "-");
                continue;
            }
            const Timing b = median(glu->second);
            std::printf(" %12.4f %10.1f %10.1f %9.2fx\n", b.seconds * 1e3, a.nsPerVertex(),
                        b.nsPerVertex(), b.seconds / a.seconds);
        }
    }

private:
    struct Timing {
        double seconds;         // per iteration
        double itemsPerSecond;  // input vertices
        double nsPerVertex() const { return itemsPerSecond > 0 ? 1e9 / itemsPerSecond : 0; }
    };
    static Timing median(std::vector<Timing> runs) {
        std::sort(runs.begin(), runs.end(),
                  [](const Timing& l, const Timing& r) { return l.seconds < r.seconds; });
        return runs[runs.size() / 2];
    }
    std::map<std::string, std::vector<Timing>> mRuns;
};

}  // namespace

int main(int argc, char** argv) {
    // GLU's time grows with about the square of n on every outline here but the circle, so it is
    // not run where one run would take from a minute to ten.
    for (std::size_t n : {1000u, 10000u, 100000u, 1000000u}) {
        add<circle>("circle", n);
        add<noisyCircle>("noisy_circle", n, n < 1000000);
    }
    for (std::size_t n : {1000u, 10000u, 100000u}) {  // at 1M, ours takes minutes too
        add<spikyCircle>("spiky_circle", n);
    }
    for (std::size_t n : {1000u, 10000u, 100000u}) {
        add<polygram>("polygram", n, n < 100000);
        add<doubleZigzag>("double_zigzag", n, n < 100000);
    }
    add<glyphs>("glyphs", 500);
    std::string missing;
    for (const auto& set : kIconSets) {
        if (!std::filesystem::is_directory(IconCache() / set)) {
            missing = "icons not cached in " + (IconCache() / set).string() +
                      " (tests/icons/icon_sets.sh installs them): skipped";
        }
    }
    add("icon_outlines", iconOutlines, 0, true, missing);

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    benchmark::Shutdown();
    return 0;
}
