// The standard reading profile normalises SVG as browsers draw it into the tree the library
// already has: each construct of tests/data/read/standard.txt reads into the tree its drawing has
// in the library's own subset, and a document within the subset, free of its deliberate quirks,
// segments into the same geometry under both profiles.
#include "svg/tqSvg.h"

#include <list>
#include <random>
#include <sstream>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "CaseFile.h"
#include "LibraryTest.h"
#include "TreeEquality.h"

using namespace tq::svg;
using tq::test::CanonicalText;

namespace {

class StandardProfile : public tq::test::LibraryTest {
protected:
    static tq::test::Loaded standard(const std::string& text) {
        return load(text, false, {}, LoadProfile::Standard);
    }
};

}  // namespace

TEST_F(StandardProfile, ConstructsReadAsTheirDrawingInTheSubset) {
    const auto blocks = tq::test::ReadBlocks("read/standard.txt");
    ASSERT_GT(blocks.size(), 15u);
    for (const auto& block : blocks) {
        SCOPED_TRACE(block.title);
        const auto section = [&](const char* name) {
            const auto it = block.sections.find(name);
            return it == block.sections.end() ? std::string() : it->second;
        };
        const tq::test::Loaded read = standard(section("standard"));
        if (!section("refused").empty()) {
            EXPECT_FALSE(read.ok);
            EXPECT_EQ(read.messages, section("refused"));
            continue;
        }
        ASSERT_TRUE(read.ok) << read.messages;
        EXPECT_EQ(read.messages, section("messages"));
        if (!section("tree").empty()) {
            EXPECT_EQ(CanonicalText(read.root.get()), section("tree") + "\n");
            continue;
        }
        const tq::test::Loaded subset = load(section("subset"));
        ASSERT_TRUE(subset.ok) << subset.messages;
        EXPECT_EQ(CanonicalText(read.root.get()), CanonicalText(subset.root.get()));
    }
}

namespace {

// Random documents within the subset and free of its deliberate quirks: a smooth curve only
// after absolute curves, arc radii that reach their end points, opacity on shapes only (the
// subset replaces a group's, the standard profile multiplies it down), no corner radii, no
// rotation about a centre, no negative size or stroke width, colours both profiles read alike.
class DocumentGenerator {
public:
    explicit DocumentGenerator(std::uint32_t seed) : mRng(seed) {}

    std::string document() {
        std::string out = "<svg viewBox=\"0 0 100 100\">";
        children(out, 0);
        return out + "</svg>";
    }

private:
    int integer(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(mRng); }
    std::string number() { return tq::test::Number(float(integer(-100, 300)) / 2.0f); }
    std::string size() { return tq::test::Number(float(integer(0, 200)) / 2.0f); }
    std::string numbers(int count) {
        std::string out;
        for (int i = 0; i < count; ++i) {
            out += (i ? " " : "") + number();
        }
        return out;
    }
    std::string paint() {
        static const char* kPaints[] = {"red", "#0f0", "#123456", "none", "teal"};
        return kPaints[integer(0, 4)];
    }
    std::string presentation(bool shape) {
        std::string out = " fill=\"" + paint() + "\"";
        if (integer(0, 1)) {
            out += " stroke=\"" + paint() + "\" stroke-width=\"" + size() + "\"";
        }
        if (shape && integer(0, 2) == 0) {
            out += " opacity=\"0.5\" fill-opacity=\"0.75\"";
        }
        return out;
    }

    std::string pathData() {
        std::string d = "M" + numbers(2);
        bool absoluteCurve = false;
        for (int i = integer(1, 12); i > 0; --i) {
            const int kind = integer(0, absoluteCurve ? 8 : 7);
            const bool wasAbsoluteCurve = absoluteCurve;
            absoluteCurve = false;
            switch (kind) {
                case 0:
                    d += " L" + numbers(2);
                    break;
                case 1:
                    d += " l" + numbers(2);
                    break;
                case 2:
                    d += integer(0, 1) ? " H" + number() : " v" + number();
                    break;
                case 3:
                    d += " C" + numbers(6);
                    absoluteCurve = true;
                    break;
                case 4:
                    d += " c" + numbers(6);
                    break;
                case 5:
                    d += " a3 3 0 1 0 1 1";
                    break;
                case 6:
                    d += " A300 300 " + number() + " 0 1 " + numbers(2);
                    break;
                case 7:
                    d += " Z";
                    break;
                default:
                    d += " S" + numbers(4);
                    absoluteCurve = wasAbsoluteCurve;
                    break;
            }
        }
        return d;
    }

