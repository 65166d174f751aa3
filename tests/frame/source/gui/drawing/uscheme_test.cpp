#include "gui/drawing/hooks.h"
#include "gui/drawing/usystemscheme.h"
#include "pluginterfaces/base/smartpointer.h"
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
class Scheme : public testing::Test {
protected:
    ~Scheme() override { gDrawingHooks = before; }
    uint32_t spec(int32_t color) const { return scheme->getColor(USchemeColor(color)).toColorSpec(); }

    const DrawingHooks before = gDrawingHooks;
    const OPtr<UScheme> scheme{new UScheme};
};
}  // namespace

TEST_F(Scheme, TablesRunDownTheirColumns) {
    const struct {
        int32_t (*index)(const char*);
        const char* name;
        int32_t place;
    } kRows[] = {
        {UScheme::getColorIndex, "buttonface",          0 },
        {UScheme::getColorIndex, "datafieldback",       12},
        {UScheme::getColorIndex, "labelcolor",          20},
        {UScheme::getColorIndex, "labelcolorinactive",  21},
        {UScheme::getColorIndex, "hyperlink",           35},
        {UScheme::getColorIndex, "progressbar",         39},
        {UScheme::getSizeIndex,  "scrollbarwidth",      6 },
        {UScheme::getSizeIndex,  "expansionboxheight",  18},
        {UScheme::getSizeIndex,  "dlg.btn.sizer.inset", 23},
        {UScheme::getFontIndex,  "smalldata",           6 },
        {UScheme::getFontIndex,  "largedata",           7 },
        {UScheme::getFontIndex,  "column",              13},
        {UScheme::getColorIndex, "Frame",               -1},
        {UScheme::getColorIndex, "fram",                -1},
        {UScheme::getSizeIndex,  "",                    -1},
        {UScheme::getFontIndex,  nullptr,               -1},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(row.index(row.name), row.place) << row.name;
}

TEST_F(Scheme, StartsWithTheStandardAndSmoothsAll) {
    const struct {
        USchemeColor color;
        uint32_t spec;
    } kRows[] = {
        {kSchemeButtonFace,   0xFFDEDEDE},
        {kSchemeFrameBottom,  0xFFB4B4B4},
        {kSchemeDataFieldTop, 0xFF787878},
        {kSchemeFocus,        0xFF8C8C8C},
        {kSchemeListSelect,   0xFFC8C8C8},
        {kSchemeToolTipBack,  0xFFFFFFC8},
        {kSchemeHyperlink,    0xFF0000FF},
        {kSchemeProgressBar,  0xFF005A00},
        {USchemeColor(40),    0xFFDEDEDE},
        {USchemeColor(-1),    0xFFDEDEDE},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(spec(row.color), row.spec) << row.color;
    for (int32_t color = 0; color < kNumSchemeColors; ++color) {
        EXPECT_TRUE(scheme->getPen(USchemeColor(color)).antialias);
        EXPECT_TRUE(scheme->getBrush(USchemeColor(color)).antialias);
        EXPECT_EQ(scheme->getPen(USchemeColor(color)).color, scheme->getBrush(USchemeColor(color)).color);
    }
    EXPECT_EQ(scheme->getSize(kSchemeButtonHeight), 28);
    EXPECT_EQ(scheme->getSize(USchemeSize(99)), 8);
    UFont expected(u"Lucida Grande", 16, UFont::kBold);
    expected.setColor(UColor(0xFF000000));
    EXPECT_EQ(scheme->getFont(kSchemeDataXLFont), expected);
}

TEST_F(Scheme, TakesColorsOfTheTheme) {
    gDrawingHooks.themeColor = [](int32_t index, UColor& color) {
        color.fromColorSpec(0xFF000000 + uint32_t(index));
        return index != 9;
    };
    scheme->updateColors();
    const struct {
        USchemeColor color;
        uint32_t spec;
    } kRows[] = {
        {kSchemeButtonFace,     0xFF000004},
        {kSchemeButtonBottom2,  0xFF787878}, // the theme has none
        {kSchemeLabelColor,     0xFF00001D},
        {kSchemeTextSelect,     0xFF000021},
        {kSchemeListSelectText, 0xFF000021},
        {kSchemeHyperlink,      0xFF0000FF},
        {kSchemeFrame,          0xFF000000},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(spec(row.color), row.spec) << row.color;
}

TEST_F(Scheme, ResetForgetsWhatASkinHasChanged) {
    scheme->setSchemeColor(kSchemeFrame, UColor(0xFF112233), kChassisGroup);
    scheme->setSchemeColor(USchemeColor(40), UColor(0xFF112233), kChassisGroup);
    scheme->setFont(kSchemeListFont, UFont(u"Geneva", 40));
    scheme->setSize(kSchemeMargin, 3);
    scheme->setSkinColor("meter", UColor(0xFF00FF00));
    scheme->setSkinColor("meter", UColor(0xFF0000FF));
    scheme->setOverridden(true);
    UColor color(1, 2, 3);
    ASSERT_TRUE(scheme->getColor("meter", color));
    EXPECT_EQ(color.toColorSpec(), 0xFF0000FF);
    EXPECT_EQ(scheme->getSkinColors().size(), 1U);
    EXPECT_EQ(scheme->getColorGroup(kSchemeFrame), kChassisGroup);

    scheme->resetScheme();
    EXPECT_FALSE(scheme->getColor("meter", color) || scheme->getColor(nullptr, color) || scheme->isOverridden());
    EXPECT_EQ(color.toColorSpec(), 0xFF0000FF);
    EXPECT_EQ(spec(kSchemeFrame), 0xFF000000);
    EXPECT_EQ(scheme->getColorGroup(kSchemeFrame), kNoColorGroup);
    EXPECT_EQ(scheme->getFont(kSchemeListFont).getSize(), 11);
    EXPECT_EQ(scheme->getSize(kSchemeMargin), 3);
}
