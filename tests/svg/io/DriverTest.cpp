#include "svg/tqSvg.h"

#include <list>
#include <memory>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using namespace tq::svg;

namespace {

using Answer = tqCoreSvgIODriver::HandleRequestResult;
using Source = std::pair<tqIoDevice*, std::string>;
using DriverList = std::vector<tqCoreSvgIODriver*>;
using Item = ItemInterfacePointer<ItemInterface>;
using Notifier = tqProgressNotifierInterface*;

// Answers fixed results (a picky one only when asked with non-default options) and counts the
// questions.
class FakeDriver : public tqCoreSvgIODriver {
public:
    explicit FakeDriver(Answer load = CannotHandle, Answer save = CannotHandle,
                        bool isPicky = false)
        : loadAnswer(load), saveAnswer(save), picky(isPicky) {}

    Answer canLoad(const Source&, const LoadOptions& options) const override {
        ++loadQuestions;
        return picky && !options.ignoreUnsupported ? CannotHandle : loadAnswer;
    }
    Answer canSave(const std::string&, const SaveOptions& options) const override {
        ++saveQuestions;
        return picky && options.author.empty() ? CannotHandle : saveAnswer;
    }

    // Never called: the registry only asks canLoad / canSave.
    bool loadSvg(Item&, tqIoDevice&, const std::string&, Notifier, const LoadOptions&) override {
        return false;
    }
    bool loadSvg(Item&, const std::string&, Notifier, const LoadOptions&) override { return false; }
    bool saveSvg(const ItemInterface&, tqIoDevice&, const std::string&, Notifier,
                 const SaveOptions&) override {
        return false;
    }
    bool saveSvg(const ItemInterface&, const std::string&, Notifier, const SaveOptions&) override {
        return false;
    }

    using tqCoreSvgIODriver::addErrorMessage;

    std::list<std::string> messages() const {
        std::list<std::string> out;
        getLastErrorsAndWarnings(out, true);
        return out;
    }

    Answer loadAnswer;
    Answer saveAnswer;
    bool picky;
    mutable int loadQuestions = 0;
    mutable int saveQuestions = 0;
};

class TestManager : public tqTemplateManager<tqCoreSvgIODriver> {};

class CapturingLog : public tqLog {
public:
    CapturingLog() : mPrevious(tqLog::getInstance()) { tqLog::setInstance(this); }
    ~CapturingLog() override { tqLog::setInstance(mPrevious); }
    void write(const tqLogObject& object) override { lines.push_back(object); }

    std::vector<tqLogObject> lines;

private:
    tqLog* mPrevious;
};

const Source kSvgSource{nullptr, "svg"};

}  // namespace

TEST(DriverMessages, TextsAreCutToTheLengthCapAndGetTheirPosition) {
    FakeDriver driver;
    const std::string exact(1024, 'a');
    const std::string tooLong = std::string(1020, 'b') + "cdefg";
    driver.addErrorMessage(exact, -1);
    driver.addErrorMessage(tooLong, -1);
    driver.addErrorMessage(tooLong, 7);
    driver.addErrorMessage("at", 0);
    driver.addErrorMessage("at", -5);
    driver.addErrorMessage("at", 1234567890123LL);
    EXPECT_EQ(driver.messages(), (std::list<std::string>{exact, std::string(1020, 'b') + " ...",
                                                         std::string(1020, 'b') + " ... @7",
                                                         "at @0", "at", "at @1234567890123"}));
}

TEST(DriverMessages, OldestTextsAreDroppedBeyondTheCountCap) {
    FakeDriver driver;
    for (int i = 0; i < 1030; ++i) {
        driver.addErrorMessage("m" + std::to_string(i), -1);
    }
    const std::list<std::string> messages = driver.messages();
    ASSERT_EQ(messages.size(), 1024u);
    EXPECT_EQ(messages.front(), "m6");
    EXPECT_EQ(messages.back(), "m1029");
}

TEST(DriverMessages, ReadingAppendsOrReplacesAndLeavesTheDriverAlone) {
    FakeDriver driver;
    driver.addErrorMessage("a", -1);
    driver.addErrorMessage("b", -1);
    std::list<std::string> out{"old"};
    driver.getLastErrorsAndWarnings(out, false);
    EXPECT_EQ(out, (std::list<std::string>{"old", "a", "b"}));
    driver.getLastErrorsAndWarnings(out, true);
    EXPECT_EQ(out, (std::list<std::string>{"a", "b"}));
    EXPECT_EQ(driver.messages(), out);

    driver.clearErrorMessages();
    driver.getLastErrorsAndWarnings(out, false);
    EXPECT_EQ(out.size(), 2u);
    driver.getLastErrorsAndWarnings(out, true);
    EXPECT_TRUE(out.empty());
}

