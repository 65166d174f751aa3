#include "pathsteps.h"
#include "platformname.h"
#include "storage/farchive.h"
#include "storage/fbstream.h"
#include "storage/ffilesystem.h"
#include "storage/fpersistent.h"
#include "storage/furl.h"
#include "storage/hooks.h"
#include <algorithm>
#include <cstring>

namespace Tessarine {
namespace {
constexpr const char* kDefaultsPool = "Default Paths";
constexpr const char* kNameKey = "Name";
constexpr const char* kPathKey = "Path";
constexpr const char* kKindKey = "Type";
constexpr const char* kFileTypeKey = "FileType";
constexpr const char* kFormKey = "PathType";

bool holdsAscent(const PathSteps& steps) {
    return std::ranges::find(steps, u"..") != steps.end();
}
}  // namespace

IMPLEMENT_CLASS(FNPath, FPath)
constinit bool FNPath::storeAttrFileType = false;

FNPath::FNPath(int32_t kind) : FNPath(nullptr, kind) {}

FNPath::FNPath(const tchar* text, int32_t kind) {
    fromString(text, kind);
}

FNPath::FNPath(const tchar* text, const FNPath* folder, int32_t kind) {
    if (folder)
        *this = *folder;
    descend(text, kind);
}

FNPath::FNPath(const FNPath* base, const FNPath* target) {
    assignRelative(base, target);
}

FNPath::FNPath(const tchar* text, int32_t standardFolder, int32_t kind, const tchar* subFolder, bool create) {
    getStandardFolder(standardFolder, subFolder, create);
    if (!isEmpty())
        descend(text, kind);
}

bool FNPath::fromPlatformPath(const void* bytes) {
    FString text;
    if (!bytes || !text.fromUTF8(static_cast<const char*>(bytes)))
        return false;
    fromString(text.text16(), getKind());
    return true;
}

bool FNPath::toPlatformPath(void* bytes) const {
    auto* const name = static_cast<char*>(bytes);
    const PlatformName platformName(this);
    const size_t length = std::strlen(platformName);
    const bool fits = length > 0 && length < kPlatformPathLength;
    *std::copy_n(static_cast<const char*>(platformName), fits ? length : 0, name) = 0;
    return fits;
}

FUrl* FNPath::createURL() const {
    if (!isAbsolute() || *static_cast<const char*>(PlatformName(this)) == 0)
        return nullptr;
    FString file(fullTextOf(*this).text16() + 1);
    FUrl::urlEncode(file);
    file.replace(ConstString(u"?"), ConstString(u"%3f"));  // it would begin a query
    if (isFolder() && !file.isEmpty())
        file += u"/";
    return new FUrl(u"file", u"", file.text16());
}

int64_t FNPath::getSize() const {
    FNPath path(*this);
    return gFileSystem->getFileSize(&path);
}

bool FNPath::assignRelative(const FNPath* base, const FNPath* target) {
    if (!base || !target || !base->isAbsolute() || !target->isAbsolute())
        return false;
    const FString baseText = fullTextOf(*base), targetText = fullTextOf(*target);
    const PathSteps from = pathSteps(units16(baseText)), to = pathSteps(units16(targetText));
    if (holdsAscent(from))
        return false;
    const auto parting = std::ranges::mismatch(from, to);
    PathSteps way(size_t(from.end() - parting.in1), u"..");
    way.insert(way.end(), parting.in2, to.end());
    if (way.empty())
        way.push_back(u".");
    FString text;
    appendSteps(text, way);
    const FFileType type = target->getFileType();
    fromString(text.text16(), target->getKind());
    setFileType(type);
    return true;
}

FNPath FNPath::createAbsolutePath(const FNPath* base) const {
    FString text;
    if (!isAbsolute() && base) {
        base->getFullPath(text);
        text += u"/";
    }
    text += fullTextOf(*this);
    FString resolved(text.getChar16(0) == u'/' ? u"/" : u"");
    appendSteps(resolved, resolvedSteps(units16(text)));
    FNPath absolute(*this);
    absolute.fromString(resolved.text16(), getKind());
    return absolute;
}

bool FNPath::makeAbsolute(const FNPath* base) {
    if (!isAbsolute() && (!base || !base->isAbsolute()))
        return false;
    *this = createAbsolutePath(base);
    return true;
}

int32_t FNPath::countAscendLevels() const {
    const FString text = fullTextOf(*this);
    const PathSteps steps = pathSteps(units16(text));
    return int32_t(std::ranges::find_if(steps, [](auto step) { return step != u".."; }) - steps.begin());
}

bool FNPath::uniqueName() {
    FString stem, extension;
    const bool extended = getExtension(extension);
    getNameWithoutExtension(stem, false);
    const auto exists = [this] {
        return gFileSystem->fileExists(this) || gFileSystem->dirExists(this) || gFileSystem->isSymlink(this);
    };
    bool changed = false;
    for (int32_t number = 1; exists(); ++number) {
        FString mark, numbered(stem);
        numbered += mark.printf(extended ? "-%02d." : "-%02d", number);
        numbered += extension;
        setName(numbered.text16());
        changed = true;
    }
    return changed;
}

bool FNPath::makeValidName(tchar replacement) {
    FString valid(getName());
    const bool changed = gFileSystem->makeValidName(valid, replacement, true);
    setName(valid.text16());
    return changed;
}

bool FNPath::storeAsDefault(const char* key) const {
    return gStorageHooks.storeDefault && gStorageHooks.storeDefault(kDefaultsPool, key, *this);
}

bool FNPath::fromDefault(const char* key) {
    return gStorageHooks.loadDefault && gStorageHooks.loadDefault(kDefaultsPool, key, *this);
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

bool FNPath::internalize(FArchive& archive) {
    FStream& stream = archive.getStream();
    int32_t form = 0;
    int16_t kind = 0;
    FString name, folders;
    if (!stream.readInt32(form) || form != kPathForm || !stream.readInt16(kind) || !name.internalize(archive) ||
        !folders.internalize(archive))
        return false;
    setName(name.text16());
    setPathName(folders.text16());
    setKind(kind);
    return true;
}

bool FNPath::externalize(FArchive& archive) const {
    FStream& stream = archive.getStream();
    return stream.writeInt32(kPathForm) && stream.writeInt16(getKind()) && FString(getName()).externalize(archive) &&
           FString(getPathName()).externalize(archive);
}

bool FNPath::storeAttributes(FAttributes& attributes) const {
    const bool stored = attributes.set(kNameKey, ConstString(getName())) &&
                        attributes.set(kPathKey, ConstString(getPathName())) && attributes.set(kKindKey, getKind());
    if (!stored)
        return false;
    if (storeAttrFileType && !isFolder() && !attributes.setMember(kFileTypeKey, getFileType()))
        return false;
    return attributes.set(kFormKey, kPathForm);
}

bool FNPath::restoreAttributes(FAttributes& attributes) {
    FString name, folders;
    int16_t kind = kFilePath;
    int32_t form = kPathForm;
    attributes.get(kFormKey, form);
    if (form != kPathForm || !attributes.get(kNameKey, name) || !attributes.get(kPathKey, folders))
        return false;
    attributes.get(kKindKey, kind);
    setName(name.text16());
    setPathName(folders.text16());
    setKind(kind);
    FFileType type;
    setFileType(attributes.getMember(kFileTypeKey, type) ? type : FFileType());
    return true;
}

}  // namespace Tessarine
