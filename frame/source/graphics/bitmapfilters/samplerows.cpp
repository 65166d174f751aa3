#include "frame/source/graphics/bitmapfilters/samplerows.h"
#include <algorithm>
#include <cmath>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Tessarine::Graphics::BitmapFilterImplementation {
namespace {
/** Places are 32.32 fixed numbers here. */
constexpr double kOne = 4294967296.0;
constexpr int32_t kFractionBits = 32;
constexpr int32_t kWeightBits = 7;
constexpr uint32_t kWhole = 1U << kWeightBits;
constexpr double kTie = 1.0 / (1 << 16);          // exactly between two pixels, all places take the same side
constexpr double kToMiddle = 0.5 / kWhole - 0.5;  // from a pixel's edge, such that weights round to the nearest

int64_t fixed(double value) {
    return int64_t(std::floor(value * kOne));
}

int64_t wholeOf(int64_t place) {
    return place >> kFractionBits;
}

uint32_t weightOf(int64_t place) {
    return uint32_t(place >> (kFractionBits - kWeightBits)) & (kWhole - 1);
}

/** Neither the first place nor the last is far enough out to leave the range. */
bool inRange(const SampleLine& line, int32_t count) {
    constexpr double kFar = 1 << 29;
    const auto near = [count](double start, double step) {
        return std::fabs(start) < kFar && std::fabs(start + step * count) < kFar;
    };
    return near(line.start.x, line.step.x) && near(line.start.y, line.step.y);
}

/** Of the places of a line, in order. */
struct Span {
    int32_t begin;
    int32_t end;

    int32_t count() const { return end - begin; }
    /** What both have; something empty within this one if that is nothing. */
    Span with(const Span& other) const {
        const int32_t first = std::min(std::max(begin, other.begin), end);
        return {first, std::max(std::min(end, other.end), first)};
    }
};

/** The first of count places for which start + step * place is limit or more; step is above 0. */
int32_t firstReaching(int64_t limit, int64_t start, int64_t step, int32_t count) {
    const int64_t way = limit - start;
    return int32_t(std::clamp<int64_t>(way / step + (way % step > 0 ? 1 : 0), 0, count));
}

/** The places for which low <= start + step * place < high. */
Span spanWithin(int64_t low, int64_t high, int64_t start, int64_t step, int32_t count) {
    if (step == 0)
        return {0, start >= low && start < high ? count : 0};
    if (step < 0)
        return spanWithin(1 - high, 1 - low, -start, -step, count);
    return {firstReaching(low, start, step, count), firstReaching(high, start, step, count)};
}

uint32_t blended(uint32_t first, uint32_t second, uint32_t third, uint32_t fourth, uint32_t right, uint32_t down) {
    uint32_t result = 0;
    for (int32_t shift = 0; shift < 32; shift += 8) {
        const auto part = [shift](uint32_t pixel) { return pixel >> shift & 0xFF; };
        const uint32_t upper = part(first) * (kWhole - right) + part(second) * right;
        const uint32_t lower = part(third) * (kWhole - right) + part(fourth) * right;
        const uint32_t sum = upper * (kWhole - down) + lower * down;
        result |= (sum + (1U << (2 * kWeightBits - 1))) >> (2 * kWeightBits) << shift;
    }
    return result;
}
}  // namespace

struct Sampler::Places {
    Places(const SampleLine& line, double shift)
        : x(fixed(line.start.x + shift)), y(fixed(line.start.y + shift)), stepX(fixed(line.step.x)),
          stepY(fixed(line.step.y)) {}

    void skip(int32_t count) {
        x += stepX * count;
        y += stepY * count;
    }
    /** Those whose whole parts are first or more, and below width and height. */
    Span within(int64_t first, int64_t width, int64_t height, int32_t count) const {
        const int64_t low = first << kFractionBits;
        return spanWithin(low, width << kFractionBits, x, stepX, count)
            .with(spanWithin(low, height << kFractionBits, y, stepY, count));
    }
    /** Puts what becomes of each of the next. */
    template <class Take>
    void put(uint32_t* to, int32_t count, const Take& take) {
        for (int32_t i = 0; i < count; ++i, skip(1))
            to[i] = take(x, y);
    }

    int64_t x;
    int64_t y;
    int64_t stepX;
    int64_t stepY;
};

uint32_t Sampler::at(int64_t x, int64_t y) const {
    const bool inside = x >= 0 && y >= 0 && x < pixels.getWidth() && y < pixels.getHeight();
    return inside ? pixels.row(int32_t(y))[x] : 0;
}

void Sampler::putMeans(uint32_t* to, int32_t count, Places& places) const {
    places.put(to, count, [this](int64_t x, int64_t y) {
        const int64_t left = wholeOf(x), top = wholeOf(y);
        return blended(at(left, top), at(left + 1, top), at(left, top + 1), at(left + 1, top + 1), weightOf(x),
                       weightOf(y));
    });
}

