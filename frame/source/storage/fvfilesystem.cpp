#include "storage/fvfilesystem.h"
#include "base/uprogresshook.h"
#include "ftreewalk.h"
#include "pathsteps.h"
#include "platformname.h"
#include "samefile.h"
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/openat2.h>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace Tessarine {
namespace {
struct HandlerRow {
    const FFileType* type;
    FVFileSystem::Creator create;
};

std::vector<HandlerRow>& vfsHandlers() {
    static std::vector<HandlerRow> handlers;
    return handlers;
}

FFileSystem* openByHandler(const FPath& file) {
    FPath path(file);
    if (!path.detectFileType(false))
        return nullptr;
    const auto row =
        std::ranges::find_if(vfsHandlers(), [&](const HandlerRow& each) { return *each.type == path.getFileType(); });
    return row != vfsHandlers().end() ? row->create(&path) : nullptr;
}

/** Of the steps below it. */
FPath pathBelow(const FPath& folder, const FString& steps, const FPath& like) {
    FPath path(folder);
    if (!steps.isEmpty())
        path.descend(steps.text16(), like.getKind());
    path.setFileType(like.getFileType());
    return path;
}

FString textOf(std::span<const std::u16string_view> steps) {
    FString text;
    appendSteps(text, steps);
    return text;
}

bool startsWith(const PathSteps& steps, const PathSteps& beginning) {
    return steps.size() >= beginning.size() && std::equal(beginning.begin(), beginning.end(), steps.begin());
}

constexpr int64_t kUnknownSize = -2;

/** The way ended where there is nothing, and up to there without a link. */
bool hasEnded() {
    return errno == ENOENT || errno == ENOTDIR;
}

/** Names what lies there; -1: see errno. */
int openWithoutLinks(const std::string& name) {
    open_how how = {};
    how.flags = O_PATH | O_CLOEXEC;
    how.resolve = RESOLVE_NO_SYMLINKS;
    return int(::syscall(SYS_openat2, AT_FDCWD, name.c_str(), &how, sizeof how));
}

/** Absolute, so that it stays the same wherever relative paths begin later. */
FPath folderOfDisks(const FPath& path) {
    FNPath folder(fullTextOf(path).text16(), kFolderPath);
    if (!folder.isAbsolute())
        folder.fromPlatformPath(realNameOf(PlatformName(&path)).get());
    return folder;
}
}  // namespace

/** A folder of the disks that is not to be left, by its name: whatever has that name at the moment is meant, as it is by those
    who open files there. */
struct FVFileSystem::DiskRoot {
    explicit DiskRoot(const FPath& path) : rootName(PlatformName(&path)) {}

    /** No link on the way leads out; path is below the root, relative to it and resolved. */
    bool holds(const FString& path) const;
    /** Of a file without links on the way; -1: there is none; kUnknownSize: there are links. */
    int64_t sizeOf(const FString& path) const;

private:
    std::string nameOf(const FString& path) const;
    bool holdsLinks(const std::string& name) const;
    bool holdsTarget(const std::string& name) const;

    std::string rootName;
};

bool FVFileSystem::DiskRoot::holds(const FString& path) const {
    if (path.isEmpty())
        return true;
    const std::string name = nameOf(path);
    const int file = openWithoutLinks(name);
    if (file >= 0)
        ::close(file);
    return file >= 0 || (!name.empty() && (hasEnded() || holdsLinks(name)));
}

int64_t FVFileSystem::DiskRoot::sizeOf(const FString& path) const {
    struct stat status;
    const int file = openWithoutLinks(nameOf(path));
    if (file < 0)
        return hasEnded() ? -1 : kUnknownSize;
    const bool known = ::fstat(file, &status) == 0 && !S_ISDIR(status.st_mode);
    ::close(file);
    return known ? int64_t(status.st_size) : -1;
}

/** Empty, where nothing can be: the path can't be expressed. */
std::string FVFileSystem::DiskRoot::nameOf(const FString& path) const {
    const PlatformName below(units16(path));
    return *below ? rootName + '/' + static_cast<const char*>(below) : std::string();
}

/** Goes down from the root step by step, up to the first link. */
bool FVFileSystem::DiskRoot::holdsLinks(const std::string& name) const {
    for (size_t end = rootName.size(); end != std::string::npos;) {
        end = name.find('/', end + 1);
        struct stat status;
        if (::lstat(name.substr(0, end).c_str(), &status) != 0)
            return errno == ENOENT;
        if (S_ISLNK(status.st_mode))
            return holdsTarget(name);
    }
    return true;
}

/** What isn't there, behind a link, counts as outside. */
bool FVFileSystem::DiskRoot::holdsTarget(const std::string& name) const {
    const RealName target = realNameOf(name.c_str()), top = realNameOf(rootName.c_str());
    const size_t length = top ? std::strlen(top.get()) : 0;
    if (!target || !top || std::strncmp(target.get(), top.get(), length) != 0)
        return false;
    const char next = target.get()[length];
    return next == '/' || next == 0 || length == 1;
}

IMPLEMENT_ABSTRACT_CLASS(FVFileSystem, FFileSystem)
IMPLEMENT_ABSTRACT_CLASS(FVFileIterator, FFileIterator)

void FVFileSystem::registerHandler(const FFileType* type, Creator creator) {
    vfsHandlers().push_back({type, creator});
}

FVFileSystem::FVFileSystem(FFileSystem* target, bool writable) : target(target), writable(writable) {
    if (classCast<FNFileSystem>(target))
        root.fromString(u"/", kFolderPath);
}

FVFileSystem::FVFileSystem(const FPath* path, bool writable) : writable(writable) {
    if (!path || path->isEmpty())
        return;
    FPath copy(*path);
    if (gFileSystem->fileExists(&copy)) {
        target = OPtr<FFileSystem>(openByHandler(copy));
    } else if (gFileSystem->dirExists(path)) {
        target = gFileSystem;
        root = folderOfDisks(*path);
        diskRoot = std::make_unique<DiskRoot>(root);
    }
}

FVFileSystem::~FVFileSystem() = default;

bool FVFileSystem::enableWrite(bool state) {
    return std::exchange(writable, state);
}

FPath FVFileSystem::translatePath(const FPath* path) const {
    if (!path)
        return FPath();
    if (path->isAbsolute())
        return FPath(*path);
    const FString text = fullTextOf(*path);
    return pathBelow(root, textOf(resolvedSteps(units16(text))), *path);
}

FPath FVFileSystem::reverseTranslate(const FPath* path) const {
    if (!path)
        return FPath();
    const FString text = fullTextOf(*path);
    PathSteps steps = resolvedSteps(units16(text));
    return dropRoot(steps) ? pathBelow(FPath(), textOf(steps), *path) : FPath(*path);
}

/** Takes the root off the steps from the top of the target on; false: they don't lie below it. */
bool FVFileSystem::dropRoot(PathSteps& steps) const {
    const FString text = fullTextOf(root);
    const PathSteps rootSteps = resolvedSteps(units16(text));
    if (!startsWith(steps, rootSteps))
        return false;
    steps.erase(steps.begin(), steps.begin() + int64_t(rootSteps.size()));
    return true;
}

/** Where the path leads, from the root on; false: not below it. */
bool FVFileSystem::locate(const FPath* path, FString& below) const {
    if (!target || !path || path->isEmpty())
        return false;
    path->getFullPath(below);
    if (isResolved(units16(below)))
        return true;
    const FString text(below);
    PathSteps steps = resolvedSteps(units16(text));
    const bool inside = !path->isAbsolute() || dropRoot(steps);
    below = textOf(steps);
    return inside;
}

/** The path on the target, if it lies below the root and no link leads away. */
bool FVFileSystem::reach(const FPath* path, FPath& real) const {
    FString below;
    if (!locate(path, below))
        return false;
    real = pathBelow(root, below, *path);
    return !diskRoot || diskRoot->holds(below);
}

/** The size of a file, -1 for none; kUnknownSize: it takes longer to find out. */
int64_t FVFileSystem::sizeAtOnce(const FPath* path) const {
    FString below;
    if (!diskRoot)
        return kUnknownSize;
    return locate(path, below) && !below.isEmpty() ? diskRoot->sizeOf(below) : -1;
}

bool FVFileSystem::reachToWrite(const FPath* path, FPath& real) const {
    return writable && reach(path, real) && !(real == root);
}

FStream* FVFileSystem::createFile(FPath* path, int32_t mode, int32_t* error) {
    FPath real;
    if (reachToWrite(path, real))
        return target->createFile(&real, mode, error);
    if (error)
        *error = writable ? ENOENT : EROFS;
    return nullptr;
}

FStream* FVFileSystem::openFile(FPath* path, int32_t mode, int32_t* error) {
    FPath real;
    const bool writes = mode & (kOpenWrite | kOpenCreate);
    if ((writable || !writes) && reach(path, real))
        return target->openFile(&real, mode, error);
    if (error)
        *error = writes && !writable ? EROFS : ENOENT;
    return nullptr;
}

bool FVFileSystem::closeFile(FStream* stream) {
    return target && target->closeFile(stream);
}

bool FVFileSystem::removeFile(FPath* path) {
    FPath real;
    return reachToWrite(path, real) && target->removeFile(&real);
}

bool FVFileSystem::fileExists(FPath* path) {
    const int64_t size = sizeAtOnce(path);
    if (size != kUnknownSize)
        return size >= 0;
    FPath real;
    return reach(path, real) && target->fileExists(&real);
}

bool FVFileSystem::renameFile(FPath* path, const tchar* newName) {
    FPath real;
    return newName && isPlainStep(newName) && reachToWrite(path, real) && target->renameFile(&real, newName);
}

bool FVFileSystem::moveFile(FPath* from, FPath* to, bool overwrite) {
    FPath realFrom, realTo;
    return reachToWrite(from, realFrom) && reachToWrite(to, realTo) && target->moveFile(&realFrom, &realTo, overwrite);
}

bool FVFileSystem::copyFile(FPath* from, FPath* to, UProgressHook* hook, int32_t* error) {
    FPath realFrom, realTo;
    if (reachToWrite(from, realFrom) && reachToWrite(to, realTo))
        return target->copyFile(&realFrom, &realTo, hook, error);
    if (error)
        *error = writable ? ENOENT : EROFS;
    return false;
}

bool FVFileSystem::createDir(FPath* path) {
    FPath real;
    return reachToWrite(path, real) && target->createDir(&real);
}

bool FVFileSystem::getDirName(FPath* path, FString& name) {
    FPath real;
    return reach(path, real) && target->getDirName(&real, name);
}

bool FVFileSystem::removeDir(FPath* path, bool withContent) {
    FPath real;
    return reachToWrite(path, real) && target->removeDir(&real, withContent);
}

bool FVFileSystem::getFileTimes(FPath* path, CmTime& created, CmTime& modified) {
    FPath real;
    return reach(path, real) && target->getFileTimes(&real, created, modified);
}

int64_t FVFileSystem::getFileSize(FPath* path) {
    const int64_t size = sizeAtOnce(path);
    if (size != kUnknownSize)
        return size;
    FPath real;
    return reach(path, real) ? target->getFileSize(&real) : -1;
}

int64_t FVFileSystem::getFileSize(FStream* stream) {
    return target ? target->getFileSize(stream) : -1;
}

bool FVFileSystem::makeValidName(FString& name, tchar replacement, bool trim) {
    return target ? target->makeValidName(name, replacement, trim)
                  : FFileSystem::makeValidName(name, replacement, trim);
}

FFileIterator* FVFileSystem::newIterator(const FPath* folder, bool withHidden) {
    FPath real(root);
    const bool top = !folder || folder->isEmpty();
    if (!target || !(top || reach(folder, real)))
        return nullptr;
    FFileIterator* inner = target->newIterator(&real, withHidden);
    return inner ? new FVFileIterator(this, inner) : nullptr;
}

FVFileIterator::FVFileIterator(FVFileSystem* fileSystem, FFileIterator* inner) : fileSystem(fileSystem), inner(inner) {}

/** Passes over links that lead out. */
FPath* FVFileIterator::show(FPath* found) {
    FPath real;
    for (; found; found = inner->next()) {
        shown = fileSystem->reverseTranslate(found);
        shown.setName(found->getName());  // of an archive it may be "..", which was followed
        if (!found->isLink() || fileSystem->reach(&shown, real))
            break;
    }
    present = found != nullptr;
    return current();
}

namespace {
/** Where on the disks a path of the file system lies; false: not there. */
bool placeOnDisks(FFileSystem* fileSystem, const FPath& path, FPath& place) {
    const auto* part = classCast<FVFileSystem>(fileSystem);
    place = part ? part->translatePath(&path) : path;
    if (place.isEmpty())
        place.fromString(u".", kFolderPath);
    return (part ? part->getTarget() : fileSystem) == gFileSystem;
}

/** What is copied would be met again as something to copy. */
bool copiesIntoItself(FFileSystem* source, const FPath& from, FFileSystem* target) {
    FPath outer, inner;
    return placeOnDisks(source, from, outer) && placeOnDisks(target, FPath(), inner) && isWithin(inner, outer);
}
}  // namespace

bool FCopyFileSystem(FFileSystem* source, FPath* from, FFileSystem* target, UProgressHook* hook) {
    if (!source || !from || !target || copiesIntoItself(source, *from, target))
        return false;
    const int32_t total = hook ? source->countFiles(from, true, true) : 0;
    FTreeWalk walk(source, *from, true);
    int32_t done = 0;
    for (FPath* entry = walk.current(); entry; entry = walk.next()) {
        FPath copy = walk.relativePath();
        const bool passedOver = entry->isLink() && !source->fileExists(entry);
        const bool copied = entry->isFolder() ? target->createDir(&copy)
                                              : (passedOver || FFileSystem::copyFile(source, entry, target, &copy)) &&
                                                    tellProgress(hook, ++done, total);
        if (!copied)
            return false;
    }
    return !walk.hasFailed();
}

}  // namespace Tessarine
