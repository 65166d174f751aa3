#include "storage/ffiletype.h"
#include <algorithm>
#include <iterator>
#include <vector>

namespace Tessarine {
namespace {
enum Match { kUnknown, kSame, kDifferent };

Match matchTexts(const FString& a, const FString& b, CompareMode mode) {
    if (a.isEmpty() || b.isEmpty())
        return kUnknown;
    return a.compare(b, mode) == 0 ? kSame : kDifferent;
}

Match matchCodes(uint32_t a, uint32_t b) {
    if (a == 0 || b == 0)
        return kUnknown;
    return a == b ? kSame : kDifferent;
}

std::vector<const FFileType*>& knownTypes() {
    static std::vector<const FFileType*> types;
    return types;
}
}  // namespace

IMPLEMENT_CLASS(FFileType, CmObject)

FFileType::FFileType(const tchar* name, const tchar* dosType, const tchar* unixType, uint32_t macType,
                     const tchar* mimeType, const tchar* uti)
    : name(name), dosType(dosType), unixType(unixType), macType(macType), mimeType(mimeType), uti(uti) {}

bool FFileType::isValid() const {
    return !dosType.isEmpty() || !unixType.isEmpty() || macType != 0 || !mimeType.isEmpty() || !uti.isEmpty();
}

bool FFileType::operator==(const FFileType& other) const {
    const Match matches[] = {
        matchTexts(dosType, other.dosType, kIgnoreCase),
        matchTexts(unixType, other.unixType, kIgnoreCase),
        matchCodes(macType, other.macType),
        matchTexts(mimeType, other.mimeType, kIgnoreCase),
        matchTexts(uti, other.uti, kIgnoreCase),
    };
    return std::ranges::count(matches, kSame) > 0 && std::ranges::count(matches, kDifferent) == 0;
}

void FFileType::registerType(const FFileType* type) {
    knownTypes().push_back(type);
}

const FFileType* FFileType::getTypeByString(const ConstString& extension) {
    const auto found = std::ranges::find_if(knownTypes(), [&](const FFileType* type) {
        return matchTexts(type->dosType, FString(extension), kIgnoreCase) == kSame;
    });
    return found != knownTypes().end() ? *found : nullptr;
}

}  // namespace Tessarine
