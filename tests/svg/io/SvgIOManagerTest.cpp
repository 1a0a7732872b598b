#include "svg/tqSvg.h"

#include <filesystem>
#include <fstream>
#include <list>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "LibraryTest.h"

using namespace tq::svg;
using Messages = std::list<std::string>;
using Item = ItemInterfacePointer<ItemInterface>;
namespace fs = std::filesystem;

namespace {

const char* const kDocument = "<svg><rect/></svg>";

class SvgIOManager : public tq::test::LibraryTest {
protected:
    std::string writeFile(const std::string& name, const std::string& content) const {
        std::ofstream(directory / name, std::ios::binary)
            .write(content.data(), static_cast<std::streamsize>(content.size()));
        return (directory / name).string();
    }

    static bool loadText(Item& out, const std::string& text, const std::string& name,
                         const LoadOptions* options, Messages* messages) {
        tqIoDeviceMemory device(text);
        return tqSvgIOManager::get().loadSvg(out, device, name, nullptr, options, messages);
    }
};

// The built-in driver with its device load replaced, to see what the file load passes on.
class RecordingDriver : public tqSvgDriver {
public:
    using tqSvgDriver::loadSvg;
    bool loadSvg(Item&, tqIoDevice& device, const std::string& name, tqProgressNotifierInterface*,
                 const LoadOptions& options) override {
        received = (device.isOpen() ? "open device, name " : "closed device, name ") + name +
                   (options.ignoreUnsupported ? ", ignoring" : "");
        return true;
    }
    std::string received;
};

}  // namespace

TEST_F(SvgIOManager, StartUpRegistersTheOneSvgDriverAndCountsNestedStarts) {
    const auto& drivers = tqSvgIOManager::get().getAllDrivers();
    ASSERT_EQ(drivers.size(), 1u);
    EXPECT_NE(dynamic_cast<tqSvgDriver*>(drivers.front()), nullptr);

    initializeTqSvg();
    EXPECT_EQ(tqSvgIOManager::get().getAllDrivers().size(), 1u);
    terminateTqSvg();  // the outer start still holds the library
    Item out;
    EXPECT_TRUE(loadText(out, kDocument, "svg", nullptr, nullptr));
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->getType(), ItemType::Document);

    // A full stop and a new start give a fresh, working library.
    terminateTqSvg();
    initializeTqSvg();
    EXPECT_EQ(tqSvgIOManager::get().getAllDrivers().size(), 1u);
    EXPECT_TRUE(loadText(out, kDocument, "svg", nullptr, nullptr));
}

TEST_F(SvgIOManager, LoadWithoutADriverForTheNameFailsSilently) {
    for (const char* name : {"SVG", "svgz", ".svg", "png", ""}) {
        SCOPED_TRACE(std::string("name \"") + name + "\"");
        Item out;
        Messages messages = {"kept"};
        EXPECT_FALSE(loadText(out, kDocument, name, nullptr, &messages));
        EXPECT_EQ(messages, Messages{"kept"});
        EXPECT_EQ(out, nullptr);
    }
    Item out;
    Messages messages = {"kept"};
    const std::string other = writeFile("drawing.txt", kDocument);
    EXPECT_FALSE(tqSvgIOManager::get().loadSvg(out, other, nullptr, nullptr, &messages));
    EXPECT_EQ(messages, Messages{"kept"});
}

TEST_F(SvgIOManager, LoadReplacesTheCallersMessagesWithTheDriversOwn) {
    LoadOptions ignore;
    ignore.ignoreUnsupported = true;
    Item out;
    Messages messages = {"old"};
    // Warnings only: the load succeeds and still reports them.
    EXPECT_TRUE(loadText(out, "<svg><foo/><rect/></svg>", "svg", &ignore, &messages));
    EXPECT_EQ(messages, Messages{"Ignore unsupported tag in svg : \"foo\""});
    ASSERT_NE(out, nullptr);

    // Null options are the defaults, which refuse the tag; the caller's pointer stays as it was.
    const Item before = out;
    EXPECT_FALSE(loadText(out, "<svg><foo/></svg>", "svg", nullptr, &messages));
    EXPECT_EQ(messages, Messages{"Found unsupported tag in svg : \"foo\""});
    EXPECT_EQ(out, before);

    // Every load starts from an empty list.
    EXPECT_TRUE(loadText(out, kDocument, "svg", nullptr, &messages));
    EXPECT_EQ(messages, Messages{});
}

