#include "base/uprogresshook.h"
#include "ftreewalk.h"
#include "platformname.h"
#include "samefile.h"
#include "storage/ffilesystem.h"
#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace Tessarine {
namespace {
/** Without links, and of what isn't there the folder above that is. */
FNPath realPlaceOf(const FPath& path) {
    FNPath place, current(u".", kFolderPath);
    static_cast<FPath&>(place) = path;
    if (gFileSystem->checkResolveLink(&place))
        return place;
    gFileSystem->checkResolveLink(&current);
    place = place.createAbsolutePath(&current);
    while (!gFileSystem->checkResolveLink(&place) && place.ascend()) {}
    return place;
}

/** What lies below a folder, files only if they are to be copied too. */
bool copyBelow(const FPath& from, const FPath& to, bool withFiles, UProgressHook* hook) {
    if (isWithin(to, from))
        return false;
    const int32_t total = hook ? gFileSystem->countFiles(&from, true, true) : 0;
    FPath folder(to);
    bool good = gFileSystem->createDir(&folder);
    int32_t done = 0;
    FTreeWalk walk(gFileSystem, from, true);
    for (FPath* entry = walk.current(); entry && good; entry = walk.next()) {
        FNPath copy(kFolderPath);
        static_cast<FPath&>(copy) = to;
        FString below;
        walk.relativePath().getFullPath(below);
        copy.descend(below.text16(), entry->getKind());
        if (entry->isFolder())
            good = gFileSystem->createDir(&copy);
        else if (withFiles)
            good = (entry->isLink() || gFileSystem->copyFile(entry, &copy)) && tellProgress(hook, ++done, total);
    }
    return good && !walk.hasFailed();
}
}  // namespace

bool isWithin(const FPath& path, const FPath& folder) {
    const FNPath inner = realPlaceOf(path), outer = realPlaceOf(folder);
    return inner == outer || inner.isInDir(&outer);
}

bool FNFileSystem::dirExists(const FPath* path) {
    struct stat status;
    return ::stat(PlatformName(path), &status) == 0 && S_ISDIR(status.st_mode);
}

bool FNFileSystem::isFolderEmpty(const FPath* path) {
    std::error_code error;
    return dirExists(path) && std::filesystem::is_empty(static_cast<const char*>(PlatformName(path)), error);
}

bool FNFileSystem::removeEmptyFolders(const FPath* path) {
    if (!path)
        return false;
    std::vector<FPath> folders;
    FTreeWalk walk(this, *path, true);
    for (const FPath* entry = walk.current(); entry; entry = walk.next())
        if (entry->isFolder())
            folders.push_back(*entry);
    const auto removed = [](const FPath& folder) {
        return ::rmdir(PlatformName(&folder)) == 0 || errno == ENOTEMPTY || errno == EEXIST;
    };
    return std::count_if(folders.rbegin(), folders.rend(), removed) == int64_t(folders.size()) && !walk.hasFailed();
}

bool FNFileSystem::copyFolderStructure(const FPath* from, const FPath* to) {
    return from && to && copyBelow(*from, *to, false, nullptr);
}

bool FNFileSystem::copyFolderAndFileStructure(const FPath* from, const FPath* to, UProgressHook* hook) {
    return from && to && copyBelow(*from, *to, true, hook);
}

bool FNFileSystem::findFile(const FPath* folder, const tchar* name, FNPath& found) {
    if (!folder)
        return false;
    FTreeWalk walk(this, *folder, true);
    for (const FPath* entry = walk.current(); entry; entry = walk.next()) {
        if (entry->isFolder() || !(ConstString(entry->getName()) == ConstString(name)))
            continue;
        static_cast<FPath&>(found) = *entry;
        return true;
    }
    return false;
}

struct FNFileSystemScanner::Walk {
    std::vector<FPath> bases;
    bool withHidden = false;
    size_t base = 0;
    std::unique_ptr<FTreeWalk> tree;
};

IMPLEMENT_CLASS(FNFileSystemScanner, FFileIterator)

FNFileSystemScanner::FNFileSystemScanner() : walk(std::make_unique<Walk>()) {}
FNFileSystemScanner::~FNFileSystemScanner() = default;

FNFileSystemScanner::FNFileSystemScanner(const FPath* base, bool withHidden) : FNFileSystemScanner() {
    walk->withHidden = withHidden;
    addBasePath(base);
}

void FNFileSystemScanner::addBasePath(const FPath* base) {
    if (base)
        walk->bases.push_back(*base);
}

FPath* FNFileSystemScanner::first() {
    walk->base = 0;
    return openBase();
}

FPath* FNFileSystemScanner::next() {
    if (!walk->tree)
        return nullptr;
    if (FPath* found = walk->tree->next())
        return found;
    ++walk->base;
    return openBase();
}

FPath* FNFileSystemScanner::current() {
    return walk->tree ? walk->tree->current() : nullptr;
}

void FNFileSystemScanner::skipFolder() {
    if (walk->tree)
        walk->tree->skipFolder();
}

/** From the base at hand on, the first that has anything in it. */
FPath* FNFileSystemScanner::openBase() {
    for (; walk->base < walk->bases.size(); ++walk->base) {
        walk->tree = std::make_unique<FTreeWalk>(gFileSystem, walk->bases[walk->base], walk->withHidden);
        if (FPath* found = walk->tree->current())
            return found;
    }
    walk->tree.reset();
    return nullptr;
}

}  // namespace Tessarine
