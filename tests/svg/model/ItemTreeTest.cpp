#include "svg/tqSvg.h"

#include <array>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using namespace tq::svg;
using Wm4::Matrix3f;
using Wm4::Vector2f;

namespace {

std::array<float, 2> xy(const Vector2f& v) {
    return {v.X(), v.Y()};
}

std::vector<ItemType> childTypes(const Node& node) {
    std::vector<ItemType> types;
    for (const auto& child : node.getChildren()) {
        types.push_back(child ? child->getType() : static_cast<ItemType>(255));
    }
    return types;
}

template <class T>
const T& childAt(const Node& node, std::size_t index) {
    auto it = node.getChildren().begin();
    std::advance(it, static_cast<std::ptrdiff_t>(index));
    return dynamic_cast<const T&>(**it);
}

const Matrix3f kTranslate(1, 0, 5, 0, 1, 7, 0, 0, 1);

}  // namespace

TEST(ItemTree, EveryClassReportsItsFixedTypeValue) {
    const std::pair<std::unique_ptr<ItemInterface>, int> items[] = {
        {std::make_unique<Document>(), 0}, {std::make_unique<Node>(), 1},
        {std::make_unique<Line>(), 2},     {std::make_unique<Rect>(), 3},
        {std::make_unique<Circle>(), 4},   {std::make_unique<Path>(), 5},
        {std::make_unique<Text>(), 6},     {std::make_unique<Image>(), 7},
    };
    for (const auto& [item, value] : items) {
        EXPECT_EQ(static_cast<int>(item->getType()), value);
        EXPECT_FALSE(item->getTransform().has_value());
        EXPECT_FALSE(item->getId().has_value());
        EXPECT_EQ(item->getProperties(), RenderingProperties());
    }
}

TEST(ItemTree, DefaultShapesAreDegenerateExceptTheUnitSquare) {
    const Rect rect;
    EXPECT_EQ(xy(rect.position), (std::array<float, 2>{0, 0}));
    EXPECT_EQ(xy(rect.size), (std::array<float, 2>{1, 1}));
    EXPECT_EQ(xy(rect.radius), (std::array<float, 2>{0, 0}));
    EXPECT_EQ(xy(Rect(Vector2f(2, 3), Vector2f(4, 5)).radius), (std::array<float, 2>{0, 0}));
    EXPECT_EQ(Circle().radius, 0.0f);
    EXPECT_EQ(xy(Line().end), (std::array<float, 2>{0, 0}));

    const Text text;
    EXPECT_TRUE(text.text.empty());
    EXPECT_FALSE(text.fontFamily || text.fontSize || text.textLength || text.xmlSpacePreserve ||
                 text.bold || text.italic || text.underline);
    const Image image;
    EXPECT_EQ(xy(image.size), (std::array<float, 2>{0, 0}));
    EXPECT_TRUE(image.href.empty());
    EXPECT_FALSE(image.preserveAspectRatio.has_value());
    EXPECT_TRUE(Path().commands.empty());
    EXPECT_FALSE(Document().getViewbox().has_value());
    EXPECT_FALSE(Document().getStyle().has_value());
}

TEST(ItemTree, NodeCopyDropsNullAndNestedDocumentChildren) {
    Node group;
    group.editChildren().push_back(std::make_shared<Document>());
    group.editChildren().push_back(nullptr);
    group.editChildren().push_back(std::make_shared<Rect>(Vector2f(1, 2)));
    auto inner = std::make_shared<Node>();
    inner->editChildren().push_back(std::make_shared<Document>());
    inner->editChildren().push_back(nullptr);
    group.editChildren().push_back(inner);

    const Node copy(group);
    ASSERT_EQ(childTypes(copy), (std::vector<ItemType>{ItemType::Rect, ItemType::Node}));
    EXPECT_EQ(xy(childAt<Rect>(copy, 0).position), (std::array<float, 2>{1, 2}));
    EXPECT_TRUE(childAt<Node>(copy, 1).getChildren().empty());
    EXPECT_EQ(group.getChildren().size(), 4u);  // the source keeps what it had
}

