#include "frame/source/graphics/cairo/imagecodec.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include <algorithm>
#include <bit>
#include <cstdlib>
#include <vector>

namespace Tessarine::Graphics {
namespace {
constexpr uint32_t kOpaque = 0xFF000000;
constexpr uint32_t kFileHeaderBytes = 14;
constexpr uint32_t kCoreHeaderBytes = 12;  // the oldest, with 16 bits for each side
constexpr uint32_t kInfoHeaderBytes = 40;
constexpr uint32_t kOs2HeaderBytes = 64;
constexpr uint32_t kHeaderBytes[] = {kCoreHeaderBytes, kInfoHeaderBytes, 52, 56, kOs2HeaderBytes, 108, 124};
constexpr uint32_t kMasksPlace = 40;  // of four words: red, green, blue, alpha
constexpr uint32_t kMostHeaderBytes = std::ranges::max(kHeaderBytes);

enum Compression : uint32_t { kPlain = 0, kRuns8 = 1, kRuns4 = 2, kMasks = 3, kMasksWithAlpha = 6 };

struct FormatRow {
    int32_t bits;
    uint32_t compression;
    uint32_t masks[4];  // unless the file tells its own
};
constexpr FormatRow kFormats[] = {
    {1,  kPlain,          {0, 0, 0, 0}               },
    {4,  kPlain,          {0, 0, 0, 0}               },
    {8,  kPlain,          {0, 0, 0, 0}               },
    {16, kPlain,          {0x7C00, 0x3E0, 0x1F, 0}   },
    {24, kPlain,          {0xFF0000, 0xFF00, 0xFF, 0}},
    {32, kPlain,          {0xFF0000, 0xFF00, 0xFF, 0}},
    {8,  kRuns8,          {0, 0, 0, 0}               },
    {4,  kRuns4,          {0, 0, 0, 0}               },
    {16, kMasks,          {0, 0, 0, 0}               },
    {32, kMasks,          {0, 0, 0, 0}               },
    {16, kMasksWithAlpha, {0, 0, 0, 0}               },
    {32, kMasksWithAlpha, {0, 0, 0, 0}               },
};

bool hasRuns(uint32_t compression) {
    return compression == kRuns8 || compression == kRuns4;
}

/** Of so many bytes, at most 4, the lowest first. */
uint32_t numberAt(const uint8_t* bytes, int32_t count) {
    uint32_t number = 0;
    for (int32_t i = 0; i < count; ++i)
        number |= uint32_t(bytes[i]) << (8 * i);
    return number;
}

/** Some bits of a pixel as an amount of 0 to 255. */
class Channel {
public:
    /** missing: the amount without a mask. False: the mask has gaps. */
    bool set(uint32_t newMask, uint8_t missing) {
        mask = newMask;
        levels[0] = missing;
        if (mask == 0)
            return true;
        const int32_t lowest = std::countr_zero(mask);
        const int32_t bits = std::popcount(mask);
        shift = lowest + std::max(bits - 8, 0);
        const uint32_t most = (1u << std::min(bits, 8)) - 1;
        for (uint32_t level = 0; level <= most; ++level)
            levels[level] = uint8_t((level * 255 + most / 2) / most);
        return lowest + bits == int32_t(std::bit_width(mask));
    }
    uint32_t of(uint32_t pixel) const { return levels[(pixel & mask) >> shift]; }

private:
    uint32_t mask = 0;
    int32_t shift = 0;
    std::array<uint8_t, 256> levels = {};
};

struct BmpReading {
    ImageSource& source;
    uint32_t passed = 0;      // bytes of the file, up to the pixels
    uint32_t pixelPlace = 0;  // where they begin
    uint32_t headerBytes = 0;
    std::array<uint8_t, kMostHeaderBytes> header = {};
    int32_t width = 0;
    int32_t height = 0;
    bool fromTop = false;
    int32_t bits = 0;  // of a pixel
    const FormatRow* format = nullptr;
    uint32_t colorCount = 0;
    std::array<uint32_t, 256> colors = {};
    std::array<Channel, 4> channels = {};  // red, green, blue, alpha

