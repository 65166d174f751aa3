#include "storage/farchivemanager.h"
#include "archiveprobes.h"
#include "base/fcompiledinclass.h"
#include "base/hooks.h"
#include "collect/cmarray.h"
#include "pathprobes.h"
#include "pluginterfaces/base/fvariant.h"
#include "storage/ffilesystemadapter.h"
#include "storage/fresourcearchive.h"
#include <atomic>
#include <cerrno>
#include <cstring>
#include <future>
#include <map>

namespace Tessarine {
namespace {
FString wide(const std::string& text) {
    FString result;
    result.fromUTF8(text.c_str());
    return result;
}

int32_t resultOf(bool done) {
    return done ? kResultOk : kResultFalse;
}

/** A container of lines "name=content", and a walk over a copy of it. */
class LineSystem : public FObject, public IVirtualFileSystem, public IVirtualFileIterator {
public:
    explicit LineSystem(const std::map<std::string, std::string>& files = {}) : files(files) { ++living; }
    ~LineSystem() override { --living; }
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<IVirtualFileSystem>(this, iid, obj) ? int32_t(kResultOk)
                                                                   : FObject::queryInterface(iid, obj);
    }
    FORWARD_REFCOUNT(FObject)

    int32_t getNext(const tchar** name, VirtualFileInfo* info) override {
        if (files.empty())
            return kResultFalse;
        current = wide(files.extract(files.begin()).key());
        *name = current.text16();
        *info = {};
        return kResultOk;
    }
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
        return resultOf(!files.empty());
    }
    int32_t unmount() override {
        --mounted;
        return kResultOk;
    }
    int32_t openFile(const tchar* path, int32_t mode, IBStream** stream) override {
        lastMode = mode;
        *stream = files.contains(utf8(path)) ? streamOf(files[utf8(path)]).detach() : nullptr;
        return resultOf(*stream);
    }
    int32_t removeFile(const tchar* path) override { return resultOf(files.erase(utf8(path))); }
    int32_t renameFile(const tchar* path, const tchar* newName) override {
        files[utf8(newName)] = files[utf8(path)];
        return removeFile(path);
    }
    int32_t getFileInfo(const tchar* path, VirtualFileInfo* info) override {
        info->size = files.contains(utf8(path)) ? int64_t(files[utf8(path)].size()) : 0;
        return resultOf(files.contains(utf8(path)));
    }
    int32_t newIterator(const tchar* folder, IVirtualFileIterator** iterator) override {
        *iterator = *folder ? nullptr : new LineSystem(files);
        return resultOf(*iterator);
    }

    std::map<std::string, std::string> files;
    FString current;
    static inline std::atomic<int32_t> living = 0, mounted = 0, lastMode = 0;
    static inline bool reads = true, writes = false;
};
FCompiledInClass gLineSystem = {IVirtualFileSystem::kCategory, "Lines", {}, [] { return (FObject*)new LineSystem; }};

class ArchiveManager : public ::testing::Test {
protected:
    ArchiveManager() {
        FCompiledInClass::registerClass(gLineSystem);
        disk.write("box.lines", "one=1st\ntwo=2nd\n");
    }
    ~ArchiveManager() override {
        FArchiveManager::terminate();
        EXPECT_EQ(LineSystem::living + LineSystem::mounted, 0);
        LineSystem::reads = true;
        LineSystem::writes = false;
    }
    std::string urlOf(const char* file, const std::string& inner = "", const std::string& protocol = "vfs") const {
        return protocol + "://" + utf8(FArchiveManager::getContainerUID(disk.at(file))) + inner;
    }
    OPtr<FFileSystem> systemOf(const std::string& url) { return OPtr<FFileSystem>(manager->getFileSystem(At(url))); }
    FArchiveManager* manager = FArchiveManager::instance();
    TempFolder disk;
};

// text, protocol, identifier, root, what is within, it is the root
constexpr std::tuple<const char*, std::string_view, std::string_view, std::string_view, const char*, bool> kUrls[] = {
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
    for (const auto& [text, protocol, uid, root, inner, isRoot] : kUrls) {
        SCOPED_TRACE(text);
        FString part;
        EXPECT_EQ(FArchiveManager::getProtocol(At(text), part), !protocol.empty());
        EXPECT_EQ(utf8(part), protocol);
        EXPECT_EQ(FArchiveManager::getUID(At(text), part), !uid.empty());
        EXPECT_EQ(utf8(part), uid);
        EXPECT_EQ(FArchiveManager::getRootPath(At(text), part), !root.empty());
        EXPECT_EQ(utf8(part), root);
        EXPECT_EQ(utf8(FArchiveManager::getPath(At(text))), inner);
        EXPECT_EQ(FArchiveManager::isRoot(At(text)), isRoot);
    }
}

