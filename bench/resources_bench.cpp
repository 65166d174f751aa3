// A resource file of 1,000 members, 34 MB, beside the archives that others have: a third of it noise, as drawings are that are
// compressed already, the rest as texts look. Opened and listed, time of an entry; read to the end and packed, time of a KB.
// Files come from the disk and go there on either side, at the same level.
#include "base/source/finitializer.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fresourcearchive.h"
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>
#ifdef BENCH_LIBZIP
#include <zip.h>
#endif
#ifdef BENCH_PHYSFS
#include <physfs.h>
#endif

using namespace Tessarine;

namespace {
constexpr int32_t kMembers = 1000, kMembersInFolder = 100;
constexpr int64_t kMeanBytes = 34'000, kItemBytes = 1024;
constexpr int32_t kLevel = 5;

std::string sampleBytes(int32_t number, std::mt19937& random) {
    std::string bytes;
    const size_t size = size_t(kMeanBytes / 2) + random() % size_t(kMeanBytes);
    while (bytes.size() < size)
        if (number % 3 == 0)
            bytes += char(random());
        else
            bytes += "<control name=\"" + std::to_string(random() % 400) + "\" size=\"" +
                     std::to_string(random() % 900) + ",0\"/>\n";
    bytes.resize(size);
    return bytes;
}

/** The files, in ten folders; and a place for archives beside them. */
class Sample {
public:
    static const Sample& instance() {
        static const Sample sample;
        return sample;
    }
    std::string tree() const { return (root / "tree").string(); }
    std::string archive(const std::string& name) const { return (root / name).string(); }

    std::vector<std::string> names;
    int64_t bytes = 0;

private:
    Sample() {
        std::string name = (std::filesystem::temp_directory_path() / "resources.XXXXXX").string();
        root = ::mkdtemp(name.data());
        std::mt19937 random(1);
        for (int32_t i = 0; i < kMembers; ++i) {
            names.push_back("folder" + std::to_string(i / kMembersInFolder) + "/member" + std::to_string(i) + ".dat");
            const std::filesystem::path file = std::filesystem::path(tree()) / names.back();
            std::filesystem::create_directories(file.parent_path());
            const std::string content = sampleBytes(i, random);
            std::ofstream(file, std::ios::binary) << content;
            bytes += int64_t(content.size());
        }
    }
    ~Sample() { std::filesystem::remove_all(root); }

    std::filesystem::path root;
};

std::vector<char>& readBuffer() {
    static std::vector<char> buffer(size_t(2 * kMeanBytes));
    return buffer;
}

struct Ours {
    static FNPath pathOf(const std::string& name, int32_t kind) {
        FString text;
        text.fromUTF8(name.c_str());
        return FNPath(text.text16(), kind);
    }
    explicit Ours(bool compresses)
        : compresses(compresses), file(pathOf(Sample::instance().archive(compresses ? "c.srf" : "s.srf"), kFilePath)) {
        OneTimeProcedure::initialize(UINT32_MAX);
        FResourceArchive::gCompressionLevel = (float(kLevel) + 0.5f) / 9;
        for (const std::string& name : Sample::instance().names)
            names.push_back(pathOf(name, kFilePath));
    }
    bool pack() {
        FNPath folder = pathOf(Sample::instance().tree(), kFolderPath);
        const OPtr<FResourceArchive> made(new FResourceArchive(&file));
        bool cancel = false;
        return made->create(compresses ? FResourceArchive::kCompress : 0, nullptr) &&
               made->addFolder(static_cast<FResourceEntry*>(made->getTree()), &folder, FResourceArchive::kSubFolders,
                               nullptr, cancel) &&
               made->writeContent();
    }
    bool open() {
        archive = OPtr<FResourceArchive>(new FResourceArchive(&file));
        return archive->open();
    }
    int64_t list() {
        int64_t sum = 0;
        FString name;
        const FFileArchiveNode* root = archive->getTree();
        for (const FFileArchiveNode* node = root->getFirstChild(); node; node = node->getNextBelow(root)) {
            node->getFileName(name);
            benchmark::DoNotOptimize(name.text16());
            sum += node->getUncompressedSize();
        }
        return sum;
    }
    int64_t readAll() {
        int64_t sum = 0;
        for (FNPath& name : names) {
            FStream* stream = archive->openFile(&name, kOpenRead);
            sum += stream->readRaw(readBuffer().data(), int64_t(readBuffer().size()));
            archive->closeFile(stream);
        }
        return sum;
    }

