#include "base/fdefaults.h"
#include "gui/values/uvaluecontainer.h"
#include <gtest/gtest.h>

namespace Tessarine {
namespace {

class ValuesAsDefaults : public testing::Test {
protected:
    ~ValuesAsDefaults() override { FDefaultPool::unuse(); }
    const OPtr<UValueContainer> values{new UValueContainer};
};

TEST_F(ValuesAsDefaults, ComeBackBySection) {
    UIntValue* level = values->newIntValue(0, 9, nullptr, 1, "level");
    UFloatValue* gain = values->newFloatValue(0, 9, nullptr, 2, "gain");
    UStringValue* title = values->newStringValue(nullptr, 3, "title");
    values->newValue(nullptr, 4, "");
    EXPECT_FALSE(values->saveDefault("Section"));  // no pool
    FDefaultPool* pool = FDefaultPool::use();
    EXPECT_FALSE(values->loadDefault("Section"));
    level->setValue(4);
    gain->setFloatValue(1.5f);
    title->setStringValue(u"t\u00fc");
    EXPECT_TRUE(values->saveDefault("Section"));
    FDefaults* section = pool->findDefaults("Section");
    ASSERT_TRUE(section);
    EXPECT_TRUE(values->saveDefault("level", section, "other"));
    EXPECT_FALSE(values->saveDefault("level", section, "") || values->saveDefault("none", section, "other"));
    level->setValue(0);
    gain->setValue(0);
    title->setStringValue(ConstString());
    section->removeEntry("gain");
    EXPECT_TRUE(values->loadDefault("Section"));
    EXPECT_TRUE(level->getValue() == 4 && gain->getFloatValue() == 0);
    EXPECT_EQ(title->getStringValue().compare(ConstString(u"t\u00fc")), 0);
    level->setValue(0);
    EXPECT_TRUE(!values->loadDefault("gain", section) && values->loadDefault("level", section, "other"));
    EXPECT_EQ(level->getValue(), 4);
    pool->getDefaults("Newer", 3, true)->setLong("level", 5);
    EXPECT_TRUE(values->loadDefault("Newer") && values->saveDefault("Newer"));
    EXPECT_EQ(level->getValue(), 5);
    EXPECT_EQ(pool->findDefaults("Newer")->getVersion(), 3);
}

TEST_F(ValuesAsDefaults, OutliveTheSectionThatAnOwnerRemoves) {
    struct Removing : CmObject {
        using CmObject::update;
        void update(CmObject*, int32_t) override { gDefaults->removeDefaults("Section", 0); }
    } owner;
    FDefaultPool::use();
    values->newValue(&owner, 1, "first");
    UValue* last = values->newValue(&owner, 2, "last");
    last->setValue(1);
    values->saveDefault("Section");
    last->setValue(0);
    EXPECT_TRUE(values->loadDefault("Section"));
    EXPECT_EQ(last->getValue(), 1);
}

}  // namespace
}  // namespace Tessarine
