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

TEST_F(ModuleEntry, TheFirstBundleIsTheModuleAndTheLastExitReleasesAll) {
    Bundle first("/one.bundle"), second("/other.bundle");
    EXPECT_TRUE(bundleEntry(nullptr));
    EXPECT_EQ(bundleRefCounter, 0);
    for (int32_t round = 0; round < 2; ++round) {
        EXPECT_TRUE(bundleEntry(static_cast<IModuleBundle*>(round ? &second : &first)));
        EXPECT_TRUE(bundleEntry(static_cast<IModuleBundle*>(round ? &first : &second)));
        EXPECT_EQ(moduleHandle, &first) << "for good";
        EXPECT_STREQ(gPath, "/one.bundle");
        EXPECT_TRUE(bundleExit());
        EXPECT_EQ(first.references + second.references, 2);
        EXPECT_TRUE(bundleExit());
        EXPECT_EQ(first.references + second.references, 0);
    }
    EXPECT_TRUE(bundleExit());
    EXPECT_EQ(bundleRefCounter, -1);
}

TEST_F(ModuleEntry, ALongPathIsCut) {
    Bundle bundle("/" + std::string(5000, 'x'));
    EXPECT_TRUE(bundleEntry(static_cast<IModuleBundle*>(&bundle)));
    EXPECT_EQ(std::string(gPath), bundle.path.substr(0, sizeof(gPath) - 1));
    EXPECT_TRUE(bundleExit());
}
