#include "storage/fvfilesystem.h"
#include "storage/fbstream.h"
#include "tempfolder.h"
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>

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
    std::string readAll(FVFileSystem& disk, const std::u16string& name) {
        FPath path;
        path.fromString(name.c_str(), kFilePath);
        FStream* stream = disk.openFile(&path, kOpenRead);
        char bytes[100];
        const std::string text(bytes, stream ? size_t(stream->readRaw(bytes, sizeof bytes)) : 0);
        if (stream)
            disk.closeFile(stream);
        return text;
    }
    std::u16string at(const char* name) {
        FString text;
        temp.at(name).getFullPath(text);
        return text.text16();
    }

    TempFolder temp;
    FNPath root = temp.at("root");
};

TEST_F(VirtualDisk, NoPathLeavesTheRoot) {
    FVFileSystem disk(&root, true);
    const std::pair<std::u16string, const char*> rows[] = {
        {u"file",                     "inside"},
        {u"sub/../file",              "inside"},
        {u"../../../file",            "inside"},
        {u"sub//./file",              "below" },
        {u"near",                     "inside"},
        {u"nearfolder/file",          "below" },
        {u"outandin",                 "inside"},
        {at("root/file"),             "inside"},
        {at("root/../root/sub/file"), "below" },
        {u"../secret",                ""      },
        {u"far",                      ""      },
        {u"farfolder/file",           ""      },
        {u"farfolder/../file",        "inside"},
        {u"sub/../../secret",         ""      },
        {u"loop",                     ""      },
        {u"dangling",                 ""      },
        {at("secret"),                ""      },
        {at("root/../secret"),        ""      },
        {at("rooted"),                ""      },
        {u"/etc/passwd",              ""      },
        {u"file\xD800",               ""      },
        {u"..",                       ""      },
    };
    for (const auto& [name, expected] : rows) {
        SCOPED_TRACE(testing::PrintToString(name));
        FPath path;
        path.fromString(name.c_str(), kFilePath);
        EXPECT_EQ(readAll(disk, name), expected);
        EXPECT_EQ(disk.fileExists(&path), *expected != 0);
        EXPECT_EQ(disk.getFileSize(&path) >= 0, *expected != 0);
    }
}

TEST_F(VirtualDisk, AnotherFolderInTheRootsPlaceIsntLeftEither) {
    for (const bool removed : {false, true}) {
        FVFileSystem disk(&root, true);
        if (removed)
            fs::remove_all(temp / "root");
        else
            fs::rename(temp / "root", temp / "before");
        fs::create_directory(temp / "root");
        fs::create_symlink("../secret", temp / "root/far");
        temp.write("root/new", "new");
        EXPECT_EQ(readAll(disk, u"far"), "");
        EXPECT_EQ(readAll(disk, u"new"), "new");
        FPath path;
        path.fromString(u"new", kFilePath);
        EXPECT_TRUE(disk.fileExists(&path));
        EXPECT_EQ(disk.getFileSize(&path), 3);
        path.fromString(u"file", kFilePath);
        EXPECT_FALSE(disk.fileExists(&path));
    }
}

TEST_F(VirtualDisk, ARootThatIsALinkLeadsWhereItDoesNow) {
    fs::create_symlink("root", temp / "top");
    const FNPath top = temp.at("top");
    FVFileSystem disk(&top);
    EXPECT_EQ(readAll(disk, u"nearfolder/file"), "below");
    EXPECT_EQ(readAll(disk, u"far"), "");
    fs::remove(temp / "top");
    fs::create_symlink("outside", temp / "top");
    fs::create_symlink("file", temp / "outside/near");
    for (const tchar* name : {u"file", u"near"}) {
        FPath path;
        path.fromString(name, kFilePath);
        EXPECT_EQ(readAll(disk, name), "secret");
        EXPECT_TRUE(disk.fileExists(&path));
    }
}

TEST_F(VirtualDisk, NothingIsWrittenOutside) {
    FVFileSystem disk(&root, true);
    const std::u16string names[] = {u"far",    u"dangling", u"farfolder/new", u"farfolder/file", at("secret"),
                                    at("new"), u"..",       u"../.."};
    FPath inside;
    inside.fromString(u"file", kFilePath);
    for (const std::u16string& name : names) {
        SCOPED_TRACE(testing::PrintToString(name));
        FPath path;
        path.fromString(name.c_str(), kFilePath);
        int32_t error = 0;
        EXPECT_EQ(disk.createFile(&path, kOpenWrite, &error), nullptr);
        EXPECT_NE(error, 0);
        EXPECT_EQ(disk.openFile(&path, kOpenWrite), nullptr);
        EXPECT_FALSE(disk.removeFile(&path));
        EXPECT_FALSE(disk.createDir(&path));
        EXPECT_FALSE(disk.removeDir(&path, true));
        EXPECT_FALSE(disk.renameFile(&path, u"renamed"));
        EXPECT_FALSE(disk.moveFile(&path, &inside, true));
        EXPECT_FALSE(disk.moveFile(&inside, &path, true));
        EXPECT_FALSE(disk.copyFile(&inside, &path));
    }
    EXPECT_FALSE(disk.renameFile(&inside, u"../moved"));
    EXPECT_EQ(temp.read("secret") + temp.read("outside/file"), "secretsecret");
    EXPECT_EQ(temp.names(), (std::set<std::string>{"root", "outside", "secret", "rooted"}));
    EXPECT_EQ(temp.read("root/file"), "inside");
}

