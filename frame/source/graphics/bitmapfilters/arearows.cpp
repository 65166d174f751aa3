#include "frame/source/graphics/bitmapfilters/arearows.h"
#include "frame/source/graphics/bitmapfilters/pixelrows.h"
#include <algorithm>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Tessarine::Graphics::BitmapFilterImplementation {
namespace {
constexpr uint32_t kHalf = 1U << (2 * AreaWeights::kBits - 1);  // of a byte's one, by both weights

bool isOpaque(const uint32_t* row, int32_t count) {
    uint32_t common = ~0U;
    for (int32_t x = 0; x < count; ++x)
        common &= row[x];
    return alphaOf(common) == 255;
}

/** The input, row by row. */
class AreaRows {
public:
    explicit AreaRows(const BitmapPixelAccessor& pixels) : pixels(pixels), opaque(size_t(pixels.getHeight())) {
        for (int32_t y = 0; y < pixels.getHeight(); ++y)
            opaque[size_t(y)] = isOpaque(pixels.row(y), pixels.getWidth());
    }

    int32_t getWidth() const { return pixels.getWidth(); }
    /** The last one from there on. */
    const uint32_t* row(size_t y) const { return pixels.row(int32_t(std::min(y, opaque.size() - 1))); }
    bool areOpaque(const AreaWeights::Span& rows) const {
        const auto begin = opaque.begin() + rows.first;
        const auto count = std::min<ptrdiff_t>(rows.end - rows.begin, opaque.end() - begin);
        return std::all_of(begin, begin + count, [](uint8_t each) { return each != 0; });
    }

private:
    const BitmapPixelAccessor& pixels;
    std::vector<uint8_t> opaque;
};

template <class Sums>
void scaleBy(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) {
    const AreaWeights across(from.getWidth(), to.getWidth()), down(from.getHeight(), to.getHeight());
    const AreaRows rows(from);
    Sums sums(rows, across);
    for (int32_t y = 0; y < to.getHeight(); ++y) {
        sums.take(down.at(y));
        sums.put(to.row(y), to.getWidth());
    }
}

/** One row of the result: columns of sums, blue, green, red and alpha each, and one more. */
class PlainSums {
public:
    PlainSums(const AreaRows& from, const AreaWeights& across)
        : from(from), across(across), sums(4 * (size_t(from.getWidth()) + 1)) {}

    void take(const AreaWeights::Span& rows) {
        std::fill(sums.begin(), sums.end(), 0);
        opaque = from.areOpaque(rows);
        for (size_t row = 0; row < size_t(rows.end - rows.begin); ++row)
            add(from.row(size_t(rows.first) + row), rows.begin[row]);
    }

    void put(uint32_t* to, int32_t count) const {
        for (int32_t x = 0; x < count; ++x)
            to[x] = opaque ? opaquePixel(across.at(x)) : pixel(across.at(x));
    }

private:
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
        const auto byte = [](uint32_t value) { return (value + kHalf) / (2 * kHalf); };
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
        return pixelOf(byte(alpha, 2 * kHalf), byte(red, alpha), byte(green, alpha), byte(blue, alpha));
    }

    const AreaRows& from;
    const AreaWeights& across;
    std::vector<uint32_t> sums;
    bool opaque = true;
};

#ifdef __SSE2__
__m128i load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

