#include "public.sdk/source/main/pluginfactory.h"
#include "pluginterfaces/base/smartpointer.h"
#include "tests/pluginterfaces/base/countedobject.h"
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <utility>

using namespace Tessarine;

namespace {
const FUID kClassA(1, 2, 3, 4), kClassB(1, 2, 3, 5), kClassC(0xF0000000, 2, 3, 4);

using Product = CountedObject;
void* lastContext = nullptr;

FUnknown* create(void* context) {
    lastContext = context;
    return new Product;
}
FUnknown* createNothing(void*) {
    return nullptr;
}

class Factory : public testing::Test {
protected:
    ~Factory() override {
        EXPECT_EQ(factory->release(), 0u);
        EXPECT_EQ(Product::living, 0);
    }
    CPluginFactory* factory = new CPluginFactory(PFactoryInfo("Vendor", "", "", 0));
    PClassInfo infoA{kClassA, 1, "Service", "Class A"};
    PClassInfo2 infoB{kClassB, 2, "Private", "Class B", 3, "Sub", nullptr, "1.0.0", "sdk"};
};
}  // namespace

TEST_F(Factory, RefusesIndicesAndNullRecords) {
    ASSERT_TRUE(factory->registerClass(&infoA, create));
    PClassInfo info;
    PClassInfo2 info2;
    PClassInfoW infoW;
    for (const int32_t index : {-1, 1, INT32_MAX, INT32_MIN, 0}) {
        EXPECT_EQ(factory->getClassInfo(index, index ? &info : nullptr), kInvalidArgument);
        EXPECT_EQ(factory->getClassInfo2(index, index ? &info2 : nullptr), kInvalidArgument);
        EXPECT_EQ(factory->getClassInfoUnicode(index, index ? &infoW : nullptr), kInvalidArgument);
    }
}

TEST_F(Factory, AUnicodeClassHasNoNarrowRecord) {
    PClassInfoW wide;
    wide.fromAscii(infoB);
    wide.name[0] = u'\u03A9';
    ASSERT_TRUE(factory->registerClass(&wide, create));
    PClassInfo info = infoA;
    EXPECT_EQ(factory->getClassInfo(0, &info), kResultFalse);
    EXPECT_EQ(std::memcmp(&info, std::string(sizeof(info), 0).data(), sizeof(info)), 0);
    PClassInfo2 info2 = infoB;
    EXPECT_EQ(factory->getClassInfo2(0, &info2), kResultFalse);
    EXPECT_STREQ(info2.name, "");
    PClassInfoW infoW;
    EXPECT_EQ(factory->getClassInfoUnicode(0, &infoW), kResultOk);
    EXPECT_EQ(std::memcmp(&infoW, &wide, sizeof(wide)), 0);
    EXPECT_TRUE(factory->isClassRegistered(kClassB));
}

TEST_F(Factory, CreatesByTheFirstMatchAndNothingOnAMiss) {
    EXPECT_FALSE(factory->registerClass(static_cast<PClassInfoW*>(nullptr), create));
    EXPECT_FALSE(factory->registerClass(&infoB, nullptr));
    int32_t context = 0;
    ASSERT_TRUE(factory->registerClass(&infoA, create, &context));
    ASSERT_TRUE(factory->registerClass(&infoA, createNothing));
    void* made = nullptr;
    ASSERT_EQ(factory->createInstance(kClassA, FUnknown::iid, &made), kResultOk);
    EXPECT_EQ(lastContext, &context);
    EXPECT_EQ(static_cast<FUnknown*>(made)->release(), 0u) << "the caller holds the only reference";
    PClassInfo infoC(kClassC, 1, "Service", "Class C");
    ASSERT_TRUE(factory->registerClass(&infoC, createNothing));
    for (const auto& [cid, iid] : {
             std::pair(kClassB, FUnknown::iid), {kClassA, IPluginBase::iid},
               {kClassC, FUnknown::iid   }
    }) {
        void* object = this;  // every result writes over it
        EXPECT_EQ(factory->createInstance(cid, iid, &object), kNoInterface);
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(Product::living, 0);
    }
}

TEST_F(Factory, ClearsTheGlobalOnlyWhenItStandsThere) {
    CPluginFactory* const before = std::exchange(gPluginFactory, factory);
    (new CPluginFactory(PFactoryInfo()))->release();
    EXPECT_EQ(gPluginFactory, factory);
    gPluginFactory = before;
}
