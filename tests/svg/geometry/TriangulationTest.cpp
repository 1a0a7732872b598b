#include "svg/tqSvg.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <functional>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using tq::TriangulatePoly;
using tq::TriangulationFillRule;
using Wm4::Vector2f;

namespace {

constexpr int kNonZero = 0;
constexpr int kEvenOdd = 1;
constexpr double kPi = 3.14159265358979323846;

// Segments as the triangulation takes them: pairs of indices into `points`.
struct Outline {
    std::string name;
    std::vector<Vector2f> points;
    std::vector<unsigned int> indices;
    double nonZeroArea = -1, evenOddArea = -1;  // when known

    explicit Outline(std::string n = "") : name(std::move(n)) {}

    // An open chain of segments through `pts`.
    Outline& run(const std::vector<Vector2f>& pts) {
        for (std::size_t i = 0; i + 1 < pts.size(); ++i) {
            points.insert(points.end(), {pts[i], pts[i + 1]});
            const auto n = static_cast<unsigned int>(points.size());
            indices.insert(indices.end(), {n - 2, n - 1});
        }
        return *this;
    }
    // The same chain with shared points, as segmented paths give it.
    Outline& chain(const std::vector<Vector2f>& pts) {
        const auto base = static_cast<unsigned int>(points.size());
        points.insert(points.end(), pts.begin(), pts.end());
        for (unsigned int i = 0; i + 1 < pts.size(); ++i) {
            indices.insert(indices.end(), {base + i, base + i + 1});
        }
        return *this;
    }
    Outline& contour(const std::vector<Vector2f>& pts) {
        const auto base = static_cast<unsigned int>(points.size());
        const auto n = static_cast<unsigned int>(pts.size());
        points.insert(points.end(), pts.begin(), pts.end());
        for (unsigned int i = 0; i < n; ++i) {
            indices.push_back(base + i);
            indices.push_back(base + (i + 1) % n);
        }
        return *this;
    }
    Outline& rect(float x0, float y0, float x1, float y1, bool ccw = true) {
        if (ccw) {
            return contour({{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}});
        }
        return contour({{x0, y0}, {x0, y1}, {x1, y1}, {x1, y0}});
    }
    // Vertex i at angle phase + 2 pi i k / n: k = 1 runs counter-clockwise, k = -1 clockwise,
    // and k > 1 with no factor in common with n draws the star polygon {n/k}.
    Outline& polygon(double cx, double cy, double r, int n, int k, double phase) {
        std::vector<Vector2f> pts;
        for (int i = 0; i < n; ++i) {
            const double a = phase + 2 * kPi * i * k / n;
            pts.emplace_back(static_cast<float>(cx + r * std::cos(a)),
                             static_cast<float>(cy + r * std::sin(a)));
        }
        return contour(pts);
    }
    Outline transformed(double scale, double dx = 0, double dy = 0) const {
        Outline out = *this;
        for (Vector2f& p : out.points) {
            p = Vector2f(static_cast<float>(p.X() * scale + dx),
                         static_cast<float>(p.Y() * scale + dy));
        }
        return out;
    }
    std::string describe() const {
        return name + " (" + std::to_string(indices.size() / 2) + " segments)";
    }
};

struct Triangulation {
    bool ok = false;
    std::vector<Vector2f> points;
    std::vector<unsigned int> indices;
};

Triangulation triangulate(const Outline& o, int rule, bool skipDegenerate = true) {
    Triangulation t;
    t.ok = TriangulatePoly(o.points, o.indices, t.points, t.indices,
                           static_cast<TriangulationFillRule>(rule), skipDegenerate);
    return t;
}

struct P {
    double x, y;
};
P toP(const Vector2f& v) {
    return {v.X(), v.Y()};
}
double cross(P o, P a, P b) {
    return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}
double distanceToSegment(P q, P a, P b) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double len2 = dx * dx + dy * dy;
    const double t =
        len2 > 0 ? std::clamp(((q.x - a.x) * dx + (q.y - a.y) * dy) / len2, 0.0, 1.0) : 0.0;
    return std::hypot(q.x - (a.x + t * dx), q.y - (a.y + t * dy));
}

