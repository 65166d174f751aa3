#include "frame/source/graphics/cairo/cairobitmapfactory.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include "pluginterfaces/base/istringresult.h"
#include "pluginterfaces/filesystem/ipath.h"
#include "pluginterfaces/host/ihosttools.h"
#include "storage/fmstream.h"
#include "tests/support/piecestream.h"
#include "tests/support/testfolder.h"
#include "tests/support/uncounted.h"
#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>
#include <zlib.h>

using namespace Tessarine;
using namespace Tessarine::Graphics;
using Pixels = std::vector<uint32_t>;
using Bytes = std::string;

namespace {
struct Image {
    int32_t width = 0;
    Pixels pixels;
    bool operator==(const Image&) const = default;
};
void PrintTo(const Image& image, std::ostream* to) {
    *to << std::hex << image.width << " wide:";
    for (const uint32_t pixel : image.pixels)
        *to << ' ' << pixel;
}
const Image kNothing;

Image imageOf(IBitmap* made) {
    const OPtr<IBitmap> bitmap(made);
    const BitmapPixelAccessor pixels(bitmap, kLockRead);
    Image image{pixels.getWidth(), {}};
    for (int32_t y = 0; y < pixels.getHeight(); ++y)
        image.pixels.insert(image.pixels.end(), pixels.row(y), pixels.row(y) + pixels.getWidth());
    return image;
}

Image read(const Bytes& file, size_t piece = SIZE_MAX) {
    PieceStream stream(file, piece);
    const OPtr<CairoBitmapFactory> factory(new CairoBitmapFactory);
    return imageOf(factory->createFromStream(&stream));
}

/** The image comes whole or not at all, however the bytes come, and without a word. */
void expectWholeOrNothing(const Bytes& file, const Image& image) {
    testing::internal::CaptureStderr();
    for (const size_t piece : {size_t(1), size_t(7), SIZE_MAX})
        EXPECT_EQ(read(file, piece), image) << "in pieces of " << piece;
    for (size_t size = 0; size < file.size(); ++size)
        EXPECT_EQ(read(file.substr(0, size)), kNothing) << "cut at " << size;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

struct PngRow {
    const char* name;
    int depth;
    int colorType;
    Bytes row;
    Pixels pixels;  // of the row
    int transparent = -1;
};
const PngRow kPngs[] = {
    {"grey 1", 1, 0, "\x50", {0xFF000000, 0xFFFFFFFF, 0xFF000000, 0xFFFFFFFF}},
    {"grey 2", 2, 0, "\x1B", {0xFF000000, 0xFF555555, 0xFFAAAAAA, 0xFFFFFFFF}},
    {"grey 4", 4, 0, "\x1F", {0xFF111111, 0xFFFFFFFF}},
    {"grey 8, one off", 8, 0, "\x12\x34", {0xFF121212, 0x00343434}, 0x34},
    {"grey 16", 16, 0, "\x12\xFF\x34\x56\x34\x57", {0xFF121212, 0x00343434, 0xFF343434}, 0x3456},
    {"RGB 8", 8, 2, "\x01\x02\x03", {0xFF010203}},
    {"RGB 16", 16, 2, "\x01\xFF\x02\xFF\x03\xFF", {0xFF010203}},
    {"palette 1", 1, 3, "\x80", {0x80102030, 0xFF000001}},
    {"palette 2", 2, 3, "\x6C", {0x80102030, 0x00405060, 0xFF708090, 0xFF000001}},
    {"palette 4", 4, 3, "\x12", {0x80102030, 0x00405060}},
    {"palette 8", 8, 3, "\x03\x02", {0xFF708090, 0x00405060}},
    {"grey alpha 8", 8, 4, "\x12\x80", {0x80121212}},
    {"grey alpha 16", 16, 4, "\x12\xFF\x80\xFF", {0x80121212}},
    {"RGBA 8", 8, 6, Bytes("\x01\x02\x03\x00", 4), {0x00010203}},
    {"RGBA 16", 16, 6, "\x01\xFF\x02\xFF\x03\xFF\x7F\xFF", {0x7F010203}},
};

/** Nine equal rows. */
Bytes pngOf(const PngRow& row, bool interlaced) {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    Bytes file;
    const auto append = [](png_structp to, png_bytep bytes, size_t size) {
        static_cast<Bytes*>(png_get_io_ptr(to))->append(reinterpret_cast<char*>(bytes), size);
    };
    png_set_write_fn(png, &file, append, nullptr);
    png_set_IHDR(png, info, uint32_t(row.pixels.size()), 9, row.depth, row.colorType,
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, 0, 0);
    png_color colors[] = {
        {0,    0,    1   },
        {0x10, 0x20, 0x30},
        {0x40, 0x50, 0x60},
        {0x70, 0x80, 0x90}
    };
    png_byte alphas[] = {0xFF, 0x80, 0x00};
    if (row.colorType == PNG_COLOR_TYPE_PALETTE) {
        png_set_PLTE(png, info, colors, row.depth == 1 ? 2 : 4);
        png_set_tRNS(png, info, alphas, row.depth == 1 ? 2 : 3, nullptr);
    }
    png_color_16 transparent = {};
    transparent.gray = png_uint_16(row.transparent);
    if (row.transparent >= 0)
        png_set_tRNS(png, info, nullptr, 0, &transparent);
    png_set_gAMA(png, info, 1.0);  // nobody applies it
    png_write_info(png, info);
    for (int passes = png_set_interlace_handling(png); passes > 0; --passes)
        for (int y = 0; y < 9; ++y)
            png_write_row(png, reinterpret_cast<png_const_bytep>(row.row.data()));
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

Image repeated(const Pixels& row, int32_t rows) {
    Image image{int32_t(row.size()), {}};
    for (int32_t y = 0; y < rows; ++y)
        image.pixels.insert(image.pixels.end(), row.begin(), row.end());
    return image;
}

struct JpegRow {
    const char* name;
    J_COLOR_SPACE space;
    std::array<uint8_t, 4> samples;
    uint32_t pixel;
    bool adobe = true;
};
constexpr JpegRow kJpegs[] = {
    {"grey", JCS_GRAYSCALE, {100}, 0xFF646464},
    {"YCbCr", JCS_YCbCr, {128, 128, 178}, 0xFFC65C80},
    {"RGB", JCS_RGB, {200, 100, 50}, 0xFFC86432},
    {"light of inks", JCS_CMYK, {200, 100, 50, 128}, 0xFF643219},
    {"amounts of inks", JCS_CMYK, {200, 100, 50, 128}, 0xFF1B4D66, false},
    {"YCCK", JCS_YCCK, {128, 128, 128, 128}, 0xFF404040},
};

/** 9 by 9, all alike: exact but for the rounding of colours. */
Bytes jpegOf(const JpegRow& row, const std::vector<jpeg_scan_info>& scans = {}) {
    jpeg_compress_struct info;
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &bytes, &size);
    info.image_width = info.image_height = 9;
    info.in_color_space = row.space;
    info.input_components = row.space == JCS_GRAYSCALE ? 1 : row.space == JCS_CMYK || row.space == JCS_YCCK ? 4 : 3;
    jpeg_set_defaults(&info);
    jpeg_set_colorspace(&info, row.space);
    jpeg_set_quality(&info, 100, TRUE);
    info.write_Adobe_marker = row.adobe;
    info.scan_info = scans.empty() ? nullptr : scans.data();
    info.num_scans = int(scans.size());
    jpeg_start_compress(&info, TRUE);
    Bytes samples;
    for (int x = 0; x < 9; ++x)
        samples.append(row.samples.begin(), row.samples.begin() + info.input_components);
    auto* line = reinterpret_cast<JSAMPROW>(samples.data());
    while (info.next_scanline < info.image_height)
        jpeg_write_scanlines(&info, &line, 1);
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    const Bytes file(bytes, bytes + size);
    free(bytes);
    return file;
}

/** All of each component at once, and as many bits more of single coefficients as there shall be scans. */
std::vector<jpeg_scan_info> progressiveScans(const JpegRow& row, int count) {
    std::vector<jpeg_scan_info> scans;
    const int components = row.space == JCS_GRAYSCALE ? 1 : row.space == JCS_CMYK || row.space == JCS_YCCK ? 4 : 3;
    for (int i = 0; i < components; ++i)
        scans.push_back({1, {i}, 0, 0, 0, 0});
    for (int i = 0; int(scans.size()) < count; ++i)
        scans.push_back({1, {0}, 1 + i / 11, 1 + i / 11, i % 11 > 0 ? 11 - i % 11 : 0, 10 - i % 11});
    return scans;
}

Bytes little(uint32_t number, int bytes) {
    Bytes text;
    for (int i = 0; i < bytes; ++i)
        text += char(number >> (8 * i));
    return text;
}

struct BmpRow {
    const char* name;
    uint32_t header;
    int32_t width, height;
    uint32_t bits, compression;
    Bytes tail;  // colours or masks
    Bytes pixels;
    Pixels expected;  // empty: refused
};

/** A header of 12 bytes, or one of more whose first 40 are told; tail stands from place 40 on. */
Bytes bmpOf(const BmpRow& row) {
    Bytes header = little(row.header, 4);
    if (row.header == 12)
        header += little(uint32_t(row.width), 2) + little(uint32_t(row.height), 2);
    else
        header += little(uint32_t(row.width), 4) + little(uint32_t(row.height), 4);
    header += little(1, 2) + little(row.bits, 2);
    if (row.header > 12)
        header += little(row.compression, 4) + Bytes(20, '\0');
    header += row.tail;
    header.resize(std::max(header.size(), size_t(row.header)));
    return "BM" + little(0xDEADBEEF, 4) + Bytes(4, '\0') + little(uint32_t(14 + header.size()), 4) + header +
           row.pixels;
}

const Bytes kTwo("\x03\x02\x01\x00\x30\x20\x10\x00", 8);  // 0x010203, 0x102030
const Bytes kMasks565("\x00\xF8\x00\x00\xE0\x07\x00\x00\x1F\x00\x00\x00", 12);
const Bytes kMasksDeep("\x00\x00\xF0\x3F\x00\xFC\x0F\x00\xFF\x03\x00\x00\x00\x00\x00\xC0",
                       16);  // 10, 10, 10 and 2 bits
constexpr uint32_t kA = 0xFF010203, kB = 0xFF102030;

const BmpRow kBmps[] = {
    {"1 bit, from below", 40, 2, 2, 1, 0, kTwo, {"\x40\0\0\0\x80\0\0\0", 8}, {kB, kA, kA, kB}},
    {"1 bit, from above", 40, 2, -2, 1, 0, kTwo, {"\x40\0\0\0\x80\0\0\0", 8}, {kA, kB, kB, kA}},
    {"1 bit, oldest", 12, 2, 1, 1, 0, {"\x03\x02\x01\x30\x20\x10", 6}, {"\x40\0\0\0", 4}, {kA, kB}},
    {"4 bits", 40, 3, 1, 4, 0, kTwo, {"\x01\x1F\0\0", 4}, {kA, kB, kB}},
    {"8 bits", 40, 2, 1, 8, 0, kTwo, {"\x01\x00\0\0", 4}, {kB, kA}},
    {"no such colour", 40, 2, 1, 8, 0, kTwo, {"\x01\x02\0\0", 4}, {}},
    {"16 bits", 40, 2, 1, 16, 0, "", {"\xFF\xFF\x20\x04", 4}, {0xFFFFFFFF, 0xFF080800}},
    {"16 bits, masks", 40, 2, 1, 16, 3, kMasks565, {"\x20\x00\x00\x80", 4}, {0xFF000400, 0xFF840000}},
    {"24 bits", 40, 1, 2, 24, 0, "", {"\x03\x02\x01\x00\x30\x20\x10\x00", 8}, {kB, kA}},
    {"32 bits, no alpha", 40, 1, 1, 32, 0, "", {"\x03\x02\x01\x00", 4}, {kA}},
    {"32 bits, deep", 56, 1, 1, 32, 3, kMasksDeep, {"\xFF\x07\x08\x40", 4}, {0x550080FF}},
    {"alpha behind", 40, 1, 1, 32, 6, kMasksDeep, {"\xFF\x07\x08\xC0", 4}, {0xFF0080FF}},
    {"mask with a gap", 40, 1, 1, 16, 3, {"\x05\0\0\0\0\0\0\0\0\0\0\0", 12}, {"\0\0\0\0", 4}, {}},
    {"runs of 8", 40, 3, 2, 8, 1, kTwo, {"\x03\x01\0\0\0\x03\0\1\0\0\0\1", 12}, {kA, kB, kA, kB, kB, kB}},
    {"runs of 4", 40, 5, 1, 4, 2, kTwo, {"\x02\x01\0\x03\x10\x10\0\1", 8}, {kA, kB, kB, kA, kB}},
    {"a move", 40, 2, 2, 8, 1, kTwo, {"\x01\x01\0\x02\x00\x01\x01\x00\0\1", 10}, {0, kA, kB, 0}},
    {"a run too long", 40, 2, 2, 8, 1, kTwo, {"\x03\x01\0\1", 4}, {}},
    {"a row too many", 40, 1, 1, 8, 1, kTwo, {"\x01\x01\0\0\x01\x01\0\1", 8}, {}},
    {"a move outside", 40, 1, 1, 8, 1, kTwo, {"\0\x02\0\x02\0\1", 6}, {}},
    {"runs from above", 40, 1, -1, 8, 1, kTwo, {"\x01\x01\0\1", 4}, {}},
    {"runs of 24", 64, 1, 1, 24, 4, "", {"\x01\x02\x03\x04\0\1", 6}, {}},
    {"2 bits", 40, 1, 1, 2, 0, kTwo, {"\0\0\0\0", 4}, {}},
    {"no width", 40, 0, 1, 8, 0, kTwo, {"\0\0\0\0", 4}, {}},
    {"endless height", 40, 1, INT32_MIN, 8, 0, kTwo, {"\0\0\0\0", 4}, {}},
    {"a side too long", 40, 16385, 1, 1, 0, kTwo, Bytes(4096, '\0'), {}},
    {"too many pixels", 40, 16384, 4097, 1, 0, kTwo, {"\0\0\0\0", 4}, {}},
};

/** With its checksum, so that nothing but the size is wrong. */
Bytes pngOfSize(uint32_t width, uint32_t height) {
    Bytes file = pngOf(kPngs[5], false);
    for (int i = 0; i < 4; ++i) {
        file[16 + size_t(i)] = char(width >> (24 - 8 * i));
        file[20 + size_t(i)] = char(height >> (24 - 8 * i));
    }
    const auto sum = uint32_t(crc32(0, reinterpret_cast<const Bytef*>(&file[12]), 17));
    for (int i = 0; i < 4; ++i)
        file[29 + size_t(i)] = char(sum >> (24 - 8 * i));
    return file;
}
}  // namespace

TEST(ImageCodecs, PngOfEachKindComesExactly) {
    for (const PngRow& row : kPngs)
        for (const bool interlaced : {false, true}) {
            SCOPED_TRACE(std::string(row.name) + (interlaced ? ", interlaced" : ""));
            expectWholeOrNothing(pngOf(row, interlaced), repeated(row.pixels, 9));
        }
}

TEST(ImageCodecs, PngWithAnyByteDamagedIsRefused) {
    const Bytes whole = pngOf(kPngs[9], true);
    for (size_t i = 0; i < whole.size(); ++i)
        for (const int bit : {0x01, 0x20, 0x80}) {
            Bytes damaged = whole;
            damaged[i] = char(damaged[i] ^ bit);
            EXPECT_EQ(read(damaged), kNothing) << "bit " << bit << " of byte " << i;
        }
}

TEST(ImageCodecs, PngOfUntrueSizeIsRefused) {
    EXPECT_EQ(read(pngOfSize(1, 9)), repeated(kPngs[5].pixels, 9));
    const std::pair<uint32_t, uint32_t> sizes[] = {
        {0,     9       },
        {1,     8       },
        {1,     10      },
        {2,     9       },
        {16384, 4096    },
        {16384, 4097    },
        {16385, 1       },
        {1,     1u << 31},
    };
    for (const auto& [width, height] : sizes)
        EXPECT_EQ(read(pngOfSize(width, height)), kNothing) << width << " x " << height;
}

TEST(ImageCodecs, JpegOfEachKindComesExactly) {
    for (const JpegRow& row : kJpegs)
        for (const bool progressive : {false, true}) {
            SCOPED_TRACE(std::string(row.name) + (progressive ? ", progressive" : ""));
            const Bytes file = jpegOf(row, progressive ? progressiveScans(row, 8) : std::vector<jpeg_scan_info>{});
            expectWholeOrNothing(file, repeated(Pixels(9, row.pixel), 9));
        }
}

TEST(ImageCodecs, JpegOfTooManyScansOrUntrueSizeIsRefused) {
    const Image image = repeated(Pixels(9, kJpegs[0].pixel), 9);
    EXPECT_EQ(read(jpegOf(kJpegs[0], progressiveScans(kJpegs[0], 100))), image);
    EXPECT_EQ(read(jpegOf(kJpegs[0], progressiveScans(kJpegs[0], 101))), kNothing);
    const Bytes file = jpegOf(kJpegs[0]);
    const size_t frame = file.find("\xFF\xC0") + 5;  // height and width
    for (const char* size : {"\x40\x01\x01\x01", "\x01\x01\x40\x01", "\x40\xFF\x40\xFF", "\x3F\xFF\x10\x01"}) {
        Bytes untrue = file;
        untrue.replace(frame, 4, size);
        EXPECT_EQ(read(untrue), kNothing);
    }
}

TEST(ImageCodecs, BmpOfEachKindComesExactlyOrNotAtAll) {
    for (const BmpRow& row : kBmps) {
        SCOPED_TRACE(row.name);
        const Image image{row.expected.empty() ? 0 : row.width, row.expected};
        expectWholeOrNothing(bmpOf(row), image);
    }
}

TEST(ImageCodecs, WhatIsNoImageIsRefused) {
    const OPtr<CairoBitmapFactory> factory(new CairoBitmapFactory);
    EXPECT_EQ(factory->createFromStream(nullptr), nullptr);
    EXPECT_EQ(factory->createFromPath(nullptr), nullptr);
    for (const char* bytes : {"", "B", "GIF89a", "\x89PNG\r\n\x1A\r", "\xFF\xD8"})
        EXPECT_EQ(read(bytes), kNothing) << bytes;
}

TEST(ImageCodecs, PathLeadsToTheFile) {
    struct Path : Uncounted<IPath> {
        std::string text;
        int32_t getFullPath(IString* path) override { return path->setText8(text.c_str()), kResultOk; }
    } path;
    const TemporaryFolder folder;
    const OPtr<CairoBitmapFactory> factory(new CairoBitmapFactory);
    path.text = folder.path / "image.png";
    EXPECT_EQ(imageOf(factory->createFromPath(&path)), kNothing);
    std::ofstream(path.text) << pngOf(kPngs[5], false);
    EXPECT_EQ(imageOf(factory->createFromPath(&path)), repeated(kPngs[5].pixels, 9));
    path.text = folder.path;
    EXPECT_EQ(imageOf(factory->createFromPath(&path)), kNothing);
}

TEST(ImageCodecs, PngIsWrittenWithColoursUnderAnyAlpha) {
    struct List : Uncounted<IList> {
        std::vector<IPtr<FUnknown>> all;
        int32_t count() override { return int32_t(all.size()); }
        FUnknown* at(int32_t index) override { return all[size_t(index)]; }
        int32_t add(FUnknown* object) override { return all.emplace_back(object), kResultOk; }
        int32_t removeAt(int32_t) override { return kResultFalse; }
        void removeAll() override { all.clear(); }
    } codecs;
    const OPtr<CairoBitmapFactory> factory(new CairoBitmapFactory);
    ASSERT_EQ(factory->getCodecs(&codecs), kResultOk);
    for (const uint8_t alpha : {0xFF, 0x01, 0x00}) {
        const OPtr<IBitmap> bitmap(factory->create({300, 2}));
        {
            const BitmapPixelAccessor pixels(bitmap, kLockWrite);
            for (int32_t x = 0; x < 600; ++x)
                pixels.row(x / 300)[x % 300] = (x == 599 ? uint32_t(alpha) << 24 : 0xFF000000) | uint32_t(x * 0x3579);
        }
        for (const IPtr<FUnknown>& each : codecs.all) {
            const FUnknownPtr<IBitmapCodec> codec(each);
            const OPtr<FMemoryStream> stream(new FMemoryStream);
            PieceStream small({}, 100);
            EXPECT_EQ(codec->encode(bitmap, &small), kResultFalse);
            ASSERT_EQ(codec->encode(bitmap, stream), codec->canEncode() ? kResultOk : kResultFalse);
            EXPECT_EQ(codec->canEncode(), codec->getExtension() == std::string("png"));
            if (!codec->canEncode())
                continue;
            EXPECT_EQ(stream->getData()[25], alpha == 0xFF ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGB_ALPHA);
            stream->rewind();
            bitmap->addRef();
            EXPECT_EQ(imageOf(factory->createFromStream(stream)), imageOf(bitmap));
        }
    }
}
