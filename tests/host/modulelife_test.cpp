#include "tests/host/hostfixture.h"
#include "tests/support/mapped.h"
#include <malloc.h>

using namespace Tessarine;

namespace HostTest {
namespace {
constexpr int32_t kCycles = 10, kWarmUp = 4;
constexpr int64_t kUnevenness = 64;  // bytes: the allocator now and then gives a block a few more than it needs

size_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/** The allocator keeps freed blocks aside, which then count as used: only in a process without that does the measure
    hold. false: it was taken there, by the test of the same name. */
bool isPlainHeap() {
    if (std::getenv("GLIBC_TUNABLES"))
        return true;
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    const std::string command = "GLIBC_TUNABLES=glibc.malloc.tcache_count=0 '" +
                                fs::read_symlink("/proc/self/exe").string() +
                                "' --gtest_filter=" + test->test_suite_name() + "." + test->name() + " >&2";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return false;
}

class ModuleLife : public HostFixture {
protected:
    /** The accessor, with a reference for the caller. */
    OPtr<TALV::ITALV_PrmAccessor> findAccessor() {
        for (int32_t i = 0; i < classes.getDevices().countDevices(); ++i)
            if (FUnknownPtr<TALV::ITALV_PrmAccessor> found(classes.getDevices().getDevice(i)); found)
                return OPtr<TALV::ITALV_PrmAccessor>(found.detach());
        return nullptr;
    }
    void runToTheFirstNotice() {
        const auto accessor = findAccessor();
        EXPECT_EQ(referencesOf(accessor.get()), 2u) << "the list's and this one";
        EXPECT_TRUE(Application::runUntil([&] { return accessor->isReady(); }, 3000));
        EXPECT_EQ(referencesOf(accessor.get()), 3u);
        gController->quit(true);
        EXPECT_TRUE(module.stop());
        EXPECT_EQ(referencesOf(accessor.get()), 2u) << "this one and the notice's";
    }
};

TEST_F(ModuleLife, EndsOnlyWithTheHostAndIsReallyGoneThen) {
    const Application application;
    load();
    EXPECT_TRUE(isMapped(".bundle/"));
    EXPECT_EQ(module.getVersion(), "1.0.0");
    start();
    EXPECT_EQ(classes.getDevices().countDevices(), 2);
    EXPECT_FALSE(module.stop());
    module.unload();  // refused in the same way
    EXPECT_TRUE(isMapped(".bundle/"));
    EXPECT_EQ(classes.getDevices().countDevices(), 2);
    runToTheFirstNotice();
    EXPECT_EQ(classes.getDevices().countDevices(), 0);
    module.unload();
    EXPECT_EQ(isMapped(".bundle/"), kSanitized);
    EXPECT_TRUE(fs::exists(folder.path / "user/VOREN TALV Extension/Setup.xml"));
}

TEST_F(ModuleLife, TenTimesLeaveOneReferenceOnTheHostsClassesEach) {
    if (!kSanitized && !isPlainHeap())
        return;
    size_t settled = 0;
    for (int32_t cycle = 1; cycle <= kWarmUp + kCycles; ++cycle) {
        {
            const Application application;
            load();
            start();
            endModule();
        }
        ASSERT_EQ(isMapped(".bundle/"), kSanitized) << cycle;
        ASSERT_EQ(referencesOf(&classes), uint32_t(1 + cycle));
        if (cycle == kWarmUp)
            settled = heapInUse();
    }
    if (!kSanitized) {
        EXPECT_LE(int64_t(heapInUse()) - int64_t(settled), kUnevenness);
    }
}

}  // namespace
}  // namespace HostTest
