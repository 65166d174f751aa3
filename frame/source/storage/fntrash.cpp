#include "fnerrors.h"
#include "fnmounts.h"
#include "platformname.h"
#include "storage/fbstream.h"
#include "storage/furl.h"
#include "storage/userfolders.h"
#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>
#include <fcntl.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

/** The trash of the desktop: a folder with "files", and "info" beside it that tells where each one came from. The home trash
    serves its own disk, any other disk has one at its top. */

namespace Tessarine {
namespace {
constexpr mode_t kPrivate = 0700;
constexpr mode_t kPrivateFile = 0600;
constexpr int32_t kMostNames = 10000;
constexpr size_t kLongestName = NAME_MAX - std::string_view(".9999.trashinfo").size();

struct Trash {
    std::string folder;
    std::string pathsFrom;  // what paths of its info files are relative to; empty: they are absolute
};

std::string homeTrash() {
    const std::string data = environmentOrHome("XDG_DATA_HOME", ".local/share");
    return data.empty() ? data : data + "/Trash";
}

bool makeFolders(const std::string& folder) {
    FNPath path(kFolderPath);
    if (!path.fromPlatformPath(folder.c_str()) || path.isRootDir())
        return false;
    struct stat status;
    if (::lstat(folder.c_str(), &status) == 0)
        return S_ISDIR(status.st_mode) || S_ISLNK(status.st_mode);
    return makeFolders(folder.substr(0, folder.rfind('/'))) && ::mkdir(folder.c_str(), kPrivate) == 0;
}

std::optional<dev_t> deviceOf(const std::string& name) {
    struct stat status;
    return ::lstat(name.c_str(), &status) == 0 ? std::optional(status.st_dev) : std::nullopt;
}

/** Of the administrator's making, for all users: a real folder with the sticky bit. */
bool isSharedTrash(const std::string& folder) {
    struct stat status;
    return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX);
}

/** A folder of this user's own, which nobody else has put there. */
bool isOwnFolder(const std::string& folder) {
    struct stat status;
    if (::mkdir(folder.c_str(), kPrivate) != 0 && errno != EEXIST)
        return false;
    return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::getuid();
}

std::optional<Trash> trashAtTop(const FPath& disk) {
    FNPath top;
    if (!gFileSystem->getRootDir(&disk, top))
        return std::nullopt;
    const std::string folder(PlatformName{&top}), user = std::to_string(::getuid());
    const std::string below = folder == "/" ? folder : folder + '/';
    const std::string shared = below + ".Trash", own = below + ".Trash-" + user;
    if (isSharedTrash(shared) && isOwnFolder(shared + '/' + user))
        return Trash{shared + '/' + user, below};
    return isOwnFolder(own) ? std::optional(Trash{own, below}) : std::nullopt;
}

/** For what lies in the folder. */
std::optional<Trash> trashFor(const FPath& folder) {
    const std::string home = homeTrash();
    const bool made = !home.empty() && makeFolders(home);
    if (made && deviceOf(home) == deviceOf(std::string(PlatformName(&folder))))
        return Trash{home, ""};
    return trashAtTop(folder);
}

bool hasFolders(const Trash& trash) {
    return isOwnFolder(trash.folder + "/files") && isOwnFolder(trash.folder + "/info");
}

std::string infoText(const Trash& trash, std::string path) {
    if (!trash.pathsFrom.empty() && path.starts_with(trash.pathsFrom))
        path.erase(0, trash.pathsFrom.size());
    FString encoded;
    encoded.fromUTF8(path.c_str());
    FUrl::urlEncode(encoded);
    const std::time_t now = std::time(nullptr);
    std::tm clock;
    char date[32];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", ::localtime_r(&now, &clock));
    return std::string("[Trash Info]\nPath=") + std::string(PlatformName(units16(encoded))) + "\nDeletionDate=" + date +
           '\n';
}

/** The file's own name, or as much of it as leaves room for what is added. */
std::string nameFor(const std::string& place) {
    std::string name = place.substr(place.rfind('/') + 1);
    size_t end = std::min(name.size(), kLongestName);
    while (end < name.size() && (name[end] & 0xC0) == 0x80)
        --end;
    name.resize(end);
    return name;
}

/** Creates the info file under the first free name, which by that is taken. */
std::string takeName(const Trash& trash, const std::string& wanted, const std::string& info) {
    for (int32_t number = 1; number < kMostNames; ++number) {
        std::string name = number == 1 ? wanted : wanted + '.' + std::to_string(number);
        if (deviceOf(trash.folder + "/files/" + name))
            continue;  // somebody's leftover without an info file
        const std::string infoName = trash.folder + "/info/" + name + ".trashinfo";
        const int file = ::open(infoName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPrivateFile);
        if (file < 0 && errno == EEXIST)
            continue;
        if (file < 0)
            break;
        const bool written = ::write(file, info.data(), info.size()) == ssize_t(info.size());
        if (::close(file) == 0 && written)
            return name;
        ::unlink(infoName.c_str());
        break;
    }
    return "";
}

/** Absolute, with its folder's links resolved and its own kept. */
std::string realPlaceOf(const FPath& path) {
    FNPath folder(kFolderPath);
    static_cast<FPath&>(folder) = path;
    if (!folder.ascend())
        folder.fromString(u".", kFolderPath);
    if (!gFileSystem->checkResolveLink(&folder))
        return "";
    folder.descend(path.getName(), kFilePath);
    return std::string(PlatformName(&folder));
}
}  // namespace

bool FNFileSystem::trashFile(const FPath* path) {
    const std::string place = path && !path->isRootDir() ? realPlaceOf(*path) : "";
    if (place.empty() || !deviceOf(place))
        return told(false);
    FNPath source(kFilePath), target(kFilePath);
    source.fromPlatformPath(place.c_str());
    FPath folder(source);
    folder.ascend();
    const std::optional<Trash> trash = trashFor(folder);
    if (!trash || !hasFolders(*trash))
        return told(false);
    const std::string name = takeName(*trash, nameFor(place), infoText(*trash, place));
    if (name.empty())
        return told(false);
    target.fromPlatformPath((trash->folder + "/files/" + name).c_str());
    if (moveFile(&source, &target, false))
        return true;
    const int code = errno;
    ::unlink((trash->folder + "/info/" + name + ".trashinfo").c_str());
    errno = code;
    return false;
}

}  // namespace Tessarine
