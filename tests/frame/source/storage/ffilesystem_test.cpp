#include "storage/ffilesystem.h"
#include "collect/cmarray.h"
#include "collect/cmdate.h"
#include "frame/source/storage/fnmounts.h"
#include "pathprobes.h"
#include "storage/ffstream.h"
#include "storage/fsystemshell.h"
#include "storage/hooks.h"
#include "tests/support/ownmounts.h"
#include "tests/support/pieces.h"
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace Tessarine {
namespace {
namespace fs = std::filesystem;

class Disk : public testing::Test {
protected:
    ~Disk() override { gStorageHooks = {}; }
    TempFolder temp;
};

// after: content, when it could be opened, after "new" was written
constexpr std::tuple<const char*, const char*, int32_t, int32_t, const char*> kOpenings[] = {
    {"create empties",      "old",   kOpenWrite | kOpenCreate, 0,          "new"   },
    {"open keeps the rest", "old",   kOpenWrite,               0,          "newent"},
    {"open with create",    "fresh", kOpenCreate,              0,          "new"   },
    {"open finds nothing",  "none",  kOpenWrite,               ENOENT,     nullptr },
    {"file on the way",     "old/x", kOpenCreate,              ENOTDIR,    nullptr },
    {"a folder isn't read", "dir",   kOpenRead,                EISDIR,     nullptr },
    {"a pipe hangs nobody", "pipe",  kOpenRead,                EOPNOTSUPP, nullptr },
};

TEST_F(Disk, OpensByMode) {
    fs::create_directory(temp / "dir");
    ASSERT_EQ(::mkfifo((temp / "pipe").c_str(), 0600), 0);  // with nobody at its other end
    for (const auto& [name, file, mode, expectedError, after] : kOpenings) {
        SCOPED_TRACE(name);
        temp.write("old", "oldent");
        int32_t error = -1;
        FStream* stream = gFileSystem->openFile(temp.at(file), mode, &error);
        EXPECT_EQ(error, expectedError);
        const bool written = stream && stream->writeRaw("new", 3) == 3;
        EXPECT_EQ(gFileSystem->closeFile(stream) && written, after != nullptr);
        EXPECT_TRUE(!after || temp.read(file) == after);
    }
}

TEST_F(Disk, ReadsUpToTheEndAlsoBeyondFourGigabytes) {
    constexpr int64_t kFar = int64_t(5) << 30;
    auto* stream = classCast<FFileStream>(gFileSystem->createFile(temp.at("sparse"), kOpenRead | kOpenWrite));
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(stream->seek(kFar, kFromStart) == kFar && stream->writeInt32(0x01020304));
    EXPECT_EQ(gFileSystem->getFileSize(stream), kFar + 4);
    char bytes[20];
    EXPECT_EQ(stream->seek(-3, kFromEnd), kFar + 1);
    EXPECT_EQ(stream->readRaw(bytes, 20), 3);
    EXPECT_TRUE(stream->eof());
    EXPECT_EQ(stream->seek(-2, kFromCurrent), kFar + 2);
    FUnknownPtr<ISizeableStream> sizeable(static_cast<CmObject*>(stream));
    EXPECT_TRUE(sizeable && sizeable->setStreamSize(kFar + 1) == kResultOk);
    EXPECT_TRUE(gFileSystem->closeFile(stream));
    EXPECT_EQ(gFileSystem->getFileSize(temp.at("sparse")), kFar + 1);
    FString text;
    EXPECT_TRUE(gFileSystem->getFileSizeString(temp.at("sparse"), text) && utf8(text) == "5.000 GB");
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
    FStream* stream = gFileSystem->openFile(At(::ptsname(far)), kOpenRead);
    char bytes[6] = {};
    EXPECT_TRUE(stream && stream->readRaw(bytes, 6) == 6);  // it waits, too
    EXPECT_EQ(std::string(bytes, 6), "ab\ncd\n");
    EXPECT_TRUE(gFileSystem->closeFile(stream));
    writer.join();
    ::close(far);
    ::sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(Disk, MovesInOneStepAndOverwritesOnlyWhenAsked) {
    temp.write("a", "from a");
    temp.write("b", "from b");
    At a = temp.at("a"), b = temp.at("b");
    EXPECT_FALSE(gFileSystem->moveFile(a, b, false) || gFileSystem->renameFile(a, u"b"));
    EXPECT_FALSE(gFileSystem->moveFile(temp.at("missing"), b, true));
    EXPECT_EQ(temp.read("b"), "from b");
    EXPECT_TRUE(gFileSystem->moveFile(a, b, true));
    EXPECT_EQ(temp.read("b"), "from a");
    EXPECT_TRUE(gFileSystem->renameFile(b, u"c"));
    EXPECT_EQ(temp.names(), (std::set<std::string>{"c"}));
    EXPECT_TRUE(gFileSystem->removeFile(temp.at("c")));
    EXPECT_FALSE(gFileSystem->removeFile(b));
}

TEST_F(Disk, MakesFoldersUnlessAFileIsInTheWay) {
    temp.write("file", "x");
    fs::create_symlink("nowhere", temp / "link");
    for (int32_t round = 0; round < 2; ++round)
        EXPECT_TRUE(gFileSystem->createDir(temp.at("one/two/three")));
    EXPECT_TRUE(fs::is_directory(temp / "one/two/three"));
    EXPECT_FALSE(gFileSystem->fileExists(temp.at("one/two")) || gFileSystem->removeFile(temp.at("one/two")));
    for (const char* name : {"file/two", "file", "link"})
        EXPECT_FALSE(gFileSystem->createDir(temp.at(name))) << name;
    EXPECT_EQ(errno, EEXIST) << "why it wasn't made, not what was looked at after that";
    EXPECT_FALSE(gFileSystem->createDir(At("")));
}

TEST_F(Disk, ListsNamesAsTheyAre) {
    const std::string marked =
        "\xEF\xBB\xBF"
        "b";
    for (const std::string& name : piecesOf("b|aä|機|.hidden|not utf-8 \xFF|" + marked))
        temp.write(name, "");
    fs::create_directory(temp / "folder");
    fs::create_symlink("nowhere", temp / "link");
    for (const bool withHidden : {true, false}) {
        const OPtr<FFileIterator> files(gFileSystem->newIterator(temp.self(), withHidden));
        std::string found;
        for (FPath* file = files->first(); file; file = files->next()) {
            found += utf8(file->getName()) + (file->isFolder() ? "/ " : file->isLink() ? "@ " : " ");
            EXPECT_EQ(file->isVisible(), !ConstString(file->getName()).startsWith(u"."));
            gFileSystem->removeFile(file);  // a walk isn't disturbed by it
        }
        EXPECT_EQ(found, withHidden ? ".hidden aä b folder/ link@ 機 " + marked + " " : "folder/ ");
    }
    EXPECT_EQ(gFileSystem->newIterator(temp.at("missing"), true), nullptr);
}

TEST_F(Disk, ListsFoldersThatCantBeEntered) {
    fs::create_directories(temp / "listed/sub");
    temp.write("listed/file", "");
    ::chmod((temp / "").c_str(), 0755);
    ::chmod((temp / "listed").c_str(), 0444);
    const uid_t user = ::geteuid();
    ASSERT_EQ(::seteuid(user == 0 ? 65534 : user), 0);  // root may enter all of them
    const OPtr<FFileIterator> files(gFileSystem->newIterator(temp.at("listed"), true));
    ASSERT_TRUE(files && utf8(files->first()->getName()) == "file");
    EXPECT_TRUE(files->next()->isFolder());
    EXPECT_EQ(gFileSystem->countFiles(temp.at("listed"), true, true), -1);
    ASSERT_EQ(::seteuid(user), 0);
    ::chmod((temp / "listed").c_str(), 0755);
}

TEST_F(Disk, CopiesWholeFilesOrNone) {
    temp.write("a", std::string(200000, 'x'));
    ::chmod((temp / "a").c_str(), 0751);
    fs::create_hard_link(temp / "a", temp / "same");
    int32_t error = -1;
    EXPECT_TRUE(gFileSystem->copyFile(temp.at("a"), temp.at("b"), nullptr, &error));
    EXPECT_EQ(error, 0);
    EXPECT_EQ(temp.read("b"), temp.read("a"));
    EXPECT_EQ(fs::status(temp / "b").permissions(), fs::perms(0751));
    StopAfter hook(2);
    const std::tuple<const char*, const char*, UProgressHook*, int32_t> failures[] = {
        {"a",         "b",    &hook,   ECANCELED},
        {"missing",   "b",    nullptr, ENOENT   },
        {"a",         "a/b",  nullptr, ENOTDIR  },
        {"a",         "same", nullptr, EINVAL   },
        {"/dev/null", "b",    nullptr, EINVAL   },
        {"a",         "a",    nullptr, EINVAL   },
    };
    for (const auto& [from, to, progress, expected] : failures) {
        EXPECT_FALSE(gFileSystem->copyFile(temp.at(from), temp.at(to), progress, &error));
        EXPECT_EQ(error, expected) << from;
    }
    EXPECT_EQ(temp.names(), (std::set<std::string>{"a", "same"}));
    EXPECT_EQ(temp.read("a").size(), 200000u);
}

TEST_F(Disk, WalksTreesWithoutFollowingLinks) {
    fs::create_directories(temp / "from/one/two/empty");
    fs::create_directory_symlink("..", temp / "from/one/up");
    fs::create_directory_symlink("from", temp / "alias");
    for (const char* name : {"from/a", "from/one/b", "from/one/two/c", "from/one/.hidden"})
        temp.write(name, "12345");
    At from = temp.at("from"), bare = temp.at("bare"), to = temp.at("to");
    FNPath found;
    EXPECT_EQ(gFileSystem->countFiles(from, true, true), 5);  // the link is one
    EXPECT_EQ(gFileSystem->countFiles(from, true, false), 4);
    EXPECT_EQ(gFileSystem->countFiles(from, false, true), 1);
    EXPECT_EQ(gFileSystem->countFiles(temp.at("missing"), false, true), -1);
    EXPECT_TRUE(gFileSystem->findFile(from, u"c", found) && found.getSize() == 5);
    for (const char* inside : {"from/one/copy", "alias/new/copy"})
        EXPECT_FALSE(gFileSystem->copyFolderAndFileStructure(from, temp.at(inside)));
    StopAfter hook(99);
    EXPECT_TRUE(gFileSystem->copyFolderAndFileStructure(from, to, &hook));
    EXPECT_EQ(hook.reached, 100);
    EXPECT_TRUE(gFileSystem->copyFolderStructure(from, bare));
    EXPECT_EQ(gFileSystem->countFiles(to, true, true), 4);
    EXPECT_EQ(gFileSystem->countFiles(bare, true, true), 0);
    EXPECT_TRUE(fs::is_directory(temp / "bare/one/two/empty"));
    EXPECT_TRUE(gFileSystem->removeEmptyFolders(bare) && gFileSystem->isFolderEmpty(bare));
    temp.write("bare/\xFF", "");
    EXPECT_FALSE(gFileSystem->isFolderEmpty(bare));
    EXPECT_TRUE(gFileSystem->removeEmptyFolders(to));
    EXPECT_EQ(temp.read("to/one/two/c"), "12345");
    EXPECT_FALSE(fs::exists(temp / "to/one/two/empty"));
}

TEST_F(Disk, RemovesTreesButNotWhatLinksLeadTo) {
    fs::create_directories(temp / "tree/sub");
    temp.write("kept", "kept");
    fs::create_symlink("../kept", temp / "tree/link");
    fs::create_directory_symlink("tree", temp / "linked");
    for (const auto& [name, whole] : {std::pair("tree", false), std::pair("linked", true), std::pair("kept", true)})
        EXPECT_FALSE(gFileSystem->removeDir(temp.at(name), whole));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_TRUE(gFileSystem->removeDir(temp.at("tree"), true));
    EXPECT_EQ(temp.names(), (std::set<std::string>{"kept", "linked"}));
}

TEST_F(Disk, KnowsLinksAndRights) {
    temp.write("file", "x");
    fs::create_directory(temp / "dir");
    At link = temp.at("dir/link"), file = temp.at("file"), loop = temp.at("loop");
    FNPath target;
    EXPECT_TRUE(gFileSystem->createSymlink(link, At("../file")) && gFileSystem->isSymlink(link));
    EXPECT_FALSE(gFileSystem->isSymlink(file) || gFileSystem->readSymlink(file, target));
    EXPECT_TRUE(gFileSystem->readSymlink(link, target) && target.getSize() == 1);
    EXPECT_TRUE(gFileSystem->checkResolveLink(link) && utf8(link) == utf8(file));
    EXPECT_TRUE(gFileSystem->createLink(temp.at("hard"), file) && gFileSystem->createSymlink(loop, loop));
    EXPECT_FALSE(gFileSystem->checkResolveLink(loop));
    EXPECT_TRUE(gFileSystem->enableWrite(file, false));
    EXPECT_EQ(fs::status(temp / "file").permissions() & fs::perms(0222), fs::perms::none);
    EXPECT_TRUE(gFileSystem->enableWrite(file, true) && gFileSystem->canWrite(file));
}

TEST_F(Disk, NamesThatAreFreeAndValid) {
    temp.write("a.txt", "");
    fs::create_symlink("nowhere", temp / "a-01.txt");  // what is written there would be elsewhere
    fs::create_directory(temp / "b");
    At a = temp.at("a.txt"), b = temp.at("b"), c = temp.at("c");
    EXPECT_TRUE(a.uniqueName() && b.uniqueName() && !c.uniqueName());
    EXPECT_EQ(utf8(a.getName()) + utf8(b.getName()), "a-02.txtb-01");
    std::u16string faces;
    while (faces.size() < 300)
        faces += u"\U0001F600";
    enum Kind { kName, kUntrimmed, kDashes, kSystemName };
    const std::tuple<Kind, std::u16string, std::u16string> rows[] = {
        {kName, u"a/b", u"a_b"},
        {kDashes, u" *?\\: ", u"--\\:"},
        {kUntrimmed, u" a ", u" a "},
        {kName, std::u16string(1025, u'x'), std::u16string(1024, u'x')},
        {kName, std::u16string(1023, u'x') + u"\U0001F600", std::u16string(1023, u'x')},
        {kSystemName, std::u16string(200, u'\u00E4'), std::u16string(127, u'\u00E4')}, // two bytes each
        {kSystemName, faces, faces.substr(0, 126)}, // four for each pair
        {kSystemName, u"a\xD800", u"a"},
        {kSystemName, u"..", u"_"},
    };
    for (const auto& [kind, wanted, expected] : rows) {
        FString name(wanted.c_str());
        const bool changed = kind == kSystemName
                                 ? gFileSystem->makeSystemName(name)
                                 : gFileSystem->makeValidName(name, kind == kDashes ? u'-' : 0, kind != kUntrimmed);
        EXPECT_EQ(changed, wanted != expected);
        EXPECT_EQ(std::u16string(name.text16()), expected);
    }
    At blank("/a?/ / b");
    EXPECT_TRUE(gFileSystem->makeValidPath(blank));
    EXPECT_EQ(utf8(blank), "/a_/_/b");
    temp.write("a?", "");
    a.setName(u"a\xD800");
    EXPECT_FALSE(gFileSystem->fileExists(a));  // which isn't "a?"
}

TEST_F(Disk, FolderNamesAreThoseOfThePlace) {
    const fs::path here = fs::current_path();
    for (const auto& [path, expected] :
         {std::pair(".", here.filename()), std::pair("..", here.parent_path().filename()),
          std::pair("missing", here.filename()), std::pair("/a/../b/x.y", fs::path("b"))}) {
        FNPath root;
        FString name;
        EXPECT_TRUE(gFileSystem->getDirName(At(path), name) && utf8(name) == expected) << path;
        EXPECT_TRUE(gFileSystem->getRootDir(At(path), root) && gFileSystem->isRoot(&root));
    }
    EXPECT_FALSE(gFileSystem->isRoot(At(here / "missing")));
}

TEST_F(Disk, ReadsTheMountTable) {
    temp.write(
        "mounts",
        "/dev/nothing / ext4 rw 0 0\nproc /proc proc rw 0 0\nhost:/x /mnt/a\\040b nfs4 rw 0 0\n"
        "/dev/sr9 /media/cd iso9660 ro 0 0\n/dev/other /media/cd ext4 rw 0 0\n/dev/loop9 /snap squashfs ro 0 0\n");
    std::string found;
    for (const FMount& mount : readMounts((temp / "mounts").c_str()))
        found += mount.folder + " " + utf8(FNFileSystem::getDriveTypeString(mount.type)) + "\n";
    EXPECT_EQ(found, "/ Harddisk\n/proc undefined\n/mnt/a b Network Drive\n/media/cd Harddisk\n/snap undefined\n");
    EXPECT_TRUE(readMounts((temp / "missing").c_str()).empty());
    CmArray drives;
    drives._ownsObjects = CmContainer::kTakesOver;
    EXPECT_GE(gFileSystem->getDrives(drives), 1);
}

TEST_F(Disk, TrashCanBeRestored) {
    ::setenv("XDG_DATA_HOME", (temp / "home").c_str(), 1);
    const std::string longest(NAME_MAX, 'x');
    for (const char* name : {"a b", "a b", "left", longest.c_str()}) {
        temp.write("home/Trash/files/left", "");  // without an info file, once there is a trash
        temp.write(name, "content");
        EXPECT_TRUE(gFileSystem->trashFile(temp.at(name)));
        EXPECT_FALSE(gFileSystem->trashFile(temp.at(name)));
    }
    ::unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(temp.names(), (std::set<std::string>{"home"}));
    for (const char* name : {"a b", "a b.2", "left.2"})
        EXPECT_EQ(temp.read(std::string("home/Trash/files/") + name), "content");
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

TEST_F(Disk, FindsMimeTypes) {
    static const FFileType registered(u"Z", u"zzz", nullptr, 0, u"text/z");
    FFileType::registerType(&registered);
    fs::create_directories(temp / "mime");
    temp.write("mime/globs2",
               "# comment\n80:text/x-a:*.abc\n50:text/x-b:*.abc\n50:text/x-c:abcd\n50:text/x-d:*.d:cs\n"
               "50:text/x-big:*.E:cs\n50:text/x-big:*.E\n50:text/x-small:*.e:cs\n50:text/x-small:*.e\n");
    ::setenv("XDG_DATA_HOME", (temp / "").c_str(), 1);
    for (const char* row :
         {"ABC|text/x-a", "d|text/x-d", "E|text/x-big", "e|text/x-small", "zzz|text/z", "abcd|", "|"}) {
        FString found;
        const std::vector<std::string> expected = piecesOf(row);
        EXPECT_EQ(FNFileSystem::lookupMimeType(expected[0].c_str(), found), !expected[1].empty()) << row;
        EXPECT_EQ(utf8(found), expected[1]);
    }
    ::unsetenv("XDG_DATA_HOME");
}

TEST_F(Disk, StartsProgramsAndWaitsForNone) {
    const FString arguments[] = {FString("-c"), FString("echo \"$0\" > \"$1\""), FString("a; b $c"),
                                 FString((temp / "out").c_str())};
    EXPECT_TRUE(FSystemShell::execute(At("sh"), arguments));
    for (const char* name : {"no-such-program", "eval", "", "-c", "/bin", "/dev/null"})  // eval: the shell's own
        EXPECT_FALSE(FSystemShell::execute(At(name), arguments));
    const auto before = ::signal(SIGCHLD, SIG_IGN);  // the host's choice
    EXPECT_TRUE(FSystemShell::execute(At("true")));
    ::signal(SIGCHLD, before);
    for (int32_t tries = 0; tries < 500 && temp.read("out").empty(); ++tries)
        ::usleep(10000);
    EXPECT_EQ(temp.read("out"), "a; b $c\n");
}

TEST_F(Disk, ShowsFailuresWhenAsked) {
    static std::string shown;
    gStorageHooks.showError = [](const FString& text) { shown += utf8(text); };
    for (const bool shows : {false, true}) {
        EXPECT_FALSE(gFileSystem->showPlatformErrors(shows));
        EXPECT_FALSE(gFileSystem->removeFile(temp.at("missing")));
    }
    EXPECT_TRUE(gFileSystem->showPlatformErrors(false));
    EXPECT_EQ(shown, "The file/folder could not be found at this location.");
}

TEST_F(Disk, KeepsTheLastFolderOfATypeAmongTheDefaults) {
    static std::string stored;
    gStorageHooks.storeDefault = [](const char* name, const char* key, const FNPath& path) {
        stored += std::string(name) + ": " + key + " = " + utf8(path) + "\n";
        return true;
    };
    const FFileType type(u"XML", u"xml");
    EXPECT_TRUE(gFileSystem->storeLastPath(At("/a"), &type) && gFileSystem->storeLastPath(At("/b"), nullptr));
    EXPECT_EQ(stored, "Default Paths: Default Path for \".xml\" Files = /a\nDefault Paths: Global Default = /b\n");
}

TEST_F(Disk, MessagesSayWhatAUserCanUnderstand) {
    const std::string missing = "The file/folder could not be found at this location.",
                      unexpected = "An unexpected error occurred. The system's description is: ";
    FString text;
    for (const auto& [code, expected] : {std::pair(ENOENT, missing), std::pair(-43, missing),
                                         std::pair(ELOOP, unexpected + "Too many levels of symbolic links"),
                                         std::pair(-1, unexpected + "Unknown error -1")}) {
        FNFileSystem::getErrorMessage(code, text);
        EXPECT_EQ(utf8(text), expected);
    }
}

}  // namespace
}  // namespace Tessarine
