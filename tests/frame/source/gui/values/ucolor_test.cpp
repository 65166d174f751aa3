#include "gui/values/ucolor.h"
#include "base/source/fstring.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fmstream.h"
#include "storage/fnewarchive.h"
#include "storage/fpersistent.h"
#include <gtest/gtest.h>
#include <string>

namespace Tessarine {
namespace {

std::string textOf(const UColor& color) {
    String text;
    color.colorToString(text);
    return text.text8();
}

struct ColorRow {
    const char* text;
    bool taken;
    uint16_t red, green, blue, alpha;
    const char* shown;
};

const ColorRow kColors[] = {
    {"gray10",            true,  0xEB00, 0xEB00, 0xEB00, 0xFF00, "gray5"    }, // of one spec
    {"#102030",           true,  0x1000, 0x2000, 0x3000, 0xFF00, "#102030FF"},
    {"#11223344",         true,  0x1100, 0x2200, 0x3300, 0x4400, "#11223344"},
    {"$0,100,100",        true,  0xFF00, 0,      0,      7,      "#FF000000"},
    {"$120/100,100,50",   true,  0x0100, 0xFF00, 0,      32767,  "#01FF007F"},
    {"$-120,100,999,200", true,  0,      0x0300, 0xFF00, 65535,  "#0003FF"  },
    {"#12345",            false, 1,      2,      3,      7,      "#00000000"},
    {"#12345x",           true,  0x1200, 0x3400, 0x0500, 0xFF00, "#123405FF"}, // the length alone decides
    {"$120,50",           false, 1,      2,      3,      7,      "#00000000"},
    {"",                  false, 1,      2,      3,      7,      "#00000000"},
};

TEST(UColor, ReadsItsTextsAndShowsTheShortestOne) {
    for (const ColorRow& row : kColors) {
        SCOPED_TRACE(row.text);
        UColor color(1, 2, 3, 7);
        EXPECT_EQ(UColor::colorFromString(row.text, color), row.taken);
        EXPECT_EQ(std::tie(color.red, color.green, color.blue, color.alpha),
                  std::tie(row.red, row.green, row.blue, row.alpha));
        EXPECT_EQ(textOf(color), row.shown);
    }
}

TEST(UColor, EveryHueKeepsItsChannels) {
    for (int32_t hue = -360; hue <= 720; ++hue) {
        SCOPED_TRACE(hue);
        std::string text = std::to_string(hue) + ",100,100";
        text.insert(text.begin(), '$');
        UColor color;
        ASSERT_TRUE(UColor::colorFromString(text.c_str(), color));
        EXPECT_EQ(std::max({color.red, color.green, color.blue}), 0xFF00);
        EXPECT_LE(std::min({color.red, color.green, color.blue}), 0x0100);
    }
}

TEST(UColor, LosesAlphaInArchivesOnly) {
    const UColor source(0x1234, 0x5678, 0x9ABC, 0x4000);
    UColor read, restored;
    FMemoryStream stream;
    FNewArchive writer(&stream, true), reader(&stream, false);
    EXPECT_TRUE(source.externalize(writer));
    EXPECT_EQ(std::string(stream.getData(), 6), "\x34\x12\xBC\x9A\x78\x56");  // red, blue, green
    stream.rewind();
    EXPECT_TRUE(read.internalize(reader));
    EXPECT_EQ(read, UColor(0x1234, 0x5678, 0x9ABC, 0xFFFF));
    EXPECT_EQ(textOf(read), "#12569A");
    EXPECT_FALSE(read.internalize(reader));
    const OPtr<FAttributes> attributes(new FAttributes);
    EXPECT_TRUE(source.storeAttributes(*attributes) && restored.restoreAttributes(*attributes));
    EXPECT_EQ(restored, source);
    attributes->removeAttribute("Alpha");
    EXPECT_TRUE(restored.restoreAttributes(*attributes));
    EXPECT_EQ(restored.alpha, UColor::kOpaque);
}

}  // namespace
}  // namespace Tessarine
