#include "storage/ffilearchive.h"
#include "base/fconsole.h"
#include "collect/cmdate.h"
#include "pathprobes.h"
#include "storage/fresourcearchive.h"
#include "storage/fvfilesystem.h"
#include "tests/support/pieces.h"
#include <cerrno>
#include <random>
#include <thread>

namespace Tessarine {
namespace {
namespace fs = std::filesystem;

constexpr int64_t kIsFolder = -2;

FResourceEntry* newEntry(bool folder, const ConstString& name = u"") {
    auto* made = new FResourceEntry(folder ? FResourceEntry::kFolderEntry : FResourceEntry::kFileEntry);
    made->setFileName(name);
    return made;
}

/** Pieces of a file, put into its tree by the test. */
class PieceArchive : public FFileArchive {
public:
    using FFileArchive::FFileArchive;
    bool open() override {
        setTree(OPtr<FFileArchiveNode>(newNode(true)));
        const bool done = FFileArchive::open();
        add("", u"a", 4, 3);
        add("", u"sub", kIsFolder, 0);
        add("sub", u"b", 7, 3);
        add("sub", u"empty", 0, 0);
        return done;
    }
    FFileArchiveNode* newNode(bool folder) override { return newEntry(folder); }
    void add(const std::string& folder, const tchar* name, int64_t offset, int64_t size) {
        FResourceEntry* made = newEntry(offset == kIsFolder, name);
        made->setData(offset, size, size);
        EXPECT_TRUE(lookupNode(At(folder))->addChild(made));
    }
};

class FileArchive : public ::testing::Test {
protected:
    FileArchive() { disk.write("pack.bin", kPack); }
    OPtr<PieceArchive> open(int32_t flags) {
        OPtr<PieceArchive> archive(new PieceArchive(disk.at("pack.bin"), flags));
        EXPECT_TRUE(archive->open());
        return archive;
    }
    const std::string kPack = "headABCDEFtail";
    TempFolder disk;
};

constexpr std::tuple<const char*, int32_t, const char*> kOpened[] = {
    {"ABC",    0,       "a|../sub/./../a"          },
    {"DEF",    0,       "/sub/b"                   },
    {"tail",   0,       "cut"                      },
    {"",       0,       "behind"                   },
    {"(none)", EISDIR,  "sub|"                     },
    {"(none)", ENODATA, "sub/empty|before|negative"},
    {"(none)", ENOENT,  "a/b|A"                    },
};

TEST_F(FileArchive, OpensWhatLiesInTheFileAndNothingElse) {
    for (const int32_t flags : {0, 2, 4, 6}) {
        const OPtr<PieceArchive> archive = open(flags);
        archive->add("", u"cut", 10, INT64_MAX);
        archive->add("", u"behind", INT64_MAX - 1, INT64_MAX);
        archive->add("", u"before", -1, 4);
        archive->add("", u"negative", 4, -4);
        int32_t error = -1;
        for (const auto& [content, expectedError, names] : kOpened)
            for (const std::string& name : piecesOf(names)) {
                EXPECT_EQ(contentOf(*archive, At(name), &error), content) << name << " with " << flags;
                EXPECT_EQ(error, expectedError) << name;
            }
        EXPECT_EQ(archive->getFileSize(At("negative")), -1);
        EXPECT_EQ(archive->openFile(At("a"), kOpenRead | kOpenWrite, &error), nullptr);
        EXPECT_EQ(error, EROFS);
    }
}

TEST_F(FileArchive, WindowsDontDisturbEachOther) {
    for (const int32_t flags : {0, 2, 4}) {
        const OPtr<PieceArchive> archive = open(flags);
        const OPtr<FStream> a(archive->openFile(At("a"), kOpenRead)), b(archive->openFile(At("sub/b"), kOpenRead));
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

TEST_F(FileArchive, StreamsOfTheirOwnKeepItOpenAndServeThreads) {
    constexpr int32_t kFiles = 200, kThreads = 4;
    OPtr<PieceArchive> archive = open(FFileArchive::kOwnHandles);
    for (int32_t i = 0; i < kFiles; ++i)
        archive->add("sub", FString().printf("f%d", i).text16(), i % 10, 4);
    std::atomic<int32_t> wrong{0};
    std::vector<std::jthread> threads;
    for (int32_t t = 0; t < kThreads; ++t)
        threads.emplace_back([&] {
            for (int32_t i = 0; i < kFiles; ++i)
                wrong += contentOf(*archive, At("sub/f" + std::to_string(i))) != kPack.substr(size_t(i % 10), 4);
        });
    threads.clear();
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(archive->close());
    EXPECT_EQ(contentOf(*archive, At("a")), "(none)");
    ASSERT_TRUE(archive->open());
    const OPtr<FStream> stream(archive->openFile(At("a"), kOpenRead));
    EXPECT_FALSE(archive->close());
    EXPECT_TRUE(archive->isOpen());
    archive = nullptr;  // the stream shares it
    char text[3];
    EXPECT_EQ(stream->readRaw(text, 3), 3);
}

TEST_F(FileArchive, WritingMovesMembersToTheCache) {
    const OPtr<PieceArchive> archive = open(FFileArchive::kWriteCached);
    for (const char* name : {"sub/b", "sub/empty", "new/deep/c"}) {
        const int32_t mode = archive->fileExists(At(name)) ? kOpenWrite : kOpenWrite | kOpenCreate;
        EXPECT_TRUE(append(*archive, At(name), "xyz", mode)) << name;
        EXPECT_TRUE(archive->lookupNode(At(name))->isCached());
    }
    EXPECT_EQ(contentOf(*archive, At("sub/empty")), "xyz");
    EXPECT_EQ(disk.read("pack.bin~Cache/new/deep/c"), "xyz");
    EXPECT_EQ(disk.read("pack.bin"), kPack);
    EXPECT_TRUE(archive->renameFile(At("sub"), u"renamed"));
    EXPECT_EQ(contentOf(*archive, At("renamed/b")), "DEFxyz");
    EXPECT_EQ(archive->getFileSize(At("renamed/b")), 6);
    EXPECT_FALSE(archive->renameFile(At("renamed/b"), u"empty")) << "taken";
    EXPECT_FALSE(archive->renameFile(At("renamed/b"), u"../b"));
    EXPECT_TRUE(archive->removeFile(At("renamed/empty")));
    EXPECT_FALSE(archive->fileExists(At("renamed/empty")));
}

TEST_F(FileArchive, TakesOverTheCacheOfAnEarlierRun) {
    fs::create_directories(disk / "pack.bin~Cache/sub");
    disk.write("pack.bin~Cache/a", "new a");
    disk.write("pack.bin~Cache/sub/found", "found");
    disk.write("outside", "secret");
    fs::create_symlink(disk / "outside", disk / "pack.bin~Cache/link");
    const OPtr<PieceArchive> readOnly = open(0), archive = open(FFileArchive::kWriteCached);
    CmTime created, modified;
    EXPECT_EQ(contentOf(*readOnly, At("sub/found")), "(none)");
    EXPECT_FALSE(archive->renameFile(At("sub/b"), u"found")) << "taken by what only the cache holds";
    EXPECT_EQ(archive->getFileSize(At("sub/found")), 5);
    EXPECT_TRUE(archive->getFileTimes(At("sub/found"), created, modified));
    EXPECT_EQ(contentOf(*archive, At("sub/found/")), "found");
    EXPECT_FALSE(archive->lookupNode(At("sub/found/"))->isFolder());
    FNPath cache;
    cache.setPathName(FFullPathString(disk.at("pack.bin~Cache")).text16());  // without a name, as folders may be
    archive->setCacheFolder(&cache);
    EXPECT_TRUE(archive->checkUpdatedNodes(false));
    EXPECT_EQ(contentOf(*archive, At("a")), "ABC");
    EXPECT_TRUE(archive->checkUpdatedNodes(true));
    EXPECT_EQ(contentOf(*archive, At("a")), "new a");
    EXPECT_FALSE(archive->checkUpdatedNodes(true));
    EXPECT_EQ(contentOf(*archive, At("link")), "(none)");
    EXPECT_EQ(archive->createFile(At("link"), kOpenWrite), nullptr);
    EXPECT_EQ(disk.read("outside"), "secret");
}

TEST_F(FileArchive, MakesNothingBelowAFileOrOutsideTheCache) {
    const OPtr<PieceArchive> archive = open(FFileArchive::kWriteCached);
    for (const char* text : {"../../x", "/../x", "a/../../../x", "./x", "//x"}) {
        At path(text);
        EXPECT_TRUE(archive->makeCachedPath(path, nullptr) && utf8(path) == disk / "pack.bin~Cache/x") << text;
    }
    EXPECT_FALSE(archive->makeCachedPath(At("a/.."), nullptr));
    int32_t error = 0;
    EXPECT_EQ(archive->createFile(At("a/b/c"), kOpenWrite, &error), nullptr);
    EXPECT_EQ(error, ENOTDIR);
    EXPECT_FALSE(archive->createFileReference(At("a/b/c"), disk.at("pack.bin")));
    EXPECT_EQ(disk.names(), (std::set<std::string>{"pack.bin"}));
    for (const char* name : {"a", "late/"}) {
        EXPECT_TRUE(archive->closeFile(archive->createFile(At(name), kOpenWrite))) << "it can still be written";
        EXPECT_TRUE(archive->fileExists(At(name)));
    }
    EXPECT_TRUE(archive->createFileReference(At("new/"), disk.at("pack.bin")));
    EXPECT_TRUE(archive->fileExists(At("new/")));
}

TEST_F(FileArchive, ALinkIsNoCacheFolderUnlessItIsSet) {
    fs::create_directory(disk / "elsewhere");
    disk.write("elsewhere/x", "secret");
    fs::create_symlink(disk / "elsewhere", disk / "pack.bin~Cache");
    const OPtr<PieceArchive> archive = open(FFileArchive::kWriteCached);
    EXPECT_FALSE(archive->checkUpdatedNodes(true) || archive->fileExists(At("x")));
    EXPECT_FALSE(append(*archive, At("a"), "x") || fs::exists(disk / "elsewhere/a"));
    archive->setCacheFolder(disk.at("pack.bin~Cache"));
    EXPECT_EQ(contentOf(*archive, At("x")), "secret");
}

TEST_F(FileArchive, ReferencesLeadOutside) {
    disk.write("other", "elsewhere");
    const OPtr<PieceArchive> archive = open(0);
    EXPECT_TRUE(archive->createFileReference(At("x/other"), disk.at("other")));
    EXPECT_FALSE(archive->createFileReference(At("sub"), disk.at("other")));
    EXPECT_EQ(contentOf(*archive, At("x/other")), "elsewhere");
    EXPECT_EQ(archive->getFileSize(At("x/other")), 9);
    EXPECT_FALSE(archive->extractFile(At("x/other"), disk.at("other"), nullptr)) << "onto itself";
    EXPECT_FALSE(archive->extractFolder(At("x"), disk.self(), nullptr)) << "onto itself";
    EXPECT_EQ(disk.read("other"), "elsewhere");
}

TEST_F(FileArchive, ExtractsTheTreeAndBearsAnySizes) {
    const OPtr<PieceArchive> archive = open(FFileArchive::kWriteCached);
    for (const tchar* name : {u"x", u"y", u"z"}) {
        archive->add("", name, 4, INT64_MAX);
        EXPECT_TRUE(append(*archive, At(utf8(name)), "new", kOpenCreate));
    }
    const OPtr<StopAfter> all(new StopAfter(1000)), few(new StopAfter(0));
    uint64_t bytes = 0;
    EXPECT_EQ(archive->getTree()->countFiles(true, true, &bytes), 6);
    EXPECT_EQ(bytes, UINT64_MAX);
    EXPECT_TRUE(archive->extractAll(disk.at("out"), all));
    EXPECT_EQ(all->reached, 100);
    EXPECT_EQ(disk.read("out/a") + disk.read("out/sub/b") + disk.read("out/x"), "ABCDEFnew");
    EXPECT_TRUE(fs::is_empty(disk / "out/sub/empty"));
    EXPECT_TRUE(archive->extractFolder(At("sub"), disk.at("inner"), nullptr));
    EXPECT_EQ(disk.read("inner/b"), "DEF");
    EXPECT_FALSE(archive->extractAll(disk.at("stopped"), few));
    EXPECT_FALSE(fs::exists(disk / "stopped/sub"));
}

TEST_F(FileArchive, ExtractsNothingOutsideAndNothingCutOff) {
    for (const tchar* name : {u"..", u".", u"", u"../evil", u"/evil", u"x/y"})
        for (const int64_t kind : {int64_t(4), kIsFolder}) {
            const OPtr<PieceArchive> archive = open(0);
            archive->add("", name, kind, 3);
            EXPECT_FALSE(archive->extractAll(disk.at("out"), nullptr)) << utf8(name);
        }
    fs::remove_all(disk / "out");
    EXPECT_EQ(disk.names(), (std::set<std::string>{"pack.bin"}));

    const OPtr<PieceArchive> archive = open(0);
    archive->add("", u"pack.bin", 4, 3);
    EXPECT_FALSE(archive->extractAll(disk.self(), nullptr)) << "onto itself";
    EXPECT_EQ(contentOf(*archive, At("pack.bin")), "ABC");
    archive->add("", u"cut", 10, 5);
    EXPECT_FALSE(archive->extractFile(At("cut"), disk.at("cut"), nullptr));
    EXPECT_FALSE(fs::exists(disk / "cut"));
}

TEST_F(FileArchive, DeepTreesNeedNoStack) {
    constexpr int32_t kLevels = 100000;
    FString name;
    name.assign(u'd', 100);  // so that the disk soon has enough
    const OPtr<PieceArchive> archive = open(0);
    FFileArchiveNode* node = archive->getTree();
    for (int32_t i = 0; i < kLevels; ++i) {
        FFileArchiveNode* below = newEntry(true, name);
        ASSERT_TRUE(node->addChild(below));
        node = below;
    }
    EXPECT_TRUE(node->addChild(newEntry(false, u"file")));
    EXPECT_EQ(archive->getTree()->countFiles(true, true), 4);
    FPath path;
    node->getPath(path);
    EXPECT_EQ(utf8(path).size(), size_t(101 * kLevels - 1));
    EXPECT_FALSE(archive->extractAll(disk.at("out"), nullptr));
    EXPECT_FALSE(node->addChild(archive->getTree())) << "a circle";
}

TEST(FileArchiveTree, FindsAsALookThroughAllWould) {
    std::minstd_rand random(7);
    const OPtr<FResourceEntry> folder(newEntry(true));
    std::vector<FFileArchiveNode*> model;  // in order
    for (int32_t step = 0; step < 3000; ++step) {
        const FString name(FString().printf("n%d", int32_t(random() % 60)));
        const uint32_t what = random() % 8;
        const bool wantFolder = random() % 2;
        const size_t place = model.empty() ? 0 : random() % model.size();
        if (what < 2 && model.size() < 80) {
            folder->addChild(model.emplace_back(newEntry(wantFolder, name)));
        } else if (what == 2 && !model.empty()) {
            EXPECT_TRUE(folder->remove(model[place]));
            model.erase(model.begin() + ptrdiff_t(place));
        } else if (what == 3 && !model.empty()) {
            model[place]->setFileName(name);
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
    const OPtr<Lines> console(new Lines);
    archive->dumpContent(console);
    EXPECT_EQ(console->text,
              "root\n"
              "  \"a(0000)\" size = 3 Bytes, offset = 4\n"
              "  <sub(0000)>\n"
              "    \"b(0000)\" size = 3 Bytes, offset = 7\n"
              "    \"empty(0000)\" size = 0 Bytes, offset = 0\n"
              "    \".hidden(0000)\" size = 2 Bytes, offset = 1\n");
    for (const bool withHidden : {false, true}) {
        const OPtr<FFileIterator> entries(archive->newIterator(At("sub"), withHidden));
        std::string seen;
        for (FPath* each = entries->first(); each; each = entries->next())
            seen += utf8(*each) + (each->isVisible() ? " " : "! ");
        EXPECT_EQ(seen, withHidden ? "sub/b sub/empty sub/.hidden! " : "sub/b sub/empty ");
    }
    const OPtr<FFileIterator> entries(archive->newIterator(nullptr, true));
    EXPECT_EQ(utf8(*entries->first()), "a");
    EXPECT_TRUE(archive->getTree()->remove(archive->lookupNode(At("sub"))) && archive->createNode(At("later")));
    EXPECT_EQ(utf8(*entries->next()), "later") << "what comes is as it is by then";
    EXPECT_TRUE(archive->getTree()->remove(archive->lookupNode(At("later"))));
    EXPECT_EQ(entries->next(), nullptr) << "what the walk has shown may go";
}

TEST_F(FileArchive, WalksByPathsEndWithTheTree) {
    const OPtr<PieceArchive> twins = open(0), rings = open(0);
    std::string folder;
    for (int32_t depth = 0; depth < 40; ++depth, folder += folder.empty() ? "x" : "/x")
        for (int32_t twin = 0; twin < 2; ++twin)  // what is in the second can't be reached
            twins->add(folder, u"x", kIsFolder, 0);
    rings->add("sub", u".", kIsFolder, 0);
    rings->add("sub", u"y", kIsFolder, 0);
    rings->add("sub/y", u"..", kIsFolder, 0);
    for (const OPtr<PieceArchive>& archive : {twins, rings}) {
        EXPECT_EQ(archive->countFiles(At(""), true, true), -1);
        EXPECT_EQ(OPtr<FVFileSystem>(new FVFileSystem(archive.get()))->countFiles(At(""), true, true), -1);
    }
}

TEST_F(FileArchive, IsCopiedWithItsEmptyMembers) {
    const OPtr<PieceArchive> archive = open(0);
    fs::create_directory(disk / "copy");
    const OPtr<FVFileSystem> target(new FVFileSystem(disk.at("copy"), true));
    EXPECT_TRUE(FCopyFileSystem(archive.get(), At(""), target.get()));
    EXPECT_EQ(disk.read("copy/a") + disk.read("copy/sub/b"), "ABCDEF");
    EXPECT_TRUE(fs::is_empty(disk / "copy/sub/empty"));
    archive->add("", u"negative", 4, -1);
    EXPECT_FALSE(FCopyFileSystem(archive.get(), At(""), target.get()));
}
}  // namespace
}  // namespace Tessarine
