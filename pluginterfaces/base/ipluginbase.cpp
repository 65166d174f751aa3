#include "pluginterfaces/base/ipluginbase.h"

namespace Tessarine {
namespace {
/** Into a zeroed field, cut so that a terminator stays. */
template <size_t Size>
void fill(char (&field)[Size], const char* text) {
    if (text)
        std::memcpy(field, text, strnlen(text, Size - 1));
}

template <size_t Size>
void widen(tchar (&field)[Size], const char (&text)[Size]) {
    std::memset(field, 0, sizeof(field));
    for (size_t i = 0; i + 1 < Size && text[i]; ++i)
        field[i] = tchar(uint8_t(text[i]));
}
}  // namespace

PFactoryInfo::PFactoryInfo(const char* vendorText, const char* urlText, const char* emailText, int32_t flagBits)
    : flags(flagBits | kUnicode) {
    fill(vendor, vendorText);
    fill(url, urlText);
    fill(email, emailText);
}

PClassInfo::PClassInfo(const char* cidBytes, int32_t count, const char* categoryText, const char* nameText)
    : cardinality(count) {
    std::memcpy(cid, cidBytes, sizeof(cid));
    fill(category, categoryText);
    fill(name, nameText);
}

PClassInfo2::PClassInfo2(const char* cidBytes, int32_t count, const char* categoryText, const char* nameText,
                         uint32_t flagBits, const char* subCategoriesText, const char* vendorText,
                         const char* versionText, const char* sdkVersionText)
    : PClassInfo2(PClassInfo(cidBytes, count, categoryText, nameText)) {
    classFlags = flagBits;
    fill(subCategories, subCategoriesText);
    fill(vendor, vendorText);
    fill(version, versionText);
    fill(sdkVersion, sdkVersionText);
}

PClassInfo2::PClassInfo2(const PClassInfo& info) : cardinality(info.cardinality) {
    std::memcpy(cid, info.cid, sizeof(cid));
    std::memcpy(category, info.category, sizeof(category));
    std::memcpy(name, info.name, sizeof(name));
}

void PClassInfoW::fromAscii(const PClassInfo2& info) {
    std::memcpy(cid, info.cid, sizeof(cid));
    cardinality = info.cardinality;
    std::memcpy(category, info.category, sizeof(category));
    widen(name, info.name);
    classFlags = info.classFlags;
    std::memcpy(subCategories, info.subCategories, sizeof(subCategories));
    widen(vendor, info.vendor);
    widen(version, info.version);
    widen(sdkVersion, info.sdkVersion);
}

}  // namespace Tessarine
