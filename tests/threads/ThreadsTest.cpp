// What runs on several threads at once, run under ThreadSanitizer in CI (the "threads" label):
// visitors reading one tree, each with its own workspace, and the triangulation's per-thread
// working memory, must give each thread the single-threaded result.
#include "svg/tqSvg.h"

#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using namespace tq::svg;
using Wm4::Matrix3f;
using Wm4::Vector2f;

namespace {

std::shared_ptr<Path> pathOf(const std::string& d) {
    auto path = std::make_shared<Path>();
    EXPECT_TRUE(ConvertPathStringToCommands(d, path->commands, nullptr)) << d;
    return path;
}

}  // namespace

TEST(SegmenterVisitor, FourThreadsSegmentOneTreeAlike) {
    Document document;
    std::mt19937 random(7);
    std::uniform_real_distribution<float> coordinate(-100, 100);
    const auto c = [&] { return std::to_string(coordinate(random)); };
    for (int i = 0; i < 200; ++i) {
        auto group = std::make_shared<Node>();
        group->editTransform() = Matrix3f(1, 0, coordinate(random), 0, 1, 0, 0, 0, 1);
        group->editProperties().fill = i % 3 ? "black" : "none";
        group->editProperties().stroke = "blue";
        const std::string d = "M" + c() + " " + c() + " C" + c() + " " + c() + " " + c() + " " +
                              c() + " " + c() + " " + c() + " A20 30 15 0 1 " + c() + " " + c() +
                              " L" + c() + " " + c() + " Z M1 1 h5 v5 h-5 z";
        group->editChildren().push_back(pathOf(d));
        group->editChildren().push_back(std::make_shared<Circle>(Vector2f(i, i), 3));
        document.editChildren().push_back(group);
    }

    const auto flatten = [&document] {
        SegmenterVisitor visitor(document);
        std::vector<SegmentedPrimitive> result;
        for (const auto& p : visitor.getSegmentedPrimitives()) {
            result.push_back(*p);
        }
        return result;
    };
    const std::vector<SegmentedPrimitive> expected = flatten();
    ASSERT_EQ(expected.size(), 400u);

    std::vector<std::vector<SegmentedPrimitive>> results(4);
    std::vector<std::thread> threads;
    for (auto& result : results) {
        threads.emplace_back([&result, &flatten] { result = flatten(); });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (const auto& result : results) {
        ASSERT_EQ(result.size(), expected.size());
        for (std::size_t i = 0; i < result.size(); ++i) {
            EXPECT_EQ(result[i].points, expected[i].points);
            EXPECT_EQ(result[i].indices, expected[i].indices);
            EXPECT_EQ(result[i].trianglePoints, expected[i].trianglePoints);
            EXPECT_EQ(result[i].triangleIndices, expected[i].triangleIndices);
            EXPECT_EQ(result[i].properties, expected[i].properties);
        }
    }
}
