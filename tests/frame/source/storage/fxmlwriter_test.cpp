#include "storage/fxmlwriter.h"
#include "archiveprobes.h"

namespace Tessarine {
namespace {

template <class... Utf8>
std::string encoded(const auto* text, Utf8... utf8) {
    Buffer buffer("|", 1);
    buffer.fillup('?');
    EXPECT_TRUE(FXmlWriter::encodeString(buffer, text, utf8...));
    return sizeof...(utf8) ? std::string(buffer.data(), buffer.getFillSize()) : buffer.data();  // with an end
}

// named: 8-bit attributes; plain: UTF-8
constexpr std::tuple<const char*, const char*, const char*> kEncodings[] = {
    {"<a & \"b\">'", "|&lt;a &amp; &quot;b&quot;&gt;'", "|&lt;a &amp; &quot;b&quot;&gt;'"},
    {"$^`",          "|&dollar;&circ;&grave;",          "|$^`"                           },
    {"\n\r\f\t",     "|&nl;&cr;\f\t",                   "|\n\r\f\t"                      },
    {"a\xFFz",       "|a&nbsp;z",                       "|a\xFFz"                        },
    {"\x80\xC3\xA4", "|&#x80;&#xc3;&#xa4;",             "|\x80\xC3\xA4"                  },
};

TEST(XmlEncoding, IsThatOfTheText) {
    for (const auto& [text, named, plain] : kEncodings) {
        EXPECT_EQ(encoded(text, false), named);
        EXPECT_EQ(encoded(text, true), plain);
    }
    EXPECT_EQ(encoded(u"$ '\u00E4' <\u6A5F> \U0001F600 & \""),
              "|$ '\xC3\xA4' &lt;\xE6\xA9\x9F&gt; \xF0\x9F\x98\x80 &amp; &quot;");
}

TEST(FXmlWriter, RefusesWhatWouldNotNest) {
    FMemoryStream target;
    FXmlWriter writer(&target, FXmlWriter::kOmitEmptyAttributes | FXmlWriter::kEncodeAttributes);
    const char* names[] = {"kept", "omitted", "null"};
    const char* values[] = {"1&2", "", nullptr};
    EXPECT_EQ(writer.writeStartTag("a", 3, names, values, false), 0);
    EXPECT_EQ(writer.writeEndTag("b"), 1);
    EXPECT_EQ(writer.writeData(nullptr, 0), 1);
    EXPECT_EQ(writer.writeComment(" \t"), 1);
    EXPECT_EQ(writer.writeComment("c"), 0);
    EXPECT_EQ(writer.writeStartTag("b", 0, nullptr, nullptr, false), 0);
    char text[] = "text";
    EXPECT_EQ(writer.writeData(text, 4), 0);
    EXPECT_EQ(writer.writeEndTag("b"), 0);
    EXPECT_EQ(writer.writeEndTag("a"), 0);
    EXPECT_EQ(writer.writeEndTag("a"), 1);
    EXPECT_TRUE(writer.newLine());
    EXPECT_EQ(textOf(target), "<a kept=\"1&amp;2\">\r\n\t<!-- c -->\r\n\t<b>\r\n\t\ttext\r\n\t</b>\r\n</a>\r\n\r\n");
    FXmlWriter nowhere(nullptr);
    EXPECT_EQ(nowhere.writeStartTag("a", 0, nullptr, nullptr, true), 1);
}

}  // namespace
}  // namespace Tessarine