struct Box {
    double x0 = std::numeric_limits<double>::infinity(), y0 = x0, x1 = -x0, y1 = -x0;
    void add(P p) {
        x0 = std::min(x0, p.x), y0 = std::min(y0, p.y);
        x1 = std::max(x1, p.x), y1 = std::max(y1, p.y);
    }
    double extent() const { return std::max(x1 - x0, y1 - y0); }
    double maxAbs() const {
        return std::max({std::abs(x0), std::abs(y0), std::abs(x1), std::abs(y1)});
    }
    bool contains(P p, double margin) const {
        return p.x >= x0 - margin && p.x <= x1 + margin && p.y >= y0 - margin && p.y <= y1 + margin;
    }
};

Box boundsOf(const Outline& o) {
    Box b;
    for (unsigned int i : o.indices) {
        b.add(toP(o.points[i]));
    }
    return b;
}

// Winding number straight from the segments: signed crossings of the ray towards +x.
int windingNumber(const Outline& o, P q) {
    int w = 0;
    for (size_t i = 0; i + 1 < o.indices.size(); i += 2) {
        const P a = toP(o.points[o.indices[i]]);
        const P b = toP(o.points[o.indices[i + 1]]);
        if (a.y <= q.y && b.y > q.y && cross(a, b, q) > 0) {
            ++w;
        } else if (b.y <= q.y && a.y > q.y && cross(a, b, q) < 0) {
            --w;
        }
    }
    return w;
}

bool keptBy(int rule, int winding) {
    return rule == kNonZero ? winding != 0 : winding % 2 != 0;
}

double triangleArea(const Triangulation& t) {
    double area = 0;
    for (size_t i = 0; i + 2 < t.indices.size(); i += 3) {
        area += std::abs(cross(toP(t.points[t.indices[i]]), toP(t.points[t.indices[i + 1]]),
                               toP(t.points[t.indices[i + 2]]))) /
                2;
    }
    return area;
}

bool allFinite(const Triangulation& t) {
    return std::all_of(t.points.begin(), t.points.end(), [](const Vector2f& p) {
        return std::isfinite(p.X()) && std::isfinite(p.Y());
    });
}

// Samples the plane around the outline (uniformly, and just beside its segments) and checks
// that each sample lies in exactly one triangle when the rule keeps its winding number and in
// none otherwise. Samples within a band around any input segment or triangle edge are skipped.
void expectExactCoverage(const Outline& o, int rule, const Triangulation& t, std::mt19937& rng,
                         int samples = 1500) {
    SCOPED_TRACE(o.describe() + ", rule " + std::to_string(rule));
    ASSERT_TRUE(t.ok);
    EXPECT_TRUE(allFinite(t));
    const Box box = boundsOf(o);
    if (!(box.extent() > 0)) {
        return;
    }
    const double band = std::max(1e-5 * box.extent(), 32 * box.maxAbs() * std::ldexp(1.0, -24));

    std::vector<std::array<P, 3>> tris;
    std::vector<Box> triBoxes;
    for (size_t i = 0; i + 2 < t.indices.size(); i += 3) {
        tris.push_back({toP(t.points[t.indices[i]]), toP(t.points[t.indices[i + 1]]),
                        toP(t.points[t.indices[i + 2]])});
        triBoxes.emplace_back();
        for (const P& v : tris.back()) {
            triBoxes.back().add(v);
        }
    }
    std::vector<std::array<P, 2>> segs;
    for (size_t i = 0; i + 1 < o.indices.size(); i += 2) {
        segs.push_back({toP(o.points[o.indices[i]]), toP(o.points[o.indices[i + 1]])});
    }

    std::uniform_real_distribution<double> unit(0, 1);
    const double margin = 0.1 * box.extent();
    int checked = 0, failures = 0;
    for (int s = 0; s < samples && failures < 3; ++s) {
        P q;
        const auto& seg = segs[rng() % segs.size()];
        const double dx = seg[1].x - seg[0].x, dy = seg[1].y - seg[0].y, len = std::hypot(dx, dy);
        if (s % 2 == 0 || len == 0) {
            q = {box.x0 - margin + unit(rng) * (box.x1 - box.x0 + 2 * margin),
                 box.y0 - margin + unit(rng) * (box.y1 - box.y0 + 2 * margin)};
        } else {  // just beside a segment, where misplaced edges show first
            const double u = unit(rng), off = (rng() % 2 ? 1 : -1) * band * (1.5 + 20 * unit(rng));
            q = {seg[0].x + u * dx - off * dy / len, seg[0].y + u * dy + off * dx / len};
        }
        const bool nearSegment = std::any_of(segs.begin(), segs.end(), [&](const auto& g) {
            return distanceToSegment(q, g[0], g[1]) < band;
        });
        if (nearSegment) {
            continue;
        }
        int inside = 0;
        bool nearEdge = false;
        for (size_t i = 0; i < tris.size() && !nearEdge; ++i) {
            if (!triBoxes[i].contains(q, band)) {
                continue;
            }
            const auto& v = tris[i];
            for (int e = 0; e < 3; ++e) {
                nearEdge = nearEdge || distanceToSegment(q, v[e], v[(e + 1) % 3]) < band;
            }
            const double c0 = cross(v[0], v[1], q), c1 = cross(v[1], v[2], q),
                         c2 = cross(v[2], v[0], q);
            inside += (c0 > 0 && c1 > 0 && c2 > 0) || (c0 < 0 && c1 < 0 && c2 < 0);
        }
        if (nearEdge) {
            continue;
        }
        ++checked;
        const int w = windingNumber(o, q);
        if (inside != (keptBy(rule, w) ? 1 : 0)) {
            ++failures;
            ADD_FAILURE() << "sample (" << q.x << ", " << q.y << ") with winding " << w
                          << " lies in " << inside << " triangles";
        }
    }
    EXPECT_GE(checked, samples / 10) << "too few samples away from the edges";
}

