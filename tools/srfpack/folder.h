#pragma once
#include <filesystem>
#include <string>

namespace SrfPack {
/** What keeps a folder from being packed: names, other things than files, files that can't be read, or more than maxBytes of
    them. Empty: nothing. */
std::string findObstacle(const std::filesystem::path& folder, int64_t maxBytes);
/** What is said of content that has no place in a file without compression. */
std::string tooMuch(const std::string& name);
}  // namespace SrfPack
