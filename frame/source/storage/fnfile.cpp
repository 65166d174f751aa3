#include "fnerrors.h"
#include "pathsteps.h"
#include "platformname.h"
#include "storage/fbstream.h"
#include "storage/ffilesystem.h"
#include "storage/fsystemshell.h"
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessarine {
namespace {
constexpr mode_t kWriteForAll = 0222;

bool linkStatusOf(const FPath* path, struct stat& status) {
    return ::lstat(PlatformName(path), &status) == 0;
}

/** What can't be expressed, as half a pair, doesn't. */
bool fitsOnDisk(const FString& name) {
    const size_t bytes = std::strlen(PlatformName(units16(name)));
    return bytes > 0 && bytes <= NAME_MAX;
}
}  // namespace

bool FNFileSystem::makeSystemName(FString& name) {
    FString made(name.text16());
    makeValidName(made);
    while (!made.isEmpty() && !fitsOnDisk(made))
        made.remove(made.length() - 1);
    if (made.isEmpty() || made == u"." || made == u"..")
        made = u"_";
    const bool changed = !(made == name);
    name = made;
    return changed;
}

bool FNFileSystem::makeValidPath(FPath* path) {
    if (!path)
        return false;
    FString text, valid;
    path->getFullPath(text);
    if (path->isAbsolute())
        valid = u"/";
    for (const std::u16string_view step : pathSteps(units16(text))) {
        FString name(step.data(), int32_t(step.size()));
        makeValidName(name);
        valid += name.isEmpty() ? FString(u"_") : name;
        valid += u"/";
    }
    if (valid.length() > 1)
        valid.remove(valid.length() - 1);
    const bool changed = !(valid == text);
    const FFileType type = path->getFileType();
    path->fromString(valid.text16(), path->getKind());
    path->setFileType(type);
    return changed;
}

bool FNFileSystem::changeFileType(FPath* path, const FFileType& type) {
    if (!path)
        return false;
    FPath changed(*path);
    changed.setFileType(type);
    if (changed.updateExtension(true) && !renameFile(path, changed.getName()))
        return false;
    *path = changed;
    return true;
}

bool FNFileSystem::verifyType(FPath* path, const FFileType& type) {
    FStream* stream = openFile(path, kOpenRead);
    if (!stream)
        return false;
    const FFileType* found = FFileType::getTypeByStream(stream);
    closeFile(stream);
    FPath typed(*path);
    typed.setFileType(type);
    return found ? *found == type : typed.getExtensionIndex(true) >= 0;
}

bool FNFileSystem::getFileSizeString(FPath* path, FString& text) {
    const int64_t size = getFileSize(path);
    if (size >= 0)
        makeFileSizeString(double(size), text);
    return size >= 0;
}

bool FNFileSystem::canWrite(const FPath* path) {
    return ::faccessat(AT_FDCWD, PlatformName(path), W_OK, AT_EACCESS) == 0;
}

bool FNFileSystem::enableWrite(const FPath* path, bool state) {
    const PlatformName name(path);
    struct stat status;
    if (::stat(name, &status) != 0)
        return told(false);
    const mode_t rights = status.st_mode & 07777;
    return told(::chmod(name, state ? rights | S_IWUSR : rights & ~kWriteForAll) == 0);
}

bool FNFileSystem::isHidden(const FPath* path) {
    return path && *path->getName() == u'.';
}

bool FNFileSystem::isSymlink(const FPath* path) {
    struct stat status;
    return linkStatusOf(path, status) && S_ISLNK(status.st_mode);
}

bool FNFileSystem::readSymlink(const FPath* link, FNPath& target) {
    char name[PATH_MAX];
    const ssize_t length = ::readlink(PlatformName(link), name, sizeof name - 1);
    FString text;
    if (length <= 0)
        return false;
    name[length] = 0;
    if (!text.fromUTF8(name))
        return false;
    FNPath found(text.text16(), kFilePath);
    if (!found.isAbsolute()) {
        static_cast<FPath&>(found) = *link;
        found.ascend() ? found.descend(text.text16(), kFilePath) : found.fromString(text.text16(), kFilePath);
    }
    target = found;
    return true;
}

bool FNFileSystem::createSymlink(const FPath* link, const FPath* target) {
    return told(::symlink(PlatformName(target), PlatformName(link)) == 0);
}

bool FNFileSystem::createLink(const FPath* link, const FPath* target) {
    return told(::link(PlatformName(target), PlatformName(link)) == 0);
}

bool FNFileSystem::checkResolveLink(FNPath* path) {
    const RealName name = realNameOf(PlatformName(path));
    if (!name || !path->fromPlatformPath(name.get()))
        return false;
    path->setKind(dirExists(path) ? kFolderPath : kFilePath);
    return true;
}

bool FNFileSystem::openUrl(const tchar* url) {
    return FSystemShell::executeURL(url);
}

}  // namespace Tessarine
