#include "base/source/fstringunicode.h"
#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <type_traits>

namespace Tessarine {
namespace {
template <class Char>
using View = std::basic_string_view<Char>;

template <class Char>
int32_t valueOf(Char c) {
    return int32_t(std::make_unsigned_t<Char>(c));
}

template <class Char>
size_t sameUnits(const Char* a, const Char* b, size_t count) {
    return countSame(
        a, b, count, [](const auto* x, const auto* y) { return bitsOf(_mm_cmpeq_epi8(loadVector(x), loadVector(y))); },
        std::equal_to<>());
}

template <class Char>
size_t sameStart(View<Char> a, View<Char> b, CompareMode mode) {
    const size_t count = std::min(a.size(), b.size());
    return mode == kMatchCase ? sameUnits(a.data(), b.data(), count) : sameIgnoringCase(a.data(), b.data(), count);
}

/** As the C library compares: the terminator is a character too. */
int32_t compareViews(std::string_view a, std::string_view b, int32_t count, CompareMode mode) {
    a = a.substr(0, size_t(count));
    b = b.substr(0, size_t(count));
    const size_t at = sameStart(a, b, mode);
    const char unitA = at < a.size() ? a[at] : '\0', unitB = at < b.size() ? b[at] : '\0';
    return mode == kMatchCase ? valueOf(unitA) - valueOf(unitB) : valueOf(foldUnit(unitA)) - valueOf(foldUnit(unitB));
}

/** Ignoring case, a count asks whether the other text's start stands here. */
int32_t compareViews(std::u16string_view a, std::u16string_view b, int32_t count, CompareMode mode) {
    b = b.substr(0, size_t(count));
    if (mode == kIgnoreCase)
        return compareIgnoringCase(a, b, count >= 0);
    a = a.substr(0, size_t(count));
    const size_t at = sameStart(a, b, mode);
    if (at < a.size() && at < b.size())
        return a[at] - b[at];
    return (at < a.size()) - (at < b.size());
}

template <class Char>
bool standsAt(View<Char> text, size_t at, View<Char> what, CompareMode mode) {
    if (mode == kMatchCase)
        return sameUnits(text.data() + at, what.data(), what.size()) == what.size();
    return std::equal(what.begin(), what.end(), text.begin() + at,
                      [](Char a, Char b) { return a == b || foldUnit(a) == foldUnit(b); });
}

/** A unit that is looked for, in both cases where these are not to matter. */
template <class Char>
struct SoughtUnit {
    SoughtUnit(Char unit, CompareMode mode)
        : one(unit), other(mode == kIgnoreCase && ConstString::isCharAlpha(unit) ? Char(unit ^ 0x20) : unit),
          exact(mode == kMatchCase || hasTwoCases(unit)) {}
    bool is(Char c) const { return c == one || c == other || !exact; }

