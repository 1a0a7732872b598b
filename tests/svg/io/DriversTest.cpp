// The driver base's message list, the registry's choice and the manager as a host uses it.
#include "svg/tqSvg.h"

#include <filesystem>
#include <fstream>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <zlib.h>

#include "LibraryTest.h"
#include "TreeEquality.h"

using namespace tq::svg;
using Messages = std::list<std::string>;
using tq::test::Item;

namespace {

using Answer = tqCoreSvgIODriver::HandleRequestResult;

// Gives fixed answers; never loads or saves.
class FakeDriver : public tqCoreSvgIODriver {
public:
    explicit FakeDriver(Answer answer = CannotHandle) : mAnswer(answer) {}
    Answer canLoad(const std::pair<tqIoDevice*, std::string>&, const LoadOptions&) const override {
        return mAnswer;
    }
    Answer canSave(const std::string&, const SaveOptions&) const override { return mAnswer; }
    bool loadSvg(Item&, tqIoDevice&, const std::string&, tqProgressNotifierInterface*,
                 const LoadOptions&) override {
        return false;
    }
    bool loadSvg(Item&, const std::string&, tqProgressNotifierInterface*,
                 const LoadOptions&) override {
        return false;
    }
    bool saveSvg(const ItemInterface&, tqIoDevice&, const std::string&,
                 tqProgressNotifierInterface*, const SaveOptions&) override {
        return false;
    }
    bool saveSvg(const ItemInterface&, const std::string&, tqProgressNotifierInterface*,
                 const SaveOptions&) override {
        return false;
    }
    using tqCoreSvgIODriver::addErrorMessage;

    Messages messages() const {
        Messages out{"replaced"};
        getLastErrorsAndWarnings(out, true);
        return out;
    }

private:
    Answer mAnswer;
};

class TestManager : public tqTemplateManager<tqCoreSvgIODriver> {};

}  // namespace

TEST(DriverMessages, TextsAndCountAreCapped) {
    FakeDriver driver;
    const std::string exact(1024, 'a');
    const std::string tooLong = std::string(1020, 'b') + "cdefg";
    driver.addErrorMessage(exact, -1);
    driver.addErrorMessage(tooLong, 7);
    driver.addErrorMessage("at", 0);
    driver.addErrorMessage("at", -5);
    EXPECT_EQ(driver.messages(),
              (Messages{exact, std::string(1020, 'b') + " ... @7", "at @0", "at"}));

    std::list<std::string> kept{"old"};
    driver.getLastErrorsAndWarnings(kept, false);
    EXPECT_EQ(kept.size(), 5u);
    EXPECT_EQ(kept.front(), "old");

    for (int i = 0; i < 1030; ++i) {
        driver.addErrorMessage("m" + std::to_string(i), -1);
    }
    const Messages messages = driver.messages();
    ASSERT_EQ(messages.size(), 1024u);  // the oldest texts are dropped
    EXPECT_EQ(messages.front(), "m6");
    EXPECT_EQ(messages.back(), "m1029");
    driver.clearErrorMessages();
    EXPECT_TRUE(driver.messages().empty());
}

TEST(DriverRegistry, FirstDriverPrefersTheEarliestFullMatch) {
    constexpr Answer No = tqCoreSvgIODriver::CannotHandle;
    constexpr Answer Can = tqCoreSvgIODriver::CanHandle;
    constexpr Answer Best = tqCoreSvgIODriver::CanHandleBest;
    const std::pair<std::vector<Answer>, int> cases[] = {
        {{}, -1},          {{No, No}, -1},  {{Can, Best}, 1},
        {{Best, Best}, 0}, {{Can, Can}, 0}, {{No, Can, Best, Can, Best}, 2},
    };
    for (const auto& [answers, chosen] : cases) {
        std::vector<std::unique_ptr<FakeDriver>> drivers;
        TestManager manager;
        for (Answer answer : answers) {
            drivers.push_back(std::make_unique<FakeDriver>(answer));
            manager.registerDriver(drivers.back().get(), true);
        }
        tqCoreSvgIODriver* expected =
            chosen < 0 ? nullptr : drivers[static_cast<std::size_t>(chosen)].get();
        EXPECT_EQ(manager.getFirstLoadDriver({nullptr, "svg"}, LoadOptions()), expected) << chosen;
        EXPECT_EQ(manager.getFirstSaveDriver("svg", SaveOptions()), expected) << chosen;
    }
}

using SvgIOManager = tq::test::LibraryTest;

