#include "svg/tqSvg.h"

#include <array>
#include <cmath>
#include <memory>

#include <gtest/gtest.h>

using namespace tq::svg;
using Wm4::Matrix3f;
using Wm4::Vector2f;

namespace {

using Corners = std::array<float, 4>;  // min x, min y, max x, max y

Corners corners(const BoundingBox& b) {
    return {b.min.X(), b.min.Y(), b.max.X(), b.max.Y()};
}

const Corners kEmpty{1, 1, -1, -1};

Matrix3f translation(float x, float y) {
    return Matrix3f(1, 0, x, 0, 1, y, 0, 0, 1);
}
Matrix3f scaling(float sx, float sy) {
    return Matrix3f(sx, 0, 0, 0, sy, 0, 0, 0, 1);
}
Matrix3f rotation(float radians) {
    const float c = std::cos(radians);
    const float s = std::sin(radians);
    return Matrix3f(c, -s, 0, s, c, 0, 0, 0, 1);
}

Corners estimate(const ItemInterface& item, bool (*exclude)(const ItemInterface&) = nullptr,
                 const Matrix3f* initial = nullptr) {
    BoundingBox box(Vector2f(-100, -100), Vector2f(100, 100));  // must be reset by the call
    ComputeEstimatedBoundingBox(item, box, exclude, initial);
    return corners(box);
}

template <class T, class... Args>
std::shared_ptr<T> addChild(Node& parent, Args&&... args) {
    auto child = std::make_shared<T>(std::forward<Args>(args)...);
    parent.editChildren().push_back(child);
    return child;
}

}  // namespace

TEST(ItemBoundingVolume, ShapesMapTheirGeometryThroughTheTransform) {
    const Matrix3f shift = translation(10, 20);
    BoundingBox box;

    EXPECT_TRUE(Rect(Vector2f(1, 2), Vector2f(3, 4)).computeEstimatedBoundingVolume(box, shift));
    EXPECT_EQ(corners(box), (Corners{11, 22, 14, 26}));

    Image image;
    image.position = Vector2f(1, 2);
    image.size = Vector2f(3, 4);
    EXPECT_TRUE(image.computeEstimatedBoundingVolume(box, scaling(-1, 2)));
    EXPECT_EQ(corners(box), (Corners{-4, 4, -1, 12}));

    EXPECT_TRUE(Line(Vector2f(5, -1), Vector2f(2, 3)).computeEstimatedBoundingVolume(box, shift));
    EXPECT_EQ(corners(box), (Corners{12, 19, 15, 23}));

    // The radius is deliberately left unscaled: centre mapped, then +/- r.
    EXPECT_TRUE(Circle(Vector2f(3, 4), 1).computeEstimatedBoundingVolume(box, scaling(2, 2)));
    EXPECT_EQ(corners(box), (Corners{5, 7, 7, 9}));
}

TEST(ItemBoundingVolume, RotatedRectangleHoldsAllFourCorners) {
    BoundingBox box;
    ASSERT_TRUE(
        Rect(Vector2f(0, 0), Vector2f(2, 2))
            .computeEstimatedBoundingVolume(box, rotation(0.25f * Wm4::Math<float>::WM4_PI)));
    const float r = std::sqrt(2.0f);
    EXPECT_NEAR(box.min.X(), -r, 1e-5f);
    EXPECT_NEAR(box.min.Y(), 0, 1e-5f);
    EXPECT_NEAR(box.max.X(), r, 1e-5f);
    EXPECT_NEAR(box.max.Y(), 2 * r, 1e-5f);
}

