#include "storage/userfolders.h"
#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <unistd.h>

namespace Tessarine {
namespace {
std::string homeFolder() {
    std::string home = environmentFolder("HOME");
    if (!home.empty())
        return home;
    passwd user;
    passwd* found = nullptr;
    char texts[4096];
    ::getpwuid_r(::getuid(), &user, texts, sizeof texts, &found);
    return found && found->pw_dir ? found->pw_dir : "";
}
}  // namespace

std::string environmentFolder(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value == '/' ? value : "";
}

std::string environmentOrHome(const char* variable, const char* belowHome) {
    std::string folder = environmentFolder(variable);
    if (!folder.empty())
        return folder;
    const std::string home = homeFolder();
    return home.empty() ? home : (std::filesystem::path(home) / belowHome).string();
}

}  // namespace Tessarine
