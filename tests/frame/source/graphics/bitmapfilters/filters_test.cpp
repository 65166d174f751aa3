#include "frame/source/graphics/bitmapfilters/arearows.h"
#include "frame/source/graphics/bitmapfilters/hslrows.h"
#include "frame/source/graphics/bitmapfilters/pixelrows.h"
#include "frame/source/graphics/bitmapfilters/samplerows.h"
#include "graphics/bitmapfilters/bitmapfilter.h"
#include "graphics/bitmapfilters/bitmapfilterfactory.h"
#include "tests/support/memorybitmap.h"
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace Tessarine;
using namespace Tessarine::Graphics;
using Tessarine::Testing::MemoryBitmap;
using Tessarine::Testing::MemoryBitmapFactory;
using Pixels = std::vector<uint32_t>;

namespace {
Pixels noise(size_t count, uint32_t seed = 1) {
    std::mt19937 random(seed);
    Pixels pixels(count);
    for (uint32_t& pixel : pixels)
        pixel = uint32_t(random());
    return pixels;
}

class Filters : public testing::Test {
protected:
    /** What becomes of a bitmap of so many columns; empty: nothing. */
    Pixels run(IBitmapFilter* made, int32_t width, const Pixels& content, bool inPlace = false) {
        const OPtr<IBitmapFilter> filter(made);
        const OPtr<MemoryBitmap> input(new MemoryBitmap(width, int32_t(content.size()) / width));
        input->set(content);
        filter->setInputValue("Bitmap", FVariant(static_cast<IBitmap*>(input)));
        if (filter->runFilter(inPlace) != kResultOk)
            return {};
        FVariant result;
        filter->getValue("Bitmap", result, kOutputValue);
        auto* output = static_cast<MemoryBitmap*>(FUnknownPtr<IBitmap>(result.getObject()).get());
        size = output->getSize();
        EXPECT_TRUE(output->gapsAreUntouched());
        EXPECT_TRUE(inPlace || input->all() == content);
        return output->all();
    }

    const OPtr<MemoryBitmapFactory> bitmaps = new MemoryBitmapFactory;
    const OPtr<BitmapFilterFactory> factory = new BitmapFilterFactory(bitmaps);
    Size size;  // of the last result
};

/** Red, green and blue of one pixel. */
double brightness(uint32_t pixel) {
    using namespace BitmapFilterImplementation;
    return 0.349 * redOf(pixel) + 0.537 * greenOf(pixel) + 0.114 * blueOf(pixel);
}
}  // namespace

TEST_F(Filters, FactoryKnowsSevenAndTakesOthers) {
    std::string names;
    for (unsigned index = 0; index < factory->countFilters(); ++index)
        names += std::string(factory->getFilterName(index)) + " ";
    EXPECT_EQ(names, "AdjustHSL Desaturate ReplaceColor Tint Mirror Rotate PNMScale ");
    for (const char* unknown : {"MatrixTransform", "mirror", "", static_cast<const char*>(nullptr)})
        EXPECT_EQ(factory->createBitmapFilter(unknown), nullptr);
    EXPECT_EQ(factory->unregisterFilter("Mirror"), kResultOk);
    EXPECT_EQ(factory->unregisterFilter("Mirror"), kResultFalse);
    EXPECT_EQ(factory->createBitmapFilter("Mirror"), nullptr);
    EXPECT_EQ(factory->getFilterName(6), nullptr);
}

TEST_F(Filters, RefuseWhatDoesntFit) {
    const OPtr<IBitmapFilter> filter(factory->createBitmapFilter("Rotate"));
    const OPtr<Vector> vector(new Vector(1, 2));
    const struct {
        const char* name;
        FVariant value;
    } wrong[] = {
        {"angle",  FVariant(std::numeric_limits<double>::quiet_NaN())},
        {"angle",  FVariant("text")                                  },
        {"center", FVariant(1.0)                                     },
        {"Bitmap", FVariant(static_cast<IVector*>(vector))           },
        {"Center", FVariant(static_cast<IVector*>(vector))           },
        {nullptr,  FVariant(1.0)                                     },
    };
    for (const auto& input : wrong)
        EXPECT_EQ(filter->setInputValue(input.name, input.value), kInvalidArgument) << input.name;
    EXPECT_EQ(filter->runFilter(0), kResultFalse);  // there is no bitmap
}

