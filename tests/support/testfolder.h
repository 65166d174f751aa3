#pragma once
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

/** A folder that goes with the test. */
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "talv-test-XXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path); }
    TemporaryFolder(const TemporaryFolder&) = delete;

    std::filesystem::path path;
};
