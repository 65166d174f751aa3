#include "collect/cmdate.h"
#include "fnerrors.h"
#include "pathsteps.h"
#include "platformname.h"
#include "pluginterfaces/base/smartpointer.h"
#include "samefile.h"
#include "storage/ffilesystem.h"
#include "storage/ffstream.h"
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace Tessarine {
namespace {
constexpr mode_t kNewFolderRights = 0777;  // less what the user's mask takes away
constexpr mode_t kRights = 0777;
constexpr const tchar* kAsideName = u"moved";  // short: there is room for the mark, however long the file's own is

bool statusOf(const FPath* path, struct stat& status) {
    return ::stat(PlatformName(path), &status) == 0;
}

/** Something that isn't a folder. */
bool fileStatusOf(const FPath* path, struct stat& status) {
    return statusOf(path, status) && !S_ISDIR(status.st_mode);
}

/** It stands there; false: errno says why it couldn't be made. */
bool makeFolder(const FPath* path) {
    if (::mkdir(PlatformName(path), kNewFolderRights) == 0)
        return true;
    const int code = errno;
    struct stat status;
    const bool stands = statusOf(path, status) && S_ISDIR(status.st_mode);
    errno = code;
    return stands;
}

/** With those above it that are missing. */
bool makeFolders(const FPath& path) {
    if (makeFolder(&path))
        return true;
    FPath above(path);
    return errno == ENOENT && above.ascend() && makeFolders(above) && makeFolder(&path);
}

bool renameOnDisk(const char* from, const char* to, bool overwrite) {
    if (overwrite)
        return std::rename(from, to) == 0;
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0)
        return true;
    struct stat status;  // some network disks don't know that call
    return errno == EINVAL && ::lstat(to, &status) != 0 && errno == ENOENT && std::rename(from, to) == 0;
}

/** Bytes go from it and to it without an end, and its rights are the system's. */
bool isDevice(const FPath* path) {
    struct stat status;
    return statusOf(path, status) && (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode));
}

void copyTimes(const FPath* from, const FPath* to) {
    struct stat status;
    if (::lstat(PlatformName(from), &status) != 0)
        return;
    const timespec times[] = {status.st_atim, status.st_mtim};
    ::utimensat(AT_FDCWD, PlatformName(to), times, AT_SYMLINK_NOFOLLOW);
}

/** The link itself, not what it leads to. */
bool copyLink(const FPath* from, const FPath* to) {
    std::error_code error;
    std::filesystem::copy_symlink(static_cast<const char*>(PlatformName(from)),
                                  static_cast<const char*>(PlatformName(to)), error);
    errno = error.value();
    return !error;
}

FStream* openStream(const FPath* path, int32_t mode, int32_t* error) {
    OPtr<FFileStream> stream(new FFileStream(mode));
    if (path)
        stream->setPath(*path);
    const bool opened = stream->open();
    if (error)
        *error = stream->getFirstError(false);
    errno = stream->getFirstError(false);
    return told(opened) ? stream.detach() : nullptr;
}

CmTime timeOf(const statx_timestamp& time) {
    return CmTime::fromUnixTime(time.tv_sec);
}

/** Iterates over a folder of the disk. */
class FNFileIterator : public FFileIterator {
public:
    FNFileIterator(const FPath& path, bool withHidden) : withHidden(withHidden) { static_cast<FPath&>(folder) = path; }

    /** false: no such folder. */
    bool readFolder();
    FPath* first() override;
    FPath* next() override;
    FPath* current() override { return position < entries.size() ? &shown : nullptr; }

    DECLARE_ABSTRACT_CLASS(FNFileIterator, FFileIterator)

private:
    struct Entry {
        std::string name;  // as on the disk
        FString text;
        int32_t kind;
    };
    void addEntry(int folderFile, const dirent& found);
    FPath* show();

    FNPath folder;
    bool withHidden;
    std::vector<Entry> entries;
    size_t position = 0;
    FNPath shown;
};

IMPLEMENT_ABSTRACT_CLASS(FNFileIterator, FFileIterator)

bool FNFileIterator::readFolder() {
    entries.clear();
    const std::unique_ptr<DIR, int (*)(DIR*)> opened(::opendir(PlatformName(&folder)), ::closedir);
    if (!opened)
        return false;
    errno = 0;
    while (const dirent* found = ::readdir(opened.get())) {
        addEntry(::dirfd(opened.get()), *found);
        errno = 0;
    }
    const bool whole = errno == 0;
    if (!whole)
        entries.clear();  // half of a folder would pass for all of it
    std::ranges::sort(entries, {}, &Entry::name);
    position = entries.size();
    return whole;
}

FPath* FNFileIterator::first() {
    readFolder();
    position = 0;
    return show();
}

FPath* FNFileIterator::next() {
    if (position < entries.size())
        ++position;
    return show();
}

void FNFileIterator::addEntry(int folderFile, const dirent& found) {
    struct stat status;
    const char* name = found.d_name;
    Entry entry{name, {}, kFilePath};
    const bool dots = entry.name == "." || entry.name == "..";
    const bool hidden = *name == '.';
    if (dots || (hidden && !withHidden) || !entry.text.fromUTF8(name))
        return;
    const bool known = ::fstatat(folderFile, name, &status, AT_SYMLINK_NOFOLLOW) == 0;
    if (!known && errno == ENOENT)
        return;  // gone meanwhile
    if (!known)
        status.st_mode = DTTOIF(found.d_type);  // a folder that may be listed, and not entered
    entry.kind = S_ISDIR(status.st_mode) ? kFolderPath : S_ISLNK(status.st_mode) ? kLinkPath : kFilePath;
    entry.kind |= hidden ? kHiddenPath : 0;
    entries.push_back(std::move(entry));
}

