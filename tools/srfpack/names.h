#pragma once
#include "storage/fpath.h"
#include <filesystem>
#include <string>

namespace SrfPack {
/** A text as people and files see it. */
std::string utf8Of(const Tessarine::FString& text);
/** The same for a terminal: what would steer it is shown as a number. */
std::string printable(const std::string& text);
/** false: it isn't UTF-8. */
bool pathOf(const std::filesystem::path& name, int32_t kind, Tessarine::FNPath& path);
/** "name: what the system says", for a code of it. */
std::string systemError(const std::string& name, int code);
}  // namespace SrfPack
