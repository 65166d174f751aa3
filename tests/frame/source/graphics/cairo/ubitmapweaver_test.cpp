#include "gui/drawing/ubitmapweaver.h"
#include "gui/drawing/ubitmapfill.h"
#include "gui/drawing/ubitmapsection.h"
#include "gui/drawing/udynamicbitmap.h"
#include "gui/drawing/uoffscreen.h"
#include "tests/frame/source/graphics/cairo/letters.h"
#include <chrono>
#include <limits>

using namespace Tessarine;
using namespace Tessarine::Testing;

namespace {
const URect kEverywhere(INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX);
const Picture kLetters = {"abcd", "efgh", "ijkl"};
const Picture kEven = {"abbc", "deef", "ghhi"};  // may be stretched without a new colour

double secondsOf(const auto& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}
}  // namespace

class Weaver : public Drawing {};

TEST_F(Weaver, FormsCoverTheirArea) {
    const struct {
        int32_t form;
        const Picture& source;
        Picture covered;
    } rows[] = {
        {kTiledHoriz,       kLetters, {"abcdabc", "efghefg", "ijklijk", "       ", "       "}},
        {kTiledVerti,       kLetters, {"abcd   ", "efgh   ", "ijkl   ", "abcd   ", "efgh   "}},
        {kTiledMarginHoriz, kLetters, {"abcbcbd", "efgfgfh", "ijkjkjl", "       ", "       "}},
        {kTiledMarginVerti, kLetters, {"abcd   ", "efgh   ", "efgh   ", "efgh   ", "ijkl   "}},
        {kTiledArea,        kLetters, {"abcdabc", "efghefg", "ijklijk", "abcdabc", "efghefg"}},
        {kTiledMarginArea,  kLetters, {"abcbcbd", "efgfgfh", "efgfgfh", "efgfgfh", "ijkjkjl"}},
        {kTiledMarginEdge,  kLetters, {"abcbcbd", "e     h", "e     h", "e     h", "ijkjkjl"}},
        {7,                 kLetters, {"       ", "       ", "       ", "       ", "       "}},
        {8,                 kLetters, {"       ", "       ", "       ", "       ", "       "}},
        {kScaledMarginArea, kEven,    {"abbbbbc", "deeeeef", "deeeeef", "deeeeef", "ghhhhhi"}},
        {kScaledMarginEdge, kEven,    {"abbbbbc", "d     f", "d     f", "d     f", "ghhhhhi"}},
        {kTiledMarginArea,  kLetters, {"ad", "il"}                                           },
        {kTiledMarginArea,  kLetters, {"d", "h", "h", "l"}                                   },
        {kScaledMarginArea, kEven,    {"abc", "ghi"}                                         },
        {kTiledArea,        kLetters, {"ab"}                                                 },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.form);
        const OPtr<UBitmap> source(bitmapOf(row.source));
        const OPtr<UBitmap> target(
            new UBitmap(UPoint(int32_t(row.covered[0].size()), int32_t(row.covered.size())), 32));
        UBitmapWeaver::weave(target, source, WeaveForm(row.form), URect(1, 1, 1, 1));
        EXPECT_EQ(lettersOf(target), row.covered);
    }
}

TEST_F(Weaver, MarginsBeyondTheBitmapAreCut) {
    const OPtr<UBitmap> source(bitmapOf(kLetters)), target(new UBitmap(UPoint(6, 3), 32));
    UBitmapWeaver::weave(target, source, kTiledMarginArea, URect(3, -5, INT32_MAX, INT32_MIN));
    EXPECT_EQ(lettersOf(target), (Picture{"abc  d", "efg  h", "ijk  l"}));
}

