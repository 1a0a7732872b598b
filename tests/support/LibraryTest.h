// The fixture of every test that needs the library started: a scratch directory of its own for
// each test (tests of one binary may run in parallel processes under ctest), and loading and
// saving through the manager as a host does.
#pragma once

#include <filesystem>
#include <list>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

#include "svg/tqSvg.h"

namespace tq::test {

using Item = svg::ItemInterfacePointer<svg::ItemInterface>;

struct Loaded {
    bool ok = false;
    Item root;
    std::string messages;  // one a line
};

class LibraryTest : public testing::Test {
protected:
    void SetUp() override {
        svg::initializeTqSvg();
        const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
        directory = std::filesystem::path(testing::TempDir()) /
                    (std::string(info->test_suite_name()) + "_" + info->name());
        std::filesystem::create_directories(directory);
    }
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::remove_all(directory, ignored);
        svg::terminateTqSvg();
    }

    // `root`, when given, is what the caller's pointer holds before the load.
    static Loaded load(const std::string& text, bool ignoreUnsupported = false, Item root = {},
                       svg::LoadProfile profile = svg::LoadProfile::Subset) {
        Loaded result;
        result.root = std::move(root);
        tqIoDeviceMemory device(text);
        svg::LoadOptions options;
        options.ignoreUnsupported = ignoreUnsupported;
        options.profile = profile;
        std::list<std::string> messages;
        result.ok = svg::tqSvgIOManager::get().loadSvg(result.root, device, "svg", nullptr,
                                                       &options, &messages);
        for (const std::string& message : messages) {
            result.messages += (result.messages.empty() ? "" : "\n") + message;
        }
        return result;
    }

    // The document without the exporter and date comments.
    static std::string save(const svg::ItemInterface& item,
                            svg::SaveOptions options = svg::SaveOptions()) {
        options.writeHeader = false;
        tqIoDeviceMemory device;
        EXPECT_TRUE(
            svg::tqSvgIOManager::get().saveSvg(item, device, "svg", nullptr, &options, nullptr));
        return device.getContent();
    }

    std::filesystem::path directory;
};

}  // namespace tq::test
