#include "gui/drawing/ubitmap.h"
#include "collect/cmarray.h"
#include "gui/drawing/hooks.h"
#include "gui/drawing/uanimatedbitmap.h"
#include "gui/drawing/ubitmapcollection.h"
#include "gui/drawing/ubitmapfill.h"
#include "gui/drawing/ubitmapresource.h"
#include "gui/drawing/ubitmapsection.h"
#include "gui/drawing/ufilmstrip.h"
#include "gui/drawing/uoffscreen.h"
#include "gui/drawing/uskinbitmap.h"
#include "libraries/source/zlib/zlibcomp.h"
#include "storage/fcstream.h"
#include "storage/ffilesystem.h"
#include "storage/fmstream.h"
#include "tests/frame/source/graphics/cairo/letters.h"
#include "tests/support/testfolder.h"
#include <limits>
#include <map>

using namespace Tessarine;
using namespace Tessarine::Testing;

namespace {
constexpr uint32_t kWhitePixel = 0xFFFFFFFF, kRedPixel = 0xFFFF0000, kBlackPixel = 0xFF000000;
const float kNoNumber = std::numeric_limits<float>::quiet_NaN();
const Picture kStrip = {"aabb", "aabb", "ccdd", "eeff"};

std::vector<uint32_t> filled(const std::function<void(UBitmap&)>& change, std::vector<uint32_t> pixels) {
    const OPtr<UBitmap> bitmap(bitmapOf(int32_t(pixels.size()), pixels));
    change(*bitmap);
    return pixelsOf(bitmap);
}

/** What a bitmap draws onto black. */
uint32_t drawnOnBlack(UBitmap* bitmap, const URect& source, int16_t mode) {
    const OPtr<UBitmap> target(bitmapOf(1, {kBlackPixel}));
    UOffscreen device(target);
    bitmap->draw(&device, source, URect(0, 0, 1, 1), mode);
    return pixelsOf(target)[0];
}
}  // namespace

class Bitmaps : public Drawing {
protected:
    static OPtr<FMemoryStream> saved(UBitmap* bitmap) {
        OPtr<FMemoryStream> stream(new FMemoryStream);
        EXPECT_TRUE(bitmap->saveToStream(stream, nullptr));
        stream->rewind();
        return stream;
    }
};

TEST_F(Bitmaps, ModesAndAlphaFactors) {
    const struct {
        const char* name;
        uint32_t pixel;
        int16_t mode;
        double factor;
        uint32_t drawn, pixelAfter;
    } rows[] = {
        {"plain",                     kRedPixel,   kBitmapPlain,               1,         0xFFFF0000,  kRedPixel  },
        {"half",                      kRedPixel,   kBitmapPlain,               0.5,       0xFF800000,  kRedPixel  },
        {"factors are clamped late",  kRedPixel,   kBitmapPlain,               257,       0xFFFF0000,  kRedPixel  },
        {"no factor at all",          kRedPixel,   kBitmapPlain,               kNoNumber, kBlackPixel, kRedPixel  },
        {"white stays in plain mode", kWhitePixel, kBitmapPlain,               1,         kWhitePixel, kWhitePixel},
        {"white goes for good",       kWhitePixel, kBitmapTransparent,         1,         kBlackPixel, 0          },
        {"grey of half the strength", kRedPixel,   kBitmapDisabled,            1,         0xFF151515,  kRedPixel  },
        {"and of half of that",       kRedPixel,   kBitmapDisabled,            0.5,       0xFF0B0B0B,  kRedPixel  },
        {"white and disabled",        kWhitePixel, kBitmapTransparentDisabled, 1,         kBlackPixel, 0          },
        {"an unknown mode is plain",  kRedPixel,   99,                         1,         0xFFFF0000,  kRedPixel  },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const OPtr<UBitmap> bitmap(bitmapOf(1, {row.pixel}));
        bitmap->setAlphaFactor(row.factor);
        const uint32_t drawn = drawnOnBlack(bitmap, URect(0, 0, 1, 1), row.mode);
        EXPECT_TRUE(isNear(drawn, row.drawn)) << std::hex << drawn;
        EXPECT_EQ(pixelsOf(bitmap)[0], row.pixelAfter);
    }
    const OPtr<UBitmap> bitmap(bitmapOf(1, {kRedPixel}));
    drawnOnBlack(bitmap, URect(0, 0, 1, 1), kBitmapTransparent);
    setPixels(bitmap, {kWhitePixel});
    EXPECT_EQ(drawnOnBlack(bitmap, URect(0, 0, 1, 1), kBitmapTransparent), kWhitePixel) << "once is once";
}

