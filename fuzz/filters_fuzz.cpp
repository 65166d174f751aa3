// What a bitmap filter is given. The first byte chooses the filter, the next two the bitmap's size, the fourth says how many
// inputs are set; each of them has a byte for its name, one for its kind, and its numbers. The rest is the pixels.
#include "frame/source/graphics/bitmapfilters/transformfilters.h"
#include "fuzz/demand.h"
#include "graphics/bitmapfilters/bitmapfilter.h"
#include "graphics/bitmapfilters/bitmapfilterfactory.h"
#include "tests/support/memorybitmap.h"
#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>

using namespace Tessarine;
using namespace Tessarine::Graphics;
using Tessarine::Testing::MemoryBitmap;
using Tessarine::Testing::MemoryBitmapFactory;

namespace {
constexpr int32_t kMostColumns = 24, kMostInputs = 12;
constexpr double kMostPixels = 1 << 14;  // of a result

struct SmallBitmapFactory : MemoryBitmapFactory {
    IBitmap* create(Size size) override {
        return size.width * size.height <= kMostPixels ? MemoryBitmapFactory::create(size) : nullptr;
    }
};

/** Zeros behind the end. */
struct Bytes {
    const uint8_t* next;
    const uint8_t* end;

    uint8_t byte() { return next < end ? *next++ : 0; }
    uint64_t word(int32_t bytes) {
        uint64_t word = 0;
        while (bytes-- > 0)
            word = word << 8 | byte();
        return word;
    }
    /** Whole, in parts of 64, or whatever eight bytes are. */
    double number() {
        const uint8_t form = byte();
        return form % 3 == 0 ? int8_t(byte()) : form % 3 == 1 ? int8_t(byte()) / 64.0 : std::bit_cast<double>(word(8));
    }
};

struct Picture {
    Size size;
    std::vector<uint32_t> pixels;

    bool operator==(const Picture&) const = default;
};

IBitmapFilter* make(uint8_t choice, BitmapFilterFactory& factory, IBitmapFactory* bitmaps) {
    const char* name = factory.getFilterName(choice % (factory.countFilters() + 1));
    if (name)
        return factory.createBitmapFilter(name);
    auto* filter = new BitmapFilterImplementation::MatrixTransform(bitmaps);
    filter->init();
    return filter;
}

/** What is refused leaves the input as it was. */
void give(IBitmapFilter* filter, const char* name, const FVariant& value) {
    FVariant before, after;
    demand(filter->getValue(name, before, kInputValue) == kResultOk);
    const bool taken = filter->setInputValue(name, value) == kResultOk;
    demand(filter->getValue(name, after, kInputValue) == kResultOk);
    const FVariant& expected = taken ? value : before;
    demand(after.getType() == expected.getType() && after.getObject() == expected.getObject());
    demand(after.getFloat() == expected.getFloat());
}

void giveNext(IBitmapFilter* filter, Bytes& bytes) {
    const char* name = filter->getValueName(bytes.byte() % filter->countValues(kInputValue), kInputValue);
    const uint8_t kind = bytes.byte();
    if (kind % 4 == 0)
        return give(filter, name, FVariant(int64_t(bytes.word(4))));
    const double first = bytes.number();
    if (kind % 4 == 1)
        return give(filter, name, FVariant(first));
    const double second = bytes.number();
    if (kind % 4 == 2)
        return give(filter, name, FVariant(static_cast<IVector*>(OPtr<Vector>(new Vector(first, second)))));
    TransformMatrix matrix = {first, second};
    for (double* each : {&matrix.xy, &matrix.yy, &matrix.x0, &matrix.y0})
        *each = bytes.number();
    give(filter, name, FVariant(static_cast<ITransformMatrix*>(OPtr<MatrixObject>(new MatrixObject(matrix)))));
}

std::optional<Picture> resultOf(IBitmapFilter* filter, const Size& size, const std::vector<uint32_t>& pixels,
                                bool inPlace) {
    const OPtr<MemoryBitmap> input(new MemoryBitmap(int32_t(size.width), int32_t(size.height)));
    input->set(pixels);
    give(filter, "Bitmap", FVariant(static_cast<IBitmap*>(input)));
    const bool done = filter->runFilter(inPlace) == kResultOk;
    demand(input->gapsAreUntouched() && (inPlace || input->all() == pixels));
    if (!done)
        return std::nullopt;
    FVariant output;
    demand(filter->getValue("Bitmap", output, kOutputValue) == kResultOk);
    auto* bitmap = static_cast<MemoryBitmap*>(FUnknownPtr<IBitmap>(output.getObject()).get());
    demand(bitmap && bitmap->gapsAreUntouched());
    return Picture{bitmap->getSize(), bitmap->all()};
}

bool keepsAlpha(const char* name) {
    return name && (std::strcmp(name, "AdjustHSL") == 0 || std::strcmp(name, "Tint") == 0);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Bytes bytes{data, data + size};
    const OPtr<SmallBitmapFactory> bitmaps(new SmallBitmapFactory);
    const OPtr<BitmapFilterFactory> factory(new BitmapFilterFactory(bitmaps));
    const uint8_t choice = bytes.byte();
    const OPtr<IBitmapFilter> filter(make(choice, *factory, bitmaps));
    const Size side = {1.0 + bytes.byte() % kMostColumns, 1.0 + bytes.byte() % kMostColumns};
    for (int32_t left = bytes.byte() % kMostInputs; left > 0; --left)
        giveNext(filter, bytes);
    std::vector<uint32_t> pixels(size_t(side.width * side.height));
    std::ranges::generate(pixels, [&bytes] { return uint32_t(bytes.word(4)); });

    const std::optional<Picture> result = resultOf(filter, side, pixels, false);
    demand(resultOf(filter, side, pixels, false) == result && resultOf(filter, side, pixels, true) == result);
    if (result && keepsAlpha(factory->getFilterName(choice % (factory->countFilters() + 1))))
        demand(std::ranges::equal(
            result->pixels, pixels, {}, [](uint32_t p) { return p >> 24; }, [](uint32_t p) { return p >> 24; }));
    return 0;
}