    bool take(void* to, uint32_t count) {
        passed += count;
        return source.read(to, count);
    }
    uint32_t field(uint32_t place, int32_t bytes) const { return numberAt(header.data() + place, bytes); }
    /** y counts as the file does. */
    int32_t place(int32_t y) const { return fromTop ? y : height - 1 - y; }
};

bool readHeader(BmpReading& reading) {
    std::array<uint8_t, kFileHeaderBytes> file;
    if (!reading.take(file.data(), kFileHeaderBytes) || !reading.take(reading.header.data(), 4))
        return false;
    reading.pixelPlace = numberAt(file.data() + 10, 4);
    reading.headerBytes = reading.field(0, 4);
    return std::ranges::find(kHeaderBytes, reading.headerBytes) != std::end(kHeaderBytes) &&
           reading.take(reading.header.data() + 4, reading.headerBytes - 4);
}

bool setSize(BmpReading& reading, int64_t width, int64_t height) {
    reading.fromTop = height < 0;
    height = std::abs(height);
    if (width < 1 || height < 1 || width > IBitmapFactory::kMaxSide || height > IBitmapFactory::kMaxSide)
        return false;
    reading.width = int32_t(width);
    reading.height = int32_t(height);
    return true;
}

bool setFormat(BmpReading& reading, uint32_t planes, uint32_t bits, uint32_t compression) {
    const auto* row = std::ranges::find_if(kFormats, [=](const FormatRow& each) {
        return uint32_t(each.bits) == bits && each.compression == compression;
    });
    const bool isOther = reading.headerBytes == kOs2HeaderBytes && compression > kRuns4;  // its own numbers
    if (planes != 1 || row == std::end(kFormats) || isOther || (hasRuns(compression) && reading.fromTop))
        return false;
    reading.format = row;
    reading.bits = row->bits;
    return true;
}

bool scanHeader(BmpReading& reading) {
    if (reading.headerBytes == kCoreHeaderBytes)
        return setSize(reading, reading.field(4, 2), reading.field(6, 2)) &&
               setFormat(reading, reading.field(8, 2), reading.field(10, 2), kPlain);
    return setSize(reading, int32_t(reading.field(4, 4)), int32_t(reading.field(8, 4))) &&
           setFormat(reading, reading.field(12, 2), reading.field(14, 2), reading.field(16, 4));
}

/** Masks stand in the header, or behind one that ends before them. */
bool readMasks(BmpReading& reading) {
    const uint32_t compression = reading.format->compression;
    const bool areTold = compression == kMasks || compression == kMasksWithAlpha;
    const uint32_t behind = compression == kMasks ? 12 : 16;
    if (areTold && reading.headerBytes == kInfoHeaderBytes &&
        !reading.take(reading.header.data() + kMasksPlace, behind))
        return false;
    for (uint32_t i = 0; i < 4; ++i) {
        const uint32_t mask = areTold ? reading.field(kMasksPlace + 4 * i, 4) : reading.format->masks[i];
        if (!reading.channels[i].set(mask, i == 3 ? 255 : 0))
            return false;
    }
    return true;
}

bool readColors(BmpReading& reading) {
    if (reading.bits > 8)
        return true;
    const uint32_t bytes = reading.headerBytes == kCoreHeaderBytes ? 3 : 4;
    const uint32_t most = 1u << reading.bits;
    const uint32_t told = reading.headerBytes == kCoreHeaderBytes ? 0 : reading.field(32, 4);
    const uint32_t fitting = (std::max(reading.pixelPlace, reading.passed) - reading.passed) / bytes;
    reading.colorCount = std::min({told > 0 ? told : most, most, fitting});
    for (uint32_t i = 0; i < reading.colorCount; ++i) {
        std::array<uint8_t, 4> color;
        if (!reading.take(color.data(), bytes))
            return false;
        reading.colors[i] = kOpaque | numberAt(color.data(), 3);
    }
    return reading.colorCount > 0;
}

/** The pixel x of a row of indices. */
uint32_t indexAt(const uint8_t* bytes, int32_t x, int32_t bits) {
    const int32_t bit = x * bits;
    return bytes[bit / 8] >> (8 - bits - bit % 8) & ((1u << bits) - 1);
}

bool setIndexed(const BmpReading& reading, const uint8_t* bytes, int32_t count, uint32_t* to) {
    for (int32_t i = 0; i < count; ++i) {
        const uint32_t index = indexAt(bytes, i, reading.bits);
        if (index >= reading.colorCount)
            return false;
        to[i] = reading.colors[index];
    }
    return true;
}

void setMasked(const BmpReading& reading, const uint8_t* bytes, uint32_t* to) {
    const auto& [red, green, blue, alpha] = reading.channels;
    const int32_t step = reading.bits / 8;
    for (int32_t x = 0; x < reading.width; ++x, bytes += step) {
        const uint32_t pixel = numberAt(bytes, step);
        to[x] = alpha.of(pixel) << 24 | red.of(pixel) << 16 | green.of(pixel) << 8 | blue.of(pixel);
    }
}

bool readRows(BmpReading& reading, const BitmapPixelAccessor& pixels) {
    std::vector<uint8_t> bytes(size_t(reading.width * reading.bits + 31) / 32 * 4);
    for (int32_t y = 0; y < reading.height; ++y) {
        uint32_t* row = pixels.row(reading.place(y));
        if (!reading.source.read(bytes.data(), bytes.size()))
            return false;
        if (reading.bits > 8)
            setMasked(reading, bytes.data(), row);
        else if (!setIndexed(reading, bytes.data(), reading.width, row))
            return false;
    }
    return true;
}

/** Runs of indices and moves between them. Pixels that are moved over stay transparent. */
class RunReader {
public:
    RunReader(BmpReading& reading, const BitmapPixelAccessor& pixels) : reading(reading), pixels(pixels) {}