TEST_F(Bitmaps, SectionsKeepWhatNoSurfaceCould) {
    const std::vector<uint32_t> faint = {0x01FF8040, 0x00123456, 0x7F010203, 0x02FFFFFF};
    const OPtr<UBitmap> bitmap(bitmapOf(2, faint));
    bitmap->setAlphaFactor(0.25);
    const struct {
        URect rect;
        std::vector<uint32_t> pixels;  // none: no bitmap
    } rows[] = {
        {{0, 0, 2, 2},                     faint                  },
        {{-1, 1, 2, 2},                    {0, faint[2], faint[3]}},
        {{5, 5, 6, 6},                     {0}                    },
        {{INT32_MAX - 1, 0, INT32_MAX, 1}, {0}                    },
        {{0, 0, 0, 2},                     {}                     },
        {{INT32_MIN, 0, INT32_MAX, 1},     {}                     },
        {{0, 0, 16385, 1},                 {}                     },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        const OPtr<UBitmap> section(bitmap->getSection(row.rect));
        EXPECT_EQ(pixelsOf(section), row.pixels);
        EXPECT_TRUE(!section || section->getAlphaFactor() == 0.25);
    }
    const OPtr<UBitmap> copy(new UBitmap(*bitmap)), same(bitmap->copyScaled({2, 2}, UBitmap::kScaleByArea));
    EXPECT_EQ(pixelsOf(copy), faint);
    EXPECT_EQ(pixelsOf(same), faint);
    copy->clearFill();
    EXPECT_EQ(pixelsOf(bitmap), faint) << "pixels of its own";
    EXPECT_TRUE(copy->copyFrom(bitmap, URect(-1, 0, 2, 2), URect(0, 1, 3, 3), kBitmapPlain));
    EXPECT_EQ(pixelsOf(copy), (std::vector<uint32_t>{0, 0, 0, faint[0]}));
    EXPECT_TRUE(bitmap->copyFrom(bitmap, URect(0, 0, 2, 1), URect(0, 1, 2, 2), kBitmapPlain)) << "onto itself";
    EXPECT_EQ(pixelsOf(bitmap), (std::vector<uint32_t>{faint[0], faint[1], faint[0], faint[1]}));
}

TEST_F(Bitmaps, CopyFromStretchesAndDraws) {
    const OPtr<UBitmap> from(bitmapOf(Picture{"a", "b"})), to(bitmapOf(Picture{"xxxx", "xxxx"}));
    EXPECT_TRUE(to->copyFrom(from, URect(0, 0, 1, 1), URect(1, 0, 3, 2), kBitmapPlain));
    EXPECT_EQ(lettersOf(to), (Picture{"xaax", "xaax"}));
    from->makeColorTransparent(UColor(colorOf('b')));
    EXPECT_TRUE(to->copyFrom(from, URect(0, 0, 1, 2), URect(0, 0, 1, 2), kBitmapTransparent));
    EXPECT_EQ(lettersOf(to), (Picture{"aaax", "xaax"})) << "drawn over what is there";
    EXPECT_TRUE(to->copyFrom(from, URect(0, 1, 1, 2), URect(2, 0, 4, 1), kBitmapPlain));
    EXPECT_EQ(lettersOf(to), (Picture{"aa  ", "xaax"})) << "put in its place";
}

