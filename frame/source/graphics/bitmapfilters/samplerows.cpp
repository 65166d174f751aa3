#include "frame/source/graphics/bitmapfilters/samplerows.h"
#include "frame/source/graphics/bitmapfilters/pixelrows.h"
#include <algorithm>
#include <cmath>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Tessarine::Graphics::BitmapFilterImplementation {
namespace {
/** Places are 32.32 fixed numbers here. */
constexpr double kOne = 4294967296.0;
constexpr int32_t kWeightBits = 7;
constexpr uint32_t kWhole = 1U << kWeightBits;

int64_t fixed(double value) {
    return int64_t(std::floor(value * kOne));
}

int64_t wholeOf(int64_t place) {
    return place >> 32;
}

uint32_t weightOf(int64_t place) {
    return uint32_t(place >> (32 - kWeightBits)) & (kWhole - 1);
}

/** Neither the first place nor the last is far enough out to leave the range. */
bool inRange(const SampleLine& line, int32_t count) {
    constexpr double kFar = 1 << 29;
    const auto near = [count](double start, double step) {
        return std::fabs(start) < kFar && std::fabs(start + step * count) < kFar;
    };
    return near(line.start.x, line.step.x) && near(line.start.y, line.step.y);
}

/** Calls with each place of a line, moved by shift; zeros when it lies too far out. */
template <class Take>
void along(uint32_t* to, int32_t count, const SampleLine& line, double shift, const Take& take) {
    if (!inRange(line, count)) {
        std::fill_n(to, count, 0);
        return;
    }
    int64_t x = fixed(line.start.x + shift), y = fixed(line.start.y + shift);
    const int64_t stepX = fixed(line.step.x), stepY = fixed(line.step.y);
    for (int32_t i = 0; i < count; ++i, x += stepX, y += stepY)
        to[i] = take(x, y);
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

uint32_t Sampler::at(int64_t x, int64_t y) const {
    const bool inside = x >= 0 && y >= 0 && x < pixels.getWidth() && y < pixels.getHeight();
    return inside ? pixels.row(int32_t(y))[x] : 0;
}

bool Sampler::hasFourAt(int64_t x, int64_t y) const {
    return x >= 0 && y >= 0 && x + 1 < pixels.getWidth() && y + 1 < pixels.getHeight();
}

uint32_t Sampler::mean(int64_t x, int64_t y) const {
    const int64_t left = wholeOf(x), top = wholeOf(y);
    return blended(at(left, top), at(left + 1, top), at(left, top + 1), at(left + 1, top + 1), weightOf(x),
                   weightOf(y));
}

void Sampler::nearest(uint32_t* to, int32_t count, const SampleLine& line) const {
    along(to, count, line, 0, [this](int64_t x, int64_t y) { return at(wholeOf(x), wholeOf(y)); });
}

void Sampler::interpolatedPlain(uint32_t* to, int32_t count, const SampleLine& line) const {
    along(to, count, line, -0.5, [this](int64_t x, int64_t y) { return mean(x, y); });
}

#ifdef __SSE2__
/** Four pixels of the bitmap, two and two in one register. */
uint32_t Sampler::meanInside(int64_t x, int64_t y) const {
    const uint32_t* upper = pixels.row(int32_t(wholeOf(y))) + wholeOf(x);
    const uint32_t* lower = pixels.row(int32_t(wholeOf(y)) + 1) + wholeOf(x);
    const auto right = int16_t(weightOf(x)), left = int16_t(kWhole - weightOf(x));
    const __m128i across = _mm_set_epi16(right, right, right, right, left, left, left, left);
    const auto row = [&across](const uint32_t* two) {
        const __m128i channels = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(two)), __m128i());
        const __m128i weighted = _mm_mullo_epi16(channels, across);
        return _mm_add_epi16(weighted, _mm_srli_si128(weighted, 8));
    };
    const __m128i down = _mm_set1_epi32(int32_t(weightOf(y) << 16 | (kWhole - weightOf(y))));
    const __m128i sums = _mm_madd_epi16(_mm_unpacklo_epi16(row(upper), row(lower)), down);
    const __m128i rounded =
        _mm_srli_epi32(_mm_add_epi32(sums, _mm_set1_epi32(1 << (2 * kWeightBits - 1))), 2 * kWeightBits);
    const __m128i words = _mm_packs_epi32(rounded, rounded);
    return uint32_t(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
}
#else
uint32_t Sampler::meanInside(int64_t x, int64_t y) const {
    return mean(x, y);
}
#endif

void Sampler::interpolated(uint32_t* to, int32_t count, const SampleLine& line) const {
    along(to, count, line, -0.5,
          [this](int64_t x, int64_t y) { return hasFourAt(wholeOf(x), wholeOf(y)) ? meanInside(x, y) : mean(x, y); });
}

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
