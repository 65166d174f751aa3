#include "storage/ffilearchive.h"
#include "base/fconsole.h"
#include "base/uprogresshook.h"
#include "collect/cmdate.h"
#include "storage/ffstream.h"
#include "storage/fmstream.h"
#include "storage/fvfilesystem.h"
#include "tempfolder.h"
#include <cerrno>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <thread>
#include <unistd.h>

namespace Tessarine {
namespace {
FPath at(const char* text) {
    FString wide;
    wide.fromUTF8(text);
    FPath path;
    path.fromString(wide.text16(), kFilePath);
    return path;
}

std::string utf8(const ConstString& text) {
    FString bytes(text);
    bytes.toMultiByte(kCodePageUTF8);
    return bytes.text8();
}

std::string pathOf(const FFileArchiveNode* node) {
    FPath path;
    node->getPath(path);
    FString text;
    path.getFullPath(text);
    return utf8(text);
}

class PlainNode : public FFileArchiveNode {
public:
    explicit PlainNode(bool folder, int64_t offset = -1, int64_t size = 0)
        : folder(folder), offset(offset), size(size) {
        ++living;
    }
    ~PlainNode() override { --living; }
    bool isFolder() const override { return folder; }
    void getFileName(FString& text) const override { text = name; }
    void setFileName(const ConstString& text) override {
        name = FString(text);
        nameChanged();
    }
    int64_t getDataOffset() const override { return offset; }
    int64_t getDataSize() const override { return size; }
    static inline std::atomic<int32_t> living{0};

private:
    bool folder;
    FString name;
    int64_t offset, size;
};

/** Pieces of a file, put into its tree by the test. */
class PieceArchive : public FFileArchive {
public:
    using FFileArchive::FFileArchive;
    bool open() override {
        setTree(OPtr<FFileArchiveNode>(new PlainNode(true)));
        return FFileArchive::open();
    }
    FFileArchiveNode* newNode(bool folder) override { return new PlainNode(folder); }
    FFileArchiveNode* add(const char* folder, const tchar* name, int64_t offset, int64_t size) {
        const FPath path = at(folder);
        auto* made = new PlainNode(offset == kIsFolder, offset, size);
        made->setFileName(name);
        EXPECT_TRUE(lookupNode(&path)->addChild(made));
        return made;
    }
    static constexpr int64_t kIsFolder = -2;
};

std::string contentOf(FFileArchive& archive, const char* name, int32_t* error = nullptr) {
    FPath path = at(name);
    FStream* stream = archive.openFile(&path, kOpenRead, error);
    if (!stream)
        return "(none)";
    std::string text(64, 0);
    text.resize(size_t(stream->readRaw(text.data(), 64)));
    EXPECT_TRUE(archive.closeFile(stream));
    return text;
}

class FileArchive : public ::testing::Test {
protected:
    FileArchive() { disk.write("pack.bin", "headABCDEFtail"); }
    ~FileArchive() override { EXPECT_EQ(PlainNode::living, 0); }
    OPtr<PieceArchive> open(int32_t flags) {
        const FNPath path = disk.at("pack.bin");
        OPtr<PieceArchive> archive(new PieceArchive(&path, flags));
        EXPECT_TRUE(archive->open());
        archive->add("", u"a", 4, 3);
        archive->add("", u"sub", PieceArchive::kIsFolder, 0);
        archive->add("sub", u"b", 7, 3);
        archive->add("sub", u"empty", 0, 0);
        return archive;
    }
    TempFolder disk;
};

struct OpenRow {
    const char* path;
    int32_t mode;
    const char* content;
    int32_t error;
};
constexpr OpenRow kOpened[] = {
    {"a",             kOpenRead, "ABC",    0      },
    {"/sub/b",        kOpenRead, "DEF",    0      },
    {"../sub/./../a", kOpenRead, "ABC",    0      },
    {"cut",           kOpenRead, "tail",   0      },
    {"behind",        kOpenRead, "",       0      },
    {"sub",           kOpenRead, "(none)", EISDIR },
    {"",              kOpenRead, "(none)", EISDIR },
    {"sub/empty",     kOpenRead, "(none)", ENODATA},
    {"before",        kOpenRead, "(none)", ENODATA},
    {"negative",      kOpenRead, "(none)", ENODATA},
    {"a/b",           kOpenRead, "(none)", ENOENT },
    {"A",             kOpenRead, "(none)", ENOENT },
};

TEST_F(FileArchive, OpensWhatLiesInTheFileAndNothingElse) {
    for (const int32_t flags : {0, 2, 4, 6}) {
        const OPtr<PieceArchive> archive = open(flags);
        archive->add("", u"cut", 10, INT64_MAX);
        archive->add("", u"behind", INT64_MAX - 1, INT64_MAX);
        archive->add("", u"before", -1, 4);
        archive->add("", u"negative", 4, -4);
        for (const OpenRow& row : kOpened) {
            SCOPED_TRACE(std::string(row.path) + " with " + std::to_string(flags));
            int32_t error = -1;
            EXPECT_EQ(contentOf(*archive, row.path, &error), row.content);
            EXPECT_EQ(error, row.error);
        }
        FPath path = at("a"), negative = at("negative");
        int32_t error = 0;
        EXPECT_EQ(archive->getFileSize(&negative), -1);
        EXPECT_EQ(archive->openFile(&path, kOpenRead | kOpenWrite, &error), nullptr);
        EXPECT_EQ(error, EROFS);
    }
}

TEST_F(FileArchive, WindowsDontDisturbEachOther) {
    const OPtr<FMemoryStream> memory(new FMemoryStream);
    memory->writeRaw("headABCDEFtail", 14);
    const OPtr<PieceArchive> inMemory(new PieceArchive(memory));
    ASSERT_TRUE(inMemory->open());
    inMemory->add("", u"a", 4, 3);
    inMemory->add("", u"sub", PieceArchive::kIsFolder, 0);
    inMemory->add("sub", u"b", 7, 3);
    for (const OPtr<PieceArchive>& archive : {inMemory, open(0), open(2), open(4)}) {
        FPath first = at("a"), second = at("sub/b");
        const OPtr<FStream> a(archive->openFile(&first, kOpenRead)), b(archive->openFile(&second, kOpenRead));
        ASSERT_TRUE(a && b);
        std::string text;
        char c = 0;
        while (a->readRaw(&c, 1) == 1 && (text += c, b->readRaw(&c, 1)) == 1)
            text += c;
        EXPECT_EQ(text, "ADBECF");
        EXPECT_EQ(a->seek(-2, kFromEnd), 1);
        char rest[5];
        EXPECT_EQ(a->readRaw(rest, 5), 2);
    }
}

TEST_F(FileArchive, StreamsOfTheirOwnKeepItOpen) {
    OPtr<PieceArchive> archive = open(FFileArchive::kOwnHandles);
    FPath path = at("a");
    OPtr<FStream> stream(archive->openFile(&path, kOpenRead));
    EXPECT_FALSE(archive->close());
    EXPECT_TRUE(archive->isOpen());
    archive = nullptr;  // the stream shares it
    char text[3];
    EXPECT_EQ(stream->readRaw(text, 3), 3);
    stream = nullptr;
    archive = open(FFileArchive::kOwnHandles);
    EXPECT_TRUE(archive->close());
    EXPECT_EQ(archive->getTree(), nullptr);
    EXPECT_EQ(contentOf(*archive, "a"), "(none)");
}

TEST_F(FileArchive, ThreadsReadMembersAtOnce) {
    constexpr int32_t kFiles = 200, kThreads = 4;
    const OPtr<PieceArchive> archive = open(FFileArchive::kOwnHandles);
    for (int32_t i = 0; i < kFiles; ++i)
        archive->add("sub", FString().printf("f%d", i).text16(), i % 10, 4);
    std::atomic<int32_t> wrong{0};
    std::vector<std::thread> threads;
    for (int32_t t = 0; t < kThreads; ++t)
        threads.emplace_back([&] {
            for (int32_t i = 0; i < kFiles; ++i) {
                const std::string name = "sub/f" + std::to_string(i);
                wrong += contentOf(*archive, name.c_str()) != std::string("headABCDEFtail").substr(size_t(i % 10), 4);
            }
        });
    for (std::thread& each : threads)
        each.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(archive->getOpenCount(), 0);
}

TEST_F(FileArchive, WritingMovesMembersToTheCache) {
    const OPtr<PieceArchive> archive = open(FFileArchive::kWriteCached);
    for (const char* name : {"sub/b", "sub/empty", "new/deep/c"}) {
        SCOPED_TRACE(name);
        FPath path = at(name);
        const bool isNew = !archive->fileExists(&path);
        FStream* stream = archive->openFile(&path, isNew ? kOpenWrite | kOpenCreate : kOpenWrite);
        ASSERT_TRUE(stream);
        stream->seek(0, kFromEnd);
        EXPECT_EQ(stream->writeRaw("xyz", 3), 3);
        EXPECT_TRUE(archive->closeFile(stream));
        EXPECT_TRUE(archive->lookupNode(&path)->isCached());
    }
    EXPECT_EQ(contentOf(*archive, "sub/b"), "DEFxyz");
    EXPECT_EQ(contentOf(*archive, "sub/empty"), "xyz");
    EXPECT_EQ(disk.read("pack.bin~Cache/new/deep/c"), "xyz");
    EXPECT_EQ(disk.read("pack.bin"), "headABCDEFtail");
    FPath folder = at("sub"), file = at("renamed/b"), gone = at("renamed/empty");
    EXPECT_TRUE(archive->renameFile(&folder, u"renamed"));
    EXPECT_EQ(contentOf(*archive, "renamed/b"), "DEFxyz");
    EXPECT_EQ(archive->getFileSize(&file), 6);
    EXPECT_FALSE(archive->renameFile(&file, u"empty")) << "taken";
    EXPECT_FALSE(archive->renameFile(&file, u"../b"));
    EXPECT_TRUE(archive->removeFile(&gone));
    EXPECT_FALSE(archive->fileExists(&gone));
}

TEST_F(FileArchive, TakesOverTheCacheOfAnEarlierRun) {
    std::filesystem::create_directories(disk / "pack.bin~Cache/sub");
    disk.write("pack.bin~Cache/a", "new a");
    disk.write("pack.bin~Cache/sub/found", "found");
    disk.write("outside", "secret");
    ASSERT_EQ(::symlink((disk / "outside").c_str(), (disk / "pack.bin~Cache/link").c_str()), 0);
    const OPtr<PieceArchive> readOnly = open(0), archive = open(FFileArchive::kWriteCached);
    EXPECT_EQ(contentOf(*readOnly, "sub/found"), "(none)");
    EXPECT_EQ(contentOf(*archive, "sub/found"), "found");
    FString text;
    disk.at("pack.bin~Cache").getFullPath(text);
    FNPath cache;
    cache.setPathName(text.text16());  // without a name, as folders may be
    archive->setCacheFolder(&cache);
    EXPECT_TRUE(archive->checkUpdatedNodes(false));
    EXPECT_EQ(contentOf(*archive, "a"), "ABC");
    EXPECT_TRUE(archive->checkUpdatedNodes(true));
    EXPECT_EQ(contentOf(*archive, "a"), "new a");
    EXPECT_FALSE(archive->checkUpdatedNodes(true));
    EXPECT_EQ(contentOf(*archive, "link"), "(none)");
    FPath link = at("link");
    EXPECT_EQ(archive->createFile(&link, kOpenWrite), nullptr);
    EXPECT_EQ(disk.read("outside"), "secret");
}

TEST_F(FileArchive, KnowsFilesThatOnlyTheCacheHolds) {
    std::filesystem::create_directories(disk / "pack.bin~Cache/folder");
    disk.write("pack.bin~Cache/found", "found");
    const OPtr<PieceArchive> archive = open(FFileArchive::kWriteCached);
    FPath a = at("a"), sub = at("sub"), found = at("found"), asFolder = at("found/");
    CmTime created, modified;
    EXPECT_FALSE(archive->renameFile(&a, u"found"));
    EXPECT_FALSE(archive->renameFile(&sub, u"folder"));
    EXPECT_EQ(archive->getFileSize(&found), 5);
    EXPECT_TRUE(archive->getFileTimes(&found, created, modified));
    EXPECT_EQ(contentOf(*archive, "found/"), "found");
    EXPECT_TRUE(archive->lookupNode(&asFolder) && !archive->lookupNode(&asFolder)->isFolder());
}

TEST_F(FileArchive, MakesNothingBelowAFile) {
    const OPtr<PieceArchive> archive = open(FFileArchive::kWriteCached);
    const FNPath other = disk.at("pack.bin");
    FPath below = at("a/b/c"), a = at("a"), asFolder = at("new/"), late = at("late/");
    int32_t error = 0;
    EXPECT_EQ(archive->createFile(&below, kOpenWrite, &error), nullptr);
    EXPECT_EQ(error, ENOTDIR);
    EXPECT_FALSE(archive->createFileReference(&below, &other));
    EXPECT_EQ(disk.names(), (std::set<std::string>{"pack.bin"}));
    EXPECT_TRUE(archive->closeFile(archive->createFile(&a, kOpenWrite))) << "it can still be written";
    EXPECT_TRUE(archive->closeFile(archive->createFile(&late, kOpenWrite)));
    EXPECT_TRUE(archive->fileExists(&late));
    EXPECT_TRUE(archive->createFileReference(&asFolder, &other));
    EXPECT_TRUE(archive->fileExists(&asFolder));
}

TEST_F(FileArchive, ALinkIsNoCacheFolderUnlessItIsSet) {
    std::filesystem::create_directory(disk / "elsewhere");
    disk.write("elsewhere/x", "secret");
    ASSERT_EQ(::symlink((disk / "elsewhere").c_str(), (disk / "pack.bin~Cache").c_str()), 0);
    const OPtr<PieceArchive> archive = open(FFileArchive::kWriteCached);
    FPath a = at("a");
    EXPECT_EQ(contentOf(*archive, "x"), "(none)");
    EXPECT_FALSE(archive->checkUpdatedNodes(true));
    EXPECT_EQ(archive->openFile(&a, kOpenWrite), nullptr);
    EXPECT_FALSE(std::filesystem::exists(disk / "elsewhere/a"));
    const FNPath link = disk.at("pack.bin~Cache");
    archive->setCacheFolder(&link);
    EXPECT_EQ(contentOf(*archive, "x"), "secret");
}

TEST_F(FileArchive, CachedPathsStayInTheCacheFolder) {
    const OPtr<PieceArchive> archive = open(FFileArchive::kWriteCached);
    for (const char* text : {"../../x", "/../x", "a/../../../x", "./x", "//x"}) {
        FPath path = at(text);
        ASSERT_TRUE(archive->makeCachedPath(&path, nullptr)) << text;
        FString full;
        path.getFullPath(full);
        EXPECT_EQ(utf8(full), disk / "pack.bin~Cache/x") << text;
    }
    FPath root = at("a/..");
    EXPECT_FALSE(archive->makeCachedPath(&root, nullptr));
}

TEST_F(FileArchive, ReferencesLeadOutside) {
    disk.write("other", "elsewhere");
    const OPtr<PieceArchive> archive = open(0);
    FNPath other = disk.at("other");
    FPath made = at("x/ref"), known = at("sub");
    EXPECT_TRUE(archive->createFileReference(&made, &other));
    EXPECT_FALSE(archive->createFileReference(&known, &other));
    EXPECT_EQ(contentOf(*archive, "x/ref"), "elsewhere");
    EXPECT_EQ(archive->getFileSize(&made), 9);
    EXPECT_FALSE(archive->extractFile(&made, &other, nullptr)) << "onto itself";
    FPath folder = at("y"), same = at("y/other");
    FNPath here = disk.self();
    EXPECT_TRUE(archive->createFileReference(&same, &other));
    EXPECT_FALSE(archive->extractFolder(&folder, &here, nullptr)) << "onto itself";
    EXPECT_EQ(disk.read("other"), "elsewhere");
}

class StopAfter : public UProgressHook {
public:
    explicit StopAfter(int32_t calls) : calls(calls) {}
    bool setProgress(int32_t percent) override {
        EXPECT_GE(percent, last);
        last = percent;
        return --calls > 0;
    }
    int32_t calls, last = 0;
};

TEST_F(FileArchive, ExtractsTheTree) {
    const OPtr<PieceArchive> archive = open(0);
    FNPath target = disk.at("out");
    const OPtr<StopAfter> all(new StopAfter(1000)), few(new StopAfter(1));
    EXPECT_TRUE(archive->extractAll(&target, all));
    EXPECT_EQ(all->last, 100);
    EXPECT_EQ(disk.read("out/a") + disk.read("out/sub/b"), "ABCDEF");
    EXPECT_TRUE(std::filesystem::is_empty(disk / "out/sub/empty"));
    FPath sub = at("sub");
    FNPath inner = disk.at("inner"), stopped = disk.at("stopped");
    EXPECT_TRUE(archive->extractFolder(&sub, &inner, nullptr));
    EXPECT_EQ(disk.read("inner/b"), "DEF");
    EXPECT_FALSE(archive->extractAll(&stopped, few));
    EXPECT_FALSE(std::filesystem::exists(disk / "stopped/sub"));
}

TEST_F(FileArchive, ProgressBearsAnySizes) {
    const OPtr<PieceArchive> archive = open(FFileArchive::kWriteCached);
    for (const tchar* name : {u"x", u"y", u"z"}) {
        FPath path = at(utf8(name).c_str());
        archive->add("", name, 4, INT64_MAX);
        FStream* stream = archive->createFile(&path, kOpenWrite);
        EXPECT_EQ(stream->writeRaw("new", 3), 3);
        EXPECT_TRUE(archive->closeFile(stream));
    }
    FNPath target = disk.at("out");
    const OPtr<StopAfter> all(new StopAfter(1000));
    uint64_t bytes = 0;
    EXPECT_EQ(archive->getTree()->countFiles(true, true, &bytes), 6);
    EXPECT_EQ(bytes, UINT64_MAX);
    EXPECT_TRUE(archive->extractAll(&target, all));
    EXPECT_EQ(all->last, 100);
}

TEST_F(FileArchive, ExtractsNothingOutsideAndNothingCutOff) {
    for (const tchar* name : {u"..", u".", u"", u"../evil", u"/evil", u"x/y"}) {
        SCOPED_TRACE(utf8(name));
        for (const int64_t kind : {int64_t(4), PieceArchive::kIsFolder}) {
            const OPtr<PieceArchive> archive = open(0);
            archive->add("", name, kind, 3);
            FNPath target = disk.at("out");
            EXPECT_FALSE(archive->extractAll(&target, nullptr));
        }
    }
    std::filesystem::remove_all(disk / "out");
    EXPECT_EQ(disk.names(), (std::set<std::string>{"pack.bin"}));

    for (const char* link : {"a", "sub", "sub/b"}) {
        SCOPED_TRACE(link);
        std::filesystem::create_directories(disk / "out/sub");
        std::filesystem::remove_all(disk / "out/" + link);
        std::filesystem::create_directory(disk / "safe");
        ASSERT_EQ(::symlink((disk / "safe/b").c_str(), (disk / "out/" + link).c_str()), 0);
        FNPath target = disk.at("out");
        EXPECT_FALSE(open(0)->extractAll(&target, nullptr));
        EXPECT_TRUE(std::filesystem::is_empty(disk / "safe"));
        std::filesystem::remove_all(disk / "out");
    }

    const OPtr<PieceArchive> archive = open(0);
    archive->add("", u"pack.bin", 4, 3);
    FNPath here = disk.self();
    EXPECT_FALSE(archive->extractAll(&here, nullptr)) << "onto itself";
    EXPECT_EQ(contentOf(*archive, "pack.bin"), "ABC");
    archive->add("", u"cut", 10, 5);
    FPath cut = at("cut");
    FNPath target = disk.at("cut");
    EXPECT_FALSE(archive->extractFile(&cut, &target, nullptr));
    EXPECT_FALSE(std::filesystem::exists(disk / "cut"));
}

TEST_F(FileArchive, DeepTreesNeedNoStack) {
    constexpr int32_t kLevels = 100000;
    FString name;
    name.assign(u'd', 100);  // so that the disk soon has enough
    const OPtr<PieceArchive> archive = open(0);
    FFileArchiveNode* node = archive->getTree();
    for (int32_t i = 0; i < kLevels; ++i) {
        auto* below = new PlainNode(true);
        below->setFileName(name);
        ASSERT_TRUE(node->addChild(below));
        node = below;
    }
    EXPECT_TRUE(node->addChild(new PlainNode(false, 4, 3)));
    EXPECT_EQ(archive->getTree()->countFiles(true, true), 4);
    EXPECT_EQ(pathOf(node).size(), size_t(101 * kLevels - 1));
    FNPath target = disk.at("out");
    EXPECT_FALSE(archive->extractAll(&target, nullptr));
    EXPECT_FALSE(node->addChild(archive->getTree())) << "a circle";
}

TEST(FileArchiveTree, FindsAsALookThroughAllWould) {
    std::minstd_rand random(7);
    const OPtr<PlainNode> folder(new PlainNode(true));
    std::vector<FFileArchiveNode*> model;  // in order
    for (int32_t step = 0; step < 3000; ++step) {
        const FString name(FString().printf("n%d", int32_t(random() % 60)));
        const uint32_t what = random() % 8;
        const bool wantFolder = random() % 2;
        if (what < 2 && model.size() < 80) {
            auto* made = new PlainNode(wantFolder);
            made->setFileName(name);
            folder->addChild(made);
            model.push_back(made);
        } else if (what == 2 && !model.empty()) {
            const size_t place = random() % model.size();
            EXPECT_TRUE(folder->remove(model[place]));
            model.erase(model.begin() + ptrdiff_t(place));
        } else if (what == 3 && !model.empty()) {
            model[random() % model.size()]->setFileName(name);
        }
        FFileArchiveNode* expected = nullptr;
        for (FFileArchiveNode* each : model)
            if (FString text; !expected && (!wantFolder || each->isFolder()) && (each->getFileName(text), text == name))
                expected = each;
        const FString wide(name.text16());
        EXPECT_EQ(wantFolder ? folder->getSubFolder(units16(wide)) : folder->findChild(units16(wide)), expected);
    }
}

TEST_F(FileArchive, IteratesAndDumps) {
    class Lines : public FConsole {
    public:
        void deferWrite(const ConstString& line) override { text += utf8(line); }
        std::string text;
    };
    const OPtr<PieceArchive> archive = open(0);
    archive->add("sub", u".hidden", 1, 2);
    FPath sub = at("sub");
    for (const bool withHidden : {false, true}) {
        const OPtr<FFileIterator> entries(archive->newIterator(&sub, withHidden));
        std::string seen;
        for (FPath* each = entries->first(); each; each = entries->next()) {
            FString text;
            each->getFullPath(text);
            seen += utf8(text) + (each->isVisible() ? " " : "! ");
        }
        EXPECT_EQ(seen, withHidden ? "sub/b sub/empty sub/.hidden! " : "sub/b sub/empty ");
    }
    const OPtr<Lines> console(new Lines);
    archive->dumpContent(console);
    const OPtr<FFileIterator> entries(archive->newIterator(nullptr, true));
    FPath later = at("later");
    EXPECT_EQ(*entries->first(), at("a"));
    EXPECT_TRUE(archive->getTree()->remove(archive->lookupNode(&sub)));
    EXPECT_TRUE(archive->createNode(&later));
    EXPECT_EQ(*entries->next(), later) << "what comes is as it is by then";
    for (FPath* each = entries->first(); each; each = entries->next()) {
        FFileArchiveNode* node = archive->lookupNode(each);
        EXPECT_TRUE(node && archive->getTree()->remove(node));
    }
    EXPECT_EQ(archive->getTree()->countChildren(), 0) << "what the walk has shown may go";
    EXPECT_EQ(console->text,
              "root\n"
              "  \"a(0000)\" size = 3 Bytes, offset = 4\n"
              "  <sub(0000)>\n"
              "    \"b(0000)\" size = 3 Bytes, offset = 7\n"
              "    \"empty(0000)\" size = 0 Bytes, offset = 0\n"
              "    \".hidden(0000)\" size = 2 Bytes, offset = 1\n");
}

/** Two folders named x in each of them; what is in the second one can't be reached. */
void addTwins(PieceArchive& archive) {
    std::string folder;
    for (int32_t depth = 0; depth < 40; ++depth, folder += folder.empty() ? "x" : "/x")
        for (int32_t twin = 0; twin < 2; ++twin)
            archive.add(folder.c_str(), u"x", PieceArchive::kIsFolder, 0);
}

/** Folders that lead back to the one that they lie in. */
void addRings(PieceArchive& archive) {
    archive.add("sub", u".", PieceArchive::kIsFolder, 0);
    archive.add("sub", u"y", PieceArchive::kIsFolder, 0);
    archive.add("sub/y", u"..", PieceArchive::kIsFolder, 0);
}

TEST_F(FileArchive, WalksByPathsEndWithTheTree) {
    for (void (*add)(PieceArchive&) : {addTwins, addRings}) {
        const OPtr<PieceArchive> archive = open(0);
        add(*archive);
        FPath top;
        const OPtr<FVFileSystem> part(new FVFileSystem(archive.get()));
        EXPECT_EQ(archive->countFiles(&top, true, true), -1);
        EXPECT_EQ(part->countFiles(&top, true, true), -1);
    }
}

TEST_F(FileArchive, IsCopiedWithItsEmptyMembers) {
    const OPtr<PieceArchive> archive = open(0);
    std::filesystem::create_directory(disk / "copy");
    const FNPath copy = disk.at("copy");
    const OPtr<FVFileSystem> target(new FVFileSystem(&copy, true));
    FPath top;
    EXPECT_TRUE(FCopyFileSystem(archive.get(), &top, target.get()));
    EXPECT_EQ(disk.read("copy/a") + disk.read("copy/sub/b"), "ABCDEF");
    EXPECT_TRUE(std::filesystem::is_empty(disk / "copy/sub/empty"));
    archive->add("", u"negative", 4, -1);
    EXPECT_FALSE(FCopyFileSystem(archive.get(), &top, target.get()));
}
}  // namespace
}  // namespace Tessarine