void store(void* to, __m128i value) {
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

__m128i weightPair(const uint16_t* weights) {
    return _mm_set1_epi32(int32_t(weights[0] | uint32_t(weights[1]) << 16));
}

/** The same with sums in two halves, so that two columns or rows at a time are weighted by one multiplication of 16 bits. */
class FastSums {
public:
    FastSums(const AreaRows& from, const AreaWeights& across)
        : from(from), across(across), columns(size_t(from.getWidth()) + kBlock) {}

    void take(const AreaWeights::Span& rows) {
        opaque = from.areOpaque(rows);
        for (int32_t x = 0; x < from.getWidth(); x += kBlock)
            if (opaque)
                sumOpaque(rows, x);
            else
                sumMultiplied(rows, x);
    }

    void put(uint32_t* to, int32_t count) const {
        if (opaque)
            putBy(to, count, opaqueChannels);
        else
            putBy(to, count, channels);
    }

private:
    static constexpr int32_t kBlock = 4;       // pixels
    static constexpr int32_t kLowBits = 14;    // a column's sum has 28 at most
    static constexpr int32_t kSign = 1 << 15;  // makes numbers with a sign of those of 16 bits without

    /** Of blue, green, red and alpha each. */
    struct Column {
        int16_t lows[4];
        int16_t highs[4];
    };
    struct Sums {
        __m128i lows;
        __m128i highs;
    };

    __m128i loadBlock(size_t y, int32_t x) const {
        const uint32_t* pixels = from.row(y) + x;
        if (x + kBlock <= from.getWidth())
            return load(pixels);
        uint32_t last[kBlock] = {};
        std::copy_n(pixels, from.getWidth() - x, last);
        return load(last);
    }

    void storeBlock(int32_t x, const __m128i (&sums)[kBlock]) {
        Column* column = &columns[size_t(x)];
        for (const __m128i& sum : sums)
            store(column++, _mm_packs_epi32(_mm_and_si128(sum, _mm_set1_epi32((1 << kLowBits) - 1)),
                                            _mm_srli_epi32(sum, kLowBits)));
    }

    void sumOpaque(const AreaWeights::Span& rows, int32_t x) {
        const __m128i zero = _mm_setzero_si128();
        __m128i sums[kBlock] = {};
        auto y = size_t(rows.first);
        for (const uint16_t* weight = rows.begin; weight != rows.end; weight += 2, y += 2) {
            const __m128i upper = loadBlock(y, x), lower = loadBlock(y + 1, x), weights = weightPair(weight);
            const __m128i left = _mm_unpacklo_epi8(upper, lower), right = _mm_unpackhi_epi8(upper, lower);
            sums[0] = _mm_add_epi32(sums[0], _mm_madd_epi16(_mm_unpacklo_epi8(left, zero), weights));
            sums[1] = _mm_add_epi32(sums[1], _mm_madd_epi16(_mm_unpackhi_epi8(left, zero), weights));
            sums[2] = _mm_add_epi32(sums[2], _mm_madd_epi16(_mm_unpacklo_epi8(right, zero), weights));
            sums[3] = _mm_add_epi32(sums[3], _mm_madd_epi16(_mm_unpackhi_epi8(right, zero), weights));
        }
        storeBlock(x, sums);
    }

    /** Of two pixels: channels by alpha, and alpha, less kSign. */
    static __m128i multiplied(__m128i channels) {
        const __m128i alphas = _mm_shufflehi_epi16(_mm_shufflelo_epi16(channels, 0xFF), 0xFF);
        const __m128i factors =
            _mm_or_si128(_mm_and_si128(alphas, _mm_set1_epi64x(0xFFFFFFFFFFFF)), _mm_set1_epi64x(1LL << 48));
        return _mm_xor_si128(_mm_mullo_epi16(channels, factors), _mm_set1_epi16(int16_t(-kSign)));
    }

    void sumMultiplied(const AreaWeights::Span& rows, int32_t x) {
        const __m128i zero = _mm_setzero_si128(), signs = _mm_set1_epi32(kSign << AreaWeights::kBits);
        __m128i sums[kBlock] = {signs, signs, signs, signs};
        auto y = size_t(rows.first);
        for (const uint16_t* weight = rows.begin; weight != rows.end; weight += 2, y += 2) {
            const __m128i upper = loadBlock(y, x), lower = loadBlock(y + 1, x), weights = weightPair(weight);
            const __m128i left[] = {multiplied(_mm_unpacklo_epi8(upper, zero)),
                                    multiplied(_mm_unpacklo_epi8(lower, zero))};
            const __m128i right[] = {multiplied(_mm_unpackhi_epi8(upper, zero)),
                                     multiplied(_mm_unpackhi_epi8(lower, zero))};
            sums[0] = _mm_add_epi32(sums[0], _mm_madd_epi16(_mm_unpacklo_epi16(left[0], left[1]), weights));
            sums[1] = _mm_add_epi32(sums[1], _mm_madd_epi16(_mm_unpackhi_epi16(left[0], left[1]), weights));
            sums[2] = _mm_add_epi32(sums[2], _mm_madd_epi16(_mm_unpacklo_epi16(right[0], right[1]), weights));
            sums[3] = _mm_add_epi32(sums[3], _mm_madd_epi16(_mm_unpackhi_epi16(right[0], right[1]), weights));
        }
        storeBlock(x, sums);
    }

    Sums sumsOf(const AreaWeights::Span& span) const {
        Sums sums = {_mm_setzero_si128(), _mm_setzero_si128()};
        const Column* column = &columns[size_t(span.first)];
        for (const uint16_t* weight = span.begin; weight != span.end; weight += 2, column += 2) {
            const __m128i left = load(column), right = load(column + 1), weights = weightPair(weight);
            sums.lows = _mm_add_epi32(sums.lows, _mm_madd_epi16(_mm_unpacklo_epi16(left, right), weights));
            sums.highs = _mm_add_epi32(sums.highs, _mm_madd_epi16(_mm_unpackhi_epi16(left, right), weights));
        }
        return sums;
    }

    template <class Channels>
    void putBy(uint32_t* to, int32_t count, const Channels& channelsOf) const {
        const auto at = [&](int32_t x) { return channelsOf(sumsOf(across.at(x))); };
        int32_t x = 0;
        for (; x + 4 <= count; x += 4)
            store(to + x, _mm_packus_epi16(_mm_packs_epi32(at(x), at(x + 1)), _mm_packs_epi32(at(x + 2), at(x + 3))));
        for (; x < count; ++x) {
            const __m128i words = _mm_packs_epi32(at(x), _mm_setzero_si128());
            to[x] = uint32_t(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
        }
    }

    /** What fits into 32 bits. */
    static __m128i joined(const Sums& sums) { return _mm_add_epi32(sums.lows, _mm_slli_epi32(sums.highs, kLowBits)); }

    static __m128i opaqueChannels(const Sums& sums) {
        const __m128i rounded = _mm_add_epi32(joined(sums), _mm_set1_epi32(int32_t(kHalf)));
        return _mm_srli_epi32(rounded, 2 * AreaWeights::kBits);
    }

    /** Two of the sums, divided and rounded. Below a whole quotient the next one that sums can have is farther away than kHair,
        and an inverse errs by less. */
    static __m128i divided(__m128i lows, __m128i highs, __m128d half, __m128d inverse) {
        constexpr double kHair = 1.0 / (1LL << 34);
        const __m128d high = _mm_mul_pd(_mm_cvtepi32_pd(highs), _mm_set1_pd(1 << kLowBits));
        const __m128d sum = _mm_add_pd(_mm_add_pd(high, _mm_cvtepi32_pd(lows)), half);
        return _mm_cvttpd_epi32(_mm_add_pd(_mm_mul_pd(sum, inverse), _mm_set1_pd(kHair)));
    }

    static __m128i channels(const Sums& sums) {
        const auto alpha = uint32_t(_mm_cvtsi128_si32(_mm_srli_si128(joined(sums), 12)));
        if (alpha == 0)
            return _mm_setzero_si128();
        const __m128d half = _mm_set1_pd(double(alpha >> 1)), inverse = _mm_set1_pd(1 / double(alpha));
        const __m128i two = divided(sums.lows, sums.highs, half, inverse);
        const __m128i third = divided(_mm_srli_si128(sums.lows, 8), _mm_srli_si128(sums.highs, 8), half, inverse);
        return _mm_unpacklo_epi64(two, _mm_unpacklo_epi32(third, _mm_srli_si128(opaqueChannels(sums), 12)));
    }

    const AreaRows& from;
    const AreaWeights& across;
    std::vector<Column> columns;  // kBlock more of them
    bool opaque = true;
};
#else
using FastSums = PlainSums;
#endif
}  // namespace

AreaWeights::AreaWeights(int32_t from, int32_t to) {
    firsts.reserve(size_t(to));
    starts.reserve(size_t(to) + 1);
    weights.reserve(2 * size_t(to) + size_t(from) + 1);
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
        weights.resize((weights.size() + 1) / 2 * 2);
        starts.push_back(weights.size());
    }
}

void scaleArea(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) {
    scaleBy<FastSums>(from, to);
}

void scaleAreaPlain(const BitmapPixelAccessor& from, const BitmapPixelAccessor& to) {
    scaleBy<PlainSums>(from, to);
}

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
