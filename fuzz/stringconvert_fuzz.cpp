// Bytes and units through every code page and back, beside the Unicode service: malformed input keeps the old text, a
// character that is lacking is one question mark, and no buffer of any size is overrun.
#include "base/source/fstring.h"
#include "fuzz/demand.h"
#include <memory>
#include <string>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

using namespace Tessarine;

namespace {
constexpr char kLossByte = '?';

struct Page {
    uint32_t codePage;
    const char* converter;
};
constexpr Page kPages[] = {
    {kCodePageMacRoman,         "macintosh"         },
    {kCodePageShiftJIS,         "ibm-943_P15A-2003" },
    {kCodePageLatin1,           "ibm-5348_P100-1997"},
    {kCodePageMacCentralEurope, "macos-29-10.2"     },
    {1,                         "US-ASCII"          },
    {kCodePageUTF8,             "UTF-8"             },
};

/** A converter that stops at what it can't convert, and knows the bytes of one unit. */
UConverter* converterOf(const Page& page) {
    static UConverter* converters[std::size(kPages)];
    UConverter*& converter = converters[&page - kPages];
    if (!converter) {
        UErrorCode error = U_ZERO_ERROR;
        converter = ucnv_open(page.converter, &error);
        ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        demand(U_SUCCESS(error));
    }
    return converter;
}

/** false: malformed. */
bool decoded(const Page& page, const std::string& bytes, std::u16string& units) {
    units.clear();
    UErrorCode error = U_ZERO_ERROR;
    if (page.codePage == kCodePageShiftJIS) {  // the service turns three controls of this page, we don't
        const char* src = bytes.data();
        while (src < bytes.data() + bytes.size()) {
            if (uint8_t(*src) < 0x80) {
                units += char16_t(*src++);
                continue;
            }
            const UChar32 c = ucnv_getNextUChar(converterOf(page), &src, bytes.data() + bytes.size(), &error);
            if (U_FAILURE(error)) {
                ucnv_reset(converterOf(page));
                return false;
            }
            units += char16_t(c);
        }
        return true;
    }
    units.resize(bytes.size() + 1);
    const int32_t size = ucnv_toUChars(converterOf(page), units.data(), int32_t(units.size()), bytes.data(),
                                       int32_t(bytes.size()), &error);
    units.resize(U_SUCCESS(error) ? size_t(size) : 0);
    return U_SUCCESS(error);
}

std::string encoded(const Page& page, const std::u16string& units) {
    std::string bytes;
    for (size_t at = 0; at < units.size();) {
        const size_t count = U16_IS_LEAD(units[at]) && at + 1 < units.size() && U16_IS_TRAIL(units[at + 1]) ? 2 : 1;
        char character[8];
        UErrorCode error = U_ZERO_ERROR;
        const int32_t size =
            ucnv_fromUChars(converterOf(page), character, 8, units.data() + at, int32_t(count), &error);
        if (units[at] < 0x80)
            bytes += char(units[at]);
        else if (U_FAILURE(error) || size == 0)
            bytes += kLossByte;
        else
            bytes.append(character, size_t(size));
        at += count;
    }
    return bytes;
}

void checkDecoding(const Page& page, const std::string& bytes) {
    std::u16string expected;
    const bool whole = decoded(page, bytes, expected);
    String text(bytes.c_str());
    demand(text.toWideString(page.codePage) == whole);
    demand(text.isWideString() == whole);
    demand(whole ? text.text16() == expected : text.text8() == bytes);
    for (int32_t room : {1, 2, 5, 17}) {
        const std::unique_ptr<tchar[]> units(new tchar[size_t(room)]);
        const int32_t count = ConstString::multiByteToWideString(units.get(), bytes.c_str(), room, page.codePage);
        demand(count <= room && (!whole || expected.starts_with(units.get())));
    }
}

void checkEncoding(const Page& page, const std::u16string& units) {
    const std::string expected = encoded(page, units);
    String text(units.c_str());
    demand(text.toMultiByte(page.codePage) && text.text8() == expected);
    demand(text.length() == expected.size());
    for (int32_t room : {1, 2, 5, 17}) {
        const std::unique_ptr<char[]> bytes(new char[size_t(room)]);
        const int32_t count = ConstString::wideStringToMultiByte(bytes.get(), units.c_str(), room, page.codePage);
        demand(count >= 1 && count <= room && expected.starts_with(bytes.get()));
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const Page& page = kPages[data[0] % std::size(kPages)];
    std::string bytes(data + 1, data + size);
    bytes = bytes.c_str();
    std::u16string units;
    for (size_t at = 1; at + 1 < size; at += 2)
        units += char16_t(data[at] | data[at + 1] << 8);
    units = units.substr(0, units.find(u'\0'));
    if (units.find(u'\uF86F') == units.npos && !units.empty())  // mapped by the service in one direction alone
        checkEncoding(page, units);
    if (!bytes.empty())
        checkDecoding(page, bytes);
    return 0;
}
