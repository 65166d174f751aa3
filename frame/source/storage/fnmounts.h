#pragma once
#include "storage/ffilesystem.h"
#include <string>
#include <vector>

namespace Tessarine {

/** A place where a file system is mounted. */
struct FMount {
    std::string folder;
    FDriveType type;  // kUndefinedDrive for those of the system itself (proc, tmpfs, ...)
    std::string device;
};

/** In the order of a mount table (the form of /proc/self/mounts); a folder that is mounted over counts once, with what is on top.
    Empty: there is no such table. */
std::vector<FMount> readMounts(const char* table = "/proc/self/mounts");

}  // namespace Tessarine
