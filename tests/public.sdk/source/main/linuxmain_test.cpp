#include "public.sdk/source/main/linuxmain.h"
#include "tests/support/uncounted.h"
#include <gtest/gtest.h>
#include <string>

using namespace Tessarine;

namespace {
class Bundle : public Uncounted<IModuleBundle> {
public:
    explicit Bundle(std::string path) : path(std::move(path)) {}
    const char* getPath() const override { return path.c_str(); }
    const char* getResourcePath() const override { return path.c_str(); }

    std::string path;
};

class ModuleEntry : public testing::Test {
protected:
    void SetUp() override { forget(); }
    void TearDown() override { forget(); }
    static void forget() {
        moduleHandle = ghInst = nullptr;
        gPath[0] = 0;
        bundleRefCounter = 0;
        gBundleRefs.clear();
    }
};
}  // namespace

TEST_F(ModuleEntry, WithoutABundleNothingChanges) {
    EXPECT_TRUE(bundleEntry(nullptr));
    EXPECT_EQ(moduleHandle, nullptr);
    EXPECT_EQ(bundleRefCounter, 0);
    EXPECT_TRUE(bundleExit());
    EXPECT_EQ(bundleRefCounter, -1);
}

TEST_F(ModuleEntry, TheFirstBundleIsTheModuleAndTheLastExitReleasesAll) {
    Bundle first("/one.bundle"), second("/other.bundle");
    EXPECT_TRUE(bundleEntry(static_cast<IModuleBundle*>(&first)));
    EXPECT_TRUE(bundleEntry(static_cast<IModuleBundle*>(&second)));
    EXPECT_EQ(moduleHandle, &first);
    EXPECT_STREQ(gPath, "/one.bundle");
    EXPECT_TRUE(bundleExit());
    EXPECT_EQ(first.references, 1);
    EXPECT_EQ(second.references, 1);
    EXPECT_TRUE(bundleExit());
    EXPECT_EQ(first.references, 0);
    EXPECT_EQ(second.references, 0);
    EXPECT_EQ(moduleHandle, &first) << "for good";
    EXPECT_STREQ(gPath, "/one.bundle");

    EXPECT_TRUE(bundleEntry(static_cast<IModuleBundle*>(&second)));
    EXPECT_EQ(moduleHandle, &first);
    EXPECT_EQ(second.references, 1);
    EXPECT_TRUE(bundleExit());
    EXPECT_EQ(second.references, 0);
}

TEST_F(ModuleEntry, ALongPathIsCut) {
    Bundle bundle("/" + std::string(5000, 'x'));
    EXPECT_TRUE(bundleEntry(static_cast<IModuleBundle*>(&bundle)));
    EXPECT_EQ(std::string(gPath), bundle.path.substr(0, sizeof(gPath) - 1));
    EXPECT_TRUE(bundleExit());
}
