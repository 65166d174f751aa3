#include "gui/drawing/ucolorset.h"
#include "storage/fpersistent.h"
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
std::string textOf(const UColorSet& set) {
    std::string text;
    for (int32_t index = 0; index < set.count(); ++index) {
        FString name;
        set.getColorName(index, name);
        String narrow(name);
        text += std::string(narrow.text8()) + String().printf("=%06x ", set.getColorSpec(index) & 0xFFFFFF).text8();
    }
    return text;
}

void fill(UColorSet& set) {
    set.addColor(UColor(0xFFFF0000), "red");
    set.addColor(UColor(0xFF808080), "grey");
    set.addColor(UColor(0xFF204060), "sea");
}
}  // namespace

TEST(UColorSet, NamesFollowTheirColors) {
    UColorSet set("Mixer");
    fill(set);
    EXPECT_TRUE(set.addColor(UColor(0xFF000001), "blue", 1));
    EXPECT_TRUE(set.addColor(UColor(0xFF000002), "last", 99));
    EXPECT_EQ(textOf(set), "red=ff0000 blue=000001 grey=808080 sea=204060 last=000002 ");
    EXPECT_EQ(set.getColorIndex("sea"), 3);
    EXPECT_TRUE(set.removeColor(0));
    EXPECT_EQ(textOf(set), "blue=000001 grey=808080 sea=204060 last=000002 ");
    EXPECT_EQ(set.getColorIndex("sea"), 2);
    EXPECT_EQ(set.getColorIndex("red"), -1);
    FString text;
    EXPECT_TRUE(set.getPreferenceName(2, text));
    EXPECT_EQ(text, ConstString("ColorSet.Mixer.2.sea"));
    EXPECT_FALSE(set.getPreferenceName(4, text));
    set.getColorName(-1, text);
    EXPECT_EQ(text, ConstString("Index out of range!"));
    EXPECT_EQ(&set.getColor(0), &set.getColor(-1));
    EXPECT_EQ(set.getColor(-1).toColorSpec(), 0xFFFFFFFF);
    set.set(UColorSet::kFixedSize, true);
    EXPECT_FALSE(set.addColor(UColor(), "more") || set.removeColor(0) || set.removeAll());
    EXPECT_FALSE(set.setColor(4, UColor()));
}

TEST(UColorSet, StepsStopAtTheEnds) {
    const struct {
        const char* name;
        void (UColorSet::*step)(int32_t);
        int32_t amount;
        const char* result;
    } kRows[] = {
        {"as it is",     &UColorSet::increaseBrightness, 0,         "red=ff0000 grey=808080 sea=204060 "},
        {"brighter",     &UColorSet::increaseBrightness, 64,        "red=ff0000 grey=c0c0c0 sea=356ba0 "},
        {"brightest",    &UColorSet::increaseBrightness, INT32_MAX, "red=ff0000 grey=ffffff sea=55aaff "},
        {"black",        &UColorSet::decreaseBrightness, 300,       "red=000000 grey=000000 sea=000000 "},
        {"grey",         &UColorSet::decreaseSaturation, 300,       "red=ffffff grey=808080 sea=606060 "},
        {"other way",    &UColorSet::decreaseBrightness, INT32_MIN, "red=ff0000 grey=ffffff sea=55aaff "},
        {"full colours", &UColorSet::increaseSaturation, 300,       "red=ff0000 grey=800000 sea=003060 "},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name);
        UColorSet set("");
        fill(set);
        set.initDefaults();
        (set.*row.step)(row.amount);
        EXPECT_EQ(textOf(set), row.result);
        set.restoreDefaults();
        EXPECT_EQ(textOf(set), "red=ff0000 grey=808080 sea=204060 ");
    }
}

TEST(UColorSet, ComesBackFromAttributesWholeOrNotAtAll) {
    UColorSet set("Mixer", UColorSet::kFixedSize);
    set.set(UColorSet::kFixedSize, false);
    fill(set);
    set.initDefaults();
    set.removeColor(1);
    for (const bool fixedSize : {false, true}) {
        set.set(UColorSet::kFixedSize, fixedSize);
        FAttributes stored;
        ASSERT_TRUE(set.storeAttributes(stored));
        EXPECT_EQ(stored.containsAttribute("FixedSize"), fixedSize);
        EXPECT_EQ(stored.countQueueItems("Set"), 2);
        EXPECT_EQ(stored.countQueueItems("DefSet"), 3);
        UColorSet read("other");
        EXPECT_TRUE(read.restoreAttributes(stored));
        EXPECT_TRUE(read.restoreAttributes(stored)) << "and once more";
        EXPECT_TRUE(read.isEqual(&set));
        OPtr<FAttributes> broken(new FAttributes);
        broken->set("Name", ConstString("no colour"));
        stored.queueAttributes("Set", broken);
        EXPECT_FALSE(read.restoreAttributes(stored));
        EXPECT_TRUE(read.isEqual(&set));
    }
}
