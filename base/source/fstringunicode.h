#pragma once
#include "base/source/fstringconvert.h"
#include "base/source/fstringvector.h"

/** Comparing texts whose case doesn't matter, as the root of all locales has it. */

namespace Tessarine {

/** Two units that differ in the case of an ASCII letter at most. */
template <class Char>
bool sameAsciiUnit(Char a, Char b) {
    return a == b || ((a ^ b) == 0x20 && ConstString::isCharAlpha(a));
}

#ifdef __SSE2__
/** The lanes of Char that sameAsciiUnit says yes to, as a mask of bytes. */
template <class Char>
uint32_t sameLanes(const Char* a, const Char* b) {
    const auto above = [](__m128i x, __m128i y) {
        return sizeof(Char) == 1 ? _mm_cmpgt_epi8(x, y) : _mm_cmpgt_epi16(x, y);
    };
    const __m128i unitsA = loadVector(a), unitsB = loadVector(b), caseBit = allLanes(Char(0x20));
    const __m128i lower = _mm_or_si128(unitsA, caseBit);
    const __m128i letter = _mm_and_si128(above(lower, allLanes(Char('a' - 1))), above(allLanes(Char('z' + 1)), lower));
    const __m128i otherCase = _mm_and_si128(equalLanes<Char>(_mm_xor_si128(unitsA, unitsB), caseBit), letter);
    return bitsOf(_mm_or_si128(equalLanes<Char>(unitsA, unitsB), otherCase));
}
#endif

/** How many units at the start, of count, are the same: as `lanes` says of a vector, in a mask of bytes, and `unit` of one. */
template <class Char, class Lanes, class Unit>
size_t countSame(const Char* a, const Char* b, size_t count, [[maybe_unused]] Lanes lanes, Unit unit) {
    size_t at = 0;
#ifdef __SSE2__
    constexpr size_t kLanes = sizeof(__m128i) / sizeof(Char);
    for (; at + kLanes <= count; at += kLanes) {
        const uint32_t same = lanes(a + at, b + at);
        if (same != 0xFFFF)
            return at + size_t(std::countr_one(same)) / sizeof(Char);
    }
#endif
    while (at < count && unit(a[at], b[at]))
        ++at;
    return at;
}

/** How many units at the start, of count, differ in the case of ASCII letters at most. */
template <class Char>
size_t sameIgnoringCase(const Char* a, const Char* b, size_t count) {
    return countSame(
        a, b, count, [](const auto* x, const auto* y) { return sameLanes(x, y); },
        [](Char x, Char y) { return sameAsciiUnit(x, y); });
}

/** -1, 0 or 1 by the full folding of both. asPrefix: 0 when b's folding begins a's. */
int32_t compareIgnoringCase(std::u16string_view a, std::u16string_view b, bool asPrefix = false);

}  // namespace Tessarine