TEST_F(Bitmaps, ScaleToAnySizeThatThereIs) {
    const OPtr<UBitmap> bitmap(bitmapOf(4, std::vector<uint32_t>(16, colorOf('a'))));
    for (const UBitmap::ScalingAlgorithm algorithm : {UBitmap::kScaleByDrawing, UBitmap::kScaleByArea}) {
        for (const Graphics::Point& size : {
                 Graphics::Point{8,   8},
                 {1,   1},
                 {3.9, 1}
        }) {
            SCOPED_TRACE(testing::Message() << size.x << " x " << size.y << " by " << algorithm);
            const OPtr<UBitmap> scaled(bitmap->copyScaled(size, algorithm));
            EXPECT_EQ(pixelsOf(scaled), std::vector<uint32_t>(size_t(size.x) * size_t(size.y), colorOf('a')));
        }
        for (const Graphics::Point& size : {
                 Graphics::Point{0.5,   4        },
                 {4,     1e300    },
                 {4,     kNoNumber},
                 {16384, 16384    }
        })
            EXPECT_FALSE(OPtr<UBitmap>(bitmap->copyScaled(size, algorithm)));
    }
}

TEST_F(Bitmaps, FillsAndFilters) {
    const UColor color(0x80102030);
    const struct {
        const char* name;
        std::function<void(UBitmap&)> change;
        std::vector<uint32_t> before, after;
    } rows[] = {
        {"all",         [&](UBitmap& b) { b.colorFill(color, UBitmap::kFillAll); }, {0, kRedPixel},           {0x80102030, 0x80102030}},
        {"keeps alpha",
         [&](UBitmap& b) { b.colorFill(color, UBitmap::kFillKeepAlpha); },
         {0x01FFFFFF, kRedPixel},
         {0x01102030, 0xFF102030}                                                                                                     },
        {"just this",   [&](UBitmap& b) { b.makeColorTransparent(color); },         {0x80102030, 0xFF102030}, {0, 0xFF102030}         },
        {"half alpha",  [](UBitmap& b) { b.adjustAlpha(0.5); },                     {0xFF010203, 0x03040506}, {0x7F010203, 0x01040506}},
        {"at most all", [](UBitmap& b) { b.adjustAlpha(1e300); },                   {0x01010203, 0x00040506}, {0xFF010203, 0x00040506}},
        {"no factor",   [](UBitmap& b) { b.adjustAlpha(kNoNumber); },               {0x01010203},             {0x01010203}            },
        {"mirror",      [](UBitmap& b) { b.mirror(true, false); },                  {1, 2, 3},                {3, 2, 1}               },
        {"101 is none", [](UBitmap& b) { b.tintImage(UColor(kRedPixel), 101); },    {0xFF204060},             {0xFF204060}            },
    };
    for (const auto& row : rows)
        EXPECT_EQ(filled(row.change, row.before), row.after) << row.name;
    const auto tinted = [&](auto amount) {
        return filled([=](UBitmap& b) { b.tintImage(UColor(kRedPixel), amount); }, {0xFF204060});
    };
    EXPECT_EQ(tinted(150), tinted(0.49F));
    EXPECT_EQ(tinted(100), tinted(1.0F));

    const OPtr<UBitmap> nothing(new UBitmap), row(bitmapOf(Picture{"abc"}));
    EXPECT_FALSE(nothing->mirror(true, true) || nothing->clearFill() || nothing->process(nullptr));
    EXPECT_FALSE(nothing->copyDesaturate(1, 1) || nothing->copyScaled({2, 2}, UBitmap::kScaleByArea));
    const OPtr<UBitmap> turned(row->copyRotated(0.25F, false));
    EXPECT_TRUE(turned && turned->getHeight() >= 3) << "as large as it takes";
}