TEST_F(SvgIOManager, LoadsAFileChosenByItsExtension) {
    Item out;
    Messages messages = {"old"};
    const std::string path = writeFile("drawing.svg", kDocument);
    ASSERT_TRUE(tqSvgIOManager::get().loadSvg(out, path, nullptr, nullptr, &messages));
    EXPECT_EQ(messages, Messages{});
    EXPECT_EQ(dynamic_cast<const Document&>(*out).getChildren().size(), 1u);

    const std::string broken = writeFile("broken.svg", "<svg><rect x=\"a\"/></svg>");
    EXPECT_FALSE(tqSvgIOManager::get().loadSvg(out, broken, nullptr, nullptr, &messages));
    EXPECT_EQ(messages, (Messages{"Failed to parse value \"a\" in attribute \"x\"",
                                  "Invalid attribute \"x\" with value \"a\""}));

    // The file load hands the open stream and the extension to the device load.
    RecordingDriver driver;
    LoadOptions ignore;
    ignore.ignoreUnsupported = true;
    EXPECT_TRUE(driver.loadSvg(out, path, nullptr, ignore));
    EXPECT_EQ(driver.received, "open device, name svg, ignoring");
}

TEST_F(SvgIOManager, MissingFileOrDirectoryFailsWithOneMessage) {
    fs::create_directories(directory / "folder.svg");
    for (const fs::path& name : {directory / "missing.svg", directory / "folder.svg"}) {
        SCOPED_TRACE(name.string());
        const Item sentinel = std::make_shared<Rect>();
        Item out = sentinel;
        Messages messages = {"old"};
        EXPECT_FALSE(
            tqSvgIOManager::get().loadSvg(out, name.string(), nullptr, nullptr, &messages));
        EXPECT_EQ(messages, Messages{"Fail to open file"});
        EXPECT_EQ(out, sentinel);
    }
}

TEST_F(SvgIOManager, SaveWithoutADriverAppendsItsMessage) {
    const Document document;
    tqIoDeviceMemory device;
    Messages messages = {"kept"};
    EXPECT_FALSE(
        tqSvgIOManager::get().saveSvg(document, device, "png", nullptr, nullptr, &messages));
    EXPECT_EQ(messages, (Messages{"kept", "No driver available to save 'png'"}));
    EXPECT_EQ(device.getContent(), "");

    const std::string path = (directory / "picture.png").string();
    EXPECT_FALSE(tqSvgIOManager::get().saveSvg(document, path, nullptr, nullptr, &messages));
    EXPECT_EQ(messages.back(), "No driver available to save 'png'");
    EXPECT_FALSE(fs::exists(path));
    EXPECT_FALSE(tqSvgIOManager::get().saveSvg(document, device, "SVG", nullptr, nullptr, nullptr));
}

TEST_F(SvgIOManager, VersionIsThreeZeroZeroRevision1297OfFebruary2026) {
    using tqSvg::Version;
    EXPECT_EQ(Version::GetMajor(), 3u);
    EXPECT_EQ(Version::GetMinor(), 0u);
    EXPECT_EQ(Version::GetRelease(), 0u);
    EXPECT_EQ(Version::GetRevision(), 1297u);
    EXPECT_EQ(Version::GetYear(), 2026);
    EXPECT_EQ(Version::GetMonth(), 2);
    EXPECT_STREQ(Version::GetCommitId(), "3d96f40405c8d0b4");
    for (bool first : {true, false}) {
        EXPECT_STREQ(Version::GetDescStringMajorMinor(first), "3.0");
        EXPECT_STREQ(Version::GetDescStringMajorMinorRelease(first), "3.0.0");
        EXPECT_STREQ(Version::GetDescStringMajorMinorReleaseRevision(first, false), "3.0.0.1297");
        EXPECT_STREQ(Version::GetDescStringMajorMinorReleaseRevision(first, true),
                     "3.0.0.1297 #3d96f40405c8d0b4");
    }
    EXPECT_STREQ(Version::GetDescStringMajorMinorReleaseRevisionDate(),
                 "3.0.0.1297 #3d96f40405c8d0b4 2026-2");
}
