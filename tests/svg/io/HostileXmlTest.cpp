// Documents made to hurt the reader: entities that reach for files or the network or expand
// without end, depth, size, broken encodings and garbage. Each must be refused with a message, in
// bounded time, without touching anything outside the document.
#include "svg/tqSvg.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <list>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "LibraryTest.h"

using namespace tq::svg;
using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;

// Far above what any of these documents needs even under the sanitizers, far below what an
// unbounded expansion or a network timeout would take.
constexpr std::chrono::seconds kTimeBound(10);

class HostileXml : public tq::test::LibraryTest {
protected:
    struct Outcome : tq::test::Loaded {
        bool replaced = false;  // the caller's item changed
        std::string saved;      // the loaded tree saved again, when one loaded
        Clock::duration elapsed{};
    };

    static Outcome loadTimed(const std::string& text, bool ignoreUnsupported = false,
                             bool saveAgain = true) {
        const tq::test::Item marker = std::make_shared<Node>();
        const auto start = Clock::now();
        Outcome outcome;
        static_cast<tq::test::Loaded&>(outcome) = load(text, ignoreUnsupported, marker);
        outcome.elapsed = Clock::now() - start;
        outcome.replaced = outcome.root != marker;
        if (saveAgain && outcome.ok && outcome.root) {
            outcome.saved = save(*outcome.root);
        }
        return outcome;
    }
};