TEST_F(Bitmaps, FilmStripGeometry) {
    const OPtr<UBitmap> bitmap(new UBitmap(UPoint(20, 11), 32));
    const struct {
        int32_t frames;
        UFilmStrip::Alignment alignment;
        float value;
        URect frame, strip;
    } rows[] = {
        {5,         UFilmStrip::kHorizontal, 1.0F,      {16, 0, 20, 11}, {0, 0, 20, 11}},
        {5,         UFilmStrip::kHorizontal, 0.49F,     {8, 0, 12, 11},  {0, 0, 8, 11} },
        {5,         UFilmStrip::kHorizontal, 7.0F,      {16, 0, 20, 11}, {0, 0, 20, 11}},
        {5,         UFilmStrip::kHorizontal, kNoNumber, {0, 0, 4, 11},   {0, 0, 0, 11} },
        {5,         UFilmStrip::kVertical,   1.0F,      {0, 8, 20, 10},  {0, 0, 20, 10}},
        {10,        UFilmStrip::kHorizontal, 0.7F,      {12, 0, 14, 11}, {0, 0, 14, 11}},
        {11,        UFilmStrip::kVertical,   0.35F,     {0, 4, 20, 5},   {0, 0, 20, 3} },
        {0,         UFilmStrip::kVertical,   0.7F,      {0, 0, 20, 11},  {0, 0, 20, 0} },
        {INT32_MAX, UFilmStrip::kVertical,   1.0F,      {0, 0, 20, 0},   {0, 0, 20, 0} },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        const OPtr<UFilmStrip> strip(new UFilmStrip(bitmap, row.frames, row.alignment, 0));
        URect frame, part;
        strip->getRect(frame, row.value);
        strip->getStripRect(part, row.value);
        EXPECT_EQ(frame, row.frame);
        EXPECT_EQ(part, row.strip);
        EXPECT_EQ(strip->getInterval(), 100);
    }
}

TEST_F(Bitmaps, FilmStripsShowOneFrame) {
    const OPtr<UBitmap> bitmap(bitmapOf(kStrip));
    const OPtr<UFilmStrip> strip(new UFilmStrip(bitmap, 2, UFilmStrip::kVertical));
    strip->setDefaultFrame(1);
    const OPtr<UBitmap> target(new UBitmap(UPoint(5, 4), 32));
    UOffscreen device(target);
    device.drawBitmap(strip, UPoint(1, 0), kBitmapPlain);
    EXPECT_EQ(lettersOf(target), (Picture{" ccdd", " eeff", "     ", "     "}));
    strip->drawFrame(device, UPoint(0, 1), 0.2F, kBitmapPlain);
    strip->drawFrame(device, UPoint(0, 3), 7, kBitmapPlain);
    EXPECT_EQ(lettersOf(target), (Picture{" ccdd", "aabbf", "aabb ", "     "}));
    strip->drawStrip(device, UPoint(1, 0), 1.0F);
    EXPECT_EQ(lettersOf(target), (Picture{" aabb", "aaabb", "accdd", " eeff"}));
    const OPtr<UBitmap> frame(strip->getSection(URect(1, 0, 3, 2))), copy(static_cast<UBitmap*>(strip->newCopy()));
    EXPECT_EQ(lettersOf(frame), (Picture{"cd", "ef"}));
    EXPECT_EQ(lettersOf(copy), (Picture{"ccdd", "eeff"}));
    EXPECT_TRUE(strip->copyFrom(frame, URect(0, 0, 1, 1), URect(3, 1, 4, 2), kBitmapPlain));
    EXPECT_EQ(lettersOf(bitmap)[3], "eefc");
}

