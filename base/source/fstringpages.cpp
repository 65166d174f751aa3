#include "base/source/fstringpages.h"
#include "base/source/fstringconvert.h"
#include <algorithm>
#include <iterator>
#include <unicode/ucnv.h>

namespace Tessarine {
namespace {
constexpr tchar kNoUnit = 0xFFFF;  // these bytes mean nothing
constexpr uint32_t kPairs = 0x80 * 0x100;
constexpr uint32_t kShiftJISRows = 0x3000;
constexpr uint32_t kAsciiPage = 1;  // any number without a meaning of its own

uint32_t pairIndex(uint8_t lead, uint8_t trail) {
    return (lead - 0x80u) * 0x100u + trail;
}

/** A converter that stops at what it can't convert. */
class Converter {
public:
    explicit Converter(const char* name) : converter(ucnv_open(name, &error)) {
        ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    }
    ~Converter() { ucnv_close(converter); }
    Converter(const Converter&) = delete;

    tchar unitOf(const char* bytes, int32_t size) const {
        UErrorCode result = error;
        UChar units[4];
        const int32_t count = ucnv_toUChars(converter, units, int32_t(std::size(units)), bytes, size, &result);
        return U_SUCCESS(result) && count == 1 ? units[0] : kNoUnit;
    }
    /** 0 for none. */
    uint16_t bytesOf(tchar unit) const {
        UErrorCode result = error;
        char bytes[4];
        const int32_t count = ucnv_fromUChars(converter, bytes, int32_t(std::size(bytes)), &unit, 1, &result);
        if (unit == kNoUnit || U_FAILURE(result) || count < 1 || count > 2)
            return 0;
        const uint16_t first = uint8_t(bytes[0]);
        return count == 1 ? first : uint16_t(first << 8 | uint8_t(bytes[1]));
    }

private:
    UErrorCode error = U_ZERO_ERROR;
    UConverter* converter;  // null where the service lacks it: then nothing converts
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

template <const char* kConverter, uint32_t kReverseRows = 0x80, uint32_t kPairUnits = 0>
const PageTable* pageTable() {
    static const PageTableOf<kReverseRows, kPairUnits> table(kConverter);
    return &table;
}

constexpr char kMacRoman[] = "macintosh", kShiftJIS[] = "ibm-943_P15A-2003", kLatin1[] = "ibm-5348_P100-1997",
               kMacCentralEurope[] = "macos-29-10.2", kAscii[] = "US-ASCII";
constexpr PageRow kPages[] = {
    {kCodePageMacRoman, 0, 1, pageTable<kMacRoman>},
    {kCodePageShiftJIS, 1576, 2, pageTable<kShiftJIS, kShiftJISRows, kPairs>},
    {kCodePageLatin1, 1280, 1, pageTable<kLatin1>},
    {kCodePageMacCentralEurope, 29, 1, pageTable<kMacCentralEurope>},
    {kCodePageUTF8, 0x8000100, 3, nullptr},
    {kAsciiPage, 1536, 1, pageTable<kAscii>},
};
}  // namespace

constinit uint32_t kDefaultSystemEncoding = 0;

Character PageTable::decode(std::string_view src) const {
    const uint8_t lead = uint8_t(src[0]);
    if (single[lead - 0x80] != kNoUnit)
        return {single[lead - 0x80], 1};
    if (!pairs || src.size() < 2 || pairs[pairIndex(lead, uint8_t(src[1]))] == kNoUnit)
        return {};
    return {pairs[pairIndex(lead, uint8_t(src[1]))], 2};
}

uint32_t PageTable::encode(char32_t code, char* bytes) const {
    const ReverseRow* end = reverse + reverseCount;
    const ReverseRow* row = std::ranges::lower_bound(reverse, end, code, {}, &ReverseRow::unit);
    if (row == end || row->unit != code)
        return 0;
    const uint32_t size = row->bytes > 0xFF ? 2 : 1;
    bytes[0] = char(size == 2 ? row->bytes >> 8 : row->bytes);
    bytes[1] = char(row->bytes);
    return size;
}

void PageTable::build(const char* converterName) {
    const Converter converter(converterName);
    const auto addReverse = [&](tchar unit) {
        if (const uint16_t bytes = converter.bytesOf(unit))
            reverse[reverseCount++] = {unit, bytes};
    };
    if (pairs)
        std::fill_n(pairs, kPairs, kNoUnit);
    for (uint32_t lead = 0x80; lead <= 0xFF; ++lead) {
        char bytes[2] = {char(lead)};
        tchar& alone = single[lead - 0x80];
        alone = converter.unitOf(bytes, 1);
        addReverse(alone);
        for (uint32_t trail = 0x40; pairs && alone == kNoUnit && trail <= 0xFF; ++trail) {
            bytes[1] = char(trail);
            tchar& both = pairs[pairIndex(uint8_t(lead), uint8_t(trail))];
            both = converter.unitOf(bytes, 2);
            addReverse(both);
        }
    }
    std::ranges::sort(reverse, reverse + reverseCount, {}, &ReverseRow::unit);
    const auto same = [](const ReverseRow& a, const ReverseRow& b) { return a.unit == b.unit; };
    reverseCount = uint32_t(std::unique(reverse, reverse + reverseCount, same) - reverse);
}

const PageRow& pageOf(uint32_t codePage) {
    const auto row = codePage == kCodePageDefault
                         ? std::ranges::find(kPages, kDefaultSystemEncoding, &PageRow::encoding)
                         : std::ranges::find(kPages, codePage, &PageRow::codePage);
    return row == std::end(kPages) ? std::end(kPages)[-1] : *row;
}

uint32_t codePageOfEncoding(uint32_t encoding) {
    const auto row = std::ranges::find(kPages, encoding, &PageRow::encoding);
    return row == std::end(kPages) ? kAsciiPage : row->codePage;
}

}  // namespace Tessarine