TEST(DriverRegistry, AppendGoesLastAndPrependGoesFirst) {
    TestManager manager;
    FakeDriver a, b, c;
    EXPECT_TRUE(manager.getAllDrivers().empty());
    manager.registerDriver(&a, true);
    manager.registerDriver(&b, false);
    manager.registerDriver(&c, true);
    EXPECT_EQ(manager.getAllDrivers(), (DriverList{&b, &a, &c}));

    manager.unregisterDriver(&a);
    EXPECT_EQ(manager.getAllDrivers(), (DriverList{&b, &c}));
    manager.registerDriver(&a, false);
    EXPECT_EQ(manager.getAllDrivers(), (DriverList{&a, &b, &c}));
}

TEST(DriverRegistry, MisuseChangesNothingAndIsLogged) {
    CapturingLog log;
    TestManager manager;
    FakeDriver a, b;
    manager.registerDriver(&a, true);
    manager.registerDriver(&b, true);

    manager.registerDriver(&a, false);
    manager.registerDriver(nullptr, true);
    manager.unregisterDriver(nullptr);
    EXPECT_EQ(manager.getAllDrivers(), (DriverList{&a, &b}));
    manager.unregisterDriver(&a);
    manager.unregisterDriver(&a);
    EXPECT_EQ(manager.getAllDrivers(), (DriverList{&b}));

    const std::string name = typeid(tqCoreSvgIODriver).name();
    ASSERT_EQ(log.lines.size(), 2u);
    for (const tqLogObject& line : log.lines) {
        EXPECT_EQ(static_cast<int>(line.type), 2);
        EXPECT_EQ(line.category, "driver");
    }
    EXPECT_EQ(log.lines[0].text, "Weird error, driver " + name + " is already registered");
    EXPECT_EQ(log.lines[1].text, "Weird error, driver " + name + " has already been unregistered");
}

TEST(DriverRegistry, FirstDriverPrefersTheEarliestFullMatch) {
    constexpr Answer No = tqCoreSvgIODriver::CannotHandle;
    constexpr Answer Can = tqCoreSvgIODriver::CanHandle;
    constexpr Answer Best = tqCoreSvgIODriver::CanHandleBest;
    struct Case {
        std::vector<Answer> answers;
        int expected;  // index of the chosen driver, -1 for none
    };
    const Case cases[] = {
        {{}, -1},           {{No, No}, -1},  {{Can, Best}, 1},
        {{Best, Best}, 0},  {{Can, Can}, 0}, {{No, Can, Best, Can, Best}, 2},
        {{No, Can, No}, 1},
    };
    for (const Case& c : cases) {
        std::vector<std::unique_ptr<FakeDriver>> drivers;
        TestManager manager;
        for (Answer answer : c.answers) {
            drivers.push_back(std::make_unique<FakeDriver>(answer, answer));
            manager.registerDriver(drivers.back().get(), true);
        }
        tqCoreSvgIODriver* expected =
            c.expected < 0 ? nullptr : drivers[static_cast<std::size_t>(c.expected)].get();
        EXPECT_EQ(manager.getFirstLoadDriver(kSvgSource, LoadOptions()), expected) << c.expected;
        EXPECT_EQ(manager.getFirstSaveDriver("svg", SaveOptions()), expected) << c.expected;
        for (const auto& driver : drivers) {
            EXPECT_EQ(driver->loadQuestions, 1);  // every driver is asked, even after a full match
            EXPECT_EQ(driver->saveQuestions, 1);
        }
    }
}

TEST(DriverRegistry, ListsAskWithDefaultOptionsAndFirstDriverWithTheCallers) {
    TestManager manager;
    FakeDriver partial(tqCoreSvgIODriver::CanHandle, tqCoreSvgIODriver::CanHandle);
    FakeDriver none;
    FakeDriver picky(tqCoreSvgIODriver::CanHandleBest, tqCoreSvgIODriver::CanHandleBest, true);
    FakeDriver loadOnly(tqCoreSvgIODriver::CanHandleBest, tqCoreSvgIODriver::CannotHandle);
    for (FakeDriver* driver : {&partial, &none, &picky, &loadOnly}) {
        manager.registerDriver(driver, true);
    }

    FakeDriver outsider;
    DriverList out{&outsider};
    manager.getLoadDrivers(kSvgSource, out, false);
    EXPECT_EQ(out, (DriverList{&outsider, &partial, &loadOnly}));
    manager.getSaveDrivers("svg", out, true);
    EXPECT_EQ(out, (DriverList{&partial}));
    TestManager empty;
    empty.getSaveDrivers("svg", out, false);
    EXPECT_EQ(out, (DriverList{&partial}));
    empty.getLoadDrivers(kSvgSource, out, true);
    EXPECT_TRUE(out.empty());

    LoadOptions lenient;
    lenient.ignoreUnsupported = true;
    EXPECT_EQ(manager.getFirstLoadDriver(kSvgSource, lenient), &picky);
    SaveOptions withAuthor;
    withAuthor.author = "me";
    EXPECT_EQ(manager.getFirstSaveDriver("svg", withAuthor), &picky);
    EXPECT_EQ(manager.getFirstSaveDriver("svg", SaveOptions()), &partial);
}
