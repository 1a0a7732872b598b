// A test fixture that starts the library for each test and gives it a scratch directory of its
// own, removed afterwards (tests of one binary may run in parallel processes under ctest).
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

#include "svg/tqSvg.h"

namespace tq::test {

class LibraryTest : public testing::Test {
protected:
    void SetUp() override {
        tq::svg::initializeTqSvg();
        const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
        directory = std::filesystem::path(testing::TempDir()) /
                    (std::string(info->test_suite_name()) + "_" + info->name());
        std::filesystem::create_directories(directory);
    }
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::remove_all(directory, ignored);
        tq::svg::terminateTqSvg();
    }

    std::filesystem::path directory;
};

}  // namespace tq::test
