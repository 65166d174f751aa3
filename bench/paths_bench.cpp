// Looking up files: on the disk as it is, and below a root that no path may leave. 1,000 files in folders of 100, two levels
// down. std::filesystem has no such root: its row joins folder and name and asks, which any ".." or link gets out of.
#include "storage/fvfilesystem.h"
#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>
#ifdef BENCH_PHYSFS
#include <physfs.h>
#endif

using namespace Tessarine;
namespace fs = std::filesystem;

namespace {
constexpr int32_t kFiles = 1000, kInFolder = 100;

/** Names below the folder, and the folder itself, which goes at the end. */
struct Tree {
    Tree() : folder(fs::temp_directory_path() / ("paths_bench." + std::to_string(::getpid()))) {
        for (int32_t i = 0; i < kFiles; ++i) {
            const std::string below = "skins/part" + std::to_string(i / kInFolder) + "/bitmap" + std::to_string(i);
            fs::create_directories((folder / below).parent_path());
            std::ofstream(folder / (below + ".png")) << i;
            names.push_back(below + ".png");
            missing.push_back(below + ".jpg");
        }
    }
    ~Tree() { fs::remove_all(folder); }

    fs::path folder;
    std::vector<std::string> names, missing;
};

const Tree& tree() {
    static const Tree made;
    return made;
}

std::u16string wide(const std::string& text) {
    return std::u16string(text.begin(), text.end());
}

struct Ours {
    using Name = FPath;
    Ours() {
        FNPath root(wide(tree().folder).c_str(), kFolderPath);
        disk = new FVFileSystem(&root);
    }
    static Name name(const std::string& text) {
        Name path;
        path.fromString(wide(text).c_str(), kFilePath);
        return path;
    }
    static bool exists(Name& path) { return gFileSystem->fileExists(&path); }
    bool existsBelow(Name& path) { return disk->fileExists(&path); }
    int64_t sizeBelow(Name& path) { return disk->getFileSize(&path); }
    static void downAndUp(Name& path) {
        path.descend(u"name.xml", kFilePath);
        path.ascend();
    }

    OPtr<FVFileSystem> disk;
};

struct StdFilesystem {
    using Name = fs::path;
    static Name name(const std::string& text) { return text; }
    static bool exists(Name& path) {
        std::error_code error;
        return fs::exists(path, error);
    }
    static bool existsBelow(Name& path) {
        std::error_code error;
        return fs::exists(tree().folder / path, error);
    }
    static int64_t sizeBelow(Name& path) {
        std::error_code error;
        return int64_t(fs::file_size(tree().folder / path, error));
    }
    static void downAndUp(Name& path) {
        path /= "name.xml";
        path = path.parent_path();
    }
};

#ifdef BENCH_PHYSFS
struct PhysicsFS {
    using Name = std::string;
    PhysicsFS() {
        PHYSFS_init(nullptr);
        PHYSFS_mount(tree().folder.c_str(), nullptr, 1);
    }
    ~PhysicsFS() { PHYSFS_deinit(); }
    static Name name(const std::string& text) { return text; }
    static bool existsBelow(Name& path) { return PHYSFS_exists(path.c_str()) != 0; }
    static int64_t sizeBelow(Name& path) {
        PHYSFS_Stat status;
        return PHYSFS_stat(path.c_str(), &status) ? status.filesize : -1;
    }
};
#endif

template <class Peer>
std::vector<typename Peer::Name> namesOf(const std::vector<std::string>& texts, const std::string& before = "") {
    std::vector<typename Peer::Name> names;
    for (const std::string& text : texts)
        names.push_back(Peer::name(before + text));
    return names;
}

/** Asks for all names in turn; each answer must be the expected one. */
template <class Name, class Ask>
void askAll(benchmark::State& state, std::vector<Name> names, bool expected, Ask ask) {
    int64_t good = 0;
    for (auto _ : state)
        for (Name& name : names)
            good += ask(name);
    if (good != (expected ? state.iterations() * kFiles : 0))
        state.SkipWithError("a wrong answer");
    state.SetItemsProcessed(state.iterations() * kFiles);
}

template <class Peer>
void LookUpOnDisk(benchmark::State& state) {
    askAll(state, namesOf<Peer>(tree().names, tree().folder.string() + '/'), true,
           [](auto& name) { return Peer::exists(name); });
}

template <class Peer>
void LookUpBelowRoot(benchmark::State& state) {
    Peer peer;
    askAll(state, namesOf<Peer>(tree().names), true, [&](auto& name) { return peer.existsBelow(name); });
}

template <class Peer>
void MissBelowRoot(benchmark::State& state) {
    Peer peer;
    askAll(state, namesOf<Peer>(tree().missing), false, [&](auto& name) { return peer.existsBelow(name); });
}

template <class Peer>
void SizeBelowRoot(benchmark::State& state) {
    Peer peer;
    askAll(state, namesOf<Peer>(tree().names), true, [&](auto& name) { return peer.sizeBelow(name) > 0; });
}

template <class Peer>
void PathDownAndUp(benchmark::State& state) {
    askAll(state, namesOf<Peer>(tree().names, "/"), true, [](auto& name) {
        Peer::downAndUp(name);
        return true;
    });
}

BENCHMARK(LookUpOnDisk<Ours>);
BENCHMARK(LookUpOnDisk<StdFilesystem>);
BENCHMARK(LookUpBelowRoot<Ours>);
BENCHMARK(LookUpBelowRoot<StdFilesystem>);
BENCHMARK(MissBelowRoot<Ours>);
BENCHMARK(MissBelowRoot<StdFilesystem>);
BENCHMARK(SizeBelowRoot<Ours>);
BENCHMARK(SizeBelowRoot<StdFilesystem>);
BENCHMARK(PathDownAndUp<Ours>);
BENCHMARK(PathDownAndUp<StdFilesystem>);
#ifdef BENCH_PHYSFS
BENCHMARK(LookUpBelowRoot<PhysicsFS>);
BENCHMARK(MissBelowRoot<PhysicsFS>);
BENCHMARK(SizeBelowRoot<PhysicsFS>);
#endif
}  // namespace
