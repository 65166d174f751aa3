#pragma once
#include <filesystem>
#include <string>

namespace SrfPack {
/** What keeps a folder from being packed: names, other things than files, files that can't be read, or more than maxBytes of
    them. Empty: nothing. */
std::string findObstacle(const std::filesystem::path& folder, int64_t maxBytes);
}  // namespace SrfPack