FPath* FNFileIterator::show() {
    if (position < entries.size())
        shown = FNPath(entries[position].text.text16(), &folder, entries[position].kind);
    return current();
}

constinit FNFileSystem disks;
}  // namespace

bool isSameFile(const FPath* a, const FPath* b) {
    struct stat first, second;
    return statusOf(a, first) && statusOf(b, second) && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

void copyRights(const FPath* from, const FPath* to) {
    struct stat status;
    if (fileStatusOf(from, status))
        ::chmod(PlatformName(to), status.st_mode & kRights);
}

constinit FNFileSystem* const gFileSystem = &disks;

IMPLEMENT_CLASS(FNFileSystem, FFileSystem)

FStream* FNFileSystem::createFile(FPath* path, int32_t mode, int32_t* error) {
    return openStream(path, mode | kOpenCreate, error);
}

FStream* FNFileSystem::openFile(FPath* path, int32_t mode, int32_t* error) {
    return openStream(path, mode, error);
}

int32_t FNFileSystem::convertOpenMode(int32_t mode) {
    return mode & (kOpenRead | kOpenWrite | kOpenShared | kOpenCreate);
}

bool FNFileSystem::closeFile(FStream* stream) {
    const OPtr<FStream> released(stream);
    auto* file = classCast<FFileStream>(stream);
    return file && file->close();
}

bool FNFileSystem::removeFile(FPath* path) {
    return told(::unlink(PlatformName(path)) == 0);
}

bool FNFileSystem::fileExists(FPath* path) {
    struct stat status;
    return fileStatusOf(path, status);
}

bool FNFileSystem::renameFile(FPath* path, const tchar* newName) {
    if (!path || !newName || !isPlainStep(newName))
        return false;
    FPath renamed(*path);
    renamed.setName(newName);
    return moveFile(path, &renamed, false);
}

bool FNFileSystem::moveFile(FPath* from, FPath* to, bool overwrite) {
    const PlatformName source(from), target(to);
    const bool moved = renameOnDisk(source, target, overwrite);
    return told(moved || (errno == EXDEV && moveToOtherDisk(from, to, overwrite)));
}

/** Through a copy beside the target, so that there too it appears in one step. */
bool FNFileSystem::moveToOtherDisk(FPath* from, FPath* to, bool overwrite) {
    const QuietErrors quiet;
    FPath aside(*to);
    aside.setName(kAsideName);
    if (!aside.makeUnique() || !(isSymlink(from) ? copyLink(from, &aside) : copyFile(from, &aside)))
        return false;
    copyTimes(from, &aside);
    const PlatformName source(&aside), target(to);
    const bool moved = renameOnDisk(source, target, overwrite);
    if (moved && removeFile(from))
        return true;
    const int32_t code = errno;
    if (!moved || !overwrite)  // what was overwritten doesn't come back
        removeFile(moved ? to : &aside);
    errno = code;
    return false;
}

bool FNFileSystem::copyFile(FPath* from, FPath* to, UProgressHook* hook, int32_t* error) {
    int32_t code = EINVAL;
    bool copied = !isSameFile(from, to) && !isDevice(from) && !isDevice(to);
    if (copied) {
        const QuietErrors quiet;
        copied = FFileSystem::copyFile(from, to, hook, &code);
    }
    if (error)
        *error = code;
    if (copied)
        copyRights(from, to);
    errno = code;
    return told(copied || code == ECANCELED) && copied;
}

bool FNFileSystem::createDir(FPath* path) {
    return path && told(makeFolders(*path));
}

bool FNFileSystem::changeDir(FPath* path) {
    return told(::chdir(PlatformName(path)) == 0);
}

bool FNFileSystem::getDirName(FPath* path, FString& name) {
    if (!path)
        return false;
    FNPath folder, current(u".", kFolderPath);
    static_cast<FPath&>(folder) = *path;
    if (!folder.isAbsolute() && !checkResolveLink(&current))
        return false;
    folder = folder.createAbsolutePath(&current);
    if (!dirExists(&folder) && !folder.ascend())
        return false;
    name = folder.isRootDir() ? u"/" : folder.getName();
    return true;
}

bool FNFileSystem::removeDir(FPath* path, bool withContent) {
    const PlatformName name(path);
    if (!withContent)
        return told(::rmdir(name) == 0);
    struct stat status;
    if (::lstat(name, &status) != 0)
        return told(false);
    std::error_code error = std::make_error_code(std::errc::not_a_directory);
    if (S_ISDIR(status.st_mode))
        std::filesystem::remove_all(static_cast<const char*>(name), error);
    errno = error.value();
    return told(!error);
}

bool FNFileSystem::getFileTimes(FPath* path, CmTime& created, CmTime& modified) {
    struct statx status;
    if (::statx(AT_FDCWD, PlatformName(path), 0, STATX_MTIME | STATX_BTIME, &status) != 0)
        return false;
    modified = timeOf(status.stx_mtime);
    created = status.stx_mask & STATX_BTIME ? timeOf(status.stx_btime) : modified;
    return true;
}

int64_t FNFileSystem::getFileSize(FPath* path) {
    struct stat status;
    return fileStatusOf(path, status) ? int64_t(status.st_size) : -1;
}

int64_t FNFileSystem::getFileSize(FStream* stream) {
    auto* file = classCast<FFileStream>(stream);
    return file ? file->getEof() : -1;
}

FFileIterator* FNFileSystem::newIterator(const FPath* folder, bool withHidden) {
    if (!folder)
        return nullptr;
    OPtr<FNFileIterator> iterator(new FNFileIterator(*folder, withHidden));
    return iterator->readFolder() ? iterator.detach() : nullptr;
}

}  // namespace Tessarine
