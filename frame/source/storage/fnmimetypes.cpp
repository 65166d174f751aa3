#include "platformname.h"
#include "storage/ffilesystem.h"
#include "storage/userfolders.h"
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <strings.h>
#include <vector>

/** What the desktop knows of extensions: "globs2" of its MIME data base, lines of weight:type:pattern, the heaviest first. */

namespace Tessarine {
namespace {
constexpr const char* kTable = "/mime/globs2";
constexpr std::string_view kAnyName = "*.";
constexpr std::string_view kCaseMark = ":cs";

std::vector<std::string> dataFolders() {
    const char* value = std::getenv("XDG_DATA_DIRS");
    std::istringstream list(value && *value ? value : "/usr/local/share:/usr/share");
    std::vector<std::string> folders = {environmentOrHome("XDG_DATA_HOME", ".local/share")};
    for (std::string folder; std::getline(list, folder, ':');)
        folders.push_back(folder);
    std::erase_if(folders, [](const std::string& folder) { return !folder.starts_with('/'); });
    return folders;
}

/** The type of a line whose pattern is "*." and the extension; else empty. What is marked "cs" wants its own case. */
std::string_view typeIn(std::string_view line, const std::string& extension, bool exactly) {
    const size_t type = line.find(':') + 1, pattern = line.find(':', type) + 1;
    if (line.starts_with('#') || type == 0 || pattern == 0)
        return {};
    const size_t end = std::min(line.find(':', pattern), line.size());
    const std::string_view glob = line.substr(pattern, end - pattern);
    if (!glob.starts_with(kAnyName) || glob.size() != kAnyName.size() + extension.size())
        return {};
    const std::string_view own = glob.substr(kAnyName.size());
    const bool anyCase = !exactly && line.substr(end) != kCaseMark;
    const bool same = anyCase ? ::strncasecmp(own.data(), extension.data(), extension.size()) == 0 : own == extension;
    return same ? line.substr(type, pattern - 1 - type) : std::string_view();
}

bool findInTable(const std::string& table, const std::string& extension, bool exactly, FString& mimeType) {
    std::ifstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        const std::string type(typeIn(line, extension, exactly));
        if (!type.empty())
            return mimeType.fromUTF8(type.c_str());
    }
    return false;
}
}  // namespace

bool FNFileSystem::lookupMimeType(const ConstString& extension, FString& mimeType) {
    const FFileType* known = FFileType::getTypeByString(extension);
    if (known && !known->getMimeType().isEmpty()) {
        mimeType = known->getMimeType();
        return true;
    }
    FString wide(extension);
    wide.text16();
    const std::string bytes(PlatformName(units16(wide)));
    for (const bool exactly : {true, false})  // "c" and "C" are two languages, "JPG" is but a "jpg"
        for (const std::string& folder : dataFolders())
            if (!bytes.empty() && findInTable(folder + kTable, bytes, exactly, mimeType))
                return true;
    return false;
}

bool FNFileSystem::lookupUTI(const ConstString& extension, FString& uti) {
    const FFileType* known = FFileType::getTypeByString(extension);
    if (!known || known->getUTI().isEmpty())
        return false;
    uti = known->getUTI();
    return true;
}

}  // namespace Tessarine
