#include "base/fmessage.h"
#include "base/utranslatedstring.h"
#include "collect/cmcontainer.h"
#include "fnmounts.h"
#include "platformname.h"
#include "storage/hooks.h"
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <mntent.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

namespace Tessarine {
namespace {
struct TypeRow {
    std::string_view fileSystem;
    FDriveType type;
};
constexpr TypeRow kFileSystems[] = {
    {"iso9660",    kCompactDisc   },
    {"udf",        kCompactDisc   },
    {"nfs",        kNetworkDrive  },
    {"nfs4",       kNetworkDrive  },
    {"cifs",       kNetworkDrive  },
    {"smb3",       kNetworkDrive  },
    {"9p",         kNetworkDrive  },
    {"ceph",       kNetworkDrive  },
    {"davfs",      kNetworkDrive  },
    {"fuse.sshfs", kNetworkDrive  },
    {"squashfs",   kUndefinedDrive},
    {"zfs",        kHarddisk      },
};
constexpr std::string_view kDevices = "/dev/";

constexpr UTranslatedString kTypeNames[] = {
    UTranslatedString("Harddisk"),      UTranslatedString("Compact Disc"), UTranslatedString("Removable Drive"),
    UTranslatedString("Network Drive"), UTranslatedString("undefined"),
};
static_assert(std::size(kTypeNames) == kUndefinedDrive + 1, "each type has its name");

struct CloseTable {
    void operator()(FILE* table) const { ::endmntent(table); }
};

/** What the kernel says of the medium; a partition is asked for the whole. */
bool isRemovable(const char* device) {
    struct stat status;
    if (::stat(device, &status) != 0 || !S_ISBLK(status.st_mode))
        return false;
    const std::string folder =
        "/sys/dev/block/" + std::to_string(major(status.st_rdev)) + ':' + std::to_string(minor(status.st_rdev)) + '/';
    for (const char* file : {"removable", "../removable"}) {
        std::ifstream flag(folder + file);
        if (flag)
            return flag.get() == '1';
    }
    return false;
}

FDriveType typeOf(const mntent& entry) {
    const auto row = std::ranges::find(kFileSystems, std::string_view(entry.mnt_type), &TypeRow::fileSystem);
    if (row != std::end(kFileSystems))
        return row->type;
    const bool system =
        !std::string_view(entry.mnt_fsname).starts_with(kDevices) && std::string_view(entry.mnt_dir) != "/";
    return system ? kUndefinedDrive : isRemovable(entry.mnt_fsname) ? kRemovableDrive : kHarddisk;
}

bool isBelow(std::string_view path, std::string_view folder) {
    return path.starts_with(folder) && (folder == "/" || path.size() == folder.size() || path[folder.size()] == '/');
}

/** Of all mounts the innermost that holds the path, or the folder where it would be. */
const FMount* mountOf(const std::vector<FMount>& mounts, const FPath* path) {
    if (!path)
        return nullptr;
    RealName name = realNameOf(PlatformName(path));
    for (FPath above(*path); !name && above.ascend();)
        name = realNameOf(PlatformName(&above));
    if (!name && !path->isEmpty() && !path->isAbsolute())
        name = realNameOf(".");
    const FMount* found = nullptr;
    for (const FMount& mount : mounts)
        if (name && isBelow(name.get(), mount.folder) && (!found || mount.folder.size() > found->folder.size()))
            found = &mount;
    return found;
}

std::vector<CmObject*>& mountSubscribers() {
    static std::vector<CmObject*> subscribers;
    return subscribers;
}

void watchWhileNeeded() {
    if (gStorageHooks.watchMounts)
        gStorageHooks.watchMounts(!mountSubscribers().empty());
}

/** Those who are there at first; who goes meanwhile hears nothing any more. */
void tellSubscribers(const char* id, const char* key, const FNPath& path) {
    const std::vector<CmObject*> told = mountSubscribers();
    for (CmObject* subscriber : told) {
        if (std::ranges::find(mountSubscribers(), subscriber) == mountSubscribers().end())
            continue;
        const OPtr<FMessage> message(new FMessage(id));
        message->add(key, path.newCopy(), true);
        subscriber->notify(message);
    }
}
}  // namespace

std::vector<FMount> readMounts(const char* table) {
    std::vector<FMount> mounts;
    const std::unique_ptr<FILE, CloseTable> file(::setmntent(table, "re"));
    mntent entry;
    char line[8192];
    while (file && ::getmntent_r(file.get(), &entry, line, sizeof line)) {
        std::erase_if(mounts, [&](const FMount& each) { return each.folder == entry.mnt_dir; });
        mounts.push_back({entry.mnt_dir, typeOf(entry), entry.mnt_fsname});
    }
    return mounts;
}

int32_t FNFileSystem::getDrives(CmContainer& drives, int32_t type) {
    int32_t count = 0;
    for (const FMount& mount : readMounts()) {
        const bool wanted = type < 0 ? mount.type != kUndefinedDrive : mount.type == type;
        const OPtr<FNPath> path(new FNPath(kFolderPath));
        if (!wanted || !path->fromPlatformPath(mount.folder.c_str()) || !drives.add(path))
            continue;
        if (drives._ownsObjects != CmContainer::kShares)
            path->addRef();
        ++count;
    }
    return count;
}

int32_t FNFileSystem::getDriveType(const FPath* path) {
    const std::vector<FMount> mounts = readMounts();
    const FMount* mount = mountOf(mounts, path);
    return mount ? mount->type : kUndefinedDrive;
}

const tchar* FNFileSystem::getDriveTypeString(int32_t type) {
    return kTypeNames[type >= 0 && type < kUndefinedDrive ? type : kUndefinedDrive].text();
}

bool FNFileSystem::getRootDir(const FPath* path, FNPath& root) {
    const std::vector<FMount> mounts = readMounts();
    const FMount* mount = mountOf(mounts, path);
    FNPath found(kFolderPath);
    if (!mount || !found.fromPlatformPath(mount->folder.c_str()))
        return false;
    root = found;
    return true;
}

int64_t FNFileSystem::getFreeBytesOnDisk(const FPath* path) {
    struct statvfs status;
    if (::statvfs(PlatformName(path), &status) != 0)
        return -1;
    return int64_t(status.f_bavail) * int64_t(status.f_frsize);
}

bool FNFileSystem::isRoot(const FPath* path) {
    FNPath root;
    return path && (path->isRootDir() || (getRootDir(path, root) && root == *path));
}

void FNFileSystem::subscribeToMountEvent(CmObject* subscriber) {
    if (!subscriber)
        return;
    mountSubscribers().push_back(subscriber);
    watchWhileNeeded();
}

void FNFileSystem::unsubscribeFromMountEvent(CmObject* subscriber) {
    std::erase(mountSubscribers(), subscriber);
    watchWhileNeeded();
}

void FNFileSystem::onMountEvent(const char* event, const FNPath& drive) {
    if (event && (ConstString(event) == "VolMount" || ConstString(event) == "VolUnmount"))
        tellSubscribers(event, "path", drive);
}

void FNFileSystem::onFileSystemChange(const FNPath& change) {
    tellSubscribers("PathChanged", "change", change);
}

}  // namespace Tessarine