    bool readAll() {
        enum Escape : uint8_t { kEndOfRow, kEndOfImage, kMove };
        for (std::array<uint8_t, 2> code; reading.source.read(code.data(), 2);) {
            if (code[0] == 0 && code[1] == kEndOfImage)
                return true;
            const bool fits = code[0] > 0            ? repeat(code[1], code[0])
                              : code[1] == kEndOfRow ? move(-x, 1)
                              : code[1] == kMove     ? readMove()
                                                     : readIndices(code[1]);
            if (!fits)
                return false;
        }
        return false;
    }

private:
    bool repeat(uint8_t value, int32_t count) {
        std::fill_n(bytes.begin(), count, value);
        return set(count);
    }
    bool readIndices(int32_t count) {
        const size_t size = size_t(count * reading.bits + 15) / 16 * 2;
        return reading.source.read(bytes.data(), size) && set(count);
    }
    bool readMove() {
        std::array<uint8_t, 2> by;
        return reading.source.read(by.data(), 2) && move(by[0], by[1]);
    }
    /** As far as just outside. */
    bool move(int32_t byX, int32_t byY) {
        x += byX;
        y += byY;
        return x <= reading.width && y <= reading.height;
    }
    bool set(int32_t count) {
        if (y >= reading.height || count > reading.width - x)
            return false;
        uint32_t* to = pixels.row(reading.place(y)) + x;
        x += count;
        return setIndexed(reading, bytes.data(), count, to);
    }

    BmpReading& reading;
    const BitmapPixelAccessor& pixels;
    std::array<uint8_t, 256> bytes;
    int32_t x = 0;
    int32_t y = 0;
};

CairoBitmap* readBmp(ImageSource& source) {
    BmpReading reading{source};
    if (!readHeader(reading) || !scanHeader(reading) || !readMasks(reading) || !readColors(reading))
        return nullptr;
    if (reading.pixelPlace < reading.passed || !source.skip(reading.pixelPlace - reading.passed))
        return nullptr;
    OPtr<CairoBitmap> bitmap(CairoBitmap::create(reading.width, reading.height));
    const BitmapPixelAccessor pixels(bitmap, kLockWrite);
    if (!pixels.isValid())
        return nullptr;
    const bool isWhole =
        hasRuns(reading.format->compression) ? RunReader(reading, pixels).readAll() : readRows(reading, pixels);
    return isWhole ? bitmap.detach() : nullptr;
}
}  // namespace

const ImageCodec kBmpCodec = {"bmp", "BMP", "image/bmp", "BM", readBmp, nullptr};

}  // namespace Tessarine::Graphics
