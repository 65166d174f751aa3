#include "gui/drawing/upen.h"
#include "gui/drawing/hooks.h"
#include "gui/drawing/ufont.h"
#include "gui/drawing/upolygon.h"
#include "storage/fmstream.h"
#include "storage/fnewarchive.h"
#include "storage/fpersistent.h"
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
const UColor kColor(0x1234, 0x5678, 0x9ABC);
const std::string kColorBytes = "\x34\x12\xBC\x9A\x78\x56";

std::string bytes(const CmObject& object) {
    FMemoryStream stream;
    FNewArchive writer(&stream, true);
    EXPECT_TRUE(object.externalize(writer));
    return std::string(stream.getData(), size_t(stream.getSize()));
}
}  // namespace

TEST(UPen, KeepsItsWidthStyleAndFlagInArchives) {
    const UPen source(kColor, 3, UPen::kDotted, true);
    std::string stored = bytes(source);
    const std::string rest("\0\0\1\0\3\0\0\0\0\0\x80\x3F\1\0", 14);  // 0, the style, the width, 1.0, the flag
    EXPECT_EQ(stored, kColorBytes + rest);
    for (size_t size = 0; size <= stored.size(); ++size) {
        FMemoryStream stream(stored.data(), int32_t(size));
        FNewArchive reader(&stream, false);
        UPen read;
        EXPECT_EQ(read.internalize(reader), size == stored.size());
        EXPECT_TRUE(read == (size == stored.size() ? source : UPen())) << size;
    }
}

TEST(UBrush, ReadsItsFlagOfNewArchivesOnly) {
    const UBrush source(kColor, true);
    std::string stored = bytes(source);
    EXPECT_EQ(stored, kColorBytes + std::string("\0\0\1\0\0\0\x80\x3F\1\0", 10));
    FMemoryStream old(stored.data(), int32_t(stored.size()) - 2);  // without a class record: version 0
    FNewArchive oldReader(&old, false);
    UBrush read;
    EXPECT_TRUE(read.internalize(oldReader));
    EXPECT_TRUE(read == UBrush(kColor, false));

    FMemoryStream stream;
    FNewArchive writer(&stream, true), reader(&stream, false);
    writer.save(&source);
    stream.rewind();
    const OPtr<CmObject> loaded(reader.load("UBrush"));
    EXPECT_TRUE(loaded && loaded->isEqual(&source));

    const OPtr<FAttributes> attributes(new FAttributes);
    EXPECT_TRUE(source.storeAttributes(*attributes) && read.restoreAttributes(*attributes));
    EXPECT_TRUE(read == source);
}

TEST(UFont, KnowsTheStandardFaces) {
    const struct {
        uint32_t index;
        const char *name, *japanese;
    } rows[] = {
        {kSystemFont,    "Lucida Grande", "Osaka" },
        {kHelveticaFont, "Helvetica",     "Osaka" },
        {kTimesFont,     "Times Roman",   "Osaka" },
        {kSymbolFont,    "Symbol",        "Symbol"},
        {6,              "Geneva",        "Osaka" },
        {0xFFFFFFFF,     "Geneva",        "Osaka" },
    };
    for (const auto& row : rows) {
        gDrawingHooks.isJapanese = [] { return true; };
        EXPECT_TRUE(UFont(row.index, 9).getName() == FString(FString(row.japanese).text16()));
        gDrawingHooks.isJapanese = nullptr;
        EXPECT_TRUE(UFont(row.index, 9).getName() == FString(FString(row.name).text16()));
    }
    EXPECT_EQ(UFont::getStdFontByString("hELVETICA"), kHelveticaFont);
    EXPECT_EQ(UFont::getStdFontByString("Times Roman"), -1);
    EXPECT_EQ(UFont::getStdFontByString(nullptr), -1);
    UFont font(u"A", 9, 7), other(font);
    EXPECT_EQ(UFont::frameToGraphicsStyle(font.getStyle()), 3u);
    EXPECT_TRUE(font == other);
    other.setTextMode(UTextMode::kOpaque);
    EXPECT_FALSE(font == other);
}

TEST(UPolygon, KeepsItsBounds) {
    UPolygon polygon;
    for (const Graphics::Point& point : {
             Graphics::Point{5,  5},
             {-1, 7},
             {2,  3}
    })
        polygon.lineTo(point);
    EXPECT_TRUE(polygon.getBounds() == (Graphics::Rect{-1, 3, 6, 4}));
    polygon.offset(1, 0.5);
    EXPECT_TRUE(polygon.getBounds() == (Graphics::Rect{0, 3.5, 6, 4}));
    EXPECT_TRUE(polygon.at(1) == (Graphics::Point{0, 7.5}));
    polygon.moveTo({4, 4});
    EXPECT_EQ(polygon.count(), 1u);
    EXPECT_TRUE(polygon.getBounds() == (Graphics::Rect{4, 4, 0, 0}));
}