TEST_F(ArchiveManager, KnowsEachIdentifierOnce) {
    FUID id, read;
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
    EXPECT_EQ(utf8(*static_cast<FPath*>(drives.at(0))), "archive://plain");
    FString text;
    EXPECT_TRUE(FArchiveManager::getUID(*static_cast<FPath*>(drives.at(1)), text) &&
                FArchiveManager::getUIDFromString(text, read) && read == id);
    EXPECT_TRUE(manager->isRegisteredURL(At("archive://plain/x")));
    EXPECT_FALSE(manager->isRegisteredURL(At("srf://plain/x")));
    EXPECT_TRUE(manager->unregisterArchive(wide("srf:"), id, true));
    EXPECT_FALSE(manager->unregisterArchive(wide("srf:"), id, true));
    EXPECT_TRUE(manager->unregisterArchive(gFileSystem));
    EXPECT_FALSE(manager->containsArchive(wide("archive:"), wide("plain")));
}

TEST_F(ArchiveManager, MountsWhatAComponentTakes) {
    disk.write("box.MXF", "one=1st\n100% sure=2nd\n../out=evil\n");
    disk.write("empty.lines", "");
    disk.write("box.txt", "one=1st\n");
    for (const char* file : {"empty.lines", "box.txt", "missing.lines"})
        EXPECT_FALSE(systemOf(urlOf(file, "/one"))) << file;
    EXPECT_EQ(systemOf("/x").get(), gFileSystem);
    const std::string root = urlOf("box.MXF");
    std::map<std::string, std::string> found;
    {
        const OPtr<FFileIterator> entries(manager->newIterator(At(root)));
        ASSERT_TRUE(entries);
        for (FPath* each = entries->first(); each; each = entries->next()) {
            const OPtr<FFileSystem> box = systemOf(utf8(*each));
            FPath inner = FArchiveManager::getPath(*each);
            found[utf8(*each)] = contentOf(*box, &inner);
            EXPECT_EQ(box->createFile(&inner, kOpenWrite), nullptr) << "it can't write";
            EXPECT_FALSE(manager->isBitwiseCopyable(each));
        }
    }
    const std::map<std::string, std::string> expected = {
        {root + "/100%25%20sure", "2nd"},
        {root + "/one",           "1st"}
    };
    EXPECT_EQ(found, expected);
    EXPECT_EQ(OPtr<FFileIterator>(manager->newIterator(At(root + "/%00"))), nullptr) << "not the root instead";
    for (const std::string& same : {urlOf("box.MXF", "", "srf"), "vfs://%2F" + root.substr(root.find("%2f") + 3)})
        EXPECT_EQ(systemOf(same), systemOf(root));
    EXPECT_EQ(LineSystem::mounted, 1) << "one file, once";
}

// reads, writes, the mode, opens
constexpr std::tuple<bool, bool, int32_t, bool> kAbilities[] = {
    {true,  false, kOpenRead,               true },
    {true,  false, kOpenWrite,              false},
    {false, true,  kOpenRead,               false},
    {false, true,  kOpenWrite,              true },
    {false, true,  kOpenRead | kOpenWrite,  false},
    {true,  true,  kOpenRead | kOpenShared, true },
    {true,  true,  0,                       true },
};

TEST_F(ArchiveManager, AsksAComponentForWhatItCan) {
    for (const auto& [reads, writes, mode, opens] : kAbilities) {
        SCOPED_TRACE(testing::Message() << reads << writes << mode);
        LineSystem::reads = reads;
        LineSystem::writes = writes;
        const OPtr<FFileSystemAdapter> box(FFileSystemAdapter::mount(disk.at("box.lines")));
        ASSERT_TRUE(box);
        int32_t error = -1;
        EXPECT_EQ(box->closeFile(box->openFile(At("/x/../one"), mode, &error)), opens);
        EXPECT_EQ(error, opens ? 0 : EACCES);
        EXPECT_TRUE(!opens || LineSystem::lastMode == (mode & ~kOpenShared));
        EXPECT_FALSE(box->renameFile(At("one"), u"../uno"));
        EXPECT_EQ(box->renameFile(At("one"), u"uno"), writes);
        EXPECT_EQ(box->fileExists(At("uno")), writes);
        EXPECT_EQ(box->removeFile(At("two")), writes);
        EXPECT_EQ(box->fileExists(At("two")), !writes);
        FStream* stream = box->createFile(At("uno"), kOpenWrite, &error);
        EXPECT_EQ(stream && stream->writeRaw("new", 3) == 3 && box->closeFile(stream), writes);
    }
}

