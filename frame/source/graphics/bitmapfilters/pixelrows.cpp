#include "frame/source/graphics/bitmapfilters/pixelrows.h"
#include <algorithm>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Tessarine::Graphics::BitmapFilterImplementation {
namespace {
constexpr float kWeights[] = {0.349F, 0.537F, 0.114F};              // of red, green and blue in the brightness
constexpr float kInverse[] = {2.8653295F, 1.8621974F, 1 / 0.114F};  // of the weights
constexpr float kShares[] = {0.349F / 0.651F, 0.537F / 0.463F, 0.114F / 0.886F};

uint8_t cutByte(double value) {
    return uint8_t(std::clamp(value, 0.0, 255.0));
}
}  // namespace

GrayRows::GrayRows(double grayFactor, double alphaFactor) {
    for (size_t sum = 0; sum < grays.size(); ++sum)
        grays[sum] = cutByte(double(sum) * grayFactor / 3);
    for (size_t alpha = 0; alpha < alphas.size(); ++alpha)
        alphas[alpha] = cutByte(double(alpha) * alphaFactor);
    keepsAlpha = alphas[1] == 1 && alphas[254] == 254;
    isFast = findParts(grays, grayFactor / 3, grayParts) && (keepsAlpha || findParts(alphas, alphaFactor, alphaParts));
}

template <size_t size>
bool GrayRows::findParts(const std::array<uint8_t, size>& table, double factor, FactorParts& parts) {
    if (factor >= 1)
        return false;
    const auto below = uint32_t(std::max(factor, 0.0) * 4294967296.0);
    for (const uint32_t tried : {below, below + 1}) {
        parts = {uint16_t(tried >> 16), uint16_t(tried)};
        const auto agrees = [&parts, value = 0U](uint8_t byte) mutable {
            const uint32_t product = (value * parts.high + (value * parts.low >> 16) + 1) >> 16;
            ++value;
            return std::min<uint32_t>(product, 255) == byte;
        };
        if (std::all_of(table.begin(), table.end(), agrees))
            return true;
    }
    return false;
}

void GrayRows::plain(uint32_t* to, const uint32_t* from, int32_t count) const {
    for (int32_t i = 0; i < count; ++i) {
        const uint32_t pixel = from[i], gray = grays[redOf(pixel) + greenOf(pixel) + blueOf(pixel)];
        to[i] = pixelOf(alphas[alphaOf(pixel)], gray, gray, gray);
    }
}

TintRows::TintRows(uint32_t colorSpec, double factor) : brightness(0), factor(float(std::clamp(factor, -1e3, 1e3))) {
    const uint32_t bytes[] = {redOf(colorSpec), greenOf(colorSpec), blueOf(colorSpec)};
    for (int channel = 0; channel < 3; ++channel) {
        tint[channel] = float(bytes[channel]) / 255;
        brightness += kWeights[channel] * tint[channel];
    }
    for (int channel = 0; channel < 3; ++channel)
        slope[channel] = kWeights[channel] * (brightness > 0 ? tint[channel] / brightness : 1) * kInverse[channel];
}

void TintRows::level(float (&channels)[3]) const {
    for (int channel = 0; channel < 3; ++channel) {
        const float inside = std::min(std::max(channels[channel], 0.0F), 1.0F);
        const float amount = (channels[channel] - inside) * kShares[channel];
        channels[0] += amount;
        channels[1] += amount;
        channels[2] += amount;
        channels[channel] = inside;
    }
}

void TintRows::plain(uint32_t* to, const uint32_t* from, int32_t count) const {
    for (int32_t i = 0; i < count; ++i) {
        const float source[] = {float(redOf(from[i])), float(greenOf(from[i])), float(blueOf(from[i]))};
        const float light = source[0] * (kWeights[0] / 255) + source[1] * (kWeights[1] / 255) +
                            source[2] * (kWeights[2] / 255) - brightness;
        float channels[] = {light * slope[0] + tint[0], light * slope[1] + tint[1], light * slope[2] + tint[2]};
        level(channels);
        uint32_t bytes[3];
        for (int channel = 0; channel < 3; ++channel) {
            const float inside = std::min(std::max(channels[channel], 0.0F), 1.0F);
            const float mixed = inside * (factor * 255) + source[channel] * (1 - factor) + 0.5F;
            bytes[channel] = uint32_t(std::min(std::max(mixed, 0.0F), 255.0F));
        }
        to[i] = pixelOf(alphaOf(from[i]), bytes[0], bytes[1], bytes[2]);
    }
}

#ifdef __SSE2__
namespace {
__m128i loadFour(const uint32_t* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

void storeFour(uint32_t* to, __m128i pixels) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), pixels);
}

template <int shift>
__m128i bytesAt(__m128i pixels) {
    return _mm_and_si128(_mm_srli_epi32(pixels, shift), _mm_set1_epi32(0xFF));
}

__m128 clampFour(__m128 values, float high) {
    return _mm_min_ps(_mm_max_ps(values, _mm_setzero_ps()), _mm_set1_ps(high));
}

