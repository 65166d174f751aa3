#include "storage/ffilesystem.h"
#include "base/fmessage.h"
#include "base/uprogresshook.h"
#include "collect/cmdate.h"
#include "frame/source/storage/fnmounts.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/ffstream.h"
#include "storage/fsystemshell.h"
#include "storage/hooks.h"
#include "tempfolder.h"
#include "tests/support/ownmounts.h"
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <pthread.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace Tessarine {
namespace {

class Disk : public testing::Test {
protected:
    TempFolder temp;
};

// after: content, when it could be opened, after "new" was written
constexpr std::tuple<const char*, bool, const char*, int32_t, int32_t, const char*> kOpenings[] = {
    {"create empties",      true,  "old",   kOpenWrite,  0,          "new"   },
    {"create makes",        true,  "fresh", kOpenWrite,  0,          "new"   },
    {"open keeps the rest", false, "old",   kOpenWrite,  0,          "newent"},
    {"open with create",    false, "fresh", kOpenCreate, 0,          "new"   },
    {"open finds nothing",  false, "fresh", kOpenWrite,  ENOENT,     nullptr },
    {"file on the way",     true,  "old/x", kOpenWrite,  ENOTDIR,    nullptr },
    {"a folder isn't read", false, "dir",   kOpenRead,   EISDIR,     nullptr },
    {"a pipe hangs nobody", false, "pipe",  kOpenRead,   EOPNOTSUPP, nullptr },
};

TEST_F(Disk, OpensByMode) {
    std::filesystem::create_directory(temp / "dir");
    ASSERT_EQ(::mkfifo((temp / "pipe").c_str(), 0600), 0);  // with nobody at its other end
    for (const auto& [name, create, file, mode, expectedError, after] : kOpenings) {
        SCOPED_TRACE(name);
        std::filesystem::remove(temp / "fresh");
        temp.write("old", "oldent");
        FNPath path = temp.at(file);
        int32_t error = -1;
        FStream* stream =
            create ? gFileSystem->createFile(&path, mode, &error) : gFileSystem->openFile(&path, mode, &error);
        EXPECT_EQ(error, expectedError);
        ASSERT_EQ(stream != nullptr, after != nullptr);
        if (!stream)
            continue;
        EXPECT_EQ(stream->writeRaw("new", 3), 3);
        EXPECT_TRUE(gFileSystem->closeFile(stream));
        EXPECT_EQ(temp.read(file), after);
    }
}

TEST_F(Disk, KeepsTheFirstError) {
    FNPath path(u"/dev/full", kFilePath);
    auto* stream = classCast<FFileStream>(gFileSystem->openFile(&path, kOpenWrite));
    ASSERT_NE(stream, nullptr);
    FString message;
    EXPECT_EQ(stream->writeRaw("x", 1), 0);
    EXPECT_FALSE(stream->setEof(-5));
    EXPECT_EQ(stream->getFirstError(false), ENOSPC);
    stream->getErrorMessage(message);
    EXPECT_STREQ(message.text8(), "This disk is full.");
    EXPECT_FALSE(stream->flush());
    EXPECT_FALSE(gFileSystem->closeFile(stream));
}

TEST_F(Disk, ReadsUpToTheEndAlsoBeyondFourGigabytes) {
    constexpr int64_t kFar = int64_t(5) << 30;
    FNPath path = temp.at("sparse");
    auto* stream = classCast<FFileStream>(gFileSystem->createFile(&path, kOpenRead | kOpenWrite));
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(stream->seek(kFar, kFromStart), kFar);
    EXPECT_TRUE(stream->writeInt32(0x01020304));
    EXPECT_EQ(stream->tell(), kFar + 4);
    EXPECT_EQ(gFileSystem->getFileSize(stream), kFar + 4);
    char bytes[20];
    EXPECT_EQ(stream->seek(-3, kFromEnd), kFar + 1);
    EXPECT_EQ(stream->readRaw(bytes, 20), 3);
    EXPECT_TRUE(stream->eof());
    EXPECT_EQ(stream->seek(-2, kFromCurrent), kFar + 2);
    FUnknownPtr<ISizeableStream> sizeable(static_cast<CmObject*>(stream));
    ASSERT_TRUE(sizeable);
    EXPECT_EQ(sizeable->setStreamSize(kFar + 1), kResultOk);
    EXPECT_EQ(gFileSystem->getFileSize(&path), kFar + 1);
    EXPECT_TRUE(gFileSystem->closeFile(stream));
}

TEST_F(Disk, SignalsAreNoErrors) {
    struct sigaction action = {};  // without SA_RESTART: calls come back interrupted
    action.sa_handler = [](int) {};
    struct sigaction before;
    ::sigaction(SIGUSR1, &action, &before);
    const int far = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(far >= 0 && ::grantpt(far) == 0 && ::unlockpt(far) == 0);
    std::thread writer([&, reader = ::pthread_self()] {
        for (const char* line : {"ab\n", "cd\n"}) {
            for (int32_t i = 0; i < 20; ++i) {
                ::pthread_kill(reader, SIGUSR1);
                ::usleep(500);
            }
            EXPECT_EQ(::write(far, line, std::strlen(line)), ssize_t(std::strlen(line)));
        }
    });
    FNPath path(FString(::ptsname(far)).text16(), kFilePath);
    FStream* stream = gFileSystem->openFile(&path, kOpenRead);
    char bytes[6] = {};
    EXPECT_TRUE(stream && stream->readRaw(bytes, 6) == 6);  // it waits, too
    EXPECT_EQ(std::string(bytes, 6), "ab\ncd\n");
    EXPECT_TRUE(gFileSystem->closeFile(stream));
    writer.join();
    ::close(far);
    ::sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(Disk, MovesInOneStepAndOverwritesOnlyWhenAsked) {
    FNPath a = temp.at("a"), b = temp.at("b"), c = temp.at("c"), missing = temp.at("missing");
    temp.write("a", "from a");
    temp.write("b", "from b");
    EXPECT_FALSE(gFileSystem->moveFile(&a, &b, false));
    EXPECT_FALSE(gFileSystem->renameFile(&a, u"b"));
    EXPECT_FALSE(gFileSystem->moveFile(&missing, &b, true));
    EXPECT_EQ(temp.read("b"), "from b");
    EXPECT_TRUE(gFileSystem->moveFile(&a, &b, true));
    EXPECT_EQ(temp.read("b"), "from a");
    EXPECT_TRUE(gFileSystem->renameFile(&b, u"c"));
    EXPECT_EQ(temp.names(), (std::set<std::string>{"c"}));
    EXPECT_TRUE(gFileSystem->fileExists(&c));
    EXPECT_EQ(gFileSystem->getFileSize(&c), 6);
    EXPECT_TRUE(gFileSystem->removeFile(&c));
    EXPECT_FALSE(gFileSystem->removeFile(&c));
    EXPECT_EQ(gFileSystem->getFileSize(&c), -1);
}

TEST_F(Disk, MakesFoldersUnlessAFileIsInTheWay) {
    temp.write("file", "x");
    FNPath deep = temp.at("one/two/three"), blocked = temp.at("file/two"), file = temp.at("file"), empty;
    EXPECT_TRUE(gFileSystem->createDir(&deep));
    EXPECT_TRUE(gFileSystem->createDir(&deep));
    EXPECT_TRUE(std::filesystem::is_directory(temp / "one/two/three"));
    EXPECT_FALSE(gFileSystem->fileExists(&deep));
    EXPECT_FALSE(gFileSystem->removeFile(&deep));
    for (FNPath* path : {&blocked, &file, &empty})
        EXPECT_FALSE(gFileSystem->createDir(path));
    std::filesystem::create_symlink("nowhere", temp / "link");
    FNPath link = temp.at("link");
    EXPECT_FALSE(gFileSystem->createDir(&link));
    EXPECT_EQ(errno, EEXIST) << "why it wasn't made, not what was looked at after that";
}

TEST_F(Disk, ListsNamesAsTheyAre) {
    for (const char* name : {"b", "a\xC3\xA4", "\xE6\xA9\x9F",
                             "\xEF\xBB\xBF"
                             "b",
                             ".hidden", "not utf-8 \xFF"})
        temp.write(name, "");
    std::filesystem::create_directory(temp / "folder");
    std::filesystem::create_symlink("nowhere", temp / "link");
    const FNPath self = temp.self();
    const OPtr<FFileIterator> files(gFileSystem->newIterator(&self, true));
    ASSERT_TRUE(files);
    std::vector<std::u16string> found;
    for (FPath* file = files->first(); file; file = files->next()) {
        found.push_back(file->getName());
        EXPECT_EQ(file->isFolder(), found.back() == u"folder");
        EXPECT_EQ(file->isLink(), found.back() == u"link");
        EXPECT_EQ(file->isVisible(), found.back() != u".hidden");
        gFileSystem->removeFile(file);  // a walk isn't disturbed by it
    }
    EXPECT_EQ(found,
              (std::vector<std::u16string>{u".hidden", u"a\u00E4", u"b", u"folder", u"link", u"\u6A5F", u"\uFEFFb"}));
    const OPtr<FFileIterator> rest(gFileSystem->newIterator(&self, false));
    ASSERT_TRUE(rest->first());
    EXPECT_EQ(std::u16string(rest->current()->getName()), u"folder");
    EXPECT_EQ(rest->next(), nullptr);
    const FNPath missing = temp.at("missing");
    EXPECT_EQ(gFileSystem->newIterator(&missing, true), nullptr);
}

TEST_F(Disk, ListsFoldersThatCantBeEntered) {
    std::filesystem::create_directories(temp / "listed/sub");
    temp.write("listed/file", "");
    for (const auto& [name, rights] : {std::pair("", 0755), std::pair("listed", 0744)})
        ::chmod((temp / name).c_str(), mode_t(rights));
    const uid_t user = ::geteuid();
    const FNPath listed = temp.at("listed"), copy = temp.at("copy");
    ASSERT_EQ(::seteuid(user == 0 ? 65534 : user), 0);  // root may enter all of them
    ::chmod((temp / "listed").c_str(), 0444);
    const OPtr<FFileIterator> files(gFileSystem->newIterator(&listed, true));
    std::string found;
    for (const FPath* each = files->first(); each; each = files->next())
        found += FString(each->getName()).text8() + std::string(each->isFolder() ? "/ " : " ");
    EXPECT_EQ(found, "file sub/ ");
    EXPECT_EQ(gFileSystem->countFiles(&listed, true, true), -1);
    ASSERT_EQ(::seteuid(user), 0);
    ::chmod((temp / "listed").c_str(), 0755);
}

/** Stops after so many steps. */
class StoppingHook : public UProgressHook {
public:
    explicit StoppingHook(int32_t steps) : left(steps) {}
    bool setProgress(int32_t percent) override {
        reached = percent;
        return left-- > 0;
    }
    int32_t reached = 0;

private:
    int32_t left;
};

TEST_F(Disk, CopiesWholeFilesOrNone) {
    temp.write("a", std::string(200000, 'x'));
    ::chmod((temp / "a").c_str(), 0751);
    std::filesystem::create_hard_link(temp / "a", temp / "same");
    FNPath a = temp.at("a"), b = temp.at("b"), same = temp.at("same"), missing = temp.at("missing"),
           blocked = temp.at("a/b"), device(u"/dev/null", kFilePath);
    int32_t error = -1;
    EXPECT_TRUE(gFileSystem->copyFile(&a, &b, nullptr, &error));
    EXPECT_EQ(error, 0);
    EXPECT_EQ(temp.read("b"), temp.read("a"));
    EXPECT_EQ(std::filesystem::status(temp / "b").permissions(), std::filesystem::perms(0751));
    StoppingHook hook(2);
    const std::tuple<FNPath*, FNPath*, UProgressHook*, int32_t> failures[] = {
        {&a,       &b,       &hook,   ECANCELED},
        {&missing, &b,       nullptr, ENOENT   },
        {&a,       &blocked, nullptr, ENOTDIR  },
        {&a,       &same,    nullptr, EINVAL   },
        {&device,  &b,       nullptr, EINVAL   },
        {&a,       &a,       nullptr, EINVAL   },
    };
    for (const auto& [from, to, progress, expected] : failures) {
        EXPECT_FALSE(gFileSystem->copyFile(from, to, progress, &error));
        EXPECT_EQ(error, expected);
    }
    EXPECT_EQ(temp.names(), (std::set<std::string>{"a", "same"}));
    EXPECT_EQ(temp.read("a").size(), 200000u);
}

TEST_F(Disk, WalksTreesWithoutFollowingLinks) {
    std::filesystem::create_directories(temp / "from/one/two/empty");
    std::filesystem::create_directory_symlink("..", temp / "from/one/up");
    for (const char* name : {"from/a", "from/one/b", "from/one/two/c", "from/one/.hidden"})
        temp.write(name, "12345");
    FNPath from = temp.at("from"), to = temp.at("to"), bare = temp.at("bare"), inside = temp.at("from/one/copy"),
           missing = temp.at("missing"), found;
    int64_t size = 0;
    EXPECT_EQ(gFileSystem->countFiles(&from, true, true, &size), 5);  // the link is one
    EXPECT_EQ(gFileSystem->countFiles(&from, true, false), 4);
    EXPECT_EQ(gFileSystem->countFiles(&from, false, true), 1);
    EXPECT_EQ(gFileSystem->countFiles(&missing, false, true), -1);
    EXPECT_TRUE(gFileSystem->findFile(&from, u"c", found));
    EXPECT_EQ(gFileSystem->getFileSize(&found), 5);
    std::filesystem::create_directory_symlink("from", temp / "alias");
    FNPath behindLink = temp.at("alias/new/copy");
    EXPECT_FALSE(gFileSystem->copyFolderAndFileStructure(&from, &inside));
    EXPECT_FALSE(gFileSystem->copyFolderAndFileStructure(&from, &behindLink));
    StoppingHook hook(99);
    EXPECT_TRUE(gFileSystem->copyFolderAndFileStructure(&from, &to, &hook));
    EXPECT_EQ(hook.reached, 100);
    EXPECT_TRUE(gFileSystem->copyFolderStructure(&from, &bare));
    EXPECT_EQ(gFileSystem->countFiles(&to, true, true), 4);
    EXPECT_EQ(gFileSystem->countFiles(&bare, true, true), 0);
    EXPECT_TRUE(std::filesystem::is_directory(temp / "bare/one/two/empty"));
    EXPECT_TRUE(gFileSystem->removeEmptyFolders(&bare));
    EXPECT_TRUE(gFileSystem->isFolderEmpty(&bare));
    temp.write("bare/\xFF", "");
    EXPECT_FALSE(gFileSystem->isFolderEmpty(&bare));
    EXPECT_TRUE(gFileSystem->removeEmptyFolders(&to));
    EXPECT_EQ(temp.read("to/one/two/c"), "12345");
    EXPECT_FALSE(std::filesystem::exists(temp / "to/one/two/empty"));
}

TEST_F(Disk, RemovesTreesButNotWhatLinksLeadTo) {
    std::filesystem::create_directories(temp / "tree/sub");
    temp.write("kept", "kept");
    std::filesystem::create_symlink("../kept", temp / "tree/link");
    std::filesystem::create_directory_symlink("tree", temp / "linked");
    FNPath tree = temp.at("tree"), linked = temp.at("linked"), file = temp.at("kept");
    EXPECT_FALSE(gFileSystem->removeDir(&tree, false));
    EXPECT_FALSE(gFileSystem->removeDir(&linked, true));
    EXPECT_FALSE(gFileSystem->removeDir(&file, true));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_TRUE(gFileSystem->removeDir(&tree, true));
    EXPECT_EQ(temp.names(), (std::set<std::string>{"kept", "linked"}));
}

TEST_F(Disk, KnowsLinks) {
    temp.write("file", "x");
    std::filesystem::create_directory(temp / "dir");
    FNPath link = temp.at("dir/link"), relative(u"../file", kFilePath), file = temp.at("file"), hard = temp.at("hard"),
           loop = temp.at("loop"), target;
    EXPECT_TRUE(gFileSystem->createSymlink(&link, &relative));
    EXPECT_TRUE(gFileSystem->isSymlink(&link));
    EXPECT_FALSE(gFileSystem->isSymlink(&file) || gFileSystem->readSymlink(&file, target));
    EXPECT_TRUE(gFileSystem->readSymlink(&link, target));
    EXPECT_EQ(gFileSystem->getFileSize(&target), 1);
    EXPECT_TRUE(gFileSystem->checkResolveLink(&link));
    EXPECT_EQ(std::u16string(link.getName()), u"file");
    EXPECT_TRUE(gFileSystem->createLink(&hard, &file));
    EXPECT_TRUE(gFileSystem->createSymlink(&loop, &loop));
    EXPECT_FALSE(gFileSystem->checkResolveLink(&loop));
}

TEST_F(Disk, NamesThatAreFreeAndValid) {
    temp.write("a.txt", "");
    std::filesystem::create_symlink("nowhere", temp / "a-01.txt");  // what is written there would be elsewhere
    std::filesystem::create_directory(temp / "b");
    FNPath a = temp.at("a.txt"), b = temp.at("b"), c = temp.at("c");
    EXPECT_TRUE(a.uniqueName() && b.uniqueName());
    EXPECT_FALSE(c.uniqueName());
    EXPECT_EQ(std::u16string(a.getName()) + b.getName(), u"a-02.txtb-01");
    const std::tuple<std::u16string, tchar, bool, std::u16string> rows[] = {
        {u"a/b", 0, true, u"a_b"},
        {u" *?\\: ", u'-', true, u"--\\:"},
        {u" a ", 0, false, u" a "},
        {std::u16string(1025, u'x'), 0, true, std::u16string(1024, u'x')},
        {std::u16string(1023, u'x') + u"\U0001F600", 0, true, std::u16string(1023, u'x')},
    };
    for (const auto& [name, replacement, trim, expected] : rows) {
        FString text(name.c_str());
        EXPECT_EQ(gFileSystem->makeValidName(text, replacement, trim), name != expected);
        EXPECT_EQ(std::u16string(text.text16()), expected);
    }
    std::u16string faces;
    while (faces.size() < 300)
        faces += u"\U0001F600";
    const std::pair<std::u16string, std::u16string> systemNames[] = {
        {std::u16string(200, u'\u00E4'), std::u16string(127, u'\u00E4')}, // two bytes each
        {faces, faces.substr(0, 126)}, // four for each pair
        {u"a\xD800", u"a"},
        {u"..", u"_"},
    };
    for (const auto& [wanted, expected] : systemNames) {
        FString name(wanted.c_str());
        EXPECT_TRUE(gFileSystem->makeSystemName(name));
        EXPECT_EQ(std::u16string(name.text16()), expected);
    }
    FNPath blank(u"/a?/ / b", kFilePath);
    FString valid;
    EXPECT_TRUE(gFileSystem->makeValidPath(&blank));
    blank.getFullPath(valid);
    EXPECT_STREQ(valid.text8(), "/a_/_/b");
    FNPath half(u"a\xD800", kFilePath);
    temp.write("a?", "");
    half = FNPath(u"a\xD800", &static_cast<const FNPath&>(temp.self()), kFilePath);
    EXPECT_FALSE(gFileSystem->fileExists(&half));  // which isn't "a?"
}

TEST_F(Disk, FolderNamesAreThoseOfThePlace) {
    const std::filesystem::path here = std::filesystem::current_path();
    const std::pair<const char16_t*, std::string> rows[] = {
        {u".",           here.filename()              },
        {u"..",          here.parent_path().filename()},
        {u"missing",     here.filename()              },
        {u"/a/../b/x.y", "b"                          },
    };
    for (const auto& [text, expected] : rows) {
        FNPath path(text, kFilePath), root;
        FString name;
        EXPECT_TRUE(gFileSystem->getDirName(&path, name));
        EXPECT_EQ(name.text8(), expected);
        EXPECT_TRUE(gFileSystem->getRootDir(&path, root));
    }
}

TEST_F(Disk, TellsTimesRightsAndRoom) {
    temp.write("file", "x");
    FNPath file = temp.at("file"), self = temp.self(), root(u"/", kFolderPath), found;
    CmTime created, modified;
    int64_t seconds = 0;
    ASSERT_TRUE(gFileSystem->getFileTimes(&file, created, modified) && modified.toUnixTime(seconds));
    EXPECT_LT(std::abs(seconds - int64_t(::time(nullptr))), 60);
    EXPECT_TRUE(gFileSystem->enableWrite(&file, false));
    EXPECT_EQ(std::filesystem::status(temp / "file").permissions() & std::filesystem::perms(0222),
              std::filesystem::perms::none);
    EXPECT_TRUE(gFileSystem->enableWrite(&file, true) && gFileSystem->canWrite(&file));
    EXPECT_GT(gFileSystem->getFreeBytesOnDisk(&self), 0);
    EXPECT_TRUE(gFileSystem->isRoot(&root) && !gFileSystem->isRoot(&file));
    EXPECT_TRUE(gFileSystem->getRootDir(&file, found) && gFileSystem->isRoot(&found));
    FString text;
    FFileSystem::makeFileSizeString(1536.0 * 1024, text);
    EXPECT_STREQ(text.text8(), "1.500 MB");
}

TEST_F(Disk, ReadsTheMountTable) {
    temp.write(
        "mounts",
        "/dev/nothing / ext4 rw 0 0\nproc /proc proc rw 0 0\nhost:/x /mnt/a\\040b nfs4 rw 0 0\n"
        "/dev/sr9 /media/cd iso9660 ro 0 0\n/dev/other /media/cd ext4 rw 0 0\n/dev/loop9 /snap squashfs ro 0 0\n");
    std::vector<std::pair<std::string, FDriveType>> found;
    for (const FMount& mount : readMounts((temp / "mounts").c_str()))
        found.emplace_back(mount.folder, mount.type);
    EXPECT_EQ(found, (std::vector<std::pair<std::string, FDriveType>>{
                         {"/",         kHarddisk      },
                         {"/proc",     kUndefinedDrive},
                         {"/mnt/a b",  kNetworkDrive  },
                         {"/media/cd", kHarddisk      },
                         {"/snap",     kUndefinedDrive}
    }));
    EXPECT_TRUE(readMounts((temp / "missing").c_str()).empty());
    CmArray drives;
    drives._ownsObjects = CmContainer::kTakesOver;
    EXPECT_GE(gFileSystem->getDrives(drives), 1);
}

TEST_F(Disk, TrashCanBeRestored) {
    const std::string home = temp / "home";
    ::setenv("XDG_DATA_HOME", home.c_str(), 1);
    for (int32_t round = 0; round < 2; ++round) {
        temp.write("a b", "content");
        FNPath path = temp.at("a b");
        EXPECT_TRUE(gFileSystem->trashFile(&path));
        EXPECT_FALSE(gFileSystem->trashFile(&path));
    }
    const std::string longest(NAME_MAX, 'x');
    temp.write("home/Trash/files/left", "");  // without an info file
    for (const std::string& name : {std::string("left"), longest}) {
        temp.write(name.c_str(), "content");
        FNPath path = temp.at(name.c_str());
        EXPECT_TRUE(gFileSystem->trashFile(&path));
    }
    ::unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(temp.names(), (std::set<std::string>{"home"}));
    EXPECT_EQ(temp.read("home/Trash/files/left.2"), "content");
    EXPECT_EQ(temp.read("home/Trash/files/a b") + temp.read("home/Trash/files/a b.2"), "contentcontent");
    const std::string info = temp.read("home/Trash/info/a b.2.trashinfo");
    EXPECT_TRUE(info.starts_with("[Trash Info]\nPath=" + (temp / "a%20b") + "\nDeletionDate=2")) << info;
}

/** A small disk of its own. */
class OtherDisk : public Disk {
protected:
    /** false: the test is done. */
    bool begin() {
        if (!OwnMounts::areHere())
            return false;
        std::filesystem::create_directory(folder);
        mounted = ::mount("none", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
        EXPECT_TRUE(mounted);
        gStorageHooks.showError = [](const FString& text) { (shown += FString(text).text8()) += "\n"; };
        shown.clear();
        gFileSystem->showPlatformErrors(true);
        return mounted;
    }
    void TearDown() override {
        gFileSystem->showPlatformErrors(false);
        gStorageHooks = {};
        if (mounted)
            ::umount(folder.c_str());
    }
    const std::string folder = temp / "disk";
    bool mounted = false;
    static inline std::string shown;
};

TEST_F(OtherDisk, MovesAsOnOneDiskOrNotAtAll) {
    if (!begin())
        return;
    const std::string longest(NAME_MAX, 'x');
    temp.write(longest, "content");
    const timespec old[] = {
        {1000, 0},
        {2000, 0}
    };
    ::utimensat(AT_FDCWD, (temp / longest).c_str(), old, 0);
    FNPath from = temp.at(longest), there = temp.at("disk/" + longest), back = temp.at("back");
    EXPECT_TRUE(gFileSystem->moveFile(&from, &there, false));
    EXPECT_FALSE(gFileSystem->fileExists(&from));
    CmTime created, modified;
    int64_t seconds = 0;
    EXPECT_TRUE(gFileSystem->getFileTimes(&there, created, modified) && modified.toUnixTime(seconds));
    EXPECT_EQ(seconds, 2000);
    EXPECT_EQ(::mount("", folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);  // so it can't be taken away
    EXPECT_FALSE(gFileSystem->moveFile(&there, &back, false));
    EXPECT_EQ(temp.names(), (std::set<std::string>{"disk"}));
    EXPECT_EQ(shown, "This disk is read only.\n");
    EXPECT_EQ(::mount("", folder.c_str(), nullptr, MS_REMOUNT, nullptr), 0);
    EXPECT_TRUE(gFileSystem->trashFile(&there));
    const std::string trash = "disk/.Trash-" + std::to_string(::getuid());
    const std::string kept = longest.substr(std::string_view(".9999.trashinfo").size());
    EXPECT_EQ(temp.read(trash + "/files/" + kept), "content");
    EXPECT_TRUE(temp.read(trash + "/info/" + kept + ".trashinfo").starts_with("[Trash Info]\nPath=" + longest + "\n"));
}

TEST_F(OtherDisk, TellsOnceThatItIsFull) {
    if (!begin())
        return;
    temp.write("big", std::string(200000, 'x'));
    FNPath big = temp.at("big"), copy = temp.at("disk/copy");
    int32_t error = 0;
    EXPECT_FALSE(gFileSystem->copyFile(&big, &copy, nullptr, &error));
    EXPECT_EQ(error, ENOSPC);
    EXPECT_FALSE(gFileSystem->moveFile(&big, &copy, false));
    EXPECT_EQ(shown, "This disk is full.\nThis disk is full.\n");
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    EXPECT_EQ(gFileSystem->getFileSize(&big), 200000);
}

TEST_F(Disk, TellsSubscribersOfDrives) {
    class Subscriber : public CmObject {
    public:
        int32_t notify(FMessage* message) override {
            FNPath* path = classCast<FNPath>(message->get(message->isType("PathChanged") ? "change" : "path"));
            heard += std::string(message->getMessageID()) + (path ? "+" : "-");
            return 1;
        }
        std::string heard;
    } subscriber;
    const FNPath drive(u"/media/x", kFolderPath);
    gFileSystem->subscribeToMountEvent(&subscriber);
    gFileSystem->onMountEvent("VolMount", drive);
    gFileSystem->onMountEvent("Other", drive);
    gFileSystem->onFileSystemChange(drive);
    gFileSystem->unsubscribeFromMountEvent(&subscriber);
    gFileSystem->onMountEvent("VolUnmount", drive);
    EXPECT_EQ(subscriber.heard, "VolMount+PathChanged+");
}

TEST_F(Disk, FindsMimeTypes) {
    static const FFileType registered(u"Z", u"zzz", nullptr, 0, u"text/z");
    FFileType::registerType(&registered);
    std::filesystem::create_directories(temp / "mime");
    temp.write("mime/globs2",
               "# comment\n80:text/x-a:*.abc\n50:text/x-b:*.abc\n50:text/x-c:abcd\n50:text/x-d:*.d:cs\n"
               "50:text/x-big:*.E:cs\n50:text/x-big:*.E\n50:text/x-small:*.e:cs\n50:text/x-small:*.e\n");
    ::setenv("XDG_DATA_HOME", (temp / "").c_str(), 1);
    const std::tuple<const char*, bool, const char*> rows[] = {
        {"ABC",  true,  "text/x-a"    },
        {"d",    true,  "text/x-d"    },
        {"E",    true,  "text/x-big"  },
        {"e",    true,  "text/x-small"},
        {"zzz",  true,  "text/z"      },
        {"abcd", false, ""            },
        {"",     false, ""            },
    };
    for (const auto& [extension, known, type] : rows) {
        FString found;
        EXPECT_EQ(FNFileSystem::lookupMimeType(extension, found), known) << extension;
        EXPECT_STREQ(found.text8(), type);
    }
    ::unsetenv("XDG_DATA_HOME");
}

TEST_F(Disk, StartsProgramsAndWaitsForNone) {
    const FString arguments[] = {FString("-c"), FString("echo \"$0\" > \"$1\""), FString("a; b $c"),
                                 FString((temp / "out").c_str())};
    EXPECT_TRUE(FSystemShell::execute(FNPath(u"sh", kFilePath), arguments));
    for (const char16_t* name :
         {u"no-such-program", u"eval", u"", u"-c", u"/bin", u"/dev/null"})  // eval: the shell's own
        EXPECT_FALSE(FSystemShell::execute(FNPath(name, kFilePath), arguments));
    const auto before = ::signal(SIGCHLD, SIG_IGN);  // the host's choice
    EXPECT_TRUE(FSystemShell::execute(FNPath(u"true", kFilePath)));
    ::signal(SIGCHLD, before);
    for (int32_t tries = 0; tries < 500 && temp.read("out").empty(); ++tries)
        ::usleep(10000);
    EXPECT_EQ(temp.read("out"), "a; b $c\n");
}

TEST_F(Disk, ShowsFailuresWhenAsked) {
    static std::string shown;
    gStorageHooks.showError = [](const FString& text) { shown += FString(text).text8(); };
    FNPath missing = temp.at("missing");
    EXPECT_FALSE(gFileSystem->removeFile(&missing));
    EXPECT_FALSE(gFileSystem->showPlatformErrors(true));
    EXPECT_FALSE(gFileSystem->removeFile(&missing));
    EXPECT_TRUE(gFileSystem->showPlatformErrors(false));
    gStorageHooks = {};
    EXPECT_EQ(shown, "The file/folder could not be found at this location.");
}

TEST_F(Disk, KeepsTheLastFolderOfATypeAmongTheDefaults) {
    static std::map<std::string, FNPath> pool;
    gStorageHooks.storeDefault = [](const char* name, const char* key, const FNPath& path) {
        pool[std::string(name) + ": " + key] = path;
        return true;
    };
    gStorageHooks.loadDefault = [](const char* name, const char* key, FNPath& path) {
        path = pool[std::string(name) + ": " + key];
        return !path.isEmpty();
    };
    const FFileType type(u"XML", u"xml");
    FNPath folder = temp.self(), found;
    EXPECT_TRUE(gFileSystem->storeLastPath(folder, &type));
    EXPECT_FALSE(gFileSystem->loadLastPath(found, nullptr));
    EXPECT_TRUE(gFileSystem->loadLastPath(found, &type) && found == folder);
    EXPECT_TRUE(gFileSystem->storeLastPath(folder, nullptr));
    EXPECT_TRUE(pool.contains("Default Paths: Global Default") &&
                pool.contains("Default Paths: Default Path for \".xml\" Files"));
    gStorageHooks = {};
}

TEST(DiskMessages, SayWhatAUserCanUnderstand) {
    const std::pair<int32_t, const char*> rows[] = {
        {0,      "No error occurred."                                                                          },
        {ENOENT, "The file/folder could not be found at this location."                                        },
        {30,     "This disk is read only."                                                                     },
        {ELOOP,  "An unexpected error occurred. The system's description is: Too many levels of symbolic links"},
        {-43,    "The file/folder could not be found at this location."                                        },
        {-1,     "An unexpected error occurred. The system's description is: Unknown error -1"                 },
    };
    for (const auto& [code, expected] : rows) {
        FString text;
        FNFileSystem::getErrorMessage(code, text);
        EXPECT_STREQ(text.text8(), expected);
    }
}

}  // namespace
}  // namespace Tessarine