TEST_F(Bitmaps, SectionsShowNothingOfTheirNeighbours) {
    const OPtr<UBitmap> bitmap(bitmapOf(kStrip));
    const OPtr<UBitmapSection> section(new UBitmapSection(bitmap, URect(2, 1, 4, 4))),
        inner(new UBitmapSection(section, URect(0, 1, 2, 2)));
    const OPtr<UBitmap> target(new UBitmap(UPoint(4, 3), 32));
    UOffscreen device(target);
    device.drawBitmap(section, UPoint(), kBitmapPlain);
    device.drawBitmap(inner, URect(0, 0, 2, 1), URect(2, 0, 4, 3), kBitmapPlain);
    EXPECT_EQ(lettersOf(target), (Picture{"bbdd", "dddd", "ffdd"}));
    EXPECT_EQ(inner->getOffset(), UPoint(2, 2));
    EXPECT_EQ(inner->getTargetBitmap()->getTargetBitmap(), bitmap.get());
    const OPtr<UBitmap> mirrored(section->mirrorCopy(false, true));
    EXPECT_EQ(lettersOf(mirrored), (Picture{"ff", "dd", "bb"})) << "copies are of the part";
    EXPECT_TRUE(inner->makeColorTransparent(UColor(colorOf('d'))));
    EXPECT_EQ(lettersOf(bitmap)[2], "cc  ") << "the pixels are shared";
    UOffscreen within(inner);
    within.drawBitmap(bitmap, URect(0, 0, 2, 2), URect(1, 0, 3, 2), kBitmapPlain);
    EXPECT_EQ(lettersOf(bitmap), (Picture{"aabb", "aabb", "cc a", "eeff"})) << "drawn onto, and only there";
}

TEST_F(Bitmaps, NothingIsDrawnOfNothing) {
    const URect everywhere(INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX), inverted(INT32_MAX, 0, INT32_MIN, 1);
    const OPtr<UBitmap> bitmap(bitmapOf(kStrip)), empty(new UBitmap), tooLarge(new UBitmap(UPoint(16385, 1), 32)),
        strip(new UFilmStrip), section(new UBitmapSection(bitmap, everywhere)), animated(new UAnimatedBitmap(bitmap));
    const OPtr<UDelegatedBitmap> delegate(new UDelegatedBitmap);
    delegate->delategateTo(delegate);
    const OPtr<UBitmapCollection> round(new UBitmapCollection);
    EXPECT_TRUE(round->addImage(OPtr<UBitmap>(new UBitmapSection(delegate, everywhere)), nullptr));
    delegate->delategateTo(round);
    const OPtr<UBitmap> target(new UBitmap(UPoint(2, 2), 32));
    UOffscreen device(target), nowhere(empty), none(nullptr);
    UBitmap* const bitmaps[] = {bitmap, empty, tooLarge, strip, section, animated, delegate};
    UPhysicalDrawDevice* const devices[] = {&device, &nowhere, &none, nullptr};
    for (UBitmap* each : bitmaps)
        for (UPhysicalDrawDevice* on : devices)
            for (const URect& from : {URect(), everywhere, inverted})
                for (const URect& to : {URect(), everywhere, inverted})
                    for (const int16_t mode : {kBitmapPlain, kBitmapTransparent, kBitmapDisabled})
                        each->draw(on, from, to, mode);
    EXPECT_FALSE(tooLarge->getBitmap() || tooLarge->getWidth() || delegate->getBitmap() || strip->getWidth());
}

TEST_F(Bitmaps, CollectionsAreTheirCurrentImage) {
    const OPtr<UBitmapCollection> images(new UBitmapCollection);
    const OPtr<UBitmap> a(bitmapOf(Picture{"a"})), b(bitmapOf(Picture{"bb"}));
    EXPECT_EQ(images->getCurrentImage(), nullptr);
    EXPECT_TRUE(images->addImage(a, "one") && images->addImage(b, "two") && images->addImage(a, "two"));
    EXPECT_FALSE(images->addImage(nullptr, "three") || images->addImage(images, "four") ||
                 images->addImage(7, nullptr));
    EXPECT_EQ(images->getNamedImage("two"), b.get());
    EXPECT_FALSE(images->getNamedImage("Two") || images->getNamedImage(nullptr));
    EXPECT_TRUE(images->setCurrentImage(1));
    for (const int32_t outside : {-1, 3, INT32_MIN})
        EXPECT_FALSE(images->setCurrentImage(outside) || images->getIndexedImage(outside));
    const OPtr<UBitmap> copy(new UBitmap(*images));
    EXPECT_EQ(lettersOf(copy), (Picture{"bb"}));
    const OPtr<UDelegatedBitmap> ring(new UDelegatedBitmap(a));
    EXPECT_TRUE(images->addImage(ring, "ring"));
    ring->delategateTo(images);
    EXPECT_FALSE(images->setCurrentImage(3));
    EXPECT_EQ(images->getCurrentImage(), b.get());
    ring->delategateTo(nullptr);
}

