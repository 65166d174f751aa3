#include "storage/ffilesystem.h"

namespace Tessarine {
namespace {
constexpr const char* kAnyType = "Global Default";

/** Default Path for ".xml" Files */
FString keyOf(const FFileType* type) {
    FString key(kAnyType);
    if (!type)
        return key;
    FString extension(type->getUnixType().isEmpty() ? type->getDosType() : type->getUnixType());
    key = "Default Path for \".";
    key += extension.text8();
    key += "\" Files";
    return key;
}
}  // namespace

bool FNFileSystem::storeLastPath(const FNPath& folder, const FFileType* type) {
    return folder.storeAsDefault(keyOf(type).text8());
}

bool FNFileSystem::loadLastPath(FNPath& folder, const FFileType* type) {
    return folder.fromDefault(keyOf(type).text8());
}

}  // namespace Tessarine