// A TCP listener on an ephemeral port of the loopback interface that tells whether anybody
// connected: the kernel completes a connection into the backlog without an accept().
class Listener {
public:
    Listener() {
        mSocket = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (mSocket < 0 || bind(mSocket, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            listen(mSocket, 8) != 0 ||
            getsockname(mSocket, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
            return;
        }
        mPort = ntohs(address.sin_port);
    }
    ~Listener() {
        if (mSocket >= 0) {
            close(mSocket);
        }
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    int port() const { return mPort; }
    std::string url(const std::string& file) const {
        return "http://127.0.0.1:" + std::to_string(mPort) + "/" + file;
    }
    bool connected() const {
        pollfd pending{mSocket, POLLIN, 0};
        return poll(&pending, 1, 0) > 0;
    }

private:
    int mSocket = -1;
    int mPort = 0;
};

std::string repeated(const std::string& piece, std::size_t count) {
    std::string out;
    out.reserve(piece.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        out += piece;
    }
    return out;
}

// Ten levels of ten references each over "ha": 2 * 10^10 bytes once expanded.
std::string laughs(const std::string& body) {
    std::string dtd = "<!ENTITY l0 \"ha\">";
    for (int i = 1; i <= 10; ++i) {
        dtd += "<!ENTITY l" + std::to_string(i) + " \"" +
               repeated("&l" + std::to_string(i - 1) + ";", 10) + "\">";
    }
    return "<!DOCTYPE svg [" + dtd + "]><svg>" + body + "</svg>";
}

std::string randomBytes(std::uint32_t seed, std::size_t count) {
    std::mt19937 random(seed);
    std::string bytes(count, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

// Everything here is refused whatever the options: no case is about unsupported content.
std::vector<std::pair<const char*, std::string>> hostileDocuments() {
    return {
        {"billion laughs", laughs("<text>&l10;</text>")},
        {"quadratic blowup", "<!DOCTYPE svg [<!ENTITY a \"" + std::string(100000, 'x') +
                                 "\">]><svg><text>" + repeated("&a;", 100000) + "</text></svg>"},
        {"entity expanding into an attribute", laughs("<rect id=\"&l10;\"/>")},
        {"recursive entity",
         "<!DOCTYPE svg [<!ENTITY a \"&b;\"><!ENTITY b \"&a;\">]><svg><text>&a;</text></svg>"},
        {"100k-deep nesting",
         "<svg>" + repeated("<g>", 100000) + repeated("</g>", 100000) + "</svg>"},
        {"100 MB attribute value", "<svg><rect id=\"" + std::string(100 << 20, 'a') + "\"/></svg>"},
        {"truncated in an attribute", "<svg><g><rect x=\"1"},
        {"truncated after a start tag", "<svg><g>"},
        {"empty input", ""},
        {"invalid UTF-8 in an element name",
         "<svg><r\xff\xfe"
         "ect/></svg>"},
        {"invalid UTF-8 in an attribute name", "<svg><rect \xc3(=\"1\"/></svg>"},
        {"invalid UTF-8 in an attribute value", "<svg><path d=\"M0 0 L1 1\xc3\x28\"/></svg>"},
        {"invalid UTF-8 in text", "<svg><text>a\xed\xa0\x80z</text></svg>"},
        {"overlong UTF-8 encoding", "<svg><text>\xc0\xbc</text></svg>"},
        {"bytes that do not match the declared encoding",
         "<?xml version=\"1.0\" encoding=\"ISO-2022-JP\"?><svg><rect/>\x1b$B\xff\xff</svg>"},
        {"NUL byte in content", "<svg>\0<rect/></svg>"s},
        {"NUL byte in an attribute value", "<svg><rect id=\"a\0b\"/></svg>"s},
        {"binary garbage", randomBytes(20240611, 1 << 20)},
        {"binary garbage after a root tag", "<svg>" + randomBytes(7, 65536)},
    };
}

}  // namespace

TEST_F(HostileXml, EveryCaseIsRefusedWithAMessageInBoundedTime) {
    for (const auto& [name, document] : hostileDocuments()) {
        for (bool ignoreUnsupported : {false, true}) {
            SCOPED_TRACE(std::string(name) +
                         (ignoreUnsupported ? ", ignoring unsupported" : ", strict"));
            const Outcome outcome = loadTimed(document, ignoreUnsupported);
            EXPECT_FALSE(outcome.ok) << outcome.saved.substr(0, 300);
            EXPECT_FALSE(outcome.replaced);
            EXPECT_FALSE(outcome.messages.empty());
            // A message quotes at most a bounded part of the document.
            EXPECT_LT(outcome.messages.size(), 100000u) << outcome.messages.substr(0, 300);
            EXPECT_LT(outcome.elapsed, kTimeBound);
        }
    }
}

TEST_F(HostileXml, ExternalEntitiesNeverReadALocalFile) {
    const std::string secret = "tqsvg-secret-7f3a9c";
    const fs::path file = directory / "secret.txt";
    std::ofstream(file) << secret;
    std::ofstream(directory / "secret.dtd") << "<!ENTITY leak \"" << secret << "\">";
    const std::string url = "file://" + file.string();
    const std::string dtdUrl = "file://" + (directory / "secret.dtd").string();
    const std::string documents[] = {
        // A general entity in text, by URL and by plain path.
        "<!DOCTYPE svg [<!ENTITY x SYSTEM \"" + url + "\">]><svg><text>&x;</text></svg>",
        "<!DOCTYPE svg [<!ENTITY x SYSTEM \"" + file.string() + "\">]><svg><text>&x;</text></svg>",
        // In an attribute value, where XML forbids it anyway.
        "<!DOCTYPE svg [<!ENTITY x SYSTEM \"" + url + "\">]><svg><rect id=\"&x;\"/></svg>",
        // A parameter entity pulling declarations in, and an external subset.
        "<!DOCTYPE svg [<!ENTITY % p SYSTEM \"" + dtdUrl +
            "\"> %p;]><svg><text>&leak;</text></svg>",
        "<!DOCTYPE svg SYSTEM \"" + dtdUrl + "\"><svg><text>&leak;</text></svg>",
        // Inside a style sheet, whose text the loader keeps.
        "<!DOCTYPE svg [<!ENTITY x SYSTEM \"" + url + "\">]><svg><style>&x;</style></svg>",
    };
    for (const std::string& document : documents) {
        for (bool ignoreUnsupported : {false, true}) {
            SCOPED_TRACE(document);
            const Outcome outcome = loadTimed(document, ignoreUnsupported);
            EXPECT_EQ(outcome.messages.find(secret), std::string::npos) << outcome.messages;
            EXPECT_EQ(outcome.saved.find(secret), std::string::npos) << outcome.saved;
            EXPECT_LT(outcome.elapsed, kTimeBound);
        }
    }
}

TEST_F(HostileXml, NothingIsFetchedFromTheNetwork) {
    Listener listener;
    ASSERT_NE(listener.port(), 0) << "no loopback listener";
    const std::string documents[] = {
        "<!DOCTYPE svg SYSTEM \"" + listener.url("x.dtd") + "\"><svg/>",
        "<!DOCTYPE svg PUBLIC \"-//W3C//DTD SVG 1.1//EN\" \"" + listener.url("svg11.dtd") +
            "\"><svg><rect/></svg>",
        "<!DOCTYPE svg [<!ENTITY % remote SYSTEM \"" + listener.url("e.dtd") +
            "\"> %remote;]><svg/>",
        "<!DOCTYPE svg [<!ENTITY x SYSTEM \"" + listener.url("x.txt") +
            "\">]><svg><text>&x;</text></svg>",
    };
    for (const std::string& document : documents) {
        SCOPED_TRACE(document);
        const Outcome outcome = loadTimed(document);
        EXPECT_LT(outcome.elapsed, kTimeBound);
        EXPECT_FALSE(listener.connected());
        // Refused or loaded without the remote part; either way with nothing from it.
        if (!outcome.ok) {
            EXPECT_FALSE(outcome.messages.empty());
        }
    }
}

TEST_F(HostileXml, TheBoundsLeaveOrdinaryDocumentsAlone) {
    // 256 nested elements, the root included, is the deepest document accepted.
    const auto nested = [](int groups) {
        return "<svg>" + repeated("<g>", groups) + "<rect/>" + repeated("</g>", groups) + "</svg>";
    };
    EXPECT_TRUE(loadTimed(nested(254)).ok);
    const Outcome tooDeep = loadTimed(nested(255));
    EXPECT_FALSE(tooDeep.ok);
    EXPECT_NE(tooDeep.messages.find("Excessive depth"), std::string::npos) << tooDeep.messages;

    // Entities may expand a document severalfold, and a small one up to the fixed allowance.
    const std::string kilobyte(1000, 'x');
    const Outcome expanded = loadTimed("<!DOCTYPE svg [<!ENTITY k \"" + kilobyte +
                                       "\">]><svg><text>" + repeated("&k;", 4000) +
                                       "</text><rect id=\"" + repeated("&k;", 100) + "\"/></svg>");
    EXPECT_TRUE(expanded.ok) << expanded.messages;
    EXPECT_NE(expanded.saved.find(repeated(kilobyte, 4000)), std::string::npos);

    // Plain text as large as the allowance and more, without entities, is no expansion.
    const std::string text(17 << 20, 't');
    const Outcome large = loadTimed("<svg><text>" + text + "</text></svg>", false, false);
    EXPECT_TRUE(large.ok) << large.messages;
}
