#include "frame/source/graphics/bitmapfilters/areascale.h"
#include "frame/source/graphics/bitmapfilters/pixelrows.h"
#include <algorithm>
#include <cmath>

namespace Tessarine::Graphics::BitmapFilterImplementation {
namespace {
constexpr uint32_t kOpaqueWhole = 255U << (2 * AreaWeights::kBits);  // alpha of an opaque pixel, by both weights

/** One row of the result: columns of sums, blue, green, red and alpha each. */
class RowSums {
public:
    RowSums(const BitmapPixelAccessor& from, const AreaWeights& across)
        : from(from), across(across), sums(4 * size_t(from.getWidth())) {}

    void take(const AreaWeights::Span& rows) {
        std::fill(sums.begin(), sums.end(), 0);
        opaque = true;
        for (size_t row = 0; row < size_t(rows.end - rows.begin); ++row)
            opaque = opaque && isOpaque(from.row(rows.first + int32_t(row)));
        for (size_t row = 0; row < size_t(rows.end - rows.begin); ++row)
            add(from.row(rows.first + int32_t(row)), rows.begin[row]);
    }

    void put(uint32_t* to, int32_t count) const {
        for (int32_t x = 0; x < count; ++x)
            to[x] = opaque ? opaquePixel(across.at(x)) : pixel(across.at(x));
    }

private:
    bool isOpaque(const uint32_t* row) const {
        uint32_t common = ~0U;
        for (int32_t x = 0; x < from.getWidth(); ++x)
            common &= row[x];
        return alphaOf(common) == 255;
    }

    void add(const uint32_t* row, uint32_t weight) {
        uint32_t* sum = sums.data();
        for (int32_t x = 0; x < from.getWidth(); ++x, sum += 4) {
            const uint32_t alpha = opaque ? weight : weight * alphaOf(row[x]);
            sum[0] += alpha * blueOf(row[x]);
            sum[1] += alpha * greenOf(row[x]);
            sum[2] += alpha * redOf(row[x]);
            sum[3] += alpha;
        }
    }

    /** Without alpha, 32 bits hold a sum of all. */
    uint32_t opaquePixel(const AreaWeights::Span& columns) const {
        uint32_t blue = 0, green = 0, red = 0;
        const uint32_t* sum = &sums[4 * size_t(columns.first)];
        for (const uint16_t* weight = columns.begin; weight != columns.end; ++weight, sum += 4) {
            blue += sum[0] * *weight;
            green += sum[1] * *weight;
            red += sum[2] * *weight;
        }
        const auto byte = [](uint32_t value) {
            return (value + (1U << (2 * AreaWeights::kBits - 1))) >> (2 * AreaWeights::kBits);
        };
        return pixelOf(255, byte(red), byte(green), byte(blue));
    }

    uint32_t pixel(const AreaWeights::Span& columns) const {
        uint64_t blue = 0, green = 0, red = 0, alpha = 0;
        const uint32_t* sum = &sums[4 * size_t(columns.first)];
        for (const uint16_t* weight = columns.begin; weight != columns.end; ++weight, sum += 4) {
            blue += uint64_t(sum[0]) * *weight;
            green += uint64_t(sum[1]) * *weight;
            red += uint64_t(sum[2]) * *weight;
            alpha += uint64_t(sum[3]) * *weight;
        }
        if (alpha == 0)
            return 0;
        const auto byte = [](uint64_t value, uint64_t whole) {
            return uint32_t(std::min<uint64_t>((value + whole / 2) / whole, 255));
        };
        return pixelOf(byte(alpha, kOpaqueWhole / 255), byte(red, alpha), byte(green, alpha), byte(blue, alpha));
    }

    const BitmapPixelAccessor& from;
    const AreaWeights& across;
    std::vector<uint32_t> sums;
    bool opaque = true;
};
}  // namespace

AreaWeights::AreaWeights(int32_t from, int32_t to) {
    firsts.reserve(size_t(to));
    starts.reserve(size_t(to) + 1);
    weights.reserve(size_t(to) + size_t(from) + 1);
    starts.push_back(0);
    const auto shareUpTo = [from](int64_t covered) { return covered * int64_t(kWhole) / from; };
    for (int64_t index = 0; index < to; ++index) {
        const int64_t begin = index * from, end = begin + from;  // in parts of one pixel of the input
        firsts.push_back(int32_t(begin / to));
        for (int64_t place = begin; place < end;) {
            const int64_t next = std::min((place / to + 1) * to, end);
            weights.push_back(uint16_t(shareUpTo(next - begin) - shareUpTo(place - begin)));
            place = next;
        }
        starts.push_back(weights.size());
    }
}

void PNMScale::init() {
    FilterBase::init();
    registerVectorInputValue("destinationSize");
}

bool PNMScale::resultSize(const Size& /*input*/, Size& result) {
    IVector* size = getVector("destinationSize");
    if (!size)
        return false;
    result = {std::trunc(size->getComponent(0)), std::trunc(size->getComponent(1))};
    return true;
}

void PNMScale::process(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) {
    if (from.getWidth() == to.getWidth() && from.getHeight() == to.getHeight()) {
        for (int32_t y = 0; y < to.getHeight(); ++y)
            std::copy_n(from.row(y), to.getWidth(), to.row(y));
        return;
    }
    const AreaWeights across(from.getWidth(), to.getWidth()), down(from.getHeight(), to.getHeight());
    RowSums sums(from, across);
    for (int32_t y = 0; y < to.getHeight(); ++y) {
        sums.take(down.at(y));
        sums.put(to.row(y), to.getWidth());
    }
}

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
