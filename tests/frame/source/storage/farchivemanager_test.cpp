#include "storage/farchivemanager.h"
#include "base/fcompiledinclass.h"
#include "collect/cmarray.h"
#include "collect/cmdate.h"
#include "pluginterfaces/base/fvariant.h"
#include "storage/ffilesystemadapter.h"
#include "storage/fmstream.h"
#include "storage/fresourcearchive.h"
#include "storage/furl.h"
#include "tempfolder.h"
#include <atomic>
#include <cerrno>
#include <future>
#include <gtest/gtest.h>
#include <map>

namespace Tessarine {
namespace {
FString wide(const char* text) {
    FString result;
    result.fromUTF8(text);
    return result;
}

FPath at(const char* text) {
    FPath path;
    path.fromString(wide(text).text16(), kFilePath);
    return path;
}

std::string utf8(const ConstString& text) {
    FString bytes(text);
    bytes.toMultiByte(kCodePageUTF8);
    return bytes.text8();
}

std::string textOf(const FPath& path) {
    FString text;
    path.getFullPath(text);
    return utf8(text);
}

/** A container of lines "name=content". */
class LineSystem : public FObject, public IVirtualFileSystem {
public:
    struct Walk : public FObject, public IVirtualFileIterator {
        explicit Walk(LineSystem* system) : system(system), each(system->files.begin()) {}
        int32_t getNext(const tchar** name, VirtualFileInfo* info) override {
            if (each == system->files.end())
                return kResultFalse;
            current = wide((each++)->first.c_str());
            *name = current.text16();
            *info = {};
            return kResultOk;
        }
        FORWARD_REFCOUNT(FObject)
        int32_t queryInterface(const char* iid, void** obj) override { return FObject::queryInterface(iid, obj); }
        LineSystem* system;
        std::map<std::string, std::string>::iterator each;
        FString current;
    };

    LineSystem() { ++living; }
    ~LineSystem() override { --living; }
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IVirtualFileSystem>(this, iid, obj) ? int32_t(kResultOk)
                                                                   : FObject::queryInterface(iid, obj);
    }
    FORWARD_REFCOUNT(FObject)

    int32_t describe(IAttributes* attributes) override {
        attributes->set(kCanRead, FVariant(int64_t(reads)));
        attributes->set(kCanWrite, FVariant(int64_t(writes)));
        attributes->set(kCanIterate, FVariant(int64_t(1)));
        attributes->queue(kFileTypes, FVariant(u"mxf"));
        attributes->queue(kFileTypes, FVariant(u"lines"));
        return kResultOk;
    }
    int32_t mount(IBStream* stream) override {
        // a component may take its time, and ask others
        auto asked = std::async(std::launch::async, [] {
            return FArchiveManager::instance()->containsArchive(wide("srf:"), wide("nobody"));
        });
        if (asked.wait_for(std::chrono::seconds(5)) != std::future_status::ready)
            return kResultFalse;
        IBStreamer bytes(stream);
        char line[256];
        while (bytes.readString8(line, sizeof line) > 0)
            if (char* mark = std::strchr(line, '='))
                files[std::string(line, mark)] = std::string(mark + 1, std::strcspn(mark + 1, "\n"));
        mounted += !files.empty();
        return files.empty() ? kResultFalse : kResultOk;
    }
    int32_t unmount() override {
        --mounted;
        return kResultOk;
    }
    int32_t openFile(const tchar* path, int32_t mode, IBStream** stream) override {
        lastMode = mode;
        const auto found = files.find(utf8(path));
        if (found == files.end())
            return kResultFalse;
        auto* memory = new FMemoryStream;
        memory->writeRaw(found->second.data(), int64_t(found->second.size()));
        memory->rewind();
        *stream = memory;
        return kResultOk;
    }
    int32_t removeFile(const tchar* path) override { return files.erase(utf8(path)) ? kResultOk : kResultFalse; }
    int32_t renameFile(const tchar* path, const tchar* newName) override {
        auto taken = files.extract(utf8(path));
        if (taken.empty())
            return kResultFalse;
        taken.key() = utf8(newName);
        files.insert(std::move(taken));
        return kResultOk;
    }
    int32_t getFileInfo(const tchar* path, VirtualFileInfo* info) override {
        const auto found = files.find(utf8(path));
        if (found == files.end())
            return kResultFalse;
        info->size = int64_t(found->second.size());
        return kResultOk;
    }
    int32_t newIterator(const tchar* folder, IVirtualFileIterator** iterator) override {
        if (*folder)
            return kResultFalse;
        *iterator = new Walk(this);
        return kResultOk;
    }