TEST(ItemTree, NodeCopyIsDeepOrderedAndIndependent) {
    Node source;
    source.editId() = "root";
    source.editTransform() = kTranslate;
    auto group = std::make_shared<Node>();
    group->editProperties().stroke = "blue";
    auto circle = std::make_shared<Circle>(Vector2f(1, 1), 2.0f);
    group->editChildren().push_back(circle);
    auto image = std::make_shared<Image>();
    image->preserveAspectRatio = AspectRatioAlign::XMidYMax;
    group->editChildren().push_back(image);
    source.editChildren().push_back(std::make_shared<Line>(Vector2f(0, 0), Vector2f(3, 4)));
    source.editChildren().push_back(group);
    auto path = std::make_shared<Path>();
    path->commands.push_back({Path::CommandType::CubicBezierRel, {1, 2, 3, 4, 5, 6}});
    source.editChildren().push_back(path);
    auto text = std::make_shared<Text>(Vector2f(), "x");
    text->editId() = "t";
    text->editTransform() = kTranslate;
    text->textLength = UnitValue(3, Unit::Em);
    source.editChildren().push_back(text);

    Node copy(source);
    EXPECT_EQ(copy.getId(), std::optional<std::string>("root"));
    EXPECT_EQ(copy.getTransform(), std::optional<Matrix3f>(kTranslate));
    ASSERT_EQ(childTypes(copy), (std::vector<ItemType>{ItemType::Line, ItemType::Node,
                                                       ItemType::Path, ItemType::Text}));
    EXPECT_EQ(xy(childAt<Line>(copy, 0).end), (std::array<float, 2>{3, 4}));
    EXPECT_EQ(childAt<Path>(copy, 2).commands, path->commands);
    const Text& textCopy = childAt<Text>(copy, 3);
    EXPECT_EQ(textCopy.text, "x");
    EXPECT_EQ(textCopy.getId(), std::optional<std::string>("t"));
    EXPECT_EQ(textCopy.getTransform(), std::optional<Matrix3f>(kTranslate));
    EXPECT_EQ(textCopy.textLength, std::optional<UnitValue>(UnitValue(3, Unit::Em)));
    const Node& groupCopy = childAt<Node>(copy, 1);
    EXPECT_EQ(groupCopy.getProperties().stroke, std::optional<std::string>("blue"));
    ASSERT_EQ(childTypes(groupCopy), (std::vector<ItemType>{ItemType::Circle, ItemType::Image}));
    EXPECT_EQ(childAt<Image>(groupCopy, 1).preserveAspectRatio,
              std::optional<AspectRatioAlign>(AspectRatioAlign::XMidYMax));

    // Editing the copy, deep down, leaves the source alone.
    auto& copiedCircle = const_cast<Circle&>(childAt<Circle>(groupCopy, 0));
    EXPECT_NE(&copiedCircle, circle.get());
    copiedCircle.radius = 9;
    const_cast<Node&>(groupCopy).editChildren().clear();
    copy.editChildren().pop_front();
    EXPECT_EQ(circle->radius, 2.0f);
    EXPECT_EQ(group->getChildren().size(), 2u);
    EXPECT_EQ(source.getChildren().size(), 4u);
}

TEST(ItemTree, DocumentCopyKeepsItsTypeViewboxStyleAndChildren) {
    Document document;
    document.editViewbox() = BoundingBox(Vector2f(0, 0), Vector2f(10, 20));
    document.editStyle() = ".a { fill: red }";
    document.editId() = "doc";
    auto group = std::make_shared<Node>();
    group->editChildren().push_back(std::make_shared<Rect>());
    document.editChildren().push_back(group);

    const Document copy(document);
    EXPECT_EQ(copy.getType(), ItemType::Document);
    EXPECT_EQ(copy.getId(), std::optional<std::string>("doc"));
    EXPECT_EQ(copy.getViewbox(), document.getViewbox());
    EXPECT_EQ(copy.getStyle(), document.getStyle());
    ASSERT_EQ(childTypes(copy), (std::vector<ItemType>{ItemType::Node}));
    EXPECT_EQ(childTypes(childAt<Node>(copy, 0)), (std::vector<ItemType>{ItemType::Rect}));
    EXPECT_NE(copy.getChildren().front().get(), group.get());
}
