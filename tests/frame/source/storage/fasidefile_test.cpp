#include "storage/fasidefile.h"
#include "storage/fbstream.h"
#include "tempfolder.h"
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tessarine {
namespace {
constexpr int32_t kLines = 12;
const std::string kLine(700, 'n');
const std::string kOld = "the old content, which is shorter";

std::string newContent() {
    std::string text;
    for (int32_t i = 0; i < kLines; ++i)
        text += kLine;
    return text;
}

bool save(const FPath& path) {
    FAsideFile file(gFileSystem, path);
    if (!file.getStream())
        return false;
    for (int32_t i = 0; i < kLines; ++i)
        file.getStream()->writeRaw(kLine.data(), int64_t(kLine.size()));
    return file.commit();
}

/** What the function answers in a process of its own. */
int32_t inChild(const std::function<int32_t()>& function) {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(function());
    int status = -1;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
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

TEST_F(AsideFile, SavesUnderAnyNameThatTheDiskTakes) {
    std::string faces = "x";
    while (faces.size() < 250)
        faces += "\xF0\x9F\x98\x80";
    for (const std::string& name : {std::string(255, 'x'), faces}) {
        EXPECT_TRUE(save(temp.at(name)));
        EXPECT_EQ(temp.read(name), newContent());
    }
    EXPECT_EQ(temp.names().size(), 3u);
}

TEST_F(AsideFile, ReplacesTheOldFileOnCommitOnly) {
    {
        FAsideFile file(gFileSystem, path);
        ASSERT_NE(file.getStream(), nullptr);
        file.getStream()->writeRaw("x", 1);
        EXPECT_EQ(temp.read("Setup.xml"), kOld);
    }
    expectAlone(kOld);
    EXPECT_TRUE(save(path));
    expectAlone(newContent());
    std::filesystem::remove(temp / "Setup.xml");
    EXPECT_TRUE(save(path));
    expectAlone(newContent());
}

TEST_F(AsideFile, CommitFailsOnceAndForAll) {
    std::filesystem::remove(temp / "Setup.xml");
    std::filesystem::create_directory(temp / "Setup.xml");
    FAsideFile file(gFileSystem, path);
    ASSERT_NE(file.getStream(), nullptr);
    EXPECT_FALSE(file.commit());
    EXPECT_EQ(file.getStream(), nullptr);
    EXPECT_FALSE(file.commit());
    EXPECT_EQ(temp.names().size(), 1u);
    FAsideFile nowhere(gFileSystem, temp.at("missing/Setup.xml"));
    EXPECT_FALSE(nowhere.commit());
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
    const auto whole = rlim_t(newContent().size());
    for (const rlim_t limit : {rlim_t(0), whole - 1, whole}) {
        SCOPED_TRACE(limit);
        const int32_t saved = inChild([&] {
            const rlimit most = {limit, limit};
            ::signal(SIGXFSZ, SIG_IGN);
            ::setrlimit(RLIMIT_FSIZE, &most);
            return int32_t(save(path));
        });
        EXPECT_EQ(saved, limit == whole);
        expectAlone(limit == whole ? newContent() : kOld);
    }
}

enum Ending { kKilled, kFinished, kFailed };

/** Saves in a process of its own, which is killed at the border of a system call, the number of which counts from 0; where
    processes can't be traced, after so many times 20 microseconds. */
Ending saveAndKill(const FPath& path, int32_t border, bool& traced) {
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
    return !WIFEXITED(status) ? kKilled : WEXITSTATUS(status) == 0 ? kFinished : kFailed;
}

TEST_F(AsideFile, IsOldOrNewWhereverTheProcessIsKilled) {
    int32_t olds = 0, news = 0;
    bool traced = true;
    for (int32_t border = 0;; ++border) {
        temp.write("Setup.xml", kOld);
        const Ending ending = saveAndKill(path, border, traced);
        ASSERT_NE(ending, kFailed);
        const std::string content = temp.read("Setup.xml");
        ASSERT_TRUE(content == kOld || content == newContent()) << "killed at border " << border;
        ASSERT_LE(temp.names().size(), 2u);  // what one crash left is gone with the next save
        ++(content == kOld ? olds : news);
        if (ending == kFinished)
            break;
    }
    EXPECT_GT(olds, traced ? 2 * kLines : 0);  // each write was hit on both sides
    EXPECT_GT(news, traced ? 1 : 0);
    EXPECT_TRUE(save(path));
    expectAlone(newContent());
}

}  // namespace
}  // namespace Tessarine
