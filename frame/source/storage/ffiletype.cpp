#include "storage/ffiletype.h"
#include "storage/fbstream.h"
#include "storage/fpersistent.h"
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

std::vector<FFileType::Identifier>& knownIdentifiers() {
    static std::vector<FFileType::Identifier> identifiers;
    return identifiers;
}

constexpr const char* kMacTypeKey = "MacType";
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

bool FFileType::isEqual(const CmObject* other) const {
    const auto* type = classCast<FFileType>(other);
    return type && *this == *type;
}

bool FFileType::storeAttributes(FAttributes& attributes) const {
    return attributes.set("Name", name) && attributes.set("DosType", dosType) && attributes.set("UnixType", unixType) &&
           attributes.set(kMacTypeKey, macType);
}

bool FFileType::restoreAttributes(FAttributes& attributes) {
    FFileType restored;
    bool any = false;
    for (const auto& [key, text] : {std::pair("Name", &restored.name), std::pair("DosType", &restored.dosType),
                                    std::pair("UnixType", &restored.unixType)})
        any |= attributes.get(key, *text);
    any |= attributes.get(kMacTypeKey, restored.macType);
    if (any)
        *this = restored;
    return any;
}

bool FFileType::hasExtension(const ConstString& extension) const {
    return std::ranges::any_of(std::initializer_list<const FString*>{&dosType, &unixType}, [&](const FString* own) {
        return matchTexts(*own, FString(extension), kIgnoreCase) == kSame;
    });
}

const FFileType* FFileType::getTypeByString(const ConstString& extension) {
    const auto found =
        std::ranges::find_if(knownTypes(), [&](const FFileType* type) { return type->hasExtension(extension); });
    return found != knownTypes().end() ? *found : nullptr;
}

void FFileType::registerTypeIdentifier(Identifier identifier) {
    knownIdentifiers().push_back(identifier);
}

const FFileType* FFileType::getTypeByStream(FStream* stream) {
    const int64_t place = stream ? stream->tell() : -1;
    if (place < 0)
        return nullptr;
    char bytes[kIdentifiedBytes];
    const int64_t size = stream->readRaw(bytes, kIdentifiedBytes);
    stream->seek(place, kFromStart);
    if (size <= 0)
        return nullptr;
    for (const Identifier identifier : knownIdentifiers())
        if (const FFileType* type = identifier(bytes, int32_t(size)))
            return type;
    return nullptr;
}

const FFileType& StdFileType::getTextFileType() {
    static const FFileType type(u"Text File", u"txt", u"txt", 0x54455854, u"text/plain");  // TEXT
    return type;
}

}  // namespace Tessarine