TEST_F(Weaver, StaysWithinBothClips) {
    const OPtr<UBitmap> tile(bitmapOf(kLetters)), even(bitmapOf(kEven));
    const OPtr<UBitmap> target(new UBitmap(UPoint(6, 4), 32));
    UOffscreen device(target);
    const URect outer(0, 0, 5, 4);
    device.setClip(outer);
    device.saveState();
    device.setClip(URect(0, 0, 1, 1));
    device.restoreState();
    UBitmapWeaver::weave(device, tile, kTiledArea, URect(-3, -2, 100, 100), URect(3, 1, 100, 3), URect());
    EXPECT_EQ(lettersOf(target), (Picture{"      ", "   cd ", "   gh ", "      "}));
    UBitmapWeaver::weave(device, even, kScaledMarginArea, URect(0, 0, 6, 4), URect(1, 0, 3, 4), URect(1, 1, 1, 1));
    EXPECT_EQ(lettersOf(target), (Picture{" bb   ", " eecd ", " eegh ", " hh   "}));
    URect after;
    device.getClip(after);
    EXPECT_EQ(after, outer);
    for (const URect& empty : {URect(), URect(3, 3, 1, 1), URect(INT32_MAX, 0, INT32_MIN, 4)})
        UBitmapWeaver::weave(device, tile, kTiledArea, empty, kEverywhere, URect());
    UBitmapWeaver::weave(device, nullptr, kTiledArea, outer, outer, URect());
    const OPtr<UBitmap> nothing(new UBitmap);
    UBitmapWeaver::drawTiledArea(device, nothing, kEverywhere, kEverywhere);
    EXPECT_EQ(lettersOf(target), (Picture{" bb   ", " eecd ", " eegh ", " hh   "}));
}

TEST_F(Weaver, SmallTilesOverHugeAreasEndSoon) {
    const OPtr<UBitmap> target(new UBitmap(UPoint(3000, 2000), 32));
    const OPtr<UBitmap> endless(new UDynamicBitmap(target, UPoint(INT32_MAX, INT32_MAX), URect()));
    const OPtr<UBitmap> tiles[] = {bitmapOf(Picture{"x"}), bitmapOf(kLetters)};
    for (const OPtr<UBitmap>& tile : tiles) {
        constexpr int32_t kBoth = UDynamicBitmap::kRepeatHoriz | UDynamicBitmap::kRepeatVerti;
        const OPtr<UBitmap> repeated(new UDynamicBitmap(tile, UPoint(), URect(0, 0, 9, 9), kBoth));
        const double seconds = secondsOf([&] {
            const UOffscreen offscreen(target);
            UPhysicalDrawDevice device(offscreen.getDevice());
            device.setClip(kEverywhere);
            UBitmapWeaver::drawTiledArea(device, tile, kEverywhere, kEverywhere);
            for (const auto mode : {kBitmapPlain, kBitmapDisabled, kBitmapTransparentDisabled})
                repeated->draw(&device, kEverywhere, kEverywhere, mode);
            for (const WeaveForm form : {kTiledHoriz, kTiledMarginVerti, kTiledMarginEdge, kScaledMarginArea})
                UBitmapWeaver::weave(device, tile, form, kEverywhere, kEverywhere, URect(1, 0, 1, 0));
            UBitmapWeaver::weave(endless, tile, kTiledMarginHoriz, URect());
        });
        EXPECT_LT(seconds, 5);
    }
    // tiles that were put together are where single ones would be
    UBitmapWeaver::weave(target, tiles[1], kTiledArea, URect());
    const OPtr<UBitmap> corner(target->getSection(URect(2994, 1997, 3000, 2000)));
    EXPECT_EQ(lettersOf(corner), (Picture{"klijkl", "cdabcd", "ghefgh"}));
}

TEST_F(Weaver, KeepsTheAspectRatio) {
    const struct {
        URect rect;
        bool stretchSmaller;
        Picture drawn;
    } rows[] = {
        {{0, 0, 6, 4},  false, {"      ", "  xx  ", "      ", "      "}}, // 2 x 1 as it is
        {{0, 0, 6, 4},  true,  {"xxxxxx", "xxxxxx", "xxxxxx", "      "}}, // 6 x 3
        {{1, 0, 6, 1},  true,  {"  xx  ", "      ", "      ", "      "}},
        {{0, 0, 6, 2},  true,  {" xxxx ", " xxxx ", "      ", "      "}}, // 6 x 3 is too high
        {{1, 1, 2, 4},  false, {"      ", "      ", "      ", "      "}}, // 1 x 0
        {{-4, 0, 4, 4}, true,  {"xxxx  ", "xxxx  ", "xxxx  ", "xxxx  "}},
    };
    const OPtr<UBitmap> bitmap(bitmapOf(Picture{"xx"}));
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        const OPtr<UBitmap> target(new UBitmap(UPoint(6, 4), 32));
        UOffscreen device(target);
        UBitmapWeaver::drawKeepAspectRatio(device, bitmap, row.rect, row.stretchSmaller);
        EXPECT_EQ(lettersOf(target), row.drawn);
    }
}

