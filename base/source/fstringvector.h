#pragma once
#include "pluginterfaces/base/funknown.h"
#include <bit>
#include <cstring>
#include <type_traits>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

/** Sixteen units at a time, for the stretches of ASCII that most text is made of. Nothing is read or written beyond the
    units that are named. */

namespace Tessarine {

/** Units looked at in one step. */
constexpr size_t kVectorUnits = 16;

#ifdef __SSE2__
inline __m128i loadVector(const void* place) {
    return _mm_loadu_si128(static_cast<const __m128i*>(place));
}
inline void storeVector(void* place, __m128i units) {
    _mm_storeu_si128(static_cast<__m128i*>(place), units);
}

/** Whatever the width: lanes of 8 or 16 bits. */
template <class Char>
__m128i allLanes(Char c) {
    return sizeof(Char) == 1 ? _mm_set1_epi8(char(c)) : _mm_set1_epi16(int16_t(c));
}
template <class Char>
__m128i equalLanes(__m128i a, __m128i b) {
    return sizeof(Char) == 1 ? _mm_cmpeq_epi8(a, b) : _mm_cmpeq_epi16(a, b);
}
inline uint32_t bitsOf(__m128i lanes) {
    return uint32_t(_mm_movemask_epi8(lanes));
}

/** A bit for each of sixteen units that isn't ASCII. */
inline uint32_t foreignBits(__m128i units) {
    return bitsOf(units);
}
inline uint32_t foreignBits(__m128i first, __m128i second) {
    const __m128i toSign = _mm_set1_epi16(0x7F80);  // from 0x80 on the sum has its highest bit set
    constexpr uint32_t kSigns = 0xAAAA;
    if ((bitsOf(_mm_adds_epu16(_mm_or_si128(first, second), toSign)) & kSigns) == 0)
        return 0;
    return bitsOf(_mm_packs_epi16(_mm_adds_epu16(first, toSign), _mm_adds_epu16(second, toSign)));
}

inline uint32_t foreignOfSixteen(const char* src) {
    return foreignBits(loadVector(src));
}
inline uint32_t foreignOfSixteen(const tchar* src) {
    return foreignBits(loadVector(src), loadVector(src + 8));
}

/** The same, and passes all on; those before the first such unit are right. */
inline uint32_t passSixteen(const char* src, tchar* dst) {
    const __m128i units = loadVector(src);
    storeVector(dst, _mm_unpacklo_epi8(units, _mm_setzero_si128()));
    storeVector(dst + 8, _mm_unpackhi_epi8(units, _mm_setzero_si128()));
    return foreignBits(units);
}
inline uint32_t passSixteen(const tchar* src, char* dst) {
    const __m128i first = loadVector(src), second = loadVector(src + 8);
    storeVector(dst, _mm_packus_epi16(first, second));
    return foreignBits(first, second);
}
#else
template <class Char>
uint32_t foreignOfSixteen(const Char* src) {
    uint32_t bits = 0;
    for (uint32_t i = 0; i < kVectorUnits; ++i)
        bits |= uint32_t((src[i] & ~0x7F) != 0) << i;
    return bits;
}
template <class Source, class Target>
uint32_t passSixteen(const Source* src, Target* dst) {
    for (uint32_t i = 0; i < kVectorUnits; ++i)
        dst[i] = Target(src[i]);
    return foreignOfSixteen(src);
}
#endif

/** Passes on the ASCII start of count units; dst has room for count. The result is its length. */
template <class Source, class Target>
size_t passAscii(const Source* src, Target* dst, size_t count) {
    size_t run = 0;
    for (; run + kVectorUnits <= count; run += kVectorUnits)
        if (const uint32_t foreign = passSixteen(src + run, dst + run))
            return run + size_t(std::countr_zero(foreign));
    for (; run < count && (src[run] & ~0x7F) == 0; ++run)
        dst[run] = Target(src[run]);
    return run;
}

template <class Char>
size_t countAscii(const Char* src, size_t count) {
    size_t run = 0;
    for (; run + kVectorUnits <= count; run += kVectorUnits)
        if (const uint32_t foreign = foreignOfSixteen(src + run))
            return run + size_t(std::countr_zero(foreign));
    while (run < count && (src[run] & ~0x7F) == 0)
        ++run;
    return run;
}

/** Copies what doesn't overlap; a few words without a call. */
inline void copyBytes(void* target, const void* source, size_t size) {
    char* dst = static_cast<char*>(target);
    const char* src = static_cast<const char*>(source);
    const auto copyEnds = [&]<size_t kPart>(std::integral_constant<size_t, kPart>) {  // which meet or overlap
        char head[kPart], tail[kPart];
        std::memcpy(head, src, kPart);
        std::memcpy(tail, src + size - kPart, kPart);
        std::memcpy(dst, head, kPart);
        std::memcpy(dst + size - kPart, tail, kPart);
    };
    if (size > 32)
        std::memcpy(dst, src, size);
    else if (size >= 16)
        copyEnds(std::integral_constant<size_t, 16>());
    else if (size >= 8)
        copyEnds(std::integral_constant<size_t, 8>());
    else if (size >= 4)
        copyEnds(std::integral_constant<size_t, 4>());
    else
        while (size-- > 0)
            dst[size] = src[size];
}

/** Units before the terminator, at most limit. */
size_t countUnits(const tchar* text, size_t limit);

}  // namespace Tessarine
