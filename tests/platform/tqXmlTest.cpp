#include <tqSystem/tqSystem.h>
#include <tqXml/tqXml.h>

#include <gtest/gtest.h>

#include <libxml/xmlwriter.h>

#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

using namespace tq::xml;

namespace {

// Records every event as one line, so that a test compares one text.
class Recorder : public XmlSaxParserHandler {
public:
    bool startDocument() override {
        trace += "start-document\n";
        return true;
    }
    bool endDocument() override {
        trace += "end-document\n";
        return true;
    }
    StartElementResult startElement(const char* name,
                                    const std::vector<XmlAttribute>& attributes) override {
        trace += std::string("<") + name;
        for (const auto& a : attributes) {
            trace += " [" + std::string(a.prefix) + "|" + std::string(a.localName) + "=" +
                     std::string(a.value) + "]";
        }
        trace += "\n";
        return StartElementResult::Continue;
    }
    bool endElement(const char* name) override {
        trace += std::string("</") + name + "\n";
        return true;
    }
    bool characters(const char* text, int length) override {
        text_.append(text, static_cast<std::size_t>(length));
        return true;
    }
    bool onParserMessage(const std::string& message, int severity) override {
        messages.push_back({message, severity});
        return severity == XmlWarning;
    }

    std::string trace;
    std::string text_;
    std::vector<std::pair<std::string, int>> messages;
};

bool parse(const std::string& xml, Recorder& recorder) {
    tqIoDeviceMemory device(xml);
    return ParseXmlStream(device, recorder, nullptr);
}

}  // namespace

TEST(ParseXmlStream, MalformedXmlReportsTheParsersTextAsFatal) {
    const char* documents[] = {"<a><b></a>",     "", "<a>", "<a x='1' x='2'/>", "\x01garbage",
                               "<a>\xff\xfe</a>"};
    for (const char* xml : documents) {
        Recorder r;
        EXPECT_FALSE(parse(xml, r)) << xml;
        ASSERT_FALSE(r.messages.empty()) << xml;
        EXPECT_EQ(r.messages.front().second, XmlFatalError) << xml;
        EXPECT_EQ(r.trace.find("end-document"), std::string::npos) << xml;
    }
    Recorder r;
    parse("<a>\n<b></a>", r);
    EXPECT_EQ(r.messages.front().first.rfind("line 2, column ", 0), 0u) << r.messages.front().first;
    for (const char* nothing : {"", " \r\n\t "}) {
        Recorder empty;
        EXPECT_FALSE(parse(nothing, empty));
        EXPECT_EQ(empty.messages.front().first, "The document is empty");
    }
}

TEST(ParseXmlStream, HandlerExceptionsReachTheCallerAfterTheParserStopped) {
    struct Thrower : Recorder {
        StartElementResult startElement(const char* name,
                                        const std::vector<XmlAttribute>& a) override {
            Recorder::startElement(name, a);
            throw std::runtime_error("from handler");
        }
    } r;
    tqIoDeviceMemory device(std::string("<a><b/></a>"));
    EXPECT_THROW(ParseXmlStream(device, r, nullptr), std::runtime_error);
    EXPECT_EQ(r.trace, "start-document\n<a\n");
}

TEST(ParseXmlStream, CancelAndDeviceFailuresStop) {
    struct Cancelled : tqCancelInterface {
        bool isCancelled() const override { return true; }
    } cancel;
    std::string big(200000, ' ');
    tqIoDeviceMemory device("<a>" + big + "</a>");
    Recorder r;
    EXPECT_FALSE(ParseXmlStream(device, r, &cancel));

    struct Broken : tqIoDevice {
        bool isOpen() const override { return true; }
        int64 read(char*, int64) override { return -1; }
        int64 write(const char*, int64) override { return -1; }
        void close() override {}
    } broken;
    Recorder r2;
    EXPECT_FALSE(ParseXmlStream(broken, r2, nullptr));
    ASSERT_FALSE(r2.messages.empty());
    EXPECT_EQ(r2.messages.back().first, "Failed to read the input");
}

TEST(XmlSaveContext, EachFlushWritesWhatWasAddedSinceTheLastAndFailuresSetTheirCode) {
    XmlSaveContext context(false);
    tqIoDeviceMemory device;
    EXPECT_TRUE(context.startElement("a", 1) && context.writeText("text", 1));
    EXPECT_TRUE(context.flushBufferToDevice(device, 100) && device.getContent().empty());
    EXPECT_TRUE(context.flushBufferToDevice(device, 0));
    EXPECT_TRUE(context.endElement(1) && context.flushBufferToDevice(device, 0));
    EXPECT_EQ(device.getContent(), "<a>text</a>");
    EXPECT_FALSE(context.endElement(XmlSaveContext::Unchecked) || context.errorCode != 0);
    EXPECT_FALSE(context.writeAttribute("a", "b", 6));  // no element open
    EXPECT_EQ(context.errorCode, 6);
}

// Values that need no escaping skip libxml2's escaper; the bytes must be what it writes.
TEST(XmlSaveContext, AttributesAreWrittenAsLibxml2WritesThem) {
    for (const char* value : {"", "M0 0L1-2.5e+20Z", "a\"b", "<&>", "a\tb\nc\rd", "\x01\x1f",
                              "\x7f", "\xc3\xa9", "\xe2\x82", "x\xff"}) {
        XmlSaveContext ours(true), theirs(true);
        tqIoDeviceMemory a, b;
        ours.startElement("e", 1);
        ours.writeAttribute("v", value, 6);
        xmlTextWriterStartElement(theirs.writer, BAD_CAST "e");
        xmlTextWriterWriteAttribute(theirs.writer, BAD_CAST "v", BAD_CAST value);
        for (XmlSaveContext* context : {&ours, &theirs}) {
            context->startElement("c", 1);
            context->endDocument(3);
        }
        EXPECT_TRUE(ours.flushBufferToDevice(a, 0) && theirs.flushBufferToDevice(b, 0));
        EXPECT_EQ(a.getContent(), b.getContent()) << value;
    }
}
