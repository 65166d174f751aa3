#include "frame/source/graphics/bitmapfilters/hslrows.h"
#include "frame/source/graphics/bitmapfilters/pixelrows.h"
#include "gui/values/ucolorhsl.h"
#include <algorithm>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Tessarine::Graphics::BitmapFilterImplementation {

void HSLRows::plain(uint32_t* to, const uint32_t* from, int32_t count) const {
    for (int32_t i = 0; i < count; ++i) {
        int32_t red = int32_t(redOf(from[i])), green = int32_t(greenOf(from[i])), blue = int32_t(blueOf(from[i]));
        UColorHSL color = UColorHSL::fromBytes(red, green, blue);
        color.hue += turn;
        color.saturation = std::clamp(color.saturation * saturation, 0.0, 255.0);
        color.lightness = lightness[size_t(color.lightness * 2)];
        color.toBytes(red, green, blue);
        to[i] = pixelOf(alphaOf(from[i]), uint32_t(red), uint32_t(green), uint32_t(blue));
    }
}

#ifdef __SSE2__
namespace {
__m128i chosen(__m128i mask, __m128i yes, __m128i no) {
    return _mm_or_si128(_mm_and_si128(mask, yes), _mm_andnot_si128(mask, no));
}

__m128d chosen(__m128d mask, __m128d yes, __m128d no) {
    return _mm_or_pd(_mm_and_pd(mask, yes), _mm_andnot_pd(mask, no));
}

__m128d clamped(__m128d values, double high) {
    return _mm_min_pd(_mm_max_pd(values, _mm_setzero_pd()), _mm_set1_pd(high));
}

/** What the channels of four pixels make, in whole numbers still. Of a grey one the dividers are 1. */
struct FourColors {
    FourColors(__m128i red, __m128i green, __m128i blue) {
        const __m128i one = _mm_set1_epi32(1), zero = _mm_setzero_si128();
        const __m128i high = _mm_max_epi16(_mm_max_epi16(red, green), blue);
        const __m128i low = _mm_min_epi16(_mm_min_epi16(red, green), blue);
        sum = _mm_add_epi32(high, low);
        range = _mm_sub_epi32(high, low);
        rangeDivider = _mm_max_epi16(range, one);
        sumDivider = _mm_max_epi16(_mm_min_epi16(sum, _mm_sub_epi32(_mm_set1_epi32(510), sum)), one);
        const __m128i redLeads = _mm_cmpeq_epi32(high, red), greenLeads = _mm_cmpeq_epi32(high, green);
        const __m128i greenBlue = _mm_sub_epi32(green, blue);
        away = chosen(redLeads, greenBlue, chosen(greenLeads, _mm_sub_epi32(blue, red), _mm_sub_epi32(red, green)));
        const __m128i turned = _mm_and_si128(_mm_cmplt_epi32(greenBlue, zero), _mm_set1_epi32(255));
        base = chosen(redLeads, turned, chosen(greenLeads, _mm_set1_epi32(85), _mm_set1_epi32(170)));
    }

    /** The third and the fourth come first. */
    void swap() {
        for (__m128i* each : {&sum, &range, &rangeDivider, &sumDivider, &away, &base})
            *each = _mm_shuffle_epi32(*each, _MM_SHUFFLE(1, 0, 3, 2));
    }