/** A skin of its own for each test. */
class SkinnedBitmaps : public Bitmaps {
protected:
    SkinnedBitmaps() {
        gDrawingHooks.skinBitmap = [](const char* name) { return bitmaps[name].get(); };
        gDrawingHooks.skinBitmapCollection = [](const char* name, UBitmapCollection& images) {
            return images.addImage(bitmaps[name], name);
        };
        gDrawingHooks.addSkinDependent = [](ISkinDependent* dependent) { dependents.push_back(dependent); };
        gDrawingHooks.removeSkinDependent = [](ISkinDependent* dependent) { std::erase(dependents, dependent); };
        UColor::gSkinColor = [](const char* name, UColor& color) {
            const bool isKnown = std::string_view(name) == "chassis";
            color = isKnown ? skinColor : color;
            return isKnown;
        };
    }
    ~SkinnedBitmaps() override {
        bitmaps.clear();
        gDrawingHooks = before;
        UColor::gSkinColor = nullptr;
    }
    static void update() {
        for (ISkinDependent* dependent : dependents)
            dependent->updateSkin();
    }

    const DrawingHooks before = gDrawingHooks;
    inline static std::map<std::string, OPtr<UBitmap>> bitmaps;
    inline static std::vector<ISkinDependent*> dependents;
    inline static UColor skinColor;
};

TEST_F(SkinnedBitmaps, FollowTheSkin) {
    skinColor = UColor(kRedPixel);
    bitmaps["knob"] = bitmapOf(Picture{"a"});
    bitmaps["knob"]->setAlphaFactor(0.5);
    OPtr<USkinBitmap> knob(new USkinBitmap("knob")), missing(new USkinBitmap(nullptr));
    OPtr<USkinBitmapFill> fill(new USkinBitmapFill(1, 1, "chassis", 1)), black(new USkinBitmapFill(1, 1, "nowhere", 1));
    EXPECT_EQ(knob->getAlphaFactor(), 0.5);
    EXPECT_EQ(missing->getBitmap(), nullptr);
    EXPECT_EQ(OPtr<USkinBitmapCollection>(new USkinBitmapCollection("knob"))->countImages(), 1);
    EXPECT_EQ(dependents.size(), 4U);
    bitmaps["knob"] = OPtr<UBitmap>(new UBitmap);  // one that couldn't be loaded
    update();
    EXPECT_EQ(lettersOf(knob), (Picture{"a"}));
    bitmaps["knob"] = bitmapOf(Picture{"bb"});
    skinColor = UColor(kWhitePixel);
    update();
    EXPECT_EQ(lettersOf(knob), (Picture{"bb"}));
    EXPECT_EQ(pixelsOf(fill)[0], kWhitePixel);
    EXPECT_EQ(pixelsOf(black)[0], kBlackPixel);
    knob = missing = nullptr;
    fill = black = nullptr;
    EXPECT_TRUE(dependents.empty());
}

