#include "storage/fvfilesystem.h"
#include "pathprobes.h"
#include "tests/support/pieces.h"
#include <cerrno>

namespace Tessarine {
namespace {
namespace fs = std::filesystem;

class VirtualDisk : public testing::Test {
protected:
    VirtualDisk() {
        fs::create_directories(temp / "root/sub");
        fs::create_directories(temp / "outside/sub");
        temp.write("root/file", "inside");
        temp.write("root/sub/file", "below");
        temp.write("secret", "secret");
        temp.write("outside/file", "secret");
        temp.write("rooted", "a neighbour whose name begins alike");
        fs::create_symlink("file", temp / "root/near");
        fs::create_symlink(temp / "root/sub", temp / "root/nearfolder");
        fs::create_symlink("../secret", temp / "root/far");
        fs::create_symlink(temp / "outside", temp / "root/farfolder");
        fs::create_symlink("../fresh", temp / "root/dangling");
        fs::create_symlink("loop", temp / "root/loop");
        fs::create_symlink("../root/file", temp / "root/outandin");
    }

    const std::string kNone = "(none)";
    TempFolder temp;
    FNPath root = temp.at("root");
};

TEST_F(VirtualDisk, NoPathLeavesTheRoot) {
    FVFileSystem disk(&root);
    const std::pair<std::string, std::string> rows[] = {
        {"inside", "file|sub/../file|../../../file|near|outandin|farfolder/../file|" + (temp / "root/file")},
        {"below",  "sub//./file|nearfolder/file|" + (temp / "root/../root/sub/file")                       },
        {kNone,    "../secret|far|farfolder/file|sub/../../secret|loop|dangling|..|/etc/passwd|" + (temp / "secret|") +
                    (temp / "root/../secret|") + (temp / "rooted")                          },
    };
    for (const auto& [expected, names] : rows)
        for (const std::string& name : piecesOf(names)) {
            SCOPED_TRACE(name);
            EXPECT_EQ(contentOf(disk, At(name)), expected);
            EXPECT_EQ(disk.fileExists(At(name)), expected != kNone);
            EXPECT_EQ(disk.getFileSize(At(name)) >= 0, expected != kNone);
        }
    FPath half;
    half.setName(u"file\xD800");
    EXPECT_FALSE(disk.fileExists(&half));
    FVFileSystem all(gFileSystem);
    for (const std::string& name : {temp / "secret", (temp / "secret").substr(1), "../.." + (temp / "secret")})
        EXPECT_EQ(contentOf(all, At(name)), "secret");
}

TEST_F(VirtualDisk, WhateverIsInTheRootsPlaceIsntLeftEither) {
    fs::create_symlink("root", temp / "top");
    FVFileSystem disk(&root), linked(temp.at("top"));
    EXPECT_EQ(contentOf(linked, At("nearfolder/file")), "below");
    EXPECT_EQ(contentOf(linked, At("far")), kNone);
    for (const bool removed : {false, true}) {
        if (removed)
            fs::remove_all(temp / "root");
        else
            fs::rename(temp / "root", temp / "before");
        fs::create_directory(temp / "root");
        fs::create_symlink("../secret", temp / "root/far");
        temp.write("root/new", "new");
        for (FVFileSystem* each : {&disk, &linked}) {
            EXPECT_EQ(contentOf(*each, At("far")), kNone);
            EXPECT_EQ(contentOf(*each, At("new")), "new");
            EXPECT_EQ(each->getFileSize(At("new")), 3);
            EXPECT_FALSE(each->fileExists(At("file")));
        }
    }
    fs::remove(temp / "top");
    fs::create_symlink("outside", temp / "top");
    EXPECT_EQ(contentOf(linked, At("file")), "secret") << "it leads there now";
}

TEST_F(VirtualDisk, NothingIsWrittenOutsideOrBeforeItIsEnabled) {
    FVFileSystem disk(&root);
    EXPECT_EQ(disk.createFile(At("new"), kOpenWrite), nullptr);
    EXPECT_EQ(disk.openFile(At("new"), kOpenCreate), nullptr);
    EXPECT_FALSE(disk.enableWrite(true));
    const std::string absolute = (temp / "secret|") + (temp / "new");
    for (const std::string& name : piecesOf("far|dangling|farfolder/new|farfolder/file|..|" + absolute)) {
        SCOPED_TRACE(name);
        int32_t error = 0;
        EXPECT_EQ(disk.createFile(At(name), kOpenWrite, &error), nullptr);
        EXPECT_NE(error, 0);
        EXPECT_EQ(disk.openFile(At(name), kOpenWrite), nullptr);
        EXPECT_FALSE(disk.removeFile(At(name)) || disk.createDir(At(name)) || disk.removeDir(At(name), true));
        EXPECT_FALSE(disk.renameFile(At(name), u"renamed") || disk.copyFile(At("file"), At(name)));
        EXPECT_FALSE(disk.moveFile(At(name), At("file"), true) || disk.moveFile(At("file"), At(name), true));
    }
    EXPECT_FALSE(disk.renameFile(At("file"), u"../moved"));
    EXPECT_TRUE(disk.closeFile(disk.createFile(At("deep/../new"), kOpenWrite)) && disk.renameFile(At("new"), u"newer"));
    EXPECT_TRUE(fs::exists(temp / "root/newer"));
    EXPECT_EQ(temp.read("secret") + temp.read("outside/file"), "secretsecret");
    EXPECT_EQ(temp.names(), (std::set<std::string>{"root", "outside", "secret", "rooted"}));
    EXPECT_EQ(temp.read("root/file"), "inside");
}

TEST_F(VirtualDisk, ListsItsOwnPathsWithoutLinksThatLeadOut) {
    FVFileSystem disk(&root);
    std::set<std::string> names;
    const OPtr<FFileIterator> files(disk.newIterator(nullptr, true)), below(disk.newIterator(At("nearfolder"), true));
    for (const FPath* file = files->first(); file; file = files->next())
        names.insert(utf8(*file));
    EXPECT_EQ(names, (std::set<std::string>{"file", "sub", "near", "nearfolder", "outandin"}));
    ASSERT_TRUE(below && below->first());
    EXPECT_EQ(utf8(below->current()->getName()), "file");
}

TEST_F(VirtualDisk, CopiesWholeTreesAndKeepsThemInside) {
    FVFileSystem source(&root);
    fs::create_directory(temp / "extracted");
    fs::create_symlink(temp / "outside", temp / "extracted/sub");  // somebody laid a trap
    FVFileSystem target(temp.at("extracted"), true);
    EXPECT_FALSE(FCopyFileSystem(&source, At(""), &target));
    fs::remove(temp / "extracted/sub");
    EXPECT_TRUE(FCopyFileSystem(&source, At(""), &target));
    EXPECT_EQ(temp.read("extracted/sub/file"), "below");
    EXPECT_EQ(temp.read("outside/file"), "secret");
    int64_t size = 0;
    EXPECT_EQ(target.countFiles(At(""), true, true, &size), 4);
    EXPECT_EQ(size, 6 * 3 + 5);
}

TEST_F(VirtualDisk, NoFileIsCopiedOverItselfByAnotherName) {
    FVFileSystem source(&root), same(&root, true), inside(temp.at("root/sub"), true);
    int32_t error = 0;
    EXPECT_FALSE(FFileSystem::copyFile(&source, At("file"), &same, At("file"), nullptr, &error));
    EXPECT_EQ(error, EINVAL);
    for (FVFileSystem* target : {&same, &inside})
        EXPECT_FALSE(FCopyFileSystem(&source, At(""), target));
    EXPECT_EQ(temp.read("root/file") + temp.read("root/sub/file"), "insidebelow");
    EXPECT_FALSE(fs::exists(temp / "root/sub/sub"));
}

const FFileType kBoxType(u"Box", u"box");

/** A box is the folder that it lies in, unless it is empty. */
FFileSystem* openBox(FPath* path) {
    FPath folder(*path);
    folder.ascend();
    return gFileSystem->getFileSize(path) > 0 ? new FVFileSystem(&folder) : nullptr;
}

TEST_F(VirtualDisk, FilesOfAKnownTypeActAsFolders) {
    FFileType::registerType(&kBoxType);
    FVFileSystem::registerHandler(&kBoxType, openBox);
    temp.write("root/a.box", "box");
    temp.write("root/empty.box", "");
    FVFileSystem disk(temp.at("root/a.box"));
    for (const char* name : {"sub/file", "/sub/file"})
        EXPECT_EQ(contentOf(disk, At(name)), "below");
    EXPECT_EQ(contentOf(disk, At("../secret")), kNone);
    for (const char* name : {"root/empty.box", "root/file", "missing"}) {
        FVFileSystem nothing(temp.at(name));
        EXPECT_FALSE(nothing.isValid());
        EXPECT_EQ(contentOf(nothing, At("file")), kNone);
        EXPECT_EQ(nothing.newIterator(nullptr, true), nullptr);
    }
}

}  // namespace
}  // namespace Tessarine
