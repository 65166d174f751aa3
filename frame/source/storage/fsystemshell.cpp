#include "storage/fsystemshell.h"
#include "platformname.h"
#include "storage/ffilesystem.h"
#include <algorithm>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace Tessarine {
namespace {
constexpr const char* kOpener = "xdg-open";
constexpr const char* kShell = "/bin/sh";
// a child of the shell is a grandchild of ours, which nobody has to wait for; not found: the shell fails
constexpr const char* kStart = "command -v -- \"$1\" >/dev/null && { \"$@\" </dev/null >/dev/null 2>&1 & }";

/** The program and its arguments as bytes. */
bool start(const std::vector<std::string>& command) {
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
    return TEMP_FAILURE_RETRY(::waitpid(child, &status, 0)) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
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