    void children(std::string& out, int depth) {
        for (int i = integer(1, 4); i > 0; --i) {
            switch (integer(0, depth < 3 ? 5 : 4)) {
                case 0:
                    out += "<rect x=\"" + number() + "\" y=\"" + number() + "\" width=\"" + size() +
                           "\" height=\"" + size() + "\"" + presentation(true) + "/>";
                    break;
                case 1:
                    out += "<circle cx=\"" + number() + "\" r=\"" + size() + "\"" +
                           presentation(true) + "/>";
                    break;
                case 2:
                    out += "<line x1=\"" + number() + "\" y2=\"" + number() + "\"" +
                           presentation(true) + "/>";
                    break;
                case 5:
                    out += "<g transform=\"translate(" + numbers(2) + ") scale(" + number() +
                           ") rotate(" + number() + ")\"" + presentation(false) + ">";
                    children(out, depth + 1);
                    out += "</g>";
                    break;
                default:
                    out += "<path d=\"" + pathData() + "\"" + presentation(true) + "/>";
                    break;
            }
        }
    }

    std::mt19937 mRng;
};

// Every number of a tree's segmentation, in order.
std::string Geometry(const ItemInterface& root) {
    SegmenterVisitor segmenter(root);
    std::ostringstream out;
    out << "error=" << segmenter.hasError() << "\n";
    for (const auto& primitive : segmenter.getSegmentedPrimitives()) {
        for (const auto* points : {&primitive->points, &primitive->trianglePoints}) {
            for (const Wm4::Vector2f& p : *points) {
                out << tq::test::Number(p.X()) << "," << tq::test::Number(p.Y()) << " ";
            }
            out << "\n";
        }
        for (const auto* indices : {&primitive->indices, &primitive->triangleIndices}) {
            for (unsigned int i : *indices) {
                out << i << " ";
            }
            out << "\n";
        }
        const Wm4::ColorRGBA fill = primitive->properties.parseFillColor();
        out << "fill " << fill.R() << " " << fill.G() << " " << fill.B() << " " << fill.A() << "\n";
    }
    return out.str();
}

}  // namespace

TEST_F(StandardProfile, SubsetDocumentsSegmentAlikeUnderBothProfiles) {
    for (std::uint32_t seed = 1; seed <= 150; ++seed) {
        const std::string document = DocumentGenerator(seed).document();
        SCOPED_TRACE(document);
        const tq::test::Loaded subset = load(document);
        const tq::test::Loaded read = standard(document);
        ASSERT_TRUE(subset.ok) << subset.messages;
        ASSERT_TRUE(read.ok) << read.messages;
        EXPECT_EQ(read.messages, "");
        EXPECT_EQ(Geometry(*read.root), Geometry(*subset.root));
    }
}

// The element budget bounds what a document may build: every element counts, drawn or not; the
// subset reads any number.
TEST_F(StandardProfile, DocumentsPastTheElementBudgetAreRefused) {
    const std::string document = "<svg><g><rect/><rect/></g><text/></svg>";  // five elements
    for (const auto& [budget, profile, loads] :
         {std::tuple{std::size_t(5), LoadProfile::Standard, true},
          std::tuple{std::size_t(4), LoadProfile::Standard, false},
          std::tuple{std::size_t(0), LoadProfile::Standard, true},
          std::tuple{std::size_t(1), LoadProfile::Subset, true}}) {
        LoadOptions options;
        options.profile = profile;
        options.maxElements = budget;
        tqIoDeviceMemory device(document);
        tq::test::Item root;
        std::list<std::string> messages;
        EXPECT_EQ(tqSvgIOManager::get().loadSvg(root, device, "svg", nullptr, &options, &messages),
                  loads)
            << budget;
        if (!loads) {
            EXPECT_EQ(messages, std::list<std::string>{
                                    "The document has more than 4 elements: refused as too "
                                    "large; raise the element bound to read it"});
        }
    }
}

// Stroke properties the subset refuses reach the tree from attributes, sheets and style, and a
// pathLength scales the dash offset with the dashes.
TEST_F(StandardProfile, MiterLimitsAndDashOffsetsAreRead) {
    const auto loaded = standard(
        "<svg><style>.m { stroke-miterlimit: 8 }</style><path d=\"M0 0h100\" class=\"m\" "
        "stroke-dashoffset=\"2\" pathLength=\"50\" stroke-dasharray=\"1\"/><line x2=\"1\" "
        "style=\"stroke-dashoffset: -1.5; stroke-miterlimit: 1.5\"/></svg>");
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    const auto& children = static_cast<const Node&>(*loaded.root).getChildren();
    ASSERT_EQ(children.size(), 2u);
    const RenderingProperties& path = children.front()->getProperties();
    const RenderingProperties& line = children.back()->getProperties();
    EXPECT_EQ(path.strokeMiterlimit, std::optional<float>(8.0f));
    EXPECT_EQ(path.strokeDashoffset, std::optional<float>(4.0f));
    EXPECT_EQ(line.strokeDashoffset, std::optional<float>(-1.5f));
    EXPECT_EQ(line.strokeMiterlimit, std::optional<float>(1.5f));
}
