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
const Corners kEmpty{1, 1, -1, -1};

Corners corners(const BoundingBox& b) {
    return {b.min.X(), b.min.Y(), b.max.X(), b.max.Y()};
}

Matrix3f affine(float sx, float sy, float x, float y) {
    return Matrix3f(sx, 0, x, 0, sy, y, 0, 0, 1);
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
    BoundingBox box;
    Image image;
    image.position = Vector2f(1, 2);
    image.size = Vector2f(3, 4);
    EXPECT_TRUE(image.computeEstimatedBoundingVolume(box, affine(-1, 2, 0, 0)));
    EXPECT_EQ(corners(box), (Corners{-4, 4, -1, 12}));
    EXPECT_TRUE(Line(Vector2f(5, -1), Vector2f(2, 3))
                    .computeEstimatedBoundingVolume(box, affine(1, 1, 10, 20)));
    EXPECT_EQ(corners(box), (Corners{12, 19, 15, 23}));
    // The radius is deliberately left unscaled: centre mapped, then +/- r.
    EXPECT_TRUE(Circle(Vector2f(3, 4), 1).computeEstimatedBoundingVolume(box, affine(2, 2, 0, 0)));
    EXPECT_EQ(corners(box), (Corners{5, 7, 7, 9}));
    // A rotated rectangle's box holds all four corners.
    const float c = std::sqrt(0.5f);
    ASSERT_TRUE(Rect(Vector2f(0, 0), Vector2f(2, 2))
                    .computeEstimatedBoundingVolume(box, Matrix3f(c, -c, 0, c, c, 0, 0, 0, 1)));
    const Corners expected{-2 * c, 0, 2 * c, 4 * c};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(corners(box)[i], expected[i], 1e-5f);
    }
}

TEST(EstimatedBoundingBox, UnitesTheShapesOfASubtreeInTheirFrames) {
    Node root;
    root.editTransform() = affine(1, 1, 10, 0);
    auto group = addChild<Node>(root);
    group->editTransform() = affine(2, 2, 0, 0);
    auto rect = addChild<Rect>(*group, Vector2f(1, 1), Vector2f(1, 1));
    addChild<Text>(root, Vector2f(-50, -50), "not measured");
    root.editChildren().push_back(nullptr);
    // Scaled first in the child's frame, then moved by the parent; the initial transform last.
    EXPECT_EQ(estimate(root), (Corners{12, 2, 14, 4}));
    const Matrix3f initial = affine(3, 1, 0, 0);
    EXPECT_EQ(estimate(root, nullptr, &initial), (Corners{36, 2, 42, 4}));
    // An item's own transform counts when it is the root of the measurement.
    rect->editTransform() = affine(1, 1, 0, 5);
    EXPECT_EQ(estimate(*rect), (Corners{1, 6, 2, 7}));

    auto circle = addChild<Circle>(root, Vector2f(-1, 1), 0.5f);
    EXPECT_EQ(estimate(root), (Corners{8.5f, 0.5f, 14, 14}));
    const auto circles = [](const ItemInterface& item) {
        return item.getType() == ItemType::Circle || item.getId() == "hidden";
    };
    EXPECT_EQ(estimate(root, circles), (Corners{12, 12, 14, 14}));
    group->editId() = "hidden";  // the filter leaves out whole subtrees
    EXPECT_EQ(estimate(root, circles), kEmpty);
    EXPECT_EQ(estimate(Text(Vector2f(3, 4), "alone")), kEmpty);
}

TEST(DocumentViewbox, IsReplacedByTheEstimatedContent) {
    Document document;
    document.editViewbox() = BoundingBox(Vector2f(0, 0), Vector2f(500, 500));
    document.computeEstimatedViewboxFromContent();
    ASSERT_TRUE(document.getViewbox().has_value());
    EXPECT_EQ(corners(*document.getViewbox()), kEmpty);  // set, even though empty

    auto group = addChild<Node>(document);
    group->editTransform() = affine(1, 1, -5, 0);
    addChild<Rect>(*group, Vector2f(0, 0), Vector2f(10, 20));
    auto image = addChild<Image>(document);
    image->position = Vector2f(30, 40);
    image->size = Vector2f(5, 5);
    document.editTransform() = affine(2, 2, 0, 0);
    document.computeEstimatedViewboxFromContent();
    EXPECT_EQ(corners(*document.getViewbox()), (Corners{-10, 0, 70, 90}));
}
