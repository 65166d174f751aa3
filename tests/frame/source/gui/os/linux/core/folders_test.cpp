#include "frame/source/gui/os/linux/core/folders.h"
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <pwd.h>
#include <string>
#include <unistd.h>

using namespace Tessarine;

namespace {
namespace fs = std::filesystem;

/** The variables that name folders, put back at the end. */
class Environment {
public:
    Environment() {
        for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "TMPDIR"}) {
            if (const char* value = std::getenv(name))
                before[name] = value;
            else
                before[name];
            unsetenv(name);
        }
    }
    ~Environment() {
        for (const auto& [name, value] : before)
            value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    }

private:
    std::map<std::string, std::optional<std::string>> before;
};

std::string folder(PlatformFolder kind) {
    String path;
    if (!findPlatformFolder(kind, path))
        return "none";
    path.toMultiByte(kCodePageUTF8);
    return path.text8();
}

struct Row {
    PlatformFolder kind;
    const char* variable;
    const char* value;
    const char* home;
    const char* expected;
};
constexpr auto kConfig = PlatformFolder::kPreferences;
constexpr auto kData = PlatformFolder::kShared;
constexpr auto kTemp = PlatformFolder::kTemporary;
constexpr Row kRows[] = {
    {kConfig, "XDG_CONFIG_HOME", "/etc/mine//",  "/home/u",  "/etc/mine"           },
    {kConfig, "XDG_CONFIG_HOME", "/h\xC3\xB6he", "/home/u",  "/h\xC3\xB6he"        },
    {kConfig, "XDG_CONFIG_HOME", "relative",     "/home/u",  "/home/u/.config"     },
    {kConfig, "XDG_CONFIG_HOME", "",             "/home/u/", "/home/u/.config"     },
    {kConfig, nullptr,           nullptr,        "/",        "/.config"            },
    {kData,   "XDG_DATA_HOME",   "/srv/data",    "/home/u",  "/srv/data"           },
    {kData,   nullptr,           nullptr,        "/home/u",  "/home/u/.local/share"},
    {kTemp,   "TMPDIR",          "/var/tmp/",    "/home/u",  "/var/tmp"            },
    {kTemp,   nullptr,           nullptr,        "/home/u",  "/tmp"                },
};
}  // namespace

TEST(Folders, ComeFromTheEnvironment) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.expected);
        const Environment clean;
        setenv("HOME", row.home, 1);
        if (row.variable)
            setenv(row.variable, row.value, 1);
        EXPECT_EQ(folder(row.kind), row.expected);
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
