#pragma once
#include "storage/fpath.h"
#include "storage/hooks.h"
#include "tests/support/testfolder.h"
#include <fstream>
#include <iterator>
#include <set>

namespace Tessarine {

/** A path as an argument where pointers are taken. */
class At : public FNPath {
public:
    At(const std::string& name) {
        FString text;
        text.fromUTF8(name.c_str());
        fromString(text.text16(), kFilePath);
    }
    operator FNPath*() { return this; }
};

/** A real folder that goes with the test. */
class TempFolder : public TemporaryFolder {
public:
    std::string operator/(const std::string& name) const { return (path / name).string(); }
    At at(const std::string& name) const { return At(path / name); }
    At self() const { return At(path); }
    void write(const std::string& name, const std::string& text) const {
        std::ofstream(path / name, std::ios::binary) << text;
    }
    std::string read(const std::string& name) const {
        std::ifstream file(path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::set<std::string> names(const char* folder = "") const {
        std::set<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(path / folder))
            found.insert(entry.path().filename());
        return found;
    }
};

/** While it lives, the standard folders are these. */
class StandardFolders {
public:
    StandardFolders() : before(gStorageHooks) {
        current = this;
        gStorageHooks.standardFolder = [](int32_t number, FNPath& path) {
            const TempFolder* known = number == kUserFolder          ? &current->user
                                      : number == kCommonFolder      ? &current->common
                                      : number == kApplicationFolder ? &current->application
                                                                     : nullptr;
            if (known)
                path = known->self();
            return known != nullptr;
        };
    }
    ~StandardFolders() { gStorageHooks = before; }

    TempFolder user, common, application;

private:
    const StorageHooks before;
    inline static const StandardFolders* current;
};

}  // namespace Tessarine
