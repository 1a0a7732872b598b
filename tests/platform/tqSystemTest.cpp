#include <tqSystem/tqSystem.h>

#include <gtest/gtest.h>

#include "CapturingLog.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

// A fresh folder under the test's temporary directory, removed with its files afterwards.
class TempDir {
public:
    TempDir() {
        std::string pattern = testing::TempDir() + "tqsystemXXXXXX";
        path = mkdtemp(pattern.data());
    }
    ~TempDir() { std::system(("rm -rf '" + path + "'").c_str()); }
    std::string file(const std::string& name) const { return path + "/" + name; }
    std::string path;
};

std::string readAll(tqIoDevice& device, int64 chunk) {
    std::string content;
    std::vector<char> buffer(static_cast<std::size_t>(chunk));
    int64 n;
    while ((n = device.read(buffer.data(), chunk)) > 0) {
        content.append(buffer.data(), static_cast<std::size_t>(n));
    }
    EXPECT_EQ(n, 0);
    return content;
}

}  // namespace

TEST(LogRouting, NoInstanceWritesOneLineToStandardError) {
    ASSERT_EQ(tqLog::getInstance(), nullptr);
    testing::internal::CaptureStderr();
    tqLog::Log(tqLogObject(tqLogType::Error, "svg", "Failed to write attribute"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "svg: Failed to write attribute\n");
}

TEST(LogRouting, EnabledInstanceReceivesTheObjectDisabledOneNothing) {
    testing::internal::CaptureStderr();
    {
        tq::test::CapturingLog log;
        tqLog::Log(tqLogObject(tqLogType::Warning, "driver", "one"));
        log.setEnabled(false);
        tqLog::Log(tqLogObject(tqLogType::Error, "driver", "two"));
        EXPECT_EQ(log.lines, std::vector<std::string>{"3 driver: one"});
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");  // a disabled log does not fall back
    EXPECT_EQ(tqLog::getInstance(), nullptr);
}

TEST(ExtractFileExtension, LastComponentOnly) {
    struct Case {
        const char* path;
        bool withoutDot;
        bool lowerCase;
        const char* expected;
    };
    const Case cases[] = {
        {"a.svg", true, true, "svg"},
        {"A.SVG", true, true, "svg"},
        {"A.SVG", true, false, "SVG"},
        {"a.tar.SVG", true, true, "svg"},
        {"a.svg", false, false, ".svg"},
        {"dir.v2/file", true, true, ""},
        {"dir/file.", true, true, ""},
        {"noext", true, true, ""},
        {"/abs/path/x.Svg", false, true, ".svg"},
        {"", true, true, ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(tqDirUtils::ExtractFileExtension(c.path, c.withoutDot, c.lowerCase), c.expected)
            << c.path;
    }
}

TEST(FileDevice, WriteTruncatesAndReadGetsTheBytesBack) {
    TempDir dir;
    const std::string name = dir.file("out.bin");
    { std::ofstream(name) << "a much longer previous content"; }
    const std::string payload("x\0y\nz", 5);
    {
        tqIoDeviceFileStream out(name, DataWay::Write, true);
        ASSERT_TRUE(out.isOpen());
        EXPECT_EQ(out.write(payload.data(), 5), 5);
        EXPECT_EQ(out.read(nullptr, 0), -1);  // not open for reading
    }
    tqIoDeviceFileStream in(name, DataWay::Read, true);
    ASSERT_TRUE(in.isOpen());
    EXPECT_EQ(in.write("a", 1), -1);  // not open for writing
    EXPECT_EQ(readAll(in, 2), payload);
    in.close();
    EXPECT_FALSE(in.isOpen());
}