TEST_F(Bitmaps, ComeBackFromStreams) {
    const OPtr<UBitmap> bitmap(bitmapOf(kStrip));
    const OPtr<UBitmapSection> section(new UBitmapSection(bitmap, URect(2, 1, 4, 3)));
    const OPtr<FMemoryStream> stream(saved(section));
    const OPtr<UBitmap> loaded(new UBitmap(static_cast<IBStream*>(stream)));
    EXPECT_EQ(lettersOf(loaded), (Picture{"bb", "dd"}));

    stream->rewind();
    const OPtr<FMemoryStream> packed(new FMemoryStream);
    const OPtr<ZLib::ZLibEngine> engine(new ZLib::ZLibEngine);
    ASSERT_TRUE(FCompressData(stream, packed, engine, 1));
    packed->rewind();
    const OPtr<FCompressionStream> compressed(new FCompressionStream(packed, engine));
    ASSERT_TRUE(compressed->beginDecompress());
    const OPtr<UBitmap> unpacked(new UBitmap(static_cast<IBStream*>(compressed)));
    EXPECT_EQ(lettersOf(unpacked), (Picture{"bb", "dd"}));

    OPtr<FMemoryStream> cut(new FMemoryStream);
    cut->writeRaw(stream->getData(), stream->getSize() / 2);
    cut->rewind();
    const OPtr<UBitmap> broken(new UBitmap(static_cast<IBStream*>(cut)));
    EXPECT_FALSE(broken->getBitmap() || broken->saveToStream(cut, nullptr) || bitmap->saveToStream(nullptr, nullptr));
}

TEST_F(Bitmaps, AreWrittenWholeOrNotAtAll) {
    const TemporaryFolder folder;
    const auto pathOf = [&](const char* name) {
        return FNPath(FString((folder.path / name).c_str()).text16(), kFilePath);
    };
    const OPtr<UBitmap> bitmap(bitmapOf(kStrip));
    const struct {
        const char* name;
        bool isImage, isWritten;
    } rows[] = {
        {"a.png",      true,  true },
        {"a.PNG",      true,  true },
        {"a.jpeg",     true,  false},
        {"a.txt",      false, false},
        {"png",        false, false},
        {"gone/a.png", true,  false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        FNPath path = pathOf(row.name);
        EXPECT_EQ(UBitmap::isBitmapFile(&path), row.isImage);
        EXPECT_EQ(bitmap->saveToFile(&path, nullptr), row.isWritten);
        EXPECT_EQ(std::filesystem::exists(folder.path / row.name), row.isWritten);
        FStream* file = gFileSystem->openFile(&path, kOpenRead);
        const OPtr<UBitmap> loaded(new UBitmap(static_cast<IBStream*>(file)));
        EXPECT_EQ(lettersOf(loaded), row.isWritten ? kStrip : Picture());
        gFileSystem->closeFile(file);
    }
    EXPECT_FALSE(UBitmap::isBitmapFile(nullptr) || bitmap->saveToFile(nullptr, nullptr));
}

TEST_F(Bitmaps, AreOfTypesThatCodecsKnow) {
    CmArray all(0, 10), written(0, 10), borrowing(0, 10);
    all._ownsObjects = CmContainer::kTakesOver;
    written._ownsObjects = CmContainer::kShares;
    EXPECT_TRUE(UBitmap::getFileTypes(all, false) && UBitmap::getFileTypes(written, true));
    EXPECT_FALSE(UBitmap::getFileTypes(borrowing, false)) << "nobody would release them";
    EXPECT_EQ(all.total(), 3);
    EXPECT_EQ(written.total(), 1);
    for (int32_t index = 0; index < all.total(); ++index)
        EXPECT_TRUE(OPtr<Graphics::IBitmapCodec>(UBitmap::getCodec(*static_cast<FFileType*>(all.at(index)))));
}

TEST_F(SkinnedBitmaps, ResourcesComeByTheirNumber) {
    gDrawingHooks.openResource = [](int32_t id, void*) -> FStream* {
        return id == 7 ? saved(OPtr<UBitmap>(bitmapOf(Picture{"abc"}))).detach() : nullptr;
    };
    const OPtr<UBitmapResource> found(new UBitmapResource(7, nullptr)),
        missing(new UBitmapResource(INT32_MIN, nullptr));
    EXPECT_EQ(lettersOf(found), (Picture{"abc"}));
    EXPECT_EQ(missing->getBitmap(), nullptr);
}
