#include "storage/fxmlwriter.h"
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace Tessarine {
namespace {

std::string encoded(const char* text, bool utf8) {
    Buffer buffer("|", 1);
    EXPECT_TRUE(FXmlWriter::encodeString(buffer, text, utf8));
    return {buffer.data(), buffer.getFillSize()};
}

std::string encoded(const tchar* text) {
    Buffer buffer("|", 1);
    EXPECT_TRUE(FXmlWriter::encodeString(buffer, text));
    return {buffer.data(), buffer.getFillSize()};
}

struct EncodingRow {
    const char* text;
    const char* named;  // 8-bit attributes
    const char* plain;  // UTF-8
};
constexpr EncodingRow kEncodings[] = {
    {"",                "|",                               "|"                              },
    {"tty.usbserial-0", "|tty.usbserial-0",                "|tty.usbserial-0"               },
    {"<a & \"b\">'",    "|&lt;a &amp; &quot;b&quot;&gt;'", "|&lt;a &amp; &quot;b&quot;&gt;'"},
    {"$^`",             "|&dollar;&circ;&grave;",          "|$^`"                           },
    {"\n\r\f\t",        "|&nl;&cr;\f\t",                   "|\n\r\f\t"                      },
    {"a\xFFz",          "|a&nbsp;z",                       "|a\xFFz"                        },
    {"\x80\xC3\xA4",    "|&#x80;&#xc3;&#xa4;",             "|\x80\xC3\xA4"                  },
    {"&&",              "|&amp;&amp;",                     "|&amp;&amp;"                    },
};

TEST(XmlEncoding, EightBitText) {
    for (const EncodingRow& row : kEncodings) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(encoded(row.text, false), row.named);
        EXPECT_EQ(encoded(row.text, true), row.plain);
    }
}

TEST(XmlEncoding, SixteenBitTextBecomesUtf8) {
    EXPECT_EQ(encoded(u""), "|");
    EXPECT_EQ(encoded(u"$ '\u00E4' <\u6A5F> \U0001F600 & \""),
              "|$ '\xC3\xA4' &lt;\xE6\xA9\x9F&gt; \xF0\x9F\x98\x80 &amp; &quot;");
    EXPECT_EQ(encoded(std::u16string(10000, u'\u6A5F').c_str()).size(), 30001u);
}

TEST(XmlEncoding, NullIsRefused) {
    Buffer buffer;
    EXPECT_FALSE(FXmlWriter::encodeString(buffer, static_cast<const char*>(nullptr), true));
    EXPECT_FALSE(FXmlWriter::encodeString(buffer, static_cast<const tchar*>(nullptr)));
    EXPECT_EQ(buffer.getFillSize(), 0u);
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

TEST(XmlEntities, BytesThatGoOutByName) {
    std::string bytes;
    for (size_t byte = 0; byte < gAsciiEncodeTable.size(); ++byte) {
        if (gAsciiEncodeTable[byte])
            bytes += char(byte);
    }
    EXPECT_EQ(bytes, "\n\r\"$&<>^`\xFF");
    EXPECT_STREQ(gAsciiEncodeTable[0xFF]->name, "nbsp");
}

}  // namespace
}  // namespace Tessarine
