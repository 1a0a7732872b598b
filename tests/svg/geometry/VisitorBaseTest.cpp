#include "svg/tqSvg.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace tq::svg;
using Wm4::Matrix3f;
using Wm4::Vector2f;

namespace {

Matrix3f translation(float x, float y) {
    return Matrix3f(1, 0, x, 0, 1, y, 0, 0, 1);
}
Matrix3f scaling(float s) {
    return Matrix3f(s, 0, 0, 0, s, 0, 0, 0, 1);
}

template <class T>
std::shared_ptr<T> named(const std::string& id) {
    auto item = std::make_shared<T>();
    item->editId() = id;
    return item;
}

struct Seen {
    std::string id;
    Matrix3f transform;
    RenderingProperties properties;
};

// Visits `root`, recording every item; items whose id is in `prune` are not descended into.
std::vector<Seen> walk(const ItemInterface& root, const std::vector<std::string>& prune = {},
                       const Matrix3f* initial = nullptr) {
    std::vector<Seen> seen;
    VisitorBase<const ItemInterface> visitor(
        [&](const ItemInterface& item, const Matrix3f& transform,
            const RenderingProperties& properties) {
            const std::string id = item.getId().value_or("");
            seen.push_back({id, transform, properties});
            return std::find(prune.begin(), prune.end(), id) == prune.end();
        },
        initial);
    visitor.visitItemTree(root);
    // A balanced walk leaves only the base entries.
    EXPECT_EQ(visitor.getCurrentTransform(), initial ? *initial : Matrix3f::IDENTITY);
    EXPECT_EQ(visitor.getCurrentProperties(), RenderingProperties());
    return seen;
}

}  // namespace

TEST(VisitorBase, ComposesParentTimesChildSoTheChildActsFirst) {
    Node root;
    root.editTransform() = translation(10, 0);
    auto group = named<Node>("g");
    group->editTransform() = scaling(2);
    auto rect = named<Rect>("r");
    group->editChildren().push_back(rect);
    root.editChildren().push_back(group);

    const Matrix3f initial = translation(0, 100);
    const auto seen = walk(root, {}, &initial);
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0].transform, initial * translation(10, 0));
    // A point (1, 1) of the rectangle: scaled by the group, then shifted by root and initial.
    EXPECT_EQ(TransformPoint(seen[2].transform, Vector2f(1, 1)), Vector2f(12, 102));
}

TEST(VisitorBase, IgnoresTheMatrixOfAnItemWithoutTransformFlag) {
    Node root;
    auto rect = named<Rect>("r");
    root.editChildren().push_back(rect);
    root.editTransform().reset();
    const auto seen = walk(root);
    EXPECT_EQ(seen[1].transform, Matrix3f::IDENTITY);
}

TEST(VisitorBase, CascadesPropertiesButNotVectorEffect) {
    Node root;
    root.editProperties().fill = "red";
    root.editProperties().opacity = 0.5f;
    root.editProperties().vectorEffect = VectorEffect::NonScalingStroke;
    auto group = named<Node>("g");
    group->editProperties().opacity = 0.25f;  // replaces, does not multiply
    auto rect = named<Rect>("r");
    group->editChildren().push_back(rect);
    root.editChildren().push_back(group);

    const auto seen = walk(root);
    EXPECT_EQ(seen[2].properties.fill, "red");
    EXPECT_EQ(seen[2].properties.opacity, 0.25f);
    EXPECT_FALSE(seen[2].properties.vectorEffect.has_value());
    EXPECT_EQ(seen[0].properties.vectorEffect, VectorEffect::NonScalingStroke);
}

TEST(VisitorBase, PrunedSubtreeLeavesSiblingsWithTheParentsContext) {
    Node root;
    root.editProperties().stroke = "blue";
    auto pruned = named<Node>("pruned");
    pruned->editTransform() = translation(5, 5);
    pruned->editProperties().stroke = "green";
    pruned->editChildren().push_back(named<Rect>("hidden"));
    auto sibling = named<Circle>("sibling");
    root.editChildren().push_back(pruned);
    root.editChildren().push_back(nullptr);  // tolerated
    root.editChildren().push_back(sibling);

    const auto seen = walk(root, {"pruned"});
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[1].id, "pruned");
    EXPECT_EQ(seen[2].id, "sibling");
    EXPECT_EQ(seen[2].transform, Matrix3f::IDENTITY);
    EXPECT_EQ(seen[2].properties.stroke, "blue");
}

TEST(VisitorBase, VisitsInDocumentOrderAndSurvivesDeepTrees) {
    // 100k nested groups would overflow a recursive walk.
    auto root = std::make_shared<Node>();
    Node* tail = root.get();
    for (int i = 0; i < 100000; ++i) {
        auto child = std::make_shared<Node>();
        child->editTransform() = translation(1, 0);
        tail->editChildren().push_back(child);
        tail = child.get();
    }
    tail->editChildren().push_back(named<Line>("a"));
    tail->editChildren().push_back(named<Line>("b"));

    std::vector<std::string> order;
    Matrix3f deepest;
    VisitorBase<const ItemInterface> visitor(
        [&](const ItemInterface& item, const Matrix3f& transform, const RenderingProperties&) {
            if (item.getId()) {
                order.push_back(*item.getId());
                deepest = transform;
            }
            return true;
        },
        nullptr);
    visitor.visitItemTree(*root);
    EXPECT_EQ(order, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(TransformPoint(deepest, Vector2f(0, 0)), Vector2f(100000, 0));
}

TEST(VisitorBase, EmptyCallbackThrowsOnEnter) {
    VisitorBase<const ItemInterface> visitor(nullptr, nullptr);
    Rect rect;
    EXPECT_THROW(visitor.onEnterSvgItem(rect), std::bad_function_call);
}