TEST_F(Filters, ColoursAreExact) {
    const Pixels source = {0x80102031, 0xFFFFFFFF, 0x00000000, 0xFF640000};
    using namespace BitmapFilter;
    EXPECT_EQ(run(Desaturate::create(factory, 1, 1), 2, source), (Pixels{0x80202020, 0xFFFFFFFF, 0, 0xFF212121}));
    EXPECT_EQ(run(Desaturate::create(factory, 0.5, 0.5), 2, source, true),
              (Pixels{0x40101010, 0x7F7F7F7F, 0, 0x7F101010}));
    EXPECT_EQ(run(Desaturate::create(factory, 3, 1), 4, source), (Pixels{0x80616161, 0xFFFFFFFF, 0, 0xFF646464}));
    EXPECT_EQ(run(factory->createBitmapFilter("AdjustHSL"), 2, source), source);
    EXPECT_EQ(run(AdjustHSL::create(factory, 0, -100, 0), 1, {0xFF640000}), Pixels{0xFF323232});
    EXPECT_EQ(run(AdjustHSL::create(factory, 120, 0, 0), 1, {0x80640000}), Pixels{0x80026400});
    for (const double huge : {1e308, -1e308})
        EXPECT_EQ(run(AdjustHSL::create(factory, huge, 0, 0), 1, {0x00640000})[0] >> 24, 0U) << huge;
    EXPECT_EQ(run(Tint::create(factory, 0xFF3060C0, 0), 2, source), source);
    EXPECT_EQ(run(Tint::create(factory, 0xFF000000, 1), 1, {0xFF102030}), Pixels{0xFF1C1C1C});
    const OPtr<IBitmapFilter> replace(factory->createBitmapFilter("ReplaceColor"));
    replace->setInputValue("colorToReplace", FVariant(int64_t(0xFF640000)));
    replace->addRef();
    EXPECT_EQ(run(replace, 2, source), (Pixels{0x80102031, 0xFFFFFFFF, 0, 0xFF808080}));
}

TEST_F(Filters, TintKeepsBrightness) {
    const Pixels source = noise(1000);
    for (const uint32_t color : {0xFFFF0000U, 0xFF00FF00U, 0xFF0000FFU, 0xFF336699U, 0xFF000000U}) {
        const Pixels tinted = run(BitmapFilter::Tint::create(factory, color, 1), 100, source);
        for (size_t i = 0; i < source.size(); ++i) {
            EXPECT_NEAR(brightness(tinted[i]), brightness(source[i]), 12) << std::hex << color << " " << source[i];
            EXPECT_EQ(tinted[i] >> 24, source[i] >> 24);
        }
    }
}

TEST_F(Filters, FastRowsGiveThePlainBytes) {
    using namespace BitmapFilterImplementation;
    const Pixels source = noise(4099);
    Pixels plain(source), fast(source);
    HSLRows::Lightness lightness;
    for (size_t sum = 0; sum < lightness.size(); ++sum)
        lightness[sum] = double(sum % 256);
    const double factors[] = {0, 0.25, 1 / 3.0, 0.5, 0.7, 1, 1.5, 2.91, 3, 100, -1, 1e300};
    for (const double factor : factors) {
        const GrayRows gray(factor, 1 - factor / 2);
        gray.plain(plain.data(), source.data(), int32_t(source.size()));
        gray.fast(fast.data(), source.data(), int32_t(source.size()));
        EXPECT_EQ(plain, fast) << factor;
        const HSLRows hsl(std::fmod(factor * 85, 255), std::clamp(factor, 0.0, 2.0), lightness);
        hsl.plain(plain.data(), source.data(), int32_t(source.size()));
        hsl.fast(fast.data(), source.data(), int32_t(source.size()));
        EXPECT_EQ(plain, fast) << factor;
        const TintRows tint(0xFF336699, factor);
        tint.plain(plain.data(), source.data(), int32_t(source.size()));
        tint.fast(fast.data(), source.data(), int32_t(source.size()));
        EXPECT_EQ(plain, fast) << factor;
    }
    const OPtr<MemoryBitmap> bitmap(new MemoryBitmap(40, 30));
    bitmap->set(noise(1200));
    const BitmapPixelAccessor pixels(bitmap, kLockRead);
    for (const SampleLine& line : {
             SampleLine{{0.5, 0.5}, {1, 0}      },
             SampleLine{{-3, 7.3},  {0.61, 0.27}},
             SampleLine{{38, -2},   {-0.4, 0.3} },
             SampleLine{{1e18, 0},  {1e300, 1}  }
    }) {
        Sampler(pixels).interpolatedPlain(plain.data(), 100, line);
        Sampler(pixels).interpolated(fast.data(), 100, line);
        EXPECT_EQ(plain, fast) << line.start.x;
    }
}

TEST_F(Filters, FastScalingGivesThePlainBytes) {
    using namespace BitmapFilterImplementation;
    const OPtr<MemoryBitmap> source(new MemoryBitmap(29, 30));
    for (const uint32_t opaqueRows : {0U, 15U, 30U}) {
        Pixels content = noise(29 * 30);
        for (size_t i = 0; i < 29 * size_t(opaqueRows); ++i)
            content[i] |= 0xFF000000;
        source->set(content);
        for (const int32_t side : {1, 2, 13, 30, 63}) {
            const OPtr<MemoryBitmap> plain(new MemoryBitmap(side, 2 * side)), fast(new MemoryBitmap(side, 2 * side));
            const BitmapPixelAccessor from(source, kLockRead);
            scaleAreaPlain(from, BitmapPixelAccessor(plain, kLockWrite));
            scaleArea(from, BitmapPixelAccessor(fast, kLockWrite));
            EXPECT_EQ(plain->all(), fast->all()) << side << " " << opaqueRows;
            EXPECT_TRUE(fast->gapsAreUntouched());
        }
    }
}

