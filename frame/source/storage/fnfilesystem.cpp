#include "base/utranslatedstring.h"
#include "platformname.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/ffilesystem.h"
#include "storage/ffstream.h"
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <iterator>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace Tessarine {
namespace {
constexpr mode_t kNewFolderRights = 0777;  // less what the user's mask takes away

struct MessageRow {
    int32_t code;
    UTranslatedString text;
};
constexpr UTranslatedString kNotFound("The file/folder could not be found at this location.");
constexpr UTranslatedString kReadOnly("This disk is read only.");
constexpr UTranslatedString kFull("This disk is full.");
constexpr UTranslatedString kDefect("A reading/writing error occurred. This disk is not working normaly.");
constexpr UTranslatedString kNotPermitted("This operation is not allowed.");
constexpr MessageRow kMessages[] = {
    {0,            UTranslatedString("No error occurred.")    },
    {ENOENT,       kNotFound                                  },
    {ENOTDIR,      kNotFound                                  },
    {EROFS,        kReadOnly                                  },
    {ENOSPC,       kFull                                      },
    {EDQUOT,       kFull                                      },
    {EIO,          kDefect                                    },
    {EPERM,        kNotPermitted                              },
    {EACCES,       kNotPermitted                              },
    {ENAMETOOLONG, UTranslatedString("This name is too long.")},
};
constexpr UTranslatedString kUnexpected("An unexpected error occurred. The system's description is: ");

bool statusOf(const FPath* path, struct stat& status) {
    return ::stat(PlatformName(path), &status) == 0;
}

/** Something that isn't a folder. */
bool fileStatusOf(const FPath* path, struct stat& status) {
    return statusOf(path, status) && !S_ISDIR(status.st_mode);
}

bool makeFolder(const FPath* path) {
    struct stat status;
    return ::mkdir(PlatformName(path), kNewFolderRights) == 0 || (statusOf(path, status) && S_ISDIR(status.st_mode));
}

bool renameToFreeName(const char* from, const char* to) {
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0)
        return true;
    struct stat status;  // some network disks don't know that call
    return errno == EINVAL && ::lstat(to, &status) != 0 && errno == ENOENT && std::rename(from, to) == 0;
}

FStream* openStream(const FPath* path, int32_t mode, int32_t* error) {
    OPtr<FFileStream> stream(new FFileStream(mode));
    if (path)
        stream->setPath(*path);
    const bool opened = stream->open();
    if (error)
        *error = stream->getFirstError(false);
    return opened ? stream.detach() : nullptr;
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
    void addEntry(int folderFile, const char* name);
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
    while (const dirent* found = ::readdir(opened.get()))
        addEntry(::dirfd(opened.get()), found->d_name);
    std::ranges::sort(entries, {}, &Entry::name);
    position = entries.size();
    return true;
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

void FNFileIterator::addEntry(int folderFile, const char* name) {
    struct stat status;
    Entry entry{name, {}, kFilePath};
    const bool dots = entry.name == "." || entry.name == "..";
    const bool hidden = *name == '.';
    if (dots || (hidden && !withHidden) || !entry.text.fromUTF8(name))
        return;
    if (::fstatat(folderFile, name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return;  // gone meanwhile
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

constinit FNFileSystem* const gFileSystem = &disks;

IMPLEMENT_CLASS(FNFileSystem, FFileSystem)

FStream* FNFileSystem::createFile(FPath* path, int32_t mode, int32_t* error) {
    return openStream(path, mode | kOpenCreate, error);
}

FStream* FNFileSystem::openFile(FPath* path, int32_t mode, int32_t* error) {
    return openStream(path, mode, error);
}

bool FNFileSystem::closeFile(FStream* stream) {
    const OPtr<FStream> released(stream);
    auto* file = classCast<FFileStream>(stream);
    return file && file->close();
}

bool FNFileSystem::removeFile(FPath* path) {
    return ::unlink(PlatformName(path)) == 0;
}

bool FNFileSystem::fileExists(FPath* path) {
    struct stat status;
    return fileStatusOf(path, status);
}

bool FNFileSystem::renameFile(FPath* path, const tchar* newName) {
    if (!path)
        return false;
    FPath renamed(*path);
    renamed.setName(newName);
    return moveFile(path, &renamed, false);
}

bool FNFileSystem::moveFile(FPath* from, FPath* to, bool overwrite) {
    const PlatformName source(from), target(to);
    return overwrite ? std::rename(source, target) == 0 : renameToFreeName(source, target);
}

bool FNFileSystem::createDir(FPath* path) {
    if (!path)
        return false;
    if (makeFolder(path))
        return true;
    FPath above(*path);
    return errno == ENOENT && above.ascend() && createDir(&above) && makeFolder(path);
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

void FNFileSystem::getErrorMessage(int32_t code, FString& text) {
    const auto row = std::ranges::find(kMessages, code, &MessageRow::code);
    if (row != std::end(kMessages)) {
        text = row->text.text();
        return;
    }
    char buffer[256];
    FString description;
    description.fromUTF8(::strerror_r(code, buffer, sizeof buffer));
    text = kUnexpected.text();
    text += description;
}

}  // namespace Tessarine
