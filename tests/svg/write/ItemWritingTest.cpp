#include "svg/tqSvg.h"
#include "svg/write/detail/SvgSaveWriter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CapturingLog.h"

using namespace tq::svg;

namespace {

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";

// The document text after the declaration, saved without the exporter and date comments.
std::string saved(const ItemInterface& item, SaveOptions options = SaveOptions()) {
    options.writeHeader = false;
    tqIoDeviceMemory device;
    EXPECT_TRUE(SaveSvgToDevice(item, device, options));
    const std::string& text = device.getContent();
    EXPECT_EQ(text.rfind(kDeclaration, 0), 0u);
    std::string body = text.substr(kDeclaration.size());
    while (!body.empty() && body.back() == '\n') {
        body.pop_back();
    }
    return body;
}

Path::Command command(Path::CommandType type, std::vector<float> values) {
    return {type, std::move(values)};
}

}  // namespace

// The digits are tqStringUtils's (tested there); the writer adds only the -0 rule.
TEST(NumberFormat, ShortestTextAndNoNegativeZero) {
    EXPECT_EQ(Helpers::floatToSvgNumber(-0.0f, SaveOptions()), "0");
    EXPECT_EQ(Helpers::floatToSvgNumber(-2.5f, SaveOptions()), "-2.5");
    SaveOptions three;
    three.floatPrecision = 3;
    EXPECT_EQ(Helpers::floatToSvgNumber(3.14159f, three), "3.14");
    EXPECT_EQ(Helpers::floatToSvgNumber(-0.0001f, three), "-1e-04");  // shorter than -0.0001
}