void expectExactCoverageUnderBothRules(const Outline& o, std::mt19937& rng,
                                       bool skipDegenerate = true, int samples = 1500) {
    for (int rule : {kNonZero, kEvenOdd}) {
        expectExactCoverage(o, rule, triangulate(o, rule, skipDegenerate), rng, samples);
    }
}

Outline star(int n, int k, float radius, double phase = 0.3) {
    return Outline("star {" + std::to_string(n) + "/" + std::to_string(k) + "}")
        .polygon(0, 0, radius, n, k, phase);
}

std::vector<Outline> loadOutlines(const std::string& file) {
    std::ifstream in(std::string(TQSVG_TEST_DATA_DIR "/triangulation/") + file);
    std::vector<Outline> outlines;
    std::string line, word;
    while (std::getline(in, line)) {
        std::istringstream s(line);
        if (!(s >> word) || word[0] == '#') {
            continue;
        }
        if (word == "case") {
            outlines.emplace_back();
            s >> outlines.back().name;
        } else if (word == "contour" || word == "run" || word == "chain") {
            std::vector<Vector2f> pts;
            float x, y;
            while (s >> x >> y) {
                pts.emplace_back(x, y);
            }
            Outline& o = outlines.back();
            word == "run" ? o.run(pts) : word == "chain" ? o.chain(pts) : o.contour(pts);
        } else if (word == "area") {
            s >> outlines.back().nonZeroArea >> outlines.back().evenOddArea;
        } else if (word == "self") {
            unsigned int k;
            s >> k;
            outlines.back().indices.insert(outlines.back().indices.end(), {k, k});
        }
    }
    return outlines;
}

}  // namespace

// Refusals of invalid input, the output's trapezoid layout and appending to what the output
// arrays held are checked by the fuzz target's replay of its seeds (fuzz_triangulate.cpp).

TEST(TriangulationContract, VerticalSidesKeepTheirExactX) {
    // Every corner on a vertical side, also where other segments cross or end on it, has
    // exactly the side's x: neighbouring shapes sharing the side meet without a seam.
    struct Case {
        Outline outline;
        float x, y0, y1;  // the vertical side
    };
    std::vector<Case> cases;
    Outline sides("vertical sides around a diamond hole");
    sides.contour(
        {{0.1f, 0.3f}, {3.7f, -1.9f}, {7.3f, 0.7f}, {7.3f, 9.1f}, {4.4f, 11.3f}, {0.1f, 8.9f}});
    sides.contour({{3.7f, 2.1f}, {2.2f, 4.4f}, {3.7f, 6.6f}, {5.1f, 4.4f}});
    cases.push_back({sides, 0.1f, 0.3f, 8.9f});
    cases.push_back({sides, 7.3f, 0.7f, 9.1f});
    for (float x : {0.0f, 0.1f, 37.7f}) {
        Outline crossed("triangle across a vertical side");
        crossed.rect(x, 0, x + 100, 100).contour({{x - 10, 50}, {x + 20, 40}, {x + 20, 60}});
        cases.push_back({crossed, x, 0, 100});
    }
    for (const Case& c : cases) {
        const double near = 1e-3 * boundsOf(c.outline).extent();
        for (int rule : {kNonZero, kEvenOdd}) {
            const Triangulation t = triangulate(c.outline, rule);
            SCOPED_TRACE(c.outline.describe() + ", rule " + std::to_string(rule));
            ASSERT_TRUE(t.ok);
            std::ostringstream off;
            off.precision(9);
            for (size_t q = 0; q + 3 < t.points.size(); q += 4) {
                for (auto [top, bottom] : {std::array<int, 2>{1, 2}, {0, 3}}) {  // left, right
                    const Vector2f& a = t.points[q + top];
                    const Vector2f& b = t.points[q + bottom];
                    const bool onSide =
                        std::abs(a.X() - c.x) < near && std::abs(b.X() - c.x) < near &&
                        std::min(a.Y(), b.Y()) >= c.y0 && std::max(a.Y(), b.Y()) <= c.y1;
                    if (onSide && (a.X() != c.x || b.X() != c.x)) {
                        off << " (" << a.X() << ", " << a.Y() << ")-(" << b.X() << ", " << b.Y()
                            << ")";
                    }
                }
            }
            EXPECT_EQ(off.str(), "") << "sides off x = " << c.x;
        }
    }
}