TEST_F(ArchiveManager, MountsResourceFiles) {
    FResourceArchive::doInits();
    std::filesystem::create_directory(disk / "in");
    disk.write("in/a b", "text");
    const OPtr<FResourceArchive> made(new FResourceArchive(disk.at("pack.srf")));
    ASSERT_TRUE(made->create(disk.at("in"), 0, nullptr, nullptr));
    At url(urlOf("pack.srf", "/a%20b", "srf"));
    FPath inner = FArchiveManager::getPath(url);
    EXPECT_TRUE(manager->isBitwiseCopyable(url) && manager->isRegisteredURL(url));
    EXPECT_EQ(contentOf(*systemOf(utf8(url)), &inner), "text");
}

TEST_F(ArchiveManager, AsksTheRegistryOfComponentsOnTheMainThread) {
    static int32_t classes;  // of them the last one can be made
    const ComponentHooks before = gComponentHooks;
    gComponentHooks.createOfCategory = [](const char* category, int32_t index, FUnknown** made) {
        *made = index == 1 && classes == 2 ? static_cast<FObject*>(new LineSystem) : nullptr;
        return std::string(category) == IVirtualFileSystem::kCategory && index < classes;
    };
    const auto mounts = [&] {
        return OPtr<FFileSystem>(manager->createVirtualFileSystem(disk.at("box.lines"))) != nullptr;
    };
    for (classes = 0; classes <= 2; ++classes)
        EXPECT_EQ(mounts(), classes == 2);
    classes = 0;
    EXPECT_TRUE(std::async(std::launch::async, mounts).get());
    gComponentHooks = before;
}

TEST_F(ArchiveManager, UnmountsOnlyWhatNobodyUses) {
    const FString uid = FArchiveManager::getContainerUID(disk.at("box.lines"));
    const std::string url = urlOf("box.lines", "/one");
    OPtr<FFileSystem> box = systemOf(url);
    ASSERT_TRUE(box);
    FStream* stream = box->openFile(At("one"), kOpenRead);
    manager->unmountUnusedVirtualFileSystems();
    EXPECT_EQ(LineSystem::mounted, 1);
    EXPECT_EQ(box->getFileSize(stream), 3);
    EXPECT_FALSE(manager->unregisterArchive(wide("vfs:"), uid, true));
    EXPECT_TRUE(manager->isRegisteredURL(At(url)));
    EXPECT_FALSE(static_cast<FRemovableFileSystem*>(box.get())->unmount());
    EXPECT_TRUE(box->closeFile(stream));
    manager->unmountUnusedVirtualFileSystems();
    EXPECT_EQ(LineSystem::mounted, 0);
    EXPECT_FALSE(manager->isRegisteredURL(At(url)));
    EXPECT_EQ(contentOf(*box, At("one")), "(none)") << "it is gone";
    EXPECT_EQ(box->newIterator(At(""), false), nullptr);

    box = systemOf(url);  // mounted anew
    stream = box->openFile(At("one"), kOpenRead);
    box = nullptr;
    FArchiveManager::terminate();
    char c = 0;
    EXPECT_EQ(stream->readRaw(&c, 1), 1) << "lives as long as it is read from";
    stream->release();
}

TEST_F(ArchiveManager, ThreadsMountAFileOnce) {
    std::vector<std::future<OPtr<FFileSystem>>> all;
    for (int32_t i = 0; i < 8; ++i)
        all.push_back(std::async(std::launch::async, [&] { return systemOf(urlOf("box.lines")); }));
    const OPtr<FFileSystem> known = all[0].get();
    for (size_t i = 1; i < all.size(); ++i)
        EXPECT_EQ(all[i].get(), known);
}
}  // namespace
}  // namespace Tessarine
