#include "base/source/fstringconvert.h"
#include <algorithm>
#include <cstring>
#include <iterator>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

namespace Tessarine {
namespace {
constexpr char kLossByte = 0x3F;
bool isHighSurrogate(tchar unit) {
    return (unit & 0xFC00) == 0xD800;
}
bool isLowSurrogate(tchar unit) {
    return (unit & 0xFC00) == 0xDC00;
}

/** One character on its way between the forms. */
struct Character {
    char32_t code = 0;
    uint32_t size = 0;  // units it takes in its source; 0: malformed
};

constexpr tchar kNoUnit = 0xFFFF;  // these bytes mean nothing

struct ReverseRow {
    tchar unit;
    uint16_t bytes;  // two bytes: the first in the high half
};

/** Both directions of a code page whose characters take one or two bytes, for what isn't ASCII. Without a destructor,
    so that it serves to the very end. */
class PageTable {
public:
    Character decode(std::string_view src) const {
        const uint8_t lead = uint8_t(src[0]);
        if (single[lead - 0x80] != kNoUnit)
            return {single[lead - 0x80], 1};
        if (!pairs || src.size() < 2 || pairs[pairIndex(lead, uint8_t(src[1]))] == kNoUnit)
            return {};
        return {pairs[pairIndex(lead, uint8_t(src[1]))], 2};
    }
    uint32_t encode(char32_t code, char* bytes) const {
        const ReverseRow* end = reverse + reverseCount;
        const ReverseRow* row = std::ranges::lower_bound(reverse, end, code, {}, &ReverseRow::unit);
        if (row == end || row->unit != code)
            return 0;
        const uint32_t size = row->bytes > 0xFF ? 2 : 1;
        bytes[0] = char(size == 2 ? row->bytes >> 8 : row->bytes);
        bytes[1] = char(row->bytes);
        return size;
    }

protected:
    void build(const char* converterName);

    tchar single[0x80];
    tchar* pairs = nullptr;  // borrowed; null in a page of single bytes
    ReverseRow* reverse = nullptr;
    uint32_t reverseCount = 0;