// Outside a start and stop, loads and saves fail and say why instead of reaching no manager.
TEST(SvgIOManagerStopped, LoadsAndSavesFailWithTheReason) {
    const std::string reason = "tqSvg is not started: call initializeTqSvg() first";
    std::list<std::string> messages;
    ItemInterfacePointer<ItemInterface> root;
    tqIoDeviceMemory device("<svg/>");
    EXPECT_FALSE(tqSvgIOManager::get().loadSvg(root, device, "svg", nullptr, nullptr, &messages));
    EXPECT_EQ(messages, std::list<std::string>{reason});
    {
        const LibraryGuard library;
        tqIoDeviceMemory again("<svg/>");
        EXPECT_TRUE(tqSvgIOManager::get().loadSvg(root, again, "svg", nullptr, nullptr, &messages));
    }
    messages.clear();
    EXPECT_FALSE(tqSvgIOManager::edit().saveSvg(Document(), "x.svg", nullptr, nullptr, &messages));
    EXPECT_EQ(messages, std::list<std::string>{reason});
}

TEST_F(SvgIOManager, NestedStartsAreCountedAndARestartWorks) {
    initializeTqSvg();
    terminateTqSvg();  // the fixture's start still holds the library
    EXPECT_TRUE(load("<svg/>").ok);
    terminateTqSvg();
    initializeTqSvg();
    EXPECT_EQ(tqSvgIOManager::get().getAllDrivers().size(), 1u);
    EXPECT_TRUE(load("<svg/>").ok);
}

TEST_F(SvgIOManager, OnlyTheNameSvgFindsADriver) {
    for (const char* name : {"SVG", "svgz", ".svg", "png", ""}) {
        Item out;
        Messages messages = {"kept"};
        tqIoDeviceMemory device(std::string("<svg/>"));
        EXPECT_FALSE(tqSvgIOManager::get().loadSvg(out, device, name, nullptr, nullptr, &messages))
            << name;
        EXPECT_EQ(messages, Messages{"kept"}) << name;
        EXPECT_EQ(out, nullptr) << name;
    }
    const Document document;
    tqIoDeviceMemory device;
    Messages messages = {"kept"};
    EXPECT_FALSE(
        tqSvgIOManager::get().saveSvg(document, device, "png", nullptr, nullptr, &messages));
    EXPECT_EQ(messages, (Messages{"kept", "No driver available to save 'png'"}));
    const std::string picture = (directory / "picture.png").string();
    EXPECT_FALSE(tqSvgIOManager::get().saveSvg(document, picture, nullptr, nullptr, &messages));
    EXPECT_EQ(messages.back(), "No driver available to save 'png'");
    EXPECT_FALSE(std::filesystem::exists(picture));
}

TEST_F(SvgIOManager, EveryLoadReplacesTheCallersMessages) {
    // Warnings only: the load succeeds and still reports them.
    const tq::test::Loaded lenient = load("<svg><foo/><rect/></svg>", true);
    EXPECT_TRUE(lenient.ok);
    EXPECT_EQ(lenient.messages, "Ignore unsupported tag in svg : \"foo\"");

    const Item before = lenient.root;
    const tq::test::Loaded strict = load("<svg><foo/></svg>", false, before);
    EXPECT_FALSE(strict.ok);
    EXPECT_EQ(strict.messages, "Found unsupported tag in svg : \"foo\"");
    EXPECT_EQ(strict.root, before);  // the caller's pointer stays as it was

    // Null options are the defaults.
    Item out;
    Messages messages = {"old"};
    tqIoDeviceMemory device(std::string("<svg><foo/></svg>"));
    EXPECT_FALSE(tqSvgIOManager::get().loadSvg(out, device, "svg", nullptr, nullptr, &messages));
    EXPECT_EQ(messages, Messages{"Found unsupported tag in svg : \"foo\""});
}

TEST_F(SvgIOManager, FilesAreChosenByExtensionAndMissingOnesFailWithOneMessage) {
    const auto write = [&](const std::string& name, const std::string& content) {
        std::ofstream(directory / name) << content;
        return (directory / name).string();
    };
    Item out;
    Messages messages = {"old"};
    ASSERT_TRUE(tqSvgIOManager::get().loadSvg(out, write("a.SVG", "<svg><rect/></svg>"), nullptr,
                                              nullptr, &messages));
    EXPECT_EQ(messages, Messages{});
    EXPECT_EQ(tq::test::CanonicalText(*out), "svg\n  rect 0,0 1,1 r=0,0\n");
    EXPECT_FALSE(tqSvgIOManager::get().loadSvg(out, write("bad.svg", "<svg><rect x=\"a\"/></svg>"),
                                               nullptr, nullptr, &messages));
    EXPECT_EQ(messages, (Messages{"Failed to parse value \"a\" in attribute \"x\"",
                                  "Invalid attribute \"x\" with value \"a\""}));
    messages = {"kept"};
    EXPECT_FALSE(
        tqSvgIOManager::get().loadSvg(out, write("a.txt", "<svg/>"), nullptr, nullptr, &messages));
    EXPECT_EQ(messages, Messages{"kept"});

    std::filesystem::create_directories(directory / "folder.svg");
    for (const char* name : {"missing.svg", "folder.svg"}) {
        const Item sentinel = std::make_shared<Rect>();
        out = sentinel;
        EXPECT_FALSE(tqSvgIOManager::get().loadSvg(out, (directory / name).string(), nullptr,
                                                   nullptr, &messages));
        EXPECT_EQ(messages, Messages{"Fail to open file"}) << name;
        EXPECT_EQ(out, sentinel) << name;
    }
}