    std::map<std::string, std::string> files;
    static inline std::atomic<int32_t> living = 0, mounted = 0, lastMode = 0;
    static inline bool reads = true, writes = false;
};
FCompiledInClass gLineSystem = {IVirtualFileSystem::kCategory, "Lines", {}, [] { return (FObject*)new LineSystem; }};

class ArchiveManager : public ::testing::Test {
protected:
    ArchiveManager() { FCompiledInClass::registerClass(gLineSystem); }
    ~ArchiveManager() override {
        FArchiveManager::terminate();
        EXPECT_EQ(LineSystem::living, 0);
        EXPECT_EQ(LineSystem::mounted, 0);
        LineSystem::reads = true;
        LineSystem::writes = false;
    }
    std::string urlOf(const char* file) const {
        return "vfs://" + utf8(FArchiveManager::getContainerUID(disk.at(file)));
    }
    FArchiveManager* manager = FArchiveManager::instance();
    TempFolder disk;
};

struct UrlRow {
    const char *text, *protocol, *uid, *root, *inner;
    bool isRoot;
};
constexpr UrlRow kUrls[] = {
    {"srf://ID/a/b.png",        "srf:",     "ID",   "srf://ID",     "a/b.png",  false},
    {"srf://ID",                "srf:",     "ID",   "srf://ID",     "",         true },
    {"archive://ID/./",         "archive:", "ID",   "archive://ID", ".",        true },
    {"archive://ID/a/..",       "archive:", "ID",   "archive://ID", "a/..",     true },
    {"vfs://%2fx/a%20b%2Fc%zz", "vfs:",     "%2fx", "vfs://%2fx",   "a b/c%zz", false},
    {"vfs://x/a%00b",           "vfs:",     "x",    "vfs://x",      "",         false},
    {"srf:///a",                "srf:",     "",     "",             "a",        false},
    {"/home/x",                 "",         "",     "",             "/home/x",  false},
    {"a/b://c",                 "",         "",     "",             "a/b://c",  false},
    {"://x/y",                  "",         "",     "",             "://x/y",   false},
    {"a%20b",                   "",         "",     "",             "a%20b",    false},
};

TEST_F(ArchiveManager, TakesUrlsApart) {
    for (const UrlRow& row : kUrls) {
        SCOPED_TRACE(row.text);
        const FPath path = at(row.text);
        FString protocol, uid, root;
        EXPECT_EQ(FArchiveManager::getProtocol(path, protocol), *row.protocol != 0);
        EXPECT_EQ(FArchiveManager::getUID(path, uid), *row.uid != 0);
        EXPECT_EQ(FArchiveManager::getRootPath(path, root), *row.root != 0);
        EXPECT_EQ(utf8(protocol), row.protocol);
        EXPECT_EQ(utf8(uid), row.uid);
        EXPECT_EQ(utf8(root), row.root);
        EXPECT_EQ(textOf(FArchiveManager::getPath(path)), row.inner);
        EXPECT_EQ(FArchiveManager::isRoot(path), row.isRoot);
    }
}

TEST_F(ArchiveManager, KnowsEachIdentifierOnce) {
    FUID id;
    ASSERT_TRUE(id.generate());
    EXPECT_TRUE(manager->registerArchive(gFileSystem, wide("srf:"), id));
    EXPECT_FALSE(manager->registerArchive(gFileSystem, wide("vfs:"), id));
    for (const char* protocol : {"srf", ":", "a/b:", "a:b:", ""})
        EXPECT_FALSE(manager->registerArchive(gFileSystem, wide(protocol), wide("x"))) << protocol;
    EXPECT_FALSE(manager->registerArchive(gFileSystem, wide("srf:"), wide("x/y")));
    EXPECT_FALSE(manager->registerArchive(nullptr, wide("srf:"), wide("x")));
    EXPECT_TRUE(manager->registerArchive(gFileSystem, wide("archive:"), wide("plain")));
    CmArray drives(0, 4);
    drives._ownsObjects = CmContainer::kTakesOver;
    ASSERT_EQ(manager->getDrives(drives), 2);
    EXPECT_EQ(textOf(*static_cast<FPath*>(drives.at(0))), "archive://plain");
    FUID read;
    FString text;
    EXPECT_TRUE(FArchiveManager::getUID(*static_cast<FPath*>(drives.at(1)), text));
    EXPECT_TRUE(FArchiveManager::getUIDFromString(text, read) && read == id);
    EXPECT_TRUE(manager->isRegisteredURL(at("archive://plain/x")));
    EXPECT_FALSE(manager->isRegisteredURL(at("srf://plain/x")));
    EXPECT_TRUE(manager->unregisterArchive(wide("srf:"), id, true));
    EXPECT_FALSE(manager->unregisterArchive(wide("srf:"), id, true));
    EXPECT_TRUE(manager->unregisterArchive(gFileSystem));
    EXPECT_FALSE(manager->containsArchive(wide("archive:"), wide("plain")));
}

TEST_F(ArchiveManager, MountsWhatAComponentTakes) {
    disk.write("box.MXF", "one=1st\n100% sure=2nd\n../out=evil\n");
    disk.write("empty.lines", "");
    disk.write("box.txt", "one=1st\n");
    for (const char* file : {"empty.lines", "box.txt", "missing.lines"}) {
        const FPath path = at((urlOf(file) + "/one").c_str());
        EXPECT_EQ(OPtr<FFileSystem>(manager->getFileSystem(&path)), nullptr) << file;
    }
    const std::string root = urlOf("box.MXF");
    const FPath top = at(root.c_str()), plain = at("/x"), broken = at((root + "/%00").c_str());
    const FPath upper = at(("vfs://%2F" + root.substr(root.find("%2f") + 3)).c_str());
    EXPECT_EQ(OPtr<FFileSystem>(manager->getFileSystem(&plain)).get(), gFileSystem);
    std::map<std::string, std::string> found;
    {
        const OPtr<FFileIterator> entries(manager->newIterator(&top));
        ASSERT_TRUE(entries);
        for (FPath* each = entries->first(); each; each = entries->next()) {
            const OPtr<FFileSystem> box(manager->getFileSystem(each));
            FPath inner = FArchiveManager::getPath(*each);
            FStream* stream = box->openFile(&inner, kOpenRead);
            ASSERT_TRUE(stream) << textOf(*each);
            char text[4] = {};
            EXPECT_EQ(stream->readRaw(text, 3), 3);
            EXPECT_EQ(box->getFileSize(stream), 3);
            EXPECT_TRUE(box->closeFile(stream));
            EXPECT_EQ(box->createFile(&inner, kOpenWrite), nullptr) << "it can't write";
            EXPECT_FALSE(manager->isBitwiseCopyable(each));
            found[textOf(*each)] = text;
        }
    }
    const std::map<std::string, std::string> expected = {
        {root + "/100%25%20sure", "2nd"},
        {root + "/one",           "1st"}
    };
    EXPECT_EQ(found, expected);
    EXPECT_EQ(LineSystem::mounted, 1);
    EXPECT_EQ(OPtr<FFileIterator>(manager->newIterator(&broken)), nullptr) << "not the root instead";
    for (const FPath& same : {at(("srf" + root.substr(3)).c_str()), upper})
        EXPECT_EQ(OPtr<FFileSystem>(manager->getFileSystem(&same)), OPtr<FFileSystem>(manager->getFileSystem(&top)));
    EXPECT_EQ(LineSystem::mounted, 1) << "one file, once";
}

struct AbilityRow {
    bool reads, writes;
    int32_t mode;
    bool opens;
};
constexpr AbilityRow kAbilities[] = {
    {true,  false, kOpenRead,               true },
    {true,  false, kOpenWrite,              false},
    {false, true,  kOpenRead,               false},
    {false, true,  kOpenWrite,              true },
    {false, true,  kOpenRead | kOpenWrite,  false},
    {true,  true,  kOpenRead | kOpenShared, true },
    {true,  true,  0,                       true },
};

TEST_F(ArchiveManager, AsksAComponentForWhatItCan) {
    for (const AbilityRow& row : kAbilities) {
        SCOPED_TRACE(testing::Message() << row.reads << row.writes << row.mode);
        LineSystem::reads = row.reads;
        LineSystem::writes = row.writes;
        disk.write("box.lines", "one=1st\ntwo=2nd\n");
        FNPath file = disk.at("box.lines");
        const OPtr<FFileSystemAdapter> box(FFileSystemAdapter::mount(&file));
        ASSERT_TRUE(box);
        FPath one = at("/x/../one"), two = at("two"), renamed = at("uno");
        int32_t error = -1;
        FStream* stream = box->openFile(&one, row.mode, &error);
        EXPECT_EQ(stream != nullptr, row.opens);
        EXPECT_EQ(error, row.opens ? 0 : EACCES);
        EXPECT_EQ(box->closeFile(stream), row.opens);
        EXPECT_TRUE(!row.opens || LineSystem::lastMode == (row.mode & ~kOpenShared));
        EXPECT_FALSE(box->renameFile(&one, u"../uno"));
        EXPECT_EQ(box->renameFile(&one, u"uno"), row.writes);
        EXPECT_EQ(box->fileExists(&renamed), row.writes);
        EXPECT_EQ(box->removeFile(&two), row.writes);
        EXPECT_EQ(box->fileExists(&two), !row.writes);
        stream = box->createFile(&renamed, kOpenWrite, &error);
        EXPECT_EQ(stream != nullptr, row.writes);
        EXPECT_EQ(stream && stream->writeRaw("new", 3) == 3 && box->closeFile(stream), row.writes);
    }
}

TEST_F(ArchiveManager, MountsResourceFiles) {
    FResourceArchive::doInits();
    std::filesystem::create_directory(disk / "in");
    disk.write("in/a b", "text");
    FNPath folder = disk.at("in"), file = disk.at("pack.srf");
    ASSERT_TRUE(OPtr<FResourceArchive>(new FResourceArchive(&file))->create(&folder, 0, nullptr, nullptr));
    const FPath path = at(("srf" + urlOf("pack.srf").substr(3) + "/a%20b").c_str());
    FPath inner = FArchiveManager::getPath(path);
    const OPtr<FFileSystem> pack(manager->getFileSystem(&path));
    ASSERT_TRUE(pack);
    EXPECT_EQ(pack->getFileSize(&inner), 4);
    EXPECT_TRUE(manager->isRegisteredURL(path));
    EXPECT_TRUE(manager->isBitwiseCopyable(&path));
}

TEST_F(ArchiveManager, UnmountsOnlyWhatNobodyUses) {
    disk.write("box.lines", "one=1st\n");
    const FPath path = at((urlOf("box.lines") + "/one").c_str());
    FPath inner = at("one");
    OPtr<FFileSystem> box(manager->getFileSystem(&path));
    ASSERT_TRUE(box);
    FStream* stream = box->openFile(&inner, kOpenRead);
    manager->unmountUnusedVirtualFileSystems();
    EXPECT_EQ(LineSystem::mounted, 1);
    EXPECT_FALSE(
        manager->unregisterArchive(wide("vfs:"), FArchiveManager::getContainerUID(disk.at("box.lines")), true));
    EXPECT_TRUE(manager->isRegisteredURL(path));
    EXPECT_FALSE(static_cast<FRemovableFileSystem*>(box.get())->unmount());
    EXPECT_TRUE(box->closeFile(stream));
    manager->unmountUnusedVirtualFileSystems();
    EXPECT_EQ(LineSystem::mounted, 0);
    EXPECT_FALSE(manager->isRegisteredURL(path));
    EXPECT_EQ(box->openFile(&inner, kOpenRead), nullptr) << "it is gone";
    EXPECT_EQ(box->newIterator(&inner, false), nullptr);

    box = manager->getFileSystem(&path);  // mounted anew
    stream = box->openFile(&inner, kOpenRead);
    box = nullptr;
    FArchiveManager::terminate();
    char c = 0;
    EXPECT_EQ(stream->readRaw(&c, 1), 1) << "lives as long as it is read from";
    stream->release();
}

TEST_F(ArchiveManager, ThreadsMountAFileOnce) {
    disk.write("box.lines", "one=1st\n");
    const FPath path = at((urlOf("box.lines") + "/one").c_str());
    std::vector<std::future<FFileSystem*>> all;
    for (int32_t i = 0; i < 8; ++i)
        all.push_back(std::async(std::launch::async, [&] { return manager->getFileSystem(&path); }));
    std::vector<OPtr<FFileSystem>> boxes;
    for (auto& each : all)
        boxes.emplace_back(each.get());
    for (const OPtr<FFileSystem>& box : boxes)
        EXPECT_EQ(box.get(), boxes[0].get());
}
}  // namespace
}  // namespace Tessarine