// Working memory is kept between calls on a thread: nothing of an earlier outline (a large one
// that grew it, one that failed, one under the other rule) may show in the next result.
TEST(TriangulationContract, CallsDoNotSeeEarlierCalls) {
    const Outline small = Outline("squares").rect(0, 0, 50, 50).rect(10, 10, 20, 20, false);
    const Triangulation first = triangulate(small, kEvenOdd);
    ASSERT_TRUE(first.ok);
    Outline broken("index out of range");
    broken.points = {{0, 0}, {1, 0}};
    broken.indices = {0, 1, 1, 7};
    for (const Outline& before : {star(101, 37, 1e6f), broken, star(7, 3, 5)}) {
        triangulate(before, kNonZero);
        const Triangulation again = triangulate(small, kEvenOdd);
        ASSERT_TRUE(again.ok) << "after " << before.describe();
        EXPECT_EQ(again.points, first.points) << "after " << before.describe();
        EXPECT_EQ(again.indices, first.indices) << "after " << before.describe();
    }
}

// tests/data/triangulation/areas.txt, at three scales.
TEST(TriangulationArea, MatchesTheExactAreaUnderTheRule) {
    const std::vector<Outline> outlines = loadOutlines("areas.txt");
    ASSERT_GE(outlines.size(), 10u);
    for (const Outline& outline : outlines) {
        for (double scale : {1.0, 1e30, 1e-30}) {
            const Outline o = outline.transformed(scale);
            for (int rule : {kNonZero, kEvenOdd}) {
                const Triangulation t = triangulate(o, rule);
                ASSERT_TRUE(t.ok) << o.describe() << ", rule " << rule;
                const double expected =
                    (rule == kNonZero ? o.nonZeroArea : o.evenOddArea) * scale * scale;
                EXPECT_NEAR(triangleArea(t), expected, 1e-5 * expected)
                    << o.describe() << ", rule " << rule << ", scale " << scale;
            }
        }
    }
}