namespace {

// `text` in gzip's format, as one member or cut into `members`.
std::string Gzip(const std::string& text, int members = 1) {
    std::string out;
    const std::size_t piece = text.size() / static_cast<std::size_t>(members) + 1;
    for (std::size_t at = 0; at < text.size(); at += piece) {
        z_stream z{};
        deflateInit2(&z, 9, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
        std::string input = text.substr(at, piece);
        std::string member(deflateBound(&z, input.size()) + 32, '\0');
        z.next_in = reinterpret_cast<Bytef*>(input.data());
        z.avail_in = static_cast<uInt>(input.size());
        z.next_out = reinterpret_cast<Bytef*>(member.data());
        z.avail_out = static_cast<uInt>(member.size());
        deflate(&z, Z_FINISH);
        member.resize(member.size() - z.avail_out);
        deflateEnd(&z);
        out += member;
    }
    return out;
}

}  // namespace

// Compressed documents read as their text does, under the name "svg" or from .svgz files, in
// pieces much smaller and much larger than a read; broken compression fails with its reason.
TEST_F(SvgIOManager, GzipContentReadsAsItsText) {
    std::string text = "<svg xmlns='http://www.w3.org/2000/svg'>";
    for (int i = 0; i < 20000; ++i) {
        text += "<rect x='" + std::to_string(i) + "' width='1' height='1'/>";
    }
    text += "</svg>";
    tqIoDeviceMemory plain(text);
    Item expected;
    ASSERT_TRUE(tqSvgIOManager::get().loadSvg(expected, plain, "svg", nullptr, nullptr, nullptr));
    for (const int members : {1, 7}) {
        for (const LoadProfile profile : {LoadProfile::Subset, LoadProfile::Standard}) {
            LoadOptions options;
            options.profile = profile;
            tqIoDeviceMemory device(Gzip(text, members));
            Item out;
            Messages messages;
            ASSERT_TRUE(
                tqSvgIOManager::get().loadSvg(out, device, "svg", nullptr, &options, &messages))
                << messages.front();
            EXPECT_EQ(tq::test::CanonicalText(*out), tq::test::CanonicalText(*expected));
        }
    }
    const std::string file = (directory / "icon.svgz").string();
    std::ofstream(file, std::ios::binary) << Gzip("<svg><circle r='2'/></svg>");
    Item out;
    ASSERT_TRUE(tqSvgIOManager::get().loadSvg(out, file, nullptr, nullptr, nullptr));
    EXPECT_EQ(tq::test::CanonicalText(*out), "svg\n  circle 0,0 2\n");

    const std::string whole = Gzip(text);
    const std::pair<std::string, std::string> broken[] = {
        {whole.substr(0, whole.size() / 2), "the compressed input ends in the middle of its data"},
        {whole.substr(0, 10) + std::string(100, 'x'), "the compressed input is corrupt: "}};
    for (const auto& [bytes, reason] : broken) {
        tqIoDeviceMemory device(bytes);
        Messages messages;
        EXPECT_FALSE(
            tqSvgIOManager::get().loadSvg(out, device, "svg", nullptr, nullptr, &messages));
        EXPECT_EQ(messages.back().rfind("The document could not be read: " + reason, 0), 0u)
            << messages.back();
    }
}

// A save by name gathers the save's pieces before they reach the file: every byte arrives, in
// order, and the file is complete when the call returns.
TEST_F(SvgIOManager, SavingByNameWritesWhatASaveToMemoryWrites) {
    Document document;
    for (int i = 0; i < 20000; ++i) {
        auto path = std::make_shared<Path>();
        path->commands.push_back({Path::CommandType::MoveTo, {float(i), 0.5f}});
        path->commands.push_back({Path::CommandType::LineTo, {float(i) / 7, 1e-3f * float(i)}});
        document.editChildren().push_back(path);
    }
    SaveOptions options;
    options.writeHeader = false;
    const std::string file = (directory / "big.svg").string();
    ASSERT_TRUE(tqSvgIOManager::get().saveSvg(document, file, nullptr, &options, nullptr));
    std::ifstream in(file, std::ios::binary);
    const std::string written((std::istreambuf_iterator<char>(in)), {});
    const std::string expected = save(document, options);
    EXPECT_GT(expected.size(), 512u << 10);  // several of the pieces the stream gathers
    EXPECT_TRUE(written == expected)
        << written.size() << " bytes written, " << expected.size() << " expected";
}
