// Save and load are inverse: load, save, load gives an equal tree, and save, load, save gives
// the same bytes. Checked over the documents under tests/data and over random trees.
//
// The random trees leave out what the format deliberately does not carry back:
// - preserveAspectRatio "none" is not written (it reads as 0, the "nothing to write" value);
// - bold, italic and underline that are present but false, and empty class, fill and stroke
//   texts, write nothing;
// - a textLength or dash length with a unit is written with its suffix, which the loader's plain
//   number rule refuses; multi-bit vector effects are written as several keywords, which the
//   loader's one-keyword rule refuses;
// - a transform's third row is never written; -0 is written "0";
// - path data holds only finite numbers (the grammar has no "inf" or "nan"), starts with a
//   moveto, and arc flags are 0 or 1;
// - a viewBox is stored as corners but written as origin and size, so its corners are chosen
//   where that arithmetic is exact;
// - the style sheet is wrapped on every save in a CDATA section inside CSS comments, so after a
//   load it reads "\n/*  */" + sheet + "\n/*  */"; the trees are compared with that in mind.
#include "svg/tqSvg.h"

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "LibraryTest.h"
#include "TreeEquality.h"

using namespace tq::svg;
using tq::test::CanonicalText;

namespace {

class RoundTrip : public tq::test::LibraryTest {
protected:
    static tq::test::Item reload(const std::string& text) {
        const tq::test::Loaded loaded = load(text);
        EXPECT_TRUE(loaded.ok) << loaded.messages << "\n" << text.substr(0, 2000);
        return loaded.root;
    }

    // `tree` as it reads back after a save: a non-empty style sheet gains its wrapper.
    static std::string expectedBack(const ItemInterface& tree) {
        const auto* document = dynamic_cast<const Document*>(&tree);
        if (document == nullptr || !document->getStyle() || document->getStyle()->empty()) {
            return CanonicalText(tree);
        }
        Document copy(*document);
        copy.editStyle() = "\n/*  */" + *document->getStyle() + "\n/*  */";
        return CanonicalText(copy);
    }

    // load(save(tree)) equals tree, and saving that again gives the same bytes.
    static void expectRoundTrip(const ItemInterface& tree, const std::string& label) {
        const std::string first = save(tree);
        const auto reloaded = reload(first);
        ASSERT_TRUE(reloaded) << label;
        EXPECT_EQ(CanonicalText(*reloaded), expectedBack(tree)) << label << "\n" << first;
        if (expectedBack(tree) == CanonicalText(tree)) {
            EXPECT_EQ(save(*reloaded), first) << label;
        }
    }
};

class TreeGenerator {
public:
    explicit TreeGenerator(std::uint32_t seed) : mRng(seed) {}

    std::shared_ptr<Document> document() {
        auto doc = std::make_shared<Document>();
        common(*doc);
        if (chance(2)) {
            const float x = float(integer(-100, 100)), y = float(integer(-100, 100));
            doc->editViewbox() =
                BoundingBox({x, y}, {x + float(integer(0, 500)), y + float(integer(0, 500)) / 4});
        }
        if (chance(3)) {
            doc->editStyle() = ".a { fill: red; }\n" + text(false);
        }
        children(*doc, 0);
        return doc;
    }

private:
    bool chance(int oneIn) { return integer(1, oneIn) == 1; }
    int integer(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(mRng); }
    template <class T, std::size_t N>
    T pick(T (&values)[N]) {
        return values[integer(0, int(N) - 1)];
    }

    // Plain values, awkward values and extremes; never -0 (written as "0").
    float number(bool finite = true) {
        static float kSpecial[] = {0.0f,     1.0f,          -1.0f,          0.1f,
                                   1e-7f,    3.4028235e38f, -3.4028235e38f, 1.17549435e-38f,
                                   1.4e-45f, 16777217.0f,   123456.789f};
        static float kOdd[] = {std::numeric_limits<float>::infinity(),
                               -std::numeric_limits<float>::infinity(),
                               std::numeric_limits<float>::quiet_NaN()};
        const int kind = integer(0, 9);
        if (kind == 0 || (kind == 1 && !finite)) {
            return kind == 0 ? pick(kSpecial) : pick(kOdd);
        }
        if (kind <= 2) {
            const auto bits = static_cast<std::uint32_t>(mRng());
            float value;
            std::memcpy(&value, &bits, sizeof value);
            return std::isfinite(value) && value != 0.0f ? value : 2.5f;
        }
        return float(integer(-100000, 100000)) / float(integer(1, 1000));
    }

    Wm4::Vector2f vector() { return {number(false), number(false)}; }

    // Text with every kind of white space and non-ASCII UTF-8, but only characters XML allows.
    std::string text(bool allowEmpty) {
        static const char* kPieces[] = {"a",  "Z", " ", "\t", "\n",       "\r",
                                        "  ", "&", "<", ">",  "\"",       "'",
                                        "é",  "€", "😀", "中", "\xc2\xa0", "text with words"};
        std::string out;
        for (int i = integer(allowEmpty ? 0 : 1, 8); i > 0; --i) {
            out += pick(kPieces);
        }
        return out;
    }

