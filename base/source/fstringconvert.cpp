#include "base/source/fstringconvert.h"
#include "base/source/fstringpages.h"
#include "base/source/fstringvector.h"
#include <algorithm>

namespace Tessarine {
namespace {
constexpr char kLossByte = 0x3F;
constexpr uint32_t kMostBytes = 4, kMostUnits = 2;  // of one character

bool isHighSurrogate(tchar unit) {
    return (unit & 0xFC00) == 0xD800;
}
bool isLowSurrogate(tchar unit) {
    return (unit & 0xFC00) == 0xDC00;
}

/** How far a conversion came. */
struct Progress {
    size_t in = 0, out = 0;
    bool malformed = false;
};

bool isTrail(char byte) {
    return (byte & 0xC0) == 0x80;
}

/** A character that isn't ASCII. */
inline Character decodeUtf8(const char* src, size_t size) {
    const uint8_t lead = uint8_t(src[0]);
    if (lead < 0xE0) {
        const bool whole = lead >= 0xC2 && size >= 2 && isTrail(src[1]);
        return whole ? Character{char32_t(lead & 0x1F) << 6 | (src[1] & 0x3F), 2} : Character{};
    }
    if (lead < 0xF0) {
        if (size < 3 || !isTrail(src[1]) || !isTrail(src[2]))
            return {};
        const char32_t code = char32_t(lead & 0x0F) << 12 | char32_t(src[1] & 0x3F) << 6 | (src[2] & 0x3F);
        return code >= 0x800 && (code & 0xF800) != 0xD800 ? Character{code, 3} : Character{};
    }
    if (lead > 0xF4 || size < 4 || !isTrail(src[1]) || !isTrail(src[2]) || !isTrail(src[3]))
        return {};
    const char32_t code =
        char32_t(lead & 0x07) << 18 | char32_t(src[1] & 0x3F) << 12 | char32_t(src[2] & 0x3F) << 6 | (src[3] & 0x3F);
    return code >= 0x10000 && code <= 0x10FFFF ? Character{code, 4} : Character{};
}

/** A character that isn't ASCII. */
inline uint32_t encodeUtf8(char32_t code, char* bytes) {
    const auto trail = [code](uint32_t shift) { return char(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x800) {
        bytes[0] = char(0xC0 | code >> 6);
        bytes[1] = trail(0);
        return 2;
    }
    if (code < 0x10000) {
        bytes[0] = char(0xE0 | code >> 12);
        bytes[1] = trail(6);
        bytes[2] = trail(0);
        return 3;
    }
    bytes[0] = char(0xF0 | code >> 18);
    bytes[1] = trail(12);
    bytes[2] = trail(6);
    bytes[3] = trail(0);
    return 4;
}

/** A code of 0 is a lone surrogate. */
inline Character characterAt(const tchar* src, size_t size) {
    const tchar unit = src[0];
    if ((unit & 0xF800) != 0xD800)
        return {unit, 1};
    if (isHighSurrogate(unit) && size > 1 && isLowSurrogate(src[1]))
        return {0x10000 + ((char32_t(unit) & 0x3FF) << 10 | (char32_t(src[1]) & 0x3FF)), 2};
    return {0, 1};
}

inline uint32_t toUnits(char32_t code, tchar* units) {
    if (code < 0x10000) {
        units[0] = tchar(code);
        return 1;
    }
    units[0] = tchar(0xD800 + ((code - 0x10000) >> 10));
    units[1] = tchar(0xDC00 + (code & 0x3FF));
    return 2;
}

/** UTF-8 as a page: the same two questions. */
struct Utf8 {
    static Character decode(const char* src, size_t size) { return decodeUtf8(src, size); }
    static uint32_t encode(char32_t code, char* bytes) { return encodeUtf8(code, bytes); }
};

struct TablePage {
    Character decode(const char* src, size_t size) const { return table->decode({src, size}); }
    uint32_t encode(char32_t code, char* bytes) const { return table->encode(code, bytes); }
    const PageTable* table;
};

/** A way to convert: where a character comes from and what becomes of it. */
template <class Page>
struct Decoding {
    using Source = char;
    using Target = tchar;
    static constexpr uint32_t kMost = kMostUnits;
    Page page;

    Character take(const char* src, size_t size) const { return page.decode(src, size); }
    uint32_t put(char32_t code, tchar* units) const { return toUnits(code, units); }
};

template <class Page>
struct Encoding {
    using Source = tchar;
    using Target = char;
    static constexpr uint32_t kMost = kMostBytes;
    Page page;

    Character take(const tchar* src, size_t size) const { return characterAt(src, size); }
    uint32_t put(char32_t code, char* bytes) const {
        const uint32_t size = code ? page.encode(code, bytes) : 0;
        if (size == 0)
            bytes[0] = kLossByte;
        return size == 0 ? 1 : size;
    }
};

/** Where a conversion stands. By value and inlined, so that it stays in registers: a byte that is written may be
    anything, also a place behind a reference, which would be read anew each time. */
template <class Way>
struct Places {
    const typename Way::Source* src;
    typename Way::Target* dst;
    enum { kGoing, kFull, kMalformed } state;
};

/** Goes on to where the next unit has to begin. */
template <class Way>
[[gnu::always_inline]] inline Places<Way> convertSingly(const Way& way, Places<Way> at,
                                                        const typename Way::Source* until,
                                                        const typename Way::Source* srcEnd,
                                                        typename Way::Target* dstEnd) {
    using Target = typename Way::Target;
    while (at.src < until) {
        if ((*at.src & ~0x7F) == 0) {
            if (at.dst == dstEnd)
                return {at.src, at.dst, Places<Way>::kFull};
            *at.dst++ = Target(*at.src++);
            continue;
        }
        const Character character = way.take(at.src, size_t(srcEnd - at.src));
        if (character.size == 0)
            return {at.src, at.dst, Places<Way>::kMalformed};
        if (size_t(dstEnd - at.dst) >= Way::kMost) {
            at.dst += way.put(character.code, at.dst);
        } else {
            Target units[Way::kMost];
            const uint32_t count = way.put(character.code, units);
            if (count > size_t(dstEnd - at.dst))
                return {at.src, at.dst, Places<Way>::kFull};
            at.dst = std::copy_n(units, count, at.dst);
        }
        at.src += character.size;
    }
    return at;
}

/** Converts to the end of source or target; whole characters only. Sixteen units at a time, up to the first that isn't
    ASCII; one by one from there to the last of them that isn't. */
template <class Way>
Progress convert(const Way& way, std::basic_string_view<typename Way::Source> text, typename Way::Target* target,
                 size_t capacity) {
    const typename Way::Source* const srcEnd = text.data() + text.size();
    typename Way::Target* const dstEnd = target + capacity;
    Places<Way> at = {text.data(), target, Places<Way>::kGoing};
    while (at.state == at.kGoing && size_t(srcEnd - at.src) >= kVectorUnits &&
           size_t(dstEnd - at.dst) >= kVectorUnits) {
        const uint32_t foreign = passSixteen(at.src, at.dst);
        const size_t run = foreign ? size_t(std::countr_zero(foreign)) : kVectorUnits;
        const typename Way::Source* const until = at.src + std::bit_width(foreign);
        at.src += run;
        at.dst += run;
        if (foreign)
            at = convertSingly(way, at, until, srcEnd, dstEnd);
    }
    if (at.state == at.kGoing)
        at = convertSingly(way, at, srcEnd, srcEnd, dstEnd);
    return {size_t(at.src - text.data()), size_t(at.dst - target), at.state == at.kMalformed};
}

/** What convert would write. */
template <class Way>
Progress measure(const Way& way, std::basic_string_view<typename Way::Source> src) {
    typename Way::Target scratch[256];
    Progress at;
    while (at.in < src.size() && !at.malformed) {
        const Progress piece = convert(way, src.substr(at.in), scratch, std::size(scratch));
        at = {at.in + piece.in, at.out + piece.out, piece.malformed};
    }
    return at;
}

/** ASCII needs as many units as it has, so that its block is right at once. Where that ends there is room for the most
    that the rest can need, which is given back behind the text before anybody else has it. */
template <class Way>
ConvertedText convertedBlock(const Way& way, std::basic_string_view<typename Way::Source> src, uint32_t mostUnits) {
    using Target = typename Way::Target;
    const auto resized = [](Target* block, size_t length) {
        return static_cast<Target*>(std::realloc(block, (length + 1) * sizeof(Target)));
    };
    Target* block = resized(nullptr, src.size());
    if (!block)
        return {};
    size_t length = passAscii(src.data(), block, src.size());
    src.remove_prefix(length);
    if (!src.empty()) {
        const size_t most = std::min<size_t>(length + src.size() * mostUnits, ConstString::kMaxLength);
        Target* const roomy = mostUnits > 1 ? resized(block, most) : block;
        Progress rest;
        if (roomy) {
            block = roomy;
            rest = convert(way, src, block + length, most - length);
        }
        length = rest.in == src.size() ? length + rest.out : 0;
        Target* const exact = length > 0 && length < most ? resized(block, length) : nullptr;
        block = exact ? exact : block;
    }
    if (length == 0) {
        std::free(block);
        return {};
    }
    block[length] = 0;
    return {block, uint32_t(length)};
}

template <template <class> class Way, class Call>
auto withPage(uint32_t codePage, Call call) {
    const PageRow& page = pageOf(codePage);
    return page.table ? call(Way<TablePage>{{page.table()}}) : call(Way<Utf8>{});
}

template <template <class> class Way, class Source, class Target>
Progress convertOrMeasure(std::basic_string_view<Source> src, Target* dst, size_t capacity, uint32_t codePage) {
    return withPage<Way>(codePage,
                         [&](const auto& way) { return dst ? convert(way, src, dst, capacity) : measure(way, src); });
}
}  // namespace

size_t asciiRun(std::string_view text) {
    return countAscii(text.data(), text.size());
}

size_t asciiRun(std::u16string_view text) {
    return countAscii(text.data(), text.size());
}

#ifdef __SSE2__
namespace {
constexpr size_t kBlockVectors = 4;

__attribute__((no_sanitize("address", "thread"))) inline uint32_t zerosAt(const char* aligned) {
    const __m128i units = _mm_load_si128(reinterpret_cast<const __m128i*>(aligned));
    return bitsOf(_mm_cmpeq_epi16(units, _mm_setzero_si128()));
}

/** Any zero in four vectors. */
__attribute__((no_sanitize("address", "thread"))) inline bool hasZero(const char* aligned) {
    __m128i any = _mm_setzero_si128();
    for (size_t i = 0; i < kBlockVectors; ++i) {
        const __m128i units = _mm_load_si128(reinterpret_cast<const __m128i*>(aligned) + i);
        any = _mm_or_si128(any, _mm_cmpeq_epi16(units, _mm_setzero_si128()));
    }
    return bitsOf(any) != 0;
}
}  // namespace

/** Looks at aligned vectors, which may hold what lies around the text but never reach into another page. */
size_t countUnits(const tchar* text, size_t limit) {
    constexpr size_t kVector = sizeof(__m128i), kBlock = kBlockVectors * kVector;
    const char* const begin = reinterpret_cast<const char*>(text);
    const size_t before = reinterpret_cast<uintptr_t>(begin) % kVector;
    const char* at = begin - before;
    uint32_t zeros = zerosAt(at) >> before << before;
    while (zeros == 0) {
        at += kVector;
        while (reinterpret_cast<uintptr_t>(at) % kBlock == 0 && size_t(at - begin) < limit * sizeof(tchar) &&
               !hasZero(at))
            at += kBlock;
        if (size_t(at - begin) >= limit * sizeof(tchar))
            return limit;
        zeros = zerosAt(at);
    }
    return std::min(size_t(at - begin + std::countr_zero(zeros)) / sizeof(tchar), limit);
}
#else
size_t countUnits(const tchar* text, size_t limit) {
    size_t at = 0;
    while (at < limit && text[at])
        ++at;
    return at;
}
#endif

int64_t decodeText(std::string_view src, tchar* dst, size_t capacity, uint32_t codePage) {
    const Progress done = convertOrMeasure<Decoding>(src, dst, capacity, codePage);
    return done.malformed ? -1 : int64_t(done.out);
}

int64_t encodeText(std::u16string_view src, char* dst, size_t capacity, uint32_t codePage) {
    return int64_t(convertOrMeasure<Encoding>(src, dst, capacity, codePage).out);
}

ConvertedText decodedBlock(std::string_view src, uint32_t codePage) {
    return withPage<Decoding>(codePage, [&](const auto& way) { return convertedBlock(way, src, 1); });
}

ConvertedText encodedBlock(std::u16string_view src, uint32_t codePage) {
    const uint32_t most = maxBytesPerUnit(codePage);
    return withPage<Encoding>(codePage, [&](const auto& way) { return convertedBlock(way, src, most); });
}

uint32_t maxBytesPerUnit(uint32_t codePage) {
    return pageOf(codePage).maxBytes;
}

int32_t ConstString::multiByteToWideString(tchar* dst, const char* src, int32_t dstCount, uint32_t codePage) {
    if (!src || (dst && dstCount < 1))
        return 0;
    const int64_t count = decodeText(src, dst, dst ? size_t(dstCount) - 1 : 0, codePage);
    if (dst)
        dst[std::max<int64_t>(count, 0)] = 0;
    return count < 0 ? 0 : int32_t(std::min<int64_t>(count + 1, INT32_MAX));
}

int32_t ConstString::wideStringToMultiByte(char* dst, const tchar* src, int32_t dstCount, uint32_t codePage) {
    if (!src || (dst && dstCount < 1))
        return 0;
    const std::u16string_view text(src, countUnits(src, kMaxLength));
    if (!dst)
        return int32_t(std::min<size_t>(text.size() * maxBytesPerUnit(codePage) + 1, INT32_MAX));
    const int64_t count = encodeText(text, dst, size_t(dstCount) - 1, codePage);
    dst[count] = 0;
    return int32_t(count + 1);
}

WideText::WideText(const ConstString& text) {
    if (text.isWideString()) {
        units = units16(text);
        return;
    }
    std::string_view narrow = units8(text);
    narrow = narrow.substr(0, narrow.find('\0'));
    if (narrow.size() <= std::size(local)) {
        const int64_t count = decodeText(narrow, local, std::size(local), kCodePageDefault);
        units = {local, size_t(std::max<int64_t>(count, 0))};
        return;
    }
    copy.assign(text);
    if (copy.toWideString())
        units = units16(copy);
}

}  // namespace Tessarine
