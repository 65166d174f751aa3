#include "frame/source/gui/os/linux/core/folders.h"
#include "tests/support/utf8.h"
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <pwd.h>
#include <string>
#include <unistd.h>
#include <vector>

using namespace Tessarine;

namespace {
namespace fs = std::filesystem;

/** The variables that name folders, put back at the end. */
class Environment {
public:
    Environment() {
        for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "TMPDIR"}) {
            const char* value = std::getenv(name);
            before.emplace_back(name, value ? std::optional<std::string>(value) : std::nullopt);
            unsetenv(name);
        }
    }
    ~Environment() {
        for (const auto& [name, value] : before)
            value ? setenv(name, value->c_str(), 1) : unsetenv(name);
    }

private:
    std::vector<std::pair<const char*, std::optional<std::string>>> before;
};

std::string folder(PlatformFolder kind) {
    String path;
    return findPlatformFolder(kind, path) ? utf8(path) : "none";
}

constexpr auto kConfig = PlatformFolder::kPreferences;
constexpr auto kData = PlatformFolder::kShared;
constexpr auto kTemp = PlatformFolder::kTemporary;
const std::tuple<PlatformFolder, const char*, const char*, const char*, const char*> kRows[] = {
    {kConfig, "XDG_CONFIG_HOME", "/etc/mine//",  "/home/u",  "/etc/mine"           },
    {kConfig, "XDG_CONFIG_HOME", "/h\xC3\xB6he", "/home/u",  "/h\xC3\xB6he"        },
    {kConfig, "XDG_CONFIG_HOME", "relative",     "/home/u",  "/home/u/.config"     },
    {kConfig, "XDG_CONFIG_HOME", "",             "/",        "/.config"            },
    {kData,   "XDG_DATA_HOME",   "/srv/data",    "/home/u",  "/srv/data"           },
    {kData,   "TMPDIR",          "/var/tmp/",    "/home/u/", "/home/u/.local/share"},
    {kTemp,   "TMPDIR",          "/var/tmp/",    "/home/u",  "/var/tmp"            },
    {kTemp,   "TMPDIR",          "",             "/home/u",  "/tmp"                },
};
}  // namespace

TEST(Folders, ComeFromTheEnvironment) {
    for (const auto& [kind, variable, value, home, expected] : kRows) {
        const Environment clean;
        setenv("HOME", home, 1);
        setenv(variable, value, 1);
        EXPECT_EQ(folder(kind), expected);
    }
}

TEST(Folders, FallBackToTheHomeOfTheUser) {
    const passwd* user = getpwuid(getuid());
    const std::string expected = user && user->pw_dir ? (fs::path(user->pw_dir) / ".config").string() : "none";
    for (const char* home : {"", "relative"}) {
        const Environment clean;
        setenv("HOME", home, 1);
        EXPECT_EQ(folder(kConfig), expected);
    }
}