TEST(ItemWriting, ShapesWriteTheirAttributesInOrderAndLeaveOutZeros) {
    struct Case {
        std::shared_ptr<ItemInterface> item;
        const char* xml;
    };
    auto rect = std::make_shared<Rect>(Wm4::Vector2f(1, 0), Wm4::Vector2f(3, 4));
    rect->radius = Wm4::Vector2f(0, 2);
    auto line = std::make_shared<Line>(Wm4::Vector2f(0, 1.5f), Wm4::Vector2f(-2, 0));
    auto image = std::make_shared<Image>();
    image->size = Wm4::Vector2f(8, 9);
    image->href = "a.png";
    image->preserveAspectRatio = AspectRatioAlign::XMidYMid;
    auto imageNone = std::make_shared<Image>();
    imageNone->preserveAspectRatio = AspectRatioAlign::None;
    auto text = std::make_shared<Text>(Wm4::Vector2f(0, 7), "a < b & c");
    text->fontFamily = "Serif";
    text->bold = true;
    text->italic = false;
    text->underline = true;
    text->fontSize = 12;
    text->textLength = UnitValue(30, Unit::Px);
    text->xmlSpacePreserve = false;
    const Case cases[] = {
        {std::make_shared<Rect>(), "<rect width=\"1\" height=\"1\"/>"},
        {rect, "<rect x=\"1\" width=\"3\" height=\"4\" ry=\"2\"/>"},
        {std::make_shared<Circle>(), "<circle r=\"0\"/>"},
        {std::make_shared<Circle>(Wm4::Vector2f(0, 2), 5), "<circle r=\"5\" cy=\"2\"/>"},
        {std::make_shared<Line>(), "<line/>"},
        {line, "<line y1=\"1.5\" x2=\"-2\"/>"},
        {image,
         "<image width=\"8\" height=\"9\" href=\"a.png\" preserveAspectRatio=\"xMidYMid\"/>"},
        {imageNone, "<image width=\"0\" height=\"0\" href=\"\"/>"},
        {std::make_shared<Node>(), "<g/>"},
        {text,
         "<text y=\"7\" font-family=\"Serif\" font-weight=\"bold\" text-decoration=\"underline\" "
         "font-size=\"12\" textLength=\"30px\" xml:space=\"default\">a &lt; b &amp; c</text>"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(saved(*c.item), c.xml);
    }
}

TEST(ItemWriting, CommonAttributesFollowTheItemsOwn) {
    Rect rect;
    rect.editId() = "r1";
    RenderingProperties& p = rect.editProperties();
    p.vectorEffect = VectorEffect::NonScalingStroke | VectorEffect::NonRotation;
    p.strokeDasharray = std::vector<UnitValue>{{5, Unit::Px}, {3, Unit::None}, {1, Unit::Count}};
    p.strokeLinejoin = static_cast<LineJoin>(7);
    p.strokeLinecap = LineCap::Square;
    p.opacity = 0.5f;
    p.className = "c";
    p.fillOpacity = 0.25f;
    p.fill = "red";
    p.stroke = "";  // present but empty: not written
    p.strokeOpacity = 1;
    p.strokeWidth = 2;
    rect.editTransform() = Wm4::Matrix3f(1, 0, 5, 0, 1, 6, 0, 0, 1);
    EXPECT_EQ(
        saved(rect),
        "<rect width=\"1\" height=\"1\" id=\"r1\" stroke-width=\"2\" stroke-opacity=\"1\" "
        "fill=\"red\" fill-opacity=\"0.25\" class=\"c\" opacity=\"0.5\" stroke-linecap=\"square\" "
        "stroke-linejoin=\"miter\" stroke-dasharray=\"5px 3 1\" "
        "vector-effect=\"non-scaling-stroke non-rotation\" transform=\"matrix(1 0 0 1 5 6)\"/>");

    Node group;
    group.editProperties().vectorEffect = VectorEffect::None;
    group.editProperties().strokeDasharray = std::vector<UnitValue>{};
    group.editTransform() = Wm4::Matrix3f::IDENTITY;
    EXPECT_EQ(saved(group), "<g stroke-dasharray=\"\" vector-effect=\"none\"/>");

    group.editTransform() = Wm4::Matrix3f(1, -0.0f, 0, 0, 1, 0, 0, 0, 1);  // not bit-identical
    EXPECT_EQ(
        saved(group),
        "<g stroke-dasharray=\"\" vector-effect=\"none\" transform=\"matrix(1 0 0 1 0 0)\"/>");
}

TEST(ItemWriting, PathDataIsCompactWithImplicitRepeats) {
    using T = Path::CommandType;
    Path path;
    path.commands = {command(T::MoveTo, {0, 0}),
                     command(T::LineTo, {10, 0}),
                     command(T::LineTo, {10, -10}),
                     command(T::ClosePath, {}),
                     command(T::MoveToRel, {0.5f, 1}),
                     command(T::LineToRel, {-1, 2}),
                     command(T::LineTo, {3, 4}),
                     command(T::EllipticalArc, {1, 2, 0, 0.5f, 0, 3, 4}),
                     command(T::EllipticalArc, {1, 2, 0, 0, 1, 5, 6}),
                     command(T::HLineTo, {1}),
                     command(T::HLineTo, {-2}),
                     command(T::CubicBezierRel, {1, 2, 3, 4, 5, 6}),
                     command(T::SmoothCubicBezier, {.5f, .5f, 1, 1})};
    EXPECT_EQ(saved(path),
              "<path d=\"M0 0 10 0 10-10Zm0.5 1-1 2L3 4A1 2 0 1 0 3 4 1 2 0 0 1 5 6H1-2c1 2 3 4 5 "
              "6S0.5 0.5 1 1\"/>");
    SaveOptions indent;
    indent.indent = true;
    path.commands = {command(T::MoveTo, {0, 0}), command(T::LineTo, {10, 0}),
                     command(T::LineTo, {10, -10}), command(T::ClosePath, {})};
    EXPECT_EQ(saved(path, indent), "<path d=\"M 0 0 10 0 10 -10 Z\"/>");
    EXPECT_EQ(saved(Path()), "<path d=\"\"/>");
}

TEST(ItemWriting, DocumentWritesNamespaceViewBoxAndStyleFirst) {
    Document document;
    document.editViewbox() = BoundingBox(Wm4::Vector2f(-1, 2), Wm4::Vector2f(9, 12));
    document.editStyle() = ".a{fill:red}";
    document.editChildren().push_back(std::make_shared<Node>());
    EXPECT_EQ(saved(document),
              "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"-1 2 10 10\"><style>\n"
              "/* <![CDATA[ */.a{fill:red}\n/* ]]> */</style><g/></svg>");

    // "]]>" cannot stand in one CDATA section: it is split across two.
    document.editStyle() = "a]]>b]]>";
    EXPECT_EQ(saved(document),
              "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"-1 2 10 10\"><style>\n"
              "/* <![CDATA[ */a]]]]><![CDATA[>b]]]]><![CDATA[>\n/* ]]> */</style><g/></svg>");

    document.editViewbox() = BoundingBox();  // invalid: left out
    document.editStyle() = "";               // empty: no style element
    EXPECT_EQ(saved(document), "<svg xmlns=\"http://www.w3.org/2000/svg\"><g/></svg>");
}

TEST(ItemWriting, NullChildrenAndNestedDocumentsAreWrittenAsTheyStand) {
    Node group;
    group.editChildren().push_back(nullptr);
    group.editChildren().push_back(std::make_shared<Document>());
    EXPECT_EQ(saved(group), "<g><svg xmlns=\"http://www.w3.org/2000/svg\"/></g>");
}

TEST(SavePipeline, HeaderCommentsAndAuthor) {
    Document document;
    tqIoDeviceMemory device;
    SaveOptions options;
    options.author = "Ada";
    ASSERT_TRUE(SaveSvgToDevice(document, device, options));
    const std::string& text = device.getContent();
    const std::string exporter = kDeclaration + "<!--Exporter : tqSvg 3.0.0.1297--><!--Datetime : ";
    EXPECT_EQ(text.rfind(exporter, 0), 0u) << text;
    EXPECT_NE(text.find("--><!--Author : Ada--><svg xmlns="), std::string::npos) << text;

    options.writeHeader = false;
    tqIoDeviceMemory bare;
    ASSERT_TRUE(SaveSvgToDevice(document, bare, options));
    EXPECT_EQ(bare.getContent(),
              kDeclaration + "<!--Author : Ada--><svg xmlns=\"http://www.w3.org/2000/svg\"/>\n");
}

TEST(SavePipeline, InvalidTextStopsTheWalkAndIsLogged) {
    tq::test::CapturingLog log;
    Document document;
    document.editChildren() = {std::make_shared<Rect>(),
                               std::make_shared<Text>(Wm4::Vector2f(), "bad \xff byte"),
                               std::make_shared<Circle>()};
    tqIoDeviceMemory device;
    EXPECT_FALSE(SaveSvgToDevice(document, device, SaveOptions()));
    EXPECT_EQ(log.lines, std::vector<std::string>{"2 svg: Text content was not utf8"});
    EXPECT_EQ(device.getContent().find("circle"), std::string::npos);
}

// Deliberate: the pipeline does not look at what the device answers (hosts check the device),
// but it still offers every byte once, in order.
TEST(SavePipeline, DeviceThatRefusesBytesIsOfferedTheWholeDocument) {
    struct Refusing : tqIoDevice {
        bool isOpen() const override { return true; }
        int64 read(char*, int64) override { return -1; }
        int64 write(const char* data, int64 size) override {
            offered.append(data, static_cast<std::size_t>(size));
            return -1;
        }
        void close() override {}
        std::string offered;
    } refusing;
    Document document;
    for (int i = 0; i < 2000; ++i) {
        document.editChildren().push_back(std::make_shared<Rect>(Wm4::Vector2f(float(i), 1.5f)));
    }
    tqIoDeviceMemory accepting;
    ASSERT_TRUE(SaveSvgToDevice(document, accepting, SaveOptions()));
    EXPECT_TRUE(SaveSvgToDevice(document, refusing, SaveOptions()));
    const auto afterHeader = [](const std::string& text) { return text.substr(text.find("<svg")); };
    EXPECT_EQ(afterHeader(refusing.offered), afterHeader(accepting.getContent()));
}

TEST(XmlSpace, PreserveAndDefaultRules) {
    EXPECT_EQ(ApplySvgXMLSpacePreserve("a\tb\nc\rd  e"), "a b c d  e");
    struct Case {
        const char* in;
        const char* out;
    };
    const Case cases[] = {
        {"", ""},        {"  a  b  ", "a b"}, {"a \n b", "a  b"}, {"a \n", "a "},
        {"\n\t a", "a"}, {"a\tb", "a b"},     {"a\r\nb", "ab"},   {"x y \n\n z ", "x y  z"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ApplySvgXMLSpaceDefault(c.in), c.out) << '"' << c.in << '"';
    }
}