TEST_F(Weaver, FindsVisiblePixels) {
    const OPtr<UBitmap> bitmap(bitmapOf(4, {0, 0x10FFFFFF, 0, 0,  //
                                            0, 0x80FFFFFF, 0, 0,  //
                                            0, 0, 0xFF000000, 0x7F000000}));
    const OPtr<UBitmapSection> section(new UBitmapSection(bitmap, URect(1, 1, 4, 3)));
    const URect nothing(0x7FFFFFFF, 0x7FFFFFFF, -0x7FFFFFFF, -0x7FFFFFFF);
    const struct {
        UBitmap* bitmap;
        URect within;
        float threshold;
        URect found;
    } rows[] = {
        {bitmap,  kEverywhere,  0,                                       {1, 0, 4, 3}},
        {bitmap,  kEverywhere,  0.5F,                                    {1, 1, 3, 3}},
        {bitmap,  {0, 0, 2, 3}, 0.5F,                                    {1, 1, 2, 2}},
        {bitmap,  kEverywhere,  std::numeric_limits<float>::quiet_NaN(), nothing     },
        {bitmap,  {3, 3, 1, 1}, 0,                                       nothing     },
        {section, kEverywhere,  0,                                       {0, 0, 3, 2}},
        {section, {1, 0, 3, 2}, 0,                                       {1, 1, 3, 2}},
        {nullptr, kEverywhere,  0,                                       nothing     },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        URect rect(row.within);
        EXPECT_EQ(UBitmapWeaver::calcVisiblePixelsRect(row.bitmap, rect, row.threshold), !(row.found == nothing));
        EXPECT_EQ(rect, row.found);
    }
}

TEST_F(Weaver, DynamicBitmapsKeepTheirMargins) {
    const URect center(1, 1, 3, 2);
    constexpr int32_t kBoth = UDynamicBitmap::kRepeatHoriz | UDynamicBitmap::kRepeatVerti;
    const struct {
        const Picture& target;
        URect center, source;
        int32_t style;
        Picture drawn;
    } rows[] = {
        {kEven,    center,         {0, 0, 4, 3},                 0,                            {"abbbc", "deeef", "deeef", "ghhhi"}},
        {kEven,    center,         {0, 0, 70, 50},               0,                            {"abbbc", "deeef", "deeef", "ghhhi"}},
        {kLetters, center,         {0, 0, 4, 3},                 kBoth,                        {"abcbd", "efgfh", "efgfh", "ijkjl"}},
        {kLetters, center,         {2, 0, 4, 3},                 kBoth,                        {"cbcbd", "gfgfh", "gfgfh", "kjkjl"}},
        {kLetters, center,         {6, 0, 9, 3},                 kBoth,                        {"cbcbd", "gfgfh", "gfgfh", "kjkjl"}},
        {kEven,    center,         {3, 5, 9, 9},                 0,                            {"eeeef", "hhhhi"}                  },
        {kEven,    center,         {0, 0, 4, 3},                 UDynamicBitmap::kRepeatVerti, {"abbbc", "deeef", "deeef", "ghhhi"}},
        {kEven,    center,         {0, 0, 4, 3},                 0,                            {"abc", "ghi"}                      },
        {kLetters, center,         {0, 0, 4, 3},                 0,                            {"il"}                              },
        {kLetters, {0, 0, 4, 3},   {0, 0, 4, 3},                 kBoth,                        {"abcda", "efghe"}                  },
        {kLetters, {-9, 9, 99, 4}, {0, 0, INT32_MAX, INT32_MAX}, kBoth,                        {"abcda", "efghe"}                  },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        const OPtr<UBitmap> source(bitmapOf(row.target));
        const OPtr<UDynamicBitmap> dynamic(new UDynamicBitmap(source, UPoint(), row.center, row.style));
        const UPoint size(int32_t(row.drawn[0].size()), int32_t(row.drawn.size()));
        const OPtr<UBitmap> target(new UBitmap(size, 32));
        UOffscreen device(target);
        EXPECT_TRUE(dynamic->draw(&device, row.source, URect(UPoint(), size), kBitmapPlain));
        EXPECT_EQ(lettersOf(target), row.drawn);
    }
    const OPtr<UBitmap> even(bitmapOf(kEven));
    const OPtr<UDynamicBitmap> dynamic(new UDynamicBitmap(even, UPoint(6, 3), center));
    even->setAlphaFactor(0.5);
    const OPtr<UBitmap> section(dynamic->getSection(URect(3, 1, 7, 3))),
        scaled(dynamic->copyScaled({5, 4}, UBitmap::kScaleByArea));
    EXPECT_EQ(lettersOf(section), (Picture{"eef ", "hhi "}));
    EXPECT_EQ(lettersOf(scaled), (Picture{"abbbc", "deeef", "deeef", "ghhhi"}));
    EXPECT_EQ(scaled->getAlphaFactor(), 0.5) << "the copy has the factor, its pixels don't";
}

