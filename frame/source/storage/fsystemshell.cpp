#include "storage/fsystemshell.h"
#include "platformname.h"
#include "storage/ffilesystem.h"
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <paths.h>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace Tessarine {
namespace {
constexpr const char* kOpener = "xdg-open";
constexpr const char* kShell = "/bin/sh";
// a child of the shell is a grandchild of ours, which nobody has to wait for
constexpr const char* kStart = "\"$@\" </dev/null >/dev/null 2>&1 &";

bool isProgram(const std::string& place) {
    struct stat status;
    return ::stat(place.c_str(), &status) == 0 && S_ISREG(status.st_mode) && ::access(place.c_str(), X_OK) == 0;
}

/** Its absolute place, so that the shell takes it for none of its own commands; empty: there is none. */
std::string findProgram(const std::string& name) {
    const char* path = std::getenv("PATH");
    std::istringstream folders(name.find('/') != std::string::npos ? "." : path ? path : _PATH_DEFPATH);
    for (std::string folder; std::getline(folders, folder, ':');) {
        std::error_code error;
        std::string place = std::filesystem::absolute(std::filesystem::path(folder) / name, error);
        if (isProgram(place))
            return place;
    }
    return "";
}

/** The program and its arguments as bytes. */
bool start(std::vector<std::string> command) {
    command.front() = findProgram(command.front());
    if (std::ranges::any_of(command, [](const std::string& part) { return part.empty(); }))
        return false;
    std::vector<const char*> arguments = {kShell, "-c", kStart, kShell};
    for (const std::string& part : command)
        arguments.push_back(part.c_str());
    arguments.push_back(nullptr);
    pid_t child;
    if (::posix_spawn(&child, kShell, nullptr, nullptr, const_cast<char* const*>(arguments.data()), environ) != 0)
        return false;
    int status = -1;
    if (TEMP_FAILURE_RETRY(::waitpid(child, &status, 0)) != child)
        return errno == ECHILD;  // a process that doesn't want to hear of its children
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/** What begins with "-" would be an option. */
bool openByDesktop(const std::string& place) {
    return !place.starts_with('-') && start({kOpener, place});
}

std::string bytesOf(const ConstString& text) {
    const FString wide(text);
    wide.text16();
    return std::string(PlatformName(units16(wide)));
}
}  // namespace

bool FSystemShell::executeURL(const ConstString& url) {
    return openByDesktop(bytesOf(url));
}

bool FSystemShell::showInBrowser(const FPath& path) {
    FPath folder(path);
    if (!gFileSystem->dirExists(&folder) && !folder.ascend())
        return false;
    return openByDesktop(std::string(PlatformName(&folder)));
}

bool FSystemShell::execute(const FPath& program, std::span<const FString> arguments) {
    std::vector<std::string> command = {std::string(PlatformName(&program))};
    for (const FString& argument : arguments)
        command.push_back(bytesOf(argument));
    return start(command);
}

}  // namespace Tessarine
