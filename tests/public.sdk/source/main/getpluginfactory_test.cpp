#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/host/iplugdevice.h"
#include "pluginterfaces/host/italvprmaccessor.h"
#include "public.sdk/source/main/pluginfactory.h"
#include <gtest/gtest.h>

using namespace Tessarine;

namespace {
struct ClassRow {
    FUID cid;
    const char *category, *name, *version;
    const FUID* iid;  // the face that a host asks for
};
const ClassRow kClasses[] = {
    {{0x00630BF2, 0x4FF049CF, 0xBF01F480, 0x3210AB96},
     "Service",                                                   "Orsola VOREN TALV Extension",
     "1.0.0",                                                                                        &IPluginBase::iid},
    {{0xA1F1CD5E, 0xAC5A4B21, 0xACC55855, 0xD48971A2}, "Private", "TALV Param Accessor",         "", &IPlugDevice::iid},
    {{0x6E722B4B, 0x59A049EE, 0x830B5211, 0x959DCD91}, "Private", "VOREN HA Remote Setup",       "", &IPlugDevice::iid},
};

class ModuleFactory : public testing::Test {
protected:
    ~ModuleFactory() override {
        while (factory->release() > 0) {}
        EXPECT_EQ(gPluginFactory, nullptr);
    }

    IPluginFactory3* factory = static_cast<IPluginFactory3*>(GetPluginFactory());
};
}  // namespace

TEST_F(ModuleFactory, NamesItselfAndItsClasses) {
    EXPECT_EQ(GetPluginFactory(), factory);
    EXPECT_EQ(factory->release(), 1u);
    PFactoryInfo maker;
    EXPECT_EQ(factory->getFactoryInfo(&maker), kResultOk);
    EXPECT_STREQ(maker.vendor, "Orsola Corporation");
    EXPECT_EQ(maker.flags, 16);
    ASSERT_EQ(size_t(factory->countClasses()), std::size(kClasses));
    for (int32_t i = 0; i < factory->countClasses(); ++i) {
        const ClassRow& row = kClasses[i];
        PClassInfo2 info;
        ASSERT_EQ(factory->getClassInfo2(i, &info), kResultOk);
        EXPECT_TRUE(FUID::same(info.cid, row.cid)) << row.name;
        EXPECT_STREQ(info.category, row.category);
        EXPECT_STREQ(info.name, row.name);
        EXPECT_STREQ(info.version, row.version);
    }
}

TEST_F(ModuleFactory, MakesEachWithOneReferenceAndTheServiceOnce) {
    for (const ClassRow& row : kClasses) {
        SCOPED_TRACE(row.name);
        void* first = nullptr;
        void* second = nullptr;
        ASSERT_EQ(factory->createInstance(row.cid, *row.iid, &first), kResultOk);
        auto* made = static_cast<FUnknown*>(first);
        made->addRef();
        EXPECT_EQ(made->release(), 1u);
        ASSERT_EQ(factory->createInstance(row.cid, *row.iid, &second), kResultOk);
        const bool isService = row.iid == &IPluginBase::iid;
        EXPECT_EQ(first == second, isService);
        EXPECT_EQ(static_cast<FUnknown*>(second)->release(), 0u) << "the second service added none";
        if (!isService) {
            EXPECT_EQ(made->release(), 0u);
        }
    }
    void* face = this;
    EXPECT_EQ(factory->createInstance(kClasses[2].cid, TALV::ITALV_PrmAccessor::iid, &face), kNoInterface);
    EXPECT_EQ(face, nullptr);
}