// Each generator makes `count` outlines, the k-th from its own random sequence; every one must be
// covered exactly under both rules.
TEST(TriangulationCoverage, GeneratedOutlines) {
    using Rng = std::mt19937;
    const std::vector<Outline> data = loadOutlines("degenerate.txt");
    ASSERT_GE(data.size(), 20u);
    std::vector<Outline> farShapes{
        star(7, 3, 100),
        Outline("squares").rect(0, 0, 50, 50).rect(10, 10, 20, 20, false).rect(15, 15, 40, 30)};
    for (const Outline& o : data) {
        for (const char* name : {"vertex-on-slanted-edge", "slanted-collinear-overlap",
                                 "comb-of-spikes", "crossing-slivers"}) {
            if (o.name == name) {
                farShapes.push_back(o);
            }
        }
    }
    ASSERT_EQ(farShapes.size(), 6u);
    const std::array<std::array<double, 3>, 6> placements{{{1e30, 0, 0},
                                                           {1e-30, 0, 0},
                                                           {1e36, -3e37, 1e37},
                                                           {3e36, 0, 0},
                                                           {1, 1e5, -2e5},
                                                           {1e-3, 1, 1}}};
    const std::vector<std::array<int, 2>> stars{{5, 2}, {7, 2}, {7, 3}, {9, 4}, {12, 5}, {101, 37}};

    struct Generator {
        const char* name;
        unsigned count;
        std::function<Outline(unsigned, Rng&)> make;
        int samples = 1500;
        bool alternateSkip = false;  // every other outline with skipDegenerate off
    };
    const Generator generators[] = {
        {"random polygons", 30,
         [](unsigned k, Rng& rng) {
             std::uniform_real_distribution<float> coord(-100, 100);
             Outline o;
             for (unsigned c = 0; c < 1 + k % 3; ++c) {
                 std::vector<Vector2f> pts(3 + rng() % 25);
                 for (Vector2f& p : pts) {
                     p = Vector2f(coord(rng), coord(rng));
                 }
                 o.contour(pts);
             }
             return o;
         }},
        // Vertices on a coarse lattice: repeated points, zero-length, horizontal, vertical and
        // collinear overlapping segments, and vertices on other segments all come up often.
        {"lattice polygons", 150,
         [](unsigned k, Rng& rng) {
             const unsigned lattice = 2 + k % 5;
             Outline o;
             for (unsigned c = 0; c < 1 + k % 4; ++c) {
                 std::vector<Vector2f> pts(2 + rng() % 10);
                 for (Vector2f& p : pts) {
                     p = Vector2f(0.75f * (rng() % (lattice + 1)), 1.25f * (rng() % (lattice + 1)));
                 }
                 o.contour(pts);
             }
             if (k % 3 == 0) {  // segments from a point to itself
                 o.indices.insert(o.indices.end(), {1, 1, 0, 0});
             }
             return o;
         },
         1000, true},
        {"star polygons", 2 * static_cast<unsigned>(stars.size()),
         [&](unsigned k, Rng&) {
             const auto& nk = stars[(k - 1) / 2];
             return star(nk[0], nk[1], 100, k % 2 ? kPi / 2 : 0.3);
         }},
        // Long bands 20 wide, 0.01 to 0.04 radians apart (so their edges cross over hundreds of
        // units), around nearly horizontal, nearly vertical or diagonal directions.
        {"nearly parallel bands", 12,
         [](unsigned k, Rng& rng) {
             std::uniform_real_distribution<double> jitter(-1e-3, 1e-3), shift(-30, 30);
             const double base = std::array<double, 3>{1e-3, kPi / 2 - 1e-3, kPi / 4}[k % 3];
             Outline o;
             for (int b = 0; b < 4; ++b) {
                 const double a = base + b * 0.01 * (1 + k % 4) + jitter(rng);
                 const double c = std::cos(a), s = std::sin(a), w = 10, l = 500;
                 const P m{500 + shift(rng), 500 + shift(rng)};
                 std::vector<Vector2f> pts;
                 for (auto [u, v] :
                      std::array<std::array<double, 2>, 4>{{{-l, -w}, {l, -w}, {l, w}, {-l, w}}}) {
                     pts.emplace_back(float(m.x + u * c - v * s), float(m.y + u * s + v * c));
                 }
                 if (rng() % 2) {
                     std::reverse(pts.begin(), pts.end());
                 }
                 o.contour(pts);
             }
             return o;
         }},
        {"touching, repeated and overlapping outlines (data file)",
         2 * static_cast<unsigned>(data.size()),
         [&](unsigned k, Rng&) { return data[(k - 1) / 2]; }, 1000, true},
        {"huge, tiny and far-off coordinates", 6 * 6,
         [&](unsigned k, Rng&) {
             const auto& at = placements[(k - 1) / 6];
             return farShapes[(k - 1) % 6].transformed(at[0], at[1], at[2]);
         },
         600},
        // Far below the float limit, yet an edge of slope 10 reaches it in y - slope * x.
        {"steep triangle", 1,
         [](unsigned, Rng&) {
             return Outline().contour({{5.4e37f, 6e37f}, {1.8e37f, 1.5e37f}, {6e37f, 0}});
         }},
    };
    for (const Generator& g : generators) {
        for (unsigned k = 1; k <= g.count; ++k) {
            Rng rng(k * 7919);
            Outline o = g.make(k, rng);
            o.name = std::string(g.name) + " #" + std::to_string(k) +
                     (o.name.empty() ? "" : " (" + o.name + ")");
            expectExactCoverageUnderBothRules(o, rng, !(g.alternateSkip && k % 2 == 0), g.samples);
            if (HasFailure()) {
                return;  // one outline to debug is enough
            }
        }
    }
}
