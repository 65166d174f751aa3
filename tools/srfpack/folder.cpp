#include "tools/srfpack/folder.h"
#include "storage/fresourcearchive.h"
#include "tools/srfpack/names.h"
#include <cerrno>
#include <unistd.h>

namespace SrfPack {
namespace fs = std::filesystem;
using namespace Tessarine;

namespace {
std::string nameObstacle(const fs::path& path) {
    FString name;
    if (!name.fromUTF8(path.filename().c_str()))
        return printable(path.parent_path()) + ": a name in it isn't UTF-8: " + printable(path.filename());
    const bool fits = name.length() <= uint32_t(FResourceEntry::kMaxNameLength);
    return fits ? "" : printable(path) + ": the name is too long";
}

/** Takes the size of a file off what is left. */
std::string contentObstacle(const fs::directory_entry& entry, int64_t& left) {
    std::error_code error;
    const fs::file_status status = entry.status(error);
    if (fs::is_directory(status))
        return {};
    if (!fs::exists(status))
        return systemError(entry.path(), ENOENT);
    if (!fs::is_regular_file(status))
        return printable(entry.path()) + ": is neither file nor folder";
    if (::access(entry.path().c_str(), R_OK) != 0)
        return systemError(entry.path(), errno);
    const uintmax_t size = entry.file_size(error);
    if (error || size > uintmax_t(left))
        return error ? systemError(entry.path(), error.value()) : tooMuch(entry.path());
    left -= int64_t(size);
    return {};
}
}  // namespace

std::string findObstacle(const fs::path& folder, int64_t maxBytes) {
    std::error_code error;
    fs::recursive_directory_iterator entries(folder, error);
    int64_t left = maxBytes;
    fs::path last = folder;
    for (; !error && entries != fs::recursive_directory_iterator(); entries.increment(error)) {
        std::string obstacle = nameObstacle(entries->path());
        if (obstacle.empty())
            obstacle = contentObstacle(*entries, left);
        if (!obstacle.empty())
            return obstacle;
        last = entries->path();
        if (entries.depth() + entries->is_directory(error) >= FFileSystem::kMaxDepth)
            return printable(last) + ": lies too deep";
    }
    return error ? systemError(last, error.value()) : "";
}

std::string tooMuch(const std::string& name) {
    return printable(name) + ": is too much: without compression, numbers end at 2 GiB";
}
}  // namespace SrfPack