TEST_F(Weaver, ManyTilesMeanTheSameAsFew) {
    constexpr int32_t kBoth = UDynamicBitmap::kRepeatHoriz | UDynamicBitmap::kRepeatVerti;
    constexpr uint32_t kWhitePixel = 0xFFFFFFFF, kRedPixel = 0xFFFF0000;
    for (const int32_t side : {16, 400})
        for (const bool isRedGone : {false, true}) {
            const OPtr<UBitmap> tile(bitmapOf(2, {kRedPixel, kWhitePixel, kWhitePixel, kWhitePixel}));
            if (isRedGone)
                tile->makeColorTransparent(UColor(kRedPixel));
            const OPtr<UDynamicBitmap> dynamic(new UDynamicBitmap(tile, UPoint(), URect(0, 0, 2, 2), kBoth));
            const URect all(0, 0, side, side);
            const OPtr<UBitmap> target(new UBitmap(all.getSize(), 32));
            UOffscreen device(target);
            EXPECT_TRUE(dynamic->draw(&device, all, all, kBitmapTransparent));
            EXPECT_EQ(pixelsOf(target).back(), isRedGone ? kWhitePixel : 0);
            EXPECT_EQ(pixelsOf(target)[0], isRedGone ? 0 : kRedPixel);
            EXPECT_EQ(pixelsOf(tile).back(), isRedGone ? kWhitePixel : 0) << "for good";
        }
}

TEST_F(Weaver, FillsCoverWhateverTheyAreDrawnInto) {
    const OPtr<UBitmapFill> fill(new UBitmapFill(8, 8, UColor(0xFFFF0000), 0.5));
    const UPoint places[] = {
        {0,   0 },
        {7,   7 },
        {8,   8 },
        {199, 99}
    };
    const struct {
        URect source, target;
        int16_t mode;
        uint32_t inside;
    } rows[] = {
        {{0, 0, 8, 8},  {0, 0, 8, 8},      kBitmapPlain,    0x80FF0000},
        {{0, 0, 8, 8},  {-50, -3, 300, 9}, kBitmapPlain,    0x80FF0000},
        {{-9, 3, 1, 4}, kEverywhere,       kBitmapPlain,    0x80FF0000},
        {{0, 0, 8, 8},  {0, 0, 300, 300},  kBitmapDisabled, 0x402B2B2B},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        const OPtr<UBitmap> target(new UBitmap(UPoint(200, 100), 32));
        UOffscreen device(target);
        EXPECT_TRUE(fill->draw(&device, row.source, row.target, row.mode));
        const std::vector<uint32_t> pixels = pixelsOf(target);
        for (const UPoint& place : places)
            EXPECT_TRUE(isNear(pixels[size_t(place.y * 200 + place.x)], row.target.contains(place) ? row.inside : 0));
    }
    const OPtr<UBitmap> target(new UBitmap(UPoint(200, 100), 32));
    EXPECT_TRUE(target->copyFrom(fill, URect(-5, 0, 205, 90), URect(-5, 0, 205, 90), kBitmapPlain));
    const std::vector<uint32_t> pixels = pixelsOf(target);
    EXPECT_EQ(std::ranges::count(pixels, 0xFFFF0000), 200 * 90);
    const OPtr<UBitmapFill> dense(new UBitmapFill(0, -4, UColor(), 7)), none(new UBitmapFill(1, 1, UColor(), -1));
    EXPECT_TRUE(dense->getAlphaFactor() == 1 && none->getAlphaFactor() == 0);
    EXPECT_FALSE(dense->drawAlpha(nullptr, kEverywhere, kEverywhere, 1));
}