/** The channels of each pixel but alpha. */
__m128i sumsOf(__m128i pixels) {
    const __m128i ends = _mm_madd_epi16(_mm_and_si128(pixels, _mm_set1_epi32(0xFF00FF)), _mm_set1_epi16(1));
    return _mm_add_epi32(ends, bytesAt<8>(pixels));
}

class EightProducts {
public:
    explicit EightProducts(const FactorParts& parts)
        : high(_mm_set1_epi16(int16_t(parts.high))), low(_mm_set1_epi16(int16_t(parts.low))) {}

    /** Bytes of words below 766. */
    __m128i of(__m128i values) const {
        const __m128i rest = _mm_mulhi_epu16(values, low);
        const __m128i full = _mm_cmpeq_epi16(_mm_adds_epu16(_mm_mullo_epi16(values, high), rest), _mm_set1_epi16(-1));
        return _mm_min_epi16(_mm_sub_epi16(_mm_mulhi_epu16(values, high), full), _mm_set1_epi16(255));
    }

private:
    const __m128i high;
    const __m128i low;
};

__m128i fourPixels(__m128i alpha, __m128i red, __m128i green, __m128i blue) {
    return _mm_or_si128(_mm_or_si128(_mm_slli_epi32(alpha, 24), _mm_slli_epi32(red, 16)),
                        _mm_or_si128(_mm_slli_epi32(green, 8), blue));
}
}  // namespace

void GrayRows::fast(uint32_t* to, const uint32_t* from, int32_t count) const {
    const EightProducts grays8(grayParts), alphas8(alphaParts);
    const int32_t end = isFast ? count - 7 : 0;
    const bool keeps = keepsAlpha;
    int32_t i = 0;
    for (; i < end; i += 8) {
        const __m128i first = loadFour(from + i), second = loadFour(from + i + 4);
        const __m128i gray = grays8.of(_mm_packs_epi32(sumsOf(first), sumsOf(second)));
        const __m128i alpha = _mm_packs_epi32(_mm_srli_epi32(first, 24), _mm_srli_epi32(second, 24));
        const __m128i low = _mm_or_si128(gray, _mm_slli_epi16(gray, 8));
        const __m128i high = _mm_or_si128(gray, _mm_slli_epi16(keeps ? alpha : alphas8.of(alpha), 8));
        storeFour(to + i, _mm_unpacklo_epi16(low, high));
        storeFour(to + i + 4, _mm_unpackhi_epi16(low, high));
    }
    plain(to + i, from + i, count - i);
}

void TintRows::fast(uint32_t* to, const uint32_t* from, int32_t count) const {
    const __m128 zero = _mm_setzero_ps(), one = _mm_set1_ps(1), mix = _mm_set1_ps(factor * 255),
                 keep = _mm_set1_ps(1 - factor), dark = _mm_set1_ps(brightness);
    int32_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const __m128i four = loadFour(from + i);
        const __m128 source[] = {_mm_cvtepi32_ps(bytesAt<16>(four)), _mm_cvtepi32_ps(bytesAt<8>(four)),
                                 _mm_cvtepi32_ps(bytesAt<0>(four))};
        __m128 light = _mm_mul_ps(source[0], _mm_set1_ps(kWeights[0] / 255));
        light = _mm_add_ps(light, _mm_mul_ps(source[1], _mm_set1_ps(kWeights[1] / 255)));
        light = _mm_add_ps(light, _mm_mul_ps(source[2], _mm_set1_ps(kWeights[2] / 255)));
        light = _mm_sub_ps(light, dark);
        __m128 channels[3];
        for (int channel = 0; channel < 3; ++channel)
            channels[channel] = _mm_add_ps(_mm_mul_ps(light, _mm_set1_ps(slope[channel])), _mm_set1_ps(tint[channel]));
        for (int channel = 0; channel < 3; ++channel) {
            const __m128 inside = _mm_min_ps(_mm_max_ps(channels[channel], zero), one);
            const __m128 amount = _mm_mul_ps(_mm_sub_ps(channels[channel], inside), _mm_set1_ps(kShares[channel]));
            for (__m128& other : channels)
                other = _mm_add_ps(other, amount);
            channels[channel] = inside;
        }
        __m128i bytes[3];
        for (int channel = 0; channel < 3; ++channel) {
            const __m128 tinted = _mm_mul_ps(clampFour(channels[channel], 1), mix);
            const __m128 mixed = _mm_add_ps(_mm_add_ps(tinted, _mm_mul_ps(source[channel], keep)), _mm_set1_ps(0.5F));
            bytes[channel] = _mm_cvttps_epi32(clampFour(mixed, 255));
        }
        storeFour(to + i, fourPixels(_mm_srli_epi32(four, 24), bytes[0], bytes[1], bytes[2]));
    }
    plain(to + i, from + i, count - i);
}
#else
void GrayRows::fast(uint32_t* to, const uint32_t* from, int32_t count) const {
    plain(to, from, count);
}

void TintRows::fast(uint32_t* to, const uint32_t* from, int32_t count) const {
    plain(to, from, count);
}
#endif

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