void Sampler::nearest(uint32_t* to, int32_t count, const SampleLine& line) const {
    std::fill_n(to, count, 0);
    if (!inRange(line, count))
        return;
    Places places(line, kTie);
    const Span inside = places.within(0, pixels.getWidth(), pixels.getHeight(), count);
    places.skip(inside.begin);
    places.put(to + inside.begin, inside.count(),
               [this](int64_t x, int64_t y) { return pixels.row(int32_t(wholeOf(y)))[wholeOf(x)]; });
}

void Sampler::interpolatedPlain(uint32_t* to, int32_t count, const SampleLine& line) const {
    if (!inRange(line, count)) {
        std::fill_n(to, count, 0);
        return;
    }
    Places places(line, kToMiddle);
    putMeans(to, count, places);
}

void Sampler::interpolated(uint32_t* to, int32_t count, const SampleLine& line) const {
    if (!inRange(line, count)) {
        std::fill_n(to, count, 0);
        return;
    }
    Places places(line, kToMiddle);
    const int32_t width = pixels.getWidth(), height = pixels.getHeight();
    const Span touched = places.within(-1, width, height, count);
    const Span inside = touched.with(places.within(0, width - 1, height - 1, count));
    std::fill_n(to, touched.begin, 0);
    places.skip(touched.begin);
    putMeans(to + touched.begin, inside.begin - touched.begin, places);
    putMeansInside(to + inside.begin, inside.count(), places);
    putMeans(to + inside.end, touched.end - inside.end, places);
    std::fill_n(to + touched.end, count - touched.end, 0);
}

#ifdef __SSE2__
namespace {
/** The weights of one direction at the next four places. Only the low halves of places count, which may turn over. */
struct FourWeights {
    FourWeights(__m128i across, __m128i down) {
        const __m128i up = _mm_sub_epi32(_mm_set1_epi32(kWhole), down);
        const __m128i both = _mm_or_si128(up, _mm_slli_epi32(down, 16));
        right = _mm_mullo_epi16(both, _mm_or_si128(across, _mm_slli_epi32(across, 16)));
        left = _mm_sub_epi16(_mm_slli_epi16(both, kWeightBits), right);
    }

    /** By channels. */
    template <int place>
    __m128i meanOf(const uint32_t* above, ptrdiff_t stride) const {
        const auto two = [](const uint32_t* pixels) {
            return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pixels));
        };
        const __m128i pairs = _mm_unpacklo_epi8(two(above), two(above + stride)), zero = _mm_setzero_si128();
        const __m128i lefts = _mm_madd_epi16(_mm_unpacklo_epi8(pairs, zero), _mm_shuffle_epi32(left, place * 0x55));
        const __m128i rights = _mm_madd_epi16(_mm_unpackhi_epi8(pairs, zero), _mm_shuffle_epi32(right, place * 0x55));
        const __m128i half = _mm_set1_epi32(1 << (2 * kWeightBits - 1));
        return _mm_srli_epi32(_mm_add_epi32(_mm_add_epi32(lefts, rights), half), 2 * kWeightBits);
    }

    __m128i left;
    __m128i right;
};

/** The weights of one direction at the next four places, of which the low halves, that may turn over, are enough. */
class Fractions {
public:
    Fractions(uint64_t start, uint64_t step)
        : places(_mm_setr_epi32(int32_t(start), int32_t(start + step), int32_t(start + 2 * step),
                                int32_t(start + 3 * step))),
          step(_mm_set1_epi32(int32_t(4 * step))) {}

    __m128i next() {
        const __m128i weights = _mm_srli_epi32(places, kFractionBits - kWeightBits);
        places = _mm_add_epi32(places, step);
        return weights;
    }

private:
    __m128i places;
    const __m128i step;
};
}  // namespace

void Sampler::putMeansInside(uint32_t* to, int32_t count, Places& places) const {
    Fractions across(uint64_t(places.x), uint64_t(places.stepX)), down(uint64_t(places.y), uint64_t(places.stepY));
    const uint32_t* const pixel = pixels.row(0);
    const ptrdiff_t stride = pixels.row(1) - pixel;
    int64_t x = places.x, y = places.y;
    const auto next = [&, stepX = places.stepX, stepY = places.stepY] {
        const uint32_t* above = pixel + wholeOf(y) * stride + wholeOf(x);
        x += stepX;
        y += stepY;
        return above;
    };
    int32_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const FourWeights weights(across.next(), down.next());
        const __m128i first = weights.meanOf<0>(next(), stride), second = weights.meanOf<1>(next(), stride);
        const __m128i third = weights.meanOf<2>(next(), stride), fourth = weights.meanOf<3>(next(), stride);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i),
                         _mm_packus_epi16(_mm_packs_epi32(first, second), _mm_packs_epi32(third, fourth)));
    }
    places.skip(i);
    putMeans(to + i, count - i, places);
}
#else
void Sampler::putMeansInside(uint32_t* to, int32_t count, Places& places) const {
    putMeans(to, count, places);
}
#endif

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