    Char one, other;
    bool exact;  // no third unit is the same

private:
    /** Of ASCII letters, k and s have a third form in 16 bits: the Kelvin sign and the long s. */
    static bool hasTwoCases(Char c) {
        return sizeof(Char) == 1 || (ConstString::isCharAscii(c) && foldUnit(c) != 'k' && foldUnit(c) != 's');
    }
};

#ifdef __SSE2__
/** Goes on from at while whole vectors of places are left; true: at is a place. First and last unit are looked at in
    many places at once. */
template <class Char>
bool findInVectors(View<Char> text, View<Char> what, size_t& at, CompareMode mode) {
    constexpr size_t kLanes = sizeof(__m128i) / sizeof(Char);
    const SoughtUnit<Char> first(what.front(), mode), last(what.back(), mode);
    if (!first.exact || !last.exact)
        return false;
    const auto found = [](__m128i units, __m128i one, __m128i other) {
        return _mm_or_si128(equalLanes<Char>(units, one), equalLanes<Char>(units, other));
    };
    const __m128i firstOne = allLanes(first.one), firstOther = allLanes(first.other), lastOne = allLanes(last.one),
                  lastOther = allLanes(last.other);
    for (; at + what.size() - 1 + kLanes <= text.size(); at += kLanes) {
        const Char* place = text.data() + at;
        uint32_t bits = bitsOf(_mm_and_si128(found(loadVector(place), firstOne, firstOther),
                                             found(loadVector(place + what.size() - 1), lastOne, lastOther)));
        for (; bits; bits &= bits - 1) {
            const size_t lane = size_t(std::countr_zero(bits)) / sizeof(Char);
            if (standsAt(text, at + lane, what, mode)) {
                at += lane;
                return true;
            }
        }
    }
    return false;
}
#endif

/** Wholly before the end of text. */
template <class Char>
int32_t firstPlace(View<Char> text, View<Char> what, size_t at, CompareMode mode) {
    if (what.empty() || what.size() > text.size())
        return -1;
#ifdef __SSE2__
    if (findInVectors(text, what, at, mode))
        return int32_t(at);
#endif
    const SoughtUnit<Char> first(what.front(), mode);
    for (; at + what.size() <= text.size(); ++at)
        if (first.is(text[at]) && standsAt(text, at, what, mode))
            return int32_t(at);
    return -1;
}

template <class Char>
int32_t lastPlace(View<Char> text, View<Char> what, size_t start, CompareMode mode) {
    if (what.size() > text.size())
        return -1;
    for (size_t at = std::min(start, text.size() - what.size()) + 1; at-- > 0;)
        if (standsAt(text, at, what, mode))
            return int32_t(at);
    return -1;
}

ConstString tailOf(const ConstString& text, uint32_t index) {
    return ConstString(text, int32_t(std::min(index, ConstString::kMaxLength)));
}

/** A run of digits in a text, from the place where both texts have one. */
template <class Char>
struct NumberRun {
    const Char *first, *significant, *end;

