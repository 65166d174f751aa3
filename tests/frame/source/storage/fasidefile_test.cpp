#include "storage/fasidefile.h"
#include "pathprobes.h"
#include "storage/fbstream.h"
#include <csignal>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tessarine {
namespace {
constexpr int32_t kLines = 12;
const std::string kOld = "the old content, which is shorter", kNew(kLines * 700, 'n');

bool save(const FPath& path) {
    FAsideFile file(gFileSystem, path);
    for (int32_t i = 0; file.getStream() && i < kLines; ++i)
        file.getStream()->writeRaw(kNew.data(), int64_t(kNew.size()) / kLines);
    return file.commit();
}

class AsideFile : public testing::Test {
protected:
    AsideFile() { temp.write("Setup.xml", kOld); }
    void expectAlone(const std::string& content) {
        EXPECT_EQ(temp.read("Setup.xml"), content);
        EXPECT_EQ(temp.names(), (std::set<std::string>{"Setup.xml"}));
    }

    TempFolder temp;
    FNPath path = temp.at("Setup.xml");
};

TEST_F(AsideFile, ReplacesTheOldFileOnCommitOnlyUnderAnyNameThatTheDiskTakes) {
    FAsideFile(gFileSystem, path).getStream()->writeRaw("x", 1);
    expectAlone(kOld);
    std::string faces = "x";
    while (faces.size() < 250)
        faces += "\xF0\x9F\x98\x80";
    for (const std::string& name : {std::string("Setup.xml"), std::string(255, 'x'), faces})
        EXPECT_TRUE(save(temp.at(name)) && temp.read(name) == kNew);
    EXPECT_EQ(temp.names().size(), 3u);
}

TEST_F(AsideFile, CommitFailsOnceAndForAll) {
    std::filesystem::remove(temp / "Setup.xml");
    std::filesystem::create_directory(temp / "Setup.xml");
    FAsideFile file(gFileSystem, path), nowhere(gFileSystem, temp.at("missing/Setup.xml"));
    ASSERT_NE(file.getStream(), nullptr);
    for (FAsideFile* each : {&file, &file, &nowhere})
        EXPECT_FALSE(each->commit() || each->getStream());
    EXPECT_EQ(temp.names().size(), 1u);
}

TEST_F(AsideFile, RemovesWhatCrashesLeftAndNothingElse) {
    const std::string mark = ".0123456789ABCDEF0123456789ABCDEF";
    temp.write("Setup.xml" + mark + ".aside", "stale");
    std::set<std::string> kept = {"Setup.xml", "Setup.xml.aside", "Setup.xml" + mark, "Other.xml" + mark + ".aside",
                                  "Setup.xml.0123456789abcdef0123456789abcdef.aside"};
    for (const std::string& name : kept)
        temp.write(name, "kept");
    EXPECT_TRUE(save(path));
    EXPECT_EQ(temp.names(), kept);
}

TEST_F(AsideFile, OfTwoSaversTheLaterWinsWhole) {
    FAsideFile first(gFileSystem, path);
    first.getStream()->writeRaw("first", 5);
    FAsideFile second(gFileSystem, path);
    second.getStream()->writeRaw("second", 6);
    first.getStream()->writeRaw("first", 5);
    EXPECT_FALSE(first.commit());
    EXPECT_TRUE(second.commit());
    expectAlone("second");
}

TEST_F(AsideFile, StaysOldWhenTheFileCannotGrow) {
    const auto before = ::signal(SIGXFSZ, SIG_IGN);
    rlimit most;
    ::getrlimit(RLIMIT_FSIZE, &most);
    for (const size_t limit : {size_t(0), kNew.size() - 1, kNew.size()}) {
        const rlimit less = {limit, most.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &less);
        const bool saved = save(path);
        ::setrlimit(RLIMIT_FSIZE, &most);
        EXPECT_EQ(saved, limit == kNew.size());
        expectAlone(saved ? kNew : kOld);
    }
    ::signal(SIGXFSZ, before);
}

/** Saves in a process of its own, which is killed at the border of a system call, the number of which counts from 0; where
    processes can't be traced, after so many times 20 microseconds. The result is how it ended. */
int32_t saveAndKill(const FPath& path, int32_t border, bool& traced) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
        ::_exit(!save(path));
    }
    int status = 0;
    ::waitpid(child, &status, WUNTRACED);
    for (int32_t i = 0; traced && i < border && WIFSTOPPED(status); ++i) {
        traced = ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) == 0;
        if (traced)
            ::waitpid(child, &status, 0);
    }
    if (!traced) {
        ::kill(child, SIGCONT);
        ::usleep(useconds_t(20 * border));
    }
    if (!WIFEXITED(status)) {
        ::kill(child, SIGKILL);
        ::waitpid(child, &status, 0);
    }
    return status;
}

TEST_F(AsideFile, IsOldOrNewWhereverTheProcessIsKilled) {
    int32_t olds = 0, news = 0;
    bool traced = true;
    for (int32_t border = 0;; ++border) {
        temp.write("Setup.xml", kOld);
        const int32_t status = saveAndKill(path, border, traced);
        ASSERT_TRUE(!WIFEXITED(status) || WEXITSTATUS(status) == 0);
        const std::string content = temp.read("Setup.xml");
        ASSERT_TRUE(content == kOld || content == kNew) << "killed at border " << border;
        ASSERT_LE(temp.names().size(), 2u);  // what one crash left is gone with the next save
        ++(content == kOld ? olds : news);
        if (WIFEXITED(status))
            break;
    }
    EXPECT_GT(olds, traced ? 2 * kLines : 0);  // each write was hit on both sides
    EXPECT_GT(news, traced ? 1 : 0);
    EXPECT_TRUE(save(path));
    expectAlone(kNew);
}

}  // namespace
}  // namespace Tessarine
