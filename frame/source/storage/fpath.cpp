#include "storage/fpath.h"
#include "pathsteps.h"
#include <algorithm>

namespace Tessarine {
namespace {
constexpr tchar kSeparator = u'/';
constexpr const tchar* kLeftOut = u"...";
constexpr uint32_t kMarkLength = 32;

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

bool hasExtensions(const FFileType& type) {
    return !type.getDosType().isEmpty() || !type.getUnixType().isEmpty();
}

/** The end of a text is below "/", and this below all others. */
int32_t treeRank(tchar c) {
    return c == 0 ? 0 : c == kSeparator ? 1 : c + 1;
}
}  // namespace

IMPLEMENT_CLASS(FPath, CmObject)

void FPath::setPathName(const tchar* text) {
    pathName = text;
    endWithSeparator(pathName);
}

void FPath::getFullPath(FString& text) const {
    text.remove();
    text.resize(pathName.length() + name.length(), true);
    text += pathName;
    text += name;
}

void FPath::setFileName(const ConstString& text) {
    const FString wide(text);
    name = wide.text16();
    detectFileType(true);
}

bool FPath::getExtension(FString& text, bool checkType) const {
    const int32_t index = getExtensionIndex(checkType);
    text = index < 0 ? u"" : name.text16() + index;
    return index >= 0;
}

int32_t FPath::getExtensionIndex(bool checkType) const {
    const int32_t dot = name.findPrev(-1, u'.');
    if (dot <= 0)
        return -1;
    const ConstString extension(name.text16() + dot + 1);
    const bool typed = hasExtensions(fileType);
    const bool fits = !typed ? !extension.contains(u" ") : !checkType || fileType.hasExtension(extension);
    return fits ? dot + 1 : -1;
}

void FPath::getNameWithoutExtension(FString& text, bool checkType) const {
    const int32_t index = getExtensionIndex(checkType);
    const FString whole(name);
    text.assign(whole, index < 0 ? -1 : index - 1);
}

bool FPath::updateExtension(bool replace) {
    if (!hasExtensions(fileType) || getExtensionIndex(true) >= 0)
        return false;
    FString updated(name);
    if (replace)
        getNameWithoutExtension(updated, false);
    updated += u".";
    updated += fileType.getUnixType().isEmpty() ? fileType.getDosType() : fileType.getUnixType();
    name = updated.text16();
    return true;
}

bool FPath::detectFileType(bool always) {
    const int32_t dot = name.findPrev(-1, u'.');
    if (!always && fileType.isValid())
        return true;
    const FFileType* known = dot > 0 ? FFileType::getTypeByString(ConstString(name.text16() + dot + 1)) : nullptr;
    if (known)
        fileType = *known;
    return known != nullptr;
}

void FPath::descend(const tchar* text, int32_t newKind) {
    endWithSeparator(pathName);
    FString folder(pathName);
    folder += name;
    endWithSeparator(folder);
    folder += text;
    FPath::fromString(folder.text16(), newKind);
}

bool FPath::ascend() {
    if (FPath::isRootDir() || pathName.isEmpty())
        return false;
    const FString folder(pathName);
    FPath::fromString(folder.text16(), kFolderPath);
    return true;
}

bool FPath::isRootDir() const {
    return name.isEmpty() && isRoot(pathName.text16());
}

bool FPath::isRoot(const tchar* text) {
    return ConstString(text) == u"/";
}

bool FPath::isAbsolute() const {
    return pathName.getChar16(0) == kSeparator;
}

bool FPath::isInDir(const FPath* folder) const {
    if (!folder || folder->isEmpty())
        return false;
    FString folders = fullTextOf(*folder);
    endWithSeparator(folders);
    const FString text = fullTextOf(*this);
    return text.length() > folders.length() && text.startsWith(folders);
}

bool FPath::makeUnique() {
    FUID id;
    if (!id.generate())
        return false;
    char mark[kMarkLength + 1];
    id.toString(mark);
    const int32_t index = getExtensionIndex(false);
    FString unique;
    getNameWithoutExtension(unique, false);
    unique += u"-";
    unique += mark;
    if (index >= 0)
        unique += name.text16() + index - 1;
    name = unique.text16();
    return true;
}

void FPath::fromString(const tchar* text, int32_t newKind) {
    FString rest(text);
    const bool folder = dropLastSeparators(rest) || rest == u"/";
    const int32_t separator = rest.findPrev(-1, kSeparator);
    kind = int16_t(folder ? (newKind & ~kPathKindMask) | kFolderPath : newKind);
    pathName.assign(rest, separator + 1);
    name = rest.text16() + separator + 1;
}

bool FPath::operator==(const FPath& other) const {
    return fullTextOf(*this) == fullTextOf(other);
}

bool FPath::isEqual(const CmObject* other) const {
    const auto* path = classCast<FPath>(other);
    return path && *this == *path;
}

uint32_t FPath::hash(uint32_t buckets) const {
    return hashString16(fullTextOf(*this).text16(), buckets);
}

int32_t FPath::compare(const CmObject* other) const {
    const auto* path = classCast<FPath>(other);
    return path ? FPathCompare::compareTreeStyle(fullTextOf(*this).text16(), fullTextOf(*path).text16())
                : CmObject::compare(other);
}

int32_t FPathCompare::compareTreeStyle(const tchar* a, const tchar* b, int32_t length) {
    a = a ? a : u"";
    b = b ? b : u"";
    for (int32_t i = 0; i != length; ++i) {
        if (a[i] != b[i])
            return treeRank(a[i]) - treeRank(b[i]);
        if (a[i] == 0)
            break;
    }
    return 0;
}

bool FFullPathString::wordWrap(uint32_t maxLength) {
    if (length() <= maxLength)
        return false;
    const uint32_t gap = std::min(ConstString(kLeftOut).length(), maxLength);
    const int32_t separator = findPrev(-1, kSeparator);
    const uint32_t tail = length() - uint32_t(std::max(separator, 0));  // "/name"
    const FString left(kLeftOut, int32_t(gap));
    if (tail + gap <= maxLength) {
        const uint32_t head = maxLength - gap - tail;
        replace(head, int32_t(length() - tail - head), left);
        return true;
    }
    if (separator >= 0)
        remove(0, separator + 1);
    if (length() > maxLength)
        replace(maxLength - gap, -1, left);
    return true;
}

}  // namespace Tessarine