TEST_F(VirtualDisk, AllOfTheDisksBeginsAtTheTop) {
    FVFileSystem disk(gFileSystem);
    for (const std::u16string& name : {at("secret"), at("secret").substr(1), u"../.." + at("secret")})
        EXPECT_EQ(readAll(disk, name), "secret");
}

TEST_F(VirtualDisk, WritesOnlyWhenEnabled) {
    FVFileSystem disk(&root);
    FPath path;
    path.fromString(u"deep/../new", kFilePath);
    EXPECT_EQ(disk.createFile(&path, kOpenWrite), nullptr);
    EXPECT_EQ(disk.openFile(&path, kOpenCreate), nullptr);
    EXPECT_FALSE(disk.enableWrite(true));
    FStream* stream = disk.createFile(&path, kOpenWrite);
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(disk.closeFile(stream));
    EXPECT_TRUE(fs::exists(temp / "root/new"));
    EXPECT_TRUE(disk.renameFile(&path, u"newer"));
    EXPECT_TRUE(fs::exists(temp / "root/newer"));
}

TEST_F(VirtualDisk, ListsItsOwnPathsWithoutLinksThatLeadOut) {
    FVFileSystem disk(&root);
    std::set<std::u16string> names;
    const OPtr<FFileIterator> files(disk.newIterator(nullptr, true));
    for (FPath* file = files->first(); file; file = files->next()) {
        FString text;
        file->getFullPath(text);
        names.insert(text.text16());
    }
    EXPECT_EQ(names, (std::set<std::u16string>{u"file", u"sub", u"near", u"nearfolder", u"outandin"}));
    FPath folder;
    folder.fromString(u"nearfolder", kFolderPath);
    const OPtr<FFileIterator> below(disk.newIterator(&folder, true));
    ASSERT_TRUE(below && below->first());
    EXPECT_EQ(std::u16string(below->current()->getName()), u"file");
}

TEST_F(VirtualDisk, CopiesWholeTreesAndKeepsThemInside) {
    FVFileSystem source(&root);
    const FNPath extracted = temp.at("extracted");
    fs::create_directory(temp / "extracted");
    fs::create_symlink(temp / "outside", temp / "extracted/sub");  // somebody laid a trap
    FVFileSystem target(&extracted, true);
    FPath top;
    EXPECT_FALSE(FCopyFileSystem(&source, &top, &target));
    fs::remove(temp / "extracted/sub");
    EXPECT_TRUE(FCopyFileSystem(&source, &top, &target));
    EXPECT_EQ(temp.read("extracted/sub/file"), "below");
    EXPECT_EQ(temp.read("outside/file"), "secret");
    int64_t size = 0;
    EXPECT_EQ(target.countFiles(&top, true, true, &size), 4);
    EXPECT_EQ(size, 6 * 3 + 5);
}

TEST_F(VirtualDisk, NoFileIsCopiedOverItselfByAnotherName) {
    FVFileSystem source(&root), same(&root, true);
    const FNPath below = temp.at("root/sub");
    FVFileSystem inside(&below, true);
    FPath top, file;
    file.fromString(u"file", kFilePath);
    int32_t error = 0;
    EXPECT_FALSE(FFileSystem::copyFile(&source, &file, &same, &file, nullptr, &error));
    EXPECT_EQ(error, EINVAL);
    for (FVFileSystem* target : {&same, &inside})
        EXPECT_FALSE(FCopyFileSystem(&source, &top, target));
    EXPECT_EQ(temp.read("root/file") + temp.read("root/sub/file"), "insidebelow");
    EXPECT_FALSE(fs::exists(temp / "root/sub/sub"));
}

const FFileType kBoxType(u"Box", u"box");

/** A box is the folder that it lies in, unless it is empty. */
FFileSystem* openBox(FPath* path) {
    FNPath folder;
    static_cast<FPath&>(folder) = *path;
    folder.ascend();
    return gFileSystem->getFileSize(path) > 0 ? new FVFileSystem(&folder) : nullptr;
}

TEST_F(VirtualDisk, FilesOfAKnownTypeActAsFolders) {
    FFileType::registerType(&kBoxType);
    FVFileSystem::registerHandler(&kBoxType, openBox);
    temp.write("root/a.box", "box");
    temp.write("root/empty.box", "");
    const FNPath box = temp.at("root/a.box"), empty = temp.at("root/empty.box"), plain = temp.at("root/file");
    FVFileSystem disk(&box);
    EXPECT_EQ(readAll(disk, u"sub/file"), "below");
    EXPECT_EQ(readAll(disk, u"/sub/file"), "below");
    EXPECT_EQ(readAll(disk, u"../secret"), "");
    for (const FNPath& path : {empty, plain, temp.at("missing")}) {
        FVFileSystem nothing(&path);
        EXPECT_FALSE(nothing.isValid());
        EXPECT_EQ(readAll(nothing, u"file"), "");
        EXPECT_EQ(nothing.newIterator(nullptr, true), nullptr);
    }
}

}  // namespace
}  // namespace Tessarine