    std::string colour() {
        static const char* kColours[] = {
            "none",  "red",          "#f00",          "#123456",       "#12345678",
            "#1234", "rgb(1, 2, 3)", "rgba(1,2,3,4)", "rebeccapurple", "rgb(10%,20%,30%)"};
        return pick(kColours);
    }

    template <class Field, class Make>
    void maybe(Field& field, Make make) {
        if (chance(3)) {
            field = make();
        }
    }

    void common(ItemInterface& item) {
        maybe(item.editId(), [&] { return "id" + std::to_string(integer(0, 1000)) + text(true); });
        if (chance(3)) {
            Wm4::Matrix3f m(number(), number(), number(), number(), number(), number(), 0, 0, 1);
            if (m != Wm4::Matrix3f::IDENTITY) {
                item.editTransform() = m;
            }
        }
        RenderingProperties& p = item.editProperties();
        const auto any = [&] { return number(false); };
        maybe(p.opacity, any);
        maybe(p.strokeWidth, any);
        maybe(p.strokeOpacity, any);
        maybe(p.stroke, [&] { return colour(); });
        maybe(p.strokeLinecap, [&] { return static_cast<LineCap>(integer(0, 2)); });
        maybe(p.strokeLinejoin, [&] { return static_cast<LineJoin>(integer(0, 4)); });
        maybe(p.strokeDasharray, [&] {
            std::vector<UnitValue> dashes(static_cast<std::size_t>(integer(0, 4)));
            for (auto& d : dashes) {
                d = UnitValue(number(false), Unit::None);
            }
            return dashes;
        });
        maybe(p.className, [&] { return "c" + text(true); });
        maybe(p.fill, [&] { return colour(); });
        maybe(p.fillOpacity, any);
        maybe(p.vectorEffect, [&] {
            return static_cast<VectorEffect>(integer(0, 4) == 0 ? 0 : 1 << integer(0, 3));
        });
    }

    std::shared_ptr<ItemInterface> shape() {
        std::shared_ptr<ItemInterface> item;
        switch (integer(0, 5)) {
            case 0:
                item = std::make_shared<Line>(vector(), vector());
                break;
            case 1: {
                auto rect = std::make_shared<Rect>(vector(), vector());
                rect->radius = vector();
                item = rect;
                break;
            }
            case 2:
                item = std::make_shared<Circle>(vector(), number(false));
                break;
            case 3:
                item = path();
                break;
            case 4: {
                auto t = std::make_shared<Text>(vector(), text(true));
                maybe(t->fontFamily, [&] { return text(true); });
                maybe(t->fontSize, [&] { return number(false); });
                maybe(t->textLength, [&] { return UnitValue(number(false), Unit::None); });
                maybe(t->xmlSpacePreserve, [&] { return chance(2); });
                for (auto* flag : {&t->bold, &t->italic, &t->underline}) {
                    maybe(*flag, [] { return true; });
                }
                item = t;
                break;
            }
            default: {
                auto image = std::make_shared<Image>();
                image->position = vector();
                image->size = vector();
                image->href = text(true);
                maybe(image->preserveAspectRatio,
                      [&] { return static_cast<AspectRatioAlign>(integer(1, 9)); });
                item = image;
            }
        }
        common(*item);
        return item;
    }

    std::shared_ptr<Path> path() {
        using T = Path::CommandType;
        static const std::size_t kCounts[] = {2, 2, 2, 2, 7, 7, 1, 1, 1, 1, 6, 6, 4, 4, 0};
        auto path = std::make_shared<Path>();
        for (int i = 0, n = integer(0, 12); i < n; ++i) {
            const auto type = static_cast<T>(i == 0 ? integer(0, 1) : integer(0, 14));
            Path::Command command{type, {}};
            for (std::size_t k = 0; k < kCounts[static_cast<int>(type)]; ++k) {
                const bool flag =
                    (type == T::EllipticalArc || type == T::EllipticalArcRel) && (k == 3 || k == 4);
                command.values.push_back(flag ? float(integer(0, 1)) : number(true));
            }
            path->commands.push_back(std::move(command));
        }
        return path;
    }

    void children(Node& node, int depth) {
        for (int i = 0, n = depth > 3 ? 0 : integer(0, 5); i < n; ++i) {
            if (chance(4)) {
                auto group = std::make_shared<Node>();
                common(*group);
                children(*group, depth + 1);
                node.editChildren().push_back(group);
            } else {
                node.editChildren().push_back(shape());
            }
        }
    }

    std::mt19937 mRng;
};

}  // namespace

TEST_F(RoundTrip, RandomTrees) {
    for (std::uint32_t seed = 1; seed <= 3000 && !HasFailure(); ++seed) {
        expectRoundTrip(*TreeGenerator(seed).document(), "seed " + std::to_string(seed));
    }
}

TEST_F(RoundTrip, DocumentsUnderTestData) {
    int count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(TQSVG_TEST_DATA_DIR "/roundtrip")) {
        std::ifstream file(entry.path(), std::ios::binary);
        std::stringstream content;
        content << file.rdbuf();
        const auto first = reload(content.str());
        ASSERT_TRUE(first) << entry.path();
        const auto second = reload(save(*first));
        ASSERT_TRUE(second) << entry.path();
        EXPECT_EQ(CanonicalText(*second), expectedBack(*first)) << entry.path();
        ++count;
    }
    EXPECT_GT(count, 0);
}
