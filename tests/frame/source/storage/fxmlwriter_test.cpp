#include "storage/fxmlwriter.h"
#include "archiveprobes.h"
#include "base/source/classfactory.h"
#include "storage/fxmlparser.h"
#include <cstring>
#include <map>

namespace Tessarine {
namespace {

std::string encoded(const char* text, bool utf8) {
    Buffer buffer("|", 1);
    EXPECT_TRUE(FXmlWriter::encodeString(buffer, text, utf8));
    return {buffer.data(), buffer.getFillSize()};
}

std::string encoded(const tchar* text) {
    Buffer buffer("|", 1);
    buffer.fillup('?');
    EXPECT_TRUE(FXmlWriter::encodeString(buffer, text));
    EXPECT_EQ(std::strlen(buffer.data()), buffer.getFillSize());
    return {buffer.data(), buffer.getFillSize()};
}

// named: 8-bit attributes; plain: UTF-8
constexpr std::tuple<const char*, const char*, const char*> kEncodings[] = {
    {"<a & \"b\">'", "|&lt;a &amp; &quot;b&quot;&gt;'", "|&lt;a &amp; &quot;b&quot;&gt;'"},
    {"$^`",          "|&dollar;&circ;&grave;",          "|$^`"                           },
    {"\n\r\f\t",     "|&nl;&cr;\f\t",                   "|\n\r\f\t"                      },
    {"a\xFFz",       "|a&nbsp;z",                       "|a\xFFz"                        },
    {"\x80\xC3\xA4", "|&#x80;&#xc3;&#xa4;",             "|\x80\xC3\xA4"                  },
};

TEST(XmlEncoding, EightBitText) {
    for (const auto& [text, named, plain] : kEncodings) {
        SCOPED_TRACE(text);
        EXPECT_EQ(encoded(text, false), named);
        EXPECT_EQ(encoded(text, true), plain);
    }
}

TEST(XmlEncoding, SixteenBitTextBecomesUtf8) {
    EXPECT_EQ(encoded(u"$ '\u00E4' <\u6A5F> \U0001F600 & \""),
              "|$ '\xC3\xA4' &lt;\xE6\xA9\x9F&gt; \xF0\x9F\x98\x80 &amp; &quot;");
    EXPECT_EQ(encoded(u""), "|");
    Buffer buffer;
    EXPECT_FALSE(FXmlWriter::encodeString(buffer, static_cast<const tchar*>(nullptr)));
}

TEST(XmlEntities, KeepTheirOrderAndTheirSlips) {
    std::map<std::string, std::pair<int32_t, int32_t>> seen;  // how often, and the Windows code of the first
    for (int32_t i = 0; i < kNumEntities8; ++i) {
        EXPECT_STREQ(gEntityTable8Win[i].name, gEntityTable8Mac[i].name);
        EXPECT_EQ(gEntityTable8Win[i].onOutput, gEntityTable8Mac[i].onOutput);
        auto& [count, code] = seen[gEntityTable8Win[i].name];
        code = count++ ? code : gEntityTable8Win[i].code;
    }
    EXPECT_EQ(seen["iquest"], (std::pair<int32_t, int32_t>(2, 0xBF)));
    EXPECT_EQ(seen["half"].second, seen["frac12"].second);
    EXPECT_EQ(seen.count("Acirc") + seen.count("shy"), 0u);
    EXPECT_EQ(seen.size(), 129u);
}

/** Writes what it reads. */
class Copier : public FXmlParser {
public:
    Copier(FStream* source, FStream* target) : FXmlParser(source), writer(target, FXmlWriter::kEncodeAttributes) {
        options = kParseComments;
    }
    bool startTag(const char* name, CmContainer& attributes, bool empty, void*) override {
        return writer.writeStartTag(name, attributes, empty) == kResultOk;
    }
    bool endTag(const char* name, void*) override { return writer.writeEndTag(name) == kResultOk; }
    void gotData(void* data, uint32_t size, void*) override {
        FXmlTextFormat<4096> format(0);
        const int32_t length = format.format(data, int32_t(size));
        writer.writeData(std::string(format.text, size_t(length)).data(), uint32_t(length));
    }
    void gotComment(const char* text, void*, bool) override { writer.writeComment(text); }

    FXmlWriter writer;
};

TEST(FXmlWriter, WritesWhatFXmlParserReads) {
    const std::string golden = goldenFile("fxmlwriter.xml");
    const OPtr<FMemoryStream> source = streamOf(golden);
    FMemoryStream target;
    Copier copier(source, &target);
    EXPECT_TRUE(copier.writer.outputLine("<?xml version=\"1.0\" standalone=\"yes\"?>", 0));
    EXPECT_TRUE(copier.process(nullptr));
    EXPECT_EQ(textOf(target), golden);
}

TEST(FXmlWriter, RefusesWhatWouldNotNest) {
    FMemoryStream target;
    FXmlWriter writer(&target, FXmlWriter::kOmitEmptyAttributes);
    const char* names[] = {"kept", "omitted", "null"};
    const char* values[] = {"1&2", "", nullptr};
    EXPECT_EQ(writer.writeStartTag("a", 3, names, values, false), 0);
    EXPECT_EQ(writer.writeEndTag("b"), 1);
    EXPECT_EQ(writer.writeData(nullptr, 0), 1);
    EXPECT_EQ(writer.writeComment(" \t"), 1);
    EXPECT_EQ(writer.writeEndTag("a"), 0);
    EXPECT_EQ(writer.writeEndTag("a"), 1);
    EXPECT_TRUE(writer.newLine());
    EXPECT_EQ(textOf(target), "<a kept=\"1&2\">\r\n</a>\r\n\r\n");
    FUnknown* made = ClassFactory::instance(false)->createObjectByID(IXmlWriter::iid);
    const OPtr<IXmlWriter> component(static_cast<IXmlWriter*>(made));
    ASSERT_TRUE(component);
    EXPECT_EQ(component->writeStartTag("a", 0, nullptr, nullptr, true), 1);  // without a stream
    EXPECT_EQ(component->initialize(nullptr), 2);
    EXPECT_EQ(component->initialize(&target), 0);
    EXPECT_EQ(component->writeStartTag("a", 0, nullptr, nullptr, true), 0);
}

}  // namespace
}  // namespace Tessarine
