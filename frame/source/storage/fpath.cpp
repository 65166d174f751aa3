#include "storage/fpath.h"
#include "storage/ffilesystem.h"
#include "storage/hooks.h"

namespace Tessarine {
namespace {
constexpr tchar kSeparator = u'/';

void endWithSeparator(FString& folders) {
    if (!folders.isEmpty() && folders.getChar16(folders.length() - 1) != kSeparator)
        folders += kSeparator;
}

/** "a/b//" to "a/b"; the root stays. */
bool dropLastSeparators(FString& text) {
    const uint32_t before = text.length();
    while (text.length() > 1 && text.getChar16(text.length() - 1) == kSeparator)
        text.remove(text.length() - 1);
    return text.length() < before;
}
}  // namespace

IMPLEMENT_CLASS(FPath, CmObject)
IMPLEMENT_CLASS(FNPath, FPath)

void FPath::setPathName(const tchar* text) {
    pathName = text;
    endWithSeparator(pathName);
}

void FPath::getFullPath(FString& text) const {
    text = pathName;
    text += name;
}

void FPath::fromString(const tchar* text, int32_t newKind) {
    FString rest(text);
    const bool folder = dropLastSeparators(rest) || rest == u"/";
    const int32_t separator = rest.findPrev(-1, kSeparator);
    kind = int16_t(folder ? (newKind & ~kPathKindMask) | kFolderPath : newKind);
    pathName.assign(rest, separator + 1);
    name = rest.text16() + separator + 1;
}

void FPath::descend(const tchar* text, int32_t newKind) {
    endWithSeparator(pathName);
    FString folder(pathName);
    folder += name;
    endWithSeparator(folder);
    folder += text;
    fromString(folder.text16(), newKind);
}

bool FPath::ascend() {
    if (isRootDir() || pathName.isEmpty())
        return false;
    const FString folder(pathName);
    fromString(folder.text16(), kFolderPath);
    return true;
}

bool FPath::isRootDir() const {
    return name.isEmpty() && pathName == u"/";
}

bool FPath::operator==(const FPath& other) const {
    FString mine, others;
    getFullPath(mine);
    other.getFullPath(others);
    return mine == others;
}

FNPath::FNPath(int32_t kind) : FNPath(nullptr, kind) {}

FNPath::FNPath(const tchar* text, int32_t kind) {
    fromString(text, kind);
}

FNPath::FNPath(const tchar* text, const FNPath* folder, int32_t kind) {
    if (folder)
        *this = *folder;
    descend(text, kind);
}

FNPath::FNPath(const tchar* text, int32_t standardFolder, int32_t kind, const tchar* subFolder, bool create) {
    getStandardFolder(standardFolder, subFolder, create);
    if (!isEmpty())
        descend(text, kind);
}

bool FNPath::getStandardFolder(int32_t number, const tchar* subFolder, bool create) {
    FNPath folder(kFolderPath);
    const bool known = gStorageHooks.standardFolder && gStorageHooks.standardFolder(number, folder);
    *this = known ? folder : FNPath(kFolderPath);
    if (!known)
        return false;
    if (subFolder && *subFolder)
        descend(subFolder, kFolderPath);
    return !create || gFileSystem->createDir(this);
}

}  // namespace Tessarine
