#include "gui/values/ucolor.h"
#include "base/source/fstring.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fmstream.h"
#include "storage/fnewarchive.h"
#include "storage/fpersistent.h"
#include <cmath>
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
    {"$-120,100,999,200", true,  0,      0,      0,      65535,  "#000000"  }, // no sector has it
    {"$-1,100,100",       true,  0xFF00, 0,      0,      7,      "#FF000000"}, // rounds up to 0
    {"$-2,100,100",       true,  0,      0,      0,      7,      "#00000000"},
    {"$-120,0,50",        true,  0x8000, 0x8000, 0x8000, 7,      "#80808000"}, // grey needs none
    {"$120 50 50",        true,  0,      0,      0,      7,      "#00000000"}, // separators eat a digit
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
    for (int32_t hue = 0; hue <= 720; ++hue) {
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

TEST(UColor, ArithmeticWorksOnHighBytes) {
    UColor color(65535, 0x1000, 0, 0x1234);
    color.invert();
    EXPECT_EQ(color, UColor(65281, 0xEF00, 0xFF00, 0x1234));
    EXPECT_EQ(UColor(UColor(0x10FF, 0, 0x2000, 0x12FF), UColor(0x30FF, 0, 0x1000), 0.5F),
              UColor(0x207F, 0, 0x1800, 0x1200));
    const struct {
        uint32_t from;
        void (*change)(UColor& color);
        uint32_t to;
    } rows[] = {
        {0xFF640000, [](UColor& c) { c.adjustHSL(0, 0, 0); },       0xFF640000},
        {0x80640000, [](UColor& c) { c.adjustHSL(24, 0, 0); },      0x80642800},
        {0xFF640000, [](UColor& c) { c.adjustHSL(-720, -101, 0); }, 0xFF323232},
        {0xFF808080, [](UColor& c) { c.adjustHSL(0, 50, 100); },    0xFFCACACA},
        {0xFF808080, [](UColor& c) { c.adjustHSL(0, 0, -100); },    0xFF494949},
        {0x12000000, [](UColor& c) { c.changeBrightness(1.5F); },   0x12808080},
        {0xFF404040, [](UColor& c) { c.changeBrightness(9); },      0xFFFFFFFF},
        {0xFF646464, [](UColor& c) { c.makeContrastColor(1); },     0xFF131313},
        {0xFF00FF00, [](UColor& c) { c.setHue(0); },                0xFFFF0000},
        {0xFF00FF00, [](UColor& c) { c.setHue(INT32_MAX); },        0xFF000000},
        {0xFF885E5E, [](UColor& c) { c.setHue(88); },               0xFF5E8861}, // what is exact isn't cut
        {0xFFFF0000, [](UColor& c) { c.setSaturation(0); },         0xFFFFFFFF},
        {0xFF646464, [](UColor& c) { c.setHue(1000); },             0xFF646464},
        {0xFF646464, [](UColor& c) { c.blend(c, NAN); },            0xFF000000},
        {0xFF646464, [](UColor& c) { c.fromHSL(NAN, NAN, 255); },   0xFFFFFFFF},
    };
    for (const auto& row : rows) {
        UColor changed(row.from);
        row.change(changed);
        EXPECT_EQ(changed, UColor(row.to)) << std::hex << row.from << " " << changed.toColorSpec();
    }
    const UColor orange(0xFFFFA500);
    EXPECT_EQ(orange.getLumination(), 255);
    EXPECT_EQ(orange.getHue(), 28);
    EXPECT_NEAR(UColor(0xFFFFFFFF).getTrueLuminance(), 0.996F, 0.001F);
    EXPECT_TRUE(orange.isSimilar(UColor(0xFFFEA500), 0.001F));
    EXPECT_FALSE(orange.isSimilar(UColor(0xFF00A500), 0.1F));
    EXPECT_EQ(UColor("nothing", orange), orange);
    EXPECT_EQ(UColor("gold", orange), UColor(kGold));
    EXPECT_EQ(UColor("$0,0,100", UColor(1, 2, 3, 7)), UColor(0xFF00, 0xFF00, 0xFF00));  // opaque
}

}  // namespace
}  // namespace Tessarine