TEST(EstimatedBoundingBox, UnitesTheShapesOfASubtree) {
    Node root;
    addChild<Rect>(root, Vector2f(0, 0), Vector2f(2, 2));
    root.editChildren().push_back(nullptr);
    addChild<Text>(root, Vector2f(-50, -50), "ignored");
    auto group = addChild<Node>(root);
    addChild<Line>(*group, Vector2f(5, 1), Vector2f(6, -3));
    addChild<Circle>(*group, Vector2f(-1, 1), 0.5f);
    EXPECT_EQ(estimate(root), (Corners{-1.5f, -3, 6, 2}));

    EXPECT_EQ(estimate(Rect(Vector2f(1, 1), Vector2f(1, 1))), (Corners{1, 1, 2, 2}));

    // Groups and texts add nothing; with nothing else the result is the empty box.
    Node bare;
    addChild<Text>(bare, Vector2f(3, 4), "text");
    addChild<Node>(bare);
    EXPECT_EQ(estimate(bare), kEmpty);
    EXPECT_EQ(estimate(Text(Vector2f(3, 4), "alone")), kEmpty);
}

TEST(EstimatedBoundingBox, TransformsComposeParentTimesChild) {
    Node root;
    root.editTransform() = translation(10, 0);
    auto group = addChild<Node>(root);
    group->editTransform() = scaling(2, 2);
    auto rect = addChild<Rect>(*group, Vector2f(1, 1), Vector2f(1, 1));
    // Scaled first in the child's frame, then moved by the parent.
    EXPECT_EQ(estimate(root), (Corners{12, 2, 14, 4}));

    // The initial transform acts last of all, after the root's own.
    const Matrix3f initial = scaling(3, 1);
    EXPECT_EQ(estimate(root, nullptr, &initial), (Corners{36, 2, 42, 4}));

    // An item's own transform counts when it is the root of the measurement.
    rect->editTransform() = translation(0, 5);
    EXPECT_EQ(estimate(*rect), (Corners{1, 6, 2, 7}));
    EXPECT_EQ(estimate(root), (Corners{12, 12, 14, 14}));
}

TEST(EstimatedBoundingBox, FilterLeavesOutWholeSubtrees) {
    Node root;
    addChild<Rect>(root, Vector2f(0, 0), Vector2f(1, 1));
    auto hidden = addChild<Node>(root);
    hidden->editId() = "hidden";
    addChild<Rect>(*hidden, Vector2f(50, 50), Vector2f(1, 1));
    auto nested = addChild<Node>(*hidden);
    addChild<Circle>(*nested, Vector2f(-40, 0), 1.0f);
    addChild<Line>(root, Vector2f(-2, 0), Vector2f(-2, 3));

    const auto byId = [](const ItemInterface& item) { return item.getId() == "hidden"; };
    EXPECT_EQ(estimate(root, byId), (Corners{-2, 0, 1, 3}));
    EXPECT_EQ(estimate(*hidden, byId), kEmpty);

    const auto circles = [](const ItemInterface& item) {
        return item.getType() == ItemType::Circle;
    };
    EXPECT_EQ(estimate(root, circles), (Corners{-2, 0, 51, 51}));
    EXPECT_EQ(estimate(root), (Corners{-41, -1, 51, 51}));
}

TEST(DocumentViewbox, IsReplacedByTheEstimatedContent) {
    Document document;
    document.editViewbox() = BoundingBox(Vector2f(0, 0), Vector2f(500, 500));
    document.computeEstimatedViewboxFromContent();
    ASSERT_TRUE(document.getViewbox().has_value());
    EXPECT_EQ(corners(*document.getViewbox()), kEmpty);  // set, even though empty

    addChild<Text>(document, Vector2f(100, 100), "not measured");
    auto group = addChild<Node>(document);
    group->editTransform() = translation(-5, 0);
    addChild<Rect>(*group, Vector2f(0, 0), Vector2f(10, 20));
    auto image = addChild<Image>(document);
    image->position = Vector2f(30, 40);
    image->size = Vector2f(5, 5);
    document.computeEstimatedViewboxFromContent();
    ASSERT_TRUE(document.getViewbox().has_value());
    EXPECT_EQ(corners(*document.getViewbox()), (Corners{-5, 0, 35, 45}));

    document.editTransform() = scaling(2, 2);
    document.computeEstimatedViewboxFromContent();
    EXPECT_EQ(corners(*document.getViewbox()), (Corners{-10, 0, 70, 90}));
}
