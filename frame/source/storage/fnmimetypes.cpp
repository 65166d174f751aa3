#include "platformname.h"
#include "storage/ffilesystem.h"
#include <cstdlib>
#include <fstream>
#include <string>
#include <strings.h>
#include <vector>

/** What the desktop knows of extensions: "globs2" of its MIME data base, lines of weight:type:pattern, the heaviest first. */

namespace Tessarine {
namespace {
constexpr const char* kTable = "/mime/globs2";
constexpr std::string_view kAnyName = "*.";

std::vector<std::string> dataFolders() {
    std::vector<std::string> folders;
    const auto add = [&folders](const char* variable, std::string otherwise) {
        const char* value = std::getenv(variable);
        std::string list = value && *value ? value : std::move(otherwise);
        for (size_t end = 0; end != std::string::npos; list.erase(0, end == std::string::npos ? end : end + 1)) {
            end = list.find(':');
            if (list.starts_with('/'))
                folders.push_back(list.substr(0, end));
        }
    };
    const char* home = std::getenv("HOME");
    add("XDG_DATA_HOME", home ? std::string(home) + "/.local/share" : "");
    add("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    return folders;
}

/** The type of a line whose pattern is "*." and the extension; else empty. */
std::string_view typeIn(std::string_view line, const std::string& extension) {
    const size_t type = line.find(':') + 1, pattern = line.find(':', type) + 1;
    if (line.starts_with('#') || type == 0 || pattern == 0)
        return {};
    const std::string_view glob = line.substr(pattern, line.find(':', pattern) - pattern);
    const bool same = glob.starts_with(kAnyName) && glob.size() == kAnyName.size() + extension.size() &&
                      ::strncasecmp(glob.data() + kAnyName.size(), extension.data(), extension.size()) == 0;
    return same ? line.substr(type, pattern - 1 - type) : std::string_view();
}

bool findInTable(const std::string& table, const std::string& extension, FString& mimeType) {
    std::ifstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        const std::string type(typeIn(line, extension));
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
    for (const std::string& folder : dataFolders())
        if (!bytes.empty() && findInTable(folder + kTable, bytes, mimeType))
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
