#pragma once
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace Tessarine {

/** A file that older versions wrote: what is there must be read for good, and written again byte for byte. */
inline std::string goldenFile(const std::string& name) {
    const char* root = std::getenv("TALV_SOURCE_DIR");
    std::ifstream file((root ? std::string(root) + "/" : "") + "tests/frame/source/storage/golden/" + name,
                       std::ios::binary);
    EXPECT_TRUE(file) << name << " isn't there";
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace Tessarine
