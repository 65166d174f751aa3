#pragma once
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <string>
#include <string_view>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

/** Mounts that nobody else sees, for a test that mounts. A process with threads can't get any where its user may not mount: so
    the test begins anew in one that is alone. */
namespace OwnMounts {

constexpr const char* kMark = "TALV_TEST_OWN_MOUNTS";
constexpr int kRefused = 78;

inline bool write(const char* file, std::string_view text) {
    const int descriptor = ::open(file, O_WRONLY | O_CLOEXEC);
    const bool written = descriptor >= 0 && ::write(descriptor, text.data(), text.size()) == ssize_t(text.size());
    ::close(descriptor);
    return written;
}

/** The user is root there, where that is what mounting wants. */
inline bool enter(std::string_view userMap, std::string_view groupMap) {
    if (::unshare(CLONE_NEWNS) != 0 &&
        (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0 || !write("/proc/self/setgroups", "deny") ||
         !write("/proc/self/uid_map", userMap) || !write("/proc/self/gid_map", groupMap)))
        return false;
    return ::mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/** The whole test in a process of its own; what that exits with. Between fork and exec nothing may want memory. */
inline int runAnew() {
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    const std::string user = "0 " + std::to_string(::geteuid()) + " 1",
                      group = "0 " + std::to_string(::getegid()) + " 1";
    std::string filter = std::string("--gtest_filter=") + test.test_suite_name() + "." + test.name();
    std::string program = "/proc/self/exe", output = "--gtest_output=", brief = "--gtest_brief=1",
                mark = std::string(kMark) + "=1";
    char* arguments[] = {program.data(), filter.data(), output.data(), brief.data(), nullptr};
    std::vector<char*> environment = {mark.data()};
    for (char** each = environ; *each; ++each)
        environment.push_back(*each);
    environment.push_back(nullptr);
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        if (enter(user, group))
            ::execve(arguments[0], arguments, environment.data());
        ::_exit(kRefused);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/** Whether this process has its own mounts. If not, the test has run in one that has, and fails here if it failed there: there
    is nothing left to do. */
inline bool areHere() {
    if (std::getenv(kMark))
        return true;
    const int result = runAnew();
    EXPECT_EQ(result, 0) << (result == kRefused
                                 ? "this test wants a user who may mount, or who may make a user namespace"
                                 : "in mounts of its own; what failed there is said above");
    return false;
}

}  // namespace OwnMounts