TEST_F(Filters, MirrorAndQuarterTurnsMovePixels) {
    const Pixels source = {1, 2, 3, 4, 5, 6};
    using BitmapFilter::Mirror;
    for (const bool inPlace : {false, true}) {
        EXPECT_EQ(run(Mirror::create(factory, true, false), 3, source, inPlace), (Pixels{3, 2, 1, 6, 5, 4}));
        EXPECT_EQ(run(Mirror::create(factory, false, true), 3, source, inPlace), (Pixels{4, 5, 6, 1, 2, 3}));
        EXPECT_EQ(run(Mirror::create(factory, true, true), 2, source, inPlace), (Pixels{6, 5, 4, 3, 2, 1}));
        EXPECT_EQ(run(Mirror::create(factory, false, false), 3, source, inPlace), source);
    }
    for (const bool interpolate : {false, true}) {
        const auto turned = [&](double angle) {
            return run(BitmapFilter::Rotate::create(factory, angle, interpolate, true, nullptr), 3, source);
        };
        EXPECT_EQ(turned(0.25), (Pixels{3, 6, 2, 5, 1, 4}));
        EXPECT_EQ(size, (Size{2, 3}));
        EXPECT_EQ(turned(0.5), (Pixels{6, 5, 4, 3, 2, 1}));
        EXPECT_EQ(turned(-1), source);
        const Pixels wide = noise(600);
        EXPECT_EQ(run(BitmapFilter::Rotate::create(factory, 0.5, interpolate, false, nullptr), 300, wide),
                  Pixels(wide.rbegin(), wide.rend()));
    }
    const Point corner{0, 0};
    EXPECT_EQ(run(BitmapFilter::Rotate::create(factory, 0.5, false, false, &corner), 3, source), Pixels(6, 0));
    // each place lies between two pixels
    const auto inPlace = [&](double angle) {
        return run(BitmapFilter::Rotate::create(factory, angle, false, false, nullptr), 3, source);
    };
    EXPECT_EQ(inPlace(0.25), (Pixels{3, 6, 0, 2, 5, 0}));
    EXPECT_EQ(inPlace(-0.75), (Pixels{3, 6, 0, 2, 5, 0}));
    const Pixels wide = noise(3 * 16384);  // the whole way across, all fall to one side
    const auto turnedWide = [&](double angle) {
        return run(BitmapFilter::Rotate::create(factory, angle, false, false, nullptr), 16384, wide);
    };
    EXPECT_TRUE(turnedWide(0.75) == turnedWide(-0.25));
    // each place lies between four pixels
    const Point between{2, 1.5};
    const Pixels turned = run(BitmapFilter::Rotate::create(factory, 0.25, true, false, &between), 4,
                              {4, 8, 12, 16, 20, 24, 28, 32, 36, 40, 44, 48});
    EXPECT_EQ(turned[5], 18U);
}

TEST_F(Filters, ScalingKeepsAreasAndColours) {
    const auto scaled = [&](double width, double height, int32_t columns, const Pixels& source) {
        return run(BitmapFilter::PNMScale::create(factory, {width, height}), columns, source);
    };
    const Pixels any = noise(12);
    EXPECT_EQ(scaled(4, 3, 4, any), any);
    EXPECT_EQ(scaled(1, 1, 2, {0xFF000000, 0xFFFFFFFF, 0xFFFFFFFF, 0xFF000000}), Pixels{0xFF808080});
    EXPECT_EQ(scaled(1, 1, 2, {0x00FF0000, 0xFF0000FF}), Pixels{0x800000FF});  // what is transparent doesn't bleed
    EXPECT_EQ(scaled(1, 1, 2, {0x00FF0000, 0x000000FF}), Pixels{0});
    EXPECT_EQ(scaled(2, 1, 3, {0xFF000000, 0xFF5A5A5A, 0xFFFFFFFF}), (Pixels{0xFF1E1E1E, 0xFFC8C8C8}));
    for (const uint32_t color : {0xFF123456U, 0x7F123456U, 0x01FEDCBAU})
        for (const Size& wanted : {
                 Size{1,   1 },
                 Size{7,   3 },
                 Size{50,  90},
                 Size{333, 1 }
        }) {
            EXPECT_EQ(scaled(wanted.width, wanted.height, 10, Pixels(110, color)),
                      Pixels(size_t(wanted.width * wanted.height), color));
            EXPECT_EQ(size, wanted);
        }
    for (const double side : {0.0, -1.0, 0.5, 1e9, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_TRUE(scaled(side, 1, 4, any).empty()) << side;
}