    static constexpr uint32_t kPairs = 0x80 * 0x100;
    static uint32_t pairIndex(uint8_t lead, uint8_t trail) { return (lead - 0x80u) * 0x100u + trail; }

private:
    static tchar unitOf(UConverter* converter, const char* bytes, int32_t size);
    void addReverse(UConverter* converter, tchar unit);
};

template <uint32_t kReverseRows, uint32_t kPairUnits>
class PageTableOf : public PageTable {
public:
    explicit PageTableOf(const char* converterName) {
        reverse = reverseRows;
        pairs = kPairUnits ? pairUnits : nullptr;
        build(converterName);
    }

private:
    ReverseRow reverseRows[kReverseRows];
    tchar pairUnits[kPairUnits ? kPairUnits : 1];
};

tchar PageTable::unitOf(UConverter* converter, const char* bytes, int32_t size) {
    UErrorCode error = U_ZERO_ERROR;
    UChar units[4];
    const int32_t count = ucnv_toUChars(converter, units, int32_t(std::size(units)), bytes, size, &error);
    return U_SUCCESS(error) && count == 1 ? units[0] : kNoUnit;
}

void PageTable::addReverse(UConverter* converter, tchar unit) {
    UErrorCode error = U_ZERO_ERROR;
    char bytes[4];
    const int32_t count = ucnv_fromUChars(converter, bytes, int32_t(std::size(bytes)), &unit, 1, &error);
    if (unit == kNoUnit || U_FAILURE(error) || count < 1 || count > 2)
        return;
    const uint16_t first = uint8_t(bytes[0]);
    reverse[reverseCount++] = {unit, count == 1 ? first : uint16_t(first << 8 | uint8_t(bytes[1]))};
}

void PageTable::build(const char* converterName) {
    std::ranges::fill(single, kNoUnit);
    if (pairs)
        std::fill_n(pairs, kPairs, kNoUnit);
    UErrorCode error = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(converterName, &error);
    if (!converter)
        return;
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    for (uint32_t lead = 0x80; lead <= 0xFF; ++lead) {
        char bytes[2] = {char(lead)};
        tchar& alone = single[lead - 0x80];
        alone = unitOf(converter, bytes, 1);
        if (alone != kNoUnit || !pairs) {
            addReverse(converter, alone);
            continue;
        }
        for (uint32_t trail = 0x40; trail <= 0xFF; ++trail) {
            bytes[1] = char(trail);
            tchar& both = pairs[pairIndex(uint8_t(lead), uint8_t(trail))];
            both = unitOf(converter, bytes, 2);
            addReverse(converter, both);
        }
    }
    ucnv_close(converter);
    std::ranges::sort(reverse, reverse + reverseCount, {}, &ReverseRow::unit);
    const auto same = [](const ReverseRow& a, const ReverseRow& b) { return a.unit == b.unit; };
    reverseCount = uint32_t(std::unique(reverse, reverse + reverseCount, same) - reverse);
}

template <const char* kConverter, uint32_t kReverseRows = 0x80, uint32_t kPairUnits = 0>
const PageTable* pageTable() {
    static const PageTableOf<kReverseRows, kPairUnits> table(kConverter);
    return &table;
}

struct PageRow {
    uint32_t codePage, encoding, maxBytes;  // maxBytes: the most that one unit can need
    const PageTable* (*table)();            // null for UTF-8, which needs none; built at first use
};
constexpr char kMacRoman[] = "macintosh", kShiftJIS[] = "ibm-943_P15A-2003", kLatin1[] = "ibm-5348_P100-1997",
               kMacCentralEurope[] = "macos-29-10.2", kAscii[] = "US-ASCII";
constexpr PageRow kPages[] = {
    {kCodePageMacRoman, 0, 1, pageTable<kMacRoman>},
    {kCodePageShiftJIS, 1576, 2, pageTable<kShiftJIS, 0x3000, 0x80 * 0x100>},
    {kCodePageLatin1, 1280, 1, pageTable<kLatin1>},
    {kCodePageMacCentralEurope, 29, 1, pageTable<kMacCentralEurope>},
    {kCodePageUTF8, 0x8000100, 3, nullptr},
};
constexpr PageRow kOtherPage = {0, 1536, 1, pageTable<kAscii>};

const PageRow& pageOf(uint32_t codePage) {
    const auto row = codePage == kCodePageDefault
                         ? std::ranges::find(kPages, kDefaultSystemEncoding, &PageRow::encoding)
                         : std::ranges::find(kPages, codePage, &PageRow::codePage);
    return row == std::end(kPages) ? kOtherPage : *row;
}

struct Utf8Row {
    uint8_t mask, lead, size;
    char32_t first;  // the smallest code that needs so many bytes
};
constexpr Utf8Row kUtf8Forms[] = {
    {0xE0, 0xC0, 2, 0x80   },
    {0xF0, 0xE0, 3, 0x800  },
    {0xF8, 0xF0, 4, 0x10000},
};

Character decodeUtf8(std::string_view src) {
    const uint8_t lead = uint8_t(src[0]);
    const auto form =
        std::ranges::find_if(kUtf8Forms, [lead](const Utf8Row& row) { return (lead & row.mask) == row.lead; });
    if (form == std::end(kUtf8Forms) || src.size() < form->size)
        return {};
    char32_t code = lead & uint8_t(~form->mask);
    for (uint32_t i = 1; i < form->size; ++i) {
        if ((src[i] & 0xC0) != 0x80)
            return {};
        code = code << 6 | (src[i] & 0x3F);
    }
    const bool valid = code >= form->first && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    return valid ? Character{code, form->size} : Character{};
}

uint32_t encodeUtf8(char32_t code, char* bytes) {
    const Utf8Row& form = kUtf8Forms[code < 0x800 ? 0 : code < 0x10000 ? 1 : 2];
    for (uint32_t i = form.size; i-- > 1; code >>= 6)
        bytes[i] = char(0x80 | (code & 0x3F));
    bytes[0] = char(form.lead | code);
    return form.size;
}

/** A code of 0 is a lone surrogate. */
Character characterAt(std::u16string_view src) {
    const tchar unit = src[0];
    if (isHighSurrogate(unit) && src.size() > 1 && isLowSurrogate(src[1]))
        return {0x10000 + ((char32_t(unit) & 0x3FF) << 10 | (char32_t(src[1]) & 0x3FF)), 2};
    return {isHighSurrogate(unit) || isLowSurrogate(unit) ? char32_t(0) : unit, 1};
}

/** How many units at the start are ASCII; looked at in words of eight bytes. */
template <class View>
size_t asciiRun(View text) {
    using Char = typename View::value_type;
    constexpr uint64_t kNotAscii = sizeof(Char) == 1 ? 0x8080808080808080u : 0xFF80FF80FF80FF80u;
    constexpr size_t kStep = sizeof(uint64_t) / sizeof(Char);
    size_t run = 0;
    for (uint64_t word; run + kStep <= text.size(); run += kStep) {
        std::memcpy(&word, text.data() + run, sizeof word);
        if (word & kNotAscii)
            break;
    }
    while (run < text.size() && ConstString::isCharAscii(text[run]))
        ++run;
    return run;
}

/** Passes on the ASCII start of src, as far as there is room; the result is its length. */
template <class Source, class Target>
size_t passAscii(Source src, Target* dst, size_t out, size_t capacity) {
    const size_t run = asciiRun(src.substr(0, capacity - out));
    if (dst)
        std::copy_n(src.data(), run, dst + out);
    return run;
}

uint32_t toUnits(char32_t code, tchar* units) {
    if (code < 0x10000) {
        units[0] = tchar(code);
        return 1;
    }
    units[0] = tchar(0xD800 + ((code - 0x10000) >> 10));
    units[1] = tchar(0xDC00 + (code & 0x3FF));
    return 2;
}

/** At most four bytes. */
uint32_t toBytes(char32_t code, const PageRow& page, char* bytes) {
    const uint32_t size = code == 0 ? 0 : page.table ? page.table()->encode(code, bytes) : encodeUtf8(code, bytes);
    if (size == 0)
        bytes[0] = kLossByte;
    return size == 0 ? 1 : size;
}

/** Appends a character's units when they fit. */
template <class Target>
bool emit(const Target* units, uint32_t count, Target* dst, size_t& out, size_t capacity) {
    if (count > capacity - out)
        return false;
    if (dst)
        std::copy_n(units, count, dst + out);
    out += count;
    return true;
}

using CaseMapping = int32_t (*)(UChar*, int32_t, const UChar*, int32_t, const char*, UErrorCode*);

tchar mapCase(CaseMapping mapping, tchar c) {
    UErrorCode error = U_ZERO_ERROR;
    UChar mapped[4];
    const int32_t count = mapping(mapped, int32_t(std::size(mapped)), &c, 1, "", &error);
    return U_SUCCESS(error) && count == 1 ? mapped[0] : c;
}

bool isIn(char32_t c, char first, char last) {
    return c >= uint8_t(first) && c <= uint8_t(last);
}
bool isAsciiLetter(char32_t c) {
    return isIn(c | 0x20, 'a', 'z');
}
bool isAsciiDigit(char32_t c) {
    return isIn(c, '0', '9');
}
}  // namespace

constinit uint32_t kDefaultSystemEncoding = 0;

int64_t decodeText(std::string_view src, tchar* dst, size_t capacity, uint32_t codePage) {
    if (!dst)
        capacity = SIZE_MAX;
    const PageRow& page = pageOf(codePage);
    size_t out = 0;
    for (size_t in = 0;;) {
        const size_t run = passAscii(src.substr(in), dst, out, capacity);
        in += run;
        out += run;
        if (in == src.size() || out == capacity)
            return int64_t(out);
        const Character character = page.table ? page.table()->decode(src.substr(in)) : decodeUtf8(src.substr(in));
        if (character.size == 0)
            return -1;
        tchar units[2];
        if (!emit(units, toUnits(character.code, units), dst, out, capacity))
            return int64_t(out);
        in += character.size;
    }
}

int64_t encodeText(std::u16string_view src, char* dst, size_t capacity, uint32_t codePage) {
    if (!dst)
        capacity = SIZE_MAX;
    const PageRow& page = pageOf(codePage);
    size_t out = 0;
    for (size_t in = 0;;) {
        const size_t run = passAscii(src.substr(in), dst, out, capacity);
        in += run;
        out += run;
        if (in == src.size() || out == capacity)
            return int64_t(out);
        const Character character = characterAt(src.substr(in));
        char bytes[4];
        if (!emit(bytes, toBytes(character.code, page, bytes), dst, out, capacity))
            return int64_t(out);
        in += character.size;
    }
}

uint32_t maxBytesPerUnit(uint32_t codePage) {
    return pageOf(codePage).maxBytes;
}

int32_t ConstString::multiByteToWideString(tchar* dst, const char* src, int32_t dstCount, uint32_t codePage) {
    if (!src || (dst && dstCount < 1))
        return 0;
    const int64_t count = decodeText(src, dst, dst ? size_t(dstCount) - 1 : 0, codePage);
    if (count < 0)
        return 0;
    if (dst)
        dst[count] = 0;
    return int32_t(std::min<int64_t>(count + 1, INT32_MAX));
}

int32_t ConstString::wideStringToMultiByte(char* dst, const tchar* src, int32_t dstCount, uint32_t codePage) {
    if (!src || (dst && dstCount < 1))
        return 0;
    const std::u16string_view text(src);
    if (!dst)
        return int32_t(std::min<size_t>(text.size() * maxBytesPerUnit(codePage) + 1, INT32_MAX));
    const int64_t count = encodeText(text, dst, size_t(dstCount) - 1, codePage);
    dst[count] = 0;
    return int32_t(count + 1);
}

char ConstString::toUpper(char c) {
    return isIn(uint8_t(c), 'a', 'z') ? char(c - 0x20) : c;
}

char ConstString::toLower(char c) {
    return isIn(uint8_t(c), 'A', 'Z') ? char(c + 0x20) : c;
}

tchar ConstString::toUpper(tchar c) {
    return isCharAscii(c) ? tchar(toUpper(char(c))) : mapCase(u_strToUpper, c);
}

tchar ConstString::toLower(tchar c) {
    return isCharAscii(c) ? tchar(toLower(char(c))) : mapCase(u_strToLower, c);
}

bool ConstString::isCharUpper(char c) {
    return toLower(c) != c;
}

bool ConstString::isCharUpper(tchar c) {
    return toLower(c) != c;
}

bool ConstString::isCharLower(char c) {
    return toUpper(c) != c;
}

bool ConstString::isCharLower(tchar c) {
    return toUpper(c) != c;
}

bool ConstString::isCharSpace(char c) {
    return c == ' ' || isIn(uint8_t(c), '\t', '\r');
}

bool ConstString::isCharSpace(tchar c) {
    static constexpr tchar kSpaces[] = {32, 160, 8239, 8287, 12288};
    return (c >= 8194 && c <= 8203) || std::ranges::find(kSpaces, c) != std::end(kSpaces);
}

bool ConstString::isCharAlpha(char c) {
    return isAsciiLetter(uint8_t(c));
}

bool ConstString::isCharAlpha(tchar c) {
    return isAsciiLetter(c);
}

bool ConstString::isCharAlphaNum(char c) {
    return isCharAlpha(c) || isCharDigit(c);
}

bool ConstString::isCharAlphaNum(tchar c) {
    return isCharAlpha(c) || isCharDigit(c);
}

bool ConstString::isCharDigit(char c) {
    return isAsciiDigit(uint8_t(c));
}

bool ConstString::isCharDigit(tchar c) {
    return isAsciiDigit(c);
}

tchar foldUnit(tchar c) {
    return ConstString::isCharAscii(c) ? tchar(foldUnit(char(c))) : tchar(u_foldCase(c, U_FOLD_CASE_DEFAULT));
}

WideText::WideText(const ConstString& text) {
    if (text.isWideString()) {
        units = units16(text);
        return;
    }
    const std::string_view narrow = units8(text);
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
