#include "storage/ffilesystem.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/ffstream.h"
#include "tempfolder.h"
#include <cerrno>
#include <csignal>
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
    void save(const std::string& name, const std::string& text) {
        FNPath path = temp.at(name);
        FStream* stream = gFileSystem->createFile(&path, kOpenWrite);
        ASSERT_NE(stream, nullptr);
        EXPECT_EQ(stream->writeRaw(text.data(), int64_t(text.size())), int64_t(text.size()));
        EXPECT_TRUE(gFileSystem->closeFile(stream));
    }

    TempFolder temp;
};

struct OpenRow {
    const char* name;
    bool create;
    const char* file;
    int32_t mode, error;
    const char* after;  // content, when it could be opened, after "new" was written
};
constexpr OpenRow kOpenings[] = {
    {"create empties",         true,  "old",   kOpenWrite,               0,       "new"   },
    {"create makes",           true,  "fresh", kOpenWrite,               0,       "new"   },
    {"create opens for both",  true,  "old",   kOpenRead | kOpenWrite,   0,       "new"   },
    {"open keeps the rest",    false, "old",   kOpenWrite,               0,       "newent"},
    {"open shares",            false, "old",   kOpenWrite | kOpenShared, 0,       "newent"},
    {"open with create",       false, "fresh", kOpenCreate,              0,       "new"   },
    {"open finds nothing",     false, "fresh", kOpenWrite,               ENOENT,  nullptr },
    {"no folder on the way",   true,  "no/x",  kOpenWrite,               ENOENT,  nullptr },
    {"file on the way",        true,  "old/x", kOpenWrite,               ENOTDIR, nullptr },
    {"a folder isn't read",    false, "dir",   kOpenRead,                EISDIR,  nullptr },
    {"a folder isn't written", true,  "dir",   kOpenWrite,               EISDIR,  nullptr },
};

TEST_F(Disk, OpensByMode) {
    std::filesystem::create_directory(temp / "dir");
    for (const OpenRow& row : kOpenings) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove(temp / "fresh");
        temp.write("old", "oldent");
        FNPath path = temp.at(row.file);
        int32_t error = -1;
        FStream* stream = row.create ? gFileSystem->createFile(&path, row.mode, &error)
                                     : gFileSystem->openFile(&path, row.mode, &error);
        EXPECT_EQ(error, row.error);
        ASSERT_EQ(stream != nullptr, row.after != nullptr);
        if (!stream)
            continue;
        EXPECT_EQ(stream->writeRaw("new", 3), 3);
        EXPECT_TRUE(gFileSystem->closeFile(stream));
        EXPECT_EQ(temp.read(row.file), row.after);
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

TEST_F(Disk, ReadsUpToTheEnd) {
    temp.write("file", "0123456789");
    FNPath path = temp.at("file");
    auto* stream = classCast<FFileStream>(gFileSystem->openFile(&path, kOpenRead));
    ASSERT_NE(stream, nullptr);
    char bytes[20];
    EXPECT_EQ(stream->seek(-4, kFromEnd), 6);
    EXPECT_EQ(stream->readRaw(bytes, 20), 4);
    EXPECT_TRUE(stream->eof());
    EXPECT_EQ(stream->seek(-9, kFromCurrent), 1);
    EXPECT_EQ(stream->readRaw(bytes, 2), 2);
    EXPECT_EQ(std::string(bytes, 2), "12");
    EXPECT_EQ(stream->tell(), 3);
    EXPECT_EQ(stream->writeRaw("x", 1), 0);  // opened for reading
    EXPECT_EQ(stream->getFirstError(true), EBADF);
    EXPECT_TRUE(gFileSystem->closeFile(stream));
}

TEST_F(Disk, GoesBeyondFourGigabytes) {
    constexpr int64_t kFar = int64_t(5) << 30;
    FNPath path = temp.at("sparse");
    FStream* stream = gFileSystem->createFile(&path, kOpenRead | kOpenWrite);
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(stream->seek(kFar, kFromStart), kFar);
    EXPECT_TRUE(stream->writeInt32(0x01020304));
    EXPECT_EQ(stream->tell(), kFar + 4);
    EXPECT_EQ(gFileSystem->getFileSize(stream), kFar + 4);
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
    const auto brokenPipe = ::signal(SIGPIPE, SIG_IGN);
    ASSERT_EQ(::mkfifo((temp / "pipe").c_str(), 0600), 0);
    const pthread_t reader = ::pthread_self();
    std::thread writer([&] {
        const auto disturb = [reader] {
            for (int32_t i = 0; i < 20; ++i) {
                ::pthread_kill(reader, SIGUSR1);
                ::usleep(500);
            }
        };
        disturb();
        const int file = ::open((temp / "pipe").c_str(), O_WRONLY);
        disturb();
        EXPECT_EQ(::write(file, "abc", 3), 3);
        disturb();
        EXPECT_EQ(::write(file, "def", 3), 3);
        ::close(file);
    });
    FNPath path = temp.at("pipe");
    FStream* stream = gFileSystem->openFile(&path, kOpenRead);
    ASSERT_NE(stream, nullptr);
    char bytes[6] = {};
    EXPECT_EQ(stream->readRaw(bytes, 6), 6);
    EXPECT_EQ(std::string(bytes, 6), "abcdef");
    EXPECT_TRUE(gFileSystem->closeFile(stream));
    writer.join();
    ::sigaction(SIGUSR1, &before, nullptr);
    ::signal(SIGPIPE, brokenPipe);
}

TEST_F(Disk, MovesInOneStepAndOverwritesOnlyWhenAsked) {
    FNPath a = temp.at("a"), b = temp.at("b"), c = temp.at("c"), missing = temp.at("missing");
    save("a", "from a");
    save("b", "from b");
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
    save("file", "x");
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
        {EACCES, "This operation is not allowed."                                                              },
        {EIO,    "A reading/writing error occurred. This disk is not working normaly."                         },
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