    NumberRun(const Char* at, const Char* last) : first(at) {
        while (at < last && *at == '0')
            ++at;
        significant = at;
        while (at < last && ConstString::isCharDigit(*at))
            ++at;
        end = at;
    }
    int32_t zeros() const { return int32_t(significant - first); }
    int32_t digits() const { return int32_t(end - significant); }
};

/** By length, then digit by digit, then by the zeros in front. */
template <class Char>
int32_t compareNumbers(const NumberRun<Char>& a, const NumberRun<Char>& b) {
    if (a.digits() != b.digits())
        return a.digits() - b.digits();
    const auto [digitA, digitB] = std::mismatch(a.significant, a.end, b.significant);
    return digitA != a.end ? *digitA - *digitB : a.zeros() - b.zeros();
}

template <class Char>
int32_t naturalValue(Char c, bool caseSensitive) {
    const bool lower = !caseSensitive && c >= 'a' && c <= 'z';
    return valueOf(c) - (lower ? 0x20 : 0);
}

/** Where the texts may begin to differ: not inside of a number. */
template <class Char>
size_t sameNaturalStart(View<Char> a, View<Char> b, bool caseSensitive) {
    size_t at = sameStart(a, b, caseSensitive ? kMatchCase : kIgnoreCase);
    while (at > 0 && ConstString::isCharDigit(a[at - 1]))
        --at;
    return at;
}

template <class Char>
int32_t tstrnatcmp(View<Char> a, View<Char> b, bool caseSensitive) {
    const size_t same = sameNaturalStart(a, b, caseSensitive);
    const Char *atA = a.data() + same, *atB = b.data() + same;
    const Char *const endA = a.data() + a.size(), *const endB = b.data() + b.size();
    while (atA < endA && atB < endB) {
        int32_t difference;
        if (ConstString::isCharDigit(*atA) && ConstString::isCharDigit(*atB)) {
            const NumberRun<Char> runA(atA, endA), runB(atB, endB);
            difference = compareNumbers(runA, runB);
            atA = runA.end;
            atB = runB.end;
        } else {
            difference = *atA == *atB ? 0 : naturalValue(*atA, caseSensitive) - naturalValue(*atB, caseSensitive);
            ++atA;
            ++atB;
        }
        if (difference != 0)
            return difference;
    }
    return (atA < endA) - (atB < endB);
}

/** The remainder by a divisor that is used again and again, without a division. */
class Remainder {
public:
    explicit Remainder(uint32_t divisor) : n(divisor), factor(lastFactor.load(std::memory_order_relaxed)) {
        const unsigned __int128 product = static_cast<unsigned __int128>(factor) * n;
        if (product >> 64 || ~uint64_t(product) >= n) {
            factor = UINT64_MAX / n;
            lastFactor.store(factor, std::memory_order_relaxed);
        }
    }
    /** Below 2 * n, and the same modulo n. */
    uint64_t nearly(uint64_t value) const {
        return value - uint64_t((static_cast<unsigned __int128>(value) * factor) >> 64) * n;
    }
    /** The rest of what is below 2 * n. */
    uint32_t lastStep(uint64_t value) const { return uint32_t(value >= n ? value - n : value); }

private:
    static constinit std::atomic<uint64_t> lastFactor;  // of any divisor: whose it is, its product says
    uint64_t n, factor;
};
constinit std::atomic<uint64_t> Remainder::lastFactor{0};

constexpr uint32_t kMaxPlainDivisor = (1u << 26) - 1024;  // up to this no 32-bit step of the formula overflows
constexpr size_t kHashUnits = 8;                          // taken in one go
constexpr uint64_t kHashFactor = uint64_t(1) << 6 * kHashUnits;
static_assert(std::endian::native == std::endian::little, "the first character is the lowest of its word");

template <class Char>
uint32_t hashStep(uint32_t h, Char c, uint32_t n) {
    using Signed = std::conditional_t<sizeof(Char) == 1, int8_t, uint16_t>;
    return (uint32_t(Signed(c)) + (h << 6)) % n;
}

template <class Char>
uint64_t wordAt(const Char* text) {
    uint64_t word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

/** Joins neighbours, two of 16 bits, then two of 32: the first times a power of 64 and the second. */
uint64_t joined16(uint64_t word) {
    constexpr uint64_t kEven = 0x0000FFFF0000FFFF;
    return ((word & kEven) << 6) + (word >> 16 & kEven);
}
uint64_t joined32(uint64_t word, uint32_t shift) {
    return (uint64_t(uint32_t(word)) << shift) + (word >> 32);
}

/** Eight characters as the formula sums them up, before the remainder. */
uint64_t hashedEight(const char* text) {
    constexpr uint64_t kEven = 0x00FF00FF00FF00FF, kEvenPairs = 0x0000FFFF0000FFFF;
    const uint64_t word = wordAt(text), pairs = ((word & kEven) << 6) + (word >> 8 & kEven);
    return joined32(((pairs & kEvenPairs) << 12) + (pairs >> 16 & kEvenPairs), 24);
}
uint64_t hashedEight(const tchar* text) {
    return (joined32(joined16(wordAt(text)), 12) << 24) + joined32(joined16(wordAt(text + 4)), 12);
}

/** Without a sign to extend; count is a multiple of eight. */
bool arePlain(const char* text, size_t count) {
    uint64_t bits = 0;
    for (size_t at = 0; at < count; at += sizeof bits)
        bits |= wordAt(text + at);
    return (bits & 0x8080808080808080u) == 0;
}
bool arePlain(const tchar*, size_t) {
    return true;
}

/** h = (c + (h << 6)) % n. Where nothing overflows, one remainder serves several characters; of two such groups the first
    has its own beforehand, so that the next group waits for one alone. */
template <class Char>
uint32_t hashUnits(View<Char> text, uint32_t n) {
    if (text.empty() || n == 0)
        return 0;
    size_t at = 0;
    uint32_t h = 0;
    if (n <= kMaxPlainDivisor) {
        const Remainder remainder(n);
        const uint64_t factor = remainder.nearly(kHashFactor);
        const uint64_t square = remainder.nearly(factor * factor);
        uint64_t sum = 0;
        for (; at + 2 * kHashUnits <= text.size() && arePlain(&text[at], 2 * kHashUnits); at += 2 * kHashUnits) {
            const uint64_t first = remainder.nearly(hashedEight(&text[at])) * factor;
            sum = remainder.nearly(sum * square + first + hashedEight(&text[at + kHashUnits]));
        }
        for (; at + kHashUnits <= text.size() && arePlain(&text[at], kHashUnits); at += kHashUnits)
            sum = remainder.nearly(sum * factor + hashedEight(&text[at]));
        h = remainder.lastStep(sum);
    }
    for (; at < text.size(); ++at)
        h = hashStep(h, text[at], n);
    return h;
}
}  // namespace

int32_t findText(std::string_view text, std::string_view what, size_t start, CompareMode mode) {
    return firstPlace(text, what, start, mode);
}

int32_t findText(std::u16string_view text, std::u16string_view what, size_t start, CompareMode mode) {
    return firstPlace(text, what, start, mode);
}

uint32_t hashString8(const char* text, uint32_t n) {
    return hashUnits(std::string_view(text ? text : ""), n);
}

uint32_t hashString16(const tchar* text, uint32_t n) {
    return hashUnits(
        text ? std::u16string_view(text, countUnits(text, ConstString::kMaxLength)) : std::u16string_view(), n);
}

int32_t strnatcmp8(const char* a, const char* b, bool caseSensitive) {
    return ConstString(a).naturalCompare(ConstString(b), caseSensitive ? kMatchCase : kIgnoreCase);
}

int32_t strnatcmp16(const tchar* a, const tchar* b, bool caseSensitive) {
    return ConstString(a).naturalCompare(ConstString(b), caseSensitive ? kMatchCase : kIgnoreCase);
}

int32_t ConstString::naturalCompare(const ConstString& other, CompareMode mode) const {
    if (other.isEmpty())
        return isEmpty() ? 0 : 1;
    if (isEmpty())
        return -1;
    return inOneWidth(*this, other, [mode](auto a, auto b) { return tstrnatcmp(a, b, mode == kMatchCase); });
}

int32_t ConstString::compare(const ConstString& other, int32_t count, CompareMode mode) const {
    if (count == 0)
        return 0;
    if (other.isEmpty())
        return isEmpty() ? 0 : 1;
    if (isEmpty())
        return -1;
    return inOneWidth(*this, other, [&](auto a, auto b) { return compareViews(a, b, count, mode); });
}

int32_t ConstString::compareAt(uint32_t index, const ConstString& other, int32_t count, CompareMode mode) const {
    return tailOf(*this, index).compare(other, count, mode);
}

int32_t ConstString::getFirstDifferent(const ConstString& other, CompareMode mode) const {
    return inOneWidth(*this, other, [mode](auto a, auto b) {
        const size_t count = std::min(a.size(), b.size());
        size_t at = sameStart(a, b, mode);
        while (mode == kIgnoreCase && at < count && foldUnit(a[at]) == foldUnit(b[at]))
            at += 1 + sameStart(a.substr(at + 1), b.substr(at + 1), mode);
        return at == a.size() && at == b.size() ? -1 : int32_t(at);
    });
}

int32_t ConstString::findNext(int32_t start, const ConstString& text, CompareMode mode, int32_t end) const {
    if (text.isEmpty() || start >= int32_t(len))
        return -1;
    return inOneWidth(*this, text, [&](auto here, auto what) {
        return firstPlace(here.substr(0, size_t(end)), what, size_t(std::max(start, 0)), mode);
    });
}

int32_t ConstString::findPrev(int32_t start, const ConstString& text, CompareMode mode) const {
    if (text.isEmpty())
        return -1;
    return inOneWidth(*this, text, [&](auto here, auto what) {
        return what.empty() ? -1 : lastPlace(here, what, start < 0 ? here.size() : size_t(start), mode);
    });
}

int32_t ConstString::countOccurences(const ConstString& text, uint32_t start, CompareMode mode) const {
    if (start >= len)
        return 0;
    return inOneWidth(*this, text, [&](auto here, auto what) {
        int32_t count = 0;
        for (int32_t at = int32_t(start); (at = firstPlace(here, what, size_t(at), mode)) >= 0; ++count)
            at += int32_t(what.size());
        return count;
    });
}

bool ConstString::startsWith(const ConstString& text, CompareMode mode) const {
    if (text.isEmpty())
        return isEmpty();
    return inOneWidth(*this, text, [&](auto here, auto what) {
        return !what.empty() && what.size() <= here.size() && standsAt(here, 0, what, mode);
    });
}

bool ConstString::endsWith(const ConstString& text, CompareMode mode) const {
    if (text.isEmpty())
        return isEmpty();
    return inOneWidth(*this, text, [&](auto here, auto what) {
        return !what.empty() && what.size() <= here.size() && standsAt(here, here.size() - what.size(), what, mode);
    });
}

}  // namespace Tessarine
