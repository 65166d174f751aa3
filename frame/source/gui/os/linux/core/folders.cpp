#include "folders.h"
#include "storage/userfolders.h"
#include <filesystem>
#include <string>

namespace Tessarine {
namespace {
namespace fs = std::filesystem;

std::string temporaryFolder() {
    const std::string folder = environmentFolder("TMPDIR");
    return folder.empty() ? "/tmp" : folder;
}

fs::path executable() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error);
}

/** Beside a "bin" folder the program's data lie in "lib"; elsewhere with the program itself. */
std::string applicationFolder() {
    const fs::path program = executable();
    const fs::path folder = program.parent_path();
    if (folder.filename() != "bin")
        return folder.string();
    return (folder.parent_path() / "lib" / program.filename()).string();
}

std::string systemFolder() {
    return "/usr";
}

std::string preferencesFolder() {
    return environmentOrHome("XDG_CONFIG_HOME", ".config");
}

std::string sharedFolder() {
    return environmentOrHome("XDG_DATA_HOME", ".local/share");
}

struct FolderRow {
    PlatformFolder kind;
    std::string (*find)();
};
constexpr FolderRow kFolders[] = {
    {PlatformFolder::kApplication, applicationFolder},
    {PlatformFolder::kSystem,      systemFolder     },
    {PlatformFolder::kTemporary,   temporaryFolder  },
    {PlatformFolder::kPreferences, preferencesFolder},
    {PlatformFolder::kShared,      sharedFolder     },
};
}  // namespace

bool findPlatformFolder(PlatformFolder kind, String& path) {
    for (const FolderRow& row : kFolders) {
        if (row.kind != kind)
            continue;
        std::string folder = row.find();
        while (folder.size() > 1 && folder.back() == '/')
            folder.pop_back();
        return !folder.empty() && path.fromUTF8(folder.c_str());
    }
    return false;
}

bool findProgramName(String& name) {
    const std::string program = executable().filename().string();
    return !program.empty() && name.fromUTF8(program.c_str());
}

}  // namespace Tessarine
