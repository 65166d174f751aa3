#include "storage/ffilesystem.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/ffstream.h"
#include "tempfolder.h"
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
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
}

TEST_F(Disk, ListsNamesAsTheyAre) {
    for (const char* name : {"b", "a\xC3\xA4", "\xE6\xA9\x9F", ".hidden", "not utf-8 \xFF"})
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
    EXPECT_EQ(found, (std::vector<std::u16string>{u".hidden", u"a\u00E4", u"b", u"folder", u"link", u"\u6A5F"}));
    const OPtr<FFileIterator> rest(gFileSystem->newIterator(&self, false));
    ASSERT_TRUE(rest->first());
    EXPECT_EQ(std::u16string(rest->current()->getName()), u"folder");
    EXPECT_EQ(rest->next(), nullptr);
    const FNPath missing = temp.at("missing");
    EXPECT_EQ(gFileSystem->newIterator(&missing, true), nullptr);
}

TEST(DiskMessages, SayWhatAUserCanUnderstand) {
    const std::pair<int32_t, const char*> rows[] = {
        {0,      "No error occurred."                                                                          },
        {ENOENT, "The file/folder could not be found at this location."                                        },
        {30,     "This disk is read only."                                                                     },
        {ELOOP,  "An unexpected error occurred. The system's description is: Too many levels of symbolic links"},
        {-43,    "An unexpected error occurred. The system's description is: Unknown error -43"                },
    };
    for (const auto& [code, expected] : rows) {
        FString text;
        FNFileSystem::getErrorMessage(code, text);
        EXPECT_STREQ(text.text8(), expected);
    }
}

}  // namespace
}  // namespace Tessarine
