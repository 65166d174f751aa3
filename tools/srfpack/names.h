#pragma once
#include "storage/fpath.h"
#include <filesystem>
#include <string>

namespace SrfPack {
/** A text as people and files see it. */
std::string utf8Of(const Tessarine::FString& text);
std::string utf8Of(const Tessarine::FPath& path);
/** The same for a terminal: what would steer it is shown as a number. */
std::string printable(const std::string& text);
/** false: it isn't UTF-8. */
bool pathOf(const std::filesystem::path& name, int32_t kind, Tessarine::FNPath& path);
/** "name: what the system says", for a code of it. */
std::string systemError(const std::string& name, int code);
/** The same for what has just not been written: its code is errno, unless that is left from a look for what isn't there. */
std::string writeError(const std::string& name);
}  // namespace SrfPack
