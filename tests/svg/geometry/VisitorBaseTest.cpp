#include "svg/geometry/detail/TransformPoint.h"
#include "svg/tqSvg.h"

#include <algorithm>
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

template <class T>
std::shared_ptr<T> named(const std::string& id) {
    auto item = std::make_shared<T>();
    item->editId() = id;
    return item;
}

struct Seen {
    std::string id;
    Vector2f origin;  // where the item's (0, 0) lands
    std::string stroke;
};

// Visits `root`, recording every item; items whose id is in `prune` are not descended into.
std::vector<Seen> walk(const ItemInterface& root, const std::vector<std::string>& prune = {},
                       const Matrix3f* initial = nullptr) {
    std::vector<Seen> seen;
    VisitorBase<const ItemInterface> visitor(
        [&](const ItemInterface& item, const Matrix3f& transform,
            const RenderingProperties& properties) {
            const std::string id = item.getId().value_or("");
            seen.push_back(
                {id, TransformPoint(transform, Vector2f(0, 0)), properties.stroke.value_or("")});
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
    group->editTransform() = Matrix3f(2, 0, 0, 0, 2, 0, 0, 0, 1);
    auto rect = named<Rect>("r");
    rect->editTransform() = translation(1, 1);
    group->editChildren().push_back(rect);
    auto unset = named<Circle>("unset");
    unset->editTransform() = translation(50, 50);
    unset->editTransform().reset();  // a removed transform is no transform
    root.editChildren() = {group, unset};

    const Matrix3f initial = translation(0, 100);
    const auto seen = walk(root, {}, &initial);
    ASSERT_EQ(seen.size(), 4u);
    EXPECT_EQ(seen[0].origin, Vector2f(10, 100));
    // The rectangle's (0, 0): moved by itself, scaled by the group, then shifted by root and
    // initial.
    EXPECT_EQ(seen[2].origin, Vector2f(12, 102));
    EXPECT_EQ(seen[3].origin, Vector2f(10, 100));
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
    tail->editChildren() = {named<Line>("a"), named<Line>("b")};
    std::vector<Seen> seen = walk(*root);
    seen.erase(std::remove_if(seen.begin(), seen.end(), [](const Seen& s) { return s.id.empty(); }),
               seen.end());
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].id + seen[1].id, "ab");
    EXPECT_EQ(seen[1].origin, Vector2f(100000, 0));
}