    __m128i sum;
    __m128i range;
    __m128i rangeDivider;
    __m128i sumDivider;
    __m128i away;  // from the hue of the channel that leads, in sixths of the range
    __m128i base;  // that hue
};

/** Red, green and blue of two pixels, in the low halves. */
struct TwoResults {
    __m128i red;
    __m128i green;
    __m128i blue;
};

/** The first two of four, step by step what the plain way does, so that each step rounds alike. */
TwoResults shifted(const FourColors& colors, double turn, double saturationFactor, __m128d lightness) {
    const __m128d full = _mm_set1_pd(255), two = _mm_set1_pd(2), six = _mm_set1_pd(6), zero = _mm_setzero_pd();
    const __m128d sixth = _mm_div_pd(_mm_set1_pd(255 / 6.0), _mm_cvtepi32_pd(colors.rangeDivider));
    const __m128d source =
        _mm_div_pd(_mm_mul_pd(full, _mm_cvtepi32_pd(colors.range)), _mm_cvtepi32_pd(colors.sumDivider));
    const __m128d saturation = clamped(_mm_mul_pd(source, _mm_set1_pd(saturationFactor)), 255);
    const __m128d hue = _mm_add_pd(
        _mm_add_pd(_mm_mul_pd(_mm_cvtepi32_pd(colors.away), sixth), _mm_cvtepi32_pd(colors.base)), _mm_set1_pd(turn));

    const __m128d share = _mm_div_pd(saturation, full);
    const __m128d dark = _mm_mul_pd(lightness, _mm_add_pd(_mm_set1_pd(1), share));
    const __m128d light = _mm_sub_pd(_mm_add_pd(lightness, saturation), _mm_mul_pd(lightness, share));
    const __m128d high = chosen(_mm_cmple_pd(lightness, _mm_set1_pd(127.5)), dark, light);
    const __m128d low = _mm_sub_pd(_mm_mul_pd(two, lightness), high), range = _mm_sub_pd(high, low);

    __m128d place = _mm_mul_pd(hue, _mm_set1_pd(6 / 255.0));
    const __m128i turns = _mm_cvttpd_epi32(_mm_mul_pd(place, _mm_set1_pd(1 / 6.0)));
    place = _mm_sub_pd(place, _mm_mul_pd(six, _mm_cvtepi32_pd(turns)));
    place = _mm_add_pd(place, _mm_and_pd(_mm_cmplt_pd(place, zero), six));
    const auto channel = [&](__m128d sixths) {
        sixths = _mm_sub_pd(sixths, _mm_and_pd(_mm_cmpge_pd(sixths, six), six));
        const __m128d distance = _mm_andnot_pd(_mm_set1_pd(-0.0), _mm_sub_pd(sixths, two));
        const __m128d part = _mm_mul_pd(range, clamped(_mm_sub_pd(two, distance), 1));
        return _mm_cvttpd_epi32(_mm_add_pd(_mm_add_pd(low, part), _mm_set1_pd(0.5)));
    };
    return {channel(_mm_add_pd(place, two)), channel(place), channel(_mm_add_pd(place, _mm_set1_pd(4)))};
}

__m128i joined(const TwoResults& first, const TwoResults& second) {
    const __m128i red = _mm_unpacklo_epi64(first.red, second.red);
    const __m128i green = _mm_unpacklo_epi64(first.green, second.green);
    const __m128i blue = _mm_unpacklo_epi64(first.blue, second.blue);
    return _mm_or_si128(_mm_or_si128(_mm_slli_epi32(red, 16), _mm_slli_epi32(green, 8)), blue);
}
}  // namespace

void HSLRows::fast(uint32_t* to, const uint32_t* from, int32_t count) const {
    const __m128i byte = _mm_set1_epi32(0xFF), alpha = _mm_set1_epi32(int32_t(0xFF000000));
    const auto lightnessOf = [this](const FourColors& colors) {
        return _mm_setr_pd(lightness[size_t(_mm_extract_epi16(colors.sum, 0))],
                           lightness[size_t(_mm_extract_epi16(colors.sum, 2))]);
    };
    int32_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i));
        FourColors colors(_mm_and_si128(_mm_srli_epi32(four, 16), byte), _mm_and_si128(_mm_srli_epi32(four, 8), byte),
                          _mm_and_si128(four, byte));
        const TwoResults first = shifted(colors, turn, saturation, lightnessOf(colors));
        colors.swap();
        const TwoResults second = shifted(colors, turn, saturation, lightnessOf(colors));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i),
                         _mm_or_si128(_mm_and_si128(four, alpha), joined(first, second)));
    }
    plain(to + i, from + i, count - i);
}
#else
void HSLRows::fast(uint32_t* to, const uint32_t* from, int32_t count) const {
    plain(to, from, count);
}
#endif

}  // namespace Tessarine::Graphics::BitmapFilterImplementation