    bool compresses;
    FNPath file;
    std::vector<FNPath> names;
    OPtr<FResourceArchive> archive;
};

#ifdef BENCH_LIBZIP
struct LibZip {
    explicit LibZip(bool compresses)
        : compresses(compresses), file(Sample::instance().archive(compresses ? "c.zip" : "s.zip")) {}
    ~LibZip() { close(); }
    bool pack() {
        zip_t* made = zip_open(file.c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
        for (const std::string& name : Sample::instance().names) {
            zip_source_t* source = zip_source_file(made, (Sample::instance().tree() + "/" + name).c_str(), 0, -1);
            const zip_int64_t index = zip_file_add(made, name.c_str(), source, ZIP_FL_ENC_UTF_8);
            zip_set_file_compression(made, zip_uint64_t(index), compresses ? ZIP_CM_DEFLATE : ZIP_CM_STORE, kLevel);
        }
        return zip_close(made) == 0;
    }
    bool open() {
        close();
        archive = zip_open(file.c_str(), ZIP_RDONLY, nullptr);
        return archive;
    }
    void close() {
        if (archive)
            zip_discard(archive);
        archive = nullptr;
    }
    int64_t list() {
        int64_t sum = 0;
        zip_stat_t entry;
        const zip_int64_t count = zip_get_num_entries(archive, 0);
        for (zip_int64_t i = 0; i < count; ++i)
            if (zip_stat_index(archive, zip_uint64_t(i), 0, &entry) == 0) {
                benchmark::DoNotOptimize(entry.name);
                sum += int64_t(entry.size);
            }
        return sum;
    }
    int64_t readAll() {
        int64_t sum = 0;
        for (const std::string& name : Sample::instance().names) {
            zip_file_t* member = zip_fopen(archive, name.c_str(), 0);
            sum += zip_fread(member, readBuffer().data(), readBuffer().size());
            zip_fclose(member);
        }
        return sum;
    }

    bool compresses;
    std::string file;
    zip_t* archive = nullptr;
};

#ifdef BENCH_PHYSFS
/** It reads the same ZIP file. */
struct PhysicsFS {
    explicit PhysicsFS(bool compresses) : zip(compresses) { PHYSFS_init(nullptr); }
    ~PhysicsFS() { PHYSFS_deinit(); }
    bool pack() { return zip.pack(); }
    bool open() { return PHYSFS_mount(zip.file.c_str(), nullptr, 1) != 0; }
    int64_t readAll() {
        int64_t sum = 0;
        for (const std::string& name : Sample::instance().names) {
            PHYSFS_File* member = PHYSFS_openRead(name.c_str());
            sum += PHYSFS_readBytes(member, readBuffer().data(), readBuffer().size());
            PHYSFS_close(member);
        }
        return sum;
    }

    LibZip zip;
};
#endif
#endif

template <class Peer>
void readResources(benchmark::State& state, bool compressed) {
    Peer peer(compressed);
    if (!peer.pack() || !peer.open())
        return state.SkipWithError("can't be packed");
    for (auto _ : state)
        if (peer.readAll() != Sample::instance().bytes)
            state.SkipWithError("not what was packed");
    state.SetItemsProcessed(state.iterations() * (Sample::instance().bytes / kItemBytes));
}
}  // namespace

template <class Peer>
void OpenResources(benchmark::State& state) {
    Peer peer(false);
    if (!peer.pack())
        return state.SkipWithError("can't be packed");
    for (auto _ : state)
        if (!peer.open() || peer.list() != Sample::instance().bytes)
            state.SkipWithError("not what was packed");
    state.SetItemsProcessed(state.iterations() * kMembers);
}

template <class Peer>
void ReadCompressedResources(benchmark::State& state) {
    readResources<Peer>(state, true);
}

template <class Peer>
void ReadStoredResources(benchmark::State& state) {
    readResources<Peer>(state, false);
}

template <class Peer>
void PackResources(benchmark::State& state) {
    Peer peer(true);
    for (auto _ : state)
        if (!peer.pack())
            state.SkipWithError("can't be packed");
    state.SetItemsProcessed(state.iterations() * (Sample::instance().bytes / kItemBytes));
}

#define BENCHMARK_ALL(Peer)                            \
    BENCHMARK_TEMPLATE(OpenResources, Peer);           \
    BENCHMARK_TEMPLATE(ReadCompressedResources, Peer); \
    BENCHMARK_TEMPLATE(ReadStoredResources, Peer);     \
    BENCHMARK_TEMPLATE(PackResources, Peer)

BENCHMARK_ALL(Ours);
#ifdef BENCH_LIBZIP
BENCHMARK_ALL(LibZip);
#ifdef BENCH_PHYSFS
BENCHMARK_TEMPLATE(ReadCompressedResources, PhysicsFS);
BENCHMARK_TEMPLATE(ReadStoredResources, PhysicsFS);
#endif
#endif
